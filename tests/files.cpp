/*
 * Files: names, statuses, lines, directories, descriptors, mappings, and paths of either form.
 */
#include "core/bf.h"
#include "scratch_folder.h"
#include "written.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <ostrum/f.h>
#include <ostrum/ifc.h>
#include <sstream>
#include <string>

namespace
{

namespace fs = std::filesystem;

using Files = ScratchFolder;

TEST(FileNames, TakenApart)
{
    static constexpr struct {
        const char *path;
        const char *parts; // directory|name|extension
    } cases[] = {
        { "c:\\dir\\name.ext;3", "c:\\dir\\|name|ext" },
        { "c:name", "c:|name|" },
        { "a.b.c", "|a.b|c" },
        { "/usr/x.d/file", "/usr/x.d/|file|" },
        { "d\\e/f.tl", "d\\e/|f|tl" },
        { "name;2.x", "|name|x" },
        { "d\\x:y", "d\\|x:y|" },
        { "", "||" },
        { ".tl", "||tl" },
    };
    char directory[120];
    char name[38];
    char extension[38];
    for (const auto &row : cases) {
        EXPECT_EQ(F_ParseFilename(row.path, directory, name, extension), 0);
        EXPECT_EQ(std::string(directory) + "|" + name + "|" + extension, row.parts) << row.path;
    }
    const std::string lengthy =
        std::string(200, 'd') + "\\" + std::string(50, 'n') + "." + std::string(50, 'e');
    F_ParseFilename(lengthy.c_str(), directory, name, extension);
    EXPECT_EQ(directory, std::string(119, 'd'));
    EXPECT_EQ(name, std::string(37, 'n'));
    EXPECT_EQ(extension, std::string(37, 'e'));
    EXPECT_EQ(F_ParseFilename("a.b", nullptr, nullptr, nullptr), 0);
}

TEST(FileNames, PutTogether)
{
    char path[120];
    EXPECT_STREQ(F_MakeFilename(path, "c:\\", "a", "b"), "c:\\a.b");
    EXPECT_STREQ(F_MakeFilename(path, "c:", "a", "b"), "c:a.b");
    EXPECT_STREQ(F_MakeFilename(path, "d", "a", "b"), "d\\a.b");
    EXPECT_STREQ(F_MakeFilename(path, "/d/", "a", ""), "/d/a");
    EXPECT_STREQ(F_MakeFilename(path, nullptr, nullptr, "b"), ".b");
    EXPECT_STREQ(F_MakeBackupFilename(path, "", "a", "b"), "a.b%");
    const std::string lengthy(300, 'x');
    EXPECT_EQ(std::strlen(F_MakeBackupFilename(path, lengthy.c_str(), "a", "b")), 119u);
}

TEST_F(Files, TextStatuses)
{
    FILE *stream = stdin;
    EXPECT_EQ(F_OpenFile(&stream, "x", 3), 1);
    EXPECT_EQ(stream, stdin);
    EXPECT_EQ(F_OpenFile(&stream, "missing", 0), 2);
    EXPECT_EQ(stream, nullptr);
    EXPECT_EQ(F_OpenFile(&stream, ".", 0), 2); // a directory is no file
    EXPECT_EQ(F_OpenFile(&stream, std::string(120, 'p').c_str(), 1), 2);
    EXPECT_EQ(F_OpenFile(&stream, std::string(119, 'p').c_str(), 1), 0);
    EXPECT_EQ(F_CloseFile(stream), 0);
    ASSERT_EQ(F_OpenFile(&stream, "t", 1), 0);
    std::fputs("one", stream);
    EXPECT_EQ(F_CloseFile(stream), 0);
    ASSERT_EQ(F_OpenFile(&stream, "t", 2), 0);
    std::fputs("two", stream);
    EXPECT_EQ(F_CloseFile(stream), 0);
    EXPECT_EQ(content_of("t"), "onetwo");
    int32_t size = 0;
    int64_t time = 0;
    EXPECT_EQ(F_FileSize("t", &size), 0);
    EXPECT_EQ(size, 6);
    EXPECT_EQ(F_FileUpdateTime("t", &time), 0);
    EXPECT_LT(std::abs(time - std::time(nullptr)), 100);
    EXPECT_EQ(F_FileSize("u", &size), 6);
    EXPECT_EQ(F_FileUpdateTime("u", &time), 6);
    EXPECT_EQ(F_CheckAccess("t", 4), 0);
    EXPECT_EQ(F_CheckAccess("u", 0), 5);
    EXPECT_EQ(F_CheckAccess("t", 2), 1);
    EXPECT_EQ(F_RenameFile("t", "u"), 0);
    EXPECT_EQ(F_RenameFile("t", "u"), 3);
    EXPECT_EQ(F_DeleteFile("u"), 0);
    EXPECT_EQ(F_DeleteFile("u"), 4);
    EXPECT_EQ(F_CopyFile(), 9);
    EXPECT_EQ(F_Chdir("nowhere"), 9);
    std::string messages;
    for (int32_t status = 0; status <= 9; status++)
        messages += std::string(F_Message(status)) + "|";
    EXPECT_EQ(messages,
              "Successful|Invalid file access mode|Unable to open file in requested mode|"
              "Unable to rename|Unable to delete|No access to file|File does not exist|"
              "File is locked by another user|Failed to close the file|Unspecified Failure|");
    EXPECT_STREQ(F_Message(-1), "Invalid reply code");
    EXPECT_STREQ(F_Message(10), "Invalid reply code");
}

TEST_F(Files, LinesInPieces)
{
    static constexpr struct {
        const char *content;
        const char *pieces; // each with its count
    } cases[] = {
        { "", "" },
        { "\n", "1:\n|" },
        { "ab\ncd", "3:ab\n|2:cd|" },
        { "ab\r\ncd\r\n", "3:ab\n|3:cd\n|" },
        { "a\rb\r", "2:a\r|2:b\r|" },
        { "abcdefgh\n", "7:abcdefg|2:h\n|" },
    };
    for (const auto &row : cases) {
        write("lines", row.content);
        FILE *stream = nullptr;
        ASSERT_EQ(F_OpenFile(&stream, "lines", 0), 0);
        char buffer[8];
        std::ostringstream pieces;
        int32_t count = 0;
        while ((count = F_GetString(stream, buffer, sizeof buffer)) >= 0)
            pieces << count << ":" << buffer << "|";
        EXPECT_EQ(pieces.str(), row.pieces);
        EXPECT_EQ(F_GetString(stream, buffer, 0), -1);
        EXPECT_EQ(F_GetString(stream, buffer, 1), 0);
        F_CloseFile(stream);
    }
}

TEST_F(Files, PathsKnowNoCase)
{
    fs::create_directories("Lib/Sub");
    write("Lib/Sub/Engine.tl", "1");
    write("Lib/Sub/engine.TL", "2");
    write("Lib/Sub/ENGINE.tl", "3");
    static constexpr struct {
        const char *path;
        const char *found;
    } cases[] = {
        { "lib\\sub\\Engine.tl", "1" },
        { "LIB/SUB\\engine.TL", "2" },
        { "lib\\SUB\\eNGINE.tl", "3" }, // the lowest in byte order
        { ".\\lib\\sub\\..\\sub\\Engine.tl", "1" },
    };
    for (const auto &row : cases) {
        FILE *stream = nullptr;
        ASSERT_EQ(F_OpenFile(&stream, row.path, 0), 0) << row.path;
        EXPECT_EQ(std::getc(stream), row.found[0]) << row.path;
        F_CloseFile(stream);
    }
    FILE *stream = nullptr;
    ASSERT_EQ(F_OpenFile(&stream, "lib\\sub\\NEW.txt", 1), 0); // made as written
    F_CloseFile(stream);
    ASSERT_EQ(F_OpenFile(&stream, "lib\\sub\\new.txt", 1), 0);
    F_CloseFile(stream);
    EXPECT_TRUE(fs::exists("Lib/Sub/NEW.txt") && fs::exists("Lib/Sub/new.txt"));
    EXPECT_EQ(F_DeleteFile("lib\\sub\\New.txt"), 4);
    EXPECT_EQ(F_DeleteFile("lib\\sub\\new.txt"), 0);
    const std::string absolute = fs::current_path().string() + "/lib/sub/Engine.tl";
    EXPECT_EQ(F_CheckAccess(absolute.c_str(), 0), 0);
}

TEST_F(Files, ContextFiles)
{
    fs::create_directories("a");
    fs::create_directories("b");
    write("b/found", "b");
    FILE *stream = nullptr;
    unsetenv("OSTRUM_TEST_PATH");
    EXPECT_EQ(F_OpenContextFile(&stream, "OSTRUM_TEST_PATH", "found", 0), 2);
    std::string list = "a;b;a";
    for (int i = 0; i < 100; i++)
        list = "longer;" + list; // every entry is tried
    setenv("OSTRUM_TEST_PATH", list.c_str(), 1);
    ASSERT_EQ(F_OpenContextFile(&stream, "OSTRUM_TEST_PATH", "found", 0), 0);
    EXPECT_EQ(std::getc(stream), 'b');
    F_CloseFile(stream);
    EXPECT_EQ(F_OpenContextFile(&stream, "OSTRUM_TEST_PATH", "absent", 0), 2);
    ASSERT_EQ(F_OpenContextFile(&stream, "OSTRUM_TEST_PATH", "made", 1), 0); // in the last one
    F_CloseFile(stream);
    EXPECT_TRUE(fs::exists("a/made"));
    const std::string lengthy(118, 'n'); // one more than fits behind "a\"
    EXPECT_EQ(F_OpenContextFile(&stream, "OSTRUM_TEST_PATH", lengthy.c_str(), 1), 2);
    intptr_t handle = 0;
    ASSERT_EQ(BF_OpenContextFile(&handle, "OSTRUM_TEST_PATH", "found", 0), 0);
    EXPECT_EQ(BF_CloseFile(handle), 0);
}

int32_t note_file(void *user, const char *directory, const char *name, int32_t is_directory)
{
    *static_cast<std::string *>(user) +=
        std::string(directory) + ":" + name + (is_directory == 16 ? "/ " : " ");
    return 0;
}

TEST_F(Files, DirectoryWalk)
{
    fs::create_directories("Dir/sub.tl");
    for (const char *name : { "Dir/b.tl", "Dir/a.TL", "Dir/abc", "Dir/.hidden" })
        write(name, "");
    static constexpr struct {
        const char *pattern;
        int32_t result;
        const char *visited;
    } cases[] = {
        { "*.tl", 0, "dir:a.TL dir:b.tl dir:sub.tl/ " },
        { "?b?", 0, "dir:abc " },
        { "*.*", 0, "dir:a.TL dir:abc dir:b.tl dir:sub.tl/ " },
        { "a*c", 0, "dir:abc " },
        { ".h*", 0, "" },
        { "x*", -1, "" },
    };
    for (const auto &row : cases) {
        std::string visited;
        EXPECT_EQ(F_AllDirFiles("dir", row.pattern, note_file, &visited), row.result);
        EXPECT_EQ(visited, row.visited) << row.pattern;
        EXPECT_EQ(F_AllDirFiles("dir\\", row.pattern, nullptr, nullptr), row.result);
    }
    EXPECT_EQ(F_AllDirFiles("nowhere", "*", note_file, nullptr), -1);
    std::string visited;
    EXPECT_EQ(F_AllDirFiles(nullptr, "d*", note_file, &visited), 0);
    EXPECT_EQ(visited, ":Dir/ ");
}

TEST_F(Files, BinaryReadWriteAndAlign)
{
    intptr_t handle = 77;
    EXPECT_EQ(BF_OpenFile(&handle, "b", 5), 4);
    EXPECT_EQ(BF_OpenFile(&handle, "b", 0), 2);
    EXPECT_EQ(BF_OpenFile(&handle, ".", 0), 1);
    EXPECT_EQ(BF_OpenFile(&handle, std::string(120, 'p').c_str(), 0), 10);
    EXPECT_EQ(handle, 77);
    ASSERT_EQ(BF_OpenFile(&handle, "b", 1), 0);
    const std::string bytes(513, 'x');
    EXPECT_EQ(BF_Align(handle), 0);
    int32_t position = -1;
    EXPECT_EQ(BF_Address(handle, &position), 0);
    EXPECT_EQ(position, 0);
    EXPECT_EQ(BF_Write(handle, bytes.data(), 512), 0);
    BF_Align(handle);
    BF_Address(handle, &position);
    EXPECT_EQ(position, 512);
    EXPECT_EQ(BF_Write(handle, bytes.data(), 1), 0);
    BF_Align(handle);
    BF_Address(handle, &position);
    EXPECT_EQ(position, 1024);
    int32_t size = 0;
    EXPECT_EQ(BF_FileSize(handle, &size), 0);
    EXPECT_EQ(size, 513);
    EXPECT_EQ(BF_Seek(handle, -1), 5);
    EXPECT_EQ(BF_Seek(handle, 510), 0);
    char buffer[8];
    int32_t count = 3;
    EXPECT_EQ(BF_Read(handle, buffer, &count), 0);
    count = 8;
    EXPECT_EQ(BF_Read(handle, buffer, &count), 8);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(BF_CloseFile(handle), 0);
    count = 5;
    EXPECT_EQ(BF_Read(handle, buffer, &count), 7);
    EXPECT_EQ(count, 5);
    EXPECT_EQ(BF_Write(handle, "x", 1), 6);
    EXPECT_EQ(BF_Address(handle, &position), 5);
    EXPECT_EQ(BF_CloseFile(handle), 11);
    EXPECT_EQ(BF_Size("b", &size), 0);
    EXPECT_EQ(BF_Size("c", &size), 9);
    ASSERT_EQ(BF_OpenFile(&handle, "B", 3), 0); // looked up, at its end
    EXPECT_EQ(BF_Write(handle, "end", 3), 0);
    BF_CloseFile(handle);
    EXPECT_EQ(content_of("b"), bytes + "end");
    std::string messages;
    for (int32_t status = 0; status <= 11; status++)
        messages += std::string(BF_Message(status)) + "|";
    EXPECT_EQ(messages,
              "Successful|No access to file|File doesn't exist|File is locked by another user|"
              "Bad mode parameter|Bad seek|Write failed|Read failed|Not enough data for read|"
              "Unable to determine file size|Unspecified failure|Failed to close the file|");
    EXPECT_STREQ(BF_Message(12), "Invalid reply code");
}

TEST_F(Files, MappingsArePrivate)
{
    write("m", "module");
    fs::permissions("m", fs::perms::owner_read); // mapped all the same
    intptr_t handle = 0;
    void *address = nullptr;
    int32_t size = 0;
    ASSERT_EQ(BF_OpenFile(&handle, "m", 4), 0);
    BF_GetMappedAddress(handle, &address);
    EXPECT_EQ(BF_MappedSize(handle), 6u);
    EXPECT_EQ(BF_FileSize(handle, &size), 0);
    EXPECT_EQ(size, 6);
    std::memcpy(address, "MO", 2);
    EXPECT_EQ(std::memcmp(address, "MOdule", 6), 0);
    intptr_t empty = 0;
    write("e", "");
    ASSERT_EQ(BF_OpenFile(&empty, "e", 4), 0);
    BF_GetMappedAddress(empty, &address);
    EXPECT_NE(address, nullptr);
    EXPECT_EQ(BF_MappedSize(empty), 0u);
    EXPECT_EQ(BF_UnmapFile(handle), 0);
    EXPECT_EQ(BF_UnmapFile(empty), 0);
    EXPECT_EQ(content_of("m"), "module");
    EXPECT_EQ(BF_OpenFile(&handle, "missing", 4), 1);
    EXPECT_EQ(BF_OpenFile(&handle, ".", 4), 1);
    EXPECT_EQ(BF_OpenFile(&handle, "/dev/null", 4), 1);
}

TEST_F(Files, MappingsEndInAnyOrder)
{
    write("m", "module");
    intptr_t handles[3] = {};
    int32_t size = 0;
    for (intptr_t &handle : handles)
        ASSERT_EQ(BF_OpenFile(&handle, "m", 4), 0);
    for (const size_t ended : { 1, 0, 2 }) {
        EXPECT_EQ(BF_FileSize(handles[ended], &size), 0);
        EXPECT_EQ(BF_UnmapFile(handles[ended]), 0);
        EXPECT_EQ(BF_FileSize(handles[ended], &size), 9);
    }
}

TEST(ByteOrder, MostSignificantFirst)
{
    uint8_t bytes[5] = {};
    IFC_Put32(bytes + 1, 0x01020384);
    EXPECT_EQ(std::memcmp(bytes, "\0\1\2\3\x84", 5), 0);
    EXPECT_EQ(IFC_Get32(bytes + 1), 0x01020384u);
    EXPECT_EQ(IFC_Get16(bytes + 3), 0x384u);
    IFC_Put16(bytes, 0xFFFE);
    EXPECT_EQ(std::memcmp(bytes, "\xFF\xFE\2", 3), 0);
    const uint32_t standard = IFC_GetStd32(0x0A0B0C0D);
    EXPECT_EQ(std::memcmp(&standard, "\x0A\x0B\x0C\x0D", 4), 0);
    EXPECT_EQ(IFC_GetHost32(standard), 0x0A0B0C0Du);
    EXPECT_EQ(IFC_GetHost16(IFC_GetStd16(0x1234)), 0x1234u);
}

} // namespace
