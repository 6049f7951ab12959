// Fuzz target: module files of any content, opened and read to the last byte.

#include <cstring>
#include <vector>

#include <ostrum.h>

#include "scratch_file.h"
#include "tools/pkob.h"

namespace
{

/** Keeps the compiler from dropping reads whose only purpose is to be checked by a sanitizer. */
volatile size_t sink;

void read_text(const char *text)
{
    if (text != nullptr) sink = sink + strlen(text);
}

int32_t read_symbol(void *context, KOB_SYMBOL *symbol, const char *name)
{
    auto *module = static_cast<KOB_MODULE *>(context);
    read_text(name);
    read_text(KOB_ClassName(KOB_SymbolClass(symbol)));
    read_text(KOB_SymbolType(symbol));
    sink = sink + static_cast<size_t>(KOB_SymbolValue(symbol));
    KOB_FindGlobal(module, name, KOB_SymbolType(symbol));
    return 1;
}

int32_t read_offset(void *, int32_t offset)
{
    sink = sink + static_cast<size_t>(offset);
    return 1;
}

int32_t read_entry(void *, const char *name, KOBD_ENTRY *entry)
{
    read_text(name);
    read_text(KOBD_TypeName(KOBD_EntryType(entry), KOBD_EntryFlags(entry)));
    return 1;
}

int32_t read_frame(void *, const char *name, KOBD_FRAME *frame)
{
    read_text(name);
    read_text(KOBD_ClassName(KOBD_FrameClass(frame)));
    KOBD_AllEntries(frame, read_entry, nullptr);
    return 1;
}

void read_code(KOB_MODULE *module)
{
    std::vector<uint8_t> code(static_cast<size_t>(KOB_CodeSize(module)));
    KOB_ReadCode(module, code.data(), 0, KOB_CodeSize(module));
    for (const uint8_t byte : code)
        sink = sink + byte;
}

void read_all(KOB_MODULE *module)
{
    read_text(KOB_Name(module));
    read_text(KOB_ToolName(module));
    read_text(KOB_ToolVersion(module));
    read_text(KOB_Country(module));
    read_text(KOB_GetSourceFile(module, KOB_Name(module)));
    KOB_AllSymbols(module, read_symbol, module);
    KOB_AllStaticOffsets(module, read_offset, nullptr);
    KOBD_AllFrames(module, read_frame, nullptr);
    read_code(module);
}

void read_item(const PKOB_ITEM &item)
{
    for (const PKOB_VALUE &value : item.values) {
        for (const char c : value.text)
            sink = sink + static_cast<size_t>(c);
        if (value.kind == PKOB_QUANTITY)
            sink = sink + pkob_quantity_text(value.quantity, value.number).size();
    }
    for (int32_t i = 0; i < item.sample_count; i++)
        sink = sink + item.samples[i];
    for (const PKOB_ITEM &inner : item.items)
        read_item(inner);
}

/** The module as the lister sees it, with its data sections. */
void read_as_lister(KOB_MODULE *handle)
{
    PKOB_MODULE module = {};
    module.file_name = "input.kob";
    module.handle = handle;
    module.codes = EEP_NewModule();
    pkob_load(&module);
    for (const PKOB_ITEM &section : pkob_read_data(module).sections)
        read_item(section);
    EEP_DelModule(module.codes);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    KOB_Initialise();
    EEP_Initialise();
    EUC_Initialise();
    write_scratch_file("input.kob", data, size);
    KOB_MODULE *module = nullptr;
    if (KOB_OpenModule(&module, "input.kob") != 0) return 0;
    read_all(module);
    read_as_lister(module);
    KOB_CloseModule(module, 0, 1);
    return 0;
}
