#pragma once

#include <ostrum/sld.h>
