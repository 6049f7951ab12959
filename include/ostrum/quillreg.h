/*
 * Named symbols of the suite, such as TollInclude: from the client's hook, the suite's own settings or
 * the environment, of the user and then of the default user.
 */
#ifndef OSTRUM_QUILLREG_H
#define OSTRUM_QUILLREG_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/**
 * A client's own source of values.
 *
 * @param user    the word given to QUILLREG_SetExternalValueCallback
 * @param symbol  name of the symbol
 * @return        its value, the client's; null if it has none
 */
typedef const char *(*QUILLREG_CALLBACK)(void *user, const char *symbol);

/**
 * Called for each entry of a value.
 *
 * @param user   the word given with the visitor
 * @param entry  the entry, valid during the call; may be empty
 * @return       ignored
 */
typedef int32_t (*QUILLREG_VISITOR)(void *user, const char *entry);

/**
 * Installs the hook that is asked before all settings.
 *
 * @param user      handed to the hook
 * @param callback  the hook; null takes it away
 */
OSTRUM_API void QUILLREG_SetExternalValueCallback(void *user, QUILLREG_CALLBACK callback);

/**
 * Looks a symbol up.
 *
 * @param symbol  its name
 * @return        its value, valid until the next look-up; null if it has none
 */
OSTRUM_API const char *QUILLREG_GetQuillKeyValue(const char *symbol);

/**
 * The same as QUILLREG_GetQuillKeyValue.
 *
 * @param symbol  its name
 * @return        its value, valid until the next look-up; null if it has none
 */
OSTRUM_API const char *QUILLREG_GetSymbol(const char *symbol);

/**
 * Visits the entries of a symbol's value, which stand between ';' or ','.
 *
 * @param symbol   its name
 * @param visitor  called for each entry, empty ones too
 * @param user     handed to the visitor
 * @return         0; -1 if the symbol has no value
 */
OSTRUM_API int32_t QUILLREG_AllSymbols(const char *symbol, QUILLREG_VISITOR visitor, void *user);

/**
 * Opens a text file in the first directory of a symbol's value that holds it, or in the last. The
 * file's own directory is dropped. Without a value the file is opened as named.
 *
 * @param stream  out: as with F_OpenFile
 * @param symbol  the symbol; its value is a list of directories separated by ';'
 * @param name    name of the file
 * @param mode    as with F_OpenFile
 * @return        status of F_OpenFile
 */
OSTRUM_API int32_t QUILLREG_OpenFContextFile(FILE **stream, const char *symbol, const char *name,
                                             int32_t mode);

/**
 * Opens a binary file in the first directory of a symbol's value that holds it, or in the last. The
 * file's own directory is dropped. Without a value the file is opened as named.
 *
 * @param handle  out: as with BF_OpenFile
 * @param symbol  the symbol; its value is a list of directories separated by ';'
 * @param name    name of the file
 * @param mode    as with BF_OpenFile
 * @return        status of BF_OpenFile
 */
OSTRUM_API int32_t QUILLREG_OpenBFContextFile(intptr_t *handle, const char *symbol,
                                              const char *name, int32_t mode);

/** Releases the value last looked up and takes the hook away. */
OSTRUM_API void QUILLREG_CleanUp(void);

OSTRUM_END

#endif
