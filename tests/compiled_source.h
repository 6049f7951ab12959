// A TOLL source compiled for a test: its messages, and the code of its functions as text.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "codegen/tlc.h"
#include "program.h"
#include "stmt/tls.h"
#include "written.h"
#include <ostrum.h>

// Columns of an indent; tabs keep the line within what the scanner takes.
inline std::string indent(int columns)
{
    return std::string(static_cast<size_t>(columns / 8), '\t') +
           std::string(static_cast<size_t>(columns % 8), ' ');
}

class CompiledSource
{
public:
    // Reads and parses MODULE M; the text stands behind the line with MODULE.
    explicit CompiledSource(const std::string &text, uint32_t flags = 0) : flags(flags)
    {
        TLP_Initialise();
        TLT_ResetCounters();
        current = this;
        TLT_DefaultMessageHandler(collect);
        std::string path = write("MODULE M\n" + text);
        status = TLP_ReadModule2(nullptr, path.c_str(), &module, stdout, flags, TLP_READ_SECTIONS,
                                 nullptr, nullptr);
        if (module != nullptr) TLP_AllSections(module, parse, module);
    }

    ~CompiledSource()
    {
        verify_module();
        TLP_DelModule(module);
        TLT_DefaultMessageHandler(nullptr);
    }

    CompiledSource(const CompiledSource &) = delete;
    CompiledSource &operator=(const CompiledSource &) = delete;

    // One "line level text" for each message, each ended by a new line.
    std::string messages;
    TLP_MODULE *module = nullptr;
    int32_t status = 0;

    TLI_IDENTIFIER *find(const char *name) const
    {
        return TLI_FindIdentifier(TLP_DataTypeDomain(module), TLP_ModuleDomain(module), name);
    }

    // P-code of one function: mnemonics and operands with a blank between; "|" opens a section,
    // jumps name the section by its number from 0, symbols stand as class:name, strings in quotes.
    std::string code(const char *function) const
    {
        TLC_STREAM *stream = TLC_NewStream(module, flags);
        generate(stream, function);
        std::string text = list(stream, stream->code.head);
        TLC_DelStream(stream);
        return text;
    }

    // The same without the opening, the sections and the end of a VOID function.
    std::string body(const char *function) const
    {
        std::string text;
        std::string all = code(function);
        for (size_t i = 0; i < all.size(); ++i) {
            if (all[i] == '|') {
                ++i;
            } else {
                text += all[i];
            }
        }
        cut_front(&text, "ALLOC");
        size_t end = text.rfind("0 RET ");
        if (end != std::string::npos && end + 6 == text.size()) text.resize(end);
        while (!text.empty() && text.back() == ' ')
            text.pop_back();
        return text;
    }

    // Text of one function's statements for C (target 1) or Java (2).
    std::string text(const char *function, int32_t target) const
    {
        return written([&](FILE *file) {
            TLC_STREAM *stream = target == TLC_TARGET_C ? TLC_NewCStream(file, module, flags)
                                                        : TLC_NewJavaStream(file, module, flags);
            generate_body(stream, function);
            TLC_DelStream(stream);
        });
    }

    // Generates one function with its scope pushed, as the generators do.
    void generate(TLC_STREAM *stream, const char *function) const
    {
        TLI_IDENTIFIER *identifier = find(function);
        ASSERT_NE(identifier, nullptr) << function << "\n" << messages;
        ASSERT_NE(TLIV_GetFunctionBlock(identifier), nullptr) << function << "\n" << messages;
        TLIV_PushScope(TLP_ModuleDomain(module), identifier);
        TLS_BlockCode(stream, TLIV_GetFunctionBlock(identifier));
        TLIV_PopScope(TLP_ModuleDomain(module), identifier);
    }

protected:
    // What a fix-up stands for, as code() shows it.
    static std::string describe(TLC_STREAM *stream, const TLC_FIXUP *fixup,
                                const std::map<const TLC_PSECT *, int> &numbers)
    {
        if (fixup->kind == TLC_FIXUP_JUMP) {
            auto *jump = reinterpret_cast<const TLC_JUMP_FIXUP *>(fixup);
            auto *node = static_cast<TLS_STATEMENT *>(TLIC_NodeData(jump->node));
            const TLC_PSECT *target = node == nullptr ? jump->target : TLSS_NodePSect(node);
            return "->" + std::to_string(numbers.at(target));
        }
        if (fixup->kind == TLC_FIXUP_STRING) {
            auto *string = reinterpret_cast<const TLC_STRING_FIXUP *>(fixup);
            auto *pool = reinterpret_cast<const char *>(stream->string_section->code);
            return "\"" + std::string(pool + string->string_offset) + "\"";
        }
        if (fixup->kind == TLC_FIXUP_STATIC) return "static";
        auto *symbol = reinterpret_cast<const TLC_SYMBOL_FIXUP *>(fixup);
        char buffer[TLC_SYMBOL_NAME_SIZE];
        const char *name = symbol->identifier == nullptr
                               ? symbol->name
                               : TLC_IdentifierSymbol(symbol->identifier, buffer);
        return std::to_string(fixup->symbol_class) + ":" + name + "/" +
               TLI_IdentifierName(symbol->type);
    }

private:
    static inline CompiledSource *current = nullptr;
    uint32_t flags;

    // Whatever a test looks at, the module of a source without errors is a sound one.
    void verify_module() const
    {
        const bool has_errors =
            messages.find(" 3 ") != std::string::npos || messages.find(" 4 ") != std::string::npos;
        if (module == nullptr || has_errors) return;
        TLCG_Initialise();
        TLT_ResetCounters();
        constexpr uint32_t private_symbols = 0x0004;
        TLP_SetModuleFlags(module, private_symbols);
        const std::string path = (program::folder() / "m.kob").string();
        ASSERT_EQ(TLCG_GenerateKOBCode(module, flags, path.c_str(), 0, "test"), 0);
        if (std::filesystem::exists(path)) program::expect_sound(path);
    }

    static std::string write(const std::string &text)
    {
        std::ofstream(program::folder() / "m.tl", std::ios::binary) << text;
        return (program::folder() / "m.tl").string();
    }

    static void collect(TLT_STATEMENT *statement, int32_t level, const char *text)
    {
        int32_t line = statement == nullptr ? 0 : TLT_StatementSourceLineNumber(statement);
        current->messages += std::to_string(line) + " " + std::to_string(level) + " " + text + "\n";
    }

    static int32_t parse(void *context, const char *, TLP_SECTION *section, int32_t)
    {
        TLP_ParseSection(static_cast<TLP_MODULE *>(context), section);
        return 1;
    }

    // The statements of a function's body, without its head.
    void generate_body(TLC_STREAM *stream, const char *function) const
    {
        TLI_IDENTIFIER *identifier = find(function);
        ASSERT_NE(identifier, nullptr) << function << "\n" << messages;
        TLS_BLOCK *root = TLIV_GetFunctionBlock(identifier);
        ASSERT_NE(root, nullptr) << function << "\n" << messages;
        TLIV_PushScope(TLP_ModuleDomain(module), identifier);
        TLS_BlockCode(stream, reinterpret_cast<TLS_FUNCTION *>(root->head)->body);
        TLIV_PopScope(TLP_ModuleDomain(module), identifier);
    }

    static void cut_front(std::string *text, const std::string &word)
    {
        if (text->rfind(word, 0) != 0) return;
        size_t at = text->find(' ', word.size() + 1);
        text->erase(0, at == std::string::npos ? at : at + 1);
    }

    static std::string list(TLC_STREAM *stream, TLC_PSECT *first)
    {
        std::map<const TLC_PSECT *, int> numbers;
        for (TLC_PSECT *at = first; at != nullptr; at = at->next) {
            numbers.emplace(at, static_cast<int>(numbers.size()));
        }
        std::string text;
        for (TLC_PSECT *at = first; at != nullptr; at = at->next) {
            text += "| " + list_section(stream, at, numbers);
        }
        return text;
    }

    static int64_t operand(const uint8_t *bytes, int32_t size)
    {
        int64_t value = static_cast<int8_t>(bytes[0]);
        for (int32_t i = 1; i < size; ++i)
            value = value * 256 + bytes[i];
        return value;
    }

    static std::string list_section(TLC_STREAM *stream, TLC_PSECT *section,
                                    const std::map<const TLC_PSECT *, int> &numbers)
    {
        std::map<uint32_t, std::string> places;
        for (TLC_FIXUP *at = section->fixups; at != nullptr; at = at->next) {
            places[at->offset] = describe(stream, at, numbers);
        }
        EEP_MODULE *codes = TLP_SyscallData(TLC_Module(stream));
        std::string text;
        uint32_t at = 0;
        while (at < section->size) {
            int32_t kind = 0;
            int32_t size = 0;
            if (places.count(at) != 0) text += places[at] + " ";
            text += std::string(EEP_Mnemonic(codes, section->code[at], &kind, &size)) + " ";
            ++at;
            if (size == 0) continue;
            bool is_place = places.count(at) != 0;
            bool is_static = is_place && places[at] == "static";
            if (is_place) text += places[at] + (is_static ? "+" : " ");
            if (!is_place || is_static) {
                text += std::to_string(operand(section->code + at, size)) + " ";
            }
            at += static_cast<uint32_t>(size);
        }
        if (section->size == 0 && places.count(0) != 0) text += places[0] + " ";
        return text;
    }
};

// What a source gives: its messages, or the code of F. FRAME puts a text into a whole source.
struct SourceRow {
    std::string source;
    std::string expected;
};

using SourceRows = std::vector<SourceRow>;

template <typename FRAME> void expect_messages(FRAME frame, const SourceRows &rows)
{
    for (const SourceRow &row : rows)
        EXPECT_EQ(CompiledSource(frame(row.source)).messages, row.expected) << row.source;
}

template <typename FRAME> void expect_code(FRAME frame, const SourceRows &rows)
{
    for (const SourceRow &row : rows) {
        CompiledSource source(frame(row.source));
        EXPECT_EQ(source.code("F"), row.expected) << row.source << "\n" << source.messages;
    }
}

template <typename FRAME> void expect_body(FRAME frame, const SourceRows &rows)
{
    for (const SourceRow &row : rows) {
        CompiledSource source(frame(row.source));
        EXPECT_EQ(source.body("F"), row.expected) << row.source << "\n" << source.messages;
    }
}

template <typename FRAME> void expect_text(FRAME frame, int32_t target, const SourceRows &rows)
{
    for (const SourceRow &row : rows) {
        CompiledSource source(frame(row.source));
        EXPECT_EQ(source.text("F", target), row.expected) << row.source << "\n" << source.messages;
    }
}
