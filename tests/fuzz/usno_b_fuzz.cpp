// USNO-B: the southernmost zone, and the same records in northern ones.
#include "fuzz/search_folder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel;
    static const fuzz::ScratchFolder folder;
    const auto parts = fuzz::pieces(fuzz::textOf(data, size), 2);
    folder.write("000/b0000.cat", parts[0]);
    folder.write("000/b0000.acc", parts[1]);
    for (const char* zone : {"109/b1098.cat", "109/b1099.cat", "110/b1100.cat", "110/b1101.cat"})
        folder.write(zone, parts[0]);
    fuzz::searchFolder(folder, observatory::openUsnoB);
    return 0;
}
