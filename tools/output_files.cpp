// Output files of the tools: made beside their target, then renamed, so that the older file stays whole
// until the new one is complete.

#include "output_files.h"

#include <cerrno>
#include <cstdio>
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
    char made[output_file_limit][256];
} leftover;

void drop_leftover(int32_t, intptr_t)
{
    if (!leftover.is_open) return;
    for (const char *made : leftover.made) {
        if (*made != 0) unlinkat(AT_FDCWD, made, 0);
    }
    unlinkat(leftover.target_directory, leftover.directory, AT_REMOVEDIR);
    leftover.is_open = false;
}

void note_leftover(const OUTPUT &output)
{
    static bool is_listed = false;
    if (!is_listed) SM_AtExit(drop_leftover, 0);
    is_listed = true;
    ST_Copy(leftover.directory, sizeof leftover.directory, output.directory.c_str());
    for (size_t at = 0; at < output_file_limit; at++) {
        const char *made = at < output.files.size() ? output.files[at].made.c_str() : "";
        ST_Copy(leftover.made[at], sizeof leftover.made[at], made);
    }
    leftover.target_directory = output.target_directory;
    leftover.is_open = true;
}

std::string last_error()
{
    return strerror(errno);
}

/** Leaves the temporary directory, removes it, and closes the descriptors. */
void close_output(OUTPUT *output)
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

/** Splits the path in directory and name, and names the files. */
void take_names(const std::string &target, const std::vector<std::string> &extensions,
                OUTPUT *output, std::string *directory)
{
    output->target = target;
    for (char &c : output->target) {
        if (c == '\\') c = '/';
    }
    const size_t slash = output->target.rfind('/');
    output->base = slash == std::string::npos ? output->target : output->target.substr(slash + 1);
    *directory = slash == std::string::npos ? "." : output->target.substr(0, slash + 1);
    for (const std::string &extension : extensions) {
        output->files.push_back({ output->base + extension, output->base + extension });
    }
    if (!extensions.empty()) return;
    // A module file takes an extension where its name has none.
    const bool is_bare = output->base.find('.') == std::string::npos;
    output->files.push_back({ is_bare ? output->base + ".kob" : output->base, output->base });
}

/** What stands in the way of files of these names, if anything. */
std::string refuse_target(const OUTPUT &output)
{
    struct stat status = {};
    if (output.base.empty()) return "Is a directory";
    for (const OUTPUT_FILE &file : output.files) {
        if (file.made.size() >= sizeof leftover.made[0]) return "File name too long";
        if (fstatat(output.target_directory, file.name.c_str(), &status, 0) != 0) continue;
        if (!S_ISREG(status.st_mode)) return "Not a regular file";
    }
    return "";
}

/** Makes a directory of a name of its own in target_directory, and enters it. */
bool enter_temporary_directory(OUTPUT *output)
{
    if (fchdir(output->target_directory) != 0) return false;
    char name[] = ".toll-XXXXXX";
    if (mkdtemp(name) == nullptr) return false;
    output->directory = name;
    if (chdir(name) == 0) return true;
    rmdir(name);
    return false;
}

/** Gives a new file the rights of the one that it replaces, or those that a new file has here. */
void take_rights(const OUTPUT &output, const OUTPUT_FILE &file)
{
    struct stat status = {};
    mode_t rights = 0;
    if (fstatat(output.target_directory, file.name.c_str(), &status, 0) == 0) {
        rights = status.st_mode & 0777;
    } else {
        const mode_t mask = umask(0);
        umask(mask);
        rights = 0666 & ~mask;
    }
    chmod(file.made.c_str(), rights);
}

std::string old_name(size_t at)
{
    return "old-" + std::to_string(at);
}

/** Keeps a second name for each file that is about to be replaced, if there is more than one. */
void keep_old(const OUTPUT &output)
{
    if (output.files.size() < 2) return;
    for (size_t at = 0; at < output.files.size(); at++) {
        linkat(output.target_directory, output.files[at].name.c_str(), AT_FDCWD,
               old_name(at).c_str(), 0);
    }
}

/** Puts back what stood in the places of the first count files. */
void restore_old(const OUTPUT &output, size_t count)
{
    for (size_t at = 0; at < count; at++) {
        const char *name = output.files[at].name.c_str();
        const std::string old = old_name(at);
        if (renameat(AT_FDCWD, old.c_str(), output.target_directory, name) != 0)
            unlinkat(output.target_directory, name, 0);
    }
}

/** Writes a text into an open output; empty, or what is wrong. */
std::string write_text(const std::string &text, const OUTPUT &output)
{
    FILE *file = fopen(output.files[0].made.c_str(), "wb");
    if (file == nullptr) return "Cannot be written";
    const bool is_whole = fwrite(text.data(), 1, text.size(), file) == text.size();
    return fclose(file) == 0 && is_whole ? "" : "Cannot be written";
}

void drop_made(const OUTPUT &output)
{
    for (size_t at = 0; at < output.files.size(); at++) {
        unlink(output.files[at].made.c_str());
        unlink(old_name(at).c_str());
    }
}

} // namespace

std::string open_output(const std::string &target, const std::vector<std::string> &extensions,
                        OUTPUT *output)
{
    std::string directory;
    take_names(target, extensions, output, &directory);
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

std::string publish_output(OUTPUT *output)
{
    std::string problem;
    keep_old(*output);
    for (size_t at = 0; at < output->files.size() && problem.empty(); at++) {
        const OUTPUT_FILE &file = output->files[at];
        take_rights(*output, file);
        const char *name = file.name.c_str();
        if (renameat(AT_FDCWD, file.made.c_str(), output->target_directory, name) == 0) continue;
        problem = last_error();
        restore_old(*output, at);
    }
    drop_made(*output);
    close_output(output);
    return problem;
}

std::string enter_package()
{
    static const std::string package = "/halvorn/libs";
    // The working directory is the temporary one inside the target's.
    char *whole = realpath("..", nullptr);
    const std::string directory = whole == nullptr ? "" : whole;
    free(whole);
    const bool is_inside =
        directory.size() >= package.size() &&
        directory.compare(directory.size() - package.size(), package.size(), package) == 0;
    if (!is_inside || mkdir("halvorn", 0777) != 0) return "";
    return mkdir("halvorn/libs", 0777) == 0 ? "halvorn/libs/" : "";
}

void leave_package(const std::string &path, const std::string &made)
{
    if (path == made) return;
    if (rename(path.c_str(), made.c_str()) != 0) unlink(path.c_str());
    rmdir("halvorn/libs");
    rmdir("halvorn");
}

void discard_output(OUTPUT *output)
{
    drop_made(*output);
    close_output(output);
}

std::string replace_file(const std::string &target, const std::string &text,
                         const std::vector<std::string> &used)
{
    for (const std::string &path : used) {
        if (same_file(path, target)) return "Output is a source or a module";
    }
    OUTPUT output = {};
    std::string problem = open_output(target, {}, &output);
    if (!problem.empty()) return problem;
    problem = write_text(text, output);
    if (problem.empty()) return publish_output(&output);
    discard_output(&output);
    return problem;
}

bool is_directory(const std::string &path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool same_file(const std::string &a, const std::string &b)
{
    struct stat status_a = {};
    struct stat status_b = {};
    if (stat(a.c_str(), &status_a) != 0 || stat(b.c_str(), &status_b) != 0) return false;
    return status_a.st_dev == status_b.st_dev && status_a.st_ino == status_b.st_ino;
}
