/*
 * What every header of the public interface stands on: the export mark, C linkage, the fixed-width
 * types, and the names of the records that clients only hold by pointer.
 */
#ifndef OSTRUM_TYPES_H
#define OSTRUM_TYPES_H

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#if defined(__GNUC__)
#define OSTRUM_API __attribute__((visibility("default")))
#else
#define OSTRUM_API
#endif

#ifdef __cplusplus
#define OSTRUM_BEGIN extern "C" {
#define OSTRUM_END   }
#else
#define OSTRUM_BEGIN
#define OSTRUM_END
#endif

OSTRUM_BEGIN

/* Core services */
typedef struct IST_STRING IST_STRING; /* growing string */
typedef struct HS_DOMAIN HS_DOMAIN;   /* hash table of names */
typedef struct AS_DOMAIN AS_DOMAIN;   /* ordered tree of names */

/* Front end */
typedef struct TLT_STATEMENT TLT_STATEMENT; /* one source statement with its messages */
typedef struct TLP_MODULE TLP_MODULE;       /* a module being compiled or used */
typedef struct TLP_SECTION TLP_SECTION;     /* HEADER or one body of a module */

/* Names and types */
typedef struct TLI_IDENTIFIER TLI_IDENTIFIER; /* anything that has a name */
typedef struct TLI_SCOPE TLI_SCOPE;           /* names declared together */
typedef struct TLI_DOMAIN TLI_DOMAIN;         /* chain of scopes that a name is looked up in */

/* Expressions and statements */
typedef struct TLE_TERM TLE_TERM;   /* node of an expression tree */
typedef struct TLS_BLOCK TLS_BLOCK; /* statements of one indentation */

/* Code generation */
typedef struct EEP_MODULE EEP_MODULE;     /* P-code table and syscall registry */
typedef struct TLC_STREAM TLC_STREAM;     /* where a generator writes */
typedef struct TLC_PSECT TLC_PSECT;       /* growing run of code bytes with fix-ups */
typedef struct TLCG_CONTEXT TLCG_CONTEXT; /* one object module under generation */

/* Module files */
typedef struct KOB_MODULE KOB_MODULE;
typedef struct KOB_SYMBOL KOB_SYMBOL;
typedef struct KOBD_DEBUG KOBD_DEBUG;
typedef struct KOBD_FRAME KOBD_FRAME;
typedef struct KOBD_ENTRY KOBD_ENTRY;

OSTRUM_END

#endif
