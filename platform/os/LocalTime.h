#pragma once

#include "platform/framework/Types.h"

// The wall clock in the local time zone. The month counts from 1, the day of the week from Sunday, 0.
struct SYSTEMTIME {
    WORD wYear;
    WORD wMonth;
    WORD wDayOfWeek;
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};

// Any thread.
void GetLocalTime(SYSTEMTIME* time);
