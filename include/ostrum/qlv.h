/*
 * Version records of the tools in the settings.
 */
#ifndef OSTRUM_QLV_H
#define OSTRUM_QLV_H

#include <ostrum/types.h>

/**
 * Gives a program its version block, once, outside all functions: string literals for the program's
 * name, the version of the file, that of the product, and the legal notice. It is a note in the
 * program's image.
 */
#define OSTRUM_VERSION_BLOCK(internal_name, file_version, product_version, legal_notice)           \
    static const struct {                                                                          \
        uint32_t owner_size;                                                                       \
        uint32_t text_size;                                                                        \
        uint32_t type;                                                                             \
        char owner[8];                                                                             \
        char text[sizeof OSTRUM_VERSION_TEXT(internal_name, file_version, product_version,         \
                                             legal_notice)];                                       \
    } ostrum_version_block __attribute__((section(".note.ostrum"), used, aligned(4))) = {          \
        7, sizeof OSTRUM_VERSION_TEXT(internal_name, file_version, product_version, legal_notice), \
        1, "Ostrum",                                                                               \
        OSTRUM_VERSION_TEXT(internal_name, file_version, product_version, legal_notice)            \
    }

#define OSTRUM_VERSION_TEXT(internal_name, file_version, product_version, legal_notice)            \
    "InternalName\0" internal_name "\0FileVersion\0" file_version                                  \
    "\0ProductVersion\0" product_version "\0LegalCopyright\0" legal_notice

OSTRUM_BEGIN

/**
 * Stores the running program's internal name, file version, product version and legal notice under its
 * version key in the user's settings. A program without version information stores nothing.
 */
OSTRUM_API void QLV_GetVersionInfo(void);

/**
 * Gives the stored file version of the running program, followed by '/' and the library's version if
 * the two differ.
 *
 * @return  the text in a static buffer of 20 bytes, valid until the next call
 */
OSTRUM_API const char *QLV_GetFileVersion(void);

OSTRUM_END

#endif
