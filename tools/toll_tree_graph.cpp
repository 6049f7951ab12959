// Trees as graphs: the library walks each tree and tells its nodes and edges, which are kept until
// their kinds are known and then written in the DOT language.

#include "toll_tree_graph.h"

#include <algorithm>
#include <deque>

namespace
{

enum NODE_KIND { KIND_NODE, KIND_SUBTREE, KIND_LEAF, KIND_COUNT };

struct NODE {
    size_t number; // in the order of the source
    NODE_KIND kind;
    std::string name;
    std::string expression; // as the source has it; empty for a leaf that returns nothing
};

struct EDGE {
    const NODE *from;
    const NODE *to;
    std::string value; // empty where no leg leads on
};

/** One tree, as the walk tells it; a node's handle is its address. */
struct GRAPH {
    std::deque<NODE> nodes; // a node stays where it is
    std::vector<EDGE> edges;
};

void *add_node(void *context, NODE_KIND kind, TLI_IDENTIFIER *identifier, TLE_TERM *expression)
{
    GRAPH *graph = static_cast<GRAPH *>(context);
    NODE node = { graph->nodes.size(), kind, "", "" };
    if (identifier != nullptr) node.name = TLI_IdentifierName(identifier);
    if (expression != nullptr) {
        char *text = TLE_ExpressionChars(expression);
        node.expression = text;
        SH_Free(text);
    }
    graph->nodes.push_back(node);
    return &graph->nodes.back();
}

void *new_leaf(void *context, TLT_STATEMENT *, TLI_IDENTIFIER *identifier, TLE_TERM *expression)
{
    return add_node(context, KIND_LEAF, identifier, expression);
}

void *new_node(void *context, TLT_STATEMENT *, TLI_IDENTIFIER *identifier, TLE_TERM *expression)
{
    return add_node(context, KIND_NODE, identifier, expression);
}

void add_edge(void *context, void *from, int32_t, void *to, const char *value_name)
{
    GRAPH *graph = static_cast<GRAPH *>(context);
    graph->edges.push_back({ static_cast<NODE *>(from), static_cast<NODE *>(to), value_name });
}

/** Only a subtree is told of a second time. */
void *mark_subtree(void *, void *handle, const char *)
{
    static_cast<NODE *>(handle)->kind = KIND_SUBTREE;
    return handle;
}

constexpr TLSS_CALLBACKS callbacks = {
    .new_leaf = new_leaf,
    .new_node = new_node,
    .link = add_edge,
    .subtree = mark_subtree,
};

/** A text in the quotes of the DOT language, in which a label takes \n as the end of a line. */
std::string quoted(const std::string &text)
{
    std::string result = "\"";
    for (const char c : text) {
        if (c == '\n') {
            result += "\\n";
        } else if (static_cast<unsigned char>(c) < ' ') {
            result += ' ';
        } else {
            if (c == '"' || c == '\\') result += '\\';
            result += c;
        }
    }
    return result + '"';
}

/** Without its comments: each ends with its line, of which a statement can have several. */
std::string uncommented(const std::string &text)
{
    std::string code;
    char closing = 0; // of the text, character or data literal in hand
    for (size_t i = 0; i < text.size(); i++) {
        const char c = text[i];
        if (closing == 0) {
            if (c == ';') i = std::min(text.find('\n', i), text.size());
            if (c == '"' || c == '\'') closing = c;
            if (c == '{') closing = '}';
        } else if (c == '\\') {
            code += c;
            i++;
        } else if (c == closing) {
            closing = 0;
        }
        if (i < text.size()) code += text[i];
    }
    return code;
}

/** An expression without comments and the blanks around it. */
std::string bare(const std::string &text)
{
    const std::string code = uncommented(text);
    const size_t first = code.find_first_not_of(" \t\n");
    if (first == std::string::npos) return "";
    return code.substr(first, code.find_last_not_of(" \t\n") - first + 1);
}

std::string node_line(const NODE &node)
{
    static constexpr const char *shapes[KIND_COUNT] = { "shape=ellipse", "shape=box",
                                                        "shape=ellipse, peripheries=2" };
    const std::string expression = bare(node.expression);
    const std::string label = expression.empty() ? node.name : node.name + "\n" + expression;
    return "    " + quoted(node.name) + " [label=" + quoted(label) + ", " + shapes[node.kind] +
           "];\n";
}

/** Control goes on by itself to the node behind; any other edge without a value is a GOTO. */
std::string edge_style(const EDGE &edge)
{
    if (!edge.value.empty()) return " [label=" + quoted(edge.value) + "]";
    return edge.to->number == edge.from->number + 1 ? " [style=dashed]" : "";
}

std::string edge_line(const EDGE &edge)
{
    return "    " + quoted(edge.from->name) + " -> " + quoted(edge.to->name) + edge_style(edge) +
           ";\n";
}

std::string dot_text(const std::string &name, const GRAPH &graph)
{
    std::string text = "digraph " + quoted(name) + " {\n";
    for (const NODE &node : graph.nodes)
        text += node_line(node);
    for (const EDGE &edge : graph.edges)
        text += edge_line(edge);
    return text + "}\n";
}

/** The edges of one node together, in the order of the walk. */
std::vector<std::vector<const EDGE *>> edges_by_node(const GRAPH &graph)
{
    std::vector<std::vector<const EDGE *>> edges(graph.nodes.size());
    for (const EDGE &edge : graph.edges)
        edges[edge.from->number].push_back(&edge);
    return edges;
}

std::string outline_text(const std::string &name, const GRAPH &graph)
{
    static constexpr const char *kinds[KIND_COUNT] = { "NODE", "SUBTREE", "LEAF" };
    const auto edges = edges_by_node(graph);
    std::string text = "TREE " + name + "\n";
    for (const NODE &node : graph.nodes) {
        const std::string expression = bare(node.expression);
        text += std::string{ "  " } + kinds[node.kind] + " " + node.name;
        text += (expression.empty() ? "" : "  " + expression) + "\n";
        for (const EDGE *edge : edges[node.number])
            text += "    " + edge->value + (edge->value.empty() ? "-> " : " -> ") + edge->to->name +
                    "\n";
    }
    return text;
}

/** Walks each tree that has a body, and writes it in a form. */
std::string write_trees(TLP_MODULE *module, const std::vector<TLP_SECTION *> &sections,
                        std::string (*form)(const std::string &name, const GRAPH &graph))
{
    std::string text;
    TLSS_SetCallbacks(&callbacks);
    for (TLP_SECTION *section : sections) {
        TLS_BLOCK *tree = TLP_SectionBlock(module, section);
        if (TLP_SectionType(section) != TLP_SECTION_TREE || tree == nullptr) continue;
        GRAPH graph;
        TLS_BlockTree(TLSS_PASS_NODES, &graph, tree);
        TLS_BlockTree(TLSS_PASS_EDGES, &graph, tree);
        text += form(std::string{ TLP_ModuleName(module) } + "." + TLP_SectionName(section), graph);
    }
    TLSS_SetCallbacks(nullptr);
    return text;
}

} // namespace

std::string tree_graphs(TLP_MODULE *module, const std::vector<TLP_SECTION *> &sections)
{
    return write_trees(module, sections, dot_text);
}

std::string tree_outlines(TLP_MODULE *module, const std::vector<TLP_SECTION *> &sections)
{
    return write_trees(module, sections, outline_text);
}

std::vector<TLP_SECTION *> sections_named(const std::vector<TLP_SECTION *> &sections,
                                          const std::string &name)
{
    std::vector<TLP_SECTION *> named;
    for (TLP_SECTION *section : sections) {
        const char *own = TLP_SectionName(section);
        if (own != nullptr && ST_CompareCI(own, name.c_str()) == 0) named.push_back(section);
    }
    return named;
}
