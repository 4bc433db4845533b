// A position as mounts tell and take it.
#pragma once

namespace vantrel::hosts {

struct EquatorialPosition {
    double rightAscension = 0;  // hours
    double declination = 0;     // degrees
};

/// Degrees between two positions.
double separation(const EquatorialPosition& a, const EquatorialPosition& b);

}  // namespace vantrel::hosts
