#include "solver/unsolved_reason.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "platform/text.h"

namespace vantrel::solver {

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

std::string whyUnsolved(const StarList& stars, const SoughtField& field) {
    constexpr double kTooFew = 0.35, kTooMany = 8;  // times as many as the catalogue has
    const StarLook& look = stars.look;
    const double scale = field.geometry.scaleX;
    const auto found = static_cast<double>(stars.stars.size());
    if (stars.stars.empty()) return "No stars were found: clouds, a cover, or far out of focus?";
    if (isTrailed(look))
        return "The stars are trailed by " + whole(look.trail) + " pixels at " + whole(look.trailDeg) +
               " degrees to the rows";
    if (isDefocused(look, scale)) return "The stars are " + whole(look.width) + " pixels wide: out of focus?";
    if (stars.stars.size() < kFewestStars)
        return "Only " + whole(found) + " of the " + std::to_string(kFewestStars) +
               " stars that a solution needs were found: clouds, or too short an exposure?";
    if (field.starsExpected) {
        const double expected = std::round(*field.starsExpected);
        const std::string where =
            whole(found) +
            (expected < kMostExpected ? " stars were found where about " + whole(expected)
                                      : " stars were found where " + whole(expected) + " or more") +
            " are expected at this scale: ";
        if (found < kTooFew * expected) return where + "clouds, too short an exposure, or a wrong scale?";
        if (found > kTooMany * std::max(10.0, expected)) return where + "hot pixels, or a wrong scale?";
    }
    const std::string sound = "The stars look sound, but no place ";
    if (!(scale > 0)) return sound + "that was looked at fits them in fields 0.3 to 30 degrees wide";
    const std::string wrongScale =
        "its scale of " + platform::formatNumber(scale, "0.00") + "\" wrong by more than a seventh?";
    if (!field.start || field.radiusDeg >= 180) return sound + "in the whole sky fits them: is " + wrongScale;
    return sound + "within " + platform::formatNumber(field.radiusDeg, "0.0") +
           " degrees of the start fits them: is the picture elsewhere, or " + wrongScale;
}

}  // namespace vantrel::solver
