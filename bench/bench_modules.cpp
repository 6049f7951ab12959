// Module writing and reading: symbols and code laid into a file, and the file opened again.

#include <benchmark/benchmark.h>
#include <ostrum.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{

constexpr const char *file_name = "/tmp/ostrum_bench_module.kob";
constexpr int32_t class_global = 0;

std::vector<std::string> make_names(int64_t count)
{
    std::vector<std::string> names;
    for (int64_t i = 0; i < count; i++)
        names.push_back("M.function_" + std::to_string(i));
    return names;
}

bool write_module(const std::vector<std::string> &names)
{
    KOB_MODULE *module = nullptr;
    if (KOB_NewNameModule(&module, file_name, 0, "bench", "M") != 0) return false;
    const uint8_t code[32] = {};
    for (const std::string &name : names) {
        const int32_t offset = KOB_Code(module, code, sizeof code);
        KOB_Symbol(module, class_global, name.c_str(), "CODE", offset);
    }
    return KOB_CloseModule(module, 0, 1) == 0;
}

void write(benchmark::State &state)
{
    KOB_Initialise();
    const std::vector<std::string> names = make_names(state.range(0));
    for (auto _ : state) {
        if (!write_module(names)) state.SkipWithError("cannot be written");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    unlink(file_name);
}

void read(benchmark::State &state)
{
    KOB_Initialise();
    if (!write_module(make_names(state.range(0)))) state.SkipWithError("cannot be written");
    for (auto _ : state) {
        KOB_MODULE *module = nullptr;
        if (KOB_OpenModule(&module, file_name) != 0) state.SkipWithError("cannot be read");
        KOB_CloseModule(module, 0, 1);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    unlink(file_name);
}

} // namespace

BENCHMARK(write)->Range(1 << 8, 1 << 14);
BENCHMARK(read)->Range(1 << 8, 1 << 14);
