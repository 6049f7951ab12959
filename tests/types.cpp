// Types: the predeclared ones, the kinds that a program makes, and which types fit.
#include "names/tlit.h"

#include "frontend/tlp.h"
#include "frontend/tlt.h"
#include "names/tlic.h"
#include "names/tliv.h"
#include "tests/written.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

static std::vector<std::string> messages; // "level text"

static void keep_message(TLT_STATEMENT *, int32_t level, const char *text)
{
    messages.push_back(std::to_string(level) + " " + text);
}

static std::string printed(TLI_IDENTIFIER *identifier)
{
    return written([=](FILE *stream) { TLI_PrintIdentifier(stream, identifier, nullptr); });
}

class Types : public testing::Test
{
protected:
    void SetUp() override
    {
        TLP_Initialise();
        TLT_DefaultMessageHandler(keep_message);
        module = TLP_NewModule("M", nullptr);
        data_types = TLP_DataTypeDomain(module);
        domain = TLI_NewDomain("M");
        globals = TLI_NewScope(domain, "GLOBALS", TLI_STATIC_SCOPE);
        TLI_PushScope(domain, globals);
        statement = TLT_NewStatement("INT X", "m.tl", 1, 1);
        messages.clear();
    }

    void TearDown() override
    {
        TLI_DelScope(globals);
        TLI_DelDomain(domain);
        TLT_DelStatement(statement);
        TLP_DelModule(module);
    }

    TLI_IDENTIFIER *record(const char *name)
    {
        return TLIT_Record(data_types, domain, statement, name);
    }

    TLI_IDENTIFIER *field(TLI_IDENTIFIER *record, const char *name, TLI_IDENTIFIER *type)
    {
        return TLIT_RecordField(data_types, domain, statement, record, name, type, -1, nullptr);
    }

    int32_t matches(TLI_IDENTIFIER *a, TLI_IDENTIFIER *b)
    {
        return TLIT_MatchType(module, statement, a, b);
    }

    int32_t matches_argument(TLI_IDENTIFIER *a, TLI_IDENTIFIER *b)
    {
        const int32_t result = TLIT_MatchArgType(module, statement, a, b);
        EXPECT_EQ(TLIT_MatchArgType(module, statement, b, a), result);
        return result;
    }

    TLP_MODULE *module = nullptr;
    TLI_DOMAIN *data_types = nullptr;
    TLI_DOMAIN *domain = nullptr;
    TLI_SCOPE *globals = nullptr;
    TLT_STATEMENT *statement = nullptr;
};

TEST_F(Types, Predeclared)
{
    const struct {
        const char *name;
        TLI_IDENTIFIER *type, *base;
        int32_t size, debug_type, variant_type, quantity;
    } rows[] = {
        { "INT", TLIT_IntType, TLIT_IntType, 4, 0, 3, 0 },
        { "CHAR", TLIT_CharType, TLIT_CharType, 1, 100, 17, 0 },
        { "SHORT", TLIT_ShortType, TLIT_ShortType, 2, 106, 2, 0 },
        { "STRING", TLIT_StringType, TLIT_StringType, 4, 101, 8, -1 },
        { "WORD", TLIT_WordType, TLIT_IntType, 4, 0, 3, -1 },
        { "FLOAT", TLIT_FloatType, TLIT_FloatType, 4, 0, 4, -1 },
        { "VOID", TLIT_VoidType, nullptr, 0, 0, 0, -1 },
        { "QUANTITY", TLIT_QuantityType, TLIT_IntType, 4, 0, 3, -1 },
        { "BOOL", TLIT_BoolType, TLIT_CharType, 1, 102, 17, -1 },
        { "VOLTAGE", TLIT_Voltage, TLIT_IntType, 4, 1, 3, 1 },
        { "RESISTANCE", TLIT_Resistance, TLIT_IntType, 4, 2, 3, 2 },
        { "CURRENT", TLIT_Current, TLIT_IntType, 4, 3, 3, 3 },
        { "FREQUENCY", TLIT_Frequency, TLIT_IntType, 4, 6, 3, 6 },
        { "TIME", TLIT_Time, TLIT_IntType, 4, 7, 3, 7 },
        { "CLOCK_TIME", TLIT_ClockTime, TLIT_IntType, 4, 18, 3, 18 },
        { "CAPACITY_US", TLIT_GetQuantityType(35), TLIT_IntType, 4, 35, 3, 35 },
        { "MESSAGE", TLIT_FindType(data_types, "MESSAGE"), TLIT_DataType, 4, 103, 13, -1 },
        { "VARLOC", TLIT_FindType(data_types, "VARLOC"), TLIT_DataType, 4, 103, 13, -1 },
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        ASSERT_NE(row.type, nullptr);
        EXPECT_EQ(TLIT_FindType(data_types, row.name), row.type);
        EXPECT_EQ(TLIT_TypeBaseType(statement, row.type), row.base);
        EXPECT_EQ(TLIT_TypeSizeof(row.type, -1), row.size);
        EXPECT_EQ(TLIT_TypeDebugType(row.type), row.debug_type);
        EXPECT_EQ(TLIT_VariantType(row.type), row.variant_type);
        EXPECT_EQ(TLIT_GetQuantityIdentifier(row.type), row.quantity);
    }
    EXPECT_EQ(TLIT_FindType(nullptr, "MESSAGE"), nullptr);
    EXPECT_EQ(TLIT_FindType(data_types, "DATA"), nullptr);
    EXPECT_EQ(TLIT_GetQuantityType(0), TLIT_IntType);
    EXPECT_EQ(TLIT_GetQuantityType(36), nullptr);
    EXPECT_EQ(TLIT_GetQuantityType(-1), nullptr);
    EXPECT_TRUE(messages.empty());
}

static int32_t append_name(void *context, const char *name, TLI_IDENTIFIER *)
{
    *static_cast<std::string *>(context) += std::string(name) + " ";
    return 1;
}

TEST_F(Types, DataTypesOfAModule)
{
    TLI_SCOPE *scope = TLI_GetScope(data_types, statement);
    std::string names; // the latest first
    TLI_AllIdentifiers(scope, append_name, &names);
    EXPECT_EQ(names, "VARLOC CONVERTER BINARY_DATA POINT COMPONENT WAVEFORM HELPSCREEN PARAMETER "
                     "PICTURE PIN VIEW CONNECTOR MESSAGE ");
    EXPECT_EQ(TLI_ScopeType(scope), TLI_STATIC_SCOPE);
    EXPECT_STREQ(TLI_DomainName(data_types), "");
}

TEST_F(Types, VariantsOfTheKindsOfTypes)
{
    TLI_IDENTIFIER *type = record("R");
    TLI_PopScope(domain);
    const struct {
        TLI_IDENTIFIER *type;
        int32_t variant_type;
    } rows[] = {
        { TLIT_EnumerationType(data_types, domain, statement, "E"), 17 },
        { TLIT_FunctionType(data_types, domain, statement, "F", nullptr), 9 },
        { type, 13 },
        { TLIT_Pointer(data_types, domain, statement, "P", type), 16384 },
        { TLIT_Array(domain, statement, type), 8192 },
    };
    for (const auto &row : rows)
        EXPECT_EQ(TLIT_VariantType(row.type), row.variant_type) << TLI_IdentifierName(row.type);
}

TEST_F(Types, PredeclaredConstant)
{
    intptr_t value = 0;
    TLI_IDENTIFIER *constant = TLIT_FindType(nullptr, "ALLOCATE_SPACE");
    ASSERT_TRUE(TLI_CheckIdentifier(constant, TLI_CONSTANT, TLIT_IntType));
    EXPECT_EQ(TLIC_ConstantValue(module, constant, 0, &value), 1);
    EXPECT_EQ(value, 128);
}

TEST_F(Types, Sizes)
{
    EXPECT_EQ(TLIT_TypeSizeof(TLIT_IntType, 0), 4);
    EXPECT_EQ(TLIT_TypeSizeof(TLIT_IntType, 5), 20);
    EXPECT_EQ(TLIT_TypeSizeof(TLIT_IntType, -2), -8);
    EXPECT_EQ(TLIT_TypeSizeof(TLIT_IntType, INT32_MAX), INT32_MAX);
    EXPECT_EQ(TLIT_TypeSizeof(TLIT_VoidType, 1), 0);
    EXPECT_EQ(TLIT_TypeSizeof(TLIT_Array(domain, statement, TLIT_CharType), -1), 8);
}

TEST_F(Types, WhatIsNoTypeHasHarmlessAnswers)
{
    TLI_IDENTIFIER *name = TLI_NewIdentifier(nullptr, domain, nullptr, "N", nullptr, nullptr);
    for (TLI_IDENTIFIER *other : { name, (TLI_IDENTIFIER *)nullptr }) {
        EXPECT_EQ(TLIT_TypeSizeof(other, 4), 0);
        EXPECT_EQ(TLIT_TypeDebugType(other), 0);
        EXPECT_EQ(TLIT_VariantType(other), 0);
        EXPECT_FALSE(TLIT_PointerType(other));
        EXPECT_FALSE(TLIT_IsArrayType(other));
        EXPECT_FALSE(TLIT_IsRecordType(other));
        EXPECT_FALSE(TLIT_IsQuantityType(other));
        EXPECT_FALSE(TLIT_IsStringType(data_types, other));
        EXPECT_EQ(TLIT_GetQuantityIdentifier(other), -1);
        EXPECT_EQ(TLIT_ArrayOf(other), nullptr);
        EXPECT_EQ(TLIT_EnumRange(other), 0);
        EXPECT_EQ(TLIT_RecordScope(other), nullptr);
        EXPECT_EQ(TLIT_RecordNthField(other, 0, nullptr), nullptr);
        EXPECT_EQ(TLIT_EnumGetValue(other, 0), nullptr);
        EXPECT_EQ(TLIT_EnumerationValue(data_types, domain, statement, other, "V"), nullptr);
        EXPECT_EQ(TLIT_BifClass(other), nullptr);
        EXPECT_EQ(TLIT_Array(domain, statement, other), nullptr);
        EXPECT_EQ(TLIT_TypeBaseType(nullptr, other), nullptr);
    }
    EXPECT_TRUE(messages.empty());
    EXPECT_EQ(TLIT_TypeBaseType(statement, name), nullptr);
    EXPECT_EQ(TLIT_TypeSubclass(statement, name), 0);
    EXPECT_EQ(TLIT_Pointer(data_types, domain, statement, "P", TLIT_IntType), nullptr);
    EXPECT_EQ(messages, (std::vector<std::string>{ "3 'N' is not a type", "3 'N' is not a type",
                                                   "3 POINTERs can only point to RECORDs" }));
}

TEST_F(Types, EnumerationsHaveUpTo256Values)
{
    TLI_IDENTIFIER *type = TLIT_EnumerationType(data_types, domain, statement, "E");
    EXPECT_EQ(printed(type), "TYPE     ENUMERATION_TYPE   <NO TYPE>    E = ()\n");
    TLI_IDENTIFIER *last = nullptr;
    for (int32_t i = 0; i < 256; i++) {
        last = TLIT_EnumerationValue(data_types, domain, statement, type,
                                     ("V" + std::to_string(i)).c_str());
    }
    EXPECT_EQ(TLIT_EnumGetValue(type, 255), last);
    EXPECT_EQ(TLIT_EnumerationValue(data_types, domain, statement, type, "V256"), nullptr);
    EXPECT_EQ(messages, std::vector<std::string>{ "3 ENUM types can only have 256 values" });
    EXPECT_EQ(TLIT_EnumRange(type), 256);
    EXPECT_EQ(TLIT_EnumGetValue(type, 256), nullptr);
    EXPECT_EQ(TLI_FindDomainIdentifier(domain, "V256"), nullptr);
    EXPECT_EQ(TLIT_TypeDebugType(type), 104);

    intptr_t value = 0;
    EXPECT_EQ(TLIC_ConstantValue(module, last, 0, &value), 1);
    EXPECT_EQ(value, 255);
    EXPECT_EQ(TLI_IdentifierDimension(last, nullptr), -1);
    EXPECT_EQ(TLI_IdentifierType(last), type);
}

TEST_F(Types, ARefusedEnumerationValueLeavesNoGap)
{
    TLI_IDENTIFIER *type = TLIT_EnumerationType(data_types, domain, statement, "E");
    for (const char *name : { "A", "A", "B" })
        TLIT_EnumerationValue(data_types, domain, statement, type, name);
    EXPECT_EQ(messages, std::vector<std::string>{ "3 'A' already declared" });
    EXPECT_EQ(printed(type), "TYPE     ENUMERATION_TYPE   <NO TYPE>    E = (A,B)\n");
    EXPECT_EQ(TLIT_EnumGetValue(type, 1), TLI_FindDomainIdentifier(domain, "B"));
}

TEST_F(Types, Records)
{
    TLI_IDENTIFIER *type = record("R");
    EXPECT_EQ(TLI_GetScope(domain, statement), TLIT_RecordScope(type));
    EXPECT_EQ(TLIT_RecordNthField(type, 0, nullptr), nullptr);
    TLI_IDENTIFIER *first = field(type, "A", TLIT_CharType);
    EXPECT_EQ(TLIT_TypeSizeof(type, -1), 2);
    EXPECT_EQ(field(type, "B", TLIT_VoidType), nullptr); // its place stays empty
    TLI_IDENTIFIER *third =
        TLIT_RecordField(data_types, domain, statement, type, "C", TLIT_IntType, 3, TLIT_IntType);
    TLI_PopScope(domain);
    EXPECT_EQ(TLIT_TypeSizeof(type, -1), 14);
    EXPECT_EQ(TLIV_FieldOffset(third), 2);

    int32_t dimension = 0;
    EXPECT_EQ(TLIT_RecordNthField(type, 2, &dimension), third);
    EXPECT_EQ(dimension, 3);
    EXPECT_EQ(TLIT_RecordNthField(type, 0, &dimension), first);
    EXPECT_EQ(dimension, -1);
    EXPECT_EQ(TLIT_RecordNthField(type, 1, &dimension), nullptr);
    EXPECT_EQ(TLIT_RecordNthField(type, 3, &dimension), nullptr);
    EXPECT_EQ(TLIT_RecordNthField(type, -1, &dimension), nullptr);
    EXPECT_EQ(TLIT_RecordNthField(type, 2, nullptr), third);
    EXPECT_EQ(printed(type), "TYPE     RECORD_TYPE        <NO TYPE>    R Size=14\n");
    EXPECT_EQ(TLIT_TypeBaseType(statement, type), nullptr);
    EXPECT_EQ(TLIT_TypeSubclass(statement, type), TLIT_SUBCLASS_RECORD);
}

TEST_F(Types, AnElementTypeHasOneArrayType)
{
    TLI_IDENTIFIER *type = record("R");
    TLI_PopScope(domain);
    TLI_IDENTIFIER *array = TLIT_Array(domain, statement, type);
    EXPECT_EQ(TLIT_Array(domain, statement, type), array);
    EXPECT_EQ(TLI_FindScopeIdentifier(globals, "R[]"), array);
    EXPECT_EQ(TLIT_ArrayOf(array), type);
    EXPECT_EQ(TLIT_TypeBaseType(statement, array), TLIT_ArrayType);
    EXPECT_EQ(TLI_IdentifierFlags(array), 34u);
    EXPECT_EQ(printed(array), "TYPE     ARRAY              <NO TYPE>    R[] =>R\n");
    EXPECT_EQ(TLI_IdentifierScope(TLIT_Array(domain, statement, TLIT_IntType)),
              TLI_IdentifierScope(TLIT_IntType));

    // No room for the brackets: still an array, and still one.
    const std::string name(31, 'N');
    TLI_IDENTIFIER *long_type = record(name.c_str());
    TLI_PopScope(domain);
    TLI_IDENTIFIER *long_array = TLIT_Array(domain, statement, long_type);
    EXPECT_TRUE(TLIT_IsArrayType(long_array));
    EXPECT_EQ(TLIT_ArrayOf(long_array), long_type);
    EXPECT_EQ(TLIT_Array(domain, statement, long_type), long_array);
    EXPECT_EQ(TLI_FindScopeIdentifier(globals, name.c_str()), long_type);
    EXPECT_EQ(TLI_DelIdentifier(long_array), 0); // the entry of that name is the record's
    EXPECT_EQ(TLI_FindScopeIdentifier(globals, name.c_str()), long_type);
}

TEST_F(Types, Questions)
{
    TLI_IDENTIFIER *message = TLIT_FindType(data_types, "MESSAGE");
    TLI_IDENTIFIER *pin = TLIT_FindType(data_types, "PIN");
    TLI_IDENTIFIER *type = record("R");
    field(type, "A", TLIT_IntType);
    field(type, "B", TLIT_IntType);
    TLI_PopScope(domain);
    TLI_IDENTIFIER *pointer = TLIT_Pointer(data_types, domain, statement, "P", type);
    const struct {
        TLI_IDENTIFIER *type;
        const char *holds; // i integer, p pointer, s string, q quantity, w word
    } rows[] = {
        { TLIT_IntType, "iqw" },
        { TLIT_CharType, "iqw" },
        { TLIT_ShortType, "iqw" },
        { TLIT_QuantityType, "iqw" },
        { TLIT_WordType, "w" },
        { TLIT_FloatType, "w" },
        { TLIT_Voltage, "qw" },
        { TLIT_BoolType, "qw" },
        { TLIT_StringType, "psw" },
        { message, "psw" },
        { pin, "pw" },
        { pointer, "pw" },
        { type, "" },
    };
    for (const auto &row : rows) {
        std::string holds;
        if (TLIT_IntegerType(row.type)) holds += 'i';
        if (TLIT_PointerType(row.type)) holds += 'p';
        if (TLIT_IsStringType(data_types, row.type)) holds += 's';
        if (TLIT_IsQuantityType(row.type)) holds += 'q';
        if (TLIT_IsWordType(row.type)) holds += 'w';
        EXPECT_EQ(holds, row.holds) << TLI_IdentifierName(row.type);
    }
    EXPECT_FALSE(TLIT_IsStringType(nullptr, message));
    EXPECT_EQ(printed(pointer), "TYPE     POINTER_TYPE       <NO TYPE>    P At=R\n");
    EXPECT_EQ(printed(TLIT_Voltage), "TYPE     QUANTITY_TYPE      <NO TYPE>    VOLTAGE ID=1 \n");
}

TEST_F(Types, Matching)
{
    TLI_IDENTIFIER *small = record("SMALL");
    field(small, "A", TLIT_CharType);
    TLI_PopScope(domain);
    TLI_IDENTIFIER *large = record("LARGE");
    field(large, "A", TLIT_IntType);
    field(large, "B", TLIT_IntType);
    TLI_PopScope(domain);
    TLI_IDENTIFIER *p = TLIT_Pointer(data_types, domain, statement, "P", small);
    TLI_IDENTIFIER *q = TLIT_Pointer(data_types, domain, statement, "Q", small);
    TLI_IDENTIFIER *r = TLIT_Pointer(data_types, domain, statement, "PL", large);
    const struct {
        TLI_IDENTIFIER *a, *b;
        int32_t as_argument, as_value;
    } rows[] = {
        { nullptr, TLIT_IntType, 0, 0 },
        { TLIT_IntType, TLIT_IntType, 1, 1 },
        { TLIT_IntType, TLIT_CharType, 0, 1 },
        { TLIT_IntType, TLIT_QuantityType, 1, 1 },
        { TLIT_CharType, TLIT_QuantityType, 0, 1 },
        { TLIT_Voltage, TLIT_IntType, 0, 0 },
        { TLIT_Voltage, TLIT_Current, 0, 0 },
        { TLIT_Voltage, TLIT_QuantityType, 1, 1 },
        { TLIT_BoolType, TLIT_QuantityType, 0, 0 },
        { TLIT_BoolType, TLIT_IntType, 0, 0 },
        { TLIT_WordType, TLIT_FloatType, 1, 1 },
        { TLIT_WordType, TLIT_StringType, 1, 1 },
        { TLIT_WordType, small, 1, 1 },
        { TLIT_WordType, large, 0, 0 },
        { TLIT_FloatType, TLIT_IntType, 0, 0 },
        { p, q, 1, 1 },
        { p, r, 0, 0 },
        { p, small, 0, 0 },
        { TLIT_FindType(data_types, "PIN"), TLIT_FindType(data_types, "VIEW"), 0, 0 },
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(TLI_IdentifierName(row.a)) + " " + TLI_IdentifierName(row.b));
        EXPECT_EQ(matches_argument(row.a, row.b), row.as_argument);
        EXPECT_EQ(matches(row.a, row.b), row.as_value);
        EXPECT_EQ(matches(row.b, row.a), row.as_value);
    }
    EXPECT_TRUE(messages.empty());
}

TEST_F(Types, AFunctionMatchesAFunctionTypeByItsPrototype)
{
    TLI_IDENTIFIER *functions[3] = {};
    TLI_IDENTIFIER *results[] = { TLIT_QuantityType, TLIT_Voltage, TLIT_StringType };
    const char *names[] = { "_T", "F", "G" };
    for (int i = 0; i < 3; i++) {
        functions[i] = TLIV_Function(data_types, domain, statement, names[i], 1, 1, results[i]);
        TLIV_PopScope(domain, functions[i]);
    }
    TLI_IDENTIFIER *type = TLIT_FunctionType(data_types, domain, statement, "T", functions[0]);
    EXPECT_EQ(TLIT_FunctionTypePrototype(type), functions[0]);
    EXPECT_EQ(TLIT_TypeBaseType(statement, type), TLIT_CodeType);
    EXPECT_EQ(matches(type, functions[1]), 1);
    EXPECT_EQ(matches(TLIT_IntType, functions[1]), 0);
    EXPECT_TRUE(messages.empty());
    EXPECT_EQ(matches(type, functions[2]), 0);
    EXPECT_EQ(messages,
              std::vector<std::string>{ "3 Function declaration does not match prototype" });
}
