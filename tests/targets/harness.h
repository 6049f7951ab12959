/*
 * What a program needs that runs functions of generated C and tells what comes out. It asks nothing of
 * the generated text but the types of the run time, so that no name of a module is in its way.
 */
#ifndef HARNESS_H
#define HARNESS_H

#include <stdarg.h>

#include "tollrt.h"

/* One run: calls the function and hands its result over. */
struct harness_run {
    void (*run)(void);
    const INT *answers;
    int answer_count;
};

/* The log of a call that leaves the module: its name, its arguments, its end. */
void harness_call(const char *name);
void harness_word(INT word);
void harness_float(FLOAT value);
void harness_text(STRING text);
void harness_extras(STRING format, va_list extras);
void harness_extra_words(INT count, va_list extras);
INT harness_answer(void);

/* The result of a run. */
void harness_result_word(INT word);
void harness_result_float(FLOAT value);
void harness_result_text(STRING text);

/* Makes each run in a process of its own and prints a line for it. */
int harness_main(const struct harness_run *runs, int count);

#endif
