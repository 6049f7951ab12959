// Data sections as text: what stands in their records, and help screens as an operator reads them.

#include "pkob.h"

#include <algorithm>
#include <cinttypes>

enum { SAMPLES_PER_LINE = 16, LINE_WIDTH = 72 };

static std::string reference_text(const PKOB_VALUE &value)
{
    char address[16];
    switch (value.target) {
    case PKOB_TEXT:
        return "\"" + pkob_escaped(value.text) + "\"";
    case PKOB_NAMED:
        return pkob_escaped(value.text);
    default:
        snprintf(address, sizeof address, "%08" PRIx32, (uint32_t)value.number);
        return address;
    }
}

static std::string words_text(const PKOB_VALUE &value)
{
    std::string text;
    for (const std::string &word : pkob_words(value))
        text += (text.empty() ? "" : ", ") + word;
    return text;
}

static std::string value_text(const PKOB_VALUE &value)
{
    switch (value.kind) {
    case PKOB_LINE:
        return pkob_line_text(value.number);
    case PKOB_WORDS:
        return words_text(value);
    case PKOB_QUANTITY_TYPE:
        return EUC_QuantityName(value.number);
    case PKOB_QUANTITY:
        return pkob_utf8(pkob_quantity_text(value.quantity, value.number));
    case PKOB_REFERENCE:
        return reference_text(value);
    default:
        return std::to_string(value.number);
    }
}

static void print_row(const PKOB_ITEM &item, int indent)
{
    const char *separator = " ";
    printf("%*s%s", indent, "", item.kind);
    for (const PKOB_VALUE &value : item.values) {
        printf("%s%s", separator, value.is_given ? value_text(value).c_str() : "none");
        separator = ", ";
    }
    printf("\n");
}

static void print_samples(const PKOB_ITEM &item, int indent)
{
    for (int32_t i = 0; i < item.sample_count; i++) {
        if (i % SAMPLES_PER_LINE == 0) printf("%*s%5" PRId32 " ", indent, "", i);
        bool is_last = i % SAMPLES_PER_LINE == SAMPLES_PER_LINE - 1 || i == item.sample_count - 1;
        printf(" %3d%s", item.samples[i], is_last ? "\n" : "");
    }
}

/** Items stand in one another three deep at most. */
static void print_item(const PKOB_ITEM &item, int indent)
{
    if (item.is_row) {
        print_row(item, indent);
        return;
    }
    std::string name = pkob_escaped(item.name);
    printf("%*s%s%s%s\n", indent, "", item.kind, name.empty() ? "" : " ", name.c_str());
    for (const PKOB_VALUE &value : item.values)
        if (value.is_given && !(value.kind == PKOB_WORDS && words_text(value).empty()))
            printf("%*s%-16s %s\n", indent + 2, "", value.name, value_text(value).c_str());
    print_samples(item, indent + 2);
    for (const PKOB_ITEM &inner : item.items)
        print_item(inner, indent + 2);
}

void pkob_print_data(const PKOB_DATA &data)
{
    printf("Data\n");
    for (const PKOB_ITEM &section : data.sections)
        print_item(section, 2);
    printf("\n");
}

// Help screens.

/** Text as a terminal shows it: lines, with what would command the terminal escaped. */
static void print_lines(std::string_view text, const char *indent)
{
    while (!text.empty()) {
        size_t end = std::min(text.find('\n'), text.size());
        std::string line;
        for (char c : text.substr(0, end))
            line += c == '"' || c == '\\' ? std::string(1, c) : pkob_escaped({ &c, 1 });
        printf("%s%s\n", indent, line.c_str());
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

static void print_shown(const PKOB_ITEM &item, const char *name, const char *what)
{
    const PKOB_VALUE *value = pkob_find_value(item, name);
    if (value == nullptr) return;
    if (value->target == PKOB_TEXT) {
        print_lines(value->text, "  ");
    } else {
        printf("  [%s %s]\n", what, reference_text(*value).c_str());
    }
}

static void print_screen(const PKOB_ITEM &screen)
{
    const PKOB_VALUE *type = pkob_find_value(screen, "Type");
    bool is_popup = type != nullptr && type->number == 1;
    std::string heading =
        "--- " + pkob_escaped(screen.name) + (is_popup ? ", popup " : ", full screen ");
    heading.resize(std::max<size_t>(heading.size(), LINE_WIDTH), '-');
    printf("%s\n", heading.c_str());
    print_shown(screen, "Title", "message");
    if (pkob_find_value(screen, "Title") != nullptr) printf("\n");
    for (const PKOB_ITEM &item : screen.items) {
        print_shown(item, "Text", "message");
        print_shown(item, "Picture", "picture");
        print_shown(item, "Help", "help for this:");
    }
    print_shown(screen, "HelpScreen", "help for this screen:");
    printf("\n");
}

void pkob_print_screens(const PKOB_DATA &data)
{
    for (const PKOB_ITEM &section : data.sections)
        if (std::string_view(section.kind) == "HELPSCREEN") print_screen(section);
}
