// How a camera stands against the sky, from three stars that it sees.
#pragma once

#include <array>

#include "solver/plate_field.h"
#include "solver/plate_model.h"

namespace vantrel::solver {

/// Rows: east, north and outwards at a place.
sky::Matrix3 axesAt(sky::SkyPosition place);

struct Attitude {
    sky::Matrix3 toSky{};  ///< turns the camera's directions, y times `hand`, to those of the sky
    double hand = 1;       ///< -1: the camera's y axis is reversed (mirrored image)
    double stretch = 1;    ///< true scale as share of the given one

    /// Three directions as the camera has them (x along rows, y along columns, z ahead) and as the sky has
    /// them; the first two are laid on top of each other.
    static Attitude of(std::array<sky::Vector3, 3> camera, const std::array<sky::Vector3, 3>& sky,
                       double stretch);

    sky::Vector3 skyOf(const sky::Vector3& camera) const {
        using sky::operator*;
        return toSky * sky::Vector3{camera[0], camera[1] * hand, camera[2]};
    }
    sky::SkyPosition centre() const;  ///< where z points

    /// The linear model of a plate that is taken so; toSky must lead to ICRS.
    PlateModel model(const PlateGeometry& geometry) const;
};

/// Whether a camera could have taken a plate by this model: all but a similarity, and its scale within the
/// share (as natural logarithm) of the given one.
bool isPlausible(const PlateModel& model, const PlateGeometry& geometry, double scaleReach);

}  // namespace vantrel::solver
