// The declaration parser: what a statement's first token makes of it. A keyword opens a mode, the rule
// that reads the rest of its statement and every statement behind it until the next keyword.
#include "frontend/tlp_declarations.h"

#include "core/st.h"
#include "frontend/tlt.h"
#include <ostrum/sh.h>
#include <ostrum/tli.h>
#include <ostrum/tliv.h>
#include <ostrum/tls.h>

namespace
{

// Errors that a parse goes on after, unless the module sets no limit.
constexpr int32_t error_limit = 50;

struct PORTION;

// One statement under way.
struct STEP {
    TLP_MODULE *module;
    TLT_STATEMENT *statement;
    int32_t token;         // first token of the statement
    TLP_HANDLER kept;      // rule to put back behind a PRAGMA or ASSERT
    TLP_FUNC *outer;       // top function before a FORWARD declaration
    bool is_forward;       // the function declared here is closed with the statement
    const PORTION *action; // what the keyword does in this portion
};

// What a keyword does in the public or in the private portion.
struct PORTION {
    void (*act)(STEP *step);
    const char *error; // raised first; null for none
    TLP_HANDLER rule;  // that a declaration installs
    int32_t kind;      // of the function that is declared
};

struct KEYWORD {
    int32_t token;
    PORTION in_public;
    PORTION in_private;
};

bool has_block(const TLP_MODULE *module)
{
    return TLIV_GetFunctionBlock(TLP_OpenFunction(module)) != nullptr;
}

// Ends what the statements before left open, consumes the keyword and installs its rule.
void install(STEP *step, TLP_HANDLER rule)
{
    TLP_MODULE *module = step->module;
    if (!module->private_flag) TLP_CloseFunction(module);
    TLP_CloseRecord(module);
    if (rule != nullptr && has_block(module)) {
        TLT_FatalError(step->statement, "Previous BEGIN-END block not closed");
    }
    module->keyword = TLT_GetToken(step->statement, nullptr);
    module->handler = rule;
}

void install_function(STEP *step, int32_t kind)
{
    install(step, TLP_FunctionRule);
    step->module->function_kind = kind;
}

// The rule of a body. Without a block, after an error at its BEGIN, the statement is passed over.
void body_rule(TLP_MODULE *module, TLT_STATEMENT *statement)
{
    TLS_BLOCK *block = TLIV_GetFunctionBlock(TLP_OpenFunction(module));
    if (block != nullptr) {
        TLS_Statement(block, statement);
        return;
    }
    while (TLT_GetToken(statement, nullptr) != TLT_TOKEN_END_OF_LINE) {
    }
}

// The rule of a block that belongs to no function.
void discard_rule(TLP_MODULE *, TLT_STATEMENT *statement)
{
    while (TLT_GetToken(statement, nullptr) != TLT_TOKEN_END_OF_LINE) {
    }
}

void report(STEP *step)
{
    TLT_Error(step->statement, step->action->error);
}

void start(STEP *step)
{
    if (step->action->error != nullptr) report(step);
    install(step, step->action->rule);
}

void start_function(STEP *step)
{
    install_function(step, step->action->kind);
}

void module_keyword(STEP *step)
{
    if (step->module->source_type != TLT_TOKEN_BODY) {
        TLT_FatalError(step->statement, "Multiple MODULE declarations");
        return;
    }
    char name[TLT_TEXT_SIZE];
    TLT_GetToken(step->statement, nullptr);
    if (!TLT_Expect(step->statement, TLT_TOKEN_IDENTIFIER, name)) return;
    if (ST_CompareCI(name, step->module->name) != 0) {
        TLT_Error(step->statement, "Incorrect header for this BODY");
    }
}

void private_keyword(STEP *step)
{
    TLP_MODULE *module = step->module;
    TLP_CloseRecord(module);
    while (module->open_functions != nullptr)
        TLP_CloseFunction(module);
    module->private_flag = 1;
    if (module->domain != nullptr) {
        module->statics = TLI_NewScope(module->domain, "STATICS", TLI_STATIC_SCOPE);
        TLI_PushScope(module->domain, module->statics);
    }
    install(step, nullptr);
}

void uses_keyword(STEP *step)
{
    TLP_MODULE *module = step->module;
    if (module->root == module) module->runtime_mismatch = 0;
    install(step, TLP_UsesRule);
}

void begin_keyword(STEP *step)
{
    TLI_IDENTIFIER *function = TLP_OpenFunction(step->module);
    if (function == nullptr) {
        TLT_Error(step->statement, "No FUNCTION declaration - BEGIN-END block discarded");
        install(step, discard_rule);
        return;
    }
    if (has_block(step->module)) {
        TLT_Error(step->statement, "Multiple BEGIN's");
        return;
    }
    install(step, body_rule);
    const int32_t function_class = TLIV_FunctionClass(function);
    if (TLS_Begin(step->module, function, step->statement, function_class) == nullptr) {
        TLT_Error(step->statement, "Unknown block type");
    }
}

void end_function(STEP *step, TLI_IDENTIFIER *function)
{
    TLP_MODULE *module = step->module;
    if ((module->flags & TLP_FLAG_PRINT_SCOPES) != 0) {
        TLI_PrintScope(module->output, TLIV_FunctionScope(function), module);
    }
    TLS_BLOCK *block = TLIV_GetFunctionBlock(function);
    if (block != nullptr) {
        TLS_Statement(block, step->statement);
        TLS_CheckBlock(block);
    } else {
        TLT_Error(step->statement, "END without corresponding BEGIN");
    }
    TLP_CloseFunction(module);
}

void end_keyword(STEP *step)
{
    TLI_IDENTIFIER *function = TLP_OpenFunction(step->module);
    if (function != nullptr) end_function(step, function);
    install(step, nullptr);
}

bool heads_function(int32_t token)
{
    return token == TLT_TOKEN_FUNCTION || token == TLT_TOKEN_TREE;
}

void entry_keyword(STEP *step)
{
    TLT_GetToken(step->statement, nullptr);
    if (heads_function(TLT_NextToken(step->statement, nullptr))) {
        install_function(step, TLP_KIND_ENTRY);
    } else {
        install(step, nullptr);
    }
}

void forward_keyword(STEP *step)
{
    TLT_GetToken(step->statement, nullptr);
    const int32_t token = TLT_NextToken(step->statement, nullptr);
    if (!heads_function(token) && token != TLT_TOKEN_DATA) {
        install(step, nullptr);
        return;
    }
    install_function(step, TLP_KIND_PRIVATE);
    step->is_forward = true;
    step->outer = step->module->open_functions;
}

void typedef_keyword(STEP *step)
{
    TLT_GetToken(step->statement, nullptr);
    const int32_t token = TLT_NextToken(step->statement, nullptr);
    if (heads_function(token)) {
        install_function(step, TLP_KIND_TYPE);
    } else if (token == TLT_TOKEN_RECORD) {
        install(step, TLP_RecordRule);
    } else if (token == TLT_TOKEN_ARROW) {
        install(step, TLP_PointerRule);
    }
}

// PRAGMA and ASSERT, which stand between the statements of any mode. The rule takes the keyword.
void aside(STEP *step)
{
    step->kept = step->module->handler;
    step->module->handler = step->action->rule;
}

constexpr PORTION declare(TLP_HANDLER rule, const char *error = nullptr)
{
    return { .act = start, .error = error, .rule = rule, .kind = 0 };
}

constexpr PORTION declare_function(int32_t kind)
{
    return { .act = start_function, .error = nullptr, .rule = TLP_FunctionRule, .kind = kind };
}

constexpr PORTION refuse(const char *error)
{
    return { .act = report, .error = error, .rule = nullptr, .kind = 0 };
}

constexpr PORTION run(void (*act)(STEP *step), TLP_HANDLER rule = nullptr)
{
    return { .act = act, .error = nullptr, .rule = rule, .kind = 0 };
}

constexpr KEYWORD both(int32_t token, PORTION portion)
{
    return { .token = token, .in_public = portion, .in_private = portion };
}

constexpr const char *var_error = "VAR section not permitted in public portion";

constexpr KEYWORD keywords[] = {
    both(TLT_TOKEN_MODULE, run(module_keyword)),
    both(TLT_TOKEN_CONST, declare(TLP_ConstRule)),
    both(TLT_TOKEN_ENUM, declare(TLP_EnumRule)),
    { .token = TLT_TOKEN_VAR,
      .in_public = declare(nullptr, var_error),
      .in_private = declare(TLP_VarRule) },
    { .token = TLT_TOKEN_FUNCTION,
      .in_public = declare_function(TLP_KIND_PUBLIC),
      .in_private = declare_function(TLP_KIND_PRIVATE) },
    { .token = TLT_TOKEN_TREE,
      .in_public = declare_function(TLP_KIND_PUBLIC),
      .in_private = declare_function(TLP_KIND_PRIVATE) },
    { .token = TLT_TOKEN_SYSCALL,
      .in_public = declare_function(TLP_KIND_PUBLIC),
      .in_private = declare(nullptr, "SYSCALL's cannot have definitions") },
    { .token = TLT_TOKEN_PRIVATE,
      .in_public = run(private_keyword),
      .in_private = refuse("PRIVATE seen already!") },
    both(TLT_TOKEN_USES, run(uses_keyword)),
    { .token = TLT_TOKEN_BEGIN,
      .in_public = declare(nullptr, "BEGIN not permitted in public portion"),
      .in_private = run(begin_keyword) },
    both(TLT_TOKEN_END, run(end_keyword)),
    { .token = TLT_TOKEN_ENTRY,
      .in_public = run(entry_keyword),
      .in_private = refuse("ENTRY should only be specified in the Public part") },
    { .token = TLT_TOKEN_DATA,
      .in_public = declare_function(TLP_KIND_PUBLIC),
      .in_private = declare_function(TLP_KIND_PRIVATE) },
    both(TLT_TOKEN_TYPEDEF, run(typedef_keyword)),
    both(TLT_TOKEN_PRAGMA, run(aside, TLP_PragmaRule)),
    both(TLT_TOKEN_ASSERT, run(aside, TLP_AssertRule)),
    { .token = TLT_TOKEN_NONVOLATILE,
      .in_public = declare(nullptr, var_error),
      .in_private = declare(TLP_NonVolatileRule) },
    { .token = TLT_TOKEN_FORWARD,
      .in_public = refuse("FORWARD should only be specified in the Private part"),
      .in_private = run(forward_keyword) },
};

// Row of each token in the table, so that the statements of bodies pass at the cost of one look.
struct KEYWORD_INDEX {
    const KEYWORD *rows[TLT_TOKEN_COUNT];
};

consteval KEYWORD_INDEX index_keywords()
{
    KEYWORD_INDEX index = {};
    for (const KEYWORD &keyword : keywords)
        index.rows[keyword.token] = &keyword;
    return index;
}

constexpr KEYWORD_INDEX keyword_index = index_keywords();

void apply_keyword(STEP *step)
{
    const KEYWORD *keyword = keyword_index.rows[step->token];
    if (keyword == nullptr) return;
    step->action = step->module->private_flag ? &keyword->in_private : &keyword->in_public;
    step->action->act(step);
}

void run_handler(TLP_MODULE *module, TLT_STATEMENT *statement)
{
    if (TLT_NextToken(statement, nullptr) != TLT_TOKEN_END_OF_LINE) {
        module->handler(module, statement);
    }
    if (module->root == module && module->runtime_mismatch) {
        TLT_FatalError(statement, "Compilation abandoned - mismatch between runtime and "
                                  "non-runtime data in USES.");
    }
    if (TLT_StatementError(statement) < TLT_LEVEL_ERROR) TLT_ExpectEmpty(statement);
}

void parse_rest(STEP *step)
{
    TLP_MODULE *module = step->module;
    if (module->handler != nullptr) {
        run_handler(module, step->statement);
    } else if (TLT_NextToken(step->statement, nullptr) != TLT_TOKEN_END_OF_LINE) {
        TLT_Error(step->statement, "Statement ignored");
    }
    if (step->kept != nullptr) module->handler = step->kept;
    const bool has_declared = module->open_functions != step->outer;
    if (step->is_forward && has_declared) TLP_CloseFunction(module);
}

// Gives false if the parse is to stop at this statement without more ado.
bool parse(STEP *step)
{
    if (step->token == TLT_TOKEN_HASH) {
        TLP_Preprocess(step->module, step->statement);
        return true;
    }
    if (TLP_IsSkipping(step->module)) return true;
    apply_keyword(step);
    if (TLT_StatementError(step->statement) > TLT_LEVEL_ERROR) return false;
    parse_rest(step);
    return true;
}

void check_error_limit(const TLP_MODULE *module, TLT_STATEMENT *statement)
{
    if ((module->flags & TLP_FLAG_NO_ERROR_LIMIT) != 0) return;
    if (TLT_ErrorCount() > error_limit) {
        TLT_FatalError(statement, "Compilation abandoned - too many errors");
    }
}

} // namespace

TLI_IDENTIFIER *TLP_OpenFunction(const TLP_MODULE *module)
{
    return module->open_functions != nullptr ? module->open_functions->function : nullptr;
}

void TLP_CloseFunction(TLP_MODULE *module)
{
    TLP_FUNC *top = module->open_functions;
    if (top == nullptr) return;
    module->open_functions = top->next;
    if (module->domain != nullptr) TLIV_PopScope(module->domain, top->function);
    SH_Free(top);
}

void TLP_CloseRecord(TLP_MODULE *module)
{
    if (module->open_record == nullptr) return;
    module->open_record = nullptr;
    if (module->domain != nullptr) TLI_PopScope(module->domain);
}

int32_t TLP_ParseStatement(TLP_MODULE *module, TLT_STATEMENT *statement)
{
    TLT_ResetStatement(statement, 0);
    if ((module->flags & TLP_FLAG_ECHO) != 0) printf("%s\n", TLT_StatementChars(statement));
    STEP step = { .module = module,
                  .statement = statement,
                  .token = TLT_NextToken(statement, nullptr),
                  .kept = nullptr,
                  .outer = nullptr,
                  .is_forward = false,
                  .action = nullptr };
    if (!parse(&step)) return TLP_STATUS_FATAL;
    check_error_limit(module, statement);
    return TLT_StatementError(statement) == TLT_LEVEL_FATAL ? TLP_STATUS_FATAL : 0;
}
