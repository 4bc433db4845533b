// A measurement's result in words that can be followed at the mount: which way each adjuster has to go, and
// whether the axis is within the operator's tolerance.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "correction/result_panel.h"
#include "engine/axis/axis_position.h"
#include "platform/clock.h"

namespace vantrel::correction {

/// "Azimuth 18.1' too far east: turn west", "Elevation 10.9' too low: raise", "Azimuth is right".
platform::Words azimuthAdvice(const engine::AxisOffset& offset);
platform::Words elevationAdvice(const engine::AxisOffset& offset);

/// The same, short: "turn west 18.1'", "raise 10.9'", "Azimuth is right".
std::string azimuthMove(const engine::AxisOffset& offset);
std::string elevationMove(const engine::AxisOffset& offset);

/// How far a bolt has to go whose whole turn moves the axis by `perTurn` arc-minutes, to an eighth of a turn:
/// "a quarter turn", "2.5 turns". Empty where nothing is to be done, or where the bolt isn't known.
std::string boltTurns(double arcMinutes, double perTurn);

/// Shows the last measurement until the next one begins.
class ResultReadout {
  public:
    /// `needed`: the tolerance (arc-minutes) that the operator's pictures need, where he said.
    ResultReadout(ResultPanel& panel, const platform::Clock& clock,
                  std::function<std::optional<double>()> needed = {});

    void clear();
    /// `distance` from the pole in arc-minutes, `sigma` in arc-seconds.
    void show(const engine::AxisOffset& offset, double distance, std::optional<double> sigma);
    void showFailure();
    void setDial(const platform::Drawing& dial) { panel_.picDial.setDrawing(dial); }

    /// Arc-minutes: the operator's; where he wrote no number above 0, what his pictures need, else 2.
    double tolerance() const;
    /// The tolerance may be another.
    void judge();

  private:
    struct Result {
        double distance = 0;          // arc-minutes
        std::optional<double> sigma;  // arc-seconds
    };
    void tellVerdict(const platform::Words& words, std::optional<platform::Color> lamp = std::nullopt);

    ResultPanel& panel_;
    const platform::Clock& clock_;
    std::function<std::optional<double>()> needed_;
    std::optional<Result> result_;
    platform::Subscription toleranceChanged_;
};

}  // namespace vantrel::correction
