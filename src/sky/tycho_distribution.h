// Tycho-2 (CDS catalogue I/259) as distributed: text files with one star a line.
#pragma once

#include <filesystem>
#include <vector>

#include "sky/moving_star.h"

namespace vantrel::sky {

/// Reads catalog.dat, tyc2.dat or tyc2.dat.00 and on, and suppl_1.dat, from the folder or its "data" folder,
/// and carries the stars to the epoch. Stars without a mean position stand where they were observed.
/// Components that share one mean position (flag P) are one star with the sum of their light. Throws
/// CatalogError when the files are missing or a line can't be understood.
std::vector<MovingStar> readTychoDistribution(const std::filesystem::path& folder, double epochYear);

/// Writes the compact catalogue that CompactCatalog reads. Throws CatalogError when the file can't be written
/// or a cell of sky holds more stars than the layout has room for.
void writeCompactCatalog(const std::filesystem::path& file, const std::vector<MovingStar>& stars,
                         double epochYear);

}  // namespace vantrel::sky
