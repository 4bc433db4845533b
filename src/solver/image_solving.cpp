#include "solver/image_solving.h"

#include <algorithm>
#include <cmath>

#include "solver/exposure_facts.h"
#include "solver/unsolved_reason.h"
#include "solver/wide_search.h"

namespace vantrel::solver {

namespace {

constexpr double kLeastOffset = 1.5;  // degrees: what mounts are off by after a rough set-up

class ImageSolving {
  public:
    ImageSolving(const fits::FitsImage& image, const StarList& stars, const ImageClues& clues,
                 const sky::StarCatalog& catalog, const std::function<bool()>& givenUp)
        : image_(image), stars_(stars), clues_(clues), catalog_(catalog), givenUp_(givenUp) {}

    SolvedImage run(const PatternSource& patterns) {
        bool wide = !clues_.start || clues_.scales.empty();
        for (const double scale : clues_.scales) {
            if (clues_.start && solveNear(scale)) return solved_;
            wide = wide || clues_.radiusDeg.value_or(0) > customaryOffset(geometryOf(scale));
        }
        if (wide && clues_.radiusDeg && !givenUp()) solveWide(*patterns());
        if (!solved_.solution && !givenUp()) solved_.whyNot = reason();
        return solved_;
    }

  private:
    bool givenUp() const { return givenUp_ && givenUp_(); }

    PlateGeometry geometryOf(double scale) const {
        return {static_cast<double>(image_.width()), static_cast<double>(image_.height()), scale, scale,
                stars_.grain};
    }

    platform::Words reason() const {
        const PlateGeometry geometry = geometryOf(clues_.scales.empty() ? 0 : clues_.scales.front());
        SoughtField field{geometry, clues_.start, clues_.radiusDeg.value_or(customaryOffset(geometry)), {}};
        field.starsExpected = starsExpected(field, catalog_);
        return whyUnsolved(stars_, field);
    }

    bool solveNear(double scale) {
        if (givenUp()) return false;
        solved_.geometry = geometryOf(scale);
        const double customary = customaryOffset(solved_.geometry);
        const double offset = std::min(clues_.radiusDeg.value_or(customary), customary);
        const SearchArea area = searchArea(solved_.geometry, *clues_.start, offset, stars_.stars.size());
        solved_.solution = solvePlate(solved_.geometry, stars_.stars, area,
                                      catalog_.cone(area.query(clues_.epochYear, 99)), {});
        return solved_.solution.has_value();
    }

    void solveWide(const StarPatterns& patterns) {
        WideSettings settings;
        settings.start = clues_.start.value_or(sky::SkyPosition{});
        settings.radiusDeg = *clues_.radiusDeg;
        settings.epochYear = clues_.epochYear;
        settings.givenUp = givenUp_;
        std::optional<WideSolution> wide;
        for (const double scale : clues_.scales) {
            wide = searchWide(geometryOf(scale), stars_.stars, patterns, catalog_, settings);
            if (wide) break;
        }
        if (clues_.scales.empty())
            wide = searchWideAnyScale(geometryOf(1), stars_.stars, patterns, catalog_, settings);
        if (wide) solved_ = {wide->plate, wide->geometry, {}};
    }

    const fits::FitsImage& image_;
    const StarList& stars_;
    const ImageClues& clues_;
    const sky::StarCatalog& catalog_;
    const std::function<bool()>& givenUp_;
    SolvedImage solved_;
};

}  // namespace

ImageClues cluesOf(const fits::FitsHeader& header) {
    ImageClues clues;
    clues.start = headerTarget(header);
    clues.scales = headerScales(header);
    if (const auto date = exposureStart(header)) clues.epochYear = julianYear(*date);
    return clues;
}

std::optional<ImageClues> formerSolution(const fits::FitsImage& image) {
    const auto wcs = image.wcs();
    if (!wcs) return std::nullopt;
    ImageClues clues = cluesOf(image.header());
    clues.start = wcs->toSky(
        {(static_cast<double>(image.width()) - 1) / 2, (static_cast<double>(image.height()) - 1) / 2});
    clues.scales = {orientationOf({wcs->cd[0], wcs->cd[1], wcs->cd[2], wcs->cd[3]}).scaleX};
    return clues;
}

double customaryOffset(const PlateGeometry& geometry) {
    return std::max(kLeastOffset, geometry.diagonalDeg());
}

SolvedImage solveImage(const fits::FitsImage& image, const StarList& stars, const ImageClues& clues,
                       const sky::StarCatalog& catalog, const PatternSource& patterns,
                       const std::function<bool()>& givenUp) {
    return ImageSolving(image, stars, clues, catalog, givenUp).run(patterns);
}

}  // namespace vantrel::solver
