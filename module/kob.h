#pragma once

#include <ostrum/hs.h>
#include <ostrum/kob.h>

#include "core/f.h"

enum { KOB_TYPE_MAX = 256 }; // types of one module

struct KOB_SYMBOL {
    uint8_t *raw;     // first: a symbol and a module handle are told their name alike
    int32_t owned;    // raw was allocated here; else it lies in the mapped file
    KOB_SYMBOL *type; // symbol of class TYPE; null if the module does not declare it
    KOB_SYMBOL *next;
};

struct KOB_SYMBOL_LIST {
    KOB_SYMBOL *head;
    KOB_SYMBOL *tail;
};

struct KOB_MODULE {
    uint8_t *raw;  // first; build buffer, owned, or the mapped file
    intptr_t file; // of BF_: mode 1 for writing, mode 4 for reading
    char file_name[F_PATH_SIZE];
    int32_t read_only;
    int32_t is_open;    // the file is
    HS_DOMAIN *globals; // name to symbol
    HS_DOMAIN *types;   // type name to number when writing, to symbol when reading
    HS_DOMAIN *sources; // name of a START symbol to name of a source file
    int32_t type_count;
    KOB_SYMBOL *type_table[KOB_TYPE_MAX];
    KOB_SYMBOL_LIST symbols;        // all but the code variables, in order of creation
    KOB_SYMBOL_LIST code_variables; // CODE_VAR_START and CODE_VAR_END, by value when writing
    KOB_SYMBOL *country;
    KOB_SYMBOL *current_start; // while reading: the START symbol last met
    int32_t static_count;
    int32_t static_capacity;
    int32_t *static_offsets;
    KOBD_DEBUG *debug;
    uint32_t flags;  // brought by symbols
    uint8_t *mapped; // the mapped file; null when writing
};
