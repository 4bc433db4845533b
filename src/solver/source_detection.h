// The step of finding sources that smooths an image and takes it apart along a threshold: a source is what of
// connected pixels above it has one peak (Bertin & Arnouts 1996, A&AS 117, 393, sections 5 and 6.2).
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "solver/source_extractor.h"

namespace vantrel::solver {

struct DetectionTask {
    std::span<const float> pixels;  // all of them numbers
    std::size_t width = 0, height = 0;
    std::span<const float> kernel;  // odd, square
    int kernelSide = 0;
    double threshold = 0;  // of the smoothed image
    int minimumPixels = 1;
};

/// In no order. Nothing when there is too much above the threshold.
std::optional<std::vector<Source>> detectSources(const DetectionTask& task);

inline constexpr int kDeblendLevels = 16;                    // of brightness, between threshold and peak
inline constexpr double kDeblendContrast = 0.005;            // share of the light that makes a part a source
inline constexpr std::size_t kMostDetectedPixels = 960'000;  // above the threshold

}  // namespace vantrel::solver
