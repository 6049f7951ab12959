/*
 * Types. A type is an identifier of class TLI_TYPE: it has a name, stands in a scope and is found like
 * any other name. A question about something that is no type, or about null, has a harmless answer.
 */
#ifndef OSTRUM_TLIT_H
#define OSTRUM_TLIT_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** Subclasses of types. */
enum {
    TLIT_SUBCLASS_SIMPLE = 0,
    TLIT_SUBCLASS_ENUMERATION = 1,
    TLIT_SUBCLASS_DATA = 2,
    TLIT_SUBCLASS_FUNCTION = 3,
    TLIT_SUBCLASS_RECORD = 4,
    TLIT_SUBCLASS_POINTER = 5,
    TLIT_SUBCLASS_ARRAY = 6
};

/** Codes of types in debug frames; a quantity type has its quantity's number, 1 to 35. */
enum {
    TLIT_DEBUG_PLAIN = 0, /**< INT, WORD, FLOAT, VOID, QUANTITY, function types, arrays */
    TLIT_DEBUG_CHAR = 100,
    TLIT_DEBUG_STRING = 101,
    TLIT_DEBUG_BOOL = 102,
    TLIT_DEBUG_DATA = 103,
    TLIT_DEBUG_ENUMERATION = 104,
    TLIT_DEBUG_RECORD = 105, /**< pointers too */
    TLIT_DEBUG_SHORT = 106
};

/** Values that an enumeration can have: 0 to 255, one byte. */
#define TLIT_ENUM_LIMIT 256

/*
 * The predeclared types, set by TLIT_Initialise. TLIT_True and TLIT_False are null unless a client
 * sets them to types that Java output is to call "bool".
 */
OSTRUM_API extern TLI_IDENTIFIER *TLIT_IntType;
OSTRUM_API extern TLI_IDENTIFIER *TLIT_CharType;
OSTRUM_API extern TLI_IDENTIFIER *TLIT_StringType;
OSTRUM_API extern TLI_IDENTIFIER *TLIT_WordType;
OSTRUM_API extern TLI_IDENTIFIER *TLIT_ShortType;
OSTRUM_API extern TLI_IDENTIFIER *TLIT_FloatType;
OSTRUM_API extern TLI_IDENTIFIER *TLIT_VoidType;
OSTRUM_API extern TLI_IDENTIFIER *TLIT_DataType;
OSTRUM_API extern TLI_IDENTIFIER *TLIT_CodeType;
OSTRUM_API extern TLI_IDENTIFIER *TLIT_PtrType;
OSTRUM_API extern TLI_IDENTIFIER *TLIT_ArrayType;
OSTRUM_API extern TLI_IDENTIFIER *TLIT_QuantityType;
OSTRUM_API extern TLI_IDENTIFIER *TLIT_BoolType;
OSTRUM_API extern TLI_IDENTIFIER *TLIT_Voltage;
OSTRUM_API extern TLI_IDENTIFIER *TLIT_Current;
OSTRUM_API extern TLI_IDENTIFIER *TLIT_Resistance;
OSTRUM_API extern TLI_IDENTIFIER *TLIT_Time;
OSTRUM_API extern TLI_IDENTIFIER *TLIT_Frequency;
OSTRUM_API extern TLI_IDENTIFIER *TLIT_ClockTime;
OSTRUM_API extern TLI_IDENTIFIER *TLIT_True;
OSTRUM_API extern TLI_IDENTIFIER *TLIT_False;

/** Makes the language domain and the predeclared types, once in a process. */
OSTRUM_API void TLIT_Initialise(void);

/** The domain of the language's own names; its name is empty. */
OSTRUM_API TLI_DOMAIN *TLIT_LanguageDomain(void);

/** Makes a fresh domain with the data types (MESSAGE, CONNECTOR and the rest) the module's. */
OSTRUM_API void TLIT_SetupDataType(TLP_MODULE *module);

/* Making types. All give null after a message if the name is refused; the scope owns the result. */

/** A new enumeration without values, in the top scope of the domain. */
OSTRUM_API TLI_IDENTIFIER *TLIT_EnumerationType(TLI_DOMAIN *data_types, TLI_DOMAIN *domain,
                                                TLT_STATEMENT *statement, const char *name);

/**
 * Adds the next value to an enumeration. Its name stands in the domain's top scope.
 *
 * @return  the value's identifier; null after a message, also for the 257th value
 */
OSTRUM_API TLI_IDENTIFIER *TLIT_EnumerationValue(TLI_DOMAIN *data_types, TLI_DOMAIN *domain,
                                                 TLT_STATEMENT *statement,
                                                 TLI_IDENTIFIER *enumeration, const char *name);

/** The identifier of the value with this number, or null. */
OSTRUM_API TLI_IDENTIFIER *TLIT_EnumGetValue(TLI_IDENTIFIER *enumeration, int32_t number);

/** A new function type for functions like the prototype. */
OSTRUM_API TLI_IDENTIFIER *TLIT_FunctionType(TLI_DOMAIN *data_types, TLI_DOMAIN *domain,
                                             TLT_STATEMENT *statement, const char *name,
                                             TLI_IDENTIFIER *prototype);

/** A new, empty record type. Its scope is pushed on the domain, and the caller pops it. */
OSTRUM_API TLI_IDENTIFIER *TLIT_Record(TLI_DOMAIN *data_types, TLI_DOMAIN *domain,
                                       TLT_STATEMENT *statement, const char *name);

/**
 * Adds a field to a record whose scope is on top of the domain's stack.
 *
 * @param dimension   -1 scalar, 0 length known at run time, above 0 the number of elements
 * @param range_type  type of the subscript; null for a scalar
 * @return            the field; null after a message, and then the field's place stays empty
 */
OSTRUM_API TLI_IDENTIFIER *TLIT_RecordField(TLI_DOMAIN *data_types, TLI_DOMAIN *domain,
                                            TLT_STATEMENT *statement, TLI_IDENTIFIER *record,
                                            const char *name, TLI_IDENTIFIER *type,
                                            int32_t dimension, TLI_IDENTIFIER *range_type);

/**
 * The fields in the order of their declaration. A walk from 0 upward costs one step a field.
 *
 * @param index      from 0
 * @param dimension  out: the field's dimension; may be null
 * @return           the field, or null past the end or at an empty place
 */
OSTRUM_API TLI_IDENTIFIER *TLIT_RecordNthField(TLI_IDENTIFIER *record, int32_t index,
                                               int32_t *dimension);

/** The one array type of an element type, named after it with "[]" behind; made on first use. */
OSTRUM_API TLI_IDENTIFIER *TLIT_Array(TLI_DOMAIN *domain, TLT_STATEMENT *statement,
                                      TLI_IDENTIFIER *element_type);

/** A new pointer type; null after a message if the target is no record. */
OSTRUM_API TLI_IDENTIFIER *TLIT_Pointer(TLI_DOMAIN *data_types, TLI_DOMAIN *domain,
                                        TLT_STATEMENT *statement, const char *name,
                                        TLI_IDENTIFIER *record_type);

/**
 * Enters a built-in function in the language domain.
 *
 * @param record  static record of the built-in; kept, not read
 * @return        its identifier; null if the language already has the name
 */
OSTRUM_API TLI_IDENTIFIER *TLIT_BuiltInFunction(const char *name, const void *record);

/** The record of a built-in function; null for any other identifier. */
OSTRUM_API const void *TLIT_BifClass(TLI_IDENTIFIER *identifier);

/* What a type is built on: null or 0 for a type of another subclass. */

/** Element type of an array; equally what TLIT_FunctionTypePrototype and TLIT_PointerAt give. */
OSTRUM_API TLI_IDENTIFIER *TLIT_ArrayOf(TLI_IDENTIFIER *type);
/** Number of values of an enumeration. */
OSTRUM_API int32_t TLIT_EnumRange(TLI_IDENTIFIER *type);
/** Prototype of a function type. */
OSTRUM_API TLI_IDENTIFIER *TLIT_FunctionTypePrototype(TLI_IDENTIFIER *type);
/** Record that a pointer type points at. */
OSTRUM_API TLI_IDENTIFIER *TLIT_PointerAt(TLI_IDENTIFIER *type);
/** Scope of a record's fields. */
OSTRUM_API TLI_SCOPE *TLIT_RecordScope(TLI_IDENTIFIER *type);

/* Questions */

/** The base type, null for a record, VOID and what has none; null and an error for no type. */
OSTRUM_API TLI_IDENTIFIER *TLIT_TypeBaseType(TLT_STATEMENT *statement, TLI_IDENTIFIER *type);

/** The subclass; for no type 0, and an error if a statement is given. */
OSTRUM_API int32_t TLIT_TypeSubclass(TLT_STATEMENT *statement, TLI_IDENTIFIER *type);

/** The type's code in debug frames; 0 for no type. */
OSTRUM_API int32_t TLIT_TypeDebugType(TLI_IDENTIFIER *type);

/** The VARTYPE of a value passed to a dispatch call; 0 for no type. */
OSTRUM_API int32_t TLIT_VariantType(TLI_IDENTIFIER *type);

/**
 * @param dimension  -1 or 0 for one value, else the number of elements
 * @return           bytes of target storage, at most 2^31 - 1; 0 for no type
 */
OSTRUM_API int32_t TLIT_TypeSizeof(TLI_IDENTIFIER *type, int32_t dimension);

/** 1 for INT, CHAR, SHORT and QUANTITY themselves, else 0. */
OSTRUM_API int32_t TLIT_IntegerType(TLI_IDENTIFIER *type);
/** 1 if the base type is STRING, DATA, CODE or POINTER, else 0. */
OSTRUM_API int32_t TLIT_PointerType(TLI_IDENTIFIER *type);
/** 1 for an array type, else 0. */
OSTRUM_API int32_t TLIT_IsArrayType(TLI_IDENTIFIER *type);
/** 1 for a record type, else 0. */
OSTRUM_API int32_t TLIT_IsRecordType(TLI_IDENTIFIER *type);
/** 1 for STRING and for the MESSAGE of the data-type domain, else 0. */
OSTRUM_API int32_t TLIT_IsStringType(TLI_DOMAIN *data_types, TLI_IDENTIFIER *type);
/** 1 for INT, CHAR, SHORT, QUANTITY, a quantity type and an enumeration, else 0. */
OSTRUM_API int32_t TLIT_IsQuantityType(TLI_IDENTIFIER *type);
/** 1 if a value takes at most 4 bytes, else 0. */
OSTRUM_API int32_t TLIT_IsWordType(TLI_IDENTIFIER *type);
/** 0: no quantity is a float. */
OSTRUM_API int32_t TLIT_IsQuantityFloat(void);

/** The type of a quantity, 1 to 35; INT for 0; null for any other number. */
OSTRUM_API TLI_IDENTIFIER *TLIT_GetQuantityType(int32_t quantity);
/** The number of a quantity type; 0 for INT, CHAR and SHORT; -1 for anything else. */
OSTRUM_API int32_t TLIT_GetQuantityIdentifier(TLI_IDENTIFIER *type);

/** The identifier of this name in the data types, which may be null, else in the language. */
OSTRUM_API TLI_IDENTIFIER *TLIT_FindType(const TLI_DOMAIN *data_types, const char *name);

/**
 * Do two types fit as an argument passed by address and its parameter? The order does not matter.
 *
 * @param module     gives the data types, and takes the warning when STRING meets MESSAGE
 * @param statement  for messages; may be null
 * @return           1 they fit, 0 they do not
 */
OSTRUM_API int32_t TLIT_MatchArgType(TLP_MODULE *module, TLT_STATEMENT *statement,
                                     TLI_IDENTIFIER *type, TLI_IDENTIFIER *other);

/**
 * Does a value of the second type fit where the first is wanted?
 *
 * @param other  a type, or a function that may be held by a function type
 * @return       1 it fits, 0 it does not; a function unlike the prototype is reported as well
 */
OSTRUM_API int32_t TLIT_MatchType(TLP_MODULE *module, TLT_STATEMENT *statement,
                                  TLI_IDENTIFIER *type, TLI_IDENTIFIER *other);

/** Gives the strict warning that a STRING stands for a MESSAGE. */
OSTRUM_API void TLIT_EnglishStringWarning(TLP_MODULE *module, TLT_STATEMENT *statement);

OSTRUM_END

#endif
