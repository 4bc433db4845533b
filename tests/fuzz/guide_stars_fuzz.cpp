// The guide star catalogues: region table and the file of one region, which serves as a southern one too.
#include "fuzz/search_folder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel;
    static const fuzz::ScratchFolder folder;
    const auto parts = fuzz::pieces(fuzz::textOf(data, size), 2);
    folder.write("tables/regions.tbl", parts[0]);
    folder.write("n1500/1178.gsc", parts[1]);
    folder.write("s8230/9490.gsc", parts[1]);
    fuzz::searchFolder(folder, observatory::openGuideStars);
    return 0;
}
