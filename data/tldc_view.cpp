/*
 * Views of connectors.
 */
#include "data/tldc.h"

#include "codegen/tlcj.h"

#include <cstdio>
#include <iterator>

#include <ostrum/tlc.h>
#include <ostrum/tle.h>

enum { NAME, SHELL, FLAGS, COMPONENT, HELPSCREEN };

static constexpr TLD_ATTRIBUTE attributes[] = {
    { .code = NAME, .word = "Name", .type_name = "MESSAGE" },
    { .code = SHELL, .word = "Shell", .type_name = "PICTURE" },
    { .code = FLAGS, .word = "Flags", .type_name = nullptr },
    { .code = COMPONENT, .word = "Component", .type_name = "COMPONENT" },
    { .code = HELPSCREEN, .word = "Helpscreen", .type_name = "HELPSCREEN" },
};

static constexpr TLD_ATTRIBUTE flag_words[] = {
    { .code = 0, .word = "Fixed", .type_name = nullptr },
    { .code = 1, .word = "Removable", .type_name = nullptr },
    { .code = 0, .word = "Front", .type_name = nullptr },
    { .code = 2, .word = "Back", .type_name = nullptr },
};

static TLDC_VIEW *view_record(TLS_STATEMENT *item)
{
    return reinterpret_cast<TLDC_VIEW *>(item);
}

static void take_attribute(void *user, TLS_BLOCK *block, TLT_STATEMENT *statement, const char *word)
{
    intptr_t value = 0;
    auto *view = static_cast<TLDC_VIEW *>(user);
    switch (TLD_FindAttribute(block, statement, word, attributes, int32_t{ std::size(attributes) },
                              &value)) {
    case NAME:
        TLD_SetTerm(statement, &view->name, value);
        break;
    case SHELL:
        TLD_SetTerm(statement, &view->shell, value);
        break;
    case FLAGS:
        view->flags |=
            TLD_GetEnumeratedValue(statement, flag_words, int32_t{ std::size(flag_words) });
        break;
    case COMPONENT:
        TLD_SetTerm(statement, &view->component, value);
        break;
    case HELPSCREEN:
        TLD_SetTerm(statement, &view->helpscreen, value);
        break;
    default: /* a message has told why there is none */
        break;
    }
}

static constexpr TLD_ITEM_KIND view_kind = {
    .tag = "TLDC:VIEW",
    .size = sizeof(TLDC_VIEW),
    .statement_class = &TLDC_ViewClass,
    .type_name = "VIEW",
    .handler = take_attribute,
    .words = nullptr,
    .word_count = 0,
};

void TLDC_ParseView(TLS_BLOCK *root, TLT_STATEMENT *statement, TLS_STATEMENT *connector)
{
    TLD_ITEM *view = TLD_BeginItem(view_kind, root, statement, TLD_AsSection(connector), nullptr);
    TLD_ParseAttributes(root, statement, view);
}

static void check_view(TLS_BLOCK *, TLS_STATEMENT *item)
{
    const TLDC_VIEW *view = view_record(item);
    TLD_CheckTerm(item, view->name, "NAME");
    TLD_CheckTerm(item, view->shell, "SHELL");
    TLD_CheckTerm(item, view->component, "COMPONENT");
}

static void generate_view(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *item)
{
    TLDC_VIEW *view = view_record(item);
    const bool has_help = view->helpscreen != nullptr;
    if (!TLD_OpenItem(stream, &view->head)) return;
    TLC_Code8(stream, has_help ? TLD_RECORD_VIEW_WITH_HELP : TLD_RECORD_VIEW);
    TLC_Code8(stream, view->flags);
    TLD_DataTerm(stream, view->name);
    TLC_Jump(stream, view->head.owner->section);
    TLD_DataTerm(stream, view->shell);
    TLD_DataTerm(stream, view->component);
    if (has_help) TLD_DataTerm(stream, view->helpscreen);
}

static void construct_view(TLC_STREAM *stream, const TLDC_VIEW *view)
{
    FILE *file = TLC_CFile(stream);
    TLI_IDENTIFIER *connector = view->head.owner->identifier;
    TLCJ_ConstructFirst(stream, view->component);
    TLD_JavaNew(stream, "View", view->head.identifier);
    TLCJ_DataTerm(stream, view->name);
    std::fprintf(file, ", %d", view->flags);
    TLD_JavaArgument(stream, view->shell);
    TLD_JavaArgument(stream, view->component);
    TLD_JavaArgument(stream, view->helpscreen);
    std::fputs(");\n", file);
    TLD_JavaCall(stream, view->head.identifier, "setParent", connector);
    TLD_JavaCall(stream, connector, "addView", view->head.identifier);
    std::fputs("\n", file);
}

static void view_java(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *item)
{
    const TLDC_VIEW *view = view_record(item);
    if (view->head.identifier == nullptr) return;
    if (TLD_JavaDeclares(stream)) {
        TLD_JavaField(stream, "View", view->head.identifier);
    } else {
        construct_view(stream, view);
    }
}

static void delete_view(TLS_STATEMENT *item)
{
    TLDC_VIEW *view = view_record(item);
    TLE_DelExpression(view->name);
    TLE_DelExpression(view->shell);
    TLE_DelExpression(view->component);
    TLE_DelExpression(view->helpscreen);
    TLD_DeleteItem(&view->head);
}

const TLS_STATEMENT_CLASS TLDC_ViewClass = {
    .flags = 0,
    .print = nullptr,
    .check = check_view,
    .p_code = generate_view,
    .c_code = nullptr,
    .java_code = view_java,
    .delete_statement = delete_view,
    .tree = nullptr,
    .node_section = nullptr,
    .tree_callbacks = nullptr,
};
