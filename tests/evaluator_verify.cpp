// What must hold of every function: known codes, jumps to instructions of its own, and at each
// place the same stack whichever way leads there.
#include "evaluator.h"

namespace evaluator
{

namespace
{

// What a code takes from the stack and leaves on it. Codes without a row do not exist or are never
// produced.
struct Code {
    int8_t operand = -1;
    int8_t takes = 0;
    int8_t leaves = 0;
};

struct Row {
    uint8_t first;
    uint8_t last;
    Code code;
};

constexpr Row rows[] = {
    { 0, 31, { 0, 0, 1 } },    // literals
    { 32, 32, { 1, 0, 1 } },   // SLIT
    { 33, 33, { 2, 0, 1 } },   // MLIT
    { 34, 34, { 4, 0, 1 } },   // LIT
    { 35, 37, { 0, 1, 1 } },   // LLB LLW LLA
    { 38, 38, { 4, 0, 1 } },   // LSA
    { 40, 40, { 4, 0, 1 } },   // LCA
    { 41, 42, { 0, 1, 1 } },   // LB LW
    { 43, 46, { 0, 2, 1 } },   // SLB SLW SB SW
    { 47, 47, { 0, 1, 1 } },   // ARGB
    { 48, 52, { 0, 2, 1 } },   // ADD SUB MUL DIV REM
    { 53, 54, { 0, 1, 1 } },   // NEG INV
    { 55, 57, { 0, 2, 1 } },   // AND OR XOR
    { 58, 58, { 0, 1, 1 } },   // NOT
    { 59, 66, { 0, 2, 1 } },   // SL SR EQ NEQ GTR GE LESS LE
    { 67, 67, { 2, 0, 0 } },   // JUMP
    { 68, 71, { 2, 1, 0 } },   // JZ JNZ JN JNN
    { 72, 72, { 0, 0, 0 } },   // ARGS
    { 73, 73, { 4, 0, 0 } },   // CALL
    { 74, 74, { 0, 1, 0 } },   // RET
    { 75, 75, { 2, 0, 0 } },   // ALLOC
    { 76, 76, { 0, 1, 2 } },   // DUP
    { 77, 77, { 0, 2, 4 } },   // DUP2
    { 78, 78, { 0, 1, 0 } },   // POP
    { 79, 79, { 0, 2, 2 } },   // EXCH
    { 80, 80, { 0, 0, 0 } },   // STOP
    { 81, 81, { 2, 0, 0 } },   // SYSCALL
    { 82, 82, { 2, 0, 0 } },   // LINE
    { 83, 84, { 1, 1, 0 } },   // SWITCH NODE
    { 86, 87, { 0, 3, 1 } },   // SMUL SDIV
    { 88, 88, { 0, 1, 1 } },   // LP
    { 89, 89, { 0, 2, 1 } },   // CHECK
    { 96, 96, { 0, 2, 1 } },   // ADW
    { 97, 97, { 2, 1, 0 } },   // EXCEPTION
    { 98, 98, { 0, 2, 0 } },   // RAISE
    { 99, 99, { 1, 0, 0 } },   // END_EXCEPTION
    { 101, 101, { 1, 2, 1 } }, // CVT
    { 102, 102, { 1, 2, 1 } }, // ATTR of an object, one more with an index
    { 103, 103, { 0, 1, 0 } }, // CALLI
    { 104, 104, { 0, 3, 0 } }, // COPYB
    { 105, 105, { 1, 2, 1 } }, // STRCMP
    { 106, 109, { 0, 2, 0 } }, // SBP SWP SLBP SLWP
    { 110, 110, { 0, 2, 1 } }, // SP
    { 111, 111, { 0, 3, 3 } }, // ROT3
    { 112, 112, { 1, 0, 0 } }, // SHORT_SYSCALL
    { 113, 113, { 0, 0, 0 } }, // START_VARIANT
    { 114, 114, { 2, 1, 1 } }, // VARIANTARG
    { 116, 117, { 0, 1, 1 } }, // CREATE RELEASE
    { 118, 119, { 2, 1, 1 } }, // GET PUT
    { 120, 120, { 4, 0, 0 } }, // FIND_SCOPE
    { 121, 121, { 0, 0, 0 } }, // LOCAL_SCOPE
    { 132, 133, { 0, 1, 1 } }, // FLOAT FIX
    { 135, 135, { 2, 1, 1 } }, // ATTR of a field
    { 136, 137, { 0, 2, 1 } }, // FIND_DATA FIND_COM
    { 142, 142, { 0, 2, 1 } }, // FIND_IMMEDIATE
    { 143, 143, { 2, 2, 1 } }, // ATTR_INDEX
    { 145, 145, { 0, 2, 1 } }, // UPB
};

Code find_row(uint8_t code)
{
    for (const Row &row : rows) {
        if (code >= row.first && code <= row.last) return row.code;
    }
    return {};
}

Code describe(uint8_t code)
{
    static const std::vector<Code> table = [] {
        std::vector<Code> codes(256);
        for (int i = 0; i < 256; ++i)
            codes[static_cast<size_t>(i)] = find_row(static_cast<uint8_t>(i));
        return codes;
    }();
    return table[code];
}

// A stretch of protected code that is open, by its EXCEPTION; its handler may be under way.
struct Stretch {
    uint32_t at;
    uint32_t depth; // at its EXCEPTION, behind which only a FOR adds to it
    bool is_running;
    bool operator==(const Stretch &) const = default;
};

struct State {
    uint32_t depth = 0;
    std::vector<uint32_t> calls; // depth at which each open call began
    std::vector<Stretch> stretches;
    bool is_away = false; // another function's frame is the current one
    bool operator==(const State &) const = default;
};

struct Verifier {
    Program *program;
    Image *image;
    Function *function;
    std::map<uint32_t, State> states;
    std::vector<uint32_t> to_do;
    std::vector<uint32_t> *entries; // addresses of functions met, still to be looked at
};

bool fail(Verifier *verifier, uint32_t at, const std::string &reason)
{
    verifier->function->is_sound = false;
    verifier->program->findings.push_back({ verifier->function->name, at, reason });
    return false;
}

// Marks an instruction as the function's; it must not cut into another.
bool claim(Verifier *verifier, uint32_t at, uint32_t size)
{
    Image &image = *verifier->image;
    const uint32_t owner = verifier->function->entry + 1;
    for (uint32_t i = at; i < at + size; ++i) {
        if (image.owner[i] != 0) return fail(verifier, at, "lies across other instructions");
        image.owner[i] = owner;
    }
    return true;
}

// The way goes on to a place with a state.
bool reach(Verifier *verifier, uint32_t from, int64_t target, const State &state)
{
    const Image &image = *verifier->image;
    if (target < 0 || target >= static_cast<int64_t>(image.code.size()))
        return fail(verifier, from, "leads out of the code");
    const auto at = static_cast<uint32_t>(target);
    if (at != verifier->function->entry && image.functions.count(at) != 0)
        return fail(verifier, from, "leads into " + image.functions.at(at));
    const auto [place, is_new] = verifier->states.emplace(at, state);
    if (is_new) {
        if (image.owner[at] != 0) return fail(verifier, from, "leads into claimed code");
        verifier->to_do.push_back(at);
        return true;
    }
    if (place->second == state) return true;
    return fail(verifier, at,
                "stack differs by the way: " + std::to_string(place->second.depth) + " words or " +
                    std::to_string(state.depth) + " from " + std::to_string(from));
}

uint32_t instruction_size(const Image &image, uint32_t at)
{
    const uint8_t code = image.code[at];
    if (image.user_codes.count(at) != 0) return 1;
    const int operand = describe(code).operand;
    if (operand < 0) return 0;
    uint32_t size = 1 + static_cast<uint32_t>(operand);
    if ((code == 83 || code == 84) && at + 1 < image.code.size())
        size += 2U * (image.code[at + 1] + (code == 83 ? 1U : 0U));
    return size;
}

bool take(Verifier *verifier, uint32_t at, State *state, uint32_t count)
{
    const uint32_t floor = state->calls.empty() ? 0 : state->calls.back();
    if (state->depth < floor + count)
        return fail(verifier, at, floor == 0 ? "stack underflow" : "takes words of another call");
    state->depth -= count;
    return true;
}

bool finish_call(Verifier *verifier, uint32_t at, State *state)
{
    if (state->calls.empty()) return fail(verifier, at, "call that was not opened");
    state->depth = state->calls.back() + 1;
    state->calls.pop_back();
    return true;
}

// The operand's target for LCA, CALL and FIND_SCOPE; those of functions are to be looked at too.
bool check_target(Verifier *verifier, uint32_t at, bool is_function)
{
    const Image &image = *verifier->image;
    if (image.unresolved.count(at + 1) != 0) return true;
    const uint32_t address = image.base + at + 1 + read_number(&image.code[at + 1], 4);
    if (!is_function && address == image.base + image.code.size()) return true;
    if (!find_code(*verifier->program, address))
        return fail(verifier, at, "target outside of the code");
    if (is_function) verifier->entries->push_back(address);
    return true;
}

// Where a handler ends: behind the last END_EXCEPTION 1 before the protected code.
std::optional<uint32_t> handler_end(const Image &image, uint32_t from, int64_t target)
{
    std::optional<uint32_t> end;
    for (int64_t at = from; at < target && at + 1 < static_cast<int64_t>(image.code.size());) {
        const auto place = static_cast<uint32_t>(at);
        const uint32_t size = instruction_size(image, place);
        if (size == 0) return std::nullopt;
        if (image.code[place] == 99 && image.code[place + 1] == 1) end = place + 2;
        at += size;
    }
    return end;
}

bool open_stretch(Verifier *verifier, uint32_t at, int64_t target, State state)
{
    const std::optional<uint32_t> end = handler_end(*verifier->image, at + 3, target);
    if (target <= at || !end) return fail(verifier, at, "handler without an end");
    verifier->function->handler_ends[at] = *end;
    state.stretches.push_back({ at, state.depth, false });
    if (!reach(verifier, at, target, state)) return false;
    state.stretches.back().is_running = true;
    return reach(verifier, at, at + 3, state);
}

bool pass_exception(Verifier *verifier, uint32_t at, State state)
{
    const int64_t target = int64_t{ at } + 1 + signed_number(&verifier->image->code[at + 1], 2);
    if (target != int64_t{ at } + 3) return open_stretch(verifier, at, target, std::move(state));
    if (state.stretches.empty()) return fail(verifier, at, "closes a stretch that is not open");
    state.stretches.pop_back();
    return reach(verifier, at, target, state);
}

bool end_handler(Verifier *verifier, uint32_t at, State state)
{
    const uint8_t operand = verifier->image->code[at + 1];
    if (operand > 1) return fail(verifier, at, "operand of END_EXCEPTION");
    if (state.stretches.empty() || !state.stretches.back().is_running)
        return fail(verifier, at, "END_EXCEPTION outside of a handler");
    state.stretches.back().is_running = false;
    const uint32_t end = verifier->function->handler_ends[state.stretches.back().at];
    if (operand == 0) state.depth = state.stretches.back().depth;
    return reach(verifier, at, operand == 1 ? at + 2 : end, state);
}

bool pass_table(Verifier *verifier, uint32_t at, uint32_t size, const State &state)
{
    for (uint32_t entry = at + 2; entry < at + size; entry += 2) {
        const int32_t distance = signed_number(&verifier->image->code[entry], 2);
        if (!reach(verifier, at, int64_t{ entry } + distance, state)) return false;
    }
    return true;
}

// The rules of single codes, before their words are taken.
bool check_operand(Verifier *verifier, uint32_t at, const State &state)
{
    const Image &image = *verifier->image;
    const uint8_t code = image.code[at];
    if (code == 40) return check_target(verifier, at, false);
    if (code == 73 || code == 120) return check_target(verifier, at, true);
    if (code == 75 && at != verifier->function->entry)
        return fail(verifier, at, "ALLOC behind the start");
    if (code == 75 && image.code[at + 2] % 2 != 0) return fail(verifier, at, "odd frame size");
    if (code == 105 && (image.code[at + 1] < 61 || image.code[at + 1] > 66))
        return fail(verifier, at, "operand of STRCMP");
    if (code == 101 && (image.code[at + 1] & ~0x11) != 0)
        return fail(verifier, at, "operand of CVT");
    if (code == 114 && state.calls.empty()) return fail(verifier, at, "argument without a call");
    if (code == 74 && !state.calls.empty()) return fail(verifier, at, "returns with an open call");
    return true;
}

// Where the way goes from an instruction of which the words have been taken and left.
bool go_on(Verifier *verifier, uint32_t at, uint32_t size, State state)
{
    const Image &image = *verifier->image;
    const bool is_user_code = image.user_codes.count(at) != 0;
    const uint8_t code = image.code[at];
    const int64_t next = int64_t{ at } + size;
    const auto jump = [&] { return int64_t{ at } + 1 + signed_number(&image.code[at + 1], 2); };
    if (is_user_code || code == 73 || code == 81 || code == 103 || code == 112)
        return finish_call(verifier, at, &state) && reach(verifier, at, next, state);
    switch (code) {
    case 67:
        return reach(verifier, at, jump(), state);
    case 68:
    case 69:
    case 70:
    case 71:
        return reach(verifier, at, jump(), state) && reach(verifier, at, next, state);
    case 72:
    case 113:
        state.calls.push_back(state.depth);
        return reach(verifier, at, next, state);
    case 74:
    case 80:
    case 98:
        return true;
    case 83:
    case 84:
        return pass_table(verifier, at, size, state);
    case 97:
        return pass_exception(verifier, at, std::move(state));
    case 99:
        return end_handler(verifier, at, std::move(state));
    case 120:
    case 121:
        state.is_away = code == 120;
        return reach(verifier, at, next, state);
    default:
        return reach(verifier, at, next, state);
    }
}

bool pass_instruction(Verifier *verifier, uint32_t at)
{
    const Image &image = *verifier->image;
    const uint8_t code = image.code[at];
    const uint32_t size = instruction_size(image, at);
    if (size == 0) return fail(verifier, at, "no such code: " + std::to_string(code));
    if (size > image.code.size() - at) return fail(verifier, at, "operand outside of the code");
    if (!claim(verifier, at, size)) return false;
    State state = verifier->states[at];
    if (image.user_codes.count(at) != 0) return go_on(verifier, at, size, state);
    if (!check_operand(verifier, at, state)) return false;
    const Code described = describe(code);
    const uint32_t more = code == 102 && (image.code[at + 1] & 0x80) != 0 ? 1 : 0;
    if (!take(verifier, at, &state, static_cast<uint32_t>(described.takes) + more)) return false;
    state.depth += static_cast<uint32_t>(described.leaves);
    return go_on(verifier, at, size, std::move(state));
}

void verify_one(Program *program, uint32_t address, std::vector<uint32_t> *entries)
{
    const auto place = find_code(*program, address);
    if (!place || program->functions.count(address) != 0) return;
    Image &image = program->images[place->first];
    Function &function = program->functions[address];
    function.image = place->first;
    function.entry = place->second;
    function.is_sound = true;
    const auto named = image.functions.find(function.entry);
    function.name = named != image.functions.end()
                        ? named->second
                        : image.name + "+" + std::to_string(function.entry);
    if (image.code[function.entry] == 75 && function.entry + 2 < image.code.size())
        function.frame_size = read_number(&image.code[function.entry + 1], 2);
    Verifier verifier{ program, &image, &function, {}, {}, entries };
    reach(&verifier, function.entry, function.entry, {});
    while (!verifier.to_do.empty()) {
        const uint32_t at = verifier.to_do.back();
        verifier.to_do.pop_back();
        if (!pass_instruction(&verifier, at)) break;
    }
}

void verify_all(Program *program, std::vector<uint32_t> entries)
{
    while (!entries.empty()) {
        const uint32_t address = entries.back();
        entries.pop_back();
        verify_one(program, address, &entries);
    }
}

} // namespace

int operand_size(uint8_t code)
{
    return describe(code).operand;
}

void verify(Program *program)
{
    std::vector<uint32_t> entries;
    for (const Image &image : program->images) {
        for (const auto &[offset, name] : image.functions) {
            if (offset < image.code.size()) {
                entries.push_back(image.base + offset);
            } else {
                program->findings.push_back({ name, offset, "symbol outside of the code" });
            }
        }
    }
    verify_all(program, entries);
}

const Function *verify_function(Program *program, uint32_t address)
{
    verify_all(program, { address });
    const auto at = program->functions.find(address);
    return at == program->functions.end() ? nullptr : &at->second;
}

} // namespace evaluator
