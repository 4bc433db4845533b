#include "station/page_picture.h"

#include <algorithm>

#include "imaging/image_viewport.h"
#include "imaging/pixel_statistics.h"
#include "imaging/tone_curve.h"
#include "imaging/view_raster.h"
#include "page/png.h"

namespace vantrel::station {

page::PictureSource PagePicture::source() {
    return {[this] { return number(); }, [this] { return png(); }};
}

/// It holds the picture that it has seen, so that no other can come to lie where that one was.
std::uint64_t PagePicture::number() {
    const auto document = documents_.current();
    if (!document) return 0;
    if (document->pixels != seen_) {
        seen_ = document->pixels;
        ++number_;
    }
    return number_;
}

/// Made once, whoever asks.
std::string PagePicture::png() {
    if (number() == 0) return {};
    if (madeOf_ == number_) return made_;
    constexpr int kSide = 480;  // pixels
    const auto document = documents_.current();
    const platform::ImageArray& image = *document->pixels;
    imaging::ImageViewport viewport;
    viewport.setImageSize(static_cast<int>(image.width()), static_cast<int>(image.height()));
    viewport.setWindowSize(kSide, kSide);
    const imaging::ViewWindow window = viewport.window();
    const auto statistics = imaging::statisticsOf(image);
    const imaging::Stretch& stretch = document->shownStretch();
    const imaging::ToneCurve curve(stretch.min, stretch.max,
                                   imaging::automaticMidtone(statistics, stretch.min, stretch.max));
    const imaging::ViewRaster raster = imaging::rasterOf(image, window, statistics);
    std::vector<std::uint8_t> pixels(raster.values.size());
    std::ranges::transform(raster.values, pixels.begin(), [&](float value) { return curve.at(value); });
    made_ = page::pngOf(raster.width, raster.height, pixels);
    madeOf_ = number_;
    return made_;
}

}  // namespace vantrel::station
