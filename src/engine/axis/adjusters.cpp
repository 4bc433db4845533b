#include "engine/axis/adjusters.h"

#include <cmath>
#include <limits>

#include <Eigen/Geometry>

#include "engine/angles.h"

namespace vantrel::engine {

AdjusterView adjustersAt(const HorizonPosition& place, double centreSigma, std::optional<double> rollSigma) {
    // South, east and up.
    const double altitude = degreesToRadians(place.Alt);
    const double azimuth = degreesToRadians(place.Az);
    const Eigen::Vector3d star(std::cos(altitude) * std::cos(azimuth),
                               -std::cos(altitude) * std::sin(azimuth), std::sin(altitude));
    const Eigen::Vector3d vertical(0, 0, 1);
    const Eigen::Vector3d eastWest(0, 1, 0);
    const Eigen::Vector3d byAzimuth = vertical.cross(star);
    const Eigen::Vector3d byAltitude = eastWest.cross(star);

    // The normal equations of the two angles. A turn also rolls the field by its part along the line of
    // sight.
    const double ofCentre = 1 / (centreSigma * centreSigma);
    const double ofRoll = rollSigma ? 1 / (*rollSigma * *rollSigma) : 0;
    const double rollByAzimuth = vertical.dot(star);
    const double rollByAltitude = eastWest.dot(star);
    const double azimuths = byAzimuth.squaredNorm() * ofCentre + rollByAzimuth * rollByAzimuth * ofRoll;
    const double altitudes = byAltitude.squaredNorm() * ofCentre + rollByAltitude * rollByAltitude * ofRoll;
    const double mixed = byAzimuth.dot(byAltitude) * ofCentre + rollByAzimuth * rollByAltitude * ofRoll;
    const double determinant = azimuths * altitudes - mixed * mixed;

    constexpr double kSingular = 1e-12;  // rounding leaves some 1e-16
    const bool readable = determinant > kSingular * ofCentre * ofCentre;
    constexpr double kNever = std::numeric_limits<double>::infinity();
    return {.azimuthShift = byAzimuth.norm(),
            .altitudeShift = byAltitude.norm(),
            .separability = std::abs(star.dot(byAzimuth.cross(byAltitude))),
            .azimuthError = readable ? std::sqrt(altitudes / determinant) : kNever,
            .altitudeError = readable ? std::sqrt(azimuths / determinant) : kNever};
}

}  // namespace vantrel::engine
