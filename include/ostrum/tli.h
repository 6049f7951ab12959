/*
 * Names: identifiers, the scopes that hold them, the domains in which they are looked up, and the
 * pragmas that hang on them.
 *
 * An identifier belongs to the scope it was made in, a scope to whoever made it, a domain too. Text
 * that an operation gives back is borrowed unless it says otherwise. Every operation wants
 * TLI_Initialise to have run.
 */
#ifndef OSTRUM_TLI_H
#define OSTRUM_TLI_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** The flag word of an identifier: a class code in the low four bits, and flags. */
enum {
    TLI_NAME = 0,              /**< a bare name */
    TLI_CONSTANT = 1,          /**< named constant, scalar or array */
    TLI_TYPE = 2,              /**< a type */
    TLI_VARIABLE = 3,          /**< variable of a scope */
    TLI_FUNCTION = 4,          /**< function, tree, syscall, data section or prototype */
    TLI_ENUM_VALUE = 5,        /**< one value of an enumeration */
    TLI_BUILT_IN_FUNCTION = 6, /**< built-in function */
    TLI_NODE = 7,              /**< node of a tree, or a data item */
    TLI_FIELD = 8,             /**< field of a record */
    TLI_NON_VOLATILE = 9,      /**< non-volatile variable */
    TLI_ARGUMENT = 10,         /**< formal argument of a function */
    TLI_CLASS_COUNT = 11,
    TLI_CLASS_MASK = 15, /**< the class code */
    TLI_ASSIGNABLE = 16, /**< can be assigned to and passed to a VAR argument */
    TLI_DIMENSIONED = 32 /**< can be subscripted */
};

/** Scope types. */
enum {
    TLI_FRAME_SCOPE = 0, /**< storage in the frame of a function, or in a record */
    TLI_STATIC_SCOPE = 1 /**< static storage of the module */
};

/** How running code reaches a scope. */
enum {
    TLI_LOCAL = 0,    /**< by offset in the running function's frame */
    TLI_GLOBAL = 1,   /**< by static address */
    TLI_NON_LOCAL = 2 /**< by offset in the frame of an outer function */
};

/**
 * What all identifiers of one class have in common; static and constant. An operation that the class
 * does not have is null.
 *
 * The record that follows the generic part of an identifier is the class's own: record_size counts
 * both, in bytes.
 */
typedef struct TLI_CLASS {
    /** Name of the class itself, the second column of an identifier line. */
    const char *class_name;
    /** Bytes of storage for one identifier; less than the generic part counts as the generic part. */
    uint32_t record_size;
    /** Flag word: class code, TLI_ASSIGNABLE, TLI_DIMENSIONED. */
    uint32_t flags;
    /** Frees what the class added to the record, not the record. */
    void (*delete_operation)(TLI_IDENTIFIER *identifier);
    /** Ends the identifier's line with the class's details and a newline; the last write's result. */
    int32_t (*print)(FILE *stream, TLI_IDENTIFIER *identifier, TLP_MODULE *module);
    /** 1 and the value of the index-th element (index 0 for a scalar), or 0. */
    int32_t (*value)(TLI_IDENTIFIER *identifier, int32_t index, intptr_t *value,
                     TLP_MODULE *module);
    /** Code that loads the value; offset is a subscript, or -1 if it is on the stack. 1, or 0. */
    int32_t (*push_value)(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t offset);
    /** Code that loads the address; offset as above. 1, or 0 after a code generation error. */
    int32_t (*push_address)(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t offset);
    /** Code that loads the number of elements. 1, or 0 after a code generation error. */
    int32_t (*push_dimension)(TLC_STREAM *stream, TLI_IDENTIFIER *identifier);
    /** -1 scalar, 0 length known at run time, else the count; range type through a non-null out. */
    int32_t (*dimension)(TLI_IDENTIFIER *identifier, TLI_IDENTIFIER **range_type);
    /** The flag word, where it depends on the identifier; takes the place of the field flags. */
    uint32_t (*flags_function)(TLI_IDENTIFIER *identifier);
} TLI_CLASS;

/** Visits one identifier of a walk; 0 ends the walk. The scope must not change meanwhile. */
typedef int32_t (*TLI_IDENTIFIER_VISITOR)(void *context, const char *name,
                                          TLI_IDENTIFIER *identifier);
/** Visits one used scope; 0 ends the walk. */
typedef int32_t (*TLI_SCOPE_VISITOR)(void *context, const char *name, TLI_SCOPE *scope);
/** Visits one pragma; 0 ends the walk. */
typedef int32_t (*TLI_PRAGMA_VISITOR)(void *context, const char *pragma, const char *value);

/** Makes the language's names, once in a process; later calls do nothing. */
OSTRUM_API void TLI_Initialise(void);

/* Identifiers */

/**
 * @param class_code  TLI_NAME to TLI_ARGUMENT
 * @return            "NAME", "CONSTANT" and so on; "<UNKNOWN CLASS>" for any other number
 */
OSTRUM_API const char *TLI_ClassName(int32_t class_code);

/** The identifier's name, empty if it was made without one; "<NULL IDENTIFIER>" for null. */
OSTRUM_API const char *TLI_IdentifierName(const TLI_IDENTIFIER *identifier);

/**
 * The name with its domain's in front, "DOMAIN.NAME", cut to 31 characters; the name alone if the
 * domain has none or the identifier carries the pragma NOTAG.
 *
 * @return  a static buffer, overwritten by the next call
 */
OSTRUM_API const char *TLI_FullName(TLI_IDENTIFIER *identifier);

/** The domain of the identifier's scope; null if it stands in no scope. */
OSTRUM_API TLI_DOMAIN *TLI_IdentifierDomain(const TLI_IDENTIFIER *identifier);

/** The class code, the flag word's low four bits. */
OSTRUM_API int32_t TLI_IdentifierClass(TLI_IDENTIFIER *identifier);

/** The flag word. */
OSTRUM_API uint32_t TLI_IdentifierFlags(TLI_IDENTIFIER *identifier);

/** The type, null if there is none. */
OSTRUM_API TLI_IDENTIFIER *TLI_IdentifierType(const TLI_IDENTIFIER *identifier);

/** The scope that holds the identifier. */
OSTRUM_API TLI_SCOPE *TLI_IdentifierScope(const TLI_IDENTIFIER *identifier);

/** The declaring statement; null for predeclared names. */
OSTRUM_API TLT_STATEMENT *TLI_IdentifierStatement(const TLI_IDENTIFIER *identifier);

/** Sets the declaring statement, as when a record or prototype is declared again. Not owned. */
OSTRUM_API void TLI_SetIdentifierStatement(TLI_IDENTIFIER *identifier, TLT_STATEMENT *statement);

/** The program section that the identifier was planted in; null until then. */
OSTRUM_API TLC_PSECT *TLI_IdentifierPSect(const TLI_IDENTIFIER *identifier);

/** Notes the program section that the identifier is planted in. Not owned. */
OSTRUM_API void TLI_SetPSect(TLI_IDENTIFIER *identifier, TLC_PSECT *psect);

/**
 * @param range_type  out: type of the subscript; may be null; left alone if there is no dimension
 * @return            -1 scalar, 0 length known at run time, above 0 the number of elements, -2 if
 *                    identifiers of this class have no dimension
 */
OSTRUM_API int32_t TLI_IdentifierDimension(TLI_IDENTIFIER *identifier, TLI_IDENTIFIER **range_type);

/** 1 if the identifier has exactly this class code and this type, else 0. */
OSTRUM_API int32_t TLI_CheckIdentifier(TLI_IDENTIFIER *identifier, int32_t class_code,
                                       const TLI_IDENTIFIER *type);

/**
 * Declares a name in the top scope of a domain. A name that the scope already has is an error; a
 * name that hides one from elsewhere is told as information, except that a data type gives way to
 * the new name without a word.
 *
 * @param data_types    data-type domain of the module; may be null
 * @param domain        domain whose top scope takes the name
 * @param statement     declaring statement, for messages too; may be null
 * @param name          null counts as an empty name
 * @param type          may be null
 * @param class_record  null for a bare name; not copied
 * @return              the new identifier, zero-filled behind its generic part, owned by the scope;
 *                      null after an error
 */
OSTRUM_API TLI_IDENTIFIER *TLI_NewIdentifier(TLI_DOMAIN *data_types, TLI_DOMAIN *domain,
                                             TLT_STATEMENT *statement, const char *name,
                                             TLI_IDENTIFIER *type, const TLI_CLASS *class_record);

/**
 * Declares a name in a scope without looking beyond it.
 *
 * @return  the new identifier, owned by the scope; null after the error that the scope has the name
 */
OSTRUM_API TLI_IDENTIFIER *TLI_NewScopeIdentifier(TLI_SCOPE *scope, TLT_STATEMENT *statement,
                                                  const char *name, TLI_IDENTIFIER *type,
                                                  const TLI_CLASS *class_record);

/**
 * Deletes an identifier with its pragmas and what its class owns.
 *
 * @return  1; 0 if its name could not be removed from its scope, and then it lives on
 */
OSTRUM_API int32_t TLI_DelIdentifier(TLI_IDENTIFIER *identifier);

/**
 * Writes the identifier's line: class, class record, type, name, pragmas and class details.
 *
 * @param module  module whose names give constants their values; may be null
 * @return        result of the last write, negative if it failed
 */
OSTRUM_API int32_t TLI_PrintIdentifier(FILE *stream, TLI_IDENTIFIER *identifier,
                                       TLP_MODULE *module);

/* Code */

/**
 * Generates code that loads the identifier's value.
 *
 * @param offset  subscript in elements, 0 or more; -1 if the subscript is on the stack
 * @return        1; 0 after a code generation error
 */
OSTRUM_API int32_t TLI_PushValue(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t offset);

/** The same for the identifier's address. */
OSTRUM_API int32_t TLI_PushAddress(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t offset);

/** Generates code that loads the number of elements. 1; 0 after a code generation error. */
OSTRUM_API int32_t TLI_PushDimension(TLC_STREAM *stream, TLI_IDENTIFIER *identifier);

/** Generates a load of a value of this type through the address on the stack. */
OSTRUM_API void TLI_LoadValue(TLC_STREAM *stream, TLI_IDENTIFIER *type);

/* Pragmas */

/**
 * Hangs a pragma on an identifier; it hides an earlier one of its name. Both texts are copied.
 *
 * @param name   kept in upper case, cut to 31 characters
 * @param value  null counts as an empty text
 */
OSTRUM_API void TLI_Pragma(TLI_IDENTIFIER *identifier, const char *name, const char *value);

/** Value of the newest pragma of exactly this name, upper case as they are kept; null if none. */
OSTRUM_API const char *TLI_FindPragma(const TLI_IDENTIFIER *identifier, const char *name);

/**
 * Visits the pragmas, newest first, until a visit gives 0.
 *
 * @return  the last visit's result; the identifier itself, as a number, if it has no pragma
 */
OSTRUM_API intptr_t TLI_AllPragmas(TLI_IDENTIFIER *identifier, TLI_PRAGMA_VISITOR action,
                                   void *context);

/* Lookup */

/** The identifier of this name in this scope alone, or null. */
OSTRUM_API TLI_IDENTIFIER *TLI_FindScopeIdentifier(const TLI_SCOPE *scope, const char *name);

/** The innermost identifier of this name on the domain's stack, or null. */
OSTRUM_API TLI_IDENTIFIER *TLI_FindDomainIdentifier(const TLI_DOMAIN *domain, const char *name);

/**
 * Finds a name as written in source: a plain name in the domain, then in the data types and the
 * language; a name "Q.R" in the used domain Q, the used scope Q, or the domain itself if it is Q.
 *
 * @param data_types  data-type domain; may be null
 * @param name        one with a "." is cut to 31 characters first
 */
OSTRUM_API TLI_IDENTIFIER *TLI_FindIdentifier(const TLI_DOMAIN *data_types,
                                              const TLI_DOMAIN *domain, const char *name);

/* Domains and scopes */

/** A new domain with an empty stack; its name, which may be empty, is cut to 31 characters. */
OSTRUM_API TLI_DOMAIN *TLI_NewDomain(const char *name);

/** Deletes a domain, null allowed. Its scopes are their makers' and have to be gone by then. */
OSTRUM_API void TLI_DelDomain(TLI_DOMAIN *domain);

/** The domain's name. */
OSTRUM_API const char *TLI_DomainName(const TLI_DOMAIN *domain);

/**
 * Makes a scope of a domain. It is not pushed.
 *
 * @param name  cut to 31 characters
 * @param type  TLI_FRAME_SCOPE or TLI_STATIC_SCOPE
 * @return      the scope; TLI_DelScope ends it
 */
OSTRUM_API TLI_SCOPE *TLI_NewScope(TLI_DOMAIN *domain, const char *name, int32_t type);

/** Deletes a scope, null allowed, with its identifiers, and drops its name from the used scopes. */
OSTRUM_API void TLI_DelScope(TLI_SCOPE *scope);

/** The top scope of the domain; with an empty stack a fatal message on the statement, and null. */
OSTRUM_API TLI_SCOPE *TLI_GetScope(TLI_DOMAIN *domain, TLT_STATEMENT *statement);

/** Puts a scope on top of the stack; one that is on the stack stays where it is, one push deeper. */
OSTRUM_API void TLI_PushScope(TLI_DOMAIN *domain, TLI_SCOPE *scope);

/** Takes back one push of the top scope. 1; 0 if the stack was empty. */
OSTRUM_API int32_t TLI_PopScope(TLI_DOMAIN *domain);

/** Sets the function that owns a scope. */
OSTRUM_API void TLI_SetScopeIdentifier(TLI_SCOPE *scope, TLI_IDENTIFIER *identifier);

/** The function that owns a scope, or null. */
OSTRUM_API TLI_IDENTIFIER *TLI_GetScopeIdentifier(const TLI_SCOPE *scope);

/**
 * Gives an item room in a scope, on an even offset unless its elements are single bytes.
 *
 * @param type       type of the item
 * @param dimension  -1 scalar, above 0 the number of elements
 * @return           offset in bytes; -1 if the type has no size or the scope would pass 2^31 bytes
 */
OSTRUM_API int32_t TLI_ScopeAllocate(TLI_SCOPE *scope, TLI_IDENTIFIER *type, int32_t dimension);

/** Bytes allocated in the scope, rounded up to even. */
OSTRUM_API int32_t TLI_ScopeSize(const TLI_SCOPE *scope);

/** The scope's type. */
OSTRUM_API int32_t TLI_ScopeType(const TLI_SCOPE *scope);

/** TLI_LOCAL, TLI_GLOBAL or TLI_NON_LOCAL; a type other than 0 is given back as it is. */
OSTRUM_API int32_t TLI_ScopeAccessType(const TLI_SCOPE *scope);

/**
 * Visits the identifiers of a scope, newest first, until a visit gives 0.
 *
 * @return  the last visit's result; 1 for an empty scope
 */
OSTRUM_API int32_t TLI_AllIdentifiers(TLI_SCOPE *scope, TLI_IDENTIFIER_VISITOR action,
                                      void *context);

/** The same over the used scopes of a domain. */
OSTRUM_API int32_t TLI_AllUseScopes(TLI_DOMAIN *domain, TLI_SCOPE_VISITOR action, void *context);

/** Enters a domain in the used domains under a name; a name that is there keeps what it has. */
OSTRUM_API void TLI_UseDomain(TLI_DOMAIN *domain, const char *name, TLI_DOMAIN *used_domain);

/** Removes a name from the used domains. */
OSTRUM_API void TLI_DelUseDomain(TLI_DOMAIN *domain, const char *name);

/** 1 if the name is in the used domains, else 0. */
OSTRUM_API int32_t TLI_IsUsedDomain(const TLI_DOMAIN *domain, const char *name);

/** The used domain of this name, or null. */
OSTRUM_API TLI_DOMAIN *TLI_FindUsedDomain(const TLI_DOMAIN *domain, const char *name);

/** Enters a scope in the used scopes of a domain under a name. */
OSTRUM_API void TLI_UseScope(TLI_DOMAIN *domain, const char *name, TLI_SCOPE *scope);

/** Writes a heading with the scope's name, then the line of each identifier, newest first. */
OSTRUM_API void TLI_PrintScope(FILE *stream, TLI_SCOPE *scope, TLP_MODULE *module);

/** Writes the scopes of a domain from the top down, then each used domain, once, in the same way. */
OSTRUM_API void TLI_PrintDomain(FILE *stream, TLI_DOMAIN *domain, TLP_MODULE *module);

OSTRUM_END

#endif
