/*
 * Components: records.
 */
#pragma once

#include "data/tld.h"

#include <ostrum/tldm.h>

/* COMPONENT. Of the terms, each is null if it was not given. */
struct TLDM_COMPONENT {
    TLD_SECTION head;
    int32_t flags;        /* none exists: always 0 */
    TLE_TERM *parent;     /* owned */
    TLE_TERM *name;       /* owned */
    TLE_TERM *location;   /* owned */
    TLE_TERM *helpscreen; /* owned */
};

/* Static table of the kind. */
extern const TLS_STATEMENT_CLASS TLDM_ComponentClass;
