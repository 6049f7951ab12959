// Links, verifies and runs module files. It reads the operation codes for itself and shares nothing
// with the generators, so that what it says of their code is a second opinion.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace evaluator
{

using Words = std::vector<uint32_t>;

// The operation codes; those below 32 stand for themselves.
// clang-format off
enum Code : uint8_t {
    SLIT = 32, MLIT, LIT, LLB, LLW, LLA, LSA, LSI, LCA, LB, LW, SLB, SLW, SB, SW, ARGB, ADD, SUB,
    MUL, DIV, REM, NEG, INV, AND, OR, XOR, NOT, SL, SR, EQ, NEQ, GTR, GE, LESS, LE, JUMP, JZ, JNZ,
    JN, JNN, ARGS, CALL, RET, ALLOC, DUP, DUP2, POP, EXCH, STOP, SYSCALL, LINE, SWITCH, NODE, NOP,
    SMUL, SDIV, LP, CHECK, ADW = 96, EXCEPTION, RAISE, END_EXCEPTION, SEQ, CVT, ATTR, CALLI, COPYB,
    STRCMP, SBP, SWP, SLBP, SLWP, SP, ROT3, SHORT_SYSCALL, START_VARIANT, VARIANTARG, DISPATCH,
    CREATE, RELEASE, GET, PUT, FIND_SCOPE, LOCAL_SCOPE, FADD, FSUB, FMUL, FDIV, FREM, FNEG, FGTR,
    FGE, FLESS, FLE, FLOAT, FIX, BREAKPOINT, FIELD_ATTR, FIND_DATA, FIND_COM, LLS, SLS, LS, SS,
    FIND_IMMEDIATE, ATTR_INDEX, SET_ATTR, UPB,
};
// clang-format on

// What running a code comes down to.
enum class Action {
    NOTHING,
    COMPUTE,
    STORE,
    SHUFFLE,
    JUMP,
    TABLE,
    CALL,
    RETURN,
    STOP,
    EXCEPTION,
    RAISE,
    END_HANDLER,
    COPY,
    SCOPE,
    OUTSIDE
};

// A function as far as running it needs: where it is, how large its frame is, and for each opening
// EXCEPTION the place where its handler ends.
struct Function {
    std::string name;
    size_t image = 0;
    uint32_t entry = 0; // offset in the image
    uint32_t frame_size = 0;
    std::map<uint32_t, uint32_t> handler_ends;
    bool is_sound = false;
};

// One module in memory, at an address of its own.
struct Image {
    std::string name;
    uint32_t base = 0;
    std::vector<uint8_t> code;
    uint32_t static_base = 0;
    std::vector<uint8_t> statics;
    std::vector<std::pair<uint32_t, uint32_t>> non_volatile; // from, to
    std::map<uint32_t, std::string> functions;               // symbols, by offset
    std::map<uint32_t, std::string> syscalls;                // names, by number
    std::map<uint32_t, std::string> user_codes;              // names, by offset of the code
    std::set<uint32_t> unresolved;                           // fields that nothing fills
    std::vector<uint32_t> owner; // for each byte: 0, or 1 + entry of the function it is in
};

struct Finding {
    std::string function;
    uint32_t offset;
    std::string reason;
};

// Linked modules with their memory. A copy is a program of its own.
struct Program {
    std::vector<Image> images;
    std::map<uint32_t, Function> functions; // verified, by address
    std::vector<Finding> findings;
    std::vector<std::string> problems; // files that cannot be read, references to nothing
    std::vector<uint8_t> texts;        // the caller's strings
    std::vector<uint8_t> frames;       // of the functions under way
};

enum : uint32_t { TEXT_BASE = 0x70000000, FRAME_BASE = 0x80000000 };

// Reads the modules and resolves their references to each other.
Program link(const std::vector<std::string> &files);

// Verifies all functions that have symbols and all that these call.
void verify(Program *program);

// Verifies the function at an address unless that has been done; null if there can be none.
const Function *verify_function(Program *program, uint32_t address);

// Bytes of operand behind a code, those of SWITCH and NODE without their tables; -1: no such code.
int operand_size(uint8_t code);

Action action(uint8_t code);

uint32_t read_number(const uint8_t *bytes, int size);
int32_t signed_number(const uint8_t *bytes, int size);

// The image that has an address, and the offset in it.
std::optional<std::pair<size_t, uint32_t>> find_code(const Program &program, uint32_t address);

// The bytes at an address, or null if they are not all memory of one item, or not to be written.
uint8_t *memory(Program *program, uint32_t address, uint32_t size, bool for_writing);

// The text at an address outside the frames.
std::optional<std::string> text_at(Program *program, uint32_t address);

// Places a string where a program can read it; gives its address.
uint32_t place_text(Program *program, const std::string &text);

enum class Outcome { RETURNED, STOPPED, RAISED, FAILED };

struct Result {
    Outcome outcome = Outcome::FAILED;
    int32_t word = 0;     // of RETURNED; the exception of RAISED
    int32_t argument = 0; // of RAISED
    std::string function; // of FAILED: where
    uint32_t line = 0;
    std::string reason;
    std::vector<std::string> calls; // what left the program: name(argument,...)
};

// What stands outside of the program: answers to syscalls and to user codes by their names, and to the
// codes for objects, attributes and conversions by their mnemonics. A name without one answers 0.
using Hook = std::function<uint32_t(Program *program, const Words &arguments)>;
using Hooks = std::map<std::string, Hook>;

// Runs a function by its symbol, for at most so many instructions.
Result run(Program *program, const std::string &function, const Words &arguments,
           const Hooks &hooks = {}, uint64_t limit = 2'000'000);

} // namespace evaluator
