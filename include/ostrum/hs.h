/*
 * Hash tables of names. A domain is a set of names with a value each; making one is cheap. Names are
 * compared byte for byte. Values are the caller's and never looked at.
 */
#ifndef OSTRUM_HS_H
#define OSTRUM_HS_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/**
 * Called for a name by HS_AllNames. It must not add to or delete from the domain.
 *
 * @param user   the word given to HS_AllNames
 * @param name   the stored name
 * @param value  its value
 * @return       0 stops the walk
 */
typedef int32_t (*HS_VISITOR)(void *user, const char *name, intptr_t value);

/** Makes the shared array of buckets, the first time; must run before any other HS_ operation. */
OSTRUM_API void HS_Initialise(void);

/** Frees the shared array with all records on it. Domains still alive are dead from then on. */
OSTRUM_API void HS_CleanUp(void);

/**
 * Makes a domain on the shared array, in constant time.
 *
 * @return  the domain; the caller releases it with HS_DelDomain
 */
OSTRUM_API HS_DOMAIN *HS_NewDomain(void);

/**
 * Makes a domain with buckets of its own.
 *
 * @param bucket_count  buckets, a power of 2
 * @return              the domain; the caller releases it with HS_DelDomain
 */
OSTRUM_API HS_DOMAIN *HS_NewHashTable(int32_t bucket_count);

/**
 * Deletes a domain with its names; values are not touched. A domain with private buckets gives them
 * and its records back at once.
 *
 * @param domain  the domain
 */
OSTRUM_API void HS_DelDomain(HS_DOMAIN *domain);

/**
 * Enters a name.
 *
 * @param domain  the domain
 * @param name    the name, copied
 * @param value   its value
 * @return        the stored copy, which lives as long as the name; null if the name is there already,
 *                and then the old value stands
 */
OSTRUM_API const char *HS_NewName(HS_DOMAIN *domain, const char *name, intptr_t value);

/**
 * Finds a name.
 *
 * @param domain  the domain
 * @param name    the name
 * @param value   out: its value; left alone if the name is not there; may be null
 * @return        1 if it is there, else 0
 */
OSTRUM_API int32_t HS_FindName(HS_DOMAIN *domain, const char *name, intptr_t *value);

/**
 * Deletes a name. Its stored copy must not be relied on afterwards.
 *
 * @param domain  the domain
 * @param name    the name
 * @return        1 if it was there, else 0
 */
OSTRUM_API int32_t HS_DelName(HS_DOMAIN *domain, const char *name);

/**
 * Visits the names, newest first.
 *
 * @param domain   the domain
 * @param visitor  called for each name
 * @param user     handed to the visitor
 * @return         the last visitor result; 1 if there was nothing to visit
 */
OSTRUM_API int32_t HS_AllNames(HS_DOMAIN *domain, HS_VISITOR visitor, void *user);

/**
 * Counts the names.
 *
 * @param domain  the domain
 * @return        number of names
 */
OSTRUM_API int32_t HS_DomainSize(HS_DOMAIN *domain);

OSTRUM_END

#endif
