// Records behind the names: the generic part of every identifier, scopes, domains and pragmas.
#pragma once

#include <ostrum/tli.h>

// Names of pragmas, scopes and domains: 31 characters and the terminator.
static constexpr int32_t TLI_NAME_CAPACITY = 32;

struct TLI_PRAGMA {
    char name[TLI_NAME_CAPACITY]; // upper case
    char *value;                  // owned
    TLI_PRAGMA *next;             // the one before it in time
};

// The generic part, first in the record of every class. The name is the copy that the scope's table
// keeps; only an identifier outside all scopes owns its name.
struct TLI_IDENTIFIER {
    const TLI_CLASS *class_record; // never null
    TLI_IDENTIFIER *type;          // may be null
    const char *name;              // never null
    TLI_SCOPE *scope;
    TLT_STATEMENT *statement; // declaring statement; null for predeclared names
    TLI_PRAGMA *pragmas;      // newest first, owned
    TLC_PSECT *psect;         // section that the identifier was planted in
};

// An identifier that its scope owns outside the table: it gave way to a later declaration, but others
// may still point at it, or it has no name that could be looked up.
struct TLI_UNLISTED {
    TLI_IDENTIFIER *identifier; // owned, with its name
    TLI_UNLISTED *next;
};

struct TLI_SCOPE {
    char name[TLI_NAME_CAPACITY];
    int32_t type;               // TLI_FRAME_SCOPE or TLI_STATIC_SCOPE
    int32_t size;               // next free offset, bytes
    TLI_SCOPE *next;            // below it on the stack of its domain
    TLI_DOMAIN *domain;         // whose names these are; owns nothing of the scope
    int32_t depth;              // pushes not yet popped
    HS_DOMAIN *names;           // name to TLI_IDENTIFIER
    TLI_IDENTIFIER *identifier; // function that owns the scope, or null
    TLI_UNLISTED *unlisted;
    uint32_t classes; // bit for each class of a name entered so far
    uint64_t filter;  // bit for each hash modulo 64 of a name entered so far: most misses stop here
};

// The identifiers of a scope at one moment, newest first. The array is the caller's to free.
struct TLI_LIST {
    TLI_IDENTIFIER **names;
    size_t count;
    size_t size; // bytes that names has room for
};

struct TLI_DOMAIN {
    char name[TLI_NAME_CAPACITY]; // empty for the language and for data types
    TLI_SCOPE *scope;             // top of the stack
    HS_DOMAIN *used_domains;      // name to TLI_DOMAIN
    HS_DOMAIN *used_scopes;       // name to TLI_SCOPE
    TLI_DOMAIN *next_printed;     // list of the domains that the print under way has been through
    int32_t is_printed;
};

// Allocates an identifier that stands in no scope, with a name of its own.
TLI_IDENTIFIER *TLI_NewHiddenIdentifier(const char *tag, const char *name,
                                        const TLI_CLASS *class_record);

// The identifier that a declaration in the domain's top scope would hide, or null.
TLI_IDENTIFIER *TLI_FindHidden(const TLI_DOMAIN *data_types, const TLI_DOMAIN *domain,
                               const char *name);

// Enters an identifier in a scope's table; the stored name, or null if the scope has it already.
const char *TLI_EnterName(TLI_SCOPE *scope, const char *name, TLI_IDENTIFIER *identifier);

// Gives an identifier that owns its name, and stands in no table, to a scope.
void TLI_OwnUnlisted(TLI_SCOPE *scope, TLI_IDENTIFIER *identifier);

// Frees an identifier with its pragmas and what its class owns, but not its name or the entry in the
// scope's table.
void TLI_FreeIdentifier(TLI_IDENTIFIER *identifier);

// Lists a scope for those who need its identifiers from the oldest on, or more than once; a null scope
// has none.
TLI_LIST TLI_ListIdentifiers(TLI_SCOPE *scope);
