#include "solver/source_detection.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <numbers>

namespace vantrel::solver {

namespace {

struct Pixel {
    int x = 0, y = 0;
    float smoothed = 0;
    float value = 0;
};
using Pixels = std::vector<Pixel>;

/// Beyond the border there is nothing.
std::vector<float> smoothedRow(const DetectionTask& task, int y) {
    const int width = static_cast<int>(task.width);
    const int half = task.kernelSide / 2;
    std::vector<float> sums(task.width, 0.0F);
    for (int ky = 0; ky < task.kernelSide; ++ky) {
        const int row = y + ky - half;
        if (row < 0 || row >= static_cast<int>(task.height)) continue;
        const float* const from = task.pixels.data() + static_cast<std::size_t>(row) * task.width;
        const float* const weights = task.kernel.data() + ky * task.kernelSide;
        for (int kx = 0; kx < task.kernelSide; ++kx) {
            const float weight = weights[kx];
            const int shift = kx - half;
            const int first = std::max(0, -shift);
            const int end = std::min(width, width - shift);
            for (int x = first; x < end; ++x) sums[static_cast<std::size_t>(x)] += weight * from[x + shift];
        }
    }
    return sums;
}

/// Pixels of the smoothed image above the threshold, in the order of rows.
Pixels pixelsAbove(const DetectionTask& task) {
    const auto threshold = static_cast<float>(task.threshold);
    Pixels above;
    for (int y = 0; y < static_cast<int>(task.height); ++y) {
        const std::vector<float> row = smoothedRow(task, y);
        const float* const values = task.pixels.data() + static_cast<std::size_t>(y) * task.width;
        for (int x = 0; x < static_cast<int>(task.width); ++x)
            if (row[static_cast<std::size_t>(x)] > threshold)
                above.push_back({x, y, row[static_cast<std::size_t>(x)], values[x]});
    }
    return above;
}

/// Numbers that are joined to groups; each group is known by its lowest.
class Groups {
  public:
    explicit Groups(std::size_t count) : above_(count) {
        for (std::size_t i = 0; i < count; ++i) above_[i] = i;
    }
    std::size_t of(std::size_t i) {
        while (above_[i] != i) i = above_[i] = above_[above_[i]];
        return i;
    }
    void join(std::size_t a, std::size_t b) {
        a = of(a);
        b = of(b);
        above_[std::max(a, b)] = std::min(a, b);
    }

  private:
    std::vector<std::size_t> above_;
};

/// Parts of pixels that touch each other, corners included. Pixels come in the order of rows, and leave in
/// it.
std::vector<Pixels> connected(const Pixels& pixels) {
    Groups groups(pixels.size());
    std::size_t above = 0;  // the first pixel of the row before that may touch
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const Pixel& at = pixels[i];
        if (i > 0 && pixels[i - 1].y == at.y && pixels[i - 1].x == at.x - 1) groups.join(i, i - 1);
        while (above < i &&
               (pixels[above].y < at.y - 1 || (pixels[above].y == at.y - 1 && pixels[above].x < at.x - 1)))
            ++above;
        for (std::size_t j = above; j < i && pixels[j].y == at.y - 1 && pixels[j].x <= at.x + 1; ++j)
            groups.join(i, j);
    }
    constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();
    std::vector<std::size_t> places(pixels.size(), kNone);
    std::vector<Pixels> parts;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        std::size_t& place = places[groups.of(i)];
        if (place == kNone) {
            place = parts.size();
            parts.emplace_back();
        }
        parts[place].push_back(pixels[i]);
    }
    return parts;
}

Pixels brighterThan(const Pixels& pixels, float threshold) {
    Pixels above;
    std::copy_if(pixels.begin(), pixels.end(), std::back_inserter(above),
                 [&](const Pixel& pixel) { return pixel.smoothed > threshold; });
    return above;
}

/// Barycentre and second moments of the smoothed light.
struct Shape {
    double x = 0, y = 0;
    double xx = 0, yy = 0, xy = 0;
    bool single = false;  ///< too small to have a shape
};

/// Summed from a pixel of the object, so that moments aren't small differences of large numbers.
Shape shapeOf(const Pixels& pixels) {
    const Pixel& corner = pixels.front();
    double sum = 0;
    Shape shape;
    for (const Pixel& pixel : pixels) {
        const auto light = static_cast<double>(pixel.smoothed);
        const double x = pixel.x - corner.x;
        const double y = pixel.y - corner.y;
        sum += light;
        shape.x += light * x;
        shape.y += light * y;
        shape.xx += light * x * x;
        shape.yy += light * y * y;
        shape.xy += light * x * y;
    }
    shape.x /= sum;
    shape.y /= sum;
    shape.xx = shape.xx / sum - shape.x * shape.x;
    shape.yy = shape.yy / sum - shape.y * shape.y;
    shape.xy = shape.xy / sum - shape.x * shape.y;
    constexpr double kPixel = 1.0 / 12;  // the second moment of a pixel itself
    if (shape.xx * shape.yy - shape.xy * shape.xy < kPixel * kPixel) {
        shape.xx += kPixel;
        shape.yy += kPixel;
        shape.single = true;
    }
    shape.x += corner.x;
    shape.y += corner.y;
    return shape;
}

/// A peak that stands out of an object: its pixels above the level at which it parts.
struct Peak {
    Pixels pixels;
    float level = 0;
};

/// An object taken apart at rising levels.
class Parting {
  public:
    Parting(const Pixels& object, float base, int minimumPixels)
        : base_(base), fewest_(static_cast<std::size_t>(minimumPixels)) {
        float top = base;
        double light = 0;
        for (const Pixel& pixel : object) {
            top = std::max(top, pixel.smoothed);
            light += static_cast<double>(pixel.smoothed);
        }
        least_ = light * kDeblendContrast;
        ratio_ = static_cast<double>(top) / static_cast<double>(base);
        part(object, 1);
    }

    /// None when it is one source.
    std::vector<Peak> take() { return std::move(peaks_); }

  private:
    float level(int step) const {
        return static_cast<float>(static_cast<double>(base_) *
                                  std::pow(ratio_, static_cast<double>(step) / kDeblendLevels));
    }

    bool standsOut(const Pixels& pixels, float level) const {
        double light = 0;
        for (const Pixel& pixel : pixels)
            light += static_cast<double>(pixel.smoothed) - static_cast<double>(level);
        return light > least_;
    }

    /// Whether the pixels come apart at this step or a higher one.
    bool part(const Pixels& pixels, int step) {
        if (step >= kDeblendLevels) return false;
        const float at = level(step);
        std::vector<Pixels> parts = connected(brighterThan(pixels, at));
        std::erase_if(parts, [&](const Pixels& one) { return one.size() < fewest_; });
        std::vector<bool> parted;
        parted.reserve(parts.size());
        for (const Pixels& one : parts) parted.push_back(part(one, step + 1));
        const bool any = std::find(parted.begin(), parted.end(), true) != parted.end();
        const auto strong =
            std::count_if(parts.begin(), parts.end(), [&](const Pixels& one) { return standsOut(one, at); });
        if (strong < 2) return any;
        for (std::size_t i = 0; i < parts.size(); ++i)
            if (!parted[i] && standsOut(parts[i], at)) peaks_.push_back({std::move(parts[i]), at});
        return true;
    }

    float base_;
    std::size_t fewest_;
    double least_ = 0;
    double ratio_ = 1;
    std::vector<Peak> peaks_;
};

/// The light of a peak further out, were it a gaussian.
class Skirt {
  public:
    explicit Skirt(const Peak& peak) : shape_(shapeOf(peak.pixels)) {
        float top = 0;
        for (const Pixel& pixel : peak.pixels) top = std::max(top, pixel.smoothed);
        const double spread = std::sqrt(std::max(1e-6, shape_.xx * shape_.yy - shape_.xy * shape_.xy));
        // The height of the gaussian that has so many pixels above the level.
        height_ =
            std::min(4.0 * static_cast<double>(top),
                     static_cast<double>(peak.level) *
                         std::exp(static_cast<double>(peak.pixels.size()) / (2 * std::numbers::pi * spread)));
    }

    double at(int x, int y) const {
        const double dx = x - shape_.x;
        const double dy = y - shape_.y;
        const double det = std::max(1e-6, shape_.xx * shape_.yy - shape_.xy * shape_.xy);
        return height_ *
               std::exp(-(shape_.yy * dx * dx - 2 * shape_.xy * dx * dy + shape_.xx * dy * dy) / (2 * det));
    }
    double distance(int x, int y) const { return std::hypot(x - shape_.x, y - shape_.y); }

  private:
    Shape shape_;
    double height_ = 0;
};

/// Each pixel of the object goes to the peak whose pixel it is, or whose light it has most of.
std::vector<Pixels> gathered(const Pixels& object, const std::vector<Peak>& peaks) {
    const std::vector<Skirt> skirts(peaks.begin(), peaks.end());
    const auto before = [](const Pixel& a, const Pixel& b) { return a.y < b.y || (a.y == b.y && a.x < b.x); };
    std::vector<Pixels> parts(peaks.size());
    for (const Pixel& pixel : object) {
        std::size_t best = 0;
        bool own = false;
        for (std::size_t i = 0; i < peaks.size() && !own; ++i) {
            own = std::binary_search(peaks[i].pixels.begin(), peaks[i].pixels.end(), pixel, before);
            if (own) best = i;
        }
        for (std::size_t i = 1; i < peaks.size() && !own; ++i) {
            const double light = skirts[i].at(pixel.x, pixel.y);
            const double most = skirts[best].at(pixel.x, pixel.y);
            const bool nearer =
                skirts[i].distance(pixel.x, pixel.y) < skirts[best].distance(pixel.x, pixel.y);
            if (light > most || (light + most < 1e-30 && nearer)) best = i;
        }
        parts[best].push_back(pixel);
    }
    return parts;
}

Source sourceOf(const Pixels& pixels, const DetectionTask& task) {
    const Shape shape = shapeOf(pixels);
    const double mean = (shape.xx + shape.yy) / 2;
    const double half = std::hypot((shape.xx - shape.yy) / 2, shape.xy);
    Source source;
    source.x = shape.x;
    source.y = shape.y;
    source.peak = -std::numeric_limits<double>::max();
    source.longSigma = std::sqrt(mean + half);
    source.sigma = std::sqrt(source.longSigma * std::sqrt(std::max(0.0, mean - half)));
    const double angle =
        shape.xx == shape.yy ? std::numbers::pi / 4 : std::atan2(2 * shape.xy, shape.xx - shape.yy) / 2;
    source.angleDeg = angle * 180 / std::numbers::pi;
    source.pixels = static_cast<int>(pixels.size());
    const int right = static_cast<int>(task.width) - 1;
    const int bottom = static_cast<int>(task.height) - 1;
    for (const Pixel& pixel : pixels) {
        source.flux += static_cast<double>(pixel.value);
        source.peak = std::max(source.peak, static_cast<double>(pixel.value));
        source.cut = source.cut || pixel.x == 0 || pixel.y == 0 || pixel.x == right || pixel.y == bottom;
    }
    return source;
}

}  // namespace

std::optional<std::vector<Source>> detectSources(const DetectionTask& task) {
    const Pixels above = pixelsAbove(task);
    std::vector<Source> sources;
    for (const Pixels& object : connected(above)) {
        if (object.size() > kMostDetectedPixels) return std::nullopt;
        if (object.size() < static_cast<std::size_t>(task.minimumPixels)) continue;
        const auto peaks = Parting(object, static_cast<float>(task.threshold), task.minimumPixels).take();
        if (peaks.empty()) {
            sources.push_back(sourceOf(object, task));
            continue;
        }
        for (const Pixels& part : gathered(object, peaks)) sources.push_back(sourceOf(part, task));
    }
    return sources;
}

}  // namespace vantrel::solver
