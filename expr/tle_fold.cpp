/*
 * Folding by priorities: a flat list of operands and operators becomes a tree. Each level of priority
 * is one pass over the list, so the work grows with the list and not with its square.
 *
 * What a scan that starts again at the head after each fold would find, one pass finds too: a fold
 * changes the reading of nothing but the operator right behind it, which then has an operand before.
 */
#include "expr/tle_parser.h"

#include <bit>

#include "core/sh.h"
#include <ostrum/tlt.h>

static constexpr int32_t highest_level = 13;

// The stack is kept from one expression to the next, unless a very long one made it large.
static constexpr size_t kept_capacity = 4096 * sizeof(TLE_ITEM);

static TLE_ITEM *items;
static size_t item_count;
static size_t capacity; // bytes

size_t TLE_ItemCount()
{
    return item_count;
}

TLE_ITEM *TLE_Item(size_t index)
{
    return items + index;
}

static void truncate_items(size_t count)
{
    item_count = count;
    if (count != 0 || capacity <= kept_capacity) return;
    SH_Free(items);
    items = nullptr;
    capacity = 0;
}

void TLE_PushItem(TLE_TERM *term, bool is_folded)
{
    const size_t needed = (item_count + 1) * sizeof(TLE_ITEM);
    if (needed > capacity)
        items = static_cast<TLE_ITEM *>(SH_Grow(items, item_count * sizeof(TLE_ITEM), &capacity,
                                                needed + sizeof(TLE_ITEM[64])));
    const TLE_OPERATOR *op = is_folded ? nullptr : TLE_TermOperator(term);
    items[item_count++] = { term, op, is_folded };
}

void TLE_DropItems(size_t base)
{
    for (size_t i = base; i < item_count; i++)
        TLE_DelExpression(items[i].term);
    truncate_items(base);
}

// Links

static TLE_TERM *bracket_term(TLE_TERM *inner, int32_t use)
{
    TLE_TERM *bracket = TLE_NewTerm(TLE_BRACKET, use, "TLE:TLE_TERM(LeftBracket)");
    bracket->left = inner;
    if (inner == nullptr) return bracket;
    bracket->line = inner->line;
    bracket->start = inner->start;
    bracket->length = inner->length;
    return bracket;
}

/** Links items from base up by their terms' right; those that are brackets get a term for that. */
static TLE_TERM *link_items(size_t base, int32_t use)
{
    TLE_TERM *next = nullptr;
    for (size_t i = item_count; i > base; i--) {
        TLE_TERM *term = items[i - 1].term;
        if (items[i - 1].is_folded) term = bracket_term(term, use);
        if (next != nullptr) term->right = next; // the last keeps what it has
        next = term;
    }
    return next;
}

TLE_TERM *TLE_LinkItems(size_t base, int32_t use)
{
    TLE_TERM *head = link_items(base, use);
    truncate_items(base);
    return head;
}

// Passes

static int32_t level_of(const TLE_ITEM *before, const TLE_ITEM *item)
{
    const bool is_dyadic = before != nullptr && before->op == nullptr;
    return is_dyadic ? item->op->dyadic_priority : item->op->monadic_priority;
}

static TLE_ITEM folded(TLE_ITEM op, TLE_TERM *left, TLE_TERM *right)
{
    op.term->left = left;
    op.term->right = right;
    return { op.term, nullptr, true };
}

/** Folds the left to right operators of a level; false if one of them lacks an operand. */
static bool fold_from_left(size_t base, int32_t level)
{
    size_t kept = base; // items below have been through the pass
    for (size_t i = base; i < item_count; i++) {
        const TLE_ITEM item = items[i];
        const TLE_ITEM *before = kept > base ? items + kept - 1 : nullptr;
        const bool is_match =
            item.op != nullptr && item.op->right_to_left == 0 && level_of(before, &item) == level;
        if (!is_match) {
            items[kept++] = item;
            continue;
        }
        if (i + 1 == item_count) {
            items[kept++] = item;
            item_count = kept;
            return false;
        }
        TLE_TERM *right = items[++i].term;
        if (before != nullptr && before->op == nullptr) {
            items[kept - 1] = folded(item, before->term, right);
        } else {
            items[kept++] = folded(item, nullptr, right);
        }
    }
    item_count = kept;
    return true;
}

/** The list's upper part, from place, has been through the pass of right to left operators. */
struct RIGHT_PASS {
    size_t base;
    size_t place;
    int32_t level;
};

static bool matches_right(const RIGHT_PASS &pass, const TLE_ITEM *before, const TLE_ITEM *item)
{
    return item->op != nullptr && item->op->right_to_left != 0 &&
           level_of(before, item) == pass.level;
}

/** Folds operators behind a new operand that have become dyadic by it. */
static bool fold_behind(RIGHT_PASS *pass)
{
    while (pass->place + 1 < item_count &&
           matches_right(*pass, items + pass->place, items + pass->place + 1)) {
        if (pass->place + 2 == item_count) return false;
        TLE_TERM *left = items[pass->place].term;
        items[pass->place + 2] = folded(items[pass->place + 1], left, items[pass->place + 2].term);
        pass->place += 2;
    }
    return true;
}

static void close_gap(size_t base_count, size_t place)
{
    size_t kept = base_count;
    for (size_t i = place; i < item_count; i++)
        items[kept++] = items[i];
    item_count = kept;
}

/** Folds the right to left operators of a level, the last first; false if one lacks an operand. */
static bool fold_from_right(size_t base, int32_t level)
{
    RIGHT_PASS pass = { base, item_count, level };
    size_t i = item_count; // items below have not been through the pass
    bool is_good = true;
    while (is_good && i > base) {
        const TLE_ITEM item = items[--i];
        const TLE_ITEM *before = i > base ? items + i - 1 : nullptr;
        if (!matches_right(pass, before, &item)) {
            items[--pass.place] = item;
            continue;
        }
        if (pass.place == item_count) {
            items[--pass.place] = item;
            is_good = false;
            break;
        }
        TLE_TERM *right = items[pass.place].term;
        if (before != nullptr && before->op == nullptr) {
            items[pass.place] = folded(item, before->term, right);
            i--;
        } else {
            items[pass.place] = folded(item, nullptr, right);
        }
        is_good = fold_behind(&pass);
    }
    close_gap(i, pass.place);
    return is_good;
}

// Bit n is set if level n occurs among the operators, in whichever form.
struct LEVELS {
    uint32_t from_left;
    uint32_t from_right;
};

static LEVELS levels_present(size_t base)
{
    LEVELS levels = {};
    for (size_t i = base; i < item_count; i++) {
        const TLE_OPERATOR *op = items[i].op;
        if (op == nullptr) continue;
        const uint32_t both = 1U << (op->monadic_priority & 31) | 1U << (op->dyadic_priority & 31);
        uint32_t *side = op->right_to_left == 0 ? &levels.from_left : &levels.from_right;
        *side |= both & ((2U << highest_level) - 2);
    }
    return levels;
}

/** Folds the levels from the tightest down; false if an operator lacks an operand. */
static bool fold_levels(size_t base)
{
    const LEVELS levels = levels_present(base);
    for (uint32_t rest = levels.from_left | levels.from_right; rest != 0;) {
        const int32_t level = static_cast<int32_t>(std::bit_width(rest)) - 1;
        const uint32_t bit = 1U << level;
        rest ^= bit;
        if ((levels.from_left & bit) != 0 && !fold_from_left(base, level)) return false;
        if ((levels.from_right & bit) != 0 && !fold_from_right(base, level)) return false;
    }
    return true;
}

// What is left

/** Index of the last bracket or folded operator that has something behind it; base - 1 for none. */
static size_t last_with_neighbour(size_t base)
{
    for (size_t i = item_count - 1; i > base; i--) {
        if (items[i - 1].is_folded) return i - 1;
    }
    return base - 1;
}

static TLE_TERM *report_bad_expression(TLT_STATEMENT *statement, size_t base, size_t bad,
                                       int32_t use)
{
    items[item_count - 1].is_folded = false; // stripped already when the report comes
    TLT_Error(statement, "Bad expression");
    TLE_TERM *head = link_items(base, use);
    TLE_TERM *term = head;
    for (size_t i = base; i < bad; i++)
        term = term->right;
    TLE_PrintExpression("BAD", term, 0);
    TLE_DelExpression(head);
    truncate_items(base);
    return nullptr;
}

TLE_TERM *TLE_FoldItems(TLT_STATEMENT *statement, size_t base, int32_t use)
{
    if (!fold_levels(base)) {
        TLT_Error(statement, "Bad operator");
        TLE_DropItems(base);
        return nullptr;
    }
    if (item_count - base > 1) {
        const size_t bad = last_with_neighbour(base);
        if (bad + 1 > base) return report_bad_expression(statement, base, bad, use);
        items[item_count - 1].is_folded = false;
        return TLE_LinkItems(base, use);
    }
    TLE_TERM *root = items[base].term;
    truncate_items(base);
    return root;
}
