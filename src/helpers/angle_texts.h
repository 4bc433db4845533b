// Degrees and hours in minutes and seconds, as text and back.
#pragma once

#include <string>
#include <string_view>

namespace vantrel::helpers {

/// What stands after units, minutes and seconds.
struct Delimiters {
    std::string units;
    std::string minutes;
    std::string seconds;
};

/// "DD MM SS.ss" with these delimiters: two digits at least in each place, a minus sign before all of it,
/// none when only zeros show. The value is rounded to the last place first, so that 59.99 seconds carry.
/// Throws std::invalid_argument unless |value| <= 1e6 and 0 <= decimals <= 9.
std::string formatSeconds(double value, const Delimiters& delimiters, int decimals);

/// "DD MM.mm": the same down to minutes; the seconds' delimiter is not used.
std::string formatMinutes(double value, const Delimiters& delimiters, int decimals);

/// The value of a text with up to three numbers (units, minutes, seconds), whatever stands between them; a
/// minus sign before the first makes all of it negative. "12 34 56", "-0° 30'", "7h30.5m". Decimals may be
/// written with a point or a comma. A text without a digit is 0, what follows the third number is not read.
/// Throws std::invalid_argument when a number is too large to be one.
double parseSexagesimal(std::string_view text);

}  // namespace vantrel::helpers
