// What the checks of the operators leave for their code.
#pragma once

#include "expr/tle.h"
#include <ostrum/tlo.h>

// The extra word of a product, quotient, remainder, bit operation or shift: the operation code, and
// above it the scale of SMUL and SDIV as a power of ten.
static constexpr int32_t TLO_CODE_MASK = 255;
static constexpr int32_t TLO_SCALE_SHIFT = 8;

// The extra word of an assignment.
enum {
    TLO_STORE_VALUE = 0,
    TLO_STORE_RECORD = 1,        // block copy; of a refused statement only
    TLO_STORE_ADDRESS = 2,       // a record's address into a pointer
    TLO_STORE_TIME_AS_CLOCK = 3, // microseconds into milliseconds
    TLO_STORE_CLOCK_AS_TIME = 4, // milliseconds into microseconds
    TLO_STORE_ARRAY = 5          // the pair of an array: address and length
};

// 10 to the power that an extra word holds.
int32_t TLO_Scale(int32_t extra);

// Code operations of the operator records: 1, or 0 if the mode has no code.
int32_t TLO_SumCode(TLC_STREAM *stream, const TLE_OPERATOR *record, TLE_TERM *term, int32_t mode);
int32_t TLO_ProductCode(TLC_STREAM *stream, const TLE_OPERATOR *record, TLE_TERM *term,
                        int32_t mode);
int32_t TLO_InvertCode(TLC_STREAM *stream, const TLE_OPERATOR *record, TLE_TERM *term,
                       int32_t mode);
int32_t TLO_NotCode(TLC_STREAM *stream, const TLE_OPERATOR *record, TLE_TERM *term, int32_t mode);
int32_t TLO_JunctionCode(TLC_STREAM *stream, const TLE_OPERATOR *record, TLE_TERM *term,
                         int32_t mode);
int32_t TLO_ComparisonCode(TLC_STREAM *stream, const TLE_OPERATOR *record, TLE_TERM *term,
                           int32_t mode);
int32_t TLO_AssignmentCode(TLC_STREAM *stream, const TLE_OPERATOR *record, TLE_TERM *term,
                           int32_t mode);
int32_t TLO_FieldCode(TLC_STREAM *stream, const TLE_OPERATOR *record, TLE_TERM *term, int32_t mode);
int32_t TLO_PointerFieldCode(TLC_STREAM *stream, const TLE_OPERATOR *record, TLE_TERM *term,
                             int32_t mode);
