/*
 * Conditional statements: #IFDEF, #ELSE and #ENDIF against the names that the client defines.
 */
#include "frontend/tlp.h"

#include "core/sh.h"
#include "frontend/tlt.h"

#include <ostrum/st.h>
#include <string.h>

static void add_define(TLP_MODULE *module, const char *name)
{
    if (module->define_count == TLP_DEFINE_COUNT) {
        TLT_Error(nullptr, "Too many pre-processor definition");
        return;
    }
    ST_Copy(module->define_names[module->define_count], TLP_NAME_SIZE, name);
    module->define_count++;
}

/** Cuts the names apart; a name too many ends it. */
static void add_defines(TLP_MODULE *module, char *names)
{
    bool is_full = false;
    while (*names != 0 && !is_full) {
        char *comma = strchr(names, ',');
        if (comma != nullptr) *comma = 0;
        is_full = module->define_count == TLP_DEFINE_COUNT;
        add_define(module, names);
        if (comma == nullptr) return;
        names = comma + 1;
    }
}

void TLP_SetConditional(TLP_MODULE *module, const char *text)
{
    ST_Upper(module->defines_text, TLP_DEFINES_SIZE, text == nullptr ? "" : text);
    if (text == nullptr) return;
    char *copy = ST_Allocate(text);
    ST_Upper(copy, static_cast<int32_t>(strlen(copy)) + 1, copy);
    char *equals = strchr(copy, '=');
    memset(module->define_names, 0, sizeof module->define_names);
    module->define_count = 0;
    add_defines(module, equals == nullptr ? copy : equals + 1);
    SH_Free(copy);
}

/** 1 if statements at a depth are ignored. Depths without a flag lie in a skipped branch. */
static int32_t skips_at(const TLP_MODULE *module, int32_t depth)
{
    if (depth <= 0) return 0;
    return depth > TLP_DEPTH_COUNT || module->skip_flags[depth - 1] != 0;
}

int32_t TLP_IsSkipping(const TLP_MODULE *module)
{
    return skips_at(module, module->conditional_depth);
}

/** Sets the flag of the present depth, if it has one. */
static void set_skip(TLP_MODULE *module, int32_t skip)
{
    if (module->conditional_depth > TLP_DEPTH_COUNT) return;
    module->skip_flags[module->conditional_depth - 1] = skip;
}

static int32_t is_defined(const TLP_MODULE *module, const char *name)
{
    char upper[TLP_NAME_SIZE];
    ST_Upper(upper, TLP_NAME_SIZE, name);
    for (int32_t i = 0; i < module->define_count; i++)
        if (strcmp(module->define_names[i], upper) == 0) return 1;
    return 0;
}

static void begin_conditional(TLP_MODULE *module, TLT_STATEMENT *statement)
{
    char name[TLT_TEXT_SIZE];
    int32_t was_skipping = TLP_IsSkipping(module);
    module->conditional_depth++;
    module->else_seen = 0;
    if (was_skipping) {
        set_skip(module, 1);
        return;
    }
    if (module->conditional_depth > TLP_DEPTH_COUNT) {
        TLT_Error(statement, "Too many nested #ifdef loops");
        module->conditional_depth = TLP_DEPTH_COUNT;
    }
    if (TLT_NextToken(statement, nullptr) != TLT_TOKEN_IDENTIFIER) return;
    TLT_GetToken(statement, name);
    set_skip(module, !is_defined(module, name));
}

static void invert_conditional(TLP_MODULE *module, TLT_STATEMENT *statement)
{
    if (module->conditional_depth == 0) {
        TLT_Error(statement, "No matching #ifdef");
        return;
    }
    if (module->else_seen) {
        TLT_Error(statement, "Too many #else");
        return;
    }
    module->else_seen = 1;
    bool is_outer_skipped = skips_at(module, module->conditional_depth - 1) != 0;
    set_skip(module, is_outer_skipped || !TLP_IsSkipping(module));
}

static void end_conditional(TLP_MODULE *module, TLT_STATEMENT *statement)
{
    if (module->conditional_depth == 0) {
        TLT_Error(statement, "No matching #ifdef");
        return;
    }
    set_skip(module, 1);
    module->else_seen = 0;
    module->conditional_depth--;
}

void TLP_Preprocess(TLP_MODULE *module, TLT_STATEMENT *statement)
{
    TLT_GetToken(statement, nullptr); // the '#'
    switch (TLT_GetToken(statement, nullptr)) {
    case TLT_TOKEN_IFDEF:
        begin_conditional(module, statement);
        break;
    case TLT_TOKEN_ELSE:
        invert_conditional(module, statement);
        break;
    case TLT_TOKEN_ENDIF:
        end_conditional(module, statement);
        break;
    default:
        TLT_Error(statement, "Unrecognised preprocessor statement");
    }
}
