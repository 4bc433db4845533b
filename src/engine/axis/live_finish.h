// When an adjustment is done, and what tightening the bolts does to it.
#pragma once

#include <optional>

#include "engine/axis/live_axis.h"

namespace vantrel::engine {

class LiveFinish {
  public:
    /// The next reading, and how far from the pole (arc-minutes) the operator allows.
    void add(const LiveReading& reading, double tolerance);

    /// Within the tolerance, whatever two sigma may add, in two readings in a row: one may be luck.
    bool done() const { return inARow_ >= 2; }

    /// The bolts are tightened from the last trustworthy reading on.
    void lock() { locked_ = last_; }
    void unlock() { locked_.reset(); }
    bool locked() const { return locked_.has_value(); }

    /// Since then: how far the axis has moved on the sky, arc-minutes.
    std::optional<double> shift(double latitude) const;

    /// The last trustworthy reading.
    const std::optional<LiveReading>& last() const { return last_; }

  private:
    int inARow_ = 0;
    std::optional<LiveReading> last_, locked_;
};

/// The declination, on the meridian, of a place not far from this declination where the adjusters can be told
/// apart well.
double distinctPlace(double declination, double latitude);

}  // namespace vantrel::engine
