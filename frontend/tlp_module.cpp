/*
 * Making and deleting modules and the names that they own. Names go before the statements that declare
 * them, and modules that use others before those, since what goes later is what the earlier points at.
 */
#include "frontend/tlp.h"

#include "core/sh.h"
#include "names/tli.h"

#include <ostrum/eep.h>
#include <ostrum/hs.h>
#include <ostrum/tlit.h>
#include <ostrum/tlt.h>

void TLP_MakeDomain(TLP_MODULE *module)
{
    module->domain = TLI_NewDomain(module->name);
    module->globals = TLI_NewScope(module->domain, "GLOBALS", TLI_STATIC_SCOPE);
    TLI_PushScope(module->domain, module->globals);
    TLI_NewScopeIdentifier(module->globals, nullptr, module->name, nullptr, nullptr);
    module->open_record = nullptr;
}

static void delete_scope(TLI_SCOPE **scope)
{
    if (*scope != nullptr) TLI_DelScope(*scope);
    *scope = nullptr;
}

void TLP_DeleteDomain(TLP_MODULE *module)
{
    while (module->open_functions != nullptr)
        TLP_CloseFunction(module);
    if (module->domain == nullptr) return;
    while (module->domain->scope != nullptr)
        TLI_PopScope(module->domain);
    delete_scope(&module->statics);
    delete_scope(&module->globals);
    TLI_DelDomain(module->domain);
    module->domain = nullptr;
    module->open_record = nullptr;
}

static void delete_list(TLP_USED_MODULE **list)
{
    while (*list != nullptr) {
        TLP_USED_MODULE *used = *list;
        *list = used->next;
        TLP_DelModule(used->module);
        SH_Free(used);
    }
}

void TLP_DeleteUsedModules(TLP_MODULE *module)
{
    delete_list(&module->lost_modules);
    delete_list(&module->used_modules);
    HS_DelDomain(module->used_names);
    HS_DelDomain(module->used_table);
    module->used_names = HS_NewDomain();
    module->used_table = HS_NewDomain();
}

void TLP_DeleteDataTypes(TLP_MODULE *module)
{
    TLI_DOMAIN *domain = module->data_type_domain;
    if (domain == nullptr) return;
    TLI_SCOPE *scope = domain->scope;
    TLI_PopScope(domain);
    delete_scope(&scope);
    TLI_DelDomain(domain);
    module->data_type_domain = nullptr;
}

TLP_MODULE *TLP_NewModule(const char *name, TLP_MODULE *parent)
{
    (void)name;
    auto *module =
        static_cast<TLP_MODULE *>(SH_NameAllocate(int32_t{ sizeof(TLP_MODULE) }, "TLP:MODULE"));
    module->root = parent == nullptr ? module : parent->root;
    module->suppressed_warnings = HS_NewDomain();
    module->used_names = HS_NewDomain();
    module->used_table = HS_NewDomain();
    TLIT_SetupDataType(module);
    if (parent == nullptr) module->syscall_data = EEP_NewModule();
    return module;
}

static void delete_sections(TLP_SECTION *section)
{
    while (section != nullptr) {
        TLP_SECTION *next = section->next;
        TLP_DelSection(nullptr, section);
        section = next;
    }
}

static void delete_statements(TLP_MODULE *module)
{
    delete_sections(module->sections);
    delete_sections(module->hidden_sections);
    for (size_t i = 0; i < module->dropped_count; i++)
        TLT_DelStatement(module->dropped[i]);
    SH_Free(module->dropped);
}

/** What only the head of a tree of USES has, and what others must leave to it. */
static void delete_shared(TLP_MODULE *module)
{
    bool shares_types = module->data_type_domain == module->root->data_type_domain;
    if (module->root == module || !shares_types) TLP_DeleteDataTypes(module);
    EEP_DelModule(module->syscall_data);
}

void TLP_DelModule(TLP_MODULE *module)
{
    if (module == nullptr) return;
    TLP_CloseFiles(module);
    TLP_DeleteDomain(module);
    TLP_DeleteUsedModules(module);
    HS_DelDomain(module->used_names);
    HS_DelDomain(module->used_table);
    HS_DelDomain(module->suppressed_warnings);
    delete_statements(module);
    delete_shared(module);
    SH_Free(module);
}
