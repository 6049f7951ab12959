#pragma once

#include <ostrum/kobr.h>

enum {
    KOBR_NAME_SIZE = 32,         // bytes of a name field, terminator included
    KOBR_FRAME_RECORD = 40,      // bytes of a frame without its entries
    KOBR_ENTRY_RECORD = 70,      // bytes of an entry
    KOBR_SYMBOL_NAME_MAX = 245,  // characters that the length byte of a symbol has room for
    KOBR_SYMBOL_RECORD_MAX = 254 // bytes of such a symbol
};

/**
 * Checks that a block is a module and that all regions, records and names lie inside it.
 *
 * @param data  the block
 * @param size  its size, bytes
 * @return      0 good; 1, 2, 9 as KOBR_CheckModule; 7 damaged
 */
int32_t KOBR_CheckFile(const uint8_t *data, size_t size);

/**
 * Makes room in a build buffer ahead of puts, at least doubling it, so that many puts cost their sum.
 *
 * @param module  address of the module pointer, which may change
 * @param count   bytes that will be put
 */
void KOBR_Reserve(uint8_t **module, int32_t count);

/**
 * Calls off what KOBR_Reserve did from the header's capacity field: sets it to what puts alone leave.
 *
 * @param module  the module, all put
 */
void KOBR_SettleCapacity(uint8_t *module);
