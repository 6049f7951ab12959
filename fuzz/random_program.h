// Random programs of the language, well-typed by construction, as trees that can be cut down.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace random_program
{

enum class Type : uint8_t {
    INT,
    BOOL,
    CHAR,
    COLOUR,
    STRING,
    VOLTAGE,
    CURRENT,
    RESISTANCE,
    TIME,
    FREQUENCY,
    CLOCK_TIME,
    FLOAT,
    SHORT,    // holds no more than 15 bits
    WORD,     // four bytes of any kind
    QUANTITY, // a quantity of any kind, and a number
    CONVERTER,
    COMPONENT,
    VARLOC,
    WAVEFORM,
    CONNECTOR,
    POINT,
    PIN,
    VIEW,
    HELPSCREEN,
    NOTHING
};

// Text with operands in the places %0, %1... An operand that binds looser than its limit gets brackets.
struct Expression {
    Type type = Type::INT;
    int level = 0;
    std::string text;
    std::vector<Expression> operands;
    std::vector<int> limits;
    bool is_place = false; // stands where only a variable can
};

struct Statement;

// A line with expressions, and the block below it.
struct Leg {
    std::string head;
    std::vector<Expression> expressions;
    std::vector<Statement> body;
    bool has_body = false;
};

// A simple statement has one leg without a body; IF, SWITCH and WHEN have several.
struct Statement {
    std::vector<Leg> legs;
    bool is_fixed = false; // the function is none without it
};

// How a function is made known before its body.
enum class Known { NOT_BEFORE, FORWARD, PUBLIC, ENTRY };

struct Function {
    std::string name;
    std::string head;
    std::map<std::string, std::string> locals; // declarations by name
    std::vector<Function> inner;               // functions inside of it
    std::vector<Statement> body;
    Known known = Known::NOT_BEFORE;
    bool is_library = false; // may stand in the other module
};

struct Static {
    std::string declaration;
    bool is_library = false;
};

struct Program {
    std::vector<Function> functions;             // what is called stands before its caller
    std::map<std::string, Static> statics;       // by name
    std::string entry;                           // takes two words
    std::vector<std::vector<int32_t>> arguments; // of its runs
    std::vector<std::vector<int32_t>> answers;   // of syscalls in each run
    bool is_split = false;                       // in two modules
};

// Small and the same everywhere.
struct Random {
    uint64_t state;

    uint64_t next();
    uint32_t below(uint32_t limit);
    bool chance(uint32_t percent);
};

struct Features {
    bool has_exceptions = false;
    bool has_run_time_lengths = false; // upb of an array that came as an argument
    bool has_library = false;          // a second module
    bool has_inner = false;            // functions inside of functions, which are read in one go
    bool has_outer_variables = false;  // and these see the variables of the outer ones
    bool has_conversions = false;      // cvt, cvts and attr
};

// The program of a number; its names carry it.
Program make(uint64_t seed, uint32_t number, const Features &features);

// The module "fuzz", and "fuzzlib", which it uses; the latter is empty if the programs need none.
struct Sources {
    std::string main;
    std::string library;
};

// The attributes of the converters, for a run time that has to be told: "FIELD NAME VALUE...".
extern const std::vector<std::string> converter_attributes;

// Programs as modules, without functions and variables that nothing refers to.
Sources sources_of(const std::vector<const Program *> &programs);

// The program after one of the cuts that make it smaller, statements before expressions; none behind
// the last.
std::optional<Program> smaller(const Program &program, size_t cut);

std::string print(const Expression &expression, int limit);

} // namespace random_program
