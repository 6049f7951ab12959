/*
 * Data sections: what the kinds of DATA sections share. A section is parsed into items, which are
 * records of a block like the statements of a function, and written as a fixed layout of bytes.
 * Each kind brings tables of its attributes, and a parser and a table of operations for each of its
 * items.
 */
#ifndef OSTRUM_TLD_H
#define OSTRUM_TLD_H

#include <ostrum/tls.h>

OSTRUM_BEGIN

/** Capacity in bytes of a buffer for a word of an attribute list, terminator included. */
#define TLD_NAME_SIZE 32

/** Words that begin an item inside a data section. */
enum {
    TLD_WORD_MESSAGE,
    TLD_WORD_PICTURE,
    TLD_WORD_VIEW,
    TLD_WORD_PIN,
    TLD_WORD_POINT,
    TLD_WORD_END,
    TLD_WORD_STATE,
    TLD_WORD_MAP,
    TLD_WORD_VARLOC,
    TLD_WORD_NONE /* anything else */
};

/** An attribute of an item, or a word that an attribute can be given. */
typedef struct TLD_ATTRIBUTE {
    int32_t code;          /**< what a search gives; of a word the bits that it stands for */
    const char *word;      /**< in mixed case; any case and any unambiguous beginning fits */
    const char *type_name; /**< type of the constant; null if the value is read by the parser */
} TLD_ATTRIBUTE;

/** Takes one attribute of a list; word has been read, and nothing behind it. */
typedef void (*TLD_HANDLER)(void *user, TLS_BLOCK *block, TLT_STATEMENT *statement,
                            const char *word);

/** Readies the kinds of data sections and the table of words, the first time. */
OSTRUM_API void TLD_Initialise(void);

/** Deletes the table of words, at the end of the process. */
OSTRUM_API void TLD_CleanUp(void);

/**
 * Looks at the next token and leaves it.
 * @param statement the statement
 * @return the TLD_WORD_ that it is, in any case; TLD_WORD_NONE for any other token
 */
OSTRUM_API int32_t TLD_DataToken(TLT_STATEMENT *statement);

/**
 * Parses an attribute list: words that the handler takes with their values, with or without a comma
 * behind each. Anything but a word ends it without a message.
 * @param block a block of the section
 * @param statement the statement
 * @param handler takes each attribute; null reports "Unexpected attribute" for each
 * @param user handed to the handler
 */
OSTRUM_API void TLD_ParseData(TLS_BLOCK *block, TLT_STATEMENT *statement, TLD_HANDLER handler,
                              void *user);

/**
 * Looks an attribute up and, if it has a type, reads "=" and its value. Reports "Name '%s' is not
 * unique" and "Name '%s' is not allowed here", and what is wrong with the value.
 * @param block a block of the section
 * @param statement the statement, the word consumed
 * @param word the word as read
 * @param table the item's attributes
 * @param count entries of the table
 * @param value out: as from TLD_ExpectConstant, if the attribute has a type
 * @return the attribute's code; -1 after a message, and then value is left alone
 */
OSTRUM_API int32_t TLD_FindAttribute(TLS_BLOCK *block, TLT_STATEMENT *statement, const char *word,
                                     const TLD_ATTRIBUTE *table, int32_t count, intptr_t *value);

/**
 * Reads "=" and words with commas between. Reports "Missing Value" where no word stands, and unknown
 * words as TLD_FindAttribute does.
 * @param statement the statement
 * @param table the words
 * @param count entries of the table
 * @return the codes of the words, ORed; 0 if "=" is missing
 */
OSTRUM_API int32_t TLD_GetEnumeratedValue(TLT_STATEMENT *statement, const TLD_ATTRIBUTE *table,
                                          int32_t count);

/**
 * Gives a field its value. Reports "Value already specified" if it has one; the new value stands.
 * @param statement the statement
 * @param slot in and out: the field, 0 for not given; what it held stays the caller's
 * @param value its value
 */
OSTRUM_API void TLD_SetValue(TLT_STATEMENT *statement, intptr_t *slot, intptr_t value);

/**
 * Reports "Value for '%s' not specified" against the item's statement if there is no value.
 * @param item the item
 * @param value the field, 0 for not given
 * @param name name of the attribute, upper case
 */
OSTRUM_API void TLD_CheckValue(TLS_STATEMENT *item, intptr_t value, const char *name);

/**
 * Reads a name: an identifier, or a text in quotes.
 * @param statement the statement
 * @param name out: the name, TLD_NAME_SIZE bytes; left alone unless the result is 1
 * @return 1; 0 if no name is next, or for one of 32 characters or more, which is consumed
 */
OSTRUM_API int32_t TLD_ExpectName(TLT_STATEMENT *statement, char *name);

/**
 * Reads the name of a nested item and declares it, so that code can name the item. Reports
 * "Identifier expected here" and "Identifier too long".
 * @param block a block of the section
 * @param statement the statement
 * @param type data type of the item; null fails
 * @param owner the item that it belongs to; not looked at
 * @param prefix stands before the name with a "." between; may be null
 * @return the identifier, owned by its scope; null after a message
 */
OSTRUM_API TLI_IDENTIFIER *TLD_ExpectIdentifier(TLS_BLOCK *block, TLT_STATEMENT *statement,
                                                TLI_IDENTIFIER *type, TLS_STATEMENT *owner,
                                                const char *prefix);

/**
 * Reads a constant. Reports "CONSTANT expected here" behind any message on what is wrong with it.
 * @param block a block of the section
 * @param statement the statement
 * @param type type wanted; null fails
 * @param value out: the number, for a type that is one; the text, for STRING, which the caller frees
 *        with ST_Free, or 0 for NULL; else a TLE_TERM that the caller deletes
 * @param quiet not 0: no warning for a STRING that stands as a MESSAGE
 * @return 1 and the value; 0 after a message, and then value is left alone
 */
OSTRUM_API int32_t TLD_ExpectConstant(TLS_BLOCK *block, TLT_STATEMENT *statement,
                                      TLI_IDENTIFIER *type, intptr_t *value, int32_t quiet);

/**
 * Writes a reference of 4 bytes.
 * @param stream P-code stream
 * @param term what is referred to; null writes zero bytes
 */
OSTRUM_API void TLD_DataTerm(TLC_STREAM *stream, TLE_TERM *term);

/**
 * Begins a section's code: an even program section, which becomes the function's, with its symbol.
 * @param stream P-code stream
 * @param function the section's function identifier
 * @return class of the symbol: 3 private, 0 public; -1 and no symbol for any other function
 */
OSTRUM_API int32_t TLD_DataFunctionCode(TLC_STREAM *stream, TLI_IDENTIFIER *function);

OSTRUM_END

#endif
