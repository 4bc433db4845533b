#include "correction/stars/star_light.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

namespace vantrel::correction {
namespace {

constexpr double kNeighbourCounts = 2.5;       // deviations above the sky
constexpr double kHighestOverNeighbour = 3.5;  // for a star of 1.5 pixels in the middle of a pixel

template <typename Pixel>
class StarLight {
  public:
    StarLight(const Pixel* pixels, const platform::ImageArray& image, const SkyLevel& sky)
        : pixels_(pixels),
          width_(static_cast<int>(image.width())),
          height_(static_cast<int>(image.height())),
          sky_(sky) {}

    double of(int x, int y) const {
        const auto [level, noise] = sky_.at(x, y);
        const double height = value(x, y) - level - kStandsOut * noise;
        if (!(height > 0)) return 0;
        const double support = secondNeighbour(x, y) - level - kNeighbourCounts * noise;
        return std::min(height, kHighestOverNeighbour * std::max(0.0, support));
    }

    PixelGrid decimated(int k) const {
        PixelGrid sums(width_ / k, height_ / k);
        for (int top = 0; top < sums.height * k; top += kBandRows)
            addBand(sums, k, {0, top, sums.width * k, std::min(top + kBandRows, sums.height * k)});
        return sums;
    }

  private:
    static constexpr int kBandRows = 8;  // whose sky is computed at a time
    static constexpr int kChunk = 32;    // columns that are compared with one threshold

    static constexpr double kNone = std::numeric_limits<double>::lowest();

    /// kNone for pixels without a value.
    double value(int x, int y) const {
        const auto pixel = static_cast<double>(*at(x, y));
        if constexpr (std::is_floating_point_v<Pixel>)
            if (!std::isfinite(pixel)) return kNone;
        return pixel;
    }
    const Pixel* at(int x, int y) const {
        return pixels_ + static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + x;
    }

    double secondNeighbour(int x, int y) const {
        const double left = x > 0 ? value(x - 1, y) : kNone;
        const double right = x + 1 < width_ ? value(x + 1, y) : kNone;
        const double above = y > 0 ? value(x, y - 1) : kNone;
        const double below = y + 1 < height_ ? value(x, y + 1) : kNone;
        return std::max(std::min(std::max(left, right), std::max(above, below)),
                        std::max(std::min(left, right), std::min(above, below)));
    }

    double lowestThreshold(const PixelBox& box) const {
        double lowest = std::numeric_limits<double>::max();
        for (const int y : {box.top, box.bottom - 1})
            for (const int x : {box.left, box.right - 1}) {
                const auto [level, noise] = sky_.at(x, y);
                lowest = std::min(lowest, level + kStandsOut * noise);
            }
        return lowest;
    }

    void addBand(PixelGrid& sums, int k, const PixelBox& band) const {
        std::vector<double> thresholds;
        for (int left = 0; left < band.right; left += kChunk)
            thresholds.push_back(
                lowestThreshold({left, band.top, std::min(left + kChunk, band.right), band.bottom}));
        for (int y = band.top; y < band.bottom; ++y)
            for (std::size_t i = 0; i < thresholds.size(); ++i) {
                const int left = static_cast<int>(i) * kChunk;
                const int right = std::min(left + kChunk, band.right);
                const double brightest = right - left == kChunk ? brightestOfChunk(at(left, y))
                                                                : brightestOf(at(left, y), right - left);
                if (brightest > thresholds[i]) addChunk(sums, k, y, left, right, thresholds[i]);
            }
    }

    void addChunk(PixelGrid& sums, int k, int y, int left, int right, double threshold) const {
        for (int x = left; x < right; ++x)
            if (value(x, y) > threshold) sums.at(x / k, y / k) += of(x, y);
    }

    /// A loop of fixed length, which compilers turn into a few vector instructions.
    static double brightestOfChunk(const Pixel* first) { return brightestOf(first, kChunk); }

    /// Passes over what isn't a number.
    static double brightestOf(const Pixel* first, int count) {
        Pixel brightest = std::numeric_limits<Pixel>::lowest();
        for (int i = 0; i < count; ++i) brightest = first[i] > brightest ? first[i] : brightest;
        return static_cast<double>(brightest);
    }

    const Pixel* pixels_;
    int width_;
    int height_;
    const SkyLevel& sky_;
};

template <typename Use>
PixelGrid withStarLight(const platform::ImageArray& image, const SkyLevel& sky, Use&& use) {
    return std::visit([&](const auto& pixels) { return use(StarLight(pixels.data(), image, sky)); },
                      image.pixels());
}

}  // namespace

PixelGrid starLight(const platform::ImageArray& image, const SkyLevel& sky, const PixelBox& box) {
    return withStarLight(image, sky, [&](const auto& light) {
        PixelGrid grid(box.width(), box.height());
        for (int y = 0; y < grid.height; ++y)
            for (int x = 0; x < grid.width; ++x) grid.at(x, y) = light.of(box.left + x, box.top + y);
        return grid;
    });
}

PixelGrid decimatedStarLight(const platform::ImageArray& image, const SkyLevel& sky, int k) {
    return withStarLight(image, sky, [&](const auto& light) { return light.decimated(k); });
}

}  // namespace vantrel::correction
