// Messages: where they are kept, who is told, how they are counted and printed.
#include "frontend/tlt.h"
#include "tests/written.h"

#include <gtest/gtest.h>
#include <string>

namespace
{

std::string told;

void remember(TLT_STATEMENT *statement, int32_t level, const char *text)
{
    told += (statement == nullptr ? "-" : "s") + std::to_string(level) + text + ";";
}

class Messages : public testing::Test
{
protected:
    void SetUp() override
    {
        TLT_Initialise();
        told.clear();
        TLT_ResetCounters();
        TLT_DefaultMessageHandler(remember);
        statement = TLT_NewStatement("first one\nsecond", "s.tl", 7, 20);
    }

    void TearDown() override
    {
        TLT_DefaultMessageHandler(nullptr);
        TLT_DelStatement(statement);
    }

    std::string stored()
    {
        std::string joined;
        TLT_AllMessages(
            statement,
            [](void *context, TLT_STATEMENT *, int32_t level, const char *text) {
                *static_cast<std::string *>(context) += std::to_string(level) + text + ";";
                return 0; // does not stop the walk
            },
            &joined);
        return joined;
    }

    TLT_STATEMENT *statement;
};

TEST_F(Messages, AreStoredToldAndCounted)
{
    EXPECT_EQ(TLT_Warning(statement, "w"), 1);
    EXPECT_EQ(TLT_StatementError(statement), TLT_LEVEL_WARNING);
    EXPECT_EQ(TLT_Error(statement, "e"), 1);
    EXPECT_EQ(TLT_Error(nullptr, "n"), 2);
    EXPECT_EQ(TLT_Information(statement, "i"), 1);
    EXPECT_EQ(TLT_StatementError(statement), TLT_LEVEL_ERROR);
    EXPECT_EQ(stored(), "2w;3e;1i;");
    EXPECT_EQ(told, "s2w;s3e;-3n;s1i;");

    int32_t information = 9;
    int32_t warnings = 9;
    int32_t errors = 9;
    EXPECT_EQ(TLT_GetCounters(&information, &warnings, &errors), 1);
    EXPECT_EQ(information, 1);
    EXPECT_EQ(warnings, 1);
    EXPECT_EQ(errors, 2);
    TLT_FatalError(statement, "f");
    EXPECT_EQ(TLT_GetCounters(nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(TLT_StatementError(statement), TLT_LEVEL_FATAL);
    TLT_ResetCounters();
    EXPECT_EQ(TLT_GetCounters(nullptr, nullptr, &errors), 1);
    EXPECT_EQ(errors, 0);
}

TEST_F(Messages, GoWithTheResetUnlessKept)
{
    TLT_Error(statement, "e");
    TLT_GetToken(statement, nullptr);
    TLT_ResetStatement(statement, 1);
    EXPECT_EQ(TLT_StatementError(statement), TLT_LEVEL_OK);
    EXPECT_EQ(stored(), "3e;");
    char text[TLT_TEXT_SIZE];
    TLT_GetToken(statement, text);
    EXPECT_STREQ(text, "first");
    TLT_ResetStatement(statement, 0);
    EXPECT_EQ(stored(), "");
    TLT_Error(statement, "new");
    EXPECT_EQ(stored(), "3new;");
}

TEST_F(Messages, CaretStandsUnderTheLineOfItsColumn)
{
    auto print = [this](int32_t column) {
        return written(
            [this, column](FILE *stream) { TLT_PrintStatement(stream, statement, column); });
    };
    const std::string first = "s.tl, Line 7    first one\n";
    const std::string second = "     second\n";
    EXPECT_EQ(print(-1), first + second);
    EXPECT_EQ(print(0), first + std::string(15, ' ') + "^\n" + second);
    EXPECT_EQ(print(9), first + std::string(24, ' ') + "^\n" + second);
    EXPECT_EQ(print(10), first + second + std::string(15, ' ') + "^\n");
    EXPECT_EQ(print(17), first + second);
}

TEST_F(Messages, ArePrintedBelowTheirStatement)
{
    auto print = [](TLT_STATEMENT *where, int32_t level) {
        return written(
            [where, level](FILE *stream) { TLT_PrintMessage(stream, where, level, "text"); });
    };
    EXPECT_EQ(print(nullptr, TLT_LEVEL_OK), "OK : text\n\n");
    EXPECT_EQ(print(nullptr, TLT_LEVEL_INFORMATION), "-- INFORMATION : text\n\n");
    EXPECT_EQ(print(nullptr, TLT_LEVEL_WARNING), "?? WARNING : text\n\n");
    EXPECT_EQ(print(nullptr, TLT_LEVEL_FATAL), "** FATAL ERROR ** : text\n\n");
    TLT_GetToken(statement, nullptr);
    EXPECT_EQ(print(statement, TLT_LEVEL_ERROR), "s.tl, Line 7    first one\n" +
                                                     std::string(21, ' ') +
                                                     "^\n     second\n** ERROR : text\n\n");
}

TEST_F(Messages, LinesComeApartWithTheirBackslash)
{
    const std::string wide(600, 'w');
    TLT_STATEMENT *continued = TLT_NewStatement((wide + "\n" + wide).c_str(), "s.tl", 1, 1);
    std::string lines;
    auto join = [](void *context, const char *line) {
        *static_cast<std::string *>(context) += std::string(line) + "|";
        return 0;
    };
    TLT_SplitStatement(statement, join, &lines);
    EXPECT_EQ(lines, "first one\\|second|");
    lines.clear();
    TLT_SplitStatement(continued, join, &lines);
    EXPECT_EQ(lines, wide.substr(0, 510) + "\\|" + wide + "|");
    TLT_DelStatement(continued);
}

TEST_F(Messages, ManyOnOneStatementStayInOrder)
{
    TLT_DefaultMessageHandler(nullptr);
    for (int32_t i = 0; i < 100000; i++)
        TLT_Error(statement, "e");
    EXPECT_EQ(TLT_Error(statement, "last"), 100001);
    const std::string all = stored();
    EXPECT_EQ(all.size(), 100000U * 3 + 6);
    EXPECT_EQ(all.substr(all.size() - 6), "3last;");
}

} // namespace
