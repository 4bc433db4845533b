#include "correction/stars/brightest_star.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "correction/stars/bright_spot.h"
#include "correction/stars/sky_level.h"
#include "correction/stars/star_light.h"
#include "correction/stars/star_measurement.h"
#include "correction/stars/star_seed.h"
#include "correction/stars/stripe_search.h"
#include "platform/errors.h"

namespace vantrel::correction {
namespace {

using Failure = BrightestStar::Failure;

constexpr double kSignificant = 10;
constexpr int kSmallestSkyCell = 48;  // stars up to 8 pixels, saturated ones included, cover less than half
constexpr int kStarReach = 24;        // pixels: more than all of these stars are wide

int decimationFor(int width, int height) {
    const int range = std::max(width, height) - 1;
    return range <= 100 ? 1 : range / 100;
}

/// A failure that the search ends with.
struct Ended {
    Failure failure;
    const char* text;
};

/// The story of one search, with what its steps hand on.
class Search {
  public:
    Search(const platform::ImageArray& image, std::vector<std::string>& log) : image_(image), log_(log) {
        if (image.width() == 0 || image.height() == 0)
            throw platform::runTimeError(platform::error_number::kSubscriptOutOfRange);
    }

    StarMeasurement run() {
        const int size = stripeSize(width_ / k_, height_ / k_);
        if (size == 0) throw Ended{Failure::kNoStripes, "Error in modHFR Sub BrightestStar3"};
        const SkyLevel sky(image_, std::max(kSmallestSkyCell, k_));
        PixelGrid working = decimatedStarLight(image_, sky, k_);
        for (int glows = 0; glows < kMostGlows; ++glows) {
            const StarBox box = findBox(working, size, sky.typicalNoise());
            const StarMeasurement star = measured(working, box, sky);
            if (star.halfFluxDiameter > kWidestStar) {
                darken(working, star);
                continue;
            }
            if (star.peak < kFaintest * star.noise || atEdge(star, box)) tooWeak();
            return star;
        }
        tooWeak();
    }

  private:
    /// What a centre needs to be good to half a pixel: its error is 0.8 of the noise over the peak.
    static constexpr double kFaintest = 7.5;
    static constexpr double kWidestStar =
        45;                               // half-flux diameter, far out of focus; wider is a nebula's glow
    static constexpr int kMostGlows = 4;  // that are passed over before the star

    struct StarBox {
        PixelBox pixels;  // of the working image
        StripeGrid columns, rows;
    };

    [[noreturn]] static void tooWeak() {
        throw Ended{Failure::kEdgeOrWeak, "Star is too close to frame edge or is too weak"};
    }

    /// A square that holds a whole star wherever it lies on the working pixels.
    int spotSide() const { return std::max(2, (kStarReach + k_ - 1) / k_); }

    StarBox findBox(const PixelGrid& working, int size, double noise) {
        const StripeGrid columns = centredGrid(working.width, size);
        const StripeGrid rows = centredGrid(working.height, size);
        constexpr double kNoiseOfPeak = 0.3;  // what noise leaves of star light, in a smoothed profile
        const auto search = [&](StripeDirection direction, const StripeGrid& grid,
                                const StripeGrid::Range& range) {
            const auto found =
                searchStripes(working, direction, grid, range, spotSide(), kNoiseOfPeak * noise);
            log_.insert(log_.end(), static_cast<std::size_t>(found.withoutPeak), "Error in Peak Subroutine");
            return found;
        };
        const auto clipped = [](StripeGrid::Range range, int pixels) {
            return StripeGrid::Range{std::max(range.from, 0), std::min(range.to, pixels - 1)};
        };
        const auto first = search(StripeDirection::kColumns, columns, {0, working.height - 1});
        const auto second = search(StripeDirection::kRows, rows,
                                   clipped(columns.window(first.first, first.last, 2), working.width));
        const auto third = search(StripeDirection::kColumns, columns,
                                  clipped(rows.window(second.first, second.last, 2), working.height));
        if (std::max({first.significance, second.significance, third.significance}) <= kSignificant)
            throw Ended{Failure::kNoStar, "No star found"};

        const auto across = clipped(columns.window(third.first, third.last, 1), working.width);
        const auto down = clipped(rows.window(second.first, second.last, 1), working.height);
        return {{across.from, down.from, across.to + 1, down.to + 1}, columns, rows};
    }

    StarMeasurement measured(const PixelGrid& working, const StarBox& box, const SkyLevel& sky) const {
        const PixelBox spot = brightestSpot(working, box.pixels, spotSide());
        const PixelBox region = PixelBox{spot.left * k_, spot.top * k_, spot.right * k_, spot.bottom * k_}
                                    .grown(kStarReach)
                                    .clipped(width_, height_);
        auto seed = brightestSeed(starLight(image_, sky, region));
        if (!seed) tooWeak();
        seed->x += region.left;
        seed->y += region.top;
        const auto star = measureStar(image_, *seed);
        if (!star) tooWeak();
        return *star;
    }

    /// Takes the light within one diameter around its middle out of the working image.
    void darken(PixelGrid& working, const StarMeasurement& glow) const {
        for (int y = 0; y < working.height; ++y)
            for (int x = 0; x < working.width; ++x)
                if (std::hypot((x + 0.5) * k_ - glow.x, (y + 0.5) * k_ - glow.y) < glow.halfFluxDiameter + k_)
                    working.at(x, y) = 0;
    }

    /// True when the star lies in an outermost stripe, or its light is seen as far as the frame goes.
    bool atEdge(const StarMeasurement& star, const StarBox& box) const {
        const auto outermost = [&](double position, const StripeGrid& grid) {
            const double first = (grid.offset + grid.size) * k_ - 0.5;
            const double last = (grid.offset + (grid.count - 1) * grid.size) * k_ - 0.5;
            return grid.count > 2 && (position < first || position >= last);
        };
        return outermost(star.x, box.columns) || outermost(star.y, box.rows) || star.x - star.left < 0 ||
               star.x + star.right > width_ - 1 || star.y - star.up < 0 || star.y + star.down > height_ - 1;
    }

    const platform::ImageArray& image_;
    std::vector<std::string>& log_;
    int width_ = static_cast<int>(image_.width());
    int height_ = static_cast<int>(image_.height());
    int k_ = decimationFor(width_, height_);
};

std::int32_t asFlux(double flux) {
    constexpr double kMost = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::clamp(std::nearbyint(flux), 0.0, kMost));
}

}  // namespace

BrightestStar BrightestStar3(const platform::ImageArray& image) {
    BrightestStar result;
    const auto fail = [&](Failure failure, const char* text) {
        result.failure = failure;
        result.noStar = true;
        result.edgeOrWeak = failure == Failure::kEdgeOrWeak;
        result.log.emplace_back(text);
    };
    try {
        const StarMeasurement star = Search(image, result.log).run();
        if (star.flux < 0) {
            result.failure = Failure::kNoLight;
            return result;
        }
        result.x = star.x;
        result.y = star.y;
        result.hfd = star.halfFluxDiameter;
        result.size2 = std::min(star.left + star.right, star.up + star.down) / 2.0;
        result.flux = asFlux(star.flux);
    } catch (const Ended& ended) {
        fail(ended.failure, ended.text);
    } catch (const std::exception&) {
        fail(Failure::kNotMeasurable, "Can not measure HFD for this image.");
    }
    return result;
}

}  // namespace vantrel::correction
