#pragma once

#include <ostrum/sld.h>

/**
 * Visits the entries of a value, which stand between ';' or ','.
 *
 * @param value    the value; a copy of it is taken first, so the visitor may look symbols up
 * @param visitor  called for each entry, empty ones too
 * @param user     handed to the visitor
 */
void SLD_VisitEntries(const char *value, SLD_VISITOR visitor, void *user);
