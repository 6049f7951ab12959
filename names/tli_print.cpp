// Listings of identifiers, scopes and domains.
#include "names/tli.h"

#include "core/hs.h"

#include <cstdio>

int32_t TLI_PrintIdentifier(FILE *stream, TLI_IDENTIFIER *identifier, TLP_MODULE *module)
{
    const TLI_CLASS *record = identifier->class_record;
    const char *type_name = identifier->type != nullptr ? identifier->type->name : "<NO TYPE>";
    fprintf(stream, "%-8s %-18s %-12s %s", TLI_ClassName(TLI_IdentifierClass(identifier)),
            record->class_name, type_name, identifier->name);
    for (const TLI_PRAGMA *pragma = identifier->pragmas; pragma != nullptr; pragma = pragma->next)
        fprintf(stream, " {%s=%s}", pragma->name, pragma->value);
    if (record->print != nullptr) return record->print(stream, identifier, module);
    return fprintf(stream, "\n");
}

struct PRINT_CONTEXT {
    FILE *stream;
    TLP_MODULE *module;
    TLI_DOMAIN *printed; // domains begun so far; modules may use one another in a circle
};

static int32_t print_entry(void *user, const char *, TLI_IDENTIFIER *identifier)
{
    const auto *context = static_cast<const PRINT_CONTEXT *>(user);
    TLI_PrintIdentifier(context->stream, identifier, context->module);
    return 1;
}

void TLI_PrintScope(FILE *stream, TLI_SCOPE *scope, TLP_MODULE *module)
{
    PRINT_CONTEXT context = { .stream = stream, .module = module, .printed = nullptr };
    fprintf(stream, "\nSCOPE %s\n\n", scope->name);
    TLI_AllIdentifiers(scope, print_entry, &context);
}

static void print_domain(PRINT_CONTEXT *context, TLI_DOMAIN *domain);

static int32_t print_used_domain(void *user, const char *, intptr_t value)
{
    auto *domain = reinterpret_cast<TLI_DOMAIN *>(value);
    if (!domain->is_printed) print_domain(static_cast<PRINT_CONTEXT *>(user), domain);
    return 1;
}

static void print_domain(PRINT_CONTEXT *context, TLI_DOMAIN *domain)
{
    domain->is_printed = 1;
    domain->next_printed = context->printed;
    context->printed = domain;
    fprintf(context->stream, "DOMAIN %s\n\n", domain->name);
    for (TLI_SCOPE *scope = domain->scope; scope != nullptr; scope = scope->next)
        TLI_PrintScope(context->stream, scope, context->module);
    fprintf(context->stream, "USED SCOPES :\n\n");
    HS_AllNames(domain->used_domains, print_used_domain, context);
}

void TLI_PrintDomain(FILE *stream, TLI_DOMAIN *domain, TLP_MODULE *module)
{
    PRINT_CONTEXT context = { .stream = stream, .module = module, .printed = nullptr };
    print_domain(&context, domain);
    while (context.printed != nullptr) {
        context.printed->is_printed = 0;
        context.printed = context.printed->next_printed;
    }
}
