// The P-code table and the syscall registry. What stands in the table is the numbering that code
// generator, lister and interpreter share.
#include "codegen/eep.h"

#include <ostrum/sh.h>
#include <ostrum/sm.h>
#include <ostrum/st.h>

#include <cstring>
#include <iterator>

struct EEP_ROW {
    int32_t code;
    const char *mnemonic;
    int32_t kind;
};

static constexpr EEP_ROW built_in[] = {
    { .code = EEP_SLIT, .mnemonic = "SLIT", .kind = EEP_KIND_BYTE },
    { .code = EEP_MLIT, .mnemonic = "MLIT", .kind = EEP_KIND_WORD },
    { .code = EEP_LIT, .mnemonic = "LIT", .kind = EEP_KIND_LONG },
    { .code = EEP_LLB, .mnemonic = "LLB", .kind = EEP_KIND_NONE },
    { .code = EEP_LLW, .mnemonic = "LLW", .kind = EEP_KIND_NONE },
    { .code = EEP_LLA, .mnemonic = "LLA", .kind = EEP_KIND_NONE },
    { .code = EEP_LSA, .mnemonic = "LSA", .kind = EEP_KIND_LONG },
    { .code = EEP_LSI, .mnemonic = "LSI", .kind = EEP_KIND_LONG },
    { .code = EEP_LCA, .mnemonic = "LCA", .kind = EEP_KIND_REFERENCE },
    { .code = EEP_LB, .mnemonic = "LB", .kind = EEP_KIND_NONE },
    { .code = EEP_LW, .mnemonic = "LW", .kind = EEP_KIND_NONE },
    { .code = EEP_SLB, .mnemonic = "SLB", .kind = EEP_KIND_NONE },
    { .code = EEP_SLW, .mnemonic = "SLW", .kind = EEP_KIND_NONE },
    { .code = EEP_SB, .mnemonic = "SB", .kind = EEP_KIND_NONE },
    { .code = EEP_SW, .mnemonic = "SW", .kind = EEP_KIND_NONE },
    { .code = EEP_ARGB, .mnemonic = "ARGB", .kind = EEP_KIND_NONE },
    { .code = EEP_ADD, .mnemonic = "ADD", .kind = EEP_KIND_NONE },
    { .code = EEP_SUB, .mnemonic = "SUB", .kind = EEP_KIND_NONE },
    { .code = EEP_MUL, .mnemonic = "MUL", .kind = EEP_KIND_NONE },
    { .code = EEP_DIV, .mnemonic = "DIV", .kind = EEP_KIND_NONE },
    { .code = EEP_REM, .mnemonic = "REM", .kind = EEP_KIND_NONE },
    { .code = EEP_NEG, .mnemonic = "NEG", .kind = EEP_KIND_NONE },
    { .code = EEP_INV, .mnemonic = "INV", .kind = EEP_KIND_NONE },
    { .code = EEP_AND, .mnemonic = "AND", .kind = EEP_KIND_NONE },
    { .code = EEP_OR, .mnemonic = "OR", .kind = EEP_KIND_NONE },
    { .code = EEP_XOR, .mnemonic = "XOR", .kind = EEP_KIND_NONE },
    { .code = EEP_NOT, .mnemonic = "NOT", .kind = EEP_KIND_NONE },
    { .code = EEP_SL, .mnemonic = "SL", .kind = EEP_KIND_NONE },
    { .code = EEP_SR, .mnemonic = "SR", .kind = EEP_KIND_NONE },
    { .code = EEP_EQ, .mnemonic = "EQ", .kind = EEP_KIND_NONE },
    { .code = EEP_NEQ, .mnemonic = "NEQ", .kind = EEP_KIND_NONE },
    { .code = EEP_GTR, .mnemonic = "GTR", .kind = EEP_KIND_NONE },
    { .code = EEP_GE, .mnemonic = "GE", .kind = EEP_KIND_NONE },
    { .code = EEP_LESS, .mnemonic = "LESS", .kind = EEP_KIND_NONE },
    { .code = EEP_LE, .mnemonic = "LE", .kind = EEP_KIND_NONE },
    { .code = EEP_JUMP, .mnemonic = "JUMP", .kind = EEP_KIND_JUMP },
    { .code = EEP_JZ, .mnemonic = "JZ", .kind = EEP_KIND_JUMP },
    { .code = EEP_JNZ, .mnemonic = "JNZ", .kind = EEP_KIND_JUMP },
    { .code = EEP_JN, .mnemonic = "JN", .kind = EEP_KIND_JUMP },
    { .code = EEP_JNN, .mnemonic = "JNN", .kind = EEP_KIND_JUMP },
    { .code = EEP_ARGS, .mnemonic = "ARGS", .kind = EEP_KIND_NONE },
    { .code = EEP_CALL, .mnemonic = "CALL", .kind = EEP_KIND_REFERENCE },
    { .code = EEP_RET, .mnemonic = "RET", .kind = EEP_KIND_NONE },
    { .code = EEP_ALLOC, .mnemonic = "ALLOC", .kind = EEP_KIND_WORD },
    { .code = EEP_DUP, .mnemonic = "DUP", .kind = EEP_KIND_NONE },
    { .code = EEP_DUP2, .mnemonic = "DUP2", .kind = EEP_KIND_NONE },
    { .code = EEP_POP, .mnemonic = "POP", .kind = EEP_KIND_NONE },
    { .code = EEP_EXCH, .mnemonic = "EXCH", .kind = EEP_KIND_NONE },
    { .code = EEP_STOP, .mnemonic = "STOP", .kind = EEP_KIND_NONE },
    { .code = EEP_SYSCALL, .mnemonic = "SYSCALL", .kind = EEP_KIND_WORD },
    { .code = EEP_LINE, .mnemonic = "LINE", .kind = EEP_KIND_WORD },
    { .code = EEP_SWITCH, .mnemonic = "SWITCH", .kind = EEP_KIND_BYTE },
    { .code = EEP_NODE, .mnemonic = "NODE", .kind = EEP_KIND_BYTE },
    { .code = EEP_NOP, .mnemonic = "NOP", .kind = EEP_KIND_NONE },
    { .code = EEP_SMUL, .mnemonic = "SMUL", .kind = EEP_KIND_NONE },
    { .code = EEP_SDIV, .mnemonic = "SDIV", .kind = EEP_KIND_NONE },
    { .code = EEP_LP, .mnemonic = "LP", .kind = EEP_KIND_NONE },
    { .code = EEP_CHECK, .mnemonic = "CHECK", .kind = EEP_KIND_NONE },
    { .code = EEP_ADW, .mnemonic = "ADW", .kind = EEP_KIND_NONE },
    { .code = EEP_EXCEPTION, .mnemonic = "EXCEPTION", .kind = EEP_KIND_JUMP },
    { .code = EEP_RAISE, .mnemonic = "RAISE", .kind = EEP_KIND_NONE },
    { .code = EEP_END_EXCEPTION, .mnemonic = "END_EXCEPTION", .kind = EEP_KIND_BYTE },
    { .code = EEP_SEQ, .mnemonic = "SEQ", .kind = EEP_KIND_NONE },
    { .code = EEP_CVT, .mnemonic = "CVT", .kind = EEP_KIND_BYTE },
    { .code = EEP_ATTR, .mnemonic = "ATTR", .kind = EEP_KIND_BYTE },
    { .code = EEP_CALLI, .mnemonic = "CALLI", .kind = EEP_KIND_NONE },
    { .code = EEP_COPYB, .mnemonic = "COPYB", .kind = EEP_KIND_NONE },
    { .code = EEP_STRCMP, .mnemonic = "STRCMP", .kind = EEP_KIND_BYTE },
    { .code = EEP_SBP, .mnemonic = "SBP", .kind = EEP_KIND_NONE },
    { .code = EEP_SWP, .mnemonic = "SWP", .kind = EEP_KIND_NONE },
    { .code = EEP_SLBP, .mnemonic = "SLBP", .kind = EEP_KIND_NONE },
    { .code = EEP_SLWP, .mnemonic = "SLWP", .kind = EEP_KIND_NONE },
    { .code = EEP_SP, .mnemonic = "SP", .kind = EEP_KIND_NONE },
    { .code = EEP_ROT3, .mnemonic = "ROT3", .kind = EEP_KIND_NONE },
    { .code = EEP_SHORT_SYSCALL, .mnemonic = "SHORT_SYSCALL", .kind = EEP_KIND_BYTE },
    { .code = EEP_START_VARIANT, .mnemonic = "START_VARIANT", .kind = EEP_KIND_NONE },
    { .code = EEP_VARIANTARG, .mnemonic = "VARIANTARG", .kind = EEP_KIND_WORD },
    { .code = EEP_DISPATCH, .mnemonic = "DISPATCH", .kind = EEP_KIND_LONG },
    { .code = EEP_CREATE, .mnemonic = "CREATE", .kind = EEP_KIND_NONE },
    { .code = EEP_RELEASE, .mnemonic = "RELEASE", .kind = EEP_KIND_NONE },
    { .code = EEP_GET, .mnemonic = "GET", .kind = EEP_KIND_WORD },
    { .code = EEP_PUT, .mnemonic = "PUT", .kind = EEP_KIND_WORD },
    { .code = EEP_FIND_SCOPE, .mnemonic = "FIND_SCOPE", .kind = EEP_KIND_REFERENCE },
    { .code = EEP_LOCAL_SCOPE, .mnemonic = "LOCAL_SCOPE", .kind = EEP_KIND_NONE },
    { .code = EEP_FADD, .mnemonic = "FADD", .kind = EEP_KIND_NONE },
    { .code = EEP_FSUB, .mnemonic = "FSUB", .kind = EEP_KIND_NONE },
    { .code = EEP_FMUL, .mnemonic = "FMUL", .kind = EEP_KIND_NONE },
    { .code = EEP_FDIV, .mnemonic = "FDIV", .kind = EEP_KIND_NONE },
    { .code = EEP_FREM, .mnemonic = "FREM", .kind = EEP_KIND_NONE },
    { .code = EEP_FNEG, .mnemonic = "FNEG", .kind = EEP_KIND_NONE },
    { .code = EEP_FGTR, .mnemonic = "FGTR", .kind = EEP_KIND_NONE },
    { .code = EEP_FGE, .mnemonic = "FGE", .kind = EEP_KIND_NONE },
    { .code = EEP_FLESS, .mnemonic = "FLESS", .kind = EEP_KIND_NONE },
    { .code = EEP_FLE, .mnemonic = "FLE", .kind = EEP_KIND_NONE },
    { .code = EEP_FLOAT, .mnemonic = "FLOAT", .kind = EEP_KIND_NONE },
    { .code = EEP_FIX, .mnemonic = "FIX", .kind = EEP_KIND_NONE },
    { .code = EEP_BREAKPOINT, .mnemonic = "BREAKPOINT", .kind = EEP_KIND_WORD },
    { .code = EEP_FIELD_ATTR, .mnemonic = "ATTR", .kind = EEP_KIND_WORD },
    { .code = EEP_FIND_DATA, .mnemonic = "FIND_DATA", .kind = EEP_KIND_NONE },
    { .code = EEP_FIND_COM, .mnemonic = "FIND_COM", .kind = EEP_KIND_NONE },
    { .code = EEP_LLS, .mnemonic = "LLS", .kind = EEP_KIND_NONE },
    { .code = EEP_SLS, .mnemonic = "SLS", .kind = EEP_KIND_NONE },
    { .code = EEP_LS, .mnemonic = "LS", .kind = EEP_KIND_NONE },
    { .code = EEP_SS, .mnemonic = "SS", .kind = EEP_KIND_NONE },
    { .code = EEP_FIND_IMMEDIATE, .mnemonic = "FIND_IMMEDIATE", .kind = EEP_KIND_NONE },
    { .code = EEP_ATTR_INDEX, .mnemonic = "ATTR_INDEX", .kind = EEP_KIND_WORD },
    { .code = EEP_SET_ATTR, .mnemonic = "SET_ATTR", .kind = EEP_KIND_WORD },
    { .code = EEP_UPB, .mnemonic = "UPB", .kind = EEP_KIND_NONE },
};

enum { UNASSIGNED_FIRST = 90, UNASSIGNED_COUNT = 6 };

/** True if the rows run from SLIT to UPB in order, with the unassigned codes left out. */
static consteval bool in_code_order()
{
    int32_t code = EEP_SLIT;
    for (const EEP_ROW &row : built_in) {
        if (row.code != code) return false;
        code++;
        if (code == UNASSIGNED_FIRST) code += UNASSIGNED_COUNT;
    }
    return code == EEP_USER;
}
static_assert(in_code_order(), "one row for each code, in order");

static constexpr int32_t operand_sizes[] = { 0, 1, 2, 4, 2, 4 };
static_assert(std::size(operand_sizes) == EEP_KIND_COUNT, "one size for each operand kind");

enum { MNEMONIC_SIZE = 24 }; // "USER_PCODE(255)" and "<BAD PCODE>" fit

void EEP_Initialise(void)
{
    static bool is_done = false;
    if (is_done) return;
    is_done = true;
    HS_Initialise();
}

static void declare_numbered(EEP_MODULE *registry, int32_t first, int32_t last, const char *name)
{
    for (int32_t code = first; code <= last; code++) {
        char mnemonic[MNEMONIC_SIZE];
        snprintf(mnemonic, sizeof mnemonic, "%s(%d)", name, code);
        EEP_DeclarePCode(registry, code, mnemonic, EEP_KIND_NONE);
    }
}

EEP_MODULE *EEP_NewModule(void)
{
    EEP_Initialise();
    auto *registry = (EEP_MODULE *)SH_NameAllocate(sizeof(EEP_MODULE), "EEP:MODULE");
    registry->names = HS_NewDomain();
    for (int32_t code = 0; code < EEP_SLIT; code++)
        EEP_DeclarePCode(registry, code, "ILIT", EEP_KIND_NONE);
    declare_numbered(registry, UNASSIGNED_FIRST, UNASSIGNED_FIRST + UNASSIGNED_COUNT - 1, "NUL");
    declare_numbered(registry, EEP_USER, EEP_CODE_COUNT - 1, "USER_PCODE");
    for (const EEP_ROW &row : built_in)
        EEP_DeclarePCode(registry, row.code, row.mnemonic, row.kind);
    return registry;
}

static int32_t free_syscall(void *registry, const char *, intptr_t number)
{
    ST_Free(((EEP_MODULE *)registry)->syscalls[number].name);
    return 1;
}

void EEP_DelModule(EEP_MODULE *registry)
{
    if (registry == nullptr) return;
    for (EEP_CODE &code : registry->codes)
        ST_Free(code.mnemonic);
    // By name: the array is large, mostly empty and then never touched.
    HS_AllNames(registry->names, free_syscall, registry);
    HS_DelDomain(registry->names);
    SH_Free(registry);
}

void EEP_DeclarePCode(EEP_MODULE *registry, int32_t code, const char *mnemonic, int32_t kind)
{
    if (code < 0 || code >= EEP_CODE_COUNT) return;
    EEP_CODE *entry = &registry->codes[code];
    char *copy = ST_Allocate(mnemonic);
    ST_Free(entry->mnemonic);
    entry->mnemonic = copy;
    entry->kind = kind;
}

static const char *give_code(const char *mnemonic, int32_t operand_kind, int32_t *kind,
                             int32_t *size)
{
    bool is_known = operand_kind >= 0 && operand_kind < EEP_KIND_COUNT;
    if (kind != nullptr) *kind = operand_kind;
    if (size != nullptr) *size = is_known ? operand_sizes[operand_kind] : 0;
    return mnemonic;
}

const char *EEP_Mnemonic(const EEP_MODULE *registry, int32_t code, int32_t *kind, int32_t *size)
{
    static char literal[MNEMONIC_SIZE];
    if (code < 0 || code >= EEP_CODE_COUNT)
        return give_code("<BAD PCODE>", EEP_KIND_NONE, kind, size);
    if (code >= EEP_SLIT)
        return give_code(registry->codes[code].mnemonic, registry->codes[code].kind, kind, size);
    snprintf(literal, sizeof literal, "%d", code);
    return give_code(literal, EEP_KIND_NONE, kind, size);
}

int32_t EEP_NewSyscall(EEP_MODULE *registry, const char *name, int32_t number, uint32_t flags)
{
    if (number >= EEP_SYSCALL_COUNT) SM_FatalError("EEP : Syscall array exceeded");
    if (number < 0) return 0;
    EEP_SYSCALL_ENTRY *entry = &registry->syscalls[number];
    if (entry->name != nullptr) return strcmp(entry->name, name) == 0;
    if (HS_NewName(registry->names, name, number) == nullptr) return 0;
    entry->name = ST_Allocate(name);
    entry->flags = flags;
    return 1;
}

int32_t EEP_Syscall(EEP_MODULE *registry, const char *name)
{
    intptr_t number = 0;
    HS_FindName(registry->names, name, &number);
    return (int32_t)number;
}

const char *EEP_SyscallName(const EEP_MODULE *registry, int32_t number)
{
    if (number < 0 || number >= EEP_SYSCALL_COUNT) return "<BAD SYSCALL>";
    const char *name = registry->syscalls[number].name;
    return name != nullptr ? name : "<BAD SYSCALL>";
}

uint32_t EEP_SyscallFlags(const EEP_MODULE *registry, int32_t number)
{
    if (number < 0 || number >= EEP_SYSCALL_COUNT) return 0;
    return registry->syscalls[number].flags;
}
