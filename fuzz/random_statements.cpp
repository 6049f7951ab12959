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

constexpr Type assigned[] = { Type::INT,        Type::INT,       Type::INT,        Type::CHAR,
                              Type::BOOL,       Type::COLOUR,    Type::STRING,     Type::VOLTAGE,
                              Type::CURRENT,    Type::TIME,      Type::CLOCK_TIME, Type::FLOAT,
                              Type::RESISTANCE, Type::FREQUENCY, Type::CHAR };

// What may be stored in a place of a type, beside its own: cut, or turned into another unit.
static Type source_type(Maker *maker, Type type)
{
    if (!maker->random.chance(70)) return type;
    if (type == Type::CHAR) return Type::INT;
    if (type == Type::CLOCK_TIME) return Type::TIME;
    return type == Type::TIME && maker->random.chance(30) ? Type::CLOCK_TIME : type;
}

static Statement make_assignment(Maker *maker)
{
    const Type type = assigned[maker->random.below(std::size(assigned))];
    Expression target = make_place(maker, type, 2);
    if (target.text.empty()) return line("tell(%0)", { make_expression(maker, Type::INT, 3) });
    return line("%0 = %1",
                { std::move(target), make_expression(maker, source_type(maker, type), 3) });
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
    maker->function->locals[name] = std::string(name_of(type)) + " " + name;
    maker->locals.push_back({ name, type, Shape::SCALAR, true });
    return name;
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

Statement make_return(Maker *maker)
{
    if (maker->result == Type::NOTHING) return line("RETURN", {});
    return line("RETURN %0", { make_result(maker, maker->result, 3) });
}

static Statement make_guard(Maker *maker)
{
    Statement statement;
    const std::string number = std::to_string(maker->random.below(3));
    std::vector<Statement> handler{ make_report(maker) };
    std::vector<Statement> protected_block = make_inner_block(maker);
    statement.legs.push_back({ "WHEN " + number, {}, std::move(handler), true });
    statement.legs.push_back({ "ELSE", {}, std::move(protected_block), true });
    return statement;
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
} // namespace random_program
