/*
 * Module files by handle: one that maps an existing file, or one that builds a new file and writes it
 * when it is closed. Names are found through hash tables, types are numbered as they come.
 */
#ifndef OSTRUM_KOB_H
#define OSTRUM_KOB_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** Symbol classes. An address is an offset into the code. */
enum {
    KOB_GLOBAL,         /* value: address */
    KOB_EXTERNAL,       /* address of the 32-bit field to fill */
    KOB_TYPE,           /* number of the type */
    KOB_LOCAL,          /* address */
    KOB_ENTRY_POINT,    /* address */
    KOB_VALUE,          /* value of a constant */
    KOB_VALUEREF,       /* address of the 32-bit field to fill with a VALUE */
    KOB_CODE_VAR_START, /* start of a non-volatile area */
    KOB_CODE_VAR_END,   /* end of a non-volatile area */
    KOB_C_OVERLAY,
    KOB_COUNTRY,       /* the name is the country */
    KOB_SOURCE,        /* the name is a source file */
    KOB_C_OVERLAY_REF, /* the name is an overlay */
    KOB_SYSCALL,       /* number of the syscall */
    KOB_RTD_ENTRY_POINT,
    KOB_PCODE_DEF,
    KOB_EXTREF,  /* address of the reference */
    KOB_DLLNAME, /* number of the library */
    KOB_MSGDEF,
    KOB_MSGREF,
    KOB_EXTERNAL_PICTURE,
    KOB_CLSID,
    KOB_COMCALL,
    KOB_COMCALL_DEF,
    KOB_RTIME_DATA_REF,
    KOB_CLASS_COUNT
};

/** Result codes; KOB_Message gives their texts. */
enum {
    KOB_SUCCESSFUL,
    KOB_NOT_KOB,
    KOB_OUT_OF_DATE,
    KOB_FAILURE,
    KOB_SYMBOL_TOO_LONG,
    KOB_BAD_CHARACTERS,
    KOB_NAME_DECLARED,
    KOB_OPEN_FAILED,
    KOB_READ_FAILED,
    KOB_OLD_TOOL,
    KOB_RESULT_COUNT
};

/** Called with each symbol and its name. The result is ignored. */
typedef int32_t (*KOB_SYMBOL_VISITOR)(void *context, KOB_SYMBOL *symbol, const char *name);

/** Called with each static offset: bytes from the start of the code. The result is ignored. */
typedef int32_t (*KOB_OFFSET_VISITOR)(void *context, int32_t offset);

/** Prepares character classes, name tables, files and the layers below, the first time. */
OSTRUM_API void KOB_Initialise(void);

/**
 * Opens a module file for reading. A name that does not exist is tried with the extension "kob" in
 * place of its own, then along the directories of the symbol KobInclude. Every offset, count and
 * length of the file is checked, so that no later read leaves it.
 *
 * @param module     out: the handle, to be closed with KOB_CloseModule; left alone on failure
 * @param file_name  path, at most 119 characters
 * @return           0, or 7: no such file, no module of this version, or a damaged one
 */
OSTRUM_API int32_t KOB_OpenModule(KOB_MODULE **module, const char *file_name);

/**
 * Starts a module file named after itself. The file is made at once and stays empty until it is
 * closed.
 *
 * @param module        out: the handle; left alone on failure
 * @param file_name     path, at most 119 characters; takes the extension "kob" if it has none
 * @param tool          number of the tool, 0 to 16
 * @param tool_version  its version; cut at 31 characters
 * @param with_start    not 0: the first symbol is "$" and the module's name, of type START
 * @return              0, or 7 if the file cannot be made
 */
OSTRUM_API int32_t KOB_NewModule(KOB_MODULE **module, const char *file_name, int32_t tool,
                                 const char *tool_version, int32_t with_start);

/**
 * Starts a module file whose START symbol is "$" and a name of its own, cut at 31 characters.
 *
 * @param module        out: the handle; left alone on failure
 * @param file_name     path, at most 119 characters; takes the extension "kob" if it has none
 * @param tool          number of the tool, 0 to 16
 * @param tool_version  its version; cut at 31 characters
 * @param module_name   name for the START symbol; the header has the name of the file
 * @return              0, or 7 if the file cannot be made
 */
OSTRUM_API int32_t KOB_NewNameModule(KOB_MODULE **module, const char *file_name, int32_t tool,
                                     const char *tool_version, const char *module_name);

/**
 * Closes a module. One for writing is laid out and written; if that fails, or if the flags have bit
 * 0x002 (the module had errors), its file is deleted. After a close without free the handle can only
 * be closed again, with free; for one for writing, symbols and frames may still be read.
 *
 * @param module  the handle
 * @param flags   module flags, joined with those that the symbols brought
 * @param free    not 0: frees the handle with all its symbols and frames
 * @return        0, or 3 if the file could not be written
 */
OSTRUM_API int32_t KOB_CloseModule(KOB_MODULE *module, uint32_t flags, int32_t free);

/**
 * Adds a symbol. A 257th type ends the process through SM_FatalError.
 *
 * @param module        handle for writing
 * @param symbol_class  class, 0 to 24
 * @param name          at most 31 characters that KOB_BadSymbolName finds good
 * @param type_name     name of its type
 * @param value         what the class says
 * @return              0, 4 name too long, 5 bad characters in it
 */
OSTRUM_API int32_t KOB_Symbol(KOB_MODULE *module, int32_t symbol_class, const char *name,
                              const char *type_name, int32_t value);

/**
 * Adds code to a module for writing.
 *
 * @param module  handle for writing
 * @param bytes   the code; may be null if count is 0
 * @param count   bytes, 0 or more
 * @return        offset in the code at which it landed
 */
OSTRUM_API int32_t KOB_Code(KOB_MODULE *module, const uint8_t *bytes, int32_t count);

/** Sets the size of the module's static data, bytes. */
OSTRUM_API void KOB_SetStaticSize(KOB_MODULE *module, int32_t size);

/** Adds a static offset: the place, in the code, of a 32-bit reference to static data. */
OSTRUM_API void KOB_StaticData(KOB_MODULE *module, int32_t offset);

/**
 * Reads a piece of the code.
 *
 * @param module       the handle
 * @param destination  out, count bytes; left alone unless the result is 0
 * @param offset       bytes from the start of the code
 * @param count        bytes
 * @return             0, or 8 if the piece is not wholly inside the code
 */
OSTRUM_API int32_t KOB_ReadCode(KOB_MODULE *module, uint8_t *destination, int32_t offset,
                                int32_t count);

/**
 * Finds a global symbol.
 *
 * @param module     the handle
 * @param name       its name
 * @param type_name  name of its type
 * @return           the symbol, the module's; null if there is none or its type is another
 */
OSTRUM_API KOB_SYMBOL *KOB_FindGlobal(KOB_MODULE *module, const char *name, const char *type_name);

/**
 * Visits all symbols but those of class TYPE, the non-volatile areas last.
 *
 * @param module   the handle
 * @param visitor  called with the context, each symbol and its name
 * @param context  the visitor's
 */
OSTRUM_API void KOB_AllSymbols(KOB_MODULE *module, KOB_SYMBOL_VISITOR visitor, void *context);

/**
 * Visits the static offsets.
 *
 * @param module   the handle
 * @param visitor  called with the context and each offset
 * @param context  the visitor's
 */
OSTRUM_API void KOB_AllStaticOffsets(KOB_MODULE *module, KOB_OFFSET_VISITOR visitor, void *context);

/** @return  1 if the module has a type of that name, else 0 */
OSTRUM_API int32_t KOB_TypeExists(KOB_MODULE *module, const char *type_name);

/**
 * Finds the source file of a module in a file of one or several; only on a handle for reading.
 *
 * @param module       the handle
 * @param module_name  name of the module, without "$"
 * @return             name of its source file, the module's, or null
 */
OSTRUM_API const char *KOB_GetSourceFile(KOB_MODULE *module, const char *module_name);

/**
 * Sets the country of a module for writing, the first time.
 *
 * @param module  handle for writing
 * @param name    the country
 * @return        the symbol of the country that was set first
 */
OSTRUM_API KOB_SYMBOL *KOB_SetCountry(KOB_MODULE *module, const char *name);

/** @return  the module's country, or null */
OSTRUM_API const char *KOB_Country(KOB_MODULE *module);

/** @return  the mapped file; null on a handle for writing or closed */
OSTRUM_API uint8_t *KOB_GetRawModule(KOB_MODULE *module);

/** @return  the module's debug record, the module's */
OSTRUM_API KOBD_DEBUG *KOB_DebugHandle(KOB_MODULE *module);

/** @return  first byte of the code; adding code moves it */
OSTRUM_API uint8_t *KOB_CodeAddress(KOB_MODULE *module);

/**
 * Judges the name of a symbol: letters, digits and "$_./-", the part before the first "." not
 * starting with a digit. An empty name is good.
 *
 * @param name  the name
 * @return      0 good, 1 bad
 */
OSTRUM_API int32_t KOB_BadSymbolName(const char *name);

/** @return  name of a symbol class; "<UNKNOWN CLASS>" outside 0 to 24 */
OSTRUM_API const char *KOB_ClassName(int32_t symbol_class);

/**
 * Gives the flags of a symbol class: 0x01 a name that is entered among the globals when written,
 * 0x02 a reference that linking must resolve, 0x04 the same as 0x01 when read. Other bits are the
 * linker's.
 *
 * @param symbol_class  class
 * @return              its flags; 0 outside 0 to 24
 */
OSTRUM_API uint32_t KOB_ClassFlags(int32_t symbol_class);

/** @return  text of a result code; a fixed text outside 0 to 9 */
OSTRUM_API const char *KOB_Message(int32_t result);

/** @return  name in the header of a KOB_MODULE, or of a KOB_SYMBOL */
OSTRUM_API const char *KOB_Name(const void *handle);

/** @return  name of a symbol */
OSTRUM_API const char *KOB_SymbolName(const KOB_SYMBOL *symbol);

/** @return  class of a symbol, 0 to 255 */
OSTRUM_API int32_t KOB_SymbolClass(const KOB_SYMBOL *symbol);

/** @return  name of a symbol's type; empty if its module does not declare it */
OSTRUM_API const char *KOB_SymbolType(const KOB_SYMBOL *symbol);

/** @return  value of a symbol */
OSTRUM_API int32_t KOB_SymbolValue(const KOB_SYMBOL *symbol);

/** @return  time of creation, seconds since 1970 */
OSTRUM_API uint32_t KOB_Timestamp(const KOB_MODULE *module);

/** @return  number of the tool that made the module */
OSTRUM_API int32_t KOB_Tool(const KOB_MODULE *module);

/** @return  name of that tool; "<UNKNOWN TOOL>" for a number that no tool has */
OSTRUM_API const char *KOB_ToolName(const KOB_MODULE *module);

/** @return  version of that tool */
OSTRUM_API const char *KOB_ToolVersion(const KOB_MODULE *module);

/** @return  flags in the header; set when a module for writing is closed */
OSTRUM_API uint32_t KOB_Flags(const KOB_MODULE *module);

/** @return  bytes of the code */
OSTRUM_API int32_t KOB_CodeSize(const KOB_MODULE *module);

/** @return  bytes of the module's static data */
OSTRUM_API int32_t KOB_StaticSize(const KOB_MODULE *module);

/** @return  bytes of the static offset table */
OSTRUM_API int32_t KOB_StaticOffsetSize(const KOB_MODULE *module);

/** @return  bytes of the symbols laid into the module */
OSTRUM_API int32_t KOB_SymbolTableSize(const KOB_MODULE *module);

/** @return  bytes of the module as laid out */
OSTRUM_API int32_t KOB_ModuleSize(const KOB_MODULE *module);

OSTRUM_END

#endif
