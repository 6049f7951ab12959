// The record of a built-in function.
#pragma once

#include <ostrum/tlb.h>

// Static and constant, one for each built-in function. An operation that it lacks is null.
struct TLB_BUILT_IN {
    const char *name; // lower case
    int32_t minimum_arguments;
    int32_t maximum_arguments;
    // The result's type, or null.
    TLI_IDENTIFIER *(*check)(const TLB_BUILT_IN *record, TLP_MODULE *module,
                             TLT_STATEMENT *statement, TLE_TERM *term);
    // A term in place of this one, or null.
    TLE_TERM *(*simplify)(const TLB_BUILT_IN *record, TLP_MODULE *module, TLE_TERM *term);
    // Each writes the code for its target: 1, or 0 if it cannot.
    int32_t (*p_code)(const TLB_BUILT_IN *record, TLC_STREAM *stream, TLE_TERM *term);
    int32_t (*c_text)(const TLB_BUILT_IN *record, TLC_STREAM *stream, TLE_TERM *term);
    int32_t (*java_text)(const TLB_BUILT_IN *record, TLC_STREAM *stream, TLE_TERM *term);
};
