// Trees: the code of nodes, legs and leaves, what the parser and the check say, and the walk over a
// tree as a graph.
#include "tests/compiled_source.h"

#include "stmt/tlss.h"

namespace
{

// A tree with the statements from line 6 on.
std::string tree(const std::string &body, const char *type = "VOID")
{
    return std::string("PRIVATE\nENUM COLOUR = RED GREEN BLUE\nTREE ") + type +
           " F(COLOUR A)\nBEGIN\n" + body + "END\n";
}

std::string code_of(const std::string &body)
{
    CompiledSource source(tree(body));
    EXPECT_EQ(source.messages, "") << body;
    return source.body("F");
}

std::string messages_of(const std::string &body, const char *type = "VOID")
{
    return CompiledSource(tree(body, type)).messages;
}

// What the callbacks are told, one line each; a node's handle is its name.
std::string told;

const char *name_of(TLI_IDENTIFIER *node)
{
    return node == nullptr ? "?" : TLI_IdentifierName(node);
}

void *tell_node(const char *kind, TLT_STATEMENT *statement, TLI_IDENTIFIER *node, TLE_TERM *term)
{
    told += std::string(kind) + " " + name_of(node) + " line " +
            std::to_string(TLT_StatementSourceLineNumber(statement)) +
            (term == nullptr ? " bare\n" : "\n");
    return const_cast<char *>(name_of(node));
}

const TLSS_CALLBACKS callbacks = {
    .new_leaf = [](void *, TLT_STATEMENT *statement, TLI_IDENTIFIER *node,
                   TLE_TERM *term) { return tell_node("leaf", statement, node, term); },
    .new_node = [](void *, TLT_STATEMENT *statement, TLI_IDENTIFIER *node,
                   TLE_TERM *term) { return tell_node("node", statement, node, term); },
    .link =
        [](void *context, void *from, int32_t value, void *to, const char *value_name) {
            EXPECT_EQ(context, &told);
            told += std::string(static_cast<char *>(from)) + " " + std::to_string(value) + "'" +
                    value_name + "' " + static_cast<char *>(to) + "\n";
        },
    .subtree = [](void *, void *handle, const char *name) -> void * {
        told += std::string("subtree ") + static_cast<char *>(handle) + " " + name + "\n";
        return const_cast<char *>("INNER");
    },
};

// Walks the tree F; gives what the callbacks were told and the first node.
std::string walk(const std::string &body)
{
    CompiledSource source(tree(body));
    EXPECT_EQ(source.messages, "") << body;
    TLS_BLOCK *root = TLIV_GetFunctionBlock(source.find("F"));
    TLSS_SetCallbacks(&callbacks);
    told.clear();
    EXPECT_EQ(TLS_BlockTree(TLSS_PASS_NODES, &told, root), root);
    EXPECT_EQ(TLS_BlockTree(TLSS_PASS_EDGES, &told, root), nullptr);
    void *first = TLS_BlockNode(&told, root);
    TLSS_SetCallbacks(nullptr);
    return told + "first " + (first == nullptr ? "none" : static_cast<char *>(first)) + "\n";
}

} // namespace

TEST(Trees, LegsAreJumpsToNodes)
{
    EXPECT_EQ(code_of(" NODE X A\n CASE GREEN GOTO Z\n CASE BLUE, RED GOTO Y\n"
                      " SUBTREE Y A\n CASE RED, GREEN, BLUE GOTO X\n LEAF Z\n"),
              "0 LLB NODE 3 ->4 0 0 ->7 0 0 ->4 0 0 0 LLB NODE 3 ->1 0 0 ->1 0 0 ->1 0 0 0 RET");
}

TEST(Trees, GotoAndFallThrough)
{
    EXPECT_EQ(code_of(" NODE X 7\n NODE Y 8\n GOTO X\n LEAF Z\n"), "7 POP 8 POP JUMP ->1 0 RET");
}

TEST(Trees, LeavesReturn)
{
    CompiledSource source(tree(" NODE X 1\n LEAF Y 5\n LEAF Z 6\n", "INT"), TLC_FLAG_LINES);
    EXPECT_EQ(source.messages, "");
    EXPECT_EQ(source.body("F"), "LINE 6 1 POP LINE 7 5 RET LINE 8 6 RET LINE 9 STOP");
}

TEST(Trees, GotoNotesItsLineAndNeverPasses)
{
    CompiledSource source(tree(" NODE X 1\n GOTO X\n"), TLC_FLAG_LINES);
    EXPECT_EQ(source.body("F"), "LINE 6 1 POP LINE 7 JUMP ->1 LINE 8");
    EXPECT_EQ(TLSS_GotoClass.flags, TLS_NO_PASS);
}

TEST(Trees, FaultyStatementsGiveNoCode)
{
    for (const char *body :
         { " NODE X NOWHERE\n", " NODE X A\n CASE RED GOTO X\n", " LEAF X 1\n", " NODE X\n" }) {
        CompiledSource source(tree(body));
        EXPECT_EQ(source.body("F"), "") << body;
    }
}

TEST(Trees, Messages)
{
    struct ROW {
        const char *type, *body, *messages;
    } const rows[] = {
        { "VOID", " NODE X A\n LEAF Y\n", "6 3 All CASE values must be specified\n" },
        { "VOID", " NODE X A\n CASE RED, GREEN, BLUE GOTO Y\n", "7 3 'Y' - Unknown identifier\n" },
        { "VOID", " NODE X A\n CASE RED, GREEN, BLUE GOTO A\n",
          "7 3 'A' - Wrong class of identifier\n" },
        { "VOID", " NODE X A\n CASE GOTO X\n CASE RED, GREEN, BLUE GOTO X\n",
          "7 3 CASE values must be in range 0 and 0x7FFFFFFF\n" },
        { "VOID", " NODE X A\n CASE RED, GREEN, BLUE\n", "7 3 'GOTO' expected here\n" },
        { "VOID", " NODE X A\n CASE RED, RED, GREEN GOTO X\n",
          "7 3 Multiple CASE value\n6 3 All CASE values must be specified\n" },
        { "VOID", " NODE X\n",
          "6 3 No expression for SWITCH or NODE\n6 3 Illegal type for SWITCH\n" },
        { "VOID", " LEAF X 1\n", "6 3 Type mismatch - Expression should return VOID\n" },
        { "VOID", " NODE X 1\n BREAK\n LEAF Y\n", "7 3 Unconnected Leg\n" },
        { "VOID", " NODE X 1\n GOTO Y\n", "7 3 'Y' - Unknown identifier\n" },
        { "VOID", " NODE X 1\n GOTO X\n GOTO X\n", "8 3 GOTO only permitted after a NODE\n" },
    };
    for (const ROW &row : rows) {
        EXPECT_EQ(messages_of(row.body, row.type), row.messages) << row.body;
    }
}

TEST(Trees, AreListed)
{
    CompiledSource source(tree(" NODE X A\n CASE RED, BLUE GOTO Z\n CASE GREEN GOTO Y\n"
                               " SUBTREE Y 1\n GOTO X\n LEAF Z\n"));
    EXPECT_EQ(source.messages, "");
    TLP_SetModuleOut(source.module, stdout);
    testing::internal::CaptureStdout();
    TLS_PrintBlock("ALL", TLIV_GetFunctionBlock(source.find("F")), 0);
    std::string listing = testing::internal::GetCapturedStdout();
    for (const char *part :
         { "\n      NODE\n", "\n      CASE 2,0\n      goto Z\n      CASE 1\n      goto Y\n",
           "\n      SUBTREE\n", "\n      GOTO X\n      LEAF\n" }) {
        EXPECT_NE(listing.find(part), std::string::npos) << part << listing;
    }
}

TEST(Trees, WalkTellsNodesThenEdges)
{
    EXPECT_EQ(walk(" NODE X A\n CASE GREEN GOTO Z\n CASE BLUE, RED GOTO Y\n"
                   " SUBTREE Y 1\n LEAF Z\n"),
              "node X line 6\nnode Y line 9\nleaf Z line 10 bare\n"
              "X 1'GREEN' Z\nX 0'RED' Y\nX 2'BLUE' Y\nY 0'' Z\nsubtree Y Y\nfirst X\n");
}

TEST(Trees, GotoIsTheOnlyEdgeOfItsNode)
{
    EXPECT_EQ(walk(" NODE X 1\n GOTO Z\n NODE Y 2\n LEAF Z\n LEAF W\n"),
              "node X line 6\nnode Y line 8\nleaf Z line 9 bare\nleaf W line 10 bare\n"
              "X 0'' Z\nY 0'' Z\nfirst X\n");
}

TEST(Trees, SubtreeChangesItsHandle)
{
    EXPECT_EQ(walk(" SUBTREE X 1\n NODE Y 2\n GOTO X\n"),
              "node X line 6\nnode Y line 7\nX 0'' Y\nsubtree X X\nY 0'' INNER\nfirst INNER\n");
}

TEST(Trees, BodyAtTheColumnOfEndIsWalked)
{
    EXPECT_EQ(walk("NODE X 1\nLEAF Y\n"), "node X line 6\nleaf Y line 7 bare\nX 0'' Y\nfirst X\n");
}

TEST(Trees, BreakCutsTheEdge)
{
    CompiledSource source(tree(" NODE X 1\n BREAK\n LEAF Y\n"));
    TLS_BLOCK *root = TLIV_GetFunctionBlock(source.find("F"));
    TLSS_SetCallbacks(&callbacks);
    told.clear();
    TLS_BlockTree(TLSS_PASS_NODES, &told, root);
    TLS_BlockTree(TLSS_PASS_EDGES, &told, root);
    TLSS_SetCallbacks(nullptr);
    EXPECT_EQ(told, "node X line 6\nleaf Y line 8 bare\n");
}

TEST(Trees, WalkWithoutCallbacksEnds)
{
    CompiledSource source(tree(" NODE X 1\n LEAF Y\n"));
    TLS_BLOCK *root = TLIV_GetFunctionBlock(source.find("F"));
    EXPECT_EQ(TLS_BlockTree(TLSS_PASS_NODES, nullptr, root), nullptr);
    EXPECT_EQ(TLS_BlockTree(TLSS_PASS_EDGES, nullptr, root), nullptr);
    EXPECT_EQ(TLS_BlockNode(nullptr, root), nullptr);
    EXPECT_EQ(TLS_BlockTree(TLSS_PASS_NODES, nullptr, nullptr), nullptr);
}
