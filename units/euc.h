#pragma once

#include <ostrum/euc.h>

enum {
    EUC_QUANTITY_COUNT = 36, // 0 is INT
};

/** A quantity. Unit i + 1 is 1000 times unit i. */
struct EUC_QUANTITY {
    const char *name;                     // which is the language's type name
    const char **units;                   // smallest first; null while its symbol is not set
    int32_t unit_count;                   // entries in units
    int32_t natural_unit;                 // index of the unit that stands for the quantity
    double count_value;                   // what one count is worth in units[0]
    uint16_t flags;                       // handed out by EUC_Flags
    int32_t rounding_step;                // counts are shown rounded to a multiple of this
    const char *(*format)(int32_t value); // prints the value by itself; may be null
    char format_character;                // 0 for INT
    const char *default_text;             // a zero as source spells it
};

/**
 * Gives the record of a quantity.
 *
 * @param quantity  quantity number, masked to 8 bits; beyond the table it counts as INT
 * @return          the record, static
 */
const EUC_QUANTITY *EUC_Quantity(int32_t quantity);

/**
 * Writes a count of milliseconds as hours, if there are any, minutes and seconds.
 *
 * @param value  milliseconds
 * @return       the text in the static buffer of EUC_DisplayValue
 */
const char *EUC_FormatClock(int32_t value);
