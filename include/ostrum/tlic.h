/*
 * Three small classes of names: constants, which keep their initialiser as expression terms;
 * non-volatiles, whose storage outlives a run; and nodes, which carry a pointer for their owner.
 */
#ifndef OSTRUM_TLIC_H
#define OSTRUM_TLIC_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** Nothing to do; here so that every family can be initialised alike. */
OSTRUM_API void TLIC_Initialise(void);

/**
 * Declares a constant in the top scope of a domain.
 *
 * @param data_types  data-type domain of the module; may be null
 * @param domain      the module's domain
 * @param statement   declaring statement, for messages; may be null
 * @param name        name of the constant
 * @param type        type of the constant, or of one element
 * @param dimension   -1 scalar, else the number of elements
 * @param range       type of the subscript; null for a scalar
 * @param values      list of links (TLE_Append), one for each element; the constant owns it from
 *                    then on; with a null result it stays the caller's
 * @return            the constant; null after an error message ("Illegal type for constant", or the
 *                    name is taken)
 */
OSTRUM_API TLI_IDENTIFIER *TLIC_Constant(TLI_DOMAIN *data_types, TLI_DOMAIN *domain,
                                         TLT_STATEMENT *statement, const char *name,
                                         TLI_IDENTIFIER *type, int32_t dimension,
                                         TLI_IDENTIFIER *range, TLE_TERM *values);

/**
 * Declares a non-volatile variable in the top scope of a domain.
 *
 * @param data_types  data-type domain of the module; may be null
 * @param domain      the module's domain
 * @param statement   declaring statement, for messages; may be null
 * @param name        name of the variable
 * @param type        type of the variable, or of one element
 * @param dimension   -1 scalar, else the number of elements
 * @param range       type of the subscript; null for a scalar
 * @return            the variable; null after an error message ("Illegal type for non-volatile", or
 *                    the name is taken)
 */
OSTRUM_API TLI_IDENTIFIER *TLIC_NonVolatile(TLI_DOMAIN *data_types, TLI_DOMAIN *domain,
                                            TLT_STATEMENT *statement, const char *name,
                                            TLI_IDENTIFIER *type, int32_t dimension,
                                            TLI_IDENTIFIER *range);

/**
 * The value of a constant, of one of its elements, or of an enumeration value.
 *
 * @param module      module that asks; may be null
 * @param identifier  any identifier; null has no value
 * @param index       element from 0; ignored for a scalar
 * @param value       out: a number, or a pointer to a text or a term, as TLE_ConstantValue gives
 *                    it; borrowed; left alone unless the result is 1
 * @return            1, or 0 if there is no such single value
 */
OSTRUM_API int32_t TLIC_ConstantValue(TLP_MODULE *module, TLI_IDENTIFIER *identifier, int32_t index,
                                      intptr_t *value);

/**
 * Writes the values of a constant into a new constant section.
 *
 * @param stream       P-code stream
 * @param identifier   the constant; its program section is set
 * @param make_symbol  not 0: a definition symbol is written before the values
 */
OSTRUM_API void TLIC_PlantConstant(TLC_STREAM *stream, TLI_IDENTIFIER *identifier,
                                   int32_t make_symbol);

/**
 * Reserves the zero-filled storage of a non-volatile in a new non-volatile section.
 *
 * @param stream       P-code stream
 * @param identifier   the non-volatile; its program section is set
 * @param make_symbol  not 0: a definition symbol is written before the storage
 */
OSTRUM_API void TLIC_PlantNonVolatile(TLC_STREAM *stream, TLI_IDENTIFIER *identifier,
                                      int32_t make_symbol);

/**
 * Declares a node in the top scope of a domain.
 *
 * @param data_types  data-type domain of the module; may be null
 * @param domain      the module's domain
 * @param statement   declaring statement, for messages; may be null
 * @param name        name of the node
 * @param type        type of the node; may be null
 * @param data        a pointer for the owner, never looked at
 * @return            the node; null after an error message
 */
OSTRUM_API TLI_IDENTIFIER *TLIC_Node(TLI_DOMAIN *data_types, TLI_DOMAIN *domain,
                                     TLT_STATEMENT *statement, const char *name,
                                     TLI_IDENTIFIER *type, void *data);

/** The pointer of a node; null for an identifier that is no node. */
OSTRUM_API void *TLIC_NodeData(TLI_IDENTIFIER *identifier);

OSTRUM_END

#endif
