// Expression parser: an expression parsed, checked, folded and deleted.

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <ostrum.h>
#include <string>
#include <unistd.h>

namespace
{

constexpr int32_t use_value = 0;
constexpr int32_t end_of_line = 78;

constexpr const char *declarations = "MODULE bench_names\nCONST INT LIMIT = 100\nPRIVATE\n"
                                     "VAR INT x, y, table[10]\nVAR VOLTAGE u\nVAR RESISTANCE r\n"
                                     "FORWARD FUNCTION INT f(INT a, VOLTAGE v)\n";

/** A module whose names the expressions use. */
TLP_MODULE *read_declarations()
{
    TLCG_Initialise();
    char directory[] = "/tmp/ostrum-bench-XXXXXX";
    if (mkdtemp(directory) == nullptr) abort();
    const std::string path = std::string{ directory } + "/bench_names.tl";
    FILE *stream = fopen(path.c_str(), "w");
    if (stream == nullptr) abort();
    fputs(declarations, stream);
    fclose(stream);
    TLP_MODULE *module = nullptr;
    if (TLP_ReadModule2(nullptr, path.c_str(), &module, stdout, 0, 0, nullptr, nullptr) > 1)
        abort();
    unlink(path.c_str());
    rmdir(directory);
    return module;
}

void parse(benchmark::State &state, const char *text)
{
    static TLP_MODULE *module = read_declarations();
    TLT_STATEMENT *statement = TLT_NewStatement(text, "bench_names.tl", 1, 1);
    for (auto _ : state) {
        TLT_ResetStatement(statement, 0);
        TLE_TERM *expression = TLE_ParseExpression(module, statement, use_value, end_of_line);
        if (TLE_ExpressionType(expression) == nullptr) state.SkipWithError("does not parse");
        TLE_DelExpression(expression);
    }
    TLT_DelStatement(statement);
}

} // namespace

BENCHMARK_CAPTURE(parse, arithmetic, "x * 3 + y - (x << 2)");
BENCHMARK_CAPTURE(parse, subscripts, "table[x & 7] + table[3]");
BENCHMARK_CAPTURE(parse, quantities, "u / r");
BENCHMARK_CAPTURE(parse, call, "f(x + 1, u * 2)");
BENCHMARK_CAPTURE(parse, constants, "LIMIT * 3 + 4 * 5 - 6");
