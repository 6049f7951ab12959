// Making types: the kinds of types with their descriptors, and the predeclared ones.
#include "names/tlit.h"

#include "core/sh.h"
#include "core/st.h"
#include "expr/tle.h"
#include "frontend/tlp.h"
#include "frontend/tlt.h"
#include "names/tlic.h"
#include "names/tliv.h"
#include "units/euc.h"

#include <cstdio>
#include <cstring>
#include <iterator>

TLI_IDENTIFIER *TLIT_IntType;
TLI_IDENTIFIER *TLIT_CharType;
TLI_IDENTIFIER *TLIT_StringType;
TLI_IDENTIFIER *TLIT_WordType;
TLI_IDENTIFIER *TLIT_ShortType;
TLI_IDENTIFIER *TLIT_FloatType;
TLI_IDENTIFIER *TLIT_VoidType;
TLI_IDENTIFIER *TLIT_DataType;
TLI_IDENTIFIER *TLIT_CodeType;
TLI_IDENTIFIER *TLIT_PtrType;
TLI_IDENTIFIER *TLIT_ArrayType;
TLI_IDENTIFIER *TLIT_QuantityType;
TLI_IDENTIFIER *TLIT_BoolType;
TLI_IDENTIFIER *TLIT_Voltage;
TLI_IDENTIFIER *TLIT_Current;
TLI_IDENTIFIER *TLIT_Resistance;
TLI_IDENTIFIER *TLIT_Time;
TLI_IDENTIFIER *TLIT_Frequency;
TLI_IDENTIFIER *TLIT_ClockTime;
TLI_IDENTIFIER *TLIT_True;
TLI_IDENTIFIER *TLIT_False;

static constexpr int32_t quantity_count = 35;

// Value of the flag that asks a module's loader to give it space of its own.
static constexpr int32_t allocate_space = 128;

static TLI_DOMAIN *language_domain;
static TLI_IDENTIFIER *quantity_types[quantity_count + 1]; // 0 is INT

// ---- Class records ----

static int32_t print_quantity(FILE *stream, TLI_IDENTIFIER *identifier, TLP_MODULE *)
{
    return fprintf(stream, " ID=%d \n", TLIT_TypeDebugType(identifier));
}

static int32_t print_enumeration(FILE *stream, TLI_IDENTIFIER *identifier, TLP_MODULE *)
{
    fprintf(stream, " = (");
    const TLIT_ENUM_VALUE *value = TLIT_AsType(identifier)->values;
    for (const char *separator = ""; value != nullptr; value = value->next, separator = ",")
        fprintf(stream, "%s%s", separator, value->identifier.name);
    return fprintf(stream, ")\n");
}

static int32_t print_record(FILE *stream, TLI_IDENTIFIER *identifier, TLP_MODULE *)
{
    return fprintf(stream, " Size=%d\n", TLIT_TypeSizeof(identifier, -1));
}

static int32_t print_array(FILE *stream, TLI_IDENTIFIER *identifier, TLP_MODULE *)
{
    return fprintf(stream, " =>%s\n", TLI_IdentifierName(TLIT_ArrayOf(identifier)));
}

static int32_t print_pointer(FILE *stream, TLI_IDENTIFIER *identifier, TLP_MODULE *)
{
    return fprintf(stream, " At=%s\n", TLI_IdentifierName(TLIT_PointerAt(identifier)));
}

static void delete_record(TLI_IDENTIFIER *identifier)
{
    TLIT_FIELD *link = TLIT_AsType(identifier)->fields;
    while (link != nullptr) {
        TLIT_FIELD *next = link->next;
        SH_Free(link);
        link = next;
    }
    TLI_DelScope(TLIT_RecordScope(identifier));
}

static constexpr TLI_CLASS type_class(const char *name, uint32_t flags,
                                      decltype(TLI_CLASS::delete_operation) delete_operation,
                                      decltype(TLI_CLASS::print) print)
{
    return {
        .class_name = name,
        .record_size = sizeof(TLIT_TYPE),
        .flags = flags,
        .delete_operation = delete_operation,
        .print = print,
        .value = nullptr,
        .push_value = nullptr,
        .push_address = nullptr,
        .push_dimension = nullptr,
        .dimension = nullptr,
        .flags_function = nullptr,
    };
}

// In the order of their enumerators.
constexpr TLI_CLASS TLIT_classes[TLIT_CLASS_COUNT] = {
    type_class("SIMPLE_TYPE", TLI_TYPE, nullptr, nullptr),
    type_class("QUANTITY_TYPE", TLI_TYPE, nullptr, print_quantity),
    type_class("ENUMERATION_TYPE", TLI_TYPE, nullptr, print_enumeration),
    type_class("DATA_TYPE", TLI_TYPE, nullptr, nullptr),
    type_class("FUNCTION_TYPE", TLI_TYPE, nullptr, nullptr),
    type_class("RECORD_TYPE", TLI_TYPE, delete_record, print_record),
    type_class("ARRAY", TLI_TYPE | TLI_DIMENSIONED, nullptr, print_array),
    type_class("POINTER_TYPE", TLI_TYPE, nullptr, print_pointer),
};

static int32_t enum_value_value(TLI_IDENTIFIER *identifier, int32_t, intptr_t *value, TLP_MODULE *)
{
    *value = reinterpret_cast<const TLIT_ENUM_VALUE *>(identifier)->number;
    return 1;
}

static int32_t enum_value_dimension(TLI_IDENTIFIER *, TLI_IDENTIFIER **)
{
    return -1;
}

static constexpr TLI_CLASS enum_value_class = {
    .class_name = "ENUMERATION_VALUE",
    .record_size = sizeof(TLIT_ENUM_VALUE),
    .flags = TLI_ENUM_VALUE,
    .delete_operation = nullptr,
    .print = nullptr,
    .value = enum_value_value,
    .push_value = nullptr,
    .push_address = nullptr,
    .push_dimension = nullptr,
    .dimension = enum_value_dimension,
    .flags_function = nullptr,
};

static constexpr TLI_CLASS bif_class = {
    .class_name = "BIF",
    .record_size = sizeof(TLIT_BIF),
    .flags = TLI_BUILT_IN_FUNCTION,
    .delete_operation = nullptr,
    .print = nullptr,
    .value = nullptr,
    .push_value = nullptr,
    .push_address = nullptr,
    .push_dimension = nullptr,
    .dimension = nullptr,
    .flags_function = nullptr,
};

// ---- Descriptors ----

// VARTYPEs of OLE Automation.
enum {
    VT_I2 = 2,
    VT_I4 = 3,
    VT_R4 = 4,
    VT_BSTR = 8,
    VT_DISPATCH = 9,
    VT_UNKNOWN = 13,
    VT_UI1 = 17,
    VT_ARRAY = 0x2000,
    VT_BYREF = 0x4000
};

static int32_t record_size(TLI_IDENTIFIER *type)
{
    const TLI_SCOPE *scope = TLIT_RecordScope(type);
    return scope != nullptr ? TLI_ScopeSize(scope) : 0;
}

// An array as a type is the pair of address and number of elements.
static int32_t array_size(TLI_IDENTIFIER *)
{
    return 8;
}

static constexpr TLIT_DESCRIPTOR descriptor(int32_t subclass, int32_t size, int32_t variant_type,
                                            int32_t (*size_operation)(TLI_IDENTIFIER *) = nullptr)
{
    return {
        .subclass = subclass,
        .base_type = nullptr,
        .size = size,
        .variant_type = variant_type,
        .size_operation = size_operation,
        .spare = 0,
    };
}

// The base types are filled in when the types that they are have been made.
static TLIT_DESCRIPTOR int_descriptor = descriptor(TLIT_SUBCLASS_SIMPLE, 4, VT_I4);
static TLIT_DESCRIPTOR short_descriptor = descriptor(TLIT_SUBCLASS_SIMPLE, 2, VT_I2);
static TLIT_DESCRIPTOR float_descriptor = descriptor(TLIT_SUBCLASS_SIMPLE, 4, VT_R4);
static TLIT_DESCRIPTOR char_descriptor = descriptor(TLIT_SUBCLASS_SIMPLE, 1, VT_UI1);
static TLIT_DESCRIPTOR string_descriptor = descriptor(TLIT_SUBCLASS_SIMPLE, 4, VT_BSTR);
static TLIT_DESCRIPTOR void_descriptor = descriptor(TLIT_SUBCLASS_SIMPLE, 0, 0);
static TLIT_DESCRIPTOR enumeration_descriptor = descriptor(TLIT_SUBCLASS_ENUMERATION, 1, VT_UI1);
static TLIT_DESCRIPTOR data_descriptor = descriptor(TLIT_SUBCLASS_DATA, 4, VT_UNKNOWN);
static TLIT_DESCRIPTOR function_descriptor = descriptor(TLIT_SUBCLASS_FUNCTION, 4, VT_DISPATCH);
static TLIT_DESCRIPTOR record_descriptor =
    descriptor(TLIT_SUBCLASS_RECORD, 4, VT_UNKNOWN, record_size);
static TLIT_DESCRIPTOR pointer_descriptor = descriptor(TLIT_SUBCLASS_POINTER, 4, VT_BYREF);
static TLIT_DESCRIPTOR array_descriptor = descriptor(TLIT_SUBCLASS_ARRAY, 4, VT_ARRAY, array_size);

static void fill_base_types()
{
    int_descriptor.base_type = TLIT_IntType;
    short_descriptor.base_type = TLIT_ShortType;
    float_descriptor.base_type = TLIT_FloatType;
    char_descriptor.base_type = TLIT_CharType;
    string_descriptor.base_type = TLIT_StringType;
    enumeration_descriptor.base_type = TLIT_CharType;
    data_descriptor.base_type = TLIT_DataType;
    function_descriptor.base_type = TLIT_CodeType;
    pointer_descriptor.base_type = TLIT_PtrType;
    array_descriptor.base_type = TLIT_ArrayType;
}

// ---- Making types ----

static TLI_IDENTIFIER *describe(TLI_IDENTIFIER *identifier, const TLIT_DESCRIPTOR *descriptor,
                                int32_t debug_type, intptr_t at)
{
    if (identifier == nullptr) return nullptr;
    TLIT_TYPE *type = TLIT_AsType(identifier);
    type->descriptor = descriptor;
    type->debug_type = debug_type;
    type->at = at;
    return identifier;
}

TLI_IDENTIFIER *TLIT_EnumerationType(TLI_DOMAIN *data_types, TLI_DOMAIN *domain,
                                     TLT_STATEMENT *statement, const char *name)
{
    TLI_IDENTIFIER *type = TLI_NewIdentifier(data_types, domain, statement, name, nullptr,
                                             &TLIT_classes[TLIT_ENUMERATION_CLASS]);
    return describe(type, &enumeration_descriptor, TLIT_DEBUG_ENUMERATION, 0);
}

static TLIT_TYPE *as_subclass(TLI_IDENTIFIER *identifier, int32_t subclass)
{
    TLIT_TYPE *type = TLIT_AsType(identifier);
    return type != nullptr && type->descriptor->subclass == subclass ? type : nullptr;
}

bool TLIT_IsEnumeration(TLI_IDENTIFIER *type)
{
    return as_subclass(type, TLIT_SUBCLASS_ENUMERATION) != nullptr;
}

static void append_value(TLIT_TYPE *enumeration, TLIT_ENUM_VALUE *value)
{
    value->number = (int32_t)enumeration->at++;
    value->enumeration = &enumeration->identifier;
    if (enumeration->last_value == nullptr) {
        enumeration->values = value;
    } else {
        enumeration->last_value->next = value;
    }
    enumeration->last_value = value;
}

TLI_IDENTIFIER *TLIT_EnumerationValue(TLI_DOMAIN *data_types, TLI_DOMAIN *domain,
                                      TLT_STATEMENT *statement, TLI_IDENTIFIER *enumeration,
                                      const char *name)
{
    TLIT_TYPE *type = as_subclass(enumeration, TLIT_SUBCLASS_ENUMERATION);
    if (type == nullptr) return nullptr;
    if (type->at >= TLIT_ENUM_LIMIT) {
        char text[64];
        snprintf(text, sizeof text, "ENUM types can only have %d values", TLIT_ENUM_LIMIT);
        TLT_Error(statement, text);
        return nullptr;
    }
    TLI_IDENTIFIER *value =
        TLI_NewIdentifier(data_types, domain, statement, name, enumeration, &enum_value_class);
    if (value != nullptr) append_value(type, reinterpret_cast<TLIT_ENUM_VALUE *>(value));
    return value;
}

TLI_IDENTIFIER *TLIT_EnumGetValue(TLI_IDENTIFIER *enumeration, int32_t number)
{
    TLIT_TYPE *type = as_subclass(enumeration, TLIT_SUBCLASS_ENUMERATION);
    if (type == nullptr) return nullptr;
    TLIT_ENUM_VALUE *value = type->values;
    while (value != nullptr && value->number != number)
        value = value->next;
    return value != nullptr ? &value->identifier : nullptr;
}

TLI_IDENTIFIER *TLIT_FunctionType(TLI_DOMAIN *data_types, TLI_DOMAIN *domain,
                                  TLT_STATEMENT *statement, const char *name,
                                  TLI_IDENTIFIER *prototype)
{
    TLI_IDENTIFIER *type = TLI_NewIdentifier(data_types, domain, statement, name, nullptr,
                                             &TLIT_classes[TLIT_FUNCTION_CLASS]);
    return describe(type, &function_descriptor, TLIT_DEBUG_PLAIN, (intptr_t)prototype);
}

TLI_IDENTIFIER *TLIT_Record(TLI_DOMAIN *data_types, TLI_DOMAIN *domain, TLT_STATEMENT *statement,
                            const char *name)
{
    TLI_IDENTIFIER *type = TLI_NewIdentifier(data_types, domain, statement, name, nullptr,
                                             &TLIT_classes[TLIT_RECORD_CLASS]);
    if (type == nullptr) return nullptr;
    TLI_SCOPE *scope = TLI_NewScope(domain, type->name, TLI_FRAME_SCOPE);
    describe(type, &record_descriptor, TLIT_DEBUG_RECORD, (intptr_t)scope);
    TLI_PushScope(domain, scope);
    return type;
}

static void append_field(TLIT_TYPE *record, TLI_IDENTIFIER *field)
{
    auto *link = static_cast<TLIT_FIELD *>(SH_NameAllocate(sizeof(TLIT_FIELD), "TLIT:FIELD"));
    link->field = field;
    if (record->last_field == nullptr) {
        record->fields = link;
    } else {
        record->last_field->next = link;
    }
    record->last_field = link;
}

TLI_IDENTIFIER *TLIT_RecordField(TLI_DOMAIN *data_types, TLI_DOMAIN *domain,
                                 TLT_STATEMENT *statement, TLI_IDENTIFIER *record, const char *name,
                                 TLI_IDENTIFIER *type, int32_t dimension,
                                 TLI_IDENTIFIER *range_type)
{
    TLIT_TYPE *holder = as_subclass(record, TLIT_SUBCLASS_RECORD);
    if (holder == nullptr) return nullptr;
    TLI_IDENTIFIER *field =
        TLIV_RecordField(data_types, domain, statement, record, name, type, dimension, range_type);
    append_field(holder, field);
    return field;
}

// The link at a place, from the one asked for last where that is not behind it; null past the end.
static TLIT_FIELD *find_field(TLIT_TYPE *record, int32_t index)
{
    if (record->cursor == nullptr || index < record->cursor_index) {
        record->cursor = record->fields;
        record->cursor_index = 0;
    }
    while (record->cursor_index < index) {
        if (record->cursor == nullptr || record->cursor->next == nullptr) return nullptr;
        record->cursor = record->cursor->next;
        record->cursor_index++;
    }
    return record->cursor;
}

TLI_IDENTIFIER *TLIT_RecordNthField(TLI_IDENTIFIER *record, int32_t index, int32_t *dimension)
{
    TLIT_TYPE *type = as_subclass(record, TLIT_SUBCLASS_RECORD);
    if (type == nullptr || index < 0) return nullptr;
    const TLIT_FIELD *link = find_field(type, index);
    if (link == nullptr || link->field == nullptr) return nullptr;
    if (dimension != nullptr) *dimension = TLI_IdentifierDimension(link->field, nullptr);
    return link->field;
}

// An array type stands beside its element type and lives as long as that, so it is given the same
// declaring statement. A name that fills the 31 characters leaves no room for the brackets, and then
// the array type is known to its element alone.
static TLI_IDENTIFIER *make_array(TLIT_TYPE *element, const char *name)
{
    TLI_SCOPE *scope = element->identifier.scope;
    const TLI_CLASS *array_class = &TLIT_classes[TLIT_ARRAY_CLASS];
    TLI_IDENTIFIER *array = nullptr;
    if (TLI_FindScopeIdentifier(scope, name) == nullptr) {
        array = TLI_NewScopeIdentifier(scope, element->identifier.statement, name, nullptr,
                                       array_class);
    } else {
        array = TLI_NewHiddenIdentifier("TLI:IDENTIFIER", name, array_class);
        array->statement = element->identifier.statement;
        TLI_OwnUnlisted(scope, array);
        element->unlisted_array = array;
    }
    return describe(array, &array_descriptor, TLIT_DEBUG_PLAIN, (intptr_t)element);
}

TLI_IDENTIFIER *TLIT_Array(TLI_DOMAIN *, TLT_STATEMENT *, TLI_IDENTIFIER *element_type)
{
    TLIT_TYPE *element = TLIT_AsType(element_type);
    if (element == nullptr || element_type->scope == nullptr) return nullptr;
    if (element->unlisted_array != nullptr) return element->unlisted_array;
    char name[TLI_NAME_CAPACITY];
    ST_Copy(name, TLI_NAME_CAPACITY, element_type->name);
    ST_Append(name, TLI_NAME_CAPACITY, "[]");
    TLI_IDENTIFIER *found = TLI_FindScopeIdentifier(element_type->scope, name);
    if (TLIT_IsArrayType(found) && TLIT_ArrayOf(found) == element_type) return found;
    return make_array(element, name);
}

TLI_IDENTIFIER *TLIT_Pointer(TLI_DOMAIN *data_types, TLI_DOMAIN *domain, TLT_STATEMENT *statement,
                             const char *name, TLI_IDENTIFIER *record_type)
{
    if (!TLIT_IsRecordType(record_type)) {
        TLT_Error(statement, "POINTERs can only point to RECORDs");
        return nullptr;
    }
    TLI_IDENTIFIER *type = TLI_NewIdentifier(data_types, domain, statement, name, nullptr,
                                             &TLIT_classes[TLIT_POINTER_CLASS]);
    return describe(type, &pointer_descriptor, TLIT_DEBUG_RECORD, (intptr_t)record_type);
}

TLI_IDENTIFIER *TLIT_BuiltInFunction(const char *name, const void *record)
{
    TLI_IDENTIFIER *identifier =
        TLI_NewIdentifier(nullptr, language_domain, nullptr, name, nullptr, &bif_class);
    if (identifier != nullptr) reinterpret_cast<TLIT_BIF *>(identifier)->record = record;
    return identifier;
}

const void *TLIT_BifClass(TLI_IDENTIFIER *identifier)
{
    if (identifier == nullptr || identifier->class_record != &bif_class) return nullptr;
    return reinterpret_cast<const TLIT_BIF *>(identifier)->record;
}

// ---- Data types ----

void TLIT_SetupDataType(TLP_MODULE *module)
{
    static constexpr const char *names[] = {
        "MESSAGE",  "CONNECTOR", "VIEW",  "PIN",         "PICTURE",   "PARAMETER", "HELPSCREEN",
        "WAVEFORM", "COMPONENT", "POINT", "BINARY_DATA", "CONVERTER", "VARLOC",
    };
    TLI_DOMAIN *domain = TLI_NewDomain("");
    TLI_PushScope(domain, TLI_NewScope(domain, "DataType Primitives", TLI_STATIC_SCOPE));
    for (const char *name : names) {
        TLI_IDENTIFIER *type = TLI_NewIdentifier(nullptr, domain, nullptr, name, nullptr,
                                                 &TLIT_classes[TLIT_DATA_CLASS]);
        describe(type, &data_descriptor, TLIT_DEBUG_DATA, 0);
    }
    TLP_SetDataTypeDomain(module, domain);
}

// ---- Predeclared types ----

static TLI_IDENTIFIER *make_language_type(const char *name, int32_t type_class,
                                          const TLIT_DESCRIPTOR *descriptor, int32_t debug_type)
{
    TLI_IDENTIFIER *type = TLI_NewIdentifier(nullptr, language_domain, nullptr, name, nullptr,
                                             &TLIT_classes[type_class]);
    return describe(type, descriptor, debug_type, 0);
}

static TLI_IDENTIFIER *make_simple(const char *name, const TLIT_DESCRIPTOR *descriptor,
                                   int32_t debug_type)
{
    return make_language_type(name, TLIT_SIMPLE_CLASS, descriptor, debug_type);
}

// A type that no program can name; it is the base of others.
static TLI_IDENTIFIER *make_hidden(const char *name)
{
    TLI_IDENTIFIER *type =
        TLI_NewHiddenIdentifier("TLIT:HIDDEN_TYPE", name, &TLIT_classes[TLIT_SIMPLE_CLASS]);
    return describe(type, &void_descriptor, TLIT_DEBUG_PLAIN, 0);
}

static void make_simple_types()
{
    TLIT_IntType = make_simple("INT", &int_descriptor, TLIT_DEBUG_PLAIN);
    TLIT_CharType = make_simple("CHAR", &char_descriptor, TLIT_DEBUG_CHAR);
    TLIT_StringType = make_simple("STRING", &string_descriptor, TLIT_DEBUG_STRING);
    TLIT_WordType = make_simple("WORD", &int_descriptor, TLIT_DEBUG_PLAIN);
    TLIT_ShortType = make_simple("SHORT", &short_descriptor, TLIT_DEBUG_SHORT);
    TLIT_FloatType = make_simple("FLOAT", &float_descriptor, TLIT_DEBUG_PLAIN);
    TLIT_VoidType = make_simple("VOID", &void_descriptor, TLIT_DEBUG_PLAIN);
    TLIT_DataType = make_hidden("DATA");
    TLIT_CodeType = make_hidden("CODE");
    TLIT_PtrType = make_hidden("POINTER");
    TLIT_ArrayType = make_hidden("ARRAY");
    TLIT_QuantityType = make_simple("QUANTITY", &int_descriptor, TLIT_DEBUG_PLAIN);
    TLIT_EnumerationType(nullptr, language_domain, nullptr, "QUANTITY_TYPE");
}

static void make_quantity_types()
{
    quantity_types[0] = TLIT_IntType;
    for (int32_t quantity = 1; quantity <= quantity_count; quantity++) {
        quantity_types[quantity] = make_language_type(
            EUC_QuantityName(quantity), TLIT_QUANTITY_CLASS, &int_descriptor, quantity);
    }
    TLIT_Voltage = TLIT_FindType(nullptr, "VOLTAGE");
    TLIT_Current = TLIT_FindType(nullptr, "CURRENT");
    TLIT_Resistance = TLIT_FindType(nullptr, "RESISTANCE");
    TLIT_Time = TLIT_FindType(nullptr, "TIME");
    TLIT_Frequency = TLIT_FindType(nullptr, "FREQUENCY");
    TLIT_ClockTime = TLIT_FindType(nullptr, "CLOCK_TIME");
}

static void make_bool()
{
    TLIT_BoolType = TLIT_EnumerationType(nullptr, language_domain, nullptr, "BOOL");
    TLIT_AsType(TLIT_BoolType)->debug_type = TLIT_DEBUG_BOOL;
    TLIT_EnumerationValue(nullptr, language_domain, nullptr, TLIT_BoolType, "FALSE");
    TLIT_EnumerationValue(nullptr, language_domain, nullptr, TLIT_BoolType, "TRUE");
}

static void make_allocate_space()
{
    static constexpr int32_t constant_use = 4;
    TLE_TERM *value = TLE_ConstantTerm(constant_use, TLIT_IntType, allocate_space);
    TLIC_Constant(nullptr, language_domain, nullptr, "ALLOCATE_SPACE", TLIT_IntType, -1, nullptr,
                  TLE_Append(nullptr, value));
}

void TLIT_Initialise(void)
{
    static bool is_initialised = false;
    if (is_initialised) return;
    is_initialised = true;
    TLT_Initialise();
    language_domain = TLI_NewDomain("");
    TLI_PushScope(language_domain,
                  TLI_NewScope(language_domain, "Language Primitives", TLI_STATIC_SCOPE));
    make_simple_types();
    make_quantity_types();
    make_bool();
    make_allocate_space();
    fill_base_types();
}

TLI_DOMAIN *TLIT_LanguageDomain(void)
{
    return language_domain;
}

TLI_IDENTIFIER *TLIT_GetQuantityType(int32_t quantity)
{
    if (quantity < 0 || quantity > quantity_count) return nullptr;
    return quantity_types[quantity];
}
