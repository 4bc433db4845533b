#include "station/live_pages.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "imaging/image_viewport.h"
#include "imaging/pixel_statistics.h"
#include "imaging/tone_curve.h"
#include "imaging/view_raster.h"
#include "page/network_pages.h"
#include "page/png.h"

namespace vantrel::station {

namespace {

/// The picture in front in the imaging program, small, as pages show it.
class PagePicture {
  public:
    explicit PagePicture(const imaging::OpenDocuments& documents) : documents_(documents) {}

    /// Both refer to this.
    page::ShownPicture source();

  private:
    std::uint64_t number();
    std::string png();

    const imaging::OpenDocuments& documents_;
    platform::ImageRef seen_;
    std::uint64_t number_ = 0;
    std::uint64_t madeOf_ = 0;
    std::string made_;
};

page::ShownPicture PagePicture::source() {
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

class StationPages : public platform::LivePages {
  public:
    StationPages(platform::EventLoop& loop, const imaging::OpenDocuments& documents)
        : picture_(documents), pages_(loop, {.picture = picture_.source()}) {}

    std::unique_ptr<platform::LivePage> open(const std::string& host, int port,
                                             platform::LivePageListener listener) override {
        return pages_.open(host, port, std::move(listener));
    }

  private:
    PagePicture picture_;
    page::NetworkPages pages_;
};

}  // namespace

std::unique_ptr<platform::LivePages> livePages(platform::EventLoop& loop,
                                               const imaging::OpenDocuments& documents) {
    return std::make_unique<StationPages>(loop, documents);
}

}  // namespace vantrel::station
