// TOLL programs for tests of what a program means: compiled by the library, verified and run.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>
#include <ostrum.h>

#include "evaluator.h"

namespace program
{

enum : uint32_t { WITH_LINES = 0x02, WITH_DEBUG = 0x20, WITH_CHECKS = 0x200 };

inline std::string errors;

inline void keep_error(TLT_STATEMENT *statement, int32_t level, const char *text)
{
    if (level < 3) return;
    const int32_t line = statement == nullptr ? 0 : TLT_StatementSourceLineNumber(statement);
    errors += "line " + std::to_string(line) + ": " + text + "\n";
}

// A folder of this process for what it compiles, removed when the process ends.
struct Folder {
    std::filesystem::path path;

    Folder() : path(testing::TempDir())
    {
        path /= "ostrum_programs_" + std::to_string(getpid());
        std::filesystem::create_directories(path);
    }
    ~Folder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;
};

inline const std::filesystem::path &folder()
{
    static const Folder kept;
    return kept.path;
}

// Compiles a source with all its functions in the symbols; gives the path of the module.
inline std::string compile(const std::string &source, uint32_t flags = WITH_LINES | WITH_CHECKS,
                           int32_t read_mode = 2)
{
    constexpr uint32_t private_symbols = 0x0004;
    const std::string target = (folder() / std::filesystem::path(source).stem()).string() + ".kob";
    errors.clear();
    TLCG_Initialise();
    TLT_ResetCounters();
    TLT_DefaultMessageHandler(keep_error);
    TLP_MODULE *module = nullptr;
    TLP_ReadModule2(nullptr, source.c_str(), &module, stdout, private_symbols, read_mode, nullptr,
                    nullptr);
    if (module != nullptr) {
        std::vector<TLP_SECTION *> sections;
        TLP_AllSections(
            module,
            [](void *context, const char *, TLP_SECTION *section, int32_t) {
                static_cast<std::vector<TLP_SECTION *> *>(context)->push_back(section);
                return 1;
            },
            &sections);
        for (TLP_SECTION *section : sections)
            TLP_ParseSection(module, section);
        TLCG_GenerateKOBCode(module, flags, target.c_str(), 0, "test");
    }
    TLP_DelModule(module);
    TLT_DefaultMessageHandler(nullptr);
    EXPECT_EQ(errors, "") << source;
    return target;
}

// Links modules and verifies every function of them; what is not sound fails the test.
inline evaluator::Program link_sound(const std::vector<std::string> &modules)
{
    evaluator::Program linked = evaluator::link(modules);
    evaluator::verify(&linked);
    for (const std::string &problem : linked.problems)
        ADD_FAILURE() << problem;
    for (const evaluator::Finding &finding : linked.findings)
        ADD_FAILURE() << finding.function << " at " << finding.offset << ": " << finding.reason;
    return linked;
}

// A single module is sound in itself; what it refers to may be missing.
inline void expect_sound(const std::string &module)
{
    const evaluator::Program linked = link_sound({ module });
    ASSERT_EQ(linked.images.size(), 1u);
    EXPECT_GE(linked.functions.size(), linked.images[0].functions.size());
}

// Compiles the text of a module M and runs a function of it.
inline evaluator::Result run_text(const std::string &text, const std::string &function,
                                  const evaluator::Words &arguments = {},
                                  const evaluator::Hooks &hooks = {})
{
    const std::string source = (folder() / "m.tl").string();
    std::ofstream(source, std::ios::binary) << "MODULE M\n" << text;
    evaluator::Program linked = link_sound({ compile(source) });
    return evaluator::run(&linked, "M." + function, arguments, hooks);
}

// The same for a function that is to return, for its value.
inline int32_t run_program(const std::string &text, const std::string &function,
                           const evaluator::Words &arguments = {})
{
    const evaluator::Result result = run_text(text, function, arguments);
    EXPECT_EQ(result.outcome, evaluator::Outcome::RETURNED) << result.reason;
    return result.word;
}

} // namespace program
