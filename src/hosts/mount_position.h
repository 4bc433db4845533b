// A position as mounts tell and take it.
#pragma once

namespace vantrel::hosts {

struct MountPosition {
    double rightAscension = 0;  // hours
    double declination = 0;     // degrees
};

/// Degrees between two positions.
double separation(const MountPosition& a, const MountPosition& b);

}  // namespace vantrel::hosts
