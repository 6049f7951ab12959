/*
 * Calls: of functions, of syscalls, of user P-codes and through values, on all targets.
 */
#include "codegen/tlc.h"
#include "codegen/tlcc.h"
#include "host/host.h"

#include <cstdio>
#include <ostrum/eep.h>
#include <ostrum/st.h>
#include <ostrum/tli.h>
#include <ostrum/tlit.h>
#include <ostrum/tliv.h>
#include <ostrum/tlp.h>

// Function classes that can be called.
enum { CLASS_FUNCTION = 1, CLASS_TREE = 2, CLASS_SYSCALL = 6 };

enum { NUMBER_ANY = 3 }; // format of ST_CharInt: the text shows the base
enum { SYMBOL_EXTERNAL = 1, SYMBOL_EXTREF = 16 };
enum { SHORT_SYSCALL_LIMIT = 256 };

/** The name that a callable has in text: qualified unless it is private to the module. */
static const char *text_name(TLI_IDENTIFIER *function)
{
    const bool is_function = TLI_IdentifierClass(function) == TLI_FUNCTION;
    if (is_function && TLIV_FunctionQualifiers(function) != 0) return TLI_FullName(function);
    return TLI_IdentifierName(function);
}

static void start_c_call(TLC_STREAM *stream, TLI_IDENTIFIER *function, int32_t direct)
{
    char name[TLCC_NAME_CAPACITY];
    if (!direct) HOST_PutText(stream->file, "(*toll_called(");
    HOST_PutText(stream->file, TLCC_Name(function, name));
    HOST_PutText(stream->file, direct ? "(" : "))(");
}

void TLC_StartCall(TLC_STREAM *stream, TLI_IDENTIFIER *function, int32_t direct)
{
    if (stream->target == TLC_TARGET_C) {
        start_c_call(stream, function, direct);
    } else if (stream->target == TLC_TARGET_JAVA) {
        std::fprintf(stream->file, "%s(", text_name(function));
    } else {
        const bool is_variant = TLI_FindPragma(function, "DISPID") != nullptr;
        TLC_PCode(stream, is_variant ? EEP_START_VARIANT : EEP_ARGS);
    }
}

void TLC_Argument(TLC_STREAM *stream, int32_t size)
{
    if (stream->target == TLC_TARGET_PCODE && size == 1) TLC_PCode(stream, EEP_ARGB);
}

/** The user P-code that the pragma PCODE names; 0 if there is none. */
static int32_t user_code(TLC_STREAM *stream, TLI_IDENTIFIER *function)
{
    const char *text = TLI_FindPragma(function, "PCODE");
    if (text == nullptr) return 0;
    int32_t code = 0;
    const char *rest = ST_CharInt(text, &code, NUMBER_ANY);
    if (rest != nullptr && *rest == 0) return code;
    TLC_Error(stream, "PCode pragma has non-numeric value");
    return 0;
}

/** The EXTREF symbol lets the linker pull in the module that defines the code. */
static void call_user_code(TLC_STREAM *stream, TLI_IDENTIFIER *function, int32_t code)
{
    char name[TLC_SYMBOL_NAME_SIZE];
    TLI_DOMAIN *domain = TLI_IdentifierDomain(function);
    const char *domain_name = domain == nullptr ? "" : TLI_DomainName(domain);
    ST_Concat(name, sizeof name, "$", domain_name, nullptr);
    TLC_PlainPCode(stream, code);
    TLC_NameSymbol(stream, SYMBOL_EXTREF, TLIT_CodeType, name);
}

static void call_function(TLC_STREAM *stream, TLI_IDENTIFIER *function)
{
    const int32_t code = user_code(stream, function);
    if (code != 0) {
        call_user_code(stream, function, code);
        return;
    }
    TLC_PCode(stream, EEP_CALL);
    TLC_Symbol(stream, SYMBOL_EXTERNAL, TLIT_CodeType, function);
}

/** Notes what a syscall that was called asks of the module. */
static void note_syscall(TLC_STREAM *stream, TLI_IDENTIFIER *function, const char *full_name,
                         uint32_t flags)
{
    stream->object_flags |= flags;
    const char *overlay = TLI_FindPragma(function, "TOLL_OVERLAY");
    if (overlay != nullptr) HS_NewName(stream->overlays, overlay, 0);
    const char *flag = TLI_FindPragma(function, "TOLL_KOB_FLAG");
    if (flag != nullptr) stream->object_flags |= TLC_FlagValue(flag);
    HS_NewName(stream->syscalls, full_name, 0);
}

static void bad_syscall(TLC_STREAM *stream, TLI_IDENTIFIER *function)
{
    char message[128];
    std::snprintf(message, sizeof message, "Bad syscall '%s'\n", TLI_IdentifierName(function));
    TLC_Error(stream, message);
}

static void call_syscall(TLC_STREAM *stream, TLI_IDENTIFIER *function)
{
    EEP_MODULE *registry = TLP_SyscallData(stream->module);
    const char *full_name = TLI_FullName(function);
    const int32_t number = EEP_Syscall(registry, full_name);
    if (number == 0) {
        bad_syscall(stream, function);
        return;
    }
    if (number < SHORT_SYSCALL_LIMIT) {
        TLC_PCode(stream, EEP_SHORT_SYSCALL);
        TLC_Code8(stream, number);
    } else {
        TLC_PCode(stream, EEP_SYSCALL);
        TLC_Code16(stream, number);
    }
    note_syscall(stream, function, full_name, EEP_SyscallFlags(registry, number));
}

static int32_t call_value(TLC_STREAM *stream, TLI_IDENTIFIER *item)
{
    if (!TLI_PushValue(stream, item, 0)) return 0;
    TLC_PCode(stream, EEP_CALLI);
    return 1;
}

int32_t TLC_Call(TLC_STREAM *stream, TLI_IDENTIFIER *function, int32_t direct)
{
    if (stream->target != TLC_TARGET_PCODE) {
        HOST_PutChar(stream->file, ')');
        return 1;
    }
    if (!direct) return call_value(stream, function);
    const int32_t function_class = TLIV_FunctionClass(function);
    if (function_class == CLASS_FUNCTION || function_class == CLASS_TREE) {
        call_function(stream, function);
    } else if (function_class == CLASS_SYSCALL) {
        call_syscall(stream, function);
    }
    return 1;
}
