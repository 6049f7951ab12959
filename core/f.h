#pragma once

#include <ostrum/f.h>

enum {
    F_PATH_SIZE = 120, // bytes of a path, terminator included
    F_NAME_SIZE = 38,  // bytes of a name or an extension alone
};

/**
 * Picks the path of a context file: in the first directory that holds it, else in the last.
 *
 * @param path         out, F_PATH_SIZE bytes; empty if the chosen path would be longer
 * @param directories  list separated by ';', of any length
 * @param name         name of the file
 */
void F_FindInDirectories(char *path, const char *directories, const char *name);
