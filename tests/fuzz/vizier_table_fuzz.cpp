// Answers of the catalogue service, as text from the network.
#include "catalogs/vizier_catalog.h"
#include "fuzz/input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel::sky;
    using namespace vantrel::catalogs;
    for (const VizierSource* source : {&usnoBSource(), &nomadSource()}) {
        try {
            source->stars(vantrel::fuzz::textOf(data, size));
        } catch (const CatalogError&) {  // what is no table of stars gets
        }
    }
    return 0;
}
