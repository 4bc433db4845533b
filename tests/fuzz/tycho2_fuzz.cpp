// Tycho-2 in its own files: index, two parts and supplement.
#include "fuzz/search_folder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel;
    static const fuzz::ScratchFolder folder;
    const auto parts = fuzz::pieces(fuzz::textOf(data, size), 4);
    folder.write("index.dat", parts[0]);
    folder.write("tyc2.dat.00", parts[1]);
    folder.write("tyc2.dat.01", parts[2]);
    folder.write("suppl_1.dat", parts[3]);
    fuzz::searchFolder(folder, observatory::openTycho2);
    return 0;
}
