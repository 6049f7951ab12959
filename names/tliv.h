// Records of the names that own storage, and of functions.
#pragma once

#include "names/tli.h"
#include <ostrum/tliv.h>

// How an argument is passed.
enum { TLIV_BY_VALUE = 0, TLIV_BY_VAR = 1, TLIV_BY_CONST = 2, TLIV_PASS_TYPE_COUNT = 3 };

// Qualifiers of a function.
enum { TLIV_PRIVATE = 0, TLIV_PUBLIC = 1, TLIV_ENTRY = 2, TLIV_PROTOTYPE = 3 };

// What variables, arguments and fields have in common; a variable has nothing else. An item of array
// type is a pair of words: the address of the elements, then their number.
struct TLIV_VARIABLE {
    TLI_IDENTIFIER identifier;
    int32_t offset;             // bytes from the start of the scope or record
    int32_t dimension;          // -1 scalar, 0 length known at run time, else number of elements
    TLI_IDENTIFIER *range_type; // type of the subscript, null for a scalar
};

struct TLIV_ARGUMENT {
    TLIV_VARIABLE storage;
    int32_t pass_type; // TLIV_BY_...
    TLIV_ARGUMENT *next_argument;
};

struct TLIV_FIELD {
    TLIV_VARIABLE storage;
    TLI_IDENTIFIER *record; // type that holds it
};

struct TLIV_FUNCTION {
    TLI_IDENTIFIER identifier; // its type is the result type
    TLI_SCOPE *scope;          // arguments and locals; owned
    int32_t function_class;    // section type, -1 where the source names none
    int32_t qualifiers;        // TLIV_PRIVATE to TLIV_PROTOTYPE
    TLIV_ARGUMENT *arguments;  // in declaration order; a walk of the scope has them newest first
    TLIV_ARGUMENT *last_argument;
    TLS_BLOCK *block;        // owned; null until BEGIN
    int32_t extra_arguments; // 1: more arguments than declared may be passed
    int32_t line_number;     // running line number of the module
    int32_t cursor_index;    // place of the argument last asked for
    TLIV_ARGUMENT *cursor;   // that argument, null before the first question
};

// TLIV_CompareFunctions without the message, where it is only asked whether they match.
int32_t TLIV_SameFunctions(TLI_IDENTIFIER *first, TLI_IDENTIFIER *second, int32_t strict);
