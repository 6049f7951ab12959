/*
 * Debug frames of an open module: each describes a local frame, the static data, a record type or an
 * enumeration type, with one entry for each variable, field or value.
 */
#ifndef OSTRUM_KOBD_H
#define OSTRUM_KOBD_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** Frame classes. */
enum {
    KOBD_FUNCTION,    /* size of the frame, line of the function */
    KOBD_TREE,        /* size of the frame, line of the tree */
    KOBD_STATIC_DATA, /* size of the static data, line 0 */
    KOBD_RECORD,      /* size of the record, line of its declaration */
    KOBD_ENUMERATION, /* size 0, line of its declaration */
    KOBD_CLASS_COUNT
};

/** Entry flags. */
enum {
    KOBD_TYPE_MASK = 0x0FFF, /* debug type of the item's type */
    KOBD_BY_REFERENCE = 0x1000,
    KOBD_POINTER = 0x2000 /* the item points at its stated type */
};

/** Called with each frame. The result is ignored. */
typedef int32_t (*KOBD_FRAME_VISITOR)(void *context, const char *name, KOBD_FRAME *frame);

/** Called with each entry. The result is ignored. */
typedef int32_t (*KOBD_ENTRY_VISITOR)(void *context, const char *name, KOBD_ENTRY *entry);

/** Prepares the name tables and the raw layer. */
OSTRUM_API void KOBD_Initialise(void);

/**
 * Makes the debug record of a module; KOB does it for each handle.
 *
 * @param module  the owner
 * @return        the record, without frames
 */
OSTRUM_API KOBD_DEBUG *KOBD_NewDebug(KOB_MODULE *module);

/** Frees the debug record of a module with all frames and entries; KOB does it with the handle. */
OSTRUM_API void KOBD_DeleteDebug(KOB_MODULE *module);

/**
 * Takes in the frames of a raw module, which must outlive the debug record.
 *
 * @param module  the handle
 * @param raw     a checked raw module
 */
OSTRUM_API void KOBD_ReadFrames(KOB_MODULE *module, uint8_t *raw);

/**
 * Puts all frames with their entries into a raw module, the newest frame first.
 *
 * @param module  the handle
 * @param raw     address of the raw module's pointer, which may change
 * @return        0
 */
OSTRUM_API int32_t KOBD_WriteFrames(KOB_MODULE *module, uint8_t **raw);

/**
 * Adds a frame. Size and line are held to 16 signed bits.
 *
 * @param module       the handle
 * @param frame        out: the frame, the module's; left alone on failure; may be null
 * @param name         name; the file holds 31 characters of it
 * @param frame_class  class, KOBD_FUNCTION to KOBD_ENUMERATION
 * @param size         bytes
 * @param line_number  source line
 * @return             0, or 6 if a frame of that name exists
 */
OSTRUM_API int32_t KOBD_Frame(KOB_MODULE *module, KOBD_FRAME **frame, const char *name,
                              int32_t frame_class, int32_t size, int32_t line_number);

/** @return  the frame of that exact name, the module's, or null */
OSTRUM_API KOBD_FRAME *KOBD_FindFrame(KOB_MODULE *module, const char *name);

/**
 * Visits the frames: the newest first in a module being built, in order of creation in one read.
 *
 * @param module   the handle
 * @param visitor  called with the context, each frame's name and the frame
 * @param context  the visitor's
 */
OSTRUM_API void KOBD_AllFrames(KOB_MODULE *module, KOBD_FRAME_VISITOR visitor, void *context);

/** @return  name of a frame */
OSTRUM_API const char *KOBD_FrameName(const KOBD_FRAME *frame);

/** @return  class of a frame */
OSTRUM_API int32_t KOBD_FrameClass(const KOBD_FRAME *frame);

/** @return  size of a frame, bytes */
OSTRUM_API int32_t KOBD_FrameSize(const KOBD_FRAME *frame);

/** @return  source line of a frame */
OSTRUM_API int32_t KOBD_FrameLineNumber(const KOBD_FRAME *frame);

/**
 * Adds an entry to a frame, kept in order of offset; those of equal offset stay in order of addition.
 * Dimension and offset are held to 16 signed bits.
 *
 * @param frame      the frame
 * @param entry      out: the entry, the frame's; left alone on failure; may be null
 * @param name       name; the file holds 31 characters of it
 * @param type_name  type name; cut at 31 characters
 * @param flags      debug type with KOBD_BY_REFERENCE and KOBD_POINTER
 * @param dimension  1 for a scalar, 0 for the value of an enumeration
 * @param offset     bytes in the frame, or the ordinal of the value
 * @return           0, or 6 if the frame has an entry of that name
 */
OSTRUM_API int32_t KOBD_Entry(KOBD_FRAME *frame, KOBD_ENTRY **entry, const char *name,
                              const char *type_name, int32_t flags, int32_t dimension,
                              int32_t offset);

/** @return  the entry of that exact name, the frame's, or null */
OSTRUM_API KOBD_ENTRY *KOBD_FindEntry(KOBD_FRAME *frame, const char *name);

/**
 * Visits the entries of a frame in order. The visitor may not add to this frame.
 *
 * @param frame    the frame
 * @param visitor  called with the context, each entry's name and the entry
 * @param context  the visitor's
 */
OSTRUM_API void KOBD_AllEntries(KOBD_FRAME *frame, KOBD_ENTRY_VISITOR visitor, void *context);

/**
 * Copies entries from frame to frame; those copied before a failure stay.
 *
 * @param source  the frame to copy from
 * @param target  the frame to copy to
 * @param delta   added to each offset, bytes
 * @return        0, or the first result of KOBD_Entry that is not 0
 */
OSTRUM_API int32_t KOBD_CopyEntries(KOBD_FRAME *source, KOBD_FRAME *target, int32_t delta);

/** @return  name of an entry */
OSTRUM_API const char *KOBD_EntryName(const KOBD_ENTRY *entry);

/** @return  type name of an entry, empty for the value of an enumeration */
OSTRUM_API const char *KOBD_EntryType(const KOBD_ENTRY *entry);

/** @return  flags of an entry */
OSTRUM_API int32_t KOBD_EntryFlags(const KOBD_ENTRY *entry);

/** @return  dimension of an entry */
OSTRUM_API int32_t KOBD_EntryDimension(const KOBD_ENTRY *entry);

/** @return  offset of an entry */
OSTRUM_API int32_t KOBD_EntryOffset(const KOBD_ENTRY *entry);

/**
 * Words the type of an entry.
 *
 * @param type_name  type name
 * @param flags      flags of the entry
 * @return           the type name, behind "VAR " if it is passed by reference, in a buffer that the
 *                   next call overwrites; holds 127 characters
 */
OSTRUM_API const char *KOBD_TypeName(const char *type_name, int32_t flags);

/** @return  text of a frame class; "<UNKNOWN CLASS>" outside 0 to 4 */
OSTRUM_API const char *KOBD_ClassName(int32_t frame_class);

OSTRUM_END

#endif
