#pragma once

#include <ostrum/quillreg.h>
