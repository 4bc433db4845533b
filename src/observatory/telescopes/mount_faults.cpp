#include "observatory/telescopes/mount_faults.h"

#include <numbers>

namespace vantrel::observatory {

using sky::kArcsecond;
using sky::Vector3;

double periodicError(const MountFaults& faults, double hourAngle) {
    constexpr double kSecondsADegree = 240;  // at the sidereal rate, near enough to name a period
    const double turns = hourAngle * kSecondsADegree / faults.wormPeriod;
    return faults.periodicError * std::sin(2 * std::numbers::pi * turns);
}

TubeAttitude rolled(const TubeAttitude& pointing, double roll) {
    return roll == 0 ? pointing : turned(pointing, pointing.ahead, roll * kArcsecond);
}

TubeAttitude sagging(const TubeAttitude& pointing, double flexure, double latitude) {
    if (flexure == 0) return pointing;
    const Vector3 up = zenith(latitude);
    const double twist = kTwistOfSag * flexure * sky::dot(up, pointing.east) * kArcsecond;
    const TubeAttitude twisted = turned(pointing, pointing.ahead, twist);
    // From ahead towards the nadir; as long as the cosine of the altitude.
    const Vector3 droop = sky::cross(up, pointing.ahead);
    const double level = std::sqrt(sky::dot(droop, droop));
    if (level < 1e-12) return twisted;  // in the zenith nothing droops
    return turned(twisted, sky::normalized(droop), flexure * level * kArcsecond);
}

}  // namespace vantrel::observatory
