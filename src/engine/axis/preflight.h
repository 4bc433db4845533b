// The whole arc of a measurement before the first slew: where its plates will stand, how good it will be, and
// what would be better.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "engine/axis/horizon.h"
#include "engine/axis/prospect.h"

namespace vantrel::engine {

/// Degrees; azimuth from north through east.
struct PlaceOnSky {
    double altitude = 0, azimuth = 0;
};

/// Where the observer at this latitude sees an hour angle (hours) and a declination (degrees). Without air.
PlaceOnSky placeOnSky(double hourAngle, double declination, double latitude);

struct Preflight {
    struct PlateAhead {
        double hourAngle = 0;  // hours in (-12, 12]
        PlaceOnSky place;
        double aboveHorizon = 0;  // degrees
    };
    std::vector<PlateAhead> plates;
    double lowestBetween = 0;      // degrees above the horizon, on the way from plate to plate
    bool crossesMeridian = false;  // many mounts turn over there
    /// Until the plate farthest west reaches hour angle six; none when the arc lies beyond or astride.
    std::optional<double> hoursToSix;
    double separability = 0;  // of the two adjusters, at the middle of the arc: 1 at best
    Prospect prospect;

    /// A slew that would do much better, in degrees, and its sigma in arc-seconds.
    struct Better {
        double slew = 0, sigma = 0;
    };
    std::optional<Better> better;

    /// One line: "+- 24 arc-sec expected; 20 degrees: +- 3".
    std::string summary() const;
    /// What the operator should think about first; empty when all is well.
    std::vector<std::string> warnings() const;
};

/// Of a plan at a site. Where plates can be, the horizon says.
Preflight lookAhead(const Plan& plan, const Site& site, const Horizon& horizon,
                    const FitSettings& settings = {});

/// A place to begin at, for the map.
struct StartingPlace {
    double hourAngle = 0, declination = 0;  // hours and degrees, of the first plate
    PlaceOnSky middle;                      // of the arc
    double sigma = 0;                       // arc-seconds
    double separability = 0;
};

/// The plan begun at many places of the sky: those from where all of it can be seen, on one side of hour
/// angle six.
std::vector<StartingPlace> startingPlaces(const Plan& plan, const Site& site, const Horizon& horizon,
                                          const FitSettings& settings = {});

/// Of those with about the least sigma the one where the adjusters can be told apart best; none among none.
std::optional<StartingPlace> bestOf(const std::vector<StartingPlace>& places);

}  // namespace vantrel::engine
