// CONVERT: a quantity, as TOLL spells it, in all its units.

#include "ostrum.h"

#include "pkob_data.h"

#include <cstdio>
#include <cstdlib>

namespace
{

/** A number with its quantity: counts of what the quantity is counted in. */
struct VALUE {
    int32_t quantity; // 0: a plain number
    int32_t count;
};

/** What is said of the text, if anything. */
std::string problem;

void keep_problem(TLT_STATEMENT *, int32_t, const char *text)
{
    problem = text;
}

/** Reads a number with its unit; false if the text is anything else. */
bool read_value(const char *text, VALUE *value)
{
    const bool is_negative = *text == '-';
    problem.clear();
    TLT_DefaultMessageHandler(keep_problem);
    TLT_STATEMENT *statement = TLT_NewStatement(text + (is_negative ? 1 : 0), "", 1, 1);
    const bool is_number = TLT_GetToken(statement, nullptr) == TLT_TOKEN_NUMBER;
    if (is_number) value->count = TLT_GetNumber(statement, &value->quantity);
    const bool is_whole = is_number && TLT_ExpectEmpty(statement) != 0;
    TLT_DelStatement(statement);
    TLT_DefaultMessageHandler(nullptr);
    if (is_negative) value->count = -value->count;
    if (!is_number && problem.empty()) problem = "A number with a unit is wanted, such as 1.5V";
    return is_whole && problem.empty();
}

/** A count in a unit, exact for units of a power of ten of counts, else cut after nine places. */
std::string decimal(int32_t count, int32_t multiplier)
{
    constexpr size_t most_places = 9;
    const int64_t size = std::abs(static_cast<int64_t>(count));
    std::string places;
    for (int64_t rest = size % multiplier; rest != 0 && places.size() < most_places;) {
        rest *= 10;
        places += static_cast<char>('0' + rest / multiplier);
        rest %= multiplier;
    }
    return (count < 0 ? "-" : "") + std::to_string(size / multiplier) +
           (places.empty() ? "" : '.' + places);
}

void show_in_unit(int32_t count, int32_t multiplier, const std::string &unit)
{
    printf("  %s%s\n", decimal(count, multiplier).c_str(), unit.c_str());
}

int32_t show_unit(void *count, const char *unit, int32_t multiplier)
{
    show_in_unit(*static_cast<int32_t *>(count), multiplier, pkob_utf8(unit));
    return 1;
}

/** The unit wanted, and how many counts it holds. */
struct UNIT {
    const char *wanted;
    int32_t multiplier; // 0: not found
};

int32_t find_displayed(void *context, const char *unit, int32_t multiplier)
{
    auto *found = static_cast<UNIT *>(context);
    if (pkob_utf8(unit) == found->wanted) found->multiplier = multiplier;
    return 1;
}

/** Counts in a unit as it is displayed or as TOLL spells it; 0 if there is no such unit. */
int32_t counts_in(int32_t quantity, const char *unit)
{
    UNIT found = { unit, 0 };
    EUC_GetAllUnits(quantity, find_displayed, &found);
    if (found.multiplier != 0) return found.multiplier;
    VALUE one = {};
    const bool is_unit = read_value(('1' + std::string{ unit }).c_str(), &one);
    return is_unit && one.quantity == quantity ? one.count : 0;
}

/** The value as the library displays it, then in each unit. */
void show_value(VALUE value)
{
    printf("%s, displayed as %s, a count of %d\n", EUC_QuantityName(value.quantity),
           pkob_utf8(EUC_DisplayValue(value.quantity, value.count)).c_str(), value.count);
    EUC_GetAllUnits(value.quantity, show_unit, &value.count);
}

void show_value_in(const VALUE &value, const char *unit)
{
    const int32_t multiplier = counts_in(value.quantity, unit);
    if (multiplier > 0) {
        show_in_unit(value.count, multiplier, unit);
        return;
    }
    ostrum_complain(std::string{ EUC_QuantityName(value.quantity) } + " cannot be shown in " +
                    unit);
}

void convert(intptr_t)
{
    intptr_t text = 0;
    intptr_t unit = 0;
    VALUE value = {};
    CLI_GetParameter(&text);
    CLI_GetParameter(&unit);
    if (!read_value(reinterpret_cast<const char *>(text), &value)) {
        ostrum_complain(problem);
        return;
    }
    if (unit == 0) {
        show_value(value);
    } else {
        show_value_in(value, reinterpret_cast<const char *>(unit));
    }
}

} // namespace

CLI_NODE *ostrum_add_convert(CLI_NODE *root)
{
    CLI_NODE *node = CLI_Node(root, "CONVERT", convert, 0,
                              "Shows a quantity in its units, such as CONVERT 1.5V mV");
    CLI_CharParameter(node, "VALUE", CLI_MANDATORY, 1, 64, "A number with a unit, as in TOLL");
    CLI_CharParameter(node, "UNIT", CLI_OPTIONAL, 1, 32, "The unit wanted; all, if left out");
    return node;
}
