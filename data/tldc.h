/*
 * Connectors: records of the section and of the items in it. The variable locations serve components
 * as well.
 */
#pragma once

#include "data/tld.h"

#include <ostrum/tldc.h>

/* Of a pin or point that was given no line. */
enum { TLDC_NO_LINE = -1 };

/* CONNECTOR. Of the terms, here and below, each is owned, and null if it was not given. */
struct TLDC_CONNECTOR {
    TLD_SECTION head;
    TLE_TERM *name;
    TLE_TERM *mnemonic;
    TLE_TERM *location;
    int32_t cable; /* not 0: every point needs a line */
    TLE_TERM *helpscreen;
};

/* VIEW: how a connector looks from a side. */
struct TLDC_VIEW {
    TLD_ITEM head;
    TLE_TERM *name;
    TLE_TERM *shell;
    TLE_TERM *component;
    int32_t flags;
    TLE_TERM *helpscreen;
};

/* PIN: holds points. */
struct TLDC_PIN {
    TLD_ITEM head;
    int32_t flags; /* none exists: always 0 */
    TLE_TERM *name;
    TLE_TERM *signal_name; /* for points without one */
    int32_t line;          /* for points without one; TLDC_NO_LINE */
};

/* POINT: a place on a pin, as it is seen on a view. */
struct TLDC_POINT {
    TLD_ITEM head;
    int32_t flags;
    const TLDC_PIN *pin;
    TLE_TERM *name; /* null takes the pin's */
    TLE_TERM *location;
    TLI_IDENTIFIER *view;  /* null if not given */
    TLE_TERM *signal_name; /* null takes the pin's */
    int32_t line;          /* TLDC_NO_LINE takes the pin's */
    bool has_sex;
};

/* VARLOC: where a variable lies on a connector or component. */
struct TLDC_VARIABLE {
    TLD_ITEM head;
    TLE_TERM *const *owner_name; /* field of the owner, for an item without a name of its own */
    TLE_TERM *name;
    TLE_TERM *location;
    int32_t attributes;
};

/* Static tables of the kinds. */
extern const TLS_STATEMENT_CLASS TLDC_ConnectorClass;
extern const TLS_STATEMENT_CLASS TLDC_ViewClass;
extern const TLS_STATEMENT_CLASS TLDC_PinClass;
extern const TLS_STATEMENT_CLASS TLDC_PointClass;
extern const TLS_STATEMENT_CLASS TLDC_VariableClass;

/**
 * Parses a view and opens its sub-block.
 * @param root root block of the section
 * @param statement the statement, nothing of it consumed
 * @param connector main item of the section
 */
void TLDC_ParseView(TLS_BLOCK *root, TLT_STATEMENT *statement, TLS_STATEMENT *connector);

/** Parses a pin, likewise; its points and attributes stand in the sub-block. */
void TLDC_ParsePin(TLS_BLOCK *root, TLT_STATEMENT *statement, TLS_STATEMENT *connector);

/**
 * Parses a variable location, likewise.
 * @param root root block of the section
 * @param statement the statement, nothing of it consumed
 * @param owner main item of the section
 * @param owner_name the owner's field with its name
 */
void TLDC_ParseVariable(TLS_BLOCK *root, TLT_STATEMENT *statement, const TLD_SECTION *owner,
                        TLE_TERM *const *owner_name);
