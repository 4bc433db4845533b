#include "imaging/image_link.h"

#include <stdexcept>

#include "fits/fits_image.h"
#include "fits/header_wcs.h"
#include "solver/exposure_facts.h"
#include "solver/plate_frame.h"
#include "solver/plate_solver.h"

namespace vantrel::imaging {
namespace {

using fits::FitsCard;

/// Of date, which a header tells by its frame and the epoch in place of the equinox.
std::vector<FitsCard> cardsOfDate(const sky::TangentWcs& wcs, double height, double epoch) {
    std::vector<FitsCard> cards = fits::wcsCards(wcs, height, false);
    for (FitsCard& card : cards) {
        if (card.keyword == "EQUINOX") card.value = epoch;
        if (card.keyword == "RADESYS") card.value = std::string("GAPPT");  // geocentric apparent place
    }
    return cards;
}

}  // namespace

std::vector<FitsCard> linkImage(const ImageDocument& image, double scale, const sky::StarCatalog& stars,
                                const platform::Clock& clock) {
    constexpr double kFaintest = 20;
    if (!(scale > 0)) throw std::runtime_error("ScaleInArcsecondsPerPixel is not set");
    fits::FitsHeader header;
    for (const FitsCard& card : image.header) header.add(card);
    const auto start = solver::headerTarget(header);
    if (!start) throw std::runtime_error("The image has no start position in OBJCTRA and OBJCTDEC");

    const platform::Instant instant = solver::exposureStart(header).value_or(clock.utc());
    const solver::PlateFrame frame = solver::PlateFrame::ofDate(instant);
    const fits::FitsImage pixels = fits::FitsImage::of(*image.pixels);
    const solver::StarList found = solver::findStars(pixels, {});
    const solver::PlateGeometry geometry{static_cast<double>(pixels.width()),
                                         static_cast<double>(pixels.height()), scale, scale, found.grain};
    const solver::SearchArea area =
        solver::searchArea(geometry, frame.toCatalogue(*start), geometry.diagonalDeg(), found.stars.size());
    const auto around = stars.cone(area.query(solver::julianYear(instant), kFaintest));
    const auto solution = solver::solvePlate(geometry, found.stars, area, around, {});
    if (!solution)
        throw std::runtime_error("Image link failed: the image's " + std::to_string(found.stars.size()) +
                                 " stars match none around the start position");

    const auto cd = frame.turned(solution->cd, solution->centre);
    const sky::TangentWcs wcs{
        frame.fromCatalogue(solution->centre), geometry.centre(), {cd[0], cd[1], cd[2], cd[3]}};
    return cardsOfDate(wcs, geometry.height, frame.year());
}

}  // namespace vantrel::imaging
