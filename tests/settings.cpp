/*
 * Settings: order of the sources, damaged stores, writing without loss, versions.
 */
#include "core/sh.h"
#include "host/host.h"
#include "scratch_folder.h"
#include "written.h"

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <ostrum/qlv.h>
#include <ostrum/quillreg.h>
#include <ostrum/sld.h>
#include <ostrum/st.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

OSTRUM_VERSION_BLOCK("tests", "9.8.7", "9.8", "free to use");

namespace
{

namespace fs = std::filesystem;

constexpr const char *suite_key = "Software\\Halvorn\\Quill";

class Settings : public ScratchFolder
{
protected:
    Settings()
    {
        setenv("OSTRUM_SETTINGS", (folder / "new/folder/user").c_str(), 1);
        setenv("OSTRUM_DEFAULT_SETTINGS", (folder / "default").c_str(), 1);
        unsetenv("Sym");
    }
    ~Settings() override { QUILLREG_CleanUp(); }

    void write_user(const std::string &content)
    {
        fs::create_directories("new/folder");
        write("new/folder/user", content);
    }

    std::string user() { return content_of("new/folder/user"); }
};

const char *hook(void *user, const char *symbol)
{
    return std::string(symbol) == "Hooked" ? static_cast<const char *>(user) : nullptr;
}

std::string look_up(const char *symbol)
{
    const char *value = QUILLREG_GetSymbol(symbol);
    return value == nullptr ? "<none>" : value;
}

TEST_F(Settings, SourcesInOrder)
{
    std::ofstream("default") << "[Environment]\nSym=de\n";
    EXPECT_EQ(look_up("Sym"), "de");
    write_user("[Environment]\nSym=ue\n");
    EXPECT_EQ(look_up("Sym"), "ue");
    setenv("Sym", "process", 1);
    EXPECT_EQ(look_up("Sym"), "process");
    std::ofstream("default") << "[Software\\Halvorn\\Quill]\nSym=dq\nHooked=dq\n";
    EXPECT_EQ(look_up("Sym"), "dq");
    write_user("[software\\halvorn\\QUILL]\r\n sym = u q \r\n");
    EXPECT_EQ(look_up("Sym"), "u q");
    char word[] = "hooked";
    QUILLREG_SetExternalValueCallback(word, hook);
    EXPECT_EQ(look_up("Hooked"), "hooked");
    EXPECT_EQ(look_up("Sym"), "u q"); // the hook gives nothing
    QUILLREG_CleanUp();
    EXPECT_EQ(look_up("Hooked"), "dq");
    EXPECT_EQ(look_up("Other"), "<none>");
}

TEST_F(Settings, DamagedStoresHoldNothingOrWhatCanBeRead)
{
    static const std::string head = std::string("[") + suite_key + "]\n";
    const struct {
        std::string content;
        const char *value;
    } cases[] = {
        { "", "<none>" },
        { "Sym=1", "<none>" }, // in no section
        { head + "Sym", "<none>" },
        { head + "Sym=1", "1" },
        { head + "=\n[\n]\n[]x\nSym==1\nSym=2", "=1" },
        { head + "[other]\nSym=1\n" + head + "Sym=2\n", "2" },
        { head + std::string("a\0b=1\nSym=x\0y\n", 14), "x" },
        { "\xEF\xBB\xBF" + head + "Sym=bom\n", "bom" },
        { std::string(100000, '[') + "\n" + head + "Sym=late\n", "late" },
        { head + "Symbol=1\nSy=2\nSym=\n", "" },
    };
    for (const auto &row : cases) {
        write_user(row.content);
        EXPECT_EQ(look_up("Sym"), row.value) << row.content.substr(0, 80);
    }
    write_user("");
    fs::resize_file("new/folder/user", 1ull << 40); // no store is so large
    EXPECT_EQ(look_up("Sym"), "<none>");
    EXPECT_FALSE(HOST_WriteSetting("k", "n", "v"));
    fs::remove("new/folder/user");
    fs::create_directory("new/folder/user");
    EXPECT_EQ(look_up("Sym"), "<none>");
    EXPECT_FALSE(HOST_WriteSetting("k", "n", "v"));
    fs::remove("new/folder/user");
    ASSERT_EQ(mkfifo("new/folder/user", 0600), 0); // must not wait for a writer
    EXPECT_EQ(look_up("Sym"), "<none>");
    EXPECT_FALSE(HOST_WriteSetting("k", "n", "v"));
}

TEST_F(Settings, WritingLosesNothing)
{
    ASSERT_TRUE(HOST_WriteSetting("first", "a", "1"));
    EXPECT_EQ(user(), "[first]\na=1\n");
    EXPECT_EQ(std::distance(fs::directory_iterator("new/folder"), {}), 1); // nothing left over
    write_user("; note\n[First]\nodd line\n A = 0\r\n\n[second]\nb=2");
    fs::permissions("new/folder/user", fs::perms{ 0640 });
    ASSERT_TRUE(HOST_WriteSetting("first", "a", "line\nbreak"));
    ASSERT_TRUE(HOST_WriteSetting("first", "n", "new"));
    ASSERT_TRUE(HOST_WriteSetting("second", "c", "3"));
    ASSERT_TRUE(HOST_WriteSetting("third", "d", ""));
    EXPECT_EQ(user(), "; note\n[First]\nodd line\na=line break\nn=new\n\n[second]\nb=2\nc=3\n"
                      "[third]\nd=\n");
    EXPECT_EQ(fs::status("new/folder/user").permissions(), fs::perms{ 0640 });
    fs::rename("new/folder/user", "real");
    fs::create_symlink("../../real", "new/folder/user");
    ASSERT_TRUE(HOST_WriteSetting("first", "a", "linked"));
    EXPECT_TRUE(fs::is_symlink("new/folder/user"));
    char *value = HOST_ReadSetting(HOST_CURRENT_USER, "first", "a");
    EXPECT_STREQ(value, "linked");
    SH_Free(value);
    if (geteuid() == 0) return; // may write anything
    fs::permissions("real", fs::perms::owner_read);
    EXPECT_FALSE(HOST_WriteSetting("first", "a", "kept"));
}

int32_t note_entry(void *user, const char *entry)
{
    *static_cast<std::string *>(user) += std::string("<") + entry + ">";
    look_up("Other"); // a look-up inside the walk must not hurt it
    return 0;
}

TEST_F(Settings, Entries)
{
    static constexpr struct {
        const char *value;
        const char *entries;
    } cases[] = {
        { "a;b,c", "<a><b><c>" },
        { "a;;b", "<a><><b>" },
        { "", "<>" },
        { ",", "<><>" },
    };
    for (const auto &row : cases) {
        std::string entries;
        write_user(std::string("[") + suite_key + "]\nSym=" + row.value + "\n");
        EXPECT_EQ(QUILLREG_AllSymbols("Sym", note_entry, &entries), 0);
        setenv("Sym", row.value, 1);
        EXPECT_EQ(SLD_AllSymbols("Sym", note_entry, &entries), 0);
        EXPECT_EQ(entries, std::string(row.entries) + row.entries);
    }
    unsetenv("Sym");
    EXPECT_EQ(QUILLREG_AllSymbols("Absent", note_entry, nullptr), -1);
    EXPECT_EQ(SLD_AllSymbols("Absent", note_entry, nullptr), -1);
    char buffer[4] = "old";
    EXPECT_EQ(SLD_GetSymbol("Absent", buffer, 4), -2);
    EXPECT_STREQ(buffer, "old");
    setenv("Sym", "abcdef", 1);
    EXPECT_EQ(SLD_GetSymbol("Sym", buffer, 4), 0);
    EXPECT_STREQ(buffer, "abc");
}

TEST_F(Settings, ContextFilesDropTheirOwnDirectory)
{
    fs::create_directories("one");
    fs::create_directories("two");
    fs::create_directories("x");
    std::ofstream("two/y.ext") << "two";
    std::ofstream("x/y.ext") << "own";
    FILE *stream = nullptr;
    ASSERT_EQ(QUILLREG_OpenFContextFile(&stream, "Sym", "x\\y.ext", 0), 0); // no value: as named
    EXPECT_EQ(std::getc(stream), 'o');
    std::fclose(stream);
    setenv("Sym", "one;two;one", 1);
    ASSERT_EQ(QUILLREG_OpenFContextFile(&stream, "Sym", "x\\y.ext;4", 0), 0);
    EXPECT_EQ(std::getc(stream), 't');
    std::fclose(stream);
    intptr_t handle = 0;
    EXPECT_EQ(QUILLREG_OpenBFContextFile(&handle, "Sym", "x\\z.ext", 0), 2);
}

TEST_F(Settings, LanguageIsTakenOnce)
{
    const std::string before = std::setlocale(LC_CTYPE, nullptr);
    if (std::setlocale(LC_CTYPE, "C.UTF-8") == nullptr) GTEST_SKIP() << "no such locale here";
    std::setlocale(LC_CTYPE, before.c_str());
    write_user("[Control Panel\\International]\nsLanguage=C.UTF-8\n");
    ST_Initialise();
    EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C.UTF-8");
    std::setlocale(LC_CTYPE, before.c_str());
    ST_Initialise();
    EXPECT_EQ(std::setlocale(LC_CTYPE, nullptr), before);
}

TEST_F(Settings, StoreInTheHomeFolderIsTheUsersAlone)
{
    const std::string home = fs::current_path().string();
    unsetenv("OSTRUM_SETTINGS");
    unsetenv("OSTRUM_DEFAULT_SETTINGS");
    unsetenv("XDG_CONFIG_HOME");
    setenv("HOME", home.c_str(), 1);
    ASSERT_TRUE(HOST_WriteSetting("key of tests", "a", "1"));
    EXPECT_TRUE(fs::exists(".config/ostrum/settings"));
    EXPECT_EQ(HOST_ReadSetting(HOST_DEFAULT_USER, "key of tests", "a"), nullptr);
    setenv("XDG_CONFIG_HOME", (home + "/config").c_str(), 1);
    EXPECT_EQ(HOST_ReadSetting(HOST_CURRENT_USER, "key of tests", "a"), nullptr);
    ASSERT_TRUE(HOST_WriteSetting("key of tests", "a", "2"));
    EXPECT_TRUE(fs::exists("config/ostrum/settings"));
}

TEST_F(Settings, Versions)
{
    EXPECT_EQ(QLV_GetFileVersion(), std::string("/") + HOST_LibraryVersion());
    QLV_GetVersionInfo();
    const std::string stored = user();
    EXPECT_NE(stored.find("[Software\\Halvorn\\Quill\\"), std::string::npos);
    EXPECT_NE(stored.find("\\Version]\nInternal=tests\nFile=9.8.7\nProduct=9.8\n"),
              std::string::npos);
    EXPECT_NE(stored.find("=free to use\n"), std::string::npos);
    EXPECT_EQ(QLV_GetFileVersion(), std::string("9.8.7/") + HOST_LibraryVersion());
    EXPECT_EQ(HOST_ProgramVersion("Nothing"), nullptr);
    std::string lengthy = user();
    write_user(lengthy.replace(lengthy.find("9.8.7"), 5, "1234567890123456789012345"));
    EXPECT_STREQ(QLV_GetFileVersion(), "1234567890123456789");
}

} // namespace
