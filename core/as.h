#pragma once

#include <ostrum/as.h>
