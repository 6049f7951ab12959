// The scanner: what texts are cut into, and what it says of those that it cannot read.
#include "frontend/tlt.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

// A statement on its own; deleted at the end of the test.
class Statement
{
public:
    explicit Statement(const std::string &text)
    {
        TLT_Initialise();
        record = TLT_NewStatement(text.c_str(), "s.tl", 1, 1);
    }

    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;
    ~Statement() { TLT_DelStatement(record); }

    // The remaining tokens as "code:text" with blanks between.
    std::string tokens()
    {
        std::string joined;
        char text[TLT_TEXT_SIZE];
        for (int32_t count = 0; count < 1000; count++) {
            const int32_t code = TLT_GetToken(record, text);
            if (code == TLT_TOKEN_END_OF_LINE) return joined;
            joined += (joined.empty() ? "" : " ") + std::to_string(code) + ":" + text;
        }
        return "no end";
    }

    // The messages so far, joined.
    std::string messages()
    {
        std::string joined;
        TLT_AllMessages(
            record,
            [](void *context, TLT_STATEMENT *, int32_t, const char *text) {
                auto *all = static_cast<std::string *>(context);
                *all += (all->empty() ? "" : "|") + std::string(text);
                return 1;
            },
            &joined);
        return joined;
    }

    TLT_STATEMENT *record;
};

struct CASE {
    const char *text;
    const char *tokens;
    const char *messages;
};

void check(const std::vector<CASE> &cases)
{
    for (const CASE &row : cases) {
        SCOPED_TRACE(row.text);
        Statement statement(row.text);
        EXPECT_EQ(statement.tokens(), row.tokens);
        EXPECT_EQ(statement.messages(), row.messages);
    }
}

TEST(Scanner, WordsAreKeywordsInAnyCaseAndIdentifiersElse)
{
    check({
        { "", "", "" },
        { "   ; a comment", "", "" },
        { "If iF _if END_EXCEPTION", "16:If 16:iF 74:if 63:END_EXCEPTION", "" },
        { "IFS mod A.B _x _ __a", "74:IFS 34:mod 74:A.B 74:x 74: 74:_a", "" },
        { "to TO_ @T", "24:to 74:TO_ 79:@", "Strange Separator : '@'" },
        { "NONVOLATILE forward ifdef endif", "69:NONVOLATILE 70:forward 71:ifdef 72:endif", "" },
        { "abcdefghijklmnopqrstuvwxyz01234 b", "74:abcdefghijklmnopqrstuvwxyz01234 74:b", "" },
        { "abcdefghijklmnopqrstuvwxyz0123456 b", "74:abcdefghijklmnopqrstuvwxyz01234 74:b",
          "Field too large" },
    });
}

TEST(Scanner, EveryKeywordAndSeparatorIsFound)
{
    for (int32_t code = 0; code <= TLT_TOKEN_HASH; code++) {
        const std::string text = TLT_TokenValue(code);
        SCOPED_TRACE(text);
        EXPECT_EQ(TLT_IsToken(text.c_str()), 1);
        if (code == TLT_TOKEN_SEMICOLON) continue; // begins a comment
        Statement statement(text);
        EXPECT_EQ(statement.tokens(), std::to_string(code) + ":" + text);
    }
    EXPECT_EQ(TLT_IsToken("if"), 0);
    EXPECT_EQ(TLT_IsToken("<IDENTIFIER>"), 0);
    EXPECT_STREQ(TLT_TokenValue(TLT_TOKEN_LINK), "<LINK>");
    EXPECT_STREQ(TLT_TokenValue(-1), "<NO_TOKEN>");
    EXPECT_STREQ(TLT_TokenValue(TLT_TOKEN_COUNT), "<NO_TOKEN>");
}

TEST(Scanner, SeparatorsTakeTwoCharactersWhereTheyCan)
{
    check({
        { "(-a", "50:( 31:- 74:a", "" },
        { "< = <= =- ..>>", "41:< 29:= 42:<= 29:= 31:- 64:.. 46:>>", "" },
        { "<\n= ", "42:<=", "" },
        { "=;=", "29:=", "" },
        { "!=!a b", "40:!= 79:! 74:b", "Strange Separator : '!'" },
        { "!?xy", "79:!? 74:y", "Strange Separator : '!?'" },
        { "\xC3\xA4 1 2", "79:\xC3\xA4 75:1 75:2", "Strange Separator : '\xC3\xA4'" },
        { "!", "79:!", "Strange Separator : '!'" },
    });
}

struct NUMBER_CASE {
    const char *text;
    int32_t value;
    int32_t units;
    const char *token_text;
    const char *messages;
};

TEST(Scanner, NumbersHaveValueUnitsAndText)
{
    const NUMBER_CASE cases[] = {
        { "007", 7, 0, "007", "" },
        { "0", 0, 0, "0", "" },
        { "4294967296", 0, 0, "4294967296", "" },
        { "4294967295", -1, 0, "4294967295", "" },
        { "0X1f", 31, 0, "0X1f", "" },
        { "0x123456789", 0x23456789, 0, "0x123456789", "" },
        { "12\n34", 1234, 0, "1234", "" },
        { "1.5V", 1500, 1, "1.5V", "" },
        { "2ms", 2000, 7, "2ms", "" },
        { "250mR", 25, 2, "250mR", "" },
        { "50%", 50000, 8, "50%", "" },
        { "5mR", 0, 2, "5mR", "Precision lost on this quantity" },
        { "16777217mV", 16777216, 1, "16777217mV", "" },
        { "2147483648mV", INT32_MIN, 1, "2147483648mV", "Precision lost on this quantity" },
        { "1.5", 1, 0, "1.5", "Real numbers not supported" },
        { "3v", 3, 0, "3v", "Unrecognised units" },
        { "3000kV", -1294967296, 1, "3000kV",
          "Constant out of range|Precision lost on this quantity" },
        { "'a'", 97, 0, "'a'", "" },
        { "'\\x4a'", 74, 0, "'J'", "" },
        { "'\xE4'", 0xE4, 0, "'\xE4'", "" },
    };
    for (const NUMBER_CASE &row : cases) {
        SCOPED_TRACE(row.text);
        Statement statement(row.text);
        char text[TLT_TEXT_SIZE];
        int32_t units = -1;
        EXPECT_EQ(TLT_GetToken(statement.record, text), TLT_TOKEN_NUMBER);
        EXPECT_EQ(TLT_GetNumber(statement.record, &units), row.value);
        EXPECT_EQ(units, row.units);
        EXPECT_STREQ(text, row.token_text);
        EXPECT_EQ(statement.messages(), row.messages);
    }
}

TEST(Scanner, NumbersWithoutSenseAreReported)
{
    const std::string digits(40, '1');
    Statement wide(digits);
    EXPECT_EQ(wide.tokens(), "75:" + digits.substr(0, 31));
    EXPECT_EQ(wide.messages(), "Field too large");

    check({ { "0x g", "80: 74:g", "Bad Hexadecimal constant" } });

    Statement fraction("1." + std::string(300, '0') + "V");
    char text[TLT_TEXT_SIZE];
    EXPECT_EQ(TLT_GetToken(fraction.record, text), TLT_TOKEN_NUMBER);
    EXPECT_EQ(TLT_GetNumber(fraction.record, nullptr), 1000);
    EXPECT_EQ(std::string(text).size(), 127U);
    EXPECT_EQ(fraction.messages(), "");
}

TEST(Scanner, LiteralsHoldEscapesAndRunOverLines)
{
    check({
        { R"("a}b" {c"d})", "76:a}b 77:c\"d", "" },
        { R"("\"\\\b\f\n\r\t\x41")", "76:\"\\\b\f\n\r\tA", "" },
        { R"("\q\xg1")", "76:q\x01", "Unknown character|Bad hex character" },
        { "\"ab\ncd;\" x", "76:abcd; 74:x", "" },
        { "\"ab", "76:ab", "Unterminated string" },
        { "\"ab\\", "76:ab", "Unknown character|Unterminated string" },
        { "\"\" {/x}", "76: 77:/x", "No data identifier" },
        { "{abcdefghijklmnopqrstuvwxyz012345/T}", "77:abcdefghijklmnopqrstuvwxyz012345/T",
          "Data identifier too long" },
        { "{abcdefghijklmnopqrstuvwxyz01234/T}", "77:abcdefghijklmnopqrstuvwxyz01234/T", "" },
    });
}

TEST(Scanner, LongTextIsCutOnlyWhenCopied)
{
    const std::string content(200, 'x');
    Statement statement("\"" + content + "\" \"" + content + "\"");
    const char *whole = nullptr;
    EXPECT_EQ(TLT_ExpectNoCopy(statement.record, TLT_TOKEN_STRING, &whole), 1);
    EXPECT_EQ(whole, content);
    EXPECT_EQ(statement.messages(), "");
    char text[TLT_TEXT_SIZE];
    TLT_NextToken(statement.record, text);
    EXPECT_EQ(text, content.substr(0, 127));
    EXPECT_EQ(TLT_GetToken(statement.record, text), TLT_TOKEN_STRING);
    EXPECT_EQ(statement.messages(), "String too long|String too long");
}

TEST(Scanner, LookAheadIsKeptUntilConsumed)
{
    Statement statement("  A = B ; end");
    char text[TLT_TEXT_SIZE] = "old";
    EXPECT_EQ(TLT_NextToken(statement.record, nullptr), TLT_TOKEN_IDENTIFIER);
    EXPECT_EQ(TLT_StatementReadPosition(statement.record),
              TLT_StatementChars(statement.record) + 2);
    EXPECT_EQ(TLT_PossibleToken(statement.record, TLT_TOKEN_IF, nullptr), 0);
    EXPECT_EQ(TLT_PossibleToken(statement.record, TLT_TOKEN_IDENTIFIER, text), 1);
    EXPECT_STREQ(text, "A");
    EXPECT_STREQ(TLT_StatementReadPosition(statement.record), "= B ; end");
    EXPECT_EQ(TLT_ExpectEmpty(statement.record), 0);
    EXPECT_EQ(TLT_Expect(statement.record, TLT_TOKEN_COMMA, text), 0);
    EXPECT_STREQ(text, "=");
    EXPECT_EQ(TLT_Expect(statement.record, TLT_TOKEN_IDENTIFIER, text), 1);
    EXPECT_EQ(TLT_ExpectEmpty(statement.record), 1);
    EXPECT_EQ(TLT_GetToken(statement.record, text), TLT_TOKEN_END_OF_LINE);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(statement.messages(), "Unexpected characters or keyword|',' expected here");
}

TEST(Scanner, TabsAndCommentsFollowTheLines)
{
    Statement tabbed("\t  A\tB");
    EXPECT_EQ(TLT_StatementIndent(tabbed.record), 10);
    EXPECT_STREQ(TLT_StatementChars(tabbed.record), "          A     B");

    Statement continued("A ;\tx\n\tB");
    EXPECT_STREQ(TLT_StatementChars(continued.record), "A ;     x\n      B");
    EXPECT_EQ(continued.tokens(), "74:A 74:B");
}

TEST(Scanner, UnitsAreFoundWithCase)
{
    int32_t quantity = 0;
    float scale = 0;
    EXPECT_EQ(TLT_TestForUnits("L_per_100km", &quantity, &scale), 1);
    EXPECT_EQ(quantity, 25);
    EXPECT_EQ(scale, 1000000.0F);
    EXPECT_EQ(TLT_TestForUnits("mR", &quantity, &scale), 1);
    EXPECT_EQ(scale, 0.1F);
    EXPECT_EQ(TLT_TestForUnits("v", &quantity, &scale), 0);
    EXPECT_EQ(TLT_TestForUnits("", &quantity, &scale), 0);
    EXPECT_EQ(quantity, 2);
}

TEST(Scanner, LongStatementsStayLinear)
{
    // Each literal has an escape, so that its text is put together apart from the statement's.
    std::string text;
    for (int32_t i = 0; i < 100000; i++)
        text += "\"\\t\" ";
    Statement statement(text);
    int32_t count = 0;
    while (TLT_GetToken(statement.record, nullptr) == TLT_TOKEN_STRING)
        count++;
    EXPECT_EQ(count, 100000);
}

} // namespace
