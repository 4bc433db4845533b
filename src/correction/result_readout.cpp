#include "correction/result_readout.h"

#include <cmath>

#include "platform/color.h"
#include "platform/text.h"

namespace vantrel::correction {

using platform::formatNumber;

namespace {

/// What can't be seen on the smallest of the adjusters' scales.
constexpr double kNothing = 1. / 60;  // arc-minutes

std::string advice(const std::string& adjuster, double arcMinutes, const std::string& ifPositive,
                   const std::string& ifNegative) {
    if (std::abs(arcMinutes) < kNothing) return adjuster + " is right";
    return adjuster + " " + shortAngle(arcMinutes) + " " + (arcMinutes > 0 ? ifPositive : ifNegative);
}

}  // namespace

std::string shortAngle(double arcMinutes) {
    constexpr double kInDegrees = 120;
    const double size = std::abs(arcMinutes);
    if (size >= kInDegrees) return formatNumber(size / 60, "0.0") + "°";
    return size < 1 ? formatNumber(size * 60, "0") + "″" : formatNumber(size, "0.0") + "'";
}

std::string azimuthAdvice(const engine::AxisOffset& offset) {
    return advice("Azimuth", offset.azimuth, "too far east: turn west", "too far west: turn east");
}

std::string elevationAdvice(const engine::AxisOffset& offset) {
    return advice("Elevation", offset.elevation, "too high: lower", "too low: raise");
}

ResultReadout::ResultReadout(ResultPanel& panel, const platform::Clock& clock)
    : panel_(panel), clock_(clock) {
    toleranceChanged_ = panel_.txtTolerance.changed.subscribe([this] { judge(); });
    judge();
}

void ResultReadout::clear() {
    result_.reset();
    panel_.picDial.clear();
    for (platform::Label* label : {&panel_.lblAzimuthAdvice, &panel_.lblElevationAdvice, &panel_.lblTotal})
        label->setCaption("");
    judge();
}

void ResultReadout::show(const engine::AxisOffset& offset, double distance, std::optional<double> sigma) {
    result_ = Result{.distance = distance, .sigma = sigma};
    panel_.lblAzimuthAdvice.setCaption(azimuthAdvice(offset));
    panel_.lblElevationAdvice.setCaption(elevationAdvice(offset));
    panel_.lblTotal.setCaption("Total " + shortAngle(distance) +
                               (sigma ? " ± " + formatNumber(*sigma, "0.0") + "″" : "") + ", measured at " +
                               platform::formatTime(platform::civilLocal(clock_.utc()), "HH:mm"));
    judge();
}

void ResultReadout::showFailure() {
    clear();
    tellVerdict("No valid result", platform::color::kRed);
}

double ResultReadout::tolerance() const {
    constexpr double kUsual = 2;
    const double typed = platform::leadingNumber(panel_.txtTolerance.text());
    return typed > 0 ? typed : kUsual;
}

/// Good is only what two sigma leave no doubt about.
void ResultReadout::judge() {
    if (!result_) return tellVerdict("No measurement yet");
    const double doubt = 2 * result_->sigma.value_or(0) / 60;
    const std::string limit = shortAngle(tolerance());
    if (result_->distance + doubt <= tolerance())
        tellVerdict("Good: within " + limit, platform::color::kDarkGreen);
    else if (result_->distance - doubt <= tolerance())
        tellVerdict("Uncertain: about " + limit);
    else
        tellVerdict("Not yet within " + limit);
}

void ResultReadout::tellVerdict(const std::string& words, std::optional<platform::Color> lamp) {
    panel_.lblVerdict.setCaption(words);
    panel_.lblVerdict.setBackColor(lamp.value_or(platform::color::kIndicatorOffBack));
    panel_.lblVerdict.setForeColor(lamp ? platform::color::kBlack : platform::color::kIndicatorOffFore);
}

}  // namespace vantrel::correction
