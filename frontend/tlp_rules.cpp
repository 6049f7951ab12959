// The rules of declarations other than functions, and what they are made of: types, array parts and
// initialisers.
#include "frontend/tlp_declarations.h"

#include "expr/tle.h"
#include "names/tlit.h"
#include <ostrum/tli.h>
#include <ostrum/tlic.h>
#include <ostrum/tliv.h>

namespace
{

// Records inside one another in one initialiser.
constexpr int32_t nesting_limit = 1000;

// What an initialiser is for.
struct TARGET {
    TLP_MODULE *module;
    TLT_STATEMENT *statement;
    TLI_IDENTIFIER *type;
    int32_t depth; // records around it
};

TLE_TERM *parse_values(const TARGET &target, int32_t *dimension);

// The dimension that an expression gives. The range type stays null if it cannot be one.
void evaluate_bound(TLP_MODULE *module, TLT_STATEMENT *statement, TLE_TERM *term,
                    TLP_ARRAY_PART *part)
{
    TLI_IDENTIFIER *type = TLE_Type(term);
    if (type != nullptr) {
        if (!TLIT_IsEnumeration(type)) return;
        *part = { .dimension = TLIT_EnumRange(type), .range = type };
        return;
    }
    if (!TLIT_IntegerType(TLE_ExpressionType(term))) return;
    part->range = TLIT_IntType;
    intptr_t value = 0;
    if (!TLE_ConstantValue(module, statement, term, TLIT_IntType, &value, 0)) return;
    if (value < 0) {
        TLT_Error(statement, "Array dimension must be >= 0");
    } else {
        part->dimension = static_cast<int32_t>(value);
    }
}

void parse_bound(TLP_MODULE *module, TLT_STATEMENT *statement, TLP_ARRAY_PART *part)
{
    TLE_TERM *term = TLE_ParseExpression(module, statement, TLE_USE_VALUE, TLT_TOKEN_CLOSE_SQUARE);
    if (term != nullptr) evaluate_bound(module, statement, term, part);
    TLE_DelExpression(term);
    if (part->range == nullptr) TLT_Error(statement, "Bad array index type");
}

// Adds a value to a list. Its link tells the type, by which a record is planted on an even offset.
TLE_TERM *append(TLE_TERM *list, TLE_TERM *value, TLI_IDENTIFIER *type)
{
    list = TLE_Append(list, value);
    list->last->type = type;
    return list;
}

TLE_TERM *drop(TLE_TERM *list)
{
    TLE_DelExpression(list);
    return nullptr;
}

bool fail(TLE_TERM *list)
{
    TLE_DelExpression(list);
    return false;
}

// The fields of a record between brackets, in their order; a comma behind each may be there or not.
// A record that has no fields yet gives a null list.
bool parse_fields(const TARGET &record, TLE_TERM **fields)
{
    TLE_TERM *list = nullptr;
    int32_t dimension = 0;
    TLI_IDENTIFIER *field = nullptr;
    for (int32_t i = 0; (field = TLIT_RecordNthField(record.type, i, &dimension)) != nullptr; i++) {
        TLI_IDENTIFIER *type = TLI_IdentifierType(field);
        TLE_TERM *values = parse_values({ .module = record.module,
                                          .statement = record.statement,
                                          .type = type,
                                          .depth = record.depth + 1 },
                                        &dimension);
        if (values == nullptr) return fail(list);
        list = append(list, values, type);
        TLT_PossibleToken(record.statement, TLT_TOKEN_COMMA, nullptr);
    }
    *fields = list;
    return true;
}

bool parse_record(const TARGET &target, TLE_TERM **fields)
{
    if (target.depth >= nesting_limit) {
        TLT_Error(target.statement, "Expression too complex");
        return false;
    }
    if (!TLT_Expect(target.statement, TLT_TOKEN_OPEN_BRACKET, nullptr)) return false;
    if (!parse_fields(target, fields)) return false;
    return TLT_Expect(target.statement, TLT_TOKEN_CLOSE_BRACKET, nullptr) || fail(*fields);
}

bool parse_value(const TARGET &target, TLE_TERM **result)
{
    if (TLIT_IsRecordType(target.type)) return parse_record(target, result);
    TLE_TERM *term = TLE_ParseExpression(target.module, target.statement, TLE_USE_CONSTANT,
                                         TLT_TOKEN_CLOSE_BRACKET);
    if (term == nullptr) return false;
    intptr_t value = 0;
    if (!TLE_ConstantValue(target.module, target.statement, term, target.type, &value, 0)) {
        return fail(term);
    }
    TLE_CoerceTerm(term, target.type);
    *result = term;
    return true;
}

// A value that failed has had its message: the others are read, and the list is dropped.
TLE_TERM *parse_values(const TARGET &target, int32_t *dimension)
{
    if (TLIT_IsArrayType(target.type)) *dimension = TLP_SCALAR;
    const bool is_open = *dimension == 0;
    const int32_t wanted = *dimension == TLP_SCALAR ? 1 : *dimension;
    TLE_TERM *list = nullptr;
    bool has_failed = false;
    int32_t count = 0;
    do {
        TLE_TERM *value = nullptr;
        if (parse_value(target, &value)) {
            list = append(list, value, target.type);
        } else {
            has_failed = true;
        }
        count++;
    } while ((is_open || count < wanted) &&
             TLT_PossibleToken(target.statement, TLT_TOKEN_COMMA, nullptr));
    if (has_failed) return drop(list);
    if (is_open) *dimension = count;
    if (is_open || count == wanted) return list;
    TLT_Error(target.statement, "Wrong number of constant initialisers");
    return drop(list);
}

// One constant: name [array] = initialiser. False if the rule cannot go on behind it.
bool parse_constant(TLP_MODULE *module, TLT_STATEMENT *statement, TLI_IDENTIFIER *type)
{
    char name[TLT_TEXT_SIZE];
    if (!TLT_Expect(statement, TLT_TOKEN_IDENTIFIER, name)) return false;
    TLP_ARRAY_PART part = TLP_ParseArrayPart(module, statement);
    if (!TLT_Expect(statement, TLT_TOKEN_ASSIGN, nullptr)) return false;
    TLE_TERM *values = TLP_ParseInitialiser(module, statement, type, &part.dimension);
    if (values == nullptr) return true;
    TLI_IDENTIFIER *constant = TLIC_Constant(module->data_type_domain, module->domain, statement,
                                             name, type, part.dimension, part.range, values);
    if (constant == nullptr) TLE_DelExpression(values);
    return true;
}

// How one name of a list is declared with the type of the list.
typedef TLI_IDENTIFIER *(*DECLARE)(TLI_DOMAIN *data_types, TLI_DOMAIN *domain,
                                   TLT_STATEMENT *statement, const char *name, TLI_IDENTIFIER *type,
                                   int32_t dimension, TLI_IDENTIFIER *range);

void declare_list(TLP_MODULE *module, TLT_STATEMENT *statement, DECLARE declare)
{
    TLI_IDENTIFIER *type = TLP_ParseType(module, statement);
    if (type == nullptr) return;
    do {
        char name[TLT_TEXT_SIZE];
        if (!TLT_Expect(statement, TLT_TOKEN_IDENTIFIER, name)) return;
        const TLP_ARRAY_PART part = TLP_ParseArrayPart(module, statement);
        declare(module->data_type_domain, module->domain, statement, name, type, part.dimension,
                part.range);
    } while (TLT_PossibleToken(statement, TLT_TOKEN_COMMA, nullptr));
}

TLI_IDENTIFIER *find_in_module_or_root(TLP_MODULE *module, const char *name)
{
    TLI_IDENTIFIER *found = TLI_FindIdentifier(module->data_type_domain, module->domain, name);
    if (found != nullptr || module->root == module) return found;
    return TLI_FindIdentifier(module->data_type_domain, module->root->domain, name);
}

// Makes the record, or opens one that a pointer named before, with its scope on top of the domain.
TLI_IDENTIFIER *open_record(TLP_MODULE *module, TLT_STATEMENT *statement, const char *name)
{
    TLI_IDENTIFIER *record = find_in_module_or_root(module, name);
    if (record == nullptr) {
        record = TLIT_Record(module->data_type_domain, module->domain, statement, name);
    } else if (TLIT_IsRecordType(record)) {
        TLI_SetIdentifierStatement(record, statement);
        TLI_PushScope(module->domain, TLIT_RecordScope(record));
    } else {
        TLT_Error(statement, "Name is not a RECORD type");
        return nullptr;
    }
    module->open_record = record;
    return record;
}

bool parse_field(TLP_MODULE *module, TLT_STATEMENT *statement, TLI_IDENTIFIER *record)
{
    TLI_IDENTIFIER *type = TLP_ParseType(module, statement);
    if (type == nullptr) return false;
    char name[TLT_TEXT_SIZE];
    if (!TLT_Expect(statement, TLT_TOKEN_IDENTIFIER, name)) return false;
    const TLP_ARRAY_PART part = TLP_ParseArrayPart(module, statement);
    TLIT_RecordField(module->data_type_domain, module->domain, statement, record, name, type,
                     part.dimension, part.range);
    return true;
}

void attach_pragma(TLT_STATEMENT *statement, TLI_IDENTIFIER *identifier, const char *name)
{
    const char *value = nullptr;
    if (!TLT_PossibleToken(statement, TLT_TOKEN_ASSIGN, nullptr)) return;
    if (!TLT_ExpectNoCopy(statement, TLT_TOKEN_STRING, &value)) return;
    TLI_Pragma(identifier, name, value);
}

TLI_IDENTIFIER *parse_pragma_owner(TLP_MODULE *module, TLT_STATEMENT *statement)
{
    char name[TLT_TEXT_SIZE];
    if (TLT_GetToken(statement, name) != TLT_TOKEN_IDENTIFIER) {
        TLT_Error(statement, "IDENTIFIER expected here");
        return nullptr;
    }
    return TLP_FindIdentifier(module, statement, name, 0);
}

} // namespace

TLI_IDENTIFIER *TLP_ParseType(TLP_MODULE *module, TLT_STATEMENT *statement)
{
    char name[TLT_TEXT_SIZE];
    if (TLT_GetToken(statement, name) != TLT_TOKEN_IDENTIFIER) {
        TLT_Error(statement, "TYPE expected here");
        return nullptr;
    }
    return TLP_FindIdentifier(module, statement, name, TLI_TYPE);
}

TLP_ARRAY_PART TLP_ParseArrayPart(TLP_MODULE *module, TLT_STATEMENT *statement)
{
    TLP_ARRAY_PART part = { .dimension = TLP_SCALAR, .range = nullptr };
    if (!TLT_PossibleToken(statement, TLT_TOKEN_OPEN_SQUARE, nullptr)) return part;
    if (TLT_PossibleToken(statement, TLT_TOKEN_CLOSE_SQUARE, nullptr)) {
        return { .dimension = 0, .range = TLIT_IntType };
    }
    parse_bound(module, statement, &part);
    TLT_Expect(statement, TLT_TOKEN_CLOSE_SQUARE, nullptr);
    return part;
}

TLE_TERM *TLP_ParseInitialiser(TLP_MODULE *module, TLT_STATEMENT *statement, TLI_IDENTIFIER *type,
                               int32_t *dimension)
{
    return parse_values({ .module = module, .statement = statement, .type = type, .depth = 0 },
                        dimension);
}

void TLP_ConstRule(TLP_MODULE *module, TLT_STATEMENT *statement)
{
    TLI_IDENTIFIER *type = TLP_ParseType(module, statement);
    if (type == nullptr) return;
    if (type == TLIT_WordType) {
        TLT_Error(statement, "WORD not a valid constant type");
        return;
    }
    while (parse_constant(module, statement, type) &&
           TLT_PossibleToken(statement, TLT_TOKEN_COMMA, nullptr)) {
    }
}

void TLP_EnumRule(TLP_MODULE *module, TLT_STATEMENT *statement)
{
    char name[TLT_TEXT_SIZE];
    if (!TLT_Expect(statement, TLT_TOKEN_IDENTIFIER, name)) return;
    if (!TLT_Expect(statement, TLT_TOKEN_ASSIGN, nullptr)) return;
    TLI_IDENTIFIER *enumeration =
        TLIT_EnumerationType(module->data_type_domain, module->domain, statement, name);
    if (enumeration == nullptr) return;
    while (TLT_PossibleToken(statement, TLT_TOKEN_IDENTIFIER, name)) {
        TLIT_EnumerationValue(module->data_type_domain, module->domain, statement, enumeration,
                              name);
    }
}

void TLP_VarRule(TLP_MODULE *module, TLT_STATEMENT *statement)
{
    declare_list(module, statement, TLIV_Variable);
}

void TLP_NonVolatileRule(TLP_MODULE *module, TLT_STATEMENT *statement)
{
    declare_list(module, statement, TLIC_NonVolatile);
}

// A record on a line of its own behind another one begins like one behind its keyword.
void TLP_RecordRule(TLP_MODULE *module, TLT_STATEMENT *statement)
{
    char name[TLT_TEXT_SIZE];
    TLP_CloseRecord(module);
    if (!TLT_Expect(statement, TLT_TOKEN_IDENTIFIER, name)) return;
    if (!TLT_Expect(statement, TLT_TOKEN_OPEN_BRACKET, nullptr)) return;
    TLI_IDENTIFIER *record = open_record(module, statement, name);
    if (record == nullptr) return;
    do {
        if (!parse_field(module, statement, record)) return;
    } while (TLT_PossibleToken(statement, TLT_TOKEN_COMMA, nullptr));
    TLT_Expect(statement, TLT_TOKEN_CLOSE_BRACKET, nullptr);
    if ((module->flags & TLP_FLAG_PRINT_SCOPES) != 0) {
        TLI_PrintScope(module->output, TLIT_RecordScope(record), module);
    }
}

void TLP_PointerRule(TLP_MODULE *module, TLT_STATEMENT *statement)
{
    char record_name[TLT_TEXT_SIZE];
    char name[TLT_TEXT_SIZE];
    if (!TLT_Expect(statement, TLT_TOKEN_IDENTIFIER, record_name)) return;
    if (!TLT_Expect(statement, TLT_TOKEN_IDENTIFIER, name)) return;
    TLI_IDENTIFIER *record = TLP_LookUpIdentifier(module, record_name);
    if (record == nullptr) {
        record = TLIT_Record(module->data_type_domain, module->domain, statement, record_name);
        if (record == nullptr) return;
        TLI_PopScope(module->domain);
    }
    TLIT_Pointer(module->data_type_domain, module->domain, statement, name, record);
}

void TLP_PragmaRule(TLP_MODULE *module, TLT_STATEMENT *statement)
{
    char name[TLT_TEXT_SIZE];
    TLT_PossibleToken(statement, TLT_TOKEN_PRAGMA, nullptr);
    if (!TLT_Expect(statement, TLT_TOKEN_OPEN_BRACKET, nullptr)) return;
    TLI_IDENTIFIER *identifier = parse_pragma_owner(module, statement);
    if (identifier == nullptr) return;
    if (!TLT_Expect(statement, TLT_TOKEN_COMMA, nullptr)) return;
    if (!TLT_Expect(statement, TLT_TOKEN_IDENTIFIER, name)) return;
    if (!TLT_Expect(statement, TLT_TOKEN_CLOSE_BRACKET, nullptr)) return;
    attach_pragma(statement, identifier, name);
}

void TLP_AssertRule(TLP_MODULE *module, TLT_STATEMENT *statement)
{
    TLT_PossibleToken(statement, TLT_TOKEN_ASSERT, nullptr);
    TLE_TERM *term = TLE_ParseExpression(module, statement, TLE_USE_CONSTANT, TLT_TOKEN_NONE);
    intptr_t value = 0;
    const bool is_constant =
        term != nullptr && TLE_ConstantValue(module, nullptr, term, TLIT_BoolType, &value, 1);
    if (!is_constant) {
        TLT_Error(statement, "ASSERT expression must be a BOOL constant");
    } else if (value == 0) {
        TLT_Error(statement, "ASSERT statement failed");
    }
    TLE_DelExpression(term);
}
