/*
 * Pins of connectors, and the points on them. What a point is not given it takes from its pin.
 */
#include "data/tldc.h"

#include "codegen/tlcj.h"
#include "expr/tle.h"

#include <cstdio>
#include <iterator>

#include <ostrum/tlc.h>
#include <ostrum/tli.h>
#include <ostrum/tlt.h>

/* Lines of one half of a cable; those of the other are told by the letter, and follow. */
static constexpr int32_t LARGEST_LINE = 128;
static constexpr char OTHER_HALF = 'H';

/* Bit of a point's flags. */
enum { FEMALE = 1 };

enum { PIN_NAME, PIN_SIGNAL_NAME, PIN_LINE };

static constexpr TLD_ATTRIBUTE pin_attributes[] = {
    { .code = PIN_NAME, .word = "Name", .type_name = "STRING" },
    { .code = PIN_SIGNAL_NAME, .word = "SignalName", .type_name = "STRING" },
    { .code = PIN_LINE, .word = "Line", .type_name = "STRING" },
};

enum { NAME, LOCATION, VIEW, SEX, SIGNAL_NAME, LINE };

static constexpr TLD_ATTRIBUTE attributes[] = {
    { .code = NAME, .word = "Name", .type_name = "STRING" },
    { .code = LOCATION, .word = "Location", .type_name = "PARAMETER" },
    { .code = VIEW, .word = "View", .type_name = "VIEW" },
    { .code = SEX, .word = "Sex", .type_name = nullptr },
    { .code = SIGNAL_NAME, .word = "SignalName", .type_name = "MESSAGE" },
    { .code = LINE, .word = "Line", .type_name = "STRING" },
};

static constexpr TLD_ATTRIBUTE sexes[] = {
    { .code = 0, .word = "MALE", .type_name = nullptr },
    { .code = FEMALE, .word = "FEMALE", .type_name = nullptr },
};

static TLDC_PIN *pin_record(TLS_STATEMENT *item)
{
    return reinterpret_cast<TLDC_PIN *>(item);
}

static TLDC_POINT *point_record(TLS_STATEMENT *item)
{
    return reinterpret_cast<TLDC_POINT *>(item);
}

/* ---- Lines ---- */

/* Reads decimal digits, up to a number that is too large in any case. */
static const char *read_digits(const char *text, int32_t *number)
{
    for (*number = 0; *text >= '0' && *text <= '9'; text++) {
        if (*number <= LARGEST_LINE) *number = *number * 10 + (*text - '0');
    }
    return text;
}

static int32_t read_line(TLT_STATEMENT *statement, const char *text)
{
    int32_t number = 0;
    const char *end = read_digits(text, &number);
    const bool is_known = *end == '\0' || *end == OTHER_HALF;
    if (end == text || number > LARGEST_LINE || !is_known) {
        TLT_Error(statement, "Bad LINE number");
        return number;
    }
    return *end == OTHER_HALF ? number + LARGEST_LINE : number;
}

/* A text that stands elsewhere is no number here. */
static int32_t line_of(TLT_STATEMENT *statement, intptr_t value)
{
    auto *term = reinterpret_cast<TLE_TERM *>(value);
    const bool is_text = term->kind == TLT_TOKEN_STRING;
    const int32_t line = read_line(statement, is_text ? TLE_TermValue(term) : "");
    TLE_DelExpression(term);
    return line;
}

/* ---- Points: parsing ---- */

/* The term of a view of another module names nothing that could be linked to. */
static void set_view(TLDC_POINT *point, TLT_STATEMENT *statement, intptr_t value)
{
    auto *term = reinterpret_cast<TLE_TERM *>(value);
    auto held = reinterpret_cast<intptr_t>(point->view);
    TLD_SetValue(statement, &held, reinterpret_cast<intptr_t>(TLE_TermIdentifier(term)));
    point->view = reinterpret_cast<TLI_IDENTIFIER *>(held);
    TLE_DelExpression(term);
}

static void set_sex(TLDC_POINT *point, TLT_STATEMENT *statement)
{
    point->flags &= ~FEMALE;
    point->flags |= TLD_GetEnumeratedValue(statement, sexes, int32_t{ std::size(sexes) });
    point->has_sex = true;
}

static void take_attribute(void *user, TLS_BLOCK *block, TLT_STATEMENT *statement, const char *word)
{
    intptr_t value = 0;
    auto *point = static_cast<TLDC_POINT *>(user);
    switch (TLD_FindAttribute(block, statement, word, attributes, int32_t{ std::size(attributes) },
                              &value)) {
    case NAME:
        TLD_SetTerm(statement, &point->name, value);
        break;
    case LOCATION:
        TLD_SetTerm(statement, &point->location, value);
        break;
    case VIEW:
        set_view(point, statement, value);
        break;
    case SEX:
        set_sex(point, statement);
        break;
    case SIGNAL_NAME:
        TLD_SetTerm(statement, &point->signal_name, value);
        break;
    case LINE:
        point->line = line_of(statement, value);
        break;
    default: /* a message has told why there is none */
        break;
    }
}

static constexpr TLD_ITEM_KIND point_kind = {
    .tag = "TLDC:POINT",
    .size = sizeof(TLDC_POINT),
    .statement_class = &TLDC_PointClass,
    .type_name = "POINT",
    .handler = take_attribute,
    .words = nullptr,
    .word_count = 0,
};

static void parse_point(TLS_BLOCK *root, TLT_STATEMENT *statement, TLS_STATEMENT *item)
{
    const TLDC_PIN *pin = pin_record(item);
    TLD_ITEM *head = TLD_BeginItem(point_kind, root, statement, pin->head.owner,
                                   TLI_IdentifierName(pin->head.identifier));
    TLDC_POINT *point = point_record(&head->common);
    point->pin = pin;
    point->line = TLDC_NO_LINE;
    TLD_ParseAttributes(root, statement, head);
}

/* ---- Points: record and text ---- */

static TLE_TERM *name_of(const TLDC_POINT *point)
{
    return point->name == nullptr ? point->pin->name : point->name;
}

static TLE_TERM *signal_name_of(const TLDC_POINT *point)
{
    return point->signal_name == nullptr ? point->pin->signal_name : point->signal_name;
}

static int32_t line_of(const TLDC_POINT *point)
{
    return point->line == TLDC_NO_LINE ? point->pin->line : point->line;
}

static bool needs_line(const TLDC_POINT *point)
{
    return reinterpret_cast<const TLDC_CONNECTOR *>(point->head.owner)->cable != 0;
}

static void check_point(TLS_BLOCK *, TLS_STATEMENT *item)
{
    const TLDC_POINT *point = point_record(item);
    TLD_CheckTerm(item, point->location, "LOCATION");
    TLD_CheckValue(item, reinterpret_cast<intptr_t>(point->view), "VIEW");
    if (needs_line(point) && line_of(point) == TLDC_NO_LINE) {
        TLT_Error(item->statement, "No LINE value specified");
    }
    if (!point->has_sex) TLT_Error(item->statement, "No SEX specified for POINT");
}

/* After an error there may be none. */
static void add_view(TLC_STREAM *stream, TLI_IDENTIFIER *view)
{
    if (view == nullptr) {
        TLC_Code16(stream, 0);
    } else {
        TLC_Jump(stream, TLI_IdentifierPSect(view));
    }
}

static void generate_point(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *item)
{
    TLDC_POINT *point = point_record(item);
    if (!TLD_OpenItem(stream, &point->head)) return;
    TLC_Code8(stream, TLD_RECORD_POINT);
    TLC_Code8(stream, point->flags);
    TLD_DataTerm(stream, name_of(point));
    TLC_Jump(stream, point->pin->head.section);
    add_view(stream, point->view);
    TLD_DataTerm(stream, point->location);
    TLD_DataTerm(stream, signal_name_of(point));
    TLC_Code16(stream, line_of(point));
}

static void construct_point(TLC_STREAM *stream, const TLDC_POINT *point)
{
    FILE *file = TLC_CFile(stream);
    TLD_JavaNew(stream, "Point", point->head.identifier);
    TLCJ_DataTerm(stream, name_of(point));
    std::fprintf(file, ", %d", point->flags);
    TLD_JavaArgument(stream, point->location);
    TLD_JavaArgument(stream, signal_name_of(point));
    std::fprintf(file, ", %d);\n", line_of(point));
    TLD_JavaCall(stream, point->head.identifier, "setParent", point->pin->head.identifier);
}

static void point_java(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *item)
{
    const TLDC_POINT *point = point_record(item);
    if (point->head.identifier == nullptr) return;
    if (TLD_JavaDeclares(stream)) {
        TLD_JavaField(stream, "Point", point->head.identifier);
    } else {
        construct_point(stream, point);
    }
}

static void delete_point(TLS_STATEMENT *item)
{
    TLDC_POINT *point = point_record(item);
    TLE_DelExpression(point->name);
    TLE_DelExpression(point->location);
    TLE_DelExpression(point->signal_name);
    TLD_DeleteItem(&point->head);
}

const TLS_STATEMENT_CLASS TLDC_PointClass = {
    .flags = 0,
    .print = nullptr,
    .check = check_point,
    .p_code = generate_point,
    .c_code = nullptr,
    .java_code = point_java,
    .delete_statement = delete_point,
    .tree = nullptr,
    .node_section = nullptr,
    .tree_callbacks = nullptr,
};

/* ---- Pins ---- */

static void take_pin_attribute(void *user, TLS_BLOCK *block, TLT_STATEMENT *statement,
                               const char *word)
{
    intptr_t value = 0;
    auto *pin = static_cast<TLDC_PIN *>(user);
    switch (TLD_FindAttribute(block, statement, word, pin_attributes,
                              int32_t{ std::size(pin_attributes) }, &value)) {
    case PIN_NAME:
        TLD_SetTerm(statement, &pin->name, value);
        break;
    case PIN_SIGNAL_NAME:
        TLD_SetTerm(statement, &pin->signal_name, value);
        break;
    case PIN_LINE:
        pin->line = line_of(statement, value);
        break;
    default: /* a message has told why there is none */
        break;
    }
}

static constexpr TLD_ITEM_WORD pin_words[] = {
    { .word = TLD_WORD_POINT, .parse = parse_point },
};

static constexpr TLD_ITEM_KIND pin_kind = {
    .tag = "TLDC:PIN",
    .size = sizeof(TLDC_PIN),
    .statement_class = &TLDC_PinClass,
    .type_name = "PIN",
    .handler = take_pin_attribute,
    .words = pin_words,
    .word_count = int32_t{ std::size(pin_words) },
};

void TLDC_ParsePin(TLS_BLOCK *root, TLT_STATEMENT *statement, TLS_STATEMENT *connector)
{
    TLD_ITEM *head = TLD_BeginItem(pin_kind, root, statement, TLD_AsSection(connector), nullptr);
    pin_record(&head->common)->line = TLDC_NO_LINE;
}

static void check_pin(TLS_BLOCK *, TLS_STATEMENT *item)
{
    TLS_CheckBlock(pin_record(item)->head.sub_block);
}

static void generate_pin(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *item)
{
    TLDC_PIN *pin = pin_record(item);
    if (!TLD_OpenItem(stream, &pin->head)) return;
    TLC_Code8(stream, TLD_RECORD_PIN);
    TLC_Code8(stream, pin->flags);
    TLD_DataTerm(stream, pin->name);
    TLC_Jump(stream, pin->head.owner->section);
    TLS_BlockCode(stream, pin->head.sub_block);
}

static void construct_pin(TLC_STREAM *stream, const TLDC_PIN *pin)
{
    TLD_JavaNew(stream, "Pin", pin->head.identifier);
    TLCJ_DataTerm(stream, pin->name);
    std::fprintf(TLC_CFile(stream), ", %x);\n\n", static_cast<uint32_t>(pin->flags));
}

static void pin_java(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *item)
{
    const TLDC_PIN *pin = pin_record(item);
    if (pin->head.identifier == nullptr) return;
    if (TLD_JavaDeclares(stream)) {
        TLD_JavaField(stream, "Pin", pin->head.identifier);
    } else {
        construct_pin(stream, pin);
    }
    TLS_BlockCode(stream, pin->head.sub_block);
}

static void delete_pin(TLS_STATEMENT *item)
{
    TLDC_PIN *pin = pin_record(item);
    TLE_DelExpression(pin->name);
    TLE_DelExpression(pin->signal_name);
    TLD_DeleteItem(&pin->head);
}

const TLS_STATEMENT_CLASS TLDC_PinClass = {
    .flags = 0,
    .print = nullptr,
    .check = check_pin,
    .p_code = generate_pin,
    .c_code = nullptr,
    .java_code = pin_java,
    .delete_statement = delete_pin,
    .tree = nullptr,
    .node_section = nullptr,
    .tree_callbacks = nullptr,
};
