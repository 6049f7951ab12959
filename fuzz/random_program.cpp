// Makes random programs.
#include "random_maker.h"

namespace random_program
{

uint64_t Random::next()
{
    state += 0x9E3779B97F4A7C15;
    uint64_t z = state;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    return z ^ (z >> 31);
}

uint32_t Random::below(uint32_t limit)
{
    return static_cast<uint32_t>((next() >> 32) % limit);
}

bool Random::chance(uint32_t percent)
{
    return below(100) < percent;
}
namespace
{

struct Declaration {
    const char *name;
    Type type;
    Shape shape;
    const char *text;
};

constexpr Declaration locals[] = {
    { "i", Type::INT, Shape::SCALAR, "INT i" },
    { "j", Type::INT, Shape::SCALAR, "INT j" },
    { "c", Type::CHAR, Shape::SCALAR, "CHAR c" },
    { "flag", Type::BOOL, Shape::SCALAR, "BOOL flag" },
    { "hue", Type::COLOUR, Shape::SCALAR, "COLOUR hue" },
    { "s", Type::STRING, Shape::SCALAR, "STRING s" },
    { "v", Type::VOLTAGE, Shape::SCALAR, "VOLTAGE v" },
    { "u", Type::CURRENT, Shape::SCALAR, "CURRENT u" },
    { "r", Type::RESISTANCE, Shape::SCALAR, "RESISTANCE r" },
    { "t", Type::TIME, Shape::SCALAR, "TIME t" },
    { "f", Type::FREQUENCY, Shape::SCALAR, "FREQUENCY f" },
    { "k", Type::CLOCK_TIME, Shape::SCALAR, "CLOCK_TIME k" },
    { "x", Type::FLOAT, Shape::SCALAR, "FLOAT x" },
    { "w", Type::WORD, Shape::SCALAR, "WORD w" },
    { "q", Type::QUANTITY, Shape::SCALAR, "QUANTITY q" },
    { "g", Type::SHORT, Shape::SCALAR, "SHORT g, g_end" }, // written as four bytes
    { "e", Type::CONVERTER, Shape::SCALAR, "CONVERTER e" },
    { "d", Type::COMPONENT, Shape::SCALAR, "COMPONENT d" },
    { "l", Type::VARLOC, Shape::SCALAR, "VARLOC l" },
    { "o", Type::WAVEFORM, Shape::SCALAR, "WAVEFORM o" },
    { "z", Type::POINT, Shape::SCALAR, "POINT z" },
    { "y", Type::CONNECTOR, Shape::SCALAR, "CONNECTOR y" },
    { "leg_end", Type::PIN, Shape::SCALAR, "PIN leg_end" },
    { "side", Type::VIEW, Shape::SCALAR, "VIEW side" },
    { "page", Type::HELPSCREEN, Shape::SCALAR, "HELPSCREEN page" },
    { "scales", Type::CONVERTER, Shape::ARRAY, "CONVERTER scales[4]" },
    { "list", Type::INT, Shape::ARRAY, "INT list[4]" },
    { "bytes", Type::CHAR, Shape::ARRAY, "CHAR bytes[4]" },
    { "hues", Type::COLOUR, Shape::BY_COLOUR, "COLOUR hues[COLOUR]" },
    { "sums", Type::INT, Shape::BY_COLOUR, "INT sums[COLOUR]" },
    { "part", Type::NOTHING, Shape::PART, "PART part" },
    { "box", Type::NOTHING, Shape::BOX, "BOX box" },
    { "op", Type::NOTHING, Shape::OPERATION, "OPERATION op" },
};

constexpr Declaration statics[] = {
    { "n", Type::INT, Shape::SCALAR, "VAR INT " },
    { "c", Type::CHAR, Shape::SCALAR, "VAR CHAR " },
    { "b", Type::BOOL, Shape::SCALAR, "VAR BOOL " },
    { "h", Type::COLOUR, Shape::SCALAR, "VAR COLOUR " },
    { "s", Type::STRING, Shape::SCALAR, "VAR STRING " },
    { "v", Type::VOLTAGE, Shape::SCALAR, "VAR VOLTAGE " },
    { "w", Type::WORD, Shape::SCALAR, "VAR WORD " },
    { "f", Type::FLOAT, Shape::SCALAR, "VAR FLOAT " },
    { "e", Type::CONVERTER, Shape::SCALAR, "VAR CONVERTER " },
    { "g", Type::VARLOC, Shape::ARRAY, "VAR VARLOC " },
    { "a", Type::INT, Shape::ARRAY, "VAR INT " },
    { "d", Type::CHAR, Shape::ARRAY, "VAR CHAR " },
    { "p", Type::NOTHING, Shape::PART, "VAR PART " },
    { "x", Type::NOTHING, Shape::BOX, "VAR BOX " },
    { "m", Type::INT, Shape::SCALAR, "NONVOLATILE INT " },
    { "k", Type::COLOUR, Shape::SCALAR, "NONVOLATILE COLOUR " },
    { "r", Type::CHAR, Shape::ARRAY, "NONVOLATILE CHAR " },
    { "y", Type::NOTHING, Shape::PART, "NONVOLATILE PART " },
};

void declare_statics(Maker *maker, std::vector<Variable> *list, const std::string &prefix,
                     bool is_library)
{
    for (const Declaration &declaration : statics) {
        if (!maker->random.chance(45)) continue;
        const std::string name = prefix + declaration.name;
        const bool is_array = declaration.shape == Shape::ARRAY;
        maker->program.statics[name] = { declaration.text + name + (is_array ? "[4]" : ""),
                                         is_library };
        list->push_back({ name, declaration.type, declaration.shape, false });
    }
}

void declare_locals(Maker *maker, Function *function)
{
    maker->locals.clear();
    for (const Declaration &declaration : locals) {
        const bool is_always = declaration.type == Type::INT && declaration.shape == Shape::SCALAR;
        if (!is_always && !maker->random.chance(45)) continue;
        function->locals[declaration.name] = declaration.text;
        maker->locals.push_back({ declaration.name, declaration.type, declaration.shape, false });
    }
}

// Sets what has to point somewhere before it is used.
void begin_body(Maker *maker, Function *function)
{
    const Variable *part = find_shape(maker, Shape::PART, Type::NOTHING);
    if (part != nullptr && maker->random.chance(50)) {
        function->locals["ref"] = "PART_REF ref";
        function->body.push_back(line("ref = " + part->name, {}, true));
        maker->locals.push_back({ "ref", Type::NOTHING, Shape::PART_REF, false });
    }
    if (maker->random.chance(20)) {
        function->locals["view"] = "INT view[]";
        function->body.push_back(line("view = TABLE", {}, true));
        maker->locals.push_back({ "view", Type::INT, Shape::OPEN_ARRAY, false });
    }
    if (function->locals.count("op") != 0) function->body.push_back(line("op = plus", {}, true));
}

constexpr Type passed[] = { Type::PIN,       Type::VIEW,   Type::HELPSCREEN, Type::POINT,
                            Type::CONVERTER, Type::VARLOC, Type::COMPONENT,  Type::INT,
                            Type::INT,       Type::CHAR,   Type::BOOL,       Type::COLOUR,
                            Type::STRING,    Type::TIME,   Type::FLOAT,      Type::VOLTAGE,
                            Type::WORD,      Type::SHORT,  Type::QUANTITY };

Parameter make_parameter(Maker *maker)
{
    const Type type = passed[maker->random.below(std::size(passed))];
    switch (maker->random.below(10)) {
    case 0:
    case 1:
        return { type, Mode::REFERENCE };
    case 2:
        return { Type::INT, Mode::ARRAY };
    case 3:
        return { Type::NOTHING, Mode::PART };
    case 4:
        return { Type::NOTHING, Mode::OPERATION };
    default:
        return { type, Mode::VALUE };
    }
}

std::string declare_parameter(Maker *maker, const Parameter &parameter, const std::string &name)
{
    const std::string type = name_of(parameter.type);
    switch (parameter.mode) {
    case Mode::VALUE:
        maker->locals.push_back({ name, parameter.type, Shape::SCALAR, false });
        return type + " " + name;
    case Mode::REFERENCE:
        maker->locals.push_back({ name, parameter.type, Shape::SCALAR, false });
        return "VAR " + type + " " + name;
    case Mode::ARRAY:
        maker->locals.push_back({ name, parameter.type, Shape::OPEN_ARRAY, false });
        return "CONST " + type + " " + name + "[]";
    case Mode::PART:
        maker->locals.push_back({ name, Type::NOTHING, Shape::PART, false });
        return "VAR PART " + name;
    default:
        maker->locals.push_back({ name, Type::NOTHING, Shape::OPERATION, false });
        return "OPERATION " + name;
    }
}

Function begin_function(Maker *maker, const std::string &name, Type result, const char *kind,
                        const std::vector<Parameter> &parameters)
{
    Function function;
    function.name = name;
    declare_locals(maker, &function);
    std::string text;
    for (size_t i = 0; i < parameters.size(); ++i) {
        const std::string argument = "a" + std::to_string(i);
        text += (i == 0 ? "" : ", ") + declare_parameter(maker, parameters[i], argument);
    }
    function.head = std::string(kind) + " " + name_of(result) + " " + name + "(" + text + ")";
    return function;
}

constexpr Type results[] = { Type::PIN,     Type::VIEW,     Type::HELPSCREEN, Type::CONVERTER,
                             Type::VARLOC,  Type::WAVEFORM, Type::INT,        Type::INT,
                             Type::BOOL,    Type::COLOUR,   Type::STRING,     Type::VOLTAGE,
                             Type::TIME,    Type::CURRENT,  Type::CHAR,       Type::FLOAT,
                             Type::NOTHING, Type::NOTHING,  Type::SHORT,      Type::WORD,
                             Type::QUANTITY };

Known make_known(Maker *maker)
{
    constexpr Known others[] = { Known::FORWARD, Known::PUBLIC, Known::PUBLIC, Known::ENTRY };
    if (maker->random.chance(70)) return Known::NOT_BEFORE;
    return others[maker->random.below(std::size(others))];
}

void end_body(Maker *maker, Function *function, int count)
{
    for (Statement &statement : make_block(maker, count))
        function->body.push_back(std::move(statement));
    if (maker->result == Type::NOTHING) return;
    function->body.push_back(make_return(maker));
    function->body.back().is_fixed = true;
}

bool has_name(const std::vector<Variable> &list, const std::string &name)
{
    for (const Variable &variable : list)
        if (variable.name == name) return true;
    return false;
}

// A function inside the one under way, which alone can call it.
Callee add_inner(Maker *maker, Function *outer)
{
    const std::vector<Variable> outer_locals = maker->locals;
    const Type outer_result = maker->result;
    const Callee outer_self = maker->self;
    Callee callee{ outer->name + "in", results[maker->random.below(std::size(results))], {} };
    for (uint32_t k = maker->random.below(3); k > 0; --k)
        callee.parameters.push_back(make_parameter(maker));
    Function inner =
        begin_function(maker, callee.name, callee.result, "FUNCTION", callee.parameters);
    maker->function = &inner;
    maker->result = callee.result;
    maker->self = {};
    maker->calls_left = 1;
    begin_body(maker, &inner);
    for (const Variable &variable : outer_locals)
        if (maker->features.has_outer_variables && !has_name(maker->locals, variable.name))
            maker->locals.push_back(variable);
    end_body(maker, &inner, 1 + static_cast<int>(maker->random.below(3)));
    outer->inner.push_back(std::move(inner));
    maker->function = outer;
    maker->locals = outer_locals;
    maker->result = outer_result;
    maker->self = outer_self;
    return callee;
}

void add_function(Maker *maker, const Callee &callee, int count)
{
    Function function =
        begin_function(maker, callee.name, callee.result, "FUNCTION", callee.parameters);
    maker->function = &function;
    maker->result = callee.result;
    maker->self = callee.name == maker->program.entry ? Callee{} : callee;
    begin_body(maker, &function);
    const size_t callees = maker->callees.size();
    if (maker->features.has_inner && maker->random.chance(25))
        maker->callees.push_back(add_inner(maker, &function));
    maker->calls_left = 3;
    end_body(maker, &function, count);
    maker->callees.resize(callees);
    function.known = make_known(maker);
    function.is_library = maker->is_library;
    maker->program.functions.push_back(std::move(function));
}

// A node that only does something, and goes on with the next statement or elsewhere.
void add_plain_node(Maker *maker, const std::string &name, const std::string &next,
                    Statement *graph)
{
    graph->legs.push_back({ (maker->random.chance(20) ? "SUBTREE " : "NODE ") + name + " tell(%0)",
                            { make_expression(maker, Type::INT, 2) },
                            {},
                            false });
    if (maker->random.chance(50)) graph->legs.push_back({ "GOTO " + next, {}, {}, false });
}

// A graph of which every way leads down.
void add_tree(Maker *maker, const std::string &name, Type result)
{
    Function tree = begin_function(maker, name, result, "TREE", { { Type::INT, Mode::VALUE } });
    maker->function = &tree;
    maker->calls_left = 2;
    const uint32_t leaves = 3;
    const uint32_t nodes = 1 + maker->random.below(3);
    begin_body(maker, &tree);
    tree.body.clear();
    for (Variable &variable : maker->locals)
        if (variable.shape == Shape::PART_REF || variable.shape == Shape::OPERATION ||
            variable.shape == Shape::OPEN_ARRAY)
            variable.is_busy = true;
    std::erase_if(maker->locals, [](const Variable &variable) { return variable.is_busy; });
    Statement graph;
    for (uint32_t i = 0; i < nodes; ++i) {
        const std::string target = "m" + std::to_string(i);
        if (maker->random.chance(25)) {
            add_plain_node(maker, target, i + 1 < nodes ? "m" + std::to_string(i + 1) : "w1",
                           &graph);
            continue;
        }
        const bool is_colour = maker->random.chance(50);
        graph.legs.push_back({ (maker->random.chance(20) ? "SUBTREE " : "NODE ") + target + " %0",
                               { make_expression(maker, is_colour ? Type::COLOUR : Type::BOOL, 2) },
                               {},
                               false });
        for (const char *value : colours) {
            const bool is_next = i + 1 < nodes && maker->random.chance(60);
            const std::string way = is_next ? "m" + std::to_string(i + 1)
                                            : "w" + std::to_string(maker->random.below(leaves));
            if (is_colour)
                graph.legs.push_back(
                    { std::string("CASE ") + value + " GOTO " + way, {}, {}, false });
            else if (value != colours[2])
                graph.legs.push_back({ std::string("CASE ") +
                                           (value == colours[0] ? "FALSE" : "TRUE") + " GOTO " +
                                           way,
                                       {},
                                       {},
                                       false });
        }
    }
    for (uint32_t i = 0; i < leaves; ++i) {
        const std::string head = "LEAF w" + std::to_string(i);
        if (result == Type::NOTHING)
            graph.legs.push_back({ head, {}, {}, false });
        else
            graph.legs.push_back({ head + " %0", { make_result(maker, result, 2) }, {}, false });
    }
    graph.is_fixed = true;
    tree.body.push_back(std::move(graph));
    tree.known = make_known(maker);
    tree.is_library = maker->is_library;
    maker->program.functions.push_back(std::move(tree));
}

// What is made next is for the library or not; each module has statics of its own.
void set_library(Maker *maker, bool is_library)
{
    if (maker->is_library != is_library) std::swap(maker->statics, maker->library_statics);
    maker->is_library = is_library;
}

void add_helpers(Maker *maker)
{
    const uint32_t count = maker->random.below(4);
    const uint32_t in_library = maker->features.has_library ? maker->random.below(count + 1) : 0;
    for (uint32_t i = 0; i < count; ++i) {
        set_library(maker, i < in_library);
        const std::string name = maker->prefix + "f" + std::to_string(i);
        Callee callee{ name, results[maker->random.below(std::size(results))], {} };
        if (maker->random.chance(15)) {
            callee.parameters = { { Type::INT, Mode::VALUE } };
            add_tree(maker, name, callee.result);
        } else {
            for (uint32_t k = maker->random.below(4); k > 0; --k)
                callee.parameters.push_back(make_parameter(maker));
            add_function(maker, callee, 1 + static_cast<int>(maker->random.below(4)));
        }
        maker->callees.push_back(std::move(callee));
    }
    set_library(maker, false);
}

// Shows what the variables of a function hold at its end.
void add_reports(Maker *maker)
{
    Function &function = maker->program.functions.back();
    Statement last = std::move(function.body.back());
    function.body.pop_back();
    for (const Type type : { Type::INT, Type::CHAR, Type::VOLTAGE, Type::STRING, Type::BOOL }) {
        Expression value = variable_value(maker, type, 1);
        if (type == Type::BOOL || is_quantity(type)) value = cast_to(Type::INT, std::move(value));
        const char *head = type == Type::STRING ? "say(\"%s\", %0)" : "tell(%0)";
        function.body.push_back(line(head, { std::move(value) }));
    }
    function.body.push_back(std::move(last));
}

int32_t random_word(Random *random)
{
    constexpr int32_t edges[] = { 0, 1, -1, 2, 5, INT32_MAX, INT32_MIN, 255, 256, 65536, -7 };
    if (random->chance(60)) return edges[random->below(std::size(edges))];
    return static_cast<int32_t>(static_cast<uint32_t>(random->next()) >> random->below(32));
}

void add_runs(Maker *maker)
{
    for (int i = 0; i < 2; ++i) {
        maker->program.arguments.push_back(
            { random_word(&maker->random), random_word(&maker->random) });
        /* Truth values, colours and texts are among the answers. */
        std::vector<int32_t> answers;
        for (uint32_t count = maker->random.below(8); count > 0; --count)
            answers.push_back(maker->random.chance(60)
                                  ? static_cast<int32_t>(maker->random.below(3))
                                  : random_word(&maker->random));
        maker->program.answers.push_back(std::move(answers));
    }
}

} // namespace

Program make(uint64_t seed, uint32_t number, const Features &features)
{
    Maker maker;
    maker.random.state = seed * 0xD1342543DE82EF95 + number;
    maker.random.next();
    maker.features = features;
    maker.prefix = "p" + std::to_string(number);
    maker.program.is_split = features.has_library;
    declare_statics(&maker, &maker.statics, maker.prefix, false);
    if (features.has_library)
        declare_statics(&maker, &maker.library_statics, maker.prefix + "l", true);
    add_helpers(&maker);
    maker.program.entry = maker.prefix + "main";
    const Callee entry{ maker.program.entry,
                        Type::INT,
                        { { Type::INT, Mode::VALUE }, { Type::INT, Mode::VALUE } } };
    add_function(&maker, entry, 3 + static_cast<int>(maker.random.below(5)));
    add_reports(&maker);
    add_runs(&maker);
    return std::move(maker.program);
}
} // namespace random_program
