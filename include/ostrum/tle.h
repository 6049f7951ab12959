/*
 * Expressions: parsed from a statement into a tree of terms that is checked and folded, asked about,
 * turned into a constant value, into P-code, or into C or Java text.
 *
 * An expression owns its subtree; TLE_DelExpression ends it. Terms borrow the identifiers and types
 * that they name and the statement that they were parsed from.
 */
#ifndef OSTRUM_TLE_H
#define OSTRUM_TLE_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/* Terms and parser */

/** What an expression is for: the use argument of TLE_ParseExpression. */
enum {
    TLE_USE_VALUE = 0,     /**< a value or a subscript */
    TLE_USE_CONDITION = 1, /**< a condition or selector */
    TLE_USE_STATEMENT = 2, /**< a statement of its own: an assignment or call */
    TLE_USE_ARGUMENT = 3,  /**< an argument of a function or built-in */
    TLE_USE_CONSTANT = 4   /**< a constant expression */
};

/** Kinds of terms below 0; a kind of 0 or more is a token code. */
enum {
    TLE_BRACKET = -1,      /**< a bracket while a tree is being built */
    TLE_CALL = -2,         /**< call of the function that the term names */
    TLE_BUILT_IN = -3,     /**< reference to or call of a built-in function */
    TLE_ADDRESS = -4,      /**< reference to a function or node, with no call */
    TLE_INDIRECT_CALL = -5 /**< call through an item of function type */
};

/**
 * An operator, static and constant. Priorities run from 1, the loosest, to 13; 0 stands for a form
 * that the operator does not have.
 */
typedef struct TLE_OPERATOR {
    /** Token code, 0 to 81. */
    int32_t token;
    /** Level of the form with one operand, 0 if there is none. */
    int32_t monadic_priority;
    /** Level of the form with two operands, 0 if there is none. */
    int32_t dyadic_priority;
    /** 1 if the last of several in a row takes its operands first. */
    int32_t right_to_left;
    /** A new term in place of this one, which the caller then deletes, or null; may be null. */
    TLE_TERM *(*simplify)(const struct TLE_OPERATOR *record, TLE_TERM *term);
    /** The type of the result, or null; the operands have theirs. May be null. */
    TLI_IDENTIFIER *(*check)(TLP_MODULE *module, TLT_STATEMENT *statement,
                             const struct TLE_OPERATOR *record, TLE_TERM *term);
    /** Generates P-code that leaves the value (mode 0), the address (1), or the address and the
     * length (2); 1, or 0 if there is none. */
    int32_t (*code)(TLC_STREAM *stream, const struct TLE_OPERATOR *record, TLE_TERM *term,
                    int32_t mode);
    /** The operation code that the operator stands for, or 0. */
    int32_t p_code;
} TLE_OPERATOR;

/** Declares the operators and the built-in functions, once in a process. */
OSTRUM_API void TLE_Initialise(void);

/** Enters an operator under its token; one that was there gives way. The record is kept. */
OSTRUM_API void TLE_DeclareOperator(const TLE_OPERATOR *record);

/**
 * Parses, checks and folds the expression at the statement's read position. Errors are messages on
 * the statement. The tokens FROM, TO, BY, "," and the end of the line end an expression too.
 *
 * @param module      module in whose names identifiers are looked up
 * @param statement   statement to read from
 * @param use         one of the TLE_USE_ codes
 * @param stop_token  token code that ends the expression; it is left unread
 * @return            the tree, which the caller deletes; null after an error. If the statement is at
 *                    error level already the terms come as they were read, without a tree
 */
OSTRUM_API TLE_TERM *TLE_ParseExpression(TLP_MODULE *module, TLT_STATEMENT *statement, int32_t use,
                                         int32_t stop_token);

/** Deletes a term with everything below it; null does nothing. */
OSTRUM_API void TLE_DelExpression(TLE_TERM *term);

/**
 * Adds an expression to a list. Lists of several thousand members stay quick to build.
 *
 * @param list        the list, null for a new one
 * @param expression  owned by the list from here on; may be null
 * @return            the list
 */
OSTRUM_API TLE_TERM *TLE_Append(TLE_TERM *list, TLE_TERM *expression);

/** The index-th expression of a list, from 0; null past its end. */
OSTRUM_API TLE_TERM *TLE_NthExpression(TLE_TERM *list, int32_t index);

/** The index-th argument of a call, from 0; null past the last, and for a term that is no call. */
OSTRUM_API TLE_TERM *TLE_CallArgument(TLE_TERM *term, int32_t index);

/** 1 if the term can be assigned to, else 0; null gives 0. */
OSTRUM_API int32_t TLE_CheckLHS(TLE_TERM *term);

/** 1 if the term is a call of a function by its name and nothing else, else 0; null gives 0. */
OSTRUM_API int32_t TLE_CheckSimpleCall(const TLE_TERM *term);

/** The type that the term names, or null if it names none. */
OSTRUM_API TLI_IDENTIFIER *TLE_Type(const TLE_TERM *term);

/** What the term names; of a field selection the field that it ends with. Null if nothing. */
OSTRUM_API TLI_IDENTIFIER *TLE_TermIdentifier(const TLE_TERM *term);

/** The term's text, an identifier's name or a string's contents; empty if it has none. Borrowed. */
OSTRUM_API const char *TLE_TermValue(const TLE_TERM *term);

/** The type of the expression's value; null for null. */
OSTRUM_API TLI_IDENTIFIER *TLE_ExpressionType(const TLE_TERM *term);

/** 1 and the value if the term is a number, else 0 and value is left alone. */
OSTRUM_API int32_t TLE_Constant(const TLE_TERM *term, int32_t *value);

/** A new number, which the caller deletes. */
OSTRUM_API TLE_TERM *TLE_ConstantTerm(int32_t use, TLI_IDENTIFIER *type, int32_t value);

/** Gives the term a type without question; null does nothing. */
OSTRUM_API void TLE_CoerceTerm(TLE_TERM *term, TLI_IDENTIFIER *type);

/**
 * Lets a term stand as a type if it is a null, a data literal or a text that can: the term's type is
 * then changed.
 *
 * @param statement  for the warning that a STRING became a MESSAGE
 * @param type       type wanted
 * @return           1 if the term was given the type; 0 if it cannot, or has it already
 */
OSTRUM_API int32_t TLE_CoerceData(TLP_MODULE *module, TLT_STATEMENT *statement,
                                  TLI_IDENTIFIER *type, TLE_TERM *term);

/**
 * The characters that the expression was parsed from.
 *
 * @return  a new text, which the caller releases with SH_Free; empty for a term that was not parsed
 */
OSTRUM_API char *TLE_ExpressionChars(const TLE_TERM *term);

/**
 * Dumps the tree to standard output under a title.
 *
 * @param indent  columns in front of the title, 0 or more
 */
OSTRUM_API void TLE_PrintExpression(const char *title, const TLE_TERM *term, int32_t indent);

/* Constant values, data terms and code */

/**
 * Checks a folded expression against the type wanted of it and gives its value. The term's type may
 * change to the one that it stands for here, and a TIME or CLOCK_TIME number is converted to the other.
 *
 * @param module     module that the expression belongs to
 * @param statement  where faults are reported; null asks in silence
 * @param term       the expression; null, after an error of its own, gives 0 without a message
 * @param wanted     type wanted
 * @param value      out: a number; for STRING the text, borrowed from the term, or 0 for NULL; for any
 *                   other type the term itself. Left alone unless the result is 1
 * @param quiet      not 0: no warning for a STRING that stands as a MESSAGE
 * @return           1 and the value, or 0
 */
OSTRUM_API int32_t TLE_ConstantValue(TLP_MODULE *module, TLT_STATEMENT *statement, TLE_TERM *term,
                                     TLI_IDENTIFIER *wanted, intptr_t *value, int32_t quiet);

/** TLE_ConstantValue for the term's own type, in silence. */
OSTRUM_API int32_t TLE_GetConstantValue(TLP_MODULE *module, TLE_TERM *term, intptr_t *value);

/** Plants a reference to the data that a term names: 4 bytes of P-code, or its text. */
OSTRUM_API void TLE_DataTerm(TLC_STREAM *stream, TLE_TERM *term);

/** Plants a reference to an array and, on a P-code stream, its number of elements: 8 bytes. */
OSTRUM_API void TLE_ArrayTerm(TLC_STREAM *stream, TLE_TERM *term);

/**
 * Generates an expression: P-code, C or Java text. Faults go through TLC_Error and a dump of the term
 * to standard output.
 *
 * @param stream  where to
 * @param term    the expression; null is reported
 * @param mode    what P-code leaves on the stack: 0 the value, 1 the address, 2 the address and above
 *                it the number of elements from there on
 */
OSTRUM_API void TLE_ExpressionCode(TLC_STREAM *stream, TLE_TERM *term, int32_t mode);

/**
 * Generates the subscript of an identifier's term, P-code only.
 *
 * @return  the subscript if it is known, 0 for a term without one, and nothing is emitted; -1 if its
 *          value is on the stack
 */
OSTRUM_API int32_t TLE_OffsetCode(TLC_STREAM *stream, TLE_TERM *term);

OSTRUM_END

#endif
