// UCAC2: zones at the pole and in the north.
#include "fuzz/search_folder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel;
    static const fuzz::ScratchFolder folder;
    const auto parts = fuzz::pieces(fuzz::textOf(data, size), 2);
    folder.write("u2/z001", parts[0]);
    for (const char* zone : {"u2/z220", "u2/z221"}) folder.write(zone, parts[1]);
    fuzz::searchFolder(folder, observatory::openUcac2);
    return 0;
}
