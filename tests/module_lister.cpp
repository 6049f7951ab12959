// What pkob prints of a module, and what it says of anything else.
#include "scratch_folder.h"
#include "written.h"
#include <ostrum.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace
{

using nlohmann::json;

/*
 * The image, by address. Strings, a nonvolatile word, then the code list: a public function, a private
 * one that only the call shows, one that only its ALLOC shows, and a data section.
 */
const uint8_t image[] = {
    'H',  'i',  '\n', 0,                // 00 strings
    0,    0,    0,    7,                // 04 nonvolatile
    75,   0,    4,                      // 08 M.MAIN: ALLOC 4
    40,   0xFF, 0xFF, 0xFF, 0xF4,       // 0B LCA 0, from 0C
    72,   73,   0,    0,    0,    0x16, // 10 ARGS CALL 28, from 12
    73,   0,    0,    0,    0,          // 16 CALL, external
    81,   1,    2,                      // 1B SYSCALL 258
    83,   1,    0,    2,    0xFF, 0xE8, // 1E SWITCH 1, default 22, 0 to 0A
    105,  61,   146,  0x1F,             // 24 STRCMP EQ, user, 31
    32,   0xFE, 74,                     // 28 called: SLIT -2, RET
    75,   0,    2,    0,    74,         // 2B ALLOC 2, 0, RET
    0xDE, 0xAD, 0xBE, 0xEF, 67,   0,    // 30 M.DATA
};

class ModuleLister : public ScratchFolder
{
protected:
    std::string out;
    std::string err;

    ModuleLister()
    {
        setenv("SOURCE_DATE_EPOCH", "951868800", 1);
        build();
    }

    void build() const
    {
        KOB_MODULE *module = nullptr;
        KOBD_FRAME *frame = nullptr;
        ASSERT_EQ(0, KOB_NewNameModule(&module, "m.kob", 0, "1.0", "M"));
        KOB_SetStaticSize(module, 12);
        KOB_Code(module, image, sizeof image);
        KOB_StaticData(module, 0x0C);
        KOB_Symbol(module, KOB_SOURCE, "m.tl", "CODE", 0);
        KOB_Symbol(module, KOB_SYSCALL, "IO.BEEP", "SYSCALL_DEF", 258);
        KOB_Symbol(module, KOB_EXTERNAL, "LIB.F", "CODE", 0x17);
        KOB_Symbol(module, KOB_EXTREF, "$BLINK", "CODE", 0x27);
        KOB_Symbol(module, KOB_GLOBAL, "M.MAIN", "CODE", 8);
        KOB_Symbol(module, KOB_LOCAL, "M.DATA", "WAVEFORM", 0x30);
        KOB_Symbol(module, KOB_VALUE, "M.MAX", "INT", -7);
        KOB_Symbol(module, KOB_GLOBAL, "M.STRINGS", "STRINGS", 0);
        KOB_Symbol(module, KOB_CODE_VAR_START, "M.$NONVOLSTART", "CODE", 4);
        KOB_Symbol(module, KOB_CODE_VAR_END, "M.$NONVOLEND", "CODE", 8);
        KOB_Symbol(module, KOB_GLOBAL, "m.$CODE", "CODE", 8);
        KOB_SetCountry(module, "Espa\xF1"
                               "a\x1B\"");
        KOBD_Frame(module, &frame, "M.MAIN", KOBD_FUNCTION, 4, 17);
        KOBD_Entry(frame, nullptr, "COUNT", "INT", 0x1065, 1, 2);
        ASSERT_EQ(0, KOB_CloseModule(module, 5, 1));
    }

    /** Runs pkob in the module's folder; the result is its status. */
    int run(const std::string &arguments)
    {
        const int status = system((OSTRUM_PKOB " " + arguments + " >out 2>err").c_str());
        out = content_of("out");
        err = content_of("err");
        return WEXITSTATUS(status);
    }
    void expect_line(const char *line) const
    {
        EXPECT_NE(std::string::npos, out.find(std::string(line) + "\n"))
            << "no line: " << line << "\nin:\n"
            << out;
    }
};

TEST_F(ModuleLister, OverviewFitsAScreen)
{
    EXPECT_EQ(0, run("m.kob"));
    EXPECT_EQ("", err);
    EXPECT_GT(24, std::count(out.begin(), out.end(), '\n'));
    expect_line("  made     2000-03-01 00:00:00 UTC by TOLL 1.0");
    expect_line("  flags    0x0015: warnings, debug frames, unresolved references");
    expect_line("  country  Espa\\xf1a\\x1b\\\"");
    expect_line("  frames   1: 1 FUNCTION");
}

TEST_F(ModuleLister, OverviewCountsUnknownClassesTogether)
{
    KOB_MODULE *module = nullptr;
    ASSERT_EQ(0, KOB_NewModule(&module, "m.kob", 0, "1.0", 0));
    for (int32_t i = 0; i < 200; i++)
        KOB_Symbol(module, KOB_CLASS_COUNT + i, "A", "CODE", 0);
    for (int32_t i = 0; i < 200; i++)
        KOBD_Frame(module, nullptr, std::to_string(i).c_str(), i - 100, 0, 0);
    ASSERT_EQ(0, KOB_CloseModule(module, 0, 1));
    EXPECT_EQ(0, run("m.kob"));
    expect_line("  symbols  200: 200 <UNKNOWN CLASS>");
    expect_line("  frames   200: 1 FUNCTION, 1 TREE, 1 STATIC DATA, 1 RECORD, 1 ENUMERATION, "
                "195 <UNKNOWN CLASS>");
}

TEST_F(ModuleLister, CodeIsDividedAndNamed)
{
    EXPECT_EQ(0, run("-c m.kob"));
    expect_line("Code\nM.MAIN:\nm.$CODE:\nM.$NONVOLEND:");
    for (const char *line : {
             "  00000008  4b 00 04         ALLOC 4",
             "  0000000b  28 ff ff ff f4   LCA 00000000 M.STRINGS \"Hi\\x0a\"",
             "  00000011  49 00 00 00 16   CALL 00000028",
             "  00000016  49 00 00 00 00   CALL LIB.F",
             "  0000001b  51 01 02         SYSCALL 258 IO.BEEP",
             "  00000020  00 02             default 00000022",
             "  00000022  ff e8                   0 0000000a",
             "  00000024  69 3d            STRCMP EQ",
             "  00000026  92               USER_PCODE(146) $BLINK",
             "  00000027  1f               31",
             "00000028:\n  00000028  20 fe            SLIT -2",
             "0000002b:\n  0000002b  4b 00 02         ALLOC 2",
             "M.DATA:\n  00000030  de ad be ef 43 00                                ....C.",
         })
        expect_line(line);
    EXPECT_EQ(std::string::npos, out.find("00000004")); // the nonvolatile area is no code
}

TEST_F(ModuleLister, PartsAreShownAsAsked)
{
    EXPECT_EQ(0, run("-t -y --frames -x m.kob"));
    expect_line("Static offsets\n  0000000c");
    expect_line("  fffffff9  VALUE            INT              M.MAX");
    expect_line("  FUNCTION M.MAIN, size 4, line 17");
    expect_line("         2  COUNT                    dimension 1     flags 1065  VAR INT");
    expect_line("  00000030  de ad be ef 43 00                                ....C.");
    EXPECT_EQ(std::string::npos, out.find("Header"));
    EXPECT_EQ(0, run("--all m"));
    for (const char *part : { "Header", "Static offsets", "Symbols", "Debug frames", "Code" })
        expect_line(part);
}

TEST_F(ModuleLister, OneSymbolIsShownAlone)
{
    EXPECT_EQ(0, run("-s M.DATA m.kob"));
    expect_line("  00000030  LOCAL            WAVEFORM         M.DATA");
    expect_line("M.DATA:");
    EXPECT_EQ(std::string::npos, out.find("M.MAIN"));
    EXPECT_EQ(1, run("-s NONE m.kob"));
    EXPECT_EQ("", out);
    EXPECT_EQ("pkob: m.kob: no symbol NONE\n", err);
}

TEST_F(ModuleLister, JsonHoldsEverything)
{
    EXPECT_EQ(0, run("--json m.kob"));
    json module = json::parse(out);
    EXPECT_EQ("m", module["header"]["name"]);
    EXPECT_EQ("Espa\u00F1a\x1B\"", module["header"]["country"]);
    EXPECT_EQ(json({ 12 }), module["static_offsets"]);
    EXPECT_EQ(13u, module["symbols"].size());
    EXPECT_EQ(-7, module["symbols"][7]["value"]);
    EXPECT_EQ("COUNT", module["frames"][0]["entries"][0]["name"]);
    EXPECT_EQ(2 * sizeof image, module["image"].get<std::string>().size());
    const json &code = module["code"];
    ASSERT_EQ(4u, code.size());
    EXPECT_EQ("ALLOC", code[0]["instructions"][0]["mnemonic"]);
    EXPECT_EQ(0x28, code[0]["instructions"][3]["target"]);
    EXPECT_EQ(0x22, code[0]["instructions"][6]["default"]);
    EXPECT_EQ("deadbeef4300", code[3]["bytes"]);
    EXPECT_EQ(1, run("--json -H m.kob none.kob m.kob"));
    EXPECT_EQ(2u, json::parse(out).size());
}

TEST_F(ModuleLister, WrongUsageGivesAHint)
{
    for (const char *arguments : { "", "-q m.kob", "-cq m.kob", "--nothing m.kob", "m.kob -s",
                                   "--code=1 m.kob", "--json" }) {
        EXPECT_EQ(2, run(arguments)) << arguments;
        EXPECT_EQ("", out) << arguments;
        EXPECT_EQ(1, std::count(err.begin(), err.end(), '\n')) << err;
        EXPECT_NE(std::string::npos, err.find("--help")) << err;
    }
    EXPECT_EQ(0, run("--help"));
    for (const char *word : { "--json", "-s, --symbol=NAME", "-c, --code" })
        EXPECT_NE(std::string::npos, out.find(word)) << word;
    EXPECT_EQ(0, run("--version"));
    EXPECT_EQ("pkob " OSTRUM_VERSION "\n", out);
}

TEST_F(ModuleLister, WhatIsNoModuleGetsOneLine)
{
    std::string good = content_of("m.kob");
    const struct {
        std::string bytes;
        const char *message;
    } rows[] = {
        { "", "Not a KOB file" },
        { std::string(500, 'x'), "Not a KOB file" },
        { std::string("KOB\0\0\0\0\x18", 8), "KOB file out of date" },
        { std::string("KOB\0\0\0\0\x1A", 8), "Using an old tool on a new KOB file" },
        { good.substr(0, 100), "The module is cut short" },
        { good.substr(0, good.size() - 1), "The module is damaged" },
    };
    for (const auto &row : rows) {
        write("bad.kob", row.bytes);
        EXPECT_EQ(1, run("--json -a bad.kob")) << row.message;
        EXPECT_EQ("", out);
        EXPECT_EQ("pkob: bad.kob: " + std::string(row.message) + "\n", err);
    }
    EXPECT_EQ(1, run("."));
    EXPECT_EQ(1, run("none.kob"));
    EXPECT_EQ("pkob: none.kob: Failed to open the module\n", err);
}

TEST_F(ModuleLister, AnyCodeIsListed)
{
    std::string good = content_of("m.kob");
    uint32_t state = 99;
    for (int round = 0; round < 10; round++) {
        std::string bytes = good;
        for (size_t i = 162; i < 162 + sizeof image; i++) {
            state = state * 1664525 + 1013904223;
            bytes[i] = (char)(state >> 24);
        }
        write("any.kob", bytes);
        ASSERT_EQ(0, run("--json any.kob")) << err;
        EXPECT_TRUE(json::accept(out)) << out;
        ASSERT_EQ(0, run("-a -x any.kob")) << err;
    }
}

} // namespace
