#include "solver/star_finder.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

#include "fits/fits_image.h"
#include "solver/image_reduction.h"
#include "solver/source_extractor.h"
#include "solver/star_centroids.h"

namespace vantrel::solver {

namespace {

constexpr double kFoundErrorBins = 0.3;

/// The middle one of the brightest, in bins.
double typicalSigma(std::span<const Source> sources) {
    constexpr std::size_t kBrightest = 30;
    std::vector<double> sigmas;
    for (const Source& source : sources.first(std::min(sources.size(), kBrightest)))
        if (source.sigma > 0) sigmas.push_back(source.sigma);
    if (sigmas.empty()) return 1;
    const auto middle = sigmas.begin() + static_cast<std::ptrdiff_t>(sigmas.size() / 2);
    std::nth_element(sigmas.begin(), middle, sigmas.end());
    return *middle;
}

}  // namespace

StarList findStars(const fits::FitsImage& image, const StarSettings& settings) {
    const ReducedImage reduced = reduceImage(image, {.removeHotPixels = settings.removeHotPixels});
    const auto binning = static_cast<double>(reduced.binning);
    const double minimumBins = std::ceil(settings.minimumSize / (binning * binning));
    const auto sources =
        extractSources(reduced.pixels, reduced.width, reduced.height,
                       {.sigma = std::max(settings.sigmaAboveMean, 1.0),
                        .minimumPixels = static_cast<int>(std::clamp(minimumBins, 1.0, 10'000.0)),
                        .filterFwhm = settings.filterFwhmPixels / binning,
                        .atMost = settings.atMost});

    StarList list{{}, binning};
    list.stars.reserve(sources.size());
    for (const Source& source : sources) {
        const ImageStar star{(source.x + 0.5) * binning - 0.5, (source.y + 0.5) * binning - 0.5,
                             source.flux * reduced.noise};
        if (star.flux >= settings.minimumBrightness) list.stars.push_back(star);
    }
    list.stars = measuredStars(image, std::move(list.stars),
                               {.sigma = typicalSigma(sources) * binning,
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
