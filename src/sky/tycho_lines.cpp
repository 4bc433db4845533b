#include "sky/tycho_lines.h"

#include <cmath>
#include <map>
#include <string>
#include <utility>

#include "sky/field_number.h"
#include "sky/star_catalog.h"

namespace vantrel::sky {

namespace {

constexpr double kSupplementEpoch = 1991.25;

[[noreturn]] void fail(const TychoLine& line) {
    throw CatalogError(line.file.string() + ": line " + std::to_string(line.number) +
                       " is not one of Tycho-2");
}

/// V from Tycho's B_T and V_T (ESA SP-1200, vol. 1, section 1.3: V = V_T - 0.090 (B_T - V_T)); one of the two
/// alone stands for V.
std::optional<double> johnsonV(std::optional<double> bt, std::optional<double> vt) {
    if (bt && vt) return *vt - 0.090 * (*bt - *vt);
    return vt ? vt : bt;
}

double position(const TychoLine& line, std::size_t first, std::size_t last, double limit) {
    const double value = line.requiredNumber(first, last);
    if (!(std::abs(value) <= limit)) fail(line);
    return value;
}

double combinedMagnitude(double a, double b) {
    return -2.5 * std::log10(std::pow(10, -0.4 * a) + std::pow(10, -0.4 * b));
}

}  // namespace

std::optional<double> TychoLine::optionalNumber(std::size_t first, std::size_t last) const {
    if (first > text.size()) return std::nullopt;
    const auto value = fieldNumber(text.substr(first - 1, last - first + 1));
    if (value && std::isnan(*value)) fail(*this);
    return value;
}

double TychoLine::requiredNumber(std::size_t first, std::size_t last) const {
    const auto value = optionalNumber(first, last);
    if (!value) fail(*this);
    return *value;
}

std::optional<TychoEntry> tychoMainEntry(const TychoLine& line, double epochYear) {
    const auto magnitude = johnsonV(line.optionalNumber(111, 116), line.optionalNumber(124, 129));
    if (!magnitude) return std::nullopt;
    if (line.flag(14) == 'X')
        return TychoEntry{{position(line, 153, 164, 360), position(line, 166, 177, 90), *magnitude}};
    const MovingStar star{position(line, 16, 27, 360), position(line, 29, 40, 90), *magnitude,
                          line.optionalNumber(42, 48).value_or(0), line.optionalNumber(50, 56).value_or(0)};
    return TychoEntry{carried(star, epochYear - 2000), line.flag(14) == 'P'};
}

std::optional<TychoEntry> tychoSupplementEntry(const TychoLine& line, double epochYear) {
    const auto bt = line.optionalNumber(84, 89);
    const auto vt = line.optionalNumber(97, 102);
    const auto magnitude = line.flag(82) == 'H' ? vt : johnsonV(bt, vt);
    if (!magnitude) return std::nullopt;
    const MovingStar star{position(line, 16, 27, 360), position(line, 29, 40, 90), *magnitude,
                          line.optionalNumber(42, 48).value_or(0), line.optionalNumber(50, 56).value_or(0)};
    return TychoEntry{carried(star, epochYear - kSupplementEpoch)};
}

std::vector<MovingStar> mergedPhotocentres(const std::vector<TychoEntry>& entries) {
    std::vector<MovingStar> stars;
    stars.reserve(entries.size());
    std::map<std::pair<double, double>, std::size_t> photocentres;
    for (const TychoEntry& entry : entries) {
        if (entry.photocentre) {
            const auto [twin, first] =
                photocentres.try_emplace({entry.star.raDeg, entry.star.decDeg}, stars.size());
            if (!first) {
                double& magnitude = stars[twin->second].magnitude;
                magnitude = combinedMagnitude(magnitude, entry.star.magnitude);
                continue;
            }
        }
        stars.push_back(entry.star);
    }
    return stars;
}

}  // namespace vantrel::sky
