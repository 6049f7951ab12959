/*
 * The settings store: two text files of [key] sections with name=value lines. They are edited by
 * hand as well, so blanks around names and values do not count, and a line that is neither is left
 * alone.
 */
#include "host/host.h"

#include "core/sh.h"
#include "core/st.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

static constexpr int64_t largest_store = 16 << 20; // bytes; a larger file is no settings store

/** Characters within a text that is not the holder's. */
struct SPAN {
    const char *start;
    size_t length;
};

/** A text that grows. */
struct TEXT {
    char *bytes;
    size_t length;
    size_t capacity;
};

static SPAN span_of(const char *text)
{
    return SPAN{ .start = text, .length = std::strlen(text) };
}

static void append(TEXT *text, SPAN span)
{
    if (span.start == nullptr) return; // of a store that is not there
    text->bytes = static_cast<char *>(
        SH_Grow(text->bytes, text->length, &text->capacity, text->length + span.length + 1));
    std::memcpy(text->bytes + text->length, span.start, span.length);
    text->length += span.length;
    text->bytes[text->length] = 0;
}

static char *concat(const char *first, const char *second)
{
    TEXT text = {};
    append(&text, span_of(first));
    append(&text, span_of(second));
    return text.bytes;
}

// --- lines ---

static bool is_blank(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}

static SPAN trimmed(SPAN span)
{
    while (span.length > 0 && is_blank(span.start[span.length - 1]))
        span.length--;
    while (span.length > 0 && is_blank(*span.start)) {
        span.start++;
        span.length--;
    }
    return span;
}

static char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

static bool is_same(SPAN a, SPAN b)
{
    if (a.length != b.length) return false;
    for (size_t i = 0; i < a.length; i++) {
        if (lower(a.start[i]) != lower(b.start[i])) return false;
    }
    return true;
}

/** Cuts the first line off a text, line end included. */
static SPAN take_line(SPAN *text)
{
    const void *end = std::memchr(text->start, '\n', text->length);
    size_t length = text->length;
    if (end != nullptr)
        length = static_cast<size_t>(static_cast<const char *>(end) - text->start) + 1;
    const SPAN line = { .start = text->start, .length = length };
    text->start += length;
    text->length -= length;
    return line;
}

static SPAN without_end(SPAN line)
{
    if (line.length > 0 && line.start[line.length - 1] == '\n') line.length--;
    return trimmed(line);
}

/** True if a line is the head of a section; then *key is its key. */
static bool is_head(SPAN line, SPAN *key)
{
    line = without_end(line);
    if (line.length < 2 || line.start[0] != '[' || line.start[line.length - 1] != ']') return false;
    *key = trimmed(SPAN{ .start = line.start + 1, .length = line.length - 2 });
    return true;
}

/** True if a line gives a value to a name; then *value is that value. */
static bool is_value(SPAN line, SPAN name, SPAN *value)
{
    line = without_end(line);
    const char *sign = static_cast<const char *>(std::memchr(line.start, '=', line.length));
    if (sign == nullptr) return false;
    const size_t length = static_cast<size_t>(sign - line.start);
    if (!is_same(trimmed(SPAN{ .start = line.start, .length = length }), name)) return false;
    *value = trimmed(SPAN{ .start = sign + 1, .length = line.length - length - 1 });
    return true;
}

// --- files ---

/** Path of a hive's file, released by SH_Free; null if the environment does not tell. */
static char *store_path(HOST_HIVE hive)
{
    const bool is_default = hive == HOST_DEFAULT_USER;
    const char *named = std::getenv(is_default ? "OSTRUM_DEFAULT_SETTINGS" : "OSTRUM_SETTINGS");
    if (named != nullptr && named[0] != 0) return ST_Allocate(named);
    if (is_default) return ST_Allocate("/etc/ostrum/settings");
    const char *config = std::getenv("XDG_CONFIG_HOME");
    if (config != nullptr && config[0] != 0) return concat(config, "/ostrum/settings");
    const char *home = std::getenv("HOME");
    if (home == nullptr || home[0] == 0) return nullptr;
    return concat(home, "/.config/ostrum/settings");
}

/** Reads all of an open file into *text, if it can be a store. */
static bool read_open_store(int descriptor, TEXT *text, mode_t *permission)
{
    struct stat status;
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return false;
    if (status.st_size > largest_store) return false;
    const size_t size = static_cast<size_t>(status.st_size);
    text->bytes = static_cast<char *>(SH_Grow(nullptr, 0, &text->capacity, size + 1));
    const int64_t got = HOST_Read(descriptor, text->bytes, size);
    if (got >= 0) text->length = static_cast<size_t>(got);
    *permission = status.st_mode & 07777;
    return got >= 0;
}

/** Reads a store; the caller releases text->bytes, whatever the result. */
static bool read_store(const char *path, TEXT *text, mode_t *permission)
{
    const int descriptor = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) return false;
    const bool done = read_open_store(descriptor, text, permission);
    close(descriptor);
    return done;
}

/** The lines of a store, without the mark that some editors put before them. */
static SPAN lines_of(const TEXT &text)
{
    const SPAN all = { .start = text.bytes, .length = text.length };
    if (text.length < 3 || std::memcmp(text.bytes, "\xEF\xBB\xBF", 3) != 0) return all;
    return SPAN{ .start = all.start + 3, .length = all.length - 3 };
}

// --- reading ---

static char *find_value(SPAN lines, SPAN key, SPAN name)
{
    SPAN found = {};
    bool inside = false;
    while (lines.length > 0) {
        const SPAN line = take_line(&lines);
        if (is_head(line, &found))
            inside = is_same(found, key);
        else if (inside && is_value(line, name, &found))
            return ST_AllocateSpan(found.start, found.length);
    }
    return nullptr;
}

static char *read_stored(HOST_HIVE hive, const char *key, const char *name)
{
    char *path = store_path(hive);
    if (path == nullptr) return nullptr;
    TEXT text = {};
    mode_t permission = 0;
    char *value = nullptr;
    if (read_store(path, &text, &permission))
        value = find_value(lines_of(text), span_of(key), span_of(name));
    SH_Free(text.bytes);
    SH_Free(path);
    return value;
}

char *HOST_ReadSetting(HOST_HIVE hive, const char *key, const char *name)
{
    const bool is_environment = hive == HOST_CURRENT_USER && std::strcmp(key, "Environment") == 0;
    const char *variable = is_environment ? std::getenv(name) : nullptr;
    if (variable != nullptr) return ST_Allocate(variable);
    return read_stored(hive, key, name);
}

// --- writing ---

static void append_value(TEXT *text, const char *name, const char *value)
{
    append(text, span_of(name));
    append(text, span_of("="));
    const size_t start = text->length;
    append(text, span_of(value));
    for (char *c = text->bytes + start; *c != 0; c++) {
        if (*c == '\n' || *c == '\r') *c = ' ';
    }
    append(text, span_of("\n"));
}

static void end_last_line(TEXT *text)
{
    if (text->length > 0 && text->bytes[text->length - 1] != '\n') append(text, span_of("\n"));
}

/** Where a value goes in a store. */
struct LINE_PLACE {
    const char *start; // what is replaced, or inserted before; null if the section is not there
    size_t length;     // of what is replaced
};

/**
 * Finds the line that holds a value, or else the end of the section's last line that is not blank.
 */
static LINE_PLACE find_place(SPAN lines, SPAN key, SPAN name)
{
    LINE_PLACE place = {};
    SPAN found = {};
    bool inside = false;
    while (lines.length > 0) {
        const SPAN line = take_line(&lines);
        const bool head = is_head(line, &found);
        if (head) inside = is_same(found, key);
        if (!inside) continue;
        if (!head && is_value(line, name, &found))
            return LINE_PLACE{ .start = line.start, .length = line.length };
        if (without_end(line).length > 0) place.start = line.start + line.length;
    }
    return place;
}

/** Copies a store with one value changed. */
static void change_store(const TEXT &old, const char *key, const char *name, const char *value,
                         TEXT *changed)
{
    const LINE_PLACE place = find_place(lines_of(old), span_of(key), span_of(name));
    const size_t before =
        place.start == nullptr ? old.length : static_cast<size_t>(place.start - old.bytes);
    const size_t behind = before + place.length;
    append(changed, SPAN{ .start = old.bytes, .length = before });
    end_last_line(changed);
    if (place.start == nullptr) {
        append(changed, span_of("["));
        append(changed, span_of(key));
        append(changed, span_of("]\n"));
    }
    append_value(changed, name, value);
    if (behind < old.length)
        append(changed, SPAN{ .start = old.bytes + behind, .length = old.length - behind });
}

/** Makes the directories that lead to a file. */
static void make_directories(char *path)
{
    for (char *c = std::strchr(path + 1, '/'); c != nullptr; c = std::strchr(c + 1, '/')) {
        *c = 0;
        mkdir(path, 0700);
        *c = '/';
    }
}

/** Writes and flushes all of a new file; false if any step fails. */
static bool fill_file(int descriptor, const TEXT &text, mode_t permission)
{
    const bool filled = fchmod(descriptor, permission) == 0 &&
                        HOST_Write(descriptor, text.bytes, text.length) && fsync(descriptor) == 0;
    return HOST_Close(descriptor) && filled;
}

/** Puts a text in the place of a file: all of it or nothing. */
static bool replace_file(const char *path, const TEXT &text, mode_t permission)
{
    char *new_path = concat(path, ".XXXXXX");
    const int descriptor = mkstemp(new_path);
    bool replaced = descriptor >= 0;
    if (replaced) {
        replaced = fill_file(descriptor, text, permission) && rename(new_path, path) == 0;
        if (!replaced) unlink(new_path);
    }
    SH_Free(new_path);
    return replaced;
}

/** Changes one value of the store at a path that has no links left in it. */
static bool rewrite_store(const char *path, const char *key, const char *name, const char *value)
{
    TEXT old = {};
    TEXT changed = {};
    mode_t permission = 0600;
    errno = 0;
    bool written = read_store(path, &old, &permission) || errno == ENOENT;
    if (access(path, W_OK) != 0 && errno != ENOENT) written = false; // a rename would not ask
    if (written) {
        change_store(old, key, name, value, &changed);
        written = replace_file(path, changed, permission);
    }
    SH_Free(old.bytes);
    SH_Free(changed.bytes);
    return written;
}

bool HOST_WriteSetting(const char *key, const char *name, const char *value)
{
    char *path = store_path(HOST_CURRENT_USER);
    if (path == nullptr) return false;
    make_directories(path);
    char *target = realpath(path, nullptr); // a link stays, what it leads to is replaced
    const bool written = rewrite_store(target == nullptr ? path : target, key, name, value);
    std::free(target);
    SH_Free(path);
    return written;
}
