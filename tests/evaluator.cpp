// Runs linked modules, instruction by instruction.
#include "evaluator.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include <ostrum.h>

namespace evaluator
{

namespace
{

constexpr size_t most_frames = 5000;
constexpr size_t most_words = 1'000'000;

struct Frame {
    const Function *function;
    uint32_t base;      // offset of its memory
    size_t stack_words; // below it
    size_t open_calls;
    size_t scope;      // number of the frame that local codes reach
    uint32_t next = 0; // offset to go on at
    uint32_t line = 0;
};

struct Handler {
    uint32_t value;
    size_t frame;
    size_t stack_words;
    size_t open_calls;
    uint32_t entry;
    uint32_t end;
    bool is_ready;
};

struct Machine {
    Program *program;
    const Hooks *hooks;
    Words stack;
    std::vector<size_t> open_calls;
    std::vector<Frame> frames;
    std::vector<Handler> handlers;
    Result result;
    bool is_over = false;
};

void fail(Machine *machine, const std::string &reason)
{
    if (machine->is_over) return;
    machine->is_over = true;
    machine->result.outcome = Outcome::FAILED;
    machine->result.reason = reason;
    if (machine->frames.empty()) return;
    machine->result.function = machine->frames.back().function->name;
    machine->result.line = machine->frames.back().line;
}

void finish(Machine *machine, Outcome outcome, uint32_t word, uint32_t argument)
{
    machine->is_over = true;
    machine->result.outcome = outcome;
    machine->result.word = static_cast<int32_t>(word);
    machine->result.argument = static_cast<int32_t>(argument);
}

uint32_t pop(Machine *machine)
{
    if (machine->stack.size() <= machine->frames.back().stack_words) {
        fail(machine, "stack underflow");
        return 0;
    }
    const uint32_t word = machine->stack.back();
    machine->stack.pop_back();
    return word;
}

void push(Machine *machine, uint32_t word)
{
    if (machine->stack.size() >= most_words) return fail(machine, "stack overflow");
    machine->stack.push_back(word);
}

// Memory.

uint32_t load(Machine *machine, uint32_t address, int size)
{
    const uint8_t *at = memory(machine->program, address, static_cast<uint32_t>(size), false);
    if (at != nullptr) return read_number(at, size);
    fail(machine, address == 0 ? "null address" : "bad address");
    return 0;
}

void store(Machine *machine, uint32_t address, uint32_t value, int size)
{
    uint8_t *at = memory(machine->program, address, static_cast<uint32_t>(size), true);
    if (at == nullptr) return fail(machine, address == 0 ? "null address" : "bad address to write");
    for (int i = 0; i < size; ++i)
        at[i] = static_cast<uint8_t>(value >> (8 * (size - 1 - i)));
}

// The address of a place in the frame that local codes reach now.
uint32_t local(Machine *machine, uint32_t offset, uint32_t size)
{
    const Frame &frame = machine->frames[machine->frames.back().scope];
    const uint32_t frame_size = frame.function->frame_size;
    if (offset > frame_size || size > frame_size - offset) {
        fail(machine, "outside of the frame");
        return 0;
    }
    return FRAME_BASE + frame.base + offset;
}

// Inside an image a pointer is kept as the distance from itself.
uint32_t load_pointer(Machine *machine, uint32_t address)
{
    const uint32_t word = load(machine, address, 4);
    return word != 0 && find_code(*machine->program, address) ? address + word : word;
}

void store_pointer(Machine *machine, uint32_t address, uint32_t value)
{
    const bool is_near = value != 0 && find_code(*machine->program, address);
    store(machine, address, is_near ? value - address : value, 4);
}

void copy_block(Machine *machine)
{
    const uint32_t size = pop(machine);
    const uint32_t to = pop(machine);
    const uint32_t from = pop(machine);
    const uint8_t *source = memory(machine->program, from, size, false);
    uint8_t *target = memory(machine->program, to, size, true);
    if (source == nullptr || target == nullptr) return fail(machine, "bad address of a block");
    std::memmove(target, source, size);
}

// Calls.

Words take_arguments(Machine *machine)
{
    if (machine->open_calls.size() <= machine->frames.back().open_calls) {
        fail(machine, "call that was not opened");
        return {};
    }
    const auto first = machine->stack.begin() + static_cast<ptrdiff_t>(machine->open_calls.back());
    Words arguments(first, machine->stack.end());
    machine->stack.erase(first, machine->stack.end());
    machine->open_calls.pop_back();
    return arguments;
}

void enter(Machine *machine, uint32_t address, const Words &arguments)
{
    const Function *function = verify_function(machine->program, address);
    if (function == nullptr) return fail(machine, "call of what is no function");
    if (!function->is_sound) return fail(machine, function->name + " is not sound");
    if (machine->frames.size() >= most_frames) return fail(machine, "calls nested too deeply");
    if (arguments.size() * 4 > function->frame_size)
        return fail(machine, "more arguments than the frame of " + function->name + " has");
    std::vector<uint8_t> &bytes = machine->program->frames;
    const auto base = static_cast<uint32_t>(bytes.size());
    machine->frames.push_back({ function, base, machine->stack.size(), machine->open_calls.size(),
                                machine->frames.size(), function->entry });
    bytes.resize(base + function->frame_size);
    for (size_t i = 0; i < arguments.size(); ++i)
        store(machine, FRAME_BASE + base + static_cast<uint32_t>(4 * i), arguments[i], 4);
}

// Leaves frames, with the words, open calls and handlers of each, until so many are left.
void unwind(Machine *machine, size_t frames)
{
    while (machine->frames.size() > frames) {
        const Frame &frame = machine->frames.back();
        machine->stack.resize(frame.stack_words);
        machine->open_calls.resize(frame.open_calls);
        machine->program->frames.resize(frame.base);
        machine->frames.pop_back();
    }
    while (!machine->handlers.empty() && machine->handlers.back().frame >= frames)
        machine->handlers.pop_back();
}

void leave(Machine *machine)
{
    const uint32_t word = pop(machine);
    unwind(machine, machine->frames.size() - 1);
    if (machine->frames.empty()) return finish(machine, Outcome::RETURNED, word, 0);
    push(machine, word);
}

// An argument as a log shows it: text for what is the address of one.
std::string show(Program *program, uint32_t word)
{
    const bool is_text = word < FRAME_BASE && memory(program, word, 1, false) != nullptr;
    const std::optional<std::string> text = is_text ? text_at(program, word) : std::nullopt;
    return text ? '"' + *text + '"' : std::to_string(static_cast<int32_t>(word));
}

// What stands outside is asked for its answer.
void ask(Machine *machine, const std::string &name, const Words &arguments)
{
    std::string call = name + "(";
    for (size_t i = 0; i < arguments.size(); ++i)
        call += (i == 0 ? "" : ",") + show(machine->program, arguments[i]);
    machine->result.calls.push_back(call + ")");
    const auto hook = machine->hooks->find(name);
    push(machine, hook == machine->hooks->end() ? 0 : hook->second(machine->program, arguments));
}

void ask_words(Machine *machine, const std::string &name, size_t count,
               std::optional<uint32_t> operand)
{
    Words words(count);
    for (size_t i = count; i-- > 0;)
        words[i] = pop(machine);
    if (operand) words.push_back(*operand);
    ask(machine, name, words);
}

void call_system(Machine *machine, const Image &image, uint32_t number)
{
    const auto named = image.syscalls.find(number);
    const std::string name = named == image.syscalls.end() ? std::to_string(number) : named->second;
    ask(machine, name, take_arguments(machine));
}

void find_scope(Machine *machine, uint32_t address)
{
    for (size_t i = machine->frames.size(); i-- > 0;) {
        const Function &function = *machine->frames[i].function;
        if (machine->program->images[function.image].base + function.entry != address) continue;
        machine->frames.back().scope = i;
        return;
    }
    fail(machine, "no frame of that function");
}

// Exceptions.

void pass_exception(Machine *machine, uint32_t at, uint32_t target)
{
    Frame &frame = machine->frames.back();
    const uint32_t value = pop(machine);
    frame.next = target;
    if (target != at + 3) {
        machine->handlers.push_back({ value, machine->frames.size() - 1, machine->stack.size(),
                                      machine->open_calls.size(), at + 3,
                                      frame.function->handler_ends.at(at), true });
        return;
    }
    const bool has_open =
        !machine->handlers.empty() && machine->handlers.back().frame == machine->frames.size() - 1;
    if (!has_open) return fail(machine, "closes a stretch that is not open");
    machine->handlers.pop_back();
}

void raise(Machine *machine)
{
    const uint32_t argument = pop(machine);
    const uint32_t value = pop(machine);
    auto &handlers = machine->handlers;
    const auto found =
        std::find_if(handlers.rbegin(), handlers.rend(), [&](const Handler &handler) {
            return handler.is_ready && handler.value == value;
        });
    if (found == handlers.rend()) return finish(machine, Outcome::RAISED, value, argument);
    const Handler handler = *found;
    handlers.erase(found.base(), handlers.end());
    handlers.back().is_ready = false;
    unwind(machine, handler.frame + 1);
    machine->stack.resize(handler.stack_words);
    machine->open_calls.resize(handler.open_calls);
    Frame &frame = machine->frames.back();
    frame.next = handler.entry;
    frame.scope = handler.frame;
}

void end_handler(Machine *machine, uint8_t operand)
{
    if (machine->handlers.empty()) return fail(machine, "END_EXCEPTION outside of a handler");
    if (operand == 1) return;
    const Handler &handler = machine->handlers.back();
    machine->frames.back().next = handler.end;
    machine->stack.resize(handler.stack_words);
}

// Arithmetic.

int32_t scaled(double value)
{
    return static_cast<int32_t>(static_cast<uint32_t>(static_cast<int64_t>(value)));
}

int32_t fixed(uint32_t bits)
{
    const float value = std::bit_cast<float>(bits);
    if (std::isnan(value)) return 0;
    if (value >= 2147483648.0F) return INT32_MAX;
    if (value < -2147483648.0F) return INT32_MIN;
    return static_cast<int32_t>(value);
}

bool compares(uint8_t code, int order)
{
    if (code == EQ) return order == 0;
    if (code == NEQ) return order != 0;
    if (code == GTR) return order > 0;
    if (code == GE) return order >= 0;
    if (code == LESS) return order < 0;
    return order <= 0;
}

uint32_t quotient(Machine *machine, uint8_t code, int32_t a, int32_t b)
{
    if (b == 0) {
        fail(machine, "division by zero");
        return 0;
    }
    const int64_t wide = code == DIV ? int64_t{ a } / b : int64_t{ a } % b;
    return static_cast<uint32_t>(wide);
}

uint32_t two_words(Machine *machine, uint8_t code, uint32_t a, uint32_t b)
{
    const auto left = static_cast<int32_t>(a);
    const auto right = static_cast<int32_t>(b);
    if (code == ADD) return a + b;
    if (code == SUB) return a - b;
    if (code == MUL) return a * b;
    if (code == DIV || code == REM) return quotient(machine, code, left, right);
    if (code == AND) return a & b;
    if (code == OR) return a | b;
    if (code == XOR) return a ^ b;
    if (code == SL) return a << (b % 32);
    if (code == SR) return static_cast<uint32_t>(left >> (b % 32));
    if (code == ADW) return b + 4 * a;
    return compares(code, left < right ? -1 : left > right) ? 1 : 0;
}

// Products and quotients of quantities, with the power of ten between their scales.
void scale(Machine *machine, uint8_t code)
{
    const double factor = static_cast<int32_t>(pop(machine));
    const double b = static_cast<int32_t>(pop(machine));
    const double a = static_cast<int32_t>(pop(machine));
    if ((code == SMUL ? factor : b) == 0) return fail(machine, "division by zero");
    push(machine, static_cast<uint32_t>(scaled(code == SMUL ? a * b / factor : a / b * factor)));
}

void compare_texts(Machine *machine, uint8_t comparison)
{
    const uint32_t b = pop(machine);
    const uint32_t a = pop(machine);
    int order = (a != 0) - (b != 0);
    for (uint32_t i = 0; a != 0 && b != 0 && !machine->is_over; ++i) {
        const uint32_t left = load(machine, a + i, 1);
        const uint32_t right = load(machine, b + i, 1);
        order = left < right ? -1 : left > right;
        if (order != 0 || left == 0) break;
    }
    push(machine, compares(comparison, order) ? 1 : 0);
}

void check_index(Machine *machine)
{
    const uint32_t bound = pop(machine);
    const uint32_t index = pop(machine);
    if (static_cast<int32_t>(index) < 0 ||
        static_cast<int32_t>(index) >= static_cast<int32_t>(bound))
        return fail(machine, "index out of bounds");
    push(machine, index);
}

void dispatch(Machine *machine, const uint8_t *operand, uint32_t at, bool has_default)
{
    const uint32_t value = pop(machine);
    const uint32_t count = operand[0];
    if (value >= count && !has_default) return fail(machine, "no leg for the value of a node");
    const uint32_t entry = value < count ? value + (has_default ? 1 : 0) : 0;
    const int32_t distance = signed_number(operand + 1 + 2 * entry, 2);
    machine->frames.back().next = at + 2 + 2 * entry + static_cast<uint32_t>(distance);
}

void shuffle(Machine *machine, uint8_t code)
{
    const uint32_t top = pop(machine);
    if (code == POP) return;
    if (code == DUP) {
        push(machine, top);
        return push(machine, top);
    }
    const uint32_t below = pop(machine);
    if (code == EXCH) {
        push(machine, top);
        return push(machine, below);
    }
    if (code == DUP2) {
        for (const uint32_t word : { below, top, below, top })
            push(machine, word);
        return;
    }
    const uint32_t third = pop(machine);
    for (const uint32_t word : { top, third, below })
        push(machine, word);
}

bool jumps(Machine *machine, uint8_t code)
{
    if (code == JUMP) return true;
    const auto value = static_cast<int32_t>(pop(machine));
    if (code == JZ) return value == 0;
    if (code == JNZ) return value != 0;
    if (code == JN) return value < 0;
    return value >= 0;
}

// SB, SW and SP to an address, SLB and SLW to a place in the frame; some leave the value.
void store_code(Machine *machine, uint8_t code)
{
    const bool is_local = code == SLB || code == SLW || code == SLBP || code == SLWP;
    const bool is_byte = code == SLB || code == SB || code == SBP || code == SLBP;
    const bool drops = code >= SBP && code <= SLWP;
    const int size = is_byte ? 1 : 4;
    const uint32_t place = pop(machine);
    const uint32_t value = pop(machine);
    if (machine->is_over) return;
    const uint32_t address = is_local ? local(machine, place, static_cast<uint32_t>(size)) : place;
    if (machine->is_over) return;
    if (code == SP) {
        store_pointer(machine, address, value);
    } else {
        store(machine, address, value, size);
    }
    if (!drops) push(machine, value);
}

uint32_t one_word(Machine *machine, uint8_t code, uint32_t a)
{
    if (code == LLB || code == LLW) {
        const int size = code == LLB ? 1 : 4;
        const uint32_t address = local(machine, a, static_cast<uint32_t>(size));
        return machine->is_over ? 0 : load(machine, address, size);
    }
    if (code == LLA) return local(machine, a, 0);
    if (code == LB || code == LW) return load(machine, a, code == LB ? 1 : 4);
    if (code == LP) return load_pointer(machine, a);
    if (code == ARGB) return a << 24;
    if (code == NEG) return 0 - a;
    if (code == INV) return ~a;
    if (code == NOT) return a == 0 ? 1 : 0;
    if (code == FIX) return static_cast<uint32_t>(fixed(a));
    return std::bit_cast<uint32_t>(static_cast<float>(static_cast<int32_t>(a)));
}

void call_address(Machine *machine, uint32_t address)
{
    const Words arguments = take_arguments(machine);
    if (!machine->is_over) enter(machine, address, arguments);
}

struct Instruction {
    const Image *image;
    uint32_t at;
    uint8_t code;
    const uint8_t *operand;

    // The operand as a number, by the size that the code's operand has.
    uint32_t number() const { return read_number(operand, operand_size(code)); }
    uint32_t distance() const
    {
        return static_cast<uint32_t>(signed_number(operand, operand_size(code)));
    }
    // Where the operand leads: an offset, or an address.
    uint32_t place() const { return at + 1 + distance(); }
    uint32_t target() const { return image->base + place(); }
};

// Codes that only push, load or compute.
void compute(Machine *machine, const Instruction &it)
{
    if (it.code < SLIT) return push(machine, it.code);
    if (it.code == LSA) return push(machine, it.number());
    if (it.code == LCA) return push(machine, it.target());
    if (it.code <= LIT) return push(machine, it.distance());
    if (it.code == CHECK) return check_index(machine);
    if (it.code == STRCMP) return compare_texts(machine, it.operand[0]);
    if (it.code == SMUL || it.code == SDIV) return scale(machine, it.code);
    const bool has_two =
        (it.code >= ADD && it.code <= LE && it.code != NEG && it.code != INV && it.code != NOT) ||
        it.code == ADW;
    const uint32_t top = pop(machine);
    if (!has_two) return push(machine, one_word(machine, it.code, top));
    push(machine, two_words(machine, it.code, pop(machine), top));
}

// What objects, attributes, conversions and data found by name do is outside of the program.
void ask_outside(Machine *machine, const Instruction &it)
{
    if (it.code == CVT) return ask_words(machine, "CVT", 2, it.number());
    if (it.code == ATTR)
        return ask_words(machine, "ATTR", it.operand[0] & 0x80 ? 3 : 2, it.number());
    if (it.code == CREATE) return ask_words(machine, "CREATE", 1, std::nullopt);
    if (it.code == RELEASE) return ask_words(machine, "RELEASE", 1, std::nullopt);
    if (it.code == GET) return ask_words(machine, "GET", 1, it.number());
    if (it.code == PUT) return ask_words(machine, "PUT", 1, it.number());
    if (it.code == FIELD_ATTR) return ask_words(machine, "ATTR", 1, it.number());
    if (it.code == ATTR_INDEX) return ask_words(machine, "ATTR_INDEX", 2, it.number());
    if (it.code == FIND_DATA) return ask_words(machine, "FIND_DATA", 2, std::nullopt);
    if (it.code == FIND_COM) return ask_words(machine, "FIND_COM", 2, std::nullopt);
    if (it.code == FIND_IMMEDIATE) return ask_words(machine, "FIND_IMMEDIATE", 2, std::nullopt);
    return ask_words(machine, "UPB", 2, std::nullopt);
}

void jump(Machine *machine, const Instruction &it)
{
    if (jumps(machine, it.code)) machine->frames.back().next = it.place();
}

void pass(Machine *machine, const Instruction &it)
{
    if (it.code == LINE) machine->frames.back().line = it.number();
    if (it.code == LOCAL_SCOPE) machine->frames.back().scope = machine->frames.size() - 1;
    if (it.code == ARGS || it.code == START_VARIANT)
        machine->open_calls.push_back(machine->stack.size());
}

void call(Machine *machine, const Instruction &it)
{
    if (it.code == SYSCALL || it.code == SHORT_SYSCALL)
        return call_system(machine, *it.image, it.number());
    call_address(machine, it.code == CALL ? it.target() : pop(machine));
}

void step(Machine *machine)
{
    Frame &frame = machine->frames.back();
    const Image &image = machine->program->images[frame.function->image];
    const uint32_t at = frame.next;
    const Instruction it{ &image, at, image.code[at], image.code.data() + at + 1 };
    if (const auto user = image.user_codes.find(at); user != image.user_codes.end()) {
        frame.next = at + 1;
        return ask(machine, user->second + ":" + std::to_string(it.code), take_arguments(machine));
    }
    frame.next = at + 1 + static_cast<uint32_t>(operand_size(it.code));
    const bool has_field =
        it.code == LIT || it.code == LCA || it.code == CALL || it.code == FIND_SCOPE;
    if (has_field && image.unresolved.count(at + 1) != 0)
        return fail(machine, "reference to nothing");
    const Action what = action(it.code);
    if (what == Action::COMPUTE) return compute(machine, it);
    if (what == Action::STORE) return store_code(machine, it.code);
    if (what == Action::SHUFFLE) return shuffle(machine, it.code);
    if (what == Action::JUMP) return jump(machine, it);
    if (what == Action::TABLE) return dispatch(machine, it.operand, at, it.code == SWITCH);
    if (what == Action::CALL) return call(machine, it);
    if (what == Action::RETURN) return leave(machine);
    if (what == Action::STOP) return finish(machine, Outcome::STOPPED, 0, 0);
    if (what == Action::EXCEPTION) return pass_exception(machine, at, it.place());
    if (what == Action::RAISE) return raise(machine);
    if (what == Action::END_HANDLER) return end_handler(machine, it.operand[0]);
    if (what == Action::COPY) return copy_block(machine);
    if (what == Action::SCOPE) return find_scope(machine, it.target());
    if (what == Action::OUTSIDE) return ask_outside(machine, it);
    return pass(machine, it);
}

std::optional<uint32_t> find_function(const Program &program, const std::string &name)
{
    for (const Image &image : program.images) {
        for (const auto &[offset, symbol] : image.functions) {
            if (symbol == name) return image.base + offset;
        }
    }
    return std::nullopt;
}

} // namespace

Result run(Program *program, const std::string &function, const Words &arguments,
           const Hooks &hooks, uint64_t limit)
{
    Machine machine{};
    machine.program = program;
    machine.hooks = &hooks;
    program->frames.clear();
    const std::optional<uint32_t> address = find_function(*program, function);
    if (address) {
        enter(&machine, *address, arguments);
    } else {
        fail(&machine, "no function of the name " + function);
    }
    for (uint64_t i = 0; i < limit && !machine.is_over; ++i)
        step(&machine);
    if (!machine.is_over) fail(&machine, "runs too long");
    return machine.result;
}

} // namespace evaluator
