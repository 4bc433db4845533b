#include "engine/axis/written_calculation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include <Eigen/Core>

#include "engine/angles.h"
#include "engine/axis/axis_report.h"
#include "platform/errors.h"

namespace vantrel::engine {
namespace {

constexpr std::size_t kPlates = 3;  // that the calculation is written for

std::array<Plate, kPlates> threeOf(std::span<const Plate> plates) {
    std::vector<double> hourAngles;
    for (const Plate& plate : plates) hourAngles.push_back(plate.hourAngle);
    const auto [first, middle, last] = threeAlong(hourAngles);
    return {plates[first], plates[middle], plates[last]};
}

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

Eigen::Vector3d axisOf(const std::array<PlatePosition, kPlates>& positions, double scopeDec) {
    const auto [l, m, N] = northernEnd(CalcPolarError(positions, scopeDec).error);
    return {l, m, N};
}

/// What small errors of the nine numbers do to the axis, each number changed in turn.
AxisCovariance covarianceAbout(const std::array<PlatePosition, kPlates>& positions,
                               std::span<const Plate> plates, double latitude, const FitSettings& settings) {
    const double scopeDec = plates.front().reading->declination;
    constexpr double kStep = 1e-6;  // radians
    const auto effectOf = [&](std::size_t plate, double PlatePosition::*number, double stepInItsUnit) {
        auto more = positions;
        auto less = positions;
        more[plate].*number += stepInItsUnit;
        less[plate].*number -= stepInItsUnit;
        return Eigen::Vector3d((axisOf(more, scopeDec) - axisOf(less, scopeDec)) / (2 * kStep));
    };
    Eigen::Matrix3d sum = Eigen::Matrix3d::Zero();
    for (std::size_t i = 0; i < kPlates; ++i) {
        const double cosine = std::cos(degreesToRadians(positions[i].Dec));
        Eigen::Matrix<double, 3, 2> centre;
        centre.col(0) = -effectOf(i, &PlatePosition::HA, radiansToHours(kStep)) / cosine;
        centre.col(1) = effectOf(i, &PlatePosition::Dec, radiansToDegrees(kStep));
        const PlateCovariance& c = plates[i].covariance;
        const double floor = settings.centreFloor * settings.centreFloor;
        Eigen::Matrix2d covariance;
        covariance << c.eastEast + floor, c.eastNorth, c.eastNorth, c.northNorth + floor;
        sum += centre * covariance * centre.transpose();
        if (!std::isfinite(settings.readingSigma)) continue;
        const Eigen::Vector3d reading =
            settings.readingSigma * effectOf(i, &PlatePosition::ScopeHA, radiansToHours(kStep));
        sum += reading * reading.transpose();
    }
    return covarianceOnSky(sum, axisOf(positions, scopeDec), latitude);
}

}  // namespace

std::array<std::size_t, kPlates> threeAlong(std::span<const double> hourAngles) {
    const auto turned = [&](std::size_t i) { return std::remainder(hourAngles[i] - hourAngles.front(), 24); };
    std::size_t farthest = 2;
    for (std::size_t i = 1; i < hourAngles.size(); ++i)
        if (std::abs(turned(i)) > std::abs(turned(farthest))) farthest = i;
    const double middle = turned(farthest) / 2;
    std::size_t nearest = farthest == 1 ? 2 : 1;
    for (std::size_t i = 1; i < hourAngles.size(); ++i)
        if (i != farthest && std::abs(turned(i) - middle) < std::abs(turned(nearest) - middle)) nearest = i;
    return {0, nearest, farthest};
}

bool astrideSixHours(std::span<const double> hourAngles) {
    const auto beyond = [](double hours) { return std::cos(hoursToRadians(hours)) < 0; };
    const auto count = std::count_if(hourAngles.begin(), hourAngles.end(), beyond);
    return count != 0 && count != std::ssize(hourAngles);
}

AxisEstimate WrittenCalculation::estimate(std::span<const Plate> all, const Site& site) const {
    AxisEstimate estimate{.method = EstimateMethod::kWrittenCalculation, .validity = Validity::kWrongNumber};
    if (all.size() < kPlates) return estimate;
    const std::array<Plate, kPlates> plates = threeOf(all);
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
        if (estimate.validity == Validity::kNoSolution) return estimate;
        describePosition(estimate, northernEnd(result.error), site);
        if (estimate.valid())
            estimate.covariance = covarianceAbout(positions, plates, site.latitude, settings_);
    } catch (const platform::OperationError&) {
        // At the edge of what can be calculated: a value may stand there without its covariance.
        if (!estimate.valid()) estimate.validity = Validity::kNoSolution;
    }
    return estimate;
}

}  // namespace vantrel::engine
