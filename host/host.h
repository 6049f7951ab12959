/*
 * Everything that the library asks of the operating system beyond the C and C++ standard libraries.
 * Paths come in the library's own form and are turned into the host's here. Failures leave their
 * reason in errno.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

// --- storage ---

/**
 * Takes storage from the system, zero-filled.
 *
 * @param size  bytes, a multiple of 4096
 * @return      the storage, given back with HOST_UnmapStorage; null if there is none
 */
void *HOST_MapStorage(size_t size);

/**
 * Gives storage back to the system.
 *
 * @param storage  of HOST_MapStorage
 * @param size     as it was given there
 */
void HOST_UnmapStorage(void *storage, size_t size);

// --- paths and files ---

enum {
    HOST_PATH_SIZE = 120, // bytes of a path, terminator included; longer ones are refused
};

enum HOST_LAST_COMPONENT {
    HOST_LOOKED_UP,  // the file is there already: found without regard to case
    HOST_AS_WRITTEN, // the file is made, renamed or deleted
};

struct HOST_FILE_STATUS {
    int64_t size;        // bytes
    int64_t change_time; // seconds since the epoch
};

struct HOST_FILE_ENTRY {
    char *name;
    bool is_directory;
};

/** The entries of a directory, in the order of their bytes; "." and ".." are among them. */
struct HOST_FILE_LIST {
    HOST_FILE_ENTRY *entries;
    size_t count;
};

/** A private view of a whole file. */
struct HOST_MAPPING {
    void *address; // not null, even if the file is empty
    size_t size;
};

/**
 * Turns a path into the host's form: separators become '/', and components that do not exist as
 * written are looked for without regard to case.
 *
 * @param host_path  out, HOST_PATH_SIZE bytes
 * @param path       the path in the library's form
 * @param last       what the last component is
 * @return           true; false if the path is empty or too long
 */
bool HOST_MakePath(char *host_path, const char *path, HOST_LAST_COMPONENT last);

/**
 * Opens a stream. A directory cannot be opened.
 *
 * @param path  the path
 * @param mode  "r", "w" or "a"; the last component of "w" and "a" is taken as written
 * @return      the stream, closed by fclose; null on failure
 */
FILE *HOST_OpenStream(const char *path, const char *mode);

/** What tells one open file from another, whatever its paths. */
struct HOST_FILE_IDENTITY {
    uint64_t device, number;
};

/** Gives the identity of an open stream; false on failure. */
bool HOST_IdentifyStream(FILE *stream, HOST_FILE_IDENTITY *identity);

/**
 * Reads one line with its line end, or as much of it as fits. CR LF comes out as LF; LF or a CR
 * alone ends a line too. Nothing is terminated.
 *
 * @param stream  open for reading
 * @param buffer  room bytes
 * @param room    bytes that may be stored
 * @return        bytes stored; 0 at the end of the file
 */
int32_t HOST_ReadLine(FILE *stream, char *buffer, int32_t room);

/** Writes a character to a stream that one thread alone uses; an error stays with the stream. */
inline void HOST_PutChar(FILE *stream, char c)
{
    putc_unlocked(c, stream);
}

/** Writes a text likewise. Generated text comes in short pieces, for which calls cost most. */
inline void HOST_PutText(FILE *stream, const char *text)
{
    while (*text != 0)
        putc_unlocked(*text++, stream);
}

enum HOST_OPEN_MODE { HOST_READ, HOST_CREATE, HOST_UPDATE, HOST_APPEND };

/**
 * Opens a descriptor. A directory cannot be opened.
 *
 * @param path  the path
 * @param mode  read; create or truncate and write, for the owner alone; read and write; the same at
 *              the end of the file
 * @return      the descriptor, closed by HOST_Close; -1 on failure
 */
int HOST_Open(const char *path, HOST_OPEN_MODE mode);

/** Closes a descriptor; true if nothing went wrong. */
bool HOST_Close(int descriptor);

/** Reads until the count is reached or the file ends; gives the bytes read, -1 on failure. */
int64_t HOST_Read(int descriptor, void *buffer, size_t count);

/** Writes all bytes; false on failure. */
bool HOST_Write(int descriptor, const void *buffer, size_t count);

/** Gives the position of a descriptor; -1 on failure. */
int64_t HOST_Position(int descriptor);

/** Moves a descriptor to a position from the start; false on failure. */
bool HOST_Seek(int descriptor, int64_t position);

/** Gives the size of an open file; -1 on failure. */
int64_t HOST_DescriptorSize(int descriptor);

/** Gives the status of a file, looked up; false if it cannot be reached. */
bool HOST_GetStatus(const char *path, HOST_FILE_STATUS *status);

enum HOST_ACCESS { HOST_MAY_READ, HOST_MAY_WRITE, HOST_EXISTS };

/** Tells whether a file, looked up, can be used in a way. */
bool HOST_HasAccess(const char *path, HOST_ACCESS access);

/** Renames a file, both last components as written; false on failure. */
bool HOST_Rename(const char *old_path, const char *new_path);

/** Deletes a file, last component as written, not a directory; false on failure. */
bool HOST_Delete(const char *path);

/** Changes the working directory; false on failure. */
bool HOST_ChangeDirectory(const char *path);

/**
 * Lists a directory.
 *
 * @param path  the directory; empty for the working directory
 * @param list  out: its entries; released by HOST_FreeList
 * @return      false if it cannot be listed
 */
bool HOST_ListDirectory(const char *path, HOST_FILE_LIST *list);

/** Releases the entries of a list. */
void HOST_FreeList(HOST_FILE_LIST *list);

/**
 * Maps a whole regular file. What is written into the view does not reach the file.
 *
 * @param path     the path
 * @param mapping  out: the view; released by HOST_Unmap
 * @return         false on failure
 */
bool HOST_Map(const char *path, HOST_MAPPING *mapping);

/** Ends a mapping. */
void HOST_Unmap(HOST_MAPPING *mapping);

// --- settings store ---

enum HOST_HIVE { HOST_CURRENT_USER, HOST_DEFAULT_USER };

/**
 * Reads a setting. Keys and names are compared without regard to case. The key "Environment" of the
 * current user is the process environment first. A store that cannot be read holds nothing.
 *
 * @param hive  whose settings
 * @param key   section of the store, such as "Software\Halvorn\Quill"
 * @param name  name of the value
 * @return      the value, released by SH_Free; null if there is none
 */
char *HOST_ReadSetting(HOST_HIVE hive, const char *key, const char *name);

/**
 * Writes a setting of the current user, in one step; everything else in the store stays as it is.
 *
 * @param key    section of the store, made if it is not there
 * @param name   name of the value
 * @param value  the value; bytes that would end a line are stored as spaces
 * @return       false if the store cannot be read or written
 */
bool HOST_WriteSetting(const char *key, const char *name, const char *value);

// --- the running program ---

/** Gives the path of the running program, released by SH_Free; null if the host does not tell. */
char *HOST_ProgramPath();

/**
 * Reads a string of the version block of the running program.
 *
 * @param name  "InternalName", "FileVersion", "ProductVersion" or "LegalCopyright"
 * @return      the text, static; null if the program was built without it
 */
const char *HOST_ProgramVersion(const char *name);

/** Gives the version of the library, static. */
const char *HOST_LibraryVersion();

/** Shows a message on standard error; 1, or 0 if it could not be written. */
int32_t HOST_MessageBox(const char *caption, const char *text);
