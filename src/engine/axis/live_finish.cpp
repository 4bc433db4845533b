#include "engine/axis/live_finish.h"

#include <algorithm>
#include <cmath>

#include "engine/angles.h"

namespace vantrel::engine {

void LiveFinish::add(const LiveReading& reading, double tolerance) {
    if (!reading.trustworthy()) {
        inARow_ = 0;
        return;
    }
    last_ = reading;
    const bool good = reading.distance + 2 * reading.sigma / 60 <= tolerance;
    inARow_ = good ? inARow_ + 1 : 0;
}

std::optional<double> LiveFinish::shift(double latitude) const {
    if (!locked_ || !last_) return std::nullopt;
    const double toSky = std::cos(degreesToRadians(latitude));
    return std::hypot((last_->remaining.azimuth - locked_->remaining.azimuth) * toSky,
                      last_->remaining.elevation - locked_->remaining.elevation);
}

double distinctPlace(double declination, double latitude) {
    constexpr double kFromZenith = 30;  // degrees
    const double fromZenith = declination - latitude;
    if (std::abs(fromZenith) >= kFromZenith) return declination;
    // Towards the equator there is always sky.
    return latitude < 0 ? latitude + kFromZenith : latitude - kFromZenith;
}

}  // namespace vantrel::engine
