// Identifiers: making, deleting, questions, code and pragmas.
#include "names/tli.h"

#include "codegen/tlc.h"
#include "core/as.h"
#include "core/hs.h"
#include "core/sh.h"
#include "core/st.h"
#include "frontend/tlt.h"
#include "names/tlit.h"

#include <cstdio>
#include <cstring>
#include <iterator>

// Room for a message with a name in it.
static constexpr size_t message_capacity = 160;

// In order of the class codes.
static constexpr const char *class_names[] = {
    "NAME", "CONSTANT", "TYPE",         "VARIABLE", "FUNCTION", "ENUM_VALUE", "BUILT_IN_FUNCTION",
    "NODE", "FIELD",    "NON_VOLATILE", "ARGUMENT",
};
static_assert(std::size(class_names) == TLI_CLASS_COUNT, "one text for each class code");

static constexpr TLI_CLASS name_class = {
    .class_name = "NAME_CLASS",
    .record_size = sizeof(TLI_IDENTIFIER),
    .flags = TLI_NAME,
    .delete_operation = nullptr,
    .print = nullptr,
    .value = nullptr,
    .push_value = nullptr,
    .push_address = nullptr,
    .push_dimension = nullptr,
    .dimension = nullptr,
    .flags_function = nullptr,
};

void TLI_Initialise(void)
{
    static bool is_initialised = false;
    if (is_initialised) return;
    is_initialised = true;
    TLT_Initialise();
    TLIT_Initialise();
    AS_Initialise();
    HS_Initialise();
}

// ---- Questions ----

const char *TLI_ClassName(int32_t class_code)
{
    if (class_code < 0 || class_code >= TLI_CLASS_COUNT) return "<UNKNOWN CLASS>";
    return class_names[class_code];
}

const char *TLI_IdentifierName(const TLI_IDENTIFIER *identifier)
{
    return identifier != nullptr ? identifier->name : "<NULL IDENTIFIER>";
}

const char *TLI_FullName(TLI_IDENTIFIER *identifier)
{
    static char full_name[TLI_NAME_CAPACITY];
    TLI_DOMAIN *domain = TLI_IdentifierDomain(identifier);
    const bool is_tagged = domain != nullptr && domain->name[0] != '\0' &&
                           TLI_FindPragma(identifier, "NOTAG") == nullptr;
    if (!is_tagged) return ST_Copy(full_name, TLI_NAME_CAPACITY, identifier->name);
    ST_Copy(full_name, TLI_NAME_CAPACITY, domain->name);
    ST_Append(full_name, TLI_NAME_CAPACITY, ".");
    return ST_Append(full_name, TLI_NAME_CAPACITY, identifier->name);
}

TLI_DOMAIN *TLI_IdentifierDomain(const TLI_IDENTIFIER *identifier)
{
    return identifier->scope != nullptr ? identifier->scope->domain : nullptr;
}

int32_t TLI_IdentifierClass(TLI_IDENTIFIER *identifier)
{
    const uint32_t fixed = identifier->class_record->flags & TLI_CLASS_MASK;
    return (int32_t)(fixed != 0 ? fixed : TLI_IdentifierFlags(identifier) & TLI_CLASS_MASK);
}

uint32_t TLI_IdentifierFlags(TLI_IDENTIFIER *identifier)
{
    const TLI_CLASS *record = identifier->class_record;
    return record->flags_function != nullptr ? record->flags_function(identifier) : record->flags;
}

TLI_IDENTIFIER *TLI_IdentifierType(const TLI_IDENTIFIER *identifier)
{
    return identifier->type;
}

TLI_SCOPE *TLI_IdentifierScope(const TLI_IDENTIFIER *identifier)
{
    return identifier->scope;
}

TLT_STATEMENT *TLI_IdentifierStatement(const TLI_IDENTIFIER *identifier)
{
    return identifier->statement;
}

void TLI_SetIdentifierStatement(TLI_IDENTIFIER *identifier, TLT_STATEMENT *statement)
{
    identifier->statement = statement;
}

TLC_PSECT *TLI_IdentifierPSect(const TLI_IDENTIFIER *identifier)
{
    return identifier->psect;
}

void TLI_SetPSect(TLI_IDENTIFIER *identifier, TLC_PSECT *psect)
{
    identifier->psect = psect;
}

int32_t TLI_IdentifierDimension(TLI_IDENTIFIER *identifier, TLI_IDENTIFIER **range_type)
{
    const TLI_CLASS *record = identifier->class_record;
    return record->dimension != nullptr ? record->dimension(identifier, range_type) : -2;
}

int32_t TLI_CheckIdentifier(TLI_IDENTIFIER *identifier, int32_t class_code,
                            const TLI_IDENTIFIER *type)
{
    return identifier != nullptr && identifier->type == type &&
           TLI_IdentifierClass(identifier) == class_code;
}

// ---- Making and deleting ----

static TLI_IDENTIFIER *allocate_identifier(const char *tag, const TLI_CLASS *class_record)
{
    uint32_t size = class_record->record_size;
    if (size < sizeof(TLI_IDENTIFIER)) size = sizeof(TLI_IDENTIFIER);
    auto *identifier = static_cast<TLI_IDENTIFIER *>(SH_AllocateRecord(size, tag));
    identifier->class_record = class_record;
    return identifier;
}

TLI_IDENTIFIER *TLI_NewHiddenIdentifier(const char *tag, const char *name,
                                        const TLI_CLASS *class_record)
{
    TLI_IDENTIFIER *identifier = allocate_identifier(tag, class_record);
    identifier->name = ST_Allocate(name);
    return identifier;
}

// The new identifier, or null and nothing changed if the scope has the name.
static TLI_IDENTIFIER *enter_identifier(TLI_SCOPE *scope, TLT_STATEMENT *statement,
                                        const char *name, TLI_IDENTIFIER *type,
                                        const TLI_CLASS *class_record)
{
    if (class_record == nullptr) class_record = &name_class;
    TLI_IDENTIFIER *identifier = allocate_identifier("TLI:IDENTIFIER", class_record);
    identifier->name = TLI_EnterName(scope, name, identifier);
    if (identifier->name == nullptr) {
        SH_Free(identifier);
        return nullptr;
    }
    identifier->type = type;
    identifier->scope = scope;
    identifier->statement = statement;
    return identifier;
}

TLI_IDENTIFIER *TLI_NewScopeIdentifier(TLI_SCOPE *scope, TLT_STATEMENT *statement, const char *name,
                                       TLI_IDENTIFIER *type, const TLI_CLASS *class_record)
{
    if (name == nullptr) name = "";
    TLI_IDENTIFIER *identifier = enter_identifier(scope, statement, name, type, class_record);
    if (identifier != nullptr) return identifier;
    char text[message_capacity];
    snprintf(text, sizeof text, "'%.63s' already declared in scope '%s'", name, scope->name);
    TLT_Error(statement, text);
    return nullptr;
}

static void free_pragmas(TLI_IDENTIFIER *identifier)
{
    TLI_PRAGMA *pragma = identifier->pragmas;
    while (pragma != nullptr) {
        TLI_PRAGMA *next = pragma->next;
        ST_Free(pragma->value);
        SH_Free(pragma);
        pragma = next;
    }
    identifier->pragmas = nullptr;
}

void TLI_FreeIdentifier(TLI_IDENTIFIER *identifier)
{
    free_pragmas(identifier);
    const TLI_CLASS *record = identifier->class_record;
    if (record->delete_operation != nullptr) record->delete_operation(identifier);
    SH_Free(identifier);
}

// Takes the name out of the scope's table. One that the scope owns unlisted may bear another's name.
static bool unlist(TLI_IDENTIFIER *identifier)
{
    HS_DOMAIN *names = identifier->scope->names;
    intptr_t listed = 0;
    if (!HS_FindName(names, identifier->name, &listed) || listed != (intptr_t)identifier)
        return false;
    return HS_DelName(names, identifier->name) != 0;
}

int32_t TLI_DelIdentifier(TLI_IDENTIFIER *identifier)
{
    if (identifier->scope == nullptr) {
        ST_Free(const_cast<char *>(identifier->name));
    } else if (!unlist(identifier)) {
        return 0;
    }
    TLI_FreeIdentifier(identifier);
    return 1;
}

// Takes a name out of its scope for a later declaration. What was declared with it before points at
// the record, so that lives as long as the scope, with a name of its own.
static void replace_identifier(TLI_IDENTIFIER *identifier)
{
    char *name = ST_Allocate(identifier->name);
    HS_DelName(identifier->scope->names, name);
    identifier->name = name;
    TLI_OwnUnlisted(identifier->scope, identifier);
}

static bool is_data_type(TLI_IDENTIFIER *identifier)
{
    return identifier != nullptr && TLI_IdentifierClass(identifier) == TLI_TYPE &&
           TLIT_TypeBaseType(nullptr, identifier) == TLIT_DataType;
}

// Deals with a declaration of the same name outside the scope that takes the new one.
static void hide_identifier(TLI_DOMAIN *data_types, TLT_STATEMENT *statement,
                            TLI_IDENTIFIER *hidden, const char *name)
{
    if (data_types != nullptr && is_data_type(TLIT_FindType(data_types, name))) {
        replace_identifier(hidden);
        return;
    }
    char text[message_capacity];
    snprintf(text, sizeof text, "Previous declaration of '%.63s' hidden", name);
    TLT_Information(statement, text);
}

TLI_IDENTIFIER *TLI_NewIdentifier(TLI_DOMAIN *data_types, TLI_DOMAIN *domain,
                                  TLT_STATEMENT *statement, const char *name, TLI_IDENTIFIER *type,
                                  const TLI_CLASS *class_record)
{
    if (name == nullptr) name = "";
    TLI_SCOPE *scope = TLI_GetScope(domain, statement);
    if (scope == nullptr) return nullptr;
    if (TLI_FindScopeIdentifier(scope, name) != nullptr) {
        char text[message_capacity];
        snprintf(text, sizeof text, "'%.63s' already declared", name);
        TLT_Error(statement, text);
        return nullptr;
    }
    TLI_IDENTIFIER *hidden = TLI_FindHidden(data_types, domain, name);
    if (hidden != nullptr) hide_identifier(data_types, statement, hidden, name);
    return enter_identifier(scope, statement, name, type, class_record);
}

// ---- Code ----

// What the three push operations do where a class has none.
static int32_t refuse_push(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, const char *message)
{
    TLC_Error(stream, message);
    TLI_PrintIdentifier(stdout, identifier, TLC_Module(stream));
    return 0;
}

int32_t TLI_PushValue(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t offset)
{
    const TLI_CLASS *record = identifier->class_record;
    if (record->push_value != nullptr) return record->push_value(stream, identifier, offset);
    return refuse_push(stream, identifier, "Failed to push value");
}

int32_t TLI_PushAddress(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t offset)
{
    const TLI_CLASS *record = identifier->class_record;
    if (record->push_address != nullptr) return record->push_address(stream, identifier, offset);
    return refuse_push(stream, identifier, "Failed to push address");
}

int32_t TLI_PushDimension(TLC_STREAM *stream, TLI_IDENTIFIER *identifier)
{
    const TLI_CLASS *record = identifier->class_record;
    if (record->push_dimension != nullptr) return record->push_dimension(stream, identifier);
    return refuse_push(stream, identifier, "Failed to push a dimension");
}

void TLI_LoadValue(TLC_STREAM *stream, TLI_IDENTIFIER *type)
{
    TLC_LoadValue(stream, TLIT_TypeSizeof(type, 1), TLIT_PointerType(type) ? 2 : 1);
}

// ---- Pragmas ----

void TLI_Pragma(TLI_IDENTIFIER *identifier, const char *name, const char *value)
{
    auto *pragma = static_cast<TLI_PRAGMA *>(SH_NameAllocate(sizeof(TLI_PRAGMA), "TLI:PRAGMA"));
    ST_Upper(pragma->name, TLI_NAME_CAPACITY, name);
    pragma->value = ST_Allocate(value != nullptr ? value : "");
    pragma->next = identifier->pragmas;
    identifier->pragmas = pragma;
}

const char *TLI_FindPragma(const TLI_IDENTIFIER *identifier, const char *name)
{
    for (const TLI_PRAGMA *pragma = identifier->pragmas; pragma != nullptr; pragma = pragma->next) {
        if (strcmp(pragma->name, name) == 0) return pragma->value;
    }
    return nullptr;
}

intptr_t TLI_AllPragmas(TLI_IDENTIFIER *identifier, TLI_PRAGMA_VISITOR action, void *context)
{
    intptr_t result = (intptr_t)identifier;
    for (const TLI_PRAGMA *pragma = identifier->pragmas; pragma != nullptr; pragma = pragma->next) {
        result = action(context, pragma->name, pragma->value);
        if (result == 0) break;
    }
    return result;
}
