// What a module file holds, read back: numbers, and a line of text for each symbol and frame.
#pragma once

#include <gtest/gtest.h>
#include <ostrum/kob.h>
#include <ostrum/kobd.h>
#include <string>
#include <vector>

struct ModuleContents {
    std::vector<int> code;
    std::vector<int> static_offsets;
    std::vector<std::string> symbols; // "class name type value"
    std::vector<std::string> frames; // "name class size line", "  name type flags dimension offset"
    uint32_t flags = 0;
    int32_t static_size = 0;
};

inline int32_t keep_symbol(void *context, KOB_SYMBOL *symbol, const char *name)
{
    static_cast<ModuleContents *>(context)->symbols.push_back(
        std::to_string(KOB_SymbolClass(symbol)) + " " + name + " " + KOB_SymbolType(symbol) + " " +
        std::to_string(KOB_SymbolValue(symbol)));
    return 1;
}

inline int32_t keep_offset(void *context, int32_t offset)
{
    static_cast<ModuleContents *>(context)->static_offsets.push_back(offset);
    return 1;
}

inline int32_t keep_entry(void *context, const char *name, KOBD_ENTRY *entry)
{
    static_cast<ModuleContents *>(context)->frames.push_back(
        std::string("  ") + name + " " + KOBD_EntryType(entry) + " " +
        std::to_string(KOBD_EntryFlags(entry)) + " " + std::to_string(KOBD_EntryDimension(entry)) +
        " " + std::to_string(KOBD_EntryOffset(entry)));
    return 1;
}

inline int32_t keep_frame(void *context, const char *name, KOBD_FRAME *frame)
{
    static_cast<ModuleContents *>(context)->frames.push_back(
        std::string(name) + " " + KOBD_ClassName(KOBD_FrameClass(frame)) + " " +
        std::to_string(KOBD_FrameSize(frame)) + " " + std::to_string(KOBD_FrameLineNumber(frame)));
    KOBD_AllEntries(frame, keep_entry, context);
    return 1;
}

inline ModuleContents contents_of(const std::string &path)
{
    ModuleContents contents;
    KOB_MODULE *object = nullptr;
    EXPECT_EQ(KOB_OpenModule(&object, path.c_str()), 0) << path;
    if (object == nullptr) return contents;
    const uint8_t *code = KOB_CodeAddress(object);
    contents.code.assign(code, code + KOB_CodeSize(object));
    contents.flags = KOB_Flags(object);
    contents.static_size = KOB_StaticSize(object);
    KOB_AllSymbols(object, keep_symbol, &contents);
    KOB_AllStaticOffsets(object, keep_offset, &contents);
    KOBD_AllFrames(object, keep_frame, &contents);
    KOB_CloseModule(object, 0, 1);
    return contents;
}
