/*
 * Constants, non-volatiles and nodes: values, planting and the code that reaches them.
 */
#include "codegen/tlc.h"
#include "names/tlic.h"
#include "tests/parsed_source.h"
#include "tests/written.h"

#include <gtest/gtest.h>
#include <ostrum/eep.h>
#include <ostrum/tlit.h>

namespace
{

using Bytes = std::vector<int>;

class Constants : public testing::Test
{
protected:
    void SetUp() override { stream = TLC_NewStream(source.module, 0); }
    void TearDown() override { TLC_DelStream(stream); }

    Bytes planted(const char *name)
    {
        TLIC_PlantConstant(stream, source.find(name), 0);
        const TLC_PSECT *section = TLI_IdentifierPSect(source.find(name));
        return Bytes(section->code, section->code + section->size);
    }

    ParsedSource source;
    TLC_STREAM *stream;
};

TEST_F(Constants, KnowTheirDimensionAndValues)
{
    source.parse("CONST INT S = 7\nINT ONE[1] = 8\nINT THREE[] = 1, 2, 3\nSTRING T = \"text\"\n"
                 "STRING N = NULL\nENUM E = X Y\nPRIVATE\nNONVOLATILE INT V");
    ASSERT_EQ(source.messages(), "");
    const struct {
        const char *name;
        int32_t dimension;
        uint32_t flags;
    } rows[] = {
        { "S", -1, TLI_CONSTANT },
        { "ONE", 1, TLI_CONSTANT + TLI_DIMENSIONED },
        { "THREE", 3, TLI_CONSTANT + TLI_DIMENSIONED },
        { "V", -1, TLI_NON_VOLATILE + TLI_ASSIGNABLE },
    };
    for (const auto &row : rows) {
        EXPECT_EQ(TLI_IdentifierDimension(source.find(row.name), nullptr), row.dimension);
        EXPECT_EQ(TLI_IdentifierFlags(source.find(row.name)), row.flags) << row.name;
    }
    intptr_t value = 0;
    EXPECT_EQ(TLIC_ConstantValue(source.module, source.find("THREE"), 2, &value), 1);
    EXPECT_EQ(value, 3);
    EXPECT_EQ(TLIC_ConstantValue(source.module, source.find("THREE"), 3, &value), 0);
    EXPECT_EQ(TLIC_ConstantValue(source.module, source.find("V"), 0, &value), 0);
    EXPECT_EQ(TLIC_ConstantValue(source.module, nullptr, 0, &value), 0);
    EXPECT_EQ(value, 3) << "left alone";
    EXPECT_EQ(TLIC_ConstantValue(source.module, source.find("Y"), 0, &value), 1);
    EXPECT_EQ(value, 1);
    EXPECT_EQ(TLIC_ConstantValue(source.module, source.find("T"), 0, &value), 1);
    EXPECT_STREQ(reinterpret_cast<const char *>(value), "text");
    EXPECT_EQ(TLIC_ConstantValue(source.module, source.find("N"), 0, &value), 1);
    EXPECT_EQ(value, 0);
}

TEST_F(Constants, ArePlantedByBaseType)
{
    source.parse("ENUM E = X Y\nCONST\nINT I[] = 1, -2\nCHAR C[] = 'a', 'b', 'c'\nE N[] = Y, X\n"
                 "STRING S[] = NULL, \"t\"\nMESSAGE D[] = NULL, \"m\"\nVOLTAGE V[] = 1.5V");
    ASSERT_EQ(source.messages().find("coerced") != std::string::npos, true) << source.messages();
    const struct {
        const char *name;
        Bytes bytes;
    } rows[] = {
        { "I", { 0, 0, 0, 1, 255, 255, 255, 254 } },
        { "C", { 'a', 'b', 'c' } },
        { "N", { 1, 0 } },
        { "S", { 0, 0, 0, 0, 0, 0, 0, 0 } },
        { "D", { 0, 0, 0, 0, 0, 0, 0, 0 } },
        { "V", { 0, 0, 5, 220 } },
    };
    for (const auto &row : rows)
        EXPECT_EQ(planted(row.name), row.bytes) << row.name;
    const TLC_PSECT *strings = stream->string_section;
    EXPECT_EQ(Bytes(strings->code, strings->code + strings->size), (Bytes{ 't', 0, 'm', 0 }));
}

TEST_F(Constants, OfRecordsAreLaidOutAsTheirFields)
{
    source.parse("TYPEDEF RECORD INNER (CHAR C)\n"
                 "TYPEDEF RECORD R (CHAR A[3], INT I, INNER N, CHAR L)\nUSES\n"
                 "CONST R ONE = ('a', 'b', 'c', 5, (1), 2)\n"
                 "R TWO[2] = ('a', 'b', 'c', 5, ('n') 2), ('d', 'e', 'f', 6, ('n'), 3)\n"
                 "INNER SMALL[2] = (1), (2)");
    ASSERT_EQ(source.messages(), "");
    EXPECT_EQ(planted("ONE"), (Bytes{ 'a', 'b', 'c', 0, 0, 0, 0, 5, 1, 0, 2 }));
    EXPECT_EQ(planted("TWO"), (Bytes{ 'a', 'b', 'c', 0, 0, 0, 0, 5, 'n', 0, 2, 0, //
                                      'd', 'e', 'f', 0, 0, 0, 0, 6, 'n', 0, 3 }));
    EXPECT_EQ(planted("SMALL"), (Bytes{ 1, 0, 2 }));
    intptr_t value = 0;
    EXPECT_EQ(TLIC_ConstantValue(source.module, source.find("ONE"), 0, &value), 0);
}

TEST_F(Constants, AnArrayFieldWithoutBoundsTakesOneValue)
{
    source.parse("CONST INT LIST[3] = 1, 2, 3\nTYPEDEF RECORD R (INT A[], INT N)\nUSES\n"
                 "CONST R ONE = (LIST, 5)");
    ASSERT_EQ(source.messages(), "");
    EXPECT_EQ(planted("ONE"), (Bytes{ 0, 0, 0, 0, 0, 0, 0, 3, 0, 0, 0, 5 }));
}

TEST_F(Constants, ThatCannotBePlantedAreErrorsOfGeneration)
{
    source.parse("CONST SHORT S[] = 1");
    planted("S");
    EXPECT_EQ(source.messages(), "Don't know how to plant constant");
}

TEST_F(Constants, NonVolatilesReserveTheirStorage)
{
    source.parse("PRIVATE\nNONVOLATILE INT A[10], S\nCHAR C");
    ASSERT_EQ(source.messages(), "");
    const struct {
        const char *name;
        size_t size;
    } rows[] = { { "A", 40 }, { "S", 4 }, { "C", 1 } };
    for (const auto &row : rows) {
        TLIC_PlantNonVolatile(stream, source.find(row.name), 1);
        const TLC_PSECT *section = TLI_IdentifierPSect(source.find(row.name));
        EXPECT_EQ(Bytes(section->code, section->code + section->size), Bytes(row.size, 0));
        EXPECT_EQ(section->fixups->kind, TLC_FIXUP_SYMBOL);
    }
}

TEST_F(Constants, AreReachedThroughTheirSymbol)
{
    source.parse("CONST INT A[] = 1, 2\nPRIVATE\nNONVOLATILE INT N[3]");
    stream->flags = TLC_FLAG_CHECKS;
    const auto code = [this](auto push) {
        TLC_NewPSect(stream);
        EXPECT_EQ(push(), 1);
        return Bytes(stream->current->code, stream->current->code + stream->current->size);
    };
    EXPECT_EQ(code([&] { return TLI_PushValue(stream, source.find("A"), 1); }),
              (Bytes{ 1, EEP_LCA, 0, 0, 0, 0, EEP_ADW, EEP_LW }));
    EXPECT_EQ(code([&] { return TLI_PushValue(stream, source.find("N"), -1); }),
              (Bytes{ 3, EEP_CHECK, EEP_LCA, 0, 0, 0, 0, EEP_ADW, EEP_LW }));
    EXPECT_EQ(code([&] { return TLI_PushAddress(stream, source.find("N"), 0); }),
              (Bytes{ EEP_LCA, 0, 0, 0, 0 }));
    EXPECT_EQ(code([&] { return TLI_PushDimension(stream, source.find("A")); }), (Bytes{ 2 }));
}

TEST_F(Constants, PrintTheirValues)
{
    source.parse("CONST INT S = 7\nINT A[] = 1, 2\nSTRING T[] = \"x\", NULL\n"
                 "BOOL B = TRUE\nINT C = S\nINT D = S - 8\nSTRING V = \"x\"\nSTRING U = V\nMESSAGE "
                 "M1 = \"m\"\n"
                 "PRIVATE\nNONVOLATILE INT N[3]");
    const std::string text = written([this](FILE *file) {
        for (const char *name : { "S", "A", "T", "B", "C", "D", "U", "M1", "N" })
            TLI_PrintIdentifier(file, source.find(name), source.module);
    });
    EXPECT_EQ(text, "CONSTANT CONSTANT_CLASS     INT          S Value=7\n"
                    "CONSTANT CONSTANT_CLASS     INT          A[2] Value=1,2,\n"
                    "CONSTANT CONSTANT_CLASS     STRING       T[2] Value=\"x\",\"\",\n"
                    "CONSTANT CONSTANT_CLASS     BOOL         B Value=1\n"
                    "CONSTANT CONSTANT_CLASS     INT          C Value=7\n"
                    "CONSTANT CONSTANT_CLASS     INT          D Value=-1\n"
                    "CONSTANT CONSTANT_CLASS     STRING       U Value=\"x\"\n"
                    "CONSTANT CONSTANT_CLASS     MESSAGE      M1 Value=\"m\"\n"
                    "NON_VOLATILE NONVOL_CLASS       INT          N[3] Value=\n");
}

TEST_F(Constants, NodesCarryAPointer)
{
    int item = 0;
    TLI_IDENTIFIER *node =
        TLIC_Node(nullptr, source.module->domain, nullptr, "NODE1", TLIT_VoidType, &item);
    EXPECT_EQ(TLIC_NodeData(node), &item);
    EXPECT_EQ(TLIC_NodeData(TLIT_IntType), nullptr);
    EXPECT_EQ(TLIC_Node(nullptr, source.module->domain, nullptr, "NODE1", nullptr, &item), nullptr);
}

} // namespace
