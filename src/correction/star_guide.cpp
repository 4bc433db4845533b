#include "correction/star_guide.h"

#include <algorithm>
#include <cmath>

#include "platform/text.h"

namespace vantrel::correction {

using platform::formatNumber;

std::string Guidance::text() const {
    if (!star) return "star not found";
    const std::string inPixels = formatNumber(pixels, "0") + " px";
    if (!arcMinutes) return "star to target " + inPixels;
    return "star to target " + formatNumber(*arcMinutes, "0.0") + "' (" + inPixels + ")";
}

StarGuide::StarGuide(GuidancePanel& panel, OpenImage& image, std::function<void()> sound)
    : panel_(panel), image_(image), sound_(std::move(sound)) {}

void StarGuide::begin(const CorrectionMarks& marks) {
    if (image_.program() == OpenImage::Program::kNone) return;
    follower_.emplace(static_cast<double>(marks.StarX), static_cast<double>(marks.StarY), marks.TargetX,
                      marks.TargetY);
    arcMinutesPerPixel_ = marks.arcMinutesPerPixel;
    firstDistance_ = 0;
    toldClose_ = false;
    guidance_ = Guidance{{marks.TargetX, marks.TargetY}};
    const auto star = starInWrittenImage();
    if (marks.mountSlewed)
        follower_->lose();
    else if (star)
        measure(*star);
    show();
}

void StarGuide::look() {
    if (!follower_) return;
    guidance_ = Guidance{guidance_->target};
    if (const auto star = starInWrittenImage()) {
        measure(*star);
        tellWhenClose();
    }
    show();
}

void StarGuide::end() {
    follower_.reset();
    guidance_.reset();
    show();
}

std::optional<engine::PixelPosition> StarGuide::starInWrittenImage() {
    try {
        const platform::ImageRef image = image_.takeWritten();
        if (!image) return std::nullopt;
        const auto star = follower_->find(*image);
        if (!star) return std::nullopt;
        return engine::PixelPosition{star->x, star->y};
    } catch (...) {
        return std::nullopt;
    }
}

void StarGuide::measure(const engine::PixelPosition& star) {
    Guidance& guidance = *guidance_;
    guidance.star = star;
    guidance.pixels = std::hypot(star.x - guidance.target.x, star.y - guidance.target.y);
    if (arcMinutesPerPixel_ > 0) guidance.arcMinutes = guidance.pixels * arcMinutesPerPixel_;
    if (!(firstDistance_ > 0)) firstDistance_ = guidance.pixels;
    guidance.left = firstDistance_ > 0 ? std::min(1.0, guidance.pixels / firstDistance_) : 0;
}

/// Once for each approach: a star that trembles around the limit doesn't sound again and again.
void StarGuide::tellWhenClose() {
    constexpr double kClose = 0.5, kAwayAgain = 1;  // arc-minutes
    if (!guidance_->arcMinutes) return;
    if (*guidance_->arcMinutes > kAwayAgain) toldClose_ = false;
    if (*guidance_->arcMinutes > kClose || toldClose_) return;
    toldClose_ = true;
    if (sound_ && panel_.chkCloseSound.ticked()) sound_();
}

void StarGuide::show() {
    panel_.lblStarToTarget.setCaption(guidance_ ? guidance_->text() : "");
    panel_.gaugeStarToTarget.setFraction(guidance_ ? guidance_->left : 0);
    panel_.setReadingsVisible(guidance_.has_value());
    changed.emit();
}

}  // namespace vantrel::correction
