// Solves images with the method that the operator selected.
#pragma once

#include "platesolve/image_link_solver.h"
#include "platesolve/pinpoint_solver.h"

namespace vantrel::platesolve {

class SelectedSolver : public engine::PlateSolverPort {
  public:
    SelectedSolver(PinPointSolver& pinPoint, ImageLinkSolver& imageLink, const PlateSolvePanel& panel,
                   engine::RunState& state)
        : pinPoint_(pinPoint), imageLink_(imageLink), panel_(panel), state_(state) {}

    std::optional<engine::PlateSolution> SolvePlate(const std::string& imageName, double raOffset,
                                                    double decOffset) override;
    bool pinPointSelected() const override { return panel_.optPinPoint.selected(); }
    std::string selectedCatalog() const override { return panel_.cmbppCat.text(); }

  private:
    PinPointSolver& pinPoint_;
    ImageLinkSolver& imageLink_;
    const PlateSolvePanel& panel_;
    engine::RunState& state_;
};

}  // namespace vantrel::platesolve
