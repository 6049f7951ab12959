// Makes statements.
#include "random_maker.h"

namespace random_program
{

// Statements.

Statement line(const std::string &head, std::vector<Expression> expressions, bool is_fixed)
{
    return { { { head, std::move(expressions), {}, false } }, is_fixed };
}

static std::vector<Statement> make_inner_block(Maker *maker)
{
    ++maker->nesting;
    std::vector<Statement> block = make_block(maker, 1 + static_cast<int>(maker->random.below(3)));
    --maker->nesting;
    return block;
}

constexpr Type assigned[] = {
    Type::INT,        Type::INT,       Type::INT,        Type::CHAR,      Type::BOOL,
    Type::COLOUR,     Type::STRING,    Type::VOLTAGE,    Type::CURRENT,   Type::TIME,
    Type::CLOCK_TIME, Type::FLOAT,     Type::RESISTANCE, Type::FREQUENCY, Type::CHAR,
    Type::SHORT,      Type::WORD,      Type::WORD,       Type::QUANTITY,  Type::CONVERTER,
    Type::VARLOC,     Type::COMPONENT, Type::WAVEFORM,   Type::POINT,     Type::CONNECTOR,
    Type::PIN,        Type::VIEW,      Type::HELPSCREEN
};

// Assignments turn milliseconds and microseconds into one another, arguments do not.
static Expression stored_value(Maker *maker, Type type)
{
    if (type == Type::CLOCK_TIME && maker->random.chance(70))
        return make_expression(maker, Type::TIME, 3);
    if (type == Type::TIME && maker->random.chance(20))
        return make_expression(maker, Type::CLOCK_TIME, 3);
    if (is_item(type) && maker->random.chance(15)) return leaf(type, "NULL");
    return make_source(maker, type, 3);
}

static Statement make_assignment(Maker *maker)
{
    const Type type = assigned[maker->random.below(std::size(assigned))];
    Expression target = make_place(maker, type, 2);
    if (target.text.empty()) return line("tell(%0)", { make_expression(maker, Type::INT, 3) });
    return line("%0 = %1", { std::move(target), stored_value(maker, type) });
}

static Statement make_call_statement(Maker *maker)
{
    if (maker->callees.empty() || maker->calls_left <= 0) return make_assignment(maker);
    --maker->calls_left;
    const auto count = static_cast<uint32_t>(maker->callees.size());
    Expression call = make_call(maker, maker->callees[maker->random.below(count)], 2);
    if (call.text.empty()) return make_assignment(maker);
    return line("%0", { std::move(call) });
}

// Calls the function under way again, a few times in all.
static Statement make_recursion(Maker *maker)
{
    const std::string count = maker->prefix + (maker->is_library ? "lq" : "q");
    Expression call = make_call(maker, maker->self, 2);
    if (maker->self.name.empty() || call.text.empty()) return make_assignment(maker);
    maker->program.statics[count] = { "VAR INT " + count, maker->is_library };
    Statement statement = line("IF (" + count + " = " + count + " + 1) < 4", {});
    statement.legs[0].body.push_back(line("%0", { std::move(call) }));
    statement.legs[0].has_body = true;
    return statement;
}

static Statement make_report(Maker *maker)
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

// Lets the view lie on another array of four.
static Statement make_view(Maker *maker)
{
    if (maker->function->locals.count("view") == 0) return make_assignment(maker);
    const Variable *array = find_shape(maker, Shape::ARRAY, Type::INT);
    const bool is_table = array == nullptr || maker->random.chance(30);
    return line("view = " + (is_table ? "TABLE" : array->name), {});
}

static Statement make_if(Maker *maker)
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
static std::string new_local(Maker *maker, Type type)
{
    const std::string name = "n" + std::to_string(maker->names++);
    const std::string rest = type == Type::SHORT ? ", " + name + "_end" : "";
    maker->function->locals[name] = std::string(name_of(type)) + " " + name + rest;
    maker->locals.push_back({ name, type, Shape::SCALAR, true });
    return name;
}

static std::string new_box(Maker *maker)
{
    const std::string name = "n" + std::to_string(maker->names++);
    maker->function->locals[name] = "BOX " + name;
    maker->locals.push_back({ name, Type::NOTHING, Shape::BOX, true });
    return name;
}

// A loop that only a RETURN ends.
static Statement make_endless(Maker *maker)
{
    const std::string counter = new_local(maker, Type::INT);
    Statement statement = line("WHILE TRUE", {}, true);
    ++maker->loops;
    Statement leave = line("IF (" + counter + " = " + counter + " + 1) > 3", {}, true);
    leave.legs[0].body.push_back(make_return(maker));
    leave.legs[0].body[0].is_fixed = true;
    leave.legs[0].has_body = true;
    statement.legs[0].body = make_inner_block(maker);
    statement.legs[0].body.push_back(std::move(leave));
    --maker->loops;
    return statement;
}

static Statement make_while(Maker *maker)
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

static Expression small_word(Maker *maker)
{
    if (maker->random.chance(50)) return leaf(Type::INT, std::to_string(maker->random.below(5)));
    return binary(Type::INT, BIT_AND, "&", make_expression(maker, Type::INT, 2),
                  leaf(Type::INT, "3"));
}

static Statement for_of(Maker *maker, const std::string &variable)
{
    switch (maker->random.below(10)) {
    case 4: {
        const std::string number = new_local(maker, Type::SHORT);
        return line("FOR " + number + " FROM %0 TO %1 BY 2",
                    { small_word(maker), small_word(maker) });
    }
    case 5: {
        const std::string length = new_local(maker, Type::TIME);
        return line("FOR " + length + " FROM %0 TO %1 + 5ms BY 2ms",
                    { make_expression(maker, Type::TIME, 0), leaf(Type::TIME, length, SUM) });
    }
    case 6: {
        const std::string box = new_box(maker);
        return line("FOR " + box + ":count FROM %0 TO %1",
                    { small_word(maker), small_word(maker) });
    }
    case 7: {
        const std::string truth = new_local(maker, Type::BOOL);
        return line("FOR " + truth + " FROM %0 TO TRUE", { make_expression(maker, Type::BOOL, 1) });
    }
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

static Statement make_for(Maker *maker)
{
    Statement statement = for_of(maker, new_local(maker, Type::INT));
    ++maker->loops;
    statement.legs[0].body = make_inner_block(maker);
    statement.legs[0].has_body = true;
    --maker->loops;
    return statement;
}

static Statement make_switch(Maker *maker)
{
    struct Kind {
        Type type;
        std::vector<const char *> values;
    };
    static const Kind kinds[] = {
        { Type::INT, { "0", "1, LIMIT", "SPACING", "LIMIT * 2 + 1" } },
        { Type::COLOUR, { "RED", "GREEN", "BLUE" } },
        { Type::CHAR, { "'a'", "'Z', '0'", "0, 1", "250" } },
        { Type::SHORT, { "300", "100, 101, 301", "302" } },
        { Type::BOOL, { "TRUE", "FALSE" } },
        { Type::INT, { "128, 255", "4 - LIMIT", "2" } },
    };
    const Kind &kind = kinds[maker->random.below(std::size(kinds))];
    Statement statement = line("SWITCH %0", { make_expression(maker, kind.type, 2) });
    const uint32_t count = 1 + maker->random.below(static_cast<uint32_t>(kind.values.size()));
    for (uint32_t i = 0; i < count; ++i)
        statement.legs.push_back(
            { std::string("CASE ") + kind.values[i], {}, make_inner_block(maker), true });
    if (maker->random.chance(60))
        statement.legs.push_back({ "DEFAULT", {}, make_inner_block(maker), true });
    return statement;
}

Statement make_return(Maker *maker)
{
    if (maker->result == Type::NOTHING) return line("RETURN", {});
    return line("RETURN %0", { make_result(maker, maker->result, 3) });
}

static Statement make_guard(Maker *maker)
{
    constexpr const char *numbers[] = { "0", "1", "SPACING", "LIMIT - 1", "2" };
    Statement statement;
    const std::string number = numbers[maker->random.below(std::size(numbers))];
    const bool was_handling = maker->is_handling;
    maker->is_handling = true;
    std::vector<Statement> handler = make_inner_block(maker);
    maker->is_handling = false;
    std::vector<Statement> protected_block = make_inner_block(maker);
    maker->is_handling = was_handling;
    statement.legs.push_back({ "WHEN " + number, {}, std::move(handler), true });
    statement.legs.push_back({ "ELSE", {}, std::move(protected_block), true });
    return statement;
}

// Leaves the handler early.
static Statement make_end_of_handler(Maker *maker)
{
    Statement statement = line("IF %0", { make_expression(maker, Type::BOOL, 2) });
    statement.legs[0].body.push_back(line("END_EXCEPTION", {}));
    statement.legs[0].has_body = true;
    return statement;
}

static Statement make_raise(Maker *maker)
{
    const std::string number = std::to_string(maker->random.below(3));
    switch (maker->random.below(3)) {
    case 0:
        return line("RAISE " + number, {});
    case 1:
        return line("RAISE %0, %1", { small_word(maker), make_expression(maker, Type::INT, 2) });
    default:
        return line("RAISE " + number + ", %0", { make_expression(maker, Type::INT, 2) });
    }
}

static Statement make_operation(Maker *maker)
{
    const Variable *variable = find_shape(maker, Shape::OPERATION, Type::NOTHING);
    if (variable == nullptr) return make_assignment(maker);
    return line(variable->name + " = " + (maker->random.chance(50) ? "plus" : "minus"), {});
}

static Statement make_statement(Maker *maker)
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
        return make_raise(maker);
    if (which == 8 && maker->is_handling) return make_end_of_handler(maker);
    if (which == 9 && maker->random.chance(25)) return make_view(maker);
    if (which < 10) return make_report(maker);
    if (which == 10 && maker->random.chance(15)) return make_recursion(maker);
    if (which < 13) return make_call_statement(maker);
    return make_assignment(maker);
}

std::vector<Statement> make_block(Maker *maker, int count)
{
    std::vector<Statement> block;
    for (int i = 0; i < count; ++i)
        block.push_back(make_statement(maker));
    if (maker->is_handling) return block;
    if (maker->nesting > 0 && maker->random.chance(6)) block.push_back(make_return(maker));
    if (maker->nesting == 0 && maker->random.chance(3)) block.push_back(make_endless(maker));
    return block;
}
} // namespace random_program
