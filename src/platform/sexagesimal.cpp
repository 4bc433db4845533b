#include "platform/sexagesimal.h"

#include <cmath>

#include "platform/text.h"

namespace vantrel::platform {

std::string FormatDMS(double degrees, const std::string& degreeMark, const std::string& minuteMark,
                      const std::string& secondMark, int decimals) {
    double rest = std::abs(degrees);
    double units = std::trunc(rest);
    rest = (rest - units) * 60;
    double minutes = std::trunc(rest);
    rest = (rest - minutes) * 60;

    const std::string pattern =
        decimals == 0 ? "00" : "00." + std::string(static_cast<std::size_t>(decimals), '0');
    std::string seconds = formatNumber(rest, pattern);
    if (seconds.starts_with("60")) {
        seconds = formatNumber(0, pattern);
        ++minutes;
    }
    if (minutes == 60) {
        minutes = 0;
        ++units;
    }
    return (degrees < 0 ? "-" : "") + formatNumber(units, "00") + degreeMark + formatNumber(minutes, "00") +
           minuteMark + seconds + secondMark;
}

std::string FormatHMS(double hours, const std::string& hourMark, const std::string& minuteMark,
                      const std::string& secondMark, int decimals) {
    return FormatDMS(hours, hourMark, minuteMark, secondMark, decimals);
}

std::string raText(double hours, int decimals) { return FormatHMS(hours, "h ", "m ", "s", decimals); }

std::string decText(double degrees, int decimals) { return FormatDMS(degrees, "° ", "' ", "\"", decimals); }

}  // namespace vantrel::platform
