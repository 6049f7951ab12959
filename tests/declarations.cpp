/*
 * The declaration parser: what each keyword opens, what each rule accepts and the message for what it
 * does not.
 */
#include "expr/tle.h"
#include "names/tlic.h"
#include "names/tliv.h"
#include "tests/parsed_source.h"

#include <gtest/gtest.h>
#include <ostrum/eep.h>
#include <ostrum/tlit.h>
#include <ostrum/tls.h>

namespace
{

struct CASE {
    const char *source;
    const char *messages; // joined with "|"
};

void expect_messages(const CASE &row)
{
    ParsedSource source;
    source.parse(row.source);
    EXPECT_EQ(source.messages(), row.messages) << row.source;
}

TEST(Declarations, KeywordsTellWhereTheyMayStand)
{
    const CASE rows[] = {
        { "", "" },
        { "   ; nothing but a comment", "" },
        { "USES", "" },
        { "MODULE N", "Multiple MODULE declarations" },
        { "VAR", "VAR section not permitted in public portion" },
        { "NONVOLATILE", "VAR section not permitted in public portion" },
        { "END", "" },
        { "PRIVATE\nINT A", "Statement ignored" },
        { "ENTRY INT", "" },
        { "PRIVATE\nFORWARD INT", "" },
        { "TYPEDEF INT", "Statement ignored" },
        { "PRIVATE\nFUNCTION VOID F()\nBEGIN\nEND\nINT A", "Statement ignored" },
        { "PRIVATE\nBEGIN\n  X = ( 3\n  IF NOTHING\nEND",
          "No FUNCTION declaration - BEGIN-END block discarded" },
    };
    for (const CASE &row : rows) {
        ParsedSource source;
        source.parse(row.source);
        EXPECT_EQ(source.messages().substr(0, std::string(row.messages).size()), row.messages)
            << row.source;
        if (*row.messages == '\0') {
            EXPECT_EQ(source.messages(), "") << row.source;
        }
    }
}

TEST(Declarations, AModuleIsItsOwnHeader)
{
    ParsedSource source;
    source.module->source_type = TLT_TOKEN_BODY;
    source.parse("module m\nMODULE OTHER");
    EXPECT_EQ(source.messages(), "Incorrect header for this BODY");
}

TEST(Declarations, KeywordOpensAModeForTheLinesBehindIt)
{
    ParsedSource source;
    source.parse("CONST\nINT A = 1, B = A + 1\n\nINT C = 3\n"
                 "ENUM\nE = ONE TWO\nG =\n"
                 "PRIVATE\nVAR\nINT V, W[2]\nCHAR T\nPRAGMA (V, KEEP) = \"x\"\nINT U\n"
                 "ASSERT B == 2\nINT X");
    EXPECT_EQ(source.messages(), "");
    for (const char *name : { "A", "B", "C", "E", "ONE", "TWO", "G", "V", "W", "T", "U", "X" }) {
        EXPECT_NE(source.find(name), nullptr) << name;
    }
    intptr_t value = 0;
    EXPECT_EQ(TLIC_ConstantValue(source.module, source.find("B"), 0, &value), 1);
    EXPECT_EQ(value, 2);
}

TEST(Declarations, RulesTellWhatTheyExpect)
{
    const CASE rows[] = {
        { "CONST 3 = 4", "TYPE expected here" },
        { "CONST THING A = 4", "'THING' - Unknown identifier" },
        { "CONST INT = 1", "'<IDENTIFIER>' expected here" },
        { "CONST INT A 1", "'=' expected here" },
        { "CONST INT B[2] = 1, 2, 3", "'<IDENTIFIER>' expected here" },
        { "CONST INT A = 1 2", "Redundant expression|Expression too complex" },
        { "PRIVATE\nVAR INT A[1.5V]", "Bad array index type" },
        { "PRIVATE\nVAR INT A[INT]", "Bad array index type" },
        { "PRIVATE\nVAR INT A[2", "']' expected here" },
        { "TYPEDEF RECORD R INT", "'(' expected here" },
        { "TYPEDEF RECORD R (INT A, B)", "'B' - Unknown identifier" },
        { "TYPEDEF RECORD R (INT A", "')' expected here" },
        { "TYPEDEF -> R P\nCONST R A = ()", "Illegal type for constant" },
        { "PRAGMA (NOTHING, X)", "'NOTHING' - Unknown identifier" },
        { "PRAGMA (M, X) = 3", "'<STRING LITERAL>' expected here" },
        { "ASSERT 1 == 1", "" },
        { "PRIVATE\nVAR INT A\nASSERT A == 1", "ASSERT expression must be a BOOL constant" },
    };
    for (const CASE &row : rows)
        expect_messages(row);
}

TEST(Declarations, HeadsOfFunctionsTellWhatTheyExpect)
{
    const CASE rows[] = {
        { "FUNCTION 3", "TYPE expected here" },
        { "FUNCTION INT", "'<IDENTIFIER>' expected here" },
        { "FUNCTION INT F", "'(' expected here" },
        { "FUNCTION INT F(INT A", "')' expected here" },
        { "FUNCTION INT F(INT A, VAR B)", "<Type> expected" },
        { "FUNCTION INT F(INT A, A)", "'A' already declared" },
        { "PRIVATE\nFUNCTION VOID F()\nFUNCTION VOID F()",
          "Missing FORWARD keyword on private prototype|Unexpected characters or keyword" },
        { "PRIVATE\nFORWARD FUNCTION VOID F()\nFUNCTION VOID F()", "" },
        { "SYSCALL (1, \"x\") INT F()", "'INT' constant expected here" },
        { "SYSCALL (-1) INT F()", "Failed to declare a SYSCALL" },
        { "SYSCALL (70000) INT F()", "Failed to declare a SYSCALL" },
        { "SYSCALL (1) INT F(INT A ..)\n(2, 3) INT G(..)", "" },
    };
    for (const CASE &row : rows)
        expect_messages(row);
}

TEST(Declarations, SyscallsCarryTheNumberOfTheirLibrary)
{
    ParsedSource source;
    source.parse("PRAGMA (M, DLL_NAME) = \"library.dll,3\"\nSYSCALL (5, 128) INT F(INT A ..)");
    EXPECT_EQ(source.messages(), "");
    EEP_MODULE *registry = TLP_SyscallData(source.module);
    EXPECT_EQ(EEP_Syscall(registry, "M.F"), 3 * 256 + 5);
    EXPECT_EQ(EEP_SyscallFlags(registry, 3 * 256 + 5), 128u);
    EXPECT_EQ(TLIV_FunctionClass(source.find("F")), TLP_SECTION_SYSCALL);
    EXPECT_EQ(TLIV_ExtraArgumentsAllowed(source.find("F")), 1);
    source.parse("SYSCALL (\"x\", 1) INT G(INT A)");
    EXPECT_EQ(source.messages(), "'INT' constant expected here");
    ASSERT_NE(source.find("G"), nullptr);
    EXPECT_EQ(TLIV_FunctionClass(source.find("G")), TLP_SECTION_SYSCALL);
    EXPECT_EQ(EEP_Syscall(registry, "M.G"), 0);
}

TEST(Declarations, LinesBehindFunctionDeclareInGlobals)
{
    ParsedSource source;
    source.parse("FUNCTION\nINT F(INT A)\nVOID G(A, B)\nVOID H(VAR INT A, B, CONST E C)\n"
                 "ENTRY TREE INT T()");
    EXPECT_EQ(source.messages(), "<Type> expected|<Type> expected");
    for (const char *name : { "F", "G", "H", "T" }) {
        TLI_IDENTIFIER *function = TLI_FindScopeIdentifier(source.module->globals, name);
        ASSERT_NE(function, nullptr) << name;
        EXPECT_EQ(TLIV_FunctionQualifiers(function), *name == 'T' ? TLIV_ENTRY : TLIV_PUBLIC);
    }
    TLI_IDENTIFIER *second = TLIV_GetFunctionArgument(source.find("H"), 1);
    EXPECT_STREQ(TLI_IdentifierName(second), "B");
    EXPECT_EQ(TLIV_ArgumentPassType(second), TLIV_BY_VAR);
    EXPECT_EQ(source.module->open_functions->next, nullptr);
}

TEST(Declarations, ADefinitionTakesItsPrototypesPlace)
{
    ParsedSource source;
    source.parse("FUNCTION VOID F(INT A)\nPRIVATE");
    TLI_IDENTIFIER *prototype = source.find("F");
    source.parse("FUNCTION VOID F(INT A)\nVAR CHAR L\nBEGIN\nEND");
    EXPECT_EQ(source.messages(), "");
    EXPECT_EQ(source.find("F"), prototype);
    EXPECT_EQ(TLIV_GetFunctionLineNumber(prototype), 3);
    EXPECT_NE(TLIV_GetFunctionBlock(prototype), nullptr);
    EXPECT_EQ(TLI_ScopeSize(TLIV_FunctionScope(prototype)), 6);
    EXPECT_EQ(source.find("_F"), nullptr);
    EXPECT_EQ(source.find("A"), nullptr) << "the function's scope has been popped";
    EXPECT_EQ(TLI_GetScope(source.module->domain, nullptr), source.module->statics);
}

TEST(Declarations, FunctionTypesHaveAHiddenPrototype)
{
    ParsedSource source;
    source.parse("TYPEDEF FUNCTION INT HANDLER(INT A)\nTYPEDEF TREE\nVOID PLAIN()\nPRIVATE\n"
                 "VAR HANDLER H");
    EXPECT_EQ(source.messages(), "");
    EXPECT_EQ(TLIT_FunctionTypePrototype(source.find("HANDLER")), source.find("_HANDLER"));
    EXPECT_EQ(TLIV_FunctionQualifiers(source.find("_PLAIN")), TLIV_PROTOTYPE);
    EXPECT_STREQ(TLI_IdentifierName(TLIV_GetFunctionArgument(source.find("H"), 0)), "A");
    EXPECT_EQ(source.module->open_functions, nullptr);
}

TEST(Declarations, RecordsMayBeNamedBeforeTheyAreDefined)
{
    ParsedSource source;
    source.parse("TYPEDEF -> R P\nTYPEDEF RECORD R (P NEXT, CHAR C)\nS (INT A[2], R INNER)\nUSES");
    EXPECT_EQ(source.messages(), "");
    EXPECT_EQ(TLIT_PointerAt(source.find("P")), source.find("R"));
    EXPECT_EQ(TLIT_TypeSizeof(source.find("R"), 1), 6);
    EXPECT_EQ(TLIT_TypeSizeof(source.find("S"), 1), 14);
    EXPECT_EQ(TLI_IdentifierScope(source.find("S")), source.module->globals);
    EXPECT_EQ(source.find("NEXT"), nullptr) << "the next keyword ends the record";
    EXPECT_EQ(TLI_GetScope(source.module->domain, nullptr), source.module->globals);
}

TEST(Declarations, DimensionsComeFromNumbersRangesAndInitialisers)
{
    ParsedSource source;
    source.parse("ENUM E = ONE TWO THREE\nCONST INT N = 2 + 2\nINT A[] = 1, 2, 3\n"
                 "PRIVATE\nVAR INT B[N], C[E], D[]");
    EXPECT_EQ(source.messages(), "");
    const struct {
        const char *name;
        int32_t dimension;
        const char *range;
    } rows[] = { { "N", -1, nullptr },
                 { "A", 3, "INT" },
                 { "B", 4, "INT" },
                 { "C", 3, "E" },
                 { "D", 0, "INT" } };
    for (const auto &row : rows) {
        TLI_IDENTIFIER *range = nullptr;
        EXPECT_EQ(TLI_IdentifierDimension(source.find(row.name), &range), row.dimension)
            << row.name;
        EXPECT_EQ(range, row.range != nullptr ? source.find(row.range) : nullptr) << row.name;
    }
}

TEST(Declarations, PragmasNeedAValue)
{
    ParsedSource source;
    source.parse("PRAGMA (M, EMPTY)\nPRAGMA (M, first) = \"\"\nPRAGMA (INT, X) = \"y\"");
    EXPECT_EQ(source.messages(), "");
    EXPECT_EQ(TLI_FindPragma(source.find("M"), "EMPTY"), nullptr);
    EXPECT_STREQ(TLI_FindPragma(source.find("M"), "FIRST"), "");
}

TEST(Declarations, InitialisersNestedTooDeepAreRefused)
{
    // A record that holds itself once it has some size, initialised as deep as brackets go.
    std::string source = "TYPEDEF RECORD R (INT A, R B)\nCONST R C = ";
    for (int i = 0; i < 100000; i++)
        source += "(1,";
    ParsedSource parsed;
    parsed.parse(source);
    EXPECT_EQ(parsed.messages().substr(0, 22), "Expression too complex");
}

TEST(Declarations, TheFiftyFirstErrorStopsTheParse)
{
    std::string fifty = "PRIVATE\n";
    for (int i = 0; i < 50; i++)
        fifty += "X\n";
    ParsedSource source;
    EXPECT_EQ(source.parse(fifty), 0);
    EXPECT_EQ(source.parse("X"), 3);
    EXPECT_EQ(parsed_messages.back(), "Compilation abandoned - too many errors");

    ParsedSource unlimited;
    TLP_SetModuleFlags(unlimited.module, TLP_FLAG_NO_ERROR_LIMIT);
    EXPECT_EQ(unlimited.parse(fifty + "X\nX"), 0);
}

} // namespace
