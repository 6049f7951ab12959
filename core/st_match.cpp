/*
 * Patterns. A pattern is cut into elements, and the elements are matched from the last to the
 * first: for each of them a row tells at which places of the text the pattern from that element on
 * matches the whole rest. So the cost is that of pattern times text, whatever stars the pattern
 * has.
 */
#include "core/sh.h"
#include "core/st.h"

#include <cstring>

enum ELEMENT_KIND { ELEMENT_CHARACTER, ELEMENT_ANY, ELEMENT_CLASS, ELEMENT_NOT_CLASS };
enum ELEMENT_COUNT { COUNT_ONE, COUNT_RUN, COUNT_REPEATED };

struct ELEMENT {
    ELEMENT_KIND kind;
    ELEMENT_COUNT count; // one; any run of anything (*); repeated (+)
    const char *text;    // the character, or the first one between the brackets
    size_t length;       // of the text
};

/** Cuts off a bracket class; gives the first character behind it. */
static const char *take_class(const char *pattern, ELEMENT *element)
{
    const char *start = pattern + 1;
    element->kind = *start == '~' ? ELEMENT_NOT_CLASS : ELEMENT_CLASS;
    if (*start == '~') start++;
    const char *end = start;
    while (*end != 0 && *end != ']')
        end += end[0] == '\\' && end[1] != 0 ? 2 : 1;
    element->text = start;
    element->length = static_cast<size_t>(end - start);
    return *end == 0 ? end : end + 1;
}

static const char *take_character(const char *pattern, ELEMENT *element)
{
    element->kind = ELEMENT_CHARACTER;
    element->text = pattern;
    element->length = 1;
    return pattern + 1;
}

/** Cuts off the element behind a plus: a class, or one character without escapes. */
static const char *take_repeated(const char *pattern, ELEMENT *element)
{
    element->count = COUNT_REPEATED;
    if (*pattern == '[') return take_class(pattern, element);
    const char *rest = take_character(pattern, element);
    if (*pattern == '?' || *pattern == '*') element->kind = ELEMENT_ANY;
    return rest;
}

/** Cuts off the first element; gives what stands behind it. */
static const char *take_element(const char *pattern, ELEMENT *element)
{
    element->count = COUNT_ONE;
    if (*pattern == '[') return take_class(pattern, element);
    if (*pattern == '+' && pattern[1] != 0) return take_repeated(pattern + 1, element);
    if (*pattern == '\\' && pattern[1] != 0) return take_character(pattern + 1, element);
    const char *rest = take_character(pattern, element);
    if (*pattern == '?' || *pattern == '*') element->kind = ELEMENT_ANY;
    if (*pattern == '*') element->count = COUNT_RUN;
    return rest;
}

static bool in_class(const ELEMENT &element, char c)
{
    for (size_t i = 0; i < element.length; i++) {
        if (element.text[i] == '\\' && i + 1 < element.length) i++;
        if (element.text[i] == c) return true;
    }
    return false;
}

/** Whether an element by itself matches a character. */
static bool matches(const ELEMENT &element, char c)
{
    switch (element.kind) {
    case ELEMENT_CHARACTER:
        return c == *element.text;
    case ELEMENT_ANY:
        return true;
    case ELEMENT_CLASS:
        return in_class(element, c);
    default:
        return !in_class(element, c);
    }
}

/** Puts an element in front of what the row stands for: row[i] tells of the text from i on. */
static void match_one(const ELEMENT &element, const char *text, size_t length, bool *row)
{
    for (size_t i = 0; i < length; i++)
        row[i] = row[i + 1] && matches(element, text[i]);
    row[length] = false;
}

static void match_run(size_t length, bool *row)
{
    for (size_t i = length; i > 0; i--)
        row[i - 1] = row[i - 1] || row[i];
}

/** Only the rightmost place where the rest matches counts, and all before it must be repeats. */
static void match_repeated(const ELEMENT &element, const char *text, size_t length, bool *row)
{
    size_t rightmost = length + 1;
    while (rightmost > 0 && !row[rightmost - 1])
        rightmost--;
    for (size_t i = rightmost; i > 1; i--)
        row[i - 2] = row[i - 1] && matches(element, text[i - 2]);
}

static void match_element(const ELEMENT &element, const char *text, size_t length, bool *row)
{
    if (element.count == COUNT_ONE) match_one(element, text, length, row);
    if (element.count == COUNT_RUN) match_run(length, row);
    if (element.count == COUNT_REPEATED) match_repeated(element, text, length, row);
}

int32_t ST_Match(const char *pattern, const char *text)
{
    const size_t length = std::strlen(text);
    auto *elements =
        static_cast<ELEMENT *>(SH_AllocateBytes((std::strlen(pattern) + 1) * sizeof(ELEMENT)));
    size_t count = 0;
    while (*pattern != 0)
        pattern = take_element(pattern, &elements[count++]);
    auto *row = static_cast<bool *>(SH_AllocateBytes((length + 1) * sizeof(bool)));
    row[length] = true; // the empty pattern matches the empty rest
    while (count > 0)
        match_element(elements[--count], text, length, row);
    const int32_t matched = row[0];
    SH_Free(row);
    SH_Free(elements);
    return matched;
}

static char *allocate_upper(const char *text)
{
    const size_t length = std::strlen(text);
    char *copy = ST_AllocateSpan(text, length);
    return length < INT32_MAX ? ST_Upper(copy, static_cast<int32_t>(length + 1), copy) : copy;
}

int32_t ST_MatchCI(const char *pattern, const char *text)
{
    char *upper_pattern = allocate_upper(pattern);
    char *upper_text = allocate_upper(text);
    const int32_t matched = ST_Match(upper_pattern, upper_text);
    ST_Free(upper_pattern);
    ST_Free(upper_text);
    return matched;
}
