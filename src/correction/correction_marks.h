// Where the correction star is and where it must go, in pixels of the image (column and row from 0).
#pragma once

namespace vantrel::correction {

/// Kept from one pointing to the next; the centring loop draws it on every exposure.
struct CorrectionMarks {
    float StarX = 0, StarY = 0;
    double TargetX = 0, TargetY = 0;
    bool CorrectionPointed = false;  // the last pointing got to its end
};

}  // namespace vantrel::correction
