// Conditional statements, and the use of other modules.
#include "tests/source_folder.h"

#include <ostrum/tli.h>
#include <ostrum/tlit.h>

namespace
{

using PreprocessorUses = SourceFolder;

struct CONDITIONAL {
    const char *lines;
    const char *messages;
};

// A line "X" that is not skipped raises "Statement ignored".
TEST_F(PreprocessorUses, BranchesAreSkipped)
{
    const CONDITIONAL cases[] = {
        { "#IFDEF A\nX\n#ENDIF\n", "3 Statement ignored\n" },
        { "#ifdef b\nX\n#else\nX\nX\n#endif\n", "3 Statement ignored\n" },
        { "#IFDEF C\nX\n#ENDIF\n", "" },
        { "#IFDEF C\n#ELSE\nX\n#ENDIF\n", "3 Statement ignored\n" },
        { "#IFDEF C\n#IFDEF A\nX\n#ELSE\nX\n#ENDIF\nX\n#ENDIF\n", "" },
        { "#ELSE\n#ENDIF\n", "3 No matching #ifdef\n3 No matching #ifdef\n" },
        { "#IFDEF 5\nX\n#ENDIF\n#IFDEF 5\nX\n#ENDIF\n", "3 Statement ignored\n" },
    };
    for (const CONDITIONAL &row : cases) {
        SCOPED_TRACE(row.lines);
        read_text("MODULE M\nPRIVATE\n" + std::string(row.lines), TLP_READ_ALL, 0, "A,b");
        EXPECT_EQ(folder_messages, row.messages);
    }
}

TEST_F(PreprocessorUses, NestingHasALimitOutsideSkippedBranches)
{
    std::string deep = "MODULE M\nPRIVATE\n";
    for (int32_t i = 0; i < 11; i++)
        deep += "#IFDEF A\n";
    read_text(deep + "#ENDIF\n", TLP_READ_ALL, 0, "A");
    EXPECT_EQ(folder_messages, "3 Too many nested #ifdef loops\n");
    EXPECT_EQ(module->conditional_depth, 9);

    std::string skipped = "MODULE M\nPRIVATE\n";
    for (int32_t i = 0; i < 1000; i++)
        skipped += "#IFDEF N\nX\n#ELSE\n";
    for (int32_t i = 0; i < 999; i++)
        skipped += "X\n#ELSE\n#ENDIF\n";
    read_text(skipped + "#ENDIF\nX\n", TLP_READ_SECTIONS);
    for (size_t i = 0; i < module->sections->statement_count; i++) {
        TLT_STATEMENT *statement = module->sections->statements[i];
        if (TLT_NextToken(statement, nullptr) == TLT_TOKEN_HASH) TLP_Preprocess(module, statement);
        ASSERT_LE(module->conditional_depth, 1000);
    }
    EXPECT_EQ(module->conditional_depth, 0);
    EXPECT_EQ(TLP_IsSkipping(module), 0);
}

TEST_F(PreprocessorUses, AUsedModuleExtendsTheRecordOfItsRoot)
{
    write("u.tl", "MODULE U\nTYPEDEF RECORD R (INT B)\nPRIVATE\n");
    read_text("MODULE M\nTYPEDEF RECORD R (INT A)\nUSES U\nPRIVATE\n", TLP_READ_ALL);
    EXPECT_EQ(folder_messages, "");
    TLI_DOMAIN *domain = TLP_ModuleDomain(module);
    TLI_IDENTIFIER *record = TLI_FindIdentifier(nullptr, domain, "R");
    EXPECT_EQ(TLIT_TypeSizeof(record, -1), 8);
    EXPECT_EQ(TLI_FindIdentifier(nullptr, domain, "U.R"), nullptr);
}

TEST_F(PreprocessorUses, DefinesAreCutAtCommas)
{
    module = TLP_NewModule("", nullptr);
    TLP_SetConditional(module, "x=a, b,,Cc,");
    EXPECT_STREQ(module->defines_text, "X=A, B,,CC,");
    ASSERT_EQ(module->define_count, 4);
    EXPECT_STREQ(module->define_names[0], "A");
    EXPECT_STREQ(module->define_names[1], " B");
    EXPECT_STREQ(module->define_names[2], "");
    EXPECT_STREQ(module->define_names[3], "CC");
    TLP_SetConditional(module, nullptr);
    EXPECT_EQ(module->define_count, 4);
    EXPECT_STREQ(module->defines_text, "");
    TLP_SetConditional(module, "P=");
    EXPECT_EQ(module->define_count, 0);
    TLP_SetConditional(module, (std::string(400, 'q') + ",1,2,3,4,5,6,7,8,9,10,11").c_str());
    EXPECT_EQ(module->define_count, 10);
    EXPECT_EQ(module->define_names[0], std::string(31, 'Q'));
    EXPECT_EQ(std::string(module->defines_text).size(), 319U);
    EXPECT_EQ(folder_messages, "3 Too many pre-processor definition\n");
}

std::string used_names(TLP_MODULE *module)
{
    std::string joined;
    TLP_AllUsesModules(
        module,
        [](void *context, const char *name, TLP_MODULE *) {
            *static_cast<std::string *>(context) += std::string(name) + ";";
            return 1;
        },
        &joined);
    return joined;
}

TEST_F(PreprocessorUses, ModulesAreReadOnce)
{
    write("a.tl", "MODULE A\nUSES C\nCONST INT KA = C.K\nPRIVATE\nnot read\n");
    write("b.tl", "MODULE B\nUSES C M B\nCONST INT KB = C.K\nPRIVATE\n");
    write("c.tl", "MODULE C\nCONST INT K = 4\nPRIVATE\n");
    testing::internal::CaptureStdout();
    EXPECT_EQ(read_text("MODULE M\nUSES a B\n c\nCONST INT X = A.KA, Y = B.KB, Z = C.K\nPRIVATE\n",
                        TLP_READ_ALL, TLP_FLAG_PROGRESS),
              TLP_STATUS_SUCCESSFUL);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "-- Reading module M\n-- Reading module A\n-- Reading module C\n-- Reading module B\n"
              "-- USE C ignored - already used\n-- USE M ignored - already used\n"
              "-- USE B ignored - already used\n-- USE C ignored - already used\n");
    EXPECT_EQ(folder_messages, "");
    EXPECT_EQ(used_names(module), "C;B;A;");
    TLP_MODULE *newest = module->used_modules->module;
    EXPECT_STREQ(TLP_ModuleName(newest), "B");
    EXPECT_EQ(used_names(newest), "C;");
    EXPECT_EQ(TLP_DataTypeDomain(newest), TLP_DataTypeDomain(module));
    EXPECT_EQ(TLP_SyscallData(newest), TLP_SyscallData(module));
}

TEST_F(PreprocessorUses, FailuresStopTheStatement)
{
    std::filesystem::create_directories("folder.tl");
    write("broken.tl", "MODULE BROKEN\nCONST NONE X = 1\nPRIVATE\n");
    write("open.tl", "MODULE OPEN\n");
    write("warned.tl", "MODULE WARNED\nPRIVATE\n");
    EXPECT_EQ(read_text("MODULE M\nUSES NONE\nPRIVATE\n", TLP_READ_ALL), TLP_STATUS_FATAL);
    EXPECT_EQ(folder_messages.substr(0, folder_messages.find('\n')),
              "4 Failed to USE module 'NONE' : FATAL ERROR");
    EXPECT_EQ(read_text("MODULE M\nUSES folder\nPRIVATE\n", TLP_READ_ALL), TLP_STATUS_FATAL);
    EXPECT_EQ(read_text("MODULE M\nUSES BROKEN\nPRIVATE\n", TLP_READ_ALL), TLP_STATUS_FATAL);
    EXPECT_NE(folder_messages.find("4 Failed to USE module 'BROKEN' : Errors\n"),
              std::string::npos);
    EXPECT_EQ(read_text("MODULE M\nUSES OPEN\nPRIVATE\n", TLP_READ_ALL), TLP_STATUS_FATAL);
    EXPECT_NE(folder_messages.find("4 Failed to USE module 'OPEN' : Errors\n"), std::string::npos);
    EXPECT_EQ(read_text("MODULE M\nUSES WARNED, BROKEN\nPRIVATE\n", TLP_READ_ALL),
              TLP_STATUS_ERRORS);
    EXPECT_EQ(folder_messages, "3 Unexpected characters or keyword\n");
}

TEST_F(PreprocessorUses, CyclesEnd)
{
    write("b.tl", "MODULE B\nUSES C\nPRIVATE\n");
    write("c.tl", "MODULE C\nUSES B M\nPRIVATE\n");
    EXPECT_EQ(read_text("MODULE M\nUSES B\nPRIVATE\n", TLP_READ_ALL), TLP_STATUS_SUCCESSFUL);
    EXPECT_EQ(folder_messages, "");
    // The file of a module in the cycle bears another name than the module.
    write("b.tl", "MODULE OTHER\nUSES C\nPRIVATE\n");
    EXPECT_EQ(read_text("MODULE M\nUSES B\nPRIVATE\n", TLP_READ_ALL), TLP_STATUS_SUCCESSFUL);
    EXPECT_EQ(folder_messages, "1 Filename and Module are different\n");
}

TEST_F(PreprocessorUses, ABodyInACycleKeepsTheNameOfItsFile)
{
    write("a.tl", "BODY X\n");
    write("x.tl", "MODULE X\nUSES A\nPRIVATE\n");
    EXPECT_EQ(read_text("MODULE M\nUSES A\nPRIVATE\n", TLP_READ_ALL), TLP_STATUS_SUCCESSFUL);
    EXPECT_EQ(folder_messages, "");
}

TEST_F(PreprocessorUses, OneTokenThatIsNoNameEndsTheList)
{
    EXPECT_EQ(read_text("MODULE M\nUSES 1 NONE\nPRIVATE\n", TLP_READ_ALL), TLP_STATUS_ERRORS);
    EXPECT_EQ(folder_messages, "3 Unexpected characters or keyword\n");
}

TEST_F(PreprocessorUses, ChainsHaveALimit)
{
    const int32_t count = 1100;
    for (int32_t i = 0; i < count; i++)
        write("u" + std::to_string(i) + ".tl",
              "MODULE U" + std::to_string(i) + "\nUSES U" + std::to_string(i + 1) + "\nPRIVATE\n");
    EXPECT_EQ(read("u0", TLP_READ_ALL), TLP_STATUS_FATAL);
    EXPECT_EQ(folder_messages.substr(0, folder_messages.find('\n')), "4 USES nested too deeply");
}

TEST_F(PreprocessorUses, TwoModulesOfOneNameAreBothOwned)
{
    write("a.tl", "MODULE SAME\nCONST INT K = 1\nPRIVATE\n");
    write("b.tl", "MODULE SAME\nCONST INT L = 2\nPRIVATE\n");
    EXPECT_EQ(read_text("MODULE M\nUSES A B\nCONST INT X = SAME.L\nPRIVATE\n", TLP_READ_ALL),
              TLP_STATUS_SUCCESSFUL);
    EXPECT_EQ(used_names(module), "B;A;");
}

TEST_F(PreprocessorUses, NamesMarkedNoTagNeedNoModule)
{
    write("a.tl",
          "MODULE A\nCONST INT PLAIN = 1, FREE = 2\nPRAGMA (FREE, NOTAG) = \"\"\nPRIVATE\n");
    write("b.tl", "MODULE B\nPRIVATE\n");
    ASSERT_EQ(read_text("MODULE M\nUSES A\nPRIVATE\n", TLP_READ_ALL), TLP_STATUS_SUCCESSFUL);
    EXPECT_NE(TLP_FindIdentifier(module, nullptr, "FREE", TLI_CONSTANT), nullptr);
    EXPECT_NE(TLP_FindIdentifier(module, nullptr, "PLAIN", 0), nullptr); // the last look-up counts
    EXPECT_EQ(TLP_FindIdentifier(module, nullptr, "FREE", TLI_TYPE), nullptr);
    EXPECT_EQ(TLP_FindIdentifier(module, nullptr, "NONE", 0), nullptr);
    EXPECT_EQ(folder_messages,
              "3 'FREE' - Wrong class of identifier\n3 'NONE' - Unknown identifier\n");

    ASSERT_EQ(read_text("MODULE M\nUSES B A\nPRIVATE\n", TLP_READ_ALL), TLP_STATUS_SUCCESSFUL);
    EXPECT_EQ(TLP_FindIdentifier(module, nullptr, "PLAIN", 0), nullptr);
    EXPECT_NE(TLP_FindIdentifier(module, nullptr, "A.PLAIN", 0), nullptr);
    EXPECT_NE(TLP_FindIdentifier(module, nullptr, "FREE", 0), nullptr);
}

TEST_F(PreprocessorUses, HeadersUseTheirModulesAgain)
{
    write("a.tl", "MODULE A\nCONST INT K = 1\nPRIVATE\n");
    ASSERT_EQ(read_text("MODULE M\nUSES A\nCONST INT X = A.K\nPRIVATE\n", TLP_READ_SECTIONS), 0);
    for (int32_t round = 0; round < 3; round++)
        EXPECT_EQ(TLP_ParseSection(module, module->sections), TLP_STATUS_SUCCESSFUL);
    EXPECT_EQ(used_names(module), "A;");
    EXPECT_EQ(folder_messages, "");
}

int32_t deliver(const char *name, TLP_MODULE **module, void *context, TLP_MODULE *parent)
{
    *static_cast<std::string *>(context) += std::string(name) + ";";
    if (std::string(name) != "given") return TLP_STATUS_UNCOMPILED;
    TLP_SetExternalTLReader(nullptr, nullptr);
    return TLP_ReadModule(nullptr, "source", module, stdout, 0, TLP_READ_PUBLIC, parent);
}

TEST_F(PreprocessorUses, AClientCanDeliverAndRefuseModules)
{
    static std::string asked;
    asked.clear();
    write("source.tl", "MODULE GIVEN\nCONST INT K = 1\nPRIVATE\n");
    TLP_SetExternalTLReader(&asked, deliver);
    EXPECT_EQ(read_text("MODULE M\nUSES MISSING\nPRIVATE\n", TLP_READ_ALL), TLP_STATUS_FATAL);
    EXPECT_EQ(folder_messages.substr(0, folder_messages.find('\n')),
              "4 Failed to USE module 'MISSING' : Uncompiled");
    EXPECT_EQ(read_text("MODULE M\nUSES GIVEN\nCONST INT X = GIVEN.K\nPRIVATE\n", TLP_READ_ALL), 0);
    EXPECT_EQ(asked, "missing;given;");
    TLP_SetExternalTLReader(nullptr, nullptr);

    TLP_SetExternalDTypeUsesChecker(nullptr, [](const char *name, void *, int32_t private_flag) {
        return static_cast<int32_t>(std::string(name) == "SOURCE" && private_flag);
    });
    EXPECT_EQ(read_text("MODULE M\nUSES SOURCE\nPRIVATE\n", TLP_READ_ALL), TLP_STATUS_SUCCESSFUL);
    EXPECT_EQ(read_text("MODULE M\nPRIVATE\nUSES SOURCE NONE\n", TLP_READ_ALL), TLP_STATUS_FATAL);
    TLP_SetExternalDTypeUsesChecker(nullptr, nullptr);
    EXPECT_NE(folder_messages.find("4 Compilation abandoned - mismatch between runtime"),
              std::string::npos);
}

TEST_F(PreprocessorUses, AReaderThatWarnsOfAFileThatIsNotThereGivesNoNames)
{
    TLP_SetExternalTLReader(nullptr, [](const char *, TLP_MODULE **, void *, TLP_MODULE *) {
        return int32_t{ TLP_STATUS_WARNINGS };
    });
    EXPECT_EQ(read_text("MODULE M\nUSES NONE\nCONST INT X = NONE.K\nPRIVATE\n", TLP_READ_ALL),
              TLP_STATUS_ERRORS);
    TLP_SetExternalTLReader(nullptr, nullptr);
    EXPECT_NE(folder_messages.find("'NONE.K' - Unknown identifier"), std::string::npos);
}

TEST_F(PreprocessorUses, EachModuleHasItsOwnConditionsAndTheRootsDefines)
{
    write("a.tl", "MODULE A\n#IFDEF N\n#ELSE\n#IFDEF D\nCONST INT K = 1\n#ENDIF\nPRIVATE\n");
    EXPECT_EQ(read_text("MODULE M\n#IFDEF D\nUSES A\nCONST INT X = A.K\n#ENDIF\nPRIVATE\n",
                        TLP_READ_ALL, 0, "d"),
              TLP_STATUS_SUCCESSFUL);
    EXPECT_EQ(folder_messages, "");
}

} // namespace
