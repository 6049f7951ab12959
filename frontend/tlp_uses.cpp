/*
 * USES: reading the public portions of other modules, each once, and making them visible.
 */
#include "frontend/tlp.h"

#include "core/sh.h"
#include "frontend/tlt.h"

#include <ostrum/hs.h>
#include <ostrum/st.h>
#include <ostrum/tli.h>
#include <string.h>

enum {
    DEPTH_LIMIT = 1000, // reads of USES within one another; each takes stack
};

static TLP_USES_CHECKER uses_checker;
static void *uses_checker_context;

void TLP_SetExternalDTypeUsesChecker(void *context, TLP_USES_CHECKER checker)
{
    uses_checker_context = context;
    uses_checker = checker;
}

static void push_used(TLP_USED_MODULE **list, TLP_MODULE *module)
{
    auto *used = static_cast<TLP_USED_MODULE *>(
        SH_NameAllocate(int32_t{ sizeof(TLP_USED_MODULE) }, "TLP:USED_MODULE"));
    used->module = module;
    used->next = *list;
    *list = used;
}

void TLP_UseIncludedModule(TLP_MODULE *module)
{
    TLP_MODULE *root = module->root;
    if (root == nullptr || root == module) return;
    if (root->domain == nullptr || module->domain == nullptr) return;
    if (!TLI_IsUsedDomain(root->domain, module->name)) {
        push_used(&root->used_modules, module);
        HS_NewName(root->used_names, module->name, reinterpret_cast<intptr_t>(module));
    } else {
        // Another module of this name stays where it is and is hidden; this one is owned all the same.
        TLI_DelUseDomain(root->domain, module->name);
        push_used(&root->lost_modules, module);
    }
    TLI_UseDomain(root->domain, module->name, module->domain);
}

/** Context of a walk of a module's used table. */
struct USES_WALK {
    TLP_MODULE_VISITOR visitor;
    void *context;
};

static int32_t visit_used(void *user, const char *name, intptr_t value)
{
    const auto *walk = static_cast<const USES_WALK *>(user);
    return walk->visitor(walk->context, name, reinterpret_cast<TLP_MODULE *>(value));
}

int32_t TLP_AllUsesModules(TLP_MODULE *module, TLP_MODULE_VISITOR visitor, void *context)
{
    USES_WALK walk = { .visitor = visitor, .context = context };
    return HS_AllNames(module->used_table, visit_used, &walk);
}

/** 1 if a module of this name, or from a file of this name, is being read: the root, or one of a cycle. */
static int32_t is_under_way(const TLP_MODULE *root, const char *name)
{
    if (strcmp(root->name, name) == 0) return 1;
    for (const TLP_MODULE *at = root->reading; at != nullptr; at = at->reading_outer)
        if (strcmp(at->name, name) == 0 || strcmp(at->file_name, name) == 0) return 1;
    return 0;
}

static int32_t is_known(TLP_MODULE *root, const char *name)
{
    if (is_under_way(root, name)) return 1;
    return root->domain != nullptr && TLI_IsUsedDomain(root->domain, name);
}

static void enter_used(TLP_MODULE *module, const char *name, TLP_MODULE *used)
{
    HS_NewName(module->used_table, name, reinterpret_cast<intptr_t>(used));
}

/** Notes the use of a module that needs no read. */
static void use_known(TLP_MODULE *module, const char *name)
{
    intptr_t used = 0;
    if ((module->flags & TLP_FLAG_PROGRESS) != 0)
        printf("-- USE %s ignored - already used\n", name);
    if (HS_FindName(module->root->used_names, name, &used))
        enter_used(module, name, reinterpret_cast<TLP_MODULE *>(used));
}

/** Reads a module for USES. Gives null after a fatal message. */
static TLP_MODULE *read_used(TLP_MODULE *module, TLT_STATEMENT *statement, const char *name)
{
    char file[TLT_TEXT_SIZE];
    TLP_MODULE *used = nullptr;
    if (module->root->reading_depth >= DEPTH_LIMIT) {
        TLT_FatalError(statement, "USES nested too deeply");
        return nullptr;
    }
    ST_Lower(file, TLT_TEXT_SIZE, name);
    int32_t status = TLP_ReadModule2(statement, file, &used, module->output, module->flags,
                                     TLP_READ_PUBLIC, module->root, module->defines_text);
    if (status < TLP_STATUS_ERRORS) return used;
    TLT_RaiseFormatted(statement, TLT_LEVEL_FATAL, "Failed to USE module '%s' : %s", name,
                       TLP_Message(status));
    TLP_DelModule(used);
    return nullptr;
}

static void use_new(TLP_MODULE *module, TLT_STATEMENT *statement, const char *name)
{
    TLP_MODULE *used = read_used(module, statement, name);
    TLP_MODULE *root = module->root;
    if (used == nullptr) return;
    if (used->root == root && used->domain != nullptr)
        TLP_UseIncludedModule(used);
    else
        push_used(&root->lost_modules, used); // a root of its own or without names: owned, not seen
    enter_used(module, name, used);
    if (uses_checker != nullptr)
        root->runtime_mismatch = uses_checker(name, uses_checker_context, root->private_flag);
}

/**
 * Consumes one token, whatever it is. Gives 0 if it is no name. Only a name is copied, since another token
 * may be too long for that.
 */
static int32_t take_name(TLT_STATEMENT *statement, char *name)
{
    if (TLT_GetToken(statement, nullptr) != TLT_TOKEN_IDENTIFIER) return 0;
    auto length = static_cast<size_t>(statement->token_length);
    memcpy(name, TLT_TokenText(statement), length);
    name[length] = 0;
    return 1;
}

void TLP_UsesRule(TLP_MODULE *module, TLT_STATEMENT *statement)
{
    char name[TLT_TEXT_SIZE];
    while (!module->root->runtime_mismatch) {
        if (!take_name(statement, name)) return;
        ST_Upper(name, TLT_TEXT_SIZE, name);
        if (is_known(module->root, name))
            use_known(module, name);
        else
            use_new(module, statement, name);
    }
}
