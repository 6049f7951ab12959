/*
 * Java text: names, types and declarations, and what the writers note between one another.
 */
#pragma once

#include "codegen/tlcg.h"
#include <ostrum/hs.h>
#include <ostrum/tlcj.h>

/* Room for any name in Java text: a class, a function with the one around it, a terminator. */
enum { TLCJ_NAME_CAPACITY = 224 };

/* How Java holds the values of a type. */
enum TLCJ_KIND {
    TLCJ_WORD,  /* int */
    TLCJ_CHAR,  /* char, of which a byte is used */
    TLCJ_SHORT, /* short */
    TLCJ_FLOAT, /* float */
    TLCJ_OBJECT /* String, Data, a record, a function, an array of unknown length */
};

/* A loop in Java's own form, around what is being written. */
struct TLCJ_LOOP {
    const void *record;
    const TLI_IDENTIFIER *variable;
    TLCJ_LOOP *outer;
};

struct TLCJ_PARENT;

/* Of one Java stream. */
struct TLCJ_STATE {
    TLCG_SET marked;    /* variables of the function that others write through a reference,
                           exception handlers that are left early, loops with a narrow variable
                           that their body changes */
    TLCJ_LOOP *loops;   /* those with a narrow variable, innermost first */
    HS_DOMAIN *classes; /* names of the domains of used modules, to the names of their classes */
    HS_DOMAIN *taken;   /* names of these classes, which no other name may hide; and "DOMAIN class"
                           for the classes that a used module uses in its turn */
    bool has_modules;   /* there are such */
    char class_name[TLCJ_NAME_CAPACITY];
    const TLI_SCOPE *frame; /* of the function being written; null for none */
    bool has_frame;       /* its variables lie in an object, where the functions inside find them */
    bool is_stale;        /* what was marked came up after text that depends on it */
    bool is_open;         /* control can reach what is written next */
    bool is_tree;         /* the nodes of a tree are being written */
    bool is_left;         /* something left the handler being written early */
    int32_t names;        /* made so far in the function being written */
    const void *handler;  /* WHEN of which the handler is being written; null for none */
    int32_t handler_name; /* number in its label */
    TLCG_SET late;        /* constants that are written behind the items of data */
    HS_DOMAIN *fields;    /* names that items of data sections have */
    HS_DOMAIN *given;     /* items of which the own name was taken, to the names that they got */
    bool has_given;       /* there are such */
    int32_t numbered_items;
    TLCG_SET constructed; /* data sections and items of them */
    TLCJ_PARENT *parents; /* that are set when all items are constructed, in order */
    TLCJ_PARENT *last_parent;
};

/** What the writers of a Java stream note; made with the first call. */
TLCJ_STATE *TLCJ_State(TLC_STREAM *stream);

/** Frees the notes of a stream. */
void TLCJ_DropState(TLC_STREAM *stream);

/** Makes the class name of a module out of a path: its base name, as Java takes it. */
void TLCJ_ClassName(const char *path, char *buffer);

/** Notes which class the names of a used module stand in. */
void TLCJ_UseModule(TLC_STREAM *stream, TLP_MODULE *module);

/**
 * The name of an identifier as text uses it: with its class if another module declares it.
 * @param stream Java stream
 * @param identifier the identifier
 * @param buffer out: TLCJ_NAME_CAPACITY bytes
 * @return the buffer
 */
const char *TLCJ_Name(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, char *buffer);

/** The same without a class before it, as a declaration has it. */
const char *TLCJ_OwnName(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, char *buffer);

/** Tells whether a name can be an identifier's as it is: no word of Java, no class in use. */
bool TLCJ_IsFree(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, const char *name);

/** The name that an item of a data section got in place of its own, which was taken; else null. */
const char *TLCJ_GivenName(TLC_STREAM *stream, TLI_IDENTIFIER *identifier);

/** Notes an item of a data section before its field is declared, so that no two fields have one name. */
void TLCJ_DeclareItem(TLC_STREAM *stream, TLI_IDENTIFIER *item);

/**
 * Writes a data section or an item of one as a value.
 * @param stream Java stream
 * @param identifier the section's or the item's
 */
void TLCJ_WriteItem(TLC_STREAM *stream, TLI_IDENTIFIER *identifier);

/** Tells whether an identifier is a data section or an item of one. */
bool TLCJ_IsItem(TLI_IDENTIFIER *identifier);

/** Writes the constants of a scope that name items of data, when these have been constructed. */
void TLCJ_WriteLateConstants(TLC_STREAM *stream, TLI_SCOPE *scope);

/** Notes that an item of a data section has been constructed, or is about to be. */
void TLCJ_NoteConstructed(TLC_STREAM *stream, TLI_IDENTIFIER *item);

/** Tells whether TLCJ_NoteConstructed has been told of an item. */
bool TLCJ_IsConstructed(TLC_STREAM *stream, TLI_IDENTIFIER *item);

/** Tells whether what a term names is a data section of the module that is not constructed yet. */
bool TLCJ_IsLate(TLC_STREAM *stream, const TLE_TERM *term);

/** Writes the data section that a term names, if it is late, before what needs it. */
void TLCJ_ConstructFirst(TLC_STREAM *stream, const TLE_TERM *term);

/** Writes a data section, in either pass. @param section its function identifier, with a block */
void TLCJ_WriteSection(TLC_STREAM *stream, TLI_IDENTIFIER *section);

/** Notes a parent that is late. */
void TLCJ_NoteParent(TLC_STREAM *stream, TLI_IDENTIFIER *item, TLE_TERM *parent);

/** Writes the statements that set the late parents, when all items have been constructed. */
void TLCJ_WriteParents(TLC_STREAM *stream);

/** Frees the notes of late parents. */
void TLCJ_DropParents(TLCJ_STATE *state);

/** How Java holds values of a type; null counts as a word. */
TLCJ_KIND TLCJ_Kind(TLI_IDENTIFIER *type);

/** Writes the type of a variable that holds one value of a type. */
void TLCJ_WriteType(TLC_STREAM *stream, TLI_IDENTIFIER *type);

/** Writes the class of a reference to items of a type: Vector, or Items<...>. */
void TLCJ_WriteReferenceType(TLC_STREAM *stream, TLI_IDENTIFIER *type);

/** Tells whether a name stands for an array that is reached through an object: one of unknown length. */
bool TLCJ_IsVector(TLI_IDENTIFIER *identifier);

/** Tells whether a name is an argument that stands for one item of the caller's, other than a record. */
bool TLCJ_IsReference(TLI_IDENTIFIER *identifier);

/** Tells whether a local variable is a one-element array, since something else refers to it. */
bool TLCJ_IsBoxed(TLC_STREAM *stream, TLI_IDENTIFIER *identifier);

/** Marks a variable or a handler; what was written before without the mark is written anew. */
void TLCJ_Mark(TLC_STREAM *stream, const void *what);

/** Notes that a variable is written, so that no loop over it that is around goes on in Java's own form. */
void TLCJ_NoteStore(TLC_STREAM *stream, const TLI_IDENTIFIER *variable);

/** Tells whether the functions inside one use its variables, so that an object has to hold them. */
bool TLCJ_HasFrame(const TLI_SCOPE *scope);

/** Writes the class of the object that holds the variables of a function, and where it is kept. */
void TLCJ_WriteFrame(TLC_STREAM *stream, TLI_IDENTIFIER *function);

/** Writes the types that a function declares for itself, as members of the class. */
void TLCJ_WriteLocalTypes(TLC_STREAM *stream, TLI_SCOPE *scope);

/** Writes the arguments of a function, each behind the text that opens it. */
void TLCJ_WriteArguments(TLC_STREAM *stream, TLI_IDENTIFIER *function, const char *first,
                         const char *other);

/** Writes the head of a function's definition, from the line before it to its opening brace. */
void TLCJ_WriteHead(TLC_STREAM *stream, TLI_IDENTIFIER *function);

/** Writes the arguments that a function keeps elsewhere than under their own names. */
void TLCJ_WriteArgumentCopies(TLC_STREAM *stream, TLI_IDENTIFIER *function);

/** Writes the functions of a scope that have their bodies outside: syscalls and the like. */
void TLCJ_WriteExternals(TLC_STREAM *stream, TLI_SCOPE *scope);
