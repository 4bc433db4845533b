// Images compressed tile by tile, as the program reads them: by the library, in a process of its own.
#include "fuzz/fits_reading.h"

/// The library asks for as much memory as a damaged header tells it to; it is to be refused, as it is
/// elsewhere.
// NOLINTNEXTLINE(bugprone-reserved-identifier): by this name the sanitizer looks for it
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel;
    fuzz::withImage(fuzz::textOf(data, size), [](const auto& path, const auto& image) {
        if (image.tiled) fuzz::readFits(path);
    });
    return 0;
}
