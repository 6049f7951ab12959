/*
 * Addressing: loads, stores and addresses of items in frames, in static data and in constants. An
 * index that is known is folded into the offset; any other is on the stack, and checked where asked.
 */
#include "codegen/tlc.h"

#include <ostrum/eep.h>
#include <ostrum/tli.h>
#include <ostrum/tlit.h>

enum { ACCESS_FRAME = 0, ACCESS_MEMORY = 1, ACCESS_POINTER = 2, ACCESS_COUNT = 3 };
enum { SYMBOL_EXTERNAL = 1 };

// Opcodes by access; 0 where an item of that size has none.
struct ACCESS_CODES {
    uint8_t byte_codes[ACCESS_COUNT];
    uint8_t word_codes[ACCESS_COUNT];
};

static constexpr ACCESS_CODES load_codes = {
    .byte_codes = { EEP_LLB, EEP_LB, 0 },
    .word_codes = { EEP_LLW, EEP_LW, EEP_LP },
};

static constexpr ACCESS_CODES store_codes = {
    .byte_codes = { EEP_SLB, EEP_SB, 0 },
    .word_codes = { EEP_SLW, EEP_SW, EEP_SP },
};

static uint8_t access_code(const ACCESS_CODES &codes, int32_t size, int32_t access)
{
    if (access < 0 || access >= ACCESS_COUNT) return 0;
    if (size == 1) return codes.byte_codes[access];
    return size == 2 || size == 4 ? codes.word_codes[access] : 0;
}

void TLC_LoadValue(TLC_STREAM *stream, int32_t size, int32_t access)
{
    const uint8_t code = access_code(load_codes, size, access);
    if (code == 0) {
        TLC_Error(stream, "Load illegal size");
    } else {
        TLC_PCode(stream, code);
    }
}

void TLC_StoreValue(TLC_STREAM *stream, int32_t size, int32_t access)
{
    const uint8_t code = access_code(store_codes, size, access);
    if (code == 0) {
        TLC_Error(stream, "Store illegal size");
    } else {
        TLC_PCode(stream, code);
    }
}

void TLC_AddAddress(TLC_STREAM *stream, int32_t size)
{
    if (size == 1) {
        TLC_PCode(stream, EEP_ADD);
    } else if (size == 4) {
        TLC_PCode(stream, EEP_ADW);
    } else {
        TLC_PCode(stream, EEP_EXCH);
        TLC_Literal(stream, size);
        TLC_PCode(stream, EEP_MUL);
        TLC_PCode(stream, EEP_ADD);
    }
}

/** Offset of an element, modulo 2 to the 32. */
static int32_t element_offset(int32_t size, int32_t offset, int32_t index)
{
    const uint32_t distance = static_cast<uint32_t>(size) * static_cast<uint32_t>(index);
    return static_cast<int32_t>(distance + static_cast<uint32_t>(offset));
}

static void check_bound(TLC_STREAM *stream, int32_t bound)
{
    if ((stream->flags & TLC_FLAG_CHECKS) == 0 || bound <= 0) return;
    TLC_Literal(stream, bound);
    TLC_PCode(stream, EEP_CHECK);
}

void TLC_LoadOffset(TLC_STREAM *stream, int32_t size, int32_t offset, int32_t bound, int32_t index)
{
    if (index >= 0) {
        TLC_Literal(stream, element_offset(size, offset, index));
        return;
    }
    check_bound(stream, bound);
    if (size > 1) {
        TLC_Literal(stream, size);
        TLC_PCode(stream, EEP_MUL);
    }
    TLC_Literal(stream, offset);
    TLC_PCode(stream, EEP_ADD);
}

/** Address of the element whose index is on the stack. */
static void indexed_local(TLC_STREAM *stream, int32_t size, int32_t offset, int32_t bound)
{
    check_bound(stream, bound);
    TLC_Literal(stream, offset);
    TLC_PCode(stream, EEP_LLA);
    TLC_AddAddress(stream, size);
}

void TLC_LoadLocalValue(TLC_STREAM *stream, int32_t size, int32_t offset, int32_t bound,
                        int32_t index)
{
    if (index >= 0) {
        TLC_Literal(stream, element_offset(size, offset, index));
        TLC_LoadValue(stream, size, ACCESS_FRAME);
        return;
    }
    indexed_local(stream, size, offset, bound);
    TLC_LoadValue(stream, size, ACCESS_MEMORY);
}

void TLC_LoadLocalAddress(TLC_STREAM *stream, int32_t size, int32_t offset, int32_t bound,
                          int32_t index)
{
    if (index >= 0) {
        TLC_Literal(stream, element_offset(size, offset, index));
        TLC_PCode(stream, EEP_LLA);
        return;
    }
    indexed_local(stream, size, offset, bound);
}

void TLC_StoreLocalValue(TLC_STREAM *stream, int32_t size, int32_t offset, int32_t bound,
                         int32_t index)
{
    if (index >= 0) {
        TLC_Literal(stream, element_offset(size, offset, index));
        TLC_StoreValue(stream, size, ACCESS_FRAME);
        return;
    }
    indexed_local(stream, size, offset, bound);
    TLC_StoreValue(stream, size, ACCESS_MEMORY);
}

void TLC_FindScope(TLC_STREAM *stream, TLI_IDENTIFIER *identifier)
{
    TLI_IDENTIFIER *function = TLI_GetScopeIdentifier(TLI_IdentifierScope(identifier));
    TLC_PCode(stream, EEP_FIND_SCOPE);
    TLC_Symbol(stream, SYMBOL_EXTERNAL, TLIT_CodeType, function);
}

void TLC_LoadNonLocalValue(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t size,
                           int32_t offset, int32_t bound, int32_t index)
{
    TLC_FindScope(stream, identifier);
    TLC_LoadLocalValue(stream, size, offset, bound, index);
    TLC_PCode(stream, EEP_LOCAL_SCOPE);
}

void TLC_LoadGlobalAddress(TLC_STREAM *stream, int32_t size, int32_t offset, int32_t bound,
                           int32_t index)
{
    if (index < 0) check_bound(stream, bound);
    TLC_PCode(stream, EEP_LSA);
    TLC_StaticOffset(stream, index < 0 ? offset : element_offset(size, offset, index));
    if (index < 0) TLC_AddAddress(stream, size);
}

void TLC_LoadConstantAddress(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t bound,
                             int32_t index)
{
    TLI_IDENTIFIER *type = TLI_IdentifierType(identifier);
    if (index < 0) check_bound(stream, bound);
    if (index > 0) TLC_Literal(stream, index);
    TLC_PCode(stream, EEP_LCA);
    TLC_Symbol(stream, SYMBOL_EXTERNAL, type, identifier);
    if (index != 0) TLC_AddAddress(stream, TLIT_TypeSizeof(type, 1));
}

void TLC_LoadConstant(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t bound, int32_t index)
{
    TLI_IDENTIFIER *type = TLI_IdentifierType(identifier);
    TLC_LoadConstantAddress(stream, identifier, bound, index);
    const int32_t access = TLIT_PointerType(type) ? ACCESS_POINTER : ACCESS_MEMORY;
    TLC_LoadValue(stream, TLIT_TypeSizeof(type, 1), access);
}

void TLC_LoadNonVolatile(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t bound,
                         int32_t index)
{
    TLC_LoadConstant(stream, identifier, bound, index);
}
