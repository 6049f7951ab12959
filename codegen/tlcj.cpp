/*
 * Java text: names and types, and what the writers note between one another.
 */
#include "codegen/tlcj.h"
#include "host/host.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>

#include "codegen/tlc.h"
#include "names/tli.h"
#include "names/tliv.h"
#include <ostrum/f.h>
#include <ostrum/sh.h>
#include <ostrum/st.h>
#include <ostrum/tlcc.h>
#include <ostrum/tle.h>
#include <ostrum/tlit.h>
#include <ostrum/tlp.h>
#include <ostrum/tlt.h>

void TLCJ_Initialise(void)
{
    TLCC_Initialise();
}

/* ---- Notes ---- */

TLCJ_STATE *TLCJ_State(TLC_STREAM *stream)
{
    if (stream->java == nullptr) {
        stream->java = static_cast<TLCJ_STATE *>(SH_NameAllocate(sizeof(TLCJ_STATE), "TLCJ:STATE"));
        stream->java->classes = HS_NewDomain();
        stream->java->taken = HS_NewDomain();
        stream->java->fields = HS_NewDomain();
        stream->java->given = HS_NewDomain();
        stream->java->is_open = true;
    }
    return stream->java;
}

static int32_t free_text(void *, const char *, intptr_t value)
{
    ST_Free(reinterpret_cast<char *>(value));
    return 1;
}

void TLCJ_DropState(TLC_STREAM *stream)
{
    if (stream->java == nullptr) return;
    HS_AllNames(stream->java->classes, free_text, nullptr);
    HS_AllNames(stream->java->given, free_text, nullptr);
    HS_DelDomain(stream->java->classes);
    HS_DelDomain(stream->java->taken);
    HS_DelDomain(stream->java->fields);
    HS_DelDomain(stream->java->given);
    TLCJ_DropParents(stream->java);
    TLCG_DropSet(&stream->java->marked);
    TLCG_DropSet(&stream->java->late);
    TLCG_DropSet(&stream->java->constructed);
    SH_Free(stream->java);
    stream->java = nullptr;
}

void TLCJ_Mark(TLC_STREAM *stream, const void *what)
{
    TLCJ_STATE *state = TLCJ_State(stream);
    if (TLCG_AddToSet(&state->marked, what)) state->is_stale = true;
}

void TLCJ_NoteStore(TLC_STREAM *stream, const TLI_IDENTIFIER *variable)
{
    for (const TLCJ_LOOP *loop = TLCJ_State(stream)->loops; loop != nullptr; loop = loop->outer) {
        if (loop->variable == variable) TLCJ_Mark(stream, loop->record);
    }
}

bool TLCJ_IsBoxed(TLC_STREAM *stream, TLI_IDENTIFIER *identifier)
{
    const TLCJ_STATE *state = TLCJ_State(stream);
    return state->marked.count > 0 && TLCG_IsInSet(state->marked, identifier);
}

/* ---- Words that are not free ---- */

/*
 * Words of Java, of the class that all generated ones extend, and of the classes that text names, in
 * byte order.
 */
static constexpr const char *reserved_words[] = {
    "Data",     "Diagnostic", "Items",    "Object",   "Override",   "Raise",     "String",
    "Vector",   "_",          "abs",      "abstract", "assert",     "boolean",   "break",
    "byte",     "case",       "catch",    "char",     "class",      "clone",     "const",
    "continue", "default",    "do",       "double",   "else",       "enum",      "equals",
    "extends",  "false",      "final",    "finalize", "finally",    "float",     "for",
    "getClass", "goto",       "hashCode", "if",       "implements", "import",    "instanceof",
    "int",      "interface",  "long",     "max",      "min",        "native",    "new",
    "notify",   "notifyAll",  "null",     "package",  "private",    "protected", "public",
    "return",   "short",      "static",   "strictfp", "super",      "switch",    "synchronized",
    "this",     "throw",      "throws",   "toString", "transient",  "true",      "try",
    "void",     "volatile",   "wait",     "while",    "yield",
};

/* What else cannot be the name of a class: words of Java there, and classes that text may need. */
static constexpr const char *library_classes[] = {
    "Boolean", "Character", "Component", "Connector", "Converter", "Error",  "Exception", "Fault",
    "Float",   "Hardware",  "Integer",   "Math",      "Number",    "Pin",    "Point",     "System",
    "Varloc",  "View",      "Waveform",  "permits",   "record",    "sealed", "var",
};

/* For each first letter, the place of the first word that begins with it. */
struct WORD_INDEX {
    uint8_t start[129];
};

static consteval WORD_INDEX index_words()
{
    WORD_INDEX index = {};
    uint8_t place = 0;
    for (int32_t letter = 0; letter <= 128; ++letter) {
        while (place < std::size(reserved_words) && reserved_words[place][0] < letter)
            ++place;
        index.start[letter] = place;
    }
    return index;
}

static constexpr WORD_INDEX word_index = index_words();

static bool is_reserved(const char *name)
{
    auto letter = static_cast<unsigned char>(name[0]);
    if (letter >= 128) return false;
    if (letter == 't' && name[1] == 'o' && std::strncmp(name, "toll", 4) == 0) return true;
    for (size_t i = word_index.start[letter]; i < word_index.start[letter + 1]; ++i) {
        if (reserved_words[i][1] == name[1] && std::strcmp(reserved_words[i], name) == 0)
            return true;
    }
    return false;
}

static bool is_library_class(const char *name)
{
    for (const char *word : library_classes) {
        if (std::strcmp(word, name) == 0) return true;
    }
    return false;
}

/* ---- Names ---- */

static bool is_java_character(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

static char *java_characters(char *text)
{
    for (char *at = text; *at != '\0'; ++at) {
        if (!is_java_character(*at)) *at = '_';
    }
    return text;
}

/* Copies a name as Java takes it, as far as there is room; gives where it ends. */
static char *copy_name(char *at, const char *end, const char *name)
{
    for (; *name != '\0' && end - at > 1; ++name)
        *at++ = is_java_character(*name) ? *name : '_';
    *at = '\0';
    return at;
}

void TLCJ_ClassName(const char *path, char *buffer)
{
    const char *base = path;
    for (const char *at = path; *at != '\0'; ++at) {
        if (*at == '/' || *at == '\\' || *at == ':') base = at + 1;
    }
    const char *dot = std::strrchr(base, '.');
    int length = dot == nullptr || dot == base ? 120 : static_cast<int>(dot - base);
    bool has_digit = base[0] >= '0' && base[0] <= '9';
    std::snprintf(buffer, TLCJ_NAME_CAPACITY, "%s%.*s", has_digit ? "_" : "",
                  length > 120 ? 120 : length, base);
    java_characters(buffer);
    bool is_free = buffer[0] != '\0' && !is_reserved(buffer) && !is_library_class(buffer);
    size_t end = std::strlen(buffer);
    if (!is_free) std::snprintf(buffer + end, TLCJ_NAME_CAPACITY - end, "_");
}

static void class_of_module(TLP_MODULE *module, char *buffer)
{
    const char *source = TLP_ModuleSourceFile(module);
    const char *domain = TLI_DomainName(TLP_ModuleDomain(module));
    TLCJ_ClassName(source != nullptr && source[0] != '\0' ? source : domain, buffer);
}

/* What a class is noted under that a used module uses in its turn. */
static const char *use_of(const char *domain, const char *class_name, char *buffer, size_t size)
{
    std::snprintf(buffer, size, "%s %s", domain, class_name);
    return buffer;
}

/* A module that is used, with what it uses. */
struct USER_NOTE {
    HS_DOMAIN *taken;
    const char *domain;
};

static int32_t note_use(void *context, const char *, TLP_MODULE *used)
{
    const auto *note = static_cast<const USER_NOTE *>(context);
    char name[TLCJ_NAME_CAPACITY];
    char both[2 * TLCJ_NAME_CAPACITY];
    class_of_module(used, name);
    HS_NewName(note->taken, use_of(note->domain, name, both, sizeof both), 0);
    return 1;
}

void TLCJ_UseModule(TLC_STREAM *stream, TLP_MODULE *module)
{
    TLCJ_STATE *state = TLCJ_State(stream);
    char name[TLCJ_NAME_CAPACITY];
    const char *domain = TLI_DomainName(TLP_ModuleDomain(module));
    if (HS_FindName(state->classes, domain, nullptr)) return;
    class_of_module(module, name);
    HS_NewName(state->classes, domain, reinterpret_cast<intptr_t>(ST_Allocate(name)));
    HS_NewName(state->taken, name, 0);
    USER_NOTE note = { .taken = state->taken, .domain = domain };
    TLP_AllUsesModules(module, note_use, &note);
    state->has_modules = true;
}

/* A module that is not known by a source of its own: its file has the name that USES names it by. */
static const char *class_of_domain(TLC_STREAM *stream, TLI_DOMAIN *domain, char *buffer)
{
    intptr_t known = 0;
    if (HS_FindName(TLCJ_State(stream)->classes, TLI_DomainName(domain), &known)) {
        return reinterpret_cast<const char *>(known);
    }
    TLCJ_ClassName(TLI_DomainName(domain), buffer);
    for (char *at = buffer; *at != '\0'; ++at) {
        if (*at >= 'A' && *at <= 'Z') *at = static_cast<char>(*at - 'A' + 'a');
    }
    return buffer;
}

/* Functions and types that are declared inside a function stand beside it, under both names. */
static TLI_IDENTIFIER *outer_function(TLI_IDENTIFIER *identifier)
{
    int32_t kind = TLI_IdentifierClass(identifier);
    if (kind != TLI_FUNCTION && kind != TLI_TYPE) return nullptr;
    TLI_SCOPE *scope = TLI_IdentifierScope(identifier);
    bool has_frame = scope != nullptr && TLI_ScopeType(scope) == TLI_FRAME_SCOPE;
    return has_frame ? scope->identifier : nullptr;
}

/* The domain of an identifier that another module declares for all to see; else null. */
static TLI_DOMAIN *foreign_domain(TLC_STREAM *stream, TLI_IDENTIFIER *identifier)
{
    TLI_SCOPE *scope = TLI_IdentifierScope(identifier);
    if (scope == nullptr || TLI_ScopeType(scope) != TLI_STATIC_SCOPE) return nullptr;
    TLI_DOMAIN *domain = TLI_IdentifierDomain(identifier);
    if (domain == nullptr || domain == TLP_ModuleDomain(stream->module)) return nullptr;
    return TLI_DomainName(domain)[0] != '\0' ? domain : nullptr;
}

/* Methods and fields cannot stand where a class may. */
static bool may_hide_classes(TLI_IDENTIFIER *identifier)
{
    switch (TLI_IdentifierClass(identifier)) {
    case TLI_FIELD:
        return false;
    case TLI_FUNCTION: {
        int32_t kind = TLIV_FunctionClass(identifier);
        return kind != TLP_SECTION_FUNCTION && kind != TLP_SECTION_TREE &&
               kind != TLP_SECTION_SYSCALL;
    }
    default:
        return true;
    }
}

/* Would a name hide a class in the text of the module that declares it? */
static bool is_taken(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, const char *name)
{
    if (!may_hide_classes(identifier)) return false;
    const TLCJ_STATE *state = TLCJ_State(stream);
    TLI_DOMAIN *domain = foreign_domain(stream, identifier);
    if (domain == nullptr) {
        if (state->class_name[0] == name[0] && std::strcmp(state->class_name, name) == 0)
            return true;
        return state->has_modules && HS_FindName(state->taken, name, nullptr);
    }
    char made[TLCJ_NAME_CAPACITY];
    char both[2 * TLCJ_NAME_CAPACITY];
    if (std::strcmp(class_of_domain(stream, domain, made), name) == 0) return true;
    use_of(TLI_DomainName(domain), name, both, sizeof both);
    return HS_FindName(state->taken, both, nullptr) != 0;
}

static bool is_used(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, const char *name)
{
    bool is_type = TLI_IdentifierClass(identifier) == TLI_TYPE;
    return is_reserved(name) || (is_type && is_library_class(name)) ||
           is_taken(stream, identifier, name);
}

/* A name that only differs from one that is not free by the "_" behind it is not free either. */
static bool is_free(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, const char *name, size_t length)
{
    if (is_used(stream, identifier, name)) return false;
    if (length < 2 || name[length - 1] != '_') return true;
    char shorter[TLCJ_NAME_CAPACITY];
    std::memcpy(shorter, name, length);
    for (; length > 1 && shorter[length - 1] == '_'; --length) {
        shorter[length - 1] = '\0';
        if (is_used(stream, identifier, shorter)) return false;
    }
    return true;
}

bool TLCJ_IsFree(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, const char *name)
{
    return is_free(stream, identifier, name, std::strlen(name));
}

const char *TLCJ_OwnName(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, char *buffer)
{
    const char *given = TLCJ_GivenName(stream, identifier);
    if (given != nullptr) return ST_Copy(buffer, TLCJ_NAME_CAPACITY, given);
    const char *name = TLI_IdentifierName(identifier);
    const char *end = buffer + TLCJ_NAME_CAPACITY - 1; /* leaves room for a "_" */
    TLI_IDENTIFIER *outer = outer_function(identifier);
    char *at = buffer;
    if (outer != nullptr) {
        at = copy_name(at, end, TLI_IdentifierName(outer));
        at = copy_name(at, end, "_");
    } else if (name[0] >= '0' && name[0] <= '9') {
        *at++ = '_';
    }
    at = copy_name(at, end, name);
    auto length = static_cast<size_t>(at - buffer);
    if (!is_free(stream, identifier, buffer, length)) std::memcpy(at, "_", 2);
    return buffer;
}

const char *TLCJ_Name(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, char *buffer)
{
    TLI_DOMAIN *domain = foreign_domain(stream, identifier);
    if (domain == nullptr) return TLCJ_OwnName(stream, identifier, buffer);
    char own[TLCJ_NAME_CAPACITY];
    char made[TLCJ_NAME_CAPACITY];
    const char *name = class_of_domain(stream, domain, made);
    TLCJ_OwnName(stream, identifier, own);
    std::snprintf(buffer, TLCJ_NAME_CAPACITY, "%.*s.%.*s", TLCJ_NAME_CAPACITY / 2 - 2, name,
                  TLCJ_NAME_CAPACITY / 2 - 2, own);
    return buffer;
}

char *TLCJ_IdentifierName(TLI_IDENTIFIER *identifier)
{
    const char *name = TLI_IdentifierName(identifier);
    bool has_digit = name[0] >= '0' && name[0] <= '9';
    char text[64];
    std::snprintf(text, sizeof text, "%s%s", has_digit ? "_" : "", name);
    char *point = std::strchr(text, '.');
    if (point != nullptr) *point = '_';
    return ST_Allocate(text);
}

void TLCJ_DataTerm(TLC_STREAM *stream, TLE_TERM *term)
{
    if (term == nullptr) {
        HOST_PutText(TLC_CFile(stream), "null");
    } else {
        TLE_DataTerm(stream, term);
    }
}

/* ---- Types ---- */

struct JAVA_TYPE {
    TLI_IDENTIFIER **type;
    const char *name;
};

static constexpr JAVA_TYPE java_types[] = {
    { .type = &TLIT_IntType, .name = "int" },
    { .type = &TLIT_CharType, .name = "char" },
    { .type = &TLIT_BoolType, .name = "bool" },
    { .type = &TLIT_VoidType, .name = "void" },
    { .type = &TLIT_Voltage, .name = "Voltage" },
    { .type = &TLIT_Current, .name = "Current" },
    { .type = &TLIT_Resistance, .name = "Resistance" },
    { .type = &TLIT_Time, .name = "Time" },
    { .type = &TLIT_Frequency, .name = "Frequency" },
    { .type = &TLIT_ClockTime, .name = "ClockTime" },
    { .type = &TLIT_StringType, .name = "String" },
    { .type = &TLIT_WordType, .name = "int" },
    { .type = &TLIT_True, .name = "bool" },
    { .type = &TLIT_False, .name = "bool" },
    { .type = &TLIT_ArrayType, .name = "Vector" },
    { .type = &TLIT_ShortType, .name = "short" },
    { .type = &TLIT_QuantityType, .name = "Quantity" },
};

const char *TLCJ_TypeName(TLI_DOMAIN *data_types, TLI_IDENTIFIER *type)
{
    for (const JAVA_TYPE &row : java_types) {
        if (type != nullptr && *row.type == type) return row.name;
    }
    if (TLIT_IsStringType(data_types, type)) return "String";
    switch (TLIT_TypeSubclass(nullptr, type)) {
    case TLIT_SUBCLASS_DATA:
        return "Data";
    case TLIT_SUBCLASS_POINTER:
        return TLI_IdentifierName(TLIT_PointerAt(type));
    default:
        return TLI_IdentifierName(type);
    }
}

TLCJ_KIND TLCJ_Kind(TLI_IDENTIFIER *type)
{
    if (type == nullptr || type == TLIT_WordType) return TLCJ_WORD;
    if (type == TLIT_CharType) return TLCJ_CHAR;
    if (type == TLIT_ShortType) return TLCJ_SHORT;
    if (type == TLIT_FloatType) return TLCJ_FLOAT;
    if (type == TLIT_StringType || type == TLIT_DataType) return TLCJ_OBJECT;
    switch (TLIT_TypeSubclass(nullptr, type)) {
    case TLIT_SUBCLASS_SIMPLE:
    case TLIT_SUBCLASS_ENUMERATION:
        return TLCJ_WORD;
    default:
        return TLCJ_OBJECT;
    }
}

static bool is_string(TLC_STREAM *stream, TLI_IDENTIFIER *type)
{
    return type == TLIT_StringType || TLIT_IsStringType(TLP_DataTypeDomain(stream->module), type);
}

/* The class of values that are objects. */
static const char *object_name(TLC_STREAM *stream, TLI_IDENTIFIER *type, char *buffer)
{
    if (is_string(stream, type)) return "String";
    if (type == TLIT_DataType) return "Data";
    switch (TLIT_TypeSubclass(nullptr, type)) {
    case TLIT_SUBCLASS_DATA:
        return "Data";
    case TLIT_SUBCLASS_POINTER: {
        TLI_IDENTIFIER *target = TLIT_PointerAt(type);
        bool is_record = target != nullptr && TLIT_IsRecordType(target);
        return is_record ? TLCJ_Name(stream, target, buffer) : "Object";
    }
    default:
        return TLCJ_Name(stream, type, buffer);
    }
}

void TLCJ_WriteType(TLC_STREAM *stream, TLI_IDENTIFIER *type)
{
    static constexpr const char *simple[] = { "int", "char", "short", "float" };
    char name[TLCJ_NAME_CAPACITY];
    FILE *file = stream->file;
    TLCJ_KIND kind = TLCJ_Kind(type);
    if (type == TLIT_VoidType) {
        HOST_PutText(file, "void");
    } else if (kind != TLCJ_OBJECT) {
        HOST_PutText(file, simple[kind]);
    } else if (TLIT_IsArrayType(type)) {
        TLCJ_WriteReferenceType(stream, TLIT_ArrayOf(type));
    } else {
        HOST_PutText(file, object_name(stream, type, name));
    }
}

void TLCJ_WriteReferenceType(TLC_STREAM *stream, TLI_IDENTIFIER *type)
{
    char name[TLCJ_NAME_CAPACITY];
    TLCJ_KIND kind = TLCJ_Kind(type);
    if (kind == TLCJ_FLOAT) {
        HOST_PutText(stream->file, "Items<Float>");
    } else if (kind == TLCJ_OBJECT) {
        std::fprintf(stream->file, "Items<%s>", object_name(stream, type, name));
    } else {
        HOST_PutText(stream->file, "Vector");
    }
}

/* ---- Storage ---- */

static bool is_by_reference(TLI_IDENTIFIER *identifier)
{
    return TLI_IdentifierClass(identifier) == TLI_ARGUMENT &&
           TLIV_ArgumentPassType(identifier) != TLIV_BY_VALUE;
}

bool TLCJ_IsVector(TLI_IDENTIFIER *identifier)
{
    if (TLIT_IsArrayType(TLI_IdentifierType(identifier))) return true;
    bool is_array = (TLI_IdentifierFlags(identifier) & TLI_DIMENSIONED) != 0;
    if (!is_array) return false;
    return is_by_reference(identifier) || TLI_IdentifierDimension(identifier, nullptr) == 0;
}

bool TLCJ_IsReference(TLI_IDENTIFIER *identifier)
{
    if (!is_by_reference(identifier) || TLCJ_IsVector(identifier)) return false;
    return !TLIT_IsRecordType(TLI_IdentifierType(identifier));
}

bool TLCJ_HasFrame(const TLI_SCOPE *scope)
{
    return scope != nullptr && (scope->classes & 1U << TLI_FUNCTION) != 0;
}
