/*
 * The built-in function attr: an attribute of a data item, read by the run-time system. The kinds
 * and the codes are what that system decodes.
 */
#include "expr/tlb.h"

#include <iterator>

#include "expr/tle.h"
#include "frontend/tlt.h"
#include <ostrum/eep.h>
#include <ostrum/st.h>
#include <ostrum/tlc.h>
#include <ostrum/tli.h>
#include <ostrum/tlit.h>
#include <ostrum/tlp.h>

// Kinds of data items, in the operand of ATTR.
enum {
    KIND_CONNECTOR = 1,
    KIND_VIEW = 3,
    KIND_PIN = 4,
    KIND_POINT = 5,
    KIND_COMPONENT = 6,
    KIND_CONVERTER = 7,
    KIND_HELPSCREEN = 8,
    KIND_PARAMETER = 9,
    KIND_VARLOC = 11,
    KIND_COUNT = 12
};

// In the operand of ATTR as well: an index lies beneath the item.
static constexpr int32_t has_index = 128;

static constexpr int32_t name_capacity = 32;

// Names of the data types by kind; null where the kind has no attributes.
static constexpr const char *kind_names[KIND_COUNT] = {
    nullptr,     "CONNECTOR", nullptr,      "VIEW",      "PIN",   "POINT",
    "COMPONENT", "CONVERTER", "HELPSCREEN", "PARAMETER", nullptr, "VARLOC",
};

struct ATTRIBUTE {
    int32_t kind;
    const char *name;
    const char *type; // of the result
    int32_t code;
};

static constexpr ATTRIBUTE attributes[] = {
    { KIND_CONNECTOR, "NAME", "MESSAGE", 0 },
    { KIND_CONNECTOR, "FLAGS", "INT", 8 },
    { KIND_CONNECTOR, "MNEMONIC", "MESSAGE", 6 },
    { KIND_CONNECTOR, "LOCATION", "PARAMETER", 9 },
    { KIND_CONNECTOR, "POINT", "POINT", 12 },
    { KIND_CONNECTOR, "VIEW", "VIEW", 2 },
    { KIND_CONNECTOR, "CABLE", "INT", 14 },
    { KIND_CONNECTOR, "HELPSCREEN", "HELPSCREEN", 17 },
    { KIND_CONNECTOR, "VARLOC", "VARLOC", 18 },
    { KIND_VIEW, "NAME", "MESSAGE", 0 },
    { KIND_VIEW, "FLAGS", "INT", 8 },
    { KIND_VIEW, "CONNECTOR", "CONNECTOR", 4 },
    { KIND_VIEW, "COMPONENT", "COMPONENT", 5 },
    { KIND_VIEW, "SHELL", "PICTURE", 15 },
    { KIND_VIEW, "VIEW", "VIEW", 2 },
    { KIND_VIEW, "HELPSCREEN", "HELPSCREEN", 17 },
    { KIND_PIN, "NAME", "MESSAGE", 0 },
    { KIND_PIN, "FLAGS", "INT", 8 },
    { KIND_PIN, "CONNECTOR", "CONNECTOR", 4 },
    { KIND_POINT, "NAME", "MESSAGE", 0 },
    { KIND_POINT, "FLAGS", "INT", 8 },
    { KIND_POINT, "SIGNALNAME", "MESSAGE", 1 },
    { KIND_POINT, "VIEW", "VIEW", 2 },
    { KIND_POINT, "PIN", "PIN", 3 },
    { KIND_POINT, "CONNECTOR", "CONNECTOR", 4 },
    { KIND_POINT, "COMPONENT", "COMPONENT", 5 },
    { KIND_POINT, "LINE", "INT", 7 },
    { KIND_POINT, "LOCATION", "PARAMETER", 9 },
    { KIND_POINT, "ADAPTOR", "INT", 10 },
    { KIND_POINT, "ADAPTORTYPE", "INT", 11 },
    { KIND_POINT, "POINT", "POINT", 12 },
    { KIND_POINT, "MATINGPOINT", "POINT", 13 },
    { KIND_COMPONENT, "NAME", "MESSAGE", 0 },
    { KIND_COMPONENT, "FLAGS", "INT", 8 },
    { KIND_COMPONENT, "LOCATION", "PARAMETER", 9 },
    { KIND_COMPONENT, "PARENT", "COMPONENT", 16 },
    { KIND_COMPONENT, "HELPSCREEN", "HELPSCREEN", 17 },
    { KIND_COMPONENT, "VARLOC", "VARLOC", 18 },
    { KIND_CONVERTER, "NAME", "MESSAGE", 0 },
    { KIND_CONVERTER, "NEXT", "CONVERTER", 1 },
    { KIND_CONVERTER, "OFFSET", "INT", 4 },
    { KIND_CONVERTER, "MULTIPLIER", "INT", 2 },
    { KIND_CONVERTER, "DIVISOR", "INT", 3 },
    { KIND_CONVERTER, "OLDTYPE", "QUANTITY_TYPE", 10 },
    { KIND_CONVERTER, "QUANTITYTYPE", "QUANTITY_TYPE", 6 },
    { KIND_CONVERTER, "FLAGS", "INT", 5 },
    { KIND_CONVERTER, "STATES", "INT", 7 },
    { KIND_CONVERTER, "STATETEXT", "MESSAGE", 8 },
    { KIND_CONVERTER, "STATELOW", "QUANTITY", 9 },
    { KIND_CONVERTER, "STATEHIGH", "QUANTITY", 11 },
    { KIND_HELPSCREEN, "TITLE", "MESSAGE", 0 },
    { KIND_PARAMETER, "PICTURE", "PICTURE", 0 },
    { KIND_VARLOC, "LOCATION", "PARAMETER", 9 },
    { KIND_VARLOC, "ATTRIBUTES", "INT", 19 },
    { KIND_VARLOC, "VARLOC", "VARLOC", 18 },
};

// What is looked for, and where an index may be refused.
struct QUESTION {
    const TLI_DOMAIN *data_types;
    TLT_STATEMENT *statement;
    const TLI_IDENTIFIER *type; // of the item
    const TLE_TERM *index;      // may be null
    char name[name_capacity];   // upper case
};

static bool is_asked(const ATTRIBUTE &row, const QUESTION &question)
{
    if (ST_CompareCI(row.name, question.name) != 0) return false;
    const char *type = kind_names[row.kind];
    return TLI_FindDomainIdentifier(question.data_types, type) == question.type;
}

static bool accepts_index(const QUESTION &question)
{
    if (question.index == nullptr || TLB_IsIntegerBased(question.index->type)) return true;
    TLT_Error(question.statement, "Optional argument should be 'INT'-based");
    return false;
}

/** Place of the row that answers, or -1. */
static int32_t find_row(const QUESTION &question)
{
    int32_t place = 0;
    for (const ATTRIBUTE &row : attributes) {
        if (is_asked(row, question) && accepts_index(question)) return place;
        place++;
    }
    return -1;
}

// The extra word is the place of the row

static TLI_IDENTIFIER *check_attr(const TLB_BUILT_IN *, TLP_MODULE *module,
                                  TLT_STATEMENT *statement, TLE_TERM *term)
{
    TLI_IDENTIFIER *type = TLB_ArgumentType(term, 0);
    const TLE_TERM *name = TLE_CallArgument(term, 1);
    if (type == nullptr || name == nullptr || name->kind != TLT_TOKEN_STRING) {
        TLT_Error(statement, "Bad arguments for 'attr'");
        return nullptr;
    }
    QUESTION question = {
        .data_types = TLP_DataTypeDomain(module),
        .statement = statement,
        .type = type,
        .index = TLE_CallArgument(term, 2),
        .name = {},
    };
    ST_Upper(question.name, name_capacity, TLE_TermValue(name));
    const int32_t place = question.data_types == nullptr ? -1 : find_row(question);
    if (place < 0) {
        TLT_RaiseFormatted(statement, TLT_LEVEL_ERROR, "\"%s\" attribute not supported for '%s'",
                           TLE_TermValue(name), TLI_IdentifierName(type));
        return nullptr;
    }
    term->extra = place;
    return TLIT_FindType(question.data_types, attributes[place].type);
}

static const ATTRIBUTE *row_of(const TLE_TERM *term)
{
    const bool is_place =
        term->extra >= 0 && term->extra < static_cast<int32_t>(std::size(attributes));
    return is_place ? attributes + term->extra : nullptr;
}

static int32_t attr_code(const TLB_BUILT_IN *, TLC_STREAM *stream, TLE_TERM *term)
{
    const ATTRIBUTE *row = row_of(term);
    if (row == nullptr) return 0;
    const bool is_indexed = TLE_CallArgument(term, 2) != nullptr;
    TLC_NewPSect(stream);
    const int32_t has_rest = is_indexed ? TLB_ArgumentCode(stream, term, 2) : 1;
    const int32_t has_item = TLB_ArgumentCode(stream, term, 0);
    TLC_Literal(stream, row->code);
    TLC_PCode(stream, EEP_ATTR);
    TLC_Code8(stream, is_indexed ? row->kind | has_index : row->kind);
    return has_rest & has_item;
}

static int32_t attr_java(const TLB_BUILT_IN *, TLC_STREAM *stream, TLE_TERM *term)
{
    const ATTRIBUTE *row = row_of(term);
    if (row == nullptr) return 0;
    const int32_t has_item = TLB_TightArgument(stream, term, 0);
    fprintf(TLC_CFile(stream), ".get%s(", row->name);
    const bool is_indexed = TLE_CallArgument(term, 2) != nullptr;
    const int32_t has_rest = is_indexed ? TLB_ArgumentCode(stream, term, 2) : 1;
    fputs(")", TLC_CFile(stream));
    return has_rest & has_item;
}

constexpr TLB_BUILT_IN TLB_Attr = {
    .name = "attr",
    .minimum_arguments = 2,
    .maximum_arguments = 3,
    .check = check_attr,
    .simplify = nullptr,
    .p_code = attr_code,
    .c_text = nullptr,
    .java_text = attr_java,
};
