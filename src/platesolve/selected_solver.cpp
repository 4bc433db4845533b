#include "platesolve/selected_solver.h"

namespace vantrel::platesolve {

std::optional<engine::PlateSolution> SelectedSolver::SolvePlate(const std::string& imageName, double raOffset,
                                                                double decOffset) {
    state_.PlateSolved = false;
    state_.WhyUnsolved = {};
    if (state_.PlateSolveMethod == "TheSky") return imageLink_.solve(raOffset, decOffset);
    if (state_.PlateSolveMethod == "PP") return pinPoint_.solve(imageName, raOffset, decOffset);
    return std::nullopt;
}

}  // namespace vantrel::platesolve
