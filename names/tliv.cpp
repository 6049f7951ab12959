// Variables, arguments and fields: how they are declared and where they stand in their scope.
#include "names/tliv.h"

#include "core/sm.h"
#include "names/tlit.h"
#include "names/tliv_code.h"
#include <ostrum/tlt.h>

namespace
{

constexpr int32_t scalar = -1;
constexpr int32_t unknown_length = 0;

const char *const pass_type_words[] = { "VALUE", "VAR", "CONST" };
static_assert(sizeof pass_type_words / sizeof *pass_type_words == TLIV_PASS_TYPE_COUNT);

TLIV_VARIABLE *variable_of(TLI_IDENTIFIER *identifier)
{
    return reinterpret_cast<TLIV_VARIABLE *>(identifier);
}

TLIV_ARGUMENT *argument_of(TLI_IDENTIFIER *identifier)
{
    return reinterpret_cast<TLIV_ARGUMENT *>(identifier);
}

bool is_argument(TLI_IDENTIFIER *identifier)
{
    return identifier != nullptr && TLI_IdentifierClass(identifier) == TLI_ARGUMENT;
}

int32_t storage_dimension(TLI_IDENTIFIER *identifier, TLI_IDENTIFIER **range_type)
{
    if (range_type != nullptr) *range_type = variable_of(identifier)->range_type;
    return variable_of(identifier)->dimension;
}

uint32_t storage_flags(TLI_IDENTIFIER *identifier)
{
    const bool is_dimensioned =
        variable_of(identifier)->dimension != scalar || TLIT_IsArrayType(identifier->type);
    return identifier->class_record->flags | (is_dimensioned ? TLI_DIMENSIONED : 0);
}

uint32_t argument_flags(TLI_IDENTIFIER *identifier)
{
    const TLIV_ARGUMENT *argument = argument_of(identifier);
    uint32_t flags = identifier->class_record->flags;
    if (argument->storage.dimension != scalar) flags |= TLI_DIMENSIONED;
    if (argument->pass_type != TLIV_BY_CONST) flags |= TLI_ASSIGNABLE;
    return flags;
}

void print_dimension(FILE *stream, TLI_IDENTIFIER *identifier)
{
    const int32_t dimension = variable_of(identifier)->dimension;
    if (dimension != scalar) fprintf(stream, "[%d]", dimension);
}

int32_t print_variable(FILE *stream, TLI_IDENTIFIER *identifier, TLP_MODULE *)
{
    print_dimension(stream, identifier);
    return fprintf(stream, " Offset=%d\n", variable_of(identifier)->offset);
}

int32_t print_argument(FILE *stream, TLI_IDENTIFIER *identifier, TLP_MODULE *)
{
    print_dimension(stream, identifier);
    return fprintf(stream, " Offset=%d, %s\n", variable_of(identifier)->offset,
                   pass_type_words[argument_of(identifier)->pass_type]);
}

const TLI_CLASS variable_class = {
    .class_name = "VARIABLE_CLASS",
    .record_size = sizeof(TLIV_VARIABLE),
    .flags = TLI_VARIABLE | uint32_t{ TLI_ASSIGNABLE },
    .delete_operation = nullptr,
    .print = print_variable,
    .value = nullptr,
    .push_value = TLIV_PushVariableValue,
    .push_address = TLIV_PushVariableAddress,
    .push_dimension = TLIV_PushStorageDimension,
    .dimension = storage_dimension,
    .flags_function = storage_flags,
};

const TLI_CLASS argument_class = {
    .class_name = "ARGUMENT_CLASS",
    .record_size = sizeof(TLIV_ARGUMENT),
    .flags = TLI_ARGUMENT,
    .delete_operation = nullptr,
    .print = print_argument,
    .value = nullptr,
    .push_value = TLIV_PushArgumentValue,
    .push_address = TLIV_PushArgumentAddress,
    .push_dimension = TLIV_PushStorageDimension,
    .dimension = storage_dimension,
    .flags_function = argument_flags,
};

const TLI_CLASS field_class = {
    .class_name = "FIELD_CLASS",
    .record_size = sizeof(TLIV_FIELD),
    .flags = TLI_FIELD,
    .delete_operation = nullptr,
    .print = nullptr,
    .value = nullptr,
    .push_value = TLIV_PushFieldValue,
    .push_address = TLIV_PushFieldAddress,
    .push_dimension = TLIV_PushStorageDimension,
    .dimension = storage_dimension,
    .flags_function = storage_flags,
};

// What is to be declared, and where.
struct DECLARATION {
    TLI_DOMAIN *data_types;
    TLI_DOMAIN *domain;
    TLT_STATEMENT *statement;
    const char *name;
    TLI_IDENTIFIER *type;
    int32_t dimension;
    TLI_IDENTIFIER *range;
};

// Enters the name with room that has been allocated. A refused name leaves the room unused.
TLI_IDENTIFIER *enter(const DECLARATION &item, int32_t offset, const TLI_CLASS *class_record)
{
    TLI_IDENTIFIER *identifier = TLI_NewIdentifier(item.data_types, item.domain, item.statement,
                                                   item.name, item.type, class_record);
    if (identifier == nullptr) return nullptr;
    TLIV_VARIABLE *variable = variable_of(identifier);
    variable->offset = offset;
    variable->dimension = item.dimension;
    variable->range_type = item.range;
    return identifier;
}

// A variable or field: elements of a known number stand in the scope, others behind a pair.
TLI_IDENTIFIER *declare(DECLARATION item, const TLI_CLASS *class_record, const char *no_size)
{
    if (item.dimension == unknown_length) {
        item.type = TLIT_Array(item.domain, item.statement, item.type);
    }
    TLI_SCOPE *scope = TLI_GetScope(item.domain, item.statement);
    if (scope == nullptr) return nullptr;
    const int32_t offset = TLI_ScopeAllocate(scope, item.type, item.dimension);
    if (offset < 0) {
        TLT_Error(item.statement, no_size);
        return nullptr;
    }
    return enter(item, offset, class_record);
}

TLI_IDENTIFIER *refuse(TLT_STATEMENT *statement, const char *message)
{
    TLT_Error(statement, message);
    return nullptr;
}

// An array argument is a pair, any other a word: its value, or the address of the caller's item.
int32_t allocate_argument(const DECLARATION &item)
{
    TLI_SCOPE *scope = TLI_GetScope(item.domain, item.statement);
    if (scope == nullptr) return -1;
    TLI_IDENTIFIER *slot = TLIT_IsArrayType(item.type) ? item.type : TLIT_IntType;
    return TLI_ScopeAllocate(scope, slot, scalar);
}

void append_argument(TLI_IDENTIFIER *function, TLI_IDENTIFIER *identifier)
{
    TLIV_FUNCTION *owner = reinterpret_cast<TLIV_FUNCTION *>(function);
    TLIV_ARGUMENT *argument = argument_of(identifier);
    if (owner->last_argument != nullptr) {
        owner->last_argument->next_argument = argument;
    } else {
        owner->arguments = argument;
    }
    owner->last_argument = argument;
}

TLI_IDENTIFIER *declare_argument(const DECLARATION &item, TLI_IDENTIFIER *function,
                                 int32_t pass_type)
{
    const int32_t offset = allocate_argument(item);
    if (offset < 0) return nullptr;
    TLI_IDENTIFIER *identifier = enter(item, offset, &argument_class);
    if (identifier == nullptr) return nullptr;
    argument_of(identifier)->pass_type = pass_type;
    append_argument(function, identifier);
    return identifier;
}

} // namespace

void TLIV_Initialise(void) {}

TLI_IDENTIFIER *TLIV_Variable(TLI_DOMAIN *data_types, TLI_DOMAIN *domain, TLT_STATEMENT *statement,
                              const char *name, TLI_IDENTIFIER *type, int32_t dimension,
                              TLI_IDENTIFIER *range)
{
    return declare({ data_types, domain, statement, name, type, dimension, range }, &variable_class,
                   "Illegal type for variable");
}

TLI_IDENTIFIER *TLIV_RecordField(TLI_DOMAIN *data_types, TLI_DOMAIN *domain,
                                 TLT_STATEMENT *statement, TLI_IDENTIFIER *record, const char *name,
                                 TLI_IDENTIFIER *type, int32_t dimension, TLI_IDENTIFIER *range)
{
    TLI_IDENTIFIER *field = declare({ data_types, domain, statement, name, type, dimension, range },
                                    &field_class, "Illegal type for record field");
    if (field != nullptr) reinterpret_cast<TLIV_FIELD *>(field)->record = record;
    return field;
}

TLI_IDENTIFIER *TLIV_Argument(TLI_DOMAIN *data_types, TLI_DOMAIN *domain, TLT_STATEMENT *statement,
                              const char *name, TLI_IDENTIFIER *type, int32_t dimension,
                              TLI_IDENTIFIER *range, TLI_IDENTIFIER *function, int32_t pass_type)
{
    const bool has_enum_range = TLIT_IsEnumeration(range);
    if (dimension > 0 && !has_enum_range) {
        return refuse(statement, "Array arguments cannot have bounds");
    }
    if (dimension == unknown_length || has_enum_range) {
        type = TLIT_Array(domain, statement, type);
        if (pass_type == TLIV_BY_VALUE) {
            return refuse(statement, "Arrays cannot be passed by value");
        }
    } else if (TLIT_IsRecordType(type) && pass_type == TLIV_BY_VALUE) {
        TLT_Error(statement, "RECORDs cannot be passed by value");
    }
    return declare_argument({ data_types, domain, statement, name, type, dimension, range },
                            function, pass_type);
}

int32_t TLIV_ArgumentPassType(TLI_IDENTIFIER *identifier)
{
    return is_argument(identifier) ? argument_of(identifier)->pass_type : TLIV_BY_VALUE;
}

int32_t TLIV_Offset(TLI_IDENTIFIER *identifier)
{
    if (identifier != nullptr) {
        const int32_t identifier_class = TLI_IdentifierClass(identifier);
        if (identifier_class == TLI_VARIABLE || identifier_class == TLI_ARGUMENT) {
            return variable_of(identifier)->offset;
        }
    }
    SM_Exception("TLI_Offset - not passed a variable");
    return 0;
}

int32_t TLIV_FieldOffset(TLI_IDENTIFIER *field)
{
    if (field == nullptr || TLI_IdentifierClass(field) != TLI_FIELD) return 0;
    return variable_of(field)->offset;
}
