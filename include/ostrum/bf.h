/*
 * Binary files, as descriptors (modes 0 to 3) or as a private mapping (mode 4). Statuses are those of
 * BF_Message. A path has at most 119 characters; a longer one is refused like a file that is not there.
 */
#ifndef OSTRUM_BF_H
#define OSTRUM_BF_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** Runs SM_Initialise, the first time. */
OSTRUM_API void BF_Initialise(void);

/**
 * Opens a binary file.
 *
 * @param handle  out: the handle, closed by BF_CloseFile, in mode 4 by BF_UnmapFile; left alone on
 *                failure
 * @param path    the path
 * @param mode    0 read, 1 create or truncate, 2 read and write, 3 append, 4 private mapping
 * @return        0; 1 no access; 2 no such file; 4 unknown mode; 10 another failure
 */
OSTRUM_API int32_t BF_OpenFile(intptr_t *handle, const char *path, int32_t mode);

/**
 * Opens a binary file in the first directory of an environment variable's list that holds it, or in
 * the last; as named if the variable is not set.
 *
 * @param handle    out: as with BF_OpenFile
 * @param variable  the variable's name; its value is a list of directories separated by ';'
 * @param name      name of the file
 * @param mode      as with BF_OpenFile
 * @return          status of BF_OpenFile
 */
OSTRUM_API int32_t BF_OpenContextFile(intptr_t *handle, const char *variable, const char *name,
                                      int32_t mode);

/**
 * Closes a file of modes 0 to 3.
 *
 * @param handle  the handle
 * @return        0; 11 on failure
 */
OSTRUM_API int32_t BF_CloseFile(intptr_t handle);

/**
 * Ends a mapping.
 *
 * @param handle  a handle of mode 4; the view's address is dead afterwards
 * @return        0
 */
OSTRUM_API int32_t BF_UnmapFile(intptr_t handle);

/**
 * Gives the address of a mapping. The view may be written; the file does not change.
 *
 * @param handle   a handle of mode 4
 * @param address  out: the first byte of the view
 * @return         0
 */
OSTRUM_API int32_t BF_GetMappedAddress(intptr_t handle, void **address);

/**
 * Reads bytes.
 *
 * @param handle  a handle of modes 0 to 3
 * @param buffer  room for *count bytes
 * @param count   bytes wanted; out: bytes read, left alone with status 7
 * @return        0; 7 the read failed; 8 the file ended first
 */
OSTRUM_API int32_t BF_Read(intptr_t handle, void *buffer, int32_t *count);

/**
 * Writes bytes.
 *
 * @param handle  a handle of modes 1 to 3
 * @param buffer  the bytes
 * @param count   how many
 * @return        0; 6 the write failed
 */
OSTRUM_API int32_t BF_Write(intptr_t handle, const void *buffer, int32_t count);

/**
 * Gives the position in a file.
 *
 * @param handle    a handle of modes 0 to 3
 * @param position  out: bytes from the start
 * @return          0; 5 on failure
 */
OSTRUM_API int32_t BF_Address(intptr_t handle, int32_t *position);

/**
 * Moves the position in a file.
 *
 * @param handle    a handle of modes 0 to 3
 * @param position  bytes from the start
 * @return          0; 5 on failure
 */
OSTRUM_API int32_t BF_Seek(intptr_t handle, int32_t position);

/**
 * Moves the position up to the next multiple of 512 bytes.
 *
 * @param handle  a handle of modes 0 to 3
 * @return        0; 5 on failure
 */
OSTRUM_API int32_t BF_Align(intptr_t handle);

/**
 * Gives the size of a file by its path.
 *
 * @param path  the path
 * @param size  out: bytes
 * @return      0; 9 on failure
 */
OSTRUM_API int32_t BF_Size(const char *path, int32_t *size);

/**
 * Gives the size of an open file, of a mapping that of its view.
 *
 * @param handle  a handle of any mode
 * @param size    out: bytes
 * @return        0; 9 on failure
 */
OSTRUM_API int32_t BF_FileSize(intptr_t handle, int32_t *size);

/**
 * Gives the text of a status of this family.
 *
 * @param status  0 to 11
 * @return        its text, static; "Invalid reply code" for another status
 */
OSTRUM_API const char *BF_Message(int32_t status);

OSTRUM_END

#endif
