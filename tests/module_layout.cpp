// Every byte of a raw module: header, regions, the rule on even code, growth and emptying.
#include <ostrum.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace
{

uint32_t word_at(const uint8_t *bytes, int32_t offset)
{
    const uint8_t *p = bytes + offset;
    return (uint32_t)p[0] << 24 | (uint32_t)p[1] << 16 | (uint32_t)p[2] << 8 | p[3];
}

uint32_t host_at(const uint8_t *bytes, int32_t offset)
{
    uint32_t value;
    memcpy(&value, bytes + offset, sizeof value);
    return value;
}

enum { STEP = 524288, CAPACITY = 126, POSITION = 130 };

class ModuleLayout : public testing::Test
{
protected:
    uint8_t *raw = KOBR_NewModule("ENGINE", 3, "V1.2", 0x01020304);
    ~ModuleLayout() override { KOBR_DeleteModule(raw); }

    void put_code(int32_t count)
    {
        std::vector<uint8_t> code((size_t)count, 0xEE);
        KOBR_PutCode(&raw, code.data(), count);
    }
    void put_symbol(const char *name, int32_t symbol_class, int32_t type, int32_t value)
    {
        uint8_t *symbol = KOBR_NewSymbol(name, symbol_class, type, value);
        KOBR_PutSymbol(&raw, symbol);
        KOBR_DeleteSymbol(symbol);
    }
    void put_frame(const char *name, int32_t entries)
    {
        uint8_t *frame = KOBR_NewFrame(name, 3, 40000, -40000);
        KOBR_PutFrame(&raw, frame);
        KOBR_DeleteFrame(frame);
        uint8_t *entry = KOBR_NewEntry("FIELD", "INT", 0x1064, -1, 0x0102);
        for (int32_t i = 0; i < entries; i++)
            KOBR_PutEntry(&raw, entry);
        KOBR_DeleteEntry(entry);
    }
};

int32_t collect_name(void *names, uint8_t *, const char *name)
{
    ((std::vector<std::string> *)names)->push_back(name);
    return 0;
}

int32_t collect_offset(void *offsets, int32_t offset)
{
    ((std::vector<int32_t> *)offsets)->push_back(offset);
    return 0;
}

TEST_F(ModuleLayout, EmptyModuleIsItsHeader)
{
    uint8_t expected[162] = {};
    memcpy(expected,
           "KOB\0\0\0\0\x19"
           "ENGINE",
           14);
    memcpy(expected + 40, "\1\2\3\4\0\3V1.2", 10);
    memcpy(expected + 78, "\xA0\0\0\5", 4);
    uint8_t *block = nullptr;
    int32_t size = 0;
    EXPECT_EQ(162, KOBR_CompleteModule(raw, 0xA0000005, &block, &size));
    EXPECT_EQ(162, size);
    ASSERT_EQ(raw, block);
    EXPECT_EQ((uint32_t)STEP, host_at(raw, CAPACITY));
    EXPECT_EQ(162u, host_at(raw, POSITION));
    memset(raw + CAPACITY, 0, 8);
    for (int32_t i = 0; i < 162; i++)
        EXPECT_EQ(expected[i], raw[i]) << "byte " << i;
}

TEST_F(ModuleLayout, OddCodeCountsOneMoreBeforeATable)
{
    put_code(2);
    put_code(3);
    EXPECT_EQ(5, KOBR_CodeSize(raw));
    put_symbol("ABC", 5, 0x0102, -2);
    EXPECT_EQ(6, KOBR_CodeSize(raw));
    EXPECT_EQ(162u, word_at(raw, 82));
    EXPECT_EQ(167u, word_at(raw, 106));
    EXPECT_EQ(1u, word_at(raw, 110));
    EXPECT_EQ(162 + 6 + 12, KOBR_ModuleSize(raw));
    EXPECT_EQ(162u + 5 + 12, host_at(raw, POSITION));
    EXPECT_EQ(0, memcmp(raw + 167,
                        "\xFF\xFF\xFF\xFE\1\2\xC\5"
                        "ABC\0\0",
                        13));
}

TEST_F(ModuleLayout, EvenCodeIsFollowedAtOnce)
{
    put_code(6);
    KOBR_PutStaticOffset(&raw, 4);
    KOBR_PutStaticOffset(&raw, 0x01020304);
    put_symbol("A", 0, 0, 1);
    put_frame("FRAME", 2);
    EXPECT_EQ(168u, word_at(raw, 94));
    EXPECT_EQ(2u, word_at(raw, 98));
    EXPECT_EQ(176u, word_at(raw, 106));
    EXPECT_EQ(186u, word_at(raw, 114));
    EXPECT_EQ(186 + 40 + 140, KOBR_ModuleSize(raw));
    std::vector<int32_t> offsets;
    KOBR_AllStaticOffsets(raw, collect_offset, &offsets);
    EXPECT_EQ((std::vector<int32_t>{ 4, 0x01020304 }), offsets);
}

TEST_F(ModuleLayout, SymbolLengthsAreEven)
{
    const struct {
        size_t length;
        int32_t record;
    } rows[] = { { 0, 10 }, { 3, 12 }, { 4, 14 }, { 31, 40 }, { 245, 254 }, { 400, 254 } };
    for (const auto &row : rows) {
        uint8_t *symbol = KOBR_NewSymbol(std::string(row.length, 'x').c_str(), 0, 0, 0);
        EXPECT_EQ(row.record, symbol[6]) << row.length;
        EXPECT_EQ(std::min<size_t>(row.length, 245), strlen(KOBR_SymbolName(symbol)));
        KOBR_DeleteSymbol(symbol);
    }
}

TEST_F(ModuleLayout, FramesHoldTheirEntries)
{
    put_frame("FIRST", 3);
    put_frame("SECOND", 0);
    put_frame("0123456789012345678901234567890123456789", 1);
    std::vector<std::string> names;
    KOBR_AllFrames(raw, collect_name, &names);
    EXPECT_EQ((std::vector<std::string>{ "FIRST", "SECOND", "0123456789012345678901234567890" }),
              names);
    uint8_t *frame = raw + word_at(raw, 114);
    EXPECT_EQ(3, KOBR_FrameClass(frame));
    EXPECT_EQ(32767, KOBR_FrameSize(frame)); // held, never wrapped
    EXPECT_EQ(-32768, KOBR_FrameLineNumber(frame));
    names.clear();
    KOBR_AllEntries(frame, collect_name, &names);
    EXPECT_EQ(3u, names.size());
    uint8_t *entry = frame + 40;
    EXPECT_STREQ("FIELD", KOBR_EntryName(entry));
    EXPECT_STREQ("INT", KOBR_EntryType(entry));
    EXPECT_EQ(0x1064, KOBR_EntryFlags(entry));
    EXPECT_EQ(-1, KOBR_EntryDimension(entry));
    EXPECT_EQ(0x0102, KOBR_EntryOffset(entry));
}

TEST_F(ModuleLayout, FrameCountsNoMoreEntriesThanItsFieldHolds)
{
    put_frame("HUGE", 32769);
    put_frame("NEXT", 1);
    std::vector<std::string> names;
    KOBR_AllFrames(raw, collect_name, &names);
    EXPECT_EQ((std::vector<std::string>{ "HUGE", "NEXT" }), names);
    EXPECT_EQ(162 + 40 + 70 * 32767 + 40 + 70, KOBR_ModuleSize(raw));
}

TEST_F(ModuleLayout, EntryWithoutFrameIsNotPut)
{
    uint8_t *entry = KOBR_NewEntry("FIELD", "INT", 0, 1, 0);
    KOBR_PutEntry(&raw, entry);
    KOBR_DeleteEntry(entry);
    EXPECT_STREQ("ENGINE", KOBR_Name(raw));
    EXPECT_EQ(162, KOBR_ModuleSize(raw));
}

TEST_F(ModuleLayout, BufferGrowsInStepsAlsoAtAnExactFit)
{
    put_code(STEP - 163);
    EXPECT_EQ((uint32_t)STEP, host_at(raw, CAPACITY));
    put_code(1);
    EXPECT_EQ(2u * STEP, host_at(raw, CAPACITY));
    put_code(3 * STEP + 1);
    EXPECT_EQ(5u * STEP, host_at(raw, CAPACITY));
    EXPECT_EQ(4 * STEP - 161, KOBR_CodeSize(raw));
    uint8_t last = 0;
    KOBR_ReadCode(raw, &last, 4 * STEP - 162, 1);
    EXPECT_EQ(0xEE, last);
}

TEST_F(ModuleLayout, ResetKeepsIdentityAndBuildsAgain)
{
    put_code(3);
    put_symbol("A", 0, 0, 0);
    put_frame("F", 1);
    KOBR_SetStaticSize(raw, 99);
    ASSERT_EQ(raw, KOBR_ResetModule(raw));
    EXPECT_EQ(0u, host_at(raw, CAPACITY));
    EXPECT_EQ(0, KOBR_StaticSize(raw));
    EXPECT_EQ(162, KOBR_ModuleSize(raw));
    EXPECT_STREQ("ENGINE", KOBR_Name(raw));
    EXPECT_EQ(0x01020304u, KOBR_Timestamp(raw));
    EXPECT_EQ(3, KOBR_Tool(raw));
    put_code(2);
    EXPECT_EQ((uint32_t)STEP, host_at(raw, CAPACITY));
    EXPECT_EQ(164, KOBR_ModuleSize(raw));
}

TEST_F(ModuleLayout, CheckTellsMagicAndVersionApart)
{
    EXPECT_EQ(0, KOBR_CheckModule(raw));
    raw[7] = 24;
    EXPECT_EQ(2, KOBR_CheckModule(raw));
    raw[7] = 26;
    EXPECT_EQ(9, KOBR_CheckModule(raw));
    raw[4] = 0x80; // unsigned
    EXPECT_EQ(9, KOBR_CheckModule(raw));
    for (int32_t i = 0; i < 4; i++) {
        raw[i] ^= 1;
        EXPECT_EQ(1, KOBR_CheckModule(raw)) << "byte " << i;
        raw[i] ^= 1;
    }
}

TEST_F(ModuleLayout, SymbolsAreFoundByTheirFirst)
{
    put_symbol("A", 1, 2, 3);
    put_symbol("B", 200, 65535, INT32_MIN);
    put_symbol("B", 4, 5, 6);
    uint8_t *symbol = KOBR_FindSymbol(raw, "B");
    ASSERT_NE(nullptr, symbol);
    EXPECT_EQ(200, KOBR_SymbolClass(symbol) & 0xFF);
    EXPECT_EQ(65535, KOBR_SymbolType(symbol));
    EXPECT_EQ(INT32_MIN, KOBR_SymbolValue(symbol));
    EXPECT_EQ(nullptr, KOBR_FindSymbol(raw, "b"));
    EXPECT_EQ(30, KOBR_SymbolTableSize(raw));
}

} // namespace
