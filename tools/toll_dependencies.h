// What an output is made from, for build systems.
#pragma once

#include <string>
#include <vector>

/**
 * Forms a make rule without commands, as build systems read it.
 *
 * @param outputs  paths of the files made
 * @param sources  paths of the files read; one that comes again is named once
 * @return         "OUTPUT...: SOURCE...", each source on a line of its own
 */
std::string dependency_rule(const std::vector<std::string> &outputs,
                            const std::vector<std::string> &sources);
