// Databases of cells: the southern cap and two cells of each kind.
#include "fuzz/search_folder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel;
    static const fuzz::ScratchFolder folder;
    const auto parts = fuzz::pieces(fuzz::textOf(data, size), 2);
    for (const char* cell : {"g_0101.290", "g_1101.290", "g_1128.290"}) folder.write(cell, parts[0]);
    for (const char* cell : {"d_0101.1476", "d_2202.1476", "d_2265.1476"}) folder.write(cell, parts[1]);
    fuzz::searchFolder(folder, observatory::openCellDatabase);
    return 0;
}
