// P-code that reaches variables, arguments and fields. A subscript counts elements: -1 stands for one
// that is on the stack already, 0 or more is known now.
#include "names/tliv_code.h"

#include <ostrum/eep.h>
#include <ostrum/st.h>
#include <ostrum/tlc.h>
#include <ostrum/tlit.h>

namespace
{

constexpr int32_t word_size = 4;
constexpr int32_t on_stack = -1;

// Accesses of a load: what the address on the stack is.
enum { frame_access = 0, address_access = 1, pointer_access = 2 };

// One item to be reached.
struct ITEM {
    TLC_STREAM *stream;
    TLI_IDENTIFIER *identifier;
    int32_t offset;    // bytes from the start of its scope
    int32_t dimension; // bound of a checked subscript
    int32_t access;    // TLI_LOCAL, TLI_GLOBAL or TLI_NON_LOCAL
    int32_t size;      // bytes of its type
};

ITEM item_of(TLC_STREAM *stream, TLI_IDENTIFIER *identifier)
{
    const TLIV_VARIABLE *variable = reinterpret_cast<TLIV_VARIABLE *>(identifier);
    return { .stream = stream,
             .identifier = identifier,
             .offset = variable->offset,
             .dimension = variable->dimension,
             .access = TLI_ScopeAccessType(identifier->scope),
             .size = TLIT_TypeSizeof(identifier->type, 1) };
}

int32_t refuse(TLC_STREAM *stream, const char *message)
{
    TLC_Error(stream, message);
    return 0;
}

int32_t is_by_reference(TLI_IDENTIFIER *identifier)
{
    return TLIV_ArgumentPassType(identifier) != TLIV_BY_VALUE;
}

// The type that lies behind the word at the item's offset.
TLI_IDENTIFIER *element_type(TLI_IDENTIFIER *type)
{
    return TLIT_IsArrayType(type) ? TLIT_ArrayOf(type) : type;
}

// First word of the pair: the address of the elements.
void load_elements(const ITEM &item)
{
    if (item.access == TLI_GLOBAL) {
        TLC_LoadGlobalAddress(item.stream, 0, item.offset, 0, 0);
        TLC_LoadValue(item.stream, word_size, pointer_access);
        return;
    }
    TLC_Literal(item.stream, item.offset);
    TLC_LoadValue(item.stream, word_size, frame_access);
}

// Second word of the pair: the number of elements.
void load_count(const ITEM &item)
{
    if (item.access == TLI_GLOBAL) {
        TLC_LoadGlobalAddress(item.stream, 0, item.offset + word_size, 0, 0);
        TLC_LoadValue(item.stream, word_size, address_access);
        return;
    }
    TLC_Literal(item.stream, item.offset + word_size);
    TLC_LoadValue(item.stream, word_size, frame_access);
}

void load_element(const ITEM &item, int32_t subscript)
{
    if (subscript == 0) {
        load_elements(item);
        return;
    }
    if (subscript > 0) TLC_Literal(item.stream, subscript);
    if ((TLC_StreamFlags(item.stream) & TLC_FLAG_CHECKS) != 0) {
        load_count(item);
        TLC_PCode(item.stream, EEP_CHECK);
    }
    load_elements(item);
    TLC_AddAddress(item.stream, TLIT_TypeSizeof(element_type(item.identifier->type), 1));
}

// Address of an element of an array that is held as a pair, or of an item passed by reference.
int32_t push_element_address(const ITEM &item, int32_t subscript)
{
    if (item.access > TLI_NON_LOCAL) {
        return refuse(item.stream, "Scope access type not handled - 1");
    }
    if (item.access == TLI_NON_LOCAL) TLC_FindScope(item.stream, item.identifier);
    load_element(item, subscript);
    if (item.access == TLI_NON_LOCAL) TLC_PCode(item.stream, EEP_LOCAL_SCOPE);
    return 1;
}

void load_global_value(const ITEM &item, int32_t subscript)
{
    TLC_LoadGlobalAddress(item.stream, item.size, item.offset, item.dimension, subscript);
    TLC_LoadValue(item.stream, item.size, address_access);
}

// The field's number as a run-time attribute, if it is one.
bool attribute_number(TLI_IDENTIFIER *field, int32_t *number)
{
    const char *text = TLI_FindPragma(field, "ATTR");
    if (text == nullptr) return false;
    *number = 0;
    ST_CharInt(text, number, 0);
    return true;
}

// Record beneath, address of the object above: an element of an attribute that is an array.
void push_attribute_element(TLC_STREAM *stream, int32_t number, int32_t subscript)
{
    if (subscript != on_stack) TLC_Literal(stream, subscript);
    TLC_PCode(stream, EEP_EXCH);
    TLC_PCode(stream, EEP_ATTR_INDEX);
    TLC_Code16(stream, number);
}

} // namespace

int32_t TLIV_PushVariableValue(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t subscript)
{
    const ITEM item = item_of(stream, identifier);
    if (TLIT_IsArrayType(identifier->type)) return push_element_address(item, subscript);
    switch (item.access) {
    case TLI_LOCAL:
        TLC_LoadLocalValue(stream, item.size, item.offset, item.dimension, subscript);
        return 1;
    case TLI_GLOBAL:
        load_global_value(item, subscript);
        return 1;
    case TLI_NON_LOCAL:
        TLC_LoadNonLocalValue(stream, identifier, item.size, item.offset, item.dimension,
                              subscript);
        return 1;
    default:
        return refuse(stream, "Scope access type not handled - 2");
    }
}

int32_t TLIV_PushVariableAddress(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t subscript)
{
    const ITEM item = item_of(stream, identifier);
    switch (item.access) {
    case TLI_LOCAL:
        TLC_LoadLocalAddress(stream, item.size, item.offset, item.dimension, subscript);
        return 1;
    case TLI_GLOBAL:
        TLC_LoadGlobalAddress(stream, item.size, item.offset, item.dimension, subscript);
        return 1;
    case TLI_NON_LOCAL:
        TLC_FindScope(stream, identifier);
        TLC_LoadLocalAddress(stream, item.size, item.offset, item.dimension, subscript);
        TLC_PCode(stream, EEP_LOCAL_SCOPE);
        return 1;
    default:
        return refuse(stream, "Scope access type not handled - 3");
    }
}

int32_t TLIV_PushArgumentValue(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t subscript)
{
    const ITEM item = item_of(stream, identifier);
    if (is_by_reference(identifier)) {
        if (!push_element_address(item, subscript)) return 0;
        if (!TLIT_IsArrayType(identifier->type)) TLI_LoadValue(stream, identifier->type);
        return 1;
    }
    switch (item.access) {
    case TLI_LOCAL:
        TLC_LoadLocalValue(stream, item.size, item.offset, item.dimension, subscript);
        return 1;
    case TLI_NON_LOCAL:
        TLC_LoadNonLocalValue(stream, identifier, item.size, item.offset, item.dimension,
                              subscript);
        return 1;
    default:
        return refuse(stream, "Scope access type not handled - 6");
    }
}

int32_t TLIV_PushArgumentAddress(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t subscript)
{
    if (is_by_reference(identifier) && !TLIT_IsArrayType(identifier->type)) {
        return push_element_address(item_of(stream, identifier), subscript);
    }
    return TLIV_PushVariableAddress(stream, identifier, subscript);
}

int32_t TLIV_PushFieldAddress(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t subscript)
{
    int32_t attribute = 0;
    if (attribute_number(identifier, &attribute)) {
        TLC_PCode(stream, EEP_FIELD_ATTR);
        TLC_Code16(stream, attribute);
        return 1;
    }
    const ITEM item = item_of(stream, identifier);
    TLC_LoadOffset(stream, item.size, item.offset, item.dimension, subscript);
    TLC_PCode(stream, EEP_ADD);
    return 1;
}

int32_t TLIV_PushFieldValue(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t subscript)
{
    if (!TLIT_IsArrayType(identifier->type)) return refuse(stream, "Field is not an array pointer");
    int32_t attribute = 0;
    if (attribute_number(identifier, &attribute)) {
        push_attribute_element(stream, attribute, subscript);
        return 1;
    }
    if (subscript > 0) TLC_Literal(stream, subscript);
    if (subscript != 0) TLC_PCode(stream, EEP_EXCH);
    TLC_Literal(stream, reinterpret_cast<TLIV_VARIABLE *>(identifier)->offset);
    TLC_PCode(stream, EEP_ADD);
    TLC_PCode(stream, EEP_LP);
    if (subscript != 0) {
        TLC_AddAddress(stream, TLIT_TypeSizeof(TLIT_ArrayOf(identifier->type), 1));
    }
    return 1;
}

int32_t TLIV_PushStorageDimension(TLC_STREAM *stream, TLI_IDENTIFIER *identifier)
{
    const ITEM item = item_of(stream, identifier);
    if (item.dimension == -1) return 1;
    if (item.dimension != 0) {
        TLC_Literal(stream, item.dimension);
        return 1;
    }
    if (item.access > TLI_NON_LOCAL) return refuse(stream, "Scope access type not handled - 4");
    if (item.access == TLI_NON_LOCAL) TLC_FindScope(stream, identifier);
    load_count(item);
    if (item.access == TLI_NON_LOCAL) TLC_PCode(stream, EEP_LOCAL_SCOPE);
    return 1;
}
