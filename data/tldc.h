/*
 * Items of connectors: records. The variable locations serve components as well.
 */
#pragma once

#include "data/tld.h"

/* VARLOC: where a variable lies on a connector or component. */
struct TLDC_VARIABLE {
    TLS_STATEMENT common;
    const TLD_SECTION *owner;
    TLE_TERM *const *owner_name; /* field of the owner, for an item without a name of its own */
    TLI_IDENTIFIER *identifier;  /* null after an error */
    TLS_BLOCK *sub_block;        /* owned; null after an error */
    TLC_PSECT *section;          /* of the record; set when the code is generated */
    TLE_TERM *name;              /* owned; null if not given */
    TLE_TERM *location;          /* owned; null if not given */
    int32_t attributes;
};

/* Static table of the kind. */
extern const TLS_STATEMENT_CLASS TLDC_VariableClass;

/**
 * Parses a variable location and opens its sub-block.
 * @param root root block of the section
 * @param statement the statement, nothing of it consumed
 * @param owner main item of the section
 * @param owner_name the owner's field with its name
 */
void TLDC_ParseVariable(TLS_BLOCK *root, TLT_STATEMENT *statement, const TLD_SECTION *owner,
                        TLE_TERM *const *owner_name);
