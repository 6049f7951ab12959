// Scanner: one statement cut into its tokens.

#include <benchmark/benchmark.h>
#include <ostrum.h>

namespace
{

constexpr int32_t end_of_line = 78;

void scan(benchmark::State &state, const char *text)
{
    TLT_Initialise();
    TLT_STATEMENT *statement = TLT_NewStatement(text, "bench.tl", 1, 1);
    int64_t token_count = 0;
    for (auto _ : state) {
        TLT_ResetStatement(statement, 0);
        while (TLT_GetToken(statement, nullptr) != end_of_line)
            token_count++;
    }
    state.SetItemsProcessed(token_count);
    TLT_DelStatement(statement);
}

} // namespace

BENCHMARK_CAPTURE(scan, names, "    total = measured + offset * factor - last_value");
BENCHMARK_CAPTURE(scan, quantities, "    u = 1.5V + 250mV * 3 / 0x1F");
BENCHMARK_CAPTURE(scan, keywords, "FUNCTION VOID check(CONST INT value) AND NOT OR MOD");
BENCHMARK_CAPTURE(scan, comment,
                  "    x = 1  ; a comment of a length that people write behind a line");
