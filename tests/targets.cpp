// Sources compiled to every target, what their functions look like there, and runs by the evaluator.
#include "targets.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <utility>
#include <vector>

#include "codegen/tlcc.h"
#include "whole_module.h"

namespace targets
{

namespace
{

// For listings.
FILE *nowhere()
{
    static FILE *file = std::fopen("/dev/null", "w");
    return file;
}

// What the functions of a module look like.

Value value_of(TLI_IDENTIFIER *type, const char *c_type)
{
    Value value;
    value.c_type = c_type;
    if (type == TLIT_VoidType) value.kind = Kind::NOTHING;
    if (type == TLIT_FloatType) value.kind = Kind::FLOAT;
    if (type == TLIT_StringType) value.kind = Kind::TEXT;
    const bool is_enumeration = TLIT_TypeSubclass(nullptr, type) == TLIT_SUBCLASS_ENUMERATION;
    if (type == TLIT_CharType || is_enumeration) value.kind = Kind::BYTE;
    if (type == TLIT_CharType) value.values = 256;
    if (is_enumeration) value.values = TLIT_EnumRange(type);
    return value;
}

Routine routine_of(TLP_MODULE *module, TLI_IDENTIFIER *function)
{
    Routine routine;
    char name[TLCC_NAME_CAPACITY];
    routine.name = TLI_FullName(function);
    routine.c_name = TLCC_Name(function, name);
    routine.java_name = TLI_IdentifierName(function);
    routine.result = value_of(TLI_IdentifierType(function), TLCC_ResultName(function));
    routine.is_open = TLIV_ExtraArgumentsAllowed(function) != 0;
    routine.number = EEP_Syscall(TLP_SyscallData(module), routine.name.c_str());
    for (int32_t i = 0; TLI_IDENTIFIER *argument = TLIV_GetFunctionArgument(function, i); ++i) {
        TLI_IDENTIFIER *type = TLI_IdentifierType(argument);
        routine.arguments.push_back(value_of(type, TLCC_TypeName(type)));
    }
    return routine;
}

struct Walk {
    TLP_MODULE *parsed;
    Module *module;
};

int32_t note_routine(void *context, const char *, TLI_IDENTIFIER *identifier)
{
    const auto *walk = static_cast<Walk *>(context);
    if (TLI_IdentifierClass(identifier) != TLI_FUNCTION) return 1;
    const int32_t kind = TLIV_FunctionClass(identifier);
    const bool is_syscall = kind == TLP_SECTION_SYSCALL;
    if (!is_syscall && kind != TLP_SECTION_FUNCTION && kind != TLP_SECTION_TREE) return 1;
    Routine routine = routine_of(walk->parsed, identifier);
    (is_syscall ? walk->module->syscalls : walk->module->functions).push_back(std::move(routine));
    return 1;
}

void note_routines(TLP_MODULE *parsed, Module *module)
{
    Walk walk{ parsed, module };
    TLI_AllIdentifiers(TLP_ModuleGlobals(parsed), note_routine, &walk);
    TLI_AllIdentifiers(TLP_ModuleStatics(parsed), note_routine, &walk);
}

// Compiling.

// The text targets write into the current directory.
void generate(TLP_MODULE *parsed, const Options &options, Module *module)
{
    const uint32_t flags = options.flags;
    const uint32_t outputs = options.outputs;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(module->folder);
    const char *base = module->base.c_str();
    if (outputs & P_CODE) TLCG_GenerateKOBCode(parsed, flags, base, 0, "test");
    if (outputs & C) {
        TLCG_GenerateCCode(parsed, flags, base, 0, "test");
        module->c_errors = TLC_TextErrors(nullptr);
    }
    if (outputs & JAVA) {
        TLCG_GenerateJavaCode(parsed, flags, base, 0, "test");
        module->java_errors = TLC_TextErrors(nullptr);
    }
    std::filesystem::current_path(before);
}

} // namespace

Module compile(const std::string &source, const std::string &folder, const Options &options)
{
    Module module;
    module.folder = folder;
    module.base = std::filesystem::path(source).stem().string();
    TLP_MODULE *parsed = whole_module::read(source, nowhere(), options.read_mode);
    module.problems = parsed == nullptr ? "cannot be read\n" : whole_module::errors;
    if (parsed != nullptr) {
        module.name = TLP_ModuleName(parsed);
        if (module.problems.empty()) generate(parsed, options, &module);
        module.problems = whole_module::errors;
        note_routines(parsed, &module);
    }
    whole_module::close(parsed);
    return module;
}

const Routine *find_routine(const std::vector<Routine> &routines, const std::string &name)
{
    for (const Routine &routine : routines)
        if (routine.name == name) return &routine;
    return nullptr;
}

// Words of outcomes.

std::string short_name(const Job &job, const Routine &routine)
{
    const std::string own = job.modules.front().name + ".";
    const bool is_own = routine.name.compare(0, own.size(), own) == 0;
    return is_own ? routine.name.substr(own.size()) : routine.name;
}

std::string extra_kinds(const std::string &format)
{
    std::string kinds;
    for (size_t at = 0; at + 1 < format.size(); ++at) {
        if (format[at] != '%') continue;
        ++at;
        if (format[at] != '%') kinds += format[at];
    }
    return kinds;
}

std::string literal(const std::string &stated)
{
    const std::string byte = "byte ";
    return stated.compare(0, byte.size(), byte) == 0 ? stated.substr(byte.size()) : stated;
}

namespace
{

// Reasons in the words of the C and Java run times, the evaluator's beside them. By signal end those
// runs that C has no check for.
struct Reason {
    const char *evaluator;
    const char *other;
};

constexpr Reason reasons[] = {
    { "division by zero", "Division by zero" },
    { "index out of bounds", "Subscript beyond the array" },
    { "no leg for the value of a node", "Value without a leg" },
    { "null address", "Null address" },
    { "null address", "No object" },
    { "call of what is no function", "No object" },
    { "call of what is no function", "Call of what is no function" },
    { "calls nested too deeply", "by signal" },
    { "runs too long", "by signal" },
};

constexpr char failure[] = "fails ";

// The reason of a failed run in the evaluator's words, with what follows it.
std::vector<std::string> all_readings(const std::string &outcome)
{
    if (outcome.compare(0, sizeof failure - 1, failure) != 0) return { outcome };
    const std::string text = outcome.substr(sizeof failure - 1);
    std::vector<std::string> readings{ outcome };
    for (const Reason &reason : reasons) {
        const std::string other = reason.other;
        if (text.compare(0, other.size(), other) != 0) continue;
        const size_t calls = text.find(" ; calls ");
        const bool is_signal = other == "by signal";
        /* A signal leaves no log. */
        const bool has_log = !is_signal && calls != std::string::npos;
        readings.push_back(failure + std::string(reason.evaluator) +
                           (has_log ? text.substr(calls) : ""));
    }
    return readings;
}

} // namespace

bool are_same(const std::string &one, const std::string &other)
{
    for (const std::string &first : all_readings(one))
        for (const std::string &second : all_readings(other))
            if (first == second) return true;
    return false;
}

std::string run_command(const std::string &command, const std::string &folder)
{
    const std::string log = folder + "/log";
    if (std::system((command + " >" + log + " 2>&1").c_str()) == 0) return "";
    std::ostringstream text;
    text << command << "\n" << std::ifstream(log).rdbuf();
    return text.str();
}

// The evaluator.

namespace
{

std::string shown(evaluator::Program *program, Kind kind, uint32_t word)
{
    if (kind == Kind::TEXT && word != 0) {
        const std::optional<std::string> text = evaluator::text_at(program, word);
        return text ? '"' + *text + '"' : "no text";
    }
    return std::to_string(static_cast<int32_t>(word));
}

// A call as it stands in the log. An argument of one byte lies in the first byte of its word.
std::string shown_call(evaluator::Program *program, const Routine &syscall, const std::string &name,
                       const evaluator::Words &words)
{
    std::string extras;
    const size_t count = syscall.arguments.size();
    if (count > 0 && count <= words.size() && syscall.arguments[count - 1].kind == Kind::TEXT)
        extras = extra_kinds(evaluator::text_at(program, words[count - 1]).value_or(""));
    std::string call = name + "(";
    for (size_t i = 0; i < words.size(); ++i) {
        Kind kind = Kind::WORD;
        if (i < count) kind = syscall.arguments[i].kind;
        if (i >= count && i - count < extras.size() && extras[i - count] == 's') kind = Kind::TEXT;
        const uint32_t word = kind == Kind::BYTE ? words[i] >> 24 : words[i];
        call += (i == 0 ? "" : ",") + shown(program, kind, word);
    }
    return call + ")";
}

struct Log {
    std::vector<std::string> calls; // of the program's own syscalls
    size_t next_answer = 0;
};

// A stated answer as the type of the syscall has it.
uint32_t answer_word(const Job &job, evaluator::Program *program, const Value &result,
                     uint32_t answer)
{
    if (result.kind == Kind::TEXT && answer != 0) return evaluator::place_text(program, "answer");
    const bool is_whole = result.values == 0 || !job.has_proper_answers;
    return is_whole ? answer : answer % static_cast<uint32_t>(result.values);
}

// Converters, by their records: of 34 bytes, with the states and the points of the map behind.

int32_t number_at(evaluator::Program *program, uint32_t address, uint32_t size)
{
    const uint8_t *bytes = evaluator::memory(program, address, size, false);
    return bytes == nullptr ? 0 : evaluator::signed_number(bytes, static_cast<int>(size));
}

// What a field refers to: its content is the way from itself.
uint32_t referred(evaluator::Program *program, uint32_t address)
{
    const int32_t distance = number_at(program, address, 4);
    return distance == 0 ? 0 : address + static_cast<uint32_t>(distance);
}

constexpr uint32_t next_at = 8;
constexpr uint32_t offset_at = 12;
constexpr uint32_t multiplier_at = 16;
constexpr uint32_t divisor_at = 20;
constexpr uint32_t counts_at = 30;
constexpr uint32_t states_at = 34;
constexpr uint32_t state_size = 12;
constexpr uint32_t point_size = 8;

uint32_t state_count(evaluator::Program *program, uint32_t converter)
{
    return static_cast<uint32_t>(number_at(program, converter + counts_at, 2));
}

struct Map {
    std::vector<int32_t> from, to;
};

Map map_of(evaluator::Program *program, uint32_t converter, bool is_backwards)
{
    Map map;
    const auto count = static_cast<uint32_t>(number_at(program, converter + counts_at + 2, 2));
    uint32_t point = converter + states_at + state_count(program, converter) * state_size;
    for (uint32_t i = 0; i < count; ++i, point += point_size) {
        map.from.push_back(number_at(program, point, 4));
        map.to.push_back(number_at(program, point + 4, 4));
    }
    if (is_backwards) std::swap(map.from, map.to);
    return map;
}

// On the line between two points of the map, or level beyond its ends. Backwards it may fall.
int32_t map_value(const Map &map, int32_t value)
{
    const size_t last = map.from.size() - 1;
    const bool is_falling = map.from[last] < map.from[0];
    const auto is_before = [&](size_t i) {
        return is_falling ? value >= map.from[i] : value <= map.from[i];
    };
    if (is_before(0)) return map.to[0];
    for (size_t i = 1; i <= last; ++i) {
        if (!is_before(i)) continue;
        const int64_t rise = static_cast<int64_t>(map.to[i]) - map.to[i - 1];
        const int64_t run = static_cast<int64_t>(map.from[i]) - map.from[i - 1];
        const int64_t way = static_cast<int64_t>(value) - map.from[i - 1];
        return static_cast<int32_t>(map.to[i - 1] + rise * way / run);
    }
    return map.to[last];
}

int32_t converted_once(evaluator::Program *program, uint32_t converter, int32_t value,
                       bool is_backwards)
{
    const Map map = map_of(program, converter, is_backwards);
    if (!map.from.empty()) return map_value(map, value);
    const int64_t divisor = number_at(program, converter + divisor_at, 4);
    const int64_t factor = number_at(program, converter + multiplier_at, 4);
    const int64_t offset = number_at(program, converter + offset_at, 4);
    if (is_backwards)
        return factor == 0 ? value : static_cast<int32_t>((value - offset) * divisor / factor);
    return divisor == 0 ? value : static_cast<int32_t>(value * factor / divisor + offset);
}

int32_t converted(evaluator::Program *program, uint32_t converter, int32_t value, bool is_backwards)
{
    std::vector<uint32_t> chain;
    for (; converter != 0; converter = referred(program, converter + next_at))
        chain.push_back(converter);
    if (is_backwards) std::reverse(chain.begin(), chain.end());
    for (const uint32_t link : chain)
        value = converted_once(program, link, value, is_backwards);
    return value;
}

uint32_t text_of_state(evaluator::Program *program, uint32_t converter, int32_t value)
{
    for (; converter != 0; converter = referred(program, converter + next_at)) {
        for (uint32_t i = 0; i < state_count(program, converter); ++i) {
            const uint32_t state = converter + states_at + i * state_size;
            const bool is_within =
                value >= number_at(program, state, 4) && value <= number_at(program, state + 4, 4);
            if (is_within) return referred(program, state + 8);
        }
    }
    return evaluator::place_text(program, std::to_string(value));
}

uint32_t convert(evaluator::Program *program, const evaluator::Words &words)
{
    constexpr uint32_t backwards = 1, as_text = 16;
    const uint32_t operand = words.size() > 2 ? words[2] : 0;
    const int32_t value =
        converted(program, words[1], static_cast<int32_t>(words[0]), (operand & backwards) != 0);
    const bool wants_text = (operand & as_text) != 0;
    return wants_text ? text_of_state(program, words[1], value) : static_cast<uint32_t>(value);
}

// An attribute of a converter; of several values of one, that of the index.
uint32_t attribute(evaluator::Program *program, const evaluator::Words &words)
{
    enum { NEXT = 1, MULTIPLIER = 2, DIVISOR = 3, OFFSET = 4, STATES = 7, LOW = 9, HIGH = 11 };
    const size_t count = words.size();
    const uint32_t item = words[count - 3];
    const uint32_t index = count > 3 ? words[0] : 0;
    const uint32_t state = item + states_at + index * state_size;
    const auto number = [&](uint32_t at) {
        return static_cast<uint32_t>(number_at(program, at, 4));
    };
    switch (words[count - 2]) {
    case NEXT:
        return referred(program, item + next_at);
    case MULTIPLIER:
        return number(item + multiplier_at);
    case DIVISOR:
        return number(item + divisor_at);
    case OFFSET:
        return number(item + offset_at);
    case STATES:
        return state_count(program, item);
    case LOW:
        return number(state);
    case HIGH:
        return number(state + 4);
    default:
        return 0;
    }
}

evaluator::Hooks hooks_of(const Job &job, const Run &run, Log *log)
{
    evaluator::Hooks hooks;
    if (!job.attributes.empty()) hooks = { { "CVT", convert }, { "ATTR", attribute } };
    for (const Module &module : job.modules) {
        for (const Routine &syscall : module.syscalls) {
            hooks[syscall.name] = [&job, &run, &syscall, log](evaluator::Program *program,
                                                              const evaluator::Words &words) {
                log->calls.push_back(shown_call(program, syscall, short_name(job, syscall), words));
                const size_t at = log->next_answer++;
                const int32_t answer = at < run.answers.size() ? run.answers[at] : 0;
                return answer_word(job, program, syscall.result, static_cast<uint32_t>(answer));
            };
        }
    }
    return hooks;
}

uint32_t argument_word(evaluator::Program *program, Kind kind, const std::string &stated)
{
    const std::string text = literal(stated);
    if (text[0] == '"') return evaluator::place_text(program, text.substr(1, text.size() - 2));
    const auto word = static_cast<uint32_t>(std::stoll(text, nullptr, 0));
    return kind == Kind::BYTE ? word << 24 : word;
}

std::string shown_result(evaluator::Program *program, Kind kind, const evaluator::Result &result)
{
    switch (result.outcome) {
    case evaluator::Outcome::RETURNED:
        return kind == Kind::NOTHING
                   ? "= 0"
                   : "= " + shown(program, kind, static_cast<uint32_t>(result.word));
    case evaluator::Outcome::STOPPED:
        return "stops";
    case evaluator::Outcome::RAISED:
        return "raises " + std::to_string(result.word) + ", " + std::to_string(result.argument);
    default:
        return failure + result.reason;
    }
}

bool is_syscall(const Job &job, const std::string &name)
{
    for (const Module &module : job.modules)
        if (find_routine(module.syscalls, name) != nullptr) return true;
    return false;
}

// What left the program: its syscalls by their types, anything else as the evaluator shows it.
std::string shown_calls(const Job &job, const evaluator::Result &result, const Log &log)
{
    std::string text;
    size_t next = 0;
    for (const std::string &call : result.calls) {
        const std::string name = call.substr(0, call.find('('));
        if (!job.attributes.empty() && (name == "CVT" || name == "ATTR")) continue;
        const bool is_typed = is_syscall(job, name);
        text += " " + (is_typed && next < log.calls.size() ? log.calls[next++] : call);
    }
    return text.empty() ? "" : " ; calls" + text;
}

std::string run_one(evaluator::Program program, const Job &job, const Run &run)
{
    const Module &module = job.modules.front();
    const std::string name = module.name + "." + run.function;
    const Routine *routine = find_routine(module.functions, name);
    if (routine == nullptr) return "no function " + name;
    evaluator::Words words;
    for (size_t i = 0; i < run.arguments.size(); ++i)
        words.push_back(argument_word(&program, routine->arguments[i].kind, run.arguments[i]));
    Log log;
    const evaluator::Result result =
        evaluator::run(&program, name, words, hooks_of(job, run, &log));
    return shown_result(&program, routine->result.kind, result) + shown_calls(job, result, log);
}

} // namespace

Outcomes run_evaluator(const Job &job, std::string *problem)
{
    std::vector<std::string> files;
    for (const Module &module : job.modules)
        files.push_back(module.folder + "/" + module.base + ".kob");
    evaluator::Program program = evaluator::link(files);
    evaluator::verify(&program);
    for (const std::string &text : program.problems)
        *problem += text + "\n";
    for (const evaluator::Finding &finding : program.findings)
        *problem += finding.function + ": " + finding.reason + "\n";
    Outcomes outcomes;
    for (const Run &run : job.runs)
        if (problem->empty()) outcomes.push_back(run_one(program, job, run));
    return outcomes;
}

} // namespace targets
