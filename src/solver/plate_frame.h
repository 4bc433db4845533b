// The equinox in which a plate's positions are told.
#pragma once

#include <optional>

#include "sky/epoch.h"
#include "solver/solved_plate.h"

namespace vantrel::solver {

/// Turns catalogue positions (ICRS) into those that a mount counts in, and back.
///
/// Of date, the positions are apparent places: annual aberration, precession and nutation are in them,
/// because that is what a mount's axis sees; refraction is not. For a given year they are mean places of that
/// equinox without aberration; 2000 is the catalogue's own frame.
class PlateFrame {
  public:
    static PlateFrame ofDate(platform::Instant instant) {
        return PlateFrame(sky::SkyOfDate(instant), std::nullopt);
    }
    /// The mean equinox of a Julian year.
    static PlateFrame ofYear(double year);

    sky::SkyPosition fromCatalogue(sky::SkyPosition icrs) const;
    sky::SkyPosition toCatalogue(sky::SkyPosition place) const;

    /// A plate's matrix about the ICRS position, told by this frame's east and north. Scales change with it
    /// only by aberration (1e-4).
    std::array<double, 4> turned(const std::array<double, 4>& cd, sky::SkyPosition icrs) const;

    /// Julian year of the equinox.
    double year() const { return year_; }

  private:
    PlateFrame(std::optional<sky::SkyOfDate> date, std::optional<sky::Matrix3> mean)
        : date_(date), mean_(mean) {
        if (date_) year_ = date_->julianEpoch();
    }

    std::optional<sky::SkyOfDate> date_;
    std::optional<sky::Matrix3> mean_;
    double year_ = 2000;
};

}  // namespace vantrel::solver
