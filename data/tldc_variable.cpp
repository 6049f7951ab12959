/*
 * Variable locations, on connectors and components.
 */
#include "data/tldc.h"

#include <cstdio>
#include <iterator>

#include <ostrum/tlc.h>
#include <ostrum/tlcj.h>
#include <ostrum/tle.h>
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

static constexpr TLD_ITEM_KIND variable_kind = {
    .tag = "TLDC:VARLOC",
    .size = sizeof(TLDC_VARIABLE),
    .statement_class = &TLDC_VariableClass,
    .type_name = "VARLOC",
    .handler = take_attribute,
    .words = nullptr,
    .word_count = 0,
};

void TLDC_ParseVariable(TLS_BLOCK *root, TLT_STATEMENT *statement, const TLD_SECTION *owner,
                        TLE_TERM *const *owner_name)
{
    TLD_ITEM *head = TLD_BeginItem(variable_kind, root, statement, owner, nullptr);
    variable_record(&head->common)->owner_name = owner_name;
    TLD_ParseAttributes(root, statement, head);
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
    if (!TLD_OpenItem(stream, &variable->head)) return;
    TLC_Code8(stream, TLD_RECORD_VARIABLE);
    TLC_Code8(stream, 0);
    TLD_DataTerm(stream, variable_name(variable));
    TLD_DataTerm(stream, variable->location);
    TLC_Code16(stream, variable->attributes);
}

static void construct_variable(TLC_STREAM *stream, const TLDC_VARIABLE *variable)
{
    FILE *file = TLC_CFile(stream);
    TLD_JavaNew(stream, "Varloc", variable->head.identifier);
    TLCJ_DataTerm(stream, variable_name(variable));
    TLD_JavaArgument(stream, variable->location);
    std::fprintf(file, ", %d);\n", variable->attributes);
    TLD_JavaCall(stream, variable->head.identifier, "setParent", variable->head.owner->identifier);
    std::fputs("\n", file);
}

static void variable_java(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *item)
{
    const TLDC_VARIABLE *variable = variable_record(item);
    if (variable->head.identifier == nullptr) return;
    if (TLD_JavaDeclares(stream)) {
        TLD_JavaField(stream, "Varloc", variable->head.identifier);
    } else {
        construct_variable(stream, variable);
    }
}

static void delete_variable(TLS_STATEMENT *item)
{
    TLDC_VARIABLE *variable = variable_record(item);
    TLE_DelExpression(variable->name);
    TLE_DelExpression(variable->location);
    TLD_DeleteItem(&variable->head);
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
