// A TOLL source with data sections, compiled for a test: the record of a section as text.
#pragma once

#include "tests/compiled_source.h"

class DataSource : public CompiledSource
{
public:
    using CompiledSource::CompiledSource;

    // What sections become: bytes in hexadecimal with a blank between; strings stand in quotes,
    // symbols as class:name/type, "->" is a jump to the section of that number; "|" opens a section,
    // with "even" if it starts on an even address.
    std::string record(const std::vector<const char *> &names) const
    {
        TLC_STREAM *stream = TLC_NewStream(module, 0);
        for (const char *name : names)
            generate(stream, name);
        std::string text;
        std::map<const TLC_PSECT *, int> numbers;
        for (TLC_PSECT *at = stream->code.head; at != nullptr; at = at->next)
            numbers.emplace(at, static_cast<int>(numbers.size()));
        for (TLC_PSECT *at = stream->code.head; at != nullptr; at = at->next)
            text += bytes_of(stream, at, numbers);
        for (const char *name : names)
            TLI_SetPSect(find(name), nullptr); // it ends with the stream
        TLC_DelStream(stream);
        return text.empty() ? text : text.substr(0, text.size() - 1);
    }

    std::string record(const char *name) const { return record(std::vector<const char *>{ name }); }

    // Java text of sections: the fields, then what constructs them.
    std::string java(const std::vector<const char *> &names) const
    {
        char *buffer = nullptr;
        size_t size = 0;
        FILE *file = open_memstream(&buffer, &size);
        TLC_STREAM *stream = TLC_NewJavaStream(file, module, 0);
        for (const char *name : names)
            generate(stream, name);
        TLC_NextPass(stream);
        for (const char *name : names)
            generate(stream, name);
        TLC_DelStream(stream);
        std::fclose(file);
        std::string result(buffer, size);
        std::free(buffer);
        return result;
    }

private:
    static uint32_t field_size(const TLC_FIXUP *fixup)
    {
        if (fixup->kind == TLC_FIXUP_JUMP) return 2;
        const bool is_mark =
            fixup->kind == TLC_FIXUP_SYMBOL && fixup->symbol_class != 1 && fixup->symbol_class != 6;
        return is_mark ? 0 : 4;
    }

    static std::string bytes_of(TLC_STREAM *stream, TLC_PSECT *section,
                                const std::map<const TLC_PSECT *, int> &numbers)
    {
        std::map<uint32_t, const TLC_FIXUP *> fields;
        std::string text = (section->align & TLC_EVEN) != 0 ? "|even " : "| ";
        for (TLC_FIXUP *fixup = section->fixups; fixup != nullptr; fixup = fixup->next) {
            if (field_size(fixup) == 0)
                text += describe(stream, fixup, numbers) + " ";
            else
                fields[fixup->offset] = fixup;
        }
        for (uint32_t at = 0; at < section->size;) {
            const auto field = fields.find(at);
            char byte[4];
            std::snprintf(byte, sizeof byte, "%02x ", section->code[at]);
            text += field == fields.end() ? byte : describe(stream, field->second, numbers) + " ";
            at += field == fields.end() ? 1 : field_size(field->second);
        }
        return text;
    }
};
