/*
 * Waveforms: records.
 */
#pragma once

#include "data/tld.h"

#include <ostrum/tldw.h>

/* Samples that a waveform can have. */
enum { TLDW_SAMPLE_LIMIT = 2048 };

/* WAVEFORM. */
struct TLDW_WAVEFORM {
    TLD_SECTION head;
    int32_t count; /* samples stored */
    bool too_many; /* the message on samples beyond the limit has been given */
    uint8_t samples[TLDW_SAMPLE_LIMIT];
};

/* Static table of the kind. */
extern const TLS_STATEMENT_CLASS TLDW_WaveformClass;
