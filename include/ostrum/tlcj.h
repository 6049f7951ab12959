/*
 * Java text: how types and names are written, and the declarations of a module's names.
 */
#ifndef OSTRUM_TLCJ_H
#define OSTRUM_TLCJ_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** Readies what Java text needs: code streams, names and types. The same as TLCC_Initialise. */
OSTRUM_API void TLCJ_Initialise(void);

/**
 * Writes the declarations of a scope: its types and enumeration values, its constants, then its
 * variables in the order of a walk of the scope, then an empty line. The scope of a function gives
 * local variables, any other static members.
 *
 * @param stream  Java stream
 * @param scope   the scope; null writes the empty line alone
 */
OSTRUM_API void TLCJ_WriteScopeIdentifiers(TLC_STREAM *stream, TLI_SCOPE *scope);

/**
 * The Java name of a type: what tells data sections and tools which class serves it. Quantities are
 * classes here; where a program computes with them, the text has int.
 *
 * @param data_types  data-type domain of the module, whose MESSAGE is a String; may be null
 * @param type        the type
 * @return            a fixed text, or the name of the type itself or of what it points at; borrowed
 */
OSTRUM_API const char *TLCJ_TypeName(TLI_DOMAIN *data_types, TLI_IDENTIFIER *type);

/**
 * The Java name of an identifier: its own, with "_" in front of a leading digit and in the place of
 * its first ".".
 *
 * @param identifier  the identifier
 * @return            a new text, which the caller releases with ST_Free
 */
OSTRUM_API char *TLCJ_IdentifierName(TLI_IDENTIFIER *identifier);

/**
 * Writes a term of a data record: "null" if there is none, else its text.
 *
 * @param stream  Java stream
 * @param term    the term, or null
 */
OSTRUM_API void TLCJ_DataTerm(TLC_STREAM *stream, TLE_TERM *term);

OSTRUM_END

#endif
