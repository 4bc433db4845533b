// The time as the program sees it. Nothing else asks the system for it.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace vantrel::platform {

using Milliseconds = std::chrono::milliseconds;
using Instant = std::chrono::sys_time<Milliseconds>;

/// Wall clock and running time in one; the virtual one stands still unless a loop advances it.
class Clock {
  public:
    virtual ~Clock() = default;
    /// Universal time (UTC).
    virtual Instant utc() const = 0;
    /// Time since the program started; never runs backwards.
    virtual Milliseconds sinceStart() const = 0;
};

/// A civil date and time of day.
struct CivilTime {
    int year = 0, month = 0, day = 0;  // month and day from 1
    int hour = 0, minute = 0, second = 0, millisecond = 0;
};

CivilTime civilUtc(Instant instant);
/// In the machine's time zone.
CivilTime civilLocal(Instant instant);

/// "HH:mm:ss", "HH_mm_ss", "HHmmss", "yyyyMMdd": fields of two digits (the year of four), everything else as
/// is.
std::string formatTime(const CivilTime& time, std::string_view pattern);

/// An instant in UTC written "2026-11-24T20:00:00Z", with or without a fraction of the second and the Z.
std::optional<Instant> parseInstant(const std::string& text);

}  // namespace vantrel::platform
