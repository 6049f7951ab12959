// Records of constants, non-volatiles and nodes.
#pragma once

#include "names/tli.h"
#include <ostrum/tlic.h>

// A constant or a non-volatile.
struct TLIC_CONSTANT {
    TLI_IDENTIFIER identifier;
    int32_t dimension; // -1 scalar, else number of elements
    int32_t count;     // number of elements, 1 for a scalar
    TLI_IDENTIFIER *range_type;
    TLE_TERM *values; // owned list of links, one for each element; null for a non-volatile
};

struct TLIC_NODE {
    TLI_IDENTIFIER identifier;
    void *data; // the owner's
};
