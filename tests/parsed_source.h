// A module whose statements are handed straight to the declaration parser, line by line, with the
// messages that they raise.
#pragma once

#include "frontend/tlp.h"

#include <algorithm>
#include <ostrum/tlcg.h>
#include <ostrum/tli.h>
#include <ostrum/tlt.h>
#include <string>
#include <vector>

inline std::vector<std::string> parsed_messages;

class ParsedSource
{
public:
    ParsedSource()
    {
        TLCG_Initialise();
        parsed_messages.clear();
        TLT_ResetCounters();
        TLT_DefaultMessageHandler([](TLT_STATEMENT *, int32_t level, const char *text) {
            if (level > TLT_LEVEL_INFORMATION) parsed_messages.push_back(text);
        });
        module = TLP_NewModule("M", nullptr);
        TLP_SetModuleName(module, "M");
        TLP_SetModuleOut(module, stdout);
        module->domain = TLI_NewDomain("M");
        module->globals = TLI_NewScope(module->domain, "GLOBALS", TLI_STATIC_SCOPE);
        TLI_PushScope(module->domain, module->globals);
        TLI_NewScopeIdentifier(module->globals, nullptr, "M", nullptr, nullptr);
    }

    ParsedSource(const ParsedSource &) = delete;
    ParsedSource &operator=(const ParsedSource &) = delete;

    ~ParsedSource()
    {
        TLP_DelModule(module);
        for (TLT_STATEMENT *statement : statements)
            TLT_DelStatement(statement);
        TLT_DefaultMessageHandler(nullptr);
    }

    // Parses lines until the parser stops; gives its last answer.
    int32_t parse(const std::string &lines)
    {
        int32_t answer = 0;
        size_t at = 0;
        while (at < lines.size() && answer == 0) {
            const size_t end = std::min(lines.find('\n', at), lines.size());
            const int32_t line = static_cast<int32_t>(statements.size()) + 1;
            statements.push_back(
                TLT_NewStatement(lines.substr(at, end - at).c_str(), "m.tl", line, line));
            answer = TLP_ParseStatement(module, statements.back());
            at = end + 1;
        }
        return answer;
    }

    // The messages above information so far, joined.
    std::string messages() const
    {
        std::string joined;
        for (const std::string &text : parsed_messages)
            joined += (joined.empty() ? "" : "|") + text;
        return joined;
    }

    TLI_IDENTIFIER *find(const char *name) const
    {
        return TLI_FindIdentifier(module->data_type_domain, module->domain, name);
    }

    TLP_MODULE *module;
    std::vector<TLT_STATEMENT *> statements;
};
