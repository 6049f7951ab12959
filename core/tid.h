#pragma once

#include <ostrum/tid.h>
