// Modules read and parsed with all their sections, and what is said of them.
#pragma once

#include <cstdio>
#include <string>

#include <ostrum.h>

namespace whole_module
{

inline std::string errors;

inline void keep_error(TLT_STATEMENT *statement, int32_t level, const char *text)
{
    if (level < 3) return;
    const int32_t line = statement == nullptr ? 0 : TLT_StatementSourceLineNumber(statement);
    errors += "line " + std::to_string(line) + ": " + text + "\n";
}

inline int32_t parse(void *module, const char *, TLP_SECTION *section, int32_t)
{
    TLP_ParseSection(static_cast<TLP_MODULE *>(module), section);
    return 1;
}

// Reads a source, with all its functions in the symbols; null if that fails. Errors are kept until
// the next one.
inline TLP_MODULE *read(const std::string &source, FILE *listing, int32_t read_mode)
{
    constexpr uint32_t private_symbols = 0x0004;
    errors.clear();
    TLCG_Initialise();
    TLT_ResetCounters();
    TLT_DefaultMessageHandler(keep_error);
    TLP_MODULE *module = nullptr;
    TLP_ReadModule2(nullptr, source.c_str(), &module, listing, private_symbols, read_mode, nullptr,
                    nullptr);
    if (module != nullptr) TLP_AllSections(module, parse, module);
    return module;
}

inline void close(TLP_MODULE *module)
{
    TLP_DelModule(module);
    TLT_DefaultMessageHandler(nullptr);
}

} // namespace whole_module
