/*
 * Help screens: records, and the words that a screen is made of in a module.
 */
#pragma once

#include "data/tld.h"

#include <ostrum/tldh.h>

/*
 * What a word says in its upper 4 bits; the lower ones are an item's qualifiers. Behind each word but
 * TLDH_END stands the reference that it is about.
 */
enum : uint32_t {
    TLDH_END = 0x00000000,
    TLDH_TITLE = 0x10000000, /* of a full screen */
    TLDH_TEXT = 0x20000000,
    TLDH_PICTURE = 0x30000000,
    TLDH_LINK = 0x40000000,      /* to the help screen of a full screen */
    TLDH_POPUP = 0x50000000,     /* opens a popup, with its title or a zero word */
    TLDH_ITEM_HELP = 0x60000000, /* help screen of the item that follows */
    TLDH_QUALIFIERS = 0x0FFFFFFF,
};

/* HELPSCREEN. Of the terms, each is null if it was not given. */
struct TLDH_SCREEN {
    TLD_SECTION head;
    uint32_t type;         /* 0 for a full screen, or TLDH_POPUP */
    TLE_TERM *title;       /* owned */
    TLE_TERM *help_screen; /* owned */
};

/* A message, a picture, or END. */
struct TLDH_ITEM {
    TLS_STATEMENT common;
    TLE_TERM *reference;  /* owned; null for END */
    uint32_t code;        /* a word, with the item's qualifiers */
    TLE_TERM *help;       /* owned; null if it was not given */
    TLS_BLOCK *sub_block; /* owned; holds no statements, only its indent counts; null for END */
};

/* Static tables of the kinds. */
extern const TLS_STATEMENT_CLASS TLDH_ScreenClass;
extern const TLS_STATEMENT_CLASS TLDH_ItemClass;
