/*
 * What C generated from TOLL includes: the run time under the names that the text uses. Programs of
 * their own include "tollrt.h".
 */
#ifndef TOLL_H
#define TOLL_H

#include "tollrt.h"

/* Where non-volatile variables lie. A program may define it otherwise, as a section that is kept. */
#ifndef TOLL_NONVOLATILE
#define TOLL_NONVOLATILE static
#endif

#define abs(value)               toll_abs(value)
#define min(a, b)                toll_min(a, b)
#define max(a, b)                toll_max(a, b)
#define toll_div(a, b)           toll_div_at(a, b, __func__, __LINE__)
#define toll_rem(a, b)           toll_rem_at(a, b, __func__, __LINE__)
#define toll_sdiv(a, b, scale)   toll_sdiv_at(a, b, scale, __func__, __LINE__)
#define toll_index(index, bound) toll_index_at(index, bound, __func__, __LINE__)
#define toll_pointer(pointer)    toll_pointer_at(pointer, __func__, __LINE__)
#define toll_called(function)    ((function) != NULL ? (function) : (toll_no_function(), (function)))
#define toll_no_function()       toll_fault("Call of what is no function", __func__, __LINE__)
#define toll_stop()              toll_stop_at(__func__, __LINE__)
#define toll_lost()              toll_fault("Value without a leg", __func__, __LINE__)

/*
 * A module may declare what it does not use, compare what cannot differ, and leave values aside. That
 * is its author's affair, of which the compiler of TOLL has warned.
 */
#if defined(__GNUC__)
#if defined(__clang__)
#pragma GCC diagnostic ignored "-Wunknown-warning-option"
#endif
#pragma GCC diagnostic ignored "-Wunused-variable"
#pragma GCC diagnostic ignored "-Wunused-but-set-variable"
#pragma GCC diagnostic ignored "-Wunused-but-set-parameter"
#pragma GCC diagnostic ignored "-Wunused-parameter"
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wunused-label"
#pragma GCC diagnostic ignored "-Wunused-value"
#pragma GCC diagnostic ignored "-Wswitch"
#pragma GCC diagnostic ignored "-Wswitch-bool"
#pragma GCC diagnostic ignored "-Wtype-limits"
#pragma GCC diagnostic ignored "-Waddress"
#pragma GCC diagnostic ignored "-Wbool-operation"
#pragma GCC diagnostic ignored "-Wtautological-compare"
#if defined(__clang__)
#pragma GCC diagnostic ignored "-Wself-assign"
#pragma GCC diagnostic ignored "-Wconstant-conversion"
#pragma GCC diagnostic ignored "-Winfinite-recursion"
#pragma GCC diagnostic ignored "-Wincompatible-library-redeclaration"
#else
#pragma GCC diagnostic ignored "-Woverflow"
#pragma GCC diagnostic ignored "-Wbuiltin-declaration-mismatch"
#if __GNUC__ >= 12
#pragma GCC diagnostic ignored "-Winfinite-recursion"
#pragma GCC diagnostic ignored "-Warray-compare" /* of two data items, which are arrays */
#endif
#endif
#endif

#endif
