/*
 * C text: names as C knows them, and the heads of functions.
 */
#pragma once

#include <ostrum/tlcc.h>

/* Two names of 31 characters, what joins them, a mark and the terminator. */
enum { TLCC_NAME_CAPACITY = 72 };

/**
 * The name that an identifier has in C text: with its module in front where other modules see it, as
 * functions, enumeration values and constants that are public; by itself elsewhere. A word that C or
 * toll.h keeps for itself gets a "_" behind it.
 * @param identifier the identifier
 * @param buffer room for the name where it is not the identifier's own: TLCC_NAME_CAPACITY bytes
 * @return the name; in the buffer, or the identifier's
 */
const char *TLCC_Name(TLI_IDENTIFIER *identifier, char *buffer);

/** Tells whether a name is that of a data section. */
bool TLCC_IsItem(TLI_IDENTIFIER *identifier);

/**
 * The name of a data item in C text: every character that no C name has becomes a "_".
 * @param type type of the item
 * @param name the item's own name
 * @param buffer out: TLCC_NAME_CAPACITY bytes
 * @return the buffer
 */
const char *TLCC_ItemName(TLI_IDENTIFIER *type, const char *name, char *buffer);

/** Turns every character that no C name has into a "_"; gives the text. */
char *TLCC_Characters(char *text);

/**
 * The C type in which values of a type are worked with: for an array the type of its elements.
 * @param type a type
 * @return its name, borrowed
 */
const char *TLCC_TypeName(TLI_IDENTIFIER *type);

/** The C type that a function gives. The narrow types come back as whole words. */
const char *TLCC_ResultName(TLI_IDENTIFIER *function);

/** Writes the argument list of a function on one line, between brackets. */
void TLCC_WritePrototype(TLC_STREAM *stream, TLI_IDENTIFIER *function);

/** Writes the head of a function's definition, from the line before it to its opening brace. */
void TLCC_WriteHead(TLC_STREAM *stream, TLI_IDENTIFIER *function);

/** Writes what the header tells of functions that have no body here: syscalls, user operation codes. */
void TLCC_WriteExternals(TLC_STREAM *stream, TLI_SCOPE *scope);

/** Writes the declaration of the item that a data literal names; the item itself stands outside. */
void TLCC_DeclareItem(TLC_STREAM *stream, TLE_TERM *literal);
