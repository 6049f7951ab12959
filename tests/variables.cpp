/*
 * Variables, arguments and fields: where they stand, what may be done with them, and the P-code that
 * reaches them.
 */
#include "codegen/tlc.h"
#include "names/tliv.h"
#include "tests/parsed_source.h"

#include <gtest/gtest.h>
#include <ostrum/eep.h>
#include <ostrum/tlit.h>

namespace
{

using Bytes = std::vector<int>;

// A frame function F around L, so that there are globals, an outer frame and a local frame.
constexpr const char *frames = "ENUM E = ONE TWO\n"
                               "TYPEDEF RECORD R (CHAR C, INT I[3], INT U[])\n"
                               "PRIVATE\n"
                               "VAR CHAR GC\n"
                               "INT G, GA[10], GU[]\n"
                               "FUNCTION VOID OUTER(INT X, VAR INT Y)\n"
                               "VAR INT Z[4]\n"
                               "FUNCTION VOID F(CHAR V, VAR INT W, CONST CHAR S[], VAR R Q, VAR "
                               "STRING T)\n"
                               "VAR CHAR LC\n"
                               "INT L, LA[10], LU[]\n";

class Variables : public testing::Test
{
protected:
    void SetUp() override { stream = TLC_NewStream(source.module, 0); }
    void TearDown() override { TLC_DelStream(stream); }

    // The code that one push operation emits.
    template <typename PUSH> Bytes code(PUSH push, const char *name, int32_t subscript)
    {
        TLC_NewPSect(stream);
        EXPECT_EQ(push(stream, source.find(name), subscript), 1) << name;
        const TLC_PSECT *section = stream->current;
        return Bytes(section->code, section->code + section->size);
    }

    Bytes dimension_code(const char *name)
    {
        return code([](TLC_STREAM *to, TLI_IDENTIFIER *identifier,
                       int32_t) { return TLI_PushDimension(to, identifier); },
                    name, 0);
    }

    ParsedSource source;
    TLC_STREAM *stream;
};

TEST_F(Variables, TakeRoomInTheirScope)
{
    source.parse("PRIVATE\nVAR CHAR C\nINT I\nINT A[10]\nINT U[]\nCHAR D\nCHAR C\nINT J");
    EXPECT_EQ(source.messages(), "'C' already declared");
    const struct {
        const char *name;
        int32_t offset;
    } rows[] = {
        { "C", 0 },  { "I", 2 },  { "A", 6 },
        { "U", 46 }, { "D", 54 }, { "J", 56 }, // the C that was refused has taken 55
    };
    for (const auto &row : rows)
        EXPECT_EQ(TLIV_Offset(source.find(row.name)), row.offset);
    EXPECT_EQ(TLI_ScopeSize(source.module->statics), 60);
    EXPECT_TRUE(TLIT_IsArrayType(TLI_IdentifierType(source.find("U"))));
    EXPECT_EQ(TLI_IdentifierType(source.find("A")), TLIT_IntType);
}

TEST_F(Variables, ABoundOfZeroMeansAnyLength)
{
    source.parse("PRIVATE\nVAR INT A[0]\nINT B[-1]");
    EXPECT_EQ(source.messages(), "Array dimension must be >= 0");
    EXPECT_EQ(TLI_IdentifierDimension(source.find("A"), nullptr), 0);
    EXPECT_TRUE(TLIT_IsArrayType(TLI_IdentifierType(source.find("A"))));
}

TEST_F(Variables, ArgumentsTakeAWordOrAPair)
{
    source.parse("PRIVATE\nFUNCTION VOID F(CHAR A, VAR INT B[], CONST CHAR C, VAR CHAR D[BOOL])\n"
                 "VAR CHAR E");
    EXPECT_EQ(source.messages(), "");
    const struct {
        const char *name;
        int32_t offset;
        uint32_t flags;
    } rows[] = {
        { "A", 0, TLI_ARGUMENT + TLI_ASSIGNABLE },
        { "B", 4, TLI_ARGUMENT + TLI_ASSIGNABLE + TLI_DIMENSIONED },
        { "C", 12, TLI_ARGUMENT },
        { "D", 16, TLI_ARGUMENT + TLI_ASSIGNABLE + TLI_DIMENSIONED },
        { "E", 24, TLI_VARIABLE + TLI_ASSIGNABLE },
    };
    for (const auto &row : rows) {
        EXPECT_EQ(TLIV_Offset(source.find(row.name)), row.offset) << row.name;
        EXPECT_EQ(TLI_IdentifierFlags(source.find(row.name)), row.flags) << row.name;
    }
    EXPECT_EQ(TLI_IdentifierDimension(source.find("D"), nullptr), 2);
    EXPECT_EQ(TLIV_ArgumentPassType(source.find("C")), TLIV_BY_CONST);
    EXPECT_EQ(TLIV_ArgumentPassType(source.find("E")), TLIV_BY_VALUE);
}

TEST_F(Variables, ARecordByValueIsDeclaredAndReported)
{
    source.parse("TYPEDEF RECORD R (INT A)\nPRIVATE\nFUNCTION VOID F(R A, INT B)");
    EXPECT_EQ(source.messages(), "RECORDs cannot be passed by value");
    EXPECT_EQ(TLIV_Offset(source.find("A")), 0);
    // The statement is in error, and its other arguments stand all the same.
    EXPECT_EQ(TLIV_Offset(source.find("B")), 4);
}

TEST_F(Variables, FieldsStandInTheirRecord)
{
    source.parse("TYPEDEF RECORD R (CHAR C, INT U[], CHAR D)");
    TLI_IDENTIFIER *record = source.find("R");
    const int32_t offsets[] = { 0, 2, 10 };
    for (int32_t i = 0; i < 3; i++) {
        TLI_IDENTIFIER *field = TLIT_RecordNthField(record, i, nullptr);
        EXPECT_EQ(TLIV_FieldOffset(field), offsets[i]);
        EXPECT_EQ(TLI_IdentifierFlags(field) & TLI_ASSIGNABLE, 0u);
    }
    EXPECT_EQ(TLIV_FieldOffset(record), 0);
}

TEST_F(Variables, ValuesAreLoadedByScope)
{
    source.parse(frames);
    ASSERT_EQ(source.messages(), "");
    // F: V 0, W 4, S 8, Q 16, T 20, LC 24, L 26, LA 30, LU 70. OUTER: X 0, Y 4, Z 8.
    // Statics: GC 0, G 2, GA 6, GU 46.
    const struct {
        const char *name;
        int32_t subscript;
        Bytes code;
    } rows[] = {
        { "V", 0, { 0, EEP_LLB } },
        { "L", 0, { 26, EEP_LLW } },
        { "LA", 1, { EEP_SLIT, 34, EEP_LLW } },
        { "LA", -1, { 30, EEP_LLA, EEP_ADW, EEP_LW } },
        { "W", 0, { 4, EEP_LLW, EEP_LW } },
        { "T", 0, { 20, EEP_LLW, EEP_LP } }, // what it holds is a pointer
        { "S", 0, { 8, EEP_LLW } },
        { "S", 3, { 3, 8, EEP_LLW, EEP_ADD } },
        { "LU", -1, { EEP_SLIT, 70, EEP_LLW, EEP_ADW } },
        { "G", 0, { EEP_LSA, 0, 0, 0, 2, EEP_LW } },
        { "GA", 2, { EEP_LSA, 0, 0, 0, 14, EEP_LW } },
        { "GU", 0, { EEP_LSA, 0, 0, 0, 46, EEP_LP } },
        { "GU", 5, { 5, EEP_LSA, 0, 0, 0, 46, EEP_LP, EEP_ADW } },
        { "X", 0, { EEP_FIND_SCOPE, 0, 0, 0, 0, 0, EEP_LLW, EEP_LOCAL_SCOPE } },
        { "Y", 0, { EEP_FIND_SCOPE, 0, 0, 0, 0, 4, EEP_LLW, EEP_LOCAL_SCOPE, EEP_LW } },
        { "Z", 1, { EEP_FIND_SCOPE, 0, 0, 0, 0, 12, EEP_LLW, EEP_LOCAL_SCOPE } },
    };
    for (const auto &row : rows) {
        EXPECT_EQ(code(TLI_PushValue, row.name, row.subscript), row.code)
            << row.name << '[' << row.subscript << ']';
    }
}

TEST_F(Variables, AddressesAreThoseOfTheCallersItem)
{
    source.parse(frames);
    const struct {
        const char *name;
        int32_t subscript;
        Bytes code;
    } rows[] = {
        { "L", 0, { 26, EEP_LLA } },
        { "W", 0, { 4, EEP_LLW } },  // by reference: what the word holds
        { "Q", 0, { 16, EEP_LLW } }, // a record too
        { "S", 0, { 8, EEP_LLA } },  // an array: the pair
        { "V", 0, { 0, EEP_LLA } },
        { "G", 0, { EEP_LSA, 0, 0, 0, 2 } },
        { "Z", 0, { EEP_FIND_SCOPE, 0, 0, 0, 0, 8, EEP_LLA, EEP_LOCAL_SCOPE } },
    };
    for (const auto &row : rows) {
        EXPECT_EQ(code(TLI_PushAddress, row.name, row.subscript), row.code) << row.name;
    }
}

TEST_F(Variables, DimensionsAreKnownOrLoaded)
{
    source.parse(frames);
    const struct {
        const char *name;
        Bytes code;
    } rows[] = {
        { "L", {} },
        { "LA", { 10 } },
        { "S", { 12, EEP_LLW } },
        { "GU", { EEP_LSA, 0, 0, 0, 50, EEP_LW } },
    };
    for (const auto &row : rows)
        EXPECT_EQ(dimension_code(row.name), row.code) << row.name;
}

TEST_F(Variables, SubscriptsAreCheckedOnDemand)
{
    source.parse(frames);
    stream->flags = TLC_FLAG_CHECKS;
    EXPECT_EQ(code(TLI_PushValue, "S", -1), (Bytes{ 12, EEP_LLW, EEP_CHECK, 8, EEP_LLW, EEP_ADD }));
    EXPECT_EQ(code(TLI_PushValue, "S", 0), (Bytes{ 8, EEP_LLW }));
    EXPECT_EQ(code(TLI_PushValue, "GU", -1), (Bytes{ EEP_LSA, 0, 0, 0, 50, EEP_LW, EEP_CHECK,
                                                     EEP_LSA, 0, 0, 0, 46, EEP_LP, EEP_ADW }));
    EXPECT_EQ(code(TLI_PushValue, "LA", -1),
              (Bytes{ 10, EEP_CHECK, 30, EEP_LLA, EEP_ADW, EEP_LW }));
}

TEST_F(Variables, FieldsAreReachedFromTheRecordsAddress)
{
    source.parse("TYPEDEF RECORD R (CHAR C, INT I[3], INT U[], INT N, INT NU[])\n"
                 "PRAGMA (N, ATTR) = \"300\"\nPRAGMA (NU, ATTR) = \"7\"");
    ASSERT_EQ(source.messages(), "");
    EXPECT_EQ(code(TLI_PushAddress, "I", 2), (Bytes{ 10, EEP_ADD }));
    EXPECT_EQ(code(TLI_PushAddress, "I", -1), (Bytes{ 4, EEP_MUL, 2, EEP_ADD, EEP_ADD }));
    EXPECT_EQ(code(TLI_PushAddress, "N", 0), (Bytes{ EEP_FIELD_ATTR, 1, 44 }));
    EXPECT_EQ(code(TLI_PushValue, "U", 0), (Bytes{ 14, EEP_ADD, EEP_LP }));
    EXPECT_EQ(code(TLI_PushValue, "U", 3), (Bytes{ 3, EEP_EXCH, 14, EEP_ADD, EEP_LP, EEP_ADW }));
    EXPECT_EQ(code(TLI_PushValue, "NU", 3), (Bytes{ 3, EEP_EXCH, EEP_ATTR_INDEX, 0, 7 }));
    EXPECT_EQ(TLI_PushValue(stream, source.find("N"), 0), 0);
    EXPECT_EQ(parsed_messages.back(), "Field is not an array pointer");
}

TEST_F(Variables, ScopesOfUnknownAccessAreErrorsOfGeneration)
{
    source.parse("PRIVATE\nVAR INT I, U[]\nFUNCTION VOID F(INT A)");
    source.module->statics->type = 7;
    EXPECT_EQ(TLI_PushValue(stream, source.find("U"), 0), 0);
    EXPECT_EQ(TLI_PushValue(stream, source.find("I"), 0), 0);
    EXPECT_EQ(TLI_PushAddress(stream, source.find("I"), 0), 0);
    EXPECT_EQ(TLI_PushDimension(stream, source.find("U")), 0);
    TLIV_FunctionScope(source.find("F"))->type = 7;
    EXPECT_EQ(TLI_PushValue(stream, source.find("A"), 0), 0);
    EXPECT_EQ(source.messages(),
              "Scope access type not handled - 1|Scope access type not handled - 2|"
              "Scope access type not handled - 3|Scope access type not handled - 4|"
              "Scope access type not handled - 6");
}

} // namespace
