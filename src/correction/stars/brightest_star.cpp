#include "correction/stars/brightest_star.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "correction/stars/coarse_image.h"
#include "correction/stars/star_search.h"
#include "platform/errors.h"

namespace vantrel::correction {
namespace {

using Failure = BrightestStar::Failure;

/// Half-flux diameter, pixels, far out of focus; what is wider is a nebula's glow, or a disc.
constexpr double kWidest = 45;

/// A failure that the search ends with.
struct Ended {
    Failure failure;
    const char* text;
};

/// Its centre needs that height to be good to half a pixel: its error is 0.8 of the noise over the peak.
constexpr StarKind kSharpStar = {
    .longestTrail = 64, .narrowest = 0, .widest = kWidest, .widestDisc = kWidest, .faintest = 7.5};

/// In coarse pixels; the sharp look sees smaller ones better.
constexpr StarKind kDisc = {.longestTrail = 64 / kCoarse,
                            .narrowest = 12.0 / kCoarse,
                            .widest = kWidest / kCoarse,
                            .widestDisc = 180.0 / kCoarse,
                            .faintest = 5};

/// A measurement in coarse pixels, in the frame's own.
StarMeasurement inFinePixels(StarMeasurement star) {
    star.x = (star.x + 0.5) * kCoarse - 0.5;
    star.y = (star.y + 0.5) * kCoarse - 0.5;
    star.halfFluxDiameter *= kCoarse;
    star.flux *= kCoarse * kCoarse;
    for (int* reach : {&star.left, &star.right, &star.up, &star.down}) *reach *= kCoarse;
    return star;
}

/// What shows from afar only, or of which the sharp look has seen no more than a piece of the rim.
StarSighting lookFromAfar(const StarSearch& sharp) {
    constexpr std::size_t kSmallest = 48;  // coarse pixels
    const platform::ImageArray coarse = coarseImage(sharp.image());
    if (std::min(coarse.width(), coarse.height()) < kSmallest) return {};
    try {
        std::vector<std::string> unheard;
        StarSighting sighting = StarSearch(coarse, kDisc, sharp.typicalNoise() / kCoarse).run(unheard);
        if (sighting.star) sighting.star = inFinePixels(*sighting.star);
        return sighting;
    } catch (const platform::OperationError&) {
        return {};  // too few pixels have a value to tell a sky from afar
    }
}

/// Looks twice: in the frame's own pixels, and in coarse ones for a star far out of focus.
StarMeasurement search(const platform::ImageArray& image, std::vector<std::string>& log) {
    constexpr double kMuchMore = 1.5;  // a near look holds only a part of a wide disc's light
    if (image.width() == 0 || image.height() == 0)
        throw platform::runTimeError(platform::error_number::kSubscriptOutOfRange);
    StarSearch sharp(image, kSharpStar);
    if (!sharp.hasStripes()) throw Ended{Failure::kNoStripes, "Error in modHFR Sub BrightestStar3"};
    const StarSighting near = sharp.run(log);
    const StarSighting far = lookFromAfar(sharp);
    const bool isOutOfFocus =
        far.star && (!near.star || (far.star->isDisc() && far.star->flux > kMuchMore * near.star->flux));
    const StarSighting& best = isOutOfFocus ? far : near;
    if (best.star && !best.atEdge) return *best.star;
    if (best.star || near.tooWeak)
        throw Ended{Failure::kEdgeOrWeak, "Star is too close to frame edge or is too weak"};
    throw Ended{Failure::kNoStar, "No star found"};
}

std::int32_t asFlux(double flux) {
    constexpr double kMost = std::numeric_limits<std::int32_t>::max();  // that the result can hold
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
        const StarMeasurement star = search(image, result.log);
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
