#include "imaging/shown_image.h"

#include <algorithm>
#include <cmath>

namespace vantrel::imaging {

ShownImage::ShownImage(OpenDocuments& documents)
    : documents_(documents), following_(documents.onChange([this] {
          if (automatic()) midtone_.reset();
          changed.emit();
      })) {}

platform::ImageRef ShownImage::pixels() const {
    const auto shown = document();
    if (!shown || !shown->pixels || shown->pixels->width() == 0 || shown->pixels->height() == 0)
        return nullptr;
    return shown->pixels;
}

const PixelStatistics& ShownImage::statistics() {
    const platform::ImageRef now = pixels();
    if (!now || measured_.lock() != now) {
        statistics_ = now ? statisticsOf(*now) : PixelStatistics{};
        measured_ = now;
    }
    return statistics_;
}

bool ShownImage::automatic() const { return !document() || !document()->stretch; }

ShownStretch ShownImage::stretch() {
    if (!pixels()) return {};
    const Stretch ends = document()->shownStretch();
    return {ends.min, ends.max, midtone_ ? *midtone_ : automaticMidtone(statistics(), ends.min, ends.max)};
}

void ShownImage::choose(ShownStretch stretch) {
    constexpr double kEdge = 1e-9;
    if (!document()) return;
    // What single precision can just tell apart.
    const double least = 1e-5 * std::max({std::abs(stretch.black), std::abs(stretch.white), 1e-3});
    midtone_ = std::clamp(stretch.midtone, kEdge, 1 - kEdge);
    documents_.setStretch(document(), Stretch{stretch.black, std::max(stretch.white, stretch.black + least)});
}

void ShownImage::beAutomatic() {
    midtone_.reset();
    if (document()) documents_.setStretch(document(), std::nullopt);
}

}  // namespace vantrel::imaging
