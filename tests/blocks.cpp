// Blocks: where a statement lands by its indent, what the checks say, and the code of the simple
// statements.
#include "tests/compiled_source.h"

namespace
{

// Statements of one function between BEGIN and END, from line 6 on.
std::string function(const std::string &head, const std::string &body)
{
    return "PRIVATE\n" + head + "\nVAR INT A, B\nBEGIN\n" + body + "END\n";
}

// A statement class that only remembers, for trees built by hand.
const TLS_STATEMENT_CLASS plain_class = {
    .flags = 0,
    .print = nullptr,
    .check = nullptr,
    .p_code = nullptr,
    .c_code = nullptr,
    .java_code = nullptr,
    .delete_statement = [](TLS_STATEMENT *record) { SH_Free(record); },
    .tree = nullptr,
    .node_section = nullptr,
    .tree_callbacks = nullptr,
};

// A root block over a parser that appends every statement, and opens a block behind a "WHILE".
class Tree
{
public:
    Tree()
    {
        TLP_Initialise();
        TLS_DeclareBlockClass(TLP_SECTION_PICTURE, &block_class);
        root = TLS_NewBlock(nullptr, new_record(nullptr), TLP_SECTION_PICTURE);
        body = TLS_SubBlock(root);
    }

    ~Tree()
    {
        for (TLS_BLOCK *block : opened)
            TLS_DelBlock(block);
        TLS_DelBlock(body);
        TLS_DelBlock(root);
        for (TLT_STATEMENT *statement : statements)
            TLT_DelStatement(statement);
        opened.clear();
    }

    // Places a statement and gives the block that took it.
    TLS_BLOCK *place(int indent, const char *text)
    {
        std::string line(static_cast<size_t>(indent), ' ');
        line += text;
        int32_t number = static_cast<int32_t>(statements.size()) + 1;
        TLT_STATEMENT *statement = TLT_NewStatement(line.c_str(), "m.tl", number, number);
        statements.push_back(statement);
        taken = nullptr;
        TLS_Statement(root, statement);
        return taken;
    }

    std::string last_message() const
    {
        std::string text;
        TLT_AllMessages(
            statements.back(),
            [](void *context, TLT_STATEMENT *, int32_t, const char *message) -> int32_t {
                *static_cast<std::string *>(context) = message;
                return 1;
            },
            &text);
        return text;
    }

    TLS_BLOCK *root;
    TLS_BLOCK *body;
    static inline std::vector<TLS_BLOCK *> opened;

private:
    static inline TLS_BLOCK *taken = nullptr;
    std::vector<TLT_STATEMENT *> statements;

    static TLS_STATEMENT *new_record(TLT_STATEMENT *statement)
    {
        return TLS_NewStatement("TEST:PLAIN", sizeof(TLS_STATEMENT), &plain_class, statement);
    }

    static void parse(TLS_BLOCK *root, TLT_STATEMENT *statement, void *)
    {
        taken = root->current;
        TLS_Append(root, new_record(statement));
        if (TLT_NextToken(statement, nullptr) == TLT_TOKEN_WHILE) {
            opened.push_back(TLS_SubBlock(root));
        }
    }

    static inline const TLS_BLOCK_CLASS block_class = {
        .begin = nullptr,
        .parser = parse,
    };
};

} // namespace

TEST(Blocks, IndentFindsTheBlock)
{
    Tree tree;
    EXPECT_EQ(tree.place(4, "WHILE"), tree.body);
    TLS_BLOCK *outer = Tree::opened.back();
    EXPECT_EQ(outer->indent, -1);
    EXPECT_EQ(tree.place(8, "WHILE"), outer);
    TLS_BLOCK *inner = Tree::opened.back();
    EXPECT_EQ(tree.place(12, "A"), inner);
    EXPECT_EQ(tree.place(12, "A"), inner);
    EXPECT_EQ(tree.last_message(), "");
    EXPECT_EQ(tree.place(4, "A"), tree.body);
    EXPECT_EQ(tree.last_message(), "");
    EXPECT_EQ(tree.body->indent, 4);
    EXPECT_EQ(outer->indent, 8);
    EXPECT_EQ(tree.place(0, "A"), tree.root);
    EXPECT_EQ(tree.last_message(), "");
}

TEST(Blocks, BlocksOfOneIndentCloseTogether)
{
    Tree tree;
    tree.place(4, "WHILE");
    TLS_BLOCK *twin = Tree::opened.back();
    twin->indent = 4;
    TLS_SetParser(twin, tree.body->parser, nullptr);
    Tree::opened.push_back(TLS_SubBlock(tree.root));
    tree.place(8, "A");
    EXPECT_EQ(tree.place(4, "A"), tree.body);
}

TEST(Blocks, StrayIndentsAreReported)
{
    Tree tree;
    tree.place(4, "WHILE");
    TLS_BLOCK *inner = Tree::opened.back();
    tree.place(8, "A");
    EXPECT_EQ(tree.place(10, "A"), inner);
    EXPECT_EQ(tree.last_message(), "New block in wrong place");
    EXPECT_EQ(tree.place(6, "A"), inner);
    EXPECT_EQ(tree.last_message(), "New block in wrong place");
    EXPECT_EQ(tree.place(2, "A"), tree.root);
    EXPECT_EQ(tree.last_message(), "Indent does not match an outer block");
    EXPECT_EQ(tree.place(4, "A"), tree.root);
    EXPECT_EQ(tree.last_message(), "New block in wrong place");
}

TEST(Blocks, OpenedBlockStaysEmptyWithoutDeeperStatement)
{
    Tree tree;
    tree.place(4, "WHILE");
    TLS_BLOCK *inner = Tree::opened.back();
    EXPECT_EQ(tree.place(4, "A"), tree.body);
    EXPECT_TRUE(TLS_EmptyBlock(inner));
    EXPECT_TRUE(TLS_EmptyBlock(nullptr));
    EXPECT_FALSE(TLS_EmptyBlock(tree.body));
}

TEST(Blocks, NestingHasALimit)
{
    Tree tree;
    for (int depth = 0; depth < 1000; ++depth) {
        ASSERT_NE(tree.place(1 + depth, "WHILE"), nullptr) << depth;
        ASSERT_EQ(tree.last_message(), "") << depth;
    }
    EXPECT_NE(tree.place(1001, "WHILE"), nullptr);
    EXPECT_EQ(tree.last_message(), "");
    EXPECT_EQ(tree.place(1002, "WHILE"), nullptr);
    EXPECT_EQ(tree.last_message(), "Blocks nested too deeply");
    EXPECT_EQ(tree.place(1, "A"), tree.body);
    EXPECT_EQ(tree.last_message(), "");
}

TEST(Blocks, OwnerIsTheStatementAround)
{
    Tree tree;
    EXPECT_EQ(TLS_Owner(tree.root, nullptr), tree.root->head);
    tree.place(4, "A");
    tree.place(4, "WHILE");
    EXPECT_EQ(TLS_Owner(tree.root, nullptr), TLS_LastStatement(tree.body));
    EXPECT_EQ(TLS_Owner(tree.root, &TLS_EndClass), nullptr);
    EXPECT_EQ(TLS_Owner(tree.root, &plain_class), TLS_LastStatement(tree.body));
}

TEST(Blocks, UnknownBodiesDoNotBegin)
{
    TLP_Initialise();
    EXPECT_EQ(TLS_Begin(nullptr, nullptr, nullptr, TLP_SECTION_SYSCALL), nullptr);
    EXPECT_EQ(TLS_Begin(nullptr, nullptr, nullptr, -1), nullptr);
    EXPECT_EQ(TLS_Begin(nullptr, nullptr, nullptr, 10), nullptr);
}

TEST(Statements, Messages)
{
    struct {
        const char *head;
        const char *body;
        const char *messages;
    } static const rows[] = {
        { "FUNCTION VOID F()", "  A = 1\n  RETURN\n", "" },
        { "FUNCTION VOID F()", "A = 1\n", "" },
        { "FUNCTION VOID F()", "   A = 1\n\n   ; nothing\n   B = A\n", "" },
        { "FUNCTION VOID F()", "    A = 1\n  A = 2\n", "7 3 New block in wrong place\n" },
        { "FUNCTION VOID F()", "RETURN\n", "7 2 Unreachable code\n" },
        { "FUNCTION INT F()", "  RETURN 1V\n",
          "6 3 Type mismatch - Expression should return INT\n" },
        { "FUNCTION VOLTAGE F()", "  RETURN 1V\n", "" },
        { "FUNCTION INT F()", "  RETURN 'a'\n", "" },
        { "FUNCTION INT F()", "  RETURN 1 2\n", "6 3 Redundant expression\n" },
    };
    for (const auto &row : rows) {
        CompiledSource source(function(row.head, row.body));
        EXPECT_EQ(source.messages, row.messages) << row.head << "\n" << row.body;
    }
}

TEST(Statements, Code)
{
    struct {
        const char *head;
        const char *body;
        const char *code;
    } static const rows[] = {
        { "FUNCTION VOID F()", "", "| ALLOC 8 | 0 RET " },
        { "FUNCTION INT F()", "", "| ALLOC 8 | STOP " },
        { "FUNCTION VOID F()", "  A = B\n", "| ALLOC 8 | 4 LLW 0 SLWP | 0 RET " },
        { "FUNCTION VOID F()", "  RETURN\n", "| ALLOC 8 | 0 RET | 0 RET " },
        { "FUNCTION INT F()", "  RETURN A\n", "| ALLOC 8 | 0 LLW RET | STOP " },
        { "FUNCTION INT F(INT C)", "  RETURN C\n", "| ALLOC 12 | 0 LLW RET | STOP " },
        { "FUNCTION VOID F()", "A = B\n", "| ALLOC 8 | 4 LLW 0 SLWP | 0 RET " },
    };
    for (const auto &row : rows) {
        CompiledSource source(function(row.head, row.body));
        EXPECT_EQ(source.code("F"), row.code) << row.body << source.messages;
    }
}

TEST(Statements, FrameIsRoundedUpAndCanBeAbsent)
{
    CompiledSource source("PRIVATE\n"
                          "FUNCTION VOID NONE()\nBEGIN\nEND\n"
                          "FUNCTION VOID FIVE()\nVAR INT A\nVAR CHAR C\nBEGIN\nEND\n"
                          "FUNCTION VOID HUGE()\nVAR INT A[16383]\nVAR CHAR C\nBEGIN\nEND\n"
                          "FUNCTION VOID OVER()\nVAR INT A[16384]\nBEGIN\nEND\n");
    EXPECT_EQ(source.code("NONE"), "| | 0 RET ");
    EXPECT_EQ(source.code("FIVE"), "| ALLOC 6 | 0 RET ");
    EXPECT_EQ(source.code("HUGE"), "| ALLOC -2 | 0 RET ");
    EXPECT_EQ(source.messages, "");
    source.code("OVER");
    EXPECT_EQ(source.messages, "0 4 Frame too large\n");
}

TEST(Statements, FunctionSymbolFollowsItsQualifiers)
{
    const char *text = "FUNCTION VOID OPEN()\nENTRY FUNCTION VOID ENTERED()\nPRIVATE\n"
                       "FUNCTION VOID OPEN()\nBEGIN\nEND\n"
                       "FUNCTION VOID ENTERED()\nBEGIN\nEND\n"
                       "FUNCTION VOID CLOSED()\nBEGIN\nEND\n";
    CompiledSource source(text);
    EXPECT_EQ(source.code("OPEN"), "| 0:M.OPEN/CODE | 0 RET ");
    EXPECT_EQ(source.code("ENTERED"), "| 4:M.ENTERED/CODE | 0 RET ");
    EXPECT_EQ(source.code("CLOSED"), "| | 0 RET ");
    CompiledSource marked(text, TLP_FLAG_PRIVATE_SYMBOLS);
    EXPECT_EQ(marked.code("CLOSED"), "| 3:M.CLOSED/CODE | 0 RET ");
}

TEST(Statements, FailedStatementGivesNoCode)
{
    CompiledSource source(function("FUNCTION INT F()", "  A = NOBODY\n  B = A\n  RETURN 1V + 1\n"));
    EXPECT_EQ(source.code("F"), "| ALLOC 8 | 0 LLW 4 SLWP | STOP ");
    EXPECT_EQ(source.text("F", TLC_TARGET_C), "  B=A;\n");
}

TEST(Statements, LinesAreNoted)
{
    CompiledSource source(function("FUNCTION VOID F()", "  A = 1\n"), TLC_FLAG_LINES);
    EXPECT_EQ(source.code("F"), "| ALLOC 8 | LINE 6 1 0 SLWP | LINE 7 0 RET ");
}

TEST(Statements, Listing)
{
    CompiledSource source(function("FUNCTION VOID F()", "   A = B\n"));
    TLS_BLOCK *root = TLIV_GetFunctionBlock(source.find("F"));
    testing::internal::CaptureStdout();
    TLS_PrintBlock("BODY", root, 1);
    std::string text = testing::internal::GetCapturedStdout();
    EXPECT_EQ(text.rfind(" BODY\n     FUNCTION\n       Expression\n", 0), 0u) << text;
    const std::string end = "     END FUNCTION\n   FUNCTION END\n END BODY\n";
    ASSERT_GE(text.size(), end.size());
    EXPECT_EQ(text.substr(text.size() - end.size()), end);
}

TEST(Statements, ManyStatementsStayLinear)
{
    std::string body;
    for (int i = 0; i < 100000; ++i)
        body += "  A = B\n";
    CompiledSource source(function("FUNCTION VOID F()", body));
    EXPECT_EQ(source.messages, "");
    std::string code = source.code("F");
    EXPECT_EQ(code.size(), 18u + 100000u * 15u) << code.substr(0, 80);
}
