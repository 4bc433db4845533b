// Which plate-solve method is in force, and the frame that belongs to it.
#pragma once

#include "platesolve/pinpoint_solver.h"

namespace vantrel::platesolve {

class MethodSelection {
  public:
    MethodSelection(const SolveServices& services, PlateSolvePanel& panel, PinPointSolver& pinPoint,
                    engine::MessagePort& messages);

    /// Selects the stored method; none when none was ever selected.
    void restore();
    /// Selects the stored way to TheSky.
    void restoreImageLink();
    /// Stores the method in force.
    void save();

    /// The operator's choice of the way to TheSky. The link always goes through the imaging program's image.
    bool ImageLinkThroughCCDSoft() const { return ImageLinkThroughCCDSoft_; }

  private:
    void optPlateSolveMethod_Click(int index);
    bool selectPinPoint();
    void selectTheSky();
    void chooseImageLink(bool throughCCDSoft);

    SolveServices services_;
    PlateSolvePanel& panel_;
    PinPointSolver& pinPoint_;
    engine::MessagePort& messages_;
    bool ImageLinkThroughCCDSoft_ = true;
};

}  // namespace vantrel::platesolve
