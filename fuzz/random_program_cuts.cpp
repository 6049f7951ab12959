// Makes random programs smaller.
#include "random_program.h"

#include <iterator>

namespace random_program
{

namespace
{

// Counts down to the cut that is made; false once it has been.
struct Cutter {
    size_t left;
    bool is_done = false;

    bool is_this()
    {
        if (is_done) return false;
        if (left > 0) {
            --left;
            return false;
        }
        is_done = true;
        return true;
    }
};

constexpr const char *plain_values[] = { "0",
                                         "FALSE",
                                         "'a'",
                                         "RED",
                                         "\"\"",
                                         "1V",
                                         "1mA",
                                         "1R",
                                         "1ms",
                                         "1Hz",
                                         "cast(1, CLOCK_TIME)",
                                         "to_float(0)",
                                         "cast(1, SHORT)",
                                         "cast(1, WORD)",
                                         "cast(1, QUANTITY)",
                                         "scale",
                                         "pump",
                                         "spot(0)",
                                         "pulses",
                                         "plug",
                                         "contact(0)",
                                         "leg(0)",
                                         "face(0)",
                                         "advice",
                                         "" };
static_assert(std::size(plain_values) == static_cast<size_t>(Type::NOTHING) + 1);

const char *plain_value(Type type)
{
    return plain_values[static_cast<int>(type)];
}

void cut_expression(Cutter *cutter, Expression *expression)
{
    const std::string plain = plain_value(expression->type);
    const bool is_value = !expression->is_place && !plain.empty();
    if (is_value && expression->text != plain && cutter->is_this()) {
        *expression = { expression->type, 0, plain, {}, {}, false };
        return;
    }
    for (size_t i = 0; i < expression->operands.size(); ++i) {
        if (!is_value || expression->operands[i].type != expression->type) continue;
        if (!cutter->is_this()) continue;
        Expression operand = std::move(expression->operands[i]);
        operand.is_place = false;
        *expression = std::move(operand);
        return;
    }
    for (Expression &operand : expression->operands)
        cut_expression(cutter, &operand);
}

void cut_expressions(Cutter *cutter, std::vector<Statement> *block)
{
    for (Statement &statement : *block) {
        for (Leg &leg : statement.legs) {
            for (Expression &expression : leg.expressions)
                cut_expression(cutter, &expression);
            cut_expressions(cutter, &leg.body);
        }
    }
}

void cut_statements(Cutter *cutter, std::vector<Statement> *block)
{
    for (size_t at = 0; at < block->size() && !cutter->is_done; ++at) {
        Statement &statement = (*block)[at];
        if (!statement.is_fixed && cutter->is_this()) {
            block->erase(block->begin() + static_cast<ptrdiff_t>(at));
            return;
        }
        for (size_t i = 0; i < statement.legs.size(); ++i) {
            if (!statement.legs[i].has_body || !cutter->is_this()) continue;
            std::vector<Statement> body = std::move(statement.legs[i].body);
            block->erase(block->begin() + static_cast<ptrdiff_t>(at));
            block->insert(block->begin() + static_cast<ptrdiff_t>(at), body.begin(), body.end());
            return;
        }
        for (size_t i = 1; i < statement.legs.size(); ++i) {
            if (!statement.legs[i].has_body || !cutter->is_this()) continue;
            statement.legs.erase(statement.legs.begin() + static_cast<ptrdiff_t>(i));
            return;
        }
        for (Leg &leg : statement.legs)
            cut_statements(cutter, &leg.body);
    }
}

void cut_function(Cutter *cutter, Function *function, bool is_whole)
{
    if (is_whole) {
        cut_statements(cutter, &function->body);
    } else {
        cut_expressions(cutter, &function->body);
    }
    for (Function &inner : function->inner)
        cut_function(cutter, &inner, is_whole);
}

} // namespace

std::optional<Program> smaller(const Program &program, size_t cut)
{
    Program result = program;
    Cutter cutter{ cut };
    if (result.is_split && cutter.is_this()) result.is_split = false;
    for (Function &function : result.functions)
        if (function.known != Known::NOT_BEFORE && cutter.is_this())
            function.known = Known::NOT_BEFORE;
    for (const bool is_whole : { true, false })
        for (size_t i = result.functions.size(); i-- > 0;)
            cut_function(&cutter, &result.functions[i], is_whole);
    if (!cutter.is_done) return std::nullopt;
    return result;
}

} // namespace random_program
