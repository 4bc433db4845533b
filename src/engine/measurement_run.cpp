#include "engine/measurement_run.h"

#include <array>
#include <cmath>

#include "engine/angles.h"
#include "engine/waiting.h"
#include "platform/errors.h"
#include "platform/text.h"

namespace vantrel::engine {

using platform::Alignment;
using platform::formatNumber;
using platform::joinLines;
using platform::Words;

namespace {

constexpr std::array kOrdinals = {"",      "Second",  "Third",  "Fourth", "Fifth",
                                  "Sixth", "Seventh", "Eighth", "Ninth"};

}  // namespace

MeasurementRun::MeasurementRun(RunPanel& panel, RunState& state, OperatorPrompt& prompt,
                               PreflightDesk& preflight, PlateReview& review, const Services& services)
    : panel_(panel),
      state_(state),
      prompt_(prompt),
      preflight_(preflight),
      review_(review),
      services_(services),
      indicators_(services.settings),
      taker_(panel, state, services),
      hand_(panel, services, taker_) {
    panel_.cmdAdjust.onClick = [this] { adjustClicked_ = true; };
}

void MeasurementRun::cmdRun_Click() {
    try {
        adjusted_.reset();
        do measure();
        while (adjusted_ && adjusted_->measureAgain);
        services_.progress.end(Words::tr("Measurement complete"));
    } catch (const Closing&) {
        return;
    } catch (const StopExit&) {
        if (state_.AppUnloading) return;
        services_.progress.end(state_.StopRequested ? Words::tr("Stopped") : state_.WhyUnsolved);
        log("Align Aborted");
    } catch (...) {
        state_.LastMessage = platform::errorReport(platform::currentError(), "mod cmdRun");
        services_.progress.end("");
        log(state_.LastMessage);
        services_.messages.ShowPopupMessage(state_.LastMessage, 5);
    }
    cleanUp();
}

void MeasurementRun::measure() {
    beginRun();
    const Interlock::Engaged undisturbed(services_.interlock);
    MeasurementPlan plan = validatedPlan();
    logSettings(plan);
    services_.progress.begin(stagesOf(plan));

    std::vector<TakenPlate> plates = plan.byHand ? takePlatesByHand(plan) : takePlates(plan);
    if (plan.closing) takeClosingPlate(plan, plates);
    goOn();
    preflight_.learn(plates.back(), plan.exposures);
    review_.begin(plates, taker_.exposureSeconds() * plan.exposures);
    if (adjusted_) compareWithLive();
    if (!plan.byHand && !plan.closing) returnToStart(plan);
    if (review_.result().BadSolution) calculationFailed();
    offerCorrection(plan);
    if (state_.AppUnloading) throw Closing{};
    log("Alignment Run Complete");
}

void MeasurementRun::beginRun() {
    if (state_.PlateSolveMethod.empty()) {
        log("No Plate solve method selected");
        throw StopExit{};
    }
    state_.forgetStop();
    panel_.cmdRun.setEnabled(false);
    indicators_.SetActiveColors(panel_.cmdRun);
    panel_.cmdStop.setEnabled(true);
    panel_.cmdNext.setEnabled(false);
    panel_.cmdSkip.setEnabled(false);
    panel_.cmdExpose.setEnabled(false);
    services_.display.clearPolarPlot();
    askToWait();
}

void MeasurementRun::askToWait() {
    panel_.txtInstructions.setAlignment(Alignment::kCentre);
    panel_.txtInstructions.setText(joinLines({"Measuring", "Polar Alignment Error", "", "", "Please Wait"}));
}

/// The slew's direction comes from elsewhere, so a sign is ignored.
MeasurementPlan MeasurementRun::validatedPlan() {
    const double degrees = std::abs(platform::toNumber(panel_.txtDeltaRA.text()));
    if (degrees < 1 || degrees > 45)
        failurePrompt(joinLines({"***ERROR***ERROR***", "Telescope Slew must be ",
                                 "between 1 and 45 degrees!", "", "Enter a new value, click Next"}),
                      std::nullopt);
    return {
        .slew = degrees * (1.0 / 15),
        .eastward = state_.SlewEast,
        .plates = validatedCount(panel_.txtPlates, "Plates", kFewestPlates, kMostPlates),
        .exposures = validatedCount(panel_.txtPlateExposures, "Exposures per Plate", 1, kMostExposures),
        .byHand = panel_.chkTurnByHand.ticked(),
        .closing = !panel_.chkTurnByHand.ticked() && platform::leadingNumber(services_.settings.GetSetting(
                                                         "PolarAlign", "ClosingPlate", "0")) != 0};
}

int MeasurementRun::validatedCount(const platform::TextBox& box, const std::string& what, int fewest,
                                   int most) {
    const double count = platform::toNumber(box.text());
    if (count < fewest || count > most || count != std::floor(count))
        failurePrompt(joinLines({"***ERROR***ERROR***", what + " must be ",
                                 "between " + std::to_string(fewest) + " and " + std::to_string(most) + "!",
                                 "", "Enter a new value, click Next"}),
                      std::nullopt);
    return static_cast<int>(count);
}

void MeasurementRun::logSettings(const MeasurementPlan& plan) {
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
    if (plan.plates != kFewestPlates || plan.exposures != 1)
        log("Plates: " + std::to_string(plan.plates) +
            ", exposures of each: " + std::to_string(plan.exposures));
}

/// Nobody knows how long hands take.
std::vector<PlannedStage> MeasurementRun::stagesOf(const MeasurementPlan& plan) const {
    std::vector<PlannedStage> stages;
    if (plan.byHand) return stages;
    const PlannedStage settling{Stage::kSettle, settlingSeconds()};
    for (int number = 1; number <= plan.plates + (plan.closing ? 1 : 0); ++number) {
        if (number > 1) stages.push_back({number > plan.plates ? Stage::kReturn : Stage::kSlew});
        if (number > 1) stages.push_back(settling);
        for (int exposure = 1; exposure <= plan.exposures; ++exposure) {
            stages.push_back({Stage::kExpose, taker_.exposureSeconds()});
            stages.push_back({Stage::kSolve});
        }
    }
    if (!plan.closing) stages.push_back({Stage::kReturn});
    return stages;
}

/// At least three, in the order of the arc.
std::vector<TakenPlate> MeasurementRun::takePlates(MeasurementPlan& plan) {
    readStartPosition();
    std::vector<TakenPlate> taken;
    for (int number = 1; number <= plan.plates; ++number) {
        if (number > 1) moveOn(plan, number);
        auto plate = takePlate(plan, number, taken);
        const bool spare = plan.plates > kFewestPlates;
        if (!plate && number == 2 && !spare) plate = retryWithHalfTheSlew(plan, taken.front());
        if (plate) {
            taken.push_back(*plate);
            if (taken.size() > 1) compareWithSlew(taken[taken.size() - 2], *plate);
        } else {
            goOnWithout(plan, number, taken);
        }
    }
    return taken;
}

std::vector<TakenPlate> MeasurementRun::takePlatesByHand(const MeasurementPlan& plan) {
    log("The axis is turned by hand");
    std::vector<TakenPlate> taken;
    for (int number = 1; number <= plan.plates; ++number) {
        if (number == 1) indicators_.SetActiveColors(panel_.lblFrame1);
        log("***** Exposing Image " + std::to_string(number) + " *****");
        showPlateInHand(plan, number);
        const auto plate = number == 1 ? hand_.first(plan) : hand_.next(plan, taken);
        if (!plate) plateFailed(number);
        if (number == 1) preflight_.announce({seenPlate(*plate).hourAngle, plate->dec}, plan);
        taken.push_back(*plate);
    }
    askToWait();
    return taken;
}

void MeasurementRun::readStartPosition() {
    position_.Dec = services_.telescope.GetTelescopeDec();
    position_.RA = NormalizeRAHours(services_.telescope.GetTelescopeRA());
    indicators_.SetActiveColors(panel_.lblFrame1);
    services_.loop.yield();
    logPosition(Style::kSexagesimal);
}

void MeasurementRun::moveOn(const MeasurementPlan& plan, int number) {
    nameInProgress(plan, number);
    slewOn(plan.eastward ? plan.slew : -plan.slew);
    logPosition(number == 2 ? Style::kDecimal : Style::kSexagesimal);
    waitForMountToSettle();
}

std::optional<TakenPlate> MeasurementRun::takePlate(const MeasurementPlan& plan, int number,
                                                    const std::vector<TakenPlate>& before) {
    const TakenPlate here = taker_.at(number, position_);
    if (number == 1) preflight_.announce({here.scopeHA, position_.Dec}, plan);
    log("***** Exposing Image " + std::to_string(number) + " *****");
    showPlateInHand(plan, number);
    return taker_.take(here, plan.exposures, expectedOffset(before, number));
}

/// Where the first one was: what moved meanwhile shows between the two. It can be spared.
void MeasurementRun::takeClosingPlate(const MeasurementPlan& plan, std::vector<TakenPlate>& taken) {
    nameInProgress(plan, plan.plates + 1);
    returnToStart(plan);
    waitForMountToSettle();
    const TakenPlate here = taker_.at(plan.plates + 1, position_);
    log("***** Exposing Image " + std::to_string(here.number) + " *****");
    indicators_.SetActiveColors(panel_.lblFrame1);
    indicators_.SetActiveColors(panel_.lblExpose);
    goOn();
    const TakenPlate& first = taken.front();
    const auto plate = taker_.take(here, plan.exposures, {.RA = first.raError, .Dec = first.decError});
    Indicators::switchOff(panel_.lblFrame1);
    goOn();
    if (plate)
        taken.push_back(*plate);
    else
        log("Plate " + std::to_string(here.number) + " is left out");
}

void MeasurementRun::nameInProgress(const MeasurementPlan& plan, int number) {
    const int all = plan.plates + (plan.closing ? 1 : 0);
    services_.progress.setSubject(Words::tr("Plate %1 of %2", {std::to_string(number), std::to_string(all)}));
}

/// The first lamp is the first plate's, the last the last one's; the plates between share the middle one.
void MeasurementRun::showPlateInHand(const MeasurementPlan& plan, int number) {
    nameInProgress(plan, number);
    if (number > 1) {
        Indicators::switchOff(panel_.lblFrame1);
        if (number == plan.plates) Indicators::switchOff(panel_.lblFrame2);
        indicators_.SetActiveColors(number == plan.plates ? panel_.lblFrame3 : panel_.lblFrame2);
        Indicators::switchOff(panel_.lblSlew);
    }
    indicators_.SetActiveColors(panel_.lblExpose);
    goOn();
}

/// Half way back to the first plate; the slews that follow are as short.
std::optional<TakenPlate> MeasurementRun::retryWithHalfTheSlew(MeasurementPlan& plan,
                                                               const TakenPlate& first) {
    log("Trying again with half Telescope Slew");
    plan.slew /= 2;
    position_.RA = NormalizeRAHours(position_.RA + (plan.eastward ? -plan.slew : plan.slew));
    goOn();
    slew(Stage::kSlew);
    logPosition(Style::kDecimal);
    waitForMountToSettle();
    const TakenPlate here = taker_.at(first.number + 1, position_);
    goOn();
    return taker_.take(here, plan.exposures, expectedOffset({&first, 1}, here.number), Lamps::kLeave);
}

/// A plate that can't be solved costs itself, as long as enough others are left.
void MeasurementRun::goOnWithout(const MeasurementPlan& plan, int number,
                                 const std::vector<TakenPlate>& taken) {
    const int canStillBe = static_cast<int>(taken.size()) + plan.plates - number;
    const bool nothingYet = taken.empty() && number > 1;  // rather a wrong setting than a cloud
    if (canStillBe < kFewestPlates || nothingYet) plateFailed(nothingYet ? 1 : number);
    goOn();
    log("Plate " + std::to_string(number) + " is left out");
}

void MeasurementRun::plateFailed(int number) {
    log("Polar Align Aborted !!");
    if (number == 1)
        failurePrompt(joinLines({"Plate Solve Failed !!", "1. Is Scope is Synced to Star?",
                                 "2. Check Plate Solve Settings", "", "Click Next to try again"}),
                      Alignment::kLeft);
    const std::string ordinal = kOrdinals[static_cast<std::size_t>(number) - 1];
    failurePrompt(joinLines({ordinal + " Plate Solve Failed !!", "", "1. Try smaller Telescope Slew", "",
                             "Click Next to try again"}),
                  Alignment::kLeft);
}

void MeasurementRun::calculationFailed() {
    log("Polar Align Error Calculation Failed");
    failurePrompt(joinLines({"***ERROR***ERROR***", "Polar Align Error ", "Calculation Failed!", "",
                             "Try new conditions, click Next"}),
                  std::nullopt);
}

/// However its axis stands, a mount turns the camera by as much as it was told to: the angle between two
/// plates is the angle between the positions that it was sent to. Mounts that stall or slip don't say so.
void MeasurementRun::compareWithSlew(const TakenPlate& before, const TakenPlate& after) {
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

void MeasurementRun::returnToStart(const MeasurementPlan& plan) {
    const double hours = plan.slew * (plan.plates - 1);
    if (!plan.closing) services_.progress.setSubject("");
    slewOn(plan.eastward ? -hours : hours, Stage::kReturn);
    logPosition(Style::kDecimal);
    Indicators::switchOff(panel_.lblFrame3);
    Indicators::switchOff(panel_.lblSlew);
    goOn();
}

/// Until he decides, the operator can have plates left out or taken again.
void MeasurementRun::offerCorrection(const MeasurementPlan& plan) {
    bool correct = operatorWantsCorrection();
    while (const auto plate = review_.takeRedoRequest()) {
        redo(*plate, plan);
        correct = operatorWantsCorrection();
    }
    if (adjustClicked_) return adjust();
    const PolarErrorResult& result = review_.result();
    if (!correct) return;
    if (result.BadSolution) calculationFailed();
    services_.progress.begin({});
    services_.correction.CorrectMisAlignment(result.error.ErrorAmplitude, result.error.ErrorAngle);
}

bool MeasurementRun::operatorWantsCorrection() {
    panel_.txtInstructions.setAlignment(Alignment::kLeft);
    panel_.txtInstructions.setText(
        joinLines({"Polar Align Measurement", "Completed Successfully !!", "1. Click Next to correct",
                   "      misalignment, or click", "      Skip Button to end"}));
    panel_.cmdNext.setEnabled(true);
    panel_.cmdSkip.setEnabled(true);
    adjustClicked_ = false;
    panel_.cmdAdjust.setEnabled(adjustLive && review_.axis().check.best() != nullptr);
    services_.progress.rest(Words::tr("Measured: Next corrects, Skip ends"));
    const PlateReview::Offered offered(review_);
    const bool correct =
        prompt_.WaitForNextOrSkipClick([this] { return review_.redoRequested() || adjustClicked_; });
    panel_.cmdAdjust.setEnabled(false);
    Indicators::switchOff(panel_.cmdNext);
    if (state_.StopRequested) throw StopExit{};
    if (state_.AppUnloading) throw Closing{};
    return correct;
}

void MeasurementRun::adjust() {
    services_.progress.begin({});
    if (const AxisEstimate* const measured = review_.axis().check.best()) adjusted_ = adjustLive(*measured);
}

/// What the live numbers said last, and what the fresh measurement says.
void MeasurementRun::compareWithLive() {
    const AxisEstimate* const fresh = review_.axis().check.best();
    if (fresh != nullptr && adjusted_->remaining) {
        const auto arcMinutes = [](double value) { return formatNumber(value, "0.00"); };
        const std::string text = "The fresh measurement differs from the live numbers by " +
                                 arcMinutes(fresh->fromTruePole.azimuth - adjusted_->remaining->azimuth) +
                                 " arc-min in azimuth and " +
                                 arcMinutes(fresh->fromTruePole.elevation - adjusted_->remaining->elevation) +
                                 " in elevation";
        log(text);
        services_.messages.ShowPopupMessage(text, 10);
    }
    adjusted_.reset();
}

/// One that fails leaves the former one as it was.
void MeasurementRun::redo(const TakenPlate& plate, const MeasurementPlan& plan) {
    panel_.cmdNext.setEnabled(false);
    panel_.cmdSkip.setEnabled(false);
    askToWait();
    const std::string number = std::to_string(plate.number);
    services_.progress.begin({{Stage::kSlew},
                              {Stage::kSettle, settlingSeconds()},
                              {Stage::kExpose, taker_.exposureSeconds()},
                              {Stage::kSolve},
                              {Stage::kReturn}});
    services_.progress.setSubject(Words::tr("Plate %1 again", {number}));
    log("***** Exposing Image " + number + " again *****");
    const EquatorialPosition start = position_;
    slewBetween(plate.sentTo, Stage::kSlew);
    waitForMountToSettle();
    const TakenPlate here = taker_.at(plate.number, position_);
    indicators_.SetActiveColors(panel_.lblExpose);
    const auto again = taker_.take(here, plan.exposures, {.RA = plate.raError, .Dec = plate.decError});
    goOn();
    if (again)
        review_.replace(*again);
    else
        log("Plate " + number + " couldn't be solved again: the former one stays");
    slewBetween(start, Stage::kReturn);
}

void MeasurementRun::slewBetween(const EquatorialPosition& to, Stage stage) {
    slewOn(signedHours(to.RA - position_.RA), stage);
    logPosition(Style::kSexagesimal);
    Indicators::switchOff(panel_.lblSlew);
}

/// Eastward by these hours.
void MeasurementRun::slewOn(double hours, Stage stage) {
    position_.RA = NormalizeRAHours(position_.RA + hours);
    Indicators::switchOff(panel_.lblSolve);
    indicators_.SetActiveColors(panel_.lblSlew);
    goOn();
    slew(stage);
}

void MeasurementRun::slew(Stage stage) {
    const Progress::UnderWay slewing(services_.progress, {stage});
    services_.telescope.SlewToCoordinates(position_.RA, position_.Dec);
}

void MeasurementRun::waitForMountToSettle() {
    if (state_.UsingAxisSimulator) return;
    const Progress::UnderWay settling(services_.progress, {Stage::kSettle, settlingSeconds()});
    WaitSeconds(services_.loop, platform::toNumber(panel_.txtDelayAfterSlew.text()));
}

/// For telling how long it takes; waiting itself complains of a text that is no number.
double MeasurementRun::settlingSeconds() const {
    return state_.UsingAxisSimulator ? 0 : platform::leadingNumber(panel_.txtDelayAfterSlew.text());
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
        services_.progress.rest(Words::tr("Waiting for you to click Next"));
        prompt_.WaitForNextOrSkipClick();
    }
    Indicators::switchOff(panel_.cmdNext);
    throw StopExit{};
}

void MeasurementRun::cleanUp() {
    if (state_.AppUnloading) return;
    SwitchAllIndicatorsOff();
    panel_.cmdRun.setEnabled(true);
    panel_.cmdStop.setEnabled(false);
    panel_.cmdNext.setEnabled(false);
    panel_.cmdSkip.setEnabled(false);
    panel_.cmdAdjust.setEnabled(false);
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
