// Name tables: entry, search and deletion while the process holds many names.

#include <benchmark/benchmark.h>
#include <ostrum.h>
#include <string>
#include <vector>

namespace
{

std::vector<std::string> make_names(int64_t count)
{
    std::vector<std::string> names;
    for (int64_t i = 0; i < count; i++)
        names.push_back("name_" + std::to_string(i * 7919));
    return names;
}

void search(benchmark::State &state)
{
    HS_Initialise();
    const std::vector<std::string> names = make_names(state.range(0));
    HS_DOMAIN *domain = HS_NewDomain();
    for (const std::string &name : names)
        HS_NewName(domain, name.c_str(), 1);
    size_t next = 0;
    for (auto _ : state) {
        intptr_t value = 0;
        benchmark::DoNotOptimize(HS_FindName(domain, names[next].c_str(), &value));
        next = next + 1 < names.size() ? next + 1 : 0;
    }
    HS_DelDomain(domain);
}

/** A domain with a few names made and deleted, as for the scope of a function. */
void scope(benchmark::State &state)
{
    HS_Initialise();
    const std::vector<std::string> names = make_names(state.range(0));
    HS_DOMAIN *others = HS_NewDomain();
    for (const std::string &name : names)
        HS_NewName(others, name.c_str(), 1);
    for (auto _ : state) {
        HS_DOMAIN *domain = HS_NewDomain();
        for (const char *name : { "a", "value", "limit", "x", "total" })
            HS_NewName(domain, name, 1);
        HS_DelDomain(domain);
    }
    HS_DelDomain(others);
}

} // namespace

BENCHMARK(search)->Range(1 << 10, 1 << 20);
BENCHMARK(scope)->Range(1 << 10, 1 << 20);
