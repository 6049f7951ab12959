// SWITCH in functions: the code of the table and of the legs, and what the parser and the check say.
#include "tests/compiled_source.h"

#include "stmt/tlss.h"

namespace
{

// A function with the statements from line 7 on.
std::string function(const std::string &body)
{
    return "PRIVATE\nENUM COLOUR = RED GREEN BLUE\nVAR STRING TEXT\nFUNCTION VOID F(INT A)\n"
           "BEGIN\n" +
           body + "END\n";
}

std::string code_of(const std::string &body)
{
    CompiledSource source(function(body));
    EXPECT_EQ(source.messages, "") << body;
    return source.code("F");
}

// The opening of the function and the end of it.
const std::string head = "| ALLOC 4 ";

} // namespace

// Sections: 0 the head, 1 the selector, 2 the table, then the legs, and what stands behind them.
TEST(Switches, TableStartsAtTheLowestValue)
{
    EXPECT_EQ(
        code_of(" SWITCH A\n CASE 12\n  A = 1\n CASE 10\n  RETURN\n DEFAULT\n  A = 2\n A = 3\n"),
        head + "| 0 LLW | 10 SUB SWITCH 3 ->9 0 0 ->6 0 0 ->9 0 0 ->3 0 0 "
               "| | 1 0 SLWP | JUMP ->11 | | 0 RET | | | 2 0 SLWP | | 3 0 SLWP | 0 RET ");
}

TEST(Switches, WithoutDefaultTheRestGoesOn)
{
    EXPECT_EQ(code_of(" SWITCH A\n CASE 0, 2\n  A = 1\n CASE 1\n RETURN\n"),
              head + "| 0 LLW | SWITCH 3 ->8 0 0 ->3 0 0 ->6 0 0 ->3 0 0 "
                     "| | 1 0 SLWP | JUMP ->8 | | JUMP ->8 | | 0 RET | 0 RET ");
}

TEST(Switches, StandInOneAnother)
{
    EXPECT_EQ(code_of(" SWITCH A\n CASE 1\n  SWITCH A\n  CASE 2\n   A = 5\n  DEFAULT\n   A = 6\n"
                      " DEFAULT\n  A = 7\n"),
              head + "| 0 LLW | 1 SUB SWITCH 1 ->13 0 0 ->3 0 0 | "
                     "| 0 LLW | 2 SUB SWITCH 1 ->9 0 0 ->6 0 0 | | 5 0 SLWP | JUMP ->11 "
                     "| | 6 0 SLWP | | JUMP ->15 | | 7 0 SLWP | | 0 RET ");
}

TEST(Switches, NotesItsLine)
{
    CompiledSource source(function(" SWITCH A\n CASE 0\n"), TLC_FLAG_LINES);
    EXPECT_EQ(source.code("F"), head + "| LINE 7 0 LLW | SWITCH 1 ->5 0 0 ->3 0 0 | | JUMP ->5 | "
                                       "| LINE 9 0 RET ");
}

TEST(Switches, FaultyStatementsGiveNoCode)
{
    for (const char *body : { " SWITCH NOWHERE\n CASE 1\n  A = 1\n", " SWITCH\n",
                              " SWITCH A\n CASE 0, 255\n  A = 1\n" }) {
        CompiledSource source(function(body));
        EXPECT_EQ(source.body("F"), "") << body;
    }
}

TEST(Switches, ValuesAreFoundHoweverMany)
{
    TLSS_VALUE_SET set = {};
    for (int32_t value = 0; value < 100000; value++)
        ASSERT_TRUE(TLSS_AddToSet(&set, value % 2 == 0 ? value : INT32_MAX - value));
    for (int32_t value = 0; value < 100000; value++)
        ASSERT_FALSE(TLSS_AddToSet(&set, value % 2 == 0 ? value : INT32_MAX - value));
    EXPECT_EQ(set.count, 100000u);
    SH_Free(set.places);
}

TEST(Switches, AreListed)
{
    CompiledSource source(function(" SWITCH A\n CASE 3, 4\n  RETURN\n DEFAULT\n  RETURN\n"));
    TLP_SetModuleOut(source.module, stdout);
    testing::internal::CaptureStdout();
    TLS_PrintBlock("ALL", TLIV_GetFunctionBlock(source.find("F")), 0);
    std::string listing = testing::internal::GetCapturedStdout();
    for (const char *part :
         { "\n      SWITCH\n", "\n      CASE 4,3\n        CASE BLOCK\n",
           "\n        END CASE BLOCK\n", "\n      DEFAULT\n        DEFAULT BLOCK\n" }) {
        EXPECT_NE(listing.find(part), std::string::npos) << part << listing;
    }
}

TEST(Switches, Messages)
{
    expect_messages(
        function,
        {
            { " SWITCH A\n CASE 0\n  A = 1\n CASE 254\n  A = 2\n", "" },
            { " SWITCH A\n CASE 0, 0x7FFFFFFF\n  A = 1\n",
              "7 3 Too many CASE values (implementation restriction)\n" },
            { " SWITCH A\n CASE 1, 2\n  A = 1\n CASE 2, 1\n  A = 1\n",
              "10 3 Multiple CASE value\n10 3 Multiple CASE value\n" },
            { " SWITCH A\n CASE A\n  A = 1\n",
              "8 3 Not a compile-time constant\n"
              "8 3 CASE values must be in range 0 and 0x7FFFFFFF\n" },
            { " SWITCH RED\n CASE GREEN\n  A = 1\n", "" },
            { " SWITCH 'a'\n CASE 'b'\n  A = 1\n", "" },
            { " SWITCH A\n A = 1\n", "7 3 No CASE values for SWITCH statement\n" },
            { " SWITCH A\n DEFAULT\n  RETURN\n  A = 1\n",
              "7 3 No CASE values for SWITCH statement\n" },
            { " SWITCH\n CASE 1\n  A = 1\n",
              "7 3 No expression for SWITCH or NODE\n7 3 Illegal type for SWITCH\n"
              "8 3 CASE values must be in range 0 and 0x7FFFFFFF\n" },
            { " SWITCH A\n CASE 1\n  A = 1\n A = 2\n CASE 2\n  A = 1\n DEFAULT\n",
              "11 3 CASE not part of a SWITCH statement\n12 3 New block in wrong place\n"
              "13 3 DEFAULT not part of a SWITCH statement\n" },
            // A leg behind the DEFAULT is a leg like any other, and the blocks are checked.
            { " SWITCH A\n DEFAULT\n  RETURN\n  A = 2\n CASE 1\n  RETURN\n  A = 1\n",
              "13 2 Unreachable code\n10 2 Unreachable code\n" },
        });
}
