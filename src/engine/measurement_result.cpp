#include "engine/measurement_result.h"

#include <algorithm>

#include "engine/axis/written_calculation.h"
#include "engine/site_air.h"
#include "platform/text.h"

namespace vantrel::engine {

using platform::formatNumber;

namespace {

/// What the log's lines say of the plates, without the estimate itself.
std::string withoutFigures(const std::vector<std::string>& lines) {
    std::string verdict;
    for (const std::string& line : lines)
        if (!line.starts_with("Least squares: ") || lines.size() == 1)
            verdict += (verdict.empty() ? "" : platform::kCrLf) + line;
    return verdict;
}

/// The written calculation can't do without the mount's readings.
bool turnedByHand(std::span<const TakenPlate> plates) {
    return std::ranges::any_of(plates,
                               [](const TakenPlate& plate) { return plate.pointing == Pointing::kByHand; });
}

}  // namespace

/// The least-squares estimate stands beside the written calculation, and in its place where the operator
/// wants it.
MeasuredAxis MeasurementResult::of(std::span<const TakenPlate> plates, const Wish& wish) {
    const Site site{.latitude = services_.telescope.SiteLatitude(),
                    .air = siteAir(services_.settings, services_.telescope)};
    std::vector<Plate> seen;
    for (const TakenPlate& plate : plates) seen.push_back(seenPlate(plate));
    MeasuredAxis axis;
    axis.check = checkAxis(seen, site, fitSettingsFor(wish.exposureSeconds));
    axis.verdict = tell(axis.check, site);
    const bool leastSquares = wish.leastSquares && axis.check.estimate.valid();
    services_.display.showCheck(axis.check, site, leastSquares);
    if (leastSquares) log("The least-squares result counts");
    axis.shown = leastSquares ? PolarErrorResult{.error = axis.check.estimate.written} : solveForAxis(plates);
    services_.history.keep({.plates = seen,
                            .check = axis.check,
                            .shown = axis.shown.error,
                            .bad = axis.shown.BadSolution,
                            .leastSquares = leastSquares,
                            .latitude = site.latitude,
                            .exposure = wish.exposureSeconds,
                            .note = wish.note});
    show(plates, axis.shown.error);
    return axis;
}

/// Returns the verdict for the eye: what is warned of, or else whether the plates agree.
std::string MeasurementResult::tell(const AxisCheck& check, const Site& site) {
    const std::vector<std::string> lines = check.lines();
    for (const std::string& line : lines) log(line);
    if (site.air.pressure > 0)
        log("Least squares: through air of " + formatNumber(site.air.pressure, "0") + " hPa and " +
            formatNumber(site.air.temperature, "0.#") + " degrees C");
    std::string shown;
    for (const std::string& warning : check.warnings(site)) {
        log("Warning: " + warning);
        shown += (shown.empty() ? "" : platform::kCrLf) + warning;
    }
    constexpr double kToRead = 20;  // seconds
    if (!shown.empty()) services_.messages.ShowPopupMessage(shown, kToRead);
    return shown.empty() ? withoutFigures(lines) : shown;
}

PolarErrorResult MeasurementResult::solveForAxis(std::span<const TakenPlate> plates) {
    if (turnedByHand(plates)) {
        services_.display.showBadSolution();
        return {.error = {}, .BadSolution = true};
    }
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
