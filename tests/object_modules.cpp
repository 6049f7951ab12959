/*
 * Module files from TOLL source: code, symbols, static offsets, debug frames and flags, read back
 * from the file, and what is reported when a module cannot be generated.
 */
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <ostrum.h>
#include <string>
#include <unistd.h>
#include <vector>

#include "module_contents.h"
#include "program.h"
#include "written.h"

namespace
{

using Bytes = std::vector<int>;
using Texts = std::vector<std::string>;

enum { READ_WHOLE = 0, READ_SECTIONS = 2 };
constexpr uint32_t private_symbols = 0x0004;
enum { FLAG_DEBUG = 0x20, FLAG_LINES = 0x02, FLAG_CHECKS = 0x200 };

Texts messages;

void keep_message(TLT_STATEMENT *, int32_t level, const char *text)
{
    if (level > 1) messages.push_back(text);
}

class ObjectModules : public testing::Test
{
protected:
    void SetUp() override
    {
        setenv("SOURCE_DATE_EPOCH", "1000000000", 1);
        TLCG_Initialise();
        TLT_DefaultMessageHandler(keep_message);
        messages.clear();
        folder = testing::TempDir() + "object_modules." + std::to_string(getpid());
        std::filesystem::create_directories(folder);
        setenv("TollInclude", folder.c_str(), 1);
    }

    void TearDown() override
    {
        TLP_DelModule(module);
        std::filesystem::remove_all(folder);
    }

    std::string path(const std::string &file) const { return folder + "/" + file; }

    void write(const std::string &name, const std::string &source) const
    {
        std::ofstream(path(name + ".tl")) << source;
    }

    /** Reads and parses a source; a module read in whole needs no further parsing. */
    void read(const std::string &name, const std::string &source, int32_t mode = READ_SECTIONS)
    {
        write(name, source);
        TLP_DelModule(module);
        TLP_ReadModule2(nullptr, path(name + ".tl").c_str(), &module, stdout, 0, mode, nullptr,
                        nullptr);
        ASSERT_NE(module, nullptr);
        if (mode == READ_SECTIONS) TLP_AllSections(module, whole_module::parse, module);
    }

    int32_t generate(const std::string &name, uint32_t flags = 0) const
    {
        return TLCG_GenerateKOBCode(module, flags, path(name + ".kob").c_str(), 0, "1.0");
    }

    /** Reads a module file back. */
    void load(const std::string &name) { made = contents_of(path(name + ".kob")); }

    void compile(const std::string &name, const std::string &source, uint32_t flags = 0,
                 int32_t mode = READ_SECTIONS)
    {
        ASSERT_NO_FATAL_FAILURE(read(name, source, mode));
        ASSERT_EQ(generate(name, flags), 0);
        load(name);
        TLP_SetModuleFlags(module, private_symbols);
        ASSERT_EQ(generate("verified", flags), 0);
        program::expect_sound(path("verified.kob"));
    }

    TLP_MODULE *module = nullptr;
    std::string folder;
    ModuleContents made;
};

const char *const add_source = "MODULE first\n"
                               "FUNCTION INT add(INT a, INT b)\n"
                               "PRIVATE\n"
                               "FUNCTION INT add(INT a, INT b)\n"
                               "BEGIN\n"
                               "    RETURN a + b\n"
                               "END\n";

TEST_F(ObjectModules, SmallFunction)
{
    compile("first", add_source);
    EXPECT_EQ(messages, Texts());
    EXPECT_EQ(made.code, Bytes({ 75, 0, 8, 0, 36, 4, 36, 48, 74, 80 }));
    EXPECT_EQ(made.symbols, Texts({ "0 $FIRST START 0", "11 first.tl CODE 0", "0 FIRST.add CODE 0",
                                    "0 first.$CODE CODE 0" }));
    EXPECT_EQ(made.flags, 0u);
    EXPECT_EQ(made.frames, Texts());
    compile("first", add_source, FLAG_LINES);
    EXPECT_EQ(made.code, Bytes({ 75, 0, 8, 82, 0, 6, 0, 36, 4, 36, 48, 74, 82, 0, 7, 80 }));
}

TEST_F(ObjectModules, DataAndCodeInOneImage)
{
    compile("parts", "MODULE parts\n"
                     "CONST INT LIMIT = 70000\n"
                     "      INT TABLE[3] = 1, 2, 3\n"
                     "      STRING NAME = \"pump\"\n"
                     "SYSCALL (5, 256) VOID beep(INT n)\n"
                     "FUNCTION INT pick(INT i)\n"
                     "PRIVATE\n"
                     "CONST CHAR SMALL[3] = 1, 2, 3\n"
                     "NONVOLATILE INT counter\n"
                     "VAR INT spare, total\n"
                     "FUNCTION INT pick(INT i)\n"
                     "BEGIN\n"
                     "    beep(LIMIT)\n"
                     "    total = TABLE[i]\n"
                     "    RETURN counter\n"
                     "END\n");
    EXPECT_EQ(messages, Texts());
    const Bytes expected = {
        0,  0,    0,    1,    0,    0,    0,    2,  0,  0,  0, 3,            // TABLE
        1,  2,    3,    0,                                                   // SMALL, padded
        0,  0,    0,    0,                                                   // counter
        75, 0,    4,                                                         // frame of pick
        72, 34,   0,    1,    0x11, 0x70, 112,  5,  78,                      // beep
        0,  36,   40,   0xff, 0xff, 0xff, 0xdd, 96, 42, 38, 0, 0, 0, 4, 107, // total =
        40, 0xff, 0xff, 0xff, 0xe0, 42,   74,                                // RETURN
        80, 0,                                                               // END, spare byte
    };
    EXPECT_EQ(made.code, expected);
    EXPECT_EQ(made.static_offsets, Bytes({ 42 }));
    EXPECT_EQ(made.static_size, 8);
    EXPECT_EQ(made.flags, 0x100u);
    const Texts expected_symbols = {
        "0 $PARTS START 0",           "11 parts.tl CODE 0",      "13 PARTS.beep SYSCALL_DEF 5",
        "0 PARTS.TABLE INT 0",        "0 PARTS.pick CODE 20",    "0 PARTS.CONSTANTS CONSTANTS 0",
        "0 parts.$CODE CODE 20",      "5 PARTS.LIMIT INT 70000", "7 PARTS.$NONVOLSTART CODE 16",
        "8 PARTS.$NONVOLEND CODE 20",
    };
    EXPECT_EQ(made.symbols, expected_symbols);
}

TEST_F(ObjectModules, ReferencesInsideAndOutside)
{
    write("tools", "MODULE tools\n"
                   "FUNCTION VOID help(STRING text)\n"
                   "PRIVATE\n");
    compile("calls", "MODULE calls\n"
                     "USES tools\n"
                     "FUNCTION VOID run()\n"
                     "PRIVATE\n"
                     "FUNCTION VOID own()\n"
                     "BEGIN\n"
                     "END\n"
                     "FUNCTION VOID run()\n"
                     "BEGIN\n"
                     "    own()\n"
                     "    TOOLS.help(\"no\")\n"
                     "    TOOLS.help(\"no\")\n"
                     "END\n");
    EXPECT_EQ(messages, Texts());
    const Bytes expected = {
        'n', 'o', 0,                                                 // pool
        0,   74,                                                     // own
        72,  73,  0xff, 0xff, 0xff, 0xfc, 78,                        // own()
        72,  40,  0xff, 0xff, 0xff, 0xf2, 73, 0, 0, 0, 0, 78,        // help
        72,  40,  0xff, 0xff, 0xff, 0xe6, 73, 0, 0, 0, 0, 78, 0, 74, // help again, END
    };
    EXPECT_EQ(made.code, expected);
    EXPECT_EQ(made.symbols, Texts({ "0 $CALLS START 0", "11 calls.tl CODE 0", "0 CALLS.run CODE 5",
                                    "1 TOOLS.help CODE 19", "1 TOOLS.help CODE 31",
                                    "0 CALLS.STRINGS STRINGS 0", "0 calls.$CODE CODE 3" }));
    EXPECT_EQ(made.flags, 0x10u);
}

TEST_F(ObjectModules, NestedFunctionsComeFirst)
{
    compile("nest",
            "MODULE nest\n"
            "PRIVATE\n"
            "FUNCTION INT outer(INT a)\n"
            "FUNCTION INT inner()\n"
            "BEGIN\n"
            "    RETURN a\n"
            "END\n"
            "BEGIN\n"
            "    RETURN inner()\n"
            "END\n",
            FLAG_DEBUG, READ_WHOLE);
    EXPECT_EQ(messages, Texts());
    const Bytes expected = {
        120, 0, 0, 0,  9,  0,    36,   121,  74,   80, // inner, in the frame of outer
        75,  0, 4, 72, 73, 0xff, 0xff, 0xff, 0xf1, 74, 80, 0,
    };
    EXPECT_EQ(made.code, expected);
    EXPECT_EQ(made.frames, Texts({ "NEST.$STATICS STATIC DATA 0 0", "NEST.inner FUNCTION 0 4",
                                   "NEST.outer FUNCTION 4 3", "  a INT 0 1 0" }));
}

TEST_F(ObjectModules, DebugFrames)
{
    compile("frames",
            "MODULE frames\n"
            "ENUM COLOUR = RED GREEN\n"
            "TYPEDEF RECORD PAIR (INT x, CHAR c[3])\n"
            "PRIVATE\n"
            "TYPEDEF -> PAIR LINK\n"
            "VAR INT n[4]\n"
            "    COLOUR paint\n"
            "    PAIR here\n"
            "    LINK there\n"
            "    BOOL flag\n"
            "FUNCTION VOID f(VAR INT v, COLOUR e)\n"
            "VAR PAIR mine\n"
            "BEGIN\n"
            "END\n",
            FLAG_DEBUG);
    EXPECT_EQ(messages, Texts());
    const Texts expected = {
        "FRAMES.$STATICS STATIC DATA 32 0",
        "  n INT 0 4 0",
        "  paint FRAMES.COLOUR 104 1 16",
        "  here FRAMES.PAIR 105 1 18",
        "  there FRAMES.PAIR 8297 1 26",
        "  flag BOOL 102 1 30",
        "FRAMES.PAIR RECORD 8 3",
        "  x INT 0 1 0",
        "  c CHAR 100 3 4",
        "FRAMES.COLOUR ENUMERATION 0 2",
        "  RED  0 0 0",
        "  GREEN  0 0 1",
        "FRAMES.f FUNCTION 16 11",
        "  v INT 4096 1 0",
        "  e FRAMES.COLOUR 104 1 4",
        "  mine FRAMES.PAIR 105 1 8",
    };
    EXPECT_EQ(made.frames, expected);
    EXPECT_EQ(made.flags, 4u);
}

TEST_F(ObjectModules, RecordsThatPointAtOneAnotherToAnyDepth)
{
    std::string source = "MODULE chain\nTYPEDEF RECORD R0 (INT x)\n";
    const int depth = 5000;
    for (int at = 1; at <= depth; at++) {
        const std::string before = std::to_string(at - 1);
        const std::string number = std::to_string(at);
        source += "TYPEDEF -> R" + before + " P" + before + "\nTYPEDEF RECORD R" + number + " (P" +
                  before + " p)\n";
    }
    source += "PRIVATE\nVAR R" + std::to_string(depth) + " top\n";
    compile("chain", source, FLAG_DEBUG);
    EXPECT_EQ(messages, Texts());
    ASSERT_EQ(made.frames.size(), size_t{ 2 } + 2 * (depth + 1));
    EXPECT_EQ(made.frames[2], "CHAIN.R5000 RECORD 4 10002");
    EXPECT_EQ(made.frames.back(), "  x INT 0 1 0");
}

TEST_F(ObjectModules, SameSourceSameBytes)
{
    compile("first", add_source, FLAG_DEBUG);
    const std::string once = content_of(path("first.kob"));
    ASSERT_EQ(generate("again", FLAG_DEBUG), 0);
    std::string again = content_of(path("again.kob"));
    ASSERT_EQ(again.size(), once.size());
    again.replace(8, 5, "first"); // the header holds the file's own name
    EXPECT_EQ(again, once);
}

TEST_F(ObjectModules, PrivateSymbolsOnRequest)
{
    const std::string source = "MODULE hidden\n"
                               "ENTRY FUNCTION VOID go()\n"
                               "PRIVATE\n"
                               "FUNCTION VOID sub()\n"
                               "BEGIN\n"
                               "END\n"
                               "FUNCTION VOID go()\n"
                               "BEGIN\n"
                               "END\n";
    ASSERT_NO_FATAL_FAILURE(read("hidden", source));
    TLP_SetModuleFlags(module, 4);
    ASSERT_EQ(generate("hidden"), 0);
    load("hidden");
    EXPECT_EQ(made.symbols,
              Texts({ "0 $HIDDEN START 0", "11 hidden.tl CODE 0", "3 HIDDEN.sub CODE 0",
                      "4 HIDDEN.go CODE 2", "0 hidden.$CODE CODE 0" }));
}

TEST_F(ObjectModules, LibrariesOfSyscalls)
{
    write("lib", "MODULE lib\n"
                 "PRAGMA (LIB, DLL_NAME) = \"tester.dll,3\"\n"
                 "SYSCALL (2) VOID far()\n"
                 "PRIVATE\n");
    compile("user", "MODULE user\n"
                    "USES lib\n"
                    "PRAGMA (USER, DLL_NAME) = \"own\"\n"
                    "PRIVATE\n"
                    "FUNCTION VOID f()\n"
                    "BEGIN\n"
                    "    LIB.far()\n"
                    "END\n");
    EXPECT_EQ(messages, Texts());
    EXPECT_EQ(made.code, Bytes({ 72, 81, 3, 2, 78, 0, 74, 0 }));
    EXPECT_EQ(made.symbols, Texts({ "0 $USER START 0", "11 user.tl CODE 0", "17 own DLL_NAME 0",
                                    "17 tester.dll DLL_NAME 3", "13 LIB.far SYSCALL_DEF 770",
                                    "0 user.$CODE CODE 0" }));
}

TEST_F(ObjectModules, WarningsAreNotedErrorsDeleteTheFile)
{
    compile("warned", "MODULE warned\n"
                      "PRIVATE\n"
                      "FUNCTION VOID f()\n"
                      "BEGIN\n"
                      "    RETURN\n"
                      "    RETURN\n"
                      "END\n");
    EXPECT_EQ(messages, Texts({ "Unreachable code" }));
    EXPECT_EQ(made.flags, 1u);
    TLT_Error(nullptr, "Late error");
    EXPECT_EQ(generate("warned"), 0);
    EXPECT_FALSE(std::filesystem::exists(path("warned.kob")));
}

TEST_F(ObjectModules, FaultsOfGeneration)
{
    ASSERT_NO_FATAL_FAILURE(read("open", "MODULE open\n"
                                         "SYSCALL (1) VOID s()\n"
                                         "TYPEDEF FUNCTION INT t(INT x)\n"
                                         "FUNCTION VOID f()\n"
                                         "PRIVATE\n"));
    EXPECT_EQ(generate("open"), 0);
    EXPECT_EQ(messages, Texts({ "Public function 'f' has no definition" }));
    EXPECT_FALSE(std::filesystem::exists(path("open.kob")));

    messages.clear();
    ASSERT_NO_FATAL_FAILURE(read("abcdefghijklmnopqrs", "MODULE abcdefghijklmnopqrs\n"
                                                        "PRIVATE\n"
                                                        "NONVOLATILE INT n\n"));
    EXPECT_EQ(generate("abcdefghijklmnopqrs"), 0);
    EXPECT_EQ(messages, Texts({ "Failed to create symbol 'ABCDEFGHIJKLMNOPQRS.$NONVOLSTART' : "
                                "Symbol too long" }));
    EXPECT_FALSE(std::filesystem::exists(path("abcdefghijklmnopqrs.kob")));
}

TEST_F(ObjectModules, FileThatCannotBeMade)
{
    ASSERT_NO_FATAL_FAILURE(read("first", add_source));
    EXPECT_EQ(generate("missing/first"), 107);
    EXPECT_STREQ(TLCG_Message(107), "Failed to open the module");
    EXPECT_STREQ(TLCG_Message(0), "Successful");
    EXPECT_STREQ(TLCG_Message(2), "Can't open the 'Java' output file");
    for (int32_t odd : { -1, 3, 99, 110, INT32_MAX })
        EXPECT_NE(*TLCG_Message(odd), 0);
}

TEST_F(ObjectModules, BlockMetTwiceIsGeneratedOnce)
{
    const std::string body = "FUNCTION INT f()\nBEGIN\n    RETURN 1\nEND\n";
    ASSERT_NO_FATAL_FAILURE(read("twice", "MODULE twice\nPRIVATE\n" + body + body));
    TLT_ResetCounters();
    ASSERT_EQ(generate("twice"), 0);
    load("twice");
    EXPECT_EQ(made.code, Bytes({ 1, 74, 80, 0 }));
}

TEST_F(ObjectModules, FrameSizes)
{
    const std::string head = "MODULE wide\nPRIVATE\nFUNCTION VOID f()\nVAR CHAR c[";
    compile("wide", head + "65534]\nBEGIN\nEND\n", FLAG_DEBUG);
    EXPECT_EQ(messages, Texts());
    EXPECT_EQ(made.code, Bytes({ 75, 0xff, 0xfe, 0, 74, 0 }));
    EXPECT_EQ(made.frames, Texts({ "WIDE.$STATICS STATIC DATA 0 0", "WIDE.f FUNCTION 32767 3",
                                   "  c CHAR 100 32767 0" }));
    ASSERT_NO_FATAL_FAILURE(read("wide", head + "65535]\nBEGIN\nEND\n"));
    EXPECT_EQ(generate("wide"), 0);
    EXPECT_EQ(messages, Texts({ "Frame too large" }));
}

} // namespace
