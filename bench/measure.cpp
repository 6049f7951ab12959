// Compilations as toll does them, from opening the source to the closed module file and the freed
// module. A process for each, so that one cannot warm another up and the peak is that of one module.
#include "measure.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <ostrum.h>

namespace
{

constexpr const char *module_file = "measured.kob";

std::string scratch_directory;

int32_t collect_section(void *context, const char *, TLP_SECTION *section, int32_t)
{
    static_cast<std::vector<TLP_SECTION *> *>(context)->push_back(section);
    return 1;
}

void show_message(TLT_STATEMENT *statement, int32_t level, const char *text)
{
    if (level > 1) TLT_PrintMessage(stderr, statement, level, text);
}

/** Compiles as toll does: sections, parse, module file. False if anything was wrong. */
bool compile(const char *source, const char *output)
{
    TLP_MODULE *module = nullptr;
    if (TLP_ReadModule2(nullptr, source, &module, stdout, 0, 2, nullptr, nullptr) > 1) return false;
    std::vector<TLP_SECTION *> sections;
    TLP_AllSections(module, collect_section, &sections);
    for (TLP_SECTION *section : sections) {
        if (TLP_ParseSection(module, section) > 1) return false;
    }
    const int32_t result = TLCG_GenerateKOBCode(module, 0, output, 0, OSTRUM_VERSION);
    TLP_DelModule(module);
    int32_t errors = 0;
    return result == 0 && TLT_GetCounters(nullptr, nullptr, &errors) == 1 && errors == 0;
}

int64_t peak_memory()
{
    struct rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return int64_t{ usage.ru_maxrss } * 1024;
}

/** The child's part: compiles once and sends the measurement through the pipe. */
[[noreturn]] void measure(const std::string &source, int out)
{
    TLCG_Initialise();
    TLT_DefaultMessageHandler(show_message);
    MEASUREMENT measurement = {};
    const int64_t before = peak_memory();
    const auto start = std::chrono::steady_clock::now();
    const bool is_done = compile(source.c_str(), module_file);
    measurement.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    measurement.peak_bytes = peak_memory() - before;
    const bool is_sent = write(out, &measurement, sizeof measurement) == sizeof measurement;
    _exit(is_done && is_sent ? 0 : 1);
}

MEASUREMENT run_once(const std::string &source)
{
    int ends[2] = {};
    if (pipe(ends) != 0) abort();
    const pid_t child = fork();
    if (child == 0) measure(source, ends[1]);
    MEASUREMENT measurement = {};
    int status = 0;
    const bool is_read = read(ends[0], &measurement, sizeof measurement) == sizeof measurement;
    waitpid(child, &status, 0);
    close(ends[0]);
    close(ends[1]);
    if (is_read && status == 0) return measurement;
    fprintf(stderr, "%s does not compile\n", source.c_str());
    exit(1);
}

} // namespace

bool EnterScratchDirectory()
{
    char directory[] = "/tmp/throughput-XXXXXX";
    if (mkdtemp(directory) == nullptr || chdir(directory) != 0) return false;
    scratch_directory = directory;
    return true;
}

void LeaveScratchDirectory()
{
    unlink(module_file);
    rmdir(scratch_directory.c_str());
}

MODULE_SIZE WriteSource(const std::string &name, const std::string &text)
{
    FILE *stream = fopen((name + ".tl").c_str(), "w");
    if (stream == nullptr || fwrite(text.data(), 1, text.size(), stream) != text.size()) abort();
    fclose(stream);
    return { static_cast<int64_t>(text.size()), std::count(text.begin(), text.end(), '\n') };
}

MEASUREMENT BestOf(int runs, const std::string &name)
{
    MEASUREMENT best = run_once(name + ".tl");
    for (int run = 1; run < runs; run++) {
        const MEASUREMENT next = run_once(name + ".tl");
        if (next.seconds < best.seconds) best = next;
    }
    return best;
}

void RemoveSource(const std::string &name)
{
    unlink((name + ".tl").c_str());
}
