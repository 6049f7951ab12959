/*
 * Run time of C that was generated from TOLL.
 */
#include "tollrt.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* ---- Faults ---- */

static TOLL_FAULT_HANDLER fault_handler;

TOLL_FAULT_HANDLER toll_set_fault_handler(TOLL_FAULT_HANDLER handler)
{
    TOLL_FAULT_HANDLER before = fault_handler;
    fault_handler = handler;
    return before;
}

void toll_fault(const char *reason, const char *place, int line)
{
    if (fault_handler != NULL) {
        fault_handler(reason, place, line);
    } else {
        fprintf(stderr, "toll: %s", reason);
        if (place != NULL) fprintf(stderr, " in %s, line %d", place, line);
        fputc('\n', stderr);
    }
    exit(EXIT_FAILURE);
}

void toll_stop_at(const char *place, int line)
{
    toll_fault("End of a function without a result", place, line);
}

/* ---- Syscalls ---- */

/* Functions by number, in pages of one size; few pages of a large range are in use. */
#define PAGE_SIZE 256

struct page {
    INT number; /* of the first function, divided by PAGE_SIZE */
    TOLL_FUNCTION functions[PAGE_SIZE];
    struct page *next;
};

static struct page *first_page;

static struct page *find_page(INT number)
{
    struct page *page = first_page;
    while (page != NULL && page->number != number / PAGE_SIZE)
        page = page->next;
    return page;
}

static struct page *new_page(INT number)
{
    struct page *page = (struct page *)calloc(1, sizeof *page);
    if (page == NULL) return NULL;
    page->number = number / PAGE_SIZE;
    page->next = first_page;
    first_page = page;
    return page;
}

int toll_set_syscall(INT number, TOLL_FUNCTION function)
{
    if (number < 0) return 0;
    struct page *page = find_page(number);
    if (page == NULL) page = new_page(number);
    if (page == NULL) return 0;
    page->functions[number % PAGE_SIZE] = function;
    return 1;
}

TOLL_FUNCTION toll_syscall(INT number, const char *name)
{
    struct page *page = number < 0 ? NULL : find_page(number);
    TOLL_FUNCTION function = page == NULL ? NULL : page->functions[number % PAGE_SIZE];
    if (function == NULL) {
        char reason[128];
        snprintf(reason, sizeof reason, "No function for the syscall %s (%d)", name, (int)number);
        toll_fault(reason, NULL, 0);
    }
    return function;
}

/* ---- Texts ---- */

INT toll_compare(STRING a, STRING b)
{
    if (a == b) return 0;
    if (a == NULL) return -1;
    if (b == NULL) return 1;
    return strcmp(a, b);
}

/* ---- Arithmetic ---- */

static void check_divisor(INT divisor, const char *place, int line)
{
    if (divisor == 0) toll_fault("Division by zero", place, line);
}

INT toll_div_at(INT a, INT b, const char *place, int line)
{
    check_divisor(b, place, line);
    return b == -1 ? toll_int(0u - (uint32_t)a) : a / b;
}

INT toll_rem_at(INT a, INT b, const char *place, int line)
{
    check_divisor(b, place, line);
    return b == -1 ? 0 : a % b;
}

/* Toward zero, and of what is left the low 32 bits. No value here leaves 64 bits. */
static INT truncate_scaled(double value)
{
    return toll_int((uint32_t)(uint64_t)(int64_t)value);
}

/* Every step is stored, so that none is worked out in a wider format than binary64. */
INT toll_smul(INT a, INT b, INT scale)
{
    volatile double product = (double)a * (double)b;
    volatile double result = product / (double)scale;
    return truncate_scaled(result);
}

INT toll_sdiv_at(INT a, INT b, INT scale, const char *place, int line)
{
    check_divisor(b, place, line);
    volatile double quotient = (double)a / (double)b;
    volatile double result = quotient * (double)scale;
    return truncate_scaled(result);
}

INT toll_index_at(INT index, INT bound, const char *place, int line)
{
    if (index < 0 || index >= bound) toll_fault("Subscript beyond the array", place, line);
    return index;
}

INT toll_round(FLOAT value)
{
    if (value != value) return 0;
    if (value >= 2147483648.0f) return INT32_MAX;
    if (value <= -2147483648.0f) return INT32_MIN;
    return (INT)value;
}

FLOAT toll_float_of_word(WORD bits)
{
    FLOAT value;
    memcpy(&value, &bits, sizeof value);
    return value;
}

WORD toll_word_of_float(FLOAT value)
{
    WORD bits;
    memcpy(&bits, &value, sizeof bits);
    return bits;
}
