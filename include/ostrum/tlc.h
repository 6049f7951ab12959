/*
 * Code streams and program sections: what every routine that produces code writes to. A P-code
 * stream builds binary code in program sections, small growing byte buffers with fix-ups; a C or
 * Java stream writes text to an open file. A section is the unit of layout and the target of every
 * jump; it gets its address only when the whole module has been generated.
 *
 * Operations that reach a section are for P-code streams only, unless told otherwise.
 */
#ifndef OSTRUM_TLC_H
#define OSTRUM_TLC_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/* Targets of a stream. */
#define TLC_TARGET_PCODE 0
#define TLC_TARGET_C     1
#define TLC_TARGET_JAVA  2

/* Compile flags; the other bits are those of a module. */
#define TLC_FLAG_LINES    0x02u  /* emit LINE codes */
#define TLC_FLAG_BLOCKS   0x08u  /* print each block after generating it */
#define TLC_FLAG_PROGRESS 0x10u  /* print progress lines */
#define TLC_FLAG_DEBUG    0x20u  /* generate debug frames */
#define TLC_FLAG_CHECKS   0x200u /* emit CHECK codes for array bounds */

/** Readies the P-code table, the module format and the table of flag names, the first time. */
OSTRUM_API void TLC_Initialise(void);

/** Frees the table of flag names, at the end of the process. */
OSTRUM_API void TLC_CleanUp(void);

/**
 * Makes a P-code stream. Its string section is the current section at first.
 * @param module the module to be generated, borrowed for the life of the stream
 * @param flags compile flags
 * @return the stream, to be freed with TLC_DelStream
 */
OSTRUM_API TLC_STREAM *TLC_NewStream(TLP_MODULE *module, uint32_t flags);

/**
 * Makes a stream of C text, in pass 1.
 * @param file open for writing, stays the caller's
 * @param module the module to be generated, borrowed for the life of the stream
 * @param flags compile flags
 * @return the stream, to be freed with TLC_DelStream
 */
OSTRUM_API TLC_STREAM *TLC_NewCStream(FILE *file, TLP_MODULE *module, uint32_t flags);

/**
 * Makes a stream of Java text, in pass 1.
 * @param file open for writing, stays the caller's
 * @param module the module to be generated, borrowed for the life of the stream
 * @param flags compile flags
 * @return the stream, to be freed with TLC_DelStream
 */
OSTRUM_API TLC_STREAM *TLC_NewJavaStream(FILE *file, TLP_MODULE *module, uint32_t flags);

/**
 * Frees a stream with its sections, code and fix-ups; a text stream's file stays open.
 * @param stream the stream or null
 */
OSTRUM_API void TLC_DelStream(TLC_STREAM *stream);

/**
 * Makes a code section at the end of the code list, and makes it current.
 * @param stream P-code stream
 * @return the section, owned by the stream
 */
OSTRUM_API TLC_PSECT *TLC_NewPSect(TLC_STREAM *stream);

/**
 * Makes a code section that starts on an even address, for data records, and makes it current.
 * @param stream P-code stream
 * @return the section, owned by the stream
 */
OSTRUM_API TLC_PSECT *TLC_EvenPSect(TLC_STREAM *stream);

/**
 * Makes a constant section, and makes it current.
 * @param stream P-code stream
 * @return the section, owned by the stream; it starts on an even address
 */
OSTRUM_API TLC_PSECT *TLC_ConstantPSect(TLC_STREAM *stream);

/**
 * Makes a non-volatile section, and makes it current.
 * @param stream P-code stream
 * @return the section, owned by the stream; it starts on an even address
 */
OSTRUM_API TLC_PSECT *TLC_NonVolPSect(TLC_STREAM *stream);

/**
 * Makes a section current: what is emitted from then on goes to its end.
 * @param stream P-code stream
 * @param section one of the stream's own
 */
OSTRUM_API void TLC_SetPSect(TLC_STREAM *stream, TLC_PSECT *section);

/**
 * Adds one zero byte if the size of the current section is odd.
 * @param stream P-code stream
 */
OSTRUM_API void TLC_Align(TLC_STREAM *stream);

/**
 * @param stream any stream
 * @return number of the pass: 0 on a P-code stream, from 1 on a text stream
 */
OSTRUM_API int32_t TLC_GetPass(const TLC_STREAM *stream);

/**
 * Goes on to the next pass.
 * @param stream text stream
 */
OSTRUM_API void TLC_NextPass(TLC_STREAM *stream);

/**
 * @param stream any stream
 * @return 0 P-code, 1 C, 2 Java
 */
OSTRUM_API int32_t TLC_Target(const TLC_STREAM *stream);

/**
 * @param stream any stream
 * @return the module being generated
 */
OSTRUM_API TLP_MODULE *TLC_Module(const TLC_STREAM *stream);

/**
 * @param stream any stream
 * @return the compile flags
 */
OSTRUM_API uint32_t TLC_StreamFlags(const TLC_STREAM *stream);

/**
 * @param stream any stream
 * @return module flags gathered from the syscalls that were called
 */
OSTRUM_API uint32_t TLC_StreamKobFlags(const TLC_STREAM *stream);

/**
 * @param stream any stream
 * @return the file of a text stream; null on a P-code stream
 */
OSTRUM_API FILE *TLC_CFile(const TLC_STREAM *stream);

/**
 * Replaces the file of a text stream; the old one stays open.
 * @param stream text stream
 * @param file open for writing, stays the caller's
 */
OSTRUM_API void TLC_SetCFile(TLC_STREAM *stream, FILE *file);

/**
 * Makes a name fit for C: every "." becomes "_".
 * @param name the name
 * @param buffer out: at least 32 bytes; the name is cut at 31 characters
 * @return the buffer
 */
OSTRUM_API char *TLC_CName(const char *name, char *buffer);

/**
 * Reports a fault of generation: a fatal compiler message without a place on a P-code stream, a
 * comment in the text on a C or Java stream. Generation goes on.
 * @param stream any stream
 * @param message the text
 */
OSTRUM_API void TLC_Error(TLC_STREAM *stream, const char *message);

/**
 * Emits an opcode, folding it with what stands before it where the two have a shorter form.
 * @param stream P-code stream
 * @param code the opcode, of which the low 8 bits count
 */
OSTRUM_API void TLC_PCode(TLC_STREAM *stream, int32_t code);

/**
 * Emits one byte.
 * @param stream P-code stream
 * @param value of which the low 8 bits count
 */
OSTRUM_API void TLC_Code8(TLC_STREAM *stream, int32_t value);

/**
 * Emits two bytes, most significant first.
 * @param stream P-code stream
 * @param value of which the low 16 bits count
 */
OSTRUM_API void TLC_Code16(TLC_STREAM *stream, int32_t value);

/**
 * Emits four bytes, most significant first.
 * @param stream P-code stream
 * @param value the value
 */
OSTRUM_API void TLC_Code32(TLC_STREAM *stream, int32_t value);

/**
 * Emits the code that pushes a number, in its shortest form; decimal digits on a text stream.
 * @param stream any stream
 * @param value the number
 */
OSTRUM_API void TLC_Literal(TLC_STREAM *stream, int32_t value);

/**
 * Emits the displacement of a jump; the opcode has been emitted before.
 * @param stream P-code stream
 * @param target section of the same stream that is jumped to
 */
OSTRUM_API void TLC_Jump(TLC_STREAM *stream, TLC_PSECT *target);

/**
 * Emits the displacement of a jump to a node of a tree, found when the module is laid out.
 * @param stream P-code stream
 * @param node identifier of the node, its data the node's statement record
 */
OSTRUM_API void TLC_Label(TLC_STREAM *stream, TLI_IDENTIFIER *node);

/**
 * Emits the displacement to a string, which is stored once however often it is used; on a text
 * stream the text in double quotes.
 * @param stream any stream
 * @param text the string, copied
 */
OSTRUM_API void TLC_String(TLC_STREAM *stream, const char *text);

/**
 * Emits a symbol named after an identifier: the name of its domain, "." and its name, or its plain
 * name if it has the pragma NOTAG. Classes 1 and 6 have a field of four bytes, or the name on a
 * text stream; the other classes mark the place. Reports "Unknown symbol class".
 * @param stream any stream
 * @param symbol_class 0, 1, 3, 4, 6, 15 or 16
 * @param type type of the symbol
 * @param identifier what is named
 */
OSTRUM_API void TLC_Symbol(TLC_STREAM *stream, int32_t symbol_class, TLI_IDENTIFIER *type,
                           TLI_IDENTIFIER *identifier);

/**
 * Emits a symbol as TLC_Symbol does, with the name given.
 * @param stream any stream
 * @param symbol_class 0, 1, 3, 4, 6, 15 or 16
 * @param type type of the symbol
 * @param name copied, cut at 63 characters
 */
OSTRUM_API void TLC_NameSymbol(TLC_STREAM *stream, int32_t symbol_class, TLI_IDENTIFIER *type,
                               const char *name);

/**
 * Opens a call; the arguments follow, then TLC_Call.
 * @param stream any stream
 * @param function the function, or the item of function type
 * @param direct 1 for a call of the function, 0 for one through a value
 */
OSTRUM_API void TLC_StartCall(TLC_STREAM *stream, TLI_IDENTIFIER *function, int32_t direct);

/**
 * Closes an argument.
 * @param stream any stream
 * @param size bytes of the argument
 */
OSTRUM_API void TLC_Argument(TLC_STREAM *stream, int32_t size);

/**
 * Calls, and closes what TLC_StartCall opened. Reports "Bad syscall" and "PCode pragma has
 * non-numeric value".
 * @param stream any stream
 * @param function the function, or the item of function type
 * @param direct 1 for a call of the function, 0 for one through a value
 * @return 1, or 0 if the value of an indirect call could not be pushed
 */
OSTRUM_API int32_t TLC_Call(TLC_STREAM *stream, TLI_IDENTIFIER *function, int32_t direct);

/**
 * Emits LINE if line numbers are asked for.
 * @param stream P-code stream
 * @param line source line; above 65535 counts as 65535
 */
OSTRUM_API void TLC_LineNumber(TLC_STREAM *stream, int32_t line);

/**
 * Tells which statement the code that follows comes from. Only the first statement of a section
 * has an effect: it gives the section its line.
 * @param stream P-code stream
 * @param statement source statement, borrowed for the life of the stream
 */
OSTRUM_API void TLC_Statement(TLC_STREAM *stream, TLT_STATEMENT *statement);

/*
 * Addressing. size is that of one element in bytes; bound is the number of elements that an index
 * is checked against where checks are asked for, 0 or less for none; index is the number of the
 * element, or negative if it is on the stack. access is 0 for the current frame with the offset on
 * the stack, 1 for memory at the address on the stack, 2 for a pointer at the address on the stack.
 */

/**
 * Emits the code that loads an item. Reports "Load illegal size".
 * @param stream P-code stream
 * @param size 1, 2 or 4
 * @param access 0 to 2
 */
OSTRUM_API void TLC_LoadValue(TLC_STREAM *stream, int32_t size, int32_t access);

/**
 * Emits the code that stores an item. Reports "Store illegal size".
 * @param stream P-code stream
 * @param size 1, 2 or 4
 * @param access 0 to 2
 */
OSTRUM_API void TLC_StoreValue(TLC_STREAM *stream, int32_t size, int32_t access);

/**
 * Emits the sum of an address and, beneath it, an index.
 * @param stream P-code stream
 * @param size bytes of one element
 */
OSTRUM_API void TLC_AddAddress(TLC_STREAM *stream, int32_t size);

/** Emits the offset of an element in a record. */
OSTRUM_API void TLC_LoadOffset(TLC_STREAM *stream, int32_t size, int32_t offset, int32_t bound,
                               int32_t index);

/** Emits the load of an element of the current frame. */
OSTRUM_API void TLC_LoadLocalValue(TLC_STREAM *stream, int32_t size, int32_t offset, int32_t bound,
                                   int32_t index);

/** Emits the address of an element of the current frame. */
OSTRUM_API void TLC_LoadLocalAddress(TLC_STREAM *stream, int32_t size, int32_t offset,
                                     int32_t bound, int32_t index);

/** Emits the store of an element of the current frame. */
OSTRUM_API void TLC_StoreLocalValue(TLC_STREAM *stream, int32_t size, int32_t offset, int32_t bound,
                                    int32_t index);

/**
 * Emits FIND_SCOPE: the frame of the function around becomes the current one.
 * @param stream P-code stream
 * @param identifier an item in the scope of that function
 */
OSTRUM_API void TLC_FindScope(TLC_STREAM *stream, TLI_IDENTIFIER *identifier);

/** Emits the load of an element of the frame of a function around. */
OSTRUM_API void TLC_LoadNonLocalValue(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t size,
                                      int32_t offset, int32_t bound, int32_t index);

/** Emits the address of an element of the module's static data. */
OSTRUM_API void TLC_LoadGlobalAddress(TLC_STREAM *stream, int32_t size, int32_t offset,
                                      int32_t bound, int32_t index);

/** Emits the address of an element of a constant or a non-volatile. */
OSTRUM_API void TLC_LoadConstantAddress(TLC_STREAM *stream, TLI_IDENTIFIER *identifier,
                                        int32_t bound, int32_t index);

/** Emits the load of an element of a constant. */
OSTRUM_API void TLC_LoadConstant(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t bound,
                                 int32_t index);

/** Emits the load of an element of a non-volatile. */
OSTRUM_API void TLC_LoadNonVolatile(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t bound,
                                    int32_t index);

/**
 * Turns a finished P-code stream into the code and symbols of a module file: lays the sections out,
 * applies the fix-ups, adds code, static offsets and symbols. Once for a stream. Reports "Failed to
 * create symbol" and "Jump out of range".
 * @param stream P-code stream
 * @param object handle for writing
 */
OSTRUM_API void TLC_GenerateObjectCode(TLC_STREAM *stream, KOB_MODULE *object);

/**
 * Adds a VALUE symbol for a constant, if it has a value.
 * @param stream P-code stream that has an object
 * @param identifier scalar constant
 */
OSTRUM_API void TLC_GlobalValue(TLC_STREAM *stream, TLI_IDENTIFIER *identifier);

OSTRUM_END

#endif
