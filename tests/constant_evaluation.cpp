// Constant evaluation: what a folded term gives as each type wanted of it, and what is refused.
#include "tests/compiled_source.h"

namespace
{

// The term of an expression, and its value as a type.
struct Evaluation {
    int32_t result;
    intptr_t value;
    TLE_TERM *term;
    std::string messages;
};

class ConstantEvaluation : public testing::Test
{
protected:
    CompiledSource source{ "ENUM COLOUR = RED GREEN\n"
                           "TYPEDEF RECORD PAIR(INT LEFT)\n"
                           "TYPEDEF RECORD OTHER(INT LEFT)\n"
                           "TYPEDEF -> PAIR PAIR_AT\n"
                           "TYPEDEF FUNCTION INT HANDLER(INT X)\n"
                           "CONST INT TABLE[2] = 1, 2\n"
                           "CONST INT K = 5\n"
                           "FUNCTION INT GOOD(INT X)\n"
                           "FUNCTION VOID BAD()\n"
                           "PRIVATE\n"
                           "VAR INT V\n" };
    std::vector<TLT_STATEMENT *> statements;
    std::vector<TLE_TERM *> terms;

    void TearDown() override
    {
        for (TLE_TERM *term : terms)
            TLE_DelExpression(term);
        for (TLT_STATEMENT *statement : statements)
            TLT_DelStatement(statement);
    }

    TLI_IDENTIFIER *type(const char *name)
    {
        TLI_IDENTIFIER *found = source.find(name);
        if (found != nullptr) return found;
        return std::string(name) == "DATA" ? TLIT_DataType : nullptr;
    }

    Evaluation evaluate(const char *text, const char *wanted, int32_t quiet = 0)
    {
        TLT_STATEMENT *statement = TLT_NewStatement(text, "m.tl", 1, 1);
        statements.push_back(statement);
        source.messages.clear();
        TLE_TERM *term =
            TLE_ParseExpression(source.module, statement, TLE_USE_CONSTANT, TLT_TOKEN_NONE);
        terms.push_back(term);
        Evaluation done = { 0, -99, term, "" };
        done.result =
            TLE_ConstantValue(source.module, statement, term, type(wanted), &done.value, quiet);
        done.messages = source.messages;
        return done;
    }
};

} // namespace

TEST_F(ConstantEvaluation, Numbers)
{
    struct {
        const char *text;
        const char *wanted;
        intptr_t value;
    } static const rows[] = {
        { "3 * 4", "INT", 12 },
        { "K + 1", "INT", 6 },
        { "'a'", "INT", 97 },
        { "200", "CHAR", 200 },
        { "2V", "VOLTAGE", 2000 },
        { "2V", "QUANTITY", 2000 },
        { "GREEN", "COLOUR", 1 },
        { "TRUE", "BOOL", 1 },
        { "2V", "WORD", 2000 },
        { "-1", "WORD", -1 },
        { "1.5V * 2", "VOLTAGE", 3000 },
        { "5ms", "CLOCK_TIME", 5 },
        { "1minute", "TIME", 60000000 },
    };
    for (const auto &row : rows) {
        Evaluation done = evaluate(row.text, row.wanted);
        EXPECT_EQ(done.result, 1) << row.text << " as " << row.wanted << "\n" << done.messages;
        EXPECT_EQ(done.value, row.value) << row.text << " as " << row.wanted;
        EXPECT_EQ(done.messages, "") << row.text;
    }
}

TEST_F(ConstantEvaluation, TimesChangeTheTerm)
{
    Evaluation done = evaluate("5000us", "CLOCK_TIME");
    EXPECT_EQ(done.value, 5);
    EXPECT_EQ(TLE_ExpressionType(done.term), TLIT_ClockTime);
    intptr_t again = 0;
    EXPECT_EQ(TLE_GetConstantValue(source.module, done.term, &again), 1);
    EXPECT_EQ(again, 5);
}

TEST_F(ConstantEvaluation, Refusals)
{
    struct {
        const char *text;
        const char *wanted;
        const char *message;
    } static const rows[] = {
        { "1V", "INT", "Type mismatch in constant expression" },
        { "V", "INT", "Not a compile-time constant" },
        { "V + 1", "INT", "Expression too complex" },
        { "\"a\"", "INT", "Not a compile-time constant" },
        { "\"a\"", "CONNECTOR", "Wrong type of DATA constant" },
    };
    for (const auto &row : rows) {
        Evaluation done = evaluate(row.text, row.wanted);
        EXPECT_EQ(done.result, 0) << row.text << " as " << row.wanted;
        EXPECT_EQ(done.value, -99) << row.text << " as " << row.wanted;
        EXPECT_EQ(done.messages, "1 3 " + std::string(row.message) + "\n")
            << row.text << " as " << row.wanted;
    }
}

TEST_F(ConstantEvaluation, Texts)
{
    Evaluation text = evaluate("\"abc\"", "STRING");
    ASSERT_EQ(text.result, 1);
    EXPECT_STREQ(reinterpret_cast<const char *>(text.value), "abc");
    Evaluation empty = evaluate("\"\"", "STRING");
    ASSERT_EQ(empty.result, 1);
    ASSERT_NE(empty.value, 0);
    EXPECT_STREQ(reinterpret_cast<const char *>(empty.value), "");
    Evaluation null = evaluate("NULL", "STRING");
    EXPECT_EQ(null.result, 1);
    EXPECT_EQ(null.value, 0);
    EXPECT_EQ(TLE_ExpressionType(null.term), TLIT_StringType);
}

TEST_F(ConstantEvaluation, TextBecomesAMessageOnce)
{
    Evaluation first = evaluate("\"abc\"", "MESSAGE");
    EXPECT_EQ(first.value, reinterpret_cast<intptr_t>(first.term));
    EXPECT_EQ(TLE_ExpressionType(first.term), type("MESSAGE"));
    EXPECT_EQ(first.messages, "1 2 'STRING' coerced to a MESSAGE - further warnings in this "
                              "category suppressed\n");
    EXPECT_EQ(evaluate("\"abc\"", "MESSAGE").messages, "");
}

TEST_F(ConstantEvaluation, QuietDropsTheWarning)
{
    EXPECT_EQ(evaluate("\"abc\"", "MESSAGE", 1).messages, "");
    EXPECT_NE(evaluate("\"abc\"", "MESSAGE", 0).messages, "");
}

TEST_F(ConstantEvaluation, TermsStandForData)
{
    struct {
        const char *text;
        const char *wanted;
        const char *type;
    } static const rows[] = {
        { "NULL", "CONNECTOR", "CONNECTOR" },
        { "{A}", "CONNECTOR", "CONNECTOR" },
        { "{A/CONNECTOR}", "DATA", "CONNECTOR" },
        { "NULL", "PAIR_AT", "VOID" },
        { "{A}", "PAIR_AT", "DATA" },
        { "{LIMIT}", "INT", "INT" },
    };
    for (const auto &row : rows) {
        Evaluation done = evaluate(row.text, row.wanted);
        EXPECT_EQ(done.result, 1) << row.text << " as " << row.wanted << "\n" << done.messages;
        EXPECT_EQ(done.value, reinterpret_cast<intptr_t>(done.term)) << row.text;
        EXPECT_STREQ(TLI_IdentifierName(TLE_ExpressionType(done.term)), row.type) << row.text;
    }
}

TEST_F(ConstantEvaluation, FunctionsStandForFunctionTypes)
{
    Evaluation good = evaluate("GOOD", "HANDLER");
    EXPECT_EQ(good.result, 1) << good.messages;
    EXPECT_EQ(good.value, reinterpret_cast<intptr_t>(good.term));
    Evaluation bad = evaluate("BAD", "HANDLER");
    EXPECT_EQ(bad.result, 0);
    EXPECT_NE(bad.messages.find("Wrong type of DATA constant"), std::string::npos);
}

TEST_F(ConstantEvaluation, AskingIsSilent)
{
    Evaluation done = evaluate("V", "VOID");
    source.messages.clear();
    intptr_t value = -99;
    EXPECT_EQ(TLE_GetConstantValue(source.module, done.term, &value), 0);
    EXPECT_EQ(TLE_GetConstantValue(source.module, nullptr, &value), 0);
    EXPECT_EQ(TLE_ConstantValue(source.module, nullptr, done.term, TLIT_FloatType, &value, 0), 0);
    EXPECT_EQ(TLE_ConstantValue(source.module, nullptr, done.term, TLIT_StringType, &value, 0), 0);
    TLE_TERM *bad = evaluate("BAD", "VOID").term;
    source.messages.clear();
    EXPECT_EQ(TLE_ConstantValue(source.module, nullptr, bad, type("HANDLER"), &value, 0), 0);
    EXPECT_EQ(value, -99);
    EXPECT_EQ(source.messages, "");
}
