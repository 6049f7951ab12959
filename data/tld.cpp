/*
 * Data sections: the words that begin items, attribute lists, constants and names in them, and how
 * a section's code begins.
 */
#include "data/tld.h"

#include "codegen/tlcj.h"
#include "core/sh.h"
#include "frontend/tlt.h"

#include <cstdio>
#include <cstring>
#include <iterator>

#include <ostrum/hs.h>
#include <ostrum/st.h>
#include <ostrum/tlc.h>
#include <ostrum/tldc.h>
#include <ostrum/tldh.h>
#include <ostrum/tldm.h>
#include <ostrum/tldv.h>
#include <ostrum/tldw.h>
#include <ostrum/tle.h>
#include <ostrum/tli.h>
#include <ostrum/tlic.h>
#include <ostrum/tlit.h>
#include <ostrum/tliv.h>
#include <ostrum/tlp.h>

/* Symbol classes of a section. */
enum { SYMBOL_GLOBAL = 0, SYMBOL_LOCAL = 3, NO_SYMBOL = -1 };

/* Qualifiers of a function. */
enum { QUALIFIER_PRIVATE = 0, QUALIFIER_PUBLIC = 1 };

/* In the order of their TLD_WORD_ codes. */
static constexpr const char *word_names[] = {
    "MESSAGE", "PICTURE", "VIEW", "PIN", "POINT", "END", "STATE", "MAP", "VARLOC",
};
static_assert(std::size(word_names) == TLD_WORD_NONE, "one name a word");

/* One for each kind of section. */
static void (*const kind_initialisers[])(void) = {
    TLDC_Initialise, TLDH_Initialise, TLDM_Initialise, TLDV_Initialise, TLDW_Initialise,
};

static HS_DOMAIN *words;

static void make_words(void)
{
    HS_Initialise();
    words = HS_NewDomain();
    for (intptr_t word = 0; word < TLD_WORD_NONE; word++)
        HS_NewName(words, word_names[word], word);
}

void TLD_Initialise(void)
{
    static bool is_initialised;
    if (is_initialised) return;
    is_initialised = true;
    for (auto initialise : kind_initialisers)
        initialise();
    make_words();
}

void TLD_CleanUp(void)
{
    if (words != nullptr) HS_DelDomain(words);
    words = nullptr;
}

static int32_t find_data_word(const char *text)
{
    char word[TLT_TEXT_SIZE];
    intptr_t value = TLD_WORD_NONE;
    if (words != nullptr) HS_FindName(words, ST_Upper(word, sizeof word, text), &value);
    return static_cast<int32_t>(value);
}

int32_t TLD_DataToken(TLT_STATEMENT *statement)
{
    char text[TLT_TEXT_SIZE];
    switch (TLT_NextToken(statement, text)) {
    case TLT_TOKEN_END:
        return TLD_WORD_END;
    case TLT_TOKEN_IDENTIFIER:
        return find_data_word(text);
    default:
        return TLD_WORD_NONE;
    }
}

/* ---- Attribute lists ---- */

int32_t TLD_ExpectName(TLT_STATEMENT *statement, char *name)
{
    char text[TLT_TEXT_SIZE];
    const int32_t token = TLT_NextToken(statement, text);
    if (token != TLT_TOKEN_IDENTIFIER && token != TLT_TOKEN_STRING) return 0;
    TLT_GetToken(statement, nullptr);
    if (std::strlen(text) >= TLD_NAME_SIZE) return 0;
    ST_Copy(name, TLD_NAME_SIZE, text);
    return 1;
}

void TLD_ParseData(TLS_BLOCK *block, TLT_STATEMENT *statement, TLD_HANDLER handler, void *user)
{
    char word[TLD_NAME_SIZE];
    while (TLD_ExpectName(statement, word)) {
        if (handler != nullptr) {
            handler(user, block, statement, word);
        } else {
            TLT_Error(statement, "Unexpected attribute");
        }
        TLT_PossibleToken(statement, TLT_TOKEN_COMMA, nullptr);
    }
}

static const TLD_ATTRIBUTE *find_entry(TLT_STATEMENT *statement, const char *word,
                                       const TLD_ATTRIBUTE *table, int32_t count)
{
    const TLD_ATTRIBUTE *found = nullptr;
    for (int32_t i = 0; i < count; i++) {
        if (!ST_StartsCI(table[i].word, word)) continue;
        if (found != nullptr) {
            TLT_RaiseFormatted(statement, TLT_LEVEL_ERROR, "Name '%s' is not unique", word);
            return nullptr;
        }
        found = &table[i];
    }
    if (found == nullptr) {
        TLT_RaiseFormatted(statement, TLT_LEVEL_ERROR, "Name '%s' is not allowed here", word);
    }
    return found;
}

/* A text is wanted as a MESSAGE, and no warning tells that it becomes one. */
static int32_t read_value(TLS_BLOCK *block, TLT_STATEMENT *statement, const char *type_name,
                          intptr_t *value)
{
    const TLI_DOMAIN *data_types = TLP_DataTypeDomain(block->module);
    TLI_IDENTIFIER *type = TLIT_FindType(data_types, type_name);
    const bool is_text = type != nullptr && type == TLIT_StringType;
    if (!TLT_Expect(statement, TLT_TOKEN_ASSIGN, nullptr)) return 0;
    if (is_text) type = TLIT_FindType(data_types, "MESSAGE");
    return TLD_ExpectConstant(block, statement, type, value, is_text);
}

int32_t TLD_FindAttribute(TLS_BLOCK *block, TLT_STATEMENT *statement, const char *word,
                          const TLD_ATTRIBUTE *table, int32_t count, intptr_t *value)
{
    const TLD_ATTRIBUTE *entry = find_entry(statement, word, table, count);
    if (entry == nullptr) return TLD_NO_ATTRIBUTE;
    if (entry->type_name == nullptr) return entry->code;
    if (!read_value(block, statement, entry->type_name, value)) return TLD_NO_ATTRIBUTE;
    return entry->code;
}

static int32_t read_word(TLT_STATEMENT *statement, const TLD_ATTRIBUTE *table, int32_t count)
{
    char word[TLD_NAME_SIZE];
    if (!TLD_ExpectName(statement, word)) {
        TLT_Error(statement, "Missing Value");
        return 0;
    }
    const TLD_ATTRIBUTE *entry = find_entry(statement, word, table, count);
    return entry == nullptr ? 0 : entry->code;
}

int32_t TLD_GetEnumeratedValue(TLT_STATEMENT *statement, const TLD_ATTRIBUTE *table, int32_t count)
{
    int32_t value = 0;
    if (!TLT_Expect(statement, TLT_TOKEN_ASSIGN, nullptr)) return 0;
    do {
        value |= read_word(statement, table, count);
    } while (TLT_PossibleToken(statement, TLT_TOKEN_COMMA, nullptr));
    return value;
}

void TLD_SetValue(TLT_STATEMENT *statement, intptr_t *slot, intptr_t value)
{
    if (*slot != 0) TLT_Error(statement, "Value already specified");
    *slot = value;
}

void TLD_SetTerm(TLT_STATEMENT *statement, TLE_TERM **slot, intptr_t value)
{
    auto held = reinterpret_cast<intptr_t>(*slot);
    TLD_SetValue(statement, &held, value);
    TLE_DelExpression(*slot);
    *slot = reinterpret_cast<TLE_TERM *>(held);
}

void TLD_CheckValue(TLS_STATEMENT *item, intptr_t value, const char *name)
{
    if (value != 0) return;
    TLT_RaiseFormatted(item->statement, TLT_LEVEL_ERROR, "Value for '%s' not specified", name);
}

void TLD_CheckTerm(TLS_STATEMENT *item, const TLE_TERM *term, const char *name)
{
    TLD_CheckValue(item, reinterpret_cast<intptr_t>(term), name);
}

/* ---- Constants and names ---- */

/*
 * A record holds numbers themselves, so that a data literal whose number only the linker knows is no
 * constant here.
 */
static bool is_usable(const TLE_TERM *term, TLI_IDENTIFIER *base)
{
    int32_t number = 0;
    return !TLIT_IntegerType(base) || TLE_Constant(term, &number);
}

/* Gives the value away, and with it the term if that is the value; a text outlives its term. */
static intptr_t release_value(TLE_TERM *term, TLI_IDENTIFIER *base, intptr_t value)
{
    if (value == reinterpret_cast<intptr_t>(term)) return value;
    if (base == TLIT_StringType && value != 0) {
        value = reinterpret_cast<intptr_t>(ST_Allocate(reinterpret_cast<const char *>(value)));
    }
    TLE_DelExpression(term);
    return value;
}

int32_t TLD_ExpectConstant(TLS_BLOCK *block, TLT_STATEMENT *statement, TLI_IDENTIFIER *type,
                           intptr_t *value, int32_t quiet)
{
    intptr_t found = 0;
    TLI_IDENTIFIER *base = TLIT_TypeBaseType(nullptr, type);
    TLE_TERM *term =
        TLE_ParseExpression(block->module, statement, TLE_USE_CONSTANT, TLT_TOKEN_NONE);
    if (!TLE_ConstantValue(block->module, statement, term, type, &found, quiet) ||
        !is_usable(term, base)) {
        TLE_DelExpression(term);
        TLT_Error(statement, "CONSTANT expected here");
        return 0;
    }
    *value = release_value(term, base, found);
    return 1;
}

/* False after a message. */
static bool read_identifier(TLT_STATEMENT *statement, const char *prefix, char *name)
{
    char word[TLD_NAME_SIZE];
    if (!TLD_ExpectName(statement, word)) return false;
    if (prefix == nullptr) {
        ST_Copy(name, TLT_TEXT_SIZE, word);
    } else {
        ST_Concat(name, TLT_TEXT_SIZE, prefix, ".", word, nullptr);
    }
    if (std::strlen(name) < TLD_NAME_SIZE) return true;
    TLT_Error(statement, "Identifier too long");
    return false;
}

TLI_IDENTIFIER *TLD_ExpectIdentifier(TLS_BLOCK *block, TLT_STATEMENT *statement,
                                     TLI_IDENTIFIER *type, TLS_STATEMENT *, const char *prefix)
{
    char name[TLT_TEXT_SIZE];
    if (!read_identifier(statement, prefix, name) || type == nullptr) {
        TLT_Error(statement, "Identifier expected here");
        return nullptr;
    }
    TLP_MODULE *module = block->module;
    return TLIC_Node(TLP_DataTypeDomain(module), TLP_ModuleDomain(module), statement, name, type,
                     nullptr);
}

/* ---- Sections ---- */

TLS_BLOCK *TLD_BeginSection(const TLD_SECTION_KIND &kind, TLP_MODULE *module,
                            TLI_IDENTIFIER *function, TLT_STATEMENT *statement, int32_t type)
{
    TLS_STATEMENT *item = TLS_NewStatement(kind.tag, kind.size, kind.statement_class, statement);
    if (kind.set_defaults != nullptr) kind.set_defaults(item);
    TLS_BLOCK *root = TLS_NewBlock(module, item, type);
    TLD_AsSection(item)->identifier = function;
    TLD_AsSection(item)->sub_block = TLS_SubBlock(root);
    return root;
}

void TLD_ParseItem(TLS_BLOCK *root, TLT_STATEMENT *statement, TLS_STATEMENT *item,
                   const TLD_ITEM_WORD *item_words, int32_t count, TLD_HANDLER handler)
{
    const int32_t word = TLD_DataToken(statement);
    if (word == TLD_WORD_END) return;
    for (int32_t i = 0; i < count; i++) {
        if (item_words[i].word != word) continue;
        item_words[i].parse(root, statement, item);
        return;
    }
    TLD_ParseData(root, statement, handler, item);
}

/* ---- Items ---- */

static void parse_in_item(TLS_BLOCK *root, TLT_STATEMENT *statement, void *context)
{
    auto *item = static_cast<TLD_ITEM *>(context);
    TLD_ParseItem(root, statement, &item->common, item->kind->words, item->kind->word_count,
                  item->kind->handler);
}

TLD_ITEM *TLD_BeginItem(const TLD_ITEM_KIND &kind, TLS_BLOCK *root, TLT_STATEMENT *statement,
                        const TLD_SECTION *owner, const char *prefix)
{
    TLI_IDENTIFIER *type = TLIT_FindType(TLP_DataTypeDomain(root->module), kind.type_name);
    TLS_STATEMENT *record = TLS_NewStatement(kind.tag, kind.size, kind.statement_class, statement);
    auto *item = reinterpret_cast<TLD_ITEM *>(record);
    item->kind = &kind;
    item->owner = owner;
    TLT_GetToken(statement, nullptr);
    TLS_Append(root, record);
    item->identifier = TLD_ExpectIdentifier(root, statement, type, record, prefix);
    if (item->identifier == nullptr) return item;
    item->sub_block = TLS_SubBlock(root);
    TLS_SetParser(item->sub_block, parse_in_item, item);
    return item;
}

void TLD_ParseAttributes(TLS_BLOCK *root, TLT_STATEMENT *statement, TLD_ITEM *item)
{
    if (item->identifier == nullptr) return;
    TLD_ParseData(root, statement, item->kind->handler, item);
}

void TLD_DeleteItem(TLD_ITEM *item)
{
    TLS_DelBlock(item->sub_block);
    SH_Free(item);
}

/* ---- Code ---- */

void TLD_DataTerm(TLC_STREAM *stream, TLE_TERM *term)
{
    if (term == nullptr) {
        TLC_Code32(stream, 0);
    } else {
        TLE_DataTerm(stream, term);
    }
}

static int32_t section_symbol(int32_t qualifiers)
{
    if (qualifiers == QUALIFIER_PUBLIC) return SYMBOL_GLOBAL;
    return qualifiers == QUALIFIER_PRIVATE ? SYMBOL_LOCAL : NO_SYMBOL;
}

int32_t TLD_DataFunctionCode(TLC_STREAM *stream, TLI_IDENTIFIER *function)
{
    TLI_SetPSect(function, TLC_EvenPSect(stream));
    const int32_t symbol = section_symbol(TLIV_FunctionQualifiers(function));
    if (symbol != NO_SYMBOL) TLC_Symbol(stream, symbol, TLI_IdentifierType(function), function);
    return symbol;
}

void TLD_OpenRecord(TLC_STREAM *stream, TLS_STATEMENT *item)
{
    TLD_SECTION *section = TLD_AsSection(item);
    section->symbol_class = TLD_DataFunctionCode(stream, section->identifier);
    section->section = TLC_NewPSect(stream);
}

/* The domain's name, the owner's and the item's, each of less than 32 characters. */
static constexpr int32_t ITEM_SYMBOL_SIZE = 80;

static void add_item_symbol(TLC_STREAM *stream, const TLD_ITEM *item)
{
    char name[ITEM_SYMBOL_SIZE];
    const TLD_SECTION *owner = item->owner;
    if (owner->symbol_class == NO_SYMBOL) return;
    ST_Concat(name, sizeof name, TLI_FullName(owner->identifier), ".",
              TLI_IdentifierName(item->identifier), nullptr);
    TLC_NameSymbol(stream, owner->symbol_class, TLI_IdentifierType(item->identifier), name);
}

bool TLD_OpenItem(TLC_STREAM *stream, TLD_ITEM *item)
{
    if (item->identifier == nullptr) return false;
    item->section = TLC_NewPSect(stream);
    TLI_SetPSect(item->identifier, item->section);
    add_item_symbol(stream, item);
    return true;
}

void TLD_CloseRecord(TLC_STREAM *stream)
{
    TLC_NewPSect(stream);
    TLC_Code8(stream, TLD_RECORD_END);
    TLC_Code8(stream, 0);
}

/* ---- Java ---- */

bool TLD_JavaDeclares(TLC_STREAM *stream)
{
    return TLC_GetPass(stream) == 1;
}

void TLD_JavaName(TLC_STREAM *stream, TLI_IDENTIFIER *identifier)
{
    char name[TLCJ_NAME_CAPACITY];
    std::fputs(TLCJ_OwnName(stream, identifier, name), TLC_CFile(stream));
}

void TLD_JavaField(TLC_STREAM *stream, const char *class_name, TLI_IDENTIFIER *identifier)
{
    FILE *file = TLC_CFile(stream);
    TLCJ_DeclareItem(stream, identifier);
    std::fprintf(file, "  public static %s ", class_name);
    TLD_JavaName(stream, identifier);
    std::fputs(";\n", file);
}

void TLD_JavaNew(TLC_STREAM *stream, const char *class_name, TLI_IDENTIFIER *identifier)
{
    FILE *file = TLC_CFile(stream);
    TLCJ_NoteConstructed(stream, identifier);
    std::fputs("    ", file);
    TLD_JavaName(stream, identifier);
    std::fprintf(file, " = new %s(", class_name);
}

void TLD_JavaArgument(TLC_STREAM *stream, TLE_TERM *term)
{
    std::fputs(", ", TLC_CFile(stream));
    TLCJ_DataTerm(stream, term);
}

void TLD_JavaCall(TLC_STREAM *stream, TLI_IDENTIFIER *object, const char *method,
                  TLI_IDENTIFIER *argument)
{
    FILE *file = TLC_CFile(stream);
    std::fputs("    ", file);
    TLD_JavaName(stream, object);
    std::fprintf(file, ".%s(", method);
    TLD_JavaName(stream, argument);
    std::fputs(");\n", file);
}

void TLD_JavaPlainItem(TLC_STREAM *stream, const char *class_name, TLI_IDENTIFIER *identifier)
{
    if (TLD_JavaDeclares(stream)) {
        TLD_JavaField(stream, class_name, identifier);
        return;
    }
    TLD_JavaNew(stream, class_name, identifier);
    std::fputs(");\n", TLC_CFile(stream));
}
