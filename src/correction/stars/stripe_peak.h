// How high the tallest thing in a profile stands.
#pragma once

#include <optional>
#include <vector>

namespace vantrel::correction {

/// The peak height of a profile: smoothed by a short moving average, freed of the line through its ends, the
/// largest value less the smallest. Nothing when the profile, or what smoothing leaves of it, has one
/// element. Throws the run-time failure 11 for a profile of two or three elements, which leave the average
/// nothing to take.
std::optional<double> Peak(const std::vector<double>& profile);

}  // namespace vantrel::correction
