// WHILE and FOR: what is said of them, the layout of their sections, and nests.
#include "tests/compiled_source.h"

#include "stmt/tlsl.h"

namespace
{

// A function over variables of many kinds; its statements begin on line 12.
std::string function(const std::string &body)
{
    return "CONST INT TEN = 10\nPRIVATE\nENUM COLOUR = RED GREEN BLUE\n"
           "TYPEDEF RECORD PAIR(CHAR LEFT, INT CELLS[3])\n"
           "VAR PAIR P\nVAR COLOUR C\nVAR VOLTAGE V\nFUNCTION VOID F()\n"
           "VAR INT I, B, T[3]\nBEGIN\n" +
           body + "END\n";
}

} // namespace

TEST(Loops, ForMessages)
{
    struct {
        const char *line;
        const char *messages;
    } static const rows[] = {
        { "FOR I FROM 1 TO 3", "" },
        { "FOR I TO 3 FROM 1 BY 2", "" },
        { "FOR I BY B TO 3 FROM 1", "" },
        { "FOR P:LEFT FROM 1 TO 3", "" },
        { "FOR C FROM RED TO BLUE", "" },
        { "FOR V FROM 1V TO 3V BY 1mV", "" },
        { "FOR", "Missing expression;First parameter of FOR must be a variable;" },
        { "FOR T FROM 1 TO 3", "First parameter of FOR must be a variable;" },
        { "FOR P:CELLS[1] FROM 1 TO 3", "First parameter of FOR must be a variable;" },
        { "FOR I + 1 FROM 1 TO 3", "First parameter of FOR must be a variable;" },
        { "FOR I", "FROM missing in FOR statement;" },
        { "FOR I BY 2", "FROM missing in FOR statement;" },
        { "FOR I FROM 1 TO 3, 4", "Illegal in a FOR statement;Illegal in a FOR statement;" },
        { "FOR I FROM 1 TO 3 BY 0", "BY value must be positive;" },
        { "FOR I FROM 1 TO RED", "All arguments of FOR must have the same type;" },
        { "FOR I FROM 1 TO 3 BY 1V", "All arguments of FOR must have the same type;" },
        { "FOR I FROM 1V TO 3V BY 1V", "All arguments of FOR must have the same type;" },
    };
    for (const auto &row : rows) {
        CompiledSource source(function(std::string("  ") + row.line + "\n    B = I\n"));
        std::string wanted;
        for (const char *at = row.messages; *at != '\0'; ++at)
            wanted += at == row.messages || at[-1] == ';' ? std::string("12 3 ") + *at
                                                          : std::string(1, *at == ';' ? '\n' : *at);
        EXPECT_EQ(source.messages, wanted) << row.line;
    }
}

TEST(Loops, BodyMessages)
{
    CompiledSource source(function("  WHILE I\n    B = 1\n  WHILE I == 1\n  FOR I FROM 1 TO 3\n"
                                   "  WHILE I == 2\n    RETURN\n    B = 2\n"
                                   "  FOR T FROM 1 TO 3\n    RETURN\n    B = 2\n"));
    EXPECT_EQ(source.messages, "12 3 Type mismatch - Expression should return BOOL\n"
                               "19 3 First parameter of FOR must be a variable\n"
                               "14 2 Useless WHILE statement\n"
                               "15 2 Useless FOR statement\n"
                               "18 2 Unreachable code\n"
                               "21 2 Unreachable code\n");
}

TEST(Loops, Sections)
{
    expect_code(
        function,
        {
            { "  WHILE I == 1\n    B = 2\n",
              "| ALLOC 20 | 0 LLW 1 EQ | JZ ->6 | | 2 4 SLWP | JUMP ->1 | | 0 RET " },
            { "  FOR I FROM 1 TO 3\n    B = 2\n", "| ALLOC 20 | 3 DUP 1 EXCH 1 | 0 SLW LESS JNZ "
                                                  "->6 | | 2 4 SLWP | DUP2 0 LLW ADD JUMP ->2 "
                                                  "| POP POP | 0 RET " },
            { "  FOR I TO B BY I FROM 7\n",
              "| ALLOC 20 | 4 LLW DUP 0 LLW EXCH 7 | 0 SLW LESS JNZ ->5 "
              "| | DUP2 0 LLW ADD JUMP ->2 | POP POP | 0 RET " },
            { "  FOR P:LEFT FROM 1 TO 3\n", "| ALLOC 20 | 3 DUP 1 EXCH 1 | LSA static+0 SB LESS "
                                            "JNZ ->5 | | DUP2 LSA static+0 LB ADD "
                                            "JUMP ->2 | POP POP | 0 RET " },
            { "  WHILE I\n    B = 1\n  FOR I FROM 1V TO 3\n    B = 2\n  B = 3\n",
              "| ALLOC 20 | 3 4 SLWP | 0 RET " },
        });
}

TEST(Loops, NestedToTheLimit)
{
    std::string body;
    for (int depth = 1; depth <= 1000; ++depth)
        body += indent(depth) + (depth % 2 ? "WHILE I == 1\n" : "FOR I FROM 1 TO 3\n");
    body += indent(1001) + "B = 1\n";
    CompiledSource source(function(body));
    EXPECT_EQ(source.messages, "");
    EXPECT_GT(source.code("F").size(), 20000u);
}

TEST(Loops, Listing)
{
    CompiledSource source(function("  WHILE I == 1\n    FOR I FROM 1 TO 3 BY 2\n      B = 1\n"));
    TLS_BLOCK *root = TLIV_GetFunctionBlock(source.find("F"));
    testing::internal::CaptureStdout();
    TLS_PrintBlock("BODY", root, 0);
    std::string text = testing::internal::GetCapturedStdout();
    size_t at = 0;
    for (const char *line :
         { "\n      WHILE\n", "\n        BLOCK\n", "\n          DO\n", "\n          FROM\n",
           "\n          TO\n", "\n          BY\n", "\n            BLOCK\n",
           "\n            END BLOCK\n", "\n        END BLOCK\n" }) {
        at = text.find(line, at);
        ASSERT_NE(at, std::string::npos) << line << text;
    }
}
