/*
 * Built-in functions of objects, which are records that carry the pragma CLSID: create and release.
 */
#include "expr/tlb.h"

#include "codegen/tlc.h"
#include "codegen/tlcj.h"
#include "expr/tle.h"
#include <ostrum/eep.h>
#include <ostrum/tlc.h>
#include <ostrum/tli.h>
#include <ostrum/tlit.h>
#include <ostrum/tlt.h>

static const char *class_of(TLI_IDENTIFIER *record)
{
    return TLIT_IsRecordType(record) ? TLI_FindPragma(record, "CLSID") : nullptr;
}

// create

struct POINTER_SEARCH {
    TLI_IDENTIFIER *record;
    TLI_IDENTIFIER *pointer; // earliest declared so far: names come newest first
};

static int32_t take_pointer(void *context, const char *, TLI_IDENTIFIER *identifier)
{
    auto *search = static_cast<POINTER_SEARCH *>(context);
    const bool is_pointer = TLI_IdentifierClass(identifier) == TLI_TYPE &&
                            TLIT_TypeSubclass(nullptr, identifier) == TLIT_SUBCLASS_POINTER;
    if (is_pointer && TLIT_PointerAt(identifier) == search->record) search->pointer = identifier;
    return 1;
}

static TLI_IDENTIFIER *check_create(const TLB_BUILT_IN *, TLP_MODULE *, TLT_STATEMENT *,
                                    TLE_TERM *term)
{
    TLI_IDENTIFIER *record = TLE_Type(TLE_CallArgument(term, 0));
    if (class_of(record) == nullptr) return nullptr;
    POINTER_SEARCH search = { .record = record, .pointer = nullptr };
    TLI_AllIdentifiers(TLI_IdentifierScope(record), take_pointer, &search);
    return search.pointer;
}

static int32_t create_code(const TLB_BUILT_IN *, TLC_STREAM *stream, TLE_TERM *term)
{
    const char *class_id = class_of(TLE_Type(TLE_CallArgument(term, 0)));
    if (class_id == nullptr) return 0;
    TLC_NewPSect(stream);
    TLC_PCode(stream, EEP_LCA);
    TLC_String(stream, class_id);
    TLC_PCode(stream, EEP_CREATE);
    return 1;
}

static int32_t create_java(const TLB_BUILT_IN *, TLC_STREAM *stream, TLE_TERM *term)
{
    TLI_IDENTIFIER *record = TLE_Type(TLE_CallArgument(term, 0));
    if (record == nullptr) return 0;
    char name[TLCJ_NAME_CAPACITY];
    fprintf(TLC_CFile(stream), "new %s()", TLCJ_Name(stream, record, name));
    return 1;
}

// release

static TLI_IDENTIFIER *check_release(const TLB_BUILT_IN *, TLP_MODULE *, TLT_STATEMENT *,
                                     TLE_TERM *term)
{
    TLI_IDENTIFIER *type = TLB_ArgumentType(term, 0);
    if (TLIT_TypeSubclass(nullptr, type) != TLIT_SUBCLASS_POINTER) return nullptr;
    return class_of(TLIT_PointerAt(type)) != nullptr ? type : nullptr;
}

static int32_t release_code(const TLB_BUILT_IN *, TLC_STREAM *stream, TLE_TERM *term)
{
    TLC_NewPSect(stream);
    const int32_t done = TLB_ArgumentCode(stream, term, 0);
    TLC_PCode(stream, EEP_RELEASE);
    return done;
}

static bool is_statement(const TLE_TERM *term)
{
    return term->kind == TLE_CALL || term->kind == TLE_INDIRECT_CALL ||
           term->kind == TLT_TOKEN_ASSIGN;
}

/**
 * Java collects what nobody points at any more, so nothing is left to do but what the argument does
 * itself. Where a value is wanted, it is the pointer.
 */
static int32_t release_java(const TLB_BUILT_IN *, TLC_STREAM *stream, TLE_TERM *term)
{
    const TLE_TERM *argument = TLE_CallArgument(term, 0);
    const bool has_taker = stream->text.statement != term;
    if (argument == nullptr || (!has_taker && !is_statement(argument))) return 1;
    return has_taker ? TLB_TightArgument(stream, term, 0) : TLB_ArgumentCode(stream, term, 0);
}

// Records

constexpr TLB_BUILT_IN TLB_Create = {
    .name = "create",
    .minimum_arguments = 1,
    .maximum_arguments = 1,
    .check = check_create,
    .simplify = nullptr,
    .p_code = create_code,
    .c_text = nullptr,
    .java_text = create_java,
};

constexpr TLB_BUILT_IN TLB_Release = {
    .name = "release",
    .minimum_arguments = 1,
    .maximum_arguments = 1,
    .check = check_release,
    .simplify = nullptr,
    .p_code = release_code,
    .c_text = nullptr,
    .java_text = release_java,
};
