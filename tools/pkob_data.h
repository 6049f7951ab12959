// What the data sections of a module hold: a tree of items for each section.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct PKOB_MODULE;

enum PKOB_VALUE_KIND {
    PKOB_NUMBER,
    PKOB_LINE,          // of a pin: the text that its source gives
    PKOB_WORDS,         // bits with names
    PKOB_QUANTITY_TYPE, // number of a quantity
    PKOB_QUANTITY,      // count of a quantity
    PKOB_REFERENCE,
};

/** What a reference leads to. */
enum PKOB_TARGET { PKOB_NOTHING, PKOB_TEXT, PKOB_NAMED, PKOB_UNNAMED };

/** One bit of a value of words. */
struct PKOB_WORD {
    int32_t bit;       // 0 ends a table
    const char *set;   // its word
    const char *clear; // the word where it is not set; null: none
};

/** A value of an item. Texts are the module's own, 8-bit, and live as long as it. */
struct PKOB_VALUE {
    const char *name; // of the attribute, as source writes it
    PKOB_VALUE_KIND kind;
    bool is_given;
    int32_t number;         // as the record has it; of a reference: address of its target
    int32_t quantity;       // of a count
    const PKOB_WORD *words; // of a value of words
    PKOB_TARGET target;     // of a reference
    std::string_view text;  // of a reference: the string, or the name of the target
};

/** A section, or an item of one. */
struct PKOB_ITEM {
    const char *kind;        // as source writes it
    std::string_view symbol; // full name; empty for what has no symbol
    std::string_view name;   // the same without the name of the item that it stands in
    int32_t address;
    bool is_row;   // its values stand on one line, in their order
    bool is_whole; // false: a section with damage, of which this is what comes before
    std::vector<PKOB_VALUE> values;
    std::vector<PKOB_ITEM> items;
    const uint8_t *samples; // of a waveform, else null
    int32_t sample_count;
};

/** Where a record cannot be what it should be. */
struct PKOB_PROBLEM {
    std::string_view symbol; // of the section
    int32_t address;
    std::string text;
};

struct PKOB_DATA {
    std::vector<PKOB_ITEM> sections; // by address; a damaged one with what comes before its damage
    std::vector<PKOB_PROBLEM> problems;
};

/** Decodes the data sections of a loaded module. */
PKOB_DATA pkob_read_data(const PKOB_MODULE &module);

/** A value of an item by its attribute's name; null if it has none or is not given. */
const PKOB_VALUE *pkob_find_value(const PKOB_ITEM &item, const char *name);

/** A count with the largest fitting unit, unrounded. 8-bit, as the table of units has it. */
std::string pkob_quantity_text(int32_t quantity, int32_t count);

/** The words of a value; bits without a word come last as one number. */
std::vector<std::string> pkob_words(const PKOB_VALUE &value);

/** A line number as source gives it: 12, or 12H above 128. */
std::string pkob_line_text(int32_t line);

/** 8-bit text as UTF-8: each byte is the character of its number. */
std::string pkob_utf8(std::string_view text);

/** Lists sections with all that stands in them. */
void pkob_print_data(const PKOB_DATA &data);

/** Shows help screens as an operator reads them. */
void pkob_print_screens(const PKOB_DATA &data);

/**
 * Writes a drawing of each waveform and connector that is whole.
 *
 * @param directory  where; it is made if it is not there
 * @return           what went wrong; empty if nothing did
 */
std::string pkob_draw(const PKOB_MODULE &module, const PKOB_DATA &data, const char *directory);
