// Operators: the types they take and give, constants folded, and the code of each.
#include "tests/parsed_expression.h"

#include "codegen/tlc.h"

namespace
{

using Row = ExpressionRow;

// What the source of an assignment to a target of each type has to say.
std::string assignment(ExpressionSource *source, const std::string &text)
{
    const TLE_TERM *term = source->tree(text, TLE_USE_STATEMENT);
    if (term == nullptr) return source->messages();
    return std::to_string(term->extra) + " " + TLE_TypeText(term) + source->messages();
}

std::string code_of(ExpressionSource *source, const std::string &text, int32_t mode = 0)
{
    TLE_TERM *term = source->tree(text, TLE_USE_STATEMENT);
    if (term == nullptr) return "null" + source->messages();
    TLC_STREAM *stream = TLC_NewStream(source->module(), 0);
    TLC_NewPSect(stream);
    testing::internal::CaptureStdout();
    TLE_ExpressionCode(stream, term, mode);
    testing::internal::GetCapturedStdout();
    std::string code;
    for (const TLC_PSECT *section = stream->code.head; section != nullptr;
         section = section->next) {
        code += section == stream->code.head ? "" : "|";
        uint32_t at = 0;
        while (at < section->size) {
            int32_t kind = 0;
            int32_t size = 0;
            const int32_t opcode = section->code[at++];
            const char *name =
                EEP_Mnemonic(TLP_SyscallData(source->module()), opcode, &kind, &size);
            code += std::string(name) + " ";
            at += static_cast<uint32_t>(size);
        }
    }
    TLC_DelStream(stream);
    while (!code.empty() && code.back() == ' ')
        code.pop_back();
    return code + source->messages();
}

} // namespace

TEST(Operators, TypesOfSumsAndProducts)
{
    static const Row rows[] = {
        { "U + U", "(+ U U) VOLTAGE" },
        { "- U", "(- U) VOLTAGE" },
        { "LETTER + SMALL", "(+ LETTER SMALL) INT" },
        { "ANY - A", "(- ANY A) INT" },
        { "U + I", "null|3 '+' not supported between VOLTAGE and CURRENT" },
        { "W + A", "null|3 '+' not supported between WORD and INT" },
        { "W + W", "(+ W W) WORD" },
        { "FL + FL", "null|3 '+' not supported between FLOAT and FLOAT" },
        { "- K", "null|3 '-' not supported between <VOID> and COLOUR" },
        { "I * Z", "(* I Z) VOLTAGE" },
        { "Z * I", "(* Z I) VOLTAGE" },
        { "U / Z", "(/ U Z) CURRENT" },
        { "U / I", "(/ U I) RESISTANCE" },
        { "1 / T", "(/ 1 T) FREQUENCY" },
        { "A / FQ", "(/ A FQ) TIME" },
        { "U * A", "(* U A) VOLTAGE" },
        { "A * U", "(* A U) VOLTAGE" },
        { "A / U", "(/ A U) VOLTAGE" },
        { "U / U", "(/ U U) INT" },
        { "U * U", "null|3 '*' not supported between VOLTAGE and VOLTAGE" },
        { "U MOD A", "null|3 'MOD' not supported between VOLTAGE and INT" },
        { "U & A", "null|3 '&' not supported between VOLTAGE and INT" },
        { "T / FQ", "null|3 '/' not supported between TIME and FREQUENCY" },
    };
    expect_expressions(rows, TLE_USE_CONDITION);
}

TEST(Operators, Comparisons)
{
    static const Row rows[] = {
        { "A == LETTER", "(== A LETTER) BOOL" },
        { "U < ANY", "(< U ANY) BOOL" },
        { "U < A", "null|3 '<' not supported between VOLTAGE and INT" },
        { "K == RED", "(== K 0) BOOL" },
        { "S == \"x\"", "(== S \"x\") BOOL" },
        { "\"x\" == \"x\"", "(== \"x\" \"x\") BOOL" },
        { "S == NULL", "(== S NULL) BOOL" },
        { "PLUG == NULL", "(== PLUG NULL) BOOL" },
        { "PLUG < NULL", "null|3 '<' not supported between CONNECTOR and VOID" },
        { "A == NULL", "null|3 '==' not supported between INT and VOID" },
        { "NULL == S", "null|3 '==' not supported between VOID and STRING" },
        { "PLUG == {X}", "(== PLUG {X}) BOOL" },
        { "TOLD == S", "(== TOLD S) BOOL|2 'STRING' coerced to a MESSAGE - further warnings in "
                       "this category suppressed" },
    };
    expect_expressions(rows, TLE_USE_CONDITION);
    ExpressionSource source;
    EXPECT_EQ(source.tree("S == S", TLE_USE_CONDITION)->extra, 1);
    EXPECT_EQ(source.tree("A == A", TLE_USE_CONDITION)->extra, 0);
}

TEST(Operators, ConstantsFold)
{
    static const Row rows[] = {
        { "3 * 4", "12 INT" },
        { "300V * 2", "600000 VOLTAGE" },
        { "7 / 2", "3 INT" },
        { "-7 / 2", "-3 INT" },
        { "-7 MOD 2", "-1 INT" },
        { "-8 >> 1", "-4 INT" },
        { "1 << 33", "2 INT" },
        { "-1 << 31", "-2147483648 INT" },
        { "2147483647 + 1", "-2147483648 INT" },
        { "65536 * 65536", "0 INT" },
        { "- (-2147483648)", "-2147483648 INT" },
        { "1V + 500mV", "1500 VOLTAGE" },
        { "+ 5", "5 INT" },
        { "~ 0", "-1 INT" },
        { "6 & 3 | 8 ^ 1", "11 INT" },
        { "2A * 3R", "6000 VOLTAGE" },
        { "10V / 4R", "2500 CURRENT" },
        { "1 / 20ms", "50000 FREQUENCY" },
        { "-1 / 3s", "-333 FREQUENCY" },
        { "1 / 50Hz", "20000 TIME" },
        { "A - 1 / 0", "(- A (/ 1 0)) INT" },
        { "1 MOD 0", "(MOD 1 0) INT" },
        { "1 / 0s", "(/ 1 0) FREQUENCY" },
        { "1V / 0R", "(/ 1000 0) CURRENT" },
        { "(-2147483648) / -1", "(/ -2147483648 -1) INT" },
        { "(-2147483648) MOD -1", "(MOD -2147483648 -1) INT" },
        { "2000000A * 2000000R", "(* 2000000000 200000000) VOLTAGE" },
        { "TRUE AND FALSE", "0 BOOL" },
        { "TRUE OR FALSE", "1 BOOL" },
        { "NOT FALSE", "1 BOOL" },
        { "TRUE == TRUE", "1 BOOL" },
        { "-1 < 1", "1 BOOL" },
        { "2 >= 3", "0 BOOL" },
        { "FIVE * (FIVE - 3) + A", "(+ 10 A) INT" },
        { "BLUE == HUE", "1 BOOL" },
        { "Q AND TRUE", "(AND Q 1) BOOL" },
    };
    expect_expressions(rows, TLE_USE_CONSTANT);
}

TEST(Operators, Assignments)
{
    static const Row rows[] = {
        { "A = 5", "0 INT" },
        { "LETTER = A", "0 CHAR" },
        { "U = W", "0 VOLTAGE" },
        { "U = 5", "|3 '=' not supported between VOLTAGE and INT" },
        { "A = 5V", "|3 '=' not supported between INT and VOLTAGE" },
        { "U = 5V", "0 VOLTAGE" },
        { "A = NULL", "|3 '=' not supported between INT and VOID" },
        { "S = NULL", "0 STRING" },
        { "PLUG = {X}", "0 CONNECTOR" },
        { "PLUG = {X/PIN}", "|3 '=' not supported between CONNECTOR and PIN" },
        { "U = {X}", "0 VOLTAGE" },
        { "P = {X}", "0 PAIR_AT" },
        { "P = R", "2 PAIR_AT" },
        { "P = R:NEXT", "0 PAIR_AT" },
        { "OPEN = OPEN", "5 VOID" },
        { "OPEN = M10", "5 VOID" },
        { "OPEN = A + 1", "0 INT" },
        { "CT = T", "3 CLOCK_TIME" },
        { "T = CT", "4 TIME" },
        { "T = 2ms", "0 TIME" },
        { "H = ONE", "0 HANDLER" },
        { "H = TWO", "|3 Function declaration does not match prototype|3 '=' not supported between "
                     "HANDLER and TWO" },
        { "R:LEFT = A", "0 INT" },
    };
    ExpressionSource source;
    for (const Row &row : rows)
        EXPECT_EQ(assignment(&source, row.text), row.expected) << row.text;
}

TEST(Operators, AssignmentsOutOfPlace)
{
    ExpressionSource source;
    EXPECT_EQ(source.parse("A = B", TLE_USE_CONDITION), "(= A B) INT");
    EXPECT_EQ(source.parse("A = B", TLE_USE_CONSTANT),
              "(= A B) INT|3 '=' not permitted in constant expression");
    TLP_SetModuleFlags(source.module(), 0x4000);
    EXPECT_EQ(source.parse("A = B", TLE_USE_CONDITION),
              "(= A B) INT|1 Possible unintended assignment");
    EXPECT_EQ(source.parse("(A = B) == C", TLE_USE_CONDITION),
              "(== (= A B) C) BOOL|1 Possible unintended assignment");
    EXPECT_EQ(source.parse("A = B", TLE_USE_STATEMENT), "(= A B) INT");
}

TEST(Operators, Code)
{
    static const Row rows[] = {
        { "U = I * Z", "LSA LW LSA LW SLIT SMUL LSA SW" },
        { "FQ = 1 / T", "1 LSA LW LIT SDIV LSA SW" },
        { "A = - (~ B)", "LSA LW INV NEG LSA SW" },
        { "Q = NOT Q", "LSA LB NOT LSA SB" },
        { "Q = S < \"x\"", "LSA LW LCA STRCMP LSA SB" },
        { "Q = A <= B", "LSA LW LSA LW LE LSA SB" },
        { "P = R", "LSA LSA SP" },
        { "CT = T", "LSA LW MLIT DIV LSA SW" },
        { "T = CT", "LSA LW MLIT MUL LSA SW" },
        { "OPEN = M10", "LSA 10 LSA 4 ADD SWP LSA SW" },
        { "A = P->LIST[B]", "LSA LW LSA LW 4 MUL 4 ADD ADD LW LSA SW" },
    };
    ExpressionSource source;
    for (const Row &row : rows)
        EXPECT_EQ(code_of(&source, row.text), row.expected) << row.text;
}

TEST(Operators, FieldsOfDispatchAndAttributes)
{
    ExpressionSource source;
    TLI_IDENTIFIER *record = TLI_FindIdentifier(nullptr, TLP_ModuleDomain(source.module()), "PAIR");
    TLI_IDENTIFIER *field = TLI_FindScopeIdentifier(TLIT_RecordScope(record), "LEFT");
    TLI_Pragma(field, "ATTR", "12");
    EXPECT_EQ(code_of(&source, "P->LEFT"), "LSA LW ATTR ATTR");
    EXPECT_EQ(code_of(&source, "P->LEFT = A"), "LSA LW SW|4 No code generated for term");
    TLI_Pragma(field, "DISPID", "1F");
    EXPECT_EQ(code_of(&source, "P->LEFT"), "LSA LW GET");
    EXPECT_EQ(code_of(&source, "P->LEFT = A"), "LSA LW LSA LW PUT SW");
    EXPECT_EQ(code_of(&source, "P->LEFT", 2), "|4 No code generated for term");
}

TEST(Operators, ValuesHaveNoAddress)
{
    ExpressionSource source;
    static const char *const values[] = { "A + B",  "A * B", "~ A",  "NOT Q",
                                          "Q OR Q", "A < B", "A = B" };
    for (const char *value : values)
        EXPECT_EQ(code_of(&source, value, 1), "|4 No code generated for term") << value;
}

TEST(Operators, LongChainsOfAssignmentsHaveCode)
{
    ExpressionSource source;
    std::string stores = "A";
    for (int i = 0; i < 5500; i++)
        stores = "A = " + stores;
    code_of(&source, stores);
    EXPECT_EQ(source.messages(), "");
}
