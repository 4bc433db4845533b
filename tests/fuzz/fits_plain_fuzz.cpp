// FITS files that are read straight from the disk.
#include "fuzz/fits_reading.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto bytes = vantrel::fuzz::textOf(data, size);
    if (vantrel::fuzz::isPlainFits(bytes)) vantrel::fuzz::readFits(bytes);
    return 0;
}
