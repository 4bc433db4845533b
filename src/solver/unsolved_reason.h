// What an image lacks that wasn't solved, in words and figures for the operator.
#pragma once

#include <optional>

#include "platform/words.h"
#include "sky/star_catalog.h"
#include "solver/plate_field.h"
#include "solver/star_finder.h"

namespace vantrel::solver {

/// What is known beforehand of the image's place in the sky.
struct SoughtField {
    PlateGeometry geometry;                    ///< of scale 0 where none is known
    std::optional<sky::SkyPosition> start;     ///< about where it points
    double radiusDeg = 0;                      ///< how far around it was looked for
    std::optional<double> starsExpected = {};  ///< in the field
};

/// How many of the catalogue's stars such a field shows: at its start, or on average where there is none.
/// Empty without a scale.
std::optional<double> starsExpected(const SoughtField& field, const sky::StarCatalog& catalog);

/// The likeliest reason, as a sentence without a full stop: what the stars look like comes
/// before how many there are, and that before where they were looked for.
platform::Words whyUnsolved(const StarList& stars, const SoughtField& field);

}  // namespace vantrel::solver
