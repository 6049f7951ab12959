/*
 * Bounded strings, searches without regard to case, and numbers as text. Patterns are in
 * st_match.cpp, strings in streams in st_stream.cpp.
 */
#include "core/st.h"

#include "core/c.h"
#include "core/sh.h"

#include <cctype>
#include <cstdarg>
#include <cstring>

static constexpr int32_t number_size = 16; // holds 32 bits in every format

static unsigned char upper(char c)
{
    return static_cast<unsigned char>(std::toupper(static_cast<unsigned char>(c)));
}

/** Length of a string, but at most limit: bytes behind that are not looked at. */
static size_t bounded_length(const char *text, size_t limit)
{
    const void *end = std::memchr(text, 0, limit);
    return end == nullptr ? limit : static_cast<size_t>(static_cast<const char *>(end) - text);
}

/** Copies what fits of src; gives the number of characters stored. Size is at least 1. */
static size_t copy_bounded(char *dest, size_t size, const char *src)
{
    const size_t length = bounded_length(src, size - 1);
    std::memmove(dest, src, length);
    dest[length] = 0;
    return length;
}

void ST_Initialise()
{
    C_Initialise();
}

char *ST_Copy(char *dest, int32_t size, const char *src)
{
    if (size < 1) return nullptr;
    copy_bounded(dest, static_cast<size_t>(size), src);
    return dest;
}

char *ST_CopySpan(char *dest, int32_t size, const char *src, size_t length)
{
    if (size < 1) return nullptr;
    const size_t room = static_cast<size_t>(size) - 1;
    const size_t stored = length < room ? length : room;
    std::memmove(dest, src, stored);
    dest[stored] = 0;
    return dest;
}

char *ST_Append(char *dest, int32_t size, const char *src)
{
    if (size < 1) return nullptr;
    const size_t capacity = static_cast<size_t>(size);
    const size_t length = bounded_length(dest, capacity);
    if (length < capacity) copy_bounded(dest + length, capacity - length, src);
    return dest;
}

char *ST_Concat(char *dest, int32_t size, ...)
{
    if (size < 1) return nullptr;
    dest[0] = 0;
    size_t used = 0;
    va_list sources;
    va_start(sources, size);
    while (const char *src = va_arg(sources, const char *))
        used += copy_bounded(dest + used, static_cast<size_t>(size) - used, src);
    va_end(sources);
    return dest;
}

/** Copies through one of the C library's case conversions. */
static char *copy_converted(char *dest, int32_t size, const char *src, int (*convert)(int))
{
    if (size < 1) return nullptr;
    const size_t length = bounded_length(src, static_cast<size_t>(size) - 1);
    for (size_t i = 0; i < length; i++)
        dest[i] = static_cast<char>(convert(static_cast<unsigned char>(src[i])));
    dest[length] = 0;
    return dest;
}

char *ST_Lower(char *dest, int32_t size, const char *src)
{
    return copy_converted(dest, size, src, std::tolower);
}

char *ST_Upper(char *dest, int32_t size, const char *src)
{
    return copy_converted(dest, size, src, std::toupper);
}

char *ST_AllocateSpan(const char *src, size_t length)
{
    char *copy = static_cast<char *>(SH_AllocateBytes(length + 1));
    std::memcpy(copy, src, length);
    return copy;
}

char *ST_Allocate(const char *src)
{
    return ST_AllocateSpan(src, std::strlen(src));
}

void ST_Free(char *text)
{
    SH_Free(text);
}

const char *ST_FindString(const char *text, const char *wanted)
{
    if (wanted[0] == 0) return text + std::strlen(text);
    return std::strstr(text, wanted);
}

int32_t ST_StartsCI(const char *text, const char *prefix)
{
    for (; *prefix != 0; text++, prefix++) {
        if (upper(*text) != upper(*prefix)) return 0;
    }
    return 1;
}

int32_t ST_CompareCI(const char *a, const char *b)
{
    while (*a != 0 && upper(*a) == upper(*b)) {
        a++;
        b++;
    }
    const unsigned char left = upper(*a);
    const unsigned char right = upper(*b);
    return (left > right) - (left < right);
}

int32_t ST_ListSearchCI(const char *key, const char *const *list)
{
    for (int32_t i = 0; list[i] != nullptr; i++) {
        if (ST_CompareCI(key, list[i]) == 0) return i;
    }
    return -1;
}

// --- numbers ---

/** Writes digits from the end of a buffer of number_size bytes; gives the first one. */
static char *put_digits(char *buffer, uint32_t value, uint32_t base)
{
    char *first = buffer + number_size - 1;
    *first = 0;
    do {
        *--first = "0123456789ABCDEF"[value % base];
        value /= base;
    } while (value != 0);
    return first;
}

char *ST_IntChar(char *buffer, int32_t value, int32_t format)
{
    static constexpr uint32_t bases[] = { 10, 8, 16 };
    if (format < 0 || format > 2) return nullptr;
    char digits[number_size];
    const bool negative = format == 0 && value < 0;
    const uint32_t word = static_cast<uint32_t>(value);
    char *first = put_digits(digits, negative ? 0 - word : word, bases[format]);
    if (negative) *--first = '-';
    return ST_Copy(buffer, number_size, first);
}

/** Value of a digit of any format; 16 for a character that is none. */
static uint32_t digit_value(char c)
{
    if (c >= '0' && c <= '9') return static_cast<uint32_t>(c - '0');
    if (c >= 'A' && c <= 'F') return static_cast<uint32_t>(c - 'A' + 10);
    if (c >= 'a' && c <= 'f') return static_cast<uint32_t>(c - 'a' + 10);
    return 16;
}

/** Takes digits of a base, wrapping at 32 bits; gives the first character behind them. */
static const char *take_digits(const char *text, uint32_t base, uint32_t *value)
{
    *value = 0;
    for (; digit_value(*text) < base; text++)
        *value = *value * base + digit_value(*text);
    return text;
}

/** Takes the sign and prefix that format 3 knows; gives the base. */
static uint32_t take_prefix(const char **text, bool signed_decimal)
{
    const char *start = *text;
    if (signed_decimal || start[0] != '0') return 10;
    if (start[1] != 'x' && start[1] != 'X') return 8;
    *text = start + 2;
    return 16;
}

const char *ST_CharInt(const char *text, int32_t *result, int32_t format)
{
    static constexpr uint32_t bases[] = { 10, 8, 16 };
    if (format < 0 || format > 3) return nullptr;
    const bool sign_allowed = format == 0 || format == 3;
    const bool has_sign = sign_allowed && (*text == '-' || *text == '+');
    const bool negative = has_sign && *text == '-';
    if (has_sign) text++;
    const uint32_t base = format == 3 ? take_prefix(&text, has_sign) : bases[format];
    uint32_t value = 0;
    const char *end = take_digits(text, base, &value);
    *result = static_cast<int32_t>(negative ? 0 - value : value);
    return end == text ? nullptr : end;
}

/** Reads the digits behind the point as a part of 1; null if there is none. */
static const char *take_fraction(const char *text, double *fraction)
{
    uint32_t digits = 0;
    const char *end = take_digits(text, 10, &digits);
    if (end == text) return nullptr;
    double power = 1;
    for (const char *digit = text; digit < end; digit++)
        power *= 10;
    *fraction = digits / power;
    return end;
}

const char *ST_CharFloat(const char *text, double *result)
{
    const bool negative = *text == '-';
    if (*text == '-' || *text == '+') text++;
    if (*text != '.' && digit_value(*text) > 9) return nullptr;
    uint32_t whole = 0;
    text = take_digits(text, 10, &whole);
    double fraction = 0;
    if (*text == '.') text = take_fraction(text + 1, &fraction);
    if (text == nullptr) return nullptr;
    *result = negative ? -(whole + fraction) : whole + fraction;
    return text;
}
