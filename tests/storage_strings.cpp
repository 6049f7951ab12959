/*
 * Storage and strings: zero fill, bounds of every copy, patterns, numbers, quoted strings, growth.
 */
#include "core/ist.h"
#include "core/sh.h"
#include "core/st.h"
#include "tests/written.h"

#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <ostrum/c.h>
#include <string>

namespace
{

TEST(Storage, BlocksAreZeroAfterReuse)
{
    for (const int32_t size : { 0, 1, 3, 4, 5, 31, 1000, 65535, 200000 }) {
        const size_t bytes = (static_cast<size_t>(size) + 3) / 4 * 4 + 4;
        char *block = static_cast<char *>(SH_Allocate(size));
        std::memset(block, 0x55, bytes);
        SH_Free(block);
        block = static_cast<char *>(SH_NameAllocate(size, "TEST:BLOCK"));
        EXPECT_EQ(std::string(block, bytes), std::string(bytes, '\0')) << size;
        SH_Free(block);
    }
    SH_Free(nullptr);
}

TEST(Storage, GrowthKeepsWhatIsUsedAndClearsTheRest)
{
    size_t capacity = 0;
    char *block = static_cast<char *>(SH_Grow(nullptr, 0, &capacity, 4));
    std::memcpy(block, "abcd", 4);
    block = static_cast<char *>(SH_Grow(block, 3, &capacity, 300));
    EXPECT_GE(capacity, 300u);
    EXPECT_EQ(std::string(block, 300), "abc" + std::string(297, '\0'));
    EXPECT_EQ(SH_Grow(block, 3, &capacity, 300), block);
    SH_Free(block);
}

TEST(StorageDeathTest, ExhaustionEndsTheProcessWithOneLine)
{
    EXPECT_EXIT(SH_Allocate(-1), testing::ExitedWithCode(1), "^[^\n]+\n$");
}

struct COPY_CASE {
    int32_t size;
    const char *source;
    const char *expected; // null: nothing is written
};

TEST(Strings, CopiesStayInsideTheirCapacity)
{
    static constexpr COPY_CASE cases[] = {
        { 1, "abc", "" },       { 0, "abc", nullptr },   { -3, "abc", nullptr },
        { 5, "abcde", "abcd" }, { 6, "abcde", "abcde" }, { 8, "", "" },
    };
    for (const COPY_CASE &row : cases) {
        char buffer[9] = "########";
        char *result = ST_Copy(buffer, row.size, row.source);
        EXPECT_EQ(result, row.expected == nullptr ? nullptr : buffer) << row.size;
        const char *expected = row.expected == nullptr ? "########" : row.expected;
        EXPECT_STREQ(buffer, expected) << row.size;
        if (row.size < 8) {
            EXPECT_EQ(buffer[row.size < 0 ? 0 : row.size], '#') << row.size;
        }
    }
}

TEST(Strings, AppendAndConcatUseWhatIsLeft)
{
    char buffer[12] = "abc";
    EXPECT_EQ(ST_Append(buffer, 6, "defgh"), buffer);
    EXPECT_STREQ(buffer, "abcde");
    EXPECT_EQ(ST_Append(buffer, 6, "x"), buffer);
    EXPECT_STREQ(buffer, "abcde");
    EXPECT_EQ(ST_Append(buffer, 3, "x"), buffer); // more there than the capacity: left alone
    EXPECT_STREQ(buffer, "abcde");
    EXPECT_EQ(ST_Append(buffer, 0, "x"), nullptr);
    EXPECT_EQ(ST_Concat(buffer, 8, "abcde", "fghij", "k", nullptr), buffer);
    EXPECT_STREQ(buffer, "abcdefg");
    ST_Concat(buffer, 8, nullptr);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(ST_Concat(buffer, 0, "a", nullptr), nullptr);
    char mixed[] = "aBc\xE4";
    EXPECT_EQ(ST_Upper(mixed, 4, mixed), mixed);
    EXPECT_STREQ(mixed, "ABC");
    EXPECT_STREQ(ST_Lower(buffer, 3, "XYZ"), "xy");
    EXPECT_STREQ(ST_CopySpan(buffer, 4, "abcdef", 6), "abc");
    EXPECT_STREQ(ST_CopySpan(buffer, 12, "abcdef", 2), "ab");
}

TEST(Strings, SearchAndComparison)
{
    const char *text = "one two";
    EXPECT_EQ(ST_FindString(text, "two"), text + 4);
    EXPECT_EQ(ST_FindString(text, ""), text + 7);
    EXPECT_EQ(ST_FindString(text, "Two"), nullptr);
    EXPECT_EQ(ST_StartsCI("Begin", "bEG"), 1);
    EXPECT_EQ(ST_StartsCI("Be", "beg"), 0);
    EXPECT_EQ(ST_StartsCI("", ""), 1);
    EXPECT_EQ(ST_CompareCI("abc", "ABD"), -1);
    EXPECT_EQ(ST_CompareCI("aBc", "AbC"), 0);
    EXPECT_EQ(ST_CompareCI("\xE4", "a"), 1); // as unsigned bytes
    EXPECT_EQ(ST_CompareCI("ab", "a"), 1);
    EXPECT_EQ(ST_CompareCI("_", "a"), 1); // upper case decides the order
    static constexpr const char *list[] = { "red", "Green", "GREEN", nullptr };
    EXPECT_EQ(ST_ListSearchCI("green", list), 1);
    EXPECT_EQ(ST_ListSearchCI("gree", list), -1);
    EXPECT_EQ(ST_ListSearchCI("green", list + 3), -1);
}

struct MATCH_CASE {
    const char *pattern;
    const char *text;
    int32_t expected;
};

TEST(Strings, Patterns)
{
    static constexpr MATCH_CASE cases[] = {
        { "", "", 1 },          { "", "a", 0 },          { "a*c", "abbc", 1 },
        { "a*c", "abbd", 0 },   { "*", "", 1 },          { "*b*", "abc", 1 },
        { "?", "", 0 },         { "a?", "ab", 1 },       { "[~x]?", "ab", 1 },
        { "[~x]", "", 0 },      { "[~x]", "x", 0 },      { "[a\\]]", "]", 1 },
        { "[]", "a", 0 },       { "+[ab]c", "abac", 1 }, { "+[ab]c", "abxc", 0 },
        { "+ab*", "abab", 0 }, // only the rightmost split is tried
        { "+a", "", 1 },        { "+ab", "aab", 1 },     { "+?c", "abcc", 1 },
        { "+\\x", "\\\\x", 1 }, // no escape behind a plus
        { "\\*a", "*a", 1 },    { "\\*a", "xa", 0 },     { "A", "a", 0 },
        { "[ab", "b", 1 }, // the class runs to the end
        { "x\\", "x\\", 1 },    { "+", "+", 1 },
    };
    for (const MATCH_CASE &row : cases)
        EXPECT_EQ(ST_Match(row.pattern, row.text), row.expected) << row.pattern << " " << row.text;
    EXPECT_EQ(ST_MatchCI("aB[c]*", "AbCx"), 1);
    EXPECT_EQ(ST_MatchCI("aB", "Abx"), 0);
}

TEST(Strings, PatternOfManyStarsIsNotExponential)
{
    std::string pattern;
    for (int i = 0; i < 500; i++)
        pattern += "a*";
    EXPECT_EQ(ST_Match((pattern + "b").c_str(), std::string(5000, 'a').c_str()), 0);
}

struct NUMBER_CASE {
    const char *text;
    int32_t format;
    int32_t value;
    int32_t consumed; // -1: no number
};

TEST(Strings, NumbersFromText)
{
    static constexpr NUMBER_CASE cases[] = {
        { "0x1F", 3, 31, 4 },
        { "0x", 3, 0, -1 },
        { "017", 3, 15, 3 },
        { "+017", 3, 17, 4 },
        { "09", 3, 0, 1 },
        { "-12z", 3, -12, 3 },
        { "0x1F", 2, 0, 1 },
        { "fFg", 2, 255, 2 },
        { "-1", 2, 0, -1 },
        { "-7", 1, 0, -1 },
        { "78", 1, 7, 1 },
        { "-", 0, 0, -1 },
        { "", 0, 0, -1 },
        { "4294967297", 0, 1, 10 }, // wraps
        { "-2147483648", 0, INT_MIN, 11 },
    };
    for (const NUMBER_CASE &row : cases) {
        int32_t value = 99;
        const char *end = ST_CharInt(row.text, &value, row.format);
        EXPECT_EQ(value, row.value) << row.text;
        EXPECT_EQ(end, row.consumed < 0 ? nullptr : row.text + row.consumed) << row.text;
    }
    int32_t value = 99;
    EXPECT_EQ(ST_CharInt("1", &value, 4), nullptr);
    EXPECT_EQ(ST_CharInt("1", &value, -1), nullptr);
    EXPECT_EQ(value, 99);
}

TEST(Strings, NumbersToText)
{
    char buffer[16];
    EXPECT_STREQ(ST_IntChar(buffer, -1, 0), "-1");
    EXPECT_STREQ(ST_IntChar(buffer, -1, 1), "37777777777");
    EXPECT_STREQ(ST_IntChar(buffer, -1, 2), "FFFFFFFF");
    EXPECT_STREQ(ST_IntChar(buffer, INT_MIN, 0), "-2147483648");
    EXPECT_STREQ(ST_IntChar(buffer, 0, 2), "0");
    EXPECT_EQ(ST_IntChar(buffer, 1, 3), nullptr);
}

TEST(Strings, FloatsFromText)
{
    static constexpr struct {
        const char *text;
        double value;
        int32_t consumed; // -1: no number
    } cases[] = {
        { "12.50", 12.5, 5 }, { "12.", 0, -1 },      { "", 0, -1 },   { "1e3", 1, 1 },
        { ".5", 0.5, 2 },     { "-.5", -0.5, 3 },    { "+2x", 2, 2 }, { "- 1", 0, -1 },
        { ".", 0, -1 },       { "-0.25", -0.25, 5 },
    };
    for (const auto &row : cases) {
        double value = 77;
        const char *end = ST_CharFloat(row.text, &value);
        EXPECT_EQ(end, row.consumed < 0 ? nullptr : row.text + row.consumed) << row.text;
        EXPECT_EQ(value, row.consumed < 0 ? 77 : row.value) << row.text;
    }
}

std::string quoted(const char *text)
{
    return written([=](FILE *stream) { ST_PutString(stream, text); });
}

/** What ST_GetString makes of a stream: its result, the text, and what is left on the stream. */
std::string read_back(const std::string &content, int32_t size)
{
    FILE *stream = std::tmpfile();
    std::fwrite(content.data(), 1, content.size(), stream);
    std::rewind(stream);
    char buffer[64] = "untouched";
    std::string answer = std::to_string(ST_GetString(stream, buffer, size)) + "|" + buffer + "|";
    for (int c = std::getc(stream); c != EOF; c = std::getc(stream))
        answer += static_cast<char>(c);
    std::fclose(stream);
    return answer;
}

TEST(Strings, QuotedForm)
{
    EXPECT_EQ(quoted("a\b\t\n\f\r\"\\\x01\x10\xFF"),
              "\"a\\b\\t\\n\n\\f\\r\n\\\"\\\\\\01\x10\\0377\"");
    const char *all = "x\n\r\t\"\\\b\f\x01y\xFF\x80";
    EXPECT_EQ(read_back(quoted(all), 64), std::string("1|") + all + "|");
}

TEST(Strings, QuotedFormReadBack)
{
    static constexpr struct {
        const char *content;
        int32_t size;
        const char *expected;
    } cases[] = {
        { " \t\n\"ab\"rest", 64, "1|ab|rest" },
        { "\"abc\"x", 4, "1|abc|x" },
        { "\"abcd\"x", 4, "0|abc|\"x" }, // stops inside the string
        { "z\\tq\"", 64, "0||q\"" },     // one string character goes too
        { "", 64, "0||" },
        { "\"ab", 64, "1|ab|" },    // the end of the stream ends it
        { "\"a\\0z", 64, "1|a|z" }, // so does a zero
        { "\"\\3777\"", 64, "1|\xFF|" },
        { "\"\\18\\q\\9\"", 64,
          "1|\x01"
          "8q9|" },
        { "\"a\nb\"", 64, "1|ab|" }, // a real line feed is dropped
        { "\"\"x", 1, "1||x" },
        { "\"a\"", 0, "0|untouched|\"" },
    };
    for (const auto &row : cases)
        EXPECT_EQ(read_back(row.content, row.size), row.expected) << row.content;
}

TEST(Strings, GrowingString)
{
    IST_STRING *string = IST_NewString();
    std::string expected;
    for (int i = 0; i < 300; i++) {
        IST_Append(string, "word");
        IST_AppendChar(string, static_cast<char>('a' + i % 26));
        expected += std::string("word") + static_cast<char>('a' + i % 26);
        ASSERT_LT(string->length, string->capacity); // the terminator fits too
    }
    const std::string big(100000, 'q');
    IST_Append(string, big.c_str());
    IST_Append(string, "");
    expected += big;
    EXPECT_EQ(IST_Length(string), static_cast<int32_t>(expected.size()));
    char *text = IST_GetString(string);
    EXPECT_EQ(text, expected);
    ST_Free(text);
}

TEST(Strings, WhiteSpace)
{
    std::string white;
    for (int c = 0; c < 256; c++) {
        if (!C_NotWhite(static_cast<uint8_t>(c))) white += static_cast<char>(c);
    }
    EXPECT_EQ(white, "\t\n\f\r ");
}

} // namespace
