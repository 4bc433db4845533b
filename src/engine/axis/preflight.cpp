#include "engine/axis/preflight.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <Eigen/Geometry>

#include "engine/angles.h"
#include "engine/axis/adjusters.h"
#include "engine/axis/sighting.h"
#include "platform/text.h"

namespace vantrel::engine {
namespace {

using platform::formatNumber;

double middleHourAngle(const Plan& plan) {
    return plan.hourAngle + (static_cast<double>(plan.exposures.size()) - 1) / 2 * plan.slew / 15;
}

double lowestOnTheWay(const Plan& plan, const Site& site, const Horizon& horizon) {
    const double degrees = std::abs(plan.slew) * (static_cast<double>(plan.exposures.size()) - 1);
    const int steps = std::max(1, static_cast<int>(std::ceil(degrees)));
    double lowest = 90;
    for (int i = 0; i <= steps; ++i) {
        const double hourAngle = plan.hourAngle + std::copysign(degrees, plan.slew) / 15 * i / steps;
        const PlaceOnSky place = placeOnSky(hourAngle, plan.declination, site.latitude);
        lowest = std::min(lowest, place.altitude - horizon.altitudeAt(place.azimuth));
    }
    return lowest;
}

/// The engine's azimuth counts from south through west.
double separabilityAt(const PlaceOnSky& place) {
    return adjustersAt({.Alt = place.altitude, .Az = place.azimuth + 180}, 1).separability;
}

double sigmaOf(const Prospect& prospect) {
    return prospect.validity == Validity::kValid ? prospect.covariance.sigma() : INFINITY;
}

std::optional<Preflight::Better> betterThan(double sigma, const Plan& plan, const Site& site,
                                            const Horizon& horizon, const FitSettings& settings) {
    constexpr double kGoodEnough = 5;                             // arc-seconds
    constexpr std::array kSlews = {7., 10., 15., 20., 30., 45.};  // degrees
    if (sigma <= kGoodEnough) return std::nullopt;
    std::optional<Preflight::Better> better;
    for (const double slew : kSlews) {
        Plan longer = plan;
        longer.slew = std::copysign(slew, plan.slew);
        if (slew <= std::abs(plan.slew) || lowestOnTheWay(longer, site, horizon) < 0) continue;
        const Prospect prospect = foresee(longer, site, settings);
        if (prospect.astrideSixHours || !(sigmaOf(prospect) < sigma / 2)) continue;
        better = {slew, sigmaOf(prospect)};
        if (better->sigma <= kGoodEnough) break;
    }
    return better;
}

std::string plusMinus(double sigma) { return "+- " + formatNumber(sigma, sigma < 10 ? "0.0" : "0"); }

}  // namespace

PlaceOnSky placeOnSky(double hourAngle, double declination, double latitude) {
    const Eigen::Vector3d up = zenith(latitude);
    const Eigen::Vector3d east(0, 1, 0);
    const Eigen::Vector3d north = up.cross(east);
    const Eigen::Vector3d star = directionOf(hourAngle, declination);
    const double azimuth = radiansToDegrees(std::atan2(star.dot(east), star.dot(north)));
    return {radiansToDegrees(ArcSin(star.dot(up))), azimuth < 0 ? azimuth + 360 : azimuth};
}

Preflight lookAhead(const Plan& plan, const Site& site, const Horizon& horizon, const FitSettings& settings) {
    Preflight ahead;
    double before = 0;
    double west = -INFINITY;
    for (std::size_t i = 0; i < plan.exposures.size(); ++i) {
        const double hourAngle = std::remainder(plan.hourAngle + static_cast<double>(i) * plan.slew / 15, 24);
        const PlaceOnSky place = placeOnSky(hourAngle, plan.declination, site.latitude);
        ahead.plates.push_back({hourAngle, place, place.altitude - horizon.altitudeAt(place.azimuth)});
        const bool near = std::abs(hourAngle) < 6;
        if (i > 0 && near && (hourAngle < 0) != (before < 0)) ahead.crossesMeridian = true;
        before = hourAngle;
        west = std::max(west, hourAngle);
    }
    ahead.lowestBetween = lowestOnTheWay(plan, site, horizon);
    ahead.prospect = foresee(plan, site, settings);
    if (std::abs(west) < 6 && !ahead.prospect.astrideSixHours) ahead.hoursToSix = 6 - west;
    ahead.separability = separabilityAt(placeOnSky(middleHourAngle(plan), plan.declination, site.latitude));
    ahead.better = betterThan(sigmaOf(ahead.prospect), plan, site, horizon, settings);
    return ahead;
}

std::string Preflight::summary() const {
    if (prospect.validity != Validity::kValid) return "These plates tell no axis";
    std::string text = plusMinus(prospect.covariance.sigma()) + "″ expected";
    if (better) text += "; " + formatNumber(better->slew, "0") + "°: " + plusMinus(better->sigma) + "″";
    return text;
}

std::vector<std::string> Preflight::warnings() const {
    std::vector<std::string> warnings;
    for (std::size_t i = 0; i < plates.size(); ++i)
        if (plates[i].aboveHorizon < 0)
            warnings.push_back("Plate " + std::to_string(i + 1) + " will stand " +
                               formatNumber(plates[i].place.altitude, "0") +
                               " degrees high, below the horizon");
    if (warnings.empty() && lowestBetween < 0)
        warnings.emplace_back("The way between the plates goes below the horizon");
    if (prospect.astrideSixHours)
        warnings.emplace_back("The plates will lie on both sides of hour angle six");
    constexpr double kSoon = 0.25;  // hours
    if (hoursToSix && *hoursToSix < kSoon)
        warnings.push_back("The last plate reaches hour angle six in " + formatNumber(*hoursToSix * 60, "0") +
                           " minutes");
    return warnings;
}

std::vector<StartingPlace> startingPlaces(const Plan& plan, const Site& site, const Horizon& horizon,
                                          const FitSettings& settings) {
    constexpr double kHours = 0.75, kDegrees = 10;  // between places
    std::vector<StartingPlace> places;
    Plan here = plan;
    for (here.declination = -80; here.declination <= 80; here.declination += kDegrees) {
        for (double middle = -9; middle <= 9; middle += kHours) {
            here.hourAngle = plan.hourAngle + middle - middleHourAngle(plan);
            if (lowestOnTheWay(here, site, horizon) < 0) continue;
            const Prospect prospect = foresee(here, site, settings);
            if (prospect.validity != Validity::kValid || prospect.astrideSixHours) continue;
            const PlaceOnSky place = placeOnSky(middle, here.declination, site.latitude);
            places.push_back({here.hourAngle, here.declination, place, prospect.covariance.sigma(),
                              separabilityAt(place)});
        }
    }
    return places;
}

std::optional<StartingPlace> bestOf(const std::vector<StartingPlace>& places) {
    if (places.empty()) return std::nullopt;
    constexpr double kAsGood = 1.25;  // times the least error
    const double least = std::ranges::min(places, {}, &StartingPlace::sigma).sigma;
    StartingPlace best;
    for (const StartingPlace& place : places)
        if (place.sigma <= kAsGood * least && place.separability > best.separability) best = place;
    return best;
}

}  // namespace vantrel::engine
