// FITS files that are read without the library: as they are, or packed by gzip.
#include "fuzz/fits_reading.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel;
    fuzz::withImage(fuzz::textOf(data, size), [](const auto& path, const auto& image) {
        if (!image.tiled) fuzz::readFits(path);
    });
    return 0;
}
