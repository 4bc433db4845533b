// Takes plates where the mount stands: exposes, saves, solves, and keeps what was seen.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "engine/indicators.h"
#include "engine/run_exits.h"
#include "engine/run_panel.h"
#include "engine/run_state.h"
#include "engine/services.h"
#include "engine/taken_plate.h"

namespace vantrel::engine {

/// Whether the lamps tell exposing from solving.
enum class Lamps : std::int8_t { kShow, kLeave };

/// The operator can stop it at any moment; StopExit and Closing leave it then.
class PlateTaker {
  public:
    PlateTaker(RunPanel& panel, RunState& state, const Services& services);

    /// A plate where the mount has just arrived: when, and at which hour angle by its own word.
    TakenPlate at(int number, const EquatorialPosition& sentTo, Pointing pointing = Pointing::kByMount) const;

    /// Exposes and solves it so many times, and takes the mean; exposures that can't be solved are left out.
    /// Nothing when none can. The solver begins at the mount's position and this offset (hours, degrees).
    std::optional<TakenPlate> take(const TakenPlate& plate, int exposures, const EquatorialPosition& offset,
                                   Lamps lamps = Lamps::kShow);

    /// Seconds of one exposure, as the operator has set them.
    double exposureSeconds() const;
    /// The last exposure gave no picture; the simulator always gives one.
    bool cameraFailed() const;

  private:
    std::optional<TakenPlate> takeOne(TakenPlate plate, const EquatorialPosition& offset, Lamps lamps);
    std::string expose();
    void announceSolving(int number, Lamps lamps);
    std::optional<PlateSolution> solve(const TakenPlate& plate, const std::string& image,
                                       const EquatorialPosition& offset);
    double middleOfExposure(const TakenPlate& plate) const;
    void goOn() const { engine::goOn(services_.loop, state_); }
    void log(const std::string& text) const { services_.log.AddToLog(text); }

    RunPanel& panel_;
    RunState& state_;
    Services services_;
    Indicators indicators_;
};

}  // namespace vantrel::engine
