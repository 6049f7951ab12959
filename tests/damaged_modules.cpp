// Damaged files: whatever bytes a module has, it is refused or can be read through without leaving
// the file. Meant to run under the address and undefined-behaviour checks.
#include "scratch_folder.h"
#include "written.h"
#include <ostrum.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

namespace
{

class DamagedModules : public ScratchFolder
{
protected:
    std::string good;

    DamagedModules()
    {
        build();
        good = content_of("m.kob");
    }

    void build() const
    {
        KOB_MODULE *module = nullptr;
        KOBD_FRAME *frame = nullptr;
        KOB_NewNameModule(&module, "m.kob", 0, "1.0", "MAIN");
        KOB_Code(module, (const uint8_t *)"\x4B\0\4\1\x4A", 5);
        KOB_StaticData(module, 1);
        KOB_Symbol(module, KOB_SOURCE, "main.tl", "CODE", 0);
        KOB_Symbol(module, KOB_GLOBAL, "MAIN.F", "CODE", 0);
        KOB_Symbol(module, KOB_CODE_VAR_START, "MAIN.S", "CODE", 0);
        KOB_Symbol(module, KOB_CODE_VAR_END, "MAIN.E", "CODE", 2);
        KOB_SetCountry(module, "NO");
        KOBD_Frame(module, &frame, "MAIN.F", KOBD_FUNCTION, 4, 1);
        KOBD_Entry(frame, nullptr, "A", "INT", 101, 1, 0);
        KOBD_Entry(frame, nullptr, "B", "INT", 101, 1, 2);
        KOBD_Frame(module, nullptr, "MAIN.G", KOBD_FUNCTION, 0, 9);
        KOB_CloseModule(module, 4, 1);
    }

    /** Writes bytes and opens them. If they open, reads all of it; the result is that of opening. */
    int32_t try_bytes(const std::string &bytes) const;
};

size_t total; // keeps the reads alive

int32_t read_symbol(void *, KOB_SYMBOL *symbol, const char *name)
{
    total += strlen(name) + strlen(KOB_SymbolType(symbol)) + (size_t)KOB_SymbolValue(symbol);
    total += strlen(KOB_ClassName(KOB_SymbolClass(symbol)));
    return 1;
}

int32_t read_offset(void *, int32_t offset)
{
    total += (size_t)offset;
    return 1;
}

int32_t read_entry(void *, const char *name, KOBD_ENTRY *entry)
{
    total += strlen(name) + strlen(KOBD_EntryType(entry)) + (size_t)KOBD_EntryOffset(entry);
    return 1;
}

int32_t read_frame(void *, const char *name, KOBD_FRAME *frame)
{
    total += strlen(name) + strlen(KOBD_ClassName(KOBD_FrameClass(frame)));
    KOBD_AllEntries(frame, read_entry, nullptr);
    return 1;
}

void read_all(KOB_MODULE *module)
{
    KOB_AllSymbols(module, read_symbol, nullptr);
    KOB_AllStaticOffsets(module, read_offset, nullptr);
    KOBD_AllFrames(module, read_frame, nullptr);
    std::string code((size_t)KOB_CodeSize(module), 0);
    EXPECT_EQ(0, KOB_ReadCode(module, (uint8_t *)code.data(), 0, KOB_CodeSize(module)));
    total += strlen(KOB_Name(module)) + strlen(KOB_ToolVersion(module));
    total += strlen(KOB_ToolName(module)) + (size_t)KOB_SymbolTableSize(module);
    // Everything lies in the file, so a copy of no more bytes than that holds it.
    std::string copy((const char *)KOB_GetRawModule(module), (size_t)KOB_ModuleSize(module));
    EXPECT_EQ(nullptr, KOBR_FindSymbol((uint8_t *)copy.data(), "no such name"));
}

int32_t DamagedModules::try_bytes(const std::string &bytes) const
{
    write("m.kob", bytes);
    KOB_MODULE *module = nullptr;
    int32_t result = KOB_OpenModule(&module, "m.kob");
    EXPECT_EQ(result == 0, module != nullptr);
    if (module == nullptr) return result;
    read_all(module);
    EXPECT_EQ(0, KOB_CloseModule(module, 0, 1));
    return result;
}

TEST_F(DamagedModules, EveryTruncationIsRefused)
{
    EXPECT_EQ(0, try_bytes(good));
    EXPECT_EQ(0, try_bytes(good + "tail"));
    for (size_t size = 0; size < good.size(); size++)
        EXPECT_EQ(7, try_bytes(good.substr(0, size))) << size << " bytes";
}

TEST_F(DamagedModules, EveryChangedByteIsSurvived)
{
    int32_t refused = 0;
    for (size_t at = 0; at < good.size(); at++) {
        for (char value : { '\0', '\x7F', '\x80', '\xFF', '\x01' }) {
            std::string bytes = good;
            bytes[at] = value;
            int32_t result = try_bytes(bytes);
            EXPECT_TRUE(result == 0 || result == 7) << "byte " << at << " result " << result;
            refused += result == 7;
        }
    }
    EXPECT_LT(200, refused);
}

struct PATCH_ROW {
    const char *name;
    size_t offset; // of a 32-bit field in the header
    uint32_t value;
};

const PATCH_ROW patch_rows[] = {
    { "code offset that wraps", 82, 0xFFFFFFFF },
    { "code offset in the header", 82, 10 },
    { "code size that wraps", 86, 0xFFFFFFF0 },
    { "static count whose bytes wrap to 4", 98, 0x40000001 },
    { "static table in the header", 94, 4 },
    { "symbol count without end", 110, 0xFFFFFFFF },
    { "symbol table at the end of the file", 106, 0xFFFFFF },
    { "symbol table in the code", 106, 162 },
    { "frame count without end", 118, 0x7FFFFFFF },
    { "frame table outside the file", 114, 0x80000000 },
};

TEST_F(DamagedModules, FieldsThatLeaveTheFileAreRefused)
{
    for (const PATCH_ROW &row : patch_rows) {
        std::string bytes = good;
        for (size_t i = 0; i < 4; i++)
            bytes[row.offset + i] = (char)(row.value >> (24 - 8 * i));
        EXPECT_EQ(7, try_bytes(bytes)) << row.name;
    }
}

TEST_F(DamagedModules, PlaceOfAnEmptyTableLiesInTheFile)
{
    std::string bytes = good;
    bytes.replace(118, 4, std::string(4, '\0')); // no frames
    EXPECT_EQ(0, try_bytes(bytes));
    bytes.replace(114, 4, "\x7F\xFF\xFF\xFF");
    EXPECT_EQ(7, try_bytes(bytes));
}

TEST_F(DamagedModules, UnendedNamesAndWrongRecordsAreRefused)
{
    size_t symbols = (uint8_t)good[108] << 8 | (uint8_t)good[109];
    size_t frames = (uint8_t)good[116] << 8 | (uint8_t)good[117];
    const struct {
        const char *name;
        size_t offset;
        std::string bytes;
    } rows[] = {
        { "module name without end", 8, std::string(32, 'x') },
        { "tool version without end", 46, std::string(32, 'x') },
        { "symbol of no length", symbols + 6, std::string(1, '\0') },
        { "symbol shorter than its head", symbols + 6, "\x08" },
        { "symbol name without end", symbols + 13, "x" },
        { "type number beyond the table", symbols, std::string("\0\0\1\0", 4) },
        { "frame name without end", frames, std::string(32, 'x') },
        { "negative number of entries", frames + 38, "\xFF\xFF" },
        { "entry type without end", frames + 40 + 40 + 32, std::string(32, 'x') },
    };
    for (const auto &row : rows) {
        std::string bytes = good;
        bytes.replace(row.offset, row.bytes.size(), row.bytes);
        EXPECT_EQ(7, try_bytes(bytes)) << row.name;
    }
}

TEST_F(DamagedModules, ManyRandomChangesAreSurvived)
{
    uint32_t state = 12345;
    auto next = [&state] { return state = state * 1664525 + 1013904223, state >> 8; };
    for (int32_t round = 0; round < 3000; round++) {
        std::string bytes = good;
        for (uint32_t changes = next() % 6 + 1; changes > 0; changes--)
            bytes[next() % bytes.size()] = (char)next();
        int32_t result = try_bytes(bytes);
        EXPECT_TRUE(result == 0 || result == 7) << "round " << round;
    }
}

} // namespace
