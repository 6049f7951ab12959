/*
 * Runs functions of generated C, each in a process of its own with fresh storage, and prints a line
 * for each: what came out and the calls that left the module.
 */
#define _XOPEN_SOURCE 700
#include "harness.h"

#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

/* Processor time of one run. */
enum { MOST_MICROSECONDS = 900000 };

static const struct harness_run *present;
static int next_answer;

/* ---- The line ---- */

static char *line;
static size_t length;
static size_t capacity;

static void put(const char *text)
{
    size_t more = strlen(text);
    if (length + more + 1 > capacity) {
        capacity = 2 * (length + more) + 256;
        line = (char *)realloc(line, capacity);
        if (line == NULL) abort();
    }
    memcpy(line + length, text, more + 1);
    length += more;
}

static void put_word(INT word)
{
    char digits[16];
    snprintf(digits, sizeof digits, "%d", (int)word);
    put(digits);
}

static void put_text(STRING text)
{
    if (text == NULL) {
        put("0");
        return;
    }
    put("\"");
    put(text);
    put("\"");
}

/* ---- The log ---- */

static char *calls; /* made in line, then kept aside */
static int argument_count;

static void begin_argument(void)
{
    if (argument_count++ > 0) put(",");
}

void harness_call(const char *name)
{
    put(" ");
    put(name);
    put("(");
    argument_count = 0;
}

void harness_word(INT word)
{
    begin_argument();
    put_word(word);
}

void harness_float(FLOAT value)
{
    harness_word(toll_word_of_float(value));
}

void harness_text(STRING text)
{
    begin_argument();
    put_text(text);
}

void harness_extras(STRING format, va_list extras)
{
    for (; format != NULL && *format != 0; ++format) {
        if (format[0] != '%' || format[1] == 0) continue;
        ++format;
        if (*format == 's') harness_text(va_arg(extras, STRING));
        if (*format != 's' && *format != '%') harness_word(va_arg(extras, INT));
    }
}

void harness_extra_words(INT count, va_list extras)
{
    for (; count > 0; --count)
        harness_word(va_arg(extras, INT));
}

INT harness_answer(void)
{
    put(")");
    int at = next_answer++;
    return at < present->answer_count ? present->answers[at] : 0;
}

/* ---- Outcomes ---- */

static void begin_outcome(void)
{
    calls = line;
    line = NULL;
    length = capacity = 0;
}

static _Noreturn void end_outcome(void)
{
    if (calls != NULL) {
        put(" ; calls");
        put(calls);
    }
    put("\n");
    for (size_t done = 0; done < length;) {
        ssize_t written = write(STDOUT_FILENO, line + done, length - done);
        if (written <= 0) abort();
        done += (size_t)written;
    }
    _exit(0);
}

void harness_result_word(INT word)
{
    begin_outcome();
    put("= ");
    put_word(word);
    end_outcome();
}

void harness_result_float(FLOAT value)
{
    harness_result_word(toll_word_of_float(value));
}

void harness_result_text(STRING text)
{
    begin_outcome();
    put("= ");
    put_text(text);
    end_outcome();
}

static void end_with_fault(const char *reason, const char *place, int line_number)
{
    (void)place;
    (void)line_number;
    begin_outcome();
    if (strcmp(reason, "End of a function without a result") == 0) {
        put("stops");
    } else {
        put("fails ");
        put(reason);
    }
    end_outcome();
}

/* ---- Runs ---- */

static _Noreturn void make_run(const struct harness_run *run)
{
    const struct itimerval limit = { { 0, 0 }, { 0, MOST_MICROSECONDS } };
    const struct rlimit no_core = { 0, 0 };
    setrlimit(RLIMIT_CORE, &no_core);
    setitimer(ITIMER_PROF, &limit, NULL);
    toll_set_fault_handler(end_with_fault);
    present = run;
    run->run();
    abort();
}

static void await(pid_t child)
{
    int status = 0;
    if (waitpid(child, &status, 0) != child) abort();
    if (WIFSIGNALED(status)) {
        printf("fails by signal %d\n", WTERMSIG(status));
    } else if (WEXITSTATUS(status) != 0) {
        printf("fails with status %d\n", WEXITSTATUS(status));
    }
    fflush(stdout);
}

int harness_main(const struct harness_run *runs, int count)
{
    for (int i = 0; i < count; ++i) {
        pid_t child = fork();
        if (child < 0) return 1;
        if (child == 0) make_run(&runs[i]);
        await(child);
    }
    return 0;
}
