// Fuzz target: source text of any content, compiled to a module file that must be sound and is run.
// The first byte of the input chooses flags; the rest is the source.

#include <cstdlib>
#include <vector>

#include <ostrum.h>

#include "scratch_file.h"
#include "tests/evaluator.h"

namespace
{

constexpr uint32_t module_flags[] = { 0, 0x0004, 0x0400, 0x0800, 0x4000, 0x4c04 };
constexpr uint32_t compile_flags[] = { 0, 0x02, 0x20, 0x200, 0x222 };

int32_t collect_section(void *context, const char *, TLP_SECTION *section, int32_t)
{
    static_cast<std::vector<TLP_SECTION *> *>(context)->push_back(section);
    return 1;
}

/** Parses all sections; true if a module may be generated. */
bool parse(TLP_MODULE *module)
{
    std::vector<TLP_SECTION *> sections;
    TLP_AllSections(module, collect_section, &sections);
    bool is_sound = true;
    for (TLP_SECTION *section : sections) {
        const int32_t status = TLP_ParseSection(module, section);
        if (status >= 2) is_sound = false;
        if (status >= 3) break;
    }
    return is_sound;
}

/** A module that the compiler wrote and the verifier does not believe is a fault of one of them. */
void demand_soundness(const evaluator::Program &program)
{
    for (const evaluator::Finding &finding : program.findings)
        fprintf(stderr, "%s+%u: %s\n", finding.function.c_str(), finding.offset,
                finding.reason.c_str());
    if (!program.findings.empty()) abort();
}

/** Runs each function by itself for a while, with zeros as arguments. */
void run(const evaluator::Program &program)
{
    static constexpr uint64_t instruction_limit = 2000;
    for (const auto &[address, function] : program.functions) {
        evaluator::Program copy = program;
        evaluator::run(&copy, function.name, {}, {}, instruction_limit);
    }
}

void verify_and_run(const char *module_file)
{
    evaluator::Program program = evaluator::link({ module_file });
    evaluator::verify(&program);
    demand_soundness(program);
    run(program);
}

void compile(uint8_t choice, int32_t read_mode, FILE *out)
{
    TLP_MODULE *module = nullptr;
    const uint32_t flags = module_flags[choice % std::size(module_flags)];
    TLT_ResetCounters();
    const int32_t status =
        TLP_ReadModule2(nullptr, "input.tl", &module, out, flags, read_mode, nullptr, "WORKSHOP");
    bool is_written = false;
    if (status < 3 && read_mode == 2 && parse(module) && status < 2) {
        const uint32_t choices = compile_flags[choice % std::size(compile_flags)];
        is_written = TLCG_GenerateKOBCode(module, choices, "input.kob", 0, "fuzz") == 0;
    }
    TLP_DelModule(module);
    if (is_written) verify_and_run("input.kob");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static FILE *out = fopen("/dev/null", "w");
    TLCG_Initialise();
    const uint8_t choice = size > 0 ? data[0] : 0;
    write_scratch_file("input.tl", data + (size > 0), size - (size > 0));
    compile(choice, 2, out);
    if (choice >= 128) compile(choice, 0, out);
    return 0;
}
