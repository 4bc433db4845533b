// The measurement: three plates at three hour angles, each solved, and from them where the mount's axis
// points.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "engine/axis/axis_check.h"
#include "engine/indicators.h"
#include "engine/operator_prompt.h"
#include "engine/polar_error.h"
#include "engine/run_panel.h"
#include "engine/run_state.h"
#include "engine/services.h"
#include "engine/sky_geometry.h"
#include "platform/clock.h"

namespace vantrel::engine {

/// The procedure behind the Run button. It is one long story on the operator's thread that waits by polling,
/// so that Stop, Next and Skip stay live; the disabled Run and Expose buttons keep it from being entered
/// twice.
class MeasurementRun {
  public:
    MeasurementRun(RunPanel& panel, RunState& state, OperatorPrompt& prompt, const Services& services);

    /// Measures, shows the result and offers the correction. Never throws: every failure is reported to the
    /// operator, and the window is ready for the next run.
    void cmdRun_Click();

    /// Tells the operator how to begin.
    void ShowStartingInstructions();

    void SwitchAllIndicatorsOff();

  private:
    struct StopExit {};  // the operator stopped, or a prompt ended the run
    struct Closing {};   // the program is closing

    /// One plate in the making.
    struct Plate {
        int number;
        double lst = 0;         // hours, read at the position
        double scopeHA = 0;     // hours
        double ra = 0;          // hours, solved
        double dec = 0;         // degrees, solved
        double raError = 0;     // hours in [0, 24), solved less exposure position
        double decError = 0;    // degrees
        double exposedLst = 0;  // hours, in the middle of the exposure
        PlateSolution solution{};
    };

    void measure();
    void beginRun();
    double validatedSlewHours();
    void logSettings();
    void readStartPosition(Plate& plate);
    void takeFirstPlate(Plate& plate);
    double takeSecondPlate(Plate& plate, const Plate& first, double slewHours);
    void takeThirdPlate(Plate& plate, const Plate& first, const Plate& second);
    bool retryWithHalfTheSlew(Plate& plate, const Plate& first, double slewHours);
    void compareWithSlew(const Plate& before, const Plate& after);
    std::vector<engine::Plate> seenPlates(const std::array<Plate, 3>& plates) const;
    void tell(const AxisCheck& check, const Site& site);
    PolarErrorResult resultOf(const std::array<Plate, 3>& plates);
    PolarErrorResult solveForAxis(const std::array<Plate, 3>& plates);
    void showResult(const std::array<Plate, 3>& plates, const PolarErrorResult& result);
    void returnToStart(double slewHours);
    void offerCorrection(const PolarError& error);

    std::string expose();
    double exposureSeconds() const;
    std::optional<PlateSolution> solve(const Plate& plate, const std::string& imageFileName, double raOffset,
                                       double decOffset);
    void announceSolving(const Plate& plate);
    void record(Plate& plate, const PlateSolution& solution);
    void slewOn(double hours);
    void waitForMountToSettle();
    void readPosition(Plate& plate);
    void moveExposurePosition(double hours);
    enum class Style { kSexagesimal, kDecimal };
    void logPosition(Style style);
    [[noreturn]] void failurePrompt(const std::string& text, std::optional<platform::Alignment> alignment);
    [[noreturn]] void abortedPrompt(const std::string& text);

    void check();
    void log(const std::string& text) { services_.log.AddToLog(text); }
    void cleanUp();

    RunPanel& panel_;
    RunState& state_;
    OperatorPrompt& prompt_;
    Services services_;
    Indicators indicators_;

    // Of the plate in hand.
    platform::Milliseconds readAt_{0};  // when its sidereal time was read
    double exposedAfter_ = 0;           // sidereal hours from then to the middle of its exposure

    // Decided when the run begins, and its own from then on.
    bool eastward_ = true;
    EquatorialPosition position_;  // of the mount for the plate in hand: read once, then as commanded
};

}  // namespace vantrel::engine
