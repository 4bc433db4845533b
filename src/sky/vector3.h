// Directions on the sky as unit vectors, and the rotations between frames.
#pragma once

#include <array>
#include <cmath>
#include <numbers>

namespace vantrel::sky {

inline constexpr double kDegree = std::numbers::pi / 180;         // in radians
inline constexpr double kHour = std::numbers::pi / 12;            // in radians
inline constexpr double kArcsecond = std::numbers::pi / 648'000;  // in radians

using Vector3 = std::array<double, 3>;

/// Rows first: multiplied by a column vector from the right.
using Matrix3 = std::array<Vector3, 3>;

inline double dot(const Vector3& a, const Vector3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

inline Vector3 cross(const Vector3& a, const Vector3& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

inline Vector3 normalized(const Vector3& v) {
    const double length = std::sqrt(dot(v, v));
    return {v[0] / length, v[1] / length, v[2] / length};
}

inline Vector3 operator*(const Matrix3& m, const Vector3& v) {
    return {dot(m[0], v), dot(m[1], v), dot(m[2], v)};
}

inline Matrix3 transposed(const Matrix3& m) {
    return {{{m[0][0], m[1][0], m[2][0]}, {m[0][1], m[1][1], m[2][1]}, {m[0][2], m[1][2], m[2][2]}}};
}

inline Matrix3 operator*(const Matrix3& a, const Matrix3& b) {
    const Matrix3 columns = transposed(b);
    Matrix3 product;
    for (std::size_t row = 0; row < 3; ++row) product[row] = columns * a[row];
    return product;
}

/// Angle between two directions, in degrees; accurate for small angles too.
inline double separation(const Vector3& a, const Vector3& b) {
    const Vector3 normal = cross(a, b);
    return std::atan2(std::sqrt(dot(normal, normal)), dot(a, b)) / kDegree;
}

/// The direction at a longitude and a latitude (radians): x towards longitude 0, z towards the pole.
inline Vector3 direction(double longitude, double latitude) {
    return {std::cos(longitude) * std::cos(latitude), std::sin(longitude) * std::cos(latitude),
            std::sin(latitude)};
}

}  // namespace vantrel::sky
