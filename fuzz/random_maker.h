// What the parts of the maker of random programs share.
#pragma once

#include "random_program.h"

#include <iterator>

namespace random_program
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

constexpr const char *type_names[] = {
    "INT",        "BOOL",      "CHAR",       "COLOUR",     "STRING",   "VOLTAGE",   "CURRENT",
    "RESISTANCE", "TIME",      "FREQUENCY",  "CLOCK_TIME", "FLOAT",    "SHORT",     "WORD",
    "QUANTITY",   "CONVERTER", "COMPONENT",  "VARLOC",     "WAVEFORM", "CONNECTOR", "POINT",
    "PIN",        "VIEW",      "HELPSCREEN", "VOID"
};

inline const char *name_of(Type type)
{
    return type_names[static_cast<int>(type)];
}

inline bool is_quantity(Type type)
{
    return type >= Type::VOLTAGE && type <= Type::CLOCK_TIME;
}

// Items of data sections: they can be named, kept, passed on and told apart.
inline bool is_item(Type type)
{
    return type >= Type::CONVERTER && type <= Type::HELPSCREEN;
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
    std::vector<Variable> library_statics;
    Callee self; // the function under way
    std::vector<Variable> locals;
    Function *function = nullptr;
    bool is_library = false;
    Type result = Type::INT;
    int nesting = 0;
    int loops = 0;
    int calls_left = 0;
    bool is_handling = false; // inside of a handler, which no RETURN leaves
    int names = 0;
};

// Expressions.

constexpr const char *colours[] = { "RED", "GREEN", "BLUE" };

Expression leaf(Type type, const std::string &text, int level = NAME);
Expression with(Type type, int level, const std::string &text, std::vector<Expression> operands,
                std::vector<int> limits);
Expression binary(Type type, int level, const std::string &sign, Expression left, Expression right);
Expression cast_to(Type type, Expression operand);

Expression make_expression(Maker *maker, Type type, int depth);

// A value for a place of the type, or of a type that the place takes as well.
Expression make_source(Maker *maker, Type type, int depth);

// A place of the type that may be written; its text is empty if there is none.
Expression make_place(Maker *maker, Type type, int depth);

// A variable as a value; those of loops too.
Expression variable_value(Maker *maker, Type type, int depth);

// A call; its text is empty if an argument cannot be had.
Expression make_call(Maker *maker, const Callee &callee, int depth);

// What a function or a leaf gives: NULL by itself is no STRING there.
Expression make_result(Maker *maker, Type type, int depth);

// A variable in scope, or null.
const Variable *find_shape(Maker *maker, Shape shape, Type type);

// Statements.

Statement line(const std::string &head, std::vector<Expression> expressions, bool is_fixed = false);
std::vector<Statement> make_block(Maker *maker, int count);
Statement make_return(Maker *maker);

} // namespace random_program
