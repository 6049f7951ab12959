#pragma once

#include <ostrum/qlv.h>
