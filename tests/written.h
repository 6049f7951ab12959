// What is written to a stream, and what a file holds, as text.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

template <typename WRITE> std::string written(WRITE write)
{
    char *buffer = nullptr;
    size_t size = 0;
    FILE *stream = open_memstream(&buffer, &size);
    write(stream);
    std::fclose(stream);
    const std::string text(buffer, size);
    std::free(buffer);
    return text;
}

inline std::string content_of(const std::string &path)
{
    std::ifstream stream(path, std::ios::binary);
    return { std::istreambuf_iterator<char>(stream), {} };
}
