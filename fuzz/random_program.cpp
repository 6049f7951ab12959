// Makes random programs.
#include "random_program.h"

#include <set>

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

// Binding of operators, from the tightest.
enum Level {
    NAME,
    SIGN,
    PRODUCT,
    SUM,
    SHIFT,
    RELATION,
    EQUALITY,
    BIT_AND,
    BIT_XOR,
    BIT_OR,
    LOGICAL_AND,
    LOGICAL_OR,
    ASSIGNMENT,
    ANYTHING
};

constexpr Type quantities[] = { Type::VOLTAGE, Type::CURRENT,   Type::RESISTANCE,
                                Type::TIME,    Type::FREQUENCY, Type::CLOCK_TIME };

constexpr const char *type_names[] = { "INT",        "BOOL",    "CHAR",       "COLOUR", "STRING",
                                       "VOLTAGE",    "CURRENT", "RESISTANCE", "TIME",   "FREQUENCY",
                                       "CLOCK_TIME", "FLOAT",   "VOID" };

const char *name_of(Type type)
{
    return type_names[static_cast<int>(type)];
}

bool is_quantity(Type type)
{
    return type >= Type::VOLTAGE && type <= Type::CLOCK_TIME;
}

enum class Mode { VALUE, REFERENCE, ARRAY, PART, OPERATION };

struct Parameter {
    Type type;
    Mode mode;
};

struct Callee {
    std::string name;
    Type result;
    std::vector<Parameter> parameters;
};

// What a name in scope is.
enum class Shape { SCALAR, ARRAY, BY_COLOUR, PART, BOX, PART_REF, OPEN_ARRAY, OPERATION };

struct Variable {
    std::string name;
    Type type;
    Shape shape;
    bool is_busy = false; // counts a loop that is under way
};

struct Maker {
    Random random;
    Features features;
    Program program;
    std::string prefix;
    std::vector<Callee> callees;
    std::vector<Variable> statics;
    std::vector<Variable> locals;
    Function *function = nullptr;
    Type result = Type::INT;
    int nesting = 0;
    int loops = 0;
    int calls_left = 0;
    int names = 0;
};

Expression make_expression(Maker *maker, Type type, int depth);

Expression leaf(Type type, const std::string &text, int level = NAME)
{
    return { type, level, text, {}, {}, false };
}

Expression with(Type type, int level, const std::string &text, std::vector<Expression> operands,
                std::vector<int> limits)
{
    return { type, level, text, std::move(operands), std::move(limits), false };
}

Expression binary(Type type, int level, const std::string &sign, Expression left, Expression right)
{
    return with(type, level, "%0 " + sign + " %1", { std::move(left), std::move(right) },
                { level, level - 1 });
}

// Literals.

constexpr const char *words[] = { "0",     "1",     "2",     "3",          "5",      "7",
                                  "10",    "31",    "32",    "33",         "100",    "127",
                                  "128",   "255",   "256",   "1000",       "32767",  "32768",
                                  "65535", "65536", "46341", "2147483647", "0xFF00", "123456789" };
constexpr const char *negative_words[] = { "-1",     "-2",     "-7",          "-128",  "-129",
                                           "-32768", "-32769", "-2147483648", "-1000", "-65536" };
constexpr const char *texts[] = { "\"\"",       "\"a\"",   "\"abc\"", "\"abd\"",
                                  "\"middle\"", "\"x y\"", "NULL" };
constexpr const char *characters[] = { "'a'", "'Z'", "'0'", "' '" };
constexpr const char *colours[] = { "RED", "GREEN", "BLUE" };
constexpr const char *volts[] = { "12V", "1.5V", "250mV", "0V", "5V", "1mV" };
constexpr const char *amperes[] = { "2A", "50mA", "1.25A", "1mA" };
constexpr const char *ohms[] = { "470R", "2.2kR", "10R", "1R" };
constexpr const char *times[] = { "20ms", "1s", "70us", "1.5s", "0ms" };
constexpr const char *rates[] = { "50Hz", "1kHz", "7Hz" };

template <size_t N> const char *one_of(Maker *maker, const char *const (&list)[N])
{
    return list[maker->random.below(N)];
}

Expression literal(Maker *maker, Type type)
{
    switch (type) {
    case Type::BOOL:
        return leaf(type, maker->random.chance(50) ? "TRUE" : "FALSE");
    case Type::CHAR:
        return leaf(type, one_of(maker, characters));
    case Type::COLOUR:
        return leaf(type, one_of(maker, colours));
    case Type::STRING:
        return leaf(type, one_of(maker, texts));
    case Type::VOLTAGE:
        return leaf(type, one_of(maker, volts));
    case Type::CURRENT:
        return leaf(type, one_of(maker, amperes));
    case Type::RESISTANCE:
        return leaf(type, one_of(maker, ohms));
    case Type::TIME:
        return leaf(type, one_of(maker, times));
    case Type::FREQUENCY:
        return leaf(type, one_of(maker, rates));
    case Type::CLOCK_TIME:
        return leaf(type, "cast(1500, CLOCK_TIME)");
    case Type::FLOAT:
        return leaf(type, "to_float(3)");
    default:
        if (maker->random.chance(30)) return leaf(type, one_of(maker, negative_words), SIGN);
        return leaf(type, one_of(maker, words));
    }
}

// Places.

Expression index_of(Maker *maker, int depth)
{
    if (depth <= 0 || maker->random.chance(40))
        return leaf(Type::INT, std::to_string(maker->random.below(4)));
    if (maker->random.chance(2))
        return binary(Type::INT, SUM, "+", make_expression(maker, Type::INT, depth - 1),
                      leaf(Type::INT, "i"));
    Expression mask = leaf(Type::INT, "3");
    return binary(Type::INT, BIT_AND, "&", make_expression(maker, Type::INT, depth - 1), mask);
}

Expression place(Type type, int level, const std::string &text)
{
    Expression expression = leaf(type, text, level);
    expression.is_place = true;
    return expression;
}

Expression indexed(Type type, int level, const std::string &text, Expression index)
{
    Expression expression = with(type, level, text, { std::move(index) }, { ANYTHING });
    expression.is_place = true;
    return expression;
}

void add_fields(std::vector<Expression> *places, Type type, const std::string &record,
                const char *arrow, int level)
{
    struct Field {
        const char *name;
        Type type;
    };
    constexpr Field fields[] = { { "size", Type::INT },      { "tag", Type::CHAR },
                                 { "colour", Type::COLOUR }, { "level", Type::VOLTAGE },
                                 { "title", Type::STRING },  { "good", Type::BOOL } };
    for (const Field &field : fields)
        if (field.type == type) places->push_back(place(type, level, record + arrow + field.name));
}

void add_places(Maker *maker, std::vector<Expression> *places, const Variable &variable, Type type,
                int depth)
{
    const std::string &name = variable.name;
    switch (variable.shape) {
    case Shape::SCALAR:
        if (variable.type == type) places->push_back(place(type, NAME, name));
        return;
    case Shape::ARRAY:
        if (variable.type == type)
            places->push_back(indexed(type, NAME, name + "[%0]", index_of(maker, depth)));
        return;
    case Shape::BY_COLOUR:
        if (variable.type == type)
            places->push_back(indexed(type, NAME, name + "[%0]",
                                      make_expression(maker, Type::COLOUR, depth > 1 ? 1 : 0)));
        return;
    case Shape::PART:
        return add_fields(places, type, name, ":", SIGN);
    case Shape::PART_REF:
        return add_fields(places, type, name, "->", PRODUCT);
    case Shape::BOX:
        if (type == Type::INT) {
            places->push_back(place(type, SIGN, name + ":count"));
            places->push_back(indexed(type, SIGN, name + ":cells[%0]", index_of(maker, depth)));
        }
        if (type == Type::CHAR)
            places->push_back(indexed(type, SIGN, name + ":marks[%0]", index_of(maker, depth)));
        return add_fields(places, type, name + ":inner", ":", SIGN);
    default:
        return;
    }
}

// A place of the type that may be written; its text is empty if there is none.
Expression make_place(Maker *maker, Type type, int depth)
{
    std::vector<Expression> places;
    for (const std::vector<Variable> *list : { &maker->locals, &maker->statics })
        for (const Variable &variable : *list)
            if (!variable.is_busy) add_places(maker, &places, variable, type, depth);
    if (places.empty()) return leaf(type, "");
    return places[maker->random.below(static_cast<uint32_t>(places.size()))];
}

// A variable as a value; those of loops too.
Expression variable_value(Maker *maker, Type type, int depth)
{
    std::vector<Expression> places;
    for (const std::vector<Variable> *list : { &maker->locals, &maker->statics })
        for (const Variable &variable : *list)
            add_places(maker, &places, variable, type, depth);
    if (places.empty()) return literal(maker, type);
    Expression value = places[maker->random.below(static_cast<uint32_t>(places.size()))];
    value.is_place = false;
    return value;
}

// Calls.

const Variable *find_shape(Maker *maker, Shape shape, Type type)
{
    std::vector<const Variable *> found;
    for (const std::vector<Variable> *list : { &maker->locals, &maker->statics })
        for (const Variable &variable : *list)
            if (variable.shape == shape && variable.type == type) found.push_back(&variable);
    if (found.empty()) return nullptr;
    return found[maker->random.below(static_cast<uint32_t>(found.size()))];
}

// The argument for a parameter; its text is empty if there is none.
Expression make_argument(Maker *maker, const Parameter &parameter, int depth)
{
    switch (parameter.mode) {
    case Mode::VALUE:
        return make_expression(maker, parameter.type, depth);
    case Mode::REFERENCE:
        return make_place(maker, parameter.type, depth);
    case Mode::ARRAY: {
        const Variable *array = find_shape(maker, Shape::ARRAY, parameter.type);
        const bool is_table = parameter.type == Type::INT && maker->random.chance(30);
        const std::string name = array == nullptr || is_table ? "TABLE" : array->name;
        return place(parameter.type, NAME, name);
    }
    case Mode::PART: {
        const Variable *part = find_shape(maker, Shape::PART, Type::NOTHING);
        const Variable *box = find_shape(maker, Shape::BOX, Type::NOTHING);
        const Variable *reference = find_shape(maker, Shape::PART_REF, Type::NOTHING);
        const uint32_t which = maker->random.below(3);
        if (which == 0 && box != nullptr) return place(Type::NOTHING, SIGN, box->name + ":inner");
        if (which == 1 && reference != nullptr) return place(Type::NOTHING, NAME, reference->name);
        return part == nullptr ? leaf(Type::NOTHING, "") : place(Type::NOTHING, NAME, part->name);
    }
    default: {
        std::vector<std::string> names{ "plus", "minus" };
        const Variable *variable = find_shape(maker, Shape::OPERATION, Type::NOTHING);
        if (variable != nullptr) names.push_back(variable->name);
        const auto count = static_cast<uint32_t>(names.size());
        return place(Type::NOTHING, NAME, names[maker->random.below(count)]);
    }
    }
}

// A call; its text is empty if an argument cannot be had.
Expression make_call(Maker *maker, const Callee &callee, int depth)
{
    Expression call = with(callee.result, NAME, callee.name + "(", {}, {});
    for (const Parameter &parameter : callee.parameters) {
        Expression argument = make_argument(maker, parameter, depth - 1);
        if (argument.text.empty()) return leaf(callee.result, "");
        call.text += (call.operands.empty() ? "%" : ", %") + std::to_string(call.operands.size());
        call.operands.push_back(std::move(argument));
        call.limits.push_back(LOGICAL_OR);
    }
    call.text += ")";
    return call;
}

// The syscalls of the module's head.
const std::vector<Callee> &syscalls()
{
    static const std::vector<Callee> list{
        { "ask", Type::INT, { { Type::INT, Mode::VALUE } } },
        { "truth", Type::BOOL, { { Type::INT, Mode::VALUE } } },
        { "measure",
          Type::VOLTAGE,
          { { Type::CHAR, Mode::VALUE }, { Type::COLOUR, Mode::VALUE } } },
        { "now", Type::TIME, {} },
        { "pick", Type::COLOUR, { { Type::STRING, Mode::VALUE } } },
        { "root", Type::FLOAT, { { Type::FLOAT, Mode::VALUE } } },
    };
    return list;
}

Expression call_of_type(Maker *maker, Type type, int depth)
{
    std::vector<const Callee *> fitting;
    for (const Callee &callee : maker->callees)
        if (callee.result == type) fitting.push_back(&callee);
    if (maker->calls_left > 0 && !fitting.empty() && maker->random.chance(70)) {
        --maker->calls_left;
        const auto count = static_cast<uint32_t>(fitting.size());
        Expression call = make_call(maker, *fitting[maker->random.below(count)], depth);
        if (!call.text.empty()) return call;
    }
    for (const Callee &syscall : syscalls())
        if (syscall.result == type) return make_call(maker, syscall, depth);
    return variable_value(maker, type, depth);
}

// Expressions by type. Each takes a depth that is left, and makes its operands with one less.

Expression cast_to(Type type, Expression operand)
{
    return with(type, NAME, std::string("cast(%0, ") + name_of(type) + ")", { std::move(operand) },
                { LOGICAL_OR });
}

Expression function_of(Type type, const std::string &name, Expression operand)
{
    return with(type, NAME, name + "(%0)", { std::move(operand) }, { LOGICAL_OR });
}

Expression lesser_or_greater(Maker *maker, Type type, int depth)
{
    const std::string name = maker->random.chance(50) ? "min" : "max";
    return with(type, NAME, name + "(%0, %1)",
                { make_expression(maker, type, depth), make_expression(maker, type, depth) },
                { LOGICAL_OR, LOGICAL_OR });
}

Expression signed_value(Type type, const std::string &sign, Expression operand)
{
    return with(type, SIGN, sign + "%0", { std::move(operand) }, { NAME });
}

Expression assignment(Maker *maker, Type type, int depth)
{
    Expression target = make_place(maker, type, depth);
    if (target.text.empty()) return literal(maker, type);
    return with(type, ASSIGNMENT, "%0 = %1",
                { std::move(target), make_expression(maker, type, depth) },
                { LOGICAL_OR, ASSIGNMENT });
}

// Seldom zero.
Expression divisor(Maker *maker, int depth)
{
    if (maker->random.chance(4)) return make_expression(maker, Type::INT, depth);
    if (maker->random.chance(40)) return leaf(Type::INT, maker->random.chance(50) ? "7" : "1000");
    return binary(Type::INT, BIT_OR, "|", make_expression(maker, Type::INT, depth),
                  leaf(Type::INT, "1"));
}

// A CHAR stands for its word between other words.
Expression make_term(Maker *maker, int depth)
{
    const Type type = maker->random.chance(15) ? Type::CHAR : Type::INT;
    return make_expression(maker, type, depth);
}

Expression arithmetic(Maker *maker, int depth)
{
    struct Operator {
        const char *sign;
        int level;
    };
    constexpr Operator operators[] = { { "+", SUM },      { "-", SUM },     { "+", SUM },
                                       { "-", SUM },      { "*", PRODUCT }, { "*", PRODUCT },
                                       { "&", BIT_AND },  { "|", BIT_OR },  { "^", BIT_XOR },
                                       { "<<", SHIFT },   { ">>", SHIFT },  { "/", PRODUCT },
                                       { "MOD", PRODUCT } };
    const Operator &chosen = operators[maker->random.below(std::size(operators))];
    Expression left = make_term(maker, depth);
    const bool divides = std::string(chosen.sign) == "/" || std::string(chosen.sign) == "MOD";
    Expression right = divides ? divisor(maker, depth) : make_term(maker, depth);
    return binary(Type::INT, chosen.level, chosen.sign, std::move(left), std::move(right));
}

Expression word_of_quantity(Maker *maker, int depth)
{
    const Type type = quantities[maker->random.below(std::size(quantities))];
    if (maker->random.chance(60)) return cast_to(Type::INT, make_expression(maker, type, depth));
    Expression other =
        maker->random.chance(80) ? literal(maker, type) : make_expression(maker, type, depth);
    return binary(Type::INT, PRODUCT, "/", make_expression(maker, type, depth), other);
}

Expression operation_call(Maker *maker, int depth)
{
    const Variable *variable = find_shape(maker, Shape::OPERATION, Type::NOTHING);
    if (variable == nullptr) return arithmetic(maker, depth);
    return with(
        Type::INT, NAME, variable->name + "(%0, %1)",
        { make_expression(maker, Type::INT, depth), make_expression(maker, Type::INT, depth) },
        { LOGICAL_OR, LOGICAL_OR });
}

Expression element_of_open_array(Maker *maker, int depth)
{
    const Variable *array = find_shape(maker, Shape::OPEN_ARRAY, Type::INT);
    if (array == nullptr) return arithmetic(maker, depth);
    if (maker->features.has_run_time_lengths && maker->random.chance(30))
        return leaf(Type::INT, "upb(" + array->name + ")");
    return with(Type::INT, NAME, array->name + "[%0 & 3]",
                { make_expression(maker, Type::INT, depth) }, { BIT_AND });
}

Expression make_word(Maker *maker, int depth)
{
    switch (maker->random.below(20)) {
    case 0:
        return signed_value(Type::INT, "-", make_expression(maker, Type::INT, depth));
    case 1:
        return signed_value(Type::INT, "~", make_expression(maker, Type::INT, depth));
    case 2:
        return function_of(Type::INT, "abs", make_expression(maker, Type::INT, depth));
    case 3:
        return lesser_or_greater(maker, Type::INT, depth);
    case 4:
        return word_of_quantity(maker, depth);
    case 5:
        return maker->random.chance(50)
                   ? cast_to(Type::INT, make_expression(maker, Type::COLOUR, depth))
                   : cast_to(Type::INT, make_expression(maker, Type::BOOL, depth));
    case 6:
        return cast_to(Type::INT, make_expression(maker, Type::CHAR, depth));
    case 7:
        return function_of(Type::INT, "round", make_expression(maker, Type::FLOAT, depth));
    case 8:
        return with(Type::INT, SIGN, maker->random.chance(50) ? "TABLE[%0]" : "PARTS[%0 & 1]:size",
                    { index_of(maker, depth) }, { BIT_AND });
    case 9:
        return assignment(maker, Type::INT, depth);
    case 10:
    case 11:
        return call_of_type(maker, Type::INT, depth);
    case 12:
        return operation_call(maker, depth);
    case 13:
        return element_of_open_array(maker, depth);
    default:
        return arithmetic(maker, depth);
    }
}

Expression comparison(Maker *maker, Type type, int depth)
{
    constexpr const char *signs[] = { "<", "<=", ">", ">=", "==", "!=" };
    const uint32_t which = maker->random.below(type == Type::BOOL ? 2 : 6);
    const uint32_t chosen = type == Type::BOOL ? which + 4 : which;
    Expression left = make_expression(maker, type, depth);
    Expression right = make_expression(maker, type, depth);
    /* NULL may stand on the right side of an equality alone. */
    if (left.text == "NULL") left.text = "\"abc\"";
    if (right.text == "NULL" && chosen < 4) right.text = "\"abc\"";
    return binary(Type::BOOL, chosen < 4 ? RELATION : EQUALITY, signs[chosen], std::move(left),
                  std::move(right));
}

Expression make_truth(Maker *maker, int depth)
{
    constexpr Type compared[] = { Type::INT,    Type::INT,     Type::INT,    Type::CHAR,
                                  Type::COLOUR, Type::STRING,  Type::STRING, Type::VOLTAGE,
                                  Type::TIME,   Type::CURRENT, Type::BOOL,   Type::CLOCK_TIME };
    switch (maker->random.below(10)) {
    case 0:
        return signed_value(Type::BOOL, "NOT ", make_expression(maker, Type::BOOL, depth));
    case 1:
    case 2:
        return binary(Type::BOOL, LOGICAL_AND, "AND", make_expression(maker, Type::BOOL, depth),
                      make_expression(maker, Type::BOOL, depth));
    case 3:
        return binary(Type::BOOL, LOGICAL_OR, "OR", make_expression(maker, Type::BOOL, depth),
                      make_expression(maker, Type::BOOL, depth));
    case 4:
        return call_of_type(maker, Type::BOOL, depth);
    case 5:
        return maker->random.chance(30) ? assignment(maker, Type::BOOL, depth)
                                        : variable_value(maker, Type::BOOL, depth);
    default:
        return comparison(maker, compared[maker->random.below(std::size(compared))], depth);
    }
}

// The quantities that are products and quotients of others.
Expression derived_quantity(Maker *maker, Type type, int depth)
{
    const Expression one = leaf(Type::INT, "1");
    switch (type) {
    case Type::VOLTAGE:
        return binary(type, PRODUCT, "*", make_expression(maker, Type::RESISTANCE, depth),
                      make_expression(maker, Type::CURRENT, depth));
    case Type::CURRENT:
        return binary(
            type, PRODUCT, "/", make_expression(maker, Type::VOLTAGE, depth),
            make_expression(maker, Type::RESISTANCE, maker->random.chance(50) ? 0 : depth));
    case Type::RESISTANCE:
        return binary(type, PRODUCT, "/", make_expression(maker, Type::VOLTAGE, depth),
                      make_expression(maker, Type::CURRENT, maker->random.chance(50) ? 0 : depth));
    case Type::FREQUENCY:
        return binary(type, PRODUCT, "/", one, make_expression(maker, Type::TIME, depth));
    case Type::TIME:
        return binary(type, PRODUCT, "/", one, make_expression(maker, Type::FREQUENCY, depth));
    default:
        return cast_to(type, make_expression(maker, Type::INT, depth));
    }
}

Expression make_quantity(Maker *maker, Type type, int depth)
{
    switch (maker->random.below(12)) {
    case 0:
    case 1:
        return binary(type, SUM, maker->random.chance(50) ? "+" : "-",
                      make_expression(maker, type, depth), make_expression(maker, type, depth));
    case 2:
        return binary(type, PRODUCT, "*", make_expression(maker, type, depth),
                      make_expression(maker, Type::INT, depth));
    case 3:
        return binary(type, PRODUCT, "/", make_expression(maker, type, depth),
                      divisor(maker, depth));
    case 4:
        return signed_value(type, "-", make_expression(maker, type, depth));
    case 5:
        return function_of(type, "abs", make_expression(maker, type, depth));
    case 6:
        return lesser_or_greater(maker, type, depth);
    case 7:
        return cast_to(type, make_expression(maker, Type::INT, depth));
    case 8:
        return maker->random.chance(50) ? call_of_type(maker, type, depth)
                                        : assignment(maker, type, depth);
    default:
        return derived_quantity(maker, type, depth);
    }
}

Expression make_colour(Maker *maker, int depth)
{
    switch (maker->random.below(5)) {
    case 0:
        return with(Type::COLOUR, NAME, "cast(%0 & 1, COLOUR)",
                    { make_expression(maker, Type::INT, depth) }, { BIT_AND });
    case 1:
        return assignment(maker, Type::COLOUR, depth);
    case 2:
        return call_of_type(maker, Type::COLOUR, depth);
    default:
        return variable_value(maker, Type::COLOUR, depth);
    }
}

Expression make_text(Maker *maker, int depth)
{
    switch (maker->random.below(5)) {
    case 0:
        return with(Type::STRING, SIGN,
                    maker->random.chance(50) ? "WORDS[%0 & 1]" : "PARTS[%0 & 1]:title",
                    { make_expression(maker, Type::INT, depth) }, { BIT_AND });
    case 1:
        return call_of_type(maker, Type::STRING, depth);
    case 2:
        return assignment(maker, Type::STRING, depth);
    default:
        return variable_value(maker, Type::STRING, depth);
    }
}

Expression make_character(Maker *maker, int depth)
{
    if (maker->random.chance(30))
        return with(Type::CHAR, NAME, "LETTERS[%0]", { index_of(maker, depth) }, { ANYTHING });
    return maker->random.chance(20) ? call_of_type(maker, Type::CHAR, depth)
                                    : variable_value(maker, Type::CHAR, depth);
}

Expression make_float(Maker *maker, int depth)
{
    if (maker->random.chance(50))
        return function_of(Type::FLOAT, "to_float", make_expression(maker, Type::INT, depth));
    return maker->random.chance(50) ? call_of_type(maker, Type::FLOAT, depth)
                                    : variable_value(maker, Type::FLOAT, depth);
}

Expression make_expression(Maker *maker, Type type, int depth)
{
    if (depth <= 0)
        return maker->random.chance(40) ? literal(maker, type) : variable_value(maker, type, 0);
    switch (type) {
    case Type::INT:
        return maker->random.chance(15) ? variable_value(maker, type, depth)
                                        : make_word(maker, depth - 1);
    case Type::BOOL:
        return make_truth(maker, depth - 1);
    case Type::CHAR:
        return make_character(maker, depth - 1);
    case Type::COLOUR:
        return make_colour(maker, depth - 1);
    case Type::STRING:
        return make_text(maker, depth - 1);
    case Type::FLOAT:
        return make_float(maker, depth - 1);
    default:
        return maker->random.chance(25) ? variable_value(maker, type, depth)
                                        : make_quantity(maker, type, depth - 1);
    }
}

// Statements.

Statement line(const std::string &head, std::vector<Expression> expressions, bool is_fixed = false)
{
    return { { { head, std::move(expressions), {}, false } }, is_fixed };
}

std::vector<Statement> make_block(Maker *maker, int count);

std::vector<Statement> make_inner_block(Maker *maker)
{
    ++maker->nesting;
    std::vector<Statement> block = make_block(maker, 1 + static_cast<int>(maker->random.below(3)));
    --maker->nesting;
    return block;
}

constexpr Type assigned[] = { Type::INT,        Type::INT,       Type::INT,        Type::CHAR,
                              Type::BOOL,       Type::COLOUR,    Type::STRING,     Type::VOLTAGE,
                              Type::CURRENT,    Type::TIME,      Type::CLOCK_TIME, Type::FLOAT,
                              Type::RESISTANCE, Type::FREQUENCY, Type::CHAR };

// What may be stored in a place of a type, beside its own: cut, or turned into another unit.
Type source_type(Maker *maker, Type type)
{
    if (!maker->random.chance(70)) return type;
    if (type == Type::CHAR) return Type::INT;
    if (type == Type::CLOCK_TIME) return Type::TIME;
    return type == Type::TIME && maker->random.chance(30) ? Type::CLOCK_TIME : type;
}

Statement make_assignment(Maker *maker)
{
    const Type type = assigned[maker->random.below(std::size(assigned))];
    Expression target = make_place(maker, type, 2);
    if (target.text.empty()) return line("tell(%0)", { make_expression(maker, Type::INT, 3) });
    return line("%0 = %1",
                { std::move(target), make_expression(maker, source_type(maker, type), 3) });
}

Statement make_call_statement(Maker *maker)
{
    if (maker->callees.empty() || maker->calls_left <= 0) return make_assignment(maker);
    --maker->calls_left;
    const auto count = static_cast<uint32_t>(maker->callees.size());
    Expression call = make_call(maker, maker->callees[maker->random.below(count)], 2);
    if (call.text.empty()) return make_assignment(maker);
    return line("%0", { std::move(call) });
}

Statement make_report(Maker *maker)
{
    switch (maker->random.below(3)) {
    case 0:
        return line("tell(%0)", { make_expression(maker, Type::INT, 3) });
    case 1:
        return line("say(\"%d and %s\", %0, %1)", { make_expression(maker, Type::INT, 2),
                                                    make_expression(maker, Type::STRING, 2) });
    default:
        return line("say(\"%d %d\", %0, %1)", { make_expression(maker, Type::VOLTAGE, 2),
                                                make_expression(maker, Type::CHAR, 1) });
    }
}

Statement make_if(Maker *maker)
{
    Statement statement;
    const uint32_t count = 1 + maker->random.below(3);
    for (uint32_t i = 0; i < count; ++i)
        statement.legs.push_back({ i == 0 ? "IF %0" : "ELSEIF %0",
                                   { make_expression(maker, Type::BOOL, 3) },
                                   make_inner_block(maker),
                                   true });
    if (maker->random.chance(50))
        statement.legs.push_back({ "ELSE", {}, make_inner_block(maker), true });
    return statement;
}

// A variable of its own that nothing else writes to while its loop runs.
std::string new_local(Maker *maker, Type type)
{
    const std::string name = "n" + std::to_string(maker->names++);
    maker->function->locals[name] = std::string(name_of(type)) + " " + name;
    maker->locals.push_back({ name, type, Shape::SCALAR, true });
    return name;
}

Statement make_while(Maker *maker)
{
    const std::string counter = new_local(maker, Type::INT);
    const std::string limit = std::to_string(2 + maker->random.below(4));
    Statement statement =
        line("WHILE (" + counter + " = " + counter + " + 1) < " + limit + " AND %0",
             { make_expression(maker, Type::BOOL, 2) });
    ++maker->loops;
    statement.legs[0].body = make_inner_block(maker);
    statement.legs[0].has_body = true;
    --maker->loops;
    return statement;
}

Expression small_word(Maker *maker)
{
    if (maker->random.chance(50)) return leaf(Type::INT, std::to_string(maker->random.below(5)));
    return binary(Type::INT, BIT_AND, "&", make_expression(maker, Type::INT, 2),
                  leaf(Type::INT, "3"));
}

Statement for_of(Maker *maker, const std::string &variable)
{
    switch (maker->random.below(6)) {
    case 0: {
        const std::string volt = new_local(maker, Type::VOLTAGE);
        return line("FOR " + volt + " FROM 1V TO 2V BY 300mV", {});
    }
    case 1: {
        const std::string colour = new_local(maker, Type::COLOUR);
        return line("FOR " + colour + " FROM RED TO BLUE", {});
    }
    case 2: {
        const std::string character = new_local(maker, Type::CHAR);
        return line("FOR " + character + " FROM %0 TO %1",
                    { small_word(maker), small_word(maker) });
    }
    case 3:
        return line("FOR " + variable + " TO %0 BY %1 FROM %2",
                    { small_word(maker),
                      binary(Type::INT, BIT_OR, "|", small_word(maker), leaf(Type::INT, "1")),
                      small_word(maker) });
    default:
        return line("FOR " + variable + " FROM %0 TO %1", { small_word(maker), small_word(maker) });
    }
}

Statement make_for(Maker *maker)
{
    Statement statement = for_of(maker, new_local(maker, Type::INT));
    ++maker->loops;
    statement.legs[0].body = make_inner_block(maker);
    statement.legs[0].has_body = true;
    --maker->loops;
    return statement;
}

Statement make_switch(Maker *maker)
{
    const bool is_colour = maker->random.chance(40);
    const Type type = is_colour ? Type::COLOUR : Type::INT;
    Statement statement = line("SWITCH %0", { make_expression(maker, type, 2) });
    constexpr const char *numbers[] = { "CASE 0", "CASE 1, 3", "CASE 2", "CASE 7" };
    constexpr const char *names[] = { "CASE RED", "CASE GREEN", "CASE BLUE" };
    const uint32_t count = 1 + maker->random.below(is_colour ? 3 : 4);
    for (uint32_t i = 0; i < count; ++i)
        statement.legs.push_back(
            { is_colour ? names[i] : numbers[i], {}, make_inner_block(maker), true });
    if (maker->random.chance(60))
        statement.legs.push_back({ "DEFAULT", {}, make_inner_block(maker), true });
    return statement;
}

/** What a function or a leaf gives: NULL by itself is no STRING there. */
Expression make_result(Maker *maker, Type type, int depth)
{
    Expression result = make_expression(maker, type, depth);
    if (result.text == "NULL") result.text = "\"abc\"";
    return result;
}

Statement make_return(Maker *maker)
{
    if (maker->result == Type::NOTHING) return line("RETURN", {});
    return line("RETURN %0", { make_result(maker, maker->result, 3) });
}

Statement make_guard(Maker *maker)
{
    Statement statement;
    const std::string number = std::to_string(maker->random.below(3));
    const bool is_over = maker->result == Type::NOTHING;
    (void)is_over;
    const Type result = maker->result;
    std::vector<Statement> handler{ make_report(maker) };
    std::vector<Statement> protected_block = make_inner_block(maker);
    maker->result = result;
    statement.legs.push_back({ "WHEN " + number, {}, std::move(handler), true });
    statement.legs.push_back({ "ELSE", {}, std::move(protected_block), true });
    return statement;
}

Statement make_operation(Maker *maker)
{
    const Variable *variable = find_shape(maker, Shape::OPERATION, Type::NOTHING);
    if (variable == nullptr) return make_assignment(maker);
    return line(variable->name + " = " + (maker->random.chance(50) ? "plus" : "minus"), {});
}

Statement make_statement(Maker *maker)
{
    const uint32_t which = maker->random.below(20);
    const bool is_deep = maker->nesting >= 2;
    if (which < 3 && !is_deep) return make_if(maker);
    if (which == 3 && !is_deep && maker->loops < 2) return make_while(maker);
    if (which == 4 && !is_deep && maker->loops < 2) return make_for(maker);
    if (which == 5 && !is_deep) return make_switch(maker);
    if (which == 6) return make_operation(maker);
    if (which == 7 && maker->features.has_exceptions && !is_deep) return make_guard(maker);
    if (which == 8 && maker->features.has_exceptions && maker->random.chance(40))
        return line("RAISE " + std::to_string(maker->random.below(3)) + ", %0",
                    { make_expression(maker, Type::INT, 2) });
    if (which < 10) return make_report(maker);
    if (which < 13) return make_call_statement(maker);
    return make_assignment(maker);
}

std::vector<Statement> make_block(Maker *maker, int count)
{
    std::vector<Statement> block;
    for (int i = 0; i < count; ++i)
        block.push_back(make_statement(maker));
    if (maker->nesting > 0 && maker->random.chance(6)) block.push_back(make_return(maker));
    return block;
}

// Functions.

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
    { "list", Type::INT, Shape::ARRAY, "INT list[4]" },
    { "bytes", Type::CHAR, Shape::ARRAY, "CHAR bytes[4]" },
    { "hues", Type::COLOUR, Shape::BY_COLOUR, "COLOUR hues[COLOUR]" },
    { "sums", Type::INT, Shape::BY_COLOUR, "INT sums[COLOUR]" },
    { "part", Type::NOTHING, Shape::PART, "PART part" },
    { "box", Type::NOTHING, Shape::BOX, "BOX box" },
    { "op", Type::NOTHING, Shape::OPERATION, "OPERATION op" },
};

constexpr Declaration statics[] = {
    { "n", Type::INT, Shape::SCALAR, "INT " },
    { "c", Type::CHAR, Shape::SCALAR, "CHAR " },
    { "b", Type::BOOL, Shape::SCALAR, "BOOL " },
    { "h", Type::COLOUR, Shape::SCALAR, "COLOUR " },
    { "s", Type::STRING, Shape::SCALAR, "STRING " },
    { "v", Type::VOLTAGE, Shape::SCALAR, "VOLTAGE " },
    { "a", Type::INT, Shape::ARRAY, "INT " },
    { "d", Type::CHAR, Shape::ARRAY, "CHAR " },
    { "p", Type::NOTHING, Shape::PART, "PART " },
    { "x", Type::NOTHING, Shape::BOX, "BOX " },
};

void declare_statics(Maker *maker)
{
    for (const Declaration &declaration : statics) {
        if (!maker->random.chance(50)) continue;
        const std::string name = maker->prefix + declaration.name;
        const bool is_array = declaration.shape == Shape::ARRAY;
        maker->program.statics[name] = declaration.text + name + (is_array ? "[4]" : "");
        maker->statics.push_back({ name, declaration.type, declaration.shape, false });
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
    if (function->locals.count("op") != 0) function->body.push_back(line("op = plus", {}, true));
}

constexpr Type passed[] = { Type::INT,    Type::INT,  Type::CHAR,  Type::BOOL,   Type::COLOUR,
                            Type::STRING, Type::TIME, Type::FLOAT, Type::VOLTAGE };

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

constexpr Type results[] = { Type::INT,    Type::INT,     Type::BOOL,    Type::COLOUR,
                             Type::STRING, Type::VOLTAGE, Type::TIME,    Type::CURRENT,
                             Type::CHAR,   Type::FLOAT,   Type::NOTHING, Type::NOTHING };

void add_function(Maker *maker, const std::string &name, Type result,
                  const std::vector<Parameter> &parameters, int count)
{
    Function function = begin_function(maker, name, result, "FUNCTION", parameters);
    maker->function = &function;
    maker->result = result;
    maker->calls_left = 3;
    begin_body(maker, &function);
    for (Statement &statement : make_block(maker, count))
        function.body.push_back(std::move(statement));
    if (result != Type::NOTHING) {
        function.body.push_back(make_return(maker));
        function.body.back().is_fixed = true;
    }
    function.is_public = maker->random.chance(20);
    maker->program.functions.push_back(std::move(function));
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
        if (variable.shape == Shape::PART_REF || variable.shape == Shape::OPERATION)
            variable.is_busy = true;
    std::erase_if(maker->locals, [](const Variable &variable) { return variable.is_busy; });
    Statement graph;
    for (uint32_t i = 0; i < nodes; ++i) {
        const std::string target = "m" + std::to_string(i);
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
    for (uint32_t i = 0; i < leaves; ++i)
        graph.legs.push_back(
            { "LEAF w" + std::to_string(i) + " %0", { make_result(maker, result, 2) }, {}, false });
    graph.is_fixed = true;
    tree.body.push_back(std::move(graph));
    maker->program.functions.push_back(std::move(tree));
}

void add_helpers(Maker *maker)
{
    const uint32_t count = maker->random.below(4);
    for (uint32_t i = 0; i < count; ++i) {
        const std::string name = maker->prefix + "f" + std::to_string(i);
        Callee callee{ name, results[maker->random.below(std::size(results))], {} };
        if (maker->random.chance(15)) {
            callee.result = maker->random.chance(50) ? Type::INT : Type::STRING;
            callee.parameters = { { Type::INT, Mode::VALUE } };
            add_tree(maker, name, callee.result);
        } else {
            for (uint32_t k = maker->random.below(4); k > 0; --k)
                callee.parameters.push_back(make_parameter(maker));
            add_function(maker, name, callee.result, callee.parameters,
                         1 + static_cast<int>(maker->random.below(4)));
        }
        maker->callees.push_back(std::move(callee));
    }
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
        /* Truth values and colours are among the answers. */
        std::vector<int32_t> answers;
        for (uint32_t count = maker->random.below(8); count > 0; --count)
            answers.push_back(static_cast<int32_t>(maker->random.below(2)));
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
    declare_statics(&maker);
    add_helpers(&maker);
    maker.program.entry = maker.prefix + "main";
    add_function(&maker, maker.program.entry, Type::INT,
                 { { Type::INT, Mode::VALUE }, { Type::INT, Mode::VALUE } },
                 3 + static_cast<int>(maker.random.below(5)));
    add_reports(&maker);
    add_runs(&maker);
    return std::move(maker.program);
}

// Text.

std::string print(const Expression &expression, int limit)
{
    std::string text;
    for (size_t at = 0; at < expression.text.size(); ++at) {
        const bool is_operand = expression.text[at] == '%' && at + 1 < expression.text.size() &&
                                expression.text[at + 1] >= '0' && expression.text[at + 1] <= '9';
        if (!is_operand) {
            text += expression.text[at];
            continue;
        }
        const auto index = static_cast<size_t>(expression.text[++at] - '0');
        text += print(expression.operands[index], expression.limits[index]);
    }
    return expression.level > limit ? "(" + text + ")" : text;
}

namespace
{

// The heads of loops join a condition to their own by AND.
int limit_of(const std::string &head)
{
    return head.compare(0, 6, "WHILE ") == 0 ? LOGICAL_AND - 1 : ANYTHING;
}

std::string print_head(const Leg &leg)
{
    std::string text;
    for (size_t at = 0; at < leg.head.size(); ++at) {
        const bool is_expression = leg.head[at] == '%' && at + 1 < leg.head.size() &&
                                   leg.head[at + 1] >= '0' && leg.head[at + 1] <= '9';
        text += is_expression ? print(leg.expressions[static_cast<size_t>(leg.head[++at] - '0')],
                                      limit_of(leg.head))
                              : std::string(1, leg.head[at]);
    }
    return text;
}

void print_block(const std::vector<Statement> &block, size_t indent, std::string *text)
{
    for (const Statement &statement : block) {
        for (const Leg &leg : statement.legs) {
            *text += std::string(indent, ' ') + print_head(leg) + "\n";
            print_block(leg.body, indent + 4, text);
        }
    }
}

std::set<std::string> words_of(const std::string &text)
{
    std::set<std::string> words_found;
    std::string word;
    for (const char c : text + " ") {
        const bool is_letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (is_letter || c == '_' || (c >= '0' && c <= '9')) {
            word += c;
        } else if (!word.empty()) {
            words_found.insert(word);
            word.clear();
        }
    }
    return words_found;
}

std::string print_declarations(const std::map<std::string, std::string> &all,
                               const std::set<std::string> &used)
{
    std::string text;
    for (const auto &[name, declaration] : all)
        if (used.count(name) != 0) text += (text.empty() ? "VAR " : "    ") + declaration + "\n";
    return text;
}

std::string print_function(const Function &function)
{
    std::string body;
    print_block(function.body, 4, &body);
    return function.head + "\n" + print_declarations(function.locals, words_of(body)) + "BEGIN\n" +
           body + "END\n";
}

constexpr char module_head[] = R"(MODULE fuzz
ENUM COLOUR = RED GREEN BLUE
TYPEDEF RECORD PART(INT size, CHAR tag, COLOUR colour, VOLTAGE level, STRING title, BOOL good)
TYPEDEF RECORD BOX(INT count, PART inner, INT cells[4], CHAR marks[4])
TYPEDEF -> PART PART_REF
TYPEDEF FUNCTION INT OPERATION(INT a, b)
CONST INT TABLE[4] = 3, -1, 4, 100000
      STRING WORDS[2] = "low", "middle"
      CHAR LETTERS[4] = 'a', 'b', 'Z', '~'
      PART PARTS[2] = (1, 'x', GREEN, 3V, "one", TRUE), (-2, 'y', BLUE, 4V, "two", FALSE)
SYSCALL (40) INT ask(INT which)
        (41) VOID tell(INT value)
        (42) BOOL truth(INT which)
        (43) VOLTAGE measure(CHAR channel, COLOUR colour)
        (44) VOID say(STRING format ..)
        (45) COLOUR pick(STRING name)
        (46) TIME now()
        (47) FLOAT root(FLOAT value)
)";

constexpr char private_head[] = R"(FUNCTION INT plus(INT a, b)
BEGIN
    RETURN a + b
END
FUNCTION INT minus(INT a, b)
BEGIN
    tell(a)
    RETURN a - b
END
)";

struct Text {
    std::string public_part;
    std::string statics;
    std::string functions;
};

// The functions that the entry reaches, and the statics that these use.
void print_program(const Program &program, Text *text)
{
    std::set<std::string> used{ program.entry };
    std::string functions;
    for (size_t i = program.functions.size(); i-- > 0;) {
        const Function &function = program.functions[i];
        if (used.count(function.name) == 0) continue;
        const std::string printed = print_function(function);
        used.merge(words_of(printed));
        functions = printed + functions;
        const size_t first = function.head.find(' ');
        if (function.is_public)
            text->public_part +=
                function.head.substr(0, first) + function.head.substr(first) + "\n";
    }
    text->functions += functions;
    for (const auto &[name, declaration] : program.statics)
        if (used.count(name) != 0) text->statics += "VAR " + declaration + "\n";
}

} // namespace

std::string module_text(const std::vector<const Program *> &programs)
{
    Text text;
    for (const Program *program : programs)
        print_program(*program, &text);
    return module_head + text.public_part + "PRIVATE\n" + text.statics + private_head +
           text.functions;
}

} // namespace random_program
