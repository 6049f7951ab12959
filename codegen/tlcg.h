/*
 * The generators: the record of one run, and the walk over a module's functions that all targets
 * share.
 */
#pragma once

#include <ostrum/tlcg.h>

/* Added to a status of the module format in the result of a generator. */
enum { TLCG_KOB_RESULT = 100 };

/* A name that a walk has met and still has to see to. */
struct TLCG_VISIT {
    TLI_IDENTIFIER *identifier;
    bool is_entered; /* the functions inside this one have been taken up */
    bool is_public;  /* declared in GLOBALS itself */
};

/* Names still to be seen to, last first. Functions nest as deep as the source likes. */
struct TLCG_WORK {
    TLCG_VISIT *visits;
    size_t count;
    size_t capacity;
};

/* Set of addresses; only asked whether one is there, so that nothing depends on their order. */
struct TLCG_SET {
    const void **slots;
    size_t count;
    size_t capacity; /* 0 or a power of 2 */
};

/* A record type whose fields are being entered in its debug frame. */
struct TLCG_RECORD {
    TLI_IDENTIFIER *type;
    KOBD_FRAME *frame;
    int32_t next_field;
};

/* Record types that hold one another, outermost first. */
struct TLCG_RECORDS {
    TLCG_RECORD *records;
    size_t count;
    size_t capacity;
};

/* One run of a generator. */
struct TLCG_CONTEXT {
    uint32_t flags; /* compile flags */
    TLP_MODULE *module;
    TLC_STREAM *stream;
    KOB_MODULE *object;
    KOBD_FRAME *statics_frame;  /* frame of the static data */
    KOBD_FRAME *function_frame; /* frame being filled */
    bool is_public;             /* the names being taken up stand in GLOBALS */
    bool has_tree;              /* a block of a TREE was generated */
    bool skips_data;            /* data sections are seen to elsewhere */
    TLCG_WORK work;
    TLCG_RECORDS records;
    TLCG_SET generated; /* blocks that have been generated */
};

/** True if the address was not in the set; it is from then on. */
bool TLCG_AddToSet(TLCG_SET *set, const void *address);

/** True if the address is in the set. */
bool TLCG_IsInSet(const TLCG_SET &set, const void *address);

/** Frees what a set holds. */
void TLCG_DropSet(TLCG_SET *set);

/** Takes up a name, to be seen to before those that were taken up earlier. */
void TLCG_Push(TLCG_CONTEXT *context, TLI_IDENTIFIER *identifier);

/**
 * Takes up the constants, non-volatiles, functions and nodes of a scope of which filter gives yes, so
 * that they come up as a walk of the scope shows them. A scope that has none of these, as that of most
 * functions, is not walked.
 * @param context the run
 * @param scope the scope, or null
 * @param filter gives yes for the names wanted
 */
void TLCG_PushScope(TLCG_CONTEXT *context, TLI_SCOPE *scope,
                    bool (*filter)(TLI_IDENTIFIER *identifier));

/**
 * Takes the next name; false if there is none.
 * @param context the run
 * @param visit out: the name
 */
bool TLCG_Pop(TLCG_CONTEXT *context, TLCG_VISIT *visit);

/** Puts a function back under those inside it, which are taken up next. */
void TLCG_Enter(TLCG_CONTEXT *context, TLI_IDENTIFIER *function);

/**
 * Generates the code of every section of the module that has a body, nested functions first, each
 * block once.
 * @param context the run; its stream decides the target
 */
void TLCG_GenerateSections(TLCG_CONTEXT *context);

/** Makes the debug frames of a module that has been generated. */
void TLCG_DebugFrames(TLCG_CONTEXT *context);

/** Frees what a context holds for itself: not its stream, not its object. */
void TLCG_ReleaseContext(TLCG_CONTEXT *context);

/**
 * The part of a path behind its directory.
 * @param path  may use either separator
 */
const char *TLCG_FileName(const char *path);

/**
 * Opens a file for generated text.
 * @return null if it cannot be opened; TLCG_CloseText closes it
 */
FILE *TLCG_OpenText(const char *path);

/** Closes a file of generated text; false if not all of the text has reached it. */
bool TLCG_CloseText(FILE *file);
