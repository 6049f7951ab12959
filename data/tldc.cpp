/*
 * Connectors: the section.
 */
#include "data/tldc.h"

#include "codegen/tlcj.h"

#include <cstdio>
#include <iterator>

#include <ostrum/sh.h>
#include <ostrum/tlc.h>
#include <ostrum/tle.h>
#include <ostrum/tlp.h>

enum { NAME, LOCATION, MNEMONIC, CABLE, HELPSCREEN };

static constexpr TLD_ATTRIBUTE attributes[] = {
    { .code = NAME, .word = "Name", .type_name = "MESSAGE" },
    { .code = LOCATION, .word = "Location", .type_name = "PARAMETER" },
    { .code = MNEMONIC, .word = "Mnemonic", .type_name = "MESSAGE" },
    { .code = CABLE, .word = "Cable", .type_name = "INT" },
    { .code = HELPSCREEN, .word = "Helpscreen", .type_name = "HELPSCREEN" },
};

static TLDC_CONNECTOR *connector_record(TLS_STATEMENT *item)
{
    return reinterpret_cast<TLDC_CONNECTOR *>(item);
}

static void take_attribute(void *user, TLS_BLOCK *block, TLT_STATEMENT *statement, const char *word)
{
    intptr_t value = 0;
    auto *connector = static_cast<TLDC_CONNECTOR *>(user);
    switch (TLD_FindAttribute(block, statement, word, attributes, int32_t{ std::size(attributes) },
                              &value)) {
    case NAME:
        TLD_SetTerm(statement, &connector->name, value);
        break;
    case LOCATION:
        TLD_SetTerm(statement, &connector->location, value);
        break;
    case MNEMONIC:
        TLD_SetTerm(statement, &connector->mnemonic, value);
        break;
    case CABLE:
        connector->cable = static_cast<int32_t>(value);
        break;
    case HELPSCREEN:
        TLD_SetTerm(statement, &connector->helpscreen, value);
        break;
    default: /* a message has told why there is none */
        break;
    }
}

static void parse_variable(TLS_BLOCK *root, TLT_STATEMENT *statement, TLS_STATEMENT *item)
{
    TLDC_ParseVariable(root, statement, TLD_AsSection(item), &connector_record(item)->name);
}

static constexpr TLD_ITEM_WORD item_words[] = {
    { .word = TLD_WORD_VIEW, .parse = TLDC_ParseView },
    { .word = TLD_WORD_PIN, .parse = TLDC_ParsePin },
    { .word = TLD_WORD_VARLOC, .parse = parse_variable },
};

static void parse_connector(TLS_BLOCK *root, TLT_STATEMENT *statement, void *context)
{
    TLD_ParseItem(root, statement, static_cast<TLS_STATEMENT *>(context), item_words,
                  int32_t{ std::size(item_words) }, take_attribute);
}

static constexpr TLD_SECTION_KIND connector_kind = {
    .tag = "TLDC:CONNECTOR",
    .size = sizeof(TLDC_CONNECTOR),
    .statement_class = &TLDC_ConnectorClass,
    .set_defaults = nullptr,
};

static TLS_BLOCK *begin_connector(TLP_MODULE *module, TLI_IDENTIFIER *function,
                                  TLT_STATEMENT *statement, int32_t type)
{
    return TLD_BeginSection(connector_kind, module, function, statement, type);
}

static void print_connector(TLS_STATEMENT *item, int32_t indent)
{
    TLS_PrintBlock("CONNECTOR FUNCTION", TLD_AsSection(item)->sub_block, indent + 2);
}

static void check_connector(TLS_BLOCK *, TLS_STATEMENT *item)
{
    TLD_CheckTerm(item, connector_record(item)->name, "NAME");
    TLD_CheckTerm(item, connector_record(item)->mnemonic, "MNEMONIC");
    TLS_CheckBlock(TLD_AsSection(item)->sub_block);
}

static void generate_connector(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *item)
{
    const TLDC_CONNECTOR *connector = connector_record(item);
    TLD_OpenRecord(stream, item);
    TLC_Code8(stream, TLD_RECORD_CONNECTOR);
    TLC_Code8(stream, 1);
    TLD_DataTerm(stream, connector->name);
    TLD_DataTerm(stream, connector->mnemonic);
    TLD_DataTerm(stream, connector->location);
    TLC_Code16(stream, connector->cable);
    TLD_DataTerm(stream, connector->helpscreen);
    TLS_BlockCode(stream, connector->head.sub_block);
    TLD_CloseRecord(stream);
}

static void construct_connector(TLC_STREAM *stream, const TLDC_CONNECTOR *connector)
{
    FILE *file = TLC_CFile(stream);
    TLD_JavaNew(stream, "Connector", connector->head.identifier);
    TLCJ_DataTerm(stream, connector->name);
    TLD_JavaArgument(stream, connector->mnemonic);
    TLD_JavaArgument(stream, connector->location);
    std::fprintf(file, ", %d", connector->cable);
    TLD_JavaArgument(stream, connector->helpscreen);
    std::fputs(");\n", file);
}

static void connector_java(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *item)
{
    const TLDC_CONNECTOR *connector = connector_record(item);
    if (TLD_JavaDeclares(stream)) {
        TLD_JavaField(stream, "Connector", connector->head.identifier);
    } else {
        construct_connector(stream, connector);
    }
    TLS_BlockCode(stream, connector->head.sub_block);
}

static void delete_connector(TLS_STATEMENT *item)
{
    TLDC_CONNECTOR *connector = connector_record(item);
    TLE_DelExpression(connector->name);
    TLE_DelExpression(connector->mnemonic);
    TLE_DelExpression(connector->location);
    TLE_DelExpression(connector->helpscreen);
    TLS_DelBlock(connector->head.sub_block);
    SH_Free(connector);
}

const TLS_STATEMENT_CLASS TLDC_ConnectorClass = {
    .flags = 0,
    .print = print_connector,
    .check = check_connector,
    .p_code = generate_connector,
    .c_code = nullptr,
    .java_code = connector_java,
    .delete_statement = delete_connector,
    .tree = nullptr,
    .node_section = nullptr,
    .tree_callbacks = nullptr,
};

static const TLS_BLOCK_CLASS connector_block = {
    .begin = begin_connector,
    .parser = parse_connector,
};

void TLDC_Initialise(void)
{
    static bool is_initialised;
    if (is_initialised) return;
    is_initialised = true;
    TLS_DeclareBlockClass(TLP_SECTION_CONNECTOR, &connector_block);
}
