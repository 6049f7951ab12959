/*
 * Byte order. The standard order, that of files, is most significant byte first.
 */
#ifndef OSTRUM_IFC_H
#define OSTRUM_IFC_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** Does nothing. */
OSTRUM_API void IFC_Initialise(void);

/**
 * Stores 16 bits in standard order.
 *
 * @param address  2 bytes, of any alignment
 * @param value    the value
 */
OSTRUM_API void IFC_Put16(void *address, uint16_t value);

/**
 * Reads 16 bits in standard order.
 *
 * @param address  2 bytes, of any alignment
 * @return         the value
 */
OSTRUM_API uint16_t IFC_Get16(const void *address);

/**
 * Stores 32 bits in standard order.
 *
 * @param address  4 bytes, of any alignment
 * @param value    the value
 */
OSTRUM_API void IFC_Put32(void *address, uint32_t value);

/**
 * Reads 32 bits in standard order.
 *
 * @param address  4 bytes, of any alignment
 * @return         the value
 */
OSTRUM_API uint32_t IFC_Get32(const void *address);

/**
 * Turns a 16-bit word from standard order into host order.
 *
 * @param value  as it stands in a file
 * @return       the value
 */
OSTRUM_API uint16_t IFC_GetHost16(uint16_t value);

/**
 * Turns a 32-bit word from standard order into host order.
 *
 * @param value  as it stands in a file
 * @return       the value
 */
OSTRUM_API uint32_t IFC_GetHost32(uint32_t value);

/**
 * Turns a 16-bit word from host order into standard order.
 *
 * @param value  the value
 * @return       as it stands in a file
 */
OSTRUM_API uint16_t IFC_GetStd16(uint16_t value);

/**
 * Turns a 32-bit word from host order into standard order.
 *
 * @param value  the value
 * @return       as it stands in a file
 */
OSTRUM_API uint32_t IFC_GetStd32(uint32_t value);

OSTRUM_END

#endif
