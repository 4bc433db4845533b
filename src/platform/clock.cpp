#include "platform/clock.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <utility>

namespace vantrel::platform {
namespace {

std::string padded(int value, std::size_t width) {
    std::string text = std::to_string(value);
    if (text.size() < width) text.insert(0, width - text.size(), '0');
    return text;
}

}  // namespace

/// By arithmetic: the C library counts leap seconds here, too, where the machine's time zone does.
CivilTime civilUtc(Instant instant) {
    const auto day = std::chrono::floor<std::chrono::days>(instant);
    const std::chrono::year_month_day date{day};
    const std::chrono::hh_mm_ss time{instant - day};
    return {int{date.year()},
            static_cast<int>(unsigned{date.month()}),
            static_cast<int>(unsigned{date.day()}),
            static_cast<int>(time.hours().count()),
            static_cast<int>(time.minutes().count()),
            static_cast<int>(time.seconds().count()),
            static_cast<int>(time.subseconds().count())};
}

CivilTime civilLocal(Instant instant) {
    const auto second = std::chrono::floor<std::chrono::seconds>(instant);
    const std::time_t seconds = second.time_since_epoch().count();
    std::tm tm{};
    localtime_r(&seconds, &tm);
    return {tm.tm_year + 1900,
            tm.tm_mon + 1,
            tm.tm_mday,
            tm.tm_hour,
            tm.tm_min,
            tm.tm_sec,
            static_cast<int>((instant - second).count())};
}

std::string formatTime(const CivilTime& time, std::string_view pattern) {
    const std::array<std::pair<std::string_view, std::string>, 6> fields{{
        {"yyyy", padded(time.year, 4)},
        {"MM", padded(time.month, 2)},
        {"dd", padded(time.day, 2)},
        {"HH", padded(time.hour, 2)},
        {"mm", padded(time.minute, 2)},
        {"ss", padded(time.second, 2)},
    }};
    std::string text;
    while (!pattern.empty()) {
        std::size_t taken = 1;
        std::string shown(1, pattern.front());
        for (const auto& [field, value] : fields) {
            if (pattern.substr(0, field.size()) != field) continue;
            taken = field.size();
            shown = value;
            break;
        }
        text += shown;
        pattern.remove_prefix(taken);
    }
    return text;
}

std::optional<Instant> parseInstant(const std::string& text) {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0;
    double second = 0;
    int used = 0;
    if (std::sscanf(text.c_str(), "%4d-%2d-%2dT%2d:%2d:%lf%n", &year, &month, &day, &hour, &minute, &second,
                    &used) != 6)
        return std::nullopt;
    const std::string rest = text.substr(static_cast<std::size_t>(used));
    const std::chrono::year_month_day date{std::chrono::year{year},
                                           std::chrono::month{static_cast<unsigned>(month)},
                                           std::chrono::day{static_cast<unsigned>(day)}};
    if (!(rest.empty() || rest == "Z") || !date.ok() || hour > 23 || minute > 59 ||
        !(second >= 0 && second < 61))
        return std::nullopt;
    return std::chrono::sys_days{date} + std::chrono::hours{hour} + std::chrono::minutes{minute} +
           Milliseconds{std::llround(second * 1000)};
}

}  // namespace vantrel::platform
