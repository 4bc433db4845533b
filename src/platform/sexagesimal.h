// Positions as the log shows solved ones: "05h 41m 12.345s" and "-02° 15' 07.10"".
#pragma once

#include <string>

namespace vantrel::platform {

/// Degrees as degrees, minutes and seconds of at least two digits, each followed by its mark. Seconds that
/// round to 60 carry over to the minutes and these to the degrees. A value below 0 begins with "-".
std::string FormatDMS(double degrees, const std::string& degreeMark, const std::string& minuteMark,
                      const std::string& secondMark, int decimals);

/// The same for hours.
std::string FormatHMS(double hours, const std::string& hourMark, const std::string& minuteMark,
                      const std::string& secondMark, int decimals);

/// Hours with "h ", "m " and "s", usually to a millisecond of time.
std::string raText(double hours, int decimals = 3);

/// Degrees with "° ", "' " and a double quote, usually to a hundredth of an arc-second.
std::string decText(double degrees, int decimals = 2);

}  // namespace vantrel::platform
