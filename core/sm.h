#pragma once

#include <ostrum/sm.h>
