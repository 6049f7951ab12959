#pragma once

#include <cstddef>
#include <cstdint>

/**
 * Puts bytes into a file of this process's own, made anew at each call and removed at exit. The
 * process's working directory becomes the scratch directory that the file lies in.
 *
 * @param name  base name and extension of the file
 * @param data  the contents
 * @param size  number of bytes
 */
void write_scratch_file(const char *name, const uint8_t *data, size_t size);
