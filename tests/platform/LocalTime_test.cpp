#include "platform/os/LocalTime.h"

#include <ctime>
#include <gtest/gtest.h>
#include <stdlib.h>

namespace {

// Seconds since the epoch of a local time.
std::time_t SecondsOf(const SYSTEMTIME& time) {
    std::tm parts{};
    parts.tm_year = time.wYear - 1900;
    parts.tm_mon = time.wMonth - 1;
    parts.tm_mday = time.wDay;
    parts.tm_hour = time.wHour;
    parts.tm_min = time.wMinute;
    parts.tm_sec = time.wSecond;
    parts.tm_isdst = -1;
    return std::mktime(&parts);
}

void SetZone(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
}

TEST(LocalTime, IsTheClockInTheLocalZone) {
    for (const char* zone : {"UTC0", "AAA-14", "BBB12"}) {
        SetZone(zone);
        const std::time_t before = std::time(nullptr);
        SYSTEMTIME now{};
        GetLocalTime(&now);
        const std::time_t after = std::time(nullptr);
        EXPECT_LE(before, SecondsOf(now)) << zone;
        EXPECT_GE(after, SecondsOf(now)) << zone;
        EXPECT_LT(now.wMilliseconds, 1000) << zone;
        std::tm local{};
        const std::time_t seconds = SecondsOf(now);
        localtime_r(&seconds, &local);
        EXPECT_EQ(now.wDayOfWeek, local.tm_wday) << zone;
    }
}

TEST(LocalTime, WithoutAPlaceForItDoesNothing) { GetLocalTime(nullptr); }

}  // namespace
