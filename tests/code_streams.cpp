/*
 * Code streams: the exact bytes of literals, folds, addressing, jumps, strings, symbols and calls.
 */
#include "codegen/tlc.h"
#include "frontend/tlp.h"
#include "module_contents.h"
#include "written.h"

#include <cstring>
#include <gtest/gtest.h>
#include <ostrum/eep.h>
#include <ostrum/kob.h>
#include <ostrum/tlcg.h>
#include <ostrum/tli.h>
#include <ostrum/tlic.h>
#include <ostrum/tlit.h>
#include <ostrum/tliv.h>
#include <ostrum/tls.h>
#include <ostrum/tlt.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{

using Bytes = std::vector<int>;

std::vector<std::string> messages;

void keep_message(TLT_STATEMENT *, int32_t, const char *text)
{
    messages.push_back(text);
}

Bytes bytes_of(const TLC_PSECT *section)
{
    return Bytes(section->code, section->code + section->size);
}

class CodeStreams : public testing::Test
{
protected:
    void SetUp() override
    {
        TLCG_Initialise();
        messages.clear();
        TLT_DefaultMessageHandler(keep_message);
        module = TLP_NewModule("m", nullptr);
        TLP_SetModuleName(module, "m");
        module->domain = TLI_NewDomain("M");
        module->globals = TLI_NewScope(module->domain, "GLOBALS", TLI_STATIC_SCOPE);
        TLI_PushScope(module->domain, module->globals);
        std::strcpy(module->source_file, "Engine.tl");
        stream = TLC_NewStream(module, 0);
    }

    void TearDown() override
    {
        TLC_DelStream(stream);
        TLP_DelModule(module);
    }

    TLI_IDENTIFIER *function(const char *name, int32_t function_class, int32_t qualifiers)
    {
        TLI_IDENTIFIER *made = TLIV_Function(nullptr, module->domain, nullptr, name, function_class,
                                             qualifiers, TLIT_IntType);
        TLIV_PopScope(module->domain, made);
        return made;
    }

    /** Writes the stream as a module, reads it back and gives its code. */
    Bytes code_of_module()
    {
        const std::string path =
            testing::TempDir() + "code_streams." + std::to_string(getpid()) + ".kob";
        KOB_MODULE *object = nullptr;
        EXPECT_EQ(KOB_NewNameModule(&object, path.c_str(), 0, "1", "M"), 0);
        TLC_GenerateObjectCode(stream, object);
        EXPECT_EQ(KOB_CloseModule(object, 0, 1), 0);
        contents = contents_of(path);
        return contents.code;
    }

    TLP_MODULE *module = nullptr;
    TLC_STREAM *stream = nullptr;
    ModuleContents contents;
};

TEST_F(CodeStreams, LiteralsTakeTheirShortestForm)
{
    const struct {
        int32_t value;
        Bytes expected;
    } rows[] = {
        { 0, { 0 } },
        { 31, { 31 } },
        { 32, { 32, 32 } },
        { 127, { 32, 127 } },
        { 128, { 33, 0, 128 } },
        { -1, { 32, 255 } },
        { -128, { 32, 128 } },
        { -129, { 33, 0xff, 0x7f } },
        { 32767, { 33, 0x7f, 0xff } },
        { INT16_MIN, { 33, 0x80, 0 } },
        { INT16_MIN - 1, { 34, 0xff, 0xff, 0x7f, 0xff } },
        { 32768, { 34, 0, 0, 0x80, 0 } },
        { INT32_MIN, { 34, 0x80, 0, 0, 0 } },
    };
    for (const auto &row : rows) {
        TLC_PSECT *section = TLC_NewPSect(stream);
        TLC_Literal(stream, row.value);
        EXPECT_EQ(bytes_of(section), row.expected) << row.value;
    }
}

// A value in front of each of some codes.
void literal_and(TLC_STREAM *s, int32_t value, std::initializer_list<int32_t> codes)
{
    for (int32_t code : codes) {
        TLC_Literal(s, value);
        TLC_PCode(s, code);
    }
}

void pcodes(TLC_STREAM *s, std::initializer_list<int32_t> codes)
{
    for (int32_t code : codes)
        TLC_PCode(s, code);
}

struct Emission {
    void (*emit)(TLC_STREAM *stream);
    Bytes expected;
};

// clang-format off
#define EMIT(...) [](TLC_STREAM *s) { __VA_ARGS__; }
const Emission emissions[] = {
    // 0 ADD vanishes and leaves nothing to fold.
    { EMIT(TLC_Literal(s, 0), literal_and(s, 0, { EEP_ADD }), TLC_PCode(s, EEP_ADD)),
      { 0, EEP_ADD } },
    { EMIT(literal_and(s, 0, { EEP_SUB, EEP_OR, EEP_SL, EEP_SR })), {} },
    { EMIT(literal_and(s, 0, { EEP_MUL, EEP_AND })), { 0, EEP_MUL, 0, EEP_AND } },
    { EMIT(literal_and(s, 1, { EEP_MUL, EEP_DIV, EEP_ADD })), { 1, EEP_ADD } },
    // An operand of 0 is no literal.
    { EMIT(TLC_Code8(s, 0), TLC_PCode(s, EEP_ADD)), { 0, EEP_ADD } },
    { EMIT(TLC_Code16(s, 0), TLC_PCode(s, EEP_ADD)), { 0, 0, EEP_ADD } },
    { EMIT(TLC_Code32(s, 1), TLC_PCode(s, EEP_MUL)), { 0, 0, 0, 1, EEP_MUL } },
    { EMIT(pcodes(s, { EEP_LLA, EEP_LB, EEP_LLA, EEP_LW, EEP_LLA, EEP_LP })),
      { EEP_LLB, EEP_LLW, EEP_LLW } },
    { EMIT(pcodes(s, { EEP_LLA, EEP_SB, EEP_POP, EEP_LLA, EEP_SW, EEP_POP, EEP_LLA, EEP_SP, EEP_POP })),
      { EEP_SLBP, EEP_SLWP, EEP_SLWP } },
    // Stores fold with POP, once.
    { EMIT(pcodes(s, { EEP_SLB, EEP_POP, EEP_POP })), { EEP_SLBP, EEP_POP } },
    { EMIT(pcodes(s, { EEP_SLW, EEP_POP, EEP_POP })), { EEP_SLWP, EEP_POP } },
    { EMIT(pcodes(s, { EEP_SB, EEP_POP, EEP_POP })), { EEP_SBP, EEP_POP } },
    { EMIT(pcodes(s, { EEP_SW, EEP_POP, EEP_POP })), { EEP_SWP, EEP_POP } },
    { EMIT(pcodes(s, { EEP_SP, EEP_POP, EEP_POP })), { EEP_SP, EEP_POP, EEP_POP } },
    // The word at 4 grows by 1.
    { EMIT(TLC_LoadLocalValue(s, 4, 4, -1, 0), literal_and(s, 1, { EEP_ADD }),
           TLC_LoadLocalAddress(s, 4, 4, -1, 0), TLC_StoreValue(s, 4, 1), TLC_PCode(s, EEP_POP)),
      { 0x04, 0x24, 0x01, 0x30, 0x04, 0x6D } },
    // By access: of the frame, by address, by pointer.
    { EMIT(TLC_LoadValue(s, 2, 0), TLC_LoadValue(s, 2, 1), TLC_LoadValue(s, 2, 2)),
      { EEP_LLW, EEP_LW, EEP_LP } },
    { EMIT(TLC_LoadValue(s, 1, 1), TLC_LoadValue(s, 1, 0)), { EEP_LB, EEP_LLB } },
    { EMIT(TLC_StoreValue(s, 4, 0), TLC_StoreValue(s, 4, 1), TLC_StoreValue(s, 4, 2)),
      { EEP_SLW, EEP_SW, EEP_SP } },
    { EMIT(TLC_StoreValue(s, 1, 1), TLC_StoreValue(s, 1, 0)), { EEP_SB, EEP_SLB } },
    { EMIT(TLC_AddAddress(s, 1), TLC_AddAddress(s, 4), TLC_AddAddress(s, 6)),
      { EEP_ADD, EEP_ADW, EEP_EXCH, 6, EEP_MUL, EEP_ADD } },
    { EMIT(TLC_LoadOffset(s, 4, 2, 3, 2), TLC_LoadOffset(s, 4, 2, 3, -1), TLC_LoadOffset(s, 1, 0, 3, -1)),
      { 10, 4, EEP_MUL, 2, EEP_ADD } },
    // An element of the frame, its index on the stack or known.
    { EMIT(TLC_LoadLocalValue(s, 4, 8, 10, -1)), { 8, EEP_LLA, EEP_ADW, EEP_LW } },
    { EMIT(TLC_StoreLocalValue(s, 1, 2, 10, -1)), { 2, EEP_LLA, EEP_ADD, EEP_SB } },
    { EMIT(TLC_StoreLocalValue(s, 4, 2, 10, 3)), { 14, EEP_SLW } },
    { EMIT(TLC_LoadGlobalAddress(s, 4, 0x102, 5, 2)), { EEP_LSA, 0, 0, 1, 10 } },
    { EMIT(TLC_LoadGlobalAddress(s, 4, 2, 5, -1)), { EEP_LSA, 0, 0, 0, 2, EEP_ADW } },
    { EMIT(TLC_Argument(s, 1), TLC_Argument(s, 4)), { EEP_ARGB } },
    { EMIT(TLC_Align(s), TLC_Code8(s, 1), TLC_Align(s), TLC_Align(s)), { 1, 0 } },
    { EMIT(TLC_LineNumber(s, 5)), {} }, // not asked for
};
// clang-format on

TEST_F(CodeStreams, EmitExactBytes)
{
    for (const Emission &row : emissions) {
        TLC_PSECT *section = TLC_NewPSect(stream);
        row.emit(stream);
        EXPECT_EQ(bytes_of(section), row.expected) << "row " << &row - emissions;
    }
    EXPECT_TRUE(messages.empty());
}

TEST_F(CodeStreams, NothingFoldsAcrossSections)
{
    TLC_PSECT *first = TLC_NewPSect(stream);
    TLC_PCode(stream, EEP_LLA);
    TLC_PSECT *second = TLC_NewPSect(stream);
    TLC_PCode(stream, EEP_LB);
    EXPECT_EQ(bytes_of(first), Bytes({ EEP_LLA }));
    EXPECT_EQ(bytes_of(second), Bytes({ EEP_LB }));
}

TEST_F(CodeStreams, BoundsAndLinesWhenAskedFor)
{
    TLC_STREAM *checked = TLC_NewStream(module, TLC_FLAG_CHECKS | TLC_FLAG_LINES);
    TLC_PSECT *section = TLC_NewPSect(checked);
    TLC_LoadLocalValue(checked, 4, 8, 10, -1);
    TLC_LoadLocalValue(checked, 4, 8, 0, -1);
    EXPECT_EQ(bytes_of(section),
              Bytes({ 10, EEP_CHECK, 8, EEP_LLA, EEP_ADW, EEP_LW, 8, EEP_LLA, EEP_ADW, EEP_LW }));
    TLT_STATEMENT *statement = TLT_NewStatement("X = 0", "m.tl", 0x1234, 1);
    section = TLC_NewPSect(checked);
    TLC_Statement(checked, statement);
    TLC_Statement(checked, statement);
    TLC_PCode(checked, EEP_ADD);
    TLC_LineNumber(checked, 70000);
    EXPECT_EQ(bytes_of(section), Bytes({ EEP_LINE, 0x12, 0x34, EEP_ADD, EEP_LINE, 0xff, 0xff }));
    TLC_DelStream(checked);
    TLT_DelStatement(statement);
}

TEST_F(CodeStreams, LargeSectionsKeepTheirBytes)
{
    TLC_PSECT *one = TLC_NewPSect(stream);
    TLC_PSECT *other = TLC_NewPSect(stream);
    for (int at = 0; at < 70000; at++) {
        TLC_SetPSect(stream, at % 3 == 0 ? one : other);
        TLC_Code16(stream, at);
    }
    ASSERT_EQ(one->size + other->size, 140000u);
    for (uint32_t at = 0; at < one->size / 2; at++) {
        ASSERT_EQ(one->code[2 * at] << 8 | one->code[2 * at + 1], int(at * 3 & 0xffff));
    }
    EXPECT_EQ(other->code[0] << 8 | other->code[1], 1);
}

TEST_F(CodeStreams, StringsAreStoredOnce)
{
    TLC_PSECT *section = TLC_NewPSect(stream);
    TLC_String(stream, "one");
    TLC_String(stream, "");
    TLC_String(stream, "one");
    TLC_String(stream, "On");
    EXPECT_EQ(bytes_of(stream->string_section), Bytes({ 'o', 'n', 'e', 0, 0, 'O', 'n', 0 }));
    EXPECT_EQ(section->size, 16u);
    const Bytes code = code_of_module();
    const Bytes expected = {
        'o',  'n',  'e',  0,    0,    'O',  'n',  0,    0xff, 0xff, 0xff, 0xf8,
        0xff, 0xff, 0xff, 0xf8, 0xff, 0xff, 0xff, 0xf0, 0xff, 0xff, 0xff, 0xf1
    };
    EXPECT_EQ(code, expected);
}

TEST_F(CodeStreams, LayoutPadsAndPatches)
{
    TLC_ConstantPSect(stream);
    TLC_Code8(stream, 0xaa);
    TLC_NonVolPSect(stream);
    TLC_Code32(stream, 0);
    TLC_NewPSect(stream);
    TLC_PCode(stream, EEP_JUMP);
    TLC_PSECT *back = TLC_NewPSect(stream);
    TLC_PSECT *end = TLC_EvenPSect(stream);
    TLC_SetPSect(stream, back->next == end ? stream->code.head : nullptr);
    TLC_Jump(stream, end);
    TLC_SetPSect(stream, back);
    TLC_PCode(stream, EEP_JZ);
    TLC_Jump(stream, back);
    TLC_LoadGlobalAddress(stream, 4, 6, 0, 0);
    TLC_SetPSect(stream, end);
    TLC_PCode(stream, EEP_STOP);
    const Bytes expected = {
        0xaa,     0,                                  // constants, padded
        0,        0,    0,    0,                      // non-volatiles
        EEP_JUMP, 0,    11,                           // to the even section
        EEP_JZ,   0xff, 0xff, EEP_LSA, 0, 0, 0, 6, 0, // padded
        EEP_STOP, 0,                                  // the spare byte of an odd code
    };
    EXPECT_EQ(code_of_module(), expected);
    EXPECT_EQ(contents.static_offsets, std::vector<int>({ 13 }));
    const std::vector<std::string> expected_symbols = {
        "0 $M START 0",          "11 Engine.tl CODE 0",     "0 M.CONSTANTS CONSTANTS 0",
        "0 engine.$CODE CODE 6", "7 M.$NONVOLSTART CODE 2", "8 M.$NONVOLEND CODE 6",
    };
    EXPECT_EQ(contents.symbols, expected_symbols);
}

TEST_F(CodeStreams, SymbolsMarkPlacesAndFields)
{
    TLI_IDENTIFIER *here = function("HERE", 1, 1);
    TLI_IDENTIFIER *away = function("AWAY", 1, 1);
    TLI_IDENTIFIER *bare = function("BARE", 1, 1);
    TLI_Pragma(bare, "NOTAG", "");
    TLI_SetPSect(here, TLC_NewPSect(stream));
    TLC_Symbol(stream, 0, TLIT_CodeType, here);
    TLC_PCode(stream, EEP_CALL);
    TLC_Symbol(stream, 1, TLIT_CodeType, here);
    TLC_PCode(stream, EEP_CALL);
    TLC_Symbol(stream, 1, TLIT_CodeType, away);
    TLC_PCode(stream, EEP_CALL);
    TLC_Symbol(stream, 1, TLIT_CodeType, bare);
    TLC_NameSymbol(stream, 6, TLIT_IntType, "IDLE");
    for (int32_t bad : { 2, 5, 7, 14, 17, -1 }) {
        TLC_NameSymbol(stream, bad, TLIT_IntType, "X");
        ASSERT_EQ(messages.size(), 1u) << bad;
        EXPECT_EQ(messages[0], "Unknown symbol class");
        messages.clear();
    }
    const Bytes expected = { EEP_CALL, 0xff, 0xff, 0xff, 0xff, EEP_CALL, 0, 0, 0, 0,
                             EEP_CALL, 0,    0,    0,    0,    0,        0, 0, 0, 0 };
    EXPECT_EQ(code_of_module(), expected);
    const std::vector<std::string> expected_symbols = {
        "0 $M START 0",    "11 Engine.tl CODE 0", "6 IDLE INT 15",         "1 BARE CODE 11",
        "1 M.AWAY CODE 6", "0 M.HERE CODE 0",     "0 engine.$CODE CODE 0",
    };
    EXPECT_EQ(contents.symbols, expected_symbols);
}

TEST_F(CodeStreams, FaultsOfLayoutAreReported)
{
    TLC_NewPSect(stream);
    TLC_PSECT *far = TLC_NewPSect(stream);
    for (int at = 0; at < 32768; at++)
        TLC_Code8(stream, 0);
    TLC_PSECT *end = TLC_NewPSect(stream);
    TLC_SetPSect(stream, stream->code.head);
    TLC_Jump(stream, far);
    TLC_Jump(stream, end);
    TLC_NameSymbol(stream, 0, TLIT_CodeType, "A_NAME_OF_TOO_MANY_CHARACTERS_32");
    TLC_NameSymbol(stream, 0, TLIT_CodeType, "1BAD");
    code_of_module();
    const std::vector<std::string> expected = {
        "Failed to create symbol '1BAD' : Illegal characters in symbol",
        "Failed to create symbol 'A_NAME_OF_TOO_MANY_CHARACTERS_32' : Symbol too long",
        "Jump out of range",
    };
    EXPECT_EQ(messages, expected);
}

TEST_F(CodeStreams, LabelsFindTheirNode)
{
    struct Node {
        TLS_STATEMENT common;
        TLC_PSECT *section;
    };
    static TLS_STATEMENT_CLASS node_class = {};
    node_class.node_section = [](TLS_STATEMENT *record) {
        return reinterpret_cast<Node *>(record)->section;
    };
    Node node = { { &node_class, nullptr, nullptr }, nullptr };
    TLI_IDENTIFIER *label = TLIC_Node(nullptr, module->domain, nullptr, "N", TLIT_IntType, &node);
    TLC_NewPSect(stream);
    TLC_PCode(stream, EEP_JUMP);
    TLC_Label(stream, label);
    TLC_PCode(stream, EEP_STOP);
    node.section = TLC_NewPSect(stream);
    TLC_PCode(stream, EEP_RET);
    TLC_PCode(stream, EEP_RET);
    EXPECT_EQ(code_of_module(), Bytes({ EEP_JUMP, 0, 3, EEP_STOP, EEP_RET, EEP_RET }));
}

TEST_F(CodeStreams, CallsOfFunctionsAndUserCodes)
{
    TLI_IDENTIFIER *plain = function("PLAIN", 1, 0);
    TLI_IDENTIFIER *user = function("USER", 1, 1);
    TLI_IDENTIFIER *adder = function("ADDER", 2, 1);
    TLI_IDENTIFIER *wrong = function("WRONG", 1, 1);
    TLI_IDENTIFIER *zero = function("ZERO", 1, 1);
    TLI_Pragma(user, "PCODE", "0xC8");
    TLI_Pragma(adder, "PCODE", "48");
    TLI_Pragma(wrong, "PCODE", "48x");
    TLI_Pragma(zero, "PCODE", "0");
    TLI_Pragma(plain, "DISPID", "7");
    TLC_PSECT *section = TLC_NewPSect(stream);
    for (TLI_IDENTIFIER *called : { plain, user, adder, wrong, zero }) {
        TLC_StartCall(stream, called, 1);
        TLC_Literal(stream, 0);
        EXPECT_EQ(TLC_Call(stream, called, 1), 1);
    }
    const Bytes expected = {
        EEP_START_VARIANT, 0, EEP_CALL, 0,        0, 0,        0, EEP_ARGS, 0, 200,
        EEP_ARGS,          0, EEP_ADD,  EEP_ARGS, 0, EEP_CALL, 0, 0,        0, 0,
        EEP_ARGS,          0, EEP_CALL, 0,        0, 0,        0
    };
    EXPECT_EQ(bytes_of(section), expected);
    EXPECT_EQ(messages, std::vector<std::string>({ "PCode pragma has non-numeric value" }));
    code_of_module();
    const std::vector<std::string> references(contents.symbols.begin() + 2, contents.symbols.end());
    const std::vector<std::string> expected_references = {
        "1 M.ZERO CODE 23", "1 M.WRONG CODE 16", "16 $M CODE 13",
        "16 $M CODE 10",    "1 M.PLAIN CODE 3",  "0 engine.$CODE CODE 0",
    };
    EXPECT_EQ(references, expected_references);
}

TEST_F(CodeStreams, UserCodesStayWhereTheirSymbolIs)
{
    TLI_IDENTIFIER *user = function("USER", 1, 1);
    TLI_Pragma(user, "PCODE", "1");
    TLC_PSECT *section = TLC_NewPSect(stream);
    TLC_Literal(stream, 5);
    EXPECT_EQ(TLC_Call(stream, user, 1), 1);
    TLC_PCode(stream, EEP_MUL);
    EXPECT_EQ(bytes_of(section), (Bytes{ 5, 1, EEP_MUL }));
}

TEST_F(CodeStreams, CallsOfSyscalls)
{
    EEP_NewSyscall(TLP_SyscallData(module), "M.BRIEF", 5, 0x100);
    EEP_NewSyscall(TLP_SyscallData(module), "M.LONG", 0x305, 0);
    TLI_IDENTIFIER *quick = function("BRIEF", 6, 1);
    TLI_IDENTIFIER *far = function("LONG", 6, 1);
    TLI_IDENTIFIER *lost = function("LOST", 6, 1);
    TLI_Pragma(far, "TOLL_OVERLAY", "GRAPHICS");
    TLI_Pragma(far, "TOLL_KOB_FLAG", "ALLOCATE_SPACE");
    TLI_Pragma(quick, "TOLL_KOB_FLAG", "UNKNOWN");
    TLC_PSECT *section = TLC_NewPSect(stream);
    for (TLI_IDENTIFIER *called : { quick, far, far, lost })
        TLC_Call(stream, called, 1);
    EXPECT_EQ(bytes_of(section),
              Bytes({ EEP_SHORT_SYSCALL, 5, EEP_SYSCALL, 3, 5, EEP_SYSCALL, 3, 5 }));
    EXPECT_EQ(TLC_StreamKobFlags(stream), 0x180u);
    EXPECT_EQ(messages, std::vector<std::string>({ "Bad syscall 'LOST'\n" }));
    code_of_module();
    const std::vector<std::string> expected = {
        "0 $M START 0",
        "11 Engine.tl CODE 0",
        "12 GRAPHICS OVLY_ENTRY 0",
        "13 M.LONG SYSCALL_DEF 773",
        "13 M.BRIEF SYSCALL_DEF 5",
        "0 engine.$CODE CODE 0",
    };
    EXPECT_EQ(contents.symbols, expected);
}

TEST_F(CodeStreams, ConstantsAndOuterFrames)
{
    TLI_IDENTIFIER *outer = function("OUTER", 1, 1);
    TLIV_PushScope(module->domain, outer);
    TLI_IDENTIFIER *local =
        TLIV_Variable(nullptr, module->domain, nullptr, "L", TLIT_IntType, -1, nullptr);
    TLIV_PopScope(module->domain, outer);
    TLI_IDENTIFIER *numbers =
        TLIC_NonVolatile(nullptr, module->domain, nullptr, "N", TLIT_CharType, 5, nullptr);
    TLI_IDENTIFIER *texts =
        TLIC_NonVolatile(nullptr, module->domain, nullptr, "T", TLIT_StringType, 5, nullptr);
    TLC_PSECT *section = TLC_NewPSect(stream);
    TLC_LoadNonLocalValue(stream, local, 4, 6, -1, 0);
    TLC_LoadConstant(stream, numbers, 5, 0);
    TLC_LoadNonVolatile(stream, texts, 5, 3);
    TLC_LoadConstantAddress(stream, numbers, 5, -1);
    const Bytes expected = {
        EEP_FIND_SCOPE,  0, 0, 0, 0, 6,       EEP_LLW,
        EEP_LOCAL_SCOPE, // the frame of OUTER
        EEP_LCA,         0, 0, 0, 0, EEP_LB,  /* first element */ 3,
        EEP_LCA,         0, 0, 0, 0, EEP_ADW, EEP_LP,
        EEP_LCA,         0, 0, 0, 0, EEP_ADD, // index on the stack
    };
    EXPECT_EQ(bytes_of(section), expected);
}

TEST_F(CodeStreams, SizesThatCannotBeMoved)
{
    TLC_PSECT *section = TLC_NewPSect(stream);
    TLC_LoadValue(stream, 3, 0);
    TLC_LoadValue(stream, 1, 2);
    TLC_LoadValue(stream, 4, 3);
    TLC_StoreValue(stream, 8, 1);
    EXPECT_EQ(section->size, 0u);
    EXPECT_EQ(messages, std::vector<std::string>({ "Load illegal size", "Load illegal size",
                                                   "Load illegal size", "Store illegal size" }));
}

/** What a text stream writes. */
std::string text_of(TLP_MODULE *module, int32_t target, void (*write)(TLC_STREAM *stream))
{
    return written([=](FILE *file) {
        TLC_STREAM *stream = target == TLC_TARGET_C ? TLC_NewCStream(file, module, 0)
                                                    : TLC_NewJavaStream(file, module, 0);
        EXPECT_EQ(TLC_GetPass(stream), 1);
        write(stream);
        TLC_DelStream(stream);
    });
}

TEST_F(CodeStreams, TextTargets)
{
    const auto write = [](TLC_STREAM *text) {
        TLC_Literal(text, -12);
        TLC_String(text, "a\"b\\c\n?\?=\xff");
        TLC_NameSymbol(text, 1, TLIT_IntType, "A.B");
        TLC_NameSymbol(text, 0, TLIT_IntType, "UNSEEN");
        TLC_Argument(text, 1);
        TLC_Error(text, "No such thing");
        EXPECT_EQ(TLC_TextErrors(text), 1);
    };
    EXPECT_EQ(text_of(module, TLC_TARGET_C, write),
              "-12\"a\\\"b\\\\c\\012?\\?=\xff\"A_B/*ERROR - No such thing */\n");
    EXPECT_EQ(TLC_TextErrors(nullptr), 1);
    EXPECT_EQ(text_of(module, TLC_TARGET_JAVA, write),
              "-12\"a\\\"b\\\\c\\012?\?=\\377\"A.B/*ERROR - No such thing */\n");
    EXPECT_TRUE(messages.empty());
}

TEST_F(CodeStreams, NamesForC)
{
    char buffer[32];
    EXPECT_STREQ(TLC_CName("A.B.C", buffer), "A_B_C");
    EXPECT_STREQ(TLC_CName("ABCDEFGHIJKLMNOPQRSTUVWXYZ.23456", buffer),
                 "ABCDEFGHIJKLMNOPQRSTUVWXYZ_2345");
}

} // namespace
