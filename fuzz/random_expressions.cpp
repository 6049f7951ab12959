// Makes expressions, typed from the outside inwards.
#include "random_maker.h"

namespace random_program
{

Expression leaf(Type type, const std::string &text, int level)
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
constexpr const char *volts[] = { "12V", "1.5V", "250mV", "0V", "5V", "1mV" };
constexpr const char *amperes[] = { "2A", "50mA", "1.25A", "1mA" };
constexpr const char *ohms[] = { "470R", "2.2kR", "10R", "1R" };
constexpr const char *times[] = { "20ms", "1s", "70us", "1.5s", "0ms" };
constexpr const char *converters[] = { "scale", "steps" };
constexpr const char *places_of_parts[] = { "pump.inlet", "pump.outlet", "fan.hub" };
// What stands inside of a section can be named in its own module alone.
constexpr const char *spots[] = { "spot(0)", "spot(1)" };
constexpr const char *contacts[] = { "contact(0)", "contact(1)" };
constexpr const char *faces[] = { "face(0)", "face(1)" };
constexpr const char *legs[] = { "leg(0)", "leg(1)" };
constexpr const char *rates[] = { "50Hz", "1kHz", "7Hz" };

template <size_t N> static const char *one_of(Maker *maker, const char *const (&list)[N])
{
    return list[maker->random.below(N)];
}

static Expression literal(Maker *maker, Type type)
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
    case Type::SHORT:
        return leaf(type, "cast(300, SHORT)");
    case Type::WORD:
        return leaf(type, "cast(-70000, WORD)");
    case Type::QUANTITY:
        return leaf(type, "cast(12, QUANTITY)");
    case Type::CONVERTER:
        return leaf(type, one_of(maker, converters));
    case Type::COMPONENT:
        return leaf(type, maker->random.chance(50) ? "pump" : "fan");
    case Type::VARLOC:
        return leaf(type, maker->features.has_library || maker->random.chance(30)
                              ? one_of(maker, spots)
                              : one_of(maker, places_of_parts));
    case Type::WAVEFORM:
        return leaf(type, maker->random.chance(50) ? "pulses" : "ramp");
    case Type::CONNECTOR:
        return leaf(type, maker->random.chance(50) ? "plug" : "socket");
    case Type::POINT:
        if (maker->features.has_library) return leaf(type, one_of(maker, contacts));
        return leaf(type, maker->random.chance(50) ? "plug.A.probe" : "plug.B.tap");
    case Type::PIN:
        if (maker->features.has_library) return leaf(type, one_of(maker, legs));
        return leaf(type, maker->random.chance(50) ? "plug.A" : "socket.A");
    case Type::VIEW:
        if (maker->features.has_library) return leaf(type, one_of(maker, faces));
        return leaf(type, maker->random.chance(50) ? "plug.mating" : "plug.wires");
    case Type::HELPSCREEN:
        return leaf(type, maker->random.chance(50) ? "advice" : "warning");
    default:
        if (maker->random.chance(30)) return leaf(type, one_of(maker, negative_words), SIGN);
        return leaf(type, one_of(maker, words));
    }
}

// Places.

static Expression index_of(Maker *maker, int depth)
{
    if (depth <= 0 || maker->random.chance(40))
        return leaf(Type::INT, std::to_string(maker->random.below(4)));
    if (maker->random.chance(2))
        return binary(Type::INT, SUM, "+", make_expression(maker, Type::INT, depth - 1),
                      leaf(Type::INT, "i"));
    Expression mask = leaf(Type::INT, "3");
    return binary(Type::INT, BIT_AND, "&", make_expression(maker, Type::INT, depth - 1), mask);
}

static Expression place(Type type, int level, const std::string &text)
{
    Expression expression = leaf(type, text, level);
    expression.is_place = true;
    return expression;
}

static Expression indexed(Type type, int level, const std::string &text, Expression index)
{
    Expression expression = with(type, level, text, { std::move(index) }, { ANYTHING });
    expression.is_place = true;
    return expression;
}

static void add_fields(std::vector<Expression> *places, Type type, const std::string &record,
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

static void add_places(Maker *maker, std::vector<Expression> *places, const Variable &variable,
                       Type type, int depth)
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

Expression make_place(Maker *maker, Type type, int depth)
{
    std::vector<Expression> places;
    for (const std::vector<Variable> *list : { &maker->locals, &maker->statics })
        for (const Variable &variable : *list)
            if (!variable.is_busy) add_places(maker, &places, variable, type, depth);
    if (places.empty()) return leaf(type, "");
    return places[maker->random.below(static_cast<uint32_t>(places.size()))];
}

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
static Expression make_argument(Maker *maker, const Parameter &parameter, int depth)
{
    switch (parameter.mode) {
    case Mode::VALUE:
        return make_source(maker, parameter.type, depth);
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
static const std::vector<Callee> &syscalls()
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
        { "read", Type::CHAR, { { Type::SHORT, Mode::VALUE }, { Type::WORD, Mode::VALUE } } },
        { "label", Type::STRING, { { Type::QUANTITY, Mode::VALUE } } },
    };
    return list;
}

static Expression call_of_type(Maker *maker, Type type, int depth)
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

static Expression function_of(Type type, const std::string &name, Expression operand)
{
    return with(type, NAME, name + "(%0)", { std::move(operand) }, { LOGICAL_OR });
}

static Expression lesser_or_greater(Maker *maker, Type type, int depth)
{
    const std::string name = maker->random.chance(50) ? "min" : "max";
    return with(type, NAME, name + "(%0, %1)",
                { make_expression(maker, type, depth), make_expression(maker, type, depth) },
                { LOGICAL_OR, LOGICAL_OR });
}

static Expression signed_value(Type type, const std::string &sign, Expression operand)
{
    return with(type, SIGN, sign + "%0", { std::move(operand) }, { NAME });
}

static Expression assignment(Maker *maker, Type type, int depth)
{
    Expression target = make_place(maker, type, depth);
    if (target.text.empty()) return literal(maker, type);
    return with(type, ASSIGNMENT, "%0 = %1",
                { std::move(target), make_expression(maker, type, depth) },
                { LOGICAL_OR, ASSIGNMENT });
}

// Seldom zero.
static Expression divisor(Maker *maker, int depth)
{
    if (maker->random.chance(4)) return make_expression(maker, Type::INT, depth);
    if (maker->random.chance(40)) return leaf(Type::INT, maker->random.chance(50) ? "7" : "1000");
    return binary(Type::INT, BIT_OR, "|", make_expression(maker, Type::INT, depth),
                  leaf(Type::INT, "1"));
}

// A CHAR stands for its word between other words.
static Expression make_term(Maker *maker, int depth)
{
    constexpr Type narrow[] = { Type::CHAR, Type::CHAR, Type::SHORT, Type::QUANTITY };
    const bool is_narrow = maker->random.chance(20);
    const Type type = is_narrow ? narrow[maker->random.below(std::size(narrow))] : Type::INT;
    return make_expression(maker, type, depth);
}

static Expression arithmetic(Maker *maker, int depth)
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

static Expression word_of_quantity(Maker *maker, int depth)
{
    const Type type = quantities[maker->random.below(std::size(quantities))];
    if (maker->random.chance(60)) return cast_to(Type::INT, make_expression(maker, type, depth));
    Expression other =
        maker->random.chance(80) ? literal(maker, type) : make_expression(maker, type, depth);
    return binary(Type::INT, PRODUCT, "/", make_expression(maker, type, depth), other);
}

static Expression operation_call(Maker *maker, int depth)
{
    const Variable *variable = find_shape(maker, Shape::OPERATION, Type::NOTHING);
    if (variable == nullptr) return arithmetic(maker, depth);
    return with(
        Type::INT, NAME, variable->name + "(%0, %1)",
        { make_expression(maker, Type::INT, depth), make_expression(maker, Type::INT, depth) },
        { LOGICAL_OR, LOGICAL_OR });
}

static Expression element_of_open_array(Maker *maker, int depth)
{
    const Variable *array = find_shape(maker, Shape::OPEN_ARRAY, Type::INT);
    if (array == nullptr) return arithmetic(maker, depth);
    if (maker->features.has_run_time_lengths && maker->random.chance(30))
        return leaf(Type::INT, "upb(" + array->name + ")");
    return with(Type::INT, NAME, array->name + "[%0 & 3]",
                { make_expression(maker, Type::INT, depth) }, { BIT_AND });
}

// What the compiler knows of types and items.
static Expression known_word(Maker *maker)
{
    constexpr const char *known[] = { "max(CHAR)",
                                      "min(CHAR)",
                                      "min(INT)",
                                      "max(INT)",
                                      "upb(TABLE)",
                                      "upb(WORDS)",
                                      "ALLOCATE_SPACE",
                                      "cast(max(COLOUR), INT)",
                                      "cast(min(BOOL), INT)",
                                      "cast(max(TIME), INT)",
                                      "cast(qty(VOLTAGE), INT)",
                                      "cast(qty(CLOCK_TIME), INT)" };
    const Variable *array = find_shape(maker, Shape::ARRAY, Type::INT);
    if (array != nullptr && maker->random.chance(30))
        return leaf(Type::INT, "upb(" + array->name + ")");
    return leaf(Type::INT, one_of(maker, known));
}

// A value of less than a word as a word.
static Expression widened(Maker *maker, int depth)
{
    constexpr Type enumerations[] = { Type::COLOUR, Type::BOOL };
    const Type type = enumerations[maker->random.below(2)];
    switch (maker->random.below(4)) {
    case 0:
        return function_of(Type::INT, "abs", make_expression(maker, type, depth));
    case 1:
        return cast_to(Type::INT, make_expression(maker, type, depth));
    default:
        return cast_to(Type::INT, make_expression(maker, Type::CHAR, depth));
    }
}

static Expression conversion(Maker *maker, Type type, int depth)
{
    const Type from = quantities[maker->random.below(std::size(quantities))];
    const char *direction = maker->random.chance(30) ? ", BACKWARDS)" : ")";
    const std::string rest = std::string("(%0, ") + one_of(maker, converters) + direction;
    const bool is_text = type == Type::STRING;
    Expression value =
        with(is_text ? type : Type::QUANTITY, NAME, (is_text ? "cvts" : "cvt") + rest,
             { make_expression(maker, from, depth) }, { LOGICAL_OR });
    return is_text ? value : cast_to(type, std::move(value));
}

static Expression attribute(Maker *maker)
{
    constexpr const char *attributes[] = { "attr(scale, \"OFFSET\")",
                                           "attr(scale, \"MULTIPLIER\")",
                                           "attr(scale, \"DIVISOR\")",
                                           "attr(scale, \"STATES\")",
                                           "attr(attr(steps, \"NEXT\"), \"OFFSET\")",
                                           "cast(attr(scale, \"STATELOW\", 1), INT)",
                                           "cast(attr(scale, \"STATEHIGH\"), INT)" };
    return leaf(Type::INT, one_of(maker, attributes));
}

static Expression make_word(Maker *maker, int depth)
{
    if (maker->features.has_conversions && maker->random.chance(3)) return attribute(maker);
    if (maker->features.has_conversions && maker->random.chance(4))
        return conversion(maker, Type::INT, depth);
    switch (maker->random.below(20)) {
    case 0:
        return signed_value(Type::INT, maker->random.chance(85) ? "-" : "+",
                            make_expression(maker, Type::INT, depth));
    case 1:
        return signed_value(Type::INT, "~", make_expression(maker, Type::INT, depth));
    case 2:
        return function_of(Type::INT, "abs", make_expression(maker, Type::INT, depth));
    case 3:
        return lesser_or_greater(maker, Type::INT, depth);
    case 4:
        return word_of_quantity(maker, depth);
    case 5:
        return widened(maker, depth);
    case 6:
        return maker->random.chance(50) ? known_word(maker) : widened(maker, depth);
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

static Expression comparison(Maker *maker, Type type, int depth)
{
    constexpr const char *signs[] = { "<", "<=", ">", ">=", "==", "!=" };
    const bool has_no_order = type == Type::BOOL || is_item(type);
    const uint32_t which = maker->random.below(has_no_order ? 2 : 6);
    const uint32_t chosen = has_no_order ? which + 4 : which;
    Expression left = make_expression(maker, type, depth);
    Expression right = make_expression(maker, type, depth);
    if (is_item(type) && maker->random.chance(15)) right = leaf(type, "NULL");
    /* NULL may stand on the right side of an equality alone. */
    if (left.text == "NULL") left.text = "\"abc\"";
    if (right.text == "NULL" && chosen < 4) right.text = "\"abc\"";
    return binary(Type::BOOL, chosen < 4 ? RELATION : EQUALITY, signs[chosen], std::move(left),
                  std::move(right));
}

static Expression make_truth(Maker *maker, int depth)
{
    constexpr Type compared[] = {
        Type::INT,      Type::INT,        Type::INT,       Type::CHAR,     Type::COLOUR,
        Type::STRING,   Type::STRING,     Type::VOLTAGE,   Type::TIME,     Type::CURRENT,
        Type::BOOL,     Type::CLOCK_TIME, Type::FLOAT,     Type::WORD,     Type::SHORT,
        Type::QUANTITY, Type::VARLOC,     Type::CONVERTER, Type::WAVEFORM, Type::COMPONENT,
        Type::POINT,    Type::CONNECTOR,  Type::PIN,       Type::VIEW,     Type::HELPSCREEN
    };
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
static Expression derived_quantity(Maker *maker, Type type, int depth)
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

// A number with a quantity behind it, which has the quantity's type.
static Expression number_before(Maker *maker, Type type, int depth)
{
    Expression number = make_expression(maker, Type::INT, depth);
    if (maker->random.chance(50) || type == Type::TIME || type == Type::FREQUENCY)
        return binary(type, PRODUCT, "*", std::move(number), make_expression(maker, type, depth));
    return binary(type, PRODUCT, "/", std::move(number), literal(maker, type));
}

static Expression make_quantity(Maker *maker, Type type, int depth)
{
    switch (maker->random.below(14)) {
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
    case 9:
        return maker->random.chance(10) ? leaf(type, (maker->random.chance(50) ? "min(" : "max(") +
                                                         std::string(name_of(type)) + ")")
                                        : number_before(maker, type, depth);
    default:
        return derived_quantity(maker, type, depth);
    }
}

// Four bytes that came from anywhere are computed with as a quantity of their own is.
static Expression make_raw_word(Maker *maker, int depth)
{
    constexpr Type type = Type::WORD;
    switch (maker->random.below(6)) {
    case 0:
        return binary(type, SUM, maker->random.chance(50) ? "+" : "-",
                      make_expression(maker, type, depth), make_expression(maker, type, depth));
    case 1:
        return cast_to(type, make_expression(maker, Type::INT, depth));
    case 2:
        return lesser_or_greater(maker, type, depth);
    case 3:
        return assignment(maker, type, depth);
    default:
        return variable_value(maker, type, depth);
    }
}

static Expression make_any_quantity(Maker *maker, int depth)
{
    if (maker->random.chance(30))
        return cast_to(Type::QUANTITY, make_expression(maker, Type::VOLTAGE, depth));
    return maker->random.chance(30) ? assignment(maker, Type::QUANTITY, depth)
                                    : variable_value(maker, Type::QUANTITY, depth);
}

static Expression make_item(Maker *maker, Type type, int depth)
{
    if (type == Type::CONVERTER && maker->features.has_conversions && maker->random.chance(15))
        return leaf(type, "attr(steps, \"NEXT\")");
    switch (maker->random.below(6)) {
    case 0:
        return call_of_type(maker, type, depth);
    case 1:
        return assignment(maker, type, depth);
    case 2:
        return literal(maker, type);
    default:
        return variable_value(maker, type, depth);
    }
}

static Expression make_colour(Maker *maker, int depth)
{
    if (maker->random.chance(12)) return lesser_or_greater(maker, Type::COLOUR, depth);
    if (maker->random.chance(3)) return leaf(Type::COLOUR, "max(COLOUR)");
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

static Expression make_text(Maker *maker, int depth)
{
    if (maker->features.has_conversions && maker->random.chance(15))
        return conversion(maker, Type::STRING, depth);
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

static Expression make_character(Maker *maker, int depth)
{
    if (maker->random.chance(30))
        return with(Type::CHAR, NAME, "LETTERS[%0]", { index_of(maker, depth) }, { ANYTHING });
    if (maker->random.chance(10))
        return cast_to(Type::CHAR, make_expression(maker, Type::INT, depth)); // cuts nothing
    return maker->random.chance(20) ? call_of_type(maker, Type::CHAR, depth)
                                    : variable_value(maker, Type::CHAR, depth);
}

static Expression make_float(Maker *maker, int depth)
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
    case Type::SHORT:
        return maker->random.chance(80) ? variable_value(maker, type, depth)
                                        : call_of_type(maker, type, depth);
    case Type::WORD:
        return make_raw_word(maker, depth - 1);
    case Type::QUANTITY:
        return make_any_quantity(maker, depth - 1);
    case Type::CONVERTER:
    case Type::COMPONENT:
    case Type::VARLOC:
    case Type::WAVEFORM:
    case Type::CONNECTOR:
    case Type::POINT:
    case Type::PIN:
    case Type::VIEW:
    case Type::HELPSCREEN:
        return make_item(maker, type, depth - 1);
    default:
        return maker->random.chance(25) ? variable_value(maker, type, depth)
                                        : make_quantity(maker, type, depth - 1);
    }
}
// What a place of a type takes beside its own.
static Type source_type(Maker *maker, Type type)
{
    constexpr Type words[] = { Type::INT,  Type::VOLTAGE, Type::FLOAT,   Type::CHAR,
                               Type::BOOL, Type::COLOUR,  Type::CURRENT, Type::QUANTITY };
    constexpr Type numbers[] = { Type::INT, Type::CHAR, Type::VOLTAGE, Type::TIME };
    switch (type) {
    case Type::INT:
        return maker->random.chance(50) ? Type::WORD : Type::QUANTITY;
    case Type::CHAR:
        return maker->random.chance(80) ? Type::INT : Type::WORD;
    case Type::WORD:
        return words[maker->random.below(std::size(words))];
    case Type::QUANTITY:
        return numbers[maker->random.below(std::size(numbers))];
    case Type::FLOAT:
        return Type::WORD;
    default:
        return is_quantity(type) && maker->random.chance(50) ? Type::WORD : type;
    }
}

static bool is_often_mixed(Type type)
{
    return type == Type::CHAR || type == Type::WORD || type == Type::QUANTITY;
}

Expression make_source(Maker *maker, Type type, int depth)
{
    if (type == Type::SHORT)
        return binary(Type::INT, BIT_AND, "&", make_expression(maker, Type::INT, depth),
                      leaf(Type::INT, "32767"));
    if (maker->random.chance(is_often_mixed(type) ? 70 : 10)) type = source_type(maker, type);
    return make_expression(maker, type, depth);
}

Expression make_result(Maker *maker, Type type, int depth)
{
    Expression result = make_expression(maker, type, depth);
    if (result.text == "NULL") result.text = "\"abc\"";
    return result;
}

} // namespace random_program
