#pragma once

#include <ostrum/tlt.h>

/** A message raised against a statement, which owns it. */
struct TLT_MESSAGE {
    TLT_MESSAGE *next;
    const char *text; // behind the record
    int32_t level;    // 1 to 4
};

/** Name of a source file, shared by its statements. */
struct TLT_SOURCE_NAME {
    const char *text; // behind the record
    int32_t users;    // statements and holders; the last one frees it
};

/** What few statements have. */
struct TLT_EXTRA {
    TLT_MESSAGE *messages;
    TLT_MESSAGE *last_message; // undefined without messages
    char *token_block;         // text of the last token; null where it lies in chars
};

enum : uint32_t {
    TLT_IN_BLOCK = UINT32_MAX - 1, // token_offset of a text that does not lie in chars
    TLT_NO_TEXT = UINT32_MAX,      // of a token without a text
};

/**
 * One logical line. The record and its chars are one block, and kept small: there is one for each line of
 * source. The text of a token is a piece of chars where it stands there as it is, and a block of its own
 * only where it does not, or where a caller wants it terminated.
 */
struct TLT_STATEMENT {
    TLT_SOURCE_NAME *source;
    TLT_EXTRA *extra; // owned; null without messages and without a block
    int32_t source_line_number;
    int32_t line_number;
    uint32_t read_offset;  // in chars, of the next character that the scanner looks at
    uint32_t token_start;  // of the token behind the last consumed one
    uint32_t token_offset; // of the text of the last token
    int32_t token_length;  // of that text
    int32_t number;
    uint8_t units;
    uint8_t token_code;  // look-ahead, TLT_TOKEN_NONE without one
    uint8_t error_level; // highest since the last reset
};
static_assert(TLT_TOKEN_COUNT <= UINT8_MAX, "token codes fit a byte");

/** The text of a statement, tabs expanded. */
static inline char *TLT_Chars(const TLT_STATEMENT *statement)
{
    return const_cast<char *>(reinterpret_cast<const char *>(statement + 1));
}

/** Text of the last token, token_length bytes and not always terminated; null for none. */
static inline const char *TLT_TokenText(const TLT_STATEMENT *statement)
{
    if (statement->token_offset == TLT_NO_TEXT) return nullptr;
    if (statement->token_offset == TLT_IN_BLOCK) return statement->extra->token_block;
    return TLT_Chars(statement) + statement->token_offset;
}

/**
 * Makes a name that statements can share.
 *
 * @param name  the name, copied
 * @return      the name with one user, the caller, who gives it up with TLT_DropSourceName
 */
TLT_SOURCE_NAME *TLT_NewSourceName(const char *name);

/**
 * Gives up one use of a name.
 *
 * @param name  the name; null does nothing
 */
void TLT_DropSourceName(TLT_SOURCE_NAME *name);

/**
 * Makes a statement as TLT_NewStatement does, from a text that need not be terminated.
 *
 * @param text                its text, without zero bytes
 * @param length              of the text in bytes
 * @param source              name of its source file; gets one more user
 * @param source_line_number  line of that file, from 1
 * @param line_number         running line number in the module
 * @return                    the statement
 */
TLT_STATEMENT *TLT_NewSpanStatement(const char *text, size_t length, TLT_SOURCE_NAME *source,
                                    int32_t source_line_number, int32_t line_number);

/**
 * Raises a message whose text holds other texts. It is cut to 511 characters.
 *
 * @param statement  where; null for nowhere
 * @param level      1 to 4
 * @param format     of the text, as for printf
 * @return           number of messages of the level so far
 */
__attribute__((format(printf, 3, 4))) int32_t
TLT_RaiseFormatted(TLT_STATEMENT *statement, int32_t level, const char *format, ...);

/** The statement's extra record, made if it has none. */
TLT_EXTRA *TLT_Extra(TLT_STATEMENT *statement);

/**
 * Frees the messages of a statement and leaves its error level alone.
 *
 * @param statement  the statement
 */
void TLT_FreeMessages(TLT_STATEMENT *statement);

/**
 * Moves the read position over blanks and comments and sets the start of the token there.
 *
 * @param statement  the statement
 */
void TLT_SkipBlanks(TLT_STATEMENT *statement);

/**
 * Finds a keyword in any case.
 *
 * @param word    the word; needs no terminator
 * @param length  its length in bytes
 * @return        code of the keyword; TLT_TOKEN_IDENTIFIER if it is none
 */
int32_t TLT_FindKeyword(const char *word, size_t length);

/**
 * Looks at a statement's first word without scanning it, so that nothing is raised: the parser that reads
 * the statement will.
 *
 * @param statement  the statement
 * @return           code of the keyword that it begins with; TLT_TOKEN_IDENTIFIER if it is none
 */
int32_t TLT_FirstKeyword(const TLT_STATEMENT *statement);

/** One unit word. */
struct TLT_UNIT {
    float scale;      // base counts in one of this unit
    float offset;     // in units, taken off before scaling
    int32_t quantity; // quantity code, 1 to 32
    const char *word;
};

/**
 * @param word    the word, case included; needs no terminator
 * @param length  its length in bytes
 * @return        its row; null if there is none
 */
const TLT_UNIT *TLT_FindUnit(const char *word, size_t length);

/** Gives back the buffer that the scanner puts texts together in. */
void TLT_FreeScratch(void);

/** Number of errors counted since the counters were last reset. */
int32_t TLT_ErrorCount(void);
