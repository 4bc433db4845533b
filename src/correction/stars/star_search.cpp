#include "correction/stars/star_search.h"

#include <algorithm>
#include <cmath>

#include "correction/stars/bright_spot.h"
#include "correction/stars/defective_lines.h"
#include "correction/stars/star_light.h"

namespace vantrel::correction {
namespace {

constexpr int kSmallestSkyCell = 48;  // stars up to 8 pixels, saturated ones included, cover less than half
constexpr int kStarReach = 24;        // pixels: more than all of these stars are wide

int decimationFor(int width, int height) {
    const int range = std::max(width, height) - 1;
    return range <= 100 ? 1 : range / 100;
}

/// A square of working pixels that holds a whole star wherever it lies on them.
int spotSide(int k) { return std::max(2, (kStarReach + k - 1) / k); }

StripeGrid::Range clipped(StripeGrid::Range range, int pixels) {
    return {std::max(range.from, 0), std::min(range.to, pixels - 1)};
}

}  // namespace

StarSearch::StarSearch(const platform::ImageArray& image, const StarKind& kind, double leastNoise)
    : kind_(kind),
      width_(static_cast<int>(image.width())),
      height_(static_cast<int>(image.height())),
      k_(decimationFor(width_, height_)),
      sky_(image, std::max(kSmallestSkyCell, k_), leastNoise),
      image_(withoutDefectiveLines(image, sky_)),
      working_(decimatedStarLight(image_, sky_, k_)) {
    const int size = stripeSize(working_.width, working_.height);
    if (size == 0) return;
    columns_ = centredGrid(working_.width, size);
    rows_ = centredGrid(working_.height, size);
}

StarSighting StarSearch::run(std::vector<std::string>& log) {
    constexpr int kMostPassedOver = 50;  // spots, pieces of faint tracks among them
    constexpr int kMostGlows = 4;        // that are passed over before the star
    StarSighting nothing;
    int glows = 0;
    for (int passedOver = 0; passedOver < kMostPassedOver && glows < kMostGlows; ++passedOver) {
        const auto spot = brightestSpotStandingOut(log);
        if (!spot) return nothing;
        const auto seed = seedIn(*spot);
        if (seed)
            if (const auto track = trackThrough(image_, sky_, *seed, kind_.longestTrail)) {
                erase(*track);
                continue;
            }
        const auto star = seed ? measureStar(image_, *seed) : std::nullopt;
        if (!star || star->peak < kind_.faintest * star->noise) {
            nothing.tooWeak = true;
            // Bright, but cut off by the edge or by missing pixels.
            if (!star && seed && seed->height > kind_.faintest * sky_.at(seed->x, seed->y).noise)
                return nothing;
            darken(*spot);
            continue;
        }
        if (!isOfKind(*star)) {
            ++glows;
            darken(*star);
            continue;
        }
        return {star, isAtEdge(*star), false};
    }
    nothing.tooWeak = true;
    return nothing;
}

std::optional<PixelBox> StarSearch::brightestSpotStandingOut(std::vector<std::string>& log) const {
    constexpr double kSignificant = 10;   // times the noise over the darkest stripe
    constexpr double kNoiseOfPeak = 0.3;  // what noise leaves of star light, in a smoothed profile
    double significance = 0;
    const auto search = [&](StripeDirection direction, const StripeGrid& grid,
                            const StripeGrid::Range& range) {
        const auto found =
            searchStripes(working_, direction, grid, range, spotSide(k_), kNoiseOfPeak * sky_.typicalNoise());
        log.insert(log.end(), static_cast<std::size_t>(found.withoutPeak), "Error in Peak Subroutine");
        significance = std::max(significance, found.significance);
        return found;
    };
    const auto first = search(StripeDirection::kColumns, columns_, {0, working_.height - 1});
    const auto second = search(StripeDirection::kRows, rows_,
                               clipped(columns_.window(first.first, first.last, 2), working_.width));
    const auto third = search(StripeDirection::kColumns, columns_,
                              clipped(rows_.window(second.first, second.last, 2), working_.height));
    if (significance <= kSignificant) return std::nullopt;

    const auto across = clipped(columns_.window(third.first, third.last, 1), working_.width);
    const auto down = clipped(rows_.window(second.first, second.last, 1), working_.height);
    return brightestSpot(working_, {across.from, down.from, across.to + 1, down.to + 1}, spotSide(k_));
}

std::optional<StarSeed> StarSearch::seedIn(const PixelBox& spot) const {
    const PixelBox region = PixelBox{spot.left * k_, spot.top * k_, spot.right * k_, spot.bottom * k_}
                                .grown(kStarReach)
                                .clipped(width_, height_);
    auto seed = brightestSeed(starLight(image_, sky_, region));
    if (!seed) return seed;
    seed->x += region.left;
    seed->y += region.top;
    return seed;
}

bool StarSearch::isOfKind(const StarMeasurement& star) const {
    return star.halfFluxDiameter >= kind_.narrowest &&
           star.halfFluxDiameter <= (star.isDisc() ? kind_.widestDisc : kind_.widest);
}

bool StarSearch::isAtEdge(const StarMeasurement& star) const {
    const auto isOutermost = [&](double position, const StripeGrid& grid) {
        const double first = (grid.offset + grid.size) * k_ - 0.5;
        const double last = (grid.offset + (grid.count - 1) * grid.size) * k_ - 0.5;
        return grid.count > 2 && (position < first || position >= last);
    };
    return isOutermost(star.x, columns_) || isOutermost(star.y, rows_) || star.x - star.left < 0 ||
           star.x + star.right > width_ - 1 || star.y - star.up < 0 || star.y + star.down > height_ - 1;
}

/// What has been darkened stays dark.
void StarSearch::erase(const Track& track) {
    correction::erase(image_, sky_, track);
    const PixelGrid fresh = decimatedStarLight(image_, sky_, k_);
    for (std::size_t i = 0; i < working_.values.size(); ++i)
        working_.values[i] = std::min(working_.values[i], fresh.values[i]);
}

void StarSearch::darken(const PixelBox& spot) {
    for (int y = spot.top; y < spot.bottom; ++y)
        for (int x = spot.left; x < spot.right; ++x) working_.at(x, y) = 0;
}

/// Within one diameter around its middle.
void StarSearch::darken(const StarMeasurement& glow) {
    for (int y = 0; y < working_.height; ++y)
        for (int x = 0; x < working_.width; ++x)
            if (std::hypot((x + 0.5) * k_ - glow.x, (y + 0.5) * k_ - glow.y) < glow.halfFluxDiameter + k_)
                working_.at(x, y) = 0;
}

}  // namespace vantrel::correction
