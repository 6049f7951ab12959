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
    TLIT_FIELD *cursor;             // record: link of cursor_index, null before the first question
    TLI_IDENTIFIER *unlisted_array; // its array type, where that could not be listed by name
};

struct TLIT_BIF {
    TLI_IDENTIFIER identifier;
    const void *record; // static record of the built-in
};

// The class records of types.
enum {
    TLIT_SIMPLE_CLASS,
    TLIT_QUANTITY_CLASS,
    TLIT_ENUMERATION_CLASS,
    TLIT_DATA_CLASS,
    TLIT_FUNCTION_CLASS,
    TLIT_RECORD_CLASS,
    TLIT_ARRAY_CLASS,
    TLIT_POINTER_CLASS,
    TLIT_CLASS_COUNT
};
extern const TLI_CLASS TLIT_classes[TLIT_CLASS_COUNT];

// The identifier as a type; null if it is null or none of the types made here.
static inline TLIT_TYPE *TLIT_AsType(TLI_IDENTIFIER *identifier)
{
    if (identifier == nullptr) return nullptr;
    const uintptr_t offset =
        (uintptr_t)identifier->class_record - (uintptr_t)&TLIT_classes[TLIT_SIMPLE_CLASS];
    return offset < sizeof TLIT_classes ? (TLIT_TYPE *)identifier : nullptr;
}

// Is it an enumeration? False for null and for what is no type.
bool TLIT_IsEnumeration(TLI_IDENTIFIER *type);
