/*
 * Java text: names of types and identifiers.
 */
#include <ostrum/tlcj.h>

#include <cstdio>
#include <cstring>

#include <ostrum/st.h>
#include <ostrum/tli.h>
#include <ostrum/tlit.h>

struct JAVA_TYPE {
    TLI_IDENTIFIER **type;
    const char *name;
};

static constexpr JAVA_TYPE java_types[] = {
    { .type = &TLIT_IntType, .name = "int" },
    { .type = &TLIT_CharType, .name = "char" },
    { .type = &TLIT_BoolType, .name = "bool" },
    { .type = &TLIT_VoidType, .name = "void" },
    { .type = &TLIT_Voltage, .name = "Voltage" },
    { .type = &TLIT_Current, .name = "Current" },
    { .type = &TLIT_Resistance, .name = "Resistance" },
    { .type = &TLIT_Time, .name = "Time" },
    { .type = &TLIT_Frequency, .name = "Frequency" },
    { .type = &TLIT_ClockTime, .name = "ClockTime" },
    { .type = &TLIT_StringType, .name = "String" },
    { .type = &TLIT_WordType, .name = "int" },
    { .type = &TLIT_True, .name = "bool" },
    { .type = &TLIT_False, .name = "bool" },
    { .type = &TLIT_ArrayType, .name = "Vector" },
    { .type = &TLIT_ShortType, .name = "short" },
    { .type = &TLIT_QuantityType, .name = "Quantity" },
};

const char *TLCJ_TypeName(TLI_DOMAIN *data_types, TLI_IDENTIFIER *type)
{
    for (const JAVA_TYPE &row : java_types) {
        if (type != nullptr && *row.type == type) return row.name;
    }
    if (TLIT_IsStringType(data_types, type)) return "String";
    switch (TLIT_TypeSubclass(nullptr, type)) {
    case TLIT_SUBCLASS_DATA:
        return "Data";
    case TLIT_SUBCLASS_POINTER:
        return TLI_IdentifierName(TLIT_PointerAt(type));
    default:
        return TLI_IdentifierName(type);
    }
}

char *TLCJ_IdentifierName(TLI_IDENTIFIER *identifier)
{
    const char *name = TLI_IdentifierName(identifier);
    bool has_digit = name[0] >= '0' && name[0] <= '9';
    char text[64];
    std::snprintf(text, sizeof text, "%s%s", has_digit ? "_" : "", name);
    char *point = std::strchr(text, '.');
    if (point != nullptr) *point = '_';
    return ST_Allocate(text);
}
