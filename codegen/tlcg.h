/*
 * The generators: the record of one run, and the walk over a module's functions that all targets
 * share.
 */
#pragma once

#include <ostrum/tlcg.h>

/* Added to a status of the module format in the result of a generator. */
enum { TLCG_KOB_RESULT = 100 };

/* A function that a walk has met: its own functions come before it. */
struct TLCG_VISIT {
    TLI_IDENTIFIER *function;
    bool entered; /* its own functions have been pushed */
};

/* Functions still to be visited, last first. */
struct TLCG_WORK {
    TLCG_VISIT *visits;
    uint32_t count;
    uint32_t capacity;
};

/* Set of addresses; only asked whether one is there, so that nothing depends on their order. */
struct TLCG_SET {
    const void **slots;
    uint32_t count;
    uint32_t capacity; /* 0 or a power of 2 */
};

/* One run of a generator. */
struct TLCG_CONTEXT {
    uint32_t flags; /* compile flags */
    TLP_MODULE *module;
    TLC_STREAM *stream;
    KOB_MODULE *object;
    KOBD_FRAME *statics_frame;  /* frame of the static data */
    KOBD_FRAME *function_frame; /* frame being filled */
    bool is_public;             /* constants being planted get a symbol */
    bool has_tree;              /* a block of a TREE was generated */
    TLCG_WORK work;
    TLCG_SET generated; /* blocks that have been generated */
};

/**
 * Generates the code of every section of the module that has a body, nested functions first, each
 * block once.
 * @param context the run; its stream decides the target
 */
void TLCG_GenerateSections(TLCG_CONTEXT *context);

/**
 * Frees what a context holds besides its stream and its object.
 * @param context the run
 */
void TLCG_ReleaseContext(TLCG_CONTEXT *context);
