#pragma once

#include <ostrum/extra.h>
#include <ostrum/tlp.h>

enum {
    TLP_NAME_SIZE = 32,     // bytes of a name, terminator included
    TLP_DEFINE_COUNT = 10,  // names that #IFDEF can know
    TLP_DEFINES_SIZE = 320, // bytes of the client's text of defines
    TLP_DEPTH_COUNT = 10,   // levels of #IFDEF that have a flag
};

/** Functions whose declaration is open, top first. */
struct TLP_FUNC {
    TLI_IDENTIFIER *function;
    TLP_FUNC *next;
};

/** Modules read for USES, newest first. */
struct TLP_USED_MODULE {
    TLP_MODULE *module;
    TLP_USED_MODULE *next;
};

struct TLP_SOURCE; // a file being read, private to tlp_source.cpp
struct TLT_SOURCE_NAME;

/** The rule for the rest of a statement and for those that follow. */
typedef void (*TLP_HANDLER)(TLP_MODULE *module, TLT_STATEMENT *statement);

/** A run of statements that can be parsed by itself. Owns its statements. */
struct TLP_SECTION {
    int32_t status; // worst result of the last parse, 0 to 3
    int32_t type;   // TLP_SECTION_ value, -1 for an unknown word after DATA
    char name[TLP_NAME_SIZE];
    TLT_STATEMENT **statements; // in order
    size_t statement_count;
    size_t statement_size; // bytes that the array has room for
    bool goes_back;        // a statement was added with a source line below that of the one before
    TLP_SECTION *next;
};

struct TLP_MODULE {
    char name[TLP_NAME_SIZE]; // upper case
    char source_file[TLP_NAME_SIZE];
    uint32_t flags;
    int32_t read_mode;
    int32_t source_type; // TLT_TOKEN_MODULE or TLT_TOKEN_BODY
    FILE *output;
    int32_t status;    // worst result so far
    TLP_MODULE *root;  // head of the tree of USES, the module itself without a parent
    TLP_SOURCE *files; // being read, top first
    int32_t running_line;
    int32_t keyword;       // token code of the declaration keyword in force
    TLP_HANDLER handler;   // null: no rule in force
    int32_t private_flag;  // nonzero in the private portion
    TLP_SECTION *sections; // in file order
    TLP_SECTION *last_section;
    TLP_SECTION *current_section;
    TLI_DOMAIN *data_type_domain; // the root's, for a used module
    TLI_DOMAIN *domain;
    TLI_SCOPE *globals;
    TLI_SCOPE *statics; // null before PRIVATE
    TLP_FUNC *open_functions;
    int32_t function_kind; // of the next function declared
    HS_DOMAIN *suppressed_warnings;
    TLP_USED_MODULE *used_modules; // on the root, newest first; owns the modules
    TLP_USED_MODULE
    *lost_modules;            // on the root: owned like them, but hidden by one of the same name
    HS_DOMAIN *used_names;    // on the root: name of each module on used_modules, to the module
    HS_DOMAIN *used_table;    // this module's own USES: name to module
    int32_t runtime_mismatch; // on the root
    int32_t else_seen;
    int32_t conditional_depth;           // may pass TLP_DEPTH_COUNT inside a skipped branch
    int32_t skip_flags[TLP_DEPTH_COUNT]; // of depth 1 and on
    char defines_text[TLP_DEFINES_SIZE]; // upper case, for modules read for USES
    char define_names[TLP_DEFINE_COUNT][TLP_NAME_SIZE];
    int32_t define_count;
    TLI_IDENTIFIER *open_record;   // its scope is on the domain; null for none
    EEP_MODULE *syscall_data;      // on the root
    TLP_MODULE *reading;           // on the root: innermost module whose read is under way
    TLP_MODULE *reading_outer;     // the one around it
    int32_t reading_depth;         // on the root: how many there are
    char file_name[TLP_NAME_SIZE]; // base name of the source file, upper case
    TLP_SECTION *hidden_sections;  // of a delivered module: owned, but not shown
    TLT_STATEMENT **dropped; // parsed MODULE and BODY statements: in no section, but still named
    size_t dropped_count;
    size_t dropped_size; // bytes that the array has room for
};

/**
 * Parses one statement by the module's state.
 *
 * @param module     the module
 * @param statement  the statement, reset by this
 * @return           0 to go on, 3 to stop
 */
int32_t TLP_ParseStatement(TLP_MODULE *module, TLT_STATEMENT *statement);

/**
 * Closes the function declared last and takes its scope off the module's domain.
 *
 * @param module  the module; without an open function nothing is done
 */
void TLP_CloseFunction(TLP_MODULE *module);

/**
 * Does a statement that begins with '#', which is its next token.
 *
 * @param module     the module
 * @param statement  the statement
 */
void TLP_Preprocess(TLP_MODULE *module, TLT_STATEMENT *statement);

/**
 * @param module  the module
 * @return        nonzero if statements are to be ignored
 */
int32_t TLP_IsSkipping(const TLP_MODULE *module);

/**
 * The rule of USES: reads the modules that the rest of the statement names.
 *
 * @param module     the module
 * @param statement  the statement, behind the keyword if it has one
 */
void TLP_UsesRule(TLP_MODULE *module, TLT_STATEMENT *statement);

/**
 * @param word  word behind DATA
 * @return      type of section that it names, case included; -1 for none
 */
int32_t TLP_FindSectionType(const char *word);

/**
 * Makes the module's domain with GLOBALS on it and the module's own name in that.
 *
 * @param module  the module, which has its name and no domain
 */
void TLP_MakeDomain(TLP_MODULE *module);

/**
 * Deletes the names of a module with its domain; functions are closed first.
 *
 * @param module  the module
 */
void TLP_DeleteDomain(TLP_MODULE *module);

/**
 * Deletes the modules read for USES, and what each of them is known by.
 *
 * @param module  the module
 */
void TLP_DeleteUsedModules(TLP_MODULE *module);

/**
 * Deletes the domain of a module's data types, if it has one.
 *
 * @param module  the module, which must not share it
 */
void TLP_DeleteDataTypes(TLP_MODULE *module);

/**
 * Closes the source files of a module.
 *
 * @param module  the module
 */
void TLP_CloseFiles(TLP_MODULE *module);

/**
 * Opens a source file on top of those being read, names the module after it and tells the hook.
 *
 * @param module          the module
 * @param name            name of the file, as given
 * @param is_main         nonzero to keep base name and extension as the module's source file
 * @return                0 opened; 3 after a message; 6 it cannot be opened
 */
int32_t TLP_OpenFile(TLP_MODULE *module, const char *name, int32_t is_main);

/**
 * Reads the next statement. The one that begins a body makes its section the current one.
 *
 * @param module  the module, with an open file
 * @return        the statement, the caller's; null at the end
 */
TLT_STATEMENT *TLP_ReadStatement(TLP_MODULE *module);

/**
 * Adds the messages of the current section to the status of section and module, and prints them if the
 * module's flags say so.
 *
 * @param module  the module
 */
void TLP_CollectMessages(TLP_MODULE *module);

/**
 * Appends a statement to a growing array.
 *
 * @param statements  in and out: the array
 * @param count       in and out: statements in it
 * @param size        in and out: bytes that it has room for
 * @param statement   the statement
 */
void TLP_AppendStatement(TLT_STATEMENT ***statements, size_t *count, size_t *size,
                         TLT_STATEMENT *statement);

/**
 * Finds a name as TLP_FindIdentifier does, of any class and without messages.
 *
 * @param module  the module
 * @param name    the name, qualified or not
 * @return        the identifier; null if there is none
 */
TLI_IDENTIFIER *TLP_LookUpIdentifier(TLP_MODULE *module, const char *name);
