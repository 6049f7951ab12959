/*
 * Quantities: the table, the units, and counts as text.
 */
#include "units/euc.h"

#include <climits>
#include <gtest/gtest.h>
#include <iterator>
#include <set>
#include <string>

namespace
{

constexpr int32_t INT_TYPE = 0, VOLTAGE = 1, RESISTANCE = 2, CURRENT = 3, PRESSURE = 4;
constexpr int32_t TEMPERATURE = 5, FREQUENCY = 6, TIME = 7, ANGLE = 14, CLOCK_TIME = 18;
constexpr int32_t DENSITY = 20, ANGLE_VELOCITY = 30;
constexpr int32_t NO_ROUNDING = 0x100, NO_UNIT = 0x200, WHOLE = 0x400;

int32_t note_unit(void *user, const char *unit, int32_t multiplier)
{
    *static_cast<std::string *>(user) +=
        std::string(unit == nullptr ? "<null>" : unit) + "=" + std::to_string(multiplier) + " ";
    return 0;
}

std::string units_of(int32_t quantity)
{
    std::string units;
    EUC_GetAllUnits(quantity, note_unit, &units);
    return units;
}

TEST(Quantities, FormatCharactersStandInOrder)
{
    const std::string characters = "VRIPDFTpCrSlmAGwtKZNvHoOeEMfbaiLgyY";
    for (size_t i = 0; i < characters.size(); i++)
        EXPECT_EQ(EUC_ConvertFormatCharacter(characters[i]), static_cast<int32_t>(i + 1));
    EXPECT_EQ(EUC_ConvertFormatCharacter(0), -1);
    EXPECT_EQ(EUC_ConvertFormatCharacter('x'), -1);
    EXPECT_EQ(EUC_GetMaxType(), 35);
}

TEST(Quantities, NamesAndFlags)
{
    EXPECT_STREQ(EUC_QuantityName(0), "INT");
    EXPECT_STREQ(EUC_QuantityName(35), "CAPACITY_US");
    EXPECT_STREQ(EUC_QuantityName(0x200 + VOLTAGE), "VOLTAGE"); // the low 8 bits count
    EXPECT_STREQ(EUC_GetDefaultUnitString(16), "0g_per_hr");
    EXPECT_STREQ(EUC_GetDefaultUnitString(35), "0gal_us");
    std::set<int32_t> ones;
    for (int32_t i = 0; i <= 35; i++) {
        if (EUC_Flags(i) == 1) ones.insert(i);
    }
    EXPECT_EQ(ones, (std::set<int32_t>{ 0, 1, 3, 5, 14, 28, 30 }));
    for (const int32_t stray : { 36, 255, -1, INT_MIN })
        EXPECT_NE(EUC_QuantityName(stray), nullptr) << stray;
}

TEST(Quantities, UnitsBeforeAndAfterStart)
{
    EXPECT_EQ(units_of(RESISTANCE), "<null>=100 <null>=100000 <null>=100000000 ");
    EXPECT_STREQ(EUC_DisplayValue(RESISTANCE, 150), "1.5");
    EUC_SetString(2, "o");
    EUC_Initialise();
    EXPECT_EQ(units_of(RESISTANCE), "R=100 kR=100000 MR=100000000 ");
    EXPECT_EQ(units_of(TEMPERATURE), "oC=1 koC=1000 "); // what was set before stays
    EXPECT_EQ(units_of(DENSITY), "g/m\xB3=1 kg/m\xB3=1000 ");
    EXPECT_EQ(units_of(INT_TYPE), "=1 k=1000 M=1000000 ");
    EXPECT_EQ(units_of(15), "G=1000000 ");
    EXPECT_EQ(EUC_GetAllUnits(FREQUENCY, nullptr, nullptr), 3);
    int32_t multiplier = 0;
    EXPECT_STREQ(EUC_GetNaturalUnit(CURRENT, &multiplier), "A");
    EXPECT_EQ(multiplier, 1000);
    EXPECT_STREQ(EUC_GetNaturalUnit(TIME, &multiplier), "s");
    EXPECT_EQ(multiplier, 1000000);
    EXPECT_STREQ(EUC_GetNaturalUnit(PRESSURE, nullptr), "B");
}

/** All of a quantity: name|unit=multiplier ...|natural unit|rounding step|default text. */
std::string row_of(int32_t quantity)
{
    return std::string(EUC_QuantityName(quantity)) + "|" + units_of(quantity) + "|" +
           EUC_GetNaturalUnit(quantity, nullptr) + "|" +
           std::to_string(EUC_Quantity(quantity)->rounding_step) + "|" +
           EUC_GetDefaultUnitString(quantity);
}

TEST(Quantities, WholeTable)
{
    static constexpr const char *rows[] = {
        "INT|=1 k=1000 M=1000000 ||1|0",
        "VOLTAGE|V=1000 kV=1000000 |V|10|0V",
        "RESISTANCE|R=100 kR=100000 MR=100000000 |R|10|0R",
        "CURRENT|mA=1 A=1000 KA=1000000 |A|10|0A",
        "PRESSURE|mB=1 B=1000 |B|1|0B",
        "TEMPERATURE|\xB0"
        "C=1 k\xB0"
        "C=1000 |\xB0"
        "C|1|0C",
        "FREQUENCY|Hz=1000 kHz=1000000 MHz=1000000000 |Hz|100|0Hz",
        "TIME|us=1 ms=1000 s=1000000 |s|1|0s",
        "PERCENTAGE|%=1000 |%|10|0%",
        "CAPACITY|uL=1 mL=1000 L=1000000 |L|1|0L",
        "RPM|RPM=1000 |RPM|1|0RPM",
        "SPEED|m/hr=100 KPH=100000 |KPH|1|0KPH",
        "DISTANCE|mm=1 m=1000 km=1000000 |m|1|0m",
        "MASS|g=1 kg=1000 t=1000000 |kg|1|0g",
        "ANGLE|\xB0=1000 |\xB0|1|0Deg",
        "ACCELERATION|G=1000000 |G|1|0G",
        "MASSFLOW|g/hr=1 kg/hr=1000 t/hr=1000000 |g/hr|1|0g_per_hr",
        "RATIO|:1=1000 |:1|10|0to_1",
        "CLOCK_TIME|ms=1 s=1000 |s|1|0minutes",
        "POWER_DENSITY|W/m\xB2=1 kW/m\xB2=1000 |W/m\xB2|1|0W_per_sqm",
        "DENSITY|g/m\xB3=1 kg/m\xB3=1000 |g/m\xB3|1|0g_per_m3",
        "VOLUME|mm\xB3=1 cm\xB3=1000 |mm\xB3|1|0cm3",
        "HECTARE|ha=1000 |ha|1|0ha",
        "METREAGE|m=1 km=1000 |km|1|0KM",
        "MILEAGE|mi=1000 |mi|1|0mi",
        "ECONOMY|uL/100km=1 mL/100km=1000 L/100km=1000000 |L/100km|1|0L_per_100km",
        "ECONOMY_IMP|mpg=1000 |mpg|1|0mpg",
        "SPEED_IMP|MPH=1000 |MPH|1|0MPH",
        "TEMPERATURE_IMP|\xB0"
        "F=1 k\xB0"
        "F=1000 |\xB0"
        "F|1|0F",
        "PRESSURE_IMP|Pa=1 KPa=1000 |KPa|1|0KPa",
        "ANGLE_VELOCITY|\xB0/s=1000 |\xB0/s|1|0Deg_per_sec",
        "SMALL_MASS|ug=1 mg=1000 g=1000000 |mg|1|0mg",
        "FLOW|ml/min=1 l/min=1000 |l/min|1|0l_per_min",
        "ECONOMY_US|mpg(US)=1000 |mpg(US)|1|0mpg_us",
        "CAPACITY_IMP|Gal=1000 |Gal|1|0gal",
        "CAPACITY_US|Gal(US)=1000 |Gal(US)|1|0gal_us",
    };
    EUC_Initialise();
    ASSERT_EQ(std::size(rows), static_cast<size_t>(EUC_GetMaxType() + 1));
    for (int32_t i = 0; i <= EUC_GetMaxType(); i++)
        EXPECT_EQ(row_of(i), rows[i]);
}

TEST(Quantities, SymbolsAreCutToTheirRoom)
{
    EUC_Initialise();
    EUC_SetString(1, "abcde");
    EXPECT_EQ(units_of(RESISTANCE), "abcd=100 kabc=100000 Mabc=100000000 ");
    EUC_SetString(2, "deg");
    EXPECT_EQ(units_of(TEMPERATURE), "degC=1 kdegC=1000 ");
    EXPECT_EQ(units_of(ANGLE), "de=1000 ");
    EXPECT_EQ(units_of(ANGLE_VELOCITY), "deg/=1000 ");
    EUC_SetString(4, "cubed");
    EXPECT_EQ(units_of(DENSITY), "g/mcub=1 kg/mcu=1000 ");
    for (int32_t kind = -1; kind <= 8; kind++)
        EUC_SetString(kind, "a symbol that is longer than any room");
    EXPECT_EQ(units_of(10), "a symb=1000 ");
}

TEST(Quantities, SignificantFigures)
{
    static constexpr struct {
        int32_t figures, value, expected;
    } cases[] = {
        { 3, 12345, 12300 },      { 3, 12355, 12400 },        { 3, -12355, -12400 },
        { 3, 999, 999 },          { 2, 999, 1000 },           { 0, 42, 0 },
        { 0, 62, 100 },           { 9, INT_MAX, 2147483640 }, // rounding up would leave 32 bits
        { 10, INT_MAX, INT_MAX }, { 50, INT_MIN, -INT_MAX },
    };
    for (const auto &row : cases)
        EXPECT_EQ(EUC_SigFigs(row.figures, row.value), row.expected) << row.value;
}

TEST(Quantities, CountsAsText)
{
    EUC_Initialise();
    static constexpr struct {
        int32_t type, value;
        const char *text;
    } cases[] = {
        { VOLTAGE, 1500, "1.5V" },
        { VOLTAGE, 1234, "1.23V" },
        { VOLTAGE, 1235, "1.24V" },
        { VOLTAGE, 1234567, "1.235kV" },
        { VOLTAGE, 999000, "999V" },
        { VOLTAGE, 999500, "1.000kV" },
        { VOLTAGE, 0, "0V" },
        { VOLTAGE, -1, "-0V" },
        { VOLTAGE, 1050, "1.05V" },
        { VOLTAGE | NO_ROUNDING, 1005, "1.005V" },
        { VOLTAGE | NO_ROUNDING, 1234, "1.234V" },
        { VOLTAGE | NO_UNIT, 1500, "1.5" },
        { VOLTAGE | WHOLE, 1500, "1" },
        { VOLTAGE | WHOLE | NO_ROUNDING, 1999, "1" },
        { VOLTAGE | WHOLE, 1999, "2" },
        { VOLTAGE | WHOLE, -1500, "1" },
        { VOLTAGE | WHOLE, 5000000, "5000" },
        { CURRENT, 994, "990mA" },
        { CURRENT, 999, "1A" },
        { CURRENT, 0, "0A" },
        { CURRENT | WHOLE, INT_MAX, "2147483647" },
        { INT_TYPE, INT_MAX, "2147.484M" },
        { INT_TYPE, INT_MIN, "-2147.484M" },
        { CLOCK_TIME, 3661001, "1:01:01.001" },
        { CLOCK_TIME | NO_UNIT, 61000, "01:01" },
        { CLOCK_TIME, -61000, "-1:01" },
        { CLOCK_TIME, -1000, "00:01" },
        { CLOCK_TIME, -36000000, "-10:00:00" },
        { CLOCK_TIME, INT_MIN, "-596:31:23.647" },
    };
    for (const auto &row : cases)
        EXPECT_STREQ(EUC_DisplayValue(row.type, row.value), row.text) << row.type << row.value;
    EXPECT_STREQ(EUC_UserString(VOLTAGE, 2, 1267), "1.3V");
}

} // namespace
