#include "imaging/image_viewport.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vantrel::imaging {
namespace {

/// Whole factors both ways: every pixel of the image is as large as its neighbour.
constexpr std::array kScales = {1.0 / 64, 1.0 / 48, 1.0 / 32, 1.0 / 24, 1.0 / 16, 1.0 / 12, 1.0 / 8,
                                1.0 / 6,  1.0 / 4,  1.0 / 3,  1.0 / 2,  1.0,      2.0,      3.0,
                                4.0,      6.0,      8.0,      12.0,     16.0,     24.0,     32.0};

/// The corner of the view along one axis, in pixels of the image.
double kept(double corner, double image, double window, double scale) {
    const double shown = window / scale;
    if (shown >= image) return -std::floor((window - image * scale) / 2) / scale;
    // At whole pixels of the screen, so that the image's pixels keep their shape while it is drawn.
    return std::round(std::clamp(corner, 0.0, image - shown) * scale) / scale;
}

struct Span {
    int from, length;  // pixels of the window
};

Span shownSpan(double corner, double image, int window, double scale) {
    const int from = std::max(0, static_cast<int>(std::lround(-corner * scale)));
    const auto end = static_cast<int>(std::lround((image - corner) * scale));
    // Where the centre of the image's last pixel lies: it has its place even when it fills only a part of it.
    const auto last = static_cast<int>(std::floor((image - 0.5 - corner) * scale));
    return {from, std::max(0, std::min(window, std::max(end, last + 1)) - from)};
}

}  // namespace

void ImageViewport::setImageSize(int width, int height) {
    if (width == imageWidth_ && height == imageHeight_) return;
    imageWidth_ = width;
    imageHeight_ = height;
    fit();
}

void ImageViewport::setWindowSize(int width, int height) {
    const ViewPoint centre = toImage(middle());
    windowWidth_ = width;
    windowHeight_ = height;
    if (fitted_) {
        fit();
        return;
    }
    left_ = centre.x + 0.5 - width / (2 * scale_);
    top_ = centre.y + 0.5 - height / (2 * scale_);
    keepInside();
}

double ImageViewport::fittingScale() const {
    if (imageWidth_ <= 0 || imageHeight_ <= 0 || windowWidth_ <= 0 || windowHeight_ <= 0) return 1;
    return std::min(static_cast<double>(windowWidth_) / imageWidth_,
                    static_cast<double>(windowHeight_) / imageHeight_);
}

void ImageViewport::fit() {
    fitted_ = true;
    scale_ = fittingScale();
    keepInside();
}

double ImageViewport::nextScale(int direction) const {
    constexpr double kSame = 1.0001;
    if (direction > 0) {
        const auto* const next = std::find_if(kScales.begin(), kScales.end(),
                                              [this](double scale) { return scale > scale_ * kSame; });
        return next == kScales.end() ? scale_ : *next;
    }
    // Smaller than the whole image shows no more.
    const double smallest = std::min(1.0, fittingScale());
    for (auto scale = kScales.rbegin(); scale != kScales.rend(); ++scale)
        if (*scale * kSame < scale_) return std::max(*scale, smallest);
    return std::min(scale_, smallest);
}

void ImageViewport::zoomTo(double scale, ViewPoint anchor) {
    const ViewPoint under = toImage(anchor);
    scale_ = scale;
    fitted_ = scale == fittingScale() && scale < 1;
    left_ = under.x + 0.5 - anchor.x / scale_;
    top_ = under.y + 0.5 - anchor.y / scale_;
    keepInside();
}

void ImageViewport::pan(double dx, double dy) {
    left_ -= dx / scale_;
    top_ -= dy / scale_;
    keepInside();
}

void ImageViewport::keepInside() {
    left_ = kept(left_, imageWidth_, windowWidth_, scale_);
    top_ = kept(top_, imageHeight_, windowHeight_, scale_);
}

ViewPoint ImageViewport::toImage(ViewPoint window) const {
    return {left_ + window.x / scale_ - 0.5, top_ + window.y / scale_ - 0.5};
}

ViewPoint ImageViewport::toWindow(ViewPoint image) const {
    return {(image.x + 0.5 - left_) * scale_, (image.y + 0.5 - top_) * scale_};
}

ViewWindow ImageViewport::window() const {
    if (imageWidth_ <= 0 || imageHeight_ <= 0 || windowWidth_ <= 0 || windowHeight_ <= 0) return {};
    const Span across = shownSpan(left_, imageWidth_, windowWidth_, scale_);
    const Span down = shownSpan(top_, imageHeight_, windowHeight_, scale_);
    return {.left = std::max(0.0, left_),
            .top = std::max(0.0, top_),
            .scale = scale_,
            .x = across.from,
            .y = down.from,
            .width = across.length,
            .height = down.length};
}

}  // namespace vantrel::imaging
