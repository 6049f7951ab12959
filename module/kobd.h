#pragma once

#include <ostrum/hs.h>
#include <ostrum/kobd.h>

struct KOBD_ENTRY {
    uint8_t *raw;
    int32_t owned; // raw was allocated here; else it lies in the mapped file
    KOBD_ENTRY *next;
};

struct KOBD_FRAME {
    uint8_t *raw;
    int32_t owned;       // as in an entry
    int32_t is_unsorted; // an entry was added behind one of greater offset
    KOBD_ENTRY *entries;
    KOBD_ENTRY *tail;
    HS_DOMAIN *names; // entry name to entry
    KOBD_FRAME *next;
};

struct KOBD_DEBUG {
    KOB_MODULE *module;
    KOBD_FRAME *frames; // newest first
    HS_DOMAIN *names;   // frame name to frame
    int32_t count;
};
