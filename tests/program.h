// TOLL programs for tests of what a program means: compiled by the library, verified and run.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "evaluator.h"
#include "whole_module.h"

namespace program
{

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

// Compiles a source; gives the path of the module.
inline std::string compile(const std::string &source)
{
    constexpr uint32_t lines_and_checks = 0x202;
    const std::string target = (folder() / std::filesystem::path(source).stem()).string() + ".kob";
    TLP_MODULE *module = whole_module::read(source, stdout, 2);
    if (module != nullptr)
        TLCG_GenerateKOBCode(module, lines_and_checks, target.c_str(), 0, "test");
    whole_module::close(module);
    EXPECT_EQ(whole_module::errors, "") << source;
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
