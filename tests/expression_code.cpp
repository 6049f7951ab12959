// Code of expressions: each statement of a function against its exact P-code, C and Java text.
#include "tests/compiled_source.h"

namespace
{

const char *const declarations = "ENUM COLOUR = RED GREEN BLUE\n"
                                 "TYPEDEF RECORD PAIR(INT LEFT, INT RIGHT, INT LIST[4])\n"
                                 "TYPEDEF -> PAIR PAIR_AT\n"
                                 "TYPEDEF FUNCTION INT HANDLER(INT X)\n"
                                 "CONST INT TABLE[3] = 7, 8, 9\n"
                                 "FUNCTION INT NONE()\n"
                                 "FUNCTION INT ONE(INT X)\n"
                                 "FUNCTION VOID BYTE(CHAR X)\n"
                                 "FUNCTION VOID BY_VAR(VAR INT X)\n"
                                 "FUNCTION VOID BY_VARS(VAR INT X[])\n"
                                 "FUNCTION VOID TEXT(STRING S)\n"
                                 "FUNCTION VOID HUED(COLOUR C)\n"
                                 "FUNCTION VOID POINTED(PAIR_AT P)\n"
                                 "FUNCTION VOID RECORDED(VAR PAIR P)\n"
                                 "SYSCALL (9) VOID SHOW(STRING S ..)\n"
                                 "SYSCALL (300) INT FAR(INT N)\n"
                                 "PRIVATE\n"
                                 "VAR INT G\n";

// X at 0, A at 4, I at 44, C at 48, S at 50, R at 54 (24 bytes), P at 78, T at 82, H at 92.
const char *const locals = "VAR INT X, A[10], I\n"
                           "VAR CHAR C\n"
                           "VAR STRING S\n"
                           "VAR PAIR R\n"
                           "VAR PAIR_AT P\n"
                           "VAR CHAR T[10]\n"
                           "VAR HANDLER H\n"
                           "VAR COLOUR K\n"
                           "VAR BOOL Q\n";

std::string function(const std::string &statement, const std::string &arguments = "")
{
    return std::string(declarations) + "FUNCTION VOID F(" + arguments + ")\n" + locals +
           "BEGIN\n  " + statement + "\nEND\n";
}

std::string plain(const std::string &statement)
{
    return function(statement);
}

} // namespace

TEST(ExpressionCode, Values)
{
    expect_body(plain, {
                           { "X = A[I] + 1", "SLIT 44 LLW 4 LLA ADW LW 1 ADD 0 SLWP" },
                           { "X = A[3]", "16 LLW 0 SLWP" },
                           { "A[3] = X", "0 LLW 16 SLWP" },
                           { "A[I] = X", "0 LLW SLIT 44 LLW 4 LLA ADW SWP" },
                           { "X = G", "LSA static+0 LW 0 SLWP" },
                           { "X = TABLE[0]", "LCA 1:M.TABLE/INT LW 0 SLWP" },
                           { "X = TABLE[2]", "2 LCA 1:M.TABLE/INT ADW LW 0 SLWP" },
                           { "X = TABLE[I]", "SLIT 44 LLW LCA 1:M.TABLE/INT ADW LW 0 SLWP" },
                           { "S = \"abc\"", "LCA \"abc\" SLIT 50 SLWP" },
                           { "S = NULL", "0 SLIT 50 SLWP" },
                           { "K = BLUE", "2 SLIT 96 SLBP" },
                           { "X = R:RIGHT", "SLIT 54 LLA 4 ADD LW 0 SLWP" },
                           { "X = R:LIST[1]", "SLIT 54 LLA 12 ADD LW 0 SLWP" },
                           { "X = P->LEFT", "SLIT 78 LLW LW 0 SLWP" },
                           { "H = ONE", "LCA 1:M.ONE/CODE SLIT 92 SLWP" },
                           { "X", "0 LLW POP" },
                       });
}

TEST(ExpressionCode, Calls)
{
    expect_body(plain,
                {
                    { "X = NONE()", "ARGS CALL 1:M.NONE/CODE 0 SLWP" },
                    { "ONE(X)", "ARGS 0 LLW CALL 1:M.ONE/CODE POP" },
                    { "ONE(ONE(1))", "ARGS ARGS 1 CALL 1:M.ONE/CODE CALL 1:M.ONE/CODE POP" },
                    { "BYTE(C)", "ARGS SLIT 48 LLB ARGB CALL 1:M.BYTE/CODE POP" },
                    { "HUED(K)", "ARGS SLIT 96 LLB ARGB CALL 1:M.HUED/CODE POP" },
                    { "BY_VAR(X)", "ARGS 0 LLA CALL 1:M.BY_VAR/CODE POP" },
                    { "BY_VAR(A[2])", "ARGS 12 LLA CALL 1:M.BY_VAR/CODE POP" },
                    { "BY_VARS(X)", "ARGS 0 LLA 1 CALL 1:M.BY_VARS/CODE POP" },
                    { "BY_VARS(A)", "ARGS 4 LLA 10 CALL 1:M.BY_VARS/CODE POP" },
                    { "BY_VARS(A[3])", "ARGS 16 LLA 7 CALL 1:M.BY_VARS/CODE POP" },
                    { "BY_VARS(A[I])",
                      "ARGS SLIT 44 LLW DUP 4 LLA ADW EXCH 10 EXCH SUB CALL 1:M.BY_VARS/CODE POP" },
                    { "TEXT(S)", "ARGS SLIT 50 LLW CALL 1:M.TEXT/CODE POP" },
                    { "TEXT(T)", "ARGS SLIT 82 LLA CALL 1:M.TEXT/CODE POP" },
                    { "POINTED(P)", "ARGS SLIT 78 LLW CALL 1:M.POINTED/CODE POP" },
                    { "POINTED(R)", "ARGS SLIT 54 LLA CALL 1:M.POINTED/CODE POP" },
                    { "RECORDED(R)", "ARGS SLIT 54 LLA CALL 1:M.RECORDED/CODE POP" },
                    { "RECORDED(P)", "ARGS SLIT 78 LLW CALL 1:M.RECORDED/CODE POP" },
                    { "SHOW(\"a\")", "ARGS LCA \"a\" SHORT_SYSCALL 9 POP" },
                    { "SHOW(\"a\", T)", "ARGS LCA \"a\" SLIT 82 LLA SHORT_SYSCALL 9 POP" },
                    { "SHOW(\"a\", C, A)", "ARGS LCA \"a\" SLIT 48 LLB 4 LLA SHORT_SYSCALL 9 POP" },
                    { "FAR(1)", "ARGS 1 SYSCALL 300 POP" },
                    { "H(X)", "ARGS 0 LLW SLIT 92 LLW CALLI POP" },
                });
}

TEST(ExpressionCode, ArrayPairs)
{
    // V, the pair of a VAR array, stands at 0.
    const auto in_array = [](const std::string &statement) {
        return function(statement, "VAR INT V[]");
    };
    expect_body(in_array,
                {
                    { "BY_VARS(V)", "ARGS 0 LLA DUP LP EXCH 4 ADD LW CALL 1:M.BY_VARS/CODE POP" },
                    { "BY_VARS(V[2])", "ARGS 2 0 LLA DUP2 LP ADW ROT3 4 ADD LW EXCH SUB "
                                       "CALL 1:M.BY_VARS/CODE POP" },
                    { "BY_VAR(V[1])", "ARGS 1 0 LLW ADW CALL 1:M.BY_VAR/CODE POP" },
                    { "X = V[0]", "0 LLW LW 8 SLWP" },
                    { "X = V[-1]", "SLIT -1 0 LLW ADW LW 8 SLWP" },
                });
    CompiledSource checked(function("BY_VARS(V[2])", "VAR INT V[]"), TLC_FLAG_CHECKS);
    EXPECT_EQ(checked.body("F"), "ARGS 2 0 LLA DUP2 LP ADW ROT3 4 ADD LW DUP2 CHECK POP EXCH SUB "
                                 "CALL 1:M.BY_VARS/CODE POP");
}

TEST(ExpressionCode, DataLiterals)
{
    static const SourceRow rows[] = {
        { "CN = {X1}", "LCA 1:X1/CONNECTOR 0 SLWP" },
        { "PN = {P1}", "LCA \"PIN\" LCA \"P1\" FIND_IMMEDIATE 4 SLWP" },
        { "N = {LIMIT/INT}", "LIT 6:LIMIT/INT 8 SLWP" },
        { "PA = {ITEM}", "LCA 1:ITEM/PAIR 12 SLWP" },
        { "DA = {ITEM}", "LCA \"DEVICE\" LCA \"ITEM\" FIND_DATA 16 SLWP" },
        { "CA = {ITEM}", "LCA \"{1-2}\" LCA \"ITEM\" FIND_COM 20 SLWP" },
    };
    for (const SourceRow &row : rows) {
        std::string text = "TYPEDEF RECORD PAIR(INT LEFT)\nTYPEDEF -> PAIR PAIR_AT\n"
                           "TYPEDEF RECORD DEVICE(INT LEFT)\nTYPEDEF -> DEVICE DEVICE_AT\n"
                           "TYPEDEF RECORD OBJECT(INT LEFT)\nTYPEDEF -> OBJECT OBJECT_AT\n"
                           "PRIVATE\n"
                           "FUNCTION VOID F()\nVAR CONNECTOR CN\nVAR PIN PN\nVAR INT N\n"
                           "VAR PAIR_AT PA\nVAR DEVICE_AT DA\nVAR OBJECT_AT CA\n"
                           "BEGIN\n  " +
                           row.source + "\nEND\n";
        CompiledSource source(text);
        TLI_Pragma(source.find("PIN"), "RUNTIME_DEF", "1");
        TLI_Pragma(source.find("DEVICE"), "RUNTIME_DEF", "1");
        TLI_Pragma(source.find("OBJECT"), "CLSID", "{1-2}");
        EXPECT_EQ(source.body("F"), row.expected) << row.source << "\n" << source.messages;
    }
}

TEST(ExpressionCode, DispatchCallTellsVariantTypes)
{
    CompiledSource source(function("FAR(X)"));
    TLI_Pragma(source.find("FAR"), "DISPID", "1");
    EXPECT_EQ(source.body("F"), "START_VARIANT 0 LLW VARIANTARG 3 SYSCALL 300 POP");
}

TEST(ExpressionCode, LongChainsNeedNoStack)
{
    std::string sum = "X = X";
    std::string expected = "0 LLW";
    for (int i = 0; i < 200000; ++i) {
        sum += i % 20 == 19 ? " + \\\nX" : " + X";
        expected += " 0 LLW ADD";
    }
    CompiledSource source(function(sum));
    EXPECT_EQ(source.body("F"), expected + " 0 SLWP") << source.messages;
    std::string text = source.text("F", TLC_TARGET_C);
    EXPECT_EQ(text.size(), 2u + 2u + 12u + 1u + 200000u * 2u + 1u + 2u) << text.substr(0, 80);
}

TEST(ExpressionCode, ChainsKeepTheShortCircuit)
{
    CompiledSource source(function("Q = Q AND Q OR Q"));
    std::string code = source.code("F");
    EXPECT_NE(code.find("SLIT 97 LLB DUP | JZ ->"), std::string::npos) << code;
    EXPECT_NE(code.find("DUP | JNZ ->"), std::string::npos) << code;
    EXPECT_NE(code.find("| POP SLIT 97 LLB | SLIT 97 SLBP"), std::string::npos) << code;
}

TEST(ExpressionCode, FaultsAreReportedAndGenerationGoesOn)
{
    CompiledSource source(function("X = 1"));
    TLC_STREAM *stream = TLC_NewStream(source.module, 0);
    TLC_NewPSect(stream);
    TLE_ExpressionCode(stream, nullptr, 0);
    EXPECT_EQ(source.messages, "0 4 Null expression\n");
    TLE_TERM *number = TLE_ConstantTerm(0, TLIT_IntType, 5);
    testing::internal::CaptureStdout();
    TLE_ExpressionCode(stream, number, 1);
    std::string dump = testing::internal::GetCapturedStdout();
    EXPECT_EQ(dump.rfind("CODE GENERATION ERROR\n", 0), 0u) << dump;
    EXPECT_EQ(source.messages, "0 4 Null expression\n0 4 No code generated for term\n");
    testing::internal::CaptureStdout();
    TLE_DataTerm(stream, number);
    testing::internal::GetCapturedStdout();
    EXPECT_NE(source.messages.find("0 4 Bad data term\n"), std::string::npos);
    TLE_DelExpression(number);
    TLC_DelStream(stream);
}

TEST(ExpressionText, C)
{
    const auto frame = [](const std::string &statement) {
        return function(statement, "VAR INT V, VAR INT W[]");
    };
    expect_text(frame, TLC_TARGET_C,
                {
                    { "X = I * (A[1] + 2)", "  X=toll_int(1u*I*(0u+A[1]+2));\n" },
                    { "X = I - (A[1] - 2)", "  X=toll_int(0u+I-(0u+A[1]-2));\n" },
                    { "X = (I - A[1]) - 2", "  X=toll_int(0u+I-A[1]-2);\n" },
                    { "X = I MOD 3", "  X=I%3;\n" },
                    { "X = I - (-5)", "  X=toll_int(0u+I-(-5));\n" },
                    { "X = -(-I)", "  X=toll_int(0u-(0u-I));\n" },
                    { "X = I & (A[1] + 2)", "  X=I&toll_int(0u+A[1]+2);\n" },
                    { "X = (I & 1) << 2", "  X=toll_shift_left(I&1,2);\n" },
                    { "Q = X == 1 AND (I < 2 OR Q)", "  Q=X==1 && (I<2 || Q);\n" },
                    { "Q = Q AND Q OR Q", "  Q=(Q && Q) || Q;\n" },
                    { "Q = NOT (Q AND Q)", "  Q=!(Q && Q);\n" },
                    { "X = R:RIGHT + P->LEFT",
                      "  X=toll_int(0u+R.RIGHT+((PAIR_AT) toll_pointer(P))->LEFT);\n" },
                    { "X = A[I] = 3", "  X=A[I]=3;\n" },
                    { "K = GREEN", "  K=M_GREEN;\n" },
                    { "X = 0x80000000", "  X=(-2147483647-1);\n" },
                    { "S = \"abc\"", "  S=\"abc\";\n" },
                    { "S = NULL", "  S=NULL;\n" },
                    { "BY_VAR(X)", "  M_BY_VAR(&X);\n" },
                    { "BY_VAR(R:LEFT)", "  M_BY_VAR(&R.LEFT);\n" },
                    { "ONE(NONE())", "  M_ONE(M_NONE());\n" },
                    { "H(X)", "  (*toll_called(H))(X);\n" },
                    { "X = V", "  X=(*V);\n" },
                    { "BY_VAR(V)", "  M_BY_VAR(V);\n" },
                    { "X = W[I]", "  X=W[I];\n" },
                    { "BY_VARS(W)", "  M_BY_VARS(W);\n" },
                    { "BY_VARS(W[2])", "  M_BY_VARS(&W[2]);\n" },
                    { "BY_VARS(A)", "  M_BY_VARS(A);\n" },
                    { "BY_VARS(A[I])", "  M_BY_VARS(&A[I]);\n" },
                    { "BY_VARS(X)", "  M_BY_VARS(&X);\n" },
                    { "BY_VARS(V)", "  M_BY_VARS(V);\n" },
                    { "BY_VARS(R:LIST)", "  M_BY_VARS(R.LIST);\n" },
                    { "BY_VARS(R:LIST[I])", "  M_BY_VARS(&R.LIST[I]);\n" },
                    { "BY_VARS(R:LEFT)", "  M_BY_VARS(&R.LEFT);\n" },
                });
}

TEST(ExpressionText, Java)
{
    expect_text(plain, TLC_TARGET_JAVA,
                {
                    { "X = I * (A[1] + 2)", "  X=I*(A[1]+2);\n" },
                    { "X = P->LEFT", "  X=P.LEFT;\n" },
                    { "K = GREEN", "  K=GREEN;\n" },
                    { "S = NULL", "  S=null;\n" },
                    { "BY_VAR(X)", "  BY_VAR(toll_all(X));\n" },
                });
}
