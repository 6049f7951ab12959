#pragma once

#include <ostrum/errmsg.h>
