// Compiles synthetic modules of growing size and prints lines per second, peak memory, and how the
// time grows. Each compilation runs in a process of its own, so that one cannot warm another up and
// the peak is that of one module.
//
// usage: throughput [RUNS [FUNCTIONS]...]     default: 5 runs of 1000, 5000 and 20000 functions

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <ostrum.h>

namespace
{

struct MEASUREMENT {
    double seconds;
    int64_t peak_bytes; // above what the process held before it read the source
};

struct MODULE_SIZE {
    int64_t bytes;
    int64_t lines;
};

/** The 16 statements of a function; %d is its number, %p the number of a function before it. */
constexpr const char *statements[] = {
    "    x = a * 3 + y",
    "    y = (x - offset_%d) * (a + 7) / 5",
    "    u = v + 250mV",
    "    r = 4.7kR",
    "    i = u / r",
    "    z = x << 2 | y & 255 ^ 17",
    "    x = function_%p(z, u)",
    "    total = total + x MOD 100",
    "    u = function_v_%p(u * 2, i)",
    "    ok = x > y AND u < LIMIT OR NOT ok",
    "    table[x & 15] = y",
    "    y = table[3] - table[y & 15]",
    "    t = 20ms + 3 * t",
    "    function_%p(y + 1, 12V)",
    "    z = ~x + -y",
};

void put_statement(std::string *text, const char *statement, int number)
{
    for (const char *c = statement; *c != 0; c++) {
        if (*c != '%') {
            *text += *c;
            continue;
        }
        c++;
        *text += std::to_string(*c == 'd' ? number : std::max(number - 1, 0));
    }
    *text += '\n';
}

/** A function of INT and its sister of VOLTAGE; together they have 16 statements each. */
void put_function(std::string *text, int number, bool is_voltage)
{
    const char *suffix = is_voltage ? "v_" : "";
    *text += is_voltage ? "FUNCTION VOLTAGE function_" : "FUNCTION INT function_";
    *text += suffix + std::to_string(number);
    *text += is_voltage ? "(VOLTAGE v, CURRENT i)\n" : "(INT a, VOLTAGE v)\n";
    *text += is_voltage ? "VAR INT a, x, y, z, table[16]\n" : "VAR INT x, y, z, table[16]\n";
    *text += is_voltage ? "VAR VOLTAGE u\n" : "VAR VOLTAGE u\nVAR CURRENT i\n";
    *text += "VAR RESISTANCE r\nVAR TIME t\nVAR BOOL ok\nBEGIN\n";
    for (const char *statement : statements) {
        put_statement(text, statement, number);
    }
    *text += is_voltage ? "    RETURN u + v\nEND\n\n" : "    RETURN x + z\nEND\n\n";
}

std::string make_source(const std::string &name, int function_count)
{
    std::string text =
        "MODULE " + name + "\n\nCONST VOLTAGE LIMIT = 14.5V\n\nPRIVATE\n\nVAR INT total\n\n";
    text += "FORWARD FUNCTION INT function_0(INT a, VOLTAGE v)\n";
    text += "FORWARD FUNCTION VOLTAGE function_v_0(VOLTAGE v, CURRENT i)\n\n";
    for (int number = 0; number < function_count / 2; number++) {
        text +=
            "CONST INT offset_" + std::to_string(number) + " = " + std::to_string(number) + "\n";
    }
    for (int number = 0; number < function_count / 2; number++) {
        put_function(&text, number, false);
        put_function(&text, number, true);
    }
    return text;
}

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
    const bool is_done = compile(source.c_str(), "throughput.kob");
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
    fprintf(stderr, "throughput: %s does not compile\n", source.c_str());
    exit(1);
}

MODULE_SIZE write_source(const std::string &file, const std::string &name, int function_count)
{
    const std::string text = make_source(name, function_count);
    FILE *stream = fopen(file.c_str(), "w");
    if (stream == nullptr || fwrite(text.data(), 1, text.size(), stream) != text.size()) abort();
    fclose(stream);
    return { static_cast<int64_t>(text.size()), std::count(text.begin(), text.end(), '\n') };
}

/** The fastest of several runs: the one that the machine disturbed least. */
MEASUREMENT best_of(int runs, const std::string &source)
{
    MEASUREMENT best = run_once(source);
    for (int run = 1; run < runs; run++) {
        const MEASUREMENT next = run_once(source);
        if (next.seconds < best.seconds) best = next;
    }
    return best;
}

void print_row(int function_count, const MODULE_SIZE &size, const MEASUREMENT &best)
{
    printf("%9d %10lld %9.1f %11.0f %9.1f %9.1f\n", function_count, (long long)size.lines,
           best.seconds * 1e3, static_cast<double>(size.lines) / best.seconds,
           static_cast<double>(best.peak_bytes) / 1e6,
           static_cast<double>(best.peak_bytes) / static_cast<double>(size.bytes));
}

} // namespace

int main(int argument_count, char **arguments)
{
    const int runs = argument_count > 1 ? atoi(arguments[1]) : 5;
    std::vector<int> counts;
    for (int i = 2; i < argument_count; i++)
        counts.push_back(atoi(arguments[i]));
    if (counts.empty()) counts = { 1000, 5000, 20000 };

    char directory[] = "/tmp/throughput-XXXXXX";
    if (mkdtemp(directory) == nullptr || chdir(directory) != 0) return 1;
    printf("functions      lines        ms     lines/s   peak MB  peak/source\n");
    double previous_seconds = 0;
    int previous_count = 0;
    for (const int count : counts) {
        const std::string name = "synthetic_" + std::to_string(count);
        const MODULE_SIZE size = write_source(name + ".tl", name, count);
        const MEASUREMENT best = best_of(runs, name + ".tl");
        print_row(count, size, best);
        if (previous_count > 0) {
            printf("          %.1f times the functions take %.2f times as long\n",
                   static_cast<double>(count) / previous_count, best.seconds / previous_seconds);
        }
        previous_seconds = best.seconds;
        previous_count = count;
        unlink((name + ".tl").c_str());
    }
    unlink("throughput.kob");
    return rmdir(directory);
}
