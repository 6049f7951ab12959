// Steps of the parser: the items of a list under construction, and the passes over a tree.
#pragma once

#include "expr/tle.h"

// An element of the flat list that a tree is folded from. The lists of nested expressions lie on top
// of one another on one stack; each is named by the number of items below it.
struct TLE_ITEM {
    TLE_TERM *term;         // owned
    const TLE_OPERATOR *op; // of an operator that has not got its operands yet; null for an operand
    bool is_folded;         // a bracket, or an operator with its operands
};

// Number of items on the stack.
size_t TLE_ItemCount();

// The item at an index; valid until the next push.
TLE_ITEM *TLE_Item(size_t index);

void TLE_PushItem(TLE_TERM *term, bool is_folded);

// Deletes the items from base up, with their terms.
void TLE_DropItems(size_t base);

// Takes the items from base up off the stack as a list linked by right.
TLE_TERM *TLE_LinkItems(size_t base, int32_t use);

// Takes the items from base up off the stack as a tree by the priorities of the operators; null after
// an error.
TLE_TERM *TLE_FoldItems(TLT_STATEMENT *statement, size_t base, int32_t use);

// Gives the terms of a tree their types. 1, or 0 if an operator does not take its operands.
int32_t TLE_CheckTree(TLP_MODULE *module, TLT_STATEMENT *statement, TLE_TERM *root);

// Folds the constants of a tree; the new root.
TLE_TERM *TLE_SimplifyTree(TLP_MODULE *module, TLE_TERM *root);

// Checks the arguments of a call.
void TLE_CheckCall(TLP_MODULE *module, TLT_STATEMENT *statement, TLE_TERM *call);
