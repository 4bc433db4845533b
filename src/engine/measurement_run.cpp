#include "engine/measurement_run.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include "engine/angles.h"
#include "engine/simulator_exposure.h"
#include "engine/waiting.h"
#include "platform/errors.h"
#include "platform/text.h"

namespace vantrel::engine {

using platform::Alignment;
using platform::formatNumber;
using platform::joinLines;

namespace {

/// By how much the air moves a whole field in an exposure of so many seconds, in arc-seconds: its tilt
/// averages out with the root of the time.
double imageMotion(double seconds) {
    constexpr double kInASecond = 0.12;
    return kInASecond / std::sqrt(std::max(seconds, 1.0));
}

std::string numbered(const std::string& before, int number, const std::string& after = {}) {
    return before + std::to_string(number) + after;
}

}  // namespace

MeasurementRun::MeasurementRun(RunPanel& panel, RunState& state, OperatorPrompt& prompt,
                               const Services& services)
    : panel_(panel), state_(state), prompt_(prompt), services_(services), indicators_(services.settings) {}

void MeasurementRun::cmdRun_Click() {
    try {
        measure();
    } catch (const Closing&) {
        return;
    } catch (const StopExit&) {
        if (state_.AppUnloading) return;
        log("Align Aborted");
    } catch (...) {
        state_.LastMessage = platform::errorReport(platform::currentError(), "mod cmdRun");
        log(state_.LastMessage);
        services_.messages.ShowPopupMessage(state_.LastMessage, 5);
    }
    cleanUp();
}

void MeasurementRun::measure() {
    beginRun();
    const Interlock::Engaged undisturbed(services_.interlock);
    const double chosenSlew = validatedSlewHours();
    logSettings();

    std::array<Plate, 3> plates{{{.number = 1}, {.number = 2}, {.number = 3}}};
    auto& [first, second, third] = plates;
    readStartPosition(first);
    takeFirstPlate(first);
    slewOn(chosenSlew);
    logPosition(Style::kDecimal);
    waitForMountToSettle();
    readPosition(second);
    const double slew = takeSecondPlate(second, first, chosenSlew);
    compareWithSlew(first, second);
    slewOn(slew);
    logPosition(Style::kSexagesimal);
    waitForMountToSettle();
    readPosition(third);
    takeThirdPlate(third, first, second);
    compareWithSlew(second, third);
    check();

    const PolarErrorResult result = resultOf(plates);
    showResult(plates, result);
    returnToStart(slew);
    if (result.BadSolution) {
        log("Polar Align Error Calculation Failed");
        failurePrompt(joinLines({"***ERROR***ERROR***", "Polar Align Error ", "Calculation Failed!", "",
                                 "Try new conditions, click Next"}),
                      std::nullopt);
    }
    offerCorrection(result.error);
    if (state_.AppUnloading) throw Closing{};
    log("Alignment Run Complete");
}

void MeasurementRun::beginRun() {
    if (state_.PlateSolveMethod.empty()) {
        log("No Plate solve method selected");
        throw StopExit{};
    }
    state_.forgetStop();
    eastward_ = state_.SlewEast;
    panel_.cmdRun.setEnabled(false);
    indicators_.SetActiveColors(panel_.cmdRun);
    panel_.cmdStop.setEnabled(true);
    panel_.cmdNext.setEnabled(false);
    panel_.cmdSkip.setEnabled(false);
    panel_.cmdExpose.setEnabled(false);
    services_.display.clearPolarPlot();
    panel_.txtInstructions.setAlignment(Alignment::kCentre);
    panel_.txtInstructions.setText(joinLines({"Measuring", "Polar Alignment Error", "", "", "Please Wait"}));
}

/// The configured slew in hours; its direction comes from elsewhere, so a sign is ignored.
double MeasurementRun::validatedSlewHours() {
    const double degrees = std::abs(platform::toNumber(panel_.txtDeltaRA.text()));
    if (degrees < 1 || degrees > 45)
        failurePrompt(joinLines({"***ERROR***ERROR***", "Telescope Slew must be ",
                                 "between 1 and 45 degrees!", "", "Enter a new value, click Next"}),
                      std::nullopt);
    return degrees * (1.0 / 15);
}

void MeasurementRun::logSettings() {
    log("");
    log("Start Alignment Run");
    if (services_.solver.pinPointSelected()) {
        log("Plate solve method is PinPoint");
        log("Selected catalog is " + services_.solver.selectedCatalog());
    } else {
        log("Plate solve method is Auto-Astrometry");
    }
    log("Telescope Slew is " + panel_.txtDeltaRA.text() + " degrees");
    log("Exposure is " + panel_.txtExposeInterval.text() + " sec");
}

void MeasurementRun::readStartPosition(Plate& plate) {
    position_.Dec = services_.telescope.GetTelescopeDec();
    position_.RA = NormalizeRAHours(services_.telescope.GetTelescopeRA());
    indicators_.SetActiveColors(panel_.lblFrame1);
    services_.loop.yield();
    logPosition(Style::kSexagesimal);
    readPosition(plate);
}

void MeasurementRun::takeFirstPlate(Plate& plate) {
    log("***** Exposing Image 1 *****");
    indicators_.SetActiveColors(panel_.lblExpose);
    services_.loop.yield();
    const std::string image = expose();
    Indicators::switchOff(panel_.lblExpose);
    indicators_.SetActiveColors(panel_.lblSolve);
    check();
    log("Start Solving Plate 1");
    const auto solution = solve(plate, image, 0, 0);
    if (!solution)
        abortedPrompt(joinLines({"Plate Solve Failed !!", "1. Is Scope is Synced to Star?",
                                 "2. Check Plate Solve Settings", "", "Click Next to try again"}));
    record(plate, *solution);
}

/// Returns the slew between the plates, in hours: half the chosen one when the plate was only solved there.
double MeasurementRun::takeSecondPlate(Plate& plate, const Plate& first, double slewHours) {
    log("***** Exposing Image 2 *****");
    Indicators::switchOff(panel_.lblFrame1);
    indicators_.SetActiveColors(panel_.lblFrame2);
    Indicators::switchOff(panel_.lblSlew);
    indicators_.SetActiveColors(panel_.lblExpose);
    check();
    services_.loop.yield();
    const std::string image = expose();
    announceSolving(plate);
    if (const auto solution = solve(plate, image, first.raError, first.decError)) {
        record(plate, *solution);
        return slewHours;
    }
    if (!retryWithHalfTheSlew(plate, first, slewHours))
        abortedPrompt(joinLines({"Second Plate Solve Failed !!", "", "1. Try smaller Telescope Slew", "",
                                 "Click Next to try again"}));
    return slewHours / 2;
}

bool MeasurementRun::retryWithHalfTheSlew(Plate& plate, const Plate& first, double slewHours) {
    log("Trying again with half Telescope Slew");
    moveExposurePosition(-slewHours / 2);
    check();
    services_.telescope.SlewToCoordinates(position_.RA, position_.Dec);
    logPosition(Style::kDecimal);
    waitForMountToSettle();
    readPosition(plate);
    check();
    const std::string image = expose();
    log(numbered("Start Solving Plate ", plate.number));
    check();
    const auto solution = solve(plate, image, first.raError, first.decError);
    if (solution) record(plate, *solution);
    return solution.has_value();
}

void MeasurementRun::takeThirdPlate(Plate& plate, const Plate& first, const Plate& second) {
    log("***** Exposing Image 3 *****");
    Indicators::switchOff(panel_.lblFrame2);
    indicators_.SetActiveColors(panel_.lblFrame3);
    Indicators::switchOff(panel_.lblSlew);
    indicators_.SetActiveColors(panel_.lblExpose);
    services_.loop.yield();
    const std::string image = expose();
    announceSolving(plate);
    const auto solution = solve(plate, image, NormalizeRAHours(2 * second.raError - first.raError),
                                2 * second.decError - first.decError);
    if (!solution)
        abortedPrompt(joinLines({"Third Plate Solve Failed !!", "", "1. Try smaller Telescope Slew", "",
                                 "Click Next to try again"}));
    record(plate, *solution);
}

/// However its axis stands, a mount turns the camera by as much as it was told to: the angle between two
/// plates is the angle between the positions that it was sent to. Mounts that stall or slip don't say so.
void MeasurementRun::compareWithSlew(const Plate& before, const Plate& after) {
    constexpr double kMostAstray = 0.5;  // degrees
    const double told = separation({before.scopeHA, position_.Dec}, {after.scopeHA, position_.Dec});
    const double turned = separation({before.lst - before.ra, before.dec}, {after.lst - after.ra, after.dec});
    if (!(std::abs(turned - told) > kMostAstray)) return;
    const auto degrees = [](double angle) { return platform::formatNumber(angle, "0.00"); };
    const std::string text = "The telescope was sent " + degrees(told) + " degrees, but turned by " +
                             degrees(turned) + ": don't trust this measurement";
    log(text);
    services_.messages.ShowPopupMessage(text, 5);
}

/// The least-squares estimate stands beside the written calculation, and in its place where the operator
/// wants it.
PolarErrorResult MeasurementRun::resultOf(const std::array<Plate, 3>& plates) {
    const Site site{.latitude = services_.telescope.SiteLatitude(),
                    .air = services_.telescope.looksThroughAir() ? standardAir(0) : kNoAir};
    const std::vector<engine::Plate> seen = seenPlates(plates);
    const AxisCheck check = checkAxis(seen, site, {.centreFloor = imageMotion(exposureSeconds())});
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
                            .exposure = exposureSeconds()});
    return result;
}

/// As the estimate takes them: in the middle of the exposures, with what the solver knows of its errors.
std::vector<engine::Plate> MeasurementRun::seenPlates(const std::array<Plate, 3>& plates) const {
    const PlateCovariance unknown = PlateCovariance::ofSigmas(1, 60);
    std::vector<engine::Plate> seen;
    for (const Plate& plate : plates) {
        const PlateSolution& s = plate.solution;
        seen.push_back({.hourAngle = NormalizeRAHours(plate.exposedLst - plate.ra),
                        .declination = plate.dec,
                        .positionAngle = positionAngleOfRows(s.CD1_1, s.CD1_2, s.CD2_1, s.CD2_2),
                        .covariance = s.quality ? covarianceOf(*s.quality).value_or(unknown) : unknown,
                        .reading = MountReading{
                            NormalizeRAHours(plate.scopeHA + plate.exposedLst - plate.lst), position_.Dec}});
    }
    return seen;
}

void MeasurementRun::tell(const AxisCheck& check, const Site& site) {
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

PolarErrorResult MeasurementRun::solveForAxis(const std::array<Plate, 3>& plates) {
    std::array<PlatePosition, 3> positions{};
    for (std::size_t i = 0; i < plates.size(); ++i)
        positions[i] = {NormalizeRAHours(plates[i].lst - plates[i].ra), plates[i].dec, plates[i].scopeHA};
    const PolarErrorResult result = CalcPolarError(positions, position_.Dec);
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
void MeasurementRun::showResult(const std::array<Plate, 3>& plates, const PolarErrorResult& result) {
    const PolarError& error = result.error;
    PerPlate plateRAs{};
    PerPlate decErrors{};
    for (std::size_t i = 0; i < plates.size(); ++i) {
        plateRAs[i] = plates[i].ra;
        decErrors[i] = plates[i].decError;
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

void MeasurementRun::returnToStart(double slewHours) {
    slewOn(-2 * slewHours);
    logPosition(Style::kDecimal);
    Indicators::switchOff(panel_.lblFrame3);
    Indicators::switchOff(panel_.lblSlew);
    check();
}

void MeasurementRun::offerCorrection(const PolarError& error) {
    panel_.txtInstructions.setAlignment(Alignment::kLeft);
    panel_.txtInstructions.setText(
        joinLines({"Polar Align Measurement", "Completed Successfully !!", "1. Click Next to correct",
                   "      misalignment, or click", "      Skip Button to end"}));
    panel_.cmdNext.setEnabled(true);
    panel_.cmdSkip.setEnabled(true);
    const bool correct = prompt_.WaitForNextOrSkipClick();
    Indicators::switchOff(panel_.cmdNext);
    if (state_.StopRequested) throw StopExit{};
    if (state_.AppUnloading) throw Closing{};
    if (correct) services_.correction.CorrectMisAlignment(error.ErrorAmplitude, error.ErrorAngle);
}

/// Takes an image and saves it; returns its file name.
/// Of a plate, as the operator has set it.
double MeasurementRun::exposureSeconds() const {
    constexpr double kLongest = 86'400;
    return std::clamp(platform::leadingNumber(panel_.txtExposeInterval.text()), 0.0, kLongest);
}

std::string MeasurementRun::expose() {
    const bool ownName =
        platform::leadingNumber(services_.settings.GetSetting("PolarAlign", "SaveImages", "0")) == 1;
    const auto now = platform::civilLocal(services_.loop.clock().utc());
    const std::string name = ownName ? platform::formatTime(now, "HH_mm_ss") + "_Image" : kSavedImage;
    const std::string imageFileName = name + ".fit";
    check();
    const double seconds = exposureSeconds();
    const auto waited = services_.loop.clock().sinceStart() - readAt_;
    constexpr double kSiderealHours = 1.00273791 / 3600;  // of a second
    exposedAfter_ =
        (std::chrono::duration<double>(waited).count() + (state_.UsingAxisSimulator ? 0 : seconds / 2)) *
        kSiderealHours;
    if (state_.UsingAxisSimulator) {
        exposeWithSimulator(services_);
        check();
        saveSimulatorImage(services_, state_, name);
    } else {
        services_.camera.AcquireImage(platform::toNumber(panel_.txtExposeInterval.text()));
        check();
        services_.camera.SaveImageToFile(imageFileName);
    }
    return imageFileName;
}

void MeasurementRun::announceSolving(const Plate& plate) {
    log(numbered("Start Solving Plate ", plate.number));
    Indicators::switchOff(panel_.lblExpose);
    indicators_.SetActiveColors(panel_.lblSolve);
    check();
}

std::optional<PlateSolution> MeasurementRun::solve(const Plate& plate, const std::string& imageFileName,
                                                   double raOffset, double decOffset) {
    state_.ExposureRA = position_.RA;
    state_.ExposureDec = position_.Dec;
    state_.SpiralSearchAllowed = true;
    auto solution = services_.solver.SolvePlate(imageFileName, raOffset, decOffset);
    if (!state_.PlateSolved) return std::nullopt;
    log(numbered("Plate ", plate.number, " Solved"));
    return solution;
}

void MeasurementRun::record(Plate& plate, const PlateSolution& solution) {
    plate.raError = NormalizeRAHours(state_.PlateRAError);
    plate.decError = state_.PlateDecError;
    plate.ra = NormalizeRAHours(solution.ra);
    plate.dec = solution.dec;
    plate.solution = solution;
    plate.exposedLst = plate.lst + exposedAfter_;
    log(numbered("Plate ", plate.number, " RA = ") + services_.utility.HoursToHMS(plate.ra));
    log(numbered("Plate ", plate.number, " Dec = ") + services_.utility.DegreesToDMS(plate.dec));
}

/// Slews by these hours in the chosen direction, or back when they are negative.
void MeasurementRun::slewOn(double hours) {
    moveExposurePosition(hours);
    Indicators::switchOff(panel_.lblSolve);
    indicators_.SetActiveColors(panel_.lblSlew);
    check();
    services_.telescope.SlewToCoordinates(position_.RA, position_.Dec);
}

void MeasurementRun::moveExposurePosition(double hours) {
    position_.RA = NormalizeRAHours(position_.RA + (eastward_ ? hours : -hours));
}

void MeasurementRun::waitForMountToSettle() {
    if (!state_.UsingAxisSimulator)
        WaitSeconds(services_.loop, platform::toNumber(panel_.txtDelayAfterSlew.text()));
}

void MeasurementRun::readPosition(Plate& plate) {
    plate.lst = services_.telescope.SiderealTime();
    readAt_ = services_.loop.clock().sinceStart();
    plate.scopeHA = NormalizeRAHours(plate.lst - position_.RA);
}

void MeasurementRun::logPosition(Style style) {
    if (style == Style::kSexagesimal)
        log("Telescope at RA = " + services_.utility.HoursToHMS(position_.RA) +
            "  Dec = " + services_.utility.DegreesToDMS(position_.Dec));
    else
        log("Telescope at RA = " + formatNumber(position_.RA, "0.00000") +
            "  Dec = " + formatNumber(position_.Dec, "0.00000"));
}

/// Shows the text until the operator clicks Next or Stop, and ends the run; meanwhile he can change what the
/// text asks him to. Without an alignment the box keeps the one it has.
void MeasurementRun::failurePrompt(const std::string& text, std::optional<Alignment> alignment) {
    if (alignment) panel_.txtInstructions.setAlignment(*alignment);
    panel_.txtInstructions.setText(text);
    panel_.cmdNext.setEnabled(true);
    panel_.cmdSkip.setEnabled(false);
    {
        const Interlock::Lifted mending(services_.interlock);
        prompt_.WaitForNextOrSkipClick();
    }
    Indicators::switchOff(panel_.cmdNext);
    throw StopExit{};
}

void MeasurementRun::abortedPrompt(const std::string& text) {
    log("Polar Align Aborted !!");
    failurePrompt(text, Alignment::kLeft);
}

void MeasurementRun::check() {
    services_.loop.yield();
    if (state_.StopRequested) throw StopExit{};
    if (state_.AppUnloading) throw Closing{};
}

void MeasurementRun::cleanUp() {
    if (state_.AppUnloading) return;
    SwitchAllIndicatorsOff();
    panel_.cmdRun.setEnabled(true);
    panel_.cmdStop.setEnabled(false);
    panel_.cmdNext.setEnabled(false);
    panel_.cmdSkip.setEnabled(false);
    panel_.cmdExpose.setEnabled(true);
    Indicators::switchOff(panel_.cmdNext);
    ShowStartingInstructions();
    panel_.lblMeasure.setCaption("Measure");
}

void MeasurementRun::ShowStartingInstructions() {
    panel_.txtInstructions.setAlignment(Alignment::kLeft);
    panel_.txtInstructions.setText(
        joinLines({"Polar Align Measurement Start", "1. Slew and Sync Telescope", "     to any Star",
                   "2. Click Run Button to start", "     Alignment Measurement"}));
}

void MeasurementRun::SwitchAllIndicatorsOff() {
    for (platform::Button* button : {&panel_.cmdRun, &panel_.cmdStop, &panel_.cmdExpose})
        Indicators::switchOff(*button);
    for (platform::Label* label :
         {&panel_.lblExpose, &panel_.lblSolve, &panel_.lblSlew, &panel_.lblFrame1, &panel_.lblFrame2,
          &panel_.lblFrame3, &panel_.lblMeasure, &panel_.lblAlt, &panel_.lblAz})
        Indicators::switchOff(*label);
    panel_.lblAlt.setVisible(false);
    panel_.lblAz.setVisible(false);
    panel_.lblFrame1.setVisible(true);
    panel_.lblFrame2.setVisible(true);
    panel_.lblFrame3.setVisible(true);
    services_.loop.yield();
}

}  // namespace vantrel::engine
