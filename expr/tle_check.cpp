/*
 * The passes over a tree: types from the operands up, then constants folded likewise. Subtrees of
 * nested expressions have been through both and are passed by, so that a message comes once and the
 * work does not grow with the depth.
 */
#include "expr/tle_parser.h"

#include <algorithm>

#include "core/sh.h"
#include "frontend/tlt.h"
#include "names/tli.h"
#include <ostrum/tlb.h>
#include <ostrum/tlit.h>
#include <ostrum/tlp.h>

// A walk without recursion, left before right before the term itself. The stack is kept from one walk
// to the next.
struct WALK_ENTRY {
    TLE_TERM **slot; // where the term hangs
    bool is_right_done;
};

static WALK_ENTRY *walk;
static size_t walk_count;
static size_t walk_capacity; // bytes

static void push_walk(TLE_TERM **slot)
{
    const size_t needed = (walk_count + 1) * sizeof(WALK_ENTRY);
    if (needed > walk_capacity)
        walk = static_cast<WALK_ENTRY *>(SH_Grow(walk, walk_count * sizeof(WALK_ENTRY),
                                                 &walk_capacity, needed + sizeof(WALK_ENTRY[64])));
    walk[walk_count++] = { slot, false };
}

/** Neither pass has anything to do for a name or a number alone. */
static bool is_plain_leaf(const TLE_TERM *term)
{
    return (term->kind == TLT_TOKEN_IDENTIFIER || term->kind == TLT_TOKEN_NUMBER) &&
           term->left == nullptr && term->right == nullptr;
}

static bool is_passed_by(const TLE_TERM *term)
{
    return term == nullptr || (term->flags & TLE_IS_FINISHED) != 0 || is_plain_leaf(term);
}

static void push_left_spine(TLE_TERM **slot)
{
    while (!is_passed_by(*slot)) {
        push_walk(slot);
        slot = &(*slot)->left;
    }
}

/** The next term to visit, in the place where it hangs; null at the end. */
static TLE_TERM **next_in_walk()
{
    while (walk_count != 0) {
        WALK_ENTRY *top = walk + walk_count - 1;
        if (top->is_right_done) {
            walk_count--;
            return top->slot;
        }
        top->is_right_done = true;
        push_left_spine(&(*top->slot)->right);
    }
    return nullptr;
}

static void start_walk(TLE_TERM **slot)
{
    walk_count = 0;
    push_left_spine(slot);
}

// Check

static int32_t height_of(const TLE_TERM *term)
{
    return term == nullptr ? 0 : term->height;
}

/** Levels of recursion of a walk that goes left, along operators, or right, along lists, in a loop. */
static void set_height(TLE_TERM *term, bool is_operator)
{
    if (term->left == nullptr && term->right == nullptr) return;
    const int32_t left = height_of(term->left) + (is_operator ? 0 : 1);
    const int32_t right = height_of(term->right) + (is_operator ? 1 : 0);
    term->height = static_cast<uint16_t>(std::min(std::max(left, right), int32_t{ UINT16_MAX }));
}

static int32_t check_operator(TLP_MODULE *module, TLT_STATEMENT *statement,
                              const TLE_OPERATOR *record, TLE_TERM *term)
{
    const bool has_operands =
        term->right != nullptr && (record->monadic_priority != 0 || term->left != nullptr);
    if (record->check != nullptr && has_operands)
        term->type = record->check(module, statement, record, term);
    if (term->type != nullptr) return 1;
    TLT_RaiseFormatted(statement, TLT_LEVEL_ERROR, "'%s' not supported between %s and %s",
                       TLE_TermValue(term), TLE_TypeText(term->left), TLE_TypeText(term->right));
    TLE_PrintExpression("NOT SUPP", term, 0);
    return 0;
}

/** The name of a data item stands for its data type's value, that of a function for the function. */
static TLI_IDENTIFIER *address_type(TLP_MODULE *module, TLI_IDENTIFIER *identifier)
{
    if (identifier == nullptr) return nullptr;
    TLI_IDENTIFIER *result = identifier->type;
    if (result == nullptr || TLIT_TypeBaseType(nullptr, result) != TLIT_DataType) return identifier;
    const TLI_IDENTIFIER *message = TLIT_FindType(TLP_DataTypeDomain(module), "MESSAGE");
    return result == message ? identifier : result;
}

static void refuse_operands(TLT_STATEMENT *statement, bool has_operands)
{
    if (has_operands) TLT_Error(statement, "Redundant expression");
}

static int32_t check_term(TLP_MODULE *module, TLT_STATEMENT *statement, TLE_TERM *term)
{
    const TLE_OPERATOR *record = TLE_TermOperator(term);
    set_height(term, record != nullptr);
    if (record != nullptr) return check_operator(module, statement, record, term);
    switch (term->kind) {
    case TLE_CALL:
    case TLE_INDIRECT_CALL:
        TLE_CheckCall(module, statement, term);
        break;
    case TLE_BUILT_IN:
        term->type = TLB_CheckArguments(module, statement, term);
        break;
    case TLE_ADDRESS:
        term->type = address_type(module, term->identifier);
        break;
    case TLT_TOKEN_IDENTIFIER:
        refuse_operands(statement, term->right != nullptr);
        break;
    case TLT_TOKEN_LINK:
        term->type = TLE_ExpressionType(term->left);
        break;
    default:
        refuse_operands(statement, term->left != nullptr || term->right != nullptr);
    }
    return 1;
}

int32_t TLE_CheckTree(TLP_MODULE *module, TLT_STATEMENT *statement, TLE_TERM *root)
{
    if (root->left == nullptr && root->right == nullptr) return check_term(module, statement, root);
    start_walk(&root);
    for (;;) {
        TLE_TERM **slot = next_in_walk();
        if (slot == nullptr) return 1;
        if (!check_term(module, statement, *slot)) return 0;
    }
}

// Folding of constants

static TLE_TERM *simplified(TLP_MODULE *module, TLE_TERM *term)
{
    if (term->kind == TLE_BUILT_IN) return TLB_Simplify(module, term);
    const TLE_OPERATOR *record = TLE_TermOperator(term);
    if (record == nullptr || record->simplify == nullptr) return nullptr;
    return record->simplify(record, term);
}

static void replace_term(TLE_TERM **slot, TLE_TERM *replacement)
{
    TLE_TERM *term = *slot;
    replacement->start = term->start;
    replacement->length = term->length;
    replacement->line = term->line;
    *slot = replacement;
    TLE_DelExpression(term);
}

TLE_TERM *TLE_SimplifyTree(TLP_MODULE *module, TLE_TERM *root)
{
    if (root->kind >= 0 && root->left == nullptr && root->right == nullptr) return root;
    start_walk(&root);
    for (;;) {
        TLE_TERM **slot = next_in_walk();
        if (slot == nullptr) return root;
        TLE_TERM *replacement = simplified(module, *slot);
        if (replacement != nullptr) replace_term(slot, replacement);
    }
}
