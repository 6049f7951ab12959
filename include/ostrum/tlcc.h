/*
 * C text: the declarations of a module's names.
 */
#ifndef OSTRUM_TLCC_H
#define OSTRUM_TLCC_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** Readies what C text needs: code streams, names and types. */
OSTRUM_API void TLCC_Initialise(void);

/**
 * Writes the declarations of a scope: its types, so that each stands before its uses, then the other
 * names in the order of a walk of the scope, then an empty line.
 *
 * @param stream  C stream
 * @param scope   the scope; null writes the empty line alone
 */
OSTRUM_API void TLCC_WriteScopeIdentifiers(TLC_STREAM *stream, TLI_SCOPE *scope);

/**
 * Writes the declaration of one name. Names that need none in C write nothing: functions, which have
 * a writer of their own, and constants that every use of them replaces by their value.
 *
 * @param stream      C stream
 * @param identifier  the name
 */
OSTRUM_API void TLCC_WriteIdentifier(TLC_STREAM *stream, TLI_IDENTIFIER *identifier);

OSTRUM_END

#endif
