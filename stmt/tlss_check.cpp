/*
 * What is checked of SWITCH, NODE, SUBTREE, LEAF and GOTO once the whole body is known, and the set
 * of values that finds a value given twice.
 */
#include "stmt/tlss.h"

#include "names/tlit.h"
#include <ostrum/sh.h>
#include <ostrum/tli.h>
#include <ostrum/tlic.h>
#include <ostrum/tlp.h>

/* ---- Values met ---- */

enum : uint32_t { SMALLEST_SET = 16 };

/* The place that holds the value, or the free one where it belongs. */
static uint32_t *find_place(const TLSS_VALUE_SET *set, uint32_t mark)
{
    constexpr uint64_t golden = 0x9E3779B97F4A7C15u;
    uint32_t mask = set->capacity - 1;
    uint32_t at = static_cast<uint32_t>(mark * golden >> 32) & mask;
    while (set->places[at] != 0 && set->places[at] != mark)
        at = (at + 1) & mask;
    return &set->places[at];
}

static void grow_set(TLSS_VALUE_SET *set)
{
    const TLSS_VALUE_SET old = *set;
    set->capacity = old.capacity == 0 ? SMALLEST_SET : old.capacity * 2;
    set->places = static_cast<uint32_t *>(
        SH_NameAllocate(static_cast<int32_t>(set->capacity * sizeof(uint32_t)), "TLSS:VALUE_SET"));
    for (uint32_t i = 0; i < old.capacity; i++) {
        if (old.places[i] != 0) *find_place(set, old.places[i]) = old.places[i];
    }
    SH_Free(old.places);
}

bool TLSS_AddToSet(TLSS_VALUE_SET *set, int32_t value)
{
    if (set->count >= set->capacity / 2) grow_set(set);
    uint32_t mark = static_cast<uint32_t>(value) + 1;
    uint32_t *place = find_place(set, mark);
    if (*place == mark) return false;
    *place = mark;
    set->count++;
    return true;
}

/* ---- Checks ---- */

static TLSS_SWITCH *find_target(TLS_BLOCK *block, TLT_STATEMENT *statement, const char *name)
{
    TLI_IDENTIFIER *node = TLP_FindIdentifier(block->module, statement, name, TLI_NODE);
    return TLSS_AsSwitch(static_cast<TLS_STATEMENT *>(TLIC_NodeData(node)));
}

static void check_node_leg(TLS_BLOCK *block, TLSS_CASE *leg, bool is_enumeration)
{
    if (leg->values != nullptr && !is_enumeration) {
        TLT_Error(leg->statement, "CASE values only permitted with enumerations");
    }
    if (leg->goto_name != nullptr) {
        leg->target = find_target(block, leg->statement, leg->goto_name);
    }
}

/* False if the check ends here. */
static bool check_node(TLS_BLOCK *block, TLSS_SWITCH *record)
{
    TLI_IDENTIFIER *type = record->expression_type;
    bool is_enumeration = TLIT_IsEnumeration(type);
    for (TLSS_CASE *leg = record->legs; leg != nullptr; leg = leg->next)
        check_node_leg(block, leg, is_enumeration);
    uint32_t range = is_enumeration ? static_cast<uint32_t>(TLIT_EnumRange(type)) : 0;
    if (!is_enumeration || record->values.count == range) return true;
    TLT_Error(record->common.statement, "All CASE values must be specified");
    return false;
}

static bool check_by_token(TLS_BLOCK *block, TLSS_SWITCH *record)
{
    TLT_STATEMENT *statement = record->common.statement;
    if (TLSS_IsNode(record)) return check_node(block, record);
    if (record->token == TLT_TOKEN_SWITCH && record->legs == nullptr) {
        TLT_Error(statement, "No CASE values for SWITCH statement");
        return false;
    }
    if (record->token == TLT_TOKEN_LEAF && record->legs != nullptr) {
        TLT_Error(statement, "CASE values not permitted with LEAF");
    }
    return true;
}

void TLSS_CheckSwitch(TLS_BLOCK *block, TLS_STATEMENT *common)
{
    TLSS_SWITCH *record = TLSS_AsSwitch(common);
    if (!check_by_token(block, record)) return;
    int64_t size = static_cast<int64_t>(record->highest_case) - record->lowest_case + 1;
    if (size >= TLSS_TABLE_LIMIT) {
        TLT_Error(common->statement, "Too many CASE values (implementation restriction)");
    }
    for (TLSS_CASE *leg = record->legs; leg != nullptr; leg = leg->next)
        TLS_CheckBlock(leg->block);
    TLS_CheckBlock(record->default_block);
}

void TLSS_CheckGoto(TLS_BLOCK *block, TLS_STATEMENT *common)
{
    auto *record = reinterpret_cast<TLSS_GOTO *>(common);
    if (record->name == nullptr) return;
    record->target = find_target(block, common->statement, record->name);
}
