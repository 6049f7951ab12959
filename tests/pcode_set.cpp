// Names and operand forms of the P-codes, and the rules of the syscall registry.
#include <ostrum.h>

#include <gtest/gtest.h>

namespace
{

class PcodeSet : public testing::Test
{
protected:
    EEP_MODULE *registry = EEP_NewModule();
    ~PcodeSet() override { EEP_DelModule(registry); }
};

struct CODE_ROW {
    int32_t code;
    const char *mnemonic;
    int32_t kind;
    int32_t size;
};

const CODE_ROW code_rows[] = {
    { 0, "0", 0, 0 },
    { 31, "31", 0, 0 },
    { 32, "SLIT", 1, 1 },
    { 34, "LIT", 3, 4 },
    { 73, "CALL", 5, 4 },
    { 83, "SWITCH", 1, 1 },
    { 89, "CHECK", 0, 0 },
    { 90, "NUL(90)", 0, 0 },
    { 95, "NUL(95)", 0, 0 },
    { 102, "ATTR", 1, 1 },
    { 115, "DISPATCH", 3, 4 },
    { 120, "FIND_SCOPE", 5, 4 },
    { 134, "BREAKPOINT", 2, 2 },
    { 135, "ATTR", 2, 2 },
    { 145, "UPB", 0, 0 },
    { 146, "USER_PCODE(146)", 0, 0 },
    { 255, "USER_PCODE(255)", 0, 0 },
    { -1, "<BAD PCODE>", 0, 0 },
    { 256, "<BAD PCODE>", 0, 0 },
};

TEST_F(PcodeSet, EachCodeReadsAsTheTableHasIt)
{
    for (const CODE_ROW &row : code_rows) {
        int32_t kind = -1;
        int32_t size = -1;
        EXPECT_STREQ(row.mnemonic, EEP_Mnemonic(registry, row.code, &kind, &size)) << row.code;
        EXPECT_EQ(row.kind, kind) << row.code;
        EXPECT_EQ(row.size, size) << row.code;
    }
    EXPECT_STREQ("JUMP", EEP_Mnemonic(registry, EEP_JUMP, nullptr, nullptr));
}

TEST_F(PcodeSet, DeclaringReplacesName)
{
    char name[] = "BLINK";
    EEP_DeclarePCode(registry, 146, name, EEP_KIND_LONG);
    name[0] = 'X'; // the registry has a copy
    EEP_DeclarePCode(registry, 256, "BEYOND", EEP_KIND_BYTE);
    int32_t size = 0;
    EXPECT_STREQ("BLINK", EEP_Mnemonic(registry, 146, nullptr, &size));
    EXPECT_EQ(4, size);
    EXPECT_STREQ("USER_PCODE(147)", EEP_Mnemonic(registry, 147, nullptr, nullptr));
}

TEST_F(PcodeSet, SyscallsAreFoundByNameAndNumber)
{
    EXPECT_EQ(1, EEP_NewSyscall(registry, "IO.READ", 300, 0x80));
    EXPECT_EQ(1, EEP_NewSyscall(registry, "IO.LAST", 65535, 1));
    EXPECT_EQ(300, EEP_Syscall(registry, "IO.READ"));
    EXPECT_EQ(0, EEP_Syscall(registry, "io.read"));
    EXPECT_STREQ("IO.LAST", EEP_SyscallName(registry, 65535));
    for (int32_t number : { -1, 299, 65536, INT32_MAX, INT32_MIN }) {
        EXPECT_STREQ("<BAD SYSCALL>", EEP_SyscallName(registry, number)) << number;
        EXPECT_EQ(0u, EEP_SyscallFlags(registry, number)) << number;
    }
}

TEST_F(PcodeSet, ClashesAreRefusedAndRepeatsKeepTheirFlags)
{
    ASSERT_EQ(1, EEP_NewSyscall(registry, "A", 7, 0x10));
    EXPECT_EQ(1, EEP_NewSyscall(registry, "A", 7, 0x20));
    EXPECT_EQ(0x10u, EEP_SyscallFlags(registry, 7));
    EXPECT_EQ(0, EEP_NewSyscall(registry, "B", 7, 0));
    EXPECT_EQ(0, EEP_NewSyscall(registry, "A", 8, 0));
    EXPECT_EQ(0, EEP_NewSyscall(registry, "C", -1, 0));
    EXPECT_STREQ("<BAD SYSCALL>", EEP_SyscallName(registry, 8));
    EXPECT_EQ(0, EEP_Syscall(registry, "B"));
}

TEST_F(PcodeSet, NumberBeyondTheArrayEndsTheProcess)
{
    EXPECT_EXIT(EEP_NewSyscall(registry, "A", 65536, 0), testing::ExitedWithCode(1),
                "EEP : Syscall array exceeded");
}

} // namespace
