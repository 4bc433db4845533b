// A mount with a camera in the open air, in a plain geometry that shares nothing with the estimate.
//
// Directions: x to hour angle 0 on the equator, y to hour angle 18 h (east), z to the north pole.
#pragma once

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include <erfa.h>

#include "engine/axis/axis_position.h"
#include "engine/axis/plate.h"
#include "engine/ports.h"
#include "support/vectors.h"

namespace vantrel::test {

inline Vector unitVector(double hourAngle, double declination) {
    const double h = hourAngle * 15 * kDegree;
    const double d = declination * kDegree;
    return {std::cos(d) * std::cos(h), -std::cos(d) * std::sin(h), std::sin(d)};
}

inline Vector unit(const Vector& v) { return (1 / std::sqrt(dot(v, v))) * v; }

/// Refraction by ERFA's constants.
class SimulatedAir {
  public:
    explicit SimulatedAir(const engine::Air& air) {
        if (air.pressure > 0) eraRefco(air.pressure, air.temperature, 0, 0.55, &a_, &b_);
    }
    void thicken(double factor) {
        a_ *= factor;
        b_ *= factor;
    }
    /// Where a direction that is seen there truly lies.
    Vector lowered(const Vector& seen, const Vector& zenith) const {
        const Vector horizontal = cross(zenith, seen);
        const double sine = std::sqrt(dot(horizontal, horizontal));
        if (sine == 0) return seen;
        const double tangent = sine / dot(zenith, seen);
        return turned(seen, (1 / sine) * horizontal, a_ * tangent + b_ * tangent * tangent * tangent);
    }

  private:
    double a_ = 0, b_ = 0;
};

struct SimulatedMount {
    engine::Site site{.latitude = 50, .air = engine::kNoAir};
    double azimuth = 0, elevation = 0;   // arc-minutes, as AxisOffset
    double offsetHA = 0, offsetDec = 0;  // what it reads too much, hours and degrees
    double cameraAngle = 30;             // degrees
    double declination = 30;             // degrees, as read

    Vector zenith() const { return unitVector(0, site.latitude); }

    /// From the mount's own directions to those that are seen: first the elevation adjuster's hinge, then the
    /// azimuth adjuster's.
    Vector carried(const Vector& v) const {
        const double hemisphere = site.latitude < 0 ? -1 : 1;
        const Vector tilted = turned(v, {0, 1, 0}, hemisphere * elevation / 60 * kDegree);
        return turned(tilted, zenith(), -hemisphere * azimuth / 60 * kDegree);
    }

    /// The plate with the mount's reading at this hour angle, without errors.
    engine::Plate plate(double reading, const SimulatedAir& air) const {
        const Vector outwards = unitVector(reading - offsetHA, declination - offsetDec);
        const Vector east = unitVector(reading - offsetHA - 6, 0);
        const Vector line = turned(cross(outwards, east), outwards, -cameraAngle * kDegree);
        const Vector seen = carried(outwards);
        const Vector alongRows = carried(line);
        const Vector alongColumns = cross(alongRows, seen);

        const Vector centre = air.lowered(seen, zenith());
        const double declinationSeen = std::asin(centre.z) / kDegree;
        const double hourAngle = std::atan2(-centre.y, centre.x) / kDegree / 15;
        const Vector eastThere = unitVector(hourAngle - 6, 0);
        const Vector northThere = cross(centre, eastThere);
        // Where two points of the field lie; what the field is turned by as a whole is the mean of both.
        const double step = 1e-4;
        const Vector row = air.lowered(unit(seen + step * alongRows), zenith()) + -1 * centre;
        const Vector column = air.lowered(unit(seen + step * alongColumns), zenith()) + -1 * centre;
        const double angle = std::atan2(dot(row, eastThere) - dot(column, northThere),
                                        dot(row, northThere) + dot(column, eastThere));
        return {.hourAngle = hourAngle < 0 ? hourAngle + 24 : hourAngle,
                .declination = declinationSeen,
                .positionAngle = angle / kDegree,
                .reading = engine::MountReading{std::fmod(reading + 48, 24), declination}};
    }

    std::vector<engine::Plate> plates(const std::vector<double>& readings) const {
        return plates(readings, SimulatedAir(site.air));
    }
    std::vector<engine::Plate> plates(const std::vector<double>& readings, const SimulatedAir& air) const {
        std::vector<engine::Plate> result;
        result.reserve(readings.size());
        for (const double reading : readings) result.push_back(plate(reading, air));
        return result;
    }
};

/// The plate as a solver tells of it that fits sixty stars, in pixels of 3.6".
inline engine::PlateSolution solutionOf(const engine::Plate& seen, double siderealTime) {
    const double angle = *seen.positionAngle * kDegree;
    const engine::SolutionQuality quality{
        .matched = 60, .meanResidual = 0.5, .fieldWidth = 1.4, .fieldHeight = 1};
    return {.ra = std::fmod(siderealTime - seen.hourAngle + 24, 24),
            .dec = seen.declination,
            .CD1_1 = std::sin(angle) / 1000,
            .CD1_2 = std::cos(angle) / 1000,
            .CD2_1 = std::cos(angle) / 1000,
            .CD2_2 = -std::sin(angle) / 1000,
            .quality = quality};
}

/// Sigmas in arc-seconds.
struct Errors {
    double centre = 0.3, roll = 20, reading = 60;
};

/// Plates as a solver would give them, with these errors and what is known of them.
inline std::vector<engine::Plate> blurred(std::vector<engine::Plate> plates, const Errors& errors,
                                          std::mt19937& random) {
    std::normal_distribution<double> normal;
    for (engine::Plate& plate : plates) {
        plate.hourAngle += normal(random) * errors.centre / 3600 / 15 / std::cos(plate.declination * kDegree);
        plate.declination += normal(random) * errors.centre / 3600;
        if (plate.positionAngle) *plate.positionAngle += normal(random) * errors.roll / 3600;
        if (plate.reading) plate.reading->hourAngle += normal(random) * errors.reading / 3600 / 15;
        plate.covariance = engine::PlateCovariance::ofSigmas(errors.centre, errors.roll);
    }
    return plates;
}

/// Hour angles of `count` plates around a middle one, `slew` degrees apart, going west.
inline std::vector<double> arc(double middle, double slew, int count) {
    std::vector<double> readings;
    readings.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) readings.push_back(middle + (i - (count - 1) / 2.0) * slew / 15);
    return readings;
}

}  // namespace vantrel::test
