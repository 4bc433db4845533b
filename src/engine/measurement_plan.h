// What a measurement is going to do.
#pragma once

namespace vantrel::engine {

// Three plates make a circle. Errors shrink with the root of plates and exposures only, while time grows.
inline constexpr int kFewestPlates = 3, kMostPlates = 9;
inline constexpr int kMostExposures = 5;  // of one plate

/// Decided when the run begins, and its own from then on.
struct MeasurementPlan {
    double slew = 0;  // hours from plate to plate
    bool eastward = true;
    int plates = kFewestPlates;  // along the arc
    int exposures = 1;           // of each plate
    bool byHand = false;         // the operator turns the axis
    bool closing = false;        // one more plate at the start, after the way back
};

}  // namespace vantrel::engine
