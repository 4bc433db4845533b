// UCAC4: zones at the pole and in the north, and the table of fast stars.
#include "fuzz/search_folder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel;
    static const fuzz::ScratchFolder folder;
    const auto parts = fuzz::pieces(fuzz::textOf(data, size), 3);
    folder.write("u4b/z001", parts[0]);
    folder.write("u4b/z002", parts[0]);
    for (const char* zone : {"u4b/z550", "u4b/z551"}) folder.write(zone, parts[1]);
    folder.write("u4i/u4hpm.dat", parts[2]);
    fuzz::searchFolder(folder, observatory::openUcac4);
    return 0;
}
