// The measurement: plates at several hour angles, each solved, and from them where the mount's axis points.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "engine/hand_turning.h"
#include "engine/indicators.h"
#include "engine/measurement_plan.h"
#include "engine/operator_prompt.h"
#include "engine/plate_review.h"
#include "engine/plate_taker.h"
#include "engine/preflight_desk.h"
#include "engine/run_exits.h"
#include "engine/run_panel.h"
#include "engine/run_state.h"
#include "engine/services.h"
#include "engine/sky_geometry.h"

namespace vantrel::engine {

/// How live adjusting ended.
struct AdjustmentEnd {
    bool measureAgain = false;
    std::optional<AxisOffset> remaining{};  // by the last numbers that could be trusted
};

/// The procedure behind the Run button. It is one long story on the operator's thread that waits by polling,
/// so that Stop, Next and Skip stay live; the disabled Run and Expose buttons keep it from being entered
/// twice.
class MeasurementRun {
  public:
    MeasurementRun(RunPanel& panel, RunState& state, OperatorPrompt& prompt, PreflightDesk& preflight,
                   PlateReview& review, const Services& services);

    /// Measures, shows the result and offers the correction. Never throws: every failure is reported to the
    /// operator, and the window is ready for the next run.
    void cmdRun_Click();

    /// Guides both adjusters at once, beginning with this axis. StopExit and Closing may leave it. Without it
    /// nobody is offered to.
    std::function<AdjustmentEnd(const AxisEstimate& measured)> adjustLive;

    /// Tells the operator how to begin.
    void ShowStartingInstructions();

    void SwitchAllIndicatorsOff();

  private:
    void measure();
    void beginRun();
    MeasurementPlan validatedPlan();
    int validatedCount(const platform::TextBox& box, const std::string& what, int fewest, int most);
    void logSettings(const MeasurementPlan& plan);
    std::vector<PlannedStage> stagesOf(const MeasurementPlan& plan) const;
    std::vector<TakenPlate> takePlates(MeasurementPlan& plan);
    std::vector<TakenPlate> takePlatesByHand(const MeasurementPlan& plan);
    void readStartPosition();
    void moveOn(const MeasurementPlan& plan, int number);
    std::optional<TakenPlate> takePlate(const MeasurementPlan& plan, int number,
                                        const std::vector<TakenPlate>& before);
    void takeClosingPlate(const MeasurementPlan& plan, std::vector<TakenPlate>& taken);
    void showPlateInHand(const MeasurementPlan& plan, int number);
    void nameInProgress(const MeasurementPlan& plan, int number);
    std::optional<TakenPlate> retryWithHalfTheSlew(MeasurementPlan& plan, const TakenPlate& first);
    void goOnWithout(const MeasurementPlan& plan, int number, const std::vector<TakenPlate>& taken);
    [[noreturn]] void plateFailed(int number);
    [[noreturn]] void calculationFailed();
    void compareWithSlew(const TakenPlate& before, const TakenPlate& after);
    void returnToStart(const MeasurementPlan& plan);
    void offerCorrection(const MeasurementPlan& plan);
    bool operatorWantsCorrection();
    void adjust();
    void compareWithLive();
    void redo(const TakenPlate& plate, const MeasurementPlan& plan);
    void askToWait();
    void slewBetween(const EquatorialPosition& to, Stage stage);

    void slewOn(double hours, Stage stage = Stage::kSlew);
    void slew(Stage stage);
    void waitForMountToSettle();
    double settlingSeconds() const;
    enum class Style : std::int8_t { kSexagesimal, kDecimal };
    void logPosition(Style style);
    [[noreturn]] void failurePrompt(const std::string& text, std::optional<platform::Alignment> alignment);

    void goOn() { engine::goOn(services_.loop, state_); }
    void log(const std::string& text) { services_.log.AddToLog(text); }
    void cleanUp();

    RunPanel& panel_;
    RunState& state_;
    OperatorPrompt& prompt_;
    PreflightDesk& preflight_;
    PlateReview& review_;
    Services services_;
    Indicators indicators_;
    PlateTaker taker_;
    HandTurning hand_;
    EquatorialPosition position_;  // of the mount: read once, then as commanded
    bool adjustClicked_ = false;
    std::optional<AdjustmentEnd> adjusted_;  // since the last measurement
};

}  // namespace vantrel::engine
