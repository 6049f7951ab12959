// Constants, non-volatiles and nodes.
#include "names/tlic.h"

#include "codegen/tlc.h"
#include "expr/tle.h"
#include <ostrum/tlit.h>
#include <ostrum/tlt.h>

namespace
{

constexpr int32_t scalar = -1;

// Symbol class of a definition that other modules can refer to.
constexpr int32_t global_symbol = 0;

TLIC_CONSTANT *constant_of(TLI_IDENTIFIER *identifier)
{
    return reinterpret_cast<TLIC_CONSTANT *>(identifier);
}

void delete_constant(TLI_IDENTIFIER *identifier)
{
    TLE_DelExpression(constant_of(identifier)->values);
}

// The term of one element: null past the end, a list of links for a record.
TLE_TERM *element_term(TLI_IDENTIFIER *identifier, int32_t index)
{
    const TLIC_CONSTANT *constant = constant_of(identifier);
    return TLE_NthExpression(constant->values, constant->dimension == scalar ? 0 : index);
}

int32_t constant_value(TLI_IDENTIFIER *identifier, int32_t index, intptr_t *value,
                       TLP_MODULE *module)
{
    TLE_TERM *term = element_term(identifier, index);
    if (term == nullptr || term->kind == TLT_TOKEN_LINK) return 0;
    return TLE_GetConstantValue(module, term, value);
}

// The text of a value that is no number: a string, or a term that names something by its text.
const char *text_of(TLE_TERM *term, intptr_t value)
{
    if (term->kind == TLT_TOKEN_NULL || value == 0) return "";
    const bool is_string = TLIT_TypeBaseType(nullptr, term->type) == TLIT_StringType;
    return is_string ? reinterpret_cast<const char *>(value) : TLE_TermValue(term);
}

bool is_number(const TLE_TERM *term)
{
    return term->kind != TLT_TOKEN_DATA_LITERAL &&
           TLIT_IntegerType(TLIT_TypeBaseType(nullptr, term->type));
}

void print_value(FILE *stream, TLE_TERM *term, TLP_MODULE *module)
{
    intptr_t value = 0;
    if (term == nullptr || term->kind == TLT_TOKEN_LINK) return;
    if (!TLE_GetConstantValue(module, term, &value)) return;
    if (is_number(term)) {
        fprintf(stream, "%d", static_cast<int32_t>(value));
    } else {
        fprintf(stream, "\"%s\"", text_of(term, value));
    }
}

void print_elements(FILE *stream, const TLIC_CONSTANT *constant, TLP_MODULE *module)
{
    for (const TLE_TERM *link = constant->values; link != nullptr; link = link->right) {
        print_value(stream, link->left, module);
        fputs(",", stream);
    }
}

int32_t print_constant(FILE *stream, TLI_IDENTIFIER *identifier, TLP_MODULE *module)
{
    const TLIC_CONSTANT *constant = constant_of(identifier);
    if (constant->dimension != scalar) fprintf(stream, "[%d]", constant->dimension);
    fputs(" Value=", stream);
    if (constant->dimension != scalar) {
        print_elements(stream, constant, module);
    } else {
        print_value(stream, element_term(identifier, 0), module);
    }
    return fprintf(stream, "\n");
}

int32_t push_constant_value(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t subscript)
{
    TLC_LoadConstant(stream, identifier, constant_of(identifier)->dimension, subscript);
    return 1;
}

int32_t push_non_volatile_value(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t subscript)
{
    TLC_LoadNonVolatile(stream, identifier, constant_of(identifier)->dimension, subscript);
    return 1;
}

int32_t push_constant_address(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t subscript)
{
    TLC_LoadConstantAddress(stream, identifier, constant_of(identifier)->dimension, subscript);
    return 1;
}

int32_t push_constant_dimension(TLC_STREAM *stream, TLI_IDENTIFIER *identifier)
{
    TLC_Literal(stream, constant_of(identifier)->dimension);
    return 1;
}

int32_t constant_dimension(TLI_IDENTIFIER *identifier, TLI_IDENTIFIER **range_type)
{
    if (range_type != nullptr) *range_type = constant_of(identifier)->range_type;
    return constant_of(identifier)->dimension;
}

uint32_t constant_flags(TLI_IDENTIFIER *identifier)
{
    const bool is_dimensioned = constant_of(identifier)->dimension != scalar;
    return identifier->class_record->flags | (is_dimensioned ? TLI_DIMENSIONED : 0);
}

const TLI_CLASS constant_class = {
    .class_name = "CONSTANT_CLASS",
    .record_size = sizeof(TLIC_CONSTANT),
    .flags = TLI_CONSTANT,
    .delete_operation = delete_constant,
    .print = print_constant,
    .value = constant_value,
    .push_value = push_constant_value,
    .push_address = push_constant_address,
    .push_dimension = push_constant_dimension,
    .dimension = constant_dimension,
    .flags_function = constant_flags,
};

const TLI_CLASS non_volatile_class = {
    .class_name = "NONVOL_CLASS",
    .record_size = sizeof(TLIC_CONSTANT),
    .flags = TLI_NON_VOLATILE | uint32_t{ TLI_ASSIGNABLE },
    .delete_operation = nullptr,
    .print = print_constant,
    .value = nullptr,
    .push_value = push_non_volatile_value,
    .push_address = push_constant_address,
    .push_dimension = push_constant_dimension,
    .dimension = constant_dimension,
    .flags_function = constant_flags,
};

const TLI_CLASS node_class = {
    .class_name = "NODE",
    .record_size = sizeof(TLIC_NODE),
    .flags = TLI_NODE,
    .delete_operation = nullptr,
    .print = nullptr,
    .value = nullptr,
    .push_value = nullptr,
    .push_address = nullptr,
    .push_dimension = nullptr,
    .dimension = nullptr,
    .flags_function = nullptr,
};

void set_dimension(TLI_IDENTIFIER *identifier, int32_t dimension, TLI_IDENTIFIER *range)
{
    TLIC_CONSTANT *constant = constant_of(identifier);
    constant->dimension = dimension;
    constant->count = dimension == scalar ? 1 : dimension;
    constant->range_type = range;
}

void plant_string(TLC_STREAM *stream, TLE_TERM *, intptr_t value)
{
    TLC_Align(stream);
    if (value == 0) {
        TLC_Code32(stream, 0);
    } else {
        TLC_String(stream, reinterpret_cast<const char *>(value));
    }
}

void plant_data(TLC_STREAM *stream, TLE_TERM *term, intptr_t)
{
    TLC_Align(stream);
    TLE_DataTerm(stream, term);
}

void plant_array(TLC_STREAM *stream, TLE_TERM *term, intptr_t)
{
    TLC_Align(stream);
    TLE_ArrayTerm(stream, term);
}

void plant_int(TLC_STREAM *stream, TLE_TERM *term, intptr_t value)
{
    if (term->kind == TLT_TOKEN_DATA_LITERAL) {
        plant_data(stream, term, value);
        return;
    }
    TLC_Align(stream);
    TLC_Code32(stream, static_cast<int32_t>(value));
}

void plant_char(TLC_STREAM *stream, TLE_TERM *, intptr_t value)
{
    TLC_Code8(stream, static_cast<int32_t>(value));
}

// How the values of a base type are planted. The types are made at start, so that their places
// stand here and not they themselves.
struct PLANT_ROW {
    TLI_IDENTIFIER *const *base_type;
    void (*plant)(TLC_STREAM *stream, TLE_TERM *term, intptr_t value);
};

const PLANT_ROW plant_rows[] = {
    { .base_type = &TLIT_IntType, .plant = plant_int },
    { .base_type = &TLIT_CharType, .plant = plant_char },
    { .base_type = &TLIT_StringType, .plant = plant_string },
    { .base_type = &TLIT_DataType, .plant = plant_data },
    { .base_type = &TLIT_CodeType, .plant = plant_data },
    { .base_type = &TLIT_PtrType, .plant = plant_data },
    { .base_type = &TLIT_ArrayType, .plant = plant_array },
};

void plant_value(TLC_STREAM *stream, TLE_TERM *term)
{
    intptr_t value = 0;
    if (!TLE_GetConstantValue(TLC_Module(stream), term, &value)) {
        TLC_Error(stream, "No value for constant");
        return;
    }
    const TLI_IDENTIFIER *base_type = TLIT_TypeBaseType(nullptr, term->type);
    for (const PLANT_ROW &row : plant_rows) {
        if (*row.base_type != base_type) continue;
        row.plant(stream, term, value);
        return;
    }
    TLC_Error(stream, "Don't know how to plant constant");
}

// Plants a chain of links or a single value. It goes as deep as the brackets of the initialiser,
// which the parser limits. What follows a record stands on the even offset that a field has there.
void plant_terms(TLC_STREAM *stream, TLE_TERM *term)
{
    bool follows_record = false;
    for (; term != nullptr; term = term->right) {
        if (term->kind != TLT_TOKEN_LINK) {
            plant_value(stream, term);
            continue;
        }
        const bool is_record = TLIT_IsRecordType(term->type) != 0;
        if (is_record || follows_record) TLC_Align(stream);
        plant_terms(stream, term->left);
        follows_record = is_record;
    }
}

void plant_symbol(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t make_symbol)
{
    if (make_symbol) TLC_Symbol(stream, global_symbol, identifier->type, identifier);
}

} // namespace

void TLIC_Initialise(void) {}

TLI_IDENTIFIER *TLIC_Constant(TLI_DOMAIN *data_types, TLI_DOMAIN *domain, TLT_STATEMENT *statement,
                              const char *name, TLI_IDENTIFIER *type, int32_t dimension,
                              TLI_IDENTIFIER *range, TLE_TERM *values)
{
    if (TLIT_TypeSizeof(type, 1) == 0) {
        TLT_Error(statement, "Illegal type for constant");
        return nullptr;
    }
    TLI_IDENTIFIER *identifier =
        TLI_NewIdentifier(data_types, domain, statement, name, type, &constant_class);
    if (identifier == nullptr) return nullptr;
    set_dimension(identifier, dimension, range);
    constant_of(identifier)->values = values;
    return identifier;
}

TLI_IDENTIFIER *TLIC_NonVolatile(TLI_DOMAIN *data_types, TLI_DOMAIN *domain,
                                 TLT_STATEMENT *statement, const char *name, TLI_IDENTIFIER *type,
                                 int32_t dimension, TLI_IDENTIFIER *range)
{
    if (TLIT_TypeSizeof(type, 1) == 0) {
        TLT_Error(statement, "Illegal type for non-volatile");
        return nullptr;
    }
    TLI_IDENTIFIER *identifier =
        TLI_NewIdentifier(data_types, domain, statement, name, type, &non_volatile_class);
    if (identifier != nullptr) set_dimension(identifier, dimension, range);
    return identifier;
}

int32_t TLIC_ConstantValue(TLP_MODULE *module, TLI_IDENTIFIER *identifier, int32_t index,
                           intptr_t *value)
{
    if (identifier == nullptr || identifier->class_record->value == nullptr) return 0;
    return identifier->class_record->value(identifier, index, value, module);
}

void TLIC_PlantConstant(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t make_symbol)
{
    TLI_SetPSect(identifier, TLC_ConstantPSect(stream));
    plant_symbol(stream, identifier, make_symbol);
    plant_terms(stream, constant_of(identifier)->values);
}

void TLIC_PlantNonVolatile(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t make_symbol)
{
    TLI_SetPSect(identifier, TLC_NonVolPSect(stream));
    plant_symbol(stream, identifier, make_symbol);
    TLC_Zeros(stream, TLIT_TypeSizeof(identifier->type, constant_of(identifier)->dimension));
}

TLI_IDENTIFIER *TLIC_Node(TLI_DOMAIN *data_types, TLI_DOMAIN *domain, TLT_STATEMENT *statement,
                          const char *name, TLI_IDENTIFIER *type, void *data)
{
    TLI_IDENTIFIER *identifier =
        TLI_NewIdentifier(data_types, domain, statement, name, type, &node_class);
    if (identifier != nullptr) reinterpret_cast<TLIC_NODE *>(identifier)->data = data;
    return identifier;
}

void *TLIC_NodeData(TLI_IDENTIFIER *identifier)
{
    if (identifier == nullptr || TLI_IdentifierClass(identifier) != TLI_NODE) return nullptr;
    return reinterpret_cast<TLIC_NODE *>(identifier)->data;
}
