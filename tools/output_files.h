#pragma once

#include <string>
#include <vector>

/** One file of an output. */
struct OUTPUT_FILE {
    std::string made; // name of the file that generation makes
    std::string name; // name that it gets beside the target
};

/**
 * The files of a compilation in the making. They are written under their final base name, since that
 * name stands in them, in a temporary directory beside the target, and take their places together.
 * The working directory is the temporary one while an output is open: the path that the library
 * gets is then just a name, however long the target's path is.
 */
struct OUTPUT {
    std::string target; // path as the user named it, with '/' between its components
    std::string base;   // last component of target
    std::vector<OUTPUT_FILE> files;
    int home_directory;    // descriptor of the working directory before
    int target_directory;  // descriptor of the directory that target lies in
    std::string directory; // temporary directory, relative to target_directory
};

/** Files of one output at most. */
constexpr size_t output_file_limit = 4;

/**
 * Makes the temporary directory for an output and enters it.
 *
 * @param target      path of the file to be made, or of several without their extensions
 * @param extensions  of the files, each with its dot; none: one file, of the target's own name
 * @param output      out: the open output; ended by publish_output or discard_output
 * @return            empty, or what is wrong; then nothing is left open
 */
std::string open_output(const std::string &target, const std::vector<std::string> &extensions,
                        OUTPUT *output);

/**
 * Puts the finished files in their places, and closes the output.
 *
 * @return  empty, or what is wrong; then all are as they were before
 */
std::string publish_output(OUTPUT *output);

/**
 * Sees that a Java class is written where its directory has the name of its package, while an
 * output is open.
 *
 * @return        directory for the class, with its '/'; empty for the working directory
 */
std::string enter_package();

/** Moves a class from the directory of its package to the working directory. */
void leave_package(const std::string &path, const std::string &made);

/** Drops what was written, and closes the output. All files are as they were before. */
void discard_output(OUTPUT *output);

/**
 * Replaces a file by a text in one step.
 *
 * @param target  path of the file
 * @param text    what it holds from then on
 * @param used    paths of files that must not be lost: the target is refused if it is one of them
 * @return        empty, or what is wrong; then the file is as it was before
 */
std::string replace_file(const std::string &target, const std::string &text,
                         const std::vector<std::string> &used);

/** Tells whether a path leads to an existing directory. */
bool is_directory(const std::string &path);

/**
 * Tells whether two paths lead to one existing file.
 *
 * @param a  path of the host
 * @param b  path of the host
 * @return   true if both exist and are the same file
 */
bool same_file(const std::string &a, const std::string &b);
