/*
 * Reading a module: its file, or what an external reader delivers in its place.
 */
#include "frontend/tlp.h"

#include "core/sh.h"
#include "frontend/tlt.h"
#include "names/tli.h"

#include <ostrum/st.h>
#include <ostrum/tlit.h>

/** What a read was asked for. */
struct READ {
    const char *name;
    FILE *output;
    uint32_t flags;
    int32_t mode;
    TLP_MODULE *parent;
    const char *defines;
};

static TLP_READER external_reader;
static void *external_reader_context;

void TLP_SetExternalTLReader(void *context, TLP_READER reader)
{
    external_reader_context = context;
    external_reader = reader;
}

static void raise_status(TLP_MODULE *module, int32_t status)
{
    if (module->status < status) module->status = status;
}

/** Reads "MODULE name" or "BODY name". Gives 0 if the statement is neither. */
static int32_t read_head(TLT_STATEMENT *statement, int32_t *source_type, char *name)
{
    *source_type = TLT_GetToken(statement, nullptr);
    if (*source_type != TLT_TOKEN_MODULE && *source_type != TLT_TOKEN_BODY) return 0;
    if (TLT_NextToken(statement, nullptr) != TLT_TOKEN_IDENTIFIER) return 0;
    TLT_GetToken(statement, name);
    return TLT_NextToken(statement, nullptr) == TLT_TOKEN_END_OF_LINE;
}

/** Takes the module's kind and name from its first statement. Gives 0 after a fatal message. */
static int32_t take_head(TLP_MODULE *module, TLT_STATEMENT *statement, char *name)
{
    if (!read_head(statement, &module->source_type, name)) {
        TLT_FatalError(statement, "Compilation abandoned");
        raise_status(module, TLP_STATUS_FATAL);
        return 0;
    }
    bool is_other = module->name[0] != 0 && ST_CompareCI(name, module->name) != 0;
    if (module->source_type == TLT_TOKEN_MODULE && is_other)
        TLT_Information(statement, "Filename and Module are different");
    TLP_SetModuleName(module, name);
    TLP_MakeDomain(module);
    return 1;
}

/** Reads the first statement, which no section keeps. Gives 0 after a fatal message. */
static int32_t begin_module(TLP_MODULE *module)
{
    char name[TLT_TEXT_SIZE];
    TLT_STATEMENT *statement = TLP_ReadStatement(module);
    if (statement == nullptr) {
        TLT_FatalError(nullptr, "Empty source file");
        return 0;
    }
    int32_t is_sound = take_head(module, statement, name);
    TLT_DelStatement(statement);
    if (!is_sound) return 0;
    ST_Lower(name, TLT_TEXT_SIZE, name);
    if (module->source_type == TLT_TOKEN_BODY) TLP_OpenFile(module, name, 0);
    return 1;
}

/** Files and parses one statement by the read mode. Gives nonzero to stop. */
static int32_t take_statement(TLP_MODULE *module, TLT_STATEMENT *statement)
{
    int32_t token = TLT_FirstKeyword(statement);
    bool is_kept = token != TLT_TOKEN_MODULE && token != TLT_TOKEN_BODY;
    if (is_kept) TLP_AddStatement(module->current_section, statement);
    if (module->read_mode == TLP_READ_SECTIONS) {
        if (token == TLT_TOKEN_PRIVATE) module->private_flag = 1;
        if (!is_kept) TLT_DelStatement(statement);
        return 0;
    }
    int32_t answer = TLP_ParseStatement(module, statement);
    if (answer == TLP_STATUS_FATAL) raise_status(module, TLP_STATUS_FATAL);
    // A rule in force may have made something of the statement that points at it.
    if (!is_kept)
        TLP_AppendStatement(&module->dropped, &module->dropped_count, &module->dropped_size,
                            statement);
    bool is_public_over = module->read_mode == TLP_READ_PUBLIC && module->private_flag;
    return answer == TLP_STATUS_FATAL || is_public_over;
}

/** What is missing at the end of the statements. */
static void check_end(TLP_MODULE *module)
{
    if (!module->private_flag) {
        TLT_Error(nullptr, "No PRIVATE keyword");
        raise_status(module, TLP_STATUS_ERRORS);
    }
    if (module->open_functions != nullptr) {
        TLT_Error(nullptr, "Premature end of file");
        raise_status(module, TLP_STATUS_ERRORS);
    }
}

static int32_t read_statements(TLP_MODULE *module)
{
    if (!begin_module(module)) return TLP_STATUS_FATAL;
    int32_t has_stopped = 0;
    while (!has_stopped) {
        TLT_STATEMENT *statement = TLP_ReadStatement(module);
        if (statement == nullptr) break;
        has_stopped = take_statement(module, statement);
    }
    TLP_CollectMessages(module);
    check_end(module);
    return module->status;
}

static void write_progress(TLP_MODULE *module)
{
    if ((module->flags & TLP_FLAG_PROGRESS) != 0) printf("-- Reading module %s\n", module->name);
}

/** What a client asked to see of a module that was read without messages. */
static void list_module(TLP_MODULE *module)
{
    if (module->output == nullptr) return;
    if ((module->flags & TLP_FLAG_LIST_SECTIONS) != 0) TLP_PrintSections(module->output, module);
    if ((module->flags & TLP_FLAG_PRINT_SCOPES) == 0) return;
    if (module->globals != nullptr) TLI_PrintScope(module->output, module->globals, module);
    if (module->statics != nullptr) TLI_PrintScope(module->output, module->statics, module);
}

static void set_read_fields(TLP_MODULE *module, const READ *read)
{
    TLP_SetModuleOut(module, read->output);
    module->flags = read->flags;
    module->read_mode = read->mode;
}

static TLP_MODULE *make_module(const READ *read)
{
    TLP_MODULE *module = TLP_NewModule("", read->parent);
    set_read_fields(module, read);
    if (read->parent == nullptr) return module;
    TLP_DeleteDataTypes(module);
    module->data_type_domain = read->parent->data_type_domain;
    return module;
}

/** Leaves only the current section in sight; what the others declare stays. */
static void hide_other_sections(TLP_MODULE *module)
{
    TLP_SECTION *shown = module->current_section;
    TLP_SECTION *section = module->sections;
    TLP_DelSectionLink(module);
    while (section != nullptr) {
        TLP_SECTION *next = section->next;
        section->next = nullptr;
        if (section == shown) {
            TLP_LinkSection(module, section);
        } else {
            section->next = module->hidden_sections;
            module->hidden_sections = section;
        }
        section = next;
    }
    module->current_section = shown;
}

/** Makes a delivered module the result of the read. */
static void take_delivered(TLP_MODULE *module, const READ *read)
{
    hide_other_sections(module);
    set_read_fields(module, read);
    write_progress(module);
    TLP_CollectMessages(module);
    TLP_SetConditional(module, read->defines);
}

/** Asks the external reader. Gives its answer; with 0 the module is the one that it delivered. */
static int32_t ask_reader(TLP_MODULE **module, const READ *read)
{
    TLP_MODULE *delivered = nullptr;
    int32_t answer = external_reader(read->name, &delivered, external_reader_context, read->parent);
    if (answer != TLP_STATUS_SUCCESSFUL) return answer;
    if (delivered == nullptr) return TLP_STATUS_FATAL;
    TLP_DelModule(*module);
    *module = delivered;
    take_delivered(delivered, read);
    return TLP_STATUS_SUCCESSFUL;
}

/** Reads the module's source. Gives failure, the status so far, if there is none. */
static int32_t read_source(TLP_MODULE *module, const READ *read, int32_t failure)
{
    if (TLP_OpenFile(module, read->name, 1) != TLP_STATUS_SUCCESSFUL) return failure;
    module->current_section = TLP_NewSection(TLP_SECTION_HEADER, "HEADER");
    TLP_LinkSection(module, module->current_section);
    write_progress(module);
    TLP_SetConditional(module, read->defines);
    int32_t status = read_statements(module);
    TLP_CloseFiles(module);
    return status;
}

static int32_t read_module(TLP_MODULE **module, const READ *read)
{
    int32_t status = TLP_STATUS_FATAL;
    bool is_asked = external_reader != nullptr && read->mode == TLP_READ_PUBLIC;
    if (is_asked) status = ask_reader(module, read);
    if (status != TLP_STATUS_SUCCESSFUL) status = read_source(*module, read, status);
    if (status == TLP_STATUS_SUCCESSFUL) list_module(*module);
    return status;
}

/** Reads with the module on the root's list of reads under way. */
static int32_t read_listed(TLP_MODULE **module, const READ *read)
{
    TLP_MODULE *first = *module;
    TLP_MODULE *root = first->root;
    TLP_MODULE *outer = root->reading;
    first->reading_outer = outer;
    root->reading = first;
    root->reading_depth++;
    int32_t status = read_module(module, read);
    if (root == first && *module != first) return status; // the root itself was replaced
    root->reading = outer;
    root->reading_depth--;
    return status;
}

int32_t TLP_ReadModule2(TLT_STATEMENT *statement, const char *name, TLP_MODULE **module,
                        FILE *output, uint32_t flags, int32_t mode, TLP_MODULE *parent,
                        const char *defines)
{
    (void)statement; // all that can go wrong here is told by the status
    READ read = { .name = name,
                  .output = output,
                  .flags = flags,
                  .mode = mode,
                  .parent = parent,
                  .defines = defines };
    TLP_MODULE *made = make_module(&read);
    *module = made;
    int32_t status = read_listed(&made, &read);
    *module = made;
    if (status < TLP_STATUS_FATAL) return status;
    TLP_DelModule(made);
    *module = nullptr;
    return status;
}

int32_t TLP_ReadModule(TLT_STATEMENT *statement, const char *name, TLP_MODULE **module,
                       FILE *output, uint32_t flags, int32_t mode, TLP_MODULE *parent)
{
    return TLP_ReadModule2(statement, name, module, output, flags, mode, parent, nullptr);
}
