/*
 * Quoted strings in text streams.
 */
#include "core/c.h"
#include "core/st.h"

#include <cstdio>

struct ESCAPE {
    char character;
    char letter;      // behind the backslash
    bool breaks_line; // a real line feed follows, which the reader drops
};

static constexpr ESCAPE escapes[] = {
    { .character = '\b', .letter = 'b', .breaks_line = false },
    { .character = '\t', .letter = 't', .breaks_line = false },
    { .character = '\n', .letter = 'n', .breaks_line = true },
    { .character = '\f', .letter = 'f', .breaks_line = false },
    { .character = '\r', .letter = 'r', .breaks_line = true },
    { .character = '"', .letter = '"', .breaks_line = false },
    { .character = '\\', .letter = '\\', .breaks_line = false },
};

static void put_character(FILE *stream, char c)
{
    for (const ESCAPE &escape : escapes) {
        if (escape.character != c) continue;
        std::fprintf(stream, "\\%c%s", escape.letter, escape.breaks_line ? "\n" : "");
        return;
    }
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 16 || byte > 127)
        std::fprintf(stream, "\\0%o", static_cast<unsigned int>(byte));
    else
        std::putc(byte, stream);
}

void ST_PutString(FILE *stream, const char *text)
{
    std::putc('"', stream);
    for (; *text != 0; text++)
        put_character(stream, *text);
    std::putc('"', stream);
}

/** Takes up to three octal digits behind a first one; the character that ends them stays. */
static int32_t get_octal(FILE *stream, int32_t value)
{
    for (int32_t i = 0; i < 3; i++) {
        const int c = std::getc(stream);
        if (c < '0' || c > '7') {
            if (c != EOF) std::ungetc(c, stream);
            break;
        }
        value = value * 8 + (c - '0');
    }
    return value & 255;
}

/** What a backslash and the characters behind it stand for; 0 at the end of the stream. */
static int32_t get_escape(FILE *stream)
{
    const int c = std::getc(stream);
    if (c == EOF) return 0;
    if (c >= '0' && c <= '3') return get_octal(stream, c - '0');
    for (const ESCAPE &escape : escapes) {
        if (escape.letter == c) return static_cast<unsigned char>(escape.character);
    }
    return c;
}

/** The next character of the string; 0 at its end. */
static int32_t get_character(FILE *stream)
{
    int c = std::getc(stream);
    while (c == '\n')
        c = std::getc(stream);
    if (c == EOF || c == '"') return 0;
    return c == '\\' ? get_escape(stream) : c;
}

static bool skip_to_quote(FILE *stream)
{
    int c = std::getc(stream);
    while (c != EOF && C_IsWhite(static_cast<uint8_t>(c)))
        c = std::getc(stream);
    return c == '"';
}

int32_t ST_GetString(FILE *stream, char *buffer, int32_t size)
{
    int32_t result = skip_to_quote(stream) && size > 0;
    int32_t length = 0;
    int32_t c = get_character(stream); // one character goes even without a quote
    while (result != 0 && c != 0) {
        if (length >= size - 1) {
            result = 0;
            break;
        }
        buffer[length++] = static_cast<char>(c);
        c = get_character(stream);
    }
    if (size > 0) buffer[length] = 0;
    return result;
}
