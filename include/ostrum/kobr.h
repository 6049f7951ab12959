/*
 * The byte layout of a module file, version 25, on one contiguous block: the build buffer while a
 * module is written, the mapped file while one is read. Numbers are big-endian at any alignment.
 *
 * These operations trust the block. KOB_OpenModule checks a file as a whole before it hands one out.
 */
#ifndef OSTRUM_KOBR_H
#define OSTRUM_KOBR_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** Called with each static offset: bytes from the start of the code. The result is ignored. */
typedef int32_t (*KOBR_OFFSET_VISITOR)(void *context, int32_t offset);

/** Called with each raw symbol, frame or entry and its name. The result is ignored. */
typedef int32_t (*KOBR_RECORD_VISITOR)(void *context, uint8_t *record, const char *name);

/** Does nothing. */
OSTRUM_API void KOBR_Initialise(void);

/** @return  the version of the format, 25 */
OSTRUM_API int32_t KOBR_GetKOBVersion(void);

/** @return  bytes of the header, 162 */
OSTRUM_API int32_t KOBR_HeaderSize(void);

/** @return  the module itself: the header stands first */
OSTRUM_API uint8_t *KOBR_HeaderStart(uint8_t *module);

/**
 * Checks magic and version of a block of at least 8 bytes.
 *
 * @param module  start of the block
 * @return        0 good, 1 bad magic, 2 version below 25, 9 version above 25
 */
OSTRUM_API int32_t KOBR_CheckModule(const uint8_t *module);

/**
 * Checks a block and, if it is good, makes it the block of a handle.
 *
 * @param handle  the handle; borrows the block
 * @param module  start of the block
 * @return        the result of KOBR_CheckModule
 */
OSTRUM_API int32_t KOBR_SetUpModule(KOB_MODULE *handle, uint8_t *module);

/** @return  time of creation, seconds since 1970 */
OSTRUM_API uint32_t KOBR_Timestamp(const uint8_t *module);

/** @return  number of the tool that made the module, -32,768 to 32,767 */
OSTRUM_API int32_t KOBR_Tool(const uint8_t *module);

/** @return  version of that tool, in the header */
OSTRUM_API const char *KOBR_ToolVersion(const uint8_t *module);

/** @return  module flags */
OSTRUM_API uint32_t KOBR_Flags(const uint8_t *module);

/** @return  first byte of the code; the header if there is none */
OSTRUM_API uint8_t *KOBR_CodeStart(uint8_t *module);

/** @return  bytes of the code; one more than was put if that was odd and a table follows */
OSTRUM_API int32_t KOBR_CodeSize(const uint8_t *module);

/**
 * Copies a piece of the code; nothing if the piece is not wholly inside it.
 *
 * @param module       the module
 * @param destination  out, count bytes
 * @param offset       bytes from the start of the code
 * @param count        bytes to copy
 */
OSTRUM_API void KOBR_ReadCode(const uint8_t *module, uint8_t *destination, int32_t offset,
                              int32_t count);

/** @return  bytes of the module's static data, which is not in the file */
OSTRUM_API int32_t KOBR_StaticSize(const uint8_t *module);

/**
 * Visits the static offsets, in table order.
 *
 * @param module   the module
 * @param visitor  called with the context and each offset
 * @param context  the visitor's
 */
OSTRUM_API void KOBR_AllStaticOffsets(const uint8_t *module, KOBR_OFFSET_VISITOR visitor,
                                      void *context);

/**
 * Visits the symbols, in table order.
 *
 * @param module   the module
 * @param visitor  called with the context, each symbol and its name
 * @param context  the visitor's
 */
OSTRUM_API void KOBR_AllSymbols(uint8_t *module, KOBR_RECORD_VISITOR visitor, void *context);

/**
 * Finds a symbol by a search through the table.
 *
 * @param module  the module
 * @param name    exact name
 * @return        the first symbol of that name, or null
 */
OSTRUM_API uint8_t *KOBR_FindSymbol(uint8_t *module, const char *name);

/** @return  the first symbol; the header if there is none */
OSTRUM_API uint8_t *KOBR_SymbolTableStart(uint8_t *module);

/** @return  bytes of all symbols together */
OSTRUM_API int32_t KOBR_SymbolTableSize(const uint8_t *module);

/** @return  name of a module or a symbol; both hold it at the same place */
OSTRUM_API const char *KOBR_Name(const uint8_t *record);

/** @return  name of a symbol */
OSTRUM_API const char *KOBR_SymbolName(const uint8_t *symbol);

/** @return  class of a symbol, 0 to 255 */
OSTRUM_API int32_t KOBR_SymbolClass(const uint8_t *symbol);

/** @return  number of a symbol's type, 0 to 65,535 */
OSTRUM_API int32_t KOBR_SymbolType(const uint8_t *symbol);

/** @return  value of a symbol */
OSTRUM_API int32_t KOBR_SymbolValue(const uint8_t *symbol);

/**
 * Visits the frames, in table order.
 *
 * @param module   the module
 * @param visitor  called with the context, each frame and its name
 * @param context  the visitor's
 */
OSTRUM_API void KOBR_AllFrames(uint8_t *module, KOBR_RECORD_VISITOR visitor, void *context);

/** @return  name of a frame */
OSTRUM_API const char *KOBR_FrameName(const uint8_t *frame);

/** @return  class of a frame */
OSTRUM_API int32_t KOBR_FrameClass(const uint8_t *frame);

/** @return  size of a frame, bytes */
OSTRUM_API int32_t KOBR_FrameSize(const uint8_t *frame);

/** @return  source line of a frame */
OSTRUM_API int32_t KOBR_FrameLineNumber(const uint8_t *frame);

/**
 * Visits the entries of a frame in a table.
 *
 * @param frame    the frame, followed by its entries
 * @param visitor  called with the context, each entry and its name
 * @param context  the visitor's
 */
OSTRUM_API void KOBR_AllEntries(uint8_t *frame, KOBR_RECORD_VISITOR visitor, void *context);

/** @return  name of an entry */
OSTRUM_API const char *KOBR_EntryName(const uint8_t *entry);

/** @return  type name of an entry */
OSTRUM_API const char *KOBR_EntryType(const uint8_t *entry);

/** @return  flags of an entry, as a signed 16-bit number */
OSTRUM_API int32_t KOBR_EntryFlags(const uint8_t *entry);

/** @return  dimension of an entry, 1 for a scalar */
OSTRUM_API int32_t KOBR_EntryDimension(const uint8_t *entry);

/** @return  offset of an entry in its frame, bytes */
OSTRUM_API int32_t KOBR_EntryOffset(const uint8_t *entry);

/** @return  bytes of the whole file, computed from the header and the tables */
OSTRUM_API int32_t KOBR_ModuleSize(const uint8_t *module);

/**
 * Makes a build buffer. The order of building is: static size, all code, all static offsets, all
 * symbols, all frames each followed by its entries, KOBR_CompleteModule.
 *
 * @param name          module name; cut at 31 characters
 * @param tool          number of the tool, 16 bits
 * @param tool_version  its version; cut at 31 characters
 * @param timestamp     time of creation, seconds since 1970
 * @return              the buffer, to be freed with KOBR_DeleteModule; what is put may move it
 */
OSTRUM_API uint8_t *KOBR_NewModule(const char *name, int32_t tool, const char *tool_version,
                                   uint32_t timestamp);

/**
 * Makes a symbol by itself.
 *
 * @param name          name; cut at 245 characters, the most that the record can hold
 * @param symbol_class  class, 0 to 255
 * @param type          number of its type, 0 to 65,535
 * @param value         value
 * @return              the symbol, to be freed with KOBR_DeleteSymbol
 */
OSTRUM_API uint8_t *KOBR_NewSymbol(const char *name, int32_t symbol_class, int32_t type,
                                   int32_t value);

/**
 * Makes a frame by itself, without entries. Numbers are held to 16 signed bits.
 *
 * @param name         name; cut at 31 characters
 * @param frame_class  class
 * @param size         bytes
 * @param line_number  source line
 * @return             the frame, to be freed with KOBR_DeleteFrame
 */
OSTRUM_API uint8_t *KOBR_NewFrame(const char *name, int32_t frame_class, int32_t size,
                                  int32_t line_number);

/**
 * Makes an entry by itself. Dimension and offset are held to 16 signed bits.
 *
 * @param name       name; cut at 31 characters
 * @param type_name  type name; cut at 31 characters
 * @param flags      flags, 16 bits
 * @param dimension  1 for a scalar
 * @param offset     bytes in its frame
 * @return           the entry, to be freed with KOBR_DeleteEntry
 */
OSTRUM_API uint8_t *KOBR_NewEntry(const char *name, const char *type_name, int32_t flags,
                                  int32_t dimension, int32_t offset);

/** Frees a build buffer; null does nothing. */
OSTRUM_API void KOBR_DeleteModule(uint8_t *module);

/** Frees a symbol of KOBR_NewSymbol; null does nothing. */
OSTRUM_API void KOBR_DeleteSymbol(uint8_t *symbol);

/** Frees a frame of KOBR_NewFrame; null does nothing. */
OSTRUM_API void KOBR_DeleteFrame(uint8_t *frame);

/** Frees an entry of KOBR_NewEntry; null does nothing. */
OSTRUM_API void KOBR_DeleteEntry(uint8_t *entry);

/** Sets the size of the module's static data, bytes. */
OSTRUM_API void KOBR_SetStaticSize(uint8_t *module, int32_t size);

/**
 * Appends code.
 *
 * @param module  address of the caller's module pointer, which may change
 * @param bytes   the code; may be null if count is 0
 * @param count   its size, bytes, 0 or more
 * @return        the code size before the call: where the bytes landed
 */
OSTRUM_API int32_t KOBR_PutCode(uint8_t **module, const uint8_t *bytes, int32_t count);

/** Appends a static offset; the module pointer may change. */
OSTRUM_API void KOBR_PutStaticOffset(uint8_t **module, int32_t offset);

/** Appends a copy of a symbol; the module pointer may change. */
OSTRUM_API void KOBR_PutSymbol(uint8_t **module, const uint8_t *symbol);

/** Appends a copy of a frame, which takes the entries put next; the module pointer may change. */
OSTRUM_API void KOBR_PutFrame(uint8_t **module, const uint8_t *frame);

/**
 * Appends a copy of an entry to the frame last put; the module pointer may change. A frame that holds
 * 32,767 entries, the most that it can count, takes no more.
 */
OSTRUM_API void KOBR_PutEntry(uint8_t **module, const uint8_t *entry);

/**
 * Finishes a module.
 *
 * @param module  the module
 * @param flags   module flags for the header
 * @param buffer  out: the block to write, which is the module; may be null
 * @param size    out: its size; may be null
 * @return        the size, bytes
 */
OSTRUM_API int32_t KOBR_CompleteModule(uint8_t *module, uint32_t flags, uint8_t **buffer,
                                       int32_t *size);

/**
 * Empties a module for another building. Name, tool and timestamp stay.
 *
 * @param module  the module
 * @return        the same module
 */
OSTRUM_API uint8_t *KOBR_ResetModule(uint8_t *module);

OSTRUM_END

#endif
