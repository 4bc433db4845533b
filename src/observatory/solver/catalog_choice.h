// Which star catalogue stands behind a catalogue number and a folder.
#pragma once

#include <filesystem>
#include <memory>

#include "observatory/sky/star_catalog.h"

namespace vantrel::observatory {

/// Opens the catalogue in the folder; an empty path is the built-in one. Throws CatalogError that names the
/// folder when it holds none that can be read.
std::shared_ptr<const StarCatalog> openCatalog(const std::filesystem::path& folder, int catalogNumber);

}  // namespace vantrel::observatory
