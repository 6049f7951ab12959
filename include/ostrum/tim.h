/*
 * Time.
 */
#ifndef OSTRUM_TIM_H
#define OSTRUM_TIM_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** A local time in its parts. */
typedef struct TIM_UNPACKED_TIME {
    int32_t seconds;         /**< 0 to 60 */
    int32_t minutes;         /**< 0 to 59 */
    int32_t hours;           /**< 0 to 23 */
    int32_t day_of_month;    /**< 1 to 31 */
    int32_t month;           /**< 0 to 11 */
    int32_t year;            /**< years since 1900 */
    int32_t day_of_week;     /**< 0 to 6, Sunday is 0 */
    int32_t day_of_year;     /**< 0 to 365 */
    int32_t daylight_saving; /**< above 0 if it is in force */
} TIM_UNPACKED_TIME;

/** Does nothing. */
OSTRUM_API void TIM_Initialise(void);

/**
 * Gives the present time.
 *
 * @return  seconds since the C library's epoch
 */
OSTRUM_API int64_t TIM_GetTime(void);

/**
 * Takes a time apart, as local time. A time that the C library cannot express counts as 0.
 *
 * @param time      seconds since the epoch
 * @param unpacked  out: its parts
 * @return          0
 */
OSTRUM_API int32_t TIM_UnpackTime(int64_t time, TIM_UNPACKED_TIME *unpacked);

/**
 * Writes a time as "dd-Mon-yyyy hh:mm", 17 characters; a day below 10 begins with a space. A time
 * whose year does not have four digits counts as 0.
 *
 * @param time  seconds since the epoch
 * @return      the text in a static buffer, valid until the next call
 */
OSTRUM_API const char *TIM_TimeString(int64_t time);

/**
 * Not implemented.
 *
 * @return  2
 */
OSTRUM_API int32_t TIM_ConvertTime(void);

/**
 * Gives the text of a status of this family.
 *
 * @param status  0 to 2
 * @return        its text, static; "Invalid reply code" for another status
 */
OSTRUM_API const char *TIM_Message(int32_t status);

OSTRUM_END

#endif
