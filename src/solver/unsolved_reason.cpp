#include "solver/unsolved_reason.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "platform/text.h"

namespace vantrel::solver {

using platform::Words;

namespace {

constexpr std::size_t kFewestStars = 6;  // that a plate can be recognised by
constexpr double kMostExpected = 300;    // beyond, the exposure decides how many are seen
constexpr double kMeanDensity = 61.8;    // of Tycho-2, stars per square degree
constexpr double kWidestPixels = 12;     // stars wider than that are out of focus,
constexpr double kWidestArcsec = 12;     // if they are as wide as that in the sky
constexpr double kLongestTrail = 8;      // pixels that spoil the stars' places, if it is wider than the stars

std::string whole(double value) { return platform::formatNumber(value, "0"); }

bool isTrailed(const StarLook& look) { return look.trail > std::max(kLongestTrail, 1.5 * look.width); }

bool isDefocused(const StarLook& look, double scale) {
    return look.width > kWidestPixels && (!(scale > 0) || look.width * scale > kWidestArcsec);
}

}  // namespace

std::optional<double> starsExpected(const SoughtField& field, const sky::StarCatalog& catalog) {
    const PlateGeometry& plate = field.geometry;
    if (!(plate.scaleX > 0) || !(plate.scaleY > 0)) return std::nullopt;
    const double area = plate.width * plate.height * plate.scaleX * plate.scaleY / (3600.0 * 3600.0);
    if (!field.start || field.radiusDeg >= 180) return std::min(area * kMeanDensity, kMostExpected);
    const double radius = std::sqrt(area / std::numbers::pi);
    const auto stars = catalog.cone({.raDeg = field.start->ra,
                                     .decDeg = field.start->dec,
                                     .radiusDeg = std::min(radius, 60.0),
                                     .maxStars = static_cast<std::size_t>(kMostExpected),
                                     .brightestFirst = true});
    return static_cast<double>(stars.size());
}

Words whyUnsolved(const StarList& stars, const SoughtField& field) {
    constexpr double kTooFew = 0.35, kTooMany = 8;  // times as many as the catalogue has
    const StarLook& look = stars.look;
    const double scale = field.geometry.scaleX;
    const auto found = static_cast<double>(stars.stars.size());
    if (stars.stars.empty()) return Words::tr("No stars were found: clouds, a cover, or far out of focus?");
    if (isTrailed(look))
        return Words::tr("The stars are trailed by %1 pixels at %2 degrees to the rows",
                         {whole(look.trail), whole(look.trailDeg)});
    if (isDefocused(look, scale))
        return Words::tr("The stars are %1 pixels wide: out of focus?", {whole(look.width)});
    if (stars.stars.size() < kFewestStars)
        return Words::tr(
            "Only %1 of the %2 stars that a solution needs were found: clouds, or too short an exposure?",
            {whole(found), std::to_string(kFewestStars)});
    if (field.starsExpected) {
        const double expected = std::round(*field.starsExpected);
        const std::vector<Words> figures{whole(found), whole(expected)};
        const Words counted =
            expected < kMostExpected
                ? Words::tr("%1 stars were found where about %2 are expected at this scale", figures)
                : Words::tr("%1 stars were found where %2 or more are expected at this scale", figures);
        if (found < kTooFew * expected)
            return Words::tr("%1: clouds, too short an exposure, or a wrong scale?", {counted});
        if (found > kTooMany * std::max(10.0, expected))
            return Words::tr("%1: hot pixels, or a wrong scale?", {counted});
    }
    if (!(scale > 0))
        return Words::tr(
            "The stars look sound, but no place that was looked at fits them in fields 0.3 to 30 degrees "
            "wide");
    const std::string scaleText = platform::formatNumber(scale, "0.00");
    if (!field.start || field.radiusDeg >= 180)
        return Words::tr(
            "The stars look sound, but no place in the whole sky fits them: is its scale of %1\" wrong by "
            "more than a seventh?",
            {scaleText});
    return Words::tr(
        "The stars look sound, but no place within %1 degrees of the start fits them: is the picture "
        "elsewhere, or its scale of %2\" wrong by more than a seventh?",
        {platform::formatNumber(field.radiusDeg, "0.0"), scaleText});
}

}  // namespace vantrel::solver
