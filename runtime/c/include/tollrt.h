/*
 * Run time of C that was generated from TOLL: the types, the arithmetic, and the interface of a program
 * to the modules that it runs. Programs include this header, generated code includes "toll.h".
 *
 * Words have 32 bits and wrap. A fault of the running program (a division by zero, a subscript beyond
 * its array, a syscall that nobody serves) ends the process, unless the program sets a handler.
 */
#ifndef TOLLRT_H
#define TOLLRT_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#define TOLL_NORETURN [[noreturn]]
#else
#define TOLL_NORETURN _Noreturn
#endif

/* ---- Types ---- */

typedef void VOID;
typedef int32_t INT;
typedef int32_t WORD;
typedef int16_t SHORT;
typedef uint8_t CHAR;
typedef float FLOAT;
typedef const char *STRING;
typedef enum { FALSE, TRUE } BOOL;

/* Quantities count in the unit of their quantity: millivolts, milliamps, hundredths of an ohm... */
typedef INT QUANTITY;
typedef INT VOLTAGE;
typedef INT RESISTANCE;
typedef INT CURRENT;
typedef INT PRESSURE;
typedef INT TEMPERATURE;
typedef INT FREQUENCY;
typedef INT TIME;
typedef INT PERCENTAGE;
typedef INT CAPACITY;
typedef INT RPM;
typedef INT SPEED;
typedef INT DISTANCE;
typedef INT MASS;
typedef INT ANGLE;
typedef INT ACCELERATION;
typedef INT MASSFLOW;
typedef INT RATIO;
typedef INT CLOCK_TIME;
typedef INT POWER_DENSITY;
typedef INT DENSITY;
typedef INT VOLUME;
typedef INT HECTARE;
typedef INT METREAGE;
typedef INT MILEAGE;
typedef INT ECONOMY;
typedef INT ECONOMY_IMP;
typedef INT SPEED_IMP;
typedef INT TEMPERATURE_IMP;
typedef INT PRESSURE_IMP;
typedef INT ANGLE_VELOCITY;
typedef INT SMALL_MASS;
typedef INT FLOW;
typedef INT ECONOMY_US;
typedef INT CAPACITY_IMP;
typedef INT CAPACITY_US;

/** The number of a quantity. */
typedef INT QUANTITY_TYPE;

/** Directions of a conversion. */
typedef enum { FORWARDS, BACKWARDS } CVT_TYPE;

/**
 * An item of data that a module names. The program defines one for each name that the linker asks
 * for, as an array: `const struct toll_item CONNECTOR_X1[] = { { "X1", &my_connector } };`
 */
struct toll_item {
    const char *name;
    const void *data;
};

typedef const char *MESSAGE;
typedef const struct toll_item *CONNECTOR;
typedef const struct toll_item *VIEW;
typedef const struct toll_item *PIN;
typedef const struct toll_item *PICTURE;
typedef const struct toll_item *PARAMETER;
typedef const struct toll_item *HELPSCREEN;
typedef const struct toll_item *WAVEFORM;
typedef const struct toll_item *COMPONENT;
typedef const struct toll_item *POINT;
typedef const struct toll_item *BINARY_DATA;
typedef const struct toll_item *CONVERTER;
typedef const struct toll_item *VARLOC;

/* ---- Syscalls ---- */

/** Any function; cast to and from the type that the syscall has. */
typedef void (*TOLL_FUNCTION)(void);

/**
 * Puts a function under the number of a syscall. It must have the syscall's own type: for
 * `SYSCALL (16) VOLTAGE measure(INT channel)` that of `VOLTAGE measure(INT channel)`. A syscall that
 * takes arguments of any number is variadic behind its declared ones; with no declared ones it gets
 * their count first.
 *
 * @param number    0 to 65535 of the syscall itself, more for one of a numbered library
 * @param function  the function; null takes the number back
 * @return          1, or 0 if the number is negative or storage is exhausted
 */
int toll_set_syscall(INT number, TOLL_FUNCTION function);

/**
 * The function under the number of a syscall. Generated code calls it. A syscall without a function
 * is a fault of the program.
 *
 * @param number  the number
 * @param name    the syscall's full name, for the report
 * @return        never null
 */
TOLL_FUNCTION toll_syscall(INT number, const char *name);

/* ---- Faults ---- */

/**
 * Called on a fault, and when a function with a result runs off its end. It may leave by longjmp; if it
 * returns, the process ends with status 1.
 *
 * @param reason  what happened: "Division by zero"
 * @param place   the C function that it happened in; may be null
 * @param line    line of the C file; 0 where it is not known
 */
typedef void (*TOLL_FAULT_HANDLER)(const char *reason, const char *place, int line);

/** Sets the handler of faults; null brings back the report on standard error. Gives the one before. */
TOLL_FAULT_HANDLER toll_set_fault_handler(TOLL_FAULT_HANDLER handler);

/** Ends the run with a fault. */
TOLL_NORETURN void toll_fault(const char *reason, const char *place, int line);

/** The pointer, if there is anything behind it; a fault for null. */
static inline void *toll_pointer_at(void *pointer, const char *place, int line)
{
    if (pointer == NULL) toll_fault("Null address", place, line);
    return pointer;
}

/** Ends the whole run, as a function with a result does that runs off its end. */
TOLL_NORETURN void toll_stop_at(const char *place, int line);

/* ---- Texts ---- */

/**
 * Compares two texts byte by byte, bytes without sign. No text is equal to no text, and below any.
 *
 * @return  below 0, 0 or above 0, as a is below, equal to or above b
 */
INT toll_compare(STRING a, STRING b);

/* ---- Arithmetic ---- */

/** The word that 32 bits stand for. */
static inline INT toll_int(uint32_t bits)
{
    return bits <= INT32_MAX ? (INT)bits : -(INT)(UINT32_MAX - bits) - 1;
}

/** The word itself, where a compiler is not to look into it. */
static inline INT toll_word(INT value)
{
    return value;
}

/** Shifts left by the low five bits of count. */
static inline INT toll_shift_left(INT value, INT count)
{
    return toll_int((uint32_t)value << ((uint32_t)count & 31u));
}

/** Shifts right by the low five bits of count; the sign moves in. */
static inline INT toll_shift_right(INT value, INT count)
{
    uint32_t places = (uint32_t)count & 31u;
    uint32_t bits = (uint32_t)value >> places;
    return toll_int(value < 0 && places != 0 ? bits | ~(UINT32_MAX >> places) : bits);
}

/** The low byte of a word, which is all that an item of one byte keeps. */
static inline INT toll_byte(INT value)
{
    return toll_int((uint32_t)value & 255u);
}

/** Milliseconds from microseconds, toward zero. */
static inline INT toll_clock_of_time(INT time)
{
    return time / 1000;
}

/** Microseconds from milliseconds; wraps. */
static inline INT toll_time_of_clock(INT clock)
{
    return toll_int((uint32_t)clock * 1000u);
}

static inline INT toll_abs(INT value)
{
    return value < 0 ? toll_int(0u - (uint32_t)value) : value;
}

static inline INT toll_min(INT a, INT b)
{
    return a < b ? a : b;
}

static inline INT toll_max(INT a, INT b)
{
    return a > b ? a : b;
}

/** The quotient toward zero; the lowest word by -1 wraps. */
INT toll_div_at(INT a, INT b, const char *place, int line);

/** The remainder of that quotient; 0 for the lowest word by -1. */
INT toll_rem_at(INT a, INT b, const char *place, int line);

/** a * b / scale in binary64, toward zero; the low 32 bits of what goes beyond them. */
INT toll_smul(INT a, INT b, INT scale);

/** (a / b) * scale, likewise. */
INT toll_sdiv_at(INT a, INT b, INT scale, const char *place, int line);

/** The index, if it is one of an array of bound elements; a fault otherwise. */
INT toll_index_at(INT index, INT bound, const char *place, int line);

/** Toward zero; the nearest word where there is none, and 0 for what is no number. */
INT toll_round(FLOAT value);

/** The bits of a FLOAT that lie in a WORD, and the reverse. */
FLOAT toll_float_of_word(WORD bits);
WORD toll_word_of_float(FLOAT value);

#ifdef __cplusplus
}
#endif

#endif
