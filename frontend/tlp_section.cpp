/*
 * Sections: making, linking, listing them, and parsing one by itself.
 */
#include "frontend/tlp.h"

#include "core/sh.h"
#include "frontend/tlt.h"
#include "names/tli.h"

#include <ostrum/hs.h>
#include <ostrum/st.h>
#include <ostrum/tlit.h>
#include <ostrum/tliv.h>
#include <string.h>

static const char *const type_names[] = {
    "HEADER",  "FUNCTION", "TREE",     "CONNECTOR", "HELPSCREEN",
    "PICTURE", "SYSCALL",  "WAVEFORM", "COMPONENT", "CONVERTER",
};
static_assert(sizeof type_names / sizeof type_names[0] == TLP_SECTION_TYPE_COUNT,
              "one name a type");

const char *TLP_SectionTypeName(int32_t type)
{
    if (type < 0 || type >= TLP_SECTION_TYPE_COUNT) return "<Unknown section type>";
    return type_names[type];
}

int32_t TLP_FindSectionType(const char *word)
{
    for (int32_t type = 0; type < TLP_SECTION_TYPE_COUNT; type++)
        if (strcmp(type_names[type], word) == 0) return type;
    return -1;
}

TLP_SECTION *TLP_NewSection(int32_t type, const char *name)
{
    auto *section =
        static_cast<TLP_SECTION *>(SH_NameAllocate(int32_t{ sizeof(TLP_SECTION) }, "TLP:SECTION"));
    section->type = type;
    ST_Copy(section->name, TLP_NAME_SIZE, name);
    return section;
}

void TLP_LinkSection(TLP_MODULE *module, TLP_SECTION *section)
{
    if (module->last_section == nullptr)
        module->sections = section;
    else
        module->last_section->next = section;
    module->last_section = section;
}

void TLP_DelSectionLink(TLP_MODULE *module)
{
    module->sections = nullptr;
    module->last_section = nullptr;
    module->current_section = nullptr;
}

/** Takes a section out of the module's list, if it is there. */
static void unlink_section(TLP_MODULE *module, TLP_SECTION *section)
{
    TLP_SECTION *before = nullptr;
    TLP_SECTION *at = module->sections;
    while (at != nullptr && at != section) {
        before = at;
        at = at->next;
    }
    if (module->current_section == section) module->current_section = nullptr;
    if (at == nullptr) return;
    if (before == nullptr)
        module->sections = section->next;
    else
        before->next = section->next;
    if (module->last_section == section) module->last_section = before;
}

void TLP_DelSection(TLP_MODULE *module, TLP_SECTION *section)
{
    if (section == nullptr) return;
    if (module != nullptr && module->domain != nullptr) TLP_DelSectionIdentifier(module, section);
    if (module != nullptr) unlink_section(module, section);
    for (size_t i = 0; i < section->statement_count; i++)
        TLT_DelStatement(section->statements[i]);
    SH_Free(section->statements);
    SH_Free(section);
}

TLI_IDENTIFIER *TLP_GetSectionIdentifier(TLP_MODULE *module, TLP_SECTION *section)
{
    if (module->domain == nullptr) return nullptr;
    return TLI_FindDomainIdentifier(module->domain, section->name);
}

void TLP_DelSectionIdentifier(TLP_MODULE *module, TLP_SECTION *section)
{
    TLI_IDENTIFIER *identifier = TLP_GetSectionIdentifier(module, section);
    if (identifier == nullptr || TLI_IdentifierClass(identifier) != TLI_FUNCTION) return;
    while (module->open_functions != nullptr) // one of them may be the function that goes
        TLP_CloseFunction(module);
    TLI_DelIdentifier(identifier);
}

TLS_BLOCK *TLP_SectionBlock(TLP_MODULE *module, TLP_SECTION *section)
{
    TLI_IDENTIFIER *identifier = TLP_GetSectionIdentifier(module, section);
    if (identifier == nullptr || TLI_IdentifierClass(identifier) != TLI_FUNCTION) return nullptr;
    return TLIV_GetFunctionBlock(identifier);
}

void TLP_PushScope(TLP_MODULE *module, TLP_SECTION *section)
{
    TLI_IDENTIFIER *identifier = TLP_GetSectionIdentifier(module, section);
    if (identifier != nullptr) TLIV_PushScope(module->domain, identifier);
}

void TLP_PopScope(TLP_MODULE *module, TLP_SECTION *section)
{
    TLI_IDENTIFIER *identifier = TLP_GetSectionIdentifier(module, section);
    if (identifier != nullptr) TLIV_PopScope(module->domain, identifier);
}

void TLP_AppendStatement(TLT_STATEMENT ***statements, size_t *count, size_t *size,
                         TLT_STATEMENT *statement)
{
    size_t used = *count * sizeof(TLT_STATEMENT *);
    if (used == *size)
        *statements = static_cast<TLT_STATEMENT **>(
            SH_Grow(*statements, used, size, used + sizeof(TLT_STATEMENT *)));
    (*statements)[(*count)++] = statement;
}

void TLP_AddStatement(TLP_SECTION *section, TLT_STATEMENT *statement)
{
    const size_t count = section->statement_count;
    if (count > 0 && TLT_StatementSourceLineNumber(section->statements[count - 1]) >
                         TLT_StatementSourceLineNumber(statement))
        section->goes_back = true;
    TLP_AppendStatement(&section->statements, &section->statement_count, &section->statement_size,
                        statement);
}

void TLP_AllStatements(TLP_SECTION *section, TLP_STATEMENT_VISITOR visitor, void *context)
{
    for (size_t i = 0; i < section->statement_count; i++)
        visitor(context, section->statements[i]);
}

void TLP_AllSections(TLP_MODULE *module, TLP_SECTION_VISITOR visitor, void *context)
{
    TLP_SECTION *section = module->sections;
    while (section != nullptr) {
        TLP_SECTION *next = section->next; // the visitor may delete the section
        visitor(context, section->name, section, section->type);
        section = next;
    }
}

TLP_SECTION *TLP_FindSection(TLP_MODULE *module, const char *name)
{
    TLP_SECTION *found = nullptr;
    for (TLP_SECTION *section = module->sections; section != nullptr; section = section->next)
        if (strcmp(section->name, name) == 0) found = section;
    return found;
}

const char *TLP_SectionName(TLP_SECTION *section)
{
    return section->name;
}

int32_t TLP_SectionType(TLP_SECTION *section)
{
    return section->type;
}

int32_t TLP_SectionState(TLP_SECTION *section)
{
    return section->status;
}

int32_t TLP_FirstStatementLineNumber(TLP_SECTION *section)
{
    if (section->statement_count == 0) return 0;
    return TLT_StatementLineNumber(section->statements[0]);
}

int32_t TLP_LastStatementLineNumber(TLP_SECTION *section)
{
    if (section->statement_count == 0) return 0;
    return TLT_StatementLineNumber(section->statements[section->statement_count - 1]);
}

void TLP_PrintOneSection(FILE *stream, TLP_MODULE *module, TLP_SECTION *section, int32_t indent)
{
    fprintf(stream, "\n%*sSECTION %s (Type=%s)\n", indent, "", section->name,
            TLP_SectionTypeName(section->type));
    if ((module->flags & TLP_FLAG_LIST_STATEMENTS) == 0) return;
    for (size_t i = 0; i < section->statement_count; i++) {
        TLT_STATEMENT *statement = section->statements[i];
        fprintf(stream, "%*s%4d %s\n", indent, "", TLT_StatementLineNumber(statement),
                TLT_StatementChars(statement));
    }
}

void TLP_PrintSections(FILE *stream, TLP_MODULE *module)
{
    for (TLP_SECTION *section = module->sections; section != nullptr; section = section->next)
        TLP_PrintOneSection(stream, module, section, 0);
}

static void raise_status(int32_t *status, int32_t level)
{
    if (*status < level) *status = level;
}

/** Status that a message of a level stands for. */
static int32_t level_status(int32_t level)
{
    return level <= TLT_LEVEL_INFORMATION ? TLP_STATUS_SUCCESSFUL : level - 1;
}

static void collect_statement(TLP_MODULE *module, TLT_STATEMENT *statement)
{
    bool prints = (module->flags & TLP_FLAG_PRINT_MESSAGES) != 0 && module->output != nullptr;
    if (statement->extra == nullptr) return;
    for (TLT_MESSAGE *message = statement->extra->messages; message != nullptr;
         message = message->next) {
        int32_t status = level_status(message->level);
        raise_status(&module->current_section->status, status);
        raise_status(&module->status, status);
        if (prints) TLT_PrintMessage(module->output, statement, message->level, message->text);
    }
}

void TLP_CollectMessages(TLP_MODULE *module)
{
    TLP_SECTION *section = module->current_section;
    if (section == nullptr) return;
    for (size_t i = 0; i < section->statement_count; i++)
        collect_statement(module, section->statements[i]);
}

/** Data types of a module whose header is parsed anew: a root makes new ones, others have its. */
static void rebuild_data_types(TLP_MODULE *module)
{
    TLP_MODULE *root = module->root;
    bool is_own = root == module || module->data_type_domain != root->data_type_domain;
    if (is_own) TLP_DeleteDataTypes(module);
    if (root == module || root->data_type_domain == nullptr)
        TLIT_SetupDataType(module);
    else
        module->data_type_domain = root->data_type_domain;
}

/** Drops all that the module's source has declared. */
static void rebuild_module(TLP_MODULE *module)
{
    TLP_CloseFiles(module);
    TLP_DeleteDomain(module);
    TLP_DeleteUsedModules(module);
    TLP_MakeDomain(module);
    rebuild_data_types(module);
}

/** Parses the statements up to the one that stops. Gives the last that was parsed to its end. */
static TLT_STATEMENT *parse_statements(TLP_MODULE *module, TLP_SECTION *section)
{
    TLT_STATEMENT *last = nullptr;
    for (size_t i = 0; i < section->statement_count; i++) {
        if (TLP_ParseStatement(module, section->statements[i]) == TLP_STATUS_FATAL) return last;
        last = section->statements[i];
    }
    return last;
}

static void close_functions(TLP_MODULE *module, TLP_SECTION *section, TLT_STATEMENT *last)
{
    while (module->open_functions != nullptr) {
        TLP_CloseFunction(module);
        if (section->type != TLP_SECTION_HEADER) TLT_Error(last, "Missing 'END'");
    }
}

/**
 * Takes frames off the module's domain that were left on it. A record left open is among them, and must not
 * be closed again by the first keyword of the next section: that would take off STATICS.
 */
static void pop_frames(TLP_MODULE *module)
{
    module->open_record = nullptr;
    if (module->domain == nullptr) return;
    while (module->domain->scope != nullptr && TLI_ScopeType(module->domain->scope) == 0)
        TLI_PopScope(module->domain);
}

int32_t TLP_ParseSection(TLP_MODULE *module, TLP_SECTION *section)
{
    while (module->open_functions != nullptr)
        TLP_CloseFunction(module);
    if (section->type == TLP_SECTION_HEADER)
        rebuild_module(module);
    else if (module->domain == nullptr) // a client made the module, and begins behind its header
        TLP_MakeDomain(module);
    TLT_ResetCounters();
    section->status = TLP_STATUS_SUCCESSFUL;
    module->current_section = section;
    module->private_flag = section->type != TLP_SECTION_HEADER;
    TLT_STATEMENT *last = parse_statements(module, section);
    close_functions(module, section, last);
    pop_frames(module);
    TLP_CollectMessages(module);
    return section->status;
}
