#pragma once

#include <ostrum/ifc.h>

/*
 * What IFC_Put16 and its sisters do, for code that writes or reads many words.
 */

inline void IFC_Store16(uint8_t *address, uint32_t value)
{
    address[0] = static_cast<uint8_t>(value >> 8);
    address[1] = static_cast<uint8_t>(value);
}

inline void IFC_Store32(uint8_t *address, uint32_t value)
{
    address[0] = static_cast<uint8_t>(value >> 24);
    address[1] = static_cast<uint8_t>(value >> 16);
    address[2] = static_cast<uint8_t>(value >> 8);
    address[3] = static_cast<uint8_t>(value);
}

inline uint32_t IFC_Load16(const uint8_t *address)
{
    return uint32_t{ address[0] } << 8 | address[1];
}

inline uint32_t IFC_Load32(const uint8_t *address)
{
    return uint32_t{ address[0] } << 24 | uint32_t{ address[1] } << 16 |
           uint32_t{ address[2] } << 8 | address[3];
}
