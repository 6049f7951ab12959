// Records behind the types: the type's own fields, descriptors, enumeration values, field links.
#pragma once

#include "names/tli.h"
#include <ostrum/tlit.h>

// What all types of one kind have in common.
struct TLIT_DESCRIPTOR {
    int32_t subclass;          // TLIT_SUBCLASS_...
    TLI_IDENTIFIER *base_type; // set when the predeclared types have been made
    int32_t size;              // bytes of one value
    int32_t variant_type;      // VARTYPE in a dispatch call
    int32_t (*size_operation)(TLI_IDENTIFIER *type); // takes the place of size where not null
    intptr_t spare;                                  // always 0
};

// One field of a record, in order of declaration.
struct TLIT_FIELD {
    TLI_IDENTIFIER *field; // null where a field was refused
    TLIT_FIELD *next;
};

struct TLIT_ENUM_VALUE {
    TLI_IDENTIFIER identifier; // its type is the enumeration
    int32_t number;            // from 0
    TLI_IDENTIFIER *enumeration;
    TLIT_ENUM_VALUE *next;
};

struct TLIT_TYPE {
    TLI_IDENTIFIER identifier;         // its type is null
    const TLIT_DESCRIPTOR *descriptor; // never null
    int32_t debug_type;                // TLIT_DEBUG_..., or a quantity's number
    int32_t cursor_index;              // record: index of the field last asked for
    intptr_t at; // values of an enumeration; prototype, scope, element type or target
    union {
        TLIT_ENUM_VALUE *values; // enumeration
        TLIT_FIELD *fields;      // record, owned
    };
    union {
        TLIT_ENUM_VALUE *last_value;
        TLIT_FIELD *last_field;
    };
    TLIT_FIELD *cursor; // record: link of cursor_index, null before the first question
};
