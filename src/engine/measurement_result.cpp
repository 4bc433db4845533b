#include "engine/measurement_result.h"

#include <algorithm>
#include <cmath>

#include "engine/axis/written_calculation.h"
#include "platform/text.h"

namespace vantrel::engine {

using platform::formatNumber;

namespace {

/// By how much the air moves a whole field in an exposure of so many seconds, in arc-seconds: its tilt
/// averages out with the root of the time.
double imageMotion(double seconds) {
    constexpr double kInASecond = 0.12;
    return kInASecond / std::sqrt(std::max(seconds, 1.0));
}

}  // namespace

/// The least-squares estimate stands beside the written calculation, and in its place where the operator
/// wants it.
PolarErrorResult MeasurementResult::of(std::span<const TakenPlate> plates, double exposureSeconds) {
    const Site site{.latitude = services_.telescope.SiteLatitude(),
                    .air = services_.telescope.looksThroughAir() ? standardAir(0) : kNoAir};
    std::vector<Plate> seen;
    for (const TakenPlate& plate : plates) seen.push_back(seenPlate(plate));
    const AxisCheck check = checkAxis(seen, site, {.centreFloor = imageMotion(exposureSeconds)});
    tell(check, site);
    const bool wanted =
        platform::leadingNumber(services_.settings.GetSetting("PolarAlign", "LeastSquares", "0")) != 0;
    const bool leastSquares = wanted && check.estimate.valid();
    if (leastSquares) log("The least-squares result counts");
    const PolarErrorResult result =
        leastSquares ? PolarErrorResult{.error = check.estimate.written} : solveForAxis(plates);
    services_.history.keep({.plates = seen,
                            .check = check,
                            .shown = result.error,
                            .bad = result.BadSolution,
                            .leastSquares = leastSquares,
                            .latitude = site.latitude,
                            .exposure = exposureSeconds});
    show(plates, result.error);
    return result;
}

void MeasurementResult::tell(const AxisCheck& check, const Site& site) {
    for (const std::string& line : check.lines()) log(line);
    services_.display.showEstimate(check.estimate);
    const std::vector<std::string> warnings = check.warnings(site);
    std::string shown;
    for (const std::string& warning : warnings) {
        log("Warning: " + warning);
        shown += (shown.empty() ? "" : platform::kCrLf) + warning;
    }
    constexpr double kToRead = 20;  // seconds
    if (!shown.empty()) services_.messages.ShowPopupMessage(shown, kToRead);
}

PolarErrorResult MeasurementResult::solveForAxis(std::span<const TakenPlate> plates) {
    std::vector<double> hourAngles;
    for (const TakenPlate& plate : plates) hourAngles.push_back(seenPlate(plate).hourAngle);
    const auto [first, middle, last] = threeAlong(hourAngles);
    const PolarErrorResult result = CalcPolarError(
        {writtenPlate(plates[first]), writtenPlate(plates[middle]), writtenPlate(plates[last])},
        plates.front().sentTo.Dec);
    if (result.BadSolution) {
        services_.display.showBadSolution();
        return result;
    }
    log("A = " + formatNumber(result.A, "0.0000") + "  C = " + formatNumber(result.C, "0.0000") +
        "  Theta = " + formatNumber(result.Theta, "0.0000"));
    log("Gamma = " + formatNumber(result.Gamma, "0.0000"));
    return result;
}

/// Also after a bad solution, so that the display never shows an older measurement.
void MeasurementResult::show(std::span<const TakenPlate> plates, const PolarError& error) {
    PerPlate plateRAs;
    PerPlate decErrors;
    for (const TakenPlate& plate : plates) {
        plateRAs.push_back(plate.ra);
        decErrors.push_back(plate.decError);
    }
    services_.display.showOffsets(formatNumber(error.OffsetRA, "0.0000"),
                                  formatNumber(error.OffsetDec, "0.0000"));
    services_.display.PlotPolar(error.ErrorAmplitude, error.ErrorAngle);
    services_.display.PlotError(plateRAs, decErrors);
    log("Error Amplitude = " + formatNumber(error.ErrorAmplitude, "0.0000") +
        " Degrees from Pole (Dec units)");
    log("Error Angle = " + formatNumber(error.ErrorAngle, "0.0000") + " Degrees CCW from Up");
    log("RA Offset = " + formatNumber(error.OffsetRA, "0.0000") +
        ", Dec Offset = " + formatNumber(error.OffsetDec, "0.000"));
}

}  // namespace vantrel::engine
