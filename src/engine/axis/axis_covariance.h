// How uncertain an axis is on the sky.
#pragma once

namespace vantrel::engine {

/// Half axes in arc-seconds.
struct ErrorEllipse {
    double major = 0, minor = 0;
    double direction = 0;  // degrees in [0, 180) of the major one, from up through east
};

/// Arc-seconds squared, east and up on the sky at the axis's end above the horizon. An azimuth about the
/// vertical is uncertain by 1 / cos(altitude of the pole) more than its part east.
struct AxisCovariance {
    double eastEast = 0, eastUp = 0, upUp = 0;

    /// Of one sigma: 39 % of all axes lie within, 86 % within twice, 99 % within three times as much.
    ErrorEllipse ellipse() const;

    /// Arc-seconds in an arbitrary direction: the root of the mean of the half axes' squares.
    double sigma() const;

    /// The squared length of an offset (arc-seconds) measured by the ellipse: chi-square with two degrees of
    /// freedom. Infinite for a covariance that has no inverse.
    double chiSquareOf(double east, double up) const;
};

inline AxisCovariance operator+(const AxisCovariance& a, const AxisCovariance& b) {
    return {a.eastEast + b.eastEast, a.eastUp + b.eastUp, a.upUp + b.upUp};
}

}  // namespace vantrel::engine
