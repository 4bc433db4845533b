#include "observatory/panel/bright_stars.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "sky/epoch.h"

namespace vantrel::observatory {
namespace {

using sky::kDegree;
using sky::SkyOfDate;

constexpr double kLowest = 20;   // degrees of altitude
constexpr double kHighest = 75;  // above it the azimuth adjuster moves a star little

StarNow starNow(std::size_t index, const SkyOfDate& sky, const PlaceOfDate& place, double latitude,
                double longitude) {
    StarNow star{index, place};
    star.hourAngle = std::remainder(sky.siderealTime(longitude) - place.rightAscension, 24);
    const double h = star.hourAngle * 15 * kDegree;
    const double d = place.declination * kDegree;
    const double f = latitude * kDegree;
    star.altitude = std::asin(std::sin(f) * std::sin(d) + std::cos(f) * std::cos(d) * std::cos(h)) / kDegree;
    const auto within = [&](double degrees, double hours) {
        return std::abs(place.declination) <= degrees && std::abs(star.hourAngle) <= hours &&
               star.altitude <= kHighest;
    };
    star.suitability = within(10, 1)   ? Suitability::kBest
                       : within(20, 2) ? Suitability::kGood
                                       : Suitability::kFair;
    return star;
}

PlaceOfDate placeAt(const BrightStar& star, const SkyOfDate& sky) {
    const double years = sky.julianEpoch() - 2000;
    const double ra = star.ra + star.motionRA / 3600 * years / std::cos(star.dec * kDegree);
    const sky::SkyPosition apparent =
        sky.apparent(sky::SkyPosition{ra, star.dec + star.motionDec / 3600 * years});
    return {apparent.ra / 15, apparent.dec};
}

}  // namespace

const std::vector<BrightStar>& brightStars() {
    static const std::vector<BrightStar> stars = {
#include "observatory/panel/bright_stars.inc"
    };
    return stars;
}

PlaceOfDate placeOfDate(const BrightStar& star, platform::Instant utc) {
    return placeAt(star, SkyOfDate(utc));
}

std::vector<StarNow> starsUp(platform::Instant utc, double latitude, double longitude) {
    const SkyOfDate sky(utc);
    std::vector<StarNow> up;
    for (std::size_t i = 0; i < brightStars().size(); ++i) {
        const StarNow star = starNow(i, sky, placeAt(brightStars()[i], sky), latitude, longitude);
        if (star.altitude >= kLowest) up.push_back(star);
    }
    const auto rank = [](const StarNow& star) {
        return std::tuple(star.suitability, std::abs(star.place.declination) + 15 * std::abs(star.hourAngle));
    };
    std::sort(up.begin(), up.end(), [&](const StarNow& a, const StarNow& b) { return rank(a) < rank(b); });
    return up;
}

}  // namespace vantrel::observatory
