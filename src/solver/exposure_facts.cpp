#include "solver/exposure_facts.h"

#include <cmath>
#include <string>

#include "fits/fits_header.h"
#include "platform/text.h"

namespace vantrel::solver {

namespace {

using fits::FitsHeader;
using sky::SkyPosition;

/// "12 34 56.7" or "-12:34:56.7" as units and sixtieths; empty when it is not three (or two) numbers.
std::optional<double> sexagesimal(std::string text) {
    for (char& c : text) {
        if (c == ':' || c == 'h' || c == 'm' || c == 's' || c == 'd') c = ' ';
    }
    text = platform::trimmed(text);
    const bool negative = !text.empty() && text.front() == '-';
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) text.erase(0, 1);
    double value = 0;
    double unit = 1;
    int parts = 0;
    for (std::size_t at = 0; at < text.size() && parts < 3; ++parts, unit /= 60) {
        const std::size_t end = std::min(text.find(' ', at), text.size());
        const auto part = platform::parseNumber(text.substr(at, end - at));
        if (!part || *part < 0) return std::nullopt;
        value += *part * unit;
        at = std::min(text.find_first_not_of(' ', end), text.size());
    }
    return parts < 2 ? std::nullopt : std::optional(negative ? -value : value);
}

}  // namespace

std::optional<platform::Instant> exposureStart(const FitsHeader& header) {
    auto text = header.text("DATE-OBS");
    if (!text) return std::nullopt;
    if (text->size() == 10) *text += "T" + header.text("TIME-OBS").value_or("00:00:00");
    return platform::parseInstant(*text);
}

double julianYear(platform::Instant instant) {
    constexpr double kDaysTo2000 = 10957.5;  // from 1970-01-01 0 h to J2000
    const double days = std::chrono::duration<double, std::ratio<86400>>(instant.time_since_epoch()).count();
    return 2000 + (days - kDaysTo2000) / 365.25;
}

std::vector<double> headerScales(const FitsHeader& header) {
    const double focal = header.number("FOCALLEN").value_or(0);
    const double size = header.number("XPIXSZ").value_or(0);
    if (!(focal > 0) || !(size > 0) || focal > 1e6 || size > 1e4) return {};
    const double scale = 206.264806 * size / focal;
    const double binning = header.number("XBINNING").value_or(1);
    if (binning > 1 && binning <= 16) return {scale, scale * binning};
    return {scale};
}

std::optional<SkyPosition> headerTarget(const FitsHeader& header) {
    const auto ra = header.text("OBJCTRA");
    const auto dec = header.text("OBJCTDEC");
    if (ra && dec) {
        const auto hours = sexagesimal(*ra);
        const auto degrees = sexagesimal(*dec);
        if (hours && degrees && *hours >= 0 && *hours < 24 && std::abs(*degrees) <= 90) {
            return SkyPosition{*hours * 15, *degrees};
        }
    }
    const auto raDeg = header.number("RA");
    const auto decDeg = header.number("DEC");
    if (raDeg && decDeg && *raDeg >= 0 && *raDeg < 360 && std::abs(*decDeg) <= 90)
        return SkyPosition{*raDeg, *decDeg};
    return std::nullopt;
}

}  // namespace vantrel::solver
