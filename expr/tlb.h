// The records of the built-in functions, and what their checks and generators share.
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

// Values and their types
extern const TLB_BUILT_IN TLB_Abs;
extern const TLB_BUILT_IN TLB_Cast;
extern const TLB_BUILT_IN TLB_ToFloat;
extern const TLB_BUILT_IN TLB_Round;

// Quantities and their units
extern const TLB_BUILT_IN TLB_Qty;
extern const TLB_BUILT_IN TLB_Cvt;
extern const TLB_BUILT_IN TLB_Cvts;

// Ranges
extern const TLB_BUILT_IN TLB_Min;
extern const TLB_BUILT_IN TLB_Max;
extern const TLB_BUILT_IN TLB_Upb;

// Attributes of data items
extern const TLB_BUILT_IN TLB_Attr;

// Objects
extern const TLB_BUILT_IN TLB_Create;
extern const TLB_BUILT_IN TLB_Release;

// Makes the enumeration of the directions of a unit conversion.
void TLB_MakeDirections();

// Type of an argument, from 0; null past the last and for an argument without a type.
TLI_IDENTIFIER *TLB_ArgumentType(TLE_TERM *term, int32_t index);

// Is this the base type of a type? False for null.
bool TLB_HasBase(TLI_IDENTIFIER *type, const TLI_IDENTIFIER *base);

// Is the base type one of the integers? INT, CHAR, SHORT, quantities and enumerations have one.
bool TLB_IsIntegerBased(TLI_IDENTIFIER *type);

// Generates the value of an argument, from 0. 1, or 0 after a report.
int32_t TLB_ArgumentCode(TLC_STREAM *stream, TLE_TERM *term, int32_t index);

// Writes an argument as text for a place that binds tighter than any operator.
int32_t TLB_TightArgument(TLC_STREAM *stream, TLE_TERM *term, int32_t index);

// Is the C text of this term of the type INT, whatever type the term has?
bool TLB_IsWordInC(const TLE_TERM *term);

// Is the Java text of this term a call, which can stand by itself?
bool TLB_IsJavaCall(const TLE_TERM *term);

// Is the text of this term a difference, which needs brackets beside a tighter operator?
bool TLB_IsDifference(const TLE_TERM *term);
