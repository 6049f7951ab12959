// Messages in the format that services for code review read: SARIF 2.1.0.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/** What a message says and where. */
struct SARIF_MESSAGE {
    int32_t level; // of the library, 0 to 4
    std::string text;
    std::string file;   // path as shown; empty: none
    int32_t line;       // from 1; 0: the message is about the file
    std::string before; // what stands on the line before the place
};

/** Forms one result of a log, as JSON text. */
std::string sarif_result(const SARIF_MESSAGE &message);

/**
 * Forms the log of a run.
 *
 * @param results  from sarif_result, in order
 * @param is_done  true if everything asked for was done
 * @return         the log, JSON text with its line end
 */
std::string sarif_log(const std::vector<std::string> &results, bool is_done);
