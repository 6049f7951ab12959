/*
 * Debug frames: one for the static data, one for each function and tree, one for each enumeration
 * and record type that an item of them has. Record types may hold or point at one another to any
 * depth, so that their fields are entered from a list of records under way.
 */
#include "codegen/tlc.h"
#include "codegen/tlcg.h"

#include "core/sh.h"
#include "names/tlit.h"
#include <ostrum/kobd.h>
#include <ostrum/st.h>
#include <ostrum/tli.h>
#include <ostrum/tlit.h>
#include <ostrum/tliv.h>
#include <ostrum/tlp.h>
#include <ostrum/tlt.h>

// Classes of frames.
enum { FRAME_FUNCTION = 0, FRAME_TREE = 1, FRAME_STATICS = 2, FRAME_RECORD = 3, FRAME_ENUM = 4 };

enum { CLASS_FUNCTION = 1, CLASS_TREE = 2 };                           // of functions
enum { SUBCLASS_ENUM = 1, SUBCLASS_RECORD = 4, SUBCLASS_POINTER = 5 }; // of types
enum { DEBUG_TYPE_BOOL = 102 };
enum { FLAG_BY_REFERENCE = 0x1000, FLAG_POINTER = 0x2000 }; // of entries
enum { DIMENSION_SCALAR = -1 };
enum { FIELD_LIMIT = 32767 }; // fields of the file have 16 signed bits
enum { FRAME_NAME_SIZE = 32 };

static int32_t held(int32_t value)
{
    return value > FIELD_LIMIT ? FIELD_LIMIT : value;
}

/** Adds a frame; false if there is one of that name. */
static bool add_frame(TLCG_CONTEXT *context, KOBD_FRAME **frame, const char *name,
                      int32_t frame_class, int32_t size, int32_t line)
{
    return KOBD_Frame(context->object, frame, name, frame_class, held(size), held(line)) == 0;
}

static int32_t declaration_line(TLI_IDENTIFIER *type)
{
    TLT_STATEMENT *statement = TLI_IdentifierStatement(type);
    return statement == nullptr ? 0 : TLT_StatementLineNumber(statement);
}

static void add_enumeration(TLCG_CONTEXT *context, TLI_IDENTIFIER *type)
{
    KOBD_FRAME *frame = nullptr;
    const char *name = TLI_FullName(type);
    if (!add_frame(context, &frame, name, FRAME_ENUM, 0, declaration_line(type))) return;
    // Along the list: a search by ordinal starts at the first value each time.
    const TLIT_ENUM_VALUE *value = TLIT_AsType(type)->values;
    for (; value != nullptr; value = value->next)
        KOBD_Entry(frame, nullptr, value->identifier.name, "", 0, 0, held(value->number));
}

/** Makes the frame of a record type; its fields come from the list of records. */
static void add_record(TLCG_CONTEXT *context, TLI_IDENTIFIER *type)
{
    KOBD_FRAME *frame = nullptr;
    TLI_SCOPE *scope = TLIT_RecordScope(type);
    const int32_t size = scope == nullptr ? 0 : TLI_ScopeSize(scope);
    const char *name = TLI_FullName(type);
    if (!add_frame(context, &frame, name, FRAME_RECORD, size, declaration_line(type))) return;
    TLCG_RECORDS *list = &context->records;
    const size_t used = list->count * sizeof(TLCG_RECORD);
    size_t capacity = list->capacity * sizeof(TLCG_RECORD);
    list->records = static_cast<TLCG_RECORD *>(
        SH_Grow(list->records, used, &capacity, used + sizeof(TLCG_RECORD)));
    list->capacity = capacity / sizeof(TLCG_RECORD);
    list->records[list->count++] = { .type = type, .frame = frame, .next_field = 0 };
}

static int32_t item_offset(TLI_IDENTIFIER *item)
{
    const bool is_field = TLI_IdentifierClass(item) == TLI_FIELD;
    return is_field ? TLIV_FieldOffset(item) : TLIV_Offset(item);
}

static int32_t item_dimension(TLI_IDENTIFIER *item)
{
    const int32_t dimension = TLI_IdentifierDimension(item, nullptr);
    return dimension == DIMENSION_SCALAR ? 1 : held(dimension);
}

static bool is_described_enumeration(TLI_IDENTIFIER *type)
{
    return TLIT_TypeSubclass(nullptr, type) == SUBCLASS_ENUM &&
           TLIT_TypeDebugType(type) != DEBUG_TYPE_BOOL;
}

/** Adds one variable, argument or field to a frame, and the frame of its type if that has one. */
static void add_item(TLCG_CONTEXT *context, KOBD_FRAME *frame, TLI_IDENTIFIER *item)
{
    TLI_IDENTIFIER *type = TLI_IdentifierType(item);
    TLI_IDENTIFIER *base = type;
    int32_t flags = TLIT_TypeDebugType(type);
    if (TLIV_ArgumentPassType(item) != 0) flags |= FLAG_BY_REFERENCE;
    if (TLIT_TypeSubclass(nullptr, type) == SUBCLASS_POINTER) {
        flags |= FLAG_POINTER;
        base = TLIT_PointerAt(type);
    }
    const bool is_enumeration = is_described_enumeration(base);
    const bool is_record = TLIT_TypeSubclass(nullptr, base) == SUBCLASS_RECORD;
    const bool is_qualified = is_enumeration || is_record;
    const char *type_name = is_qualified ? TLI_FullName(base) : TLI_IdentifierName(base);
    KOBD_Entry(frame, nullptr, TLI_IdentifierName(item), type_name, flags, item_dimension(item),
               held(item_offset(item)));
    if (is_enumeration) add_enumeration(context, base);
    if (is_record) add_record(context, base);
}

/** Enters the next field of the innermost record under way, which may bring up another record. */
static void add_next_field(TLCG_CONTEXT *context)
{
    TLCG_RECORD *record = &context->records.records[context->records.count - 1];
    int32_t dimension = 0;
    TLI_IDENTIFIER *field = TLIT_RecordNthField(record->type, record->next_field++, &dimension);
    if (field == nullptr) {
        context->records.count--;
        return;
    }
    add_item(context, record->frame, field);
}

static void describe(TLCG_CONTEXT *context, KOBD_FRAME *frame, TLI_IDENTIFIER *item)
{
    add_item(context, frame, item);
    while (context->records.count > 0)
        add_next_field(context);
}

static int32_t describe_static(void *user, const char *, TLI_IDENTIFIER *identifier)
{
    TLCG_CONTEXT *context = static_cast<TLCG_CONTEXT *>(user);
    if (TLI_IdentifierClass(identifier) == TLI_VARIABLE) {
        describe(context, context->statics_frame, identifier);
    }
    return 1;
}

static int32_t describe_local(void *user, const char *, TLI_IDENTIFIER *identifier)
{
    TLCG_CONTEXT *context = static_cast<TLCG_CONTEXT *>(user);
    const int32_t identifier_class = TLI_IdentifierClass(identifier);
    if (identifier_class == TLI_VARIABLE || identifier_class == TLI_ARGUMENT) {
        describe(context, context->function_frame, identifier);
    }
    return 1;
}

static void describe_statics(TLCG_CONTEXT *context)
{
    char name[FRAME_NAME_SIZE];
    TLI_SCOPE *scope = TLP_ModuleStatics(context->module);
    const int32_t size = scope == nullptr ? 0 : TLI_ScopeSize(scope);
    ST_Concat(name, sizeof name, TLP_ModuleName(context->module), ".$STATICS", nullptr);
    if (!add_frame(context, &context->statics_frame, name, FRAME_STATICS, size, 0)) return;
    if (scope != nullptr) TLI_AllIdentifiers(scope, describe_static, context);
}

static void describe_function(TLCG_CONTEXT *context, TLI_IDENTIFIER *function)
{
    TLI_SCOPE *scope = TLIV_FunctionScope(function);
    const bool is_tree = TLIV_FunctionClass(function) == CLASS_TREE;
    const int32_t size = scope == nullptr ? 0 : TLI_ScopeSize(scope);
    if (!add_frame(context, &context->function_frame, TLI_FullName(function),
                   is_tree ? FRAME_TREE : FRAME_FUNCTION, size,
                   TLIV_GetFunctionLineNumber(function))) {
        return;
    }
    if (scope != nullptr) TLI_AllIdentifiers(scope, describe_local, context);
}

static bool has_frame(TLI_IDENTIFIER *identifier)
{
    if (TLI_IdentifierClass(identifier) != TLI_FUNCTION) return false;
    const int32_t function_class = TLIV_FunctionClass(identifier);
    return function_class == CLASS_FUNCTION || function_class == CLASS_TREE;
}

/** Makes the frames of a scope's functions, each behind those of the functions inside it. */
static void describe_functions(TLCG_CONTEXT *context, TLI_SCOPE *scope)
{
    TLCG_VISIT visit;
    TLCG_PushScope(context, scope, has_frame);
    while (TLCG_Pop(context, &visit)) {
        if (visit.is_entered) {
            describe_function(context, visit.identifier);
            continue;
        }
        TLCG_Enter(context, visit.identifier);
        TLCG_PushScope(context, TLIV_FunctionScope(visit.identifier), has_frame);
    }
}

void TLCG_DebugFrames(TLCG_CONTEXT *context)
{
    describe_statics(context);
    describe_functions(context, TLP_ModuleGlobals(context->module));
    describe_functions(context, TLP_ModuleStatics(context->module));
}
