// Solves a saved image with the PinPoint engine.
#pragma once

#include <optional>
#include <string>

#include "platesolve/catalog_setup.h"
#include "platesolve/plate_solve_panel.h"
#include "platesolve/solve_services.h"

namespace vantrel::platesolve {

class PinPointSolver {
  public:
    PinPointSolver(const SolveServices& services, const PlateSolvePanel& panel, const CatalogSetup& catalogs);

    /// Replaces the solver object by a new one; throws OperationError when it can't be created.
    void createPinPointPlate();
    void releasePinPointPlate() { PinPointPlate_.reset(); }

    /// Solves the file of the image folder, starting from the exposure position plus the offsets (hours,
    /// degrees); searches north and south of there when the operator and the caller allow it. Writes the
    /// solution into the file and sets PlateSolved and, on success, the plate errors. Failures are logged.
    std::optional<engine::PlateSolution> solve(const std::string& imageName, double raOffset,
                                               double decOffset);

  private:
    SolveServices services_;
    const PlateSolvePanel& panel_;
    const CatalogSetup& catalogs_;
    platform::ObjectRef PinPointPlate_;
};

}  // namespace vantrel::platesolve
