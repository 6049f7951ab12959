// Debug frames in memory, by name and in lists; the file form is the raw layer's.
#include "module/kobd.h"

#include "module/kob.h"
#include "module/kobr.h"

#include <ostrum/sh.h>
#include <ostrum/st.h>

#include <iterator>

enum { TYPE_NAME_SIZE = 128 };

static constexpr const char *class_names[] = {
    "FUNCTION", "TREE", "STATIC DATA", "RECORD", "ENUMERATION",
};
static_assert(std::size(class_names) == KOBD_CLASS_COUNT, "one name for each class");

void KOBD_Initialise(void)
{
    HS_Initialise();
    KOBR_Initialise();
}

KOBD_DEBUG *KOBD_NewDebug(KOB_MODULE *module)
{
    auto *debug = (KOBD_DEBUG *)SH_NameAllocate(sizeof(KOBD_DEBUG), "KOBD:DEBUG");
    debug->module = module;
    debug->names = HS_NewDomain();
    return debug;
}

static void delete_frame(KOBD_FRAME *frame)
{
    for (KOBD_ENTRY *entry = frame->entries; entry != nullptr;) {
        KOBD_ENTRY *next = entry->next;
        if (entry->owned) KOBR_DeleteEntry(entry->raw);
        SH_Free(entry);
        entry = next;
    }
    HS_DelDomain(frame->names);
    if (frame->owned) KOBR_DeleteFrame(frame->raw);
    SH_Free(frame);
}

void KOBD_DeleteDebug(KOB_MODULE *module)
{
    KOBD_DEBUG *debug = module->debug;
    if (debug == nullptr) return;
    module->debug = nullptr;
    for (KOBD_FRAME *frame = debug->frames; frame != nullptr;) {
        KOBD_FRAME *next = frame->next;
        delete_frame(frame);
        frame = next;
    }
    HS_DelDomain(debug->names);
    SH_Free(debug);
}

static KOBD_FRAME *new_frame(KOBD_DEBUG *debug, const char *name, uint8_t *raw, int32_t owned)
{
    auto *frame = (KOBD_FRAME *)SH_NameAllocate(sizeof(KOBD_FRAME), "KOBD:FRAME");
    frame->raw = raw;
    frame->owned = owned;
    frame->names = HS_NewDomain();
    frame->next = debug->frames;
    debug->frames = frame;
    debug->count++;
    HS_NewName(debug->names, name, (intptr_t)frame);
    return frame;
}

static KOBD_ENTRY *new_entry(KOBD_FRAME *frame, const char *name, uint8_t *raw, int32_t owned)
{
    auto *entry = (KOBD_ENTRY *)SH_NameAllocate(sizeof(KOBD_ENTRY), "KOBD:ENTRY");
    entry->raw = raw;
    entry->owned = owned;
    if (frame->tail == nullptr) {
        frame->entries = entry;
    } else {
        frame->tail->next = entry;
    }
    frame->tail = entry;
    HS_NewName(frame->names, name, (intptr_t)entry);
    return entry;
}

static int32_t read_entry(void *frame, uint8_t *raw, const char *name)
{
    new_entry((KOBD_FRAME *)frame, name, raw, 0);
    return 1;
}

static int32_t read_frame(void *debug, uint8_t *raw, const char *name)
{
    KOBR_AllEntries(raw, read_entry, new_frame((KOBD_DEBUG *)debug, name, raw, 0));
    return 1;
}

void KOBD_ReadFrames(KOB_MODULE *module, uint8_t *raw)
{
    KOBR_AllFrames(raw, read_frame, module->debug);
}

// Order of entries. They are added at the end and sorted when somebody looks, so that a large frame
// costs no walk for each of its entries.

/** Cuts a list behind its first count entries and gives the rest. */
static KOBD_ENTRY *split(KOBD_ENTRY *list, int32_t count)
{
    for (; list != nullptr && count > 1; count--)
        list = list->next;
    if (list == nullptr) return nullptr;
    KOBD_ENTRY *rest = list->next;
    list->next = nullptr;
    return rest;
}

/** Hangs two sorted lists on a link as one, a first where offsets are equal; gives its last link. */
static KOBD_ENTRY **merge(KOBD_ENTRY **link, KOBD_ENTRY *a, KOBD_ENTRY *b)
{
    while (a != nullptr || b != nullptr) {
        bool takes_a = b == nullptr || (a != nullptr && KOBD_EntryOffset(a) <= KOBD_EntryOffset(b));
        KOBD_ENTRY **source = takes_a ? &a : &b;
        *link = *source;
        *source = (*source)->next;
        link = &(*link)->next;
    }
    *link = nullptr;
    return link;
}

/** Merges neighbouring runs of a length into runs of twice that; gives the number of merges. */
static int32_t merge_runs(KOBD_ENTRY **head, int32_t length)
{
    int32_t merges = 0;
    KOBD_ENTRY **link = head;
    for (KOBD_ENTRY *rest = *head; rest != nullptr; merges++) {
        KOBD_ENTRY *a = rest;
        KOBD_ENTRY *b = split(a, length);
        rest = split(b, length);
        link = merge(link, a, b);
    }
    return merges;
}

static void sort_entries(KOBD_FRAME *frame)
{
    if (!frame->is_unsorted) return;
    frame->is_unsorted = 0;
    for (int32_t length = 1; merge_runs(&frame->entries, length) > 1;)
        length *= 2;
    while (frame->tail->next != nullptr)
        frame->tail = frame->tail->next;
}

static void write_frame(const KOBD_FRAME *frame, uint8_t **raw)
{
    KOBR_Reserve(raw, KOBR_FRAME_RECORD);
    KOBR_PutFrame(raw, frame->raw);
    for (const KOBD_ENTRY *entry = frame->entries; entry != nullptr; entry = entry->next) {
        KOBR_Reserve(raw, KOBR_ENTRY_RECORD);
        KOBR_PutEntry(raw, entry->raw);
    }
}

int32_t KOBD_WriteFrames(KOB_MODULE *module, uint8_t **raw)
{
    for (KOBD_FRAME *frame = module->debug->frames; frame != nullptr; frame = frame->next) {
        sort_entries(frame);
        write_frame(frame, raw);
    }
    return KOB_SUCCESSFUL;
}

int32_t KOBD_Frame(KOB_MODULE *module, KOBD_FRAME **frame, const char *name, int32_t frame_class,
                   int32_t size, int32_t line_number)
{
    if (KOBD_FindFrame(module, name) != nullptr) return KOB_NAME_DECLARED;
    uint8_t *raw = KOBR_NewFrame(name, frame_class, size, line_number);
    KOBD_FRAME *made = new_frame(module->debug, name, raw, 1);
    if (frame != nullptr) *frame = made;
    return KOB_SUCCESSFUL;
}

KOBD_FRAME *KOBD_FindFrame(KOB_MODULE *module, const char *name)
{
    intptr_t frame = 0;
    HS_FindName(module->debug->names, name, &frame);
    return (KOBD_FRAME *)frame;
}

void KOBD_AllFrames(KOB_MODULE *module, KOBD_FRAME_VISITOR visitor, void *context)
{
    for (KOBD_FRAME *frame = module->debug->frames; frame != nullptr; frame = frame->next)
        visitor(context, KOBD_FrameName(frame), frame);
}

const char *KOBD_FrameName(const KOBD_FRAME *frame)
{
    return KOBR_FrameName(frame->raw);
}

int32_t KOBD_FrameClass(const KOBD_FRAME *frame)
{
    return KOBR_FrameClass(frame->raw);
}

int32_t KOBD_FrameSize(const KOBD_FRAME *frame)
{
    return KOBR_FrameSize(frame->raw);
}

int32_t KOBD_FrameLineNumber(const KOBD_FRAME *frame)
{
    return KOBR_FrameLineNumber(frame->raw);
}

int32_t KOBD_Entry(KOBD_FRAME *frame, KOBD_ENTRY **entry, const char *name, const char *type_name,
                   int32_t flags, int32_t dimension, int32_t offset)
{
    if (KOBD_FindEntry(frame, name) != nullptr) return KOB_NAME_DECLARED;
    const KOBD_ENTRY *last = frame->tail;
    uint8_t *raw = KOBR_NewEntry(name, type_name, flags, dimension, offset);
    KOBD_ENTRY *made = new_entry(frame, name, raw, 1);
    if (last != nullptr && KOBD_EntryOffset(last) > KOBD_EntryOffset(made)) frame->is_unsorted = 1;
    if (entry != nullptr) *entry = made;
    return KOB_SUCCESSFUL;
}

KOBD_ENTRY *KOBD_FindEntry(KOBD_FRAME *frame, const char *name)
{
    intptr_t entry = 0;
    HS_FindName(frame->names, name, &entry);
    return (KOBD_ENTRY *)entry;
}

void KOBD_AllEntries(KOBD_FRAME *frame, KOBD_ENTRY_VISITOR visitor, void *context)
{
    sort_entries(frame);
    for (KOBD_ENTRY *entry = frame->entries; entry != nullptr; entry = entry->next)
        visitor(context, KOBD_EntryName(entry), entry);
}

/** Offset of a copy, which stays the nearest that 32 bits hold. */
static int32_t moved_offset(const KOBD_ENTRY *entry, int32_t delta)
{
    int64_t offset = (int64_t)KOBD_EntryOffset(entry) + delta;
    if (offset > INT32_MAX) return INT32_MAX;
    return offset < INT32_MIN ? INT32_MIN : (int32_t)offset;
}

int32_t KOBD_CopyEntries(KOBD_FRAME *source, KOBD_FRAME *target, int32_t delta)
{
    sort_entries(source);
    for (const KOBD_ENTRY *entry = source->entries; entry != nullptr; entry = entry->next) {
        int32_t result = KOBD_Entry(target, nullptr, KOBD_EntryName(entry), KOBD_EntryType(entry),
                                    KOBD_EntryFlags(entry), KOBD_EntryDimension(entry),
                                    moved_offset(entry, delta));
        if (result != KOB_SUCCESSFUL) return result;
    }
    return KOB_SUCCESSFUL;
}

const char *KOBD_EntryName(const KOBD_ENTRY *entry)
{
    return KOBR_EntryName(entry->raw);
}

const char *KOBD_EntryType(const KOBD_ENTRY *entry)
{
    return KOBR_EntryType(entry->raw);
}

int32_t KOBD_EntryFlags(const KOBD_ENTRY *entry)
{
    return KOBR_EntryFlags(entry->raw);
}

int32_t KOBD_EntryDimension(const KOBD_ENTRY *entry)
{
    return KOBR_EntryDimension(entry->raw);
}

int32_t KOBD_EntryOffset(const KOBD_ENTRY *entry)
{
    return KOBR_EntryOffset(entry->raw);
}

const char *KOBD_TypeName(const char *type_name, int32_t flags)
{
    static char text[TYPE_NAME_SIZE];
    const char *passing = (flags & KOBD_BY_REFERENCE) != 0 ? "VAR " : "";
    return ST_Concat(text, sizeof text, passing, type_name, (const char *)nullptr);
}

const char *KOBD_ClassName(int32_t frame_class)
{
    if (frame_class < 0 || frame_class >= KOBD_CLASS_COUNT) return "<UNKNOWN CLASS>";
    return class_names[frame_class];
}
