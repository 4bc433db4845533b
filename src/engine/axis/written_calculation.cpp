#include "engine/axis/written_calculation.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "engine/angles.h"
#include "platform/errors.h"

namespace vantrel::engine {
namespace {

constexpr std::size_t kPlates = 3;

std::array<PlatePosition, kPlates> positionsOf(std::span<const Plate> plates) {
    std::array<PlatePosition, kPlates> positions;
    for (std::size_t i = 0; i < kPlates; ++i)
        positions[i] = {plates[i].hourAngle, plates[i].declination, plates[i].reading->hourAngle};
    return positions;
}

Validity validityOf(const PolarErrorResult& result, const std::array<PlatePosition, kPlates>& positions) {
    if (result.BadSolution) return Validity::kNoSolution;
    std::array<double, kPlates> corrected{};
    for (std::size_t i = 0; i < kPlates; ++i) corrected[i] = positions[i].ScopeHA - result.error.OffsetRA;
    return astrideSixHours(corrected) ? Validity::kAstrideSixHours : Validity::kValid;
}

}  // namespace

bool astrideSixHours(std::span<const double> hourAngles) {
    const auto beyond = [](double hours) { return std::cos(hoursToRadians(hours)) < 0; };
    const auto count = std::count_if(hourAngles.begin(), hourAngles.end(), beyond);
    return count != 0 && count != std::ssize(hourAngles);
}

AxisEstimate WrittenCalculation::estimate(std::span<const Plate> plates, const Site& site) const {
    AxisEstimate estimate{.method = EstimateMethod::kWrittenCalculation, .validity = Validity::kWrongNumber};
    if (plates.size() != kPlates) return estimate;
    for (const Plate& plate : plates) {
        if (!isFinite(plate))
            estimate.validity = Validity::kUnusableInput;
        else if (!plate.reading)
            estimate.validity = Validity::kNoReadings;
        else
            continue;
        return estimate;
    }

    const auto positions = positionsOf(plates);
    try {
        const PolarErrorResult result = CalcPolarError(positions, plates.front().reading->declination);
        estimate.written = result.error;
        estimate.validity = validityOf(result, positions);
    } catch (const platform::OperationError&) {
        estimate.validity = Validity::kNoSolution;
    }
    if (estimate.validity == Validity::kNoSolution) return estimate;

    const DirectionCosines axis = northernEnd(estimate.written);
    estimate.fromTruePole = offsetFromPole(axis, site.latitude, truePoleAltitude(site));
    estimate.fromRefractedPole = offsetFromPole(axis, site.latitude, refractedPoleAltitude(site));
    return estimate;
}

}  // namespace vantrel::engine
