/*
 * C text: names, and the declarations of types, variables, constants and functions.
 */
#include "codegen/tlcc.h"
#include "host/host.h"

#include <cstdio>
#include <cstring>

#include "codegen/tlcg.h"
#include "core/sh.h"
#include "expr/tle.h"
#include "names/tlic.h"
#include "names/tlit.h"
#include "names/tliv.h"
#include <ostrum/eep.h>
#include <ostrum/st.h>
#include <ostrum/tlc.h>
#include <ostrum/tlp.h>
#include <ostrum/tlt.h>

void TLCC_Initialise(void)
{
    TLC_Initialise();
    TLI_Initialise();
    TLIT_Initialise();
}

/* ---- Names ---- */

/* Words that C or toll.h keeps for itself, in byte order. */
static constexpr const char *reserved_words[] = {
    "abs",      "asm",    "auto",   "break",    "case",   "char",     "const",    "continue",
    "default",  "do",     "double", "else",     "enum",   "extern",   "float",    "for",
    "goto",     "if",     "inline", "int",      "long",   "main",     "max",      "min",
    "register", "return", "short",  "restrict", "signed", "sizeof",   "static",   "struct",
    "switch",   "typeof", "union",  "typedef",  "void",   "unsigned", "volatile", "while",
};

static bool is_reserved(const char *name)
{
    if (name[0] < 'a' || name[0] > 'w') return std::strcmp(name, "NULL") == 0;
    if (std::strncmp(name, "toll", 4) == 0) return true;
    size_t length = std::strlen(name);
    if (length < 2) return false;
    if (length > 2 && name[length - 2] == '_' && name[length - 1] == 't') return true;
    for (const char *word : reserved_words) {
        if (word[0] == name[0] && word[1] == name[1] && std::strcmp(word, name) == 0) return true;
    }
    return false;
}

/* Other modules see it, so that its module's name tells it from theirs. */
static bool is_seen_outside(TLI_IDENTIFIER *identifier)
{
    TLI_SCOPE *scope = TLI_IdentifierScope(identifier);
    if (scope == nullptr || TLI_ScopeType(scope) != TLI_STATIC_SCOPE) return false;
    switch (TLI_IdentifierClass(identifier)) {
    case TLI_FUNCTION:
        return TLIV_FunctionQualifiers(identifier) != TLIV_PRIVATE;
    case TLI_ENUM_VALUE:
        return true;
    case TLI_CONSTANT:
        return std::strcmp(scope->name, "GLOBALS") == 0;
    default:
        return false;
    }
}

static bool is_qualified(TLI_IDENTIFIER *identifier)
{
    return is_seen_outside(identifier) && TLI_FindPragma(identifier, "NOTAG") == nullptr;
}

/* A function inside another is known by both names, since C has all functions side by side. */
static TLI_IDENTIFIER *outer_function(TLI_IDENTIFIER *identifier)
{
    if (TLI_IdentifierClass(identifier) != TLI_FUNCTION) return nullptr;
    TLI_SCOPE *scope = TLI_IdentifierScope(identifier);
    return scope == nullptr ? nullptr : scope->identifier;
}

static bool is_name_character(char character)
{
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') ||
           (character >= '0' && character <= '9') || character == '_';
}

char *TLCC_Characters(char *text)
{
    for (char *at = text; *at != '\0'; ++at) {
        if (!is_name_character(*at)) *at = '_';
    }
    return text;
}

static bool is_name(const char *text)
{
    while (is_name_character(*text))
        ++text;
    return *text == '\0';
}

bool TLCC_IsItem(TLI_IDENTIFIER *identifier)
{
    if (TLI_IdentifierClass(identifier) != TLI_FUNCTION) return false;
    if (TLIV_FunctionQualifiers(identifier) == TLIV_PROTOTYPE) return false;
    int32_t function_class = TLIV_FunctionClass(identifier);
    return function_class != TLP_SECTION_FUNCTION && function_class != TLP_SECTION_TREE &&
           function_class != TLP_SECTION_SYSCALL;
}

/* The data section that an item is named in; null for what is no such item. */
static TLI_IDENTIFIER *section_of(TLI_IDENTIFIER *identifier)
{
    if (TLI_IdentifierClass(identifier) != TLI_NODE) return nullptr;
    const TLI_SCOPE *scope = TLI_IdentifierScope(identifier);
    TLI_IDENTIFIER *section = scope == nullptr ? nullptr : scope->identifier;
    return section != nullptr && TLCC_IsItem(section) ? section : nullptr;
}

/* An item of a section is known by both names, as code names it. */
static const char *nested_name(TLI_IDENTIFIER *section, TLI_IDENTIFIER *item, char *buffer)
{
    char name[TLCC_NAME_CAPACITY];
    ST_Concat(name, TLCC_NAME_CAPACITY, TLI_IdentifierName(section), ".", TLI_IdentifierName(item),
              nullptr);
    return TLCC_ItemName(TLI_IdentifierType(item), name, buffer);
}

static const char *plain_name(const char *name, char *buffer)
{
    const bool has_mark = is_reserved(name);
    if (!has_mark && is_name(name)) return name;
    ST_Concat(buffer, TLCC_NAME_CAPACITY, name, has_mark ? "_" : "", nullptr);
    return TLCC_Characters(buffer);
}

const char *TLCC_Name(TLI_IDENTIFIER *identifier, char *buffer)
{
    const char *name = TLI_IdentifierName(identifier);
    const int32_t kind = TLI_IdentifierClass(identifier);
    if (kind == TLI_VARIABLE || kind == TLI_ARGUMENT) return plain_name(name, buffer);
    if (TLCC_IsItem(identifier)) {
        return TLCC_ItemName(TLI_IdentifierType(identifier), name, buffer);
    }
    if (TLI_IDENTIFIER *section = section_of(identifier); section != nullptr) {
        return nested_name(section, identifier, buffer);
    }
    TLI_DOMAIN *domain = TLI_IdentifierDomain(identifier);
    TLI_IDENTIFIER *outer = outer_function(identifier);
    const char *before = outer != nullptr ? TLI_IdentifierName(outer) : "";
    if (domain != nullptr && is_qualified(identifier)) before = TLI_DomainName(domain);
    if (before[0] == '\0') return plain_name(name, buffer);
    ST_Concat(buffer, TLCC_NAME_CAPACITY, before, "_", name, nullptr);
    return TLCC_Characters(buffer);
}

const char *TLCC_ItemName(TLI_IDENTIFIER *type, const char *name, char *buffer)
{
    ST_Concat(buffer, TLCC_NAME_CAPACITY, TLI_IdentifierName(type), "_", name, nullptr);
    return TLCC_Characters(buffer);
}

const char *TLCC_TypeName(TLI_IDENTIFIER *type)
{
    if (TLIT_IsArrayType(type)) type = TLIT_ArrayOf(type);
    return type == nullptr ? "INT" : TLI_IdentifierName(type);
}

const char *TLCC_ResultName(TLI_IDENTIFIER *function)
{
    TLI_IDENTIFIER *type = TLI_IdentifierType(function);
    bool is_narrow = type == TLIT_CharType || type == TLIT_ShortType;
    return is_narrow ? "INT" : TLCC_TypeName(type);
}

/* ---- Functions ---- */

static bool is_reference(TLI_IDENTIFIER *argument)
{
    return TLIV_ArgumentPassType(argument) != TLIV_BY_VALUE;
}

/* Writes the arguments, each behind the text that opens it. */
static void write_arguments(TLC_STREAM *stream, TLI_IDENTIFIER *function, const char *first,
                            const char *other)
{
    FILE *file = TLC_CFile(stream);
    char name[TLCC_NAME_CAPACITY];
    int32_t index = 0;
    TLI_IDENTIFIER *argument;
    while ((argument = TLIV_GetFunctionArgument(function, index)) != nullptr) {
        HOST_PutText(file, index == 0 ? first : other);
        HOST_PutText(file, TLCC_TypeName(TLI_IdentifierType(argument)));
        HOST_PutText(file, is_reference(argument) ? " *" : " ");
        HOST_PutText(file, TLCC_Name(argument, name));
        ++index;
    }
}

void TLCC_WritePrototype(TLC_STREAM *stream, TLI_IDENTIFIER *function)
{
    HOST_PutText(TLC_CFile(stream), "(");
    write_arguments(stream, function, "", ", ");
    HOST_PutText(TLC_CFile(stream), ")");
}

void TLCC_WriteHead(TLC_STREAM *stream, TLI_IDENTIFIER *function)
{
    FILE *file = TLC_CFile(stream);
    char name[TLCC_NAME_CAPACITY];
    bool is_private = TLIV_FunctionQualifiers(function) == TLIV_PRIVATE;
    std::fprintf(file, "\n%s%s %s(", is_private ? "static " : "", TLCC_ResultName(function),
                 TLCC_Name(function, name));
    write_arguments(stream, function, "\n  ", ",\n  ");
    HOST_PutText(file, "\n)\n{\n");
}

/* ---- Syscalls and what else has its body elsewhere ---- */

static void write_types(TLC_STREAM *stream, TLI_IDENTIFIER *function)
{
    FILE *file = TLC_CFile(stream);
    int32_t index = 0;
    TLI_IDENTIFIER *argument;
    while ((argument = TLIV_GetFunctionArgument(function, index)) != nullptr) {
        std::fprintf(file, "%s%s%s", index == 0 ? "" : ", ",
                     TLCC_TypeName(TLI_IdentifierType(argument)),
                     is_reference(argument) ? " *" : "");
        ++index;
    }
    if (index == 0) HOST_PutText(file, "void");
}

/* The function that the program has put under a syscall's number, in the type that it must have. */
static void write_served(TLC_STREAM *stream, TLI_IDENTIFIER *function, bool has_extra)
{
    FILE *file = TLC_CFile(stream);
    const char *full_name = TLI_FullName(function);
    int32_t number = EEP_Syscall(TLP_SyscallData(TLC_Module(stream)), full_name);
    bool has_arguments = TLIV_GetFunctionArgument(function, 0) != nullptr;
    std::fprintf(file, "((%s (*)(", TLCC_ResultName(function));
    if (has_extra && !has_arguments) {
        HOST_PutText(file, "INT");
    } else {
        write_types(stream, function);
    }
    std::fprintf(file, "%s)) toll_syscall(%d, \"%s\"))", has_extra ? ", ..." : "", number,
                 full_name);
}

/* A call with arguments of any number has no function in C that could pass them on. */
static void write_open_syscall(TLC_STREAM *stream, TLI_IDENTIFIER *function)
{
    char name[TLCC_NAME_CAPACITY];
    std::fprintf(TLC_CFile(stream), "#define %s(...) ", TLCC_Name(function, name));
    write_served(stream, function, true);
    HOST_PutText(TLC_CFile(stream), "(__VA_ARGS__)\n");
}

static void write_names(TLC_STREAM *stream, TLI_IDENTIFIER *function)
{
    char name[TLCC_NAME_CAPACITY];
    int32_t index = 0;
    TLI_IDENTIFIER *argument;
    while ((argument = TLIV_GetFunctionArgument(function, index)) != nullptr) {
        std::fprintf(TLC_CFile(stream), "%s%s", index == 0 ? "" : ", ", TLCC_Name(argument, name));
        ++index;
    }
}

static void write_syscall(TLC_STREAM *stream, TLI_IDENTIFIER *function)
{
    if (TLIV_ExtraArgumentsAllowed(function)) {
        write_open_syscall(stream, function);
        return;
    }
    FILE *file = TLC_CFile(stream);
    char name[TLCC_NAME_CAPACITY];
    bool has_result = TLI_IdentifierType(function) != TLIT_VoidType;
    std::fprintf(file, "static inline %s %s", TLCC_ResultName(function), TLCC_Name(function, name));
    bool has_arguments = TLIV_GetFunctionArgument(function, 0) != nullptr;
    if (has_arguments) {
        TLCC_WritePrototype(stream, function);
    } else {
        HOST_PutText(file, "(void)");
    }
    std::fprintf(file, "\n{\n  %s", has_result ? "return " : "");
    write_served(stream, function, false);
    HOST_PutText(file, "(");
    write_names(stream, function);
    HOST_PutText(file, ");\n}\n");
}

static void write_external(TLC_STREAM *stream, TLI_IDENTIFIER *function)
{
    char name[TLCC_NAME_CAPACITY];
    std::fprintf(TLC_CFile(stream), "extern %s %s", TLCC_ResultName(function),
                 TLCC_Name(function, name));
    TLCC_WritePrototype(stream, function);
    HOST_PutText(TLC_CFile(stream), ";\n");
}

static bool is_data_item(TLI_IDENTIFIER *identifier)
{
    return identifier != nullptr && (TLCC_IsItem(identifier) || section_of(identifier) != nullptr);
}

/* What a data section describes are items of data, which stand outside of the text. */
static void write_data_item(TLC_STREAM *stream, TLI_IDENTIFIER *item)
{
    char name[TLCC_NAME_CAPACITY];
    std::fprintf(TLC_CFile(stream), "extern const struct toll_item %s[];\n", TLCC_Name(item, name));
}

static void write_item_section(TLC_STREAM *stream, TLI_IDENTIFIER *section)
{
    write_data_item(stream, section);
    TLI_LIST list = TLI_ListIdentifiers(TLIV_FunctionScope(section));
    for (size_t at = list.count; at > 0; --at) {
        if (section_of(list.names[at - 1]) != nullptr) write_data_item(stream, list.names[at - 1]);
    }
    SH_Free(list.names);
}

static bool has_body_elsewhere(TLI_IDENTIFIER *function)
{
    if (TLIV_GetFunctionBlock(function) != nullptr) return false;
    return TLIV_FunctionClass(function) == TLP_SECTION_FUNCTION ||
           TLIV_FunctionClass(function) == TLP_SECTION_TREE;
}

void TLCC_WriteExternals(TLC_STREAM *stream, TLI_SCOPE *scope)
{
    TLI_LIST list = TLI_ListIdentifiers(scope);
    for (size_t at = list.count; at > 0; --at) {
        TLI_IDENTIFIER *identifier = list.names[at - 1];
        if (TLI_IdentifierClass(identifier) != TLI_FUNCTION) continue;
        int32_t qualifiers = TLIV_FunctionQualifiers(identifier);
        if (qualifiers == TLIV_PROTOTYPE) continue;
        if (TLCC_IsItem(identifier)) {
            write_item_section(stream, identifier);
        } else if (TLIV_FunctionClass(identifier) == TLP_SECTION_SYSCALL) {
            write_syscall(stream, identifier);
        } else if (has_body_elsewhere(identifier)) {
            write_external(stream, identifier);
        }
    }
    SH_Free(list.names);
}

/* ---- Types ---- */

static int32_t subclass_of(TLI_IDENTIFIER *identifier)
{
    bool is_type = TLI_IdentifierClass(identifier) == TLI_TYPE;
    return is_type ? TLIT_TypeSubclass(nullptr, identifier) : -1;
}

static void write_enumeration(TLC_STREAM *stream, TLI_IDENTIFIER *type)
{
    FILE *file = TLC_CFile(stream);
    char name[TLCC_NAME_CAPACITY];
    const TLIT_ENUM_VALUE *value = TLIT_AsType(type)->values;
    HOST_PutText(file, "typedef enum ");
    /* C has no enumeration without values. */
    if (value == nullptr) std::fprintf(file, "\n{\n    toll_%s", TLI_IdentifierName(type));
    for (const char *before = "{"; value != nullptr; value = value->next, before = ",") {
        auto *identifier = const_cast<TLI_IDENTIFIER *>(&value->identifier);
        std::fprintf(file, "%s\n    %s", before, TLCC_Name(identifier, name));
    }
    std::fprintf(file, " } %s;\n", TLI_IdentifierName(type));
}

static void write_forward(TLC_STREAM *stream, TLI_IDENTIFIER *type)
{
    const char *name = TLI_IdentifierName(type);
    std::fprintf(TLC_CFile(stream), "typedef struct %s %s;\n", name, name);
}

static void write_pointer(TLC_STREAM *stream, TLI_IDENTIFIER *type)
{
    std::fprintf(TLC_CFile(stream), "typedef %s *%s;\n", TLI_IdentifierName(TLIT_PointerAt(type)),
                 TLI_IdentifierName(type));
}

static void write_function_type(TLC_STREAM *stream, TLI_IDENTIFIER *type)
{
    TLI_IDENTIFIER *prototype = TLIT_FunctionTypePrototype(type);
    std::fprintf(TLC_CFile(stream), "typedef %s (*%s)", TLCC_ResultName(prototype),
                 TLI_IdentifierName(type));
    TLCC_WritePrototype(stream, prototype);
    HOST_PutText(TLC_CFile(stream), ";\n");
}

/* An item of unknown length stands for a pointer to its first element. */
static void write_item(TLC_STREAM *stream, TLI_IDENTIFIER *item)
{
    char name[TLCC_NAME_CAPACITY];
    TLI_IDENTIFIER *type = TLI_IdentifierType(item);
    int32_t dimension = TLI_IdentifierDimension(item, nullptr);
    bool is_pair = dimension == 0 || TLIT_IsArrayType(type);
    HOST_PutText(TLC_CFile(stream), TLCC_TypeName(type));
    HOST_PutText(TLC_CFile(stream), is_pair ? " *" : " ");
    HOST_PutText(TLC_CFile(stream), TLCC_Name(item, name));
    if (dimension > 0) std::fprintf(TLC_CFile(stream), "[%d]", dimension);
}

static void write_record(TLC_STREAM *stream, TLI_IDENTIFIER *type)
{
    FILE *file = TLC_CFile(stream);
    std::fprintf(file, "struct %s\n{\n", TLI_IdentifierName(type));
    const TLIT_FIELD *link = TLIT_AsType(type)->fields;
    if (link == nullptr) HOST_PutText(file, "  INT toll_nothing;\n");
    for (; link != nullptr; link = link->next) {
        if (link->field == nullptr) continue;
        HOST_PutText(file, "  ");
        write_item(stream, link->field);
        HOST_PutText(file, ";\n");
    }
    HOST_PutText(file, "};\n");
}

/* Records of one scope whose declaration is under way or done. */
struct RECORD_ORDER {
    TLC_STREAM *stream;
    TLI_SCOPE *scope;
    TLCG_SET written;
};

/* A record inside another stands before it. The nesting is that of the source's declarations. */
static void write_record_in_order(RECORD_ORDER *order, TLI_IDENTIFIER *type, int32_t depth)
{
    static constexpr int32_t deepest = 500;
    if (depth > deepest || !TLCG_AddToSet(&order->written, type)) return;
    for (const TLIT_FIELD *link = TLIT_AsType(type)->fields; link != nullptr; link = link->next) {
        TLI_IDENTIFIER *inner = link->field == nullptr ? nullptr : TLI_IdentifierType(link->field);
        if (!TLIT_IsRecordType(inner) || TLI_IdentifierScope(inner) != order->scope) continue;
        write_record_in_order(order, inner, depth + 1);
    }
    write_record(order->stream, type);
}

using WRITER = void (*)(TLC_STREAM *stream, TLI_IDENTIFIER *type);

static void write_kind(TLC_STREAM *stream, const TLI_LIST &list, int32_t subclass, WRITER write)
{
    for (size_t at = list.count; at > 0; --at) {
        if (subclass_of(list.names[at - 1]) == subclass) write(stream, list.names[at - 1]);
    }
}

static void write_scope_types(TLC_STREAM *stream, TLI_SCOPE *scope, const TLI_LIST &list)
{
    write_kind(stream, list, TLIT_SUBCLASS_ENUMERATION, TLCC_WriteIdentifier);
    write_kind(stream, list, TLIT_SUBCLASS_RECORD, write_forward);
    write_kind(stream, list, TLIT_SUBCLASS_POINTER, write_pointer);
    write_kind(stream, list, TLIT_SUBCLASS_FUNCTION, write_function_type);
    RECORD_ORDER order = { .stream = stream, .scope = scope, .written = {} };
    for (size_t at = list.count; at > 0; --at) {
        TLI_IDENTIFIER *type = list.names[at - 1];
        if (subclass_of(type) == TLIT_SUBCLASS_RECORD) write_record_in_order(&order, type, 0);
    }
    TLCG_DropSet(&order.written);
}

/* ---- Variables ---- */

static bool is_module_level(TLI_IDENTIFIER *identifier)
{
    TLI_SCOPE *scope = TLI_IdentifierScope(identifier);
    return scope != nullptr && TLI_ScopeType(scope) == TLI_STATIC_SCOPE;
}

/* What a program has not set yet is 0. */
static void write_variable(TLC_STREAM *stream, TLI_IDENTIFIER *variable)
{
    FILE *file = TLC_CFile(stream);
    bool is_static = is_module_level(variable);
    HOST_PutText(file, is_static ? "static " : "  ");
    write_item(stream, variable);
    bool is_composite = TLI_IdentifierDimension(variable, nullptr) > 0 ||
                        TLIT_IsRecordType(TLI_IdentifierType(variable));
    if (!is_static) HOST_PutText(file, is_composite ? " = { 0 }" : " = 0");
    HOST_PutText(file, ";\n");
}

static void write_non_volatile(TLC_STREAM *stream, TLI_IDENTIFIER *variable)
{
    HOST_PutText(TLC_CFile(stream), "TOLL_NONVOLATILE ");
    write_item(stream, variable);
    HOST_PutText(TLC_CFile(stream), ";\n");
}

/* ---- Data items ---- */

void TLCC_DeclareItem(TLC_STREAM *stream, TLE_TERM *literal)
{
    FILE *file = TLC_CFile(stream);
    char name[TLCC_NAME_CAPACITY];
    TLI_IDENTIFIER *type = literal->type;
    TLCC_ItemName(type, TLE_TermValue(literal), name);
    switch (TLIT_TypeSubclass(nullptr, type)) {
    case TLIT_SUBCLASS_DATA:
        std::fprintf(file, "extern const struct toll_item %s[];\n", name);
        break;
    case TLIT_SUBCLASS_POINTER:
        std::fprintf(file, "extern %s %s[];\n", TLI_IdentifierName(TLIT_PointerAt(type)), name);
        break;
    default:
        std::fprintf(file, "extern const %s %s;\n", TLCC_TypeName(type), name);
    }
}

/* ---- Constants ---- */

/* The items that a value names stand outside: they are declared before it. */
static void declare_items(TLC_STREAM *stream, const TLE_TERM *links)
{
    for (; links != nullptr; links = links->right) {
        TLE_TERM *value = links->left;
        if (value == nullptr) continue;
        if (value->kind == TLT_TOKEN_LINK) {
            declare_items(stream, value);
        } else if (value->kind == TLT_TOKEN_DATA_LITERAL) {
            TLCC_DeclareItem(stream, value);
        } else if (value->kind == TLE_ADDRESS && is_data_item(value->identifier)) {
            write_data_item(stream, value->identifier);
        }
    }
}

static void write_values(TLC_STREAM *stream, TLI_IDENTIFIER *type, TLE_TERM *links, bool is_array);

/* Each field of a record has a link of its own, which holds the field's values. */
static void write_fields(TLC_STREAM *stream, TLI_IDENTIFIER *record, TLE_TERM *links)
{
    FILE *file = TLC_CFile(stream);
    int32_t dimension = 0;
    TLI_IDENTIFIER *field;
    HOST_PutText(file, "{ ");
    for (int32_t i = 0; links != nullptr; links = links->right, ++i) {
        field = TLIT_RecordNthField(record, i, &dimension);
        if (field == nullptr) break;
        if (i > 0) HOST_PutText(file, ", ");
        write_values(stream, TLI_IdentifierType(field), links->left, dimension > 0);
    }
    HOST_PutText(file, " }");
}

static void write_value(TLC_STREAM *stream, TLI_IDENTIFIER *type, TLE_TERM *value)
{
    if (value == nullptr) {
        HOST_PutText(TLC_CFile(stream), "{ 0 }");
    } else if (TLIT_IsRecordType(type)) {
        write_fields(stream, type, value);
    } else {
        TLE_ExpressionCode(stream, value, TLIT_IsArrayType(type) ? 2 : 0);
    }
}

static void write_values(TLC_STREAM *stream, TLI_IDENTIFIER *type, TLE_TERM *links, bool is_array)
{
    FILE *file = TLC_CFile(stream);
    if (is_array) HOST_PutText(file, "{ ");
    for (TLE_TERM *link = links; link != nullptr; link = link->right) {
        write_value(stream, type, link->left);
        if (link->right != nullptr) HOST_PutText(file, ", ");
    }
    if (is_array) HOST_PutText(file, " }");
}

/* A scalar stands where it is used; what has a place of its own is written as a table. */
static void write_constant(TLC_STREAM *stream, TLI_IDENTIFIER *constant)
{
    TLI_IDENTIFIER *type = TLI_IdentifierType(constant);
    bool is_array = TLI_IdentifierDimension(constant, nullptr) != -1;
    if (!is_array && !TLIT_IsRecordType(type)) return;
    TLE_TERM *values = reinterpret_cast<TLIC_CONSTANT *>(constant)->values;
    if (values == nullptr) return;
    declare_items(stream, values);
    HOST_PutText(TLC_CFile(stream), "static ");
    write_item(stream, constant);
    HOST_PutText(TLC_CFile(stream), " = ");
    write_values(stream, type, values, is_array);
    HOST_PutText(TLC_CFile(stream), ";\n");
}

/* ---- Identifiers ---- */

void TLCC_WriteIdentifier(TLC_STREAM *stream, TLI_IDENTIFIER *identifier)
{
    switch (TLI_IdentifierClass(identifier)) {
    case TLI_VARIABLE:
        write_variable(stream, identifier);
        break;
    case TLI_NON_VOLATILE:
        write_non_volatile(stream, identifier);
        break;
    case TLI_CONSTANT:
        write_constant(stream, identifier);
        break;
    case TLI_TYPE:
        if (subclass_of(identifier) == TLIT_SUBCLASS_ENUMERATION) {
            write_enumeration(stream, identifier);
        }
        break;
    default:
        break;
    }
}

void TLCC_WriteScopeIdentifiers(TLC_STREAM *stream, TLI_SCOPE *scope)
{
    TLI_LIST list = TLI_ListIdentifiers(scope);
    write_scope_types(stream, scope, list);
    /* A table may lead to one that was declared before it. */
    for (size_t at = list.count; at > 0; --at) {
        TLI_IDENTIFIER *identifier = list.names[at - 1];
        if (TLI_IdentifierClass(identifier) == TLI_CONSTANT) write_constant(stream, identifier);
    }
    for (size_t at = 0; at < list.count; ++at) {
        int32_t kind = TLI_IdentifierClass(list.names[at]);
        bool is_done = kind == TLI_TYPE || kind == TLI_CONSTANT;
        if (!is_done) TLCC_WriteIdentifier(stream, list.names[at]);
    }
    SH_Free(list.names);
    HOST_PutText(TLC_CFile(stream), "\n");
}
