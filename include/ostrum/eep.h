/*
 * The P-code set of the virtual machine, and the registry that tells the form of each operation code
 * and the number of each syscall. One registry serves a module and all that it uses.
 */
#ifndef OSTRUM_EEP_H
#define OSTRUM_EEP_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** What stands behind the byte of an operation code. Numbers are big-endian. */
enum {
    EEP_KIND_NONE,      /* nothing */
    EEP_KIND_BYTE,      /* one byte */
    EEP_KIND_WORD,      /* 16-bit value */
    EEP_KIND_LONG,      /* 32-bit value */
    EEP_KIND_JUMP,      /* 16-bit signed distance, counted from its own first byte */
    EEP_KIND_REFERENCE, /* 32-bit signed distance, counted from its own first byte, or a place that
                           the linker fills */
    EEP_KIND_COUNT
};

/**
 * The operation codes. A code below EEP_SLIT is a literal: the byte is the value pushed. Codes 90 to
 * 95 are unassigned, those from EEP_USER are free for PCODE pragmas.
 */
enum {
    EEP_SLIT = 32,
    EEP_MLIT = 33,
    EEP_LIT = 34,
    EEP_LLB = 35,
    EEP_LLW = 36,
    EEP_LLA = 37,
    EEP_LSA = 38,
    EEP_LSI = 39,
    EEP_LCA = 40,
    EEP_LB = 41,
    EEP_LW = 42,
    EEP_SLB = 43,
    EEP_SLW = 44,
    EEP_SB = 45,
    EEP_SW = 46,
    EEP_ARGB = 47,
    EEP_ADD = 48,
    EEP_SUB = 49,
    EEP_MUL = 50,
    EEP_DIV = 51,
    EEP_REM = 52,
    EEP_NEG = 53,
    EEP_INV = 54,
    EEP_AND = 55,
    EEP_OR = 56,
    EEP_XOR = 57,
    EEP_NOT = 58,
    EEP_SL = 59,
    EEP_SR = 60,
    EEP_EQ = 61,
    EEP_NEQ = 62,
    EEP_GTR = 63,
    EEP_GE = 64,
    EEP_LESS = 65,
    EEP_LE = 66,
    EEP_JUMP = 67,
    EEP_JZ = 68,
    EEP_JNZ = 69,
    EEP_JN = 70,
    EEP_JNN = 71,
    EEP_ARGS = 72,
    EEP_CALL = 73,
    EEP_RET = 74,
    EEP_ALLOC = 75,
    EEP_DUP = 76,
    EEP_DUP2 = 77,
    EEP_POP = 78,
    EEP_EXCH = 79,
    EEP_STOP = 80,
    EEP_SYSCALL = 81,
    EEP_LINE = 82,
    EEP_SWITCH = 83, /* count n, then a default and n entries, each a 16-bit jump */
    EEP_NODE = 84,   /* count n, then n entries, each a 16-bit jump */
    EEP_NOP = 85,
    EEP_SMUL = 86,
    EEP_SDIV = 87,
    EEP_LP = 88,
    EEP_CHECK = 89,
    EEP_ADW = 96,
    EEP_EXCEPTION = 97,
    EEP_RAISE = 98,
    EEP_END_EXCEPTION = 99,
    EEP_SEQ = 100,
    EEP_CVT = 101,
    EEP_ATTR = 102, /* attribute of the built-in attr: one byte behind it */
    EEP_CALLI = 103,
    EEP_COPYB = 104,
    EEP_STRCMP = 105, /* the byte behind it is the code of a comparison */
    EEP_SBP = 106,
    EEP_SWP = 107,
    EEP_SLBP = 108,
    EEP_SLWP = 109,
    EEP_SP = 110,
    EEP_ROT3 = 111,
    EEP_SHORT_SYSCALL = 112,
    EEP_START_VARIANT = 113,
    EEP_VARIANTARG = 114,
    EEP_DISPATCH = 115,
    EEP_CREATE = 116,
    EEP_RELEASE = 117,
    EEP_GET = 118,
    EEP_PUT = 119,
    EEP_FIND_SCOPE = 120,
    EEP_LOCAL_SCOPE = 121,
    EEP_FADD = 122,
    EEP_FSUB = 123,
    EEP_FMUL = 124,
    EEP_FDIV = 125,
    EEP_FREM = 126,
    EEP_FNEG = 127,
    EEP_FGTR = 128,
    EEP_FGE = 129,
    EEP_FLESS = 130,
    EEP_FLE = 131,
    EEP_FLOAT = 132,
    EEP_FIX = 133,
    EEP_BREAKPOINT = 134,
    EEP_FIELD_ATTR = 135, /* reads "ATTR" too: a field with the ATTR pragma, two bytes behind it */
    EEP_FIND_DATA = 136,
    EEP_FIND_COM = 137,
    EEP_LLS = 138,
    EEP_SLS = 139,
    EEP_LS = 140,
    EEP_SS = 141,
    EEP_FIND_IMMEDIATE = 142,
    EEP_ATTR_INDEX = 143,
    EEP_SET_ATTR = 144,
    EEP_UPB = 145,
    EEP_USER = 146
};

/** Prepares the name tables that registries stand on, the first time; must run before the others. */
OSTRUM_API void EEP_Initialise(void);

/**
 * Makes a registry with the whole P-code table and no syscalls.
 *
 * @return  the registry, to be freed with EEP_DelModule
 */
OSTRUM_API EEP_MODULE *EEP_NewModule(void);

/**
 * Frees a registry with all its names.
 *
 * @param registry  from EEP_NewModule, or null
 */
OSTRUM_API void EEP_DelModule(EEP_MODULE *registry);

/**
 * Declares an operation code, in place of whatever it was.
 *
 * @param registry  the registry
 * @param code      0 to 255; another one changes nothing
 * @param mnemonic  its name; copied
 * @param kind      operand kind, EEP_KIND_NONE to EEP_KIND_REFERENCE
 */
OSTRUM_API void EEP_DeclarePCode(EEP_MODULE *registry, int32_t code, const char *mnemonic,
                                 int32_t kind);

/**
 * Tells how an operation code reads. A walk over code steps over 1 + size bytes; behind SWITCH and
 * NODE their table follows.
 *
 * @param registry  the registry
 * @param code      0 to 255
 * @param kind      out: operand kind; may be null
 * @param size      out: bytes of the operand, 0 to 4; may be null
 * @return          the mnemonic, the registry's; for a literal (0 to 31) its decimal value in a
 *                  buffer that the next call overwrites; "<BAD PCODE>", kind and size 0 for a code
 *                  outside 0 to 255
 */
OSTRUM_API const char *EEP_Mnemonic(const EEP_MODULE *registry, int32_t code, int32_t *kind,
                                    int32_t *size);

/**
 * Declares a syscall. Declaring it again under the same number succeeds and leaves its flags.
 *
 * @param registry  the registry
 * @param name      its full name, module-name.function-name; copied
 * @param number    0 to 65,535; a larger one ends the process through SM_FatalError
 * @param flags     module flags that a call of it brings
 * @return          1 done; 0 the number has another name, the name another number, or the number is
 *                  negative
 */
OSTRUM_API int32_t EEP_NewSyscall(EEP_MODULE *registry, const char *name, int32_t number,
                                  uint32_t flags);

/**
 * Finds a syscall by name.
 *
 * @param registry  the registry
 * @param name      its full name
 * @return          its number, or 0 if it is not declared
 */
OSTRUM_API int32_t EEP_Syscall(EEP_MODULE *registry, const char *name);

/**
 * Finds a syscall by number.
 *
 * @param registry  the registry
 * @param number    any number
 * @return          its name, the registry's, or "<BAD SYSCALL>"
 */
OSTRUM_API const char *EEP_SyscallName(const EEP_MODULE *registry, int32_t number);

/**
 * Gives the flags of a syscall.
 *
 * @param registry  the registry
 * @param number    any number
 * @return          the flags it was declared with; 0 if no such number is declared
 */
OSTRUM_API uint32_t EEP_SyscallFlags(const EEP_MODULE *registry, int32_t number);

OSTRUM_END

#endif
