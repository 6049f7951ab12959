/*
 * Engineering quantities: 32-bit counts of a unit that the quantity's number fixes, and their display.
 * Quantity numbers are masked to 8 bits and must then be from 0 to EUC_GetMaxType.
 */
#ifndef OSTRUM_EUC_H
#define OSTRUM_EUC_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/**
 * Called for each unit by EUC_GetAllUnits.
 *
 * @param user        the word given to EUC_GetAllUnits
 * @param unit        text of the unit; null if its symbol is not set yet
 * @param multiplier  counts in one of the unit
 * @return            ignored
 */
typedef int32_t (*EUC_VISITOR)(void *user, const char *unit, int32_t multiplier);

/** Gives each symbol that no one has set its default text. */
OSTRUM_API void EUC_Initialise(void);

/**
 * Gives the highest quantity number.
 *
 * @return  35
 */
OSTRUM_API int32_t EUC_GetMaxType(void);

/**
 * Names a quantity.
 *
 * @param quantity  quantity number, 0 to 35
 * @return          its name, static
 */
OSTRUM_API const char *EUC_QuantityName(int32_t quantity);

/**
 * Gives the flags of a quantity, which the library itself does not use.
 *
 * @param quantity  quantity number, 0 to 35
 * @return          1 or 2
 */
OSTRUM_API uint32_t EUC_Flags(int32_t quantity);

/**
 * Gives a zero of the quantity as source spells it. The number is not masked.
 *
 * @param quantity  quantity number, 0 to 35
 * @return          the text, static
 */
OSTRUM_API const char *EUC_GetDefaultUnitString(int32_t quantity);

/**
 * Gives the unit that stands for a quantity.
 *
 * @param quantity    quantity number, 0 to 35
 * @param multiplier  out: counts in one of the unit; may be null
 * @return            text of the unit; null if its symbol is not set yet
 */
OSTRUM_API const char *EUC_GetNaturalUnit(int32_t quantity, int32_t *multiplier);

/**
 * Visits the units of a quantity, smallest first.
 *
 * @param quantity  quantity number, 0 to 35
 * @param visitor   called for each unit; may be null
 * @param user      handed to the visitor
 * @return          number of units
 */
OSTRUM_API int32_t EUC_GetAllUnits(int32_t quantity, EUC_VISITOR visitor, void *user);

/**
 * Finds a quantity by its format character.
 *
 * @param ch  the character, case-sensitive
 * @return    quantity number from 1 to 35; -1 if no quantity has it
 */
OSTRUM_API int32_t EUC_ConvertFormatCharacter(char ch);

/**
 * Replaces a symbol in the units made from it.
 *
 * @param kind  1 resistance, 2 degree, 3 squared, 4 cubed, 5 pressure, 6 engine speed; another kind
 *              does nothing
 * @param text  the symbol, copied and cut to the room of each unit
 */
OSTRUM_API void EUC_SetString(int32_t kind, const char *text);

/**
 * Rounds a value to significant figures.
 *
 * @param figures  how many, 0 or more
 * @param value    the value
 * @return         the rounded value
 */
OSTRUM_API int32_t EUC_SigFigs(int32_t figures, int32_t value);

/**
 * Writes a count with a fitting unit and at most three decimals.
 *
 * @param type   quantity number, plus 0x100 for no rounding to the quantity's step, 0x200 for no unit,
 *               0x400 for a whole number alone
 * @param value  the count
 * @return       the text in a static buffer, valid until the next call
 */
OSTRUM_API const char *EUC_DisplayValue(int32_t type, int32_t value);

/**
 * Writes a count rounded to significant figures; see EUC_SigFigs and EUC_DisplayValue.
 *
 * @param type     as with EUC_DisplayValue
 * @param figures  as with EUC_SigFigs
 * @param value    the count
 * @return         the text in a static buffer, valid until the next call
 */
OSTRUM_API const char *EUC_UserString(int32_t type, int32_t figures, int32_t value);

OSTRUM_END

#endif
