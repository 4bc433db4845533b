// Which star catalogue stands behind a catalogue number and a folder.
#pragma once

#include <filesystem>
#include <memory>

#include "catalogs/vizier_catalog.h"
#include "sky/star_catalog.h"

namespace vantrel::solver {

/// Opens the catalogue of this number in the folder; an empty path is the built-in one. In place of it serve,
/// for any number, a compact file (vantrel-catalog's or a copy of the built-in one; or its name instead of
/// the folder's), UCAC4 and databases of cells. Throws CatalogError that names the folder when it holds none
/// that can be read.
std::shared_ptr<const sky::StarCatalog> openCatalog(const std::filesystem::path& folder, int catalogNumber);

/// The catalogue of this number that is asked over the network; nothing is asked before the first search.
/// Null when the number is that of another.
std::shared_ptr<const sky::StarCatalog> openNetworkCatalog(int catalogNumber,
                                                           const catalogs::NetworkAccess& network);

}  // namespace vantrel::solver
