// Solves the image that is open in the imaging program by TheSky's image link.
#pragma once

#include <functional>
#include <optional>

#include "platesolve/plate_solve_panel.h"
#include "platesolve/solve_services.h"

namespace vantrel::platesolve {

class ImageLinkSolver {
  public:
    /// `ccdSoftImage` hands out the imaging program's image object, empty when there is none.
    ImageLinkSolver(const SolveServices& services, const PlateSolvePanel& panel,
                    std::function<platform::ObjectRef()> ccdSoftImage);

    /// Starts from the exposure position plus the offsets (hours, degrees). Sets PlateSolved and the plate
    /// errors; a failed link is logged. Throws OperationError when the image's header can't be written.
    std::optional<engine::PlateSolution> solve(double raOffset, double decOffset);

  private:
    void writeStartPosition(platform::AutomationObject& image, double ra, double dec);

    SolveServices services_;
    const PlateSolvePanel& panel_;
    std::function<platform::ObjectRef()> ccdSoftImage_;
};

}  // namespace vantrel::platesolve
