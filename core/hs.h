#pragma once

#include <ostrum/hs.h>

/**
 * Hashes a name, for searches of one name in several domains. Depends on the bytes alone.
 *
 * @param name    the name; needs no terminator
 * @param length  its length in bytes
 * @return        the hash
 */
uint32_t HS_Hash(const char *name, size_t length);

/**
 * Finds a name that need not be terminated.
 *
 * @param domain  the domain
 * @param name    the name
 * @param length  its length in bytes
 * @param value   out: its value; left alone if the name is not there; may be null
 * @return        1 if it is there, else 0
 */
int32_t HS_FindSpan(HS_DOMAIN *domain, const char *name, size_t length, intptr_t *value);

/**
 * Finds a name whose hash is known.
 *
 * @param domain  the domain
 * @param name    the name; needs no terminator
 * @param length  its length in bytes
 * @param hash    of HS_Hash
 * @param value   out: its value; left alone if the name is not there; may be null
 * @return        1 if it is there, else 0
 */
int32_t HS_FindHashed(HS_DOMAIN *domain, const char *name, size_t length, uint32_t hash,
                      intptr_t *value);
