/*
 * The walk over a tree as a graph: nodes in the first pass, edges in the second. Any further pass
 * only asks for the handle of a statement.
 */
#include "stmt/tlss.h"

/* Pass that asks for a handle. */
enum : int32_t { PASS_HANDLE = 2 };

void TLSS_SetCallbacks(const TLSS_CALLBACKS *callbacks)
{
    TLSS_Callbacks = callbacks;
}

/* ---- Walk ---- */

TLS_BLOCK *TLS_BlockTree(int32_t pass, void *context, TLS_BLOCK *block)
{
    if (block == nullptr) return nullptr;
    for (TLS_STATEMENT *record = block->statements; record != nullptr; record = record->next) {
        auto tree = record->statement_class->tree;
        if (tree != nullptr && tree(block, pass, context, record) == nullptr) return nullptr;
    }
    return pass == TLSS_PASS_NODES ? block : nullptr;
}

void *TLS_StatementNode(void *context, TLS_BLOCK *block, TLS_STATEMENT *record)
{
    if (record == nullptr || record->statement_class->tree == nullptr) return nullptr;
    return record->statement_class->tree(block, PASS_HANDLE, context, record);
}

void *TLS_BlockNode(void *context, TLS_BLOCK *block)
{
    TLS_STATEMENT *record = block == nullptr ? nullptr : block->statements;
    void *handle = nullptr;
    for (; record != nullptr && handle == nullptr; record = record->next)
        handle = TLS_StatementNode(context, block, record);
    return handle;
}

/* ---- Entries ---- */

void *TLSS_HeadTree(TLS_BLOCK *block, int32_t pass, void *context, TLS_STATEMENT *record)
{
    TLS_BLOCK *body = reinterpret_cast<TLS_FUNCTION *>(record)->body;
    TLS_BLOCK *answer = TLS_BlockTree(pass, context, body);
    if (pass == TLSS_PASS_NODES) return answer == nullptr ? nullptr : block;
    /* A body at the column of END lies behind the head, and is still to be walked. */
    if (pass == TLSS_PASS_EDGES && TLS_EmptyBlock(body)) return block;
    return TLS_BlockNode(context, body);
}

static void *new_node(const TLSS_SWITCH *record, void *context)
{
    if (TLSS_Callbacks == nullptr) return nullptr;
    auto make =
        record->token == TLT_TOKEN_LEAF ? TLSS_Callbacks->new_leaf : TLSS_Callbacks->new_node;
    if (make == nullptr) return nullptr;
    return make(context, record->common.statement, record->node_identifier, record->expression);
}

static void link_to(void *context, const TLSS_SWITCH *from, int32_t value, void *to,
                    const char *value_name)
{
    if (to == nullptr || TLSS_Callbacks == nullptr || TLSS_Callbacks->link == nullptr) return;
    TLSS_Callbacks->link(context, from->tree_node, value, to, value_name);
}

static void link_legs(TLS_BLOCK *block, void *context, const TLSS_SWITCH *record)
{
    for (const TLSS_CASE *leg = record->legs; leg != nullptr; leg = leg->next) {
        if (leg->target == nullptr) continue;
        for (const TLSS_CASE_VALUE *value = leg->values; value != nullptr; value = value->next) {
            void *to = TLS_StatementNode(context, block, &leg->target->common);
            link_to(context, record, value->value, to, value->name);
        }
    }
}

static void link_fall(TLS_BLOCK *block, void *context, const TLSS_SWITCH *record)
{
    if (record->token == TLT_TOKEN_LEAF || record->no_fall) return;
    void *to = TLS_StatementNode(context, block, record->common.next);
    link_to(context, record, 0, to, "");
}

static void link_node(TLS_BLOCK *block, void *context, TLSS_SWITCH *record)
{
    if (record->legs != nullptr) {
        link_legs(block, context, record);
    } else {
        link_fall(block, context, record);
    }
    bool is_told = TLSS_Callbacks != nullptr && TLSS_Callbacks->subtree != nullptr;
    if (record->token != TLT_TOKEN_SUBTREE || !is_told) return;
    record->tree_node = TLSS_Callbacks->subtree(context, record->tree_node, record->node_name);
}

void *TLSS_SwitchTree(TLS_BLOCK *block, int32_t pass, void *context, TLS_STATEMENT *common)
{
    TLSS_SWITCH *record = TLSS_AsSwitch(common);
    if (pass == TLSS_PASS_NODES) record->tree_node = new_node(record, context);
    if (pass == TLSS_PASS_EDGES) link_node(block, context, record);
    return record->tree_node;
}

void *TLSS_GotoTree(TLS_BLOCK *, int32_t pass, void *context, TLS_STATEMENT *common)
{
    auto *record = reinterpret_cast<TLSS_GOTO *>(common);
    if (pass == TLSS_PASS_NODES) return record;
    if (pass != TLSS_PASS_EDGES) return nullptr;
    if (record->owner != nullptr && record->target != nullptr) {
        link_to(context, record->owner, 0, record->target->tree_node, "");
    }
    return record;
}
