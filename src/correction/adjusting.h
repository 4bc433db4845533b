// Live adjusting: the camera exposes and solves without end, and each solution says what remains of both
// adjusters.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "correction/bolt_sense.h"
#include "correction/frm_adjust.h"
#include "correction/result_panel.h"
#include "correction/tones.h"
#include "engine/axis/live_axis.h"
#include "engine/axis/live_finish.h"
#include "engine/measurement_run.h"
#include "engine/plate_taker.h"
#include "platform/timer.h"

namespace vantrel::correction {

/// An exposure that fails, or that can't be solved, costs itself only. Next and "Measure again" end it and
/// want a fresh measurement; Skip, "End" and closing the window end it.
class Adjusting {
  public:
    /// `tolerance` in arc-minutes, as it stands; `sound` tells that the axis is within it, or has left it,
    /// and how far it is; `say` speaks.
    Adjusting(frmAdjust& form, engine::RunPanel& panel, engine::RunState& state,
              const engine::Services& services, std::function<double()> tolerance,
              std::function<void()> sound = {}, std::function<void(const std::string&)> say = {});

    /// StopExit and Closing leave it when the operator stops or the program closes.
    engine::AdjustmentEnd adjust(const engine::AxisEstimate& measured);

  private:
    class Open;
    enum class Wish : std::uint8_t { kGoOn, kEnd, kMeasureAgain };

    void begin(const engine::AxisEstimate& measured);
    void end();
    bool over() const;
    void look();
    std::optional<engine::TakenPlate> take();
    engine::Plate plateOf(const engine::TakenPlate& taken);
    void tell(const engine::LiveReading& reading);
    void tellNoSolution();
    void showMoves(const engine::LiveReading& reading);
    std::string situation(const engine::LiveReading& reading);
    std::string lockedSituation(double shift);
    std::string boltText(const frmAdjust::Adjuster& adjuster, double arcMinutes) const;
    void learnBolts(const engine::LiveReading& reading);
    void learnBolt(frmAdjust::Adjuster& adjuster, BoltSense& sense, const BoltSense::Look& look,
                   const char* name);
    void showAge();
    void toggleLock();
    void hear();
    void speak(const std::string& words);
    void soundOnce(bool now, bool& told);
    void loadBolts();
    void storeBolts();

    frmAdjust& form_;
    engine::RunPanel& panel_;
    engine::RunState& state_;
    engine::Services services_;
    std::function<double()> tolerance_;
    std::function<void()> sound_;
    std::function<void(const std::string&)> say_;
    Tones tones_;
    engine::Indicators indicators_;
    engine::PlateTaker taker_;
    platform::Timer ageTick_;

    engine::Site site_;
    std::optional<engine::LiveAxis> live_;
    engine::LiveFinish finish_;
    Wish wish_ = Wish::kGoOn;
    int number_ = 0;
    engine::EquatorialPosition near_;                          // where to look for the next plate
    std::optional<engine::EquatorialPosition> offset_;         // of the last solution from the mount's word
    std::optional<platform::Milliseconds> shownAt_, beganAt_;  // when the exposures began
    platform::Milliseconds rhythm_{0};                         // from exposure to exposure
    std::optional<engine::LiveReading> reading_;
    BoltSense azimuthSense_, elevationSense_;
    std::string spoken_;
    platform::Milliseconds spokenAt_{0};
    bool toldUndriven_ = false;
    bool toldDone_ = false, toldShift_ = false;
};

}  // namespace vantrel::correction
