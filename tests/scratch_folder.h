// A folder of its own for a test, which is the current one while the test runs.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

class ScratchFolder : public testing::Test
{
protected:
    ScratchFolder()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "ostrum-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) std::abort();
        folder = pattern;
        std::filesystem::current_path(folder);
    }

    ~ScratchFolder() override
    {
        std::filesystem::current_path("/");
        std::filesystem::remove_all(folder);
    }

    static void write(const std::string &name, const std::string &content)
    {
        std::ofstream(name, std::ios::binary) << content;
    }

    std::filesystem::path folder;
};
