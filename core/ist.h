#pragma once

#include <ostrum/ist.h>

/**
 * Invariant: length + 1 is at most capacity, and every byte of the buffer beyond length is zero.
 */
struct IST_STRING {
    char *buffer;     // the text so far, terminated; owned
    int32_t length;   // characters, without the terminator
    int32_t capacity; // bytes, a multiple of 256
};
