/*
 * Generators: what all targets share. Walks over names keep a list of their own, since functions may
 * stand in one another as deep as the source likes.
 */
#include "codegen/tlcg.h"

#include <cstdio>
#include <iterator>

#include "codegen/tlc.h"
#include "core/sh.h"
#include "names/tli.h"
#include <ostrum/f.h>
#include <ostrum/kob.h>
#include <ostrum/tle.h>
#include <ostrum/tli.h>
#include <ostrum/tlit.h>
#include <ostrum/tliv.h>
#include <ostrum/tlp.h>
#include <ostrum/tls.h>

enum { TEXT_BUFFER_SIZE = 65536 };

static constexpr size_t first_set_capacity = 64;

static const char *const messages[] = {
    "Successful",
    "Can't open the 'C' output file",
    "Can't open the 'Java' output file",
};

void TLCG_Initialise()
{
    static bool is_initialised;
    if (is_initialised) return;
    is_initialised = true;
    TLP_Initialise();
    TLI_Initialise();
    TLIT_Initialise();
    TLE_Initialise();
    TLS_Initialise();
    TLC_Initialise();
    KOB_Initialise();
}

const char *TLCG_Message(int32_t result)
{
    if (result >= TLCG_KOB_RESULT) return KOB_Message(result - TLCG_KOB_RESULT);
    if (result < 0 || result >= static_cast<int32_t>(std::size(messages))) {
        return "Unknown result of a generator";
    }
    return messages[result];
}

static TLCG_VISIT *add_visit(TLCG_CONTEXT *context, TLI_IDENTIFIER *identifier)
{
    TLCG_WORK *work = &context->work;
    const size_t used = work->count * sizeof(TLCG_VISIT);
    size_t capacity = work->capacity * sizeof(TLCG_VISIT);
    work->visits = static_cast<TLCG_VISIT *>(
        SH_Grow(work->visits, used, &capacity, used + sizeof(TLCG_VISIT)));
    work->capacity = capacity / sizeof(TLCG_VISIT);
    TLCG_VISIT *visit = &work->visits[work->count++];
    visit->identifier = identifier;
    visit->is_entered = false;
    visit->is_public = context->is_public;
    return visit;
}

void TLCG_Push(TLCG_CONTEXT *context, TLI_IDENTIFIER *identifier)
{
    add_visit(context, identifier);
}

void TLCG_Enter(TLCG_CONTEXT *context, TLI_IDENTIFIER *function)
{
    add_visit(context, function)->is_entered = true;
}

bool TLCG_Pop(TLCG_CONTEXT *context, TLCG_VISIT *visit)
{
    if (context->work.count == 0) return false;
    *visit = context->work.visits[--context->work.count];
    return true;
}

struct FILTERED_PUSH {
    TLCG_CONTEXT *context;
    bool (*filter)(TLI_IDENTIFIER *identifier);
};

static int32_t push_filtered(void *context, const char *, TLI_IDENTIFIER *identifier)
{
    const FILTERED_PUSH *push = static_cast<const FILTERED_PUSH *>(context);
    if (push->filter(identifier)) TLCG_Push(push->context, identifier);
    return 1;
}

/** Turns the visits from first on round. */
static void reverse_visits(TLCG_WORK *work, size_t first)
{
    for (size_t last = work->count; first + 1 < last; first++) {
        last--;
        const TLCG_VISIT visit = work->visits[first];
        work->visits[first] = work->visits[last];
        work->visits[last] = visit;
    }
}

static constexpr uint32_t pushed_classes =
    1U << TLI_CONSTANT | 1U << TLI_NON_VOLATILE | 1U << TLI_FUNCTION | 1U << TLI_NODE;

void TLCG_PushScope(TLCG_CONTEXT *context, TLI_SCOPE *scope,
                    bool (*filter)(TLI_IDENTIFIER *identifier))
{
    if (scope == nullptr || (scope->classes & pushed_classes) == 0) return;
    FILTERED_PUSH push = { .context = context, .filter = filter };
    const size_t first = context->work.count;
    TLI_AllIdentifiers(scope, push_filtered, &push);
    reverse_visits(&context->work, first);
}

void TLCG_ReleaseContext(TLCG_CONTEXT *context)
{
    SH_Free(context->work.visits);
    SH_Free(context->records.records);
    TLCG_DropSet(&context->generated);
    context->work = {};
    context->records = {};
}

/** Slot of an address: where it is, or where it would go. The set has an empty slot. */
static size_t find_slot(const TLCG_SET &set, const void *address)
{
    const uint64_t bits = reinterpret_cast<uintptr_t>(address) / 16;
    size_t slot = static_cast<size_t>(bits * 0x9e3779b97f4a7c15u >> 32) & (set.capacity - 1);
    while (set.slots[slot] != nullptr && set.slots[slot] != address) {
        slot = (slot + 1) & (set.capacity - 1);
    }
    return slot;
}

static void grow_set(TLCG_SET *set)
{
    const TLCG_SET old = *set;
    set->capacity = old.capacity == 0 ? first_set_capacity : old.capacity * 2;
    set->slots = static_cast<const void **>(SH_AllocateBytes(set->capacity * sizeof(void *)));
    for (size_t at = 0; at < old.capacity; at++) {
        const void *address = old.slots[at];
        if (address != nullptr) set->slots[find_slot(*set, address)] = address;
    }
    SH_Free(old.slots);
}

void TLCG_DropSet(TLCG_SET *set)
{
    SH_Free(set->slots);
    *set = {};
}

bool TLCG_IsInSet(const TLCG_SET &set, const void *address)
{
    return set.count > 0 && set.slots[find_slot(set, address)] != nullptr;
}

bool TLCG_AddToSet(TLCG_SET *set, const void *address)
{
    if (set->count * 2 >= set->capacity) grow_set(set);
    const size_t slot = find_slot(*set, address);
    if (set->slots[slot] != nullptr) return false;
    set->slots[slot] = address;
    set->count++;
    return true;
}

static bool has_block(TLI_IDENTIFIER *identifier)
{
    return TLI_IdentifierClass(identifier) == TLI_FUNCTION &&
           TLIV_GetFunctionBlock(identifier) != nullptr;
}

static void generate_block(TLCG_CONTEXT *context, TLS_BLOCK *block)
{
    if (!TLCG_AddToSet(&context->generated, block)) return;
    TLS_BlockCode(context->stream, block);
    if ((context->flags & TLC_FLAG_BLOCKS) != 0) TLS_PrintBlock("BLOCK", block, 0);
    if (TLS_GetBlockSectionType(block) == TLP_SECTION_TREE) context->has_tree = true;
}

/** Generates a function behind all functions inside it; their scopes are on the stack meanwhile. */
static void generate_function(TLCG_CONTEXT *context, TLI_IDENTIFIER *function)
{
    TLCG_VISIT visit;
    TLI_DOMAIN *domain = TLP_ModuleDomain(context->module);
    TLCG_Push(context, function);
    while (TLCG_Pop(context, &visit)) {
        if (visit.is_entered) {
            generate_block(context, TLIV_GetFunctionBlock(visit.identifier));
            TLIV_PopScope(domain, visit.identifier);
            continue;
        }
        TLIV_PushScope(domain, visit.identifier);
        TLCG_Enter(context, visit.identifier);
        TLCG_PushScope(context, TLIV_FunctionScope(visit.identifier), has_block);
    }
}

static int32_t generate_named_section(void *user, const char *, TLP_SECTION *section, int32_t type)
{
    TLCG_CONTEXT *context = static_cast<TLCG_CONTEXT *>(user);
    const bool is_code = type == TLP_SECTION_FUNCTION || type == TLP_SECTION_TREE;
    if (context->skips_data && !is_code) return 1;
    TLI_IDENTIFIER *identifier = TLP_GetSectionIdentifier(context->module, section);
    if (identifier != nullptr && has_block(identifier)) generate_function(context, identifier);
    return 1;
}

void TLCG_GenerateSections(TLCG_CONTEXT *context)
{
    TLP_AllSections(context->module, generate_named_section, context);
}

const char *TLCG_FileName(const char *path)
{
    const char *name = path;
    for (const char *at = path; *at != '\0'; ++at) {
        if (*at == '/' || *at == '\\' || *at == ':') name = at + 1;
    }
    return name;
}

FILE *TLCG_OpenText(const char *path)
{
    constexpr int32_t for_writing = 1;
    FILE *file = nullptr;
    if (F_OpenFile(&file, path, for_writing) != 0) return nullptr;
    std::setvbuf(file, nullptr, _IOFBF, TEXT_BUFFER_SIZE);
    return file;
}

bool TLCG_CloseText(FILE *file)
{
    const bool has_failed = std::ferror(file) != 0;
    return std::fclose(file) == 0 && !has_failed;
}
