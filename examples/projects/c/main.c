/* Tests the starting of some vehicles that only exist here: the modules in ../modules run as C, and the
   functions below stand in for the tester's hardware. All numbers are in the units of their quantities:
   millivolts, milliamps, microseconds. */
#include <stdarg.h>
#include <stdio.h>
#include <tollrt.h>

#include "starting.h"
#include "tester.h"

/* ---- The vehicles ---- */

struct vehicle {
    const char *name;
    TEMPERATURE air;
    VOLTAGE rest, surface; /* of the battery; what the charger has left on top */
    VOLTAGE sag, drop;     /* lost while cranking: in the battery, along the cable */
    CURRENT draw;          /* of the starter once it turns */
};

static const struct vehicle vehicles[] = {
    { "van", 20, 12650, 600, 2200, 250, 140000 },
    { "hatchback", 15, 12100, 0, 2500, 250, 130000 },
    { "taxi", 5, 12450, 0, 3700, 250, 150000 },
    { "estate", 20, 12600, 300, 2000, 1100, 110000 },
    { "pick-up", -15, 12500, 0, 3600, 300, 280000 },
    { "coupe", 20, 12700, 0, 900, 150, 60000 },
    { "lorry", 10, 12600, 0, 4200, 400, 320000 },
};
enum { VEHICLES = sizeof vehicles / sizeof vehicles[0] };

/* What the tester is clamped to, and what goes on there. */
static struct {
    const struct vehicle *vehicle;
    BOOL lamps, starter;
    TIME cranked;    /* since the starter was switched on */
    VOLTAGE surface; /* what is left of it */
} bench;

static TIME spent; /* on all vehicles */

/* ---- The tester's hardware ---- */

/* The pistons load the starter by turns. */
static int on_compression(void)
{
    return bench.cranked / 100000 % 2 == 1;
}

static int before_turning(void)
{
    return bench.cranked < 200000;
}

static VOLTAGE measure_voltage(CLAMP clamp)
{
    VOLTAGE battery = bench.vehicle->rest + bench.surface - (bench.lamps ? 100 : 0);
    if (!bench.starter) return battery;
    battery -= before_turning() ? bench.vehicle->sag * 3 / 2 : bench.vehicle->sag;
    if (on_compression()) battery -= 60;
    return clamp == TESTER_AT_STARTER ? battery - bench.vehicle->drop : battery;
}

static CURRENT measure_current(void)
{
    CURRENT draw = bench.lamps ? STARTING_lamp_current(measure_voltage(TESTER_AT_BATTERY)) : 0;
    if (!bench.starter) return draw;
    draw += before_turning() ? bench.vehicle->draw * 5 / 2 : bench.vehicle->draw;
    return on_compression() ? draw + 5000 : draw;
}

static TEMPERATURE measure_temperature(void)
{
    return bench.vehicle->air;
}

static BOOL switch_lamps(BOOL on)
{
    bench.lamps = on;
    return TRUE;
}

static BOOL turn_starter(BOOL on)
{
    bench.starter = on;
    bench.cranked = 0;
    return TRUE;
}

/* Time passes at once here. The lamps take the surface charge off at 100 mV in 5 s. */
static VOID pass(TIME length)
{
    spent += length;
    if (bench.starter) bench.cranked += length;
    if (bench.lamps) bench.surface = toll_max(0, bench.surface - length / 50000);
}

static VOID report(STRING text, ...)
{
    va_list more;
    va_start(more, text);
    printf("  ");
    vprintf(text, more);
    printf("\n");
    va_end(more);
}

/* Under the numbers that tester.tl gives them. */
static const struct {
    INT number;
    TOLL_FUNCTION function;
} syscalls[] = {
    { 16, (TOLL_FUNCTION)measure_voltage },
    { 17, (TOLL_FUNCTION)measure_current },
    { 18, (TOLL_FUNCTION)measure_temperature },
    { 32, (TOLL_FUNCTION)switch_lamps },
    { 33, (TOLL_FUNCTION)turn_starter },
    { 34, (TOLL_FUNCTION)pass },
    { 48, (TOLL_FUNCTION)report },
};

/* ---- The job ---- */

static VERDICT test(const struct vehicle *vehicle)
{
    READINGS found;
    bench.vehicle = vehicle;
    bench.surface = vehicle->surface;
    printf("%s, %d C\n", vehicle->name, vehicle->air);
    VERDICT verdict = STARTING_check(&found);
    printf("  at rest %d mV", found.rest);
    if (found.mean > 0)
        printf(", cranking %d mV, along the cable %d mV, %d A with a peak of %d A", found.lowest,
               found.drop, found.mean / 1000, found.peak / 1000);
    printf("\n  %s\n", STARTING_advice(verdict));
    return verdict;
}

int main(void)
{
    int in_order = 0;
    for (size_t i = 0; i < sizeof syscalls / sizeof syscalls[0]; i++)
        if (!toll_set_syscall(syscalls[i].number, syscalls[i].function)) return 1;
    for (int i = 0; i < VEHICLES; i++)
        if (test(&vehicles[i]) == STARTING_IN_ORDER) in_order++;
    printf("%d of %d in order, tested in %d ms\n", in_order, VEHICLES, spent / 1000);
    return 0;
}
