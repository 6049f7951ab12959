// Make rules of toll.

#include "toll_dependencies.h"

#include <set>

namespace
{

/** A path as make reads it: a blank, '#' and '$' do not stand for themselves. */
std::string escaped(const std::string &path)
{
    std::string text;
    for (const char c : path) {
        if (c == ' ' || c == '#') text += '\\';
        if (c == '$') text += '$';
        text += c;
    }
    return text;
}

} // namespace

std::string dependency_rule(const std::vector<std::string> &outputs,
                            const std::vector<std::string> &sources)
{
    std::string rule;
    for (const std::string &output : outputs)
        rule += (rule.empty() ? "" : " ") + escaped(output);
    rule += ':';
    std::set<std::string> named;
    for (const std::string &source : sources) {
        if (named.insert(source).second) rule += " \\\n  " + escaped(source);
    }
    return rule + '\n';
}
