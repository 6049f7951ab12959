// Runs a fuzz target over files and the files of directories, without a fuzzing engine.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace
{

std::vector<std::filesystem::path> files_of(const char *name)
{
    const std::filesystem::path path = std::filesystem::absolute(name);
    if (!std::filesystem::is_directory(path)) return { path };
    std::vector<std::filesystem::path> files;
    for (const auto &entry : std::filesystem::directory_iterator(path)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

int main(int argument_count, char **arguments)
{
    std::vector<std::filesystem::path> files;
    for (int i = 1; i < argument_count; i++) {
        const auto more = files_of(arguments[i]);
        files.insert(files.end(), more.begin(), more.end());
    }
    for (const auto &path : files) {
        std::ifstream stream(path, std::ios::binary);
        const std::vector<char> bytes{ std::istreambuf_iterator<char>(stream), {} };
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
    }
    printf("%zu inputs\n", files.size());
    return files.empty() ? 1 : 0;
}
