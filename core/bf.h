#pragma once

#include <ostrum/bf.h>

/**
 * Gives the size of a mapping.
 *
 * @param handle  a handle of mode 4
 * @return        bytes of its view
 */
size_t BF_MappedSize(intptr_t handle);
