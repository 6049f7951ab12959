// Compiles synthetic modules of growing size and prints lines per second, peak memory, and how the
// time grows.
//
// usage: throughput [RUNS [FUNCTIONS]...]     default: 5 runs of 1000, 5000 and 20000 functions

#include "measure.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace
{

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

    if (!EnterScratchDirectory()) return 1;
    printf("functions      lines        ms     lines/s   peak MB  peak/source\n");
    double previous_seconds = 0;
    int previous_count = 0;
    for (const int count : counts) {
        const std::string name = "synthetic_" + std::to_string(count);
        const MODULE_SIZE size = WriteSource(name, make_source(name, count));
        const MEASUREMENT best = BestOf(runs, name);
        print_row(count, size, best);
        if (previous_count > 0) {
            printf("          %.1f times the functions take %.2f times as long\n",
                   static_cast<double>(count) / previous_count, best.seconds / previous_seconds);
        }
        previous_seconds = best.seconds;
        previous_count = count;
        RemoveSource(name);
    }
    LeaveScratchDirectory();
    return 0;
}
