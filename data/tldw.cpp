/*
 * Waveforms: lists of samples, any number of them in a statement.
 */
#include "data/tldw.h"

#include <ostrum/sh.h>
#include <ostrum/tlc.h>
#include <ostrum/tlit.h>
#include <ostrum/tlp.h>
#include <ostrum/tlt.h>

static TLDW_WAVEFORM *waveform_record(TLS_STATEMENT *item)
{
    return reinterpret_cast<TLDW_WAVEFORM *>(item);
}

static void report_too_many(TLDW_WAVEFORM *waveform, TLT_STATEMENT *statement)
{
    if (waveform->too_many) return;
    waveform->too_many = true;
    TLT_Error(statement, "Too many waveform points (max 2048)");
}

static void add_sample(TLDW_WAVEFORM *waveform, TLT_STATEMENT *statement, intptr_t value)
{
    if (value < 0 || value > UINT8_MAX) {
        TLT_Error(statement, "Waveform value out of range (0-255)");
    } else if (waveform->count >= TLDW_SAMPLE_LIMIT) {
        report_too_many(waveform, statement);
    } else {
        waveform->samples[waveform->count++] = static_cast<uint8_t>(value);
    }
}

/* The closing END and whatever else stands at the left margin belongs to no waveform. */
static void parse_waveform(TLS_BLOCK *root, TLT_STATEMENT *statement, void *)
{
    TLS_STATEMENT *item = TLS_Owner(root, &TLDW_WaveformClass);
    if (item == nullptr || TLD_DataToken(statement) == TLD_WORD_END) return;
    do {
        intptr_t value = 0;
        if (TLD_ExpectConstant(root, statement, TLIT_IntType, &value, 0)) {
            add_sample(waveform_record(item), statement, value);
        }
    } while (TLT_PossibleToken(statement, TLT_TOKEN_COMMA, nullptr));
}

static constexpr TLD_SECTION_KIND waveform_kind = {
    .tag = "TLDW:WAVEFORM",
    .size = sizeof(TLDW_WAVEFORM),
    .statement_class = &TLDW_WaveformClass,
    .set_defaults = nullptr,
};

static TLS_BLOCK *begin_waveform(TLP_MODULE *module, TLI_IDENTIFIER *function,
                                 TLT_STATEMENT *statement, int32_t type)
{
    return TLD_BeginSection(waveform_kind, module, function, statement, type);
}

static void check_waveform(TLS_BLOCK *, TLS_STATEMENT *item)
{
    TLS_CheckBlock(TLD_AsSection(item)->sub_block);
}

static void generate_waveform(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *item)
{
    const TLDW_WAVEFORM *waveform = waveform_record(item);
    TLD_OpenRecord(stream, item);
    TLC_Code16(stream, waveform->count);
    for (int32_t i = 0; i < waveform->count; i++)
        TLC_Code8(stream, waveform->samples[i]);
}

static void waveform_java(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *item)
{
    TLD_JavaPlainItem(stream, "Waveform", TLD_AsSection(item)->identifier);
}

static void delete_waveform(TLS_STATEMENT *item)
{
    TLS_DelBlock(TLD_AsSection(item)->sub_block);
    SH_Free(item);
}

const TLS_STATEMENT_CLASS TLDW_WaveformClass = {
    .flags = 0,
    .print = nullptr,
    .check = check_waveform,
    .p_code = generate_waveform,
    .c_code = nullptr,
    .java_code = waveform_java,
    .delete_statement = delete_waveform,
    .tree = nullptr,
    .node_section = nullptr,
    .tree_callbacks = nullptr,
};

static const TLS_BLOCK_CLASS waveform_block = {
    .begin = begin_waveform,
    .parser = parse_waveform,
};

void TLDW_Initialise(void)
{
    static bool is_initialised;
    if (is_initialised) return;
    is_initialised = true;
    TLS_DeclareBlockClass(TLP_SECTION_WAVEFORM, &waveform_block);
}
