// USNO-A: a polar and a northern zone, each with its accelerator.
#include "fuzz/search_folder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel;
    static const fuzz::ScratchFolder folder;
    const auto parts = fuzz::pieces(fuzz::textOf(data, size), 3);
    folder.write("zone0000.cat", parts[0]);
    folder.write("zone1050.cat", parts[1]);
    folder.write("zone1050.acc", parts[2]);
    fuzz::searchFolder(folder, observatory::openUsnoA);
    return 0;
}
