// Compiles modules whose bodies take a shape of their own at two sizes each, and prints how the time
// grows with the source: all kinds of statements against plain ones, wide switches, long chains of
// conditions, deep nesting, large trees, data sections that refer to one another.
//
// usage: shapes [RUNS]     default: 5 runs

#include "measure.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace
{

constexpr const char *heading = "CONST VOLTAGE LIMIT = 14.5V\nENUM COLOUR = RED GREEN BLUE\n"
                                "PRIVATE\nVAR INT total\n\n";

/** A shape: the text of a module's functions at a size, and the two sizes. */
struct SHAPE {
    const char *name;
    std::string (*make)(int size);
    int sizes[2];
};

std::string numbered(const char *prefix, int number)
{
    return prefix + std::to_string(number);
}

std::string open_function(const char *prefix, int number)
{
    return "FUNCTION INT " + numbered(prefix, number) +
           "(INT a, VOLTAGE v)\nVAR INT x, y, z, table[16]\nVAR VOLTAGE u\nVAR TIME t\n"
           "VAR BOOL ok\nVAR COLOUR c\nBEGIN\n";
}

/** The statements of a body of expressions and calls alone; a call goes to the function before. */
constexpr const char *plain_body = "    x = a * 3 + y\n"
                                   "    y = (x - total) * (a + 7) / 5\n"
                                   "    u = v + 250mV\n"
                                   "    z = x << 2 | y & 255 ^ 17\n"
                                   "    table[x & 15] = y\n"
                                   "    y = table[3] - table[y & 15]\n"
                                   "    ok = x > y AND u < LIMIT OR NOT ok\n"
                                   "    t = 20ms + 3 * t\n"
                                   "    total = total + x MOD 100\n"
                                   "    z = ~x + -y\n";

/** One statement of each kind with what stands in it. */
constexpr const char *mixed_body = "    IF x > y AND u < LIMIT\n"
                                   "        y = max(x, table[3]) - abs(y)\n"
                                   "    ELSEIF ok\n"
                                   "        y = (x - total) * (a + 7) / 5\n"
                                   "    ELSE\n"
                                   "        u = v + 250mV\n"
                                   "    WHILE x < 100\n"
                                   "        x = x + a * 3\n"
                                   "    FOR z FROM 1 TO 10 BY 2\n"
                                   "        table[z & 15] = upb(table) - z\n"
                                   "    SWITCH x & 3\n"
                                   "    CASE 0, 1\n"
                                   "        y = table[3] - table[y & 15]\n"
                                   "    CASE 2\n"
                                   "        RETURN y\n"
                                   "    DEFAULT\n"
                                   "        total = total + x MOD 100\n"
                                   "    SWITCH c\n"
                                   "    CASE RED\n"
                                   "        c = BLUE\n"
                                   "    CASE GREEN\n"
                                   "        ok = u > 3V\n"
                                   "    WHEN 5\n"
                                   "        y = 0\n"
                                   "        END_EXCEPTION\n"
                                   "    ELSE\n"
                                   "        RAISE x, y\n";

std::string make_bodies(const char *prefix, const char *body, int function_count)
{
    std::string text;
    for (int number = 0; number < function_count; number++) {
        const int called = std::max(number - 1, 0);
        text += open_function(prefix, number) + body;
        text += "    x = " + numbered(prefix, called) + "(z, u)\n";
        text += "    RETURN x + z\nEND\n\n";
    }
    return text;
}

std::string make_plain(int function_count)
{
    return make_bodies("plain_", plain_body, function_count);
}

std::string make_mixed(int function_count)
{
    return make_bodies("mixed_", mixed_body, function_count);
}

/** Legs in switches of 250, each in a function of its own. */
std::string make_switches(int leg_count)
{
    constexpr int width = 250;
    std::string text;
    for (int first = 0; first < leg_count; first += width) {
        text += open_function("switch_", first / width) + "    SWITCH a\n";
        for (int leg = 0; leg < width; leg++)
            text += numbered("    CASE ", leg) + numbered("\n        x = y + ", leg) + "\n";
        text += "    RETURN x\nEND\n\n";
    }
    return text;
}

/** An IF with so many ELSEIFs, in several functions so that there is something to measure. */
std::string make_chains(int condition_count)
{
    constexpr int function_count = 10;
    std::string text;
    for (int number = 0; number < function_count; number++) {
        text += open_function("chain_", number) + "    IF a == 0\n        x = 1\n";
        for (int i = 1; i <= condition_count; i++)
            text += numbered("    ELSEIF a == ", i & 7) + "\n        x = 2\n";
        text += "    RETURN x\nEND\n\n";
    }
    return text;
}

/** Blocks in one another, a space further in each; the source itself grows with the square. */
std::string make_nests(int depth)
{
    constexpr int function_count = 20;
    std::string text;
    for (int number = 0; number < function_count; number++) {
        text += open_function("nest_", number);
        for (int i = 1; i <= depth; i++)
            text += std::string(static_cast<size_t>(i), ' ') + "IF a == 1\n";
        text += std::string(static_cast<size_t>(depth) + 1, ' ') + "x = 2\n";
        text += " RETURN x\nEND\n\n";
    }
    return text;
}

/** Trees with so many nodes, each leading on or to a leaf. */
std::string make_trees(int node_count)
{
    constexpr int tree_count = 5;
    std::string text;
    for (int number = 0; number < tree_count; number++) {
        text += "TREE COLOUR " + numbered("tree_", number) + "(INT a)\nBEGIN\n";
        for (int i = 0; i < node_count; i++) {
            text += numbered("    NODE n", i) + numbered(" a > ", i) + "\n";
            text += numbered("    CASE TRUE GOTO n", i + 1) + "\n";
            text += numbered("    CASE FALSE GOTO leaf", i / 50) + "\n";
            if (i % 50 == 49) text += numbered("    LEAF leaf", i / 50) + " RED\n";
        }
        text += numbered("    LEAF n", node_count) + " BLUE\n";
        text += "END\n\n";
    }
    return text;
}

/** What refers to the section of the same kind before it; the first one to itself. */
std::string link(const char *attribute, const char *prefix, int number)
{
    return std::string(attribute) + " = " + numbered(prefix, std::max(number - 1, 0));
}

/** Views, pins and points are linked to one another, and each second point to the view before. */
std::string make_connector(int number)
{
    std::string text = "DATA CONNECTOR " + numbered("plug", number) + "\nBEGIN\n";
    text +=
        "    Name = {PLUG}, Mnemonic = {X1}, Cable = 3, Helpscreen = " + numbered("help", number) +
        "\n";
    text +=
        "    VIEW face Name = {FACE}, Shell = {SHELL}, Component = " + numbered("part", number) +
        "\n";
    for (int pin = 1; pin <= 5; pin++) {
        const int seen_on = pin % 2 == 0 ? number : std::max(number - 1, 0);
        text += numbered("    PIN p", pin) + "\n";
        text += numbered("        Name = \"", pin) + "\", SignalName = \"SIGNAL\"" +
                numbered(", Line = \"", pin) + "\"\n";
        text += "        POINT a Location = {PLACE}, View = " + numbered("plug", seen_on) +
                ".face, Sex = FEMALE\n";
    }
    return text + "    VARLOC seal Location = {SEAL}\nEND\n\n";
}

std::string make_others(int number)
{
    const std::string heading = "\nBEGIN\n    ";
    return numbered("DATA COMPONENT part", number) + heading + "Name = {PART}, " +
           link("Parent", "part", number) + "\n    VARLOC side Location = {SIDE}\nEND\n\n" +
           numbered("DATA CONVERTER scale", number) + heading +
           "OldType = VOLTAGE, QuantityType = TEMPERATURE, " + link("Next", "scale", number) +
           "\n    MAP 0.5V, 120C\n    MAP 4.5V, -40C\nEND\n\n" +
           numbered("DATA WAVEFORM wave", number) + heading +
           "0, 64, 128, 192, 255\n    192, 128, 64\nEND\n\n" +
           numbered("DATA HELPSCREEN help", number) + heading + "Title = {TITLE}\n    {ADVICE}, " +
           link("Help", "help", number) + "\n    PICTURE {FACE}, Flags = 3\nEND\n\n";
}

/** So many items, in groups of one section of each kind, declared in front for those that name them. */
std::string make_data(int item_count)
{
    constexpr int group = 20;
    std::string text;
    for (int number = 0; number < item_count / group; number++)
        text += numbered("FORWARD DATA HELPSCREEN help", number) + "\n" +
                numbered("FORWARD DATA COMPONENT part", number) + "\n" +
                numbered("FORWARD DATA CONVERTER scale", number) + "\n";
    for (int number = 0; number < item_count / group; number++)
        text += make_connector(number) + make_others(number);
    return text;
}

constexpr SHAPE shapes[] = {
    { "plain bodies", make_plain, { 1000, 4000 } },
    { "all statements", make_mixed, { 1000, 4000 } },
    { "legs of switches", make_switches, { 5000, 10000 } },
    { "ELSEIFs of a chain", make_chains, { 1000, 2000 } },
    { "blocks nested", make_nests, { 250, 500 } },
    { "nodes of a tree", make_trees, { 1000, 2000 } },
    { "items of data", make_data, { 5000, 20000 } },
};

struct RESULT {
    MODULE_SIZE size;
    MEASUREMENT best;
};

RESULT measure_shape(const SHAPE &shape, int size, int runs)
{
    const std::string name = "shape";
    RESULT result = {};
    result.size = WriteSource(name, "MODULE " + name + "\n" + heading + shape.make(size));
    result.best = BestOf(runs, name);
    RemoveSource(name);
    return result;
}

void print_row(const SHAPE &shape, int size, const RESULT &result)
{
    const auto lines = static_cast<double>(result.size.lines);
    const auto bytes = static_cast<double>(result.size.bytes);
    printf("%-20s %6d %8lld %9lld %9.1f %11.0f %9.1f %9.1f\n", shape.name, size,
           static_cast<long long>(result.size.lines), static_cast<long long>(result.size.bytes),
           result.best.seconds * 1e3, lines / result.best.seconds,
           bytes / result.best.seconds / 1e6, static_cast<double>(result.best.peak_bytes) / bytes);
}

} // namespace

int main(int argument_count, char **arguments)
{
    const int runs = argument_count > 1 ? std::max(atoi(arguments[1]), 1) : 5;
    if (!EnterScratchDirectory()) return 1;
    printf("shape                  size    lines     bytes        ms     lines/s      MB/s"
           "  peak/source\n");
    for (const SHAPE &shape : shapes) {
        RESULT results[2];
        for (int i = 0; i < 2; i++) {
            results[i] = measure_shape(shape, shape.sizes[i], runs);
            print_row(shape, shape.sizes[i], results[i]);
        }
        printf("%26.1f times the bytes take %.2f times as long\n",
               static_cast<double>(results[1].size.bytes) /
                   static_cast<double>(results[0].size.bytes),
               results[1].best.seconds / results[0].best.seconds);
    }
    LeaveScratchDirectory();
    return 0;
}
