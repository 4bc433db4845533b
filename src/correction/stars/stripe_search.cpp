#include "correction/stars/stripe_search.h"

#include <algorithm>
#include <cmath>

#include "correction/stars/bright_spot.h"
#include "correction/stars/stripe_peak.h"
#include "platform/errors.h"

namespace vantrel::correction {
namespace {

constexpr double kCertain = 1000;  // the significance where there is no noise to compare with

int nearest(double value) { return static_cast<int>(std::nearbyint(value)); }

/// The working image seen along the stripes: `across` counts through the stripes, `along` through a profile.
struct View {
    const PixelGrid& image;
    StripeDirection direction;
    double at(int across, int along) const {
        return direction == StripeDirection::kColumns ? image.at(across, along) : image.at(along, across);
    }
};

std::vector<double> profileOf(const View& view, int firstPixel, int size, const StripeGrid::Range& range) {
    std::vector<double> profile;
    for (int along = range.from; along <= range.to; ++along) {
        double sum = 0;
        for (int across = firstPixel; across < firstPixel + size; ++across) sum += view.at(across, along);
        profile.push_back(sum);
    }
    return profile;
}

/// The pixel, across the stripes, that the light of the brightest spot lies around.
int brightestPixel(const View& view, const StripeGrid::Range& range, int spot) {
    const bool columns = view.direction == StripeDirection::kColumns;
    const PixelBox within = columns ? PixelBox{0, range.from, view.image.width, range.to + 1}
                                    : PixelBox{range.from, 0, range.to + 1, view.image.height};
    const PixelBox box = brightestSpot(view.image, within, spot);
    double light = 0, moment = 0;
    for (int y = box.top; y < box.bottom; ++y)
        for (int x = box.left; x < box.right; ++x) {
            light += view.image.at(x, y);
            moment += view.image.at(x, y) * (columns ? x : y);
        }
    if (light > 0) return nearest(moment / light);
    return columns ? box.left : box.top;
}

double significanceOf(std::vector<double> peaks, double noise) {
    std::sort(peaks.begin(), peaks.end());
    constexpr std::size_t kFewest = 3;  // stripes for a straight line with something left over
    const std::size_t run = std::max(kFewest, peaks.size() / 2);
    if (run >= peaks.size()) return kCertain;
    if (!(peaks.back() > 0)) return 0;
    const auto n = static_cast<double>(run);
    double meanY = 0;
    for (std::size_t i = 0; i < run; ++i) meanY += peaks[i] / n;
    const double meanX = (n - 1) / 2;
    double sxx = 0, sxy = 0;
    for (std::size_t i = 0; i < run; ++i) {
        const double dx = static_cast<double>(i) - meanX;
        sxx += dx * dx;
        sxy += dx * (peaks[i] - meanY);
    }
    const double slope = sxy / sxx;
    const double darkest = meanY - slope * meanX;
    return noise > 0 ? (peaks.back() - darkest) / noise : kCertain;
}

}  // namespace

StripeGrid::Range StripeGrid::window(int first, int last, double margin) const {
    return {nearest((first + 0.5 - margin) * size - 0.5 + offset),
            nearest((last + 0.5 + margin) * size - 0.5 + offset)};
}

int StripeGrid::stripeOf(int pixel) const {
    return std::clamp(static_cast<int>(std::floor(static_cast<double>(pixel - offset) / size)), 0, count - 1);
}

int stripeSize(int width, int height) {
    const auto along = [](int pixels) { return pixels >= 20 ? pixels / 20 : 1; };
    return std::max(along(width), along(height));
}

StripeGrid centredGrid(int pixels, int size) {
    const int count = pixels / size;
    return {size, count, (pixels - count * size) / 2};
}

StandingOut searchStripes(const PixelGrid& image, StripeDirection direction, const StripeGrid& grid,
                          const StripeGrid::Range& range, int spot, double noise) {
    if (grid.count == 0) throw platform::runTimeError(platform::error_number::kSubscriptOutOfRange);
    const View view = {image, direction};
    StandingOut found;
    std::vector<double> peaks;
    for (int stripe = 0; stripe < grid.count; ++stripe) {
        const auto peak = Peak(profileOf(view, grid.offset + stripe * grid.size, grid.size, range));
        if (!peak) ++found.withoutPeak;
        peaks.push_back(peak.value_or(0));
    }
    const int brightest = grid.stripeOf(brightestPixel(view, range, spot));
    const auto standsOut = [&, half = peaks[static_cast<std::size_t>(brightest)] / 2](int stripe) {
        return stripe >= 0 && stripe < grid.count && peaks[static_cast<std::size_t>(stripe)] > half;
    };
    found.first = found.last = brightest;
    while (standsOut(found.first - 1)) --found.first;
    while (standsOut(found.last + 1)) ++found.last;
    found.significance = significanceOf(std::move(peaks), noise);
    return found;
}

}  // namespace vantrel::correction
