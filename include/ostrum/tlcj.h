/*
 * Java text: how types and names are written.
 */
#ifndef OSTRUM_TLCJ_H
#define OSTRUM_TLCJ_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/**
 * The Java name of a type.
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

OSTRUM_END

#endif
