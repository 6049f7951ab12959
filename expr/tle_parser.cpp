/*
 * The parser of expressions: tokens become a flat list of terms, with brackets, subscripts and
 * arguments parsed by the same operation one level down; the list is folded, checked and simplified.
 */
#include "expr/tle_parser.h"

#include <algorithm>
#include <cstring>

#include "frontend/tlt.h"
#include "names/tli.h"
#include <ostrum/tlic.h>
#include <ostrum/tlit.h>
#include <ostrum/tlp.h>

// Brackets of all kinds within one another.
static constexpr int32_t deepest_bracket = 1000;

static constexpr int32_t name_capacity = 32;

// Where an expression is read.
struct READER {
    TLP_MODULE *module;
    TLT_STATEMENT *statement;
    int32_t use;
    int32_t stop;
};

static int32_t bracket_depth;
static bool is_too_complex; // the rest of the statement has been passed over

static bool is_in_error(const READER &reader)
{
    return reader.statement->error_level >= TLT_LEVEL_ERROR;
}

// Nested expressions

static TLE_TERM *abandon_statement(TLT_STATEMENT *statement)
{
    if (!is_too_complex) TLT_Error(statement, "Expression too complex");
    is_too_complex = true;
    while (TLT_NextToken(statement, nullptr) != TLT_TOKEN_END_OF_LINE)
        TLT_GetToken(statement, nullptr);
    return nullptr;
}

static TLE_TERM *parse_nested(const READER &reader, int32_t use, int32_t stop)
{
    if (bracket_depth == deepest_bracket) return abandon_statement(reader.statement);
    bracket_depth++;
    TLE_TERM *term = TLE_ParseExpression(reader.module, reader.statement, use, stop);
    bracket_depth--;
    return term;
}

static void expect_closing(const READER &reader, int32_t token)
{
    if (!is_too_complex) TLT_Expect(reader.statement, token, nullptr);
}

// Names

static const char *copy_name(char *buffer, const char *text, int32_t length)
{
    const size_t kept = static_cast<size_t>(std::clamp(length, 0, name_capacity - 1));
    memcpy(buffer, text, kept);
    buffer[kept] = 0;
    return buffer;
}

/** The term names the identifier; text is the name as written. */
static void set_identifier(TLE_TERM *term, TLI_IDENTIFIER *identifier, const char *text)
{
    term->identifier = identifier;
    if (identifier != nullptr) term->type = identifier->type;
    if (identifier != nullptr && strcmp(identifier->name, text) == 0) {
        term->text = identifier->name;
    } else {
        TLE_SetText(term, text);
    }
}

// Subscripts

static void check_subscript_type(const READER &reader, const TLE_TERM *subscript,
                                 const TLI_IDENTIFIER *range)
{
    if (range == nullptr || subscript->type == range) return;
    TLT_RaiseFormatted(reader.statement, TLT_LEVEL_ERROR, "Array must be indexed by '%s' values",
                       range->name);
}

static void check_bounds(const READER &reader, const TLE_TERM *subscript, int32_t dimension)
{
    int32_t index = 0;
    if (dimension == 0 || !TLE_Constant(subscript, &index)) return;
    if (index < 0 || index >= dimension) TLT_Error(reader.statement, "Index out of bounds");
}

static void parse_subscript(const READER &reader, TLE_TERM *term)
{
    TLI_IDENTIFIER *range = nullptr;
    const int32_t dimension = TLI_IdentifierDimension(term->identifier, &range);
    if ((TLI_IdentifierFlags(term->identifier) & TLI_DIMENSIONED) == 0)
        TLT_RaiseFormatted(reader.statement, TLT_LEVEL_ERROR,
                           "Identifier '%s' cannot be subscripted", term->identifier->name);
    TLT_GetToken(reader.statement, nullptr);
    term->left = parse_nested(reader, TLE_USE_VALUE, TLT_TOKEN_CLOSE_SQUARE);
    expect_closing(reader, TLT_TOKEN_CLOSE_SQUARE);
    if (term->left != nullptr) {
        check_subscript_type(reader, term->left, range);
        check_bounds(reader, term->left, dimension);
    }
    if (TLIT_IsArrayType(term->type)) term->type = TLIT_ArrayOf(term->type);
}

// Calls

static void parse_arguments(const READER &reader, TLE_TERM *term)
{
    TLT_STATEMENT *statement = reader.statement;
    TLT_Expect(statement, TLT_TOKEN_OPEN_BRACKET, nullptr);
    while (!TLT_PossibleToken(statement, TLT_TOKEN_CLOSE_BRACKET, nullptr)) {
        if (TLT_NextToken(statement, nullptr) == TLT_TOKEN_END_OF_LINE) {
            if (!is_too_complex) TLT_Error(statement, "Unmatched function call brackets");
            return;
        }
        TLE_TERM *argument = parse_nested(reader, TLE_USE_ARGUMENT, TLT_TOKEN_CLOSE_BRACKET);
        if (argument != nullptr) {
            term->left = TLE_Append(term->left, argument);
        } else {
            TLT_GetToken(statement, nullptr);
        }
        TLT_PossibleToken(statement, TLT_TOKEN_COMMA, nullptr);
    }
}

/** Turns a term into a call if its identifier can be called. */
static bool make_call(TLE_TERM *term)
{
    if (term->kind == TLE_BUILT_IN) return true;
    const bool is_address = term->kind == TLE_ADDRESS;
    if (is_address && TLI_IdentifierClass(term->identifier) == TLI_FUNCTION) {
        term->kind = TLE_CALL;
        term->type = term->identifier->type; // a constant that names the function has its own
        return true;
    }
    if (!is_address && term->kind != TLT_TOKEN_IDENTIFIER) return false;
    if (TLIT_TypeSubclass(nullptr, term->type) != TLIT_SUBCLASS_FUNCTION) return false;
    const TLI_IDENTIFIER *prototype = TLIT_FunctionTypePrototype(term->type);
    term->kind = TLE_INDIRECT_CALL;
    term->type = prototype == nullptr ? nullptr : prototype->type;
    return true;
}

/** Parses the arguments if the term is called; false after an error. */
static bool parse_call(const READER &reader, TLE_TERM *term)
{
    if (term->identifier == nullptr) return true;
    if (TLT_NextToken(reader.statement, nullptr) != TLT_TOKEN_OPEN_BRACKET) return true;
    if (term->left != nullptr) {
        TLT_Error(reader.statement, "Subscripted identifier cannot be called");
        return false;
    }
    if (!make_call(term)) {
        TLT_Error(reader.statement, "Identifier cannot be called");
        return false;
    }
    parse_arguments(reader, term);
    return true;
}

// Constants

/** Turns the term into the constant term that it stands for. */
static void take_constant_term(TLE_TERM *term, const TLE_TERM *constant)
{
    term->kind = constant->kind;
    term->type = constant->type;
    term->identifier = constant->identifier;
    term->value = constant->value;
    TLE_SetText(term, constant->text);
}

static void take_text(TLE_TERM *term, const char *text)
{
    term->kind = text == nullptr ? TLT_TOKEN_NULL : TLT_TOKEN_STRING;
    if (text != nullptr) TLE_SetText(term, text);
}

/** A scalar constant with a value becomes that value. */
static void fold_constant(const READER &reader, TLE_TERM *term)
{
    intptr_t value = 0;
    if (TLI_IdentifierDimension(term->identifier, nullptr) != -1) return;
    if (!TLIC_ConstantValue(reader.module, term->identifier, 0, &value)) return;
    TLI_IDENTIFIER *base = TLIT_TypeBaseType(reader.statement, term->type);
    if (TLIT_MatchType(reader.module, reader.statement, TLIT_IntType, base)) {
        term->kind = TLT_TOKEN_NUMBER;
        term->value = static_cast<int32_t>(value);
    } else if (base == TLIT_StringType) {
        take_text(term, reinterpret_cast<const char *>(value));
    } else if ((base == TLIT_DataType || base == TLIT_CodeType) && value != 0) {
        take_constant_term(term, reinterpret_cast<const TLE_TERM *>(value));
    } else {
        TLT_FatalError(reader.statement, "Unknown constant type");
    }
}

/** The name of a type with a quantity number stands for that number. */
static void take_type(TLE_TERM *term)
{
    const int32_t quantity = TLIT_GetQuantityIdentifier(term->identifier);
    if (quantity < 0) return;
    term->kind = TLT_TOKEN_NUMBER;
    term->value = quantity;
    term->type = TLIT_FindType(nullptr, "QUANTITY_TYPE");
}

// Terms

static void take_field_list(const READER &reader, TLE_TERM *term);

static void take_storage(const READER &reader, TLE_TERM *term)
{
    if (TLT_NextToken(reader.statement, nullptr) == TLT_TOKEN_OPEN_SQUARE)
        parse_subscript(reader, term);
    take_field_list(reader, term);
}

/** What the class of the term's identifier asks for. */
static void take_class(const READER &reader, TLE_TERM *term)
{
    switch (TLI_IdentifierClass(term->identifier)) {
    case TLI_VARIABLE:
    case TLI_FIELD:
    case TLI_ARGUMENT:
        take_storage(reader, term);
        break;
    case TLI_CONSTANT:
    case TLI_NON_VOLATILE:
        take_storage(reader, term);
        fold_constant(reader, term);
        break;
    case TLI_ENUM_VALUE:
        fold_constant(reader, term);
        break;
    case TLI_FUNCTION:
    case TLI_NODE:
        term->kind = TLE_ADDRESS;
        break;
    case TLI_BUILT_IN_FUNCTION:
        term->kind = TLE_BUILT_IN;
        break;
    case TLI_TYPE:
        take_type(term);
        break;
    default:
        TLT_Error(reader.statement, "Strange identifier in expression");
    }
}

static void take_identifier(const READER &reader, TLE_TERM *term, const char *text, int32_t length)
{
    char name[name_capacity];
    copy_name(name, text, length);
    TLI_IDENTIFIER *identifier = TLP_FindIdentifier(reader.module, reader.statement, name, 0);
    set_identifier(term, identifier, name);
    if (identifier != nullptr) take_class(reader, term);
}

static void take_number(const READER &reader, TLE_TERM *term)
{
    const TLT_STATEMENT *statement = reader.statement;
    int32_t units = 0;
    term->value = TLT_GetNumber(reader.statement, &units);
    term->type = TLIT_GetQuantityType(units);
    const char *text = TLT_TokenText(statement);
    if (text == nullptr) return;
    if (text == term->start && *text >= '0' && *text <= '9') {
        term->flags |= TLE_IS_SOURCE;
    } else {
        TLE_SetTextSpan(term, text, static_cast<size_t>(statement->token_length));
    }
}

static TLI_IDENTIFIER *find_data_type(const READER &reader, const char *text, int32_t length)
{
    char name[name_capacity];
    copy_name(name, text, length);
    TLI_IDENTIFIER *type = TLIT_FindType(TLP_DataTypeDomain(reader.module), name);
    // The language has names that are no types, such as TRUE.
    if (type == nullptr || TLI_IdentifierClass(type) != TLI_TYPE)
        type = TLP_FindIdentifier(reader.module, reader.statement, name, TLI_TYPE);
    if (type == nullptr) TLT_Error(reader.statement, "Unknown type");
    return type;
}

/** A data literal is the name of a data item, and behind a "/" the name of its type. */
static void take_data_literal(const READER &reader, TLE_TERM *term, const char *text,
                              int32_t length)
{
    term->type = TLIT_DataType;
    if (text == nullptr) return;
    const void *slash = memchr(text, '/', static_cast<size_t>(length));
    int32_t name_length = length;
    if (slash != nullptr) {
        name_length = static_cast<int32_t>(static_cast<const char *>(slash) - text);
        term->type = find_data_type(reader, text + name_length + 1, length - name_length - 1);
    }
    TLE_SetTextSpan(term, text, static_cast<size_t>(name_length));
}

/** An operator, or what will be refused later. */
static void take_other(TLE_TERM *term, const char *text, int32_t length)
{
    if (text == nullptr) return;
    const char *spelling = TLT_TokenValue(term->kind);
    const size_t size = static_cast<size_t>(length);
    if (strncmp(spelling, text, size) == 0 && spelling[size] == 0) {
        term->text = spelling;
    } else {
        TLE_SetTextSpan(term, text, size);
    }
}

/** Reads a token into a term that stands at the read position. */
static void take_token(const READER &reader, TLE_TERM *term)
{
    TLT_STATEMENT *statement = reader.statement;
    term->start = TLT_StatementReadPosition(statement);
    term->line = statement->source_line_number;
    term->kind = static_cast<int8_t>(TLT_GetToken(statement, nullptr));
    const char *text = TLT_TokenText(statement);
    const int32_t length = statement->token_length;
    switch (term->kind) {
    case TLT_TOKEN_IDENTIFIER:
        take_identifier(reader, term, text, length);
        break;
    case TLT_TOKEN_NUMBER:
        take_number(reader, term);
        break;
    case TLT_TOKEN_STRING:
        term->type = TLIT_StringType;
        TLE_SetTextSpan(term, text == nullptr ? "" : text, static_cast<size_t>(length));
        break;
    case TLT_TOKEN_DATA_LITERAL:
        take_data_literal(reader, term, text, length);
        break;
    case TLT_TOKEN_NULL:
        term->type = TLIT_VoidType;
        take_other(term, text, length);
        break;
    default:
        take_other(term, text, length);
    }
}

static void end_term(const READER &reader, TLE_TERM *term)
{
    term->length = static_cast<uint32_t>(TLT_StatementReadPosition(reader.statement) - term->start);
}

static TLE_TERM *new_term(int32_t use)
{
    return TLE_NewTerm(TLT_TOKEN_NONE, use, "TLE:TLE_TERM(ParseTerm)");
}

// Field selection

/** The record that the next token selects a field of; null if it selects none. */
static TLI_IDENTIFIER *selected_record(const READER &reader, const TLE_TERM *term)
{
    const int32_t token = TLT_NextToken(reader.statement, nullptr);
    if (token == TLT_TOKEN_COLON && TLIT_IsRecordType(term->type)) return term->type;
    if (token != TLT_TOKEN_ARROW) return nullptr;
    if (TLIT_TypeSubclass(nullptr, term->type) != TLIT_SUBCLASS_POINTER) return nullptr;
    return TLIT_PointerAt(term->type);
}

static TLE_TERM *parse_selector(const READER &reader)
{
    TLE_TERM *term = TLE_NewTerm(TLT_TOKEN_NONE, reader.use, "TLE:TLE_TERM(DeRef)");
    take_token(reader, term);
    end_term(reader, term);
    return term;
}

/**
 * The name behind a selector. The record's own fields come first: with its scope in the middle of the
 * stack, as when records point at one another, a search from the top could find a namesake.
 */
static TLI_IDENTIFIER *find_field(const READER &reader, const TLI_IDENTIFIER *record,
                                  const char *name)
{
    const TLI_SCOPE *scope = TLIT_RecordScope(const_cast<TLI_IDENTIFIER *>(record));
    TLI_IDENTIFIER *field = scope == nullptr ? nullptr : TLI_FindScopeIdentifier(scope, name);
    if (field == nullptr) {
        field = TLP_FindIdentifier(reader.module, reader.statement, name, 0);
        if (field != nullptr) TLT_Error(reader.statement, "Field selector expected");
    }
    return field;
}

/** Parses one field of a record, whose scope is on the module's domain; null after an error. */
static TLE_TERM *parse_field(const READER &reader, const TLI_IDENTIFIER *record)
{
    TLT_STATEMENT *statement = reader.statement;
    TLE_TERM *term = new_term(TLE_USE_VALUE);
    if (TLT_NextToken(statement, nullptr) != TLT_TOKEN_IDENTIFIER) {
        take_token(reader, term);
        if (!is_in_error(reader)) TLT_Error(statement, "Field selector expected");
        end_term(reader, term);
        return term;
    }
    char name[name_capacity];
    term->start = TLT_StatementReadPosition(statement);
    term->line = statement->source_line_number;
    term->kind = static_cast<int8_t>(TLT_GetToken(statement, nullptr));
    copy_name(name, TLT_TokenText(statement), statement->token_length);
    set_identifier(term, find_field(reader, record, name), name);
    if (term->identifier != nullptr && TLT_NextToken(statement, nullptr) == TLT_TOKEN_OPEN_SQUARE)
        parse_subscript(reader, term);
    if (!parse_call(reader, term)) {
        TLE_DelExpression(term);
        return nullptr;
    }
    end_term(reader, term);
    return term;
}

/**
 * Parses the selections behind a term and pushes them as items. The scopes of the records stay on the
 * domain until the end of the chain, for the names in its subscripts.
 */
static void take_field_list(const READER &reader, TLE_TERM *term)
{
    TLI_DOMAIN *domain = TLP_ModuleDomain(reader.module);
    int32_t pushed = 0;
    while (term->kind == TLT_TOKEN_IDENTIFIER) {
        TLI_IDENTIFIER *record = selected_record(reader, term);
        if (record == nullptr) break;
        TLE_TERM *selector = parse_selector(reader);
        TLI_SCOPE *scope = TLIT_RecordScope(record);
        if (scope != nullptr) {
            TLI_PushScope(domain, scope);
            pushed++;
        }
        term = parse_field(reader, record);
        if (term == nullptr) {
            TLE_DelExpression(selector);
            break;
        }
        TLE_PushItem(selector, false);
        TLE_PushItem(term, false);
    }
    while (pushed-- > 0)
        TLI_PopScope(domain);
}

// Lists

/** Parses a term with the selections behind it; false after an error that ends the expression. */
static bool parse_term(const READER &reader)
{
    TLE_TERM *term = new_term(reader.use);
    const size_t place = TLE_ItemCount();
    TLE_PushItem(term, true); // what it is shows when its token has been read
    take_token(reader, term);
    if (!parse_call(reader, term)) return false;
    end_term(reader, term);
    *TLE_Item(place) = { term, TLE_TermOperator(term), false };
    return true;
}

static void parse_bracket(const READER &reader)
{
    TLT_GetToken(reader.statement, nullptr);
    TLE_TERM *inner = parse_nested(reader, reader.use, TLT_TOKEN_CLOSE_BRACKET);
    expect_closing(reader, TLT_TOKEN_CLOSE_BRACKET);
    TLE_PushItem(inner, true);
}

/** Takes a token that cannot stand here, with a message. */
static void refuse_token(const READER &reader, const char *message)
{
    TLT_GetToken(reader.statement, nullptr);
    TLT_Error(reader.statement, message);
}

/** Reads terms up to the end of the expression; false if a term came to nothing. */
static bool parse_list(const READER &reader)
{
    for (;;) {
        const int32_t token = TLT_NextToken(reader.statement, nullptr);
        switch (token) {
        case TLT_TOKEN_FROM:
        case TLT_TOKEN_TO:
        case TLT_TOKEN_BY:
        case TLT_TOKEN_COMMA:
        case TLT_TOKEN_END_OF_LINE:
            return true;
        case TLT_TOKEN_OPEN_BRACKET:
            parse_bracket(reader);
            break;
        case TLT_TOKEN_CLOSE_BRACKET:
        case TLT_TOKEN_CLOSE_SQUARE:
            if (token != reader.stop) refuse_token(reader, "Unmatched brackets");
            return true;
        case TLT_TOKEN_OPEN_SQUARE:
            refuse_token(reader, "Array index in strange place");
            return true;
        default:
            if (token == reader.stop) return true;
            if (!parse_term(reader)) return false;
        }
    }
}

// Trees

/** A record or array cannot stand as a value. */
static void check_loadable(const READER &reader, const TLE_TERM *root)
{
    if (reader.use != TLE_USE_VALUE && reader.use != TLE_USE_STATEMENT) return;
    if (root->kind != TLT_TOKEN_IDENTIFIER || root->left != nullptr || root->right != nullptr)
        return;
    if (TLIT_TypeSizeof(root->type, -1) > 4)
        TLT_Error(reader.statement, "Identifier cannot be loaded");
}

/** Runs the passes over a tree; null after an error. */
static TLE_TERM *finish_tree(const READER &reader, TLE_TERM *root)
{
    if (!TLE_CheckTree(reader.module, reader.statement, root)) {
        TLE_DelExpression(root);
        return nullptr;
    }
    if (root->height > TLE_MAX_HEIGHT) {
        TLT_Error(reader.statement, "Expression too complex");
        TLE_DelExpression(root);
        return nullptr;
    }
    if (is_in_error(reader)) return root;
    root = TLE_SimplifyTree(reader.module, root);
    root->flags |= TLE_IS_FINISHED;
    return root;
}

static void set_place(const READER &reader, TLE_TERM *root, const char *start)
{
    if (root->start != start) TLE_KeepNumberText(root);
    root->start = start;
    root->line = reader.statement->source_line_number;
    end_term(reader, root);
}

TLE_TERM *TLE_ParseExpression(TLP_MODULE *module, TLT_STATEMENT *statement, int32_t use,
                              int32_t stop_token)
{
    const READER reader = { module, statement, use, stop_token };
    if (bracket_depth == 0) is_too_complex = false;
    const char *start = TLT_StatementReadPosition(statement);
    const size_t base = TLE_ItemCount();
    if (!parse_list(reader)) {
        TLE_DropItems(base);
        return nullptr;
    }
    if (is_in_error(reader)) return TLE_LinkItems(base, use);
    if (TLE_ItemCount() == base) {
        TLT_Error(statement, "Missing expression");
        return nullptr;
    }
    TLE_TERM *root = TLE_FoldItems(statement, base, use);
    if (root != nullptr) root = finish_tree(reader, root);
    if (root == nullptr) return nullptr;
    check_loadable(reader, root);
    set_place(reader, root, start);
    return root;
}
