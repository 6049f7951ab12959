// What pkob takes from a module, and the ways to show it.
#pragma once

#include <ostrum.h>

#include "pkob_data.h"

#include <string>
#include <vector>

/** Parts of a module that can be asked for. */
enum PKOB_PART : uint32_t {
    PKOB_HEADER = 1,
    PKOB_STATIC_OFFSETS = 2,
    PKOB_SYMBOLS = 4,
    PKOB_FRAMES = 8,
    PKOB_CODE = 16,
    PKOB_IMAGE = 32,
    PKOB_OVERVIEW = 64,
    PKOB_DATA_SECTIONS = 128,
    PKOB_HELP_SCREENS = 256,
    PKOB_DRAWINGS = 512,
    PKOB_LISTING = PKOB_HEADER | PKOB_STATIC_OFFSETS | PKOB_SYMBOLS | PKOB_FRAMES | PKOB_CODE,
};

/** Names are the module's own and live as long as it. */
struct PKOB_SYMBOL {
    const char *name;
    const char *type;
    int32_t symbol_class;
    int32_t value;
};

struct PKOB_ENTRY {
    const char *name;
    const char *type;
    int32_t flags;
    int32_t dimension;
    int32_t offset;
};

struct PKOB_FRAME {
    const char *name;
    int32_t frame_class;
    int32_t size;
    int32_t line;
    std::vector<PKOB_ENTRY> entries;
};

/** A name at a place in the image, a reference that the linker fills there, or a numbered syscall. */
struct PKOB_PLACE {
    int32_t address; // of a syscall: its number
    const char *name;
};

enum PKOB_BLOCK_KIND { PKOB_DATA_BLOCK, PKOB_STRING_BLOCK, PKOB_CODE_BLOCK };

/** A stretch of the image between two marks. Blocks follow one another without a gap. */
struct PKOB_BLOCK {
    int32_t address;
    int32_t size;
    PKOB_BLOCK_KIND kind;
};

struct PKOB_MODULE {
    const char *file_name; // as the user gave it
    KOB_MODULE *handle;
    EEP_MODULE *codes;
    const uint8_t *image;
    int32_t image_size;
    std::vector<int32_t> static_offsets;
    std::vector<PKOB_SYMBOL> symbols; // as KOB_AllSymbols gives them
    std::vector<PKOB_FRAME> frames;
    std::vector<PKOB_PLACE> labels;     // by address; several may share one
    std::vector<PKOB_PLACE> references; // by address
    std::vector<PKOB_PLACE> syscalls;   // by number
    std::vector<PKOB_BLOCK> blocks;     // by address
    size_t first_code_block;            // where the code list begins
};

struct PKOB_INSTRUCTION {
    int32_t address;
    int32_t size;         // with its table, for SWITCH and NODE
    int32_t code;         // -1: these bytes are no whole instruction
    const char *mnemonic; // null if code is -1; valid until the next is decoded
    int32_t operand_size;
    int32_t operand;    // as the code reads it: with or without sign, a distance for jumps
    int32_t target;     // address that a jump or reference leads to; -1 none
    const char *name;   // what the target, syscall or reference is called; null unknown
    int32_t table;      // address of the table of SWITCH and NODE
    int32_t table_size; // its entries, 0 for other codes
};

struct PKOB_OPTIONS {
    const char *program = "pkob";       // in front of messages
    uint32_t parts;                     // of PKOB_PART
    std::vector<const char *> symbols;  // names to show; empty: all
    std::vector<const char *> sections; // names of data sections to show; empty: all
    const char *drawing_directory;
    bool is_json;
};

/** Takes in the records and the image of an open module. */
void pkob_load(PKOB_MODULE *module);

/** Finds the blocks of the image: first by symbols, then by what its code calls. */
void pkob_find_blocks(PKOB_MODULE *module);

/** Decodes the instruction at an address, which lies before limit; it ends there at the latest. */
PKOB_INSTRUCTION pkob_decode(const PKOB_MODULE &module, int32_t address, int32_t limit);

/** Address that entry i of an instruction's table leads to; may lie outside the image. */
int32_t pkob_table_target(const PKOB_MODULE &module, const PKOB_INSTRUCTION &instruction,
                          int32_t i);

/** First label at an address, or null. */
const char *pkob_label_at(const PKOB_MODULE &module, int32_t address);

/** First symbol that the linker fills in at an address, or null. */
const char *pkob_reference_at(const PKOB_MODULE &module, int32_t address);

/** The block that an address lies in, or null. */
const PKOB_BLOCK *pkob_block_at(const PKOB_MODULE &module, int32_t address);

/** Text of a string constant at an address: up to limit bytes, null if there is no string. */
const char *pkob_string_at(const PKOB_MODULE &module, int32_t address, int32_t *length);

/** True if a symbol has the name wanted, in either case, with its module in front or without. */
bool pkob_is_named(std::string_view name, std::string_view wanted);

/** True if the options ask for a name. */
bool pkob_is_wanted(const PKOB_OPTIONS &options, const char *name);

/** True if a block belongs to what the options ask for. */
bool pkob_is_wanted_block(const PKOB_MODULE &module, const PKOB_OPTIONS &options,
                          const PKOB_BLOCK &block);

/** Name of one module flag, or null if the bit has no meaning of its own. */
const char *pkob_flag_name(uint32_t flag);

/** 8-bit text for a terminal: what is no printable ASCII is escaped, '"' and '\\' too. */
std::string pkob_escaped(std::string_view text);

/** Lists the parts asked for; data may be empty if none of them is a data section. */
void pkob_print_text(const PKOB_MODULE &module, const PKOB_DATA &data, const PKOB_OPTIONS &options);
void pkob_print_json(const PKOB_MODULE &module, const PKOB_DATA &data, const PKOB_OPTIONS &options);
