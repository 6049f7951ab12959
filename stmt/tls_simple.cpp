/*
 * Simple statements: the head of a function, END, an expression on a line of its own, RETURN; and
 * the parsers of FUNCTION and TREE blocks.
 */
#include "stmt/tls.h"
#include "stmt/tls_java.h"
#include "stmt/tls_text.h"
#include "stmt/tlsc.h"
#include "stmt/tlsl.h"
#include "stmt/tlss.h"

#include "core/sh.h"

#include <cstdio>

#include <ostrum/eep.h>
#include <ostrum/tlc.h>
#include <ostrum/tld.h>
#include <ostrum/tle.h>
#include <ostrum/tli.h>
#include <ostrum/tlit.h>
#include <ostrum/tliv.h>
#include <ostrum/tlp.h>
#include <ostrum/tlt.h>

/* Frames are sized in an operand of 16 bits, and the size is even. */
static constexpr int32_t LARGEST_FRAME = 65534;

TLS_STATEMENT *TLS_NewStatement(const char *tag, int32_t size,
                                const TLS_STATEMENT_CLASS *statement_class,
                                TLT_STATEMENT *statement)
{
    auto *record = static_cast<TLS_STATEMENT *>(SH_AllocateRecord(static_cast<size_t>(size), tag));
    record->statement_class = statement_class;
    record->statement = statement;
    return record;
}

bool TLS_Generable(const TLS_STATEMENT *record, const TLE_TERM *expression)
{
    return expression != nullptr && TLT_StatementError(record->statement) < TLT_LEVEL_ERROR;
}

TLC_PSECT *TLS_OpenSection(TLC_STREAM *stream, const TLS_STATEMENT *record)
{
    TLC_PSECT *section = TLC_NewPSect(stream);
    TLC_Statement(stream, record->statement);
    return section;
}

void TLS_Jump(TLC_STREAM *stream, int32_t code, TLC_PSECT *target)
{
    TLC_PCode(stream, code);
    TLC_Jump(stream, target);
}

/* ---- Head ---- */

static TLS_FUNCTION *function_record(TLS_STATEMENT *record)
{
    return reinterpret_cast<TLS_FUNCTION *>(record);
}

TLI_IDENTIFIER *TLS_FunctionIdentifier(TLS_STATEMENT *head)
{
    bool is_head = head != nullptr && head->statement_class == &TLS_FunctionClass;
    return is_head ? function_record(head)->function : nullptr;
}

static TLS_BLOCK *begin_function(TLP_MODULE *module, TLI_IDENTIFIER *function,
                                 TLT_STATEMENT *statement, int32_t type)
{
    TLS_STATEMENT *head =
        TLS_NewStatement("TLS:FUNCTION", sizeof(TLS_FUNCTION), &TLS_FunctionClass, statement);
    TLS_BLOCK *root = TLS_NewBlock(module, head, type);
    function_record(head)->function = function;
    function_record(head)->body = TLS_SubBlock(root);
    return root;
}

static void print_function(TLS_STATEMENT *record, int32_t indent)
{
    TLS_PrintBlock("FUNCTION", function_record(record)->body, indent + 2);
}

static void check_function(TLS_BLOCK *, TLS_STATEMENT *record)
{
    TLS_CheckBlock(function_record(record)->body);
}

/* The class of the symbol that marks a function, by its qualifiers; -1 for none. */
static int32_t symbol_class(TLP_MODULE *module, int32_t qualifiers)
{
    bool has_private_symbols = (TLP_ModuleFlags(module) & TLP_FLAG_PRIVATE_SYMBOLS) != 0;
    switch (qualifiers) {
    case 0:
        return has_private_symbols ? 3 : -1;
    case 1:
        return 0;
    case 2:
        return 4;
    default:
        return -1;
    }
}

static void allocate_frame(TLC_STREAM *stream, int32_t size)
{
    if (size == 0) return;
    if (size > LARGEST_FRAME) {
        TLC_Error(stream, "Frame too large");
        return;
    }
    TLC_PCode(stream, EEP_ALLOC);
    TLC_Code16(stream, size);
}

static void generate_function(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record)
{
    TLI_IDENTIFIER *function = function_record(record)->function;
    TLI_SetPSect(function, TLC_NewPSect(stream));
    int32_t kind = symbol_class(block->module, TLIV_FunctionQualifiers(function));
    if (kind >= 0) TLC_Symbol(stream, kind, TLIT_CodeType, function);
    allocate_frame(stream, TLI_ScopeSize(TLIV_FunctionScope(function)));
    TLS_BlockCode(stream, function_record(record)->body);
}

static void delete_function(TLS_STATEMENT *record)
{
    TLS_DelBlock(function_record(record)->body);
    SH_Free(record);
}

const TLS_STATEMENT_CLASS TLS_FunctionClass = {
    .flags = 0,
    .print = print_function,
    .check = check_function,
    .p_code = generate_function,
    .c_code = TLS_FunctionCText,
    .java_code = TLS_FunctionJavaText,
    .delete_statement = delete_function,
    .tree = TLSS_HeadTree,
    .node_section = nullptr,
    .tree_callbacks = nullptr,
};

/* ---- END ---- */

/* The token stays: it is the declaration parser that ends a body. */
static void end_statement(TLS_BLOCK *root, TLT_STATEMENT *statement)
{
    TLS_Append(root, TLS_NewStatement("TLS:END", sizeof(TLS_STATEMENT), &TLS_EndClass, statement));
}

static void print_end(TLS_STATEMENT *, int32_t indent)
{
    std::printf("%*sFUNCTION END\n", indent, "");
}

static void generate_end(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record)
{
    TLI_IDENTIFIER *function = TLS_FunctionIdentifier(block->head);
    if (function == nullptr) return;
    TLS_OpenSection(stream, record);
    if (TLI_IdentifierType(function) != TLIT_VoidType) {
        TLC_PCode(stream, EEP_STOP);
        return;
    }
    TLC_Literal(stream, 0);
    TLC_PCode(stream, EEP_RET);
}

static void delete_record(TLS_STATEMENT *record)
{
    SH_Free(record);
}

const TLS_STATEMENT_CLASS TLS_EndClass = {
    .flags = 0,
    .print = print_end,
    .check = nullptr,
    .p_code = generate_end,
    .c_code = TLS_EndCText,
    .java_code = TLS_EndJavaText,
    .delete_statement = delete_record,
    .tree = nullptr,
    .node_section = nullptr,
    .tree_callbacks = nullptr,
};

/* ---- Expression ---- */

static TLS_EXPRESSION *expression_record(TLS_STATEMENT *record)
{
    return reinterpret_cast<TLS_EXPRESSION *>(record);
}

static void expression_statement(TLS_BLOCK *root, TLT_STATEMENT *statement)
{
    TLE_TERM *expression =
        TLE_ParseExpression(root->module, statement, TLE_USE_STATEMENT, TLT_TOKEN_NONE);
    if (TLE_ExpressionType(expression) == nullptr) {
        TLT_Error(statement, "Strange Term in expression");
    }
    TLS_STATEMENT *record =
        TLS_NewStatement("TLS:EXPRESSION", sizeof(TLS_EXPRESSION), &TLS_ExpressionClass, statement);
    expression_record(record)->expression = expression;
    TLS_Append(root, record);
}

static void print_expression(TLS_STATEMENT *record, int32_t indent)
{
    TLE_PrintExpression("Expression", expression_record(record)->expression, indent);
}

static void generate_expression(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *record)
{
    TLE_TERM *expression = expression_record(record)->expression;
    if (!TLS_Generable(record, expression)) return;
    TLS_OpenSection(stream, record);
    TLE_ExpressionCode(stream, expression, 0);
    TLC_PCode(stream, EEP_POP);
}

static void delete_expression(TLS_STATEMENT *record)
{
    TLE_DelExpression(expression_record(record)->expression);
    SH_Free(record);
}

const TLS_STATEMENT_CLASS TLS_ExpressionClass = {
    .flags = 0,
    .print = print_expression,
    .check = nullptr,
    .p_code = generate_expression,
    .c_code = TLS_ExpressionText,
    .java_code = TLS_ExpressionJavaText,
    .delete_statement = delete_expression,
    .tree = nullptr,
    .node_section = nullptr,
    .tree_callbacks = nullptr,
};

/* ---- RETURN ---- */

static TLS_RETURN *return_record(TLS_STATEMENT *record)
{
    return reinterpret_cast<TLS_RETURN *>(record);
}

/* Reads what stands behind RETURN, if anything does, against the function's result type. */
static void return_value(TLS_BLOCK *root, TLT_STATEMENT *statement, TLS_RETURN *record)
{
    TLI_IDENTIFIER *wanted = TLI_IdentifierType(TLS_FunctionIdentifier(root->head));
    record->has_value = TLT_NextToken(statement, nullptr) != TLT_TOKEN_END_OF_LINE;
    if (record->has_value) {
        record->expression =
            TLE_ParseExpression(root->module, statement, TLE_USE_VALUE, TLT_TOKEN_NONE);
        TLS_CheckType(root, statement, record->expression, wanted);
    } else if (wanted != TLIT_VoidType) {
        TLT_Error(statement, "No value supplied with RETURN statement");
    }
}

static void return_statement(TLS_BLOCK *root, TLT_STATEMENT *statement)
{
    if (TLSC_InAWhenBlock(root)) TLT_Error(statement, "RETURN not permitted from a WHEN block");
    TLT_GetToken(statement, nullptr);
    TLS_STATEMENT *record =
        TLS_NewStatement("TLS:RETURN", sizeof(TLS_RETURN), &TLS_ReturnClass, statement);
    return_value(root, statement, return_record(record));
    TLS_Append(root, record);
}

static void print_return(TLS_STATEMENT *record, int32_t indent)
{
    TLE_PrintExpression("Return", return_record(record)->expression, indent);
}

static void check_return(TLS_BLOCK *, TLS_STATEMENT *record)
{
    TLS_CheckUnreachable(record);
}

static bool return_is_generable(TLS_STATEMENT *record)
{
    return !return_record(record)->has_value ||
           TLS_Generable(record, return_record(record)->expression);
}

static void generate_return(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *record)
{
    if (!return_is_generable(record)) return;
    TLS_OpenSection(stream, record);
    if (return_record(record)->has_value) {
        TLE_ExpressionCode(stream, return_record(record)->expression, 0);
    } else {
        TLC_Literal(stream, 0);
    }
    TLC_PCode(stream, EEP_RET);
}

static void delete_return(TLS_STATEMENT *record)
{
    TLE_DelExpression(return_record(record)->expression);
    SH_Free(record);
}

const TLS_STATEMENT_CLASS TLS_ReturnClass = {
    .flags = TLS_NO_PASS,
    .print = print_return,
    .check = check_return,
    .p_code = generate_return,
    .c_code = TLS_ReturnText,
    .java_code = TLS_ReturnJavaText,
    .delete_statement = delete_return,
    .tree = nullptr,
    .node_section = nullptr,
    .tree_callbacks = nullptr,
};

/* ---- Parsers ---- */

using PARSE = void (*)(TLS_BLOCK *root, TLT_STATEMENT *statement);

/* How a statement is parsed that begins with a token; the token is not consumed. */
struct TOKEN_ROW {
    int32_t token;
    PARSE parse;
};

struct DISPATCH {
    PARSE parse[TLT_TOKEN_COUNT];
};

static void empty_statement(TLS_BLOCK *, TLT_STATEMENT *) {}

static void illegal_in_tree(TLS_BLOCK *, TLT_STATEMENT *statement)
{
    TLT_Error(statement, "Illegal in a TREE block");
}

static constexpr TOKEN_ROW function_rows[] = {
    { .token = TLT_TOKEN_END, .parse = end_statement },
    { .token = TLT_TOKEN_IF, .parse = TLSC_IfStatement },
    { .token = TLT_TOKEN_WHEN, .parse = TLSC_IfStatement },
    { .token = TLT_TOKEN_ELSEIF, .parse = TLSC_ElseifStatement },
    { .token = TLT_TOKEN_ELSE, .parse = TLSC_ElseStatement },
    { .token = TLT_TOKEN_FOR, .parse = TLSL_ForStatement },
    { .token = TLT_TOKEN_WHILE, .parse = TLSL_WhileStatement },
    { .token = TLT_TOKEN_RAISE, .parse = TLSC_RaiseStatement },
    { .token = TLT_TOKEN_END_EXCEPTION, .parse = TLSC_EndExceptionStatement },
    { .token = TLT_TOKEN_RETURN, .parse = return_statement },
    { .token = TLT_TOKEN_END_OF_LINE, .parse = empty_statement },
    { .token = TLT_TOKEN_SWITCH, .parse = TLSS_SwitchStatement },
    { .token = TLT_TOKEN_CASE, .parse = TLSS_CaseStatement },
    { .token = TLT_TOKEN_DEFAULT, .parse = TLSS_DefaultStatement },
};

static constexpr TOKEN_ROW tree_rows[] = {
    { .token = TLT_TOKEN_END, .parse = end_statement },
    { .token = TLT_TOKEN_END_OF_LINE, .parse = empty_statement },
    { .token = TLT_TOKEN_NODE, .parse = TLSS_SwitchStatement },
    { .token = TLT_TOKEN_SUBTREE, .parse = TLSS_SwitchStatement },
    { .token = TLT_TOKEN_LEAF, .parse = TLSS_SwitchStatement },
    { .token = TLT_TOKEN_CASE, .parse = TLSS_CaseStatement },
    { .token = TLT_TOKEN_GOTO, .parse = TLSS_GotoStatement },
    { .token = TLT_TOKEN_BREAK, .parse = TLSS_BreakStatement },
};

/* One slot for each token; the tokens without a row get the other operation. */
template <size_t COUNT>
static consteval DISPATCH dispatch(const TOKEN_ROW (&rows)[COUNT], PARSE other)
{
    DISPATCH result = {};
    for (PARSE &parse : result.parse)
        parse = other;
    for (const TOKEN_ROW &row : rows)
        result.parse[row.token] = row.parse;
    return result;
}

static constexpr DISPATCH function_dispatch = dispatch(function_rows, expression_statement);
static constexpr DISPATCH tree_dispatch = dispatch(tree_rows, illegal_in_tree);

static void parse_function_statement(TLS_BLOCK *root, TLT_STATEMENT *statement, void *)
{
    function_dispatch.parse[TLT_NextToken(statement, nullptr)](root, statement);
}

static void parse_tree_statement(TLS_BLOCK *root, TLT_STATEMENT *statement, void *)
{
    tree_dispatch.parse[TLT_NextToken(statement, nullptr)](root, statement);
}

static const TLS_BLOCK_CLASS function_block = {
    .begin = begin_function,
    .parser = parse_function_statement,
};

static const TLS_BLOCK_CLASS tree_block = {
    .begin = begin_function,
    .parser = parse_tree_statement,
};

void TLS_Initialise(void)
{
    static bool is_initialised;
    if (is_initialised) return;
    is_initialised = true;
    TLD_Initialise();
    TLS_DeclareBlockClass(TLP_SECTION_FUNCTION, &function_block);
    TLS_DeclareBlockClass(TLP_SECTION_TREE, &tree_block);
}

void TLS_CleanUp(void)
{
    /* The classes are static tables, and blocks end with the functions that own them. */
    TLD_CleanUp();
}
