// Measures whole compilations, each in a process of its own.
#pragma once

#include <cstdint>
#include <string>

struct MEASUREMENT {
    double seconds;
    int64_t peak_bytes; // above what the process held before it read the source
};

struct MODULE_SIZE {
    int64_t bytes;
    int64_t lines;
};

/**
 * Goes into a new directory below /tmp, where sources and module files go.
 * @return false if there can be none
 */
bool EnterScratchDirectory();

/** Removes the directory again, which has to be empty but for the module file. */
void LeaveScratchDirectory();

/**
 * Writes a source file of the scratch directory, or ends the process.
 * @param name of the module
 * @param text all of the source
 * @return its size
 */
MODULE_SIZE WriteSource(const std::string &name, const std::string &text);

/**
 * Compiles the source of a module several times. A source that does not compile without an error ends
 * the process.
 * @param runs how often, 1 or more
 * @param name of the module
 * @return the fastest run: the one that the machine disturbed least
 */
MEASUREMENT BestOf(int runs, const std::string &name);

/** Removes the source file of a module. */
void RemoveSource(const std::string &name);
