/*
 * Life of the front end, and what a client asks of a module.
 */
#include "frontend/tlp.h"

#include "names/tli.h"

#include <ostrum/hs.h>
#include <ostrum/quillreg.h>
#include <ostrum/st.h>
#include <ostrum/tlc.h>
#include <ostrum/tle.h>
#include <ostrum/tlit.h>
#include <ostrum/tls.h>
#include <ostrum/tlt.h>

FILE *TOLL_Output;

static const char *const status_texts[] = {
    "Successful",
    "Warnings",
    "Errors",
    "FATAL ERROR",
    "Module does not have any PRIVATE functions",
    "Uncompiled",
    "File cannot be opened",
};
static_assert(sizeof status_texts / sizeof status_texts[0] == TLP_STATUS_COUNT,
              "one text a status");

void TLP_Initialise(void)
{
    static int32_t is_initialised;
    if (is_initialised) return;
    is_initialised = 1;
    TLT_Initialise();
    TLI_Initialise();
    TLE_Initialise();
    TLS_Initialise();
    TLC_Initialise();
    HS_Initialise();
    TLP_SetExternalTLReader(nullptr, nullptr);
    TLP_SetExternalDTypeUsesChecker(nullptr, nullptr);
}

/** Deletes what the language predeclares, and the types that stand in no scope. */
static void delete_language(void)
{
    TLI_DOMAIN *domain = TLIT_LanguageDomain();
    if (domain == nullptr) return;
    TLI_SCOPE *scope = domain->scope;
    TLI_PopScope(domain);
    if (scope != nullptr) TLI_DelScope(scope);
    TLI_DelDomain(domain);
    TLI_DelIdentifier(TLIT_DataType);
    TLI_DelIdentifier(TLIT_CodeType);
    TLI_DelIdentifier(TLIT_PtrType);
    TLI_DelIdentifier(TLIT_ArrayType);
}

void TLP_CleanUp(void)
{
    static int32_t is_clean;
    if (is_clean) return;
    is_clean = 1;
    delete_language();
    TLT_CleanUp();
    TLS_CleanUp();
    TLC_CleanUp();
    HS_CleanUp();
    QUILLREG_CleanUp();
}

const char *TLP_Message(int32_t status)
{
    static char text[48];
    if (status >= 0 && status < TLP_STATUS_COUNT) return status_texts[status];
    snprintf(text, sizeof text, "TLP_Message : Number = %d\n", status);
    return text;
}

const char *TLP_ModuleName(TLP_MODULE *module)
{
    return module->name;
}

void TLP_SetModuleName(TLP_MODULE *module, const char *name)
{
    ST_Upper(module->name, TLP_NAME_SIZE, name);
}

const char *TLP_ModuleSourceFile(TLP_MODULE *module)
{
    return module->source_file;
}

uint32_t TLP_ModuleFlags(TLP_MODULE *module)
{
    return module->flags;
}

void TLP_SetModuleFlags(TLP_MODULE *module, uint32_t flags)
{
    module->flags = flags;
}

int32_t TLP_ModuleSourceType(TLP_MODULE *module)
{
    return module->source_type;
}

void TLP_SetModuleOut(TLP_MODULE *module, FILE *output)
{
    module->output = output;
    TOLL_Output = output;
}

TLI_DOMAIN *TLP_DataTypeDomain(TLP_MODULE *module)
{
    return module == nullptr ? nullptr : module->data_type_domain;
}

void TLP_SetDataTypeDomain(TLP_MODULE *module, TLI_DOMAIN *domain)
{
    module->data_type_domain = domain;
}

TLI_DOMAIN *TLP_ModuleDomain(TLP_MODULE *module)
{
    return module->domain;
}

TLI_SCOPE *TLP_ModuleGlobals(TLP_MODULE *module)
{
    return module->globals;
}

TLI_SCOPE *TLP_ModuleStatics(TLP_MODULE *module)
{
    return module->statics;
}

EEP_MODULE *TLP_SyscallData(TLP_MODULE *module)
{
    return module->root->syscall_data;
}

int32_t TLP_GetPossUnintendAssignInfo(TLP_MODULE *module)
{
    return static_cast<int32_t>(module->flags & TLP_FLAG_POSSIBLE_ASSIGNMENT);
}

/** Index of the first statement that is on the line or behind it, where the lines do not go back. */
static size_t first_not_before(const TLP_SECTION *section, int32_t line)
{
    size_t low = 0;
    size_t high = section->statement_count;
    while (low < high) {
        const size_t middle = low + (high - low) / 2;
        if (TLT_StatementSourceLineNumber(section->statements[middle]) < line)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

// Asked for each code error, so a section of one file is not walked from its start each time.
const char *TLP_GetSourceFromLineNumber(TLP_MODULE *module, int32_t source_line_number)
{
    const TLP_SECTION *section = module->current_section;
    if (section == nullptr) return "";
    size_t i = section->goes_back ? 0 : first_not_before(section, source_line_number);
    for (; i < section->statement_count; i++) {
        TLT_STATEMENT *statement = section->statements[i];
        const int32_t line = TLT_StatementSourceLineNumber(statement);
        if (line == source_line_number) return TLT_StatementChars(statement);
        if (!section->goes_back) break;
    }
    return "";
}
