/*
 * What a name means across modules, and warnings that a module gives once.
 */
#include "frontend/tlp.h"

#include "frontend/tlt.h"
#include "names/tli.h"

#include <ostrum/hs.h>
#include <ostrum/st.h>
#include <string.h>

enum {
    WARNING_SIZE = 120, // bytes of a strict warning with its suffix
};

static TLI_IDENTIFIER *find_in_module(TLP_MODULE *module, const char *name)
{
    if (module->domain == nullptr) return nullptr;
    return TLI_FindIdentifier(module->data_type_domain, module->domain, name);
}

/** Looks in the module, then in the root. */
static TLI_IDENTIFIER *find_in_both(TLP_MODULE *module, const char *name)
{
    TLI_IDENTIFIER *found = find_in_module(module, name);
    if (found != nullptr || module->root == module) return found;
    return find_in_module(module->root, name);
}

/**
 * Looks in the used modules, newest first, up to a name that needs no tag. Only the last look-up counts.
 * The root, which each look-up would fall back on, is known not to have the name.
 */
static TLI_IDENTIFIER *find_in_used(TLP_MODULE *root, const char *name)
{
    TLI_IDENTIFIER *found = nullptr;
    for (TLP_USED_MODULE *used = root->used_modules; used != nullptr; used = used->next) {
        found = find_in_module(used->module, name);
        if (found != nullptr && TLI_FindPragma(found, "NOTAG") != nullptr) return found;
    }
    return found;
}

TLI_IDENTIFIER *TLP_LookUpIdentifier(TLP_MODULE *module, const char *name)
{
    TLI_IDENTIFIER *found = find_in_both(module, name);
    return found != nullptr ? found : find_in_used(module->root, name);
}

TLI_IDENTIFIER *TLP_FindIdentifier(TLP_MODULE *module, TLT_STATEMENT *statement, const char *name,
                                   int32_t identifier_class)
{
    TLI_IDENTIFIER *found = TLP_LookUpIdentifier(module, name);
    if (found == nullptr) {
        TLT_RaiseFormatted(statement, TLT_LEVEL_ERROR, "'%s' - Unknown identifier", name);
        return nullptr;
    }
    if (identifier_class == 0 || TLI_IdentifierClass(found) == identifier_class) return found;
    TLT_RaiseFormatted(statement, TLT_LEVEL_ERROR, "'%s' - Wrong class of identifier", name);
    return nullptr;
}

/** 1 if the client's defines make the module one of those that give no strict warnings. */
static int32_t is_lenient(const TLP_MODULE *module)
{
    for (const char *name : module->define_names)
        if (strcmp(name, "SPECIFICATION") == 0) return 1;
    return 0;
}

void TLP_StrictWarning(TLP_MODULE *module, TLT_STATEMENT *statement, const char *text)
{
    char warning[WARNING_SIZE];
    if ((module->flags & TLP_FLAG_STRICT) != 0) {
        TLT_Warning(statement, text);
        return;
    }
    if (is_lenient(module)) return;
    if (HS_FindName(module->suppressed_warnings, text, nullptr)) return;
    ST_Copy(warning, WARNING_SIZE, text);
    ST_Append(warning, WARNING_SIZE, " - further warnings in this category suppressed");
    TLT_Warning(statement, warning);
    HS_NewName(module->suppressed_warnings, text, 1);
}
