/*
 * The words of the language: token texts by code, keywords by spelling, and unit words with their scales.
 * Both searches go through tables of places that are worked out while compiling.
 */
#include "frontend/tlt.h"

#include <array>
#include <stdint.h>
#include <string.h>

static constexpr const char *token_texts[] = {
    "MODULE",
    "CONST",
    "ENUM",
    "VAR",
    "FUNCTION",
    "TREE",
    "SYSCALL",
    "PRIVATE", //
    "USES",
    "BEGIN",
    "END",
    "NODE",
    "SUBTREE",
    "ENTRY",
    "DATA",
    "TYPEDEF", //
    "IF",
    "ELSEIF",
    "ELSE",
    "SWITCH",
    "CASE",
    "DEFAULT",
    "FOR",
    "FROM", //
    "TO",
    "BY",
    "WHILE",
    "RETURN",
    "LEAF",
    "=",
    "+",
    "-", //
    "*",
    "/",
    "MOD",
    "~",
    "&",
    "|",
    "^",
    "==", //
    "!=",
    "<",
    "<=",
    ">",
    ">=",
    "<<",
    ">>",
    "AND", //
    "OR",
    "NOT",
    "(",
    ")",
    "[",
    "]",
    ",",
    ";", //
    "NULL",
    "BREAK",
    "PRAGMA",
    "GOTO",
    "ASSERT",
    "WHEN",
    "RAISE",
    "END_EXCEPTION",
    "..",
    "BODY",
    "RECORD",
    ":",
    "->",
    "NONVOLATILE",
    "FORWARD",
    "IFDEF", //
    "ENDIF",
    "#",
    "<IDENTIFIER>",
    "<NUMBER>",
    "<STRING LITERAL>",
    "<DATA LITERAL>",
    "<END OF LINE>",
    "<STRANGE SEPARATOR>", //
    "<NO_TOKEN>",
    "<LINK>",
};
static_assert(std::size(token_texts) == TLT_TOKEN_COUNT, "one text a code");

static constexpr TLT_UNIT units[] = {
    { .scale = 1, .offset = 0, .quantity = 1, .word = "mV" },
    { .scale = 1000, .offset = 0, .quantity = 1, .word = "V" },
    { .scale = 1000000, .offset = 0, .quantity = 1, .word = "kV" },
    { .scale = 1000000, .offset = 0, .quantity = 1, .word = "KV" },
    { .scale = 1000, .offset = 0, .quantity = 1, .word = "Volts" },
    { .scale = 0.1F, .offset = 0, .quantity = 2, .word = "mR" },
    { .scale = 100, .offset = 0, .quantity = 2, .word = "R" },
    { .scale = 100, .offset = 0, .quantity = 2, .word = "Ohms" },
    { .scale = 100000, .offset = 0, .quantity = 2, .word = "kR" },
    { .scale = 100000, .offset = 0, .quantity = 2, .word = "KR" },
    { .scale = 100000000, .offset = 0, .quantity = 2, .word = "MR" },
    { .scale = 1, .offset = 0, .quantity = 3, .word = "mA" },
    { .scale = 1000, .offset = 0, .quantity = 3, .word = "A" },
    { .scale = 1000, .offset = 0, .quantity = 3, .word = "Amps" },
    { .scale = 1000000, .offset = 0, .quantity = 3, .word = "KA" },
    { .scale = 1, .offset = 0, .quantity = 4, .word = "mB" },
    { .scale = 1000, .offset = 0, .quantity = 4, .word = "B" },
    { .scale = 1, .offset = 0, .quantity = 4, .word = "mbar" },
    { .scale = 1000, .offset = 0, .quantity = 4, .word = "bar" },
    { .scale = 1, .offset = 0, .quantity = 5, .word = "C" },
    { .scale = 1, .offset = 0, .quantity = 6, .word = "mHz" },
    { .scale = 1000, .offset = 0, .quantity = 6, .word = "Hz" },
    { .scale = 1000, .offset = 0, .quantity = 6, .word = "HZ" },
    { .scale = 1000000, .offset = 0, .quantity = 6, .word = "kHz" },
    { .scale = 1000000, .offset = 0, .quantity = 6, .word = "KHz" },
    { .scale = 1000000, .offset = 0, .quantity = 6, .word = "KHZ" },
    { .scale = 1000000000, .offset = 0, .quantity = 6, .word = "MHz" },
    { .scale = 1, .offset = 0, .quantity = 7, .word = "us" },
    { .scale = 1000, .offset = 0, .quantity = 7, .word = "ms" },
    { .scale = 1000000, .offset = 0, .quantity = 7, .word = "s" },
    { .scale = 1000000, .offset = 0, .quantity = 7, .word = "Seconds" },
    { .scale = 1000000, .offset = 0, .quantity = 7, .word = "Second" },
    { .scale = 1, .offset = 0, .quantity = 8, .word = "m%" },
    { .scale = 1000, .offset = 0, .quantity = 8, .word = "%" },
    { .scale = 1, .offset = 0, .quantity = 9, .word = "uL" },
    { .scale = 1000, .offset = 0, .quantity = 9, .word = "mL" },
    { .scale = 1000000, .offset = 0, .quantity = 9, .word = "L" },
    { .scale = 1000, .offset = 0, .quantity = 10, .word = "RPM" },
    { .scale = 100000, .offset = 0, .quantity = 11, .word = "KPH" },
    { .scale = 100000, .offset = 0, .quantity = 11, .word = "km_per_hr" },
    { .scale = 100, .offset = 0, .quantity = 11, .word = "m_per_hr" },
    { .scale = 1, .offset = 0, .quantity = 12, .word = "mm" },
    { .scale = 1000, .offset = 0, .quantity = 12, .word = "m" },
    { .scale = 1000000, .offset = 0, .quantity = 12, .word = "km" },
    { .scale = 1, .offset = 0, .quantity = 13, .word = "g" },
    { .scale = 1000, .offset = 0, .quantity = 13, .word = "kg" },
    { .scale = 1000000, .offset = 0, .quantity = 13, .word = "t" },
    { .scale = 1000, .offset = 0, .quantity = 14, .word = "Deg" },
    { .scale = 1000, .offset = 0, .quantity = 14, .word = "Degrees" },
    { .scale = 1, .offset = 0, .quantity = 15, .word = "uG" },
    { .scale = 1000, .offset = 0, .quantity = 15, .word = "mG" },
    { .scale = 1000000, .offset = 0, .quantity = 15, .word = "G" },
    { .scale = 1, .offset = 0, .quantity = 16, .word = "g_per_hr" },
    { .scale = 1000, .offset = 0, .quantity = 16, .word = "kg_per_hr" },
    { .scale = 1000000, .offset = 0, .quantity = 16, .word = "t_per_hr" },
    { .scale = 1000, .offset = 0, .quantity = 17, .word = "to_1" },
    { .scale = 60000, .offset = 0, .quantity = 18, .word = "minutes" },
    { .scale = 3600000, .offset = 0, .quantity = 18, .word = "hours" },
    { .scale = 60000, .offset = 0, .quantity = 18, .word = "minute" },
    { .scale = 3600000, .offset = 0, .quantity = 18, .word = "hour" },
    { .scale = 1, .offset = 0, .quantity = 19, .word = "W_per_sqm" },
    { .scale = 1000, .offset = 0, .quantity = 19, .word = "kW_per_sqm" },
    { .scale = 1, .offset = 0, .quantity = 20, .word = "g_per_m3" },
    { .scale = 1000, .offset = 0, .quantity = 20, .word = "kg_per_m3" },
    { .scale = 1, .offset = 0, .quantity = 21, .word = "mm3" },
    { .scale = 1000, .offset = 0, .quantity = 21, .word = "cm3" },
    { .scale = 1000, .offset = 0, .quantity = 22, .word = "ha" },
    { .scale = 1000, .offset = 0, .quantity = 23, .word = "KM" },
    { .scale = 1000, .offset = 0, .quantity = 24, .word = "mi" },
    { .scale = 1, .offset = 0, .quantity = 25, .word = "uL_per_100km" },
    { .scale = 1000, .offset = 0, .quantity = 25, .word = "mL_per_100km" },
    { .scale = 1000000, .offset = 0, .quantity = 25, .word = "L_per_100km" },
    { .scale = 1000, .offset = 0, .quantity = 26, .word = "mpg" },
    { .scale = 1000, .offset = 0, .quantity = 27, .word = "MPH" },
    { .scale = 1, .offset = 0, .quantity = 28, .word = "F" },
    { .scale = 1, .offset = 0, .quantity = 29, .word = "Pa" },
    { .scale = 1000, .offset = 0, .quantity = 29, .word = "KPa" },
    { .scale = 1000, .offset = 0, .quantity = 30, .word = "Deg_per_sec" },
    { .scale = 1, .offset = 0, .quantity = 31, .word = "ug" },
    { .scale = 1000, .offset = 0, .quantity = 31, .word = "mg" },
    { .scale = 1, .offset = 0, .quantity = 32, .word = "ml_per_min" },
    { .scale = 1000, .offset = 0, .quantity = 32, .word = "l_per_min" },
};
static_assert(std::size(units) == 82, "one row a unit word");

enum {
    PLACE_COUNT = 512, // of either table; far more than words, so that most words miss at once
    NO_ROW = 255,
    LONGEST_KEYWORD = 13,
};

static_assert(std::size(units) < 255 && std::size(token_texts) < 255, "rows fit a byte");

/** The bit that tells lower case from upper case; no other word characters differ in it alone. */
static constexpr uint8_t upper_mask = 0xDF;

/** First place of a word: from its length and three of its characters. */
static constexpr uint32_t word_place(const char *word, size_t length, uint8_t mask)
{
    auto first = static_cast<uint8_t>(word[0] & mask);
    auto middle = static_cast<uint8_t>(word[length / 2] & mask);
    auto last = static_cast<uint8_t>(word[length - 1] & mask);
    uint32_t sum = static_cast<uint32_t>(length) * 37U + first * 5U + middle * 11U + last * 23U;
    return sum % PLACE_COUNT;
}

static constexpr size_t text_length(const char *text)
{
    size_t length = 0;
    while (text[length] != 0)
        length++;
    return length;
}

using PLACES = std::array<uint8_t, PLACE_COUNT>;

static constexpr void enter_word(PLACES &places, const char *word, uint8_t row)
{
    uint32_t place = word_place(word, text_length(word), 0xFF);
    while (places[place] != NO_ROW)
        place = (place + 1) % PLACE_COUNT;
    places[place] = row;
}

static constexpr bool is_word(const char *text)
{
    return text[0] >= 'A' && text[0] <= 'Z';
}

static consteval PLACES keyword_places()
{
    PLACES places{};
    places.fill(NO_ROW);
    for (uint8_t row = 0; row <= TLT_TOKEN_HASH; row++)
        if (is_word(token_texts[row])) enter_word(places, token_texts[row], row);
    return places;
}

static consteval PLACES unit_places()
{
    PLACES places{};
    places.fill(NO_ROW);
    for (size_t row = 0; row < std::size(units); row++)
        enter_word(places, units[row].word, static_cast<uint8_t>(row));
    return places;
}

static constexpr PLACES keywords_by_place = keyword_places();
static constexpr PLACES units_by_place = unit_places();

/** 1 if the keyword is the word in any case. */
static int32_t equals_keyword(const char *keyword, const char *word, size_t length)
{
    for (size_t i = 0; i < length; i++)
        if (keyword[i] != static_cast<char>(word[i] & upper_mask)) return 0;
    return keyword[length] == 0;
}

int32_t TLT_FindKeyword(const char *word, size_t length)
{
    if (length < 2 || length > LONGEST_KEYWORD) return TLT_TOKEN_IDENTIFIER;
    uint32_t place = word_place(word, length, upper_mask);
    while (keywords_by_place[place] != NO_ROW) {
        uint8_t row = keywords_by_place[place];
        if (equals_keyword(token_texts[row], word, length)) return row;
        place = (place + 1) % PLACE_COUNT;
    }
    return TLT_TOKEN_IDENTIFIER;
}

const TLT_UNIT *TLT_FindUnit(const char *word, size_t length)
{
    if (length == 0) return nullptr;
    uint32_t place = word_place(word, length, 0xFF);
    while (units_by_place[place] != NO_ROW) {
        const TLT_UNIT *unit = &units[units_by_place[place]];
        if (strncmp(unit->word, word, length) == 0 && unit->word[length] == 0) return unit;
        place = (place + 1) % PLACE_COUNT;
    }
    return nullptr;
}

int32_t TLT_IsToken(const char *text)
{
    for (int32_t code = 0; code <= TLT_TOKEN_HASH; code++)
        if (strcmp(token_texts[code], text) == 0) return 1;
    return 0;
}

const char *TLT_TokenValue(int32_t code)
{
    if (code < 0 || code >= TLT_TOKEN_COUNT) return token_texts[TLT_TOKEN_NONE];
    return token_texts[code];
}

int32_t TLT_TestForUnits(const char *word, int32_t *quantity, float *scale)
{
    const TLT_UNIT *unit = TLT_FindUnit(word, strlen(word));
    if (unit == nullptr) return 0;
    if (quantity != nullptr) *quantity = unit->quantity;
    if (scale != nullptr) *scale = unit->scale;
    return 1;
}
