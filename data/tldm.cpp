/*
 * Components: parts of a vehicle.
 */
#include "data/tldm.h"
#include "data/tldc.h"

#include "codegen/tlcj.h"

#include <cstdio>
#include <iterator>

#include <ostrum/sh.h>
#include <ostrum/tlc.h>
#include <ostrum/tle.h>
#include <ostrum/tlp.h>

enum { PARENT, LOCATION, NAME, HELPSCREEN };

static constexpr TLD_ATTRIBUTE attributes[] = {
    { .code = PARENT, .word = "Parent", .type_name = "COMPONENT" },
    { .code = LOCATION, .word = "Location", .type_name = "PARAMETER" },
    { .code = NAME, .word = "Name", .type_name = "MESSAGE" },
    { .code = HELPSCREEN, .word = "Helpscreen", .type_name = "HELPSCREEN" },
};

static TLDM_COMPONENT *component_record(TLS_STATEMENT *item)
{
    return reinterpret_cast<TLDM_COMPONENT *>(item);
}

/* The field of an attribute; null for none. */
static TLE_TERM **field_of(TLDM_COMPONENT *component, int32_t code)
{
    switch (code) {
    case PARENT:
        return &component->parent;
    case LOCATION:
        return &component->location;
    case NAME:
        return &component->name;
    case HELPSCREEN:
        return &component->helpscreen;
    default:
        return nullptr;
    }
}

static void take_attribute(void *user, TLS_BLOCK *block, TLT_STATEMENT *statement, const char *word)
{
    intptr_t value = 0;
    const int32_t code = TLD_FindAttribute(block, statement, word, attributes,
                                           int32_t{ std::size(attributes) }, &value);
    TLE_TERM **field = field_of(static_cast<TLDM_COMPONENT *>(user), code);
    if (field != nullptr) TLD_SetTerm(statement, field, value);
}

static void parse_variable(TLS_BLOCK *root, TLT_STATEMENT *statement, TLS_STATEMENT *item)
{
    TLDC_ParseVariable(root, statement, TLD_AsSection(item), &component_record(item)->name);
}

static constexpr TLD_ITEM_WORD item_words[] = {
    { .word = TLD_WORD_VARLOC, .parse = parse_variable },
};

static void parse_component(TLS_BLOCK *root, TLT_STATEMENT *statement, void *context)
{
    TLD_ParseItem(root, statement, static_cast<TLS_STATEMENT *>(context), item_words,
                  int32_t{ std::size(item_words) }, take_attribute);
}

static constexpr TLD_SECTION_KIND component_kind = {
    .tag = "TLDM:COMPONENT",
    .size = sizeof(TLDM_COMPONENT),
    .statement_class = &TLDM_ComponentClass,
    .set_defaults = nullptr,
};

static TLS_BLOCK *begin_component(TLP_MODULE *module, TLI_IDENTIFIER *function,
                                  TLT_STATEMENT *statement, int32_t type)
{
    return TLD_BeginSection(component_kind, module, function, statement, type);
}

static void check_component(TLS_BLOCK *, TLS_STATEMENT *item)
{
    TLD_CheckTerm(item, component_record(item)->name, "NAME");
    TLS_CheckBlock(TLD_AsSection(item)->sub_block);
}

static void generate_component(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *item)
{
    const TLDM_COMPONENT *component = component_record(item);
    TLD_OpenRecord(stream, item);
    TLC_Code8(stream, TLD_RECORD_COMPONENT);
    TLC_Code8(stream, component->flags);
    TLD_DataTerm(stream, component->name);
    TLD_DataTerm(stream, component->parent);
    TLD_DataTerm(stream, component->location);
    TLD_DataTerm(stream, component->helpscreen);
    TLS_BlockCode(stream, component->head.sub_block);
    TLD_CloseRecord(stream);
}

static void write_parent(TLC_STREAM *stream, const TLDM_COMPONENT *component)
{
    FILE *file = TLC_CFile(stream);
    if (component->parent == nullptr) return;
    if (TLCJ_IsLate(stream, component->parent)) {
        TLCJ_NoteParent(stream, component->head.identifier, component->parent);
        return;
    }
    std::fputs("    ", file);
    TLD_JavaName(stream, component->head.identifier);
    std::fputs(".setParent(", file);
    TLCJ_DataTerm(stream, component->parent);
    std::fputs(");\n\n", file);
}

static void construct_component(TLC_STREAM *stream, const TLDM_COMPONENT *component)
{
    FILE *file = TLC_CFile(stream);
    TLD_JavaNew(stream, "Component", component->head.identifier);
    TLCJ_DataTerm(stream, component->name);
    std::fprintf(file, ", %x", static_cast<uint32_t>(component->flags));
    if (component->location != nullptr) TLD_JavaArgument(stream, component->location);
    if (component->helpscreen != nullptr) TLD_JavaArgument(stream, component->helpscreen);
    std::fputs(");\n", file);
    TLS_BlockCode(stream, component->head.sub_block);
    write_parent(stream, component);
}

static void component_java(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *item)
{
    const TLDM_COMPONENT *component = component_record(item);
    if (!TLD_JavaDeclares(stream)) {
        construct_component(stream, component);
        return;
    }
    TLD_JavaField(stream, "Component", component->head.identifier);
    TLS_BlockCode(stream, component->head.sub_block);
}

static void delete_component(TLS_STATEMENT *item)
{
    TLDM_COMPONENT *component = component_record(item);
    TLE_DelExpression(component->parent);
    TLE_DelExpression(component->name);
    TLE_DelExpression(component->location);
    TLE_DelExpression(component->helpscreen);
    TLS_DelBlock(component->head.sub_block);
    SH_Free(component);
}

const TLS_STATEMENT_CLASS TLDM_ComponentClass = {
    .flags = 0,
    .print = nullptr,
    .check = check_component,
    .p_code = generate_component,
    .c_code = nullptr,
    .java_code = component_java,
    .delete_statement = delete_component,
    .tree = nullptr,
    .node_section = nullptr,
    .tree_callbacks = nullptr,
};

static const TLS_BLOCK_CLASS component_block = {
    .begin = begin_component,
    .parser = parse_component,
};

void TLDM_Initialise(void)
{
    static bool is_initialised;
    if (is_initialised) return;
    is_initialised = true;
    TLS_DeclareBlockClass(TLP_SECTION_COMPONENT, &component_block);
}
