#pragma once

#include <string>

/**
 * A module file in the making. It is written under its final base name, since that name stands in
 * the module, in a temporary directory beside the target, and takes the target's place in one step.
 * The working directory is the temporary one while an output is open: the path that the library
 * gets is then just a name, however long the target's path is.
 */
struct TOLL_OUTPUT {
    std::string target;    // path as the user named it, with '/' between its components
    std::string name;      // last component of target
    std::string made;      // name of the file that generation makes: name with an extension
    int home_directory;    // descriptor of the working directory before
    int target_directory;  // descriptor of the directory that target lies in
    std::string directory; // temporary directory, relative to target_directory
};

/**
 * Makes the temporary directory for an output and enters it.
 *
 * @param target  path of the module file to be made
 * @param output  out: the open output; ended by publish_output or discard_output
 * @return        empty, or what is wrong; then nothing is left open
 */
std::string open_output(const std::string &target, TOLL_OUTPUT *output);

/**
 * Puts the finished file in the target's place, and closes the output.
 *
 * @return  empty, or what is wrong; then the target is as it was before
 */
std::string publish_output(TOLL_OUTPUT *output);

/** Drops what was written, and closes the output. The target is as it was before. */
void discard_output(TOLL_OUTPUT *output);

/**
 * Tells whether two paths lead to one existing file.
 *
 * @param a  path of the host
 * @param b  path of the host
 * @return   true if both exist and are the same file
 */
bool same_file(const std::string &a, const std::string &b);
