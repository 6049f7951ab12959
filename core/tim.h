#pragma once

#include <ostrum/tim.h>
