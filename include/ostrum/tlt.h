/*
 * Source statements: the text of one logical line, its tokens, and the messages raised against it.
 * A statement holds one token of look-ahead and can be read again from its start at any time.
 */
#ifndef OSTRUM_TLT_H
#define OSTRUM_TLT_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** Capacity in bytes of a buffer for the text of a token, terminator included. */
#define TLT_TEXT_SIZE 128

/** Codes of tokens. Up to TLT_TOKEN_HASH they are spellings that the scanner recognises. */
enum {
    TLT_TOKEN_MODULE,
    TLT_TOKEN_CONST,
    TLT_TOKEN_ENUM,
    TLT_TOKEN_VAR,
    TLT_TOKEN_FUNCTION,
    TLT_TOKEN_TREE,
    TLT_TOKEN_SYSCALL,
    TLT_TOKEN_PRIVATE,
    TLT_TOKEN_USES,
    TLT_TOKEN_BEGIN,
    TLT_TOKEN_END,
    TLT_TOKEN_NODE,
    TLT_TOKEN_SUBTREE,
    TLT_TOKEN_ENTRY,
    TLT_TOKEN_DATA,
    TLT_TOKEN_TYPEDEF,
    TLT_TOKEN_IF,
    TLT_TOKEN_ELSEIF,
    TLT_TOKEN_ELSE,
    TLT_TOKEN_SWITCH,
    TLT_TOKEN_CASE,
    TLT_TOKEN_DEFAULT,
    TLT_TOKEN_FOR,
    TLT_TOKEN_FROM,
    TLT_TOKEN_TO,
    TLT_TOKEN_BY,
    TLT_TOKEN_WHILE,
    TLT_TOKEN_RETURN,
    TLT_TOKEN_LEAF,
    TLT_TOKEN_ASSIGN,        /* = */
    TLT_TOKEN_PLUS,          /* + */
    TLT_TOKEN_MINUS,         /* - */
    TLT_TOKEN_STAR,          /* * */
    TLT_TOKEN_SLASH,         /* / */
    TLT_TOKEN_MOD,           /* MOD */
    TLT_TOKEN_TILDE,         /* ~ */
    TLT_TOKEN_AMPERSAND,     /* & */
    TLT_TOKEN_BAR,           /* | */
    TLT_TOKEN_CARET,         /* ^ */
    TLT_TOKEN_EQUAL,         /* == */
    TLT_TOKEN_NOT_EQUAL,     /* != */
    TLT_TOKEN_LESS,          /* < */
    TLT_TOKEN_LESS_EQUAL,    /* <= */
    TLT_TOKEN_GREATER,       /* > */
    TLT_TOKEN_GREATER_EQUAL, /* >= */
    TLT_TOKEN_SHIFT_LEFT,    /* << */
    TLT_TOKEN_SHIFT_RIGHT,   /* >> */
    TLT_TOKEN_AND,
    TLT_TOKEN_OR,
    TLT_TOKEN_NOT,
    TLT_TOKEN_OPEN_BRACKET,  /* ( */
    TLT_TOKEN_CLOSE_BRACKET, /* ) */
    TLT_TOKEN_OPEN_SQUARE,   /* [ */
    TLT_TOKEN_CLOSE_SQUARE,  /* ] */
    TLT_TOKEN_COMMA,         /* , */
    TLT_TOKEN_SEMICOLON,     /* ; begins a comment, so that the scanner never gives it */
    TLT_TOKEN_NULL,
    TLT_TOKEN_BREAK,
    TLT_TOKEN_PRAGMA,
    TLT_TOKEN_GOTO,
    TLT_TOKEN_ASSERT,
    TLT_TOKEN_WHEN,
    TLT_TOKEN_RAISE,
    TLT_TOKEN_END_EXCEPTION,
    TLT_TOKEN_DOTS, /* .. */
    TLT_TOKEN_BODY,
    TLT_TOKEN_RECORD,
    TLT_TOKEN_COLON, /* : */
    TLT_TOKEN_ARROW, /* -> */
    TLT_TOKEN_NONVOLATILE,
    TLT_TOKEN_FORWARD,
    TLT_TOKEN_IFDEF,
    TLT_TOKEN_ENDIF,
    TLT_TOKEN_HASH, /* # */
    TLT_TOKEN_IDENTIFIER,
    TLT_TOKEN_NUMBER,
    TLT_TOKEN_STRING,
    TLT_TOKEN_DATA_LITERAL,
    TLT_TOKEN_END_OF_LINE,
    TLT_TOKEN_STRANGE,
    TLT_TOKEN_NONE,
    TLT_TOKEN_LINK, /* never given by the scanner */
    TLT_TOKEN_COUNT
};

/** Levels of messages. */
enum {
    TLT_LEVEL_OK,
    TLT_LEVEL_INFORMATION,
    TLT_LEVEL_WARNING,
    TLT_LEVEL_ERROR,
    TLT_LEVEL_FATAL,
    TLT_LEVEL_COUNT
};

/**
 * Told of each message at the moment that it is raised.
 *
 * @param statement  where it was raised; null for nowhere
 * @param level      1 information, 2 warning, 3 error, 4 fatal error
 * @param text       the message; valid during the call
 */
typedef void (*TLT_MESSAGE_HANDLER)(TLT_STATEMENT *statement, int32_t level, const char *text);

/**
 * Called for each message of a statement.
 *
 * @param context    the word given to TLT_AllMessages
 * @param statement  the statement
 * @param level      1 to 4
 * @param text       the message, owned by the statement
 * @return           ignored
 */
typedef int32_t (*TLT_MESSAGE_VISITOR)(void *context, TLT_STATEMENT *statement, int32_t level,
                                       const char *text);

/**
 * Called for each physical line of a statement.
 *
 * @param context  the word given to TLT_SplitStatement
 * @param line     the line, valid during the call
 * @return         ignored
 */
typedef int32_t (*TLT_LINE_VISITOR)(void *context, const char *line);

/** Starts character classes and name tables, once in the process. */
OSTRUM_API void TLT_Initialise(void);

/** Ends the use of statements in the process. */
OSTRUM_API void TLT_CleanUp(void);

/**
 * Makes a statement, ready to be read from its start.
 *
 * @param text                its text, copied with each tab expanded to the next multiple of 8 columns;
 *                            physical lines are separated by line feeds
 * @param source_name         name of its source file, copied
 * @param source_line_number  line of that file, from 1
 * @param line_number         running line number in the module
 * @return                    the statement; the caller releases it with TLT_DelStatement
 */
OSTRUM_API TLT_STATEMENT *TLT_NewStatement(const char *text, const char *source_name,
                                           int32_t source_line_number, int32_t line_number);

/**
 * Frees a statement with its messages.
 *
 * @param statement  the statement; null does nothing
 */
OSTRUM_API void TLT_DelStatement(TLT_STATEMENT *statement);

/**
 * Takes a statement back to its start, without a token and with error level 0.
 *
 * @param statement      the statement
 * @param keep_messages  0 to free its messages, else they stay
 */
OSTRUM_API void TLT_ResetStatement(TLT_STATEMENT *statement, int32_t keep_messages);

/**
 * Hands out the physical lines of a statement in order. Each but the last ends in a backslash again,
 * and is cut to 511 characters with it.
 *
 * @param statement  the statement
 * @param visitor    called for each line
 * @param context    handed to the visitor
 */
OSTRUM_API void TLT_SplitStatement(TLT_STATEMENT *statement, TLT_LINE_VISITOR visitor,
                                   void *context);

/**
 * @param statement  the statement
 * @return           its text after expansion of tabs, owned by the statement
 */
OSTRUM_API const char *TLT_StatementChars(TLT_STATEMENT *statement);

/**
 * @param statement  the statement
 * @return           name of its source file, owned by the statement
 */
OSTRUM_API const char *TLT_StatementModuleName(TLT_STATEMENT *statement);

/**
 * @param statement  the statement
 * @return           its line in the source file, from 1
 */
OSTRUM_API int32_t TLT_StatementSourceLineNumber(TLT_STATEMENT *statement);

/**
 * @param statement  the statement
 * @return           its running line number in the module
 */
OSTRUM_API int32_t TLT_StatementLineNumber(TLT_STATEMENT *statement);

/**
 * @param statement           the statement
 * @param source_line_number  its new line in the source file
 */
OSTRUM_API void TLT_SetStatementSourceLineNumber(TLT_STATEMENT *statement,
                                                 int32_t source_line_number);

/**
 * @param statement    the statement
 * @param line_number  its new running line number
 */
OSTRUM_API void TLT_SetStatementLineNumber(TLT_STATEMENT *statement, int32_t line_number);

/**
 * @param statement  the statement
 * @return           number of spaces that its text begins with
 */
OSTRUM_API int32_t TLT_StatementIndent(TLT_STATEMENT *statement);

/**
 * @param statement  the statement
 * @return           highest level raised since the last reset, 0 to 4
 */
OSTRUM_API int32_t TLT_StatementError(TLT_STATEMENT *statement);

/**
 * @param statement  the statement
 * @return           where the token behind the last consumed one starts, in its chars
 */
OSTRUM_API const char *TLT_StatementReadPosition(TLT_STATEMENT *statement);

/**
 * Looks at the next token and leaves it. A text of more than 127 characters raises the error "String
 * too long" and is cut.
 *
 * @param statement  the statement
 * @param text       out: text of the token, TLT_TEXT_SIZE bytes; may be null
 * @return           its code
 */
OSTRUM_API int32_t TLT_NextToken(TLT_STATEMENT *statement, char *text);

/**
 * Consumes the next token.
 *
 * @param statement  the statement
 * @param text       out: as with TLT_NextToken; may be null
 * @return           its code
 */
OSTRUM_API int32_t TLT_GetToken(TLT_STATEMENT *statement, char *text);

/**
 * @param statement  the statement
 * @param units      out: quantity code of the number, 0 if it is plain; may be null
 * @return           value of the last number token
 */
OSTRUM_API int32_t TLT_GetNumber(TLT_STATEMENT *statement, int32_t *units);

/**
 * Consumes one token and raises the error "'%s' expected here" if it is not the wanted one.
 *
 * @param statement  the statement
 * @param code       wanted code, 0 to 81
 * @param text       out: as with TLT_NextToken; may be null
 * @return           1 if it was the wanted one, else 0
 */
OSTRUM_API int32_t TLT_Expect(TLT_STATEMENT *statement, int32_t code, char *text);

/**
 * As TLT_Expect, for a text of any length.
 *
 * @param statement  the statement
 * @param code       wanted code, 0 to 81
 * @param text       out: text of the token, null if it has none; the statement's, valid until its next
 *                   token is scanned; may be null
 * @return           1 if it was the wanted one, else 0
 */
OSTRUM_API int32_t TLT_ExpectNoCopy(TLT_STATEMENT *statement, int32_t code, const char **text);

/**
 * Consumes the next token only if it is the given one.
 *
 * @param statement  the statement
 * @param code       code looked for
 * @param text       out: as with TLT_NextToken; may be null
 * @return           1 if it was consumed, else 0
 */
OSTRUM_API int32_t TLT_PossibleToken(TLT_STATEMENT *statement, int32_t code, char *text);

/**
 * Raises the error "Unexpected characters or keyword" unless the statement is used up.
 *
 * @param statement  the statement
 * @return           1 if it is used up, else 0
 */
OSTRUM_API int32_t TLT_ExpectEmpty(TLT_STATEMENT *statement);

/**
 * @param text  a text, compared as it stands
 * @return      1 if it is a keyword or a separator, else 0
 */
OSTRUM_API int32_t TLT_IsToken(const char *text);

/**
 * @param code  code of a token
 * @return      its spelling or the name of its kind; "<NO_TOKEN>" outside 0 to 81
 */
OSTRUM_API const char *TLT_TokenValue(int32_t code);

/**
 * Looks a unit word up, case included.
 *
 * @param word      the word
 * @param quantity  out: quantity code, 1 to 32; left alone if there is no such word; may be null
 * @param scale     out: base counts in one of this unit; left alone likewise; may be null
 * @return          1 if the word is there, else 0
 */
OSTRUM_API int32_t TLT_TestForUnits(const char *word, int32_t *quantity, float *scale);

/**
 * Raises an information: stores it on the statement, tells the handler, counts it.
 *
 * @param statement  where; null for nowhere
 * @param text       the message, copied
 * @return           number of informations so far
 */
OSTRUM_API int32_t TLT_Information(TLT_STATEMENT *statement, const char *text);

/**
 * Raises a warning.
 *
 * @param statement  where; null for nowhere
 * @param text       the message, copied
 * @return           number of warnings so far
 */
OSTRUM_API int32_t TLT_Warning(TLT_STATEMENT *statement, const char *text);

/**
 * Raises an error.
 *
 * @param statement  where; null for nowhere
 * @param text       the message, copied
 * @return           number of errors so far
 */
OSTRUM_API int32_t TLT_Error(TLT_STATEMENT *statement, const char *text);

/**
 * Raises a fatal error. The parser stops at a statement that carries one.
 *
 * @param statement  where; null for nowhere
 * @param text       the message, copied
 * @return           number of fatal errors so far
 */
OSTRUM_API int32_t TLT_FatalError(TLT_STATEMENT *statement, const char *text);

/**
 * Installs the handler of messages.
 *
 * @param handler  the handler; null for none
 */
OSTRUM_API void TLT_DefaultMessageHandler(TLT_MESSAGE_HANDLER handler);

/** Sets the counters of all levels to 0. */
OSTRUM_API void TLT_ResetCounters(void);

/**
 * Reads the counters.
 *
 * @param information  out: number of informations; may be null
 * @param warnings     out: number of warnings; may be null
 * @param errors       out: number of errors; may be null
 * @return             1 if no fatal error was counted, else 0
 */
OSTRUM_API int32_t TLT_GetCounters(int32_t *information, int32_t *warnings, int32_t *errors);

/**
 * Visits the messages of a statement in order.
 *
 * @param statement  the statement
 * @param visitor    called for each message
 * @param context    handed to the visitor
 */
OSTRUM_API void TLT_AllMessages(TLT_STATEMENT *statement, TLT_MESSAGE_VISITOR visitor,
                                void *context);

/**
 * Prints a statement with its place, and a caret below.
 *
 * @param stream     where to
 * @param statement  the statement
 * @param column     place of the caret in characters from the start of chars; negative for no caret
 */
OSTRUM_API void TLT_PrintStatement(FILE *stream, TLT_STATEMENT *statement, int32_t column);

/**
 * Prints a message below its statement.
 *
 * @param stream     where to
 * @param statement  the statement; null for none
 * @param level      0 to 4
 * @param text       the message
 */
OSTRUM_API void TLT_PrintMessage(FILE *stream, TLT_STATEMENT *statement, int32_t level,
                                 const char *text);

OSTRUM_END

#endif
