/*
 * Growing strings.
 */
#include "core/ist.h"

#include "core/sh.h"
#include "core/st.h"

#include <cstring>

static constexpr int32_t step = 256;

/** A capacity that holds size bytes: so many steps that repeated growth stays linear. */
static int32_t stepped_capacity(int32_t capacity, int64_t size)
{
    const int64_t wanted = size > capacity + capacity / 2 ? size : capacity + capacity / 2;
    const int64_t rounded = (wanted + step - 1) / step * step;
    return rounded > INT32_MAX ? -1 : static_cast<int32_t>(rounded); // -1: more than storage has
}

static void make_room(IST_STRING *string, size_t count)
{
    const int64_t size = int64_t{ string->length } + static_cast<int64_t>(count) + 1;
    if (size <= string->capacity) return;
    const int32_t capacity = stepped_capacity(string->capacity, size);
    char *buffer = static_cast<char *>(SH_NameAllocate(capacity, "IST:BUFFER"));
    std::memcpy(buffer, string->buffer, static_cast<size_t>(string->length));
    SH_Free(string->buffer);
    string->buffer = buffer;
    string->capacity = capacity;
}

IST_STRING *IST_NewString()
{
    auto *string = static_cast<IST_STRING *>(SH_NameAllocate(sizeof(IST_STRING), "IST:STRING"));
    string->buffer = static_cast<char *>(SH_NameAllocate(step, "IST:BUFFER"));
    string->capacity = step;
    return string;
}

void IST_Append(IST_STRING *string, const char *text)
{
    const size_t length = std::strlen(text);
    make_room(string, length);
    std::memcpy(string->buffer + string->length, text, length);
    string->length += static_cast<int32_t>(length);
}

void IST_AppendChar(IST_STRING *string, char character)
{
    make_room(string, 1);
    string->buffer[string->length] = character;
    string->length++;
}

int32_t IST_Length(IST_STRING *string)
{
    return string->length;
}

char *IST_GetString(IST_STRING *string)
{
    char *text = ST_Allocate(string->buffer);
    SH_Free(string->buffer);
    SH_Free(string);
    return text;
}
