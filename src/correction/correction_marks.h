// Where the correction star is and where it must go, in pixels of the image (column and row from 0).
#pragma once

namespace vantrel::correction {

/// Kept from one pointing to the next; the centring loop draws it on every exposure.
struct CorrectionMarks {
    float StarX = 0, StarY = 0;
    double TargetX = 0, TargetY = 0;
    double arcMinutesPerPixel = 0;   // by the plate that the target was reckoned with; 0 when it doesn't tell
    bool azimuthTurned = false;      // in this correction, before the elevation
    bool mountSlewed = false;        // the target was off the image, and the star may be by now
    bool CorrectionPointed = false;  // the last pointing got to its end
};

}  // namespace vantrel::correction
