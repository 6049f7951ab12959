/*
 * Emission: opcodes with their peephole step, literals, and the references that stay open until the
 * module is laid out.
 */
#include "codegen/tlc.h"
#include "core/ifc.h"
#include "host/host.h"

#include <charconv>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <ostrum/eep.h>
#include <ostrum/st.h>
#include <ostrum/tli.h>
#include <ostrum/tlt.h>

static constexpr int32_t largest_line = 65535; // of the operand of LINE

// Two adjacent emissions that have a shorter form.
struct FOLD {
    uint8_t last;   // opcode or small literal at the end of the section
    uint8_t code;   // opcode to be emitted
    uint8_t result; // opcode in place of both; fold_vanish: nothing remains of them
};

static constexpr uint8_t fold_vanish = 255;

static constexpr FOLD folds[] = {
    { .last = 0, .code = EEP_ADD, .result = fold_vanish },
    { .last = 0, .code = EEP_SUB, .result = fold_vanish },
    { .last = 0, .code = EEP_OR, .result = fold_vanish },
    { .last = 0, .code = EEP_SL, .result = fold_vanish },
    { .last = 0, .code = EEP_SR, .result = fold_vanish },
    { .last = 1, .code = EEP_MUL, .result = fold_vanish },
    { .last = 1, .code = EEP_DIV, .result = fold_vanish },
    { .last = EEP_LLA, .code = EEP_LB, .result = EEP_LLB },
    { .last = EEP_LLA, .code = EEP_LW, .result = EEP_LLW },
    { .last = EEP_LLA, .code = EEP_LP, .result = EEP_LLW },
    { .last = EEP_LLA, .code = EEP_SB, .result = EEP_SLB },
    { .last = EEP_LLA, .code = EEP_SW, .result = EEP_SLW },
    { .last = EEP_LLA, .code = EEP_SP, .result = EEP_SLW },
    { .last = EEP_SLB, .code = EEP_POP, .result = EEP_SLBP },
    { .last = EEP_SLW, .code = EEP_POP, .result = EEP_SLWP },
    { .last = EEP_SB, .code = EEP_POP, .result = EEP_SBP },
    { .last = EEP_SW, .code = EEP_POP, .result = EEP_SWP },
};

// No last code from ARGB on folds, and no code from 128 on.
static constexpr int32_t fold_last_limit = EEP_ARGB;
static constexpr int32_t fold_code_limit = 128;

// The rows above by last code and code; 0 where there is none.
struct FOLD_TABLE {
    uint8_t results[fold_last_limit][fold_code_limit];
};

static consteval FOLD_TABLE make_fold_table()
{
    FOLD_TABLE table{};
    for (const FOLD &fold : folds)
        table.results[fold.last][fold.code] = fold.result;
    return table;
}

static constexpr FOLD_TABLE fold_table = make_fold_table();

static uint8_t fold_result(int32_t last, int32_t code)
{
    if (last < 0 || last >= fold_last_limit || code >= fold_code_limit) return 0;
    return fold_table.results[last][code];
}

/** Adds one byte, which the next opcode may fold with. */
static void put_code(TLC_STREAM *stream, int32_t code)
{
    TLC_PSECT *section = stream->current;
    *TLC_Extend(stream, section, 1) = static_cast<uint8_t>(code);
    section->last_code = static_cast<int16_t>(code);
}

/** Adds count bytes with which nothing folds. */
static uint8_t *put_plain(TLC_STREAM *stream, uint32_t count)
{
    TLC_PSECT *section = stream->current;
    section->last_code = TLC_NO_CODE;
    return TLC_Extend(stream, section, count);
}

void TLC_PlainPCode(TLC_STREAM *stream, int32_t code)
{
    *put_plain(stream, 1) = static_cast<uint8_t>(code);
}

void TLC_PCode(TLC_STREAM *stream, int32_t code)
{
    code &= 0xff;
    TLC_PSECT *section = stream->current;
    const uint8_t result = fold_result(section->last_code, code);
    if (result == 0) {
        put_code(stream, code);
        return;
    }
    if (result == fold_vanish) {
        section->size--;
        section->last_code = TLC_NO_CODE;
        return;
    }
    section->code[section->size - 1] = result;
    section->last_code = result;
}

void TLC_Code8(TLC_STREAM *stream, int32_t value)
{
    *put_plain(stream, 1) = static_cast<uint8_t>(value);
}

void TLC_Code16(TLC_STREAM *stream, int32_t value)
{
    IFC_Store16(put_plain(stream, 2), static_cast<uint32_t>(value));
}

void TLC_Code32(TLC_STREAM *stream, int32_t value)
{
    IFC_Store32(put_plain(stream, 4), static_cast<uint32_t>(value));
}

void TLC_Zeros(TLC_STREAM *stream, int32_t count)
{
    if (count < 1) return;
    const uint32_t size = static_cast<uint32_t>(count);
    if (size > TLC_LARGEST_IMAGE - stream->current->size) {
        TLC_Error(stream, "Module too large");
        return;
    }
    std::memset(put_plain(stream, size), 0, size);
}

static void put_literal(TLC_STREAM *stream, int32_t value)
{
    if (value >= 0 && value < EEP_SLIT) {
        put_code(stream, value);
    } else if (value >= INT8_MIN && value <= INT8_MAX) {
        put_code(stream, EEP_SLIT);
        TLC_Code8(stream, value);
    } else if (value >= INT16_MIN && value <= INT16_MAX) {
        put_code(stream, EEP_MLIT);
        TLC_Code16(stream, value);
    } else {
        put_code(stream, EEP_LIT);
        TLC_Code32(stream, value);
    }
}

void TLC_Literal(TLC_STREAM *stream, int32_t value)
{
    if (stream->target == TLC_TARGET_PCODE) {
        put_literal(stream, value);
    } else {
        char digits[16];
        const std::to_chars_result end = std::to_chars(digits, std::end(digits), value);
        std::fwrite(digits, 1, static_cast<size_t>(end.ptr - digits), stream->file);
    }
}

/** Adds a fix-up at the end of the current section; record gives the size of its kind. */
static TLC_FIXUP *new_fixup(TLC_STREAM *stream, TLC_FIXUP_KIND kind, size_t size)
{
    TLC_PSECT *section = stream->current;
    uint8_t *piece = TLC_ArenaTake(&stream->records, size, alignof(TLC_SYMBOL_FIXUP));
    TLC_FIXUP *fixup = reinterpret_cast<TLC_FIXUP *>(piece);
    fixup->kind = kind;
    fixup->offset = section->size;
    fixup->next = section->fixups;
    section->fixups = fixup;
    return fixup;
}

static TLC_JUMP_FIXUP *new_jump(TLC_STREAM *stream)
{
    TLC_FIXUP *fixup = new_fixup(stream, TLC_FIXUP_JUMP, sizeof(TLC_JUMP_FIXUP));
    TLC_Code16(stream, 0);
    return reinterpret_cast<TLC_JUMP_FIXUP *>(fixup);
}

void TLC_Jump(TLC_STREAM *stream, TLC_PSECT *target)
{
    new_jump(stream)->target = target;
}

void TLC_Label(TLC_STREAM *stream, TLI_IDENTIFIER *node)
{
    new_jump(stream)->node = node;
}

void TLC_StaticOffset(TLC_STREAM *stream, int32_t offset)
{
    new_fixup(stream, TLC_FIXUP_STATIC, sizeof(TLC_FIXUP));
    TLC_Code32(stream, offset);
}

/** Writes one character of a string; what has an escape or would start another is escaped. */
static void put_character(FILE *file, int32_t target, unsigned char before, unsigned char character)
{
    const bool is_trigraph = target == TLC_TARGET_C && before == '?' && character == '?';
    const bool is_foreign = character >= 127 && target == TLC_TARGET_JAVA;
    if (character == '"' || character == '\\' || is_trigraph) {
        std::fprintf(file, "\\%c", character);
    } else if (character < ' ' || character == 127 || is_foreign) {
        std::fprintf(file, "\\%03o", character);
    } else {
        HOST_PutChar(file, character);
    }
}

static void put_string_text(TLC_STREAM *stream, const char *text)
{
    unsigned char before = 0;
    HOST_PutChar(stream->file, '"');
    for (; *text != 0; text++) {
        const unsigned char character = static_cast<unsigned char>(*text);
        put_character(stream->file, stream->target, before, character);
        before = character;
    }
    HOST_PutChar(stream->file, '"');
}

/** Offset of a text in the string section, where it is put if it is new. */
static uint32_t pool_offset(TLC_STREAM *stream, const char *text)
{
    TLC_PSECT *pool = stream->string_section;
    intptr_t known = 0;
    if (HS_FindName(stream->strings, text, &known)) return static_cast<uint32_t>(known);
    const uint32_t offset = pool->size;
    HS_NewName(stream->strings, text, offset);
    const size_t size = std::strlen(text) + 1;
    if (size > INT32_MAX) return offset; // no statement is that long
    std::memcpy(TLC_Extend(stream, pool, static_cast<uint32_t>(size)), text, size);
    pool->last_code = TLC_NO_CODE;
    return offset;
}

void TLC_String(TLC_STREAM *stream, const char *text)
{
    if (stream->target != TLC_TARGET_PCODE) {
        put_string_text(stream, text);
        return;
    }
    const uint32_t offset = pool_offset(stream, text);
    TLC_FIXUP *fixup = new_fixup(stream, TLC_FIXUP_STRING, sizeof(TLC_STRING_FIXUP));
    reinterpret_cast<TLC_STRING_FIXUP *>(fixup)->string_offset = offset;
    TLC_Code32(stream, 0);
}

// What a symbol class puts at its place.
enum SYMBOL_FORM : uint8_t {
    FORM_UNKNOWN,
    FORM_MARK,  // nothing: it names the place
    FORM_FIELD, // four bytes for a displacement or a value
};

static constexpr SYMBOL_FORM symbol_forms[] = {
    FORM_MARK,    // GLOBAL
    FORM_FIELD,   // EXTERNAL
    FORM_UNKNOWN, // TYPE
    FORM_MARK,    // LOCAL
    FORM_MARK,    // ENTRY_POINT
    FORM_UNKNOWN, // VALUE
    FORM_FIELD,   // VALUEREF
    FORM_UNKNOWN, // CODE_VAR_START
    FORM_UNKNOWN, // CODE_VAR_END
    FORM_UNKNOWN, // C_OVERLAY
    FORM_UNKNOWN, // COUNTRY
    FORM_UNKNOWN, // SOURCE
    FORM_UNKNOWN, // C_OVERLAY_REF
    FORM_UNKNOWN, // SYSCALL
    FORM_UNKNOWN, // RTD_ENTRY_POINT
    FORM_MARK,    // PCODE_DEF
    FORM_MARK,    // EXTREF
};

static SYMBOL_FORM symbol_form(int32_t symbol_class)
{
    const int32_t count = sizeof symbol_forms / sizeof symbol_forms[0];
    if (symbol_class < 0 || symbol_class >= count) return FORM_UNKNOWN;
    return symbol_forms[symbol_class];
}

/** Keeps a name, cut to what a symbol's buffer holds. */
static const char *keep_name(TLC_STREAM *stream, const char *name)
{
    const size_t length = strnlen(name, TLC_SYMBOL_NAME_SIZE - 1);
    uint8_t *copy = TLC_ArenaTake(&stream->records, length + 1, 1);
    std::memcpy(copy, name, length);
    copy[length] = 0;
    return reinterpret_cast<const char *>(copy);
}

/** Name is null where the identifier gives it. */
static void put_symbol(TLC_STREAM *stream, int32_t symbol_class, TLI_IDENTIFIER *type,
                       TLI_IDENTIFIER *identifier, const char *name)
{
    const SYMBOL_FORM form = symbol_form(symbol_class);
    if (form == FORM_UNKNOWN) {
        TLC_Error(stream, "Unknown symbol class");
        return;
    }
    const char *kept = name == nullptr ? nullptr : keep_name(stream, name);
    TLC_FIXUP *fixup = new_fixup(stream, TLC_FIXUP_SYMBOL, sizeof(TLC_SYMBOL_FIXUP));
    fixup->symbol_class = static_cast<uint8_t>(symbol_class);
    TLC_SYMBOL_FIXUP *symbol = reinterpret_cast<TLC_SYMBOL_FIXUP *>(fixup);
    symbol->type = type;
    symbol->identifier = identifier;
    symbol->name = kept;
    if (form == FORM_FIELD) TLC_Code32(stream, 0);
}

static void put_symbol_text(TLC_STREAM *stream, int32_t symbol_class, const char *name)
{
    char buffer[32];
    const SYMBOL_FORM form = symbol_form(symbol_class);
    if (form == FORM_UNKNOWN) TLC_Error(stream, "Unknown symbol class");
    if (form != FORM_FIELD) return;
    const bool is_c = stream->target == TLC_TARGET_C;
    HOST_PutText(stream->file, is_c ? TLC_CName(name, buffer) : name);
}

void TLC_Symbol(TLC_STREAM *stream, int32_t symbol_class, TLI_IDENTIFIER *type,
                TLI_IDENTIFIER *identifier)
{
    if (stream->target == TLC_TARGET_PCODE) {
        put_symbol(stream, symbol_class, type, identifier, nullptr);
    } else {
        put_symbol_text(stream, symbol_class, TLI_FullName(identifier));
    }
}

void TLC_NameSymbol(TLC_STREAM *stream, int32_t symbol_class, TLI_IDENTIFIER *type,
                    const char *name)
{
    if (stream->target == TLC_TARGET_PCODE) {
        put_symbol(stream, symbol_class, type, nullptr, name);
    } else {
        put_symbol_text(stream, symbol_class, name);
    }
}

void TLC_LineNumber(TLC_STREAM *stream, int32_t line)
{
    if ((stream->flags & TLC_FLAG_LINES) == 0) return;
    TLC_PCode(stream, EEP_LINE);
    TLC_Code16(stream, line > largest_line ? largest_line : line);
}

void TLC_Statement(TLC_STREAM *stream, TLT_STATEMENT *statement)
{
    TLC_PSECT *section = stream->current;
    if (section->statement != nullptr || statement == nullptr) return;
    section->statement = statement;
    TLC_LineNumber(stream, TLT_StatementSourceLineNumber(statement));
}
