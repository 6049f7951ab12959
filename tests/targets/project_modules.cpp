// The modules of the example project for its program in C, run by the evaluator: what the generated C
// would define, with each syscall going to the function that the program sets for it.
#include <cstdio>
#include <cstdlib>

#include "evaluator.h"

extern "C" {
#include <tollrt.h>

#include "starting.h"
}

namespace
{

using evaluator::Program;
using evaluator::Words;

using TakesByte = INT (*)(INT);
using TakesNothing = INT (*)();
using TakesTime = void (*)(TIME);
using TakesText = void (*)(STRING, ...);

Program linked()
{
    Program program = evaluator::link({ "tester.kob", "starting.kob", "job.kob" });
    evaluator::verify(&program);
    for (const std::string &problem : program.problems)
        std::printf("%s\n", problem.c_str());
    if (!program.problems.empty() || !program.findings.empty()) std::exit(1);
    return program;
}

Program &modules()
{
    static Program program = linked();
    return program;
}

// An argument of one byte lies in the first byte of its word.
template <int number> uint32_t with_byte(Program *, const Words &words)
{
    const auto function = reinterpret_cast<TakesByte>(toll_syscall(number, ""));
    return static_cast<uint32_t>(function(static_cast<INT>(words[0] >> 24)));
}

template <int number> uint32_t with_nothing(Program *, const Words &)
{
    return static_cast<uint32_t>(reinterpret_cast<TakesNothing>(toll_syscall(number, ""))());
}

uint32_t pass_time(Program *, const Words &words)
{
    reinterpret_cast<TakesTime>(toll_syscall(34, ""))(static_cast<TIME>(words[0]));
    return 0;
}

uint32_t report_line(Program *program, const Words &words)
{
    const std::string text = evaluator::text_at(program, words[0]).value_or("no text");
    const int number = words.size() > 1 ? static_cast<int>(words[1]) : 0;
    reinterpret_cast<TakesText>(toll_syscall(48, ""))(text.c_str(), number);
    return 0;
}

int32_t call(Program *program, const char *function, const Words &arguments)
{
    static const evaluator::Hooks hooks = {
        { "TESTER.measure_voltage", with_byte<16> },
        { "TESTER.measure_current", with_nothing<17> },
        { "TESTER.measure_temperature", with_nothing<18> },
        { "TESTER.switch_lamps", with_byte<32> },
        { "TESTER.turn_starter", with_byte<33> },
        { "TESTER.wait", pass_time },
        { "TESTER.report", report_line },
    };
    const evaluator::Result result = evaluator::run(program, function, arguments, hooks);
    if (result.outcome == evaluator::Outcome::RETURNED) return result.word;
    std::printf("%s, line %u: %s\n", result.function.c_str(), result.line, result.reason.c_str());
    std::exit(1);
}

INT reading(uint32_t number)
{
    return call(&modules(), "JOB.reading", { number });
}

} // namespace

extern "C" VERDICT STARTING_check(READINGS *found)
{
    const int32_t verdict = call(&modules(), "JOB.check", {});
    *found = { reading(0), reading(1), reading(2), reading(3), reading(4) };
    return static_cast<VERDICT>(verdict);
}

extern "C" STRING STARTING_advice(VERDICT verdict)
{
    static std::string text;
    const auto word = static_cast<uint32_t>(verdict) << 24;
    const int32_t address = call(&modules(), "STARTING.advice", { word });
    text = evaluator::text_at(&modules(), static_cast<uint32_t>(address)).value_or("no text");
    return text.c_str();
}

// Asked for while a syscall of the modules is under way: in memory of its own.
extern "C" CURRENT STARTING_lamp_current(VOLTAGE supply)
{
    Program apart = linked();
    return call(&apart, "STARTING.lamp_current", { static_cast<uint32_t>(supply) });
}
