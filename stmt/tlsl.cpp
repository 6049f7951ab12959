/*
 * Loops: WHILE and FOR. A running FOR keeps its limit and its step on the evaluation stack.
 */
#include "stmt/tlsl.h"

#include "names/tlit.h"
#include <ostrum/eep.h>
#include <ostrum/sh.h>
#include <ostrum/tlc.h>
#include <ostrum/tle.h>
#include <ostrum/tli.h>
#include <ostrum/tlt.h>

/* Access of an item whose address is on the stack. */
static constexpr int32_t ACCESS_MEMORY = 1;

/* ---- WHILE ---- */

static TLSL_WHILE *while_record(TLS_STATEMENT *record)
{
    return reinterpret_cast<TLSL_WHILE *>(record);
}

void TLSL_WhileStatement(TLS_BLOCK *root, TLT_STATEMENT *statement)
{
    TLT_GetToken(statement, nullptr);
    TLS_STATEMENT *record =
        TLS_NewStatement("TLSL:WHILE", sizeof(TLSL_WHILE), &TLSL_WhileClass, statement);
    TLE_TERM *condition =
        TLE_ParseExpression(root->module, statement, TLE_USE_CONDITION, TLT_TOKEN_NONE);
    TLS_CheckType(root, statement, condition, TLIT_BoolType);
    while_record(record)->condition = condition;
    TLS_Append(root, record);
    while_record(record)->body = TLS_SubBlock(root);
}

static void print_while(TLS_STATEMENT *record, int32_t indent)
{
    TLE_PrintExpression("WHILE", while_record(record)->condition, indent);
    TLS_PrintBlock("BLOCK", while_record(record)->body, indent + 2);
}

static void check_while(TLS_BLOCK *, TLS_STATEMENT *record)
{
    TLS_BLOCK *body = while_record(record)->body;
    if (TLS_EmptyBlock(body)) TLT_Warning(record->statement, "Useless WHILE statement");
    TLS_CheckBlock(body);
}

/* The jump out of the loop stands before the body, and is known when the end is. */
static void generate_while(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *record)
{
    TLE_TERM *condition = while_record(record)->condition;
    if (!TLS_Generable(record, condition)) return;
    TLC_PSECT *top = TLS_OpenSection(stream, record);
    TLE_ExpressionCode(stream, condition, 0);
    TLC_PSECT *test = TLC_NewPSect(stream);
    TLC_NewPSect(stream);
    TLS_BlockCode(stream, while_record(record)->body);
    TLC_NewPSect(stream);
    TLS_Jump(stream, EEP_JUMP, top);
    TLC_PSECT *end = TLC_NewPSect(stream);
    TLC_SetPSect(stream, test);
    TLS_Jump(stream, EEP_JZ, end);
    TLC_SetPSect(stream, end);
}

static void delete_while(TLS_STATEMENT *record)
{
    TLE_DelExpression(while_record(record)->condition);
    TLS_DelBlock(while_record(record)->body);
    SH_Free(record);
}

const TLS_STATEMENT_CLASS TLSL_WhileClass = {
    .flags = 0,
    .print = print_while,
    .check = check_while,
    .p_code = generate_while,
    .c_code = TLSL_WhileText,
    .java_code = TLSL_WhileJavaText,
    .delete_statement = delete_while,
    .tree = nullptr,
    .node_section = nullptr,
    .tree_callbacks = nullptr,
};

/* ---- FOR ---- */

static TLSL_FOR *for_record(TLS_STATEMENT *record)
{
    return reinterpret_cast<TLSL_FOR *>(record);
}

/* What can follow the variable. */
struct CLAUSE {
    int32_t token;
    TLE_TERM *TLSL_FOR::*expression;
    const char *again;
    const char *missing; /* null where the clause can be left out */
};

static constexpr CLAUSE clauses[] = {
    { .token = TLT_TOKEN_FROM,
      .expression = &TLSL_FOR::start,
      .again = "FROM already seen",
      .missing = "FROM missing in FOR statement" },
    { .token = TLT_TOKEN_TO,
      .expression = &TLSL_FOR::limit,
      .again = "TO already seen",
      .missing = "TO missing in FOR statement" },
    { .token = TLT_TOKEN_BY,
      .expression = &TLSL_FOR::step,
      .again = "BY already seen",
      .missing = nullptr },
};

/* A FOR while its clauses are read. */
struct FOR_PARSE {
    TLS_BLOCK *root;
    TLT_STATEMENT *statement;
    TLSL_FOR *record;
    TLI_IDENTIFIER *type; /* of the variable, and so of the loop */
    uint32_t seen;        /* one bit for each clause */
    bool has_mismatch;
};

static const CLAUSE *find_clause(int32_t token)
{
    for (const CLAUSE &clause : clauses) {
        if (clause.token == token) return &clause;
    }
    return nullptr;
}

static uint32_t clause_bit(const CLAUSE *clause)
{
    return 1u << (clause - clauses);
}

/* A step that is not known before the program runs is taken as it is. */
static void check_step(FOR_PARSE *parse)
{
    int32_t value = 0;
    if (!TLE_Constant(parse->record->step, &value) || value > 0) return;
    TLT_Error(parse->statement, "BY value must be positive");
}

/* An expression without a type has had its own error, and is then no mismatch. */
static bool fits_loop(const FOR_PARSE *parse, const TLE_TERM *term)
{
    TLI_IDENTIFIER *type = TLE_ExpressionType(term);
    bool has_failed = type == nullptr && TLT_StatementError(parse->statement) >= TLT_LEVEL_ERROR;
    return has_failed ||
           TLIT_MatchType(parse->root->module, parse->statement, parse->type, type) != 0;
}

static void clause_expression(FOR_PARSE *parse, const CLAUSE *clause)
{
    TLE_TERM *term =
        TLE_ParseExpression(parse->root->module, parse->statement, TLE_USE_VALUE, TLT_TOKEN_NONE);
    parse->record->*(clause->expression) = term;
    parse->seen |= clause_bit(clause);
    if (!fits_loop(parse, term)) parse->has_mismatch = true;
}

static void for_clause(FOR_PARSE *parse, int32_t token)
{
    const CLAUSE *clause = find_clause(token);
    if (clause == nullptr) {
        TLT_Error(parse->statement, "Illegal in a FOR statement");
    } else if ((parse->seen & clause_bit(clause)) != 0) {
        TLT_Error(parse->statement, clause->again);
    } else if (token == TLT_TOKEN_BY && TLIT_IsEnumeration(parse->type)) {
        TLT_Error(parse->statement, "BY not allowed with ENUM values");
    } else {
        clause_expression(parse, clause);
        if (token == TLT_TOKEN_BY) check_step(parse);
    }
}

/* Of the clauses that a loop cannot do without, the first that is missing. */
static void report_missing(const FOR_PARSE *parse)
{
    for (const CLAUSE &clause : clauses) {
        if (clause.missing == nullptr || (parse->seen & clause_bit(&clause)) != 0) continue;
        TLT_Error(parse->statement, clause.missing);
        return;
    }
}

static void for_clauses(FOR_PARSE *parse)
{
    for (;;) {
        int32_t token = TLT_GetToken(parse->statement, nullptr);
        if (token == TLT_TOKEN_END_OF_LINE) break;
        for_clause(parse, token);
    }
    report_missing(parse);
    if (parse->has_mismatch) {
        TLT_Error(parse->statement, "All arguments of FOR must have the same type");
    }
}

/* The variable is a scalar that can be assigned to; it may be a field. */
static bool is_loop_variable(TLE_TERM *variable)
{
    if (!TLE_CheckLHS(variable)) return false;
    TLI_IDENTIFIER *identifier = TLE_TermIdentifier(variable);
    return identifier != nullptr && TLI_IdentifierDimension(identifier, nullptr) == -1;
}

static void parse_for(TLS_BLOCK *root, TLT_STATEMENT *statement, TLSL_FOR *record)
{
    record->variable = TLE_ParseExpression(root->module, statement, TLE_USE_VALUE, TLT_TOKEN_FROM);
    if (!is_loop_variable(record->variable)) {
        TLT_Error(statement, "First parameter of FOR must be a variable");
        return;
    }
    FOR_PARSE parse = {
        .root = root,
        .statement = statement,
        .record = record,
        .type = TLE_ExpressionType(record->variable),
        .seen = 0,
        .has_mismatch = false,
    };
    for_clauses(&parse);
}

void TLSL_ForStatement(TLS_BLOCK *root, TLT_STATEMENT *statement)
{
    TLT_GetToken(statement, nullptr);
    TLS_STATEMENT *record =
        TLS_NewStatement("TLSL:DO", sizeof(TLSL_FOR), &TLSL_ForClass, statement);
    parse_for(root, statement, for_record(record));
    TLS_Append(root, record);
    for_record(record)->body = TLS_SubBlock(root);
}

static void print_for(TLS_STATEMENT *record, int32_t indent)
{
    TLSL_FOR *loop = for_record(record);
    TLE_PrintExpression("DO", loop->variable, indent);
    TLE_PrintExpression("FROM", loop->start, indent);
    TLE_PrintExpression("TO", loop->limit, indent);
    if (loop->step != nullptr) TLE_PrintExpression("BY", loop->step, indent);
    TLS_PrintBlock("BLOCK", loop->body, indent + 2);
}

static void check_for(TLS_BLOCK *, TLS_STATEMENT *record)
{
    TLS_BLOCK *body = for_record(record)->body;
    if (TLS_EmptyBlock(body)) TLT_Warning(record->statement, "Useless FOR statement");
    TLS_CheckBlock(body);
}

/* A step that failed has left its error on the statement. */
bool TLSL_ForIsGenerable(const TLSL_FOR *record)
{
    return TLS_Generable(&record->common, record->variable) && record->start != nullptr &&
           record->limit != nullptr;
}

/* The highest value that an item of a type can take without being cut. */
static int64_t highest_value(TLI_IDENTIFIER *type)
{
    if (type == TLIT_CharType || TLIT_IsEnumeration(type)) return UINT8_MAX;
    return type == TLIT_ShortType ? INT16_MAX : INT32_MAX;
}

bool TLSL_IsNarrow(const TLSL_FOR *record)
{
    return highest_value(TLE_ExpressionType(record->variable)) != INT32_MAX;
}

bool TLSL_HasLiteralStart(const TLSL_FOR *record)
{
    TLI_IDENTIFIER *type = TLE_ExpressionType(record->variable);
    int32_t start = 0;
    if (!TLE_Constant(record->start, &start)) return false;
    return start <= highest_value(type) && start >= (type == TLIT_ShortType ? INT16_MIN : 0);
}

bool TLSL_HasLiteralBounds(const TLSL_FOR *record)
{
    int32_t limit = 0;
    int32_t step = 1;
    if (!TLE_Constant(record->limit, &limit)) return false;
    if (record->step != nullptr && !TLE_Constant(record->step, &step)) return false;
    return static_cast<int64_t>(limit) + step <=
           highest_value(TLE_ExpressionType(record->variable));
}

static void push_step(TLC_STREAM *stream, const TLSL_FOR *loop)
{
    if (loop->step == nullptr) {
        TLC_Literal(stream, 1);
    } else {
        TLE_ExpressionCode(stream, loop->step, 0);
    }
}

/* Stack: -> limit, step, limit, value. */
static void generate_start(TLC_STREAM *stream, const TLSL_FOR *loop)
{
    TLS_OpenSection(stream, &loop->common);
    TLE_ExpressionCode(stream, loop->limit, 0);
    TLC_PCode(stream, EEP_DUP);
    push_step(stream, loop);
    TLC_PCode(stream, EEP_EXCH);
    TLE_ExpressionCode(stream, loop->start, 0);
}

/* Stack: limit, step, limit, value -> limit, step, flag; the flag ends the loop. */
static TLC_PSECT *generate_test(TLC_STREAM *stream, const TLSL_FOR *loop)
{
    TLC_PSECT *section = TLC_NewPSect(stream);
    TLE_ExpressionCode(stream, loop->variable, 1);
    TLI_IDENTIFIER *type = TLE_ExpressionType(loop->variable);
    TLC_StoreValue(stream, TLIT_TypeSizeof(type, -1), ACCESS_MEMORY);
    TLC_PCode(stream, EEP_LESS);
    return section;
}

/* Stack: limit, step -> limit, step, limit, value. */
static void generate_advance(TLC_STREAM *stream, const TLSL_FOR *loop, TLC_PSECT *test)
{
    TLC_NewPSect(stream);
    TLC_PCode(stream, EEP_DUP2);
    TLE_ExpressionCode(stream, loop->variable, 0);
    TLC_PCode(stream, EEP_ADD);
    TLS_Jump(stream, EEP_JUMP, test);
}

static void generate_for(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *record)
{
    const TLSL_FOR *loop = for_record(record);
    if (!TLSL_ForIsGenerable(loop)) return;
    generate_start(stream, loop);
    TLC_PSECT *test = generate_test(stream, loop);
    TLC_NewPSect(stream);
    TLS_BlockCode(stream, loop->body);
    generate_advance(stream, loop, test);
    TLC_PSECT *end = TLC_NewPSect(stream);
    TLC_PCode(stream, EEP_POP);
    TLC_PCode(stream, EEP_POP);
    TLC_SetPSect(stream, test);
    TLS_Jump(stream, EEP_JNZ, end);
    TLC_SetPSect(stream, end);
}

static void delete_for(TLS_STATEMENT *record)
{
    TLSL_FOR *loop = for_record(record);
    TLE_DelExpression(loop->variable);
    TLE_DelExpression(loop->start);
    TLE_DelExpression(loop->limit);
    TLE_DelExpression(loop->step);
    TLS_DelBlock(loop->body);
    SH_Free(record);
}

const TLS_STATEMENT_CLASS TLSL_ForClass = {
    .flags = 0,
    .print = print_for,
    .check = check_for,
    .p_code = generate_for,
    .c_code = TLSL_ForCText,
    .java_code = TLSL_ForJavaText,
    .delete_statement = delete_for,
    .tree = nullptr,
    .node_section = nullptr,
    .tree_callbacks = nullptr,
};

void TLSL_Initialise(void)
{
    /* The classes are static tables. */
}
