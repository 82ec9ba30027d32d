#include "hosts/qfc/CalendarTime.h"

#include <gtest/gtest.h>

namespace {

using qfc::host::ParseTime;
using qfc::host::SixNumbers;

constexpr std::int64_t kMoment = 1714990830;  // 2024-05-06 10:20:30 UTC

TEST(CalendarTime, EverySpellingOfAMomentIsRead) {
    for (const char* text : {"2024-05-06T10:20:30Z", "2024-05-06 10:20:30", "2024:05:06 10:20:30",
                             "2024-05-06T10:20:30.250000Z", "2024-05-06T12:20:30+02:00", "2024-05-06T12:20:30+0200",
                             "2024-05-06T12:20:30+02", "2024-05-06T04:50:30 -05:30"})
        EXPECT_EQ(ParseTime(text), kMoment) << text;
}

TEST(CalendarTime, WhatIsNoMomentGivesNothing) {
    for (const char* text : {"", "2024", "2024-05-06", "0000:00:00 00:00:00", "    :  :     :  :  ",
                             "2024-02-30T10:20:30", "2024-13-06T10:20:30", "2024-05-06T24:20:30", "1825-05-06T10:20:30",
                             "2024-05-06T10:20:30 noon", "2024-05-06T10:20:30+99:00", "2024-05-06T10-20-30"})
        EXPECT_EQ(ParseTime(text), std::nullopt) << text;
}

TEST(CalendarTime, NumbersAreWrittenWithoutLeadingZerosAndWithSingleBlanks) {
    EXPECT_EQ(SixNumbers(kMoment), "2024 5 6 10 20 30");
    EXPECT_EQ(SixNumbers(0), "1970 1 1 0 0 0");
}

TEST(CalendarTime, MomentsBefore1970CountFromTheDayThatTheyBelongTo) {
    EXPECT_EQ(SixNumbers(-1), "1969 12 31 23 59 59");
    EXPECT_EQ(ParseTime("1969-12-31T23:59:59Z"), -1);
}

}  // namespace
