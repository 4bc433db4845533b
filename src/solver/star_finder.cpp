#include "solver/star_finder.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

#include "fits/fits_image.h"
#include "sky/vector3.h"
#include "solver/image_reduction.h"
#include "solver/source_extractor.h"
#include "solver/star_centroids.h"

namespace vantrel::solver {

namespace {

constexpr double kFoundErrorBins = 0.3;     // of sources that can't be measured in the whole image
constexpr double kGrainOfTrails = 1.0 / 3;  // the middle of a trail is known to a twentieth of its length
constexpr std::size_t kBrightest = 30;      // stars that tell what all look like

/// The value that such a share of them lies below.
double valueAt(double share, std::vector<double> values) {
    if (values.empty()) return 0;
    const auto at =
        values.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

double middleOf(std::vector<double> values) { return valueAt(0.5, std::move(values)); }

/// The brightest that have a shape.
std::vector<Source> shapedOnes(std::span<const Source> sources) {
    std::vector<Source> shaped;
    for (const Source& source : sources.first(std::min(sources.size(), kBrightest)))
        if (source.sigma > 0) shaped.push_back(source);
    return shaped;
}

/// In bins.
double typicalSigma(const std::vector<Source>& shaped) {
    std::vector<double> sigmas;
    sigmas.reserve(shaped.size());
    for (const Source& source : shaped) sigmas.push_back(source.sigma);
    return shaped.empty() ? 1 : middleOf(sigmas);
}

/// In bins. A line of light of length L drawn by a gaussian spreads by L^2 / 12 more along than across.
StarLook lookOf(const std::vector<Source>& shaped) {
    constexpr double kSigmasOfWidth = 2.3548;  // 2 sqrt(2 ln 2), of a gaussian
    constexpr double kDrawnOut = 1.5;          // axes' ratio
    constexpr double kAllAlike = 0.75;  // mean of their directions, as share of what it were if all were one
    std::vector<double> widths, ratios, trails;
    double x = 0, y = 0;
    for (const Source& source : shaped) {
        const double across = source.sigma * source.sigma / source.longSigma;
        widths.push_back(kSigmasOfWidth * across);
        ratios.push_back(source.longSigma / across);
        trails.push_back(
            std::sqrt(12 * std::max(0.0, source.longSigma * source.longSigma - across * across)));
        x += std::cos(2 * source.angleDeg * sky::kDegree);
        y += std::sin(2 * source.angleDeg * sky::kDegree);
    }
    StarLook look{.width = middleOf(widths)};
    const bool alike = std::hypot(x, y) > kAllAlike * static_cast<double>(shaped.size());
    if (shaped.size() < 3 || !alike || middleOf(ratios) < kDrawnOut) return look;
    look.trail = valueAt(0.8, trails);  // most of the others are broken
    const double angle = std::atan2(y, x) / 2 / sky::kDegree;
    look.trailDeg = angle < 0 ? angle + 180 : angle;
    return look;
}

std::vector<Source> sourcesOf(const ReducedImage& image, const StarSettings& settings) {
    const auto binning = static_cast<double>(image.binning);
    const double minimumBins = std::ceil(settings.minimumSize / (binning * binning));
    return extractSources(image.pixels, image.width, image.height,
                          {.sigma = std::max(settings.sigmaAboveMean, 1.0),
                           .minimumPixels = static_cast<int>(std::clamp(minimumBins, 1.0, 10'000.0)),
                           .filterFwhm = settings.filterFwhmPixels / binning,
                           .atMost = settings.atMost});
}

/// Each bin of four by four, of the same noise.
ReducedImage coarserThan(const ReducedImage& fine) {
    constexpr std::size_t kSide = 4;
    ReducedImage coarse;
    coarse.width = fine.width / kSide;
    coarse.height = fine.height / kSide;
    coarse.binning = fine.binning * kSide;
    coarse.mosaic = fine.mosaic;
    coarse.noise = fine.noise * kSide;
    coarse.pixels.assign(coarse.width * coarse.height, 0);
    for (std::size_t y = 0; y < coarse.height * kSide; ++y) {
        const float* row = fine.pixels.data() + y * fine.width;
        float* sums = coarse.pixels.data() + y / kSide * coarse.width;
        for (std::size_t x = 0; x < coarse.width; ++x)
            for (std::size_t i = 0; i < kSide; ++i) sums[x] += row[x * kSide + i] / kSide;
    }
    return coarse;
}

/// Whether bright sources stand so close together that they may be pieces, or there are hardly any.
bool mayBePieces(std::span<const Source> sources) {
    constexpr std::size_t kFew = 10;  // sources
    constexpr double kCloseBins = 16;
    const auto brightest = sources.first(std::min(sources.size(), kBrightest));
    std::size_t close = 0;
    for (const Source& source : brightest)
        close += std::any_of(brightest.begin(), brightest.end(), [&](const Source& other) {
            return &other != &source && std::hypot(other.x - source.x, other.y - source.y) < kCloseBins;
        });
    return sources.size() < kFew || 3 * close > brightest.size();
}

/// What is left of an uneven sky shows as wide faint sources in coarse bins.
bool isFaint(const Source& source) {
    constexpr double kLeastPeak = 4;  // in units of the noise
    return source.peak < kLeastPeak;
}

/// Whether no source of the fine image has two thirds of the light of the coarse image's sources that it lies
/// in.
bool arePieces(std::span<const Source> fine, std::span<const Source> coarse, double side) {
    constexpr std::size_t kFewest = 5;  // sources whose shares tell anything
    if (coarse.size() < kFewest) return false;
    std::vector<double> shares;
    for (const Source& whole : coarse.first(std::min(coarse.size(), kBrightest))) {
        double most = 0;
        for (const Source& piece : fine) {
            const double x = (piece.x + 0.5) / side - 0.5, y = (piece.y + 0.5) / side - 0.5;
            if (std::hypot(x - whole.x, y - whole.y) < 2.5 * std::max(1.0, whole.longSigma))
                most = std::max(most, piece.flux);
        }
        shares.push_back(most / (whole.flux * side));
    }
    return middleOf(shares) < 0.65;
}

}  // namespace

StarList findStars(const fits::FitsImage& image, const StarSettings& settings) {
    ReducedImage reduced = reduceImage(image, {.removeHotPixels = settings.removeHotPixels});
    auto sources = sourcesOf(reduced, settings);
    if (mayBePieces(sources)) {
        ReducedImage coarse = coarserThan(reduced);
        auto whole = sourcesOf(coarse, settings);
        std::vector<Source> telling = whole;
        std::erase_if(telling, isFaint);
        const bool drawnOut = lookOf(shapedOnes(telling)).trail > 0;
        const auto coarser = coarse.binning / reduced.binning;
        if (drawnOut || arePieces(sources, telling, static_cast<double>(coarser))) {
            reduced = std::move(coarse);
            sources = std::move(whole);
        }
    }
    const auto binning = static_cast<double>(reduced.binning);

    const auto shaped = shapedOnes(sources);
    StarList list{.stars = {}, .look = lookOf(shaped)};
    list.look.width *= binning;
    list.look.trail *= binning;
    list.grain = std::max(binning, kGrainOfTrails * list.look.trail);
    list.stars.reserve(sources.size());
    for (const Source& source : sources) {
        const ImageStar star{(source.x + 0.5) * binning - 0.5, (source.y + 0.5) * binning - 0.5,
                             source.flux * reduced.noise};
        if (star.flux >= settings.minimumBrightness) list.stars.push_back(star);
    }
    list.stars = measuredStars(image, std::move(list.stars),
                               {.sigma = typicalSigma(shaped) * binning,
                                .grain = reduced.mosaic ? 2U : 1U,
                                .removeHotPixels = settings.removeHotPixels,
                                .foundError = kFoundErrorBins * binning});
    const double border = settings.exclusionBorder;
    const double right = static_cast<double>(image.width()) - 1 - border;
    const double bottom = static_cast<double>(image.height()) - 1 - border;
    std::erase_if(list.stars, [&](const ImageStar& star) {
        return star.x < border || star.x > right || star.y < border || star.y > bottom;
    });
    return list;
}

}  // namespace vantrel::solver
