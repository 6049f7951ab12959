// Processes of toll.

#include "toll_jobs.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <sys/wait.h>
#include <unistd.h>

#include <ostrum.h>

namespace
{

struct JOB {
    pid_t process;
    bool has_ended;
    FILE *output; // temporary files: what it wrote, and its report
    FILE *errors;
    FILE *report;
};

// Processes to end if this one is ended. Set before the first job: the list runs from signals.
std::vector<pid_t> running;

void end_running(int32_t, intptr_t)
{
    for (const pid_t process : running) {
        if (process > 0) kill(process, SIGTERM);
    }
}

/** Exchanges a process in the list of those that run; 0 is a free place. */
void replace_running(pid_t before, pid_t after)
{
    const auto place = std::find(running.begin(), running.end(), before);
    if (place != running.end()) *place = after;
}

void write_report(FILE *file, const JOB_REPORT &report)
{
    for (const std::string &text : report) {
        fprintf(file, "%zu\n", text.size());
        fwrite(text.data(), 1, text.size(), file);
    }
}

JOB_REPORT read_report(FILE *file)
{
    JOB_REPORT report;
    rewind(file);
    size_t size = 0;
    while (fscanf(file, "%zu", &size) == 1 && fgetc(file) == '\n') {
        std::string text(size, 0);
        if (fread(text.data(), 1, size, file) != size) break;
        report.push_back(std::move(text));
    }
    return report;
}

/** What the process of a job does; it ends without the exit list, which is the parent's. */
[[noreturn]] void be_job(const JOBS &jobs, size_t number, const JOB &job)
{
    std::fill(running.begin(), running.end(), 0);
    dup2(fileno(job.output), STDOUT_FILENO);
    dup2(fileno(job.errors), STDERR_FILENO);
    write_report(job.report, jobs.run(jobs.context, number));
    const bool is_whole = fflush(stdout) == 0 && fflush(job.report) == 0;
    _exit(is_whole ? 0 : 1);
}

void close_files(JOB *job)
{
    for (FILE *file : { job->output, job->errors, job->report }) {
        if (file != nullptr) fclose(file);
    }
}

bool start_job(const JOBS &jobs, size_t number, JOB *job)
{
    *job = { 0, false, tmpfile(), tmpfile(), tmpfile() };
    const bool has_files =
        job->output != nullptr && job->errors != nullptr && job->report != nullptr;
    fflush(stdout);
    job->process = has_files ? fork() : -1;
    if (job->process == 0) be_job(jobs, number, *job);
    if (job->process > 0) {
        replace_running(0, job->process);
        return true;
    }
    close_files(job);
    return false;
}

void copy(FILE *from, FILE *to)
{
    char buffer[4096];
    rewind(from);
    for (size_t size; (size = fread(buffer, 1, sizeof buffer, from)) > 0;)
        fwrite(buffer, 1, size, to);
    fflush(to);
}

/** Shows what an ended job wrote, and takes its report. */
void take_job(const JOBS &jobs, size_t number, JOB *job)
{
    copy(job->output, stdout);
    copy(job->errors, stderr);
    jobs.take(jobs.context, number, read_report(job->report));
    close_files(job);
}

/** Waits until any job has ended. */
void wait_for_job(std::vector<JOB> *jobs)
{
    const pid_t process = waitpid(-1, nullptr, 0);
    // Where the caller had the ends of processes ignored, nothing is told but that none is left.
    const bool is_none_left = process < 0 && errno == ECHILD;
    if (process <= 0 && !is_none_left) return; // a signal came
    replace_running(process, 0);
    for (JOB &job : *jobs) {
        if (is_none_left || job.process == process) job.has_ended = true;
    }
    if (is_none_left) std::fill(running.begin(), running.end(), 0);
}

} // namespace

size_t run_jobs(const JOBS &jobs, size_t at_once)
{
    std::vector<JOB> started;
    size_t taken = 0;
    bool can_start = true;
    running.assign(at_once, 0);
    SM_AtExit(end_running, 0);
    while (taken < started.size() || (can_start && started.size() < jobs.count)) {
        const auto is_free = std::find(running.begin(), running.end(), 0) != running.end();
        can_start = can_start && !SM_Aborted();
        if (can_start && is_free && started.size() < jobs.count) {
            JOB job = {};
            can_start = start_job(jobs, started.size(), &job);
            if (can_start) started.push_back(job);
            continue;
        }
        if (taken < started.size() && !started[taken].has_ended) wait_for_job(&started);
        while (taken < started.size() && started[taken].has_ended) {
            take_job(jobs, taken, &started[taken]);
            taken++;
        }
    }
    return taken;
}
