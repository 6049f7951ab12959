/*
 * The generator of module files: plants constants, generates all functions, has the sections laid
 * out, checks the public names and closes the file, which is deleted if errors were counted.
 */
#include "codegen/tlc.h"
#include "codegen/tlcg.h"

#include <cstdio>
#include <ostrum/kob.h>
#include <ostrum/sh.h>
#include <ostrum/tli.h>
#include <ostrum/tlic.h>
#include <ostrum/tlit.h>
#include <ostrum/tliv.h>
#include <ostrum/tlp.h>
#include <ostrum/tlt.h>

// Bits of a module file's flag word.
enum : uint32_t {
    MODULE_WARNINGS = 0x001,
    MODULE_ERRORS = 0x002,
    MODULE_DEBUG = 0x004,
    MODULE_TREE = 0x040,
};

enum { CLASS_SYSCALL = 6 };       // of functions
enum { QUALIFIER_PROTOTYPE = 3 }; // of functions
enum { SUBCLASS_RECORD = 4 };     // of types
enum { DIMENSION_SCALAR = -1 };
enum { FREE_HANDLE = 1 };

/** A scalar constant is folded into the code that uses it, unless it is a record. */
static bool needs_storage(TLI_IDENTIFIER *constant)
{
    if (TLI_IdentifierDimension(constant, nullptr) != DIMENSION_SCALAR) return true;
    return TLIT_TypeSubclass(nullptr, TLI_IdentifierType(constant)) == SUBCLASS_RECORD;
}

static bool is_plantable(TLI_IDENTIFIER *identifier)
{
    const int32_t identifier_class = TLI_IdentifierClass(identifier);
    return identifier_class == TLI_CONSTANT || identifier_class == TLI_FUNCTION ||
           identifier_class == TLI_NON_VOLATILE;
}

static void plant(TLCG_CONTEXT *context, const TLCG_VISIT &visit)
{
    const int32_t identifier_class = TLI_IdentifierClass(visit.identifier);
    if (identifier_class == TLI_FUNCTION) {
        context->is_public = false;
        TLCG_PushScope(context, TLIV_FunctionScope(visit.identifier), is_plantable);
    } else if (identifier_class == TLI_NON_VOLATILE) {
        TLIC_PlantNonVolatile(context->stream, visit.identifier, visit.is_public);
    } else if (needs_storage(visit.identifier)) {
        TLIC_PlantConstant(context->stream, visit.identifier, visit.is_public);
    }
}

static void plant_scope(TLCG_CONTEXT *context, TLI_SCOPE *scope, bool is_public)
{
    TLCG_VISIT visit;
    context->is_public = is_public;
    TLCG_PushScope(context, scope, is_plantable);
    while (TLCG_Pop(context, &visit))
        plant(context, visit);
}

/** The names that a generator can give a section: besides the plantable ones the items of data. */
static bool can_have_section(TLI_IDENTIFIER *identifier)
{
    return is_plantable(identifier) || TLI_IdentifierClass(identifier) == TLI_NODE;
}

/** The sections go with the stream, so that no name may keep one. */
static void forget_sections(TLCG_CONTEXT *context)
{
    TLCG_VISIT visit;
    TLCG_PushScope(context, TLP_ModuleGlobals(context->module), can_have_section);
    TLCG_PushScope(context, TLP_ModuleStatics(context->module), can_have_section);
    while (TLCG_Pop(context, &visit)) {
        TLI_SetPSect(visit.identifier, nullptr);
        TLCG_PushScope(context, TLIV_FunctionScope(visit.identifier), can_have_section);
    }
}

static void check_function(TLCG_CONTEXT *context, TLI_IDENTIFIER *function)
{
    char message[96];
    if (TLIV_FunctionClass(function) == CLASS_SYSCALL) return;
    if (TLIV_FunctionQualifiers(function) == QUALIFIER_PROTOTYPE) return;
    if (TLIV_GetFunctionBlock(function) != nullptr) return;
    std::snprintf(message, sizeof message, "Public function '%s' has no definition",
                  TLI_IdentifierName(function));
    TLC_Error(context->stream, message);
}

static void check_constant(TLCG_CONTEXT *context, TLI_IDENTIFIER *constant)
{
    if (TLI_IdentifierDimension(constant, nullptr) != DIMENSION_SCALAR) return;
    TLI_IDENTIFIER *base = TLIT_TypeBaseType(nullptr, TLI_IdentifierType(constant));
    if (base == TLIT_IntType) TLC_GlobalValue(context->stream, constant);
}

static int32_t check_global(void *user, const char *, TLI_IDENTIFIER *identifier)
{
    TLCG_CONTEXT *context = static_cast<TLCG_CONTEXT *>(user);
    const int32_t identifier_class = TLI_IdentifierClass(identifier);
    if (identifier_class == TLI_CONSTANT) check_constant(context, identifier);
    if (identifier_class == TLI_FUNCTION) check_function(context, identifier);
    return 1;
}

static uint32_t module_flags(const TLCG_CONTEXT *context)
{
    int32_t warnings = 0;
    int32_t errors = 0;
    uint32_t flags = TLC_StreamKobFlags(context->stream);
    const int32_t is_fatal = TLT_GetCounters(nullptr, &warnings, &errors) == 0;
    if ((context->flags & TLC_FLAG_DEBUG) != 0) flags |= MODULE_DEBUG;
    if (is_fatal || errors != 0) flags |= MODULE_ERRORS;
    if (warnings != 0) flags |= MODULE_WARNINGS;
    if (context->has_tree) flags |= MODULE_TREE;
    return flags;
}

static void generate_code(TLCG_CONTEXT *context)
{
    plant_scope(context, TLP_ModuleGlobals(context->module), true);
    plant_scope(context, TLP_ModuleStatics(context->module), false);
    TLCG_GenerateSections(context);
}

static int32_t static_size(TLCG_CONTEXT *context)
{
    TLI_SCOPE *statics = TLP_ModuleStatics(context->module);
    return statics == nullptr ? 0 : TLI_ScopeSize(statics);
}

static int32_t write_object(TLCG_CONTEXT *context)
{
    TLI_SCOPE *globals = TLP_ModuleGlobals(context->module);
    KOB_SetStaticSize(context->object, static_size(context));
    TLC_GenerateObjectCode(context->stream, context->object);
    if (globals != nullptr) TLI_AllIdentifiers(globals, check_global, context);
    if ((context->flags & TLC_FLAG_DEBUG) != 0) TLCG_DebugFrames(context);
    return KOB_CloseModule(context->object, module_flags(context), FREE_HANDLE);
}

int32_t TLCG_GenerateKOBCode(TLP_MODULE *module, uint32_t flags, const char *file_name,
                             int32_t tool, const char *tool_version)
{
    TLCG_CONTEXT context = {};
    context.flags = flags;
    context.module = module;
    if ((flags & TLC_FLAG_PROGRESS) != 0) std::fputs("-- Code generation\n", stdout);
    context.stream = TLC_NewStream(module, flags);
    generate_code(&context);
    // The file is made late: all errors in the code have been counted by then.
    int32_t result =
        KOB_NewNameModule(&context.object, file_name, tool, tool_version, TLP_ModuleName(module));
    if (result == 0) result = write_object(&context);
    forget_sections(&context);
    TLCG_ReleaseContext(&context);
    TLC_DelStream(context.stream);
    return result == 0 ? 0 : TLCG_KOB_RESULT + result;
}
