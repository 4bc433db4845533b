// The compact catalogue file: opened, checked and searched.
#include "fuzz/input.h"
#include "sky/compact_catalog.h"
#include "support/temp_folder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel;
    static const test::TempFolder folder(test::TempFolder::quickPlace());
    try {
        const sky::CompactCatalog catalog(folder.write("stars.bin", fuzz::textOf(data, size)));
        catalog.verify();
        catalog.cone({.raDeg = 10, .decDeg = 20, .radiusDeg = 180, .maxStars = 20});
        catalog.cone({.raDeg = 359.9, .decDeg = -89.9, .radiusDeg = 1, .brightestFirst = true});
        catalog.cone({.raDeg = 10, .decDeg = 20, .radiusDeg = 1, .epochYear = 2062});
    } catch (const sky::CatalogError&) {  // what a file that is none gets
    }
    return 0;
}
