// Debug frames in memory and through a file: order, duplicates, copies, texts.
#include "scratch_folder.h"
#include <ostrum.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace
{

using NAMES = std::vector<std::string>;

class DebugFrames : public ScratchFolder
{
protected:
    KOB_MODULE *module = nullptr;
    KOBD_FRAME *frame = nullptr;

    DebugFrames() { KOB_NewModule(&module, "m.kob", 0, "1", 1); }
    ~DebugFrames() override { KOB_CloseModule(module, 0, 1); }
    void reopen()
    {
        ASSERT_EQ(0, KOB_CloseModule(module, 4, 1));
        ASSERT_EQ(0, KOB_OpenModule(&module, "m.kob"));
    }
    int32_t add(const char *name, int32_t offset)
    {
        return KOBD_Entry(frame, nullptr, name, "INT", 101, 1, offset);
    }
};

int32_t collect_frame(void *names, const char *name, KOBD_FRAME *)
{
    ((NAMES *)names)->push_back(name);
    return 0;
}

int32_t collect_entry(void *names, const char *name, KOBD_ENTRY *entry)
{
    ((NAMES *)names)->push_back(name + (":" + std::to_string(KOBD_EntryOffset(entry))));
    return 0;
}

NAMES frames_of(KOB_MODULE *module)
{
    NAMES names;
    KOBD_AllFrames(module, collect_frame, &names);
    return names;
}

NAMES entries_of(KOBD_FRAME *frame)
{
    NAMES names;
    KOBD_AllEntries(frame, collect_entry, &names);
    return names;
}

TEST_F(DebugFrames, FramesTurnRoundInTheFile)
{
    for (const char *name : { "A", "B", "C", "c" })
        EXPECT_EQ(0, KOBD_Frame(module, nullptr, name, KOBD_RECORD, 8, 3));
    EXPECT_EQ(6, KOBD_Frame(module, &frame, "B", KOBD_TREE, 0, 0));
    EXPECT_EQ(nullptr, frame);
    EXPECT_EQ((NAMES{ "c", "C", "B", "A" }), frames_of(module));
    reopen();
    EXPECT_EQ((NAMES{ "A", "B", "C", "c" }), frames_of(module));
    frame = KOBD_FindFrame(module, "B");
    ASSERT_NE(nullptr, frame);
    EXPECT_EQ(KOBD_RECORD, KOBD_FrameClass(frame));
    EXPECT_EQ(8, KOBD_FrameSize(frame));
    EXPECT_EQ(3, KOBD_FrameLineNumber(frame));
    EXPECT_EQ(nullptr, KOBD_FindFrame(module, "D"));
}

TEST_F(DebugFrames, EntriesStandInOrderOfOffset)
{
    KOBD_Frame(module, &frame, "F", KOBD_FUNCTION, 12, 1);
    EXPECT_EQ(0, add("X", 8));
    EXPECT_EQ(0, add("Y", 4));
    EXPECT_EQ(0, add("Z", 4));
    EXPECT_EQ(6, add("Y", 0));
    EXPECT_EQ((NAMES{ "Y:4", "Z:4", "X:8" }), entries_of(frame));
    EXPECT_EQ(0, add("W", -2)); // after the list was looked at
    EXPECT_EQ(0, add("V", 4));
    EXPECT_EQ(0, add("U", 70000));
    EXPECT_EQ(0, add("T", 50000)); // both are held, so they keep their order
    NAMES expected{ "W:-2", "Y:4", "Z:4", "V:4", "X:8", "U:32767", "T:32767" };
    EXPECT_EQ(expected, entries_of(frame));
    reopen();
    frame = KOBD_FindFrame(module, "F");
    EXPECT_EQ(expected, entries_of(frame));
    EXPECT_EQ(8, KOBD_EntryOffset(KOBD_FindEntry(frame, "X")));
    EXPECT_EQ(nullptr, KOBD_FindEntry(frame, "x"));
}

TEST_F(DebugFrames, ManyEntriesAreSortedAsInsertionWould)
{
    KOBD_Frame(module, &frame, "F", KOBD_STATIC_DATA, 0, 0);
    std::vector<std::pair<int32_t, int32_t>> model; // offset, order of addition
    for (int32_t i = 0; i < 1000; i++) {
        int32_t offset = (i * 7919 + 13) % 64;
        add(std::to_string(i).c_str(), offset);
        model.emplace_back(offset, i);
        if (i % 333 == 0) entries_of(frame);
    }
    std::sort(model.begin(), model.end());
    NAMES expected;
    for (auto [offset, order] : model)
        expected.push_back(std::to_string(order) + ":" + std::to_string(offset));
    EXPECT_EQ(expected, entries_of(frame));
}

TEST_F(DebugFrames, CopiesMoveTheirOffsets)
{
    KOBD_Frame(module, &frame, "SOURCE", KOBD_STATIC_DATA, 0, 0);
    KOBD_Entry(frame, nullptr, "P", "ENGINE.STATE", 0x3065, 5, 2);
    add("Q", 0);
    KOBD_FRAME *target = nullptr;
    KOBD_Frame(module, &target, "TARGET", KOBD_STATIC_DATA, 0, 0);
    EXPECT_EQ(0, KOBD_CopyEntries(frame, target, 10));
    EXPECT_EQ((NAMES{ "Q:10", "P:12" }), entries_of(target));
    KOBD_ENTRY *copy = KOBD_FindEntry(target, "P");
    EXPECT_STREQ("ENGINE.STATE", KOBD_EntryType(copy));
    EXPECT_EQ(0x3065, KOBD_EntryFlags(copy));
    EXPECT_EQ(5, KOBD_EntryDimension(copy));
    EXPECT_EQ(6, KOBD_CopyEntries(frame, target, 20));
    EXPECT_EQ(6, KOBD_CopyEntries(frame, frame, INT32_MAX));
    EXPECT_EQ(2u, entries_of(target).size());
}

TEST_F(DebugFrames, TextsOfTypesAndClasses)
{
    EXPECT_STREQ("VAR INT", KOBD_TypeName("INT", 0x1000));
    EXPECT_STREQ("INT", KOBD_TypeName("INT", 0x2FFF));
    EXPECT_EQ(127u, strlen(KOBD_TypeName(std::string(500, 'x').c_str(), 0x1000)));
    EXPECT_STREQ("FUNCTION", KOBD_ClassName(0));
    EXPECT_STREQ("STATIC DATA", KOBD_ClassName(2));
    EXPECT_STREQ("ENUMERATION", KOBD_ClassName(4));
    EXPECT_STREQ("<UNKNOWN CLASS>", KOBD_ClassName(5));
    EXPECT_STREQ("<UNKNOWN CLASS>", KOBD_ClassName(-1));
}

} // namespace
