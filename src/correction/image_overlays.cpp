#include "correction/image_overlays.h"

#include <algorithm>
#include <cmath>

#include "platform/image_array.h"
#include "platform/text.h"

namespace vantrel::correction {
namespace {

using platform::ImageArray;

/// The pixels of one mark. Nothing is drawn before all of them are known to lie inside the image.
class Mark {
  public:
    explicit Mark(platform::ImageRef image) : image_(std::move(image)) {}

    /// The pixel nearest to this position (halves to even); outside the image the run-time failure 9.
    void add(double x, double y) {
        const double column = std::nearbyint(x);
        const double row = std::nearbyint(y);
        const auto width = static_cast<double>(image_->width());
        const auto height = static_cast<double>(image_->height());
        if (!(column >= 0 && column < width && row >= 0 && row < height))
            throw platform::runTimeError(platform::error_number::kSubscriptOutOfRange);
        places_.push_back(static_cast<std::size_t>(row) * image_->width() + static_cast<std::size_t>(column));
    }

    /// The marked image. Lets go of the unmarked one, so that the imaging program can drop it without a copy.
    platform::ImageRef drawn(double value) && {
        const platform::ImageRef unmarked = std::move(image_);
        return std::make_shared<ImageArray>(unmarked->withPixels(std::move(places_), value));
    }

  private:
    platform::ImageRef image_;
    std::vector<std::size_t> places_;
};

double NonZero(double value) { return value == 0 ? 4e-100 : value; }

}  // namespace

ImageOverlays::ImageOverlays(OpenImage& image, engine::SettingsPort& settings, engine::LogPort& log)
    : image_(image), settings_(settings), log_(log) {}

int ImageOverlays::lineWidth() const {
    return platform::toInt16(platform::toNumber(settings_.GetSetting("PolarAlign", "CrossHairWidth", "1")));
}

void ImageOverlays::guarded(const char* label, const std::function<void()>& body) {
    if (image_.program() == OpenImage::Program::kNone) return;
    try {
        body();
    } catch (...) {
        log_.AddToLog(platform::errorReport(platform::currentError(), label));
    }
}

void ImageOverlays::CrossHair(const std::optional<engine::PixelPosition>& centre) {
    guarded("Module modComponents Sub CrossHair", [&] {
        const int width = lineWidth();
        const auto access = image_.access();
        const auto [columns, rows] = access.size();
        const int cx = platform::toInt32(centre ? centre->x : columns / 2.0);
        const int cy = platform::toInt32(centre ? centre->y : rows / 2.0);
        const double value = access.markValue();
        Mark mark(access.pixels());
        for (int j = 0; j < width; ++j)
            for (int i = 0; i < columns; ++i) mark.add(i, cy + j);
        for (int i = 0; i < width; ++i)
            for (int j = 0; j < rows; ++j) mark.add(cx + i, j);
        access.replacePixels(std::move(mark).drawn(value));
    });
}

double ImageOverlays::DrawCenteredRectangles(double fraction) {
    const double part = std::clamp(fraction, 0.0, 1.0);
    guarded("Module modComponents Sub DrawCenteredRectangles", [&] {
        const int thicker = lineWidth() - 1;  // closes the lower right corner
        const auto [columns, rows] = image_.access(false).size();
        const int x1 = platform::toInt32((1 - part) * columns / 2);
        const int x2 = platform::toInt32((1 + part) * columns / 2);
        const int y1 = platform::toInt32((1 - part) * rows / 2);
        const int y2 = platform::toInt32((1 + part) * rows / 2);
        DrawLineOnImage(x1, y1, x1, y2);
        DrawLineOnImage(x2, y1, x2, y2 + thicker);
        DrawLineOnImage(x1, y1, x2, y1);
        DrawLineOnImage(x1, y2, x2 + thicker, y2);
    });
    return part;
}

void ImageOverlays::DrawLineOnImage(int x1, int y1, int x2, int y2) {
    guarded("Module modComponents Sub DrawLineOnImage", [&] {
        if (x1 < 0 || y1 < 0 || x2 < 0 || y2 < 0) return;
        const int width = lineWidth();
        const double slope = (y2 - y1) / NonZero(x2 - x1);
        const double intercept = y2 - x2 * slope;
        const bool shallow = std::abs(slope) <= 1;

        const auto access = image_.access();
        const auto [columns, rows] = access.size();
        // CCDSoft's image is not checked here: its array complains when the line leaves it.
        const bool beyond = shallow ? std::max(x1, x2) > columns - 1 : std::max(y1, y2) > rows - 1;
        if (image_.program() == OpenImage::Program::kMaxIm && beyond) return;

        const double value = access.markValue();
        Mark mark(access.pixels());
        if (shallow) {
            for (int x = std::min(x1, x2); x <= std::max(x1, x2); ++x)
                for (int k = 0; k < width; ++k) mark.add(x, x * slope + intercept + k);
        } else {
            const double inverse = NonZero(1 / slope);
            for (int y = std::min(y1, y2); y <= std::max(y1, y2); ++y)
                for (int k = 0; k < width; ++k) mark.add((y - intercept) * inverse + k, y);
        }
        access.replacePixels(std::move(mark).drawn(value));
    });
}

}  // namespace vantrel::correction
