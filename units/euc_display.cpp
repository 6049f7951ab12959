/*
 * Counts as text.
 */
#include "units/euc.h"

#include "core/st.h"

enum {
    OPTION_NO_ROUNDING = 0x100,
    OPTION_NO_UNIT = 0x200,
    OPTION_WHOLE = 0x400,
};

static constexpr int32_t result_size = 32;
static constexpr int32_t number_size = 16;
static constexpr int32_t highest_figures = 10; // as many as 32 bits can have

static char result[result_size];

/** A number taken apart for printing. */
struct PARTS {
    int64_t whole;
    int32_t thousandths; // 0 to 1000
};

static int32_t magnitude_of(int32_t value)
{
    if (value == INT32_MIN) return INT32_MAX;
    return value < 0 ? -value : value;
}

int32_t EUC_SigFigs(int32_t figures, int32_t value)
{
    int64_t limit = 1;
    for (int32_t i = 0; i < figures && i < highest_figures; i++)
        limit *= 10;
    int64_t figure = magnitude_of(value);
    int64_t scale = 1;
    int64_t dropped = 0;
    for (; figure >= limit; figure /= 10, scale *= 10)
        dropped = figure % 10;
    int64_t rounded = (dropped >= 5 ? figure + 1 : figure) * scale;
    if (rounded > INT32_MAX) rounded = figure * scale;
    return static_cast<int32_t>(value < 0 ? -rounded : rounded);
}

static int64_t round_to_step(int64_t magnitude, int32_t step)
{
    const int64_t rest = magnitude % step;
    return magnitude - rest + (rest >= step / 2 ? step : 0);
}

static PARTS split(double x)
{
    const int64_t whole = static_cast<int64_t>(x);
    const double thousandths = x * 1000 - static_cast<double>(whole) * 1000 + 0.5;
    return PARTS{ .whole = whole, .thousandths = static_cast<int32_t>(thousandths) };
}

static void append_number(int64_t number)
{
    char digits[number_size];
    const int64_t held = number > INT32_MAX ? INT32_MAX : number;
    ST_Append(result, result_size, ST_IntChar(digits, static_cast<int32_t>(held), 0));
}

static const char *show_whole(double x)
{
    const PARTS parts = split(x);
    append_number(parts.thousandths >= 1000 ? parts.whole + 1 : parts.whole);
    return result;
}

/** Appends a point and three digits without their trailing zeros; all three if they are zeros. */
static void append_fraction(int32_t thousandths)
{
    char text[] = ".000";
    text[1] = static_cast<char>('0' + thousandths / 100);
    text[2] = static_cast<char>('0' + thousandths / 10 % 10);
    text[3] = static_cast<char>('0' + thousandths % 10);
    for (int32_t i = 3; thousandths != 0 && text[i] == '0'; i--)
        text[i] = 0;
    ST_Append(result, result_size, text);
}

static int32_t choose_unit(const EUC_QUANTITY *quantity, double *x)
{
    int32_t unit = 0;
    for (; *x > 999 && unit < quantity->unit_count - 1; unit++)
        *x *= 0.001;
    return unit;
}

/** Appends the number in a unit that fits it; gives that unit. */
static int32_t append_scaled(const EUC_QUANTITY *quantity, double x)
{
    const int32_t unit = choose_unit(quantity, &x);
    const PARTS parts = split(x);
    const bool carries = parts.thousandths >= 1000;
    append_number(carries ? parts.whole + 1 : parts.whole);
    if (parts.thousandths != 0) append_fraction(carries ? 0 : parts.thousandths);
    const bool is_zero = parts.whole == 0 && parts.thousandths == 0;
    return is_zero ? quantity->natural_unit : unit;
}

const char *EUC_DisplayValue(int32_t type, int32_t value)
{
    const EUC_QUANTITY *quantity = EUC_Quantity(type);
    if (quantity->format != nullptr) return quantity->format(value);
    int64_t magnitude = magnitude_of(value);
    if ((type & OPTION_NO_ROUNDING) == 0 && quantity->rounding_step > 1)
        magnitude = round_to_step(magnitude, quantity->rounding_step);
    const double x = static_cast<double>(magnitude) * quantity->count_value;
    result[0] = 0;
    if ((type & OPTION_WHOLE) != 0) return show_whole(x);
    if (value < 0) ST_Append(result, result_size, "-");
    const char *unit = quantity->units[append_scaled(quantity, x)];
    if ((type & OPTION_NO_UNIT) == 0 && unit != nullptr) ST_Append(result, result_size, unit);
    return result;
}

const char *EUC_UserString(int32_t type, int32_t figures, int32_t value)
{
    return EUC_DisplayValue(type, EUC_SigFigs(figures, value));
}

// --- clock ---

/** Appends a number with zeros in front of it; a sign counts towards the width. */
static void append_padded(int32_t number, int32_t width)
{
    char digits[number_size];
    ST_IntChar(digits, number, 0);
    int32_t length = 0;
    while (digits[length] != 0)
        length++;
    for (; length < width; length++)
        ST_Append(result, result_size, "0");
    ST_Append(result, result_size, digits);
}

const char *EUC_FormatClock(int32_t value)
{
    const int32_t magnitude = magnitude_of(value);
    const int32_t milliseconds = magnitude % 1000;
    const int32_t seconds = magnitude / 1000 % 60;
    const int32_t minutes = magnitude / 60000 % 60;
    const int32_t hours = magnitude / 3600000;
    const int32_t sign = value < 0 ? -1 : 1;
    result[0] = 0;
    if (hours > 0) {
        append_padded(hours * sign, 1);
        ST_Append(result, result_size, ":");
    }
    append_padded(hours > 0 ? minutes : minutes * sign, 2);
    ST_Append(result, result_size, ":");
    append_padded(seconds, 2);
    if (milliseconds == 0) return result;
    ST_Append(result, result_size, ".");
    append_padded(milliseconds, 3);
    return result;
}
