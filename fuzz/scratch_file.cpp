// Scratch files for the targets whose input the library reads by name.

#include "scratch_file.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <unistd.h>

namespace
{

char directory[] = "/tmp/ostrum-fuzz-XXXXXX";

void remove_directory()
{
    std::error_code ignored;
    std::filesystem::remove_all(directory, ignored);
}

void enter_directory()
{
    static bool is_made = false;
    if (is_made) return;
    if (mkdtemp(directory) == nullptr || chdir(directory) != 0) abort();
    atexit(remove_directory);
    is_made = true;
}

} // namespace

void write_scratch_file(const char *name, const uint8_t *data, size_t size)
{
    enter_directory();
    FILE *stream = fopen(name, "wb");
    if (stream == nullptr || fwrite(data, 1, size, stream) != size || fclose(stream) != 0) abort();
}
