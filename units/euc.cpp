/*
 * The table of quantities and their units, and the symbols that some units are built from. Printing
 * is in euc_display.cpp.
 */
#include "units/euc.h"

#include "core/st.h"

#include <iterator>

// A unit that is built from a symbol is null until the symbol is set.
static const char *int_units[] = { "", "k", "M" };
static const char *voltage_units[] = { "V", "kV" };
static const char *resistance_units[] = { nullptr, nullptr, nullptr };
static const char *current_units[] = { "mA", "A", "KA" };
static const char *pressure_units[] = { nullptr, nullptr };
static const char *temperature_units[] = { nullptr, nullptr };
static const char *frequency_units[] = { "Hz", "kHz", "MHz" };
static const char *time_units[] = { "us", "ms", "s" };
static const char *percentage_units[] = { "%" };
static const char *capacity_units[] = { "uL", "mL", "L" };
static const char *rpm_units[] = { nullptr };
static const char *speed_units[] = { "m/hr", "KPH" };
static const char *distance_units[] = { "mm", "m", "km" };
static const char *mass_units[] = { "g", "kg", "t" };
static const char *angle_units[] = { nullptr };
static const char *acceleration_units[] = { "G" };
static const char *massflow_units[] = { "g/hr", "kg/hr", "t/hr" };
static const char *ratio_units[] = { ":1" };
static const char *clock_time_units[] = { "ms", "s" };
static const char *power_density_units[] = { nullptr, nullptr };
static const char *density_units[] = { nullptr, nullptr };
static const char *volume_units[] = { nullptr, nullptr };
static const char *hectare_units[] = { "ha" };
static const char *metreage_units[] = { "m", "km" };
static const char *mileage_units[] = { "mi" };
static const char *economy_units[] = { "uL/100km", "mL/100km", "L/100km" };
static const char *economy_imp_units[] = { "mpg" };
static const char *speed_imp_units[] = { "MPH" };
static const char *temperature_imp_units[] = { nullptr, nullptr };
static const char *pressure_imp_units[] = { "Pa", "KPa" };
static const char *angle_velocity_units[] = { nullptr };
static const char *small_mass_units[] = { "ug", "mg", "g" };
static const char *flow_units[] = { "ml/min", "l/min" };
static const char *economy_us_units[] = { "mpg(US)" };
static const char *capacity_imp_units[] = { "Gal" };
static const char *capacity_us_units[] = { "Gal(US)" };

// clang-format off
static const EUC_QUANTITY quantities[] = {
    { .name = "INT", .units = int_units, .unit_count = 3,
      .natural_unit = 0, .count_value = 1.0, .flags = 1, .rounding_step = 1,
      .format = nullptr, .format_character = 0, .default_text = "0" },
    { .name = "VOLTAGE", .units = voltage_units, .unit_count = 2,
      .natural_unit = 0, .count_value = 0.001, .flags = 1, .rounding_step = 10,
      .format = nullptr, .format_character = 'V', .default_text = "0V" },
    { .name = "RESISTANCE", .units = resistance_units, .unit_count = 3,
      .natural_unit = 0, .count_value = 0.01, .flags = 2, .rounding_step = 10,
      .format = nullptr, .format_character = 'R', .default_text = "0R" },
    { .name = "CURRENT", .units = current_units, .unit_count = 3,
      .natural_unit = 1, .count_value = 1.0, .flags = 1, .rounding_step = 10,
      .format = nullptr, .format_character = 'I', .default_text = "0A" },
    { .name = "PRESSURE", .units = pressure_units, .unit_count = 2,
      .natural_unit = 1, .count_value = 1.0, .flags = 2, .rounding_step = 1,
      .format = nullptr, .format_character = 'P', .default_text = "0B" },
    { .name = "TEMPERATURE", .units = temperature_units, .unit_count = 2,
      .natural_unit = 0, .count_value = 1.0, .flags = 1, .rounding_step = 1,
      .format = nullptr, .format_character = 'D', .default_text = "0C" },
    { .name = "FREQUENCY", .units = frequency_units, .unit_count = 3,
      .natural_unit = 0, .count_value = 0.001, .flags = 2, .rounding_step = 100,
      .format = nullptr, .format_character = 'F', .default_text = "0Hz" },
    { .name = "TIME", .units = time_units, .unit_count = 3,
      .natural_unit = 2, .count_value = 1.0, .flags = 2, .rounding_step = 1,
      .format = nullptr, .format_character = 'T', .default_text = "0s" },
    { .name = "PERCENTAGE", .units = percentage_units, .unit_count = 1,
      .natural_unit = 0, .count_value = 0.001, .flags = 2, .rounding_step = 10,
      .format = nullptr, .format_character = 'p', .default_text = "0%" },
    { .name = "CAPACITY", .units = capacity_units, .unit_count = 3,
      .natural_unit = 2, .count_value = 1.0, .flags = 2, .rounding_step = 1,
      .format = nullptr, .format_character = 'C', .default_text = "0L" },
    { .name = "RPM", .units = rpm_units, .unit_count = 1,
      .natural_unit = 0, .count_value = 0.001, .flags = 2, .rounding_step = 1,
      .format = nullptr, .format_character = 'r', .default_text = "0RPM" },
    { .name = "SPEED", .units = speed_units, .unit_count = 2,
      .natural_unit = 1, .count_value = 0.01, .flags = 2, .rounding_step = 1,
      .format = nullptr, .format_character = 'S', .default_text = "0KPH" },
    { .name = "DISTANCE", .units = distance_units, .unit_count = 3,
      .natural_unit = 1, .count_value = 1.0, .flags = 2, .rounding_step = 1,
      .format = nullptr, .format_character = 'l', .default_text = "0m" },
    { .name = "MASS", .units = mass_units, .unit_count = 3,
      .natural_unit = 1, .count_value = 1.0, .flags = 2, .rounding_step = 1,
      .format = nullptr, .format_character = 'm', .default_text = "0g" },
    { .name = "ANGLE", .units = angle_units, .unit_count = 1,
      .natural_unit = 0, .count_value = 0.001, .flags = 1, .rounding_step = 1,
      .format = nullptr, .format_character = 'A', .default_text = "0Deg" },
    { .name = "ACCELERATION", .units = acceleration_units, .unit_count = 1,
      .natural_unit = 0, .count_value = 0.000001, .flags = 2, .rounding_step = 1,
      .format = nullptr, .format_character = 'G', .default_text = "0G" },
    { .name = "MASSFLOW", .units = massflow_units, .unit_count = 3,
      .natural_unit = 0, .count_value = 1.0, .flags = 2, .rounding_step = 1,
      .format = nullptr, .format_character = 'w', .default_text = "0g_per_hr" },
    { .name = "RATIO", .units = ratio_units, .unit_count = 1,
      .natural_unit = 0, .count_value = 0.001, .flags = 2, .rounding_step = 10,
      .format = nullptr, .format_character = 't', .default_text = "0to_1" },
    { .name = "CLOCK_TIME", .units = clock_time_units, .unit_count = 2,
      .natural_unit = 1, .count_value = 1.0, .flags = 2, .rounding_step = 1,
      .format = EUC_FormatClock, .format_character = 'K', .default_text = "0minutes" },
    { .name = "POWER_DENSITY", .units = power_density_units, .unit_count = 2,
      .natural_unit = 0, .count_value = 1.0, .flags = 2, .rounding_step = 1,
      .format = nullptr, .format_character = 'Z', .default_text = "0W_per_sqm" },
    { .name = "DENSITY", .units = density_units, .unit_count = 2,
      .natural_unit = 0, .count_value = 1.0, .flags = 2, .rounding_step = 1,
      .format = nullptr, .format_character = 'N', .default_text = "0g_per_m3" },
    { .name = "VOLUME", .units = volume_units, .unit_count = 2,
      .natural_unit = 0, .count_value = 1.0, .flags = 2, .rounding_step = 1,
      .format = nullptr, .format_character = 'v', .default_text = "0cm3" },
    { .name = "HECTARE", .units = hectare_units, .unit_count = 1,
      .natural_unit = 0, .count_value = 0.001, .flags = 2, .rounding_step = 1,
      .format = nullptr, .format_character = 'H', .default_text = "0ha" },
    { .name = "METREAGE", .units = metreage_units, .unit_count = 2,
      .natural_unit = 1, .count_value = 1.0, .flags = 2, .rounding_step = 1,
      .format = nullptr, .format_character = 'o', .default_text = "0KM" },
    { .name = "MILEAGE", .units = mileage_units, .unit_count = 1,
      .natural_unit = 0, .count_value = 0.001, .flags = 2, .rounding_step = 1,
      .format = nullptr, .format_character = 'O', .default_text = "0mi" },
    { .name = "ECONOMY", .units = economy_units, .unit_count = 3,
      .natural_unit = 2, .count_value = 1.0, .flags = 2, .rounding_step = 1,
      .format = nullptr, .format_character = 'e', .default_text = "0L_per_100km" },
    { .name = "ECONOMY_IMP", .units = economy_imp_units, .unit_count = 1,
      .natural_unit = 0, .count_value = 0.001, .flags = 2, .rounding_step = 1,
      .format = nullptr, .format_character = 'E', .default_text = "0mpg" },
    { .name = "SPEED_IMP", .units = speed_imp_units, .unit_count = 1,
      .natural_unit = 0, .count_value = 0.001, .flags = 2, .rounding_step = 1,
      .format = nullptr, .format_character = 'M', .default_text = "0MPH" },
    { .name = "TEMPERATURE_IMP", .units = temperature_imp_units, .unit_count = 2,
      .natural_unit = 0, .count_value = 1.0, .flags = 1, .rounding_step = 1,
      .format = nullptr, .format_character = 'f', .default_text = "0F" },
    { .name = "PRESSURE_IMP", .units = pressure_imp_units, .unit_count = 2,
      .natural_unit = 1, .count_value = 1.0, .flags = 2, .rounding_step = 1,
      .format = nullptr, .format_character = 'b', .default_text = "0KPa" },
    { .name = "ANGLE_VELOCITY", .units = angle_velocity_units, .unit_count = 1,
      .natural_unit = 0, .count_value = 0.001, .flags = 1, .rounding_step = 1,
      .format = nullptr, .format_character = 'a', .default_text = "0Deg_per_sec" },
    { .name = "SMALL_MASS", .units = small_mass_units, .unit_count = 3,
      .natural_unit = 1, .count_value = 1.0, .flags = 2, .rounding_step = 1,
      .format = nullptr, .format_character = 'i', .default_text = "0mg" },
    { .name = "FLOW", .units = flow_units, .unit_count = 2,
      .natural_unit = 1, .count_value = 1.0, .flags = 2, .rounding_step = 1,
      .format = nullptr, .format_character = 'L', .default_text = "0l_per_min" },
    { .name = "ECONOMY_US", .units = economy_us_units, .unit_count = 1,
      .natural_unit = 0, .count_value = 0.001, .flags = 2, .rounding_step = 1,
      .format = nullptr, .format_character = 'g', .default_text = "0mpg_us" },
    { .name = "CAPACITY_IMP", .units = capacity_imp_units, .unit_count = 1,
      .natural_unit = 0, .count_value = 0.001, .flags = 2, .rounding_step = 1,
      .format = nullptr, .format_character = 'y', .default_text = "0gal" },
    { .name = "CAPACITY_US", .units = capacity_us_units, .unit_count = 1,
      .natural_unit = 0, .count_value = 0.001, .flags = 2, .rounding_step = 1,
      .format = nullptr, .format_character = 'Y', .default_text = "0gal_us" },
};
// clang-format on
static_assert(std::size(quantities) == EUC_QUANTITY_COUNT, "one row for each quantity number");

const EUC_QUANTITY *EUC_Quantity(int32_t quantity)
{
    const int32_t number = quantity & 0xFF;
    return &quantities[number < EUC_QUANTITY_COUNT ? number : 0];
}

/** Counts in one of a unit. */
static int32_t multiplier(const EUC_QUANTITY *quantity, int32_t unit)
{
    int32_t counts = static_cast<int32_t>(1.0 / quantity->count_value);
    for (int32_t i = 0; i < unit; i++)
        counts *= 1000;
    return counts;
}

int32_t EUC_GetMaxType()
{
    return EUC_QUANTITY_COUNT - 1;
}

const char *EUC_QuantityName(int32_t quantity)
{
    return EUC_Quantity(quantity)->name;
}

uint32_t EUC_Flags(int32_t quantity)
{
    return EUC_Quantity(quantity)->flags;
}

const char *EUC_GetDefaultUnitString(int32_t quantity)
{
    if (quantity < 0 || quantity >= EUC_QUANTITY_COUNT) quantity = 0;
    return quantities[quantity].default_text;
}

const char *EUC_GetNaturalUnit(int32_t quantity, int32_t *counts)
{
    const EUC_QUANTITY *record = EUC_Quantity(quantity);
    if (counts != nullptr) *counts = multiplier(record, record->natural_unit);
    return record->units[record->natural_unit];
}

int32_t EUC_GetAllUnits(int32_t quantity, EUC_VISITOR visitor, void *user)
{
    const EUC_QUANTITY *record = EUC_Quantity(quantity);
    for (int32_t i = 0; visitor != nullptr && i < record->unit_count; i++)
        visitor(user, record->units[i], multiplier(record, i));
    return record->unit_count;
}

int32_t EUC_ConvertFormatCharacter(char ch)
{
    for (int32_t i = 1; i < EUC_QUANTITY_COUNT; i++) {
        if (quantities[i].format_character == ch) return i;
    }
    return -1;
}

// --- symbols ---

enum SYMBOL_KIND {
    SYMBOL_RESISTANCE = 1,
    SYMBOL_DEGREE,
    SYMBOL_SQUARED,
    SYMBOL_CUBED,
    SYMBOL_PRESSURE,
    SYMBOL_ENGINE_SPEED,
    SYMBOL_END
};

/** A unit made of a prefix, as much of a symbol as fits the room, and a suffix. */
struct SYMBOL_CELL {
    SYMBOL_KIND kind;
    const char *prefix;
    int32_t symbol_room; // bytes for the symbol, terminator included
    const char *suffix;
    int32_t text_room; // bytes for all of the text
    const char **unit; // in its units array
    char text[12];     // filled when the symbol is set
};

static SYMBOL_CELL cells[] = {
    { .kind = SYMBOL_RESISTANCE,
      .prefix = "",
      .symbol_room = 5,
      .suffix = "",
      .text_room = 12,
      .unit = &resistance_units[0],
      .text = {} },
    { .kind = SYMBOL_RESISTANCE,
      .prefix = "k",
      .symbol_room = 4,
      .suffix = "",
      .text_room = 12,
      .unit = &resistance_units[1],
      .text = {} },
    { .kind = SYMBOL_RESISTANCE,
      .prefix = "M",
      .symbol_room = 4,
      .suffix = "",
      .text_room = 12,
      .unit = &resistance_units[2],
      .text = {} },
    { .kind = SYMBOL_DEGREE,
      .prefix = "",
      .symbol_room = 5,
      .suffix = "C",
      .text_room = 12,
      .unit = &temperature_units[0],
      .text = {} },
    { .kind = SYMBOL_DEGREE,
      .prefix = "k",
      .symbol_room = 4,
      .suffix = "C",
      .text_room = 12,
      .unit = &temperature_units[1],
      .text = {} },
    { .kind = SYMBOL_DEGREE,
      .prefix = "",
      .symbol_room = 5,
      .suffix = "F",
      .text_room = 12,
      .unit = &temperature_imp_units[0],
      .text = {} },
    { .kind = SYMBOL_DEGREE,
      .prefix = "k",
      .symbol_room = 4,
      .suffix = "F",
      .text_room = 12,
      .unit = &temperature_imp_units[1],
      .text = {} },
    { .kind = SYMBOL_DEGREE,
      .prefix = "",
      .symbol_room = 3,
      .suffix = "",
      .text_room = 12,
      .unit = &angle_units[0],
      .text = {} },
    { .kind = SYMBOL_DEGREE,
      .prefix = "",
      .symbol_room = 5,
      .suffix = "/s",
      .text_room = 5,
      .unit = &angle_velocity_units[0],
      .text = {} },
    { .kind = SYMBOL_SQUARED,
      .prefix = "W/m",
      .symbol_room = 4,
      .suffix = "",
      .text_room = 12,
      .unit = &power_density_units[0],
      .text = {} },
    { .kind = SYMBOL_SQUARED,
      .prefix = "kW/m",
      .symbol_room = 3,
      .suffix = "",
      .text_room = 12,
      .unit = &power_density_units[1],
      .text = {} },
    { .kind = SYMBOL_CUBED,
      .prefix = "g/m",
      .symbol_room = 4,
      .suffix = "",
      .text_room = 12,
      .unit = &density_units[0],
      .text = {} },
    { .kind = SYMBOL_CUBED,
      .prefix = "kg/m",
      .symbol_room = 3,
      .suffix = "",
      .text_room = 12,
      .unit = &density_units[1],
      .text = {} },
    { .kind = SYMBOL_CUBED,
      .prefix = "mm",
      .symbol_room = 3,
      .suffix = "",
      .text_room = 12,
      .unit = &volume_units[0],
      .text = {} },
    { .kind = SYMBOL_CUBED,
      .prefix = "cm",
      .symbol_room = 3,
      .suffix = "",
      .text_room = 12,
      .unit = &volume_units[1],
      .text = {} },
    { .kind = SYMBOL_PRESSURE,
      .prefix = "m",
      .symbol_room = 4,
      .suffix = "",
      .text_room = 12,
      .unit = &pressure_units[0],
      .text = {} },
    { .kind = SYMBOL_PRESSURE,
      .prefix = "",
      .symbol_room = 5,
      .suffix = "",
      .text_room = 12,
      .unit = &pressure_units[1],
      .text = {} },
    { .kind = SYMBOL_ENGINE_SPEED,
      .prefix = "",
      .symbol_room = 7,
      .suffix = "",
      .text_room = 12,
      .unit = &rpm_units[0],
      .text = {} },
};

/** Builds a cell's text and points its unit at it. */
static void fill_cell(SYMBOL_CELL *cell, const char *symbol)
{
    char part[sizeof cell->text];
    ST_Copy(part, cell->symbol_room, symbol);
    ST_Concat(cell->text, cell->text_room, cell->prefix, part, cell->suffix, nullptr);
    *cell->unit = cell->text;
}

void EUC_SetString(int32_t kind, const char *text)
{
    for (SYMBOL_CELL &cell : cells) {
        if (cell.kind == kind) fill_cell(&cell, text);
    }
}

static bool is_set(int32_t kind)
{
    for (const SYMBOL_CELL &cell : cells) {
        if (cell.kind == kind) return *cell.unit != nullptr;
    }
    return true;
}

void EUC_Initialise()
{
    static constexpr const char *defaults[] = { "R", "\xB0", "\xB2", "\xB3", "B", "RPM" };
    static_assert(std::size(defaults) == SYMBOL_END - 1, "one text for each symbol");
    for (int32_t kind = 1; kind < SYMBOL_END; kind++) {
        if (!is_set(kind)) EUC_SetString(kind, defaults[kind - 1]);
    }
}
