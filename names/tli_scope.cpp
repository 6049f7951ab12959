// Scopes and domains: the stack of scopes, look-up, room for storage, walks, and what a domain uses.
#include "names/tli.h"

#include "core/hs.h"
#include "core/sh.h"
#include "core/st.h"
#include "frontend/tlt.h"
#include "names/tlit.h"

#include <cstring>

// The highest even 32-bit size: a scope never grows beyond it.
static constexpr int64_t scope_size_limit = INT32_MAX - 1;

// ---- Look-up ----

// A name on its way through several scopes.
struct KEY {
    const char *name;
    size_t length;
    uint32_t hash;
};

static KEY key_of(const char *name)
{
    const size_t length = strlen(name);
    return { .name = name, .length = length, .hash = HS_Hash(name, length) };
}

static uint64_t filter_bit(const KEY &key)
{
    return UINT64_C(1) << (key.hash & 63);
}

static TLI_IDENTIFIER *find_in_scope(const TLI_SCOPE *scope, const KEY &key)
{
    intptr_t found = 0;
    if ((scope->filter & filter_bit(key)) == 0) return nullptr;
    HS_FindHashed(scope->names, key.name, key.length, key.hash, &found);
    return reinterpret_cast<TLI_IDENTIFIER *>(found);
}

// From a scope down the stack; null is the end of it.
static TLI_IDENTIFIER *find_from_scope(const TLI_SCOPE *scope, const KEY &key)
{
    while (scope != nullptr) {
        TLI_IDENTIFIER *found = find_in_scope(scope, key);
        if (found != nullptr) return found;
        if (scope->next == scope) return nullptr;
        scope = scope->next;
    }
    return nullptr;
}

// The same, and then the data types and the language.
static TLI_IDENTIFIER *find_plain(const TLI_DOMAIN *data_types, const TLI_SCOPE *scope,
                                  const char *name)
{
    const KEY key = key_of(name);
    TLI_IDENTIFIER *found = find_from_scope(scope, key);
    if (found == nullptr && data_types != nullptr) found = find_from_scope(data_types->scope, key);
    if (found != nullptr) return found;
    return find_from_scope(TLIT_LanguageDomain()->scope, key);
}

TLI_IDENTIFIER *TLI_FindScopeIdentifier(const TLI_SCOPE *scope, const char *name)
{
    return find_in_scope(scope, key_of(name));
}

TLI_IDENTIFIER *TLI_FindDomainIdentifier(const TLI_DOMAIN *domain, const char *name)
{
    return find_from_scope(domain->scope, key_of(name));
}

const char *TLI_EnterName(TLI_SCOPE *scope, const char *name, TLI_IDENTIFIER *identifier)
{
    scope->filter |= filter_bit(key_of(name));
    scope->classes |= 1U << (identifier->class_record->flags & TLI_CLASS_MASK);
    return HS_NewName(scope->names, name, (intptr_t)identifier);
}

// "qualifier.name": the used domain, the used scope or the domain itself of that name decides.
static TLI_IDENTIFIER *find_qualified(const TLI_DOMAIN *domain, const char *qualifier,
                                      const char *name)
{
    intptr_t found = 0;
    if (HS_FindName(domain->used_domains, qualifier, &found)) {
        return TLI_FindDomainIdentifier(reinterpret_cast<TLI_DOMAIN *>(found), name);
    }
    if (HS_FindName(domain->used_scopes, qualifier, &found)) {
        return TLI_FindScopeIdentifier(reinterpret_cast<TLI_SCOPE *>(found), name);
    }
    if (strcmp(qualifier, domain->name) == 0) return TLI_FindDomainIdentifier(domain, name);
    return nullptr;
}

// 1 and the result if the name is a qualified one: with a "." among its first 31 characters.
static bool is_qualified(const TLI_DOMAIN *domain, const char *name, TLI_IDENTIFIER **found)
{
    const char *dot = strchr(name, '.');
    if (dot == nullptr || dot - name >= TLI_NAME_CAPACITY - 1) return false;
    char qualifier[TLI_NAME_CAPACITY];
    ST_Copy(qualifier, TLI_NAME_CAPACITY, name);
    qualifier[dot - name] = '\0';
    *found = find_qualified(domain, qualifier, &qualifier[dot - name + 1]);
    return true;
}

TLI_IDENTIFIER *TLI_FindIdentifier(const TLI_DOMAIN *data_types, const TLI_DOMAIN *domain,
                                   const char *name)
{
    TLI_IDENTIFIER *found = nullptr;
    if (is_qualified(domain, name, &found)) return found;
    return find_plain(data_types, domain->scope, name);
}

TLI_IDENTIFIER *TLI_FindHidden(const TLI_DOMAIN *data_types, const TLI_DOMAIN *domain,
                               const char *name)
{
    TLI_IDENTIFIER *found = nullptr;
    if (is_qualified(domain, name, &found)) return found;
    const TLI_SCOPE *top = domain->scope;
    return find_plain(data_types, top->next != top ? top->next : nullptr, name);
}

// ---- Domains ----

TLI_DOMAIN *TLI_NewDomain(const char *name)
{
    auto *domain = static_cast<TLI_DOMAIN *>(SH_NameAllocate(sizeof(TLI_DOMAIN), "TLI:TLI_DOMAIN"));
    ST_Copy(domain->name, TLI_NAME_CAPACITY, name);
    domain->used_domains = HS_NewDomain();
    domain->used_scopes = HS_NewDomain();
    return domain;
}

void TLI_DelDomain(TLI_DOMAIN *domain)
{
    if (domain == nullptr) return;
    HS_DelDomain(domain->used_domains);
    HS_DelDomain(domain->used_scopes);
    SH_Free(domain);
}

const char *TLI_DomainName(const TLI_DOMAIN *domain)
{
    return domain->name;
}

void TLI_UseDomain(TLI_DOMAIN *domain, const char *name, TLI_DOMAIN *used_domain)
{
    HS_NewName(domain->used_domains, name, (intptr_t)used_domain);
}

void TLI_DelUseDomain(TLI_DOMAIN *domain, const char *name)
{
    HS_DelName(domain->used_domains, name);
}

int32_t TLI_IsUsedDomain(const TLI_DOMAIN *domain, const char *name)
{
    return HS_FindName(domain->used_domains, name, nullptr);
}

TLI_DOMAIN *TLI_FindUsedDomain(const TLI_DOMAIN *domain, const char *name)
{
    intptr_t found = 0;
    if (!HS_FindName(domain->used_domains, name, &found)) return nullptr;
    return reinterpret_cast<TLI_DOMAIN *>(found);
}

void TLI_UseScope(TLI_DOMAIN *domain, const char *name, TLI_SCOPE *scope)
{
    HS_NewName(domain->used_scopes, name, (intptr_t)scope);
}

// ---- Scopes ----

TLI_SCOPE *TLI_NewScope(TLI_DOMAIN *domain, const char *name, int32_t type)
{
    auto *scope = static_cast<TLI_SCOPE *>(SH_AllocateRecord(sizeof(TLI_SCOPE), "TLI:SCOPE"));
    ST_Copy(scope->name, TLI_NAME_CAPACITY, name);
    scope->type = type;
    scope->domain = domain;
    scope->names = HS_NewDomain();
    return scope;
}

// A scope can be deleted while it is on the stack, as that of a record left open at the end of a
// source; nothing may find it there afterwards.
static void unlink_scope(TLI_SCOPE *scope)
{
    if (scope->depth == 0) return;
    TLI_SCOPE **link = &scope->domain->scope;
    while (*link != nullptr && *link != scope)
        link = &(*link)->next;
    if (*link == scope) *link = scope->next;
}

static int32_t free_entry(void *, const char *, intptr_t value)
{
    TLI_FreeIdentifier(reinterpret_cast<TLI_IDENTIFIER *>(value));
    return 1;
}

void TLI_OwnUnlisted(TLI_SCOPE *scope, TLI_IDENTIFIER *identifier)
{
    auto *entry =
        static_cast<TLI_UNLISTED *>(SH_NameAllocate(sizeof(TLI_UNLISTED), "TLI:UNLISTED"));
    identifier->scope = scope;
    entry->identifier = identifier;
    entry->next = scope->unlisted;
    scope->unlisted = entry;
}

static void free_unlisted(TLI_SCOPE *scope)
{
    TLI_UNLISTED *entry = scope->unlisted;
    while (entry != nullptr) {
        TLI_UNLISTED *next = entry->next;
        ST_Free(const_cast<char *>(entry->identifier->name));
        TLI_FreeIdentifier(entry->identifier);
        SH_Free(entry);
        entry = next;
    }
}

void TLI_DelScope(TLI_SCOPE *scope)
{
    if (scope == nullptr) return;
    unlink_scope(scope);
    HS_AllNames(scope->names, free_entry, nullptr);
    free_unlisted(scope);
    HS_DelDomain(scope->names);
    HS_DelName(scope->domain->used_scopes, scope->name);
    SH_Free(scope);
}

TLI_SCOPE *TLI_GetScope(TLI_DOMAIN *domain, TLT_STATEMENT *statement)
{
    if (domain->scope == nullptr) TLT_FatalError(statement, "Lost global scope??");
    return domain->scope;
}

void TLI_PushScope(TLI_DOMAIN *domain, TLI_SCOPE *scope)
{
    if (scope->depth == 0) {
        scope->next = domain->scope;
        domain->scope = scope;
    }
    scope->depth++;
}

int32_t TLI_PopScope(TLI_DOMAIN *domain)
{
    TLI_SCOPE *scope = domain->scope;
    if (scope == nullptr) return 0;
    scope->depth--;
    if (scope->depth == 0) {
        domain->scope = scope->next;
        scope->next = nullptr;
    }
    return 1;
}

void TLI_SetScopeIdentifier(TLI_SCOPE *scope, TLI_IDENTIFIER *identifier)
{
    scope->identifier = identifier;
}

TLI_IDENTIFIER *TLI_GetScopeIdentifier(const TLI_SCOPE *scope)
{
    return scope->identifier;
}

// ---- Storage ----

int32_t TLI_ScopeAllocate(TLI_SCOPE *scope, TLI_IDENTIFIER *type, int32_t dimension)
{
    const int32_t unit_size = TLIT_TypeSizeof(type, 1);
    if (unit_size == 0) return -1;
    int64_t offset = scope->size;
    if (unit_size > 1) offset += offset & 1;
    const int64_t end = offset + TLIT_TypeSizeof(type, dimension);
    if (end < 0 || end > scope_size_limit) return -1;
    scope->size = (int32_t)end;
    return (int32_t)offset;
}

int32_t TLI_ScopeSize(const TLI_SCOPE *scope)
{
    return scope->size + (scope->size & 1);
}

int32_t TLI_ScopeType(const TLI_SCOPE *scope)
{
    return scope->type;
}

int32_t TLI_ScopeAccessType(const TLI_SCOPE *scope)
{
    if (scope->type != TLI_FRAME_SCOPE) return scope->type;
    return scope->domain->scope == scope ? TLI_LOCAL : TLI_NON_LOCAL;
}

// ---- Walks ----

struct IDENTIFIER_WALK {
    TLI_IDENTIFIER_VISITOR action;
    void *context;
};

static int32_t visit_identifier(void *user, const char *name, intptr_t value)
{
    const auto *walk = static_cast<const IDENTIFIER_WALK *>(user);
    return walk->action(walk->context, name, reinterpret_cast<TLI_IDENTIFIER *>(value));
}

int32_t TLI_AllIdentifiers(TLI_SCOPE *scope, TLI_IDENTIFIER_VISITOR action, void *context)
{
    IDENTIFIER_WALK walk = { .action = action, .context = context };
    return HS_AllNames(scope->names, visit_identifier, &walk);
}

static int32_t add_to_list(void *context, const char *, TLI_IDENTIFIER *identifier)
{
    auto *list = static_cast<TLI_LIST *>(context);
    const size_t used = list->count * sizeof(TLI_IDENTIFIER *);
    list->names = static_cast<TLI_IDENTIFIER **>(
        SH_Grow(list->names, used, &list->size, used + sizeof(TLI_IDENTIFIER *)));
    list->names[list->count++] = identifier;
    return 1;
}

TLI_LIST TLI_ListIdentifiers(TLI_SCOPE *scope)
{
    TLI_LIST list = {};
    if (scope != nullptr) TLI_AllIdentifiers(scope, add_to_list, &list);
    return list;
}

struct SCOPE_WALK {
    TLI_SCOPE_VISITOR action;
    void *context;
};

static int32_t visit_scope(void *user, const char *name, intptr_t value)
{
    const auto *walk = static_cast<const SCOPE_WALK *>(user);
    return walk->action(walk->context, name, reinterpret_cast<TLI_SCOPE *>(value));
}

int32_t TLI_AllUseScopes(TLI_DOMAIN *domain, TLI_SCOPE_VISITOR action, void *context)
{
    SCOPE_WALK walk = { .action = action, .context = context };
    return HS_AllNames(domain->used_scopes, visit_scope, &walk);
}
