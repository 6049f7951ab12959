/*
 * Byte order. The conversions go through memory, so they swap on a little-endian host only.
 */
#include "core/ifc.h"

void IFC_Initialise() {}

void IFC_Put16(void *address, uint16_t value)
{
    IFC_Store16(static_cast<uint8_t *>(address), value);
}

uint16_t IFC_Get16(const void *address)
{
    return static_cast<uint16_t>(IFC_Load16(static_cast<const uint8_t *>(address)));
}

void IFC_Put32(void *address, uint32_t value)
{
    IFC_Store32(static_cast<uint8_t *>(address), value);
}

uint32_t IFC_Get32(const void *address)
{
    return IFC_Load32(static_cast<const uint8_t *>(address));
}

uint16_t IFC_GetHost16(uint16_t value)
{
    return IFC_Get16(&value);
}

uint32_t IFC_GetHost32(uint32_t value)
{
    return IFC_Get32(&value);
}

uint16_t IFC_GetStd16(uint16_t value)
{
    uint16_t word = 0;
    IFC_Put16(&word, value);
    return word;
}

uint32_t IFC_GetStd32(uint32_t value)
{
    uint32_t word = 0;
    IFC_Put32(&word, value);
    return word;
}
