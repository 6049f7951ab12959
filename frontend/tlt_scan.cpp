/*
 * The scanner. Line feeds, which join the lines of a continued statement, are invisible to it except as
 * the end of a comment. Most tokens stand in the statement's text as they are, so their text is a piece of
 * it; only where escapes or line feeds come between is it put together elsewhere.
 */
#include "frontend/tlt.h"

#include "core/sh.h"

#include <array>
#include <stdint.h>
#include <string.h>

enum {
    WORD_LIMIT = 31,       // characters of a word, of digits, of a unit
    NUMBER_LIMIT = 127,    // characters kept of a number's text
    IDENTIFIER_LIMIT = 31, // characters of a data identifier
    TRIED_COUNT = 2,       // characters of a separator
};

/** Bits of a character's class. */
enum : uint8_t {
    LETTER = 1,
    DIGIT = 2,
    HEX = 4,
    WORD = 8,   // goes on an identifier
    UNIT = 16,  // goes on a unit word
    SPACE = 32, // space or the end of the text
};

static consteval std::array<uint8_t, 256> make_classes()
{
    std::array<uint8_t, 256> classes{};
    for (int c = 0; c < 256; c++) {
        bool is_letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
        bool is_digit = c >= '0' && c <= '9';
        bool is_hex = is_digit || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
        bool is_word = is_letter || is_digit || c == '_' || c == '.';
        bool is_unit = is_letter || is_digit || c == '_' || c == '%';
        bool is_space = c == ' ' || c == 0;
        classes[static_cast<size_t>(c)] =
            static_cast<uint8_t>(is_letter * LETTER + is_digit * DIGIT + is_hex * HEX +
                                 is_word * WORD + is_unit * UNIT + is_space * SPACE);
    }
    return classes;
}

static constexpr std::array<uint8_t, 256> classes = make_classes();

static inline bool is_class(char c, uint8_t bits)
{
    return (classes[static_cast<uint8_t>(c)] & bits) != 0;
}

/** A text being put together. One for all statements, since it lives through one scan only. */
static char *scratch;
static size_t scratch_size;
static size_t scratch_length;

void TLT_FreeScratch(void)
{
    SH_Free(scratch);
    scratch = nullptr;
    scratch_size = 0;
}

static void append(char c)
{
    if (scratch_length == scratch_size)
        scratch = static_cast<char *>(
            SH_Grow(scratch, scratch_length, &scratch_size, scratch_length + 1));
    scratch[scratch_length++] = c;
}

static inline const char *position(const TLT_STATEMENT *statement)
{
    return TLT_Chars(statement) + statement->read_offset;
}

static inline void move_to(TLT_STATEMENT *statement, const char *place)
{
    statement->read_offset = static_cast<uint32_t>(place - TLT_Chars(statement));
}

/** Next character, line feeds left out; 0 at the end of the text. */
static inline char peek(TLT_STATEMENT *statement)
{
    const char *place = position(statement);
    while (*place == '\n')
        place++;
    move_to(statement, place);
    return *place;
}

/** Takes the next character; the end of the text can be taken any number of times. */
static inline char take(TLT_STATEMENT *statement)
{
    char c = peek(statement);
    if (c != 0) statement->read_offset++;
    return c;
}

/** First character that is neither a space nor in a comment. Line feeds are passed over as well. */
static const char *skip_blanks(const char *place)
{
    for (;;) {
        while (*place == ' ' || *place == '\n')
            place++;
        if (*place != ';') return place;
        place = place + strcspn(place, "\n");
        if (*place == '\n') place++;
    }
}

void TLT_SkipBlanks(TLT_STATEMENT *statement)
{
    move_to(statement, skip_blanks(position(statement)));
    statement->token_start = statement->read_offset;
}

/** Sets the token's text to a piece of chars. */
static inline void set_piece(TLT_STATEMENT *statement, const char *text, size_t length)
{
    statement->token_offset = static_cast<uint32_t>(text - TLT_Chars(statement));
    statement->token_length = static_cast<int32_t>(length);
}

/** Gives the token a text of its own, which ends at a zero byte if it holds one. */
static void set_copy(TLT_STATEMENT *statement, const char *text, size_t length)
{
    const void *zero = length == 0 ? nullptr : memchr(text, 0, length);
    if (zero != nullptr) length = static_cast<size_t>(static_cast<const char *>(zero) - text);
    auto *block = static_cast<char *>(SH_AllocateBytes(length + 1));
    if (length > 0) memcpy(block, text, length);
    TLT_EXTRA *extra = TLT_Extra(statement);
    SH_Free(extra->token_block);
    extra->token_block = block;
    statement->token_offset = TLT_IN_BLOCK;
    statement->token_length = static_cast<int32_t>(length);
}

/** Sets the text to what was put together, as a piece of chars if it stands at start unbroken. */
static void set_scratch(TLT_STATEMENT *statement, const char *start)
{
    if (static_cast<size_t>(position(statement) - start) == scratch_length)
        set_piece(statement, start, scratch_length);
    else
        set_copy(statement, scratch, scratch_length);
}

/**
 * Takes characters of a class and puts up to limit of them together; raises "Field too large" at the
 * first beyond.
 */
static void take_field(TLT_STATEMENT *statement, uint8_t bits, size_t limit)
{
    size_t count = 0;
    while (is_class(peek(statement), bits)) {
        char c = take(statement);
        if (count < limit) append(c);
        if (count == limit) TLT_Error(statement, "Field too large");
        count++;
    }
}

/** Code of a word; a leading "_" makes an identifier of it. */
static uint8_t word_code(const char *word, size_t length)
{
    if (word[0] == '_') return TLT_TOKEN_IDENTIFIER;
    return static_cast<uint8_t>(TLT_FindKeyword(word, length));
}

/** A word that is cut, or that runs on over a line feed. */
static void scan_broken_word(TLT_STATEMENT *statement)
{
    scratch_length = 0;
    take_field(statement, WORD, WORD_LIMIT);
    size_t mark = scratch[0] == '_' ? 1 : 0;
    statement->token_code = word_code(scratch, scratch_length);
    set_copy(statement, scratch + mark, scratch_length - mark);
}

static void scan_word(TLT_STATEMENT *statement)
{
    const char *start = position(statement);
    const char *end = start + 1;
    while (is_class(*end, WORD))
        end++;
    auto length = static_cast<size_t>(end - start);
    if (length > WORD_LIMIT || *end == '\n') {
        scan_broken_word(statement);
        return;
    }
    size_t mark = *start == '_' ? 1 : 0;
    move_to(statement, end);
    statement->token_code = word_code(start, length);
    set_piece(statement, start + mark, length - mark);
}

static uint32_t digit_value(char c)
{
    if (c <= '9') return static_cast<uint32_t>(c - '0');
    return static_cast<uint32_t>((c & 0xDF) - 'A' + 10);
}

static uint32_t digits_value(const char *digits, size_t count, uint32_t base)
{
    uint32_t value = 0;
    for (size_t i = 0; i < count; i++)
        value = value * base + digit_value(digits[i]);
    return value;
}

static void set_number(TLT_STATEMENT *statement, uint32_t value)
{
    statement->token_code = TLT_TOKEN_NUMBER;
    statement->number = static_cast<int32_t>(value);
    statement->units = 0;
}

/** A hexadecimal constant; its "0" and the x are the next characters. */
static void scan_hexadecimal(TLT_STATEMENT *statement, const char *start)
{
    append(take(statement));
    size_t prefix = scratch_length;
    take_field(statement, HEX, WORD_LIMIT);
    if (scratch_length == prefix) {
        TLT_Error(statement, "Bad Hexadecimal constant");
        return;
    }
    set_number(statement, digits_value(scratch + prefix, scratch_length - prefix, 16));
    set_scratch(statement, start);
}

/** Takes the digits of a fraction and gives their value. */
static float take_fraction(TLT_STATEMENT *statement)
{
    float fraction = 0;
    double power = 1;
    while (is_class(peek(statement), DIGIT)) {
        char c = take(statement);
        if (scratch_length < NUMBER_LIMIT) append(c);
        power *= 10;
        fraction = static_cast<float>(fraction + (c - '0') / power);
    }
    return fraction;
}

/** Turns the number into base counts of its unit. */
static void apply_unit(TLT_STATEMENT *statement, const TLT_UNIT *unit, float fraction)
{
    constexpr double largest = 2147483648.0;
    constexpr double tolerance = 0.001;
    double whole = static_cast<uint32_t>(statement->number);
    double exact = (whole + fraction - unit->offset) * unit->scale;
    double result = static_cast<float>(exact);
    statement->units = static_cast<uint8_t>(unit->quantity);
    if (result > largest) TLT_Error(statement, "Constant out of range");
    // The largest whole number times the largest scale fits 64 bits; the low 32 are kept.
    statement->number = static_cast<int32_t>(static_cast<uint32_t>(static_cast<int64_t>(result)));
    if (result - statement->number > tolerance)
        TLT_Warning(statement, "Precision lost on this quantity");
}

static void scan_unit(TLT_STATEMENT *statement, float fraction)
{
    size_t word = scratch_length;
    take_field(statement, UNIT, WORD_LIMIT);
    const TLT_UNIT *unit = TLT_FindUnit(scratch + word, scratch_length - word);
    if (scratch_length > NUMBER_LIMIT) scratch_length = NUMBER_LIMIT;
    if (unit == nullptr) {
        TLT_Error(statement, "Unrecognised units");
        return;
    }
    apply_unit(statement, unit, fraction);
}

static bool begins_unit(char c)
{
    return is_class(c, LETTER) || c == '%';
}

/** A number with a fraction or a unit, or one over a line feed: its digits come from the start. */
static void scan_long_number(TLT_STATEMENT *statement)
{
    const char *start = position(statement);
    scratch_length = 0;
    if (peek(statement) == '0') {
        append(take(statement));
        char next = peek(statement);
        if (next == 'x' || next == 'X') {
            scan_hexadecimal(statement, start);
            return;
        }
    }
    take_field(statement, DIGIT, WORD_LIMIT);
    set_number(statement, digits_value(scratch, scratch_length, 10));
    bool is_real = peek(statement) == '.';
    float fraction = 0;
    if (is_real) {
        append(take(statement));
        fraction = take_fraction(statement);
    }
    if (begins_unit(peek(statement)))
        scan_unit(statement, fraction);
    else if (is_real)
        TLT_Error(statement, "Real numbers not supported");
    set_scratch(statement, start);
}

static void scan_number(TLT_STATEMENT *statement)
{
    const char *start = position(statement);
    const char *end = start + 1;
    while (is_class(*end, DIGIT))
        end++;
    auto length = static_cast<size_t>(end - start);
    if (length > WORD_LIMIT || *end == '\n' || *end == '.' || begins_unit(*end)) {
        scan_long_number(statement);
        return;
    }
    move_to(statement, end);
    set_number(statement, digits_value(start, length, 10));
    set_piece(statement, start, length);
}

/** Two hexadecimal digits; a bad one leaves the value as it is. */
static char take_hex_escape(TLT_STATEMENT *statement)
{
    uint32_t value = 0;
    for (int32_t i = 0; i < 2; i++) {
        char c = take(statement);
        if (is_class(c, HEX))
            value = value * 16 + digit_value(c);
        else
            TLT_Error(statement, "Bad hex character");
    }
    return static_cast<char>(value);
}

/** The character that an escape stands for; its backslash was taken. */
static char take_escape(TLT_STATEMENT *statement)
{
    char c = take(statement);
    switch (c) {
    case '"':
    case '\'':
    case '\\':
        return c;
    case 'b':
        return '\b';
    case 'f':
        return '\f';
    case 'n':
        return '\n';
    case 'r':
        return '\r';
    case 't':
        return '\t';
    case 'x':
        return take_hex_escape(statement);
    default:
        TLT_Error(statement, "Unknown character");
        return c;
    }
}

static void scan_character(TLT_STATEMENT *statement)
{
    take(statement);
    char c = take(statement);
    if (c == '\\') c = take_escape(statement);
    if (take(statement) != '\'') TLT_Error(statement, "Bad character constant");
    set_number(statement, static_cast<uint8_t>(c));
    const char text[] = { '\'', c, '\'' };
    set_copy(statement, text, sizeof text);
}

/** The rest of a literal with escapes or line feeds in it, or with no end. */
static void scan_broken_literal(TLT_STATEMENT *statement, char delimiter)
{
    scratch_length = 0;
    for (;;) {
        char c = take(statement);
        if (c == delimiter) break;
        if (c == 0) {
            TLT_Error(statement, "Unterminated string");
            break;
        }
        append(c == '\\' ? take_escape(statement) : c);
    }
    set_copy(statement, scratch, scratch_length);
}

static void check_data_identifier(TLT_STATEMENT *statement)
{
    auto length = static_cast<size_t>(statement->token_length);
    const char *text = TLT_TokenText(statement);
    const void *slash = length == 0 ? nullptr : memchr(text, '/', length);
    if (slash != nullptr) length = static_cast<size_t>(static_cast<const char *>(slash) - text);
    if (length > IDENTIFIER_LIMIT) TLT_Error(statement, "Data identifier too long");
    if (length == 0) TLT_Error(statement, "No data identifier");
}

static void scan_literal(TLT_STATEMENT *statement, char delimiter)
{
    take(statement);
    const char *start = position(statement);
    const char *end = start;
    while (*end != delimiter && *end != '\\' && *end != '\n' && *end != 0)
        end++;
    if (*end != delimiter) {
        scan_broken_literal(statement, delimiter);
        return;
    }
    move_to(statement, end + 1);
    set_piece(statement, start, static_cast<size_t>(end - start));
}

static void scan_string(TLT_STATEMENT *statement)
{
    statement->token_code = TLT_TOKEN_STRING;
    scan_literal(statement, '"');
}

static void scan_data_literal(TLT_STATEMENT *statement)
{
    statement->token_code = TLT_TOKEN_DATA_LITERAL;
    scan_literal(statement, '}');
    check_data_identifier(statement);
}

struct SEPARATOR {
    char first;
    char second; // 0 for a separator of one character
    uint8_t code;
};

static constexpr SEPARATOR separators[] = {
    { .first = '=', .second = '=', .code = TLT_TOKEN_EQUAL },
    { .first = '!', .second = '=', .code = TLT_TOKEN_NOT_EQUAL },
    { .first = '<', .second = '=', .code = TLT_TOKEN_LESS_EQUAL },
    { .first = '>', .second = '=', .code = TLT_TOKEN_GREATER_EQUAL },
    { .first = '<', .second = '<', .code = TLT_TOKEN_SHIFT_LEFT },
    { .first = '>', .second = '>', .code = TLT_TOKEN_SHIFT_RIGHT },
    { .first = '.', .second = '.', .code = TLT_TOKEN_DOTS },
    { .first = '-', .second = '>', .code = TLT_TOKEN_ARROW },
    { .first = '=', .second = 0, .code = TLT_TOKEN_ASSIGN },
    { .first = '+', .second = 0, .code = TLT_TOKEN_PLUS },
    { .first = '-', .second = 0, .code = TLT_TOKEN_MINUS },
    { .first = '*', .second = 0, .code = TLT_TOKEN_STAR },
    { .first = '/', .second = 0, .code = TLT_TOKEN_SLASH },
    { .first = '~', .second = 0, .code = TLT_TOKEN_TILDE },
    { .first = '&', .second = 0, .code = TLT_TOKEN_AMPERSAND },
    { .first = '|', .second = 0, .code = TLT_TOKEN_BAR },
    { .first = '^', .second = 0, .code = TLT_TOKEN_CARET },
    { .first = '<', .second = 0, .code = TLT_TOKEN_LESS },
    { .first = '>', .second = 0, .code = TLT_TOKEN_GREATER },
    { .first = '(', .second = 0, .code = TLT_TOKEN_OPEN_BRACKET },
    { .first = ')', .second = 0, .code = TLT_TOKEN_CLOSE_BRACKET },
    { .first = '[', .second = 0, .code = TLT_TOKEN_OPEN_SQUARE },
    { .first = ']', .second = 0, .code = TLT_TOKEN_CLOSE_SQUARE },
    { .first = ',', .second = 0, .code = TLT_TOKEN_COMMA },
    { .first = ';', .second = 0, .code = TLT_TOKEN_SEMICOLON },
    { .first = ':', .second = 0, .code = TLT_TOKEN_COLON },
    { .first = '#', .second = 0, .code = TLT_TOKEN_HASH },
};

/** Code of each separator of one character; TLT_TOKEN_STRANGE for other characters. */
static consteval std::array<uint8_t, 256> make_single_separators()
{
    std::array<uint8_t, 256> codes{};
    codes.fill(TLT_TOKEN_STRANGE);
    for (const SEPARATOR &row : separators)
        if (row.second == 0) codes[static_cast<uint8_t>(row.first)] = row.code;
    return codes;
}

static constexpr std::array<uint8_t, 256> single_separators = make_single_separators();

/** Code of a separator of two characters; TLT_TOKEN_STRANGE if they are none. */
static uint8_t double_separator(char first, char second)
{
    if (second != '=' && second != '<' && second != '>' && second != '.') return TLT_TOKEN_STRANGE;
    for (const SEPARATOR &row : separators)
        if (row.first == first && row.second == second) return row.code;
    return TLT_TOKEN_STRANGE;
}

/** A separator that ends at the read position; its characters may have line feeds between them. */
static void set_separator(TLT_STATEMENT *statement, uint8_t code, const char *start)
{
    const char *text = TLT_TokenValue(code);
    size_t length = text[1] == 0 ? 1 : 2;
    statement->token_code = code;
    if (memcmp(start, text, length) == 0)
        set_piece(statement, start, length);
    else
        set_copy(statement, text, length);
}

/** Reports what was tried, and drops one character more. */
static void report_strange(TLT_STATEMENT *statement, const char *tried, size_t length)
{
    statement->token_code = TLT_TOKEN_STRANGE;
    TLT_RaiseFormatted(statement, TLT_LEVEL_ERROR, "Strange Separator : '%.*s'",
                       static_cast<int32_t>(length), tried);
    set_copy(statement, tried, length);
    take(statement);
}

/** Takes a separator of one character that nothing can lengthen; false if it may be another one. */
static bool scan_single_separator(TLT_STATEMENT *statement, const char *start)
{
    const uint8_t code = single_separators[static_cast<uint8_t>(start[0])];
    const char next = start[1];
    const bool may_go_on = next == '=' || next == '<' || next == '>' || next == '.' || next == '\n';
    if (code == TLT_TOKEN_STRANGE || may_go_on) return false;
    move_to(statement, start + 1);
    statement->token_code = code;
    set_piece(statement, start, 1);
    return true;
}

static void scan_separator(TLT_STATEMENT *statement)
{
    const char *start = position(statement);
    if (scan_single_separator(statement, start)) return;
    char tried[TRIED_COUNT] = { take(statement), peek(statement) };
    uint8_t code = single_separators[static_cast<uint8_t>(tried[0])];
    bool has_second = !is_class(tried[1], LETTER | DIGIT | SPACE);
    uint8_t both = has_second ? double_separator(tried[0], tried[1]) : uint8_t{ TLT_TOKEN_STRANGE };
    if (both != TLT_TOKEN_STRANGE) {
        take(statement);
        set_separator(statement, both, start);
        return;
    }
    if (code != TLT_TOKEN_STRANGE) {
        set_separator(statement, code, start);
        return;
    }
    if (has_second) take(statement);
    report_strange(statement, tried, has_second ? 2 : 1);
}

/** Scans the next token into the look-ahead. */
static void scan_token(TLT_STATEMENT *statement)
{
    if (statement->token_offset == TLT_IN_BLOCK) {
        SH_Free(statement->extra->token_block);
        statement->extra->token_block = nullptr;
    }
    statement->token_offset = TLT_NO_TEXT;
    statement->token_length = 0;
    const char *place = skip_blanks(position(statement));
    move_to(statement, place);
    char c = *place;
    if (c == 0)
        statement->token_code = TLT_TOKEN_END_OF_LINE;
    else if (is_class(c, LETTER) || c == '_')
        scan_word(statement);
    else if (is_class(c, DIGIT))
        scan_number(statement);
    else if (c == '"')
        scan_string(statement);
    else if (c == '{')
        scan_data_literal(statement);
    else if (c == '\'')
        scan_character(statement);
    else
        scan_separator(statement);
}

/** The keyword of a word that may run on over line feeds. */
static int32_t find_broken_keyword(const char *place)
{
    char word[WORD_LIMIT];
    size_t length = 0;
    for (; is_class(*place, WORD) || *place == '\n'; place++) {
        if (*place == '\n') continue;
        if (length == WORD_LIMIT) return TLT_TOKEN_IDENTIFIER;
        word[length++] = *place;
    }
    return TLT_FindKeyword(word, length);
}

int32_t TLT_FirstKeyword(const TLT_STATEMENT *statement)
{
    const char *place = skip_blanks(TLT_Chars(statement));
    if (!is_class(*place, LETTER)) return TLT_TOKEN_IDENTIFIER;
    const char *end = place;
    while (is_class(*end, WORD))
        end++;
    if (*end == '\n') return find_broken_keyword(place);
    return TLT_FindKeyword(place, static_cast<size_t>(end - place));
}

/** Copies the token's text out; a longer one than fits is an error each time. */
static void copy_text(TLT_STATEMENT *statement, char *text)
{
    int32_t length = statement->token_length;
    if (length >= TLT_TEXT_SIZE) {
        TLT_Error(statement, "String too long");
        length = TLT_TEXT_SIZE - 1;
    }
    if (length > 0) memcpy(text, TLT_TokenText(statement), static_cast<size_t>(length));
    text[length] = 0;
}

int32_t TLT_NextToken(TLT_STATEMENT *statement, char *text)
{
    if (statement->token_code == TLT_TOKEN_NONE) scan_token(statement);
    if (text != nullptr) copy_text(statement, text);
    return statement->token_code;
}

int32_t TLT_GetToken(TLT_STATEMENT *statement, char *text)
{
    int32_t code = TLT_NextToken(statement, text);
    TLT_SkipBlanks(statement);
    statement->token_code = TLT_TOKEN_NONE;
    return code;
}

int32_t TLT_GetNumber(TLT_STATEMENT *statement, int32_t *units)
{
    if (units != nullptr) *units = statement->units;
    return statement->number;
}

static int32_t check_code(TLT_STATEMENT *statement, int32_t found, int32_t wanted)
{
    if (found == wanted) return 1;
    TLT_RaiseFormatted(statement, TLT_LEVEL_ERROR, "'%s' expected here", TLT_TokenValue(wanted));
    return 0;
}

int32_t TLT_Expect(TLT_STATEMENT *statement, int32_t code, char *text)
{
    return check_code(statement, TLT_GetToken(statement, text), code);
}

int32_t TLT_ExpectNoCopy(TLT_STATEMENT *statement, int32_t code, const char **text)
{
    int32_t found = TLT_GetToken(statement, nullptr);
    bool is_piece =
        statement->token_offset != TLT_NO_TEXT && statement->token_offset != TLT_IN_BLOCK;
    if (is_piece)
        set_copy(statement, TLT_TokenText(statement), static_cast<size_t>(statement->token_length));
    if (text != nullptr) *text = TLT_TokenText(statement);
    return check_code(statement, found, code);
}

int32_t TLT_PossibleToken(TLT_STATEMENT *statement, int32_t code, char *text)
{
    if (TLT_NextToken(statement, text) != code) return 0;
    TLT_GetToken(statement, nullptr);
    return 1;
}

int32_t TLT_ExpectEmpty(TLT_STATEMENT *statement)
{
    if (TLT_NextToken(statement, nullptr) == TLT_TOKEN_END_OF_LINE) return 1;
    TLT_Error(statement, "Unexpected characters or keyword");
    return 0;
}
