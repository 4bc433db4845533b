#include "solver/isophotes.h"

namespace vantrel::solver {

std::optional<std::vector<Source>> detectSources(const DetectionTask& task) { return isophoteSources(task); }

}  // namespace vantrel::solver
