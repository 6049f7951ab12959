/*
 * Time.
 */
#include "core/tim.h"

#include "core/st.h"

#include <cstring>
#include <ctime>

enum TIM_STATUS { TIM_SUCCESSFUL, TIM_ILLEGAL_FORMAT, TIM_NOT_IMPLEMENTED };

static constexpr int32_t text_size = 18;   // bytes of "dd-Mon-yyyy hh:mm"
static constexpr size_t ctime_length = 25; // "Www Mmm dd hh:mm:ss yyyy" and a line feed

void TIM_Initialise() {}

int64_t TIM_GetTime()
{
    return std::time(nullptr);
}

int32_t TIM_UnpackTime(int64_t time, TIM_UNPACKED_TIME *unpacked)
{
    const std::time_t epoch = 0;
    const std::time_t seconds = static_cast<std::time_t>(time);
    const std::tm *local = std::localtime(&seconds);
    if (local == nullptr) local = std::localtime(&epoch); // a year beyond the C library's numbers
    *unpacked = TIM_UNPACKED_TIME{
        .seconds = local->tm_sec,
        .minutes = local->tm_min,
        .hours = local->tm_hour,
        .day_of_month = local->tm_mday,
        .month = local->tm_mon,
        .year = local->tm_year,
        .day_of_week = local->tm_wday,
        .day_of_year = local->tm_yday,
        .daylight_saving = local->tm_isdst,
    };
    return TIM_SUCCESSFUL;
}

/** The C library's text of a time, always in its fixed layout. */
static const char *fixed_text(int64_t time)
{
    const std::time_t epoch = 0;
    const std::time_t seconds = static_cast<std::time_t>(time);
    const char *text = std::ctime(&seconds);
    if (text != nullptr && std::strlen(text) == ctime_length) return text;
    return std::ctime(&epoch);
}

const char *TIM_TimeString(int64_t time)
{
    static char text[text_size];
    char day[3];
    char month[4];
    char year[5];
    char clock[7]; // with the space before it
    const char *fixed = fixed_text(time);
    ST_CopySpan(day, sizeof day, fixed + 8, 2);
    ST_CopySpan(month, sizeof month, fixed + 4, 3);
    ST_CopySpan(year, sizeof year, fixed + 20, 4);
    ST_CopySpan(clock, sizeof clock, fixed + 10, 6);
    return ST_Concat(text, text_size, day, "-", month, "-", year, clock, nullptr);
}

int32_t TIM_ConvertTime()
{
    return TIM_NOT_IMPLEMENTED;
}

const char *TIM_Message(int32_t status)
{
    switch (status) {
    case TIM_SUCCESSFUL:
        return "Successful";
    case TIM_ILLEGAL_FORMAT:
        return "Illegal date/time format";
    case TIM_NOT_IMPLEMENTED:
        return "Function not implemented";
    default:
        return "Invalid reply code";
    }
}
