// Catalogues on disk, in the layouts of their makers. Each layout is a target of its own, made of this file
// with the layout's name; searches are near and far, with and without limits.
#include <algorithm>
#include <string_view>
#include <vector>

#include "catalogs/distributions.h"
#include "fuzz/input.h"
#include "support/temp_folder.h"

namespace {

using namespace vantrel;
using namespace vantrel::sky;
using namespace vantrel::catalogs;

using Names = std::vector<const char*>;

/// The files that each piece of an input is written to: those that the searches need.
struct Layout {
    std::string_view name;
    FoundCatalog (*open)(const CatalogFolder& folder);
    std::vector<Names> files;
};

const Layout& layout() {
    static const Layout kLayouts[] = {
        // The region table, and the file of one region, which serves as a southern one too.
        {"guide_stars", openGuideStars, {{"tables/regions.tbl"}, {"n1500/1178.gsc", "s8230/9490.gsc"}}},
        {"tycho2", openTycho2, {{"index.dat"}, {"tyc2.dat.00"}, {"tyc2.dat.01"}, {"suppl_1.dat"}}},
        // A polar and a northern zone.
        {"usno_a", openUsnoA, {{"zone0000.cat"}, {"zone1050.cat"}, {"zone1050.acc"}}},
        {"usno_b",
         openUsnoB,
         {{"000/b0000.cat", "109/b1098.cat", "109/b1099.cat", "110/b1100.cat", "110/b1101.cat"},
          {"000/b0000.acc"}}},
        {"ucac2", openUcac2, {{"u2/z001"}, {"u2/z220", "u2/z221"}}},
        {"ucac4", openUcac4, {{"u4b/z001", "u4b/z002"}, {"u4b/z550", "u4b/z551"}, {"u4i/u4hpm.dat"}}},
        // The southern cap and two cells of each kind.
        {"cell_database",
         openCellDatabase,
         {{"g_0101.290", "g_1101.290", "g_1128.290"}, {"d_0101.1476", "d_2202.1476", "d_2265.1476"}}},
    };
    return *std::find_if(std::begin(kLayouts), std::end(kLayouts),
                         [](const Layout& one) { return one.name == VANTREL_FUZZ_LAYOUT; });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const test::TempFolder folder(test::TempFolder::quickPlace());
    const auto parts = fuzz::pieces(fuzz::textOf(data, size), layout().files.size());
    for (std::size_t i = 0; i < parts.size(); ++i)
        for (const char* name : layout().files[i]) folder.write(name, parts[i]);
    const ConeQuery queries[] = {
        {.raDeg = 10, .decDeg = 20, .radiusDeg = 0.1, .epochYear = 2030},
        {.raDeg = 359.95, .decDeg = 20, .radiusDeg = 0.1, .maxStars = 5, .brightestFirst = true},
        {.raDeg = 100, .decDeg = -89.95, .radiusDeg = 0.04, .faintestMagnitude = 12},
    };
    FoundCatalog catalog;
    for (const ConeQuery& query : queries) {
        try {
            if (catalog == nullptr) catalog = layout().open(CatalogFolder(folder.path()));
            if (catalog != nullptr) catalog->cone(query);
        } catch (const CatalogError&) {  // what damaged files get
        }
    }
    return 0;
}
