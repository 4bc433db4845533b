#include "engine/axis/prospect.h"

#include <algorithm>
#include <cmath>

#include "engine/angles.h"
#include "engine/axis/axis_report.h"
#include "engine/axis/fault_tests.h"
#include "engine/axis/written_calculation.h"

namespace vantrel::engine {
namespace {

std::vector<double> hourAnglesOf(const Plan& plan) {
    std::vector<double> hourAngles;
    for (std::size_t i = 0; i < plan.exposures.size(); ++i)
        hourAngles.push_back(plan.hourAngle + static_cast<double>(i) * plan.slew / 15);
    return hourAngles;
}

std::vector<Plate> platesOf(const Plan& plan) {
    std::vector<Plate> plates;
    for (const double hourAngle : hourAnglesOf(plan)) {
        Plate plate{.hourAngle = hourAngle, .declination = plan.declination};
        const double root = std::sqrt(plan.exposures[plates.size()]);
        plate.covariance =
            PlateCovariance::ofSigmas(plan.centreSigma / root, plan.rollSigma.value_or(0) / root);
        if (plan.rollSigma) plate.positionAngle = 0;
        if (plan.readings) plate.reading = MountReading{hourAngle, plan.declination};
        plates.push_back(plate);
    }
    return plates;
}

double lowestAltitude(const std::vector<Plate>& plates, double latitude) {
    double lowest = 90;
    for (const Plate& plate : plates)
        lowest = std::min(
            lowest,
            radiansToDegrees(ArcSin(zenith(latitude).dot(directionOf(plate.hourAngle, plate.declination)))));
    return lowest;
}

/// The least visible of all jumps.
std::optional<double> visibleJump(const std::vector<Sighting>& sightings, const RotationFit& fit) {
    std::optional<double> size;
    std::size_t single = 0;
    for (const Suspicion& s : testedFaults(sightings, fit)) {
        if (s.fault != Fault::kDeclinationMoved) continue;
        size = std::max(size.value_or(0), s.smallestVisible);
        single += !s.lasting;
    }
    return single == sightings.size() ? size : std::nullopt;
}

}  // namespace

Prospect foresee(const Plan& plan, const Site& site, const FitSettings& settings) {
    Prospect prospect;
    if (std::any_of(plan.exposures.begin(), plan.exposures.end(), [](int n) { return n < 1; }))
        return prospect;
    prospect.validity = Validity::kWrongNumber;
    if (plan.exposures.size() < 2) return prospect;
    const auto plates = platesOf(plan);
    const auto sightings = sightingsOf(plates, site, settings);
    if (!sightings || !std::isfinite(site.latitude)) {
        prospect.validity = Validity::kUnusableInput;
        return prospect;
    }
    prospect.lowestAltitude = lowestAltitude(plates, site.latitude);
    prospect.astrideSixHours = astrideSixHours(hourAnglesOf(plan));
    const auto fit = RotationFit::at(carriageAbout({0, 0, 1}, *sightings), *sightings, site);
    prospect.degreesOfFreedom = std::max(0, fit.degreesOfFreedom());
    prospect.validity = validityOf(fit);
    if (prospect.validity != Validity::kValid) return prospect;
    prospect.covariance =
        covarianceOnSky(fit.axisCovariance() / (kArcsecond * kArcsecond), fit.carriage().axis, site.latitude);
    prospect.visibleJump = visibleJump(*sightings, fit);
    return prospect;
}

}  // namespace vantrel::engine
