#include "platform/os/LocalTime.h"

#include <chrono>
#include <time.h>

void GetLocalTime(SYSTEMTIME* time) {
    if (time == nullptr) return;
    const auto now = std::chrono::system_clock::now();
    const auto sinceEpoch = std::chrono::floor<std::chrono::milliseconds>(now.time_since_epoch());
    const time_t seconds = std::chrono::system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(now));
    tm local{};
    localtime_r(&seconds, &local);
    const auto word = [](auto value) { return static_cast<WORD>(value); };
    *time = {word(local.tm_year + 1900), word(local.tm_mon + 1), word(local.tm_wday), word(local.tm_mday),
             word(local.tm_hour),        word(local.tm_min),     word(local.tm_sec),  word(sinceEpoch.count() % 1000)};
}
