/*
 * The generators: they turn a parsed module into the files of a target.
 */
#ifndef OSTRUM_TLCG_H
#define OSTRUM_TLCG_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** Readies the compiler and all its targets, the first time. */
OSTRUM_API void TLCG_Initialise(void);

/**
 * Generates a module file. Faults of generation are fatal compiler messages: if any message of the
 * levels error and fatal has been counted since the counters were last reset, the file is deleted
 * and the result is 0 all the same, so look at TLT_GetCounters.
 * @param module parsed module
 * @param flags compile flags
 * @param file_name name of the module file; without an extension it takes "kob"
 * @param tool number of the tool that makes it
 * @param tool_version version text of the tool, cut at 31 characters
 * @return 0; 100 + the code of the module format if the file cannot be made or written, and then
 *         no file is left; text through TLCG_Message
 */
OSTRUM_API int32_t TLCG_GenerateKOBCode(TLP_MODULE *module, uint32_t flags, const char *file_name,
                                        int32_t tool, const char *tool_version);

/**
 * Generates C source: a header with what other modules see, and a C file with the code, in the current
 * directory under the base name of the file name. What C cannot express is left in the text as a
 * comment and counted; TLC_TextErrors tells how often.
 * @param module parsed module
 * @param flags compile flags
 * @param file_name its directory and extension are dropped
 * @param tool number of the tool that makes it
 * @param tool_version version text of the tool
 * @return 0; 1 if a file cannot be opened or written: a header that was finished by then stays; text
 *         through TLCG_Message
 */
OSTRUM_API int32_t TLCG_GenerateCCode(TLP_MODULE *module, uint32_t flags, const char *file_name,
                                      int32_t tool, const char *tool_version);

/**
 * Generates Java source: one class, in one file. What Java cannot express is left in the text as a
 * comment and counted; TLC_TextErrors tells how often.
 * @param module parsed module
 * @param flags compile flags
 * @param file_name the file; without an extension it takes "java". Its base name is the class's name; in
 *        a directory halvorn/libs the class belongs to the package halvorn.libs
 * @param tool number of the tool that makes it
 * @param tool_version version text of the tool
 * @return 0; 2 if the file cannot be opened or written; text through TLCG_Message
 */
OSTRUM_API int32_t TLCG_GenerateJavaCode(TLP_MODULE *module, uint32_t flags, const char *file_name,
                                         int32_t tool, const char *tool_version);

/**
 * @param result of a generator
 * @return its text, static
 */
OSTRUM_API const char *TLCG_Message(int32_t result);

OSTRUM_END

#endif
