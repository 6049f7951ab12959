/*
 * Java text: the declarations of types, variables, constants and functions.
 */
#include "codegen/tlcj.h"
#include "host/host.h"

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "codegen/tlc.h"
#include "core/sh.h"
#include "expr/tle_java.h"
#include "names/tlic.h"
#include "names/tlit.h"
#include "names/tliv.h"
#include <ostrum/eep.h>
#include <ostrum/tlp.h>
#include <ostrum/tlt.h>

static bool is_frame(const TLI_SCOPE *scope)
{
    return scope != nullptr && TLI_ScopeType(scope) == TLI_FRAME_SCOPE;
}

static int32_t subclass_of(TLI_IDENTIFIER *identifier)
{
    bool is_type = TLI_IdentifierClass(identifier) == TLI_TYPE;
    return is_type ? TLIT_TypeSubclass(nullptr, identifier) : -1;
}

/* ---- Items ---- */

static TLI_IDENTIFIER *element_type(TLI_IDENTIFIER *item)
{
    TLI_IDENTIFIER *type = TLI_IdentifierType(item);
    return TLIT_IsArrayType(type) ? TLIT_ArrayOf(type) : type;
}

/* Opens an array of a number of elements, of which records are made one by one. */
static void write_new_array(TLC_STREAM *stream, TLI_IDENTIFIER *type, int32_t count)
{
    bool has_records = TLIT_IsRecordType(type) != 0;
    HOST_PutText(stream->file, has_records ? "toll_fill(new " : "new ");
    TLCJ_WriteType(stream, type);
    std::fprintf(stream->file, "[%d]", count);
    if (!has_records) return;
    HOST_PutText(stream->file, ", ");
    TLCJ_WriteType(stream, type);
    HOST_PutText(stream->file, "::new)");
}

static void write_new_record(TLC_STREAM *stream, TLI_IDENTIFIER *type)
{
    HOST_PutText(stream->file, "new ");
    TLCJ_WriteType(stream, type);
    HOST_PutText(stream->file, "()");
}

/* The value that an item starts with, as its type in Java has it. */
static void write_start(TLC_STREAM *stream, TLI_IDENTIFIER *item)
{
    TLI_IDENTIFIER *type = element_type(item);
    int32_t dimension = TLI_IdentifierDimension(item, nullptr);
    if (TLCJ_IsVector(item)) {
        HOST_PutText(stream->file, "toll_all(");
        HOST_PutText(stream->file, "new ");
        TLCJ_WriteType(stream, type);
        HOST_PutText(stream->file, "[0])");
    } else if (dimension > 0) {
        write_new_array(stream, type, dimension);
    } else if (TLIT_IsRecordType(type)) {
        write_new_record(stream, type);
    } else {
        HOST_PutText(stream->file, TLCJ_Kind(type) == TLCJ_OBJECT ? "null" : "0");
    }
}

/* Writes type and name of an item. */
static void write_item(TLC_STREAM *stream, TLI_IDENTIFIER *item)
{
    char name[TLCJ_NAME_CAPACITY];
    bool is_vector = TLCJ_IsVector(item);
    if (is_vector || TLCJ_IsReference(item)) {
        TLCJ_WriteReferenceType(stream, element_type(item));
    } else {
        TLCJ_WriteType(stream, TLI_IdentifierType(item));
    }
    bool is_array = !is_vector && TLI_IdentifierDimension(item, nullptr) > 0;
    HOST_PutChar(stream->file, ' ');
    HOST_PutText(stream->file, TLCJ_OwnName(stream, item, name));
    if (is_array) HOST_PutText(stream->file, "[]");
}

/* Numbers and references of the class start as 0 and null by themselves. */
static bool needs_start(TLI_IDENTIFIER *item)
{
    return TLCJ_IsVector(item) || TLI_IdentifierDimension(item, nullptr) > 0 ||
           TLIT_IsRecordType(TLI_IdentifierType(item));
}

static void write_member(TLC_STREAM *stream, const char *prefix, TLI_IDENTIFIER *item)
{
    HOST_PutText(stream->file, prefix);
    write_item(stream, item);
    if (needs_start(item)) {
        HOST_PutText(stream->file, " = ");
        write_start(stream, item);
    }
    HOST_PutText(stream->file, ";\n");
}

static void write_box(TLC_STREAM *stream, TLI_IDENTIFIER *variable)
{
    HOST_PutText(stream->file, "[] = new ");
    TLCJ_WriteType(stream, TLI_IdentifierType(variable));
    HOST_PutText(stream->file, "[1];\n");
}

static void write_local(TLC_STREAM *stream, TLI_IDENTIFIER *variable)
{
    HOST_PutText(stream->file, "  ");
    write_item(stream, variable);
    if (TLCJ_IsBoxed(stream, variable)) {
        write_box(stream, variable);
        return;
    }
    HOST_PutText(stream->file, " = ");
    write_start(stream, variable);
    HOST_PutText(stream->file, ";\n");
}

static void write_variable(TLC_STREAM *stream, TLI_IDENTIFIER *variable)
{
    if (!is_frame(TLI_IdentifierScope(variable))) {
        write_member(stream, "  public static ", variable);
    } else if (!TLCJ_State(stream)->has_frame) {
        write_local(stream, variable);
    }
}

/* ---- Constants ---- */

static void write_values(TLC_STREAM *stream, TLI_IDENTIFIER *type, TLE_TERM *links, bool is_passed);

/* Each field of a record has a link of its own, which holds the field's values. */
static void write_fields(TLC_STREAM *stream, TLI_IDENTIFIER *record, TLE_TERM *links)
{
    FILE *file = stream->file;
    int32_t dimension = 0;
    HOST_PutText(file, "new ");
    TLCJ_WriteType(stream, record);
    HOST_PutText(file, "(");
    for (int32_t i = 0; links != nullptr; links = links->right, ++i) {
        TLI_IDENTIFIER *field = TLIT_RecordNthField(record, i, &dimension);
        if (field == nullptr) break;
        TLI_IDENTIFIER *type = TLI_IdentifierType(field);
        if (i > 0) HOST_PutText(file, ", ");
        if (dimension > 0) {
            HOST_PutText(file, "new ");
            TLCJ_WriteType(stream, type);
            HOST_PutText(file, "[] { ");
        }
        write_values(stream, type, links->left, dimension <= 0);
        if (dimension > 0) HOST_PutText(file, " }");
    }
    HOST_PutText(file, ")");
}

/* A value of an array or of a constant by itself, which no conversion stands before. */
static bool is_plain_number(TLI_IDENTIFIER *type, const TLE_TERM *value)
{
    if (value->kind != TLT_TOKEN_NUMBER) return false;
    switch (TLCJ_Kind(type)) {
    case TLCJ_WORD:
        return !TLIT_IsEnumeration(type) || (value->value >= 0 && value->value <= UINT8_MAX);
    case TLCJ_CHAR:
        return value->value >= 0 && value->value <= UINT8_MAX;
    case TLCJ_SHORT:
        return value->value >= INT16_MIN && value->value <= INT16_MAX;
    default:
        return false;
    }
}

static void write_value(TLC_STREAM *stream, TLI_IDENTIFIER *type, TLE_TERM *value, bool is_passed)
{
    if (TLIT_IsRecordType(type)) {
        write_fields(stream, type, value);
    } else if (value != nullptr && !is_passed && is_plain_number(type, value)) {
        std::fprintf(stream->file, "%d", value->value);
    } else if (value == nullptr) {
        HOST_PutText(stream->file, TLCJ_Kind(type) == TLCJ_OBJECT ? "null" : "0");
    } else if (TLIT_IsArrayType(type)) {
        TLE_ExpressionCode(stream, value, TLE_MODE_EXTENT);
    } else {
        TLE_JavaValueAs(stream, type, value);
    }
}

static void write_values(TLC_STREAM *stream, TLI_IDENTIFIER *type, TLE_TERM *links, bool is_passed)
{
    for (TLE_TERM *link = links; link != nullptr; link = link->right) {
        write_value(stream, type, link->left, is_passed);
        if (link->right != nullptr) HOST_PutText(stream->file, ", ");
    }
}

/* A scalar of a function stands where it is used. */
static void write_constant(TLC_STREAM *stream, TLI_IDENTIFIER *constant)
{
    FILE *file = stream->file;
    char name[TLCJ_NAME_CAPACITY];
    TLE_TERM *values = reinterpret_cast<TLIC_CONSTANT *>(constant)->values;
    if (values == nullptr) return;
    bool is_local = is_frame(TLI_IdentifierScope(constant));
    bool is_array = TLI_IdentifierDimension(constant, nullptr) != -1;
    HOST_PutText(file, is_local ? "  final " : "  public static final ");
    TLCJ_WriteType(stream, TLI_IdentifierType(constant));
    std::fprintf(file, " %s%s = ", TLCJ_OwnName(stream, constant, name), is_array ? "[]" : "");
    if (is_array) HOST_PutText(file, "{ ");
    write_values(stream, TLI_IdentifierType(constant), values, false);
    HOST_PutText(file, is_array ? " };\n" : ";\n");
}

/* ---- Types ---- */

static void write_enumeration(TLC_STREAM *stream, TLI_IDENTIFIER *type)
{
    char name[TLCJ_NAME_CAPACITY];
    bool is_local = is_frame(TLI_IdentifierScope(type));
    const TLIT_ENUM_VALUE *value = TLIT_AsType(type)->values;
    for (; value != nullptr; value = value->next) {
        auto *identifier = const_cast<TLI_IDENTIFIER *>(&value->identifier);
        std::fprintf(stream->file, "  %sfinal int %s = %d;\n", is_local ? "" : "public static ",
                     TLCJ_OwnName(stream, identifier, name), value->number);
    }
}

/* A method has room for 255 words of arguments. */
static constexpr int32_t most_arguments = 250;

static int32_t count_fields(TLI_IDENTIFIER *type)
{
    int32_t count = 0;
    for (const TLIT_FIELD *link = TLIT_AsType(type)->fields; link != nullptr; link = link->next)
        ++count;
    return count;
}

static void write_field_arguments(TLC_STREAM *stream, TLI_IDENTIFIER *type)
{
    const char *before = "";
    for (const TLIT_FIELD *link = TLIT_AsType(type)->fields; link != nullptr; link = link->next) {
        if (link->field == nullptr) continue;
        HOST_PutText(stream->file, before);
        write_item(stream, link->field);
        before = ", ";
    }
}

/* Constants are made of all their fields at once. */
static void write_constructors(TLC_STREAM *stream, TLI_IDENTIFIER *type, const char *name)
{
    FILE *file = stream->file;
    int32_t count = count_fields(type);
    if (count == 0 || count > most_arguments) return;
    char field[TLCJ_NAME_CAPACITY];
    std::fprintf(file, "    public %s() { }\n    public %s(", name, name);
    write_field_arguments(stream, type);
    HOST_PutText(file, ") {\n");
    for (const TLIT_FIELD *link = TLIT_AsType(type)->fields; link != nullptr; link = link->next) {
        if (link->field == nullptr) continue;
        TLCJ_OwnName(stream, link->field, field);
        std::fprintf(file, "      this.%s = %s;\n", field, field);
    }
    HOST_PutText(file, "    }\n");
}

static void write_record(TLC_STREAM *stream, TLI_IDENTIFIER *type)
{
    char name[TLCJ_NAME_CAPACITY];
    std::fprintf(stream->file, "  public static final class %s {\n",
                 TLCJ_OwnName(stream, type, name));
    for (const TLIT_FIELD *link = TLIT_AsType(type)->fields; link != nullptr; link = link->next) {
        if (link->field != nullptr) write_member(stream, "    public ", link->field);
    }
    write_constructors(stream, type, name);
    HOST_PutText(stream->file, "  }\n");
}

/* The narrow types come back as whole words. */
static void write_result(TLC_STREAM *stream, TLI_IDENTIFIER *function)
{
    TLI_IDENTIFIER *type = TLI_IdentifierType(function);
    TLCJ_KIND kind = TLCJ_Kind(type);
    bool is_narrow = kind == TLCJ_CHAR || kind == TLCJ_SHORT;
    TLCJ_WriteType(stream, is_narrow ? TLIT_IntType : type);
}

static void write_function_type(TLC_STREAM *stream, TLI_IDENTIFIER *type)
{
    char name[TLCJ_NAME_CAPACITY];
    TLI_IDENTIFIER *prototype = TLIT_FunctionTypePrototype(type);
    std::fprintf(stream->file, "  public interface %s {\n    ", TLCJ_OwnName(stream, type, name));
    write_result(stream, prototype);
    HOST_PutText(stream->file, " call(");
    TLCJ_WriteArguments(stream, prototype, "", ", ");
    HOST_PutText(stream->file, ");\n  }\n");
}

static void write_classes(TLC_STREAM *stream, const TLI_LIST &list)
{
    for (size_t at = list.count; at > 0; --at) {
        TLI_IDENTIFIER *type = list.names[at - 1];
        int32_t subclass = subclass_of(type);
        if (subclass == TLIT_SUBCLASS_RECORD) write_record(stream, type);
        if (subclass == TLIT_SUBCLASS_FUNCTION) write_function_type(stream, type);
    }
}

static bool has_types(const TLI_SCOPE *scope)
{
    return scope != nullptr && (scope->classes & 1U << TLI_TYPE) != 0;
}

void TLCJ_WriteLocalTypes(TLC_STREAM *stream, TLI_SCOPE *scope)
{
    if (!has_types(scope)) return;
    TLI_LIST list = TLI_ListIdentifiers(scope);
    write_classes(stream, list);
    SH_Free(list.names);
}

/* ---- Scopes ---- */

static bool names_item(const TLCG_SET &late, const TLE_TERM *links)
{
    for (; links != nullptr; links = links->right) {
        const TLE_TERM *value = links->left;
        if (value == nullptr) continue;
        if (value->kind == TLT_TOKEN_LINK && names_item(late, value)) return true;
        if (value->kind == TLE_ADDRESS && TLCJ_IsItem(value->identifier)) return true;
        if (value->kind == TLT_TOKEN_IDENTIFIER && TLCG_IsInSet(late, value->identifier))
            return true;
    }
    return false;
}

/* What names an item of data, itself or through another table, is written behind the items. */
static bool is_late(TLC_STREAM *stream, TLI_IDENTIFIER *constant)
{
    if (is_frame(TLI_IdentifierScope(constant))) return false;
    TLCG_SET *late = &TLCJ_State(stream)->late;
    if (!names_item(*late, reinterpret_cast<TLIC_CONSTANT *>(constant)->values)) return false;
    TLCG_AddToSet(late, constant);
    return true;
}

static void write_constants(TLC_STREAM *stream, const TLI_LIST &list)
{
    for (size_t at = list.count; at > 0; --at) {
        TLI_IDENTIFIER *identifier = list.names[at - 1];
        if (subclass_of(identifier) == TLIT_SUBCLASS_ENUMERATION) {
            write_enumeration(stream, identifier);
        } else if (TLI_IdentifierClass(identifier) == TLI_CONSTANT) {
            if (!is_late(stream, identifier)) write_constant(stream, identifier);
        }
    }
}

void TLCJ_WriteLateConstants(TLC_STREAM *stream, TLI_SCOPE *scope)
{
    const TLCG_SET &late = TLCJ_State(stream)->late;
    if (late.count == 0) return;
    TLI_LIST list = TLI_ListIdentifiers(scope);
    for (size_t at = list.count; at > 0; --at) {
        if (TLCG_IsInSet(late, list.names[at - 1])) write_constant(stream, list.names[at - 1]);
    }
    SH_Free(list.names);
}

void TLCJ_WriteScopeIdentifiers(TLC_STREAM *stream, TLI_SCOPE *scope)
{
    TLI_LIST list = TLI_ListIdentifiers(scope);
    /* A table may lead to one that was declared before it; the functions inside use them too. */
    if (!is_frame(scope) || !TLCJ_State(stream)->has_frame) write_constants(stream, list);
    if (!is_frame(scope)) write_classes(stream, list);
    for (size_t at = 0; at < list.count; ++at) {
        int32_t kind = TLI_IdentifierClass(list.names[at]);
        if (kind == TLI_VARIABLE || kind == TLI_NON_VOLATILE)
            write_variable(stream, list.names[at]);
    }
    SH_Free(list.names);
    HOST_PutText(stream->file, "\n");
}

/* ---- Functions ---- */

/* An argument that others write through a reference is copied into a variable that they can reach. */
static void write_argument(TLC_STREAM *stream, TLI_IDENTIFIER *argument)
{
    char name[TLCJ_NAME_CAPACITY];
    if (!TLCJ_IsBoxed(stream, argument)) {
        write_item(stream, argument);
        return;
    }
    TLCJ_WriteType(stream, TLI_IdentifierType(argument));
    std::fprintf(stream->file, " toll_%s", TLCJ_OwnName(stream, argument, name));
}

void TLCJ_WriteArguments(TLC_STREAM *stream, TLI_IDENTIFIER *function, const char *first,
                         const char *other)
{
    int32_t index = 0;
    TLI_IDENTIFIER *argument;
    while ((argument = TLIV_GetFunctionArgument(function, index)) != nullptr) {
        HOST_PutText(stream->file, index++ == 0 ? first : other);
        write_argument(stream, argument);
    }
    if (!TLIV_ExtraArgumentsAllowed(function)) return;
    std::fprintf(stream->file, "%sObject... toll_more", index == 0 ? first : other);
}

void TLCJ_WriteHead(TLC_STREAM *stream, TLI_IDENTIFIER *function)
{
    char name[TLCJ_NAME_CAPACITY];
    bool is_private = TLIV_FunctionQualifiers(function) == TLIV_PRIVATE;
    std::fprintf(stream->file, "\n%sstatic ", is_private ? "" : "public ");
    write_result(stream, function);
    std::fprintf(stream->file, " %s(", TLCJ_OwnName(stream, function, name));
    TLCJ_WriteArguments(stream, function, "\n  ", ",\n  ");
    HOST_PutText(stream->file, "\n)\n{\n");
}

void TLCJ_WriteArgumentCopies(TLC_STREAM *stream, TLI_IDENTIFIER *function)
{
    FILE *file = stream->file;
    char name[TLCJ_NAME_CAPACITY];
    bool has_frame = TLCJ_State(stream)->has_frame;
    TLI_IDENTIFIER *argument;
    for (int32_t i = 0; (argument = TLIV_GetFunctionArgument(function, i)) != nullptr; ++i) {
        TLCJ_OwnName(stream, argument, name);
        if (has_frame) {
            std::fprintf(file, "  toll_frame.%s = %s;\n", name, name);
        } else if (TLCJ_IsBoxed(stream, argument)) {
            HOST_PutText(file, "  ");
            TLCJ_WriteType(stream, TLI_IdentifierType(argument));
            std::fprintf(file, " %s[] = { toll_%s };\n", name, name);
        }
    }
}

static void write_frame_constants(TLC_STREAM *stream, const TLI_LIST &list)
{
    for (size_t at = list.count; at > 0; --at) {
        TLI_IDENTIFIER *identifier = list.names[at - 1];
        if (TLI_IdentifierClass(identifier) != TLI_CONSTANT) continue;
        HOST_PutText(stream->file, "  ");
        write_constant(stream, identifier);
    }
}

void TLCJ_WriteFrame(TLC_STREAM *stream, TLI_IDENTIFIER *function)
{
    char name[TLCJ_NAME_CAPACITY];
    TLI_LIST list = TLI_ListIdentifiers(TLIV_FunctionScope(function));
    TLCJ_OwnName(stream, function, name);
    std::fprintf(stream->file, "\n  static final class toll_frame_%s {\n", name);
    write_frame_constants(stream, list);
    for (size_t at = 0; at < list.count; ++at) {
        int32_t kind = TLI_IdentifierClass(list.names[at]);
        bool is_kept = kind == TLI_VARIABLE || kind == TLI_ARGUMENT;
        if (!is_kept) continue;
        HOST_PutText(stream->file, "    ");
        write_item(stream, list.names[at]);
        if (kind == TLI_VARIABLE && needs_start(list.names[at])) {
            HOST_PutText(stream->file, " = ");
            write_start(stream, list.names[at]);
        }
        HOST_PutText(stream->file, ";\n");
    }
    std::fprintf(stream->file, "  }\n  static toll_frame_%s toll_top_%s;\n", name, name);
    SH_Free(list.names);
}

/* ---- Syscalls and what else has its body outside ---- */

static bool has_body_elsewhere(TLI_IDENTIFIER *function)
{
    if (TLIV_GetFunctionBlock(function) != nullptr) return false;
    if (TLIV_FunctionQualifiers(function) == TLIV_PROTOTYPE) return false;
    int32_t kind = TLIV_FunctionClass(function);
    return kind == TLP_SECTION_FUNCTION || kind == TLP_SECTION_TREE || kind == TLP_SECTION_SYSCALL;
}

/* What makes the result out of the object that the program gives. */
static void open_result(TLC_STREAM *stream, TLI_IDENTIFIER *type)
{
    FILE *file = stream->file;
    if (type == TLIT_VoidType) return;
    HOST_PutText(file, "return ");
    switch (TLCJ_Kind(type)) {
    case TLCJ_FLOAT:
        HOST_PutText(file, "toll_float(");
        break;
    case TLCJ_OBJECT:
        HOST_PutText(file, "(");
        TLCJ_WriteType(stream, type);
        HOST_PutText(file, ") (");
        break;
    default:
        HOST_PutText(file, "toll_word(");
        break;
    }
}

static void write_passed(TLC_STREAM *stream, TLI_IDENTIFIER *function)
{
    char name[TLCJ_NAME_CAPACITY];
    TLI_IDENTIFIER *argument;
    for (int32_t i = 0; (argument = TLIV_GetFunctionArgument(function, i)) != nullptr; ++i) {
        bool is_object = TLCJ_IsVector(argument) || TLCJ_IsReference(argument);
        TLCJ_KIND kind = TLCJ_Kind(TLI_IdentifierType(argument));
        bool is_narrow = !is_object && (kind == TLCJ_CHAR || kind == TLCJ_SHORT);
        std::fprintf(stream->file, ", %s%s", is_narrow ? "(int) " : "",
                     TLCJ_OwnName(stream, argument, name));
    }
}

static void write_external(TLC_STREAM *stream, TLI_IDENTIFIER *function)
{
    FILE *file = stream->file;
    const char *name = TLI_FullName(function);
    bool is_syscall = TLIV_FunctionClass(function) == TLP_SECTION_SYSCALL;
    int32_t number = is_syscall ? EEP_Syscall(TLP_SyscallData(stream->module), name) : 0;
    TLI_IDENTIFIER *type = TLI_IdentifierType(function);
    TLCJ_WriteHead(stream, function);
    HOST_PutText(file, "  ");
    open_result(stream, type);
    bool has_extra = TLIV_ExtraArgumentsAllowed(function) != 0;
    std::fprintf(file, "toll_syscall(%d, \"%s\", %s", number, TLI_FullName(function),
                 has_extra ? "toll_more" : "null");
    write_passed(stream, function);
    HOST_PutText(file, type == TLIT_VoidType ? ");\n}\n" : "));\n}\n");
}

void TLCJ_WriteExternals(TLC_STREAM *stream, TLI_SCOPE *scope)
{
    TLI_LIST list = TLI_ListIdentifiers(scope);
    for (size_t at = list.count; at > 0; --at) {
        TLI_IDENTIFIER *identifier = list.names[at - 1];
        bool is_function = TLI_IdentifierClass(identifier) == TLI_FUNCTION;
        if (is_function && has_body_elsewhere(identifier)) write_external(stream, identifier);
    }
    SH_Free(list.names);
}
