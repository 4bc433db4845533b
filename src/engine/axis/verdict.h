// Whether plates and mount agree with one axis that stands still; and if not, what went wrong where.
//
// Every fault that we can think of is a pattern in the observations. Each is fitted beside the axis; what
// chi-square loses by it, compared with chance, says how suspicious it is. Three plates with roll leave two
// numbers to test with, and several faults look the same there: see Verdict::likely.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "engine/axis/axis_position.h"
#include "engine/axis/fit_settings.h"
#include "engine/axis/plate.h"

namespace vantrel::engine {

/// In the order in which they are blamed when they explain the plates equally well.
enum class Fault {
    kDeclinationMoved,  // the telescope jumped in declination: a clutch, a mirror, a bump
    kReadingDisagrees,  // the mount's hour angle doesn't follow the sky: a slipped clutch, a lost step
    kCameraTurned,      // the roll: flexure, a loose camera
    kAxisMoved,         // the whole mount: a sinking leg
    kFarFromMount,      // a plate by more than half a degree from where the mount and the others say
    kScatter            // more than the errors explain, but no single fault does
};

struct Suspicion {
    Fault fault = Fault::kScatter;
    int plate = 0;         // from 1; 0: none in particular
    bool lasting = false;  // this plate and all later ones; else this one alone
    /// Arc-seconds: declination positive towards the axis's northern end, hour angle as read too large, roll
    /// from north through east; else a distance.
    double size = 0;
    double statistic = 0;  // loss of chi-square
    int degreesOfFreedom = 0;
    double limit = 0;            // suspicious above
    double smallestVisible = 0;  // arc-seconds: a fault of this size is found nine times out of ten
    double axisMove = 0;         // arc-seconds: how far a fault of this size moves the axis
};

enum class Agreement {
    kConsistent,
    kSuspicious,
    kUntestable,  // nothing is left over to test with
    kNoEstimate   // the plates give no axis, and no plate alone is to blame
};

/// Arc-seconds: as a mirror flops, or a clutch gives way.
inline constexpr double kTypicalJump = 5;

struct Verdict {
    Agreement agreement = Agreement::kNoEstimate;
    double chiSquare = 0;
    int degreesOfFreedom = 0;
    double chiSquareLimit = 0;
    /// Most suspicious first; all that could be tested, whether or not they are suspicious.
    std::vector<Suspicion> suspicions{};
    /// How many of the first ones explain the plates so equally that the plates can't tell which it was.
    std::size_t likely = 0;
    /// Arc-seconds: how far a jump of kTypicalJump in declination, at any plate, would move the axis without
    /// being noticed nine times out of ten; 0 when it would be.
    double hiddenMove = 0;
    /// Of plates that agree: a jump in declination that their rolls speak for, if the camera holds as firmly
    /// as FitSettings::firmRollFloor says. Three plates can't tell it from a camera that turns in each slew.
    std::optional<Suspicion> hint{};
};

/// Chances of a false alarm: a hundredth for all faults together, a thousandth for scatter. A hint is false
/// in less than a hundredth of the measurements with a firm camera.
Verdict judge(std::span<const Plate> plates, const Site& site, const FitSettings& settings = {});

}  // namespace vantrel::engine
