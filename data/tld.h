/*
 * Data sections: what the kinds share inside the library. The main item of a section is the head of
 * its tree of blocks; the section's statements stand in the item's sub-block.
 */
#pragma once

#include "stmt/tls.h"

#include <ostrum/tld.h>

/* First byte of a record. */
enum : int32_t {
    TLD_RECORD_CONNECTOR = 1,
    TLD_RECORD_END = 2, /* of a connector or a component */
    TLD_RECORD_VIEW = 3,
    TLD_RECORD_PIN = 4,
    TLD_RECORD_POINT = 5,
    TLD_RECORD_COMPONENT = 6,
    TLD_RECORD_CONVERTER = 7,
    TLD_RECORD_VIEW_WITH_HELP = 10,
    TLD_RECORD_VARIABLE = 11,
};

/* What TLD_FindAttribute gives after a message. */
enum { TLD_NO_ATTRIBUTE = -1 };

/* What every main item begins with. */
struct TLD_SECTION {
    TLS_STATEMENT common;
    TLI_IDENTIFIER *identifier; /* the section's function */
    TLS_BLOCK *sub_block;       /* owned */
    TLC_PSECT *section;         /* of the record; set when the code is generated */
    int32_t symbol_class;       /* set when the code is generated; nested items use it */
};

/* How the main item of a kind is made. */
struct TLD_SECTION_KIND {
    const char *tag;
    int32_t size; /* bytes of the item */
    const TLS_STATEMENT_CLASS *statement_class;
    void (*set_defaults)(TLS_STATEMENT *item); /* null if all fields start at 0 */
};

/* What a word begins, in a block. */
struct TLD_ITEM_WORD {
    int32_t word; /* TLD_WORD_ */
    void (*parse)(TLS_BLOCK *root, TLT_STATEMENT *statement, TLS_STATEMENT *item);
};

/* A kind of item that stands in a section and has a name of its own. */
struct TLD_ITEM_KIND {
    const char *tag;
    int32_t size; /* bytes of the item */
    const TLS_STATEMENT_CLASS *statement_class;
    const char *type_name;      /* data type of the name */
    TLD_HANDLER handler;        /* takes the attributes */
    const TLD_ITEM_WORD *words; /* what stands in the item; may be null */
    int32_t word_count;
};

/* What every such item begins with. */
struct TLD_ITEM {
    TLS_STATEMENT common;
    const TLD_ITEM_KIND *kind;
    const TLD_SECTION *owner;   /* main item of the section */
    TLI_IDENTIFIER *identifier; /* null after an error, and then it gives no record */
    TLS_BLOCK *sub_block;       /* owned; null after an error */
    TLC_PSECT *section;         /* of the record; set when the code is generated */
};

/** @param item main item of any kind @return it as such */
inline TLD_SECTION *TLD_AsSection(TLS_STATEMENT *item)
{
    return reinterpret_cast<TLD_SECTION *>(item);
}

/**
 * Begins a section: makes the main item, the root block and the item's sub-block.
 * @param kind how the item is made
 * @param module the module
 * @param function the section's function identifier
 * @param statement the statement that opens the section
 * @param type section type
 * @return the root block, which owns the item
 */
TLS_BLOCK *TLD_BeginSection(const TLD_SECTION_KIND &kind, TLP_MODULE *module,
                            TLI_IDENTIFIER *function, TLT_STATEMENT *statement, int32_t type);

/**
 * Parses a statement by its first word: the items of the table, nothing for END, and an attribute
 * list for anything else.
 * @param root root block
 * @param statement the statement, nothing of it consumed
 * @param item the item that the block belongs to
 * @param words what else begins an item
 * @param count entries of words
 * @param handler takes the attributes of the item
 */
void TLD_ParseItem(TLS_BLOCK *root, TLT_STATEMENT *statement, TLS_STATEMENT *item,
                   const TLD_ITEM_WORD *words, int32_t count, TLD_HANDLER handler);

/**
 * Gives a field a term, as TLD_SetValue does, and deletes the term that it held.
 * @param statement the statement
 * @param slot in and out: the field; owns the term from then on
 * @param value the term, from TLD_ExpectConstant
 */
void TLD_SetTerm(TLT_STATEMENT *statement, TLE_TERM **slot, intptr_t value);

/** Reports "Value for '%s' not specified" if a field has no term. */
void TLD_CheckTerm(TLS_STATEMENT *item, const TLE_TERM *term, const char *name);

/**
 * Begins an item with a name: appends it, consumes the word and reads the name. Unless that failed,
 * the item has a sub-block for the deeper statements.
 * @param kind how the item is made
 * @param root root block
 * @param statement the statement, nothing of it consumed
 * @param owner main item of the section
 * @param prefix stands before the name with a "." between; may be null
 * @return the item; its block owns it
 */
TLD_ITEM *TLD_BeginItem(const TLD_ITEM_KIND &kind, TLS_BLOCK *root, TLT_STATEMENT *statement,
                        const TLD_SECTION *owner, const char *prefix);

/** Parses the attributes that stand behind an item's name; nothing if the name failed. */
void TLD_ParseAttributes(TLS_BLOCK *root, TLT_STATEMENT *statement, TLD_ITEM *item);

/** Frees an item and its sub-block, when what it holds besides is freed. */
void TLD_DeleteItem(TLD_ITEM *item);

/**
 * Opens the record of an item, if it has a name: a section for the bytes, which becomes the
 * identifier's, with a symbol named after the owner and the item.
 * @param stream P-code stream
 * @param item the item, of which the owner's record has been opened
 * @return false without a name
 */
bool TLD_OpenItem(TLC_STREAM *stream, TLD_ITEM *item);

/** Writes the record that ends those of a section with nested items. */
void TLD_CloseRecord(TLC_STREAM *stream);

/**
 * True while a Java stream declares the fields of items; then come the statements that construct the
 * items.
 */
bool TLD_JavaDeclares(TLC_STREAM *stream);

/** Writes the name of an item in Java text. */
void TLD_JavaName(TLC_STREAM *stream, TLI_IDENTIFIER *identifier);

/** Writes the field of an item. @param class_name its Java class */
void TLD_JavaField(TLC_STREAM *stream, const char *class_name, TLI_IDENTIFIER *identifier);

/**
 * Writes the opening of a statement that constructs an item, up to the bracket of the arguments.
 * @param stream Java stream
 * @param class_name Java class of the item
 * @param identifier the item's
 */
void TLD_JavaNew(TLC_STREAM *stream, const char *class_name, TLI_IDENTIFIER *identifier);

/** Writes one more argument. @param term null writes null */
void TLD_JavaArgument(TLC_STREAM *stream, TLE_TERM *term);

/** Writes the statement that calls a method of an item with another item. */
void TLD_JavaCall(TLC_STREAM *stream, TLI_IDENTIFIER *object, const char *method,
                  TLI_IDENTIFIER *argument);

/**
 * Writes an item, in either pass, of which nothing reaches Java but its name: a program sets the
 * attributes of the object.
 */
void TLD_JavaPlainItem(TLC_STREAM *stream, const char *class_name, TLI_IDENTIFIER *identifier);

/** Opens the record of a main item: the function's symbol, and a section for the bytes. */
void TLD_OpenRecord(TLC_STREAM *stream, TLS_STATEMENT *item);
