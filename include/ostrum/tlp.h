/*
 * Modules and sections of TOLL source: reading a source file, cutting it into sections, parsing them,
 * conditional statements and the use of other modules.
 */
#ifndef OSTRUM_TLP_H
#define OSTRUM_TLP_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** Types of sections, which are classes of functions too. */
enum {
    TLP_SECTION_HEADER,
    TLP_SECTION_FUNCTION,
    TLP_SECTION_TREE,
    TLP_SECTION_CONNECTOR,
    TLP_SECTION_HELPSCREEN,
    TLP_SECTION_PICTURE,
    TLP_SECTION_SYSCALL,
    TLP_SECTION_WAVEFORM,
    TLP_SECTION_COMPONENT,
    TLP_SECTION_CONVERTER,
    TLP_SECTION_TYPE_COUNT
};

/** How much a read does. */
enum {
    TLP_READ_ALL,      /* parse each statement as it is read */
    TLP_READ_PUBLIC,   /* the same, up to PRIVATE */
    TLP_READ_SECTIONS, /* file the statements into sections, parse nothing */
    TLP_READ_MODE_COUNT
};

/** Status of a read or parse. */
enum {
    TLP_STATUS_SUCCESSFUL,
    TLP_STATUS_WARNINGS,
    TLP_STATUS_ERRORS,
    TLP_STATUS_FATAL,
    TLP_STATUS_NO_PRIVATE_FUNCTIONS,
    TLP_STATUS_UNCOMPILED,
    TLP_STATUS_NOT_OPENED,
    TLP_STATUS_COUNT
};

/** Flags of a module. */
enum {
    TLP_FLAG_PRINT_SCOPES = 0x0001,
    TLP_FLAG_PRIVATE_SYMBOLS = 0x0004,
    TLP_FLAG_PROGRESS = 0x0010,
    TLP_FLAG_PRINT_MESSAGES = 0x0040,
    TLP_FLAG_SECTION_LINES = 0x0080, /* a new section restarts the running line number */
    TLP_FLAG_ECHO = 0x0100,
    TLP_FLAG_STRICT = 0x0400,
    TLP_FLAG_NO_ERROR_LIMIT = 0x0800,
    TLP_FLAG_LIST_SECTIONS = 0x1000,
    TLP_FLAG_LIST_STATEMENTS = 0x2000,
    TLP_FLAG_POSSIBLE_ASSIGNMENT = 0x4000
};

/** Where listings of blocks are written; set by TLP_SetModuleOut. */
extern OSTRUM_API FILE *TOLL_Output;

/**
 * Delivers the public portion of a module in place of its source.
 *
 * @param name     name of the file asked for
 * @param module   out: the module, from now on the library's; read only with result 0
 * @param context  the word given to TLP_SetExternalTLReader
 * @param parent   the module at the head of the tree of USES
 * @return         0 delivered; else a status, and the source is read
 */
typedef int32_t (*TLP_READER)(const char *name, TLP_MODULE **module, void *context,
                              TLP_MODULE *parent);

/**
 * Judges a module after its read for USES.
 *
 * @param name          its name as the USES statement has it, in upper case
 * @param context       the word given to TLP_SetExternalDTypeUsesChecker
 * @param private_flag  nonzero if the module at the head is in its private portion
 * @return              nonzero if it does not go with the others
 */
typedef int32_t (*TLP_USES_CHECKER)(const char *name, void *context, int32_t private_flag);

/**
 * Called for each statement of a section.
 *
 * @param context    the word given to TLP_AllStatements
 * @param statement  the statement
 * @return           ignored
 */
typedef int32_t (*TLP_STATEMENT_VISITOR)(void *context, TLT_STATEMENT *statement);

/**
 * Called for each section of a module.
 *
 * @param context  the word given to TLP_AllSections
 * @param name     name of the section
 * @param section  the section
 * @param type     its type
 * @return         ignored
 */
typedef int32_t (*TLP_SECTION_VISITOR)(void *context, const char *name, TLP_SECTION *section,
                                       int32_t type);

/**
 * Called for each module that a module names in USES.
 *
 * @param context  the word given to TLP_AllUsesModules
 * @param name     the name as written, in upper case
 * @param module   the used module
 * @return         0 stops the walk
 */
typedef int32_t (*TLP_MODULE_VISITOR)(void *context, const char *name, TLP_MODULE *module);

/** Starts the compiler's front end and all that it stands on, once in the process. */
OSTRUM_API void TLP_Initialise(void);

/** Releases what the front end built. All modules must be gone. It does not re-arm TLP_Initialise. */
OSTRUM_API void TLP_CleanUp(void);

/**
 * Reads a module as TLP_ReadModule2 does, without defines.
 *
 * @param statement  as with TLP_ReadModule2
 * @param name       as with TLP_ReadModule2
 * @param module     as with TLP_ReadModule2
 * @param output     as with TLP_ReadModule2
 * @param flags      as with TLP_ReadModule2
 * @param mode       as with TLP_ReadModule2
 * @param parent     as with TLP_ReadModule2
 * @return           as with TLP_ReadModule2
 */
OSTRUM_API int32_t TLP_ReadModule(TLT_STATEMENT *statement, const char *name, TLP_MODULE **module,
                                  FILE *output, uint32_t flags, int32_t mode, TLP_MODULE *parent);

/**
 * Reads a source file into a new module.
 *
 * @param statement  the statement that wants it, for messages; null at top level
 * @param name       file name; tried as given and in lower case, as named and through TollInclude, and
 *                   then with the extension "tl"
 * @param module     out: the module, the caller's, who releases it with TLP_DelModule; null with a
 *                   status of 3 or more
 * @param output     where listings and messages go
 * @param flags      TLP_FLAG_ bits
 * @param mode       read mode, 0 to 2
 * @param parent     the module at the head of the tree of USES; null at top level
 * @param defines    names that #IFDEF takes as defined, separated by commas; null for none
 * @return           0 to 3: worst result; other statuses come from an external reader alone
 */
OSTRUM_API int32_t TLP_ReadModule2(TLT_STATEMENT *statement, const char *name, TLP_MODULE **module,
                                   FILE *output, uint32_t flags, int32_t mode, TLP_MODULE *parent,
                                   const char *defines);

/**
 * Parses the statements of a section, once more if need be. A HEADER drops all names of the module
 * first.
 *
 * @param module   the module
 * @param section  one of its sections
 * @return         status of the section, 0 to 3
 */
OSTRUM_API int32_t TLP_ParseSection(TLP_MODULE *module, TLP_SECTION *section);

/**
 * Installs the reader that read mode 1 asks before it looks for source.
 *
 * @param context  handed to the reader
 * @param reader   the reader; null for none
 */
OSTRUM_API void TLP_SetExternalTLReader(void *context, TLP_READER reader);

/**
 * Installs the checker that is called after each read for USES.
 *
 * @param context  handed to the checker
 * @param checker  the checker; null for none
 */
OSTRUM_API void TLP_SetExternalDTypeUsesChecker(void *context, TLP_USES_CHECKER checker);

/**
 * Makes an empty module.
 *
 * @param name    not kept
 * @param parent  the module at the head of the tree of USES; null if this is to be one
 * @return        the module; the caller releases it with TLP_DelModule
 */
OSTRUM_API TLP_MODULE *TLP_NewModule(const char *name, TLP_MODULE *parent);

/**
 * Frees a module with its sections, names and used modules.
 *
 * @param module  the module; null does nothing
 */
OSTRUM_API void TLP_DelModule(TLP_MODULE *module);

/**
 * @param module  the module
 * @return        its name in upper case, the module's
 */
OSTRUM_API const char *TLP_ModuleName(TLP_MODULE *module);

/**
 * @param module  the module
 * @param name    its new name, stored in upper case and cut to 31 characters
 */
OSTRUM_API void TLP_SetModuleName(TLP_MODULE *module, const char *name);

/**
 * @param module  the module
 * @return        base name and extension of its source file, the module's
 */
OSTRUM_API const char *TLP_ModuleSourceFile(TLP_MODULE *module);

/**
 * @param module  the module
 * @return        its TLP_FLAG_ bits
 */
OSTRUM_API uint32_t TLP_ModuleFlags(TLP_MODULE *module);

/**
 * @param module  the module
 * @param flags   TLP_FLAG_ bits
 */
OSTRUM_API void TLP_SetModuleFlags(TLP_MODULE *module, uint32_t flags);

/**
 * @param module  the module
 * @return        token code of its first keyword: TLT_TOKEN_MODULE or TLT_TOKEN_BODY
 */
OSTRUM_API int32_t TLP_ModuleSourceType(TLP_MODULE *module);

/**
 * Sets the output of a module, and TOLL_Output.
 *
 * @param module  the module
 * @param output  where its listings and messages go
 */
OSTRUM_API void TLP_SetModuleOut(TLP_MODULE *module, FILE *output);

/**
 * @param module  the module; may be null
 * @return        the domain of its data types; null for a null module
 */
OSTRUM_API TLI_DOMAIN *TLP_DataTypeDomain(TLP_MODULE *module);

/**
 * Sets the domain of a module's data types; the one before is not released.
 *
 * @param module  the module
 * @param domain  the domain, from now on the module's
 */
OSTRUM_API void TLP_SetDataTypeDomain(TLP_MODULE *module, TLI_DOMAIN *domain);

/**
 * @param module  the module
 * @return        the domain of its names; null before a read
 */
OSTRUM_API TLI_DOMAIN *TLP_ModuleDomain(TLP_MODULE *module);

/**
 * @param module  the module
 * @return        the scope GLOBALS; null before a read
 */
OSTRUM_API TLI_SCOPE *TLP_ModuleGlobals(TLP_MODULE *module);

/**
 * @param module  the module
 * @return        the scope STATICS; null before PRIVATE was parsed
 */
OSTRUM_API TLI_SCOPE *TLP_ModuleStatics(TLP_MODULE *module);

/**
 * @param module  the module
 * @return        syscall registry of the module at the head of its tree
 */
OSTRUM_API EEP_MODULE *TLP_SyscallData(TLP_MODULE *module);

/**
 * @param status  status of a read or parse
 * @return        its text; for a number outside 0 to 6 a text that the next such call overwrites
 */
OSTRUM_API const char *TLP_Message(int32_t status);

/**
 * @param module              the module
 * @param source_line_number  line of the source file
 * @return                    chars of the first statement of the current section with that line; an
 *                            empty text if there is none
 */
OSTRUM_API const char *TLP_GetSourceFromLineNumber(TLP_MODULE *module, int32_t source_line_number);

/**
 * Raises a warning that a module gives once, unless it is strict.
 *
 * @param module     the module
 * @param statement  where
 * @param text       the warning
 */
OSTRUM_API void TLP_StrictWarning(TLP_MODULE *module, TLT_STATEMENT *statement, const char *text);

/**
 * @param module  the module
 * @return        nonzero if "Possible unintended assignment" is to be reported, else 0
 */
OSTRUM_API int32_t TLP_GetPossUnintendAssignInfo(TLP_MODULE *module);

/**
 * Makes a section that belongs to no module yet.
 *
 * @param type  its type, 0 to 9
 * @param name  its name, cut to 31 characters
 * @return      the section; released by its module or with TLP_DelSection
 */
OSTRUM_API TLP_SECTION *TLP_NewSection(int32_t type, const char *name);

/**
 * Appends a section to a module, which owns it from now on.
 *
 * @param module   the module
 * @param section  the section
 */
OSTRUM_API void TLP_LinkSection(TLP_MODULE *module, TLP_SECTION *section);

/**
 * Makes a module forget its sections without deleting them.
 *
 * @param module  the module
 */
OSTRUM_API void TLP_DelSectionLink(TLP_MODULE *module);

/**
 * Deletes a section with its statements, and takes it out of the module.
 *
 * @param module   the module, whose identifier of the section's function goes first; null for none
 * @param section  the section; null does nothing
 */
OSTRUM_API void TLP_DelSection(TLP_MODULE *module, TLP_SECTION *section);

/**
 * Deletes the function that a section defines from the module's names.
 *
 * @param module   the module
 * @param section  the section
 */
OSTRUM_API void TLP_DelSectionIdentifier(TLP_MODULE *module, TLP_SECTION *section);

/**
 * @param module   the module
 * @param section  the section
 * @return         the identifier of the section's name; null if there is none
 */
OSTRUM_API TLI_IDENTIFIER *TLP_GetSectionIdentifier(TLP_MODULE *module, TLP_SECTION *section);

/**
 * @param module   the module
 * @param section  the section
 * @return         the block of the section's function; null if there is none
 */
OSTRUM_API TLS_BLOCK *TLP_SectionBlock(TLP_MODULE *module, TLP_SECTION *section);

/**
 * Pushes the scope of a section's function on the module's domain.
 *
 * @param module   the module
 * @param section  the section; without a function nothing is done
 */
OSTRUM_API void TLP_PushScope(TLP_MODULE *module, TLP_SECTION *section);

/**
 * Takes the scope of a section's function off the module's domain.
 *
 * @param module   the module
 * @param section  the section; without a function nothing is done
 */
OSTRUM_API void TLP_PopScope(TLP_MODULE *module, TLP_SECTION *section);

/**
 * Appends a statement to a section, which owns it from now on.
 *
 * @param section    the section
 * @param statement  the statement
 */
OSTRUM_API void TLP_AddStatement(TLP_SECTION *section, TLT_STATEMENT *statement);

/**
 * Visits the statements of a section in order.
 *
 * @param section  the section
 * @param visitor  called for each statement
 * @param context  handed to the visitor
 */
OSTRUM_API void TLP_AllStatements(TLP_SECTION *section, TLP_STATEMENT_VISITOR visitor,
                                  void *context);

/**
 * Visits the sections of a module in order.
 *
 * @param module   the module
 * @param visitor  called for each section
 * @param context  handed to the visitor
 */
OSTRUM_API void TLP_AllSections(TLP_MODULE *module, TLP_SECTION_VISITOR visitor, void *context);

/**
 * @param module  the module
 * @param name    name of a section, compared exactly
 * @return        the last section of that name; null if there is none
 */
OSTRUM_API TLP_SECTION *TLP_FindSection(TLP_MODULE *module, const char *name);

/**
 * @param section  the section
 * @return         its name, the section's
 */
OSTRUM_API const char *TLP_SectionName(TLP_SECTION *section);

/**
 * @param section  the section
 * @return         its type, 0 to 9; -1 for a DATA section of an unknown type word
 */
OSTRUM_API int32_t TLP_SectionType(TLP_SECTION *section);

/**
 * @param section  the section
 * @return         worst result of its last parse, 0 to 3
 */
OSTRUM_API int32_t TLP_SectionState(TLP_SECTION *section);

/**
 * @param type  type of a section
 * @return      its name; "<Unknown section type>" outside 0 to 9
 */
OSTRUM_API const char *TLP_SectionTypeName(int32_t type);

/**
 * @param section  the section
 * @return         running line number of its first statement, 0 if it has none
 */
OSTRUM_API int32_t TLP_FirstStatementLineNumber(TLP_SECTION *section);

/**
 * @param section  the section
 * @return         running line number of its last statement, 0 if it has none
 */
OSTRUM_API int32_t TLP_LastStatementLineNumber(TLP_SECTION *section);

/**
 * Lists a section; with TLP_FLAG_LIST_STATEMENTS its statements too.
 *
 * @param stream   where to
 * @param module   its module
 * @param section  the section
 * @param indent   columns to indent by
 */
OSTRUM_API void TLP_PrintOneSection(FILE *stream, TLP_MODULE *module, TLP_SECTION *section,
                                    int32_t indent);

/**
 * Lists all sections of a module.
 *
 * @param stream  where to
 * @param module  the module
 */
OSTRUM_API void TLP_PrintSections(FILE *stream, TLP_MODULE *module);

/**
 * Finds what a name means in a module: in its own names, the root's, and then the used modules'.
 * Raises "'%s' - Unknown identifier" or "'%s' - Wrong class of identifier".
 *
 * @param module            the module
 * @param statement         where an error is raised
 * @param name              the name, qualified or not
 * @param identifier_class  class wanted, 0 for any
 * @return                  the identifier; null after an error
 */
OSTRUM_API TLI_IDENTIFIER *TLP_FindIdentifier(TLP_MODULE *module, TLT_STATEMENT *statement,
                                              const char *name, int32_t identifier_class);

/**
 * Sets the names that #IFDEF takes as defined. An eleventh raises the error "Too many pre-processor
 * definition".
 *
 * @param module  the module
 * @param text    names separated by commas, case ignored, what stands up to a '=' is dropped; null
 *                leaves the names alone but passes none on to used modules
 */
OSTRUM_API void TLP_SetConditional(TLP_MODULE *module, const char *text);

/**
 * Makes a module that was read visible in the module at the head of its tree, which owns it from then on.
 *
 * @param module  the module
 */
OSTRUM_API void TLP_UseIncludedModule(TLP_MODULE *module);

/**
 * Visits the modules that a module names in USES, newest first.
 *
 * @param module   the module
 * @param visitor  called for each, until it gives 0
 * @param context  handed to the visitor
 * @return         the last answer; 1 if there are none
 */
OSTRUM_API int32_t TLP_AllUsesModules(TLP_MODULE *module, TLP_MODULE_VISITOR visitor,
                                      void *context);

OSTRUM_END

#endif
