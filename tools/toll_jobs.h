// Sources compiled side by side, each in a process of its own.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

/** What a job hands back, besides what it writes to standard output and standard error. */
using JOB_REPORT = std::vector<std::string>;

/** What a row of jobs does. */
struct JOBS {
    size_t count;
    void *context;
    JOB_REPORT (*run)(void *context, size_t job);                      // in the job's process
    void (*take)(void *context, size_t job, const JOB_REPORT &report); // empty: the job died
};

/**
 * Runs jobs in processes of their own. What they write appears, and their reports are taken, in the
 * order of the jobs, each as soon as those before it have ended. No job is started once the library
 * knows of an interrupt.
 *
 * @param jobs     what to run
 * @param at_once  processes at a time, from 1
 * @return         jobs started; the others had no process: the system refused, or an interrupt
 */
size_t run_jobs(const JOBS &jobs, size_t at_once);
