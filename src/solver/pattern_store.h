// Where the star patterns live between two runs.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "sky/compact_catalog.h"
#include "solver/star_patterns.h"

namespace vantrel::solver {

inline constexpr const char* kPatternFileName = "tycho2_patterns.bin";

/// The patterns of the catalogue: from the file beside it, else from the one in the cache folder, else made
/// anew (a few seconds) and put into the cache folder for the next time. `tell` gets one line about whatever
/// is worth knowing: a file that can't be used, the making, a cache that can't be written. Never fails for
/// want of a file; an empty cache folder means that nothing is kept.
std::shared_ptr<const StarPatterns> patternsOf(const sky::CompactCatalog& catalog,
                                               const std::filesystem::path& cacheFolder,
                                               const std::function<void(const std::string&)>& tell);

}  // namespace vantrel::solver
