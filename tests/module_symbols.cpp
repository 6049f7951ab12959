// Module handles: names, types, order of symbols, files made, read back and deleted.
#include "scratch_folder.h"
#include <ostrum.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace
{

namespace fs = std::filesystem;

class ModuleSymbols : public ScratchFolder
{
protected:
    KOB_MODULE *module = nullptr;

    ModuleSymbols() { setenv("SOURCE_DATE_EPOCH", "1000000", 1); }
    ~ModuleSymbols() override
    {
        if (module != nullptr) KOB_CloseModule(module, 0, 1);
    }
    void make(const char *name = "m.kob")
    {
        ASSERT_EQ(0, KOB_NewNameModule(&module, name, 0, "1.0", "MAIN"));
    }
    int32_t close(uint32_t flags = 0)
    {
        KOB_MODULE *closed = module;
        module = nullptr;
        return KOB_CloseModule(closed, flags, 1);
    }
    void reopen(const char *name = "m.kob")
    {
        ASSERT_EQ(0, close());
        ASSERT_EQ(0, KOB_OpenModule(&module, name));
    }
};

/** "NAME:CLASS:TYPE:VALUE" of each symbol visited. */
int32_t describe(void *list, KOB_SYMBOL *symbol, const char *name)
{
    std::string text = name;
    text += std::string(":") + KOB_ClassName(KOB_SymbolClass(symbol));
    text += std::string(":") + KOB_SymbolType(symbol);
    text += ":" + std::to_string(KOB_SymbolValue(symbol));
    ((std::vector<std::string> *)list)->push_back(text);
    return 0;
}

std::vector<std::string> all_symbols(KOB_MODULE *module)
{
    std::vector<std::string> list;
    KOB_AllSymbols(module, describe, &list);
    return list;
}

TEST_F(ModuleSymbols, NamesAreJudged)
{
    for (const char *good : { "", "A", "A.B", "A.1B", "A.B.C", "A$_/-", "$A", ".1", "-" })
        EXPECT_EQ(0, KOB_BadSymbolName(good)) << good;
    for (const char *bad : { "1A.B", "1AB", "A B", "A.B C", "A+", "A\n" })
        EXPECT_EQ(1, KOB_BadSymbolName(bad)) << bad;
    make();
    EXPECT_EQ(0, KOB_Symbol(module, KOB_LOCAL, std::string(31, 'A').c_str(), "CODE", 0));
    EXPECT_EQ(4, KOB_Symbol(module, KOB_LOCAL, std::string(32, 'A').c_str(), "CODE", 0));
    EXPECT_EQ(5, KOB_Symbol(module, KOB_LOCAL, "A B", "CODE", 0));
}

TEST_F(ModuleSymbols, WhatIsWrittenIsReadBack)
{
    make();
    KOB_SetStaticSize(module, 44);
    const uint8_t code[] = { 1, 2, 3, 4, 5 };
    EXPECT_EQ(0, KOB_Code(module, code, 2));
    EXPECT_EQ(2, KOB_Code(module, code + 2, 3));
    KOB_StaticData(module, 1);
    KOB_Symbol(module, KOB_SOURCE, "main.tl", "CODE", 0);
    KOB_Symbol(module, KOB_EXTERNAL, "LIB.F", "CODE", 1);
    KOB_Symbol(module, KOB_VALUE, "MAIN.MAX", "INT", -7);
    KOB_SYMBOL *country = KOB_SetCountry(module, "Norway of the fjords");
    EXPECT_EQ(country, KOB_SetCountry(module, "Other"));
    EXPECT_EQ(nullptr, KOB_GetRawModule(module));
    std::vector<std::string> written = all_symbols(module);
    reopen();
    EXPECT_EQ((std::vector<std::string>{ "$MAIN:GLOBAL:START:0", "main.tl:SOURCE:CODE:0",
                                         "LIB.F:EXTERNAL:CODE:1", "MAIN.MAX:VALUE:INT:-7",
                                         "Norway of the fjords:COUNTRY:COUNTRY_DEF:0" }),
              written);
    EXPECT_EQ(written, all_symbols(module));
    EXPECT_STREQ("m", KOB_Name(module));
    EXPECT_STREQ("TOLL", KOB_ToolName(module));
    EXPECT_STREQ("1.0", KOB_ToolVersion(module));
    EXPECT_EQ(1000000u, KOB_Timestamp(module));
    EXPECT_EQ(0x10u, KOB_Flags(module)); // of EXTERNAL
    EXPECT_EQ(44, KOB_StaticSize(module));
    EXPECT_EQ(4, KOB_StaticOffsetSize(module));
    EXPECT_EQ(6, KOB_CodeSize(module));
    EXPECT_EQ((int32_t)fs::file_size("m.kob"), KOB_ModuleSize(module));
    EXPECT_STREQ("main.tl", KOB_GetSourceFile(module, "MAIN"));
    EXPECT_EQ(nullptr, KOB_GetSourceFile(module, "OTHER"));
    EXPECT_STREQ("Norway of the fjords", KOB_Country(module));
    EXPECT_EQ(1, KOB_TypeExists(module, "INT"));
    EXPECT_EQ(0, KOB_TypeExists(module, "int"));
    EXPECT_NE(nullptr, KOB_GetRawModule(module));
}

TEST_F(ModuleSymbols, GlobalsAreFoundByNameAndType)
{
    make();
    KOB_Symbol(module, KOB_GLOBAL, "A", "CODE", 1);
    KOB_Symbol(module, KOB_GLOBAL, "A", "INT", 2); // the name stays with its first
    KOB_Symbol(module, KOB_LOCAL, "L", "CODE", 3);
    KOB_Symbol(module, KOB_VALUE, "V", "INT", 4); // a global for the reader alone
    KOB_Symbol(module, KOB_EXTERNAL, "E", "CODE", 5);
    for (bool is_read : { false, true }) {
        if (is_read) reopen();
        ASSERT_NE(nullptr, KOB_FindGlobal(module, "A", "CODE"));
        EXPECT_EQ(1, KOB_SymbolValue(KOB_FindGlobal(module, "A", "CODE")));
        EXPECT_EQ(nullptr, KOB_FindGlobal(module, "A", "INT"));
        EXPECT_NE(nullptr, KOB_FindGlobal(module, "L", "CODE"));
        EXPECT_EQ(is_read, KOB_FindGlobal(module, "V", "INT") != nullptr);
        EXPECT_EQ(nullptr, KOB_FindGlobal(module, "E", "CODE"));
    }
}

TEST_F(ModuleSymbols, AreasThatTouchBecomeOne)
{
    make();
    KOB_Symbol(module, KOB_CODE_VAR_START, "B.S", "CODE", 20);
    KOB_Symbol(module, KOB_CODE_VAR_END, "B.E", "CODE", 30);
    KOB_Symbol(module, KOB_CODE_VAR_START, "A.S", "CODE", 10);
    KOB_Symbol(module, KOB_CODE_VAR_END, "A.E", "CODE", 20);
    KOB_Symbol(module, KOB_CODE_VAR_START, "C.S", "CODE", 40); // an empty area
    KOB_Symbol(module, KOB_CODE_VAR_END, "C.E", "CODE", 40);
    KOB_Symbol(module, KOB_CODE_VAR_START, "N.S", "CODE", -5);
    std::vector<std::string> built = all_symbols(module);
    reopen();
    EXPECT_EQ(
        (std::vector<std::string>{ "$MAIN:GLOBAL:START:0", "N.S:CODE_VAR_START:CODE:-5",
                                   "A.S:CODE_VAR_START:CODE:10", "A.E:CODE_VAR_END:CODE:20",
                                   "B.S:CODE_VAR_START:CODE:20", "B.E:CODE_VAR_END:CODE:30",
                                   "C.E:CODE_VAR_END:CODE:40", "C.S:CODE_VAR_START:CODE:40" }),
        built);
    EXPECT_EQ(
        (std::vector<std::string>{ "$MAIN:GLOBAL:START:0", "N.S:CODE_VAR_START:CODE:-5",
                                   "A.S:CODE_VAR_START:CODE:10", "B.E:CODE_VAR_END:CODE:30" }),
        all_symbols(module));
}

TEST_F(ModuleSymbols, FileIsMadeWrittenAndDeleted)
{
    make("plain");
    EXPECT_EQ(0u, fs::file_size("plain.kob")); // empty until it is closed
    EXPECT_EQ(0, close());
    EXPECT_LT(162u, fs::file_size("plain.kob"));
    make("m.out");
    EXPECT_EQ(0, close(0x002));
    EXPECT_FALSE(fs::exists("m.out"));
    EXPECT_EQ(7, KOB_NewModule(&module, "none/m.kob", 0, "1", 1));
    EXPECT_EQ(7, KOB_NewModule(&module, std::string(120, 'a').c_str(), 0, "1", 1));
    EXPECT_EQ(nullptr, module);
}

TEST_F(ModuleSymbols, StartSymbolIsOptionalAndCut)
{
    std::string name(40, 'n');
    ASSERT_EQ(0, KOB_NewModule(&module, name.c_str(), 1, "1", 0));
    EXPECT_TRUE(all_symbols(module).empty());
    EXPECT_EQ(0, close());
    EXPECT_TRUE(fs::exists(name + ".kob")); // the file's name is not cut
    ASSERT_EQ(0, KOB_NewModule(&module, name.c_str(), 1, "1", 1));
    EXPECT_STREQ(std::string(31, 'n').c_str(), KOB_Name(module));
    EXPECT_EQ("$" + std::string(30, 'n') + ":GLOBAL:START:0", all_symbols(module).at(0));
}

TEST_F(ModuleSymbols, ModuleIsFoundByExtensionAndSearch)
{
    make();
    ASSERT_EQ(0, close());
    EXPECT_EQ(0, KOB_OpenModule(&module, "m"));
    close();
    EXPECT_EQ(0, KOB_OpenModule(&module, "m.tl"));
    close();
    EXPECT_EQ(7, KOB_OpenModule(&module, "elsewhere/m"));
    setenv("KobInclude", folder.c_str(), 1);
    EXPECT_EQ(0, KOB_OpenModule(&module, "elsewhere/m"));
    close();
    std::ofstream("text.kob") << std::string(500, 'x');
    EXPECT_EQ(7, KOB_OpenModule(&module, "text.kob"));
    std::ofstream("empty.kob");
    EXPECT_EQ(7, KOB_OpenModule(&module, "empty.kob"));
    EXPECT_EQ(7, KOB_OpenModule(&module, folder.c_str()));
    EXPECT_EQ(nullptr, module);
}

TEST_F(ModuleSymbols, CodeIsReadWithinItsSize)
{
    make();
    const uint8_t code[] = { 1, 2, 3, 4 };
    KOB_Code(module, code, 4);
    reopen();
    uint8_t bytes[4] = {};
    EXPECT_EQ(0, KOB_ReadCode(module, bytes, 1, 3));
    EXPECT_EQ(2, bytes[0]);
    EXPECT_EQ(4, bytes[2]);
    EXPECT_EQ(0, KOB_ReadCode(module, bytes, 4, 0));
    EXPECT_EQ(8, KOB_ReadCode(module, bytes, 2, 3));
    EXPECT_EQ(8, KOB_ReadCode(module, bytes, -1, 1));
    EXPECT_EQ(8, KOB_ReadCode(module, bytes, INT32_MAX, INT32_MAX));
    EXPECT_EQ(3, KOB_CodeAddress(module)[2]);
}

TEST_F(ModuleSymbols, TooManyTypesEndTheProcess)
{
    make();
    for (int32_t i = 1; i < 256; i++) // START is the first
        ASSERT_EQ(0, KOB_Symbol(module, KOB_VALUE, "V", ("T" + std::to_string(i)).c_str(), i));
    EXPECT_EQ(0, KOB_Symbol(module, KOB_VALUE, "V", "T255", 0));
    EXPECT_EXIT(KOB_Symbol(module, KOB_VALUE, "V", "ONE_MORE", 0), testing::ExitedWithCode(1),
                "KOB : Too many types");
}

TEST_F(ModuleSymbols, TablesAnswerAlsoOutsideTheirRange)
{
    const struct {
        int32_t code;
        const char *name;
        uint32_t flags;
    } rows[] = { { 0, "GLOBAL", 0xb5 },         { 4, "ENTRY_POINT", 0xf5 },
                 { 7, "CODE_VAR_START", 0xe0 }, { 15, "PCODE_DEF", 0x74 },
                 { 22, "COMCALL", 0x22 },       { 24, "RTIME_DATA_REF", 0x60 },
                 { -1, "<UNKNOWN CLASS>", 0 },  { 25, "<UNKNOWN CLASS>", 0 } };
    for (const auto &row : rows) {
        EXPECT_STREQ(row.name, KOB_ClassName(row.code));
        EXPECT_EQ(row.flags, KOB_ClassFlags(row.code)) << row.code;
    }
    EXPECT_STREQ("Failed to open the module", KOB_Message(7));
    EXPECT_STREQ("Using an old tool on a new KOB file", KOB_Message(9));
    EXPECT_NE(nullptr, KOB_Message(-1));
    EXPECT_NE(nullptr, KOB_Message(10));
    const struct {
        int32_t tool;
        const char *name;
    } tools[] = { { 4, "SCRIBE_BUILDER" },
                  { 5, "MarshHexConv" },
                  { 16, "<UNKNOWN TOOL>" },
                  { -1, "<UNKNOWN TOOL>" } };
    for (const auto &row : tools) {
        ASSERT_EQ(0, KOB_NewModule(&module, "t", row.tool, "1", 0));
        EXPECT_STREQ(row.name, KOB_ToolName(module)) << row.tool;
        close();
    }
}

TEST_F(ModuleSymbols, LargeModuleCostsItsSize)
{
    auto begin = std::chrono::steady_clock::now();
    make();
    const uint8_t code[64] = {};
    KOBD_FRAME *frame = nullptr;
    KOBD_Frame(module, &frame, "STATICS", KOBD_STATIC_DATA, 0, 0);
    for (int32_t i = 0; i < 100000; i++) {
        std::string name = "MAIN.F" + std::to_string(i);
        ASSERT_EQ(0, KOB_Symbol(module, KOB_GLOBAL, name.c_str(), "CODE", i));
        KOB_Code(module, code, sizeof code);
        KOB_StaticData(module, i);
        KOBD_Entry(frame, nullptr, name.c_str(), "INT", 101, 1, (i * 7919) % 30000);
    }
    reopen();
    EXPECT_EQ(99999, KOB_SymbolValue(KOB_FindGlobal(module, "MAIN.F99999", "CODE")));
    EXPECT_EQ(6400000, KOB_CodeSize(module));
    EXPECT_GT(std::chrono::seconds(10), std::chrono::steady_clock::now() - begin);
}

} // namespace
