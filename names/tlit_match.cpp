// Questions about types, and whether two types fit.
#include "names/tlit.h"

#include "frontend/tlp.h"
#include "frontend/tlt.h"
#include "names/tliv.h"

#include <cstdio>
#include <cstring>

static int32_t subclass_of(TLI_IDENTIFIER *identifier)
{
    const TLIT_TYPE *type = TLIT_AsType(identifier);
    return type != nullptr ? type->descriptor->subclass : -1;
}

static bool is_quantity_class(const TLI_IDENTIFIER *identifier)
{
    return identifier != nullptr && identifier->class_record == &TLIT_classes[TLIT_QUANTITY_CLASS];
}

// ---- What a type is built on ----

TLI_IDENTIFIER *TLIT_ArrayOf(TLI_IDENTIFIER *type)
{
    switch (subclass_of(type)) {
    case TLIT_SUBCLASS_FUNCTION:
    case TLIT_SUBCLASS_POINTER:
    case TLIT_SUBCLASS_ARRAY:
        return reinterpret_cast<TLI_IDENTIFIER *>(TLIT_AsType(type)->at);
    default:
        return nullptr;
    }
}

TLI_IDENTIFIER *TLIT_FunctionTypePrototype(TLI_IDENTIFIER *type)
{
    return TLIT_ArrayOf(type);
}

TLI_IDENTIFIER *TLIT_PointerAt(TLI_IDENTIFIER *type)
{
    return TLIT_ArrayOf(type);
}

int32_t TLIT_EnumRange(TLI_IDENTIFIER *type)
{
    if (!TLIT_IsEnumeration(type)) return 0;
    return (int32_t)TLIT_AsType(type)->at;
}

TLI_SCOPE *TLIT_RecordScope(TLI_IDENTIFIER *type)
{
    if (subclass_of(type) != TLIT_SUBCLASS_RECORD) return nullptr;
    return reinterpret_cast<TLI_SCOPE *>(TLIT_AsType(type)->at);
}

// ---- Questions ----

static void refuse_type(TLT_STATEMENT *statement, const TLI_IDENTIFIER *identifier)
{
    if (statement == nullptr) return;
    char text[128];
    snprintf(text, sizeof text, "'%.63s' is not a type", TLI_IdentifierName(identifier));
    TLT_Error(statement, text);
}

TLI_IDENTIFIER *TLIT_TypeBaseType(TLT_STATEMENT *statement, TLI_IDENTIFIER *type)
{
    const TLIT_TYPE *record = TLIT_AsType(type);
    if (record != nullptr) return record->descriptor->base_type;
    refuse_type(statement, type);
    return nullptr;
}

int32_t TLIT_TypeSubclass(TLT_STATEMENT *statement, TLI_IDENTIFIER *type)
{
    const TLIT_TYPE *record = TLIT_AsType(type);
    if (record != nullptr) return record->descriptor->subclass;
    refuse_type(statement, type);
    return 0;
}

int32_t TLIT_TypeDebugType(TLI_IDENTIFIER *type)
{
    const TLIT_TYPE *record = TLIT_AsType(type);
    return record != nullptr ? record->debug_type : 0;
}

int32_t TLIT_VariantType(TLI_IDENTIFIER *type)
{
    const TLIT_TYPE *record = TLIT_AsType(type);
    return record != nullptr ? record->descriptor->variant_type : 0;
}

int32_t TLIT_TypeSizeof(TLI_IDENTIFIER *type, int32_t dimension)
{
    const TLIT_TYPE *record = TLIT_AsType(type);
    if (record == nullptr) return 0;
    const TLIT_DESCRIPTOR *descriptor = record->descriptor;
    const int32_t unit_size =
        descriptor->size_operation != nullptr ? descriptor->size_operation(type) : descriptor->size;
    if (dimension == -1 || dimension == 0) return unit_size;
    const int64_t size = (int64_t)unit_size * dimension;
    if (size > INT32_MAX) return INT32_MAX;
    return size < INT32_MIN ? INT32_MIN : (int32_t)size;
}

int32_t TLIT_IntegerType(TLI_IDENTIFIER *type)
{
    return type != nullptr && (type == TLIT_IntType || type == TLIT_CharType ||
                               type == TLIT_ShortType || type == TLIT_QuantityType);
}

int32_t TLIT_PointerType(TLI_IDENTIFIER *type)
{
    const TLI_IDENTIFIER *base = TLIT_TypeBaseType(nullptr, type);
    return base != nullptr && (base == TLIT_StringType || base == TLIT_DataType ||
                               base == TLIT_CodeType || base == TLIT_PtrType);
}

int32_t TLIT_IsArrayType(TLI_IDENTIFIER *type)
{
    return subclass_of(type) == TLIT_SUBCLASS_ARRAY;
}

int32_t TLIT_IsRecordType(TLI_IDENTIFIER *type)
{
    return subclass_of(type) == TLIT_SUBCLASS_RECORD;
}

int32_t TLIT_IsStringType(TLI_DOMAIN *data_types, TLI_IDENTIFIER *type)
{
    if (type == nullptr) return 0;
    if (type == TLIT_StringType) return 1;
    if (data_types == nullptr || subclass_of(type) != TLIT_SUBCLASS_DATA) return 0;
    if (strcmp(type->name, "MESSAGE") != 0) return 0;
    return TLI_FindDomainIdentifier(data_types, "MESSAGE") == type;
}

int32_t TLIT_IsQuantityType(TLI_IDENTIFIER *type)
{
    return TLIT_IntegerType(type) || is_quantity_class(type) || TLIT_IsEnumeration(type);
}

int32_t TLIT_IsWordType(TLI_IDENTIFIER *type)
{
    return type != nullptr && TLIT_TypeSizeof(type, -1) <= 4;
}

int32_t TLIT_IsQuantityFloat(void)
{
    return 0;
}

int32_t TLIT_GetQuantityIdentifier(TLI_IDENTIFIER *type)
{
    if (is_quantity_class(type)) return TLIT_TypeDebugType(type);
    return TLIT_IntegerType(type) && type != TLIT_QuantityType ? 0 : -1;
}

TLI_IDENTIFIER *TLIT_FindType(const TLI_DOMAIN *data_types, const char *name)
{
    TLI_IDENTIFIER *found = nullptr;
    if (data_types != nullptr) found = TLI_FindDomainIdentifier(data_types, name);
    if (found != nullptr) return found;
    return TLI_FindDomainIdentifier(TLIT_LanguageDomain(), name);
}

// ---- Matching ----

void TLIT_EnglishStringWarning(TLP_MODULE *module, TLT_STATEMENT *statement)
{
    TLP_StrictWarning(module, statement, "'STRING' coerced to a MESSAGE");
}

static bool match_quantity(TLI_IDENTIFIER *general, TLI_IDENTIFIER *type)
{
    return general == TLIT_QuantityType && TLIT_IsQuantityType(type) &&
           TLIT_TypeSizeof(general, -1) == TLIT_TypeSizeof(type, -1);
}

static bool match_pointer(TLI_IDENTIFIER *type, TLI_IDENTIFIER *other)
{
    return subclass_of(type) == TLIT_SUBCLASS_POINTER &&
           subclass_of(other) == TLIT_SUBCLASS_POINTER &&
           TLIT_PointerAt(type) == TLIT_PointerAt(other);
}

int32_t TLIT_MatchArgType(TLP_MODULE *module, TLT_STATEMENT *statement, TLI_IDENTIFIER *type,
                          TLI_IDENTIFIER *other)
{
    if (type == nullptr || other == nullptr) return 0;
    if (type == other) return 1;
    TLI_DOMAIN *data_types = TLP_DataTypeDomain(module);
    if (TLIT_IsStringType(data_types, type) && TLIT_IsStringType(data_types, other)) {
        TLIT_EnglishStringWarning(module, statement);
        return 1;
    }
    if (type == TLIT_WordType && TLIT_IsWordType(other)) return 1;
    if (other == TLIT_WordType && TLIT_IsWordType(type)) return 1;
    if (match_quantity(type, other) || match_quantity(other, type)) return 1;
    return match_pointer(type, other);
}

int32_t TLIT_MatchType(TLP_MODULE *module, TLT_STATEMENT *statement, TLI_IDENTIFIER *type,
                       TLI_IDENTIFIER *other)
{
    if (TLIT_MatchArgType(module, statement, type, other)) return 1;
    if (type == nullptr || other == nullptr) return 0;
    if (TLIT_IntegerType(type) && TLIT_IntegerType(other)) return 1;
    if (subclass_of(type) != TLIT_SUBCLASS_FUNCTION) return 0;
    if (TLI_IdentifierClass(other) != TLI_FUNCTION) return 0;
    return TLIV_CompareFunctions(statement, TLIT_FunctionTypePrototype(type), other, 0);
}
