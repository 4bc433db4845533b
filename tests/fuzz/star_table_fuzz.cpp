// Tables of stars that observers saved, of which deep catalogues are made.
#include "catalogs/star_table.h"
#include "fuzz/input.h"
#include "sky/star_catalog.h"
#include "support/temp_folder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel;
    static const test::TempFolder folder(test::TempFolder::quickPlace());
    folder.write("stars.csv", fuzz::textOf(data, size));
    const catalogs::TableColumns customary, chosen{.ra = "a", .dec = "b", .magnitude = "c", .motionRa = "d"};
    for (const auto& columns : {customary, chosen}) {
        try {
            catalogs::readStarTable(folder.path() / "stars.csv", columns, 2016, 2000);
        } catch (const sky::CatalogError&) {  // what is no table of stars gets
        }
    }
    return 0;
}
