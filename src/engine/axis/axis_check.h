// What a measurement's plates say beyond the written calculation: the least-squares estimate with its
// uncertainty, whether the plates agree, and whether the written result may be believed.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "engine/axis/axis_estimate.h"
#include "engine/axis/fit_settings.h"
#include "engine/axis/verdict.h"

namespace vantrel::engine {

struct AxisCheck {
    AxisEstimate estimate;  // by least squares
    AxisEstimate written;
    Verdict verdict;
    bool astrideSixHours = false;  // then the written calculation is wrong, whatever it says

    /// What adjusting begins with: the estimate, else the written result; nothing where neither is valid and
    /// knows its uncertainty.
    const AxisEstimate* best() const;

    /// For the log: estimate, uncertainty, agreement.
    std::vector<std::string> lines() const;
    /// There is no written result, it is wrong, or it differs from the estimate by more than chance.
    bool writtenMisleads(const Site& site) const;
    /// Why the written result, or all of the measurement, shouldn't be believed; empty when it may be.
    std::vector<std::string> warnings(const Site& site) const;
};

AxisCheck checkAxis(std::span<const Plate> plates, const Site& site, const FitSettings& settings = {});

}  // namespace vantrel::engine
