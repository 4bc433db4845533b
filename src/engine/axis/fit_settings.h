// What the least-squares estimate takes for granted about telescope and mount, beyond what the solver knows
// of a plate.
#pragma once

namespace vantrel::engine {

/// All one sigma, in arc-seconds.
struct FitSettings {
    /// What moves the camera against the axis from plate to plate and differs each time: seeing, settling,
    /// bearings. Added in quadrature to each plate's centre, in both directions.
    double centreFloor = 0.2;
    /// Flexure, which shows most in roll; added in quadrature to each position angle. Infinite: roll unused.
    double rollFloor = 20;
    /// What is left of it in a camera that holds. Verdict::hint believes the rolls so far.
    double firmRollFloor = 3;
    /// Of the mount's hour angles: gears, backlash, where a slew ends. Infinite: readings unused.
    double readingSigma = 60;
    /// By how much the tube may sag where it lies level; at other altitudes by the cosine of it. Not an error
    /// of each plate but one of all of them, which no plate tells: it passes for an axis that is off in
    /// altitude.
    double sagSigma = 2;
};

/// For plates exposed for so many seconds: the longer, the less the air's motion leaves.
FitSettings fitSettingsFor(double exposureSeconds);

}  // namespace vantrel::engine
