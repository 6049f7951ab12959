/*
 * Variable locations, on connectors and components.
 */
#include "data/tldc.h"

#include <cstdio>
#include <iterator>

#include <ostrum/sh.h>
#include <ostrum/tlc.h>
#include <ostrum/tlcj.h>
#include <ostrum/tle.h>
#include <ostrum/tli.h>
#include <ostrum/tlit.h>
#include <ostrum/tlt.h>

enum { NAME, LOCATION, ATTRIBUTES };

static constexpr TLD_ATTRIBUTE attributes[] = {
    { .code = NAME, .word = "Name", .type_name = "MESSAGE" },
    { .code = LOCATION, .word = "Location", .type_name = "PARAMETER" },
    { .code = ATTRIBUTES, .word = "Attributes", .type_name = "INT" },
};

static TLDC_VARIABLE *variable_record(TLS_STATEMENT *item)
{
    return reinterpret_cast<TLDC_VARIABLE *>(item);
}

static void set_number(TLT_STATEMENT *statement, int32_t *slot, intptr_t value)
{
    intptr_t held = *slot;
    TLD_SetValue(statement, &held, value);
    *slot = static_cast<int32_t>(held);
}

static void take_attribute(void *user, TLS_BLOCK *block, TLT_STATEMENT *statement, const char *word)
{
    intptr_t value = 0;
    auto *variable = static_cast<TLDC_VARIABLE *>(user);
    switch (TLD_FindAttribute(block, statement, word, attributes, int32_t{ std::size(attributes) },
                              &value)) {
    case NAME:
        TLD_SetTerm(statement, &variable->name, value);
        break;
    case LOCATION:
        TLD_SetTerm(statement, &variable->location, value);
        break;
    case ATTRIBUTES:
        set_number(statement, &variable->attributes, value);
        break;
    default: /* a message has told why there is none */
        break;
    }
}

static void parse_further(TLS_BLOCK *root, TLT_STATEMENT *statement, void *context)
{
    TLD_ParseItem(root, statement, static_cast<TLS_STATEMENT *>(context), nullptr, 0,
                  take_attribute);
}

void TLDC_ParseVariable(TLS_BLOCK *root, TLT_STATEMENT *statement, const TLD_SECTION *owner,
                        TLE_TERM *const *owner_name)
{
    TLS_STATEMENT *item =
        TLS_NewStatement("TLDC:VARLOC", sizeof(TLDC_VARIABLE), &TLDC_VariableClass, statement);
    TLDC_VARIABLE *variable = variable_record(item);
    variable->owner = owner;
    variable->owner_name = owner_name;
    TLT_GetToken(statement, nullptr);
    TLS_Append(root, item);
    variable->identifier = TLD_ExpectItem(root, statement, "VARLOC", item, nullptr);
    if (variable->identifier == nullptr) return;
    variable->sub_block = TLS_SubBlock(root);
    TLS_SetParser(variable->sub_block, parse_further, item);
    TLD_ParseData(root, statement, take_attribute, item);
}

static void check_variable(TLS_BLOCK *, TLS_STATEMENT *item)
{
    TLD_CheckTerm(item, variable_record(item)->location, "LOCATION");
}

static TLE_TERM *variable_name(const TLDC_VARIABLE *variable)
{
    return variable->name == nullptr ? *variable->owner_name : variable->name;
}

static void generate_variable(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *item)
{
    TLDC_VARIABLE *variable = variable_record(item);
    if (variable->identifier == nullptr) return;
    variable->section = TLD_OpenItem(stream, variable->owner, variable->identifier);
    TLC_Code8(stream, TLD_RECORD_VARIABLE);
    TLC_Code8(stream, 0);
    TLD_DataTerm(stream, variable_name(variable));
    TLD_DataTerm(stream, variable->location);
    TLC_Code16(stream, variable->attributes);
}

static void construct_variable(TLC_STREAM *stream, const TLDC_VARIABLE *variable)
{
    FILE *file = TLC_CFile(stream);
    TLD_JavaNew(stream, "Varloc", variable->identifier);
    TLCJ_DataTerm(stream, variable_name(variable));
    std::fputs(", ", file);
    TLCJ_DataTerm(stream, variable->location);
    std::fprintf(file, ", %d);\n    ", variable->attributes);
    TLD_JavaName(stream, variable->identifier);
    std::fputs(".setParent(", file);
    TLD_JavaName(stream, variable->owner->identifier);
    std::fputs(");\n\n", file);
}

static void variable_java(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *item)
{
    const TLDC_VARIABLE *variable = variable_record(item);
    if (variable->identifier == nullptr) return;
    if (TLD_JavaDeclares(stream)) {
        TLD_JavaField(stream, "Varloc", variable->identifier);
    } else {
        construct_variable(stream, variable);
    }
}

static void delete_variable(TLS_STATEMENT *item)
{
    TLDC_VARIABLE *variable = variable_record(item);
    TLE_DelExpression(variable->name);
    TLE_DelExpression(variable->location);
    TLS_DelBlock(variable->sub_block);
    SH_Free(variable);
}

const TLS_STATEMENT_CLASS TLDC_VariableClass = {
    .flags = 0,
    .print = nullptr,
    .check = check_variable,
    .p_code = generate_variable,
    .c_code = nullptr,
    .java_code = variable_java,
    .delete_statement = delete_variable,
    .tree = nullptr,
    .node_section = nullptr,
    .tree_callbacks = nullptr,
};
