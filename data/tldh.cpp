/*
 * Help screens: what the operator reads and sees, in the order of the source.
 */
#include "data/tldh.h"

#include <cstdio>
#include <iterator>

#include <ostrum/sh.h>
#include <ostrum/tlc.h>
#include <ostrum/tle.h>
#include <ostrum/tlit.h>
#include <ostrum/tlp.h>
#include <ostrum/tlt.h>

/* ---- Attributes of a screen ---- */

enum { SCREEN_TITLE, SCREEN_HELP, SCREEN_TYPE };

static constexpr TLD_ATTRIBUTE screen_attributes[] = {
    { .code = SCREEN_TITLE, .word = "Title", .type_name = "MESSAGE" },
    { .code = SCREEN_HELP, .word = "HelpScreen", .type_name = "HELPSCREEN" },
    { .code = SCREEN_TYPE, .word = "Type", .type_name = nullptr },
};

static constexpr TLD_ATTRIBUTE screen_types[] = {
    { .code = 0, .word = "Fullscreen", .type_name = nullptr },
    { .code = int32_t{ TLDH_POPUP }, .word = "Popup", .type_name = nullptr },
};

static TLDH_SCREEN *screen_record(TLS_STATEMENT *item)
{
    return reinterpret_cast<TLDH_SCREEN *>(item);
}

static uint32_t read_type(TLT_STATEMENT *statement)
{
    return static_cast<uint32_t>(
        TLD_GetEnumeratedValue(statement, screen_types, int32_t{ std::size(screen_types) }));
}

static void take_screen_attribute(void *user, TLS_BLOCK *block, TLT_STATEMENT *statement,
                                  const char *word)
{
    intptr_t value = 0;
    auto *screen = static_cast<TLDH_SCREEN *>(user);
    switch (TLD_FindAttribute(block, statement, word, screen_attributes,
                              int32_t{ std::size(screen_attributes) }, &value)) {
    case SCREEN_TITLE:
        TLD_SetTerm(statement, &screen->title, value);
        break;
    case SCREEN_HELP:
        TLD_SetTerm(statement, &screen->help_screen, value);
        break;
    case SCREEN_TYPE:
        screen->type = read_type(statement);
        break;
    default: /* a message has told why there is none */
        break;
    }
}

/* ---- Attributes of an item ---- */

enum { ITEM_FLAGS, ITEM_HELP };

static constexpr TLD_ATTRIBUTE item_attributes[] = {
    { .code = ITEM_FLAGS, .word = "Flags", .type_name = "INT" },
    { .code = ITEM_HELP, .word = "Help", .type_name = "HELPSCREEN" },
};

static TLDH_ITEM *item_record(TLS_STATEMENT *item)
{
    return reinterpret_cast<TLDH_ITEM *>(item);
}

static void add_qualifiers(TLDH_ITEM *item, TLT_STATEMENT *statement, uint32_t qualifiers)
{
    if (qualifiers > TLDH_QUALIFIERS) {
        TLT_Error(statement, "HELP qualifiers out of range");
    } else {
        item->code |= qualifiers;
    }
}

static void take_item_attribute(void *user, TLS_BLOCK *block, TLT_STATEMENT *statement,
                                const char *word)
{
    intptr_t value = 0;
    auto *item = static_cast<TLDH_ITEM *>(user);
    switch (TLD_FindAttribute(block, statement, word, item_attributes,
                              int32_t{ std::size(item_attributes) }, &value)) {
    case ITEM_FLAGS:
        add_qualifiers(item, statement, static_cast<uint32_t>(value));
        break;
    case ITEM_HELP:
        TLD_SetTerm(statement, &item->help, value);
        break;
    default: /* a message has told why there is none */
        break;
    }
}

static void parse_in_item(TLS_BLOCK *root, TLT_STATEMENT *statement, void *context)
{
    TLD_ParseData(root, statement, take_item_attribute, context);
}

/* ---- Statements of a screen ---- */

static TLDH_ITEM *append_item(TLS_BLOCK *root, TLT_STATEMENT *statement, uint32_t code)
{
    TLS_STATEMENT *record =
        TLS_NewStatement("TLDH:HELP", sizeof(TLDH_ITEM), &TLDH_ItemClass, statement);
    item_record(record)->code = code;
    TLS_Append(root, record);
    return item_record(record);
}

/* What shows nothing is no item. */
static void parse_item(TLS_BLOCK *root, TLT_STATEMENT *statement, uint32_t code,
                       const char *type_name)
{
    intptr_t reference = 0;
    TLI_IDENTIFIER *type = TLIT_FindType(TLP_DataTypeDomain(root->module), type_name);
    if (!TLD_ExpectConstant(root, statement, type, &reference, 0)) return;
    TLDH_ITEM *item = append_item(root, statement, code);
    item->reference = reinterpret_cast<TLE_TERM *>(reference);
    TLT_PossibleToken(statement, TLT_TOKEN_COMMA, nullptr);
    TLD_ParseData(root, statement, take_item_attribute, item);
    item->sub_block = TLS_SubBlock(root);
    TLS_SetParser(item->sub_block, parse_in_item, item);
}

static bool begins_with_literal(TLT_STATEMENT *statement)
{
    const int32_t token = TLT_NextToken(statement, nullptr);
    return token == TLT_TOKEN_STRING || token == TLT_TOKEN_DATA_LITERAL;
}

static void parse_other(TLS_BLOCK *root, TLT_STATEMENT *statement, void *screen)
{
    if (begins_with_literal(statement)) {
        parse_item(root, statement, TLDH_TEXT, "MESSAGE");
    } else {
        TLD_ParseData(root, statement, take_screen_attribute, screen);
    }
}

static void parse_screen(TLS_BLOCK *root, TLT_STATEMENT *statement, void *context)
{
    switch (TLD_DataToken(statement)) {
    case TLD_WORD_MESSAGE:
        TLT_GetToken(statement, nullptr);
        parse_item(root, statement, TLDH_TEXT, "MESSAGE");
        break;
    case TLD_WORD_PICTURE:
        TLT_GetToken(statement, nullptr);
        parse_item(root, statement, TLDH_PICTURE, "PICTURE");
        break;
    case TLD_WORD_END: /* the word stays: it is the declaration parser that ends a section */
        append_item(root, statement, TLDH_END);
        break;
    default:
        parse_other(root, statement, context);
        break;
    }
}

static constexpr TLD_SECTION_KIND screen_kind = {
    .tag = "TLDH:HELP_FUNCTION",
    .size = sizeof(TLDH_SCREEN),
    .statement_class = &TLDH_ScreenClass,
    .set_defaults = nullptr,
};

static TLS_BLOCK *begin_screen(TLP_MODULE *module, TLI_IDENTIFIER *function,
                               TLT_STATEMENT *statement, int32_t type)
{
    return TLD_BeginSection(screen_kind, module, function, statement, type);
}

/* ---- Check ---- */

/* A popup has room for one text and one picture, as they come. */
static bool fits_popup(const TLS_BLOCK *items)
{
    bool has_text = false;
    bool has_picture = false;
    for (TLS_STATEMENT *item = items->statements; item != nullptr; item = item->next) {
        const uint32_t code = item_record(item)->code;
        if (code != TLDH_TEXT && code != TLDH_PICTURE) return false;
        bool *has_one = code == TLDH_TEXT ? &has_text : &has_picture;
        if (*has_one) return false;
        *has_one = true;
    }
    return true;
}

static void check_screen(TLS_BLOCK *, TLS_STATEMENT *item)
{
    const TLDH_SCREEN *screen = screen_record(item);
    if (screen->type != TLDH_POPUP || fits_popup(screen->head.sub_block)) return;
    TLT_Error(item->statement, "Incorrect items for a Popup HELPSCREEN");
}

/* ---- Code ---- */

static void write_word(TLC_STREAM *stream, uint32_t word, TLE_TERM *reference)
{
    TLC_Code32(stream, static_cast<int32_t>(word));
    TLD_DataTerm(stream, reference);
}

static void write_full_screen(TLC_STREAM *stream, const TLDH_SCREEN *screen)
{
    if (screen->title != nullptr) write_word(stream, TLDH_TITLE, screen->title);
    if (screen->help_screen != nullptr) write_word(stream, TLDH_LINK, screen->help_screen);
}

static void generate_screen(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *item)
{
    const TLDH_SCREEN *screen = screen_record(item);
    TLD_DataFunctionCode(stream, screen->head.identifier);
    if (screen->type == TLDH_POPUP) {
        write_word(stream, TLDH_POPUP, screen->title);
    } else {
        write_full_screen(stream, screen);
    }
    TLS_BlockCode(stream, screen->head.sub_block);
}

static void generate_item(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *record)
{
    const TLDH_ITEM *item = item_record(record);
    TLC_EvenPSect(stream);
    if (item->help != nullptr) write_word(stream, TLDH_ITEM_HELP, item->help);
    TLC_Code32(stream, static_cast<int32_t>(item->code));
    if (item->reference != nullptr) TLE_DataTerm(stream, item->reference);
}

/* ---- Listing and end ---- */

static void print_screen(TLS_STATEMENT *item, int32_t indent)
{
    TLS_PrintBlock("HELP FUNCTION", TLD_AsSection(item)->sub_block, indent);
}

static void print_item(TLS_STATEMENT *record, int32_t indent)
{
    const TLDH_ITEM *item = item_record(record);
    std::printf("%*sHelp - Code=%04x\n", indent, "", item->code);
    TLE_PrintExpression("Reference", item->reference, indent);
}

static void delete_screen(TLS_STATEMENT *item)
{
    TLDH_SCREEN *screen = screen_record(item);
    TLE_DelExpression(screen->title);
    TLE_DelExpression(screen->help_screen);
    TLS_DelBlock(screen->head.sub_block);
    SH_Free(screen);
}

static void delete_item(TLS_STATEMENT *record)
{
    TLDH_ITEM *item = item_record(record);
    TLE_DelExpression(item->reference);
    TLE_DelExpression(item->help);
    TLS_DelBlock(item->sub_block);
    SH_Free(item);
}

/* Java has no class for help screens: the text looks them up by name where they are used. */
const TLS_STATEMENT_CLASS TLDH_ScreenClass = {
    .flags = 0,
    .print = print_screen,
    .check = check_screen,
    .p_code = generate_screen,
    .c_code = nullptr,
    .java_code = nullptr,
    .delete_statement = delete_screen,
    .tree = nullptr,
    .node_section = nullptr,
    .tree_callbacks = nullptr,
};

const TLS_STATEMENT_CLASS TLDH_ItemClass = {
    .flags = 0,
    .print = print_item,
    .check = nullptr,
    .p_code = generate_item,
    .c_code = nullptr,
    .java_code = nullptr,
    .delete_statement = delete_item,
    .tree = nullptr,
    .node_section = nullptr,
    .tree_callbacks = nullptr,
};

static const TLS_BLOCK_CLASS screen_block = {
    .begin = begin_screen,
    .parser = parse_screen,
};

void TLDH_Initialise(void)
{
    static bool is_initialised;
    if (is_initialised) return;
    is_initialised = true;
    TLS_DeclareBlockClass(TLP_SECTION_HELPSCREEN, &screen_block);
}
