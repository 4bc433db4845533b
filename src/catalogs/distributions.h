// Star catalogues as their makers distribute them.
//
// Each function looks into a folder and gives the catalogue that it finds there, or nothing when the folder
// holds none of that kind. They throw CatalogError when one is there, but can't be used. Nothing is read as a
// whole but small index files; a damaged or missing file is told by the search that needs it.
#pragma once

#include <memory>
#include <string>

#include "catalogs/catalog_folder.h"
#include "sky/star_catalog.h"

namespace vantrel::catalogs {

using FoundCatalog = std::shared_ptr<const sky::StarCatalog>;

/// GSC 1.1 and GSC-ACT: gsc/ZONE/NNNN.gsc, or the zones without the folder around them, and
/// tables/regions.tbl. Stars only; several measurements of one star are averaged.
FoundCatalog openGuideStars(const CatalogFolder& folder);

/// Tycho-2: catalog.dat or tyc2.dat or tyc2.dat.00 and on, with index.dat, in the folder or its "data"
/// folder; suppl_1.dat beside them or above.
FoundCatalog openTycho2(const CatalogFolder& folder);

/// USNO-A2.0 and SA2.0: zone0000.cat to zone1725.cat, in the folder or in folders of it, one for each disc.
FoundCatalog openUsnoA(const CatalogFolder& folder);

/// USNO-B1.0: 000/b0000.cat to 179/b1799.cat.
FoundCatalog openUsnoB(const CatalogFolder& folder);

/// UCAC2: u2/z001 to u2/z288, or the zones without the folder around them.
FoundCatalog openUcac2(const CatalogFolder& folder);

/// UCAC4: u4b/z001 to u4b/z900 and u4i/u4hpm.dat, or all of them in one folder.
FoundCatalog openUcac4(const CatalogFolder& folder);

/// Databases of cells, NAME_RRCC.1476 or NAME_RRCC.290; of several the largest.
FoundCatalog openCellDatabase(const CatalogFolder& folder);

}  // namespace vantrel::catalogs
