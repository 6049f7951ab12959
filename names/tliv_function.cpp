// Functions: their own scope, their arguments, and how a prototype is held against its definition.
#include "names/tliv.h"

#include <ostrum/tlit.h>
#include <ostrum/tlp.h>
#include <ostrum/tls.h>
#include <ostrum/tlt.h>
#include <string.h>

namespace
{

// The record of a function, null for anything else.
TLIV_FUNCTION *function_of(TLI_IDENTIFIER *identifier)
{
    if (identifier == nullptr || TLI_IdentifierClass(identifier) != TLI_FUNCTION) return nullptr;
    return reinterpret_cast<TLIV_FUNCTION *>(identifier);
}

// What is called through an identifier: the function, or the prototype of an item of function type.
TLIV_FUNCTION *callable(TLI_IDENTIFIER *identifier)
{
    if (identifier == nullptr) return nullptr;
    if (TLIV_FUNCTION *function = function_of(identifier)) return function;
    return function_of(TLIT_FunctionTypePrototype(identifier->type));
}

void delete_function(TLI_IDENTIFIER *identifier)
{
    TLIV_FUNCTION *function = reinterpret_cast<TLIV_FUNCTION *>(identifier);
    TLI_DelScope(function->scope);
    if (function->block != nullptr) TLS_DelBlock(function->block);
}

int32_t print_function(FILE *stream, TLI_IDENTIFIER *identifier, TLP_MODULE *)
{
    const TLIV_FUNCTION *function = reinterpret_cast<TLIV_FUNCTION *>(identifier);
    fputs("(", stream);
    for (TLIV_ARGUMENT *item = function->arguments; item != nullptr; item = item->next_argument) {
        const char *separator = item->next_argument != nullptr ? "," : "";
        fprintf(stream, "%s%s", item->storage.identifier.name, separator);
    }
    return fprintf(stream, ") Class=%s,Stack=%d\n", TLP_SectionTypeName(function->function_class),
                   function->scope != nullptr ? TLI_ScopeSize(function->scope) : 0);
}

const TLI_CLASS function_class_record = {
    .class_name = "FUNCTION_CLASS",
    .record_size = sizeof(TLIV_FUNCTION),
    .flags = TLI_FUNCTION,
    .delete_operation = delete_function,
    .print = print_function,
    .value = nullptr,
    .push_value = nullptr,
    .push_address = nullptr,
    .push_dimension = nullptr,
    .dimension = nullptr,
    .flags_function = nullptr,
};

// Is one of the types QUANTITY, and the other a quantity?
bool is_any_quantity(TLI_IDENTIFIER *type, TLI_IDENTIFIER *other)
{
    return type == TLIT_QuantityType && TLIT_IsQuantityType(other);
}

bool types_match(TLI_IDENTIFIER *first, TLI_IDENTIFIER *second, int32_t strict)
{
    if (first == second) return true;
    if (strict) return false;
    return is_any_quantity(first, second) || is_any_quantity(second, first);
}

bool arguments_match(const TLIV_ARGUMENT *first, const TLIV_ARGUMENT *second, int32_t strict)
{
    const TLIV_VARIABLE &a = first->storage;
    const TLIV_VARIABLE &b = second->storage;
    return first->pass_type == second->pass_type &&
           types_match(a.identifier.type, b.identifier.type, strict) &&
           a.dimension == b.dimension && a.range_type == b.range_type &&
           strcmp(a.identifier.name, b.identifier.name) == 0;
}

bool functions_match(const TLIV_FUNCTION *first, const TLIV_FUNCTION *second, int32_t strict)
{
    if (first == nullptr || second == nullptr) return false;
    if (!types_match(first->identifier.type, second->identifier.type, strict)) return false;
    const TLIV_ARGUMENT *a = first->arguments;
    const TLIV_ARGUMENT *b = second->arguments;
    while (a != nullptr && b != nullptr && arguments_match(a, b, strict)) {
        a = a->next_argument;
        b = b->next_argument;
    }
    return a == nullptr && b == nullptr;
}

} // namespace

TLI_IDENTIFIER *TLIV_Function(TLI_DOMAIN *data_types, TLI_DOMAIN *domain, TLT_STATEMENT *statement,
                              const char *name, int32_t function_class, int32_t qualifiers,
                              TLI_IDENTIFIER *result)
{
    TLI_IDENTIFIER *identifier =
        TLI_NewIdentifier(data_types, domain, statement, name, result, &function_class_record);
    if (identifier == nullptr) return nullptr;
    TLIV_FUNCTION *function = reinterpret_cast<TLIV_FUNCTION *>(identifier);
    function->function_class = function_class;
    function->qualifiers = qualifiers;
    function->scope = TLI_NewScope(domain, name, TLI_FRAME_SCOPE);
    TLI_SetScopeIdentifier(function->scope, identifier);
    TLI_PushScope(domain, function->scope);
    return identifier;
}

int32_t TLIV_FunctionClass(TLI_IDENTIFIER *function)
{
    const TLIV_FUNCTION *record = function_of(function);
    return record != nullptr ? record->function_class : 0;
}

void TLIV_SetFunctionClass(TLI_IDENTIFIER *function, int32_t function_class)
{
    TLIV_FUNCTION *record = function_of(function);
    if (record != nullptr) record->function_class = function_class;
}

int32_t TLIV_FunctionQualifiers(TLI_IDENTIFIER *function)
{
    const TLIV_FUNCTION *record = function_of(function);
    return record != nullptr ? record->qualifiers : TLIV_PRIVATE;
}

TLS_BLOCK *TLIV_GetFunctionBlock(TLI_IDENTIFIER *function)
{
    const TLIV_FUNCTION *record = function_of(function);
    return record != nullptr ? record->block : nullptr;
}

void TLIV_SetFunctionBlock(TLI_IDENTIFIER *function, TLS_BLOCK *block)
{
    TLIV_FUNCTION *record = function_of(function);
    if (record != nullptr) record->block = block;
}

int32_t TLIV_GetFunctionLineNumber(TLI_IDENTIFIER *function)
{
    const TLIV_FUNCTION *record = function_of(function);
    return record != nullptr ? record->line_number : 0;
}

void TLIV_SetFunctionLineNumber(TLI_IDENTIFIER *function, int32_t line)
{
    TLIV_FUNCTION *record = function_of(function);
    if (record != nullptr) record->line_number = line;
}

TLI_SCOPE *TLIV_FunctionScope(TLI_IDENTIFIER *identifier)
{
    const TLIV_FUNCTION *record = function_of(identifier);
    return record != nullptr ? record->scope : nullptr;
}

void TLIV_PushScope(TLI_DOMAIN *domain, TLI_IDENTIFIER *identifier)
{
    const TLIV_FUNCTION *record = function_of(identifier);
    if (record != nullptr) TLI_PushScope(domain, record->scope);
}

void TLIV_PopScope(TLI_DOMAIN *domain, TLI_IDENTIFIER *identifier)
{
    if (function_of(identifier) != nullptr) TLI_PopScope(domain);
}

// Calls are checked and generated argument by argument: the walk goes on from the last answer.
TLI_IDENTIFIER *TLIV_GetFunctionArgument(TLI_IDENTIFIER *function, int32_t index)
{
    TLIV_FUNCTION *record = callable(function);
    if (record == nullptr || index < 0) return nullptr;
    const bool goes_on = record->cursor != nullptr && record->cursor_index <= index;
    TLIV_ARGUMENT *argument = goes_on ? record->cursor : record->arguments;
    int32_t at = goes_on ? record->cursor_index : 0;
    for (; argument != nullptr && at < index; at++)
        argument = argument->next_argument;
    if (argument == nullptr) return nullptr;
    record->cursor = argument;
    record->cursor_index = at;
    return &argument->storage.identifier;
}

void TLIV_AllowExtraArguments(TLT_STATEMENT *statement, TLI_IDENTIFIER *function)
{
    TLIV_FUNCTION *record = function_of(function);
    if (record == nullptr || record->function_class != TLP_SECTION_SYSCALL) {
        TLT_Error(statement, "Extra arguments only permitted on SYSCALLs");
        return;
    }
    record->extra_arguments = 1;
}

int32_t TLIV_ExtraArgumentsAllowed(TLI_IDENTIFIER *function)
{
    const TLIV_FUNCTION *record = callable(function);
    return record != nullptr ? record->extra_arguments : 0;
}

int32_t TLIV_SameFunctions(TLI_IDENTIFIER *first, TLI_IDENTIFIER *second, int32_t strict)
{
    return functions_match(function_of(first), function_of(second), strict) ? 1 : 0;
}

int32_t TLIV_CompareFunctions(TLT_STATEMENT *statement, TLI_IDENTIFIER *first,
                              TLI_IDENTIFIER *second, int32_t strict)
{
    if (TLIV_SameFunctions(first, second, strict)) return 1;
    TLT_Error(statement, "Function declaration does not match prototype");
    return 0;
}

int32_t TLIV_CheckPrototype(TLT_STATEMENT *statement, TLI_IDENTIFIER *prototype,
                            TLI_IDENTIFIER *definition)
{
    return TLIV_CompareFunctions(statement, prototype, definition, 1);
}
