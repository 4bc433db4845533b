// Stars to sync and to correct on: a short list that everybody finds in the sky, and how well each serves
// now.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/clock.h"

namespace vantrel::observatory {

/// ICRS position at J2000 in degrees; proper motion in arc-seconds a year, in right ascension on the sky.
struct BrightStar {
    std::string name;
    double ra, dec;
    double motionRA, motionDec;
    double magnitude;
};

/// Stars of Tycho-2 (with its supplement) that have no bright neighbour on the same picture, by right
/// ascension.
const std::vector<BrightStar>& brightStars();

struct PlaceOfDate {
    double rightAscension = 0;  // hours, apparent, equator and equinox of date
    double declination = 0;     // degrees
};
PlaceOfDate placeOfDate(const BrightStar& star, platform::Instant utc);

/// How well a star serves the correction. Turning the azimuth adjuster moves a star on the meridian in right
/// ascension, where its mark is set without the cosine of the declination: too far by 1.5 % at declination
/// 10, 6 % at 20, 15 % at 30. Away from the meridian the elevation adjuster moves it less and less, and near
/// the zenith the azimuth adjuster does.
enum class Suitability : std::uint8_t {
    kBest,  // within 10 degrees of the equator and an hour of the meridian
    kGood,  // within 20 degrees and two hours
    kFair,  // good enough to sync on
};

struct StarNow {
    std::size_t index = 0;  // in brightStars()
    PlaceOfDate place;
    double hourAngle = 0;  // hours, (-12, 12], west positive
    double altitude = 0;   // degrees
    Suitability suitability = Suitability::kFair;
};

/// Every star at least 20 degrees above the horizon, those that serve best first. Degrees, east positive.
std::vector<StarNow> starsUp(platform::Instant utc, double latitude, double longitude);

}  // namespace vantrel::observatory
