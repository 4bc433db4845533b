#include "catalogs/deep_catalog.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "sky/catalog_writer.h"
#include "sky/sky_position.h"
#include "sky/tangent_wcs.h"
#include "sky/vector3.h"

namespace vantrel::catalogs {

namespace {

using sky::MovingStar;

constexpr std::uint32_t kBandsAtATime = 10;
constexpr std::uint32_t kStrips = kDeepBands / kBandsAtATime;
constexpr double kStripDeg = 180.0 / kStrips;
constexpr double kMagnitudeStep = 0.1;

/// The part of a strip between two right ascensions that one search is made for.
struct Tile {
    double west = 0, east = 0, south = 0, north = 0;

    sky::ConeQuery cone() const {
        constexpr double kEdgeDeg = 1e-6;
        const sky::SkyPosition middle{(west + east) / 2, (south + north) / 2};
        const double radius =
            std::max(sky::separationDeg(middle, {west, south}), sky::separationDeg(middle, {west, north}));
        return {.raDeg = middle.ra, .decDeg = middle.dec, .radiusDeg = radius + kEdgeDeg};
    }
};

bool isWithin(double dec, double south, double north) { return dec >= south && (dec < north || north >= 90); }

std::vector<Tile> tilesOf(double south, double north) {
    const double nearest = south * north <= 0 ? 0 : std::min(std::abs(south), std::abs(north));
    const int count = std::max(4, static_cast<int>(360 * std::cos(nearest * sky::kDegree) / kStripDeg));
    std::vector<Tile> tiles;
    tiles.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        tiles.push_back({360.0 * i / count, 360.0 * (i + 1) / count, south, north});
    return tiles;
}

}  // namespace

StripSource stripsOf(const sky::StarCatalog& catalog, const DeepSelection& selection) {
    return [&catalog, selection](double south, double north) {
        std::vector<MovingStar> stars;
        for (const Tile& tile : tilesOf(south, north)) {
            sky::ConeQuery query = tile.cone();
            query.epochYear = selection.epochYear;
            query.faintestMagnitude = selection.faintestMagnitude;
            for (const sky::CatalogStar& star : catalog.cone(query)) {
                const double ra = star.raDeg >= 360 ? star.raDeg - 360 : star.raDeg;
                if (ra < tile.west || ra >= tile.east || !isWithin(star.decDeg, south, north)) continue;
                stars.push_back({ra, star.decDeg, star.magnitude, static_cast<double>(star.motionRaMas),
                                 static_cast<double>(star.motionDecMas)});
            }
        }
        return stars;
    };
}

StripSource stripsOf(std::vector<MovingStar> stars, const DeepSelection& selection) {
    std::erase_if(stars, [&](const MovingStar& s) { return s.magnitude > selection.faintestMagnitude; });
    std::ranges::stable_sort(stars, {}, &MovingStar::decDeg);
    const auto sorted = std::make_shared<const std::vector<MovingStar>>(std::move(stars));
    return [sorted](double south, double north) {
        const auto first = std::ranges::lower_bound(*sorted, south, {}, &MovingStar::decDeg);
        const auto end =
            north >= 90 ? sorted->end() : std::ranges::lower_bound(*sorted, north, {}, &MovingStar::decDeg);
        return std::vector<MovingStar>(first, end);
    };
}

DeepResult writeDeepCatalog(const std::filesystem::path& file, const StripSource& source,
                            const DeepSelection& selection, const DeepProgress& progress) {
    sky::CatalogLayout layout;
    layout.bands = kDeepBands;
    layout.magnitudeStep = kMagnitudeStep;
    layout.mostInCell = selection.mostInCell;
    sky::CatalogWriter writer(file, layout, selection.epochYear);
    for (std::uint32_t strip = 0; strip < kStrips; ++strip) {
        const double south = -90 + kStripDeg * strip;
        const double north = south + kStripDeg;
        const bool wanted = north > selection.southDeg && south < selection.northDeg;
        writer.add(wanted ? source(south, north) : std::vector<MovingStar>{}, kBandsAtATime);
        if (!progress((strip + 1.0) / kStrips)) throw sky::CatalogError("it was given up");
    }
    if (writer.starCount() == 0) throw sky::CatalogError("no star was found within the limits");
    writer.finish();
    return {writer.starCount(), writer.leftOut()};
}

}  // namespace vantrel::catalogs
