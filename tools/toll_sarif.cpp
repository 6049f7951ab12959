// SARIF 2.1.0 logs of toll.

#include "toll_sarif.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace
{

using nlohmann::ordered_json;

// By the library's levels.
constexpr const char *level_words[] = { "note", "note", "warning", "error", "error" };

std::string dump(const ordered_json &record, int indent)
{
    // Sources are 8-bit text of any content; a byte that is no UTF-8 becomes U+FFFD.
    return record.dump(indent, ' ', false, ordered_json::error_handler_t::replace);
}

bool stands_in_uri(char c)
{
    const bool is_letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    const bool is_digit = c >= '0' && c <= '9';
    return is_letter || is_digit || std::string{ "/-_.~" }.find(c) != std::string::npos;
}

/** A path as a URI reference; a relative one stays relative. */
std::string uri_of(const std::string &path)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string uri = path.front() == '/' ? "file://" : "";
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (stands_in_uri(c)) {
            uri += c;
        } else {
            uri += { '%', digits[byte >> 4], digits[byte & 15] };
        }
    }
    return uri;
}

/** Characters of UTF-8 text: bytes that continue one do not count. */
int64_t count_characters(const std::string &text)
{
    return std::count_if(text.begin(), text.end(),
                         [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; });
}

} // namespace

std::string sarif_result(const SARIF_MESSAGE &message)
{
    ordered_json result;
    result["level"] = level_words[message.level];
    result["message"]["text"] = message.text;
    if (message.file.empty()) return dump(result, -1);
    ordered_json place;
    place["artifactLocation"]["uri"] = uri_of(message.file);
    if (message.line > 0) {
        place["region"]["startLine"] = message.line;
        place["region"]["startColumn"] = count_characters(message.before) + 1;
    }
    result["locations"][0]["physicalLocation"] = place;
    return dump(result, -1);
}

std::string sarif_log(const std::vector<std::string> &results, bool is_done)
{
    ordered_json run;
    run["tool"]["driver"]["name"] = "toll";
    run["tool"]["driver"]["version"] = OSTRUM_VERSION;
    run["invocations"][0]["executionSuccessful"] = is_done;
    run["columnKind"] = "unicodeCodePoints";
    run["results"] = ordered_json::array();
    for (const std::string &result : results)
        run["results"].push_back(ordered_json::parse(result));
    ordered_json log;
    log["$schema"] = "https://json.schemastore.org/sarif-2.1.0.json";
    log["version"] = "2.1.0";
    log["runs"][0] = run;
    return dump(log, 2) + '\n';
}
