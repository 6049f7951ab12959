/*
 * Statements: the tree of blocks that stands between BEGIN and END. Nesting is told by indentation
 * alone; every kind of statement is a record that begins with a pointer to a static table of
 * operations, and every kind of body has a block class that begins it and parses its statements.
 */
#ifndef OSTRUM_TLS_H
#define OSTRUM_TLS_H

#include <ostrum/types.h>

OSTRUM_BEGIN

typedef struct TLS_STATEMENT TLS_STATEMENT;             /* what all statement records begin with */
typedef struct TLS_STATEMENT_CLASS TLS_STATEMENT_CLASS; /* operations of one kind of statement */
typedef struct TLS_BLOCK_CLASS TLS_BLOCK_CLASS;         /* how bodies of one section type begin */
typedef struct TLSS_CALLBACKS TLSS_CALLBACKS;           /* what a client hears of a tree's graph */

/** Takes one statement in a block; root is the root of the block tree, context the block's own. */
typedef void (*TLS_PARSER)(TLS_BLOCK *root, TLT_STATEMENT *statement, void *context);

/** Makes the root block of a body; null if the body cannot be begun. */
typedef TLS_BLOCK *(*TLS_BEGIN)(TLP_MODULE *module, TLI_IDENTIFIER *function,
                                TLT_STATEMENT *statement, int32_t type);

/** Writes one statement to a stream; block is the block that holds it. */
typedef void (*TLS_CODE)(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *statement);

/** Bit of TLS_STATEMENT_CLASS.flags: control never passes to the statement behind. */
#define TLS_NO_PASS 0x1u

/** The head of every statement record; the fields of its kind follow. */
struct TLS_STATEMENT {
    const TLS_STATEMENT_CLASS *statement_class; /**< never null */
    TLT_STATEMENT *statement;                   /**< source, owned by its section */
    TLS_STATEMENT *next;                        /**< in its block's list */
};

/** Operations of one kind of statement; a null entry means that there is nothing to do. */
struct TLS_STATEMENT_CLASS {
    /** TLS_NO_PASS, or 0. */
    uint32_t flags;
    /** Prints it, indented by columns. */
    void (*print)(TLS_STATEMENT *statement, int32_t indent);
    /** Checks it once its block is whole. */
    void (*check)(TLS_BLOCK *block, TLS_STATEMENT *statement);
    /** Generates P-code. */
    TLS_CODE p_code;
    /** Writes C. */
    TLS_CODE c_code;
    /** Writes Java. */
    TLS_CODE java_code;
    void (*delete_statement)(TLS_STATEMENT *statement); /**< frees the record and what it owns */
    /** Tells a walk of it. */
    void *(*tree)(TLS_BLOCK *block, int32_t pass, void *context, TLS_STATEMENT *statement);
    /** Section of a node of a tree. */
    TLC_PSECT *(*node_section)(TLS_STATEMENT *statement);
    const TLSS_CALLBACKS *const *tree_callbacks; /**< where the client's table is kept */
};

/** How the bodies of one section type begin and how their statements are parsed. */
struct TLS_BLOCK_CLASS {
    TLS_BEGIN begin;   /**< makes the root block of a section */
    TLS_PARSER parser; /**< parses a statement that reaches the block */
};

/**
 * Begins the body of a function or data section.
 * @param module the module that holds it
 * @param function its identifier, which owns the block from then on
 * @param statement the statement with BEGIN, or the one that opens a data section
 * @param type section type, 0 to 9
 * @return the root block; null if bodies of that type do not exist or could not be begun
 */
OSTRUM_API TLS_BLOCK *TLS_Begin(TLP_MODULE *module, TLI_IDENTIFIER *function,
                                TLT_STATEMENT *statement, int32_t type);

/**
 * Makes a root block: the parser is that of the block class, the head is the parser's context and
 * the first statement.
 * @param module the module
 * @param head statement record at the head of the whole tree; the block owns it from then on
 * @param type section type, 0 to 9
 * @return the block, to be freed with TLS_DelBlock
 */
OSTRUM_API TLS_BLOCK *TLS_NewBlock(TLP_MODULE *module, TLS_STATEMENT *head, int32_t type);

/**
 * Opens a block inside the current one, and makes it current; the next statement fixes its indent.
 * @param root root block
 * @return the new block, with the current block's parser, context, module and head; whoever keeps
 *         it frees it with TLS_DelBlock
 */
OSTRUM_API TLS_BLOCK *TLS_SubBlock(TLS_BLOCK *root);

/**
 * Gives a block a parser of its own.
 * @param block the block
 * @param parser called for each of its statements; null takes statements without a word
 * @param context handed to the parser
 */
OSTRUM_API void TLS_SetParser(TLS_BLOCK *block, TLS_PARSER parser, void *context);

/**
 * Finds the block of a source statement by its indent and runs that block's parser. Reports "New
 * block in wrong place", "Indent does not match an outer block" and "Blocks nested too deeply".
 * @param root root block
 * @param statement the statement, nothing of it consumed
 */
OSTRUM_API void TLS_Statement(TLS_BLOCK *root, TLT_STATEMENT *statement);

/**
 * Appends a record to the current block, which owns it from then on.
 * @param root root block
 * @param record statement record
 */
OSTRUM_API void TLS_Append(TLS_BLOCK *root, TLS_STATEMENT *record);

/**
 * @param block any block
 * @return its last statement, or null
 */
OSTRUM_API TLS_STATEMENT *TLS_LastStatement(TLS_BLOCK *block);

/**
 * The statement that opened the current block.
 * @param root root block
 * @param statement_class the class wanted, or null for any
 * @return the last statement of the block enclosing the current one, or null
 */
OSTRUM_API TLS_STATEMENT *TLS_Owner(TLS_BLOCK *root, const TLS_STATEMENT_CLASS *statement_class);

/**
 * @param block a block or null
 * @return 1 if it is null or holds nothing, else 0
 */
OSTRUM_API int32_t TLS_EmptyBlock(TLS_BLOCK *block);

/**
 * Tests what an expression returns; reports "Type mismatch - Expression should return %s".
 * @param root root block
 * @param statement the statement that the message goes to
 * @param expression the expression; null, after its own error, fails without a further message
 * @param type the type wanted
 * @return 1 if the types match, else 0
 */
OSTRUM_API int32_t TLS_CheckType(TLS_BLOCK *root, TLT_STATEMENT *statement, TLE_TERM *expression,
                                 TLI_IDENTIFIER *type);

/**
 * Warns "Unreachable code" against the statement behind the one given, if there is one.
 * @param record statement record that control does not pass, or null
 */
OSTRUM_API void TLS_CheckUnreachable(TLS_STATEMENT *record);

/**
 * Runs the check of every statement of a block.
 * @param block a block or null
 */
OSTRUM_API void TLS_CheckBlock(TLS_BLOCK *block);

/**
 * Writes every statement of a block, in order, for the target of the stream.
 * @param stream where to
 * @param block a block or null
 */
OSTRUM_API void TLS_BlockCode(TLC_STREAM *stream, TLS_BLOCK *block);

/**
 * Writes a block in braces at the indent of the block outside it: C and Java text.
 * @param stream C or Java stream
 * @param block the block; null leaves the braces empty
 */
OSTRUM_API void TLS_OneBlockCCode(TLC_STREAM *stream, TLS_BLOCK *block);

/** The same operation as TLS_OneBlockCCode. @param stream Java stream @param block the block */
OSTRUM_API void TLS_OneBlockJCode(TLC_STREAM *stream, TLS_BLOCK *block);

/**
 * Lists a block: the label and the statements on the listing stream of TLP_SetModuleOut where
 * they are lines of their own, the rest on standard output.
 * @param label what the block is
 * @param block a block or null
 * @param indent columns before the label, 0 or more
 */
OSTRUM_API void TLS_PrintBlock(const char *label, TLS_BLOCK *block, int32_t indent);

/**
 * Frees a block, its statements, and all that they own.
 * @param block a block or null
 */
OSTRUM_API void TLS_DelBlock(TLS_BLOCK *block);

/** @param block any block @return the module of the block */
OSTRUM_API TLP_MODULE *TLS_BlockModule(TLS_BLOCK *block);

/** @param block a root block @return the section type that TLS_Begin was given */
OSTRUM_API int32_t TLS_GetBlockSectionType(TLS_BLOCK *block);

/** @param head head statement of a function's block @return the function */
OSTRUM_API TLI_IDENTIFIER *TLS_FunctionIdentifier(TLS_STATEMENT *head);

/**
 * Enters a block class in the table.
 * @param type section type, 0 to 9; any other is ignored
 * @param block_class the class, which must outlive the process's compilations
 */
OSTRUM_API void TLS_DeclareBlockClass(int32_t type, const TLS_BLOCK_CLASS *block_class);

/** Declares the block classes, once; may be called any number of times. */
OSTRUM_API void TLS_Initialise(void);

/** Ends the module in the process; it is not made ready again. */
OSTRUM_API void TLS_CleanUp(void);

OSTRUM_END

#endif
