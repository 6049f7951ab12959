/*
 * Trees of names, walked in the order of their bytes. The tree is never rebalanced.
 */
#ifndef OSTRUM_AS_H
#define OSTRUM_AS_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/**
 * Called for a name by AS_AllNames.
 *
 * @param user   the word given to AS_AllNames
 * @param name   the stored name
 * @param value  its value
 * @return       ignored
 */
typedef int32_t (*AS_VISITOR)(void *user, const char *name, intptr_t value);

/**
 * Called for each value by AS_DelDomain.
 *
 * @param value  the value of a name that goes
 */
typedef void (*AS_DELETER)(intptr_t value);

/** Does nothing. */
OSTRUM_API void AS_Initialise(void);

/**
 * Makes an empty tree.
 *
 * @return  the tree; the caller releases it with AS_DelDomain
 */
OSTRUM_API AS_DOMAIN *AS_NewDomain(void);

/**
 * Enters a name.
 *
 * @param domain  the tree
 * @param name    the name, copied
 * @param value   its value
 * @return        the stored copy, which lives as long as the name; null if the name is there already,
 *                and then nothing changes
 */
OSTRUM_API const char *AS_NewName(AS_DOMAIN *domain, const char *name, intptr_t value);

/**
 * Finds a name.
 *
 * @param domain  the tree
 * @param name    the name
 * @param value   out: its value; left alone if the name is not there; may be null
 * @return        1 if it is there, else 0
 */
OSTRUM_API int32_t AS_FindName(AS_DOMAIN *domain, const char *name, intptr_t *value);

/**
 * Deletes a name; its value is not touched.
 *
 * @param domain  the tree
 * @param name    the name
 * @return        1 if it was there, else 0
 */
OSTRUM_API int32_t AS_DelName(AS_DOMAIN *domain, const char *name);

/**
 * Visits all names, lowest first.
 *
 * @param domain   the tree
 * @param visitor  called for each name; its result is ignored
 * @param user     handed to the visitor
 */
OSTRUM_API void AS_AllNames(AS_DOMAIN *domain, AS_VISITOR visitor, void *user);

/**
 * Gives the count of names.
 *
 * @param domain  the tree
 * @return        number of names
 */
OSTRUM_API int32_t AS_DomainSize(AS_DOMAIN *domain);

/**
 * Deletes a tree, below each node the higher names first.
 *
 * @param domain   the tree
 * @param deleter  called for the value of each node; may be null
 */
OSTRUM_API void AS_DelDomain(AS_DOMAIN *domain, AS_DELETER deleter);

OSTRUM_END

#endif
