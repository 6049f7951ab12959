// The parser of expressions: trees, types and messages of source texts, the questions that can be
// asked of a tree, and texts of any length and depth.
#include "tests/parsed_expression.h"

#include <algorithm>

namespace
{

using Row = ExpressionRow;

std::string repeated(const std::string &text, size_t count)
{
    std::string result;
    for (size_t i = 0; i < count; i++)
        result += text;
    return result;
}

} // namespace

TEST(Expressions, PrioritiesAndGrouping)
{
    static const Row rows[] = {
        { "A + B * C", "(+ A (* B C)) INT" },
        { "A - B - C", "(- (- A B) C) INT" },
        { "A * B / C MOD A", "(MOD (/ (* A B) C) A) INT" },
        { "A & B | C ^ A", "(| (& A B) (^ C A)) INT" },
        { "A << B + C", "(<< A (+ B C)) INT" },
        { "A >> B - C", "(>> A (- B C)) INT" },
        { "A < B == C > A", "(== (< A B) (> C A)) BOOL" },
        { "Q OR Q AND Q", "(OR Q (AND Q Q)) BOOL" },
        { "A == B AND C != A", "(AND (== A B) (!= C A)) BOOL" },
        { "NOT Q AND Q", "(AND (NOT Q) Q) BOOL" },
        { "- A + B", "(+ (- A) B) INT" },
        { "A * - B", "(* A (- B)) INT" },
        { "A - - B", "(- A (- B)) INT" },
        { "- (- A)", "(- (- A)) INT" },
        { "~ A & B", "(& (~ A) B) INT" },
        { "(A + B) * C", "(* (+ A B) C) INT" },
        { "((A))", "A INT" },
        { "A & B == C", "null|3 '&' not supported between INT and BOOL" },
        { "a + B", "a .. + .. B <UNTYPED>|3 'a' - Unknown identifier" },
        { "Q and Q", "(and Q Q) BOOL" },
    };
    expect_expressions(rows);
    static const Row assignments[] = {
        { "A = B = C", "(= A (= B C)) INT" },
        { "A = B + C = A", "null|3 Target of assignment is not a variable|3 '=' not supported "
                           "between INT and INT" },
        { "M10[1] = M10[B]", "(= M10[1] M10[B]) INT" },
    };
    expect_expressions(assignments, TLE_USE_STATEMENT);
}

TEST(Expressions, ListsThatDoNotFold)
{
    static const Row rows[] = {
        { "", "null|3 Missing expression" },
        { "- - A", "null|3 Bad expression" },
        { "NOT NOT Q", "null|3 Bad expression" },
        { "(A) (B)", "null|3 Bad expression" },
        { "A (B)", "null|3 Identifier cannot be called" },
        { "A B", "A .. B INT|3 Redundant expression" },
        { "A = ", "null|3 Bad operator" },
        { "-", "null|3 Bad operator" },
        { "A * / B C", "null|3 Bad expression" },
        { "*", "null|3 '*' not supported between <VOID> and <VOID>" },
        { "A]", "A INT|3 Unmatched brackets" },
        { "(A]", "BRACKET |3 Unmatched brackets|3 ')' expected here" },
        { "(A", "BRACKET |3 ')' expected here" },
        { "BEGIN", "BEGIN <UNTYPED>" },
        { "A BEGIN", "A .. BEGIN INT|3 Redundant expression" },
    };
    expect_expressions(rows);
}

TEST(Expressions, NamesByClass)
{
    static const Row rows[] = {
        { "VOLTAGE", "1 QUANTITY_TYPE" },
        { "INT", "0 QUANTITY_TYPE" },
        { "STRING", "STRING <UNTYPED>" },
        { "GREEN", "1 COLOUR" },
        { "HUE", "2 COLOUR" },
        { "FIVE", "5 INT" },
        { "HELLO", "\"hello\" STRING" },
        { "M.A", "M.A INT" },
        { "_A", "A INT" },
        { "TABLE[1]", "TABLE[1] INT" },
        { "NULL", "NULL VOID" },
        { "1.5V", "1500 VOLTAGE" },
        { "0x1F", "31 INT" },
        { "\"a\\tb\"", "\"a\tb\" STRING" },
        { "{X}", "{X} DATA" },
        { "{X/CONNECTOR}", "{X} CONNECTOR" },
        { "{X/TRUE}", "{X} <UNTYPED>|3 'TRUE' - Wrong class of identifier|3 Unknown type" },
        { "F", "<ADDRESS>F F" },
    };
    expect_expressions(rows);
}

TEST(Expressions, Subscripts)
{
    static const Row rows[] = {
        { "M10[0]", "M10[0] INT" },
        { "M10[9]", "M10[9] INT" },
        { "M10[-1]", "M10[-1] INT|3 Index out of bounds" },
        { "OPEN[1000]", "OPEN[1000] INT" },
        { "M10[1V]",
          "M10[1000] INT|3 Array must be indexed by 'INT' values|3 Index out of bounds" },
        { "HUES[GREEN]", "HUES[1] INT" },
        { "M10[A + 1] + 1", "(+ M10[(+ A 1)] 1) INT" },
        { "M10[]", "M10 INT|3 Missing expression" },
        { "M10[1", "M10[1] INT|3 ']' expected here" },
        { "M10[M10[M10[2]]]", "M10[M10[M10[2]]] INT" },
    };
    expect_expressions(rows);
}

TEST(Expressions, Fields)
{
    static const Row rows[] = {
        { "R:LEFT", "(: R LEFT) INT" },
        { "R:LIST[2]", "(: R LIST[2]) INT" },
        { "P->LEFT + 1", "(+ (-> P LEFT) 1) INT" },
        { "RR[1]:LEFT", "(: RR[1] LEFT) INT" },
        { "P->NEXT->NEXT->LEFT", "(-> (-> (-> P NEXT) NEXT) LEFT) INT" },
        { "O:IN:LEFT", "(: O (: IN LEFT)) INT" },
        { "P -> IN : LEFT", "P .. -> .. IN .. : .. LEFT PAIR_AT|3 'IN' - Unknown identifier|3 "
                            "'LEFT' - Unknown identifier" },
        { "A * P->LEFT", "null|3 '*' not supported between INT and PAIR_AT" },
        { "A * (P->LEFT)", "(* A (-> P LEFT)) INT" },
        { "R:", "R .. : .. <END OF LINE> PAIR|3 Field selector expected" },
        { "R:ZZ", "R .. : .. ZZ PAIR|3 'ZZ' - Unknown identifier" },
        { "A:LEFT", "A .. : .. LEFT INT|3 'LEFT' - Unknown identifier" },
        { "A -> B", "null|3 '->' not supported between INT and INT" },
        { "- R:LEFT", "null|3 '-' not supported between <VOID> and PAIR" },
        { "(R:LEFT)", "(: R LEFT) INT" },
        { "R", "R PAIR" },
    };
    expect_expressions(rows);
    static const Row values[] = {
        { "R", "R PAIR|3 Identifier cannot be loaded" },
        { "(OPEN)", "BRACKET |3 Identifier cannot be loaded" },
        { "P", "P PAIR_AT" },
    };
    expect_expressions(values, TLE_USE_VALUE);
}

TEST(Expressions, RecordsThatPointAtOneAnother)
{
    ExpressionSource source("TYPEDEF RECORD ODD(INT A)\n"
                            "TYPEDEF -> ODD ODD_AT\n"
                            "TYPEDEF RECORD EVEN(ODD_AT LINK)\n"
                            "TYPEDEF -> EVEN EVEN_AT\n"
                            "TYPEDEF RECORD ODD(EVEN_AT LINK)\n"
                            "PRIVATE\n"
                            "VAR ODD_AT START\n");
    EXPECT_EQ(source.parse("START->LINK"), "(-> START LINK) EVEN_AT");
    EXPECT_EQ(source.parse("START->LINK->LINK->LINK"),
              "(-> (-> (-> START LINK) LINK) LINK) EVEN_AT");
    EXPECT_EQ(source.parse("START->LINK->A"),
              "START .. -> .. LINK .. -> .. A ODD_AT|3 Field selector expected");
}

TEST(Expressions, Calls)
{
    static const Row rows[] = {
        { "F()", "<CALL>F() INT" },
        { "ONE(A + 1)", "<CALL>ONE((+ A 1)) INT" },
        { "ONE(ONE(ONE(1)))", "<CALL>ONE(<CALL>ONE(<CALL>ONE(1))) INT" },
        { "TWO(A, B) * 2", "(* <CALL>TWO(A,B) 2) INT" },
        { "H(1)", "<INDIRECT CALL>H(1) INT" },
        { "TWO(A,,B)", "<CALL>TWO(A,B) INT|3 Missing expression" },
        { "H", "H HANDLER" },
        { "H == F", "null|3 Function declaration does not match prototype|3 '==' not supported "
                    "between HANDLER and F" },
        { "H == ONE", "(== H <ADDRESS>ONE) BOOL" },
    };
    expect_expressions(rows);
}

TEST(Expressions, CallsOfConstants)
{
    ExpressionSource source("TYPEDEF FUNCTION INT HANDLER(INT X)\n"
                            "FUNCTION INT F(INT X)\n"
                            "CONST HANDLER FIRST = F\n"
                            "PRIVATE\n"
                            "VAR INT A\n");
    EXPECT_EQ(source.parse("A + FIRST(1)"), "(+ A <CALL>F(1)) INT");
}

// A client may hold any link of a list.
TEST(Expressions, AppendsBehindTheLastLink)
{
    TLE_TERM *list = TLE_Append(nullptr, TLE_ConstantTerm(TLE_USE_VALUE, TLIT_IntType, 1));
    TLE_Append(list, TLE_ConstantTerm(TLE_USE_VALUE, TLIT_IntType, 2));
    TLE_Append(list->right, TLE_ConstantTerm(TLE_USE_VALUE, TLIT_IntType, 3));
    TLE_Append(list, TLE_ConstantTerm(TLE_USE_VALUE, TLIT_IntType, 4));
    for (int32_t i = 0; i < 4; i++) {
        int32_t value = 0;
        EXPECT_EQ(TLE_Constant(TLE_NthExpression(list, i), &value), 1);
        EXPECT_EQ(value, i + 1);
    }
    EXPECT_EQ(TLE_NthExpression(list, 4), nullptr);
    TLE_DelExpression(list);
}

TEST(Expressions, Arguments)
{
    static const Row rows[] = {
        { "BY_VAR(A)", "<CALL>BY_VAR(A) VOID" },
        { "BY_VAR(R:LEFT)", "<CALL>BY_VAR((: R LEFT)) VOID" },
        { "BY_VAR(5)", "<CALL>BY_VAR(5) VOID|3 Argument mismatch : 'INT' passed to 'VAR INT'" },
        { "BY_CONST(\"x\")", "<CALL>BY_CONST(\"x\") VOID|3 Argument mismatch : 'STRING' passed to "
                             "'CONST STRING'" },
        { "BY_VARS(M10)", "<CALL>BY_VARS(M10) VOID" },
        { "BY_VARS(M10[2])", "<CALL>BY_VARS(M10[2]) VOID" },
        { "BY_VARS(A)", "<CALL>BY_VARS(A) VOID" },
        { "TEXT(LETTERS)", "<CALL>TEXT(LETTERS[0]) VOID" },
        { "TEXT(LETTERS[3])", "<CALL>TEXT(LETTERS[3]) VOID" },
        { "TEXT(NULL)", "<CALL>TEXT(NULL) VOID" },
        { "TAKE_AT(R)", "<CALL>TAKE_AT(2:R) VOID" },
        { "TAKE_AT(P)", "<CALL>TAKE_AT(P) VOID" },
        { "BY_RECORD(P)", "<CALL>BY_RECORD(1:P) VOID" },
        { "BY_RECORD(R)", "<CALL>BY_RECORD(R) VOID" },
        { "SHOW(\"%d\", A, M10, LETTERS)", "<CALL>SHOW(\"%d\",A,3:M10[0],3:LETTERS[0]) VOID" },
    };
    expect_expressions(rows, TLE_USE_STATEMENT);
}

TEST(Expressions, Questions)
{
    ExpressionSource source;
    TLE_TERM *term = source.tree("P->NEXT->LEFT", TLE_USE_VALUE);
    EXPECT_STREQ(TLI_IdentifierName(TLE_TermIdentifier(term)), "LEFT");
    EXPECT_EQ(TLE_CheckLHS(term), 1);
    EXPECT_EQ(TLE_CheckSimpleCall(term), 0);
    term = source.tree("TWO( A , 12 ) ", TLE_USE_STATEMENT);
    EXPECT_EQ(TLE_CheckSimpleCall(term), 1);
    int32_t value = 0;
    EXPECT_EQ(TLE_Constant(TLE_CallArgument(term, 0), &value), 0);
    EXPECT_EQ(TLE_Constant(TLE_CallArgument(term, 1), &value), 1);
    EXPECT_EQ(value, 12);
    EXPECT_STREQ(TLE_TermValue(TLE_CallArgument(term, 1)), "12");
    EXPECT_EQ(TLE_CallArgument(term, 2), nullptr);
    EXPECT_EQ(TLE_CallArgument(TLE_CallArgument(term, 0), 0), nullptr);
    char *chars = TLE_ExpressionChars(term);
    EXPECT_STREQ(chars, "TWO( A , 12 ) ");
    SH_Free(chars);
    EXPECT_EQ(TLE_CheckLHS(source.tree("TABLE[1]", TLE_USE_VALUE)), 0);
    term = source.tree("(1.5V)", TLE_USE_VALUE);
    EXPECT_STREQ(TLE_TermValue(term), "1.5V");
    EXPECT_EQ(TLE_Type(term), nullptr);
    EXPECT_EQ(TLE_Type(source.tree("VOLTAGE", TLE_USE_VALUE)), TLIT_Voltage);
    TLE_DelExpression(nullptr);
}

TEST(Expressions, StopsAtTheTokensOfForAndAtTheStopToken)
{
    ExpressionSource source;
    EXPECT_EQ(source.parse("A TO B"), "A INT");
    EXPECT_EQ(TLT_NextToken(source.statement(), nullptr), TLT_TOKEN_TO);
    EXPECT_EQ(source.parse("A BY B"), "A INT");
    EXPECT_EQ(source.parse("A, B"), "A INT");
    EXPECT_EQ(source.parse("A + B] C", TLE_USE_VALUE, TLT_TOKEN_CLOSE_SQUARE), "(+ A B) INT");
    EXPECT_EQ(TLT_NextToken(source.statement(), nullptr), TLT_TOKEN_CLOSE_SQUARE);
}

// A sum as long as a file must neither exhaust the stack nor take time by the square of its length.
TEST(Expressions, LongChains)
{
    ExpressionSource source;
    static const char *const links[] = { "A + ", "P->LEFT + ", "A - - ", "ONE(A) + ", "* " };
    for (const char *link : links) {
        TLE_TERM *term = source.tree(repeated(link, 100000) + "A", TLE_USE_CONDITION);
        EXPECT_EQ(term == nullptr, std::string(link) == "* ") << link;
    }
    const TLE_TERM *term = source.tree("P" + repeated("->NEXT", 100000), TLE_USE_CONDITION);
    ASSERT_NE(term, nullptr);
    EXPECT_STREQ(TLE_TypeText(term), "PAIR_AT");
    source.tree(repeated("A = ", 5500) + "A", TLE_USE_STATEMENT);
    EXPECT_EQ(source.messages(), "");
    source.tree(repeated("A = ", 20000) + "A", TLE_USE_STATEMENT);
    EXPECT_EQ(source.messages(), "|3 Expression too complex");
    source.tree(repeated("F() ", 100000), TLE_USE_STATEMENT);
    source.tree(repeated("A ", 50000), TLE_USE_STATEMENT);
}

TEST(Expressions, DeepBrackets)
{
    ExpressionSource source;
    struct {
        const char *open, *middle, *close;
    } static const shapes[] = {
        { "(", "A", ")" }, { "M10[", "A", "]" }, { "ONE(", "A", ")" }, { "A * (B + ", "C", ")" }
    };
    for (const auto &shape : shapes) {
        EXPECT_NE(
            source.tree(repeated(shape.open, 1000) + shape.middle + repeated(shape.close, 1000),
                        TLE_USE_CONDITION),
            nullptr);
        EXPECT_EQ(source.messages(), "") << shape.open;
        source.tree(repeated(shape.open, 100000) + shape.middle, TLE_USE_CONDITION);
        EXPECT_EQ(source.messages(), "|3 Expression too complex") << shape.open;
    }
}
