#include "solver/star_finder.h"

#include <algorithm>
#include <cmath>

#include "fits/fits_image.h"
#include "solver/image_reduction.h"
#include "solver/source_extractor.h"

namespace vantrel::solver {

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
    const double right = static_cast<double>(image.width()) - 1 - settings.exclusionBorder;
    const double bottom = static_cast<double>(image.height()) - 1 - settings.exclusionBorder;
    for (const Source& source : sources) {
        const ImageStar star{(source.x + 0.5) * binning - 0.5, (source.y + 0.5) * binning - 0.5,
                             source.flux * reduced.noise};
        if (star.flux < settings.minimumBrightness || star.x < settings.exclusionBorder || star.x > right ||
            star.y < settings.exclusionBorder || star.y > bottom) {
            continue;
        }
        list.stars.push_back(star);
    }
    return list;
}

}  // namespace vantrel::solver
