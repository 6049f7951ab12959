/*
 * Java text: the items of data sections. Each is a field of the class, whatever section it stands in.
 */
#include "codegen/tlcj.h"
#include "host/host.h"

#include <cstdio>
#include <cstring>

#include "codegen/tlc.h"
#include "codegen/tlcc.h"
#include "names/tli.h"
#include "stmt/tls.h"
#include <ostrum/sh.h>
#include <ostrum/st.h>
#include <ostrum/tle.h>
#include <ostrum/tliv.h>
#include <ostrum/tlp.h>
#include <ostrum/tlt.h>

/* A parent that is constructed behind the item that it is set in. */
struct TLCJ_PARENT {
    TLI_IDENTIFIER *item;
    TLI_IDENTIFIER *parent;
    TLCJ_PARENT *next;
};

/* ---- Names of fields ---- */

/* The section that an item stands in; null for what is no such item. */
static TLI_IDENTIFIER *section_of(TLI_IDENTIFIER *identifier)
{
    if (TLI_IdentifierClass(identifier) != TLI_NODE) return nullptr;
    const TLI_SCOPE *scope = TLI_IdentifierScope(identifier);
    return scope == nullptr ? nullptr : scope->identifier;
}

bool TLCJ_IsItem(TLI_IDENTIFIER *identifier)
{
    if (identifier == nullptr) return false;
    return TLCC_IsItem(identifier) || section_of(identifier) != nullptr;
}

/* What no two items of a module have in common; neither name holds a line end. */
static const char *key_of(TLI_IDENTIFIER *section, TLI_IDENTIFIER *item, char *buffer)
{
    return ST_Concat(buffer, TLCJ_NAME_CAPACITY, TLI_IdentifierName(section), "\n",
                     TLI_IdentifierName(item), nullptr);
}

const char *TLCJ_GivenName(TLC_STREAM *stream, TLI_IDENTIFIER *identifier)
{
    char key[TLCJ_NAME_CAPACITY];
    intptr_t name = 0;
    const TLCJ_STATE *state = TLCJ_State(stream);
    TLI_IDENTIFIER *section = state->has_given ? section_of(identifier) : nullptr;
    if (section == nullptr) return nullptr;
    HS_FindName(state->given, key_of(section, identifier, key), &name);
    return reinterpret_cast<const char *>(name);
}

/* Methods and classes have names apart from those of fields. */
static bool is_field(TLI_SCOPE *scope, const char *name)
{
    TLI_IDENTIFIER *identifier = TLI_FindScopeIdentifier(scope, name);
    if (identifier == nullptr) return false;
    switch (TLI_IdentifierClass(identifier)) {
    case TLI_TYPE:
        return false;
    case TLI_FUNCTION:
        return TLCC_IsItem(identifier);
    default:
        return true;
    }
}

static bool is_field_of_module(TLC_STREAM *stream, const char *name)
{
    TLP_MODULE *module = TLC_Module(stream);
    return is_field(TLP_ModuleGlobals(module), name) || is_field(TLP_ModuleStatics(module), name);
}

static bool is_taken(TLC_STREAM *stream, const char *name)
{
    return HS_FindName(TLCJ_State(stream)->fields, name, nullptr) != 0 ||
           is_field_of_module(stream, name);
}

/* The names of section and item, and a number where these are taken as well. */
static void make_name(TLC_STREAM *stream, TLI_IDENTIFIER *item, const char *own, char *buffer)
{
    char section[TLCJ_NAME_CAPACITY];
    TLCJ_OwnName(stream, section_of(item), section);
    /* Names that begin so are kept for what the text itself makes. */
    const char *before = std::strncmp(section, "toll", 4) == 0 ? "_" : "";
    ST_Concat(buffer, TLCJ_NAME_CAPACITY, before, section, "_", own, nullptr);
    const size_t end = std::strlen(buffer);
    while (is_taken(stream, buffer) || !TLCJ_IsFree(stream, item, buffer)) {
        std::snprintf(buffer + end, TLCJ_NAME_CAPACITY - end, "_%d",
                      ++TLCJ_State(stream)->numbered_items);
    }
}

void TLCJ_DeclareItem(TLC_STREAM *stream, TLI_IDENTIFIER *item)
{
    char name[TLCJ_NAME_CAPACITY];
    char made[TLCJ_NAME_CAPACITY];
    char key[TLCJ_NAME_CAPACITY];
    TLCJ_STATE *state = TLCJ_State(stream);
    TLI_IDENTIFIER *section = section_of(item);
    if (section == nullptr || TLCJ_GivenName(stream, item) != nullptr) return;
    TLCJ_OwnName(stream, item, name);
    if (!is_taken(stream, name) && !is_field_of_module(stream, TLI_IdentifierName(item))) {
        HS_NewName(state->fields, name, 0);
        return;
    }
    make_name(stream, item, name, made);
    HS_NewName(state->fields, made, 0);
    HS_NewName(state->given, key_of(section, item, key),
               reinterpret_cast<intptr_t>(ST_Allocate(made)));
    state->has_given = true;
}

/* ---- Uses ---- */

/* Help screens and pictures have no class, and what is described nowhere has no field. */
static bool has_field(TLC_STREAM *stream, TLI_IDENTIFIER *identifier)
{
    if (TLI_IdentifierClass(identifier) != TLI_FUNCTION) return true;
    switch (TLIV_FunctionClass(identifier)) {
    case TLP_SECTION_HELPSCREEN:
    case TLP_SECTION_PICTURE:
        return false;
    default:
        return TLI_IdentifierDomain(identifier) != TLP_ModuleDomain(TLC_Module(stream)) ||
               TLIV_GetFunctionBlock(identifier) != nullptr;
    }
}

/* Does the function being written have an item of its own that hides a field? */
static bool is_hidden(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, const char *name)
{
    const TLI_SCOPE *frame = TLCJ_State(stream)->frame;
    return frame != nullptr &&
           (TLI_FindScopeIdentifier(frame, TLI_IdentifierName(identifier)) != nullptr ||
            TLI_FindScopeIdentifier(frame, name) != nullptr);
}

void TLCJ_WriteItem(TLC_STREAM *stream, TLI_IDENTIFIER *identifier)
{
    char name[TLCJ_NAME_CAPACITY];
    FILE *file = TLC_CFile(stream);
    if (!has_field(stream, identifier)) {
        std::fprintf(file, "(Data) toll_item(\"%s\", \"%s\")",
                     TLI_IdentifierName(TLI_IdentifierType(identifier)), TLI_FullName(identifier));
        return;
    }
    TLCJ_Name(stream, identifier, name);
    const char *class_name = TLCJ_State(stream)->class_name;
    if (class_name[0] != '\0' && is_hidden(stream, identifier, name)) {
        std::fprintf(file, "%s.", class_name);
    }
    HOST_PutText(file, name);
}

/* ---- Order ---- */

void TLCJ_NoteConstructed(TLC_STREAM *stream, TLI_IDENTIFIER *item)
{
    TLCG_AddToSet(&TLCJ_State(stream)->constructed, item);
}

bool TLCJ_IsConstructed(TLC_STREAM *stream, TLI_IDENTIFIER *item)
{
    const TLCG_SET &constructed = TLCJ_State(stream)->constructed;
    return constructed.count > 0 && TLCG_IsInSet(constructed, item);
}

bool TLCJ_IsLate(TLC_STREAM *stream, const TLE_TERM *term)
{
    TLI_IDENTIFIER *section = TLE_TermIdentifier(term);
    if (section == nullptr || TLI_IdentifierClass(section) != TLI_FUNCTION) return false;
    if (TLI_IdentifierDomain(section) != TLP_ModuleDomain(TLC_Module(stream))) return false;
    return TLIV_GetFunctionBlock(section) != nullptr && !TLCJ_IsConstructed(stream, section);
}

void TLCJ_WriteSection(TLC_STREAM *stream, TLI_IDENTIFIER *section)
{
    TLI_DOMAIN *domain = TLP_ModuleDomain(TLC_Module(stream));
    TLIV_PushScope(domain, section);
    TLS_BlockCode(stream, TLIV_GetFunctionBlock(section));
    TLIV_PopScope(domain, section);
}

void TLCJ_ConstructFirst(TLC_STREAM *stream, const TLE_TERM *term)
{
    if (TLCJ_IsLate(stream, term)) TLCJ_WriteSection(stream, TLE_TermIdentifier(term));
}

/* ---- Parents ---- */

void TLCJ_NoteParent(TLC_STREAM *stream, TLI_IDENTIFIER *item, TLE_TERM *parent)
{
    TLCJ_STATE *state = TLCJ_State(stream);
    auto *note = static_cast<TLCJ_PARENT *>(SH_NameAllocate(sizeof(TLCJ_PARENT), "TLCJ:PARENT"));
    note->item = item;
    note->parent = TLE_TermIdentifier(parent);
    if (state->last_parent == nullptr) {
        state->parents = note;
    } else {
        state->last_parent->next = note;
    }
    state->last_parent = note;
}

void TLCJ_WriteParents(TLC_STREAM *stream)
{
    char item[TLCJ_NAME_CAPACITY];
    char parent[TLCJ_NAME_CAPACITY];
    for (const TLCJ_PARENT *at = TLCJ_State(stream)->parents; at != nullptr; at = at->next) {
        std::fprintf(TLC_CFile(stream), "    %s.setParent(%s);\n\n",
                     TLCJ_OwnName(stream, at->item, item),
                     TLCJ_OwnName(stream, at->parent, parent));
    }
    TLCJ_DropParents(TLCJ_State(stream));
}

void TLCJ_DropParents(TLCJ_STATE *state)
{
    while (state->parents != nullptr) {
        TLCJ_PARENT *next = state->parents->next;
        SH_Free(state->parents);
        state->parents = next;
    }
    state->last_parent = nullptr;
}
