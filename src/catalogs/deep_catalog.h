// Makes a compact catalogue, deeper than the built-in one, of a catalogue that the operator owns: one file
// that is mapped and searched in milliseconds, for fields too narrow for the stars of Tycho-2.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <vector>

#include "sky/moving_star.h"
#include "sky/star_catalog.h"

namespace vantrel::catalogs {

inline constexpr const char* kDeepFileName = "deep_stars.bin";

/// Cells are a tenth of a degree wide, so that places are kept to 0.05" and a cell has room for 25,000 stars
/// in a square degree. Magnitudes are kept in steps of 0.1, to 23.5.
inline constexpr std::uint32_t kDeepBands = 1800;

/// What is taken over.
struct DeepSelection {
    double epochYear = 2000;  ///< Julian year that the stars' motions are applied to
    double southDeg = -90;    ///< declinations, both widened to whole degrees
    double northDeg = 90;
    double faintestMagnitude = 99;
    std::uint32_t mostInCell = 255;  ///< of a cell's stars the brightest; at most 255
};

/// The stars with declinations from south to north, or to the pole, each once.
using StripSource = std::function<std::vector<sky::MovingStar>(double southDeg, double northDeg)>;

/// Looks through the catalogue in cones. Throws what its searches throw.
StripSource stripsOf(const sky::StarCatalog& catalog, const DeepSelection& selection);

/// A list's, whose stars stand at the selection's epoch.
StripSource stripsOf(std::vector<sky::MovingStar> stars, const DeepSelection& selection);

struct DeepResult {
    std::uint64_t stars = 0;
    std::uint64_t leftOut = 0;  ///< for whom their cells had no room
};

/// Told the share that is done, 0 to 1; false ends the work.
using DeepProgress = std::function<bool(double share)>;

/// Writes the file as a whole or not at all. Throws CatalogError when it can't be written, when no star was
/// selected or when the progress ended it, and what the source throws.
DeepResult writeDeepCatalog(const std::filesystem::path& file, const StripSource& source,
                            const DeepSelection& selection, const DeepProgress& progress);

}  // namespace vantrel::catalogs
