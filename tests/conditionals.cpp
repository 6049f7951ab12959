// IF, ELSEIF, ELSE and WHEN, RAISE and END_EXCEPTION: what is said of them, the layout of their
// sections, and chains and nests as long as a source can make them.
#include "tests/compiled_source.h"

#include "stmt/tlsc.h"

#include <sstream>

namespace
{

// A function over A and B; its statements begin on line 6.
std::string function(const std::string &body)
{
    return "PRIVATE\nFUNCTION VOID F()\nVAR INT A, B\nBEGIN\n" + body + "END\n";
}

// An IF with further conditions, each with a statement of its own, and an ELSE.
std::string chain(int length)
{
    std::string body = "  IF A == 0\n    B = 0\n";
    for (int i = 1; i < length; ++i)
        body += "  ELSEIF A == " + std::to_string(i) + "\n    B = 1\n";
    return body + "  ELSE\n    B = 2\n";
}

std::string nest(int depth, const std::string &innermost)
{
    std::string body;
    for (int i = 1; i <= depth; ++i)
        body += indent(i) + "IF A == 1\n";
    return body + indent(depth + 1) + innermost + "\n";
}

TLS_STATEMENT *first_statement(const CompiledSource &source)
{
    TLS_BLOCK *root = TLIV_GetFunctionBlock(source.find("F"));
    return reinterpret_cast<TLS_FUNCTION *>(root->head)->body->statements;
}

} // namespace

TEST(Conditionals, Messages)
{
    expect_messages(
        function,
        {
            { "  IF A == 1\n    B = 1\n  ELSEIF A == 2\n    B = 2\n  ELSE\n    B = 3\n  B = 4\n",
              "" },
            { "  IF A == 1\n    B = 1\n  B = 2\n  ELSE\n", "9 3 Unmatched ELSE statement\n" },
            { "  IF A == 1\n    ELSE\n  B = 2\n",
              "7 3 Unmatched ELSE statement\n6 2 Useless IF statement\n" },
            { "  IF A == 1\n    B = 1\n  ELSEIF A == 2\n    B = 2\n  ELSE\n    B = 3\n  ELSE\n",
              "12 3 Multiple ELSE statements\n" },
            { "  IF A == 1\n  ELSE\n  B = 1\n", "6 2 Useless IF statement\n" },
            { "  IF A == 1\n  ELSE\n    B = 1\n", "" },
            { "  IF A == 1\n  ELSEIF A == 2\n  B = 1\n", "7 2 Useless IF statement\n" },
            { "  IF A == 1\n    RETURN\n    B = 1\n  ELSEIF A == 2\n    RETURN\n    B = 2\n"
              "  ELSE\n    RETURN\n    B = 3\n",
              "8 2 Unreachable code\n11 2 Unreachable code\n14 2 Unreachable code\n" },
            { "  IF A\n    B = 1\n", "6 3 Type mismatch - Expression should return BOOL\n" },
            { "  RAISE A, B, 1\n", "6 3 Unexpected characters or keyword\n" },
        });
}

TEST(Conditionals, WhatAHandlerTakes)
{
    const std::string no_return = "3 RETURN not permitted from a WHEN block\n";
    const std::string no_end = "3 END_EXCEPTION can only be used in an exception handler block\n";
    expect_messages(
        function,
        {
            { "  WHEN 1\n    RETURN\n  ELSE\n    B = 1\n", "7 " + no_return },
            { "  WHEN 1\n    IF A == 1\n      RETURN\n", "8 " + no_return },
            { "  WHEN 1\n    IF A == 1\n      B = 1\n    ELSEIF A == 2\n      RETURN\n",
              "10 " + no_return },
            { "  WHEN 1\n    B = 1\n  ELSE\n    RETURN\n", "" },
            { "  WHEN 1\n    B = 1\n  ELSEIF A == 1\n    RETURN\n  ELSEIF A == 2\n    RETURN\n",
              "" },
            { "  WHEN 1\n    WHEN 2\n      B = 1\n    ELSE\n      RETURN\n", "" },
            { "  WHEN 1\n    B = 1\n  ELSE\n    WHEN 2\n      RETURN\n", "10 " + no_return },
            { "  WHEN 1\n    B = 1\n  RETURN\n", "" },
            { "  WHEN 1\n    END_EXCEPTION\n", "" },
            { "  WHEN 1\n    IF A == 1\n      END_EXCEPTION\n", "" },
            { "  WHEN 1\n    B = 1\n  ELSE\n    END_EXCEPTION\n", "9 " + no_end },
            { "  END_EXCEPTION\n", "6 " + no_end },
            { "  IF A == 1\n    END_EXCEPTION\n  B = 1\n",
              "7 " + no_end + "6 2 Useless IF statement\n" },
        });
}

// "|" opens a section; a jump names its target's number, counted from the head's section.
TEST(Conditionals, Sections)
{
    expect_code(
        function,
        {
            { "  IF A == 1\n    B = 2\n  ELSEIF A == 2\n    B = 3\n  ELSE\n    B = 4\n",
              "| ALLOC 8 | 0 LLW 1 EQ | JZ ->6 | | 2 4 SLWP | JUMP ->15 | | 0 LLW 2 EQ | JZ ->12 | "
              "| 3 "
              "4 SLWP | JUMP ->14 | | 4 4 SLWP | | | 0 RET " },
            // An IF that does not stand alone in its ELSE is no part of the chain.
            { "  IF A == 1\n    B = 2\n  ELSE\n    IF A == 2\n      B = 3\n    B = 4\n",
              "| ALLOC 8 | 0 LLW 1 EQ | JZ ->6 | | 2 4 SLWP | JUMP ->14 | | 0 LLW 2 EQ | JZ ->12 | "
              "| 3 4 SLWP | | | 4 4 SLWP | | 0 RET " },
            { "  WHEN 5\n    B = 2\n  ELSE\n    B = 3\n",
              "| ALLOC 8 | 5 | EXCEPTION ->6 | | 2 4 SLWP | END_EXCEPTION 1 JUMP ->8 | | 3 4 SLWP "
              "| 5 "
              "EXCEPTION ->9 | | 0 RET " },
            { "  RAISE A\n", "| ALLOC 8 | 0 LLW 0 RAISE | 0 RET " },
            { "  RAISE A, B\n", "| ALLOC 8 | 0 LLW 4 LLW RAISE | 0 RET " },
            { "  WHEN 5\n    END_EXCEPTION\n",
              "| ALLOC 8 | 5 | EXCEPTION ->6 | | END_EXCEPTION 0 | "
              "END_EXCEPTION 1 | 5 EXCEPTION ->7 | | 0 RET " },
            { "  IF A\n    B = 1\n  B = 2\n", "| ALLOC 8 | 2 4 SLWP | 0 RET " },
            { "  IF A == 1\n    B = 2\n  ELSEIF A\n    B = 3\n",
              "| ALLOC 8 | 0 LLW 1 EQ | JZ ->6 | | 2 4 SLWP | JUMP ->7 | | | 0 RET " },
            { "  RAISE 1V\n  RAISE A, 1V\n", "| ALLOC 8 | 0 RET " },
        });
}

TEST(Conditionals, LongChain)
{
    constexpr int length = 20000; // of which each would cost a walk over the chain, or a call
    CompiledSource source(function(chain(length)));
    EXPECT_EQ(source.messages, "");
    TLC_STREAM *stream = TLC_NewStream(source.module, 0);
    source.generate(stream, "F");
    int sections = 0;
    for (TLC_PSECT *at = stream->code.head; at != nullptr; at = at->next)
        ++sections;
    TLC_DelStream(stream);
    EXPECT_EQ(sections, 1 + 6 * length + length + 1 + 1);
}

TEST(Conditionals, ChainIsNoDeeperThanItsIf)
{
    CompiledSource source(function(nest(999, "IF A == 1") + indent(1001) + "B = 1\n" +
                                   indent(1000) + "ELSEIF A == 2\n" + indent(1001) + "B = 2\n"));
    EXPECT_EQ(source.messages, "");
    EXPECT_GT(source.code("F").size(), 20000u);
    CompiledSource deeper(function(nest(1001, "B = 1")));
    EXPECT_EQ(deeper.messages.rfind("1007 3 Blocks nested too deeply\n", 0), 0u)
        << deeper.messages.substr(0, 200);
}

TEST(Conditionals, Listing)
{
    CompiledSource source(function("  IF A == 1\n    B = 1\n  ELSEIF A == 2\n    B = 2\n"
                                   "  ELSE\n    RAISE 1\n  WHEN 2\n    END_EXCEPTION\n"));
    std::string outline;
    testing::internal::CaptureStdout();
    TLS_STATEMENT *record = first_statement(source);
    record->statement_class->print(record, 1);
    record->next->statement_class->print(record->next, 1);
    std::istringstream text(testing::internal::GetCapturedStdout());
    // Lines of the blocks and titles; those of the terms stand further in.
    for (std::string line; std::getline(text, line);) {
        static const char *const words[] = {
            "IF",   "ELSEIF",   "WHEN",     "RAISE",         "THEN",
            "ELSE", "END THEN", "END ELSE", "END_EXCEPTION", "END_EXCEPTION   END THEN"
        };
        size_t start = line.find_first_not_of(' ');
        for (const char *word : words) {
            if (start != std::string::npos && line.substr(start) == word) outline += line + "\n";
        }
    }
    EXPECT_EQ(outline, " IF\n   THEN\n   END THEN\n   ELSE\n"
                       "     ELSEIF\n       THEN\n       END THEN\n       ELSE\n"
                       "         RAISE\n       END ELSE\n   END ELSE\n"
                       " WHEN\n   THEN\n     END_EXCEPTION   END THEN\n");
}

TEST(Conditionals, ListingGrowsWithTheChain)
{
    size_t sizes[2];
    for (int i = 0; i < 2; ++i) {
        CompiledSource source(function(chain(500 * (i + 1))));
        testing::internal::CaptureStdout();
        TLS_STATEMENT *record = first_statement(source);
        record->statement_class->print(record, 1);
        sizes[i] = testing::internal::GetCapturedStdout().size();
    }
    EXPECT_LT(sizes[1], sizes[0] * 5 / 2);
}
