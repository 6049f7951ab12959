/*
 * The names that own storage in a scope (variables, arguments, fields) and functions, which own a
 * scope of their own. All four are identifiers; an identifier belongs to the scope that it was
 * declared in and goes with it.
 */
#ifndef OSTRUM_TLIV_H
#define OSTRUM_TLIV_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** Nothing to do; here so that every family can be initialised alike. */
OSTRUM_API void TLIV_Initialise(void);

/**
 * Declares a variable in the top scope of a domain and allocates its room there.
 *
 * @param data_types  data-type domain of the module; may be null
 * @param domain      the module's domain
 * @param statement   declaring statement, for messages; may be null
 * @param name        name of the variable
 * @param type        type of the variable, or of one element
 * @param dimension   -1 scalar, 0 length known at run time, above 0 number of elements
 * @param range       type of the subscript; null for a scalar
 * @return            the variable; null after an error message ("Illegal type for variable", or the
 *                    name is taken; in the latter case the room stays allocated)
 */
OSTRUM_API TLI_IDENTIFIER *TLIV_Variable(TLI_DOMAIN *data_types, TLI_DOMAIN *domain,
                                         TLT_STATEMENT *statement, const char *name,
                                         TLI_IDENTIFIER *type, int32_t dimension,
                                         TLI_IDENTIFIER *range);

/**
 * Declares a field in the top scope of a domain, which is to be the record's. Called through
 * TLIT_RecordField, which also links the field into the record.
 *
 * @param data_types  data-type domain of the module; may be null
 * @param domain      the module's domain, with the record's scope on top
 * @param statement   declaring statement, for messages; may be null
 * @param record      record type that holds the field
 * @param name        name of the field
 * @param type        type of the field, or of one element
 * @param dimension   -1 scalar, 0 length known at run time, above 0 number of elements
 * @param range       type of the subscript; null for a scalar
 * @return            the field; null after an error message ("Illegal type for record field", or
 *                    the name is taken)
 */
OSTRUM_API TLI_IDENTIFIER *TLIV_RecordField(TLI_DOMAIN *data_types, TLI_DOMAIN *domain,
                                            TLT_STATEMENT *statement, TLI_IDENTIFIER *record,
                                            const char *name, TLI_IDENTIFIER *type,
                                            int32_t dimension, TLI_IDENTIFIER *range);

/**
 * Declares an argument in the top scope of a domain, which is to be the function's, and appends it
 * to the function's arguments.
 *
 * @param data_types  data-type domain of the module; may be null
 * @param domain      the module's domain, with the function's scope on top
 * @param statement   declaring statement, for messages; may be null
 * @param name        name of the argument
 * @param type        type of the argument, or of one element
 * @param dimension   -1 scalar, 0 array; above 0 only with an enumeration as range
 * @param range       type of the subscript; null for a scalar
 * @param function    the function, from TLIV_Function
 * @param pass_type   0 by value, 1 VAR, 2 CONST
 * @return            the argument; null after an error message
 */
OSTRUM_API TLI_IDENTIFIER *TLIV_Argument(TLI_DOMAIN *data_types, TLI_DOMAIN *domain,
                                         TLT_STATEMENT *statement, const char *name,
                                         TLI_IDENTIFIER *type, int32_t dimension,
                                         TLI_IDENTIFIER *range, TLI_IDENTIFIER *function,
                                         int32_t pass_type);

/** The pass type of an argument, 0 value, 1 VAR, 2 CONST; 0 for any other identifier or null. */
OSTRUM_API int32_t TLIV_ArgumentPassType(TLI_IDENTIFIER *identifier);

/**
 * The place of a variable or an argument in its scope, in bytes. Any other identifier ends the
 * process through SM_Exception.
 */
OSTRUM_API int32_t TLIV_Offset(TLI_IDENTIFIER *identifier);

/** The place of a field in its record, in bytes; 0 for an identifier that is no field. */
OSTRUM_API int32_t TLIV_FieldOffset(TLI_IDENTIFIER *field);

/**
 * Declares a function in the top scope of a domain and pushes its new, empty scope on that domain.
 * The caller pops the scope.
 *
 * @param data_types      data-type domain of the module; may be null
 * @param domain          the module's domain
 * @param statement       declaring statement, for messages; may be null
 * @param name            name of the function
 * @param function_class  section type number, 0 to 9; -1 where the source names none
 * @param qualifiers      0 private, 1 public, 2 entry point, 3 prototype of a function type
 * @param result          result type
 * @return                the function; null after an error message, nothing is pushed then
 */
OSTRUM_API TLI_IDENTIFIER *TLIV_Function(TLI_DOMAIN *data_types, TLI_DOMAIN *domain,
                                         TLT_STATEMENT *statement, const char *name,
                                         int32_t function_class, int32_t qualifiers,
                                         TLI_IDENTIFIER *result);

/** The class of a function, a section type number; 0 for any other identifier or null. */
OSTRUM_API int32_t TLIV_FunctionClass(TLI_IDENTIFIER *function);

/** Gives a function another class; does nothing for any other identifier or null. */
OSTRUM_API void TLIV_SetFunctionClass(TLI_IDENTIFIER *function, int32_t function_class);

/** The qualifiers of a function: 0 private, 1 public, 2 entry, 3 prototype; 0 for all others. */
OSTRUM_API int32_t TLIV_FunctionQualifiers(TLI_IDENTIFIER *function);

/** The body of a function, which the function owns; null before BEGIN and for all others. */
OSTRUM_API TLS_BLOCK *TLIV_GetFunctionBlock(TLI_IDENTIFIER *function);

/**
 * Hands a function its body. A body that it had is not freed. Does nothing for an identifier that
 * is no function.
 */
OSTRUM_API void TLIV_SetFunctionBlock(TLI_IDENTIFIER *function, TLS_BLOCK *block);

/** The module's running line number of a function's declaration; 0 for all others. */
OSTRUM_API int32_t TLIV_GetFunctionLineNumber(TLI_IDENTIFIER *function);

/** Sets that line number; does nothing for an identifier that is no function. */
OSTRUM_API void TLIV_SetFunctionLineNumber(TLI_IDENTIFIER *function, int32_t line);

/** The scope of a function's arguments and locals, owned by it; null for any other identifier. */
OSTRUM_API TLI_SCOPE *TLIV_FunctionScope(TLI_IDENTIFIER *identifier);

/** Pushes a function's scope on a domain; does nothing for an identifier that is no function. */
OSTRUM_API void TLIV_PushScope(TLI_DOMAIN *domain, TLI_IDENTIFIER *identifier);

/** Pops the domain's top scope, if the identifier is a function; else does nothing. */
OSTRUM_API void TLIV_PopScope(TLI_DOMAIN *domain, TLI_IDENTIFIER *identifier);

/**
 * The nth argument of a function, or of the prototype of an item of function type. A walk from 0 up
 * costs the same at each step, however many arguments there are.
 *
 * @param function  function, or variable, field or argument of function type
 * @param index     from 0
 * @return          the argument; null past the end, or if the identifier cannot be called
 */
OSTRUM_API TLI_IDENTIFIER *TLIV_GetFunctionArgument(TLI_IDENTIFIER *function, int32_t index);

/**
 * Lets a syscall be called with more arguments than it declares.
 *
 * @param statement  statement for the message; may be null
 * @param function   a function; if its class is not that of a syscall, the error "Extra arguments
 *                   only permitted on SYSCALLs" is raised and nothing changes
 */
OSTRUM_API void TLIV_AllowExtraArguments(TLT_STATEMENT *statement, TLI_IDENTIFIER *function);

/** 1 if a function, or the prototype of an item of function type, takes extra arguments; else 0. */
OSTRUM_API int32_t TLIV_ExtraArgumentsAllowed(TLI_IDENTIFIER *function);

/**
 * Compares two functions: result types and arguments, to the arguments' names.
 *
 * @param statement  statement for the message; may be null
 * @param first      a function
 * @param second     a function
 * @param strict     0: QUANTITY also matches any quantity type; else types are to be equal
 * @return           1 if they match; 0 after the error "Function declaration does not match
 *                   prototype"
 */
OSTRUM_API int32_t TLIV_CompareFunctions(TLT_STATEMENT *statement, TLI_IDENTIFIER *first,
                                         TLI_IDENTIFIER *second, int32_t strict);

/** TLIV_CompareFunctions of a prototype and its definition, strictly. */
OSTRUM_API int32_t TLIV_CheckPrototype(TLT_STATEMENT *statement, TLI_IDENTIFIER *prototype,
                                       TLI_IDENTIFIER *definition);

OSTRUM_END

#endif
