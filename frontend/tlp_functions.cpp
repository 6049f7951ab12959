// The rule of function heads: FUNCTION, TREE, SYSCALL and DATA declarations and definitions.
#include "frontend/tlp_declarations.h"

#include "names/tliv.h"
#include <ostrum/eep.h>
#include <ostrum/sh.h>
#include <ostrum/st.h>
#include <ostrum/tle.h>
#include <ostrum/tli.h>
#include <ostrum/tlit.h>
#include <string.h>

namespace
{

// Bytes of a syscall's name in the registry, terminator included.
constexpr int32_t syscall_name_size = 128;

// Numbers of syscalls are 16 bits wide, the library in the upper byte.
constexpr int64_t syscall_count = 65536;
constexpr int64_t library_step = 256;

// One head as it is read.
struct HEAD {
    TLP_MODULE *module;
    TLT_STATEMENT *statement;
    char name[TLT_TEXT_SIZE];
    char hidden_name[TLT_TEXT_SIZE + 1]; // the name behind "_", of a prototype that has no name
    TLI_IDENTIFIER *type;
    int32_t function_class; // section type, -1 for none
    bool has_number;        // SYSCALL: its number was read
    int32_t number;
    int32_t flags; // of the syscall
};

// What an argument takes from the one before it.
struct ARGUMENT {
    TLI_IDENTIFIER *type;
    int32_t pass_type;
};

bool parse_int_constant(const HEAD &head, int32_t *value)
{
    TLE_TERM *term =
        TLE_ParseExpression(head.module, head.statement, TLE_USE_VALUE, TLT_TOKEN_CLOSE_BRACKET);
    intptr_t number = 0;
    const bool is_constant = term != nullptr && TLE_ConstantValue(head.module, nullptr, term,
                                                                  TLIT_IntType, &number, 1) != 0;
    if (term != nullptr && !is_constant) {
        TLT_Error(head.statement, "'INT' constant expected here");
    }
    TLE_DelExpression(term);
    if (is_constant) *value = static_cast<int32_t>(number);
    return is_constant;
}

// ( number [ , flags ] ). Without a number the function is declared, but not registered, so that its
// uses raise no messages of their own.
bool parse_syscall_number(HEAD *head)
{
    if (!TLT_Expect(head->statement, TLT_TOKEN_OPEN_BRACKET, nullptr)) return false;
    head->has_number = parse_int_constant(*head, &head->number);
    if (TLT_PossibleToken(head->statement, TLT_TOKEN_COMMA, nullptr)) {
        parse_int_constant(*head, &head->flags);
    }
    return TLT_Expect(head->statement, TLT_TOKEN_CLOSE_BRACKET, nullptr) != 0;
}

int32_t class_of_keyword(int32_t keyword)
{
    if (keyword == TLT_TOKEN_TREE) return TLP_SECTION_TREE;
    return keyword == TLT_TOKEN_SYSCALL ? TLP_SECTION_SYSCALL : TLP_SECTION_FUNCTION;
}

void find_class(HEAD *head)
{
    if (head->module->keyword != TLT_TOKEN_DATA) {
        head->function_class = class_of_keyword(head->module->keyword);
        return;
    }
    head->function_class = TLP_FindSectionType(TLI_IdentifierName(head->type));
    if (head->function_class < 0) {
        TLT_Error(head->statement, "Unknown type after a DATA keyword");
    }
}

// Reads what stands before the arguments.
bool parse_head(HEAD *head)
{
    const bool is_syscall = head->module->keyword == TLT_TOKEN_SYSCALL;
    if (is_syscall && !parse_syscall_number(head)) return false;
    head->type = TLP_ParseType(head->module, head->statement);
    if (head->type == nullptr) return false;
    find_class(head);
    if (!TLT_Expect(head->statement, TLT_TOKEN_IDENTIFIER, head->name)) return false;
    ST_Concat(head->hidden_name, sizeof head->hidden_name, "_", head->name, nullptr);
    return true;
}

// Number of the library that the module's pragma tells, 0 without one.
int32_t library_number(const HEAD &head)
{
    TLI_IDENTIFIER *owner = TLI_FindScopeIdentifier(head.module->globals, head.module->name);
    const char *text = owner != nullptr ? TLI_FindPragma(owner, "DLL_NAME") : nullptr;
    if (text == nullptr) return 0;
    const char *comma = strchr(text, ',');
    int32_t number = 0;
    if (comma == nullptr) {
        TLT_Error(head.statement, "Bad DLL_NAME pragma for SYSCALL");
    } else {
        ST_CharInt(comma + 1, &number, 0);
    }
    return number;
}

// The registry ends the process at a number that it has no room for, so such a one stops here.
bool enter_syscall(const HEAD &head, int64_t number)
{
    if (number < 0 || number >= syscall_count) return false;
    char name[syscall_name_size];
    ST_Concat(name, sizeof name, head.module->name, ".", head.name, nullptr);
    return EEP_NewSyscall(TLP_SyscallData(head.module), name, static_cast<int32_t>(number),
                          static_cast<uint32_t>(head.flags)) != 0;
}

void declare_syscall(const HEAD &head)
{
    if (!head.has_number) return;
    const int64_t number = head.number + library_number(head) * library_step;
    if (!enter_syscall(head, number)) {
        TLT_Error(head.statement, "Failed to declare a SYSCALL");
    }
}

// The type of an argument, if the name just read is one; then the argument's name comes next.
bool take_type(const HEAD &head, bool has_keyword, char *name, ARGUMENT *argument)
{
    TLI_IDENTIFIER *found = TLP_LookUpIdentifier(head.module, name);
    if (found == nullptr || TLI_IdentifierClass(found) != TLI_TYPE) return false;
    argument->type = found;
    if (!has_keyword) argument->pass_type = TLIV_BY_VALUE;
    return true;
}

bool take_pass_type(TLT_STATEMENT *statement, int32_t *pass_type)
{
    if (TLT_PossibleToken(statement, TLT_TOKEN_VAR, nullptr)) {
        *pass_type = TLIV_BY_VAR;
        return true;
    }
    if (!TLT_PossibleToken(statement, TLT_TOKEN_CONST, nullptr)) return false;
    *pass_type = TLIV_BY_CONST;
    return true;
}

// [VAR or CONST] [type] name [array]. False ends the arguments.
bool parse_argument(const HEAD &head, TLI_IDENTIFIER *function, ARGUMENT *argument)
{
    char name[TLT_TEXT_SIZE];
    TLT_STATEMENT *statement = head.statement;
    const bool has_keyword = take_pass_type(statement, &argument->pass_type);
    const bool wants_type = has_keyword || argument->type == nullptr;
    if (!TLT_Expect(statement, TLT_TOKEN_IDENTIFIER, name)) return false;
    if (take_type(head, has_keyword, name, argument)) {
        if (!TLT_Expect(statement, TLT_TOKEN_IDENTIFIER, name)) return false;
    } else if (wants_type) {
        TLT_Error(statement, "<Type> expected");
        return false;
    }
    const TLP_ARRAY_PART part = TLP_ParseArrayPart(head.module, statement);
    return TLIV_Argument(head.module->data_type_domain, head.module->domain, statement, name,
                         argument->type, part.dimension, part.range, function,
                         argument->pass_type) != nullptr;
}

bool take_dots(TLT_STATEMENT *statement, TLI_IDENTIFIER *function)
{
    if (!TLT_PossibleToken(statement, TLT_TOKEN_DOTS, nullptr)) return false;
    TLIV_AllowExtraArguments(statement, function);
    return true;
}

bool parse_argument_list(const HEAD &head, TLI_IDENTIFIER *function)
{
    ARGUMENT argument = { .type = nullptr, .pass_type = TLIV_BY_VALUE };
    do {
        if (!parse_argument(head, function, &argument)) return false;
        if (take_dots(head.statement, function)) return true;
    } while (TLT_PossibleToken(head.statement, TLT_TOKEN_COMMA, nullptr));
    return true;
}

void parse_arguments(const HEAD &head, TLI_IDENTIFIER *function)
{
    TLT_STATEMENT *statement = head.statement;
    if (head.module->keyword == TLT_TOKEN_DATA) return;
    if (!TLT_Expect(statement, TLT_TOKEN_OPEN_BRACKET, nullptr)) return;
    if (TLT_PossibleToken(statement, TLT_TOKEN_CLOSE_BRACKET, nullptr)) return;
    if (!take_dots(statement, function) && !parse_argument_list(head, function)) return;
    TLT_Expect(statement, TLT_TOKEN_CLOSE_BRACKET, nullptr);
}

TLI_IDENTIFIER *new_function(const HEAD &head, const char *name, int32_t kind)
{
    return TLIV_Function(head.module->data_type_domain, head.module->domain, head.statement, name,
                         head.function_class, kind, head.type);
}

// Can the name that was found be a prototype of this definition?
bool is_prototype(const HEAD &head, TLI_IDENTIFIER *found)
{
    if (TLI_IdentifierClass(found) != TLI_FUNCTION) {
        TLT_Error(head.statement, "Bad function name");
        return false;
    }
    if (TLIV_GetFunctionBlock(found) != nullptr) {
        TLT_Error(head.statement, "Function already has a definition");
        return false;
    }
    if (TLIV_FunctionClass(found) != head.function_class) {
        TLT_Warning(head.statement, "FUNCTION/TREE Prototype doesn't match declaration");
        TLIV_SetFunctionClass(found, head.function_class);
    }
    const bool is_open = found == TLP_OpenFunction(head.module);
    if (is_open && TLI_IdentifierScope(found) != head.module->globals) {
        TLT_FatalError(TLI_IdentifierStatement(found),
                       "Missing FORWARD keyword on private prototype");
        return false;
    }
    return true;
}

// Reads the arguments again and holds them against the prototype, whose own ones stay.
TLI_IDENTIFIER *define_prototype(const HEAD &head, TLI_IDENTIFIER *prototype)
{
    if (!is_prototype(head, prototype)) return nullptr;
    TLI_IDENTIFIER *again = new_function(head, head.hidden_name, TLP_KIND_PRIVATE);
    if (again == nullptr) return nullptr;
    parse_arguments(head, again);
    TLIV_PopScope(head.module->domain, again);
    TLIV_CheckPrototype(head.statement, prototype, again);
    TLI_DelIdentifier(again);
    TLIV_SetFunctionLineNumber(prototype, TLT_StatementLineNumber(head.statement));
    TLIV_PushScope(head.module->domain, prototype);
    return prototype;
}

TLI_IDENTIFIER *declare_new(const HEAD &head, const char *name)
{
    TLI_IDENTIFIER *function = new_function(head, name, head.module->function_kind);
    if (function == nullptr) return nullptr;
    TLIV_SetFunctionLineNumber(function, TLT_StatementLineNumber(head.statement));
    parse_arguments(head, function);
    return function;
}

void declare_type(const HEAD &head)
{
    TLI_IDENTIFIER *prototype = declare_new(head, head.hidden_name);
    if (prototype == nullptr) return;
    TLIV_PopScope(head.module->domain, prototype);
    TLIT_FunctionType(head.module->data_type_domain, head.module->domain, head.statement, head.name,
                      prototype);
}

void push_function(TLP_MODULE *module, TLI_IDENTIFIER *function)
{
    TLP_FUNC *entry = static_cast<TLP_FUNC *>(SH_NameAllocate(sizeof(TLP_FUNC), "TLP:FUNC"));
    entry->function = function;
    entry->next = module->open_functions;
    module->open_functions = entry;
}

// The items of a data section are named through its section.
void use_data_scope(TLP_MODULE *module, TLI_IDENTIFIER *function)
{
    const TLP_SECTION *section = module->current_section;
    if (module->keyword != TLT_TOKEN_DATA || section == nullptr) return;
    if (strcmp(section->name, "HEADER") == 0) return;
    TLI_UseScope(module->domain, section->name, TLIV_FunctionScope(function));
}

void open_function(const HEAD &head, TLI_IDENTIFIER *function)
{
    TLP_MODULE *module = head.module;
    if (module->private_flag) {
        if ((module->flags & TLP_FLAG_PROGRESS) != 0) {
            printf("     %s\n", TLI_IdentifierName(function));
        }
        use_data_scope(module, function);
    }
    push_function(module, function);
}

} // namespace

// In the public portion each line stands for itself: the function of the line before is closed.
void TLP_FunctionRule(TLP_MODULE *module, TLT_STATEMENT *statement)
{
    if (!module->private_flag) TLP_CloseFunction(module);
    HEAD head = {};
    head.module = module;
    head.statement = statement;
    if (!parse_head(&head)) return;
    declare_syscall(head);
    TLI_IDENTIFIER *function =
        TLI_FindIdentifier(module->data_type_domain, module->domain, head.name);
    if (function != nullptr) {
        function = define_prototype(head, function);
    } else if (module->function_kind == TLP_KIND_TYPE) {
        declare_type(head);
    } else {
        function = declare_new(head, head.name);
    }
    if (function != nullptr) open_function(head, function);
}
