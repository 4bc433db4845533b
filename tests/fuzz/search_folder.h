// Searches whatever catalogue a scratch folder holds, near and far, with and without limits.
#pragma once

#include "fuzz/scratch_folder.h"
#include "observatory/catalogs/distributions.h"

namespace vantrel::fuzz {

using OpenCatalog = observatory::FoundCatalog (*)(const observatory::CatalogFolder& folder);

/// Every search may end with a CatalogError, the one way in which readers refuse files.
inline void searchFolder(const ScratchFolder& folder, OpenCatalog open) {
    using observatory::ConeQuery;
    const ConeQuery queries[] = {
        {.raDeg = 10, .decDeg = 20, .radiusDeg = 0.1, .epochYear = 2030},
        {.raDeg = 359.95, .decDeg = 20, .radiusDeg = 0.1, .maxStars = 5, .brightestFirst = true},
        {.raDeg = 100, .decDeg = -89.95, .radiusDeg = 0.04, .faintestMagnitude = 12},
    };
    observatory::FoundCatalog catalog;
    for (const ConeQuery& query : queries) {
        try {
            if (catalog == nullptr) catalog = open(observatory::CatalogFolder(folder.path()));
            if (catalog != nullptr) catalog->cone(query);
        } catch (const observatory::CatalogError&) {  // what damaged files get
        }
    }
}

}  // namespace vantrel::fuzz
