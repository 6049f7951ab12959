// Output files of toll: made beside their target, then renamed, so that the older file stays whole
// until the new one is complete.

#include "toll_output.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ostrum.h>

namespace
{

// What the exit list drops if the process ends while an output is open. Plain words, since the
// list also runs from signals.
struct LEFTOVER {
    volatile bool is_open;
    int target_directory;
    char directory[64];
    char made[256];
} leftover;

void drop_leftover(int32_t, intptr_t)
{
    if (!leftover.is_open) return;
    unlinkat(AT_FDCWD, leftover.made, 0);
    unlinkat(leftover.target_directory, leftover.directory, AT_REMOVEDIR);
    leftover.is_open = false;
}

void note_leftover(const TOLL_OUTPUT &output)
{
    static bool is_listed = false;
    if (!is_listed) SM_AtExit(drop_leftover, 0);
    is_listed = true;
    ST_Copy(leftover.directory, sizeof leftover.directory, output.directory.c_str());
    ST_Copy(leftover.made, sizeof leftover.made, output.made.c_str());
    leftover.target_directory = output.target_directory;
    leftover.is_open = true;
}

std::string last_error()
{
    return strerror(errno);
}

/** Leaves the temporary directory, removes it, and closes the descriptors. */
void close_output(TOLL_OUTPUT *output)
{
    leftover.is_open = false;
    if (fchdir(output->home_directory) != 0) {
        // Every path given from here on would be read from the wrong place.
        SM_FatalError("Cannot return to the working directory");
    }
    unlinkat(output->target_directory, output->directory.c_str(), AT_REMOVEDIR);
    close(output->target_directory);
    close(output->home_directory);
}

/** Splits the path in directory and name; the name gets the extension that it lacks. */
void take_names(const std::string &target, TOLL_OUTPUT *output, std::string *directory)
{
    output->target = target;
    for (char &c : output->target) {
        if (c == '\\') c = '/';
    }
    const size_t slash = output->target.rfind('/');
    output->name = slash == std::string::npos ? output->target : output->target.substr(slash + 1);
    *directory = slash == std::string::npos ? "." : output->target.substr(0, slash + 1);
    output->made = output->name;
    if (output->name.find('.') == std::string::npos) output->made += ".kob";
}

/** What stands in the way of a file of this name, if anything. */
std::string refuse_target(const TOLL_OUTPUT &output)
{
    struct stat status = {};
    if (output.name.empty()) return "Is a directory";
    if (output.made.size() >= sizeof leftover.made) return "File name too long";
    if (fstatat(output.target_directory, output.name.c_str(), &status, 0) != 0) return "";
    return S_ISREG(status.st_mode) ? "" : "Not a regular file";
}

/** Makes a directory of a name of its own in target_directory, and enters it. */
bool enter_temporary_directory(TOLL_OUTPUT *output)
{
    if (fchdir(output->target_directory) != 0) return false;
    char name[] = ".toll-XXXXXX";
    if (mkdtemp(name) == nullptr) return false;
    output->directory = name;
    if (chdir(name) == 0) return true;
    rmdir(name);
    return false;
}

/** Gives the new file the rights of the one that it replaces, or those that a new file has here. */
void take_rights(const TOLL_OUTPUT &output)
{
    struct stat status = {};
    mode_t rights = 0;
    if (fstatat(output.target_directory, output.name.c_str(), &status, 0) == 0) {
        rights = status.st_mode & 0777;
    } else {
        const mode_t mask = umask(0);
        umask(mask);
        rights = 0666 & ~mask;
    }
    chmod(output.made.c_str(), rights);
}

} // namespace

std::string open_output(const std::string &target, TOLL_OUTPUT *output)
{
    std::string directory;
    take_names(target, output, &directory);
    output->home_directory = open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (output->home_directory < 0) return last_error();
    output->target_directory = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    std::string problem = output->target_directory < 0 ? last_error() : refuse_target(*output);
    if (problem.empty() && !enter_temporary_directory(output)) problem = last_error();
    if (!problem.empty()) {
        if (output->target_directory >= 0) close(output->target_directory);
        if (fchdir(output->home_directory) != 0) {
            SM_FatalError("Cannot return to the working directory");
        }
        close(output->home_directory);
        return problem;
    }
    note_leftover(*output);
    return "";
}

std::string publish_output(TOLL_OUTPUT *output)
{
    std::string problem;
    take_rights(*output);
    if (renameat(AT_FDCWD, output->made.c_str(), output->target_directory, output->name.c_str()) !=
        0) {
        problem = last_error();
        unlink(output->made.c_str());
    }
    close_output(output);
    return problem;
}

void discard_output(TOLL_OUTPUT *output)
{
    unlink(output->made.c_str());
    close_output(output);
}

bool same_file(const std::string &a, const std::string &b)
{
    struct stat status_a = {};
    struct stat status_b = {};
    if (stat(a.c_str(), &status_a) != 0 || stat(b.c_str(), &status_b) != 0) return false;
    return status_a.st_dev == status_b.st_dev && status_a.st_ino == status_b.st_ino;
}
