// A solved plate as the axis is estimated from it: where the telescope stood, how well that is known, and
// what the mount read.
#pragma once

#include <optional>

namespace vantrel::engine {

/// How uncertain a plate is. East and north on the sky, the position angle by the angle itself; all in
/// arc-seconds and their products.
struct PlateCovariance {
    double eastEast = 0, eastNorth = 0, northNorth = 0;
    double rollRoll = 0;
    double eastRoll = 0, northRoll = 0;

    /// The same in all directions, and no tie between centre and roll.
    static PlateCovariance ofSigmas(double centre, double roll) {
        return {centre * centre, 0, centre * centre, roll * roll, 0, 0};
    }
};

/// What the mount itself said at a plate.
struct MountReading {
    double hourAngle = 0;    // hours
    double declination = 0;  // degrees
};

/// Positions are true ones of date: as solved, without refraction, precession and nutation to the date done.
struct Plate {
    double hourAngle = 0;    // hours, of the centre: local sidereal time less right ascension
    double declination = 0;  // degrees, of the centre
    /// Degrees from north of date through east, of any line that is fixed in the camera (the same for all
    /// plates); without it the plate's roll isn't used.
    std::optional<double> positionAngle{};
    PlateCovariance covariance{};
    std::optional<MountReading> reading{};
};

/// Whether all of the plate's numbers are finite.
bool isFinite(const Plate& plate);

/// The position angle (degrees, (-180, 180]) of a camera's rows, towards growing columns, by the matrix that
/// turns pixel offsets into degrees east and north. The rotation that comes nearest to the matrix counts, so
/// that neither refraction nor unequal scales turn it; mirrored images need no special care.
double positionAngleOfRows(double CD1_1, double CD1_2, double CD2_1, double CD2_2);

/// What a solver says of a plate: stars matched, their mean distance from where the model puts them
/// (arc-seconds), the order of the model, and the extent of the field (degrees).
struct SolutionQuality {
    int matched = 0;
    double meanResidual = 0;
    int order = 1;
    double fieldWidth = 0, fieldHeight = 0;
};

/// What a solver that fits the errors of its solutions says of them, standard deviations in arc-seconds: the
/// centre along each axis, and the roll.
struct SolutionErrors {
    double centre = 0, roll = 0;
};

/// The covariance that these make. Empty unless both are finite and greater than 0.
std::optional<PlateCovariance> covarianceOf(const SolutionErrors& errors);

/// The covariance that follows when stars are spread evenly over the field and their errors don't depend on
/// each other. Empty when there are too few stars for the model, or no field.
std::optional<PlateCovariance> covarianceOf(const SolutionQuality& quality);

}  // namespace vantrel::engine
