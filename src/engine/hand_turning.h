// A mount whose axis the operator turns by hand: pictures are taken and solved all the while, he is told how
// far he has turned and when to stop, and the plate is taken once the picture stands still.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "engine/measurement_plan.h"
#include "engine/plate_taker.h"
#include "engine/run_panel.h"
#include "engine/services.h"
#include "engine/taken_plate.h"

namespace vantrel::engine {

/// The operator can stop it at any moment; StopExit and Closing leave it then.
class HandTurning {
  public:
    HandTurning(RunPanel& panel, const Services& services, PlateTaker& taker)
        : panel_(panel), services_(services), taker_(taker) {}

    /// The first plate, wherever the telescope looks; nothing when it can't be solved.
    std::optional<TakenPlate> first(const MeasurementPlan& plan);

    /// The next one: waits until the axis has turned far enough from the last of these, in their direction.
    TakenPlate next(const MeasurementPlan& plan, std::span<const TakenPlate> before);

  private:
    std::optional<TakenPlate> look(int number, const TakenPlate& near);
    void tell(const std::string& progress, const std::string& advice);

    RunPanel& panel_;
    Services services_;
    PlateTaker& taker_;
};

/// Degrees by which the axis turned from one plate to another, east positive; exact for an axis at the pole.
double turnedEastward(const TakenPlate& from, const TakenPlate& to);

/// Whether the picture stood still between two plates: among the stars, as with a mount that tracks, or
/// against the ground.
bool standsStill(const TakenPlate& before, const TakenPlate& after);

}  // namespace vantrel::engine
