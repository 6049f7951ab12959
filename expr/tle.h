// The terms of expressions, and what the files that parse, check, fold and generate them share.
#pragma once

#include <ostrum/tle.h>

// Terms and parser

// Bits of a term's flags.
static constexpr uint8_t TLE_OWNS_TEXT = 1;   // the text is the term's own
static constexpr uint8_t TLE_IS_FINISHED = 2; // checked and folded with all that is below it
static constexpr uint8_t TLE_IS_SOURCE = 4;   // a number that stands so at start; it keeps no text

// One node. A finished tree has operators over operands; operators that group to the left make it
// deep on that side, a hundred thousand levels for a sum of as many operands. So a walk goes down
// left in a loop and recurses at right only: height counts the levels of such a recursion, and no
// finished tree has more than TLE_MAX_HEIGHT. Lists hang by right and are walked in a loop as well.
struct TLE_TERM {
    int8_t kind;       // token code, or TLE_BRACKET and below
    uint8_t use : 3;   // TLE_USE_...
    uint8_t flags : 5; // TLE_OWNS_TEXT...
    uint16_t height;   // set by the check pass; 0 for a leaf
    int32_t line;      // source line number of the statement
    const char *text;
    TLI_IDENTIFIER *identifier; // what the term names
    TLI_IDENTIFIER *type;       // result type; a function's name has the function itself
    TLE_TERM *left;  // left operand, subscript, first argument link, expression of a link
    TLE_TERM *right; // right operand; next term of a list
    union {
        int32_t value; // of a number
        int32_t extra; // of an operator, built-in function or link: a word for its code
    };
    uint32_t length; // bytes from start to the term's end
    union {
        const char *start; // where the term starts in its statement's text
        TLE_TERM *last;    // of a list's first link: the list's last
    };
};
static_assert(sizeof(TLE_TERM) == 64, "one cache line for each term of the source");

// How an argument passes, in the extra word of its link; 0 is as its parameter says.
enum {
    TLE_PASS_POINTER = 1, // a pointer's value for a record by reference
    TLE_PASS_RECORD = 2,  // a record's address for a pointer
    TLE_PASS_ARRAY = 3    // an array behind the declared arguments, by its first element's address
};

// Deepest recursion that a finished tree can ask for. Brackets within their own limit stay below it.
static constexpr int32_t TLE_MAX_HEIGHT = 6000;

// The operator of a term, null if the term is none.
const TLE_OPERATOR *TLE_TermOperator(const TLE_TERM *term);

// A new term of a kind, otherwise zero.
TLE_TERM *TLE_NewTerm(int32_t kind, int32_t use, const char *tag);

// Gives a term a copy of a text, null for none; the term's own text goes.
void TLE_SetText(TLE_TERM *term, const char *text);

// Text of a kind as messages and dumps show it.
const char *TLE_KindText(int32_t kind);

// Gives a term a copy of length characters of a text; the term's own text goes.
void TLE_SetTextSpan(TLE_TERM *term, const char *text, size_t length);

// Gives a number that keeps no text a copy of its own.
void TLE_KeepNumberText(TLE_TERM *term);

// The term that a chain of field selections starts with; the term itself without one.
TLE_TERM *TLE_BaseTerm(TLE_TERM *term);

// Name of the term's type as messages show it: "<VOID>" for no term, "<UNTYPED>" for no type.
const char *TLE_TypeText(const TLE_TERM *term);
