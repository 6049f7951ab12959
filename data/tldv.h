/*
 * Converters: records.
 */
#pragma once

#include "data/tld.h"

#include <ostrum/tldv.h>

/* STATE: a range of values that has a name. */
struct TLDV_STATE {
    TLE_TERM *text; /* owned */
    TLDV_STATE *next;
    int32_t low;
    int32_t high;
};

/* MAP: a value that stands for another. */
struct TLDV_MAP {
    TLDV_MAP *next;
    int32_t input;
    int32_t output;
};

/* CONVERTER. */
struct TLDV_CONVERTER {
    TLD_SECTION head;
    TLE_TERM *name;        /* owned; null if not given */
    TLE_TERM *next;        /* owned; null if not given */
    int32_t old_type;      /* quantity number of the reading */
    int32_t quantity_type; /* quantity number of the result */
    int32_t offset;
    int32_t flags;
    int32_t multiplier;
    int32_t divisor;
    TLE_TERM *transfer_library; /* owned; null if not given */
    int32_t function_id;        /* -1 if not given */
    int32_t last_map_input;
    TLDV_STATE *states; /* in the order of the source, owned */
    TLDV_STATE *last_state;
    TLDV_MAP *maps; /* in the order of the source, owned */
    TLDV_MAP *last_map;
    int32_t state_count;
    int32_t map_count;
};

/* Static table of the kind. */
extern const TLS_STATEMENT_CLASS TLDV_ConverterClass;
