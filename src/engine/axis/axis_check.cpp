#include "engine/axis/axis_check.h"

#include <array>
#include <cmath>

#include "engine/angles.h"
#include "engine/axis/comparison.h"
#include "engine/axis/least_squares.h"
#include "engine/axis/written_calculation.h"
#include "platform/text.h"

namespace vantrel::engine {
namespace {

std::string fixed(double value, const char* pattern = "0.000") {
    return platform::formatNumber(value, pattern);
}

std::string offsetText(const AxisOffset& offset) {
    return "azimuth " + fixed(offset.azimuth) + " arc-min, elevation " + fixed(offset.elevation) + " arc-min";
}

std::string arcSeconds(double value) { return fixed(std::abs(value), "0.00") + " arc-sec"; }

std::string reasonFor(Validity validity) {
    switch (validity) {
        case Validity::kWrongNumber:
            return "there are too few plates";
        case Validity::kUndetermined:
            return "the plates lie too close together";
        case Validity::kUnusableInput:
            return "a plate's figures can't be right";
        default:
            return "the plates fit no axis";
    }
}

std::string faultText(const Suspicion& suspicion) {
    const std::string where = suspicion.plate == 0 ? "" : "plate " + std::to_string(suspicion.plate);
    const std::string at =
        where.empty() ? "" : (suspicion.lasting ? " from " + where + " on" : " at " + where);
    switch (suspicion.fault) {
        case Fault::kDeclinationMoved:
            return "the telescope moved in declination by " + arcSeconds(suspicion.size) + at;
        case Fault::kReadingDisagrees:
            return "the mount's hour angle is off by " + arcSeconds(suspicion.size) + at;
        case Fault::kCameraTurned:
            return "the camera turned by " + arcSeconds(suspicion.size) + at;
        case Fault::kAxisMoved:
            return "the axis itself moved" + at;
        case Fault::kFarFromMount:
            return (where.empty() ? "a plate" : where) + " lies far from where the mount says";
        default:
            return "they scatter more than they may";
    }
}

}  // namespace

AxisCheck checkAxis(std::span<const Plate> plates, const Site& site, const FitSettings& settings) {
    std::vector<double> hourAngles;
    for (const Plate& plate : plates) hourAngles.push_back(plate.hourAngle);
    const auto astride = [&] {
        if (plates.size() < 3) return false;
        const auto [first, middle, last] = threeAlong(hourAngles);
        return engine::astrideSixHours(std::array{hourAngles[first], hourAngles[middle], hourAngles[last]});
    };
    return {LeastSquares(settings).estimate(plates, site),
            WrittenCalculation(settings).estimate(plates, site), judge(plates, site, settings), astride()};
}

const AxisEstimate* AxisCheck::best() const {
    for (const AxisEstimate* one : {&estimate, &written})
        if (one->valid() && one->covariance) return one;
    return nullptr;
}

std::vector<std::string> AxisCheck::lines() const {
    if (!estimate.valid()) return {"Least squares: no result, " + reasonFor(estimate.validity)};
    std::vector<std::string> lines = {"Least squares: " + offsetText(estimate.fromTruePole)};
    if (estimate.covariance) {
        const ErrorEllipse ellipse = estimate.covariance->ellipse();
        lines.front() += ", +- " + arcSeconds(estimate.covariance->sigma());
        lines.push_back("Least squares: ellipse " + arcSeconds(ellipse.major) + " by " +
                        arcSeconds(ellipse.minor) + ", " + fixed(ellipse.direction, "0") +
                        " degrees from up through east");
    }
    lines.push_back("Least squares: from the refracted pole " + offsetText(estimate.fromRefractedPole));
    if (verdict.agreement == Agreement::kConsistent)
        lines.push_back("The plates agree: chi-square " + fixed(verdict.chiSquare, "0.0") + " with " +
                        std::to_string(verdict.degreesOfFreedom) + " degrees of freedom");
    if (verdict.hint)
        lines.push_back(
            "The plates' rolls hint at a jump in declination, or at a camera that turned in each slew; "
            "a jump would have moved the axis by " +
            arcSeconds(verdict.hint->axisMove) + ": more plates would tell");
    // A jump within twice the uncertainty is allowed for.
    else if (estimate.covariance && verdict.hiddenMove > 2 * estimate.covariance->sigma())
        lines.push_back("A jump of " + fixed(kTypicalJump, "0") +
                        " arc-sec in declination could hide here and move the axis by up to " +
                        arcSeconds(verdict.hiddenMove) + ": more plates would show it");
    return lines;
}

bool AxisCheck::writtenMisleads(const Site& site) const {
    if (astrideSixHours || !written.valid()) return true;
    const auto difference = differenceOf(written, estimate, site);
    return difference && difference->differs;
}

std::vector<std::string> AxisCheck::warnings(const Site& site) const {
    std::vector<std::string> warnings;
    if (verdict.agreement == Agreement::kSuspicious)
        warnings.push_back("The plates don't agree: " +
                           faultText(verdict.suspicions.empty() ? Suspicion{} : verdict.suspicions.front()));
    if (astrideSixHours) {
        warnings.push_back(
            "Plates lie on both sides of hour angle six, where the written calculation is wrong");
    } else if (written.validity == Validity::kNoSolution) {
        warnings.push_back("The written calculation finds no axis");
    } else if (const auto difference = differenceOf(written, estimate, site);
               difference && difference->differs) {
        warnings.push_back("The written result and least squares differ by " +
                           arcSeconds(difference->distance) + ", which is more than chance");
    }
    if (!warnings.empty() && estimate.valid())
        warnings.push_back("Least squares gives " + offsetText(estimate.fromTruePole) +
                           "; Set, Options lets it count");
    // Twice that is what a measurement may easily be off by.
    constexpr double kUncertain = 30;  // arc-seconds
    if (estimate.valid() && estimate.covariance && estimate.covariance->sigma() > kUncertain)
        warnings.push_back("This measurement is uncertain by +- " + arcSeconds(estimate.covariance->sigma()) +
                           ": a longer slew tells more");
    return warnings;
}

}  // namespace vantrel::engine
