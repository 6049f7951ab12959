// Modules and sections: how source files are found, cut and filed, and how sections are parsed.
#include "tests/source_folder.h"

#include <cstdlib>
#include <ostrum/extra.h>
#include <ostrum/tli.h>
#include <vector>

namespace
{

using ModulesSections = SourceFolder;

const char two_functions[] = "MODULE M\n"
                             "CONST INT C = 1\n"
                             "PRIVATE\n"
                             "VAR INT V\n"
                             "FUNCTION VOID F()\n"
                             "BEGIN\n"
                             "  V = C\n"
                             "END\n"
                             "TREE VOID T()\n"
                             "DATA CONNECTOR D\n"
                             "FUNCTION\n";

TEST_F(ModulesSections, BodiesBecomeSections)
{
    EXPECT_EQ(read_text(two_functions, TLP_READ_SECTIONS), TLP_STATUS_SUCCESSFUL);
    EXPECT_EQ(sections(), "HEADER/0:3;F/1:4;T/2:1;D/3:1;/1:1;");
    EXPECT_EQ(folder_messages, "");
    EXPECT_STREQ(TLP_ModuleName(module), "M");
    EXPECT_STREQ(TLP_ModuleSourceFile(module), "m.tl");
    EXPECT_EQ(TLP_ModuleSourceType(module), TLT_TOKEN_MODULE);
    TLP_SECTION *function = TLP_FindSection(module, "F");
    ASSERT_NE(function, nullptr);
    EXPECT_EQ(statements(function), "5,5:FUNCTION VOID F()|6,6:BEGIN|7,7:  V = C|8,8:END|");
    EXPECT_EQ(TLP_FirstStatementLineNumber(function), 5);
    EXPECT_EQ(TLP_LastStatementLineNumber(function), 8);
    EXPECT_EQ(TLP_FindSection(module, "f"), nullptr);
    EXPECT_STREQ(TLP_SectionTypeName(10), "<Unknown section type>");
}

TEST_F(ModulesSections, ANewSectionRestartsTheLines)
{
    read_text("MODULE M\nPRIVATE\nFUNCTION INT \\\n F()\nX\nFUNCTION VOID F()\n", TLP_READ_SECTIONS,
              TLP_FLAG_SECTION_LINES);
    EXPECT_EQ(statements(module->sections->next), "3,3:FUNCTION INT \n F()|5,3:X|");
    EXPECT_EQ(statements(TLP_FindSection(module, "F")), "6,4:FUNCTION VOID F()|");
}

TEST_F(ModulesSections, LinesEndInMoreThanOneWay)
{
    const std::string wide(600, 'w');
    read_text("MODULE M\r\nA\rB \t\f\r\n\r\n\\\n\\\nC\nD" + std::string("\0E", 2) + "\n" + wide +
                  "\nlast\\",
              TLP_READ_SECTIONS);
    EXPECT_EQ(statements(module->sections),
              "2,2:A|3,3:B|4,4:|5,5:\n\nC|8,8:D|9,9:" + wide.substr(0, 511) +
                  "|10,10:" + wide.substr(511) + "|");
}

TEST_F(ModulesSections, PiecesOfTheFileDoNotShow)
{
    // Lines of every length lie across the borders of the pieces that the file is read in.
    std::string text = "MODULE M\n";
    std::vector<std::string> lines;
    for (size_t length = 0; length < 500; length++) {
        lines.push_back(std::string(length, 'a'));
        text += lines.back() + (length % 3 == 0 ? "\r\n" : length % 3 == 1 ? "\r" : "\n");
    }
    read_text(text, TLP_READ_SECTIONS);
    ASSERT_EQ(module->sections->statement_count, lines.size());
    for (size_t i = 0; i < lines.size(); i++)
        ASSERT_EQ(TLT_StatementChars(module->sections->statements[i]), lines[i]);
}

struct BAD_SOURCE {
    const char *text;
    int32_t mode;
    int32_t status;
    const char *messages;
};

TEST_F(ModulesSections, BadSourcesAreReported)
{
    const BAD_SOURCE cases[] = {
        { "", 2, 3, "4 Empty source file\n" },
        { "M", 2, 3, "4 Compilation abandoned\n" },
        { "\nMODULE M\nPRIVATE\n", 2, 3, "4 Compilation abandoned\n" },
        { "MODULE M N\nPRIVATE\n", 0, 3, "4 Compilation abandoned\n" },
        { "MODULE \"M\"\n", 0, 3, "4 Compilation abandoned\n" },
        { "MODULE m\n", 2, 2, "3 No PRIVATE keyword\n" },
        { "MODULE M\n", 1, 2, "3 No PRIVATE keyword\n" },
        { "MODULE M\nPRIVATE\nMODULE M\n", 2, 0, "" },
        { "MODULE M\nPRIVATE\nMODULE M\n", 0, 3, "4 Multiple MODULE declarations\n" },
        { "MODULE M\nPRIVATE\nFUNCTION VOID F()\n", 0, 2, "3 Premature end of file\n" },
    };
    for (const BAD_SOURCE &row : cases) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(read_text(row.text, row.mode), row.status);
        EXPECT_EQ(folder_messages, row.messages);
        EXPECT_EQ(module == nullptr, row.status >= TLP_STATUS_FATAL);
    }
}

TEST_F(ModulesSections, TheReaderLeavesScannerErrorsToTheParser)
{
    read_text("MODULE M\nPRIVATE\nFUNC\\\nTION VOID F()\n? x\n", TLP_READ_SECTIONS);
    EXPECT_EQ(folder_messages, "");
    EXPECT_EQ(sections(), "HEADER/0:1;F/1:2;");
    TLP_ParseSection(module, module->sections);
    TLP_ParseSection(module, module->last_section);
    EXPECT_EQ(folder_messages, "3 Strange Separator : '?'\n3 TYPE expected here\n"
                               "3 Missing 'END'\n");
}

TEST_F(ModulesSections, FilesAreFoundByNameListAndExtension)
{
    const std::string source = "MODULE X\nPRIVATE\n";
    std::filesystem::create_directories("lib/dir.tl");
    std::filesystem::create_directories("x");
    const std::string longest(31, 'n');
    write("lib/Mixed.tl", source);
    write("x.tl", source);
    write(longest + ".tl", source);
    EXPECT_EQ(read("x", 2), TLP_STATUS_SUCCESSFUL); // a folder of the name is passed over
    EXPECT_EQ(read(longest.c_str(), 2), TLP_STATUS_SUCCESSFUL);
    EXPECT_EQ(read((longest + "n").c_str(), 2), TLP_STATUS_FATAL);
    EXPECT_EQ(folder_messages, "4 File name too long\n");
    EXPECT_EQ(read("mixed", 2), TLP_STATUS_FATAL);
    EXPECT_EQ(folder_messages, "");
    setenv("TollInclude", "nowhere;lib", 1);
    EXPECT_EQ(read("mixed", 2), TLP_STATUS_SUCCESSFUL);
    EXPECT_STREQ(TLP_ModuleSourceFile(module), "mixed.tl");
    EXPECT_EQ(read("dir", 2), TLP_STATUS_FATAL);
    EXPECT_EQ(read((std::string(130, '/') + "x").c_str(), 2), TLP_STATUS_FATAL);
}

TEST_F(ModulesSections, TheHookLearnsOfEachSource)
{
    static std::string opened;
    opened.clear();
    std::filesystem::create_directories("lib");
    write("lib/Used.tl", "MODULE USED\nPRIVATE\n");
    setenv("TollInclude", "lib", 1);
    TLP_SetSourceHook(&opened, [](void *context, const char *name, const char *host_path) {
        *static_cast<std::string *>(context) += std::string(name) + "=" + host_path + ";";
    });
    EXPECT_EQ(read_text("MODULE M\nUSES used\nPRIVATE\n", TLP_READ_ALL), TLP_STATUS_SUCCESSFUL);
    TLP_SetSourceHook(nullptr, nullptr);
    EXPECT_EQ(opened, "m.tl=m.tl;used.tl=lib/Used.tl;");
}

TEST_F(ModulesSections, ABodyReadsItsHeaderFirst)
{
    write("head.tl", "MODULE HEAD\nCONST INT A = 1\nPRIVATE\n");
    write("part.tl", "BODY HEAD\nVAR INT B\n");
    EXPECT_EQ(read("part", TLP_READ_SECTIONS), TLP_STATUS_SUCCESSFUL);
    EXPECT_EQ(statements(module->sections), "2,3:CONST INT A = 1|3,4:PRIVATE|2,5:VAR INT B|");
    EXPECT_STREQ(TLP_ModuleName(module), "HEAD");
    EXPECT_EQ(TLP_ModuleSourceType(module), TLT_TOKEN_BODY);
    write("self.tl", "BODY SELF\nPRIVATE\n");
    EXPECT_EQ(read("self", TLP_READ_ALL), TLP_STATUS_ERRORS);
    EXPECT_NE(folder_messages.find("3 PRIVATE seen already!\n"), std::string::npos);
}

TEST_F(ModulesSections, SectionsAreParsedAgain)
{
    ASSERT_EQ(read_text("MODULE M\nCONST INT C = 1\nPRIVATE\nVAR INT V\nFUNCTION VOID F()\n"
                        "BEGIN\n  V = C\nEND\nFUNCTION VOID G()\nBEGIN\n",
                        TLP_READ_SECTIONS),
              TLP_STATUS_SUCCESSFUL);
    TLP_SECTION *function = TLP_FindSection(module, "F");
    for (int32_t round = 0; round < 2; round++) {
        EXPECT_EQ(TLP_ParseSection(module, module->sections), TLP_STATUS_SUCCESSFUL);
        EXPECT_EQ(TLP_SectionBlock(module, function), nullptr);
        EXPECT_EQ(TLP_ParseSection(module, function), TLP_STATUS_SUCCESSFUL);
        EXPECT_NE(TLP_SectionBlock(module, function), nullptr);
    }
    EXPECT_EQ(folder_messages, "");
    EXPECT_EQ(TLP_ParseSection(module, function), TLP_STATUS_ERRORS);
    EXPECT_EQ(TLP_SectionState(function), TLP_STATUS_ERRORS);
    TLP_DelSectionIdentifier(module, function);
    EXPECT_EQ(TLP_GetSectionIdentifier(module, function), nullptr);
    EXPECT_EQ(TLP_ParseSection(module, function), TLP_STATUS_SUCCESSFUL);

    folder_messages.clear();
    EXPECT_EQ(TLP_ParseSection(module, TLP_FindSection(module, "G")), TLP_STATUS_ERRORS);
    EXPECT_EQ(folder_messages, "3 Missing 'END'\n");
}

TEST_F(ModulesSections, SectionsAreLinkedAndTakenOut)
{
    ASSERT_EQ(read_text(two_functions, TLP_READ_SECTIONS), TLP_STATUS_SUCCESSFUL);
    TLP_DelSection(module, TLP_FindSection(module, ""));
    TLP_DelSection(module, TLP_FindSection(module, "T"));
    TLP_SECTION *added = TLP_NewSection(TLP_SECTION_TREE, std::string(40, 'n').c_str());
    EXPECT_EQ(TLP_SectionName(added), std::string(31, 'n'));
    EXPECT_EQ(TLP_FirstStatementLineNumber(added), 0);
    TLP_LinkSection(module, added);
    TLP_AddStatement(added, TLT_NewStatement("X", "m.tl", 90, 91));
    EXPECT_EQ(sections(), "HEADER/0:3;F/1:4;D/3:1;" + std::string(31, 'n') + "/2:1;");
    module->current_section = added;
    EXPECT_STREQ(TLP_GetSourceFromLineNumber(module, 90), "X");
    EXPECT_STREQ(TLP_GetSourceFromLineNumber(module, 1), "");
    TLP_AddStatement(added, TLT_NewStatement("Y", "m.tl", 95, 92));
    TLP_AddStatement(added, TLT_NewStatement("Z", "m.tl", 95, 93));
    TLP_AddStatement(added, TLT_NewStatement("END", "m.tl", 97, 94));
    for (const char *wanted : { "90 X", "95 Y", "97 END", "89 ", "96 ", "98 " })
        EXPECT_STREQ(TLP_GetSourceFromLineNumber(module, atoi(wanted)), wanted + 3) << wanted;
    // The lines of another file follow, from its start.
    TLP_AddStatement(added, TLT_NewStatement("V", "body.tl", 2, 95));
    TLP_AddStatement(added, TLT_NewStatement("W", "body.tl", 95, 96));
    for (const char *wanted : { "90 X", "95 Y", "97 END", "02 V", "96 " })
        EXPECT_STREQ(TLP_GetSourceFromLineNumber(module, atoi(wanted)), wanted + 3) << wanted;
    TLP_SECTION *second = TLP_NewSection(TLP_SECTION_FUNCTION, "F");
    TLP_LinkSection(module, second);
    EXPECT_EQ(TLP_FindSection(module, "F"), second);
}

TEST_F(ModulesSections, ListingsShowSectionsAndStatements)
{
    ASSERT_EQ(read_text("MODULE M\nPRIVATE\nDATA VIEW V\n", TLP_READ_SECTIONS), 2);
    FILE *file = fopen("listing", "w");
    TLP_PrintSections(file, module);
    TLP_SetModuleFlags(module, TLP_FLAG_LIST_STATEMENTS);
    TLP_PrintOneSection(file, module, module->sections, 2);
    fclose(file);
    std::ifstream stream("listing");
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}),
              "\nSECTION HEADER (Type=HEADER)\n"
              "\nSECTION V (Type=<Unknown section type>)\n"
              "\n  SECTION HEADER (Type=HEADER)\n     2 PRIVATE\n");
}

TEST_F(ModulesSections, StrictWarningsComeOnce)
{
    ASSERT_EQ(read_text("MODULE M\nPRIVATE\n", TLP_READ_SECTIONS), 0);
    TLP_StrictWarning(module, nullptr, "one");
    TLP_StrictWarning(module, nullptr, "one");
    TLP_StrictWarning(module, nullptr, std::string(130, 'x').c_str());
    EXPECT_EQ(folder_messages, "2 one - further warnings in this category suppressed\n2 " +
                                   std::string(119, 'x') + "\n");
    folder_messages.clear();
    TLP_SetModuleFlags(module, TLP_FLAG_STRICT);
    TLP_StrictWarning(module, nullptr, "one");
    TLP_SetModuleFlags(module, 0);
    TLP_SetConditional(module, "Specification");
    TLP_StrictWarning(module, nullptr, "two");
    EXPECT_EQ(folder_messages, "2 one\n");
}

TEST_F(ModulesSections, ManyStatementsAndSectionsStayLinear)
{
    std::string text = "MODULE M\nPRIVATE\n";
    for (int32_t i = 0; i < 100000; i++)
        text += "FUNCTION VOID F" + std::to_string(i) + "()\n\n";
    ASSERT_EQ(read_text(text, TLP_READ_SECTIONS), TLP_STATUS_SUCCESSFUL);
    EXPECT_STREQ(TLP_SectionName(module->last_section), "F99999");
    EXPECT_EQ(TLP_LastStatementLineNumber(module->last_section), 200002);
}

TEST_F(ModulesSections, ARecordAtTheEndOfASectionLeavesTheStatics)
{
    ASSERT_EQ(read_text("MODULE M\nPRIVATE\nVAR INT V\nTYPEDEF RECORD R ( INT X )\n"
                        "FUNCTION VOID F()\nBEGIN\n  V = 1\nEND\n",
                        TLP_READ_SECTIONS),
              TLP_STATUS_SUCCESSFUL);
    for (TLP_SECTION *section = module->sections; section != nullptr; section = section->next)
        EXPECT_EQ(TLP_ParseSection(module, section), TLP_STATUS_SUCCESSFUL);
    EXPECT_EQ(folder_messages, "");
}

TEST_F(ModulesSections, AClientCanMakeAModuleOfOneBody)
{
    module = TLP_NewModule("", nullptr);
    TLP_SetModuleName(module, "made");
    TLP_SECTION *section = TLP_NewSection(TLP_SECTION_FUNCTION, "F");
    TLP_LinkSection(module, section);
    for (const char *text : { "FUNCTION INT F(INT A)", "VAR INT B", "BEGIN", "  RETURN A", "END" })
        TLP_AddStatement(section, TLT_NewStatement(text, "made.tl", 1, 1));
    EXPECT_EQ(TLP_ParseSection(module, section), TLP_STATUS_SUCCESSFUL);
    EXPECT_NE(TLP_SectionBlock(module, section), nullptr);
    EXPECT_EQ(folder_messages, "");
}

TEST_F(ModulesSections, TextsOfStatus)
{
    EXPECT_STREQ(TLP_Message(TLP_STATUS_NOT_OPENED), "File cannot be opened");
    EXPECT_STREQ(TLP_Message(-7), "TLP_Message : Number = -7\n");
    EXPECT_EQ(TLP_DataTypeDomain(nullptr), nullptr);
}

} // namespace
