// Drawings of waveforms and connectors as SVG 1.1. Text is set in a font of fixed width, so that its
// width is known and what does not fit can be cut.

#include "pkob.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <initializer_list>
#include <sys/stat.h>

#include "output_files.h"

namespace
{

// Pixels.
constexpr int PAGE_WIDTH = 860;
constexpr int MARGIN = 20;
constexpr int TITLE_SIZE = 16;
constexpr int TEXT_SIZE = 12;
constexpr int PLOT_LEFT = 70;
constexpr int PLOT_TOP = 56;
constexpr int PLOT_WIDTH = 768;
constexpr int PLOT_HEIGHT = 256;
constexpr int CELL_WIDTH = 164; // cells touch
constexpr int LINE_HEIGHT = 18;
constexpr int GLYPH_WIDTH = 18; // of the circle ahead of a point's name

constexpr size_t CELLS_PER_ROW = 5;

std::string number(double value)
{
    char text[32];
    snprintf(text, sizeof text, "%.2f", value);
    std::string result = text;
    result.erase(result.find_last_not_of('0') + 1);
    if (result.back() == '.') result.pop_back();
    return result;
}

/** Text of a module within XML, which has no place for control characters. */
std::string xml_text(std::string_view text)
{
    std::string result;
    for (char c : text) {
        auto byte = (unsigned char)c;
        bool is_control = byte < 0x20 || (byte >= 0x7F && byte < 0xA0);
        if (c == '&') {
            result += "&amp;";
        } else if (c == '<') {
            result += "&lt;";
        } else if (c == '>') {
            result += "&gt;";
        } else if (is_control) {
            result += c == '\n' ? " " : "\xEF\xBF\xBD"; // U+FFFD
        } else {
            result += pkob_utf8({ &c, 1 });
        }
    }
    return result;
}

/** The same, cut to a width in pixels; the ellipsis takes the place of one character. */
std::string fitted(std::string_view text, int width, int size)
{
    auto room = (size_t)(width / (0.61 * size));
    if (text.size() <= room) return xml_text(text);
    return xml_text(text.substr(0, room - 1)) + "\xE2\x80\xA6";
}

/** A line of text; the style goes into the element as it is. */
std::string text_element(double x, double y, const char *style, const std::string &text)
{
    return "<text x=\"" + number(x) + "\" y=\"" + number(y) + "\"" + style + ">" + text +
           "</text>\n";
}

std::string line_element(double x1, double y1, double x2, double y2, const char *color)
{
    return "<line x1=\"" + number(x1) + "\" y1=\"" + number(y1) + "\" x2=\"" + number(x2) +
           "\" y2=\"" + number(y2) + "\" stroke=\"" + color + "\"/>\n";
}

std::string page(const std::string &title, int height, const std::string &content)
{
    std::string size =
        " width=\"" + std::to_string(PAGE_WIDTH) + "\" height=\"" + std::to_string(height) + "\"";
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<svg xmlns=\"http://www.w3.org/2000/svg\" version=\"1.1\"" +
           size + " font-family=\"DejaVu Sans Mono, Liberation Mono, monospace\" font-size=\"" +
           std::to_string(TEXT_SIZE) + "\">\n<title>" + title + "</title>\n<rect" + size +
           " fill=\"white\"/>\n" + content + "</svg>\n";
}

std::string heading(std::string_view title)
{
    return text_element(MARGIN, 28, " font-size=\"16\" font-weight=\"bold\"",
                        fitted(title, PAGE_WIDTH - 2 * MARGIN, TITLE_SIZE));
}

// Waveforms.

double sample_x(const PKOB_ITEM &waveform, int32_t sample)
{
    return PLOT_LEFT + (double)sample * PLOT_WIDTH / std::max(waveform.sample_count, 1);
}

double value_y(int value)
{
    return PLOT_TOP + PLOT_HEIGHT - value * (double)PLOT_HEIGHT / 255;
}

/** Distance between marks, 1, 2 or 5 times a power of ten, so that there are at most ten. */
int32_t mark_step(int32_t count)
{
    int32_t step = 1;
    for (int32_t i = 0; count / step > 10; i++)
        step = i % 3 == 1 ? step / 2 * 5 : step * 2;
    return step;
}

std::string sample_axis(const PKOB_ITEM &waveform)
{
    const double bottom = PLOT_TOP + PLOT_HEIGHT;
    std::string text;
    int32_t step = mark_step(waveform.sample_count);
    for (int32_t i = 0; i <= waveform.sample_count; i += step) {
        double x = sample_x(waveform, i);
        text += line_element(x, bottom, x, bottom + 5, "black");
        text += text_element(x, bottom + 19, " text-anchor=\"middle\"", std::to_string(i));
    }
    text += text_element(PLOT_LEFT + PLOT_WIDTH / 2.0, bottom + 40, " text-anchor=\"middle\"",
                         "sample");
    return text + line_element(PLOT_LEFT, bottom, PLOT_LEFT + PLOT_WIDTH, bottom, "black");
}

std::string value_axis()
{
    std::string text;
    for (int value : { 0, 64, 128, 192, 255 }) {
        double y = value_y(value);
        text += line_element(PLOT_LEFT, y, PLOT_LEFT + PLOT_WIDTH, y, "#dddddd");
        text += line_element(PLOT_LEFT - 5, y, PLOT_LEFT, y, "black");
        text += text_element(PLOT_LEFT - 9, y + 4, " text-anchor=\"end\"", std::to_string(value));
    }
    double middle = PLOT_TOP + PLOT_HEIGHT / 2.0;
    std::string style =
        " text-anchor=\"middle\" transform=\"rotate(-90 24 " + number(middle) + ")\"";
    text += text_element(24, middle, style.c_str(), "value");
    return text + line_element(PLOT_LEFT, PLOT_TOP, PLOT_LEFT, PLOT_TOP + PLOT_HEIGHT, "black");
}

/** Each sample holds its value until the next. */
std::string sample_steps(const PKOB_ITEM &waveform)
{
    if (waveform.sample_count == 0) return "";
    std::string path =
        "M" + number(sample_x(waveform, 0)) + " " + number(value_y(waveform.samples[0]));
    for (int32_t i = 1; i < waveform.sample_count; i++) {
        if (waveform.samples[i] == waveform.samples[i - 1]) continue;
        path += "H" + number(sample_x(waveform, i)) + "V" + number(value_y(waveform.samples[i]));
    }
    path += "H" + number(sample_x(waveform, waveform.sample_count));
    return "<path d=\"" + path + "\" fill=\"none\" stroke=\"#0050a0\" stroke-width=\"1.5\"/>\n";
}

std::string draw_waveform(const PKOB_ITEM &waveform)
{
    std::string count = std::to_string(waveform.sample_count);
    std::string text =
        heading(waveform.symbol) + value_axis() + sample_axis(waveform) + sample_steps(waveform);
    text += text_element(PLOT_LEFT + PLOT_WIDTH, PLOT_TOP - 10, " text-anchor=\"end\"",
                         count + (waveform.sample_count == 1 ? " sample" : " samples"));
    return page(xml_text(waveform.symbol), PLOT_TOP + PLOT_HEIGHT + 56, text);
}

// Connectors: for each view a box of cells, one for each pin that has points there.

struct CELL {
    const PKOB_ITEM *pin;
    std::vector<const PKOB_ITEM *> points;
};

struct GROUP {
    const PKOB_ITEM *view; // null: no view of this connector
    const char *title;
    std::vector<CELL> cells;
};

struct CONNECTOR {
    const PKOB_ITEM *item;
    std::vector<GROUP> groups; // of the views, by address as in source; then the others
};

size_t find_group(const CONNECTOR &connector, const PKOB_ITEM &point)
{
    const PKOB_VALUE *view = pkob_find_value(point, "View");
    size_t views = connector.groups.size() - 2;
    auto is_before = [](const GROUP &group, int32_t address) {
        return group.view->address < address;
    };
    auto end = connector.groups.begin() + (ptrdiff_t)views;
    if (view == nullptr) return views;
    auto found = std::lower_bound(connector.groups.begin(), end, view->number, is_before);
    bool is_here = found != end && found->view->address == view->number;
    return is_here ? (size_t)(found - connector.groups.begin()) : views;
}

void add_pin(CONNECTOR *connector, const PKOB_ITEM &pin)
{
    for (const PKOB_ITEM &point : pin.items) {
        std::vector<CELL> &cells = connector->groups[find_group(*connector, point)].cells;
        if (cells.empty() || cells.back().pin != &pin) cells.push_back({ &pin, {} });
        cells.back().points.push_back(&point);
    }
    if (pin.items.empty()) connector->groups.back().cells.push_back({ &pin, {} });
}

CONNECTOR group_pins(const PKOB_ITEM &item)
{
    CONNECTOR connector = { &item, {} };
    for (const PKOB_ITEM &view : item.items)
        if (strcmp(view.kind, "VIEW") == 0) connector.groups.push_back({ &view, "", {} });
    connector.groups.push_back({ nullptr, "Points on views of other connectors", {} });
    connector.groups.push_back({ nullptr, "Pins without points", {} });
    for (const PKOB_ITEM &pin : item.items)
        if (strcmp(pin.kind, "PIN") == 0) add_pin(&connector, pin);
    return connector;
}

std::string reference_text(const PKOB_ITEM &item, const char *name)
{
    const PKOB_VALUE *value = pkob_find_value(item, name);
    return value == nullptr ? "" : std::string(value->text);
}

std::string joined_words(const PKOB_ITEM &item, const char *name)
{
    const PKOB_VALUE *value = pkob_find_value(item, name);
    std::string text;
    if (value == nullptr) return text;
    for (const std::string &word : pkob_words(*value))
        text += (text.empty() ? "" : ", ") + word;
    return text;
}

/** "Name Front view, Shell FRONT_PICTURE": those of the attributes that are given. */
std::string describe(const PKOB_ITEM &item, std::initializer_list<const char *> names)
{
    std::string text;
    for (const char *name : names) {
        std::string value = reference_text(item, name);
        if (!value.empty()) text += (text.empty() ? "" : ", ") + std::string(name) + " " + value;
    }
    return text;
}

/** What a reader sees who rests the pointer on a point. */
std::string point_tip(const PKOB_ITEM &pin, const PKOB_ITEM &point)
{
    std::string text =
        std::string(pin.name) + "." + std::string(point.name) + ", " + joined_words(point, "Sex");
    const PKOB_VALUE *line = pkob_find_value(point, "Line");
    std::string values = describe(point, { "Name", "SignalName", "Location" });
    if (!values.empty()) text += ", " + values;
    if (line != nullptr) text += ", Line " + pkob_line_text(line->number);
    return xml_text(text);
}

std::string draw_point(const PKOB_ITEM &pin, const PKOB_ITEM &point, int x, int y)
{
    const PKOB_VALUE *sex = pkob_find_value(point, "Sex");
    bool is_female = sex != nullptr && (sex->number & 1) != 0;
    std::string circle = "<circle cx=\"" + std::to_string(x + 6) + "\" cy=\"" +
                         std::to_string(y - 4) + "\" r=\"5\" stroke=\"black\" fill=\"" +
                         (is_female ? "white" : "black") + "\"/>\n";
    int room = CELL_WIDTH - 16 - GLYPH_WIDTH;
    return "<g><title>" + point_tip(pin, point) + "</title>\n" + circle +
           text_element(x + GLYPH_WIDTH, y, "", fitted(point.name, room, TEXT_SIZE)) + "</g>\n";
}

int cell_height(const CELL &cell)
{
    return LINE_HEIGHT * (1 + (int)cell.points.size()) + 8;
}

std::string draw_cell(const CELL &cell, int x, int y, int height)
{
    std::string text = "<rect x=\"" + std::to_string(x) + "\" y=\"" + std::to_string(y) +
                       "\" width=\"" + std::to_string(CELL_WIDTH) + "\" height=\"" +
                       std::to_string(height) + "\" fill=\"#f7f7f7\" stroke=\"#888888\"/>\n";
    std::string name = fitted(cell.pin->name, CELL_WIDTH - 16, TEXT_SIZE);
    text += text_element(x + 8, y + LINE_HEIGHT - 2, " font-weight=\"bold\"", name);
    int line = y + LINE_HEIGHT - 2;
    for (const PKOB_ITEM *point : cell.points)
        text += draw_point(*cell.pin, *point, x + 8, line += LINE_HEIGHT);
    return text;
}

/** Draws cells in rows, each as high as its highest; moves y behind them. */
std::string draw_cells(const std::vector<CELL> &cells, int *y)
{
    std::string text;
    for (size_t first = 0; first < cells.size(); first += CELLS_PER_ROW) {
        size_t end = std::min(first + CELLS_PER_ROW, cells.size());
        int height = 0;
        for (size_t i = first; i < end; i++)
            height = std::max(height, cell_height(cells[i]));
        for (size_t i = first; i < end; i++)
            text += draw_cell(cells[i], MARGIN + (int)(i - first) * CELL_WIDTH, *y, height);
        *y += height;
    }
    return text;
}

/** A view's name, flags and references in two lines; moves y behind them. */
std::string view_heading(const PKOB_ITEM &view, int *y)
{
    const int width = PAGE_WIDTH - 2 * MARGIN;
    std::string title = "View " + std::string(view.name) + " (" + joined_words(view, "Flags") + ")";
    std::string values = describe(view, { "Name", "Shell", "Component", "Helpscreen" });
    std::string text =
        text_element(MARGIN, *y, " font-weight=\"bold\"", fitted(title, width, TEXT_SIZE));
    *y += LINE_HEIGHT;
    if (values.empty()) return text;
    text += text_element(MARGIN, *y, " fill=\"#444444\"", fitted(values, width, TEXT_SIZE));
    *y += LINE_HEIGHT;
    return text;
}

std::string draw_group(const GROUP &group, int *y)
{
    if (group.view == nullptr && group.cells.empty()) return "";
    *y += 2 * LINE_HEIGHT;
    std::string text;
    if (group.view != nullptr) {
        text = view_heading(*group.view, y);
    } else {
        text = text_element(MARGIN, *y, " font-weight=\"bold\"", group.title);
        *y += LINE_HEIGHT;
    }
    *y -= LINE_HEIGHT / 2;
    if (!group.cells.empty()) return text + draw_cells(group.cells, y);
    *y += LINE_HEIGHT / 2;
    return text + text_element(MARGIN, *y, " fill=\"#444444\"", "no pins");
}

std::string draw_legend(int y)
{
    const std::string top = std::to_string(y - 4);
    return "<circle cx=\"26\" cy=\"" + top + "\" r=\"5\" stroke=\"black\" fill=\"black\"/>\n" +
           text_element(38, y, "", "male") + "<circle cx=\"106\" cy=\"" + top +
           "\" r=\"5\" stroke=\"black\" fill=\"white\"/>\n" + text_element(118, y, "", "female");
}

std::string draw_connector(const PKOB_ITEM &item)
{
    std::string values = describe(item, { "Name", "Mnemonic", "Location", "Helpscreen" });
    std::string text = heading(item.symbol);
    text += text_element(MARGIN, 50, " fill=\"#444444\"",
                         fitted(values, PAGE_WIDTH - 2 * MARGIN, TEXT_SIZE));
    int y = 50;
    for (const GROUP &group : group_pins(item).groups)
        text += draw_group(group, &y);
    y += 2 * LINE_HEIGHT;
    return page(xml_text(item.symbol), y + MARGIN, text + draw_legend(y));
}

// Files.

/** A name that stays in its directory and that no other section has: what is no letter, digit, '_'
    or '-', nor a point inside, becomes %XX. */
std::string file_name(const PKOB_MODULE &module, const PKOB_ITEM &section)
{
    std::string name(section.symbol);
    std::string result;
    if (name.find('.') == std::string::npos) name = KOB_Name(module.handle) + ("." + name);
    for (char c : name) {
        bool is_plain = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                        (c >= '0' && c <= '9') || c == '_' || c == '-' ||
                        (c == '.' && !result.empty());
        char hex[8];
        snprintf(hex, sizeof hex, "%%%02X", (unsigned char)c);
        result += is_plain ? std::string(1, c) : hex;
    }
    return result + ".svg";
}

} // namespace

std::string pkob_draw(const PKOB_MODULE &module, const PKOB_DATA &data, const char *directory)
{
    if (mkdir(directory, 0777) != 0 && errno != EEXIST)
        return std::string(directory) + ": " + strerror(errno);
    for (const PKOB_ITEM &section : data.sections) {
        bool is_waveform = strcmp(section.kind, "WAVEFORM") == 0;
        if (!section.is_whole || (!is_waveform && strcmp(section.kind, "CONNECTOR") != 0)) continue;
        std::string text = is_waveform ? draw_waveform(section) : draw_connector(section);
        std::string path = std::string(directory) + "/" + file_name(module, section);
        std::string problem = replace_file(path, text, {});
        if (!problem.empty()) return path.append(": ").append(problem);
    }
    return "";
}
