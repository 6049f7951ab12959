/*
 * Text files as streams, and names of files. Statuses are those of F_Message. A path has at most 119
 * characters; a longer one is refused like a file that is not there.
 */
#ifndef OSTRUM_F_H
#define OSTRUM_F_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/**
 * Called for each file by F_AllDirFiles.
 *
 * @param user          the word given to F_AllDirFiles
 * @param directory     as given to F_AllDirFiles
 * @param name          the file's name
 * @param is_directory  16 for a subdirectory, else 0
 * @return              ignored
 */
typedef int32_t (*F_VISITOR)(void *user, const char *directory, const char *name,
                             int32_t is_directory);

/**
 * Opens a text file.
 *
 * @param stream  out: the stream, null if the open failed; left alone if the mode is unknown
 * @param path    the path
 * @param mode    0 read, 1 write, 2 append
 * @return        0; 1 unknown mode; 2 it cannot be opened
 */
OSTRUM_API int32_t F_OpenFile(FILE **stream, const char *path, int32_t mode);

/**
 * Opens a text file in the first directory of an environment variable's list that holds it, or in the
 * last; as named if the variable is not set.
 *
 * @param stream    out: as with F_OpenFile
 * @param variable  the variable's name; its value is a list of directories separated by ';'
 * @param name      name of the file
 * @param mode      as with F_OpenFile
 * @return          status of F_OpenFile
 */
OSTRUM_API int32_t F_OpenContextFile(FILE **stream, const char *variable, const char *name,
                                     int32_t mode);

/**
 * Closes a text file.
 *
 * @param stream  from one of the opens
 * @return        0; 8 on failure
 */
OSTRUM_API int32_t F_CloseFile(FILE *stream);

/**
 * Reads one line, with its line end, or as much of it as fits. A line end is a line feed, a carriage
 * return, or both in that order, which comes out as the line feed alone.
 *
 * @param stream  open for reading
 * @param buffer  size bytes; terminated
 * @param size    capacity of buffer in bytes
 * @return        characters stored; -1 at the end of the file with none stored, or size below 1
 */
OSTRUM_API int32_t F_GetString(FILE *stream, char *buffer, int32_t size);

/**
 * Gives the size of a file.
 *
 * @param path  the path
 * @param size  out: bytes
 * @return      0; 6 there is no such file; 9 it is larger than 2147483647 bytes
 */
OSTRUM_API int32_t F_FileSize(const char *path, int32_t *size);

/**
 * Gives the time of the last change of a file.
 *
 * @param path  the path
 * @param time  out: seconds since the epoch
 * @return      0; 6 there is no such file
 */
OSTRUM_API int32_t F_FileUpdateTime(const char *path, int64_t *time);

/**
 * Renames a file.
 *
 * @param old_path  its path
 * @param new_path  its new path
 * @return          0; 3 on failure
 */
OSTRUM_API int32_t F_RenameFile(const char *old_path, const char *new_path);

/**
 * Not implemented.
 *
 * @return  9
 */
OSTRUM_API int32_t F_CopyFile(void);

/**
 * Deletes a file.
 *
 * @param path  the path
 * @return      0; 4 on failure
 */
OSTRUM_API int32_t F_DeleteFile(const char *path);

/**
 * Tells whether a file can be used.
 *
 * @param path  the path
 * @param mode  0 read, 1 write, 4 whether it exists
 * @return      0; 1 unknown mode; 5 no access
 */
OSTRUM_API int32_t F_CheckAccess(const char *path, int32_t mode);

/**
 * Changes the working directory.
 *
 * @param path  the directory
 * @return      0; 9 on failure
 */
OSTRUM_API int32_t F_Chdir(const char *path);

/**
 * Visits the files of a directory whose names match a pattern of '*' and '?', ignoring case, in the
 * order of their bytes. Names that start with '.' match but are not visited.
 *
 * @param directory  the directory; empty or null for the working directory
 * @param pattern    the pattern
 * @param visitor    called for each file; may be null
 * @param user       handed to the visitor
 * @return           0; -1 if nothing matches
 */
OSTRUM_API int32_t F_AllDirFiles(const char *directory, const char *pattern, F_VISITOR visitor,
                                 void *user);

/**
 * Takes a path apart. A ';' in the name and what stands behind it is dropped.
 *
 * @param path       the path
 * @param directory  out, 120 bytes: the directory with its last separator; may be null
 * @param name       out, 38 bytes: the name; may be null
 * @param extension  out, 38 bytes: the extension without its dot; may be null
 * @return           0
 */
OSTRUM_API int32_t F_ParseFilename(const char *path, char *directory, char *name, char *extension);

/**
 * Puts a path together.
 *
 * @param path       out, 120 bytes
 * @param directory  the directory, with or without its last separator; may be null
 * @param name       the name; may be null
 * @param extension  the extension without its dot; may be null
 * @return           path
 */
OSTRUM_API char *F_MakeFilename(char *path, const char *directory, const char *name,
                                const char *extension);

/**
 * Puts the path of a backup together: that of F_MakeFilename with '%' behind it.
 *
 * @param path       out, 120 bytes
 * @param directory  the directory, with or without its last separator; may be null
 * @param name       the name; may be null
 * @param extension  the extension without its dot; may be null
 * @return           path
 */
OSTRUM_API char *F_MakeBackupFilename(char *path, const char *directory, const char *name,
                                      const char *extension);

/**
 * Gives the text of a status of this family.
 *
 * @param status  the status
 * @return        its text, static; "Invalid reply code" for an unknown one
 */
OSTRUM_API const char *F_Message(int32_t status);

OSTRUM_END

#endif
