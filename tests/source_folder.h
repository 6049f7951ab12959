// Source files in a folder of their own, which is the current one while the test runs, and the messages
// that reading them raises.
#pragma once

#include "frontend/tlp.h"
#include "scratch_folder.h"

#include <gtest/gtest.h>
#include <ostrum/tlt.h>
#include <string>

inline std::string folder_messages;

class SourceFolder : public ScratchFolder
{
protected:
    SourceFolder()
    {
        unsetenv("TollInclude");
        TLP_Initialise();
        folder_messages.clear();
        TLT_ResetCounters();
        TLT_DefaultMessageHandler([](TLT_STATEMENT *, int32_t level, const char *text) {
            folder_messages += std::to_string(level) + " " + text + "\n";
        });
    }

    ~SourceFolder() override
    {
        TLP_DelModule(module);
        TLT_DefaultMessageHandler(nullptr);
    }

    // Reads a file into the test's module, in place of the one before.
    int32_t read(const char *name, int32_t mode, uint32_t flags = 0, const char *defines = nullptr)
    {
        TLP_DelModule(module);
        module = nullptr;
        folder_messages.clear();
        return TLP_ReadModule2(nullptr, name, &module, stdout, flags, mode, nullptr, defines);
    }

    // Writes a file and reads it.
    int32_t read_text(const std::string &text, int32_t mode, uint32_t flags = 0,
                      const char *defines = nullptr)
    {
        write("m.tl", text);
        return read("m", mode, flags, defines);
    }

    // Sections as "name/type:statements;".
    std::string sections() const
    {
        std::string joined;
        TLP_AllSections(
            module,
            [](void *context, const char *name, TLP_SECTION *section, int32_t type) {
                *static_cast<std::string *>(context) +=
                    std::string(name) + "/" + std::to_string(type) + ":" +
                    std::to_string(section->statement_count) + ";";
                return 0;
            },
            &joined);
        return joined;
    }

    // Statements of a section as "source line,line:chars|".
    static std::string statements(TLP_SECTION *section)
    {
        std::string joined;
        TLP_AllStatements(
            section,
            [](void *context, TLT_STATEMENT *statement) {
                *static_cast<std::string *>(context) +=
                    std::to_string(TLT_StatementSourceLineNumber(statement)) + "," +
                    std::to_string(TLT_StatementLineNumber(statement)) + ":" +
                    TLT_StatementChars(statement) + "|";
                return 0;
            },
            &joined);
        return joined;
    }

    TLP_MODULE *module = nullptr;
};
