#include "engine/angles.h"

#include <cmath>

#include "platform/text.h"

namespace vantrel::engine {

double NormalizeRAHours(double hours) {
    if (hours >= 0 && hours < 24) return hours;
    const int days = platform::toInt16(std::trunc(hours / 24));
    if (days == 0) return hours + 24;
    if (days < 0) return hours + (1 - days) * 24;
    return hours - days * 24;
}

double signedHours(double hours) {
    const double normalized = NormalizeRAHours(hours);
    return normalized > 12 ? normalized - 24 : normalized;
}

std::string shortAngle(double arcMinutes) {
    constexpr double kInDegrees = 120;  // arc-minutes, from which on
    const double size = std::abs(arcMinutes);
    if (size >= kInDegrees) return platform::formatNumber(size / 60, "0.0") + "°";
    return size < 1 ? platform::formatNumber(size * 60, "0") + "″"
                    : platform::formatNumber(size, "0.0") + "'";
}

double ArcTan2(double y, double x) {
    if (y == 0) return 0;
    if (x == 0) return y > 0 ? kPi / 2 : 3 * kPi / 2;
    const double t = std::atan(y / x);
    if (x < 0) return t + kPi;
    return y > 0 ? t : t + 2 * kPi;
}

double ArcSin(double x) {
    if (x >= 1) return kPi / 2;
    if (x <= -1) return -kPi / 2;
    return std::atan(x / std::sqrt(1 - x * x));
}

double ArcCos(double x) {
    if (x >= 1) return 0;
    if (x <= -1) return kPi;
    return std::atan(-x / std::sqrt(1 - x * x)) + 2 * std::atan(1.0);
}

}  // namespace vantrel::engine
