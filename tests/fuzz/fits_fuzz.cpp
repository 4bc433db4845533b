// FITS files: as they are, packed by gzip, or compressed tile by tile, which the library reads in a process
// of its own.
#include <vector>

#include "fits/fits_image.h"
#include "fuzz/input.h"
#include "solver/exposure_facts.h"
#include "support/temp_folder.h"

namespace {

constexpr std::size_t kMostPixels = 250'000;

using namespace vantrel;

/// Opens the file, reads all its rows and asks everything that the solver asks of a header.
void readFits(const std::filesystem::path& path) {
    const auto image = fits::FitsImage::open(path);
    if (const auto wcs = image.wcs()) wcs->toPixel(wcs->toSky({1, 2}));
    solver::exposureStart(image.header());
    solver::headerScales(image.header());
    solver::headerTarget(image.header());
    if (image.width() * image.height() > kMostPixels) return;
    std::vector<float> pixels(image.width() * image.height());
    image.readRows(0, pixels);
    std::vector<float> lastRow(image.width());
    image.readRows(image.height() - 1, lastRow);
}

}  // namespace

/// The library asks for as much memory as a damaged header tells it to; it is to be refused, as it is
/// elsewhere.
// NOLINTNEXTLINE(bugprone-reserved-identifier): by this name the sanitizer looks for it
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const test::TempFolder folder(test::TempFolder::quickPlace());
    try {
        readFits(folder.write("image.fit", fuzz::textOf(data, size)));
    } catch (const fits::FitsError&) {  // what a file that is none gets
    }
    return 0;
}
