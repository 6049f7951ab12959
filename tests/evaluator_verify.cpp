// What must hold of every function: known codes, jumps to instructions of its own, and at each
// place the same stack whichever way leads there.
#include "evaluator.h"

#include <algorithm>

namespace evaluator
{

namespace
{

// What the codes from first to last have behind them, take from the stack, leave on it, and do. Codes
// without a row do not exist or are never produced.
struct Row {
    uint8_t first = 0;
    uint8_t last = 0;
    int8_t operand = -1;
    int8_t takes = 0;
    int8_t leaves = 0;
    Action action = Action::NOTHING;
};

constexpr Row rows[] = {
    { 0, SLIT - 1, 0, 0, 1, Action::COMPUTE },
    { SLIT, SLIT, 1, 0, 1, Action::COMPUTE },
    { MLIT, MLIT, 2, 0, 1, Action::COMPUTE },
    { LIT, LIT, 4, 0, 1, Action::COMPUTE },
    { LLB, LLA, 0, 1, 1, Action::COMPUTE },
    { LSA, LSA, 4, 0, 1, Action::COMPUTE },
    { LCA, LCA, 4, 0, 1, Action::COMPUTE },
    { LB, LW, 0, 1, 1, Action::COMPUTE },
    { SLB, SW, 0, 2, 1, Action::STORE },
    { ARGB, ARGB, 0, 1, 1, Action::COMPUTE },
    { ADD, REM, 0, 2, 1, Action::COMPUTE },
    { NEG, INV, 0, 1, 1, Action::COMPUTE },
    { AND, XOR, 0, 2, 1, Action::COMPUTE },
    { NOT, NOT, 0, 1, 1, Action::COMPUTE },
    { SL, LE, 0, 2, 1, Action::COMPUTE },
    { JUMP, JUMP, 2, 0, 0, Action::JUMP },
    { JZ, JNN, 2, 1, 0, Action::JUMP },
    { ARGS, ARGS, 0, 0, 0, Action::NOTHING },
    { CALL, CALL, 4, 0, 0, Action::CALL },
    { RET, RET, 0, 1, 0, Action::RETURN },
    { ALLOC, ALLOC, 2, 0, 0, Action::NOTHING },
    { DUP, DUP, 0, 1, 2, Action::SHUFFLE },
    { DUP2, DUP2, 0, 2, 4, Action::SHUFFLE },
    { POP, POP, 0, 1, 0, Action::SHUFFLE },
    { EXCH, EXCH, 0, 2, 2, Action::SHUFFLE },
    { STOP, STOP, 0, 0, 0, Action::STOP },
    { SYSCALL, SYSCALL, 2, 0, 0, Action::CALL },
    { LINE, LINE, 2, 0, 0, Action::NOTHING },
    { SWITCH, NODE, 1, 1, 0, Action::TABLE },
    { SMUL, SDIV, 0, 3, 1, Action::COMPUTE },
    { LP, LP, 0, 1, 1, Action::COMPUTE },
    { CHECK, CHECK, 0, 2, 1, Action::COMPUTE },
    { ADW, ADW, 0, 2, 1, Action::COMPUTE },
    { EXCEPTION, EXCEPTION, 2, 1, 0, Action::EXCEPTION },
    { RAISE, RAISE, 0, 2, 0, Action::RAISE },
    { END_EXCEPTION, END_EXCEPTION, 1, 0, 0, Action::END_HANDLER },
    { CVT, ATTR, 1, 2, 1, Action::OUTSIDE }, // ATTR with an index takes one more
    { CALLI, CALLI, 0, 1, 0, Action::CALL },
    { COPYB, COPYB, 0, 3, 0, Action::COPY },
    { STRCMP, STRCMP, 1, 2, 1, Action::COMPUTE },
    { SBP, SLWP, 0, 2, 0, Action::STORE },
    { SP, SP, 0, 2, 1, Action::STORE },
    { ROT3, ROT3, 0, 3, 3, Action::SHUFFLE },
    { SHORT_SYSCALL, SHORT_SYSCALL, 1, 0, 0, Action::CALL },
    { START_VARIANT, START_VARIANT, 0, 0, 0, Action::NOTHING },
    { VARIANTARG, VARIANTARG, 2, 1, 1, Action::NOTHING },
    { CREATE, RELEASE, 0, 1, 1, Action::OUTSIDE },
    { GET, PUT, 2, 1, 1, Action::OUTSIDE },
    { FIND_SCOPE, FIND_SCOPE, 4, 0, 0, Action::SCOPE },
    { LOCAL_SCOPE, LOCAL_SCOPE, 0, 0, 0, Action::NOTHING },
    { FLOAT, FIX, 0, 1, 1, Action::COMPUTE },
    { FIELD_ATTR, FIELD_ATTR, 2, 1, 1, Action::OUTSIDE },
    { FIND_DATA, FIND_COM, 0, 2, 1, Action::OUTSIDE },
    { FIND_IMMEDIATE, FIND_IMMEDIATE, 0, 2, 1, Action::OUTSIDE },
    { ATTR_INDEX, ATTR_INDEX, 2, 2, 1, Action::OUTSIDE },
    { UPB, UPB, 0, 2, 1, Action::OUTSIDE },
};

const Row &describe(uint8_t code)
{
    static const std::vector<Row> table = [] {
        std::vector<Row> codes(256);
        for (const Row &row : rows)
            std::fill(&codes[row.first], &codes[row.last] + 1, row);
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
    if ((code == SWITCH || code == NODE) && at + 1 < image.code.size())
        size += 2U * (image.code[at + 1] + (code == SWITCH ? 1U : 0U));
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
        if (image.code[place] == END_EXCEPTION && image.code[place + 1] == 1) end = place + 2;
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
    if (code == LCA) return check_target(verifier, at, false);
    if (code == CALL || code == FIND_SCOPE) return check_target(verifier, at, true);
    if (code == ALLOC && at != verifier->function->entry)
        return fail(verifier, at, "ALLOC behind the start");
    if (code == ALLOC && image.code[at + 2] % 2 != 0) return fail(verifier, at, "odd frame size");
    if (code == STRCMP && (image.code[at + 1] < EQ || image.code[at + 1] > LE))
        return fail(verifier, at, "operand of STRCMP");
    if (code == CVT && (image.code[at + 1] & ~0x11) != 0)
        return fail(verifier, at, "operand of CVT");
    if (code == VARIANTARG && state.calls.empty())
        return fail(verifier, at, "argument without a call");
    if (code == RET && !state.calls.empty()) return fail(verifier, at, "returns with an open call");
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
    const Action what = is_user_code ? Action::CALL : action(code);
    const bool stops = what == Action::RETURN || what == Action::STOP || what == Action::RAISE;
    if (stops) return true;
    if (what == Action::CALL && !finish_call(verifier, at, &state)) return false;
    if (what == Action::TABLE) return pass_table(verifier, at, size, state);
    if (what == Action::EXCEPTION) return pass_exception(verifier, at, std::move(state));
    if (what == Action::END_HANDLER) return end_handler(verifier, at, std::move(state));
    if (what == Action::JUMP && !reach(verifier, at, jump(), state)) return false;
    if (what == Action::JUMP && code == JUMP) return true;
    if (!is_user_code && (code == ARGS || code == START_VARIANT))
        state.calls.push_back(state.depth);
    if (!is_user_code && (code == FIND_SCOPE || code == LOCAL_SCOPE))
        state.is_away = code == FIND_SCOPE;
    return reach(verifier, at, next, state);
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
    const Row &described = describe(code);
    const uint32_t more = code == ATTR && (image.code[at + 1] & 0x80) != 0 ? 1 : 0;
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
    if (image.code[function.entry] == ALLOC && function.entry + 2 < image.code.size())
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

Action action(uint8_t code)
{
    return describe(code).action;
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
