// Plain vectors in space, for reference geometry that shares nothing with the program's.
#pragma once

#include <cmath>
#include <numbers>

namespace vantrel::test {

inline constexpr double kDegree = std::numbers::pi / 180;

struct Vector {
    double x, y, z;
};

inline Vector operator+(const Vector& a, const Vector& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Vector operator*(double s, const Vector& v) { return {s * v.x, s * v.y, s * v.z}; }
inline double dot(const Vector& a, const Vector& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline Vector cross(const Vector& a, const Vector& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// Rodrigues' rotation; the angle in radians, by the right-hand rule.
inline Vector turned(const Vector& v, const Vector& about, double angle) {
    return std::cos(angle) * v + std::sin(angle) * cross(about, v) +
           (1 - std::cos(angle)) * dot(about, v) * about;
}

}  // namespace vantrel::test
