#include "platform/sidereal.h"

#include <cmath>
#include <numbers>

namespace vantrel::platform {

double localMeanSiderealTime(Instant utc, double longitude) {
    using namespace std::chrono;
    constexpr Instant kJ2000 = sys_days{year{2000} / January / 1} + hours{12};
    const double days = duration<double, std::ratio<86400>>(utc - kJ2000).count();
    const double centuries = days / 36525;
    const double greenwich = 280.46061837 + 360.98564736629 * days +
                             centuries * centuries * (0.000387933 - centuries / 38'710'000);
    double degrees = std::fmod(greenwich + longitude * 180 / std::numbers::pi, 360);
    if (degrees < 0) degrees += 360;
    return degrees < 360 ? degrees / 15 : std::isnan(degrees) ? degrees : 0;
}

}  // namespace vantrel::platform
