/*
 * Functions: their scope and arguments, and when two of them count as the same.
 */
#include "names/tliv.h"
#include "tests/parsed_source.h"
#include "tests/written.h"

#include <gtest/gtest.h>
#include <ostrum/sh.h>
#include <ostrum/tlit.h>

namespace
{

constexpr const char *mismatch = "Function declaration does not match prototype";

TEST(Functions, MatchToTheNamesOfTheirArguments)
{
    ParsedSource source;
    source.parse("FUNCTION\nINT F(INT A, VAR CHAR B[])\nINT SAME(INT A, VAR CHAR B[])\n"
                 "INT NAMED(INT A, VAR CHAR C[])\nINT PASSED(INT A, CONST CHAR B[])\n"
                 "INT TYPED(INT A, VAR INT B[])\nINT RANGED(INT A, VAR CHAR B[BOOL])\n"
                 "INT SHORTER(INT A)\nINT LONGER(INT A, VAR CHAR B[], INT D)\nINT NONE()\n"
                 "CHAR RESULT(INT A, VAR CHAR B[])");
    ASSERT_EQ(source.messages(), "");
    TLI_IDENTIFIER *f = source.find("F");
    EXPECT_EQ(TLIV_CheckPrototype(nullptr, f, source.find("SAME")), 1);
    EXPECT_EQ(source.messages(), "");
    const char *const others[] = { "NAMED",   "PASSED", "TYPED", "RANGED",
                                   "SHORTER", "LONGER", "NONE",  "RESULT" };
    for (const char *name : others) {
        parsed_messages.clear();
        EXPECT_EQ(TLIV_CheckPrototype(nullptr, f, source.find(name)), 0) << name;
        EXPECT_EQ(TLIV_CheckPrototype(nullptr, source.find(name), f), 0) << name;
        EXPECT_EQ(source.messages(), std::string(mismatch) + "|" + mismatch) << name;
    }
    EXPECT_EQ(TLIV_CompareFunctions(nullptr, f, TLIT_IntType, 0), 0);
    EXPECT_EQ(TLIV_CompareFunctions(nullptr, nullptr, f, 0), 0);
}

TEST(Functions, OnlyQuantityIsLoose)
{
    ParsedSource source;
    source.parse(
        "FUNCTION\nVOID Q(QUANTITY A)\nVOID V(VOLTAGE A)\nVOID I(INT A)\nVOID C(CURRENT A)");
    const struct {
        const char *first, *second;
        int32_t loose;
    } rows[] = {
        { "Q", "V", 1 }, { "V", "Q", 1 }, { "Q", "I", 1 }, { "I", "V", 0 }, { "V", "C", 0 }
    };
    for (const auto &row : rows) {
        TLI_IDENTIFIER *first = source.find(row.first);
        TLI_IDENTIFIER *second = source.find(row.second);
        EXPECT_EQ(TLIV_CompareFunctions(nullptr, first, second, 0), row.loose)
            << row.first << row.second;
        EXPECT_EQ(TLIV_CompareFunctions(nullptr, first, second, 1), 0) << row.first << row.second;
    }
}

TEST(Functions, ArgumentsComeInAnyOrderOfAsking)
{
    ParsedSource source;
    source.parse("TYPEDEF FUNCTION VOID T(INT A, B, C)\nFUNCTION VOID F(INT A, B, C)\n"
                 "PRIVATE\nVAR T V\nINT N");
    ASSERT_EQ(source.messages(), "");
    for (const char *name : { "F", "V" }) {
        TLI_IDENTIFIER *function = source.find(name);
        std::string order;
        for (int32_t index : { 2, 0, 1, 1, 2, 0 }) {
            order += TLI_IdentifierName(TLIV_GetFunctionArgument(function, index));
        }
        EXPECT_EQ(order, "CABBCA") << name;
        EXPECT_EQ(TLIV_GetFunctionArgument(function, 3), nullptr);
        EXPECT_EQ(TLIV_GetFunctionArgument(function, -1), nullptr);
    }
    EXPECT_EQ(TLIV_GetFunctionArgument(source.find("N"), 0), nullptr);
}

TEST(Functions, QuestionsAboutOtherNamesAreHarmless)
{
    ParsedSource source;
    source.parse("PRIVATE\nVAR INT N");
    for (TLI_IDENTIFIER *other : { source.find("N"), static_cast<TLI_IDENTIFIER *>(nullptr) }) {
        TLIV_SetFunctionClass(other, 3);
        TLIV_SetFunctionLineNumber(other, 3);
        EXPECT_EQ(TLIV_FunctionClass(other), 0);
        EXPECT_EQ(TLIV_GetFunctionLineNumber(other), 0);
        EXPECT_EQ(TLIV_FunctionQualifiers(other), 0);
        EXPECT_EQ(TLIV_GetFunctionBlock(other), nullptr);
        EXPECT_EQ(TLIV_FunctionScope(other), nullptr);
        EXPECT_EQ(TLIV_ExtraArgumentsAllowed(other), 0);
        TLIV_PushScope(source.module->domain, other);
        TLIV_PopScope(source.module->domain, other);
        EXPECT_EQ(TLI_GetScope(source.module->domain, nullptr), source.module->statics);
    }
}

TEST(Functions, TheScopeIsLocalWhileItIsOnTop)
{
    ParsedSource source;
    source.parse("PRIVATE\nFORWARD FUNCTION VOID F(INT A)");
    TLI_IDENTIFIER *function = source.find("F");
    TLI_SCOPE *scope = TLIV_FunctionScope(function);
    EXPECT_EQ(TLI_GetScopeIdentifier(scope), function);
    EXPECT_EQ(TLI_ScopeAccessType(scope), TLI_NON_LOCAL);
    TLIV_PushScope(source.module->domain, function);
    EXPECT_EQ(TLI_ScopeAccessType(scope), TLI_LOCAL);
    TLIV_PopScope(source.module->domain, function);
    EXPECT_EQ(TLI_ScopeAccessType(scope), TLI_NON_LOCAL);
}

TEST(Functions, PrintTheirArgumentsClassAndFrame)
{
    ParsedSource source;
    source.parse("FUNCTION VOID F(CHAR A, VAR INT B[])\nTREE INT T()");
    const std::string text = written([&](FILE *file) {
        TLI_PrintIdentifier(file, source.find("F"), source.module);
        TLI_PrintIdentifier(file, source.find("T"), source.module);
        TLI_PrintIdentifier(file, TLIV_GetFunctionArgument(source.find("F"), 1), source.module);
    });
    EXPECT_EQ(text, "FUNCTION FUNCTION_CLASS     VOID         F(A,B) Class=FUNCTION,Stack=12\n"
                    "FUNCTION FUNCTION_CLASS     INT          T() Class=TREE,Stack=0\n"
                    "ARGUMENT ARGUMENT_CLASS     INT[]        B[0] Offset=4, VAR\n");
}

} // namespace
