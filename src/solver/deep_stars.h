// The operator's deeper catalogue beside the built-in one.
#pragma once

#include <filesystem>
#include <memory>

#include "sky/star_catalog.h"

namespace vantrel::solver {

/// The built-in catalogue; but a search that asks for a number of stars of which it has fewer gets those of
/// the deeper one (catalogs::kDeepFileName, as vantrel-catalog makes it) in the user's folder, if that has
/// more. So fields that are too narrow for Tycho-2 get what they need, and wide ones stay as they were. The
/// built-in one itself where the folder holds none or is empty. Throws CatalogError when the file can't be
/// used.
std::shared_ptr<const sky::StarCatalog> withDeepStars(std::shared_ptr<const sky::StarCatalog> builtIn,
                                                      const std::filesystem::path& dataFolder);

}  // namespace vantrel::solver
