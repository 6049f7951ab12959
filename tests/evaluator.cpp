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
    switch (code) {
    case 61:
        return order == 0;
    case 62:
        return order != 0;
    case 63:
        return order > 0;
    case 64:
        return order >= 0;
    case 65:
        return order < 0;
    default:
        return order <= 0;
    }
}

uint32_t quotient(Machine *machine, uint8_t code, int32_t a, int32_t b)
{
    if (b == 0) {
        fail(machine, "division by zero");
        return 0;
    }
    const int64_t wide = code == 51 ? int64_t{ a } / b : int64_t{ a } % b;
    return static_cast<uint32_t>(wide);
}

uint32_t two_words(Machine *machine, uint8_t code, uint32_t a, uint32_t b)
{
    const auto left = static_cast<int32_t>(a);
    const auto right = static_cast<int32_t>(b);
    switch (code) {
    case 48:
        return a + b;
    case 49:
        return a - b;
    case 50:
        return a * b;
    case 51:
    case 52:
        return quotient(machine, code, left, right);
    case 55:
        return a & b;
    case 56:
        return a | b;
    case 57:
        return a ^ b;
    case 59:
        return a << (b % 32);
    case 60:
        return static_cast<uint32_t>(left >> (b % 32));
    case 96:
        return b + 4 * a;
    default:
        return compares(code, left < right ? -1 : left > right) ? 1 : 0;
    }
}

// Products and quotients of quantities, with the power of ten between their scales.
void scale(Machine *machine, uint8_t code)
{
    const double factor = static_cast<int32_t>(pop(machine));
    const double b = static_cast<int32_t>(pop(machine));
    const double a = static_cast<int32_t>(pop(machine));
    if ((code == 86 ? factor : b) == 0) return fail(machine, "division by zero");
    push(machine, static_cast<uint32_t>(scaled(code == 86 ? a * b / factor : a / b * factor)));
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
    if (code == 78) return;
    if (code == 76) {
        push(machine, top);
        return push(machine, top);
    }
    const uint32_t below = pop(machine);
    if (code == 79) {
        push(machine, top);
        return push(machine, below);
    }
    if (code == 77) {
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
    if (code == 67) return true;
    const auto value = static_cast<int32_t>(pop(machine));
    switch (code) {
    case 68:
        return value == 0;
    case 69:
        return value != 0;
    case 70:
        return value < 0;
    default:
        return value >= 0;
    }
}

// SB, SW and SP to an address, SLB and SLW to a place in the frame; some leave the value.
void store_code(Machine *machine, uint8_t code)
{
    const bool is_local = code == 43 || code == 44 || code == 108 || code == 109;
    const bool is_byte = code == 43 || code == 45 || code == 106 || code == 108;
    const bool drops = code >= 106 && code <= 109;
    const int size = is_byte ? 1 : 4;
    const uint32_t place = pop(machine);
    const uint32_t value = pop(machine);
    if (machine->is_over) return;
    const uint32_t address = is_local ? local(machine, place, static_cast<uint32_t>(size)) : place;
    if (machine->is_over) return;
    if (code == 110) {
        store_pointer(machine, address, value);
    } else {
        store(machine, address, value, size);
    }
    if (!drops) push(machine, value);
}

uint32_t one_word(Machine *machine, uint8_t code, uint32_t a)
{
    switch (code) {
    case 35:
    case 36: {
        const int size = code == 35 ? 1 : 4;
        const uint32_t address = local(machine, a, static_cast<uint32_t>(size));
        return machine->is_over ? 0 : load(machine, address, size);
    }
    case 37:
        return local(machine, a, 0);
    case 41:
        return load(machine, a, 1);
    case 42:
        return load(machine, a, 4);
    case 47:
        return a << 24;
    case 53:
        return 0 - a;
    case 54:
        return ~a;
    case 58:
        return a == 0 ? 1 : 0;
    case 88:
        return load_pointer(machine, a);
    case 132:
        return std::bit_cast<uint32_t>(static_cast<float>(static_cast<int32_t>(a)));
    default:
        return static_cast<uint32_t>(fixed(a));
    }
}

void call_address(Machine *machine, uint32_t address)
{
    const Words arguments = take_arguments(machine);
    if (!machine->is_over) enter(machine, address, arguments);
}

void step(Machine *machine)
{
    Frame &frame = machine->frames.back();
    const Image &image = machine->program->images[frame.function->image];
    const uint32_t at = frame.next;
    const uint8_t code = image.code[at];
    const uint8_t *operand = image.code.data() + at + 1;
    const uint32_t here = image.base + at + 1;
    if (const auto user = image.user_codes.find(at); user != image.user_codes.end()) {
        frame.next = at + 1;
        return ask(machine, user->second + ":" + std::to_string(code), take_arguments(machine));
    }
    frame.next = at + 1 + static_cast<uint32_t>(operand_size(code));
    const bool has_field = code == 40 || code == 73 || code == 120;
    if (has_field && image.unresolved.count(at + 1) != 0)
        return fail(machine, "reference to nothing");
    if (code < 32) return push(machine, code);
    switch (code) {
    case 32:
        return push(machine, static_cast<uint32_t>(signed_number(operand, 1)));
    case 33:
        return push(machine, static_cast<uint32_t>(signed_number(operand, 2)));
    case 34:
    case 38:
        return push(machine, read_number(operand, 4));
    case 40:
        return push(machine, here + read_number(operand, 4));
    case 35:
    case 36:
    case 37:
    case 41:
    case 42:
    case 47:
    case 53:
    case 54:
    case 58:
    case 88:
    case 132:
    case 133:
        return push(machine, one_word(machine, code, pop(machine)));
    case 43:
    case 44:
    case 45:
    case 46:
    case 106:
    case 107:
    case 108:
    case 109:
    case 110:
        return store_code(machine, code);
    case 67:
    case 68:
    case 69:
    case 70:
    case 71:
        if (jumps(machine, code))
            frame.next = at + 1 + static_cast<uint32_t>(signed_number(operand, 2));
        return;
    case 72:
    case 113:
        return machine->open_calls.push_back(machine->stack.size());
    case 73:
        return call_address(machine, here + read_number(operand, 4));
    case 74:
        return leave(machine);
    case 75:
    case 114:
        return;
    case 76:
    case 77:
    case 78:
    case 79:
    case 111:
        return shuffle(machine, code);
    case 80:
        return finish(machine, Outcome::STOPPED, 0, 0);
    case 81:
        return call_system(machine, image, read_number(operand, 2));
    case 112:
        return call_system(machine, image, operand[0]);
    case 82:
        frame.line = read_number(operand, 2);
        return;
    case 83:
    case 84:
        return dispatch(machine, operand, at, code == 83);
    case 86:
    case 87:
        return scale(machine, code);
    case 89:
        return check_index(machine);
    case 97:
        return pass_exception(machine, at,
                              at + 1 + static_cast<uint32_t>(signed_number(operand, 2)));
    case 98:
        return raise(machine);
    case 99:
        return end_handler(machine, operand[0]);
    case 101:
        return ask_words(machine, "CVT", 2, operand[0]);
    case 102:
        return ask_words(machine, "ATTR", operand[0] & 0x80 ? 3 : 2, operand[0]);
    case 103:
        return call_address(machine, pop(machine));
    case 104:
        return copy_block(machine);
    case 105:
        return compare_texts(machine, operand[0]);
    case 116:
        return ask_words(machine, "CREATE", 1, std::nullopt);
    case 117:
        return ask_words(machine, "RELEASE", 1, std::nullopt);
    case 118:
        return ask_words(machine, "GET", 1, read_number(operand, 2));
    case 119:
        return ask_words(machine, "PUT", 1, read_number(operand, 2));
    case 120:
        return find_scope(machine, here + read_number(operand, 4));
    case 121:
        frame.scope = machine->frames.size() - 1;
        return;
    case 135:
        return ask_words(machine, "ATTR", 1, read_number(operand, 2));
    case 136:
        return ask_words(machine, "FIND_DATA", 2, std::nullopt);
    case 137:
        return ask_words(machine, "FIND_COM", 2, std::nullopt);
    case 142:
        return ask_words(machine, "FIND_IMMEDIATE", 2, std::nullopt);
    case 143:
        return ask_words(machine, "ATTR_INDEX", 2, read_number(operand, 2));
    case 145:
        return ask_words(machine, "UPB", 2, std::nullopt);
    default: {
        const uint32_t b = pop(machine);
        const uint32_t a = pop(machine);
        return push(machine, two_words(machine, code, a, b));
    }
    }
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
