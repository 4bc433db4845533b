// Sources as connected pixels above a threshold of the smoothed image, parted where they have several peaks
// (Bertin & Arnouts 1996, sections 5 and 6.2). What SEP finds, where that isn't to be had.
#pragma once

#include "solver/source_detection.h"

namespace vantrel::solver {

/// As detectSources() says.
std::optional<std::vector<Source>> isophoteSources(const DetectionTask& task);

}  // namespace vantrel::solver
