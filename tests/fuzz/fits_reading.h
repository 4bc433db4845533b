// What the targets for FITS files do with a file.
#pragma once

#include <vector>

#include "fits/fits_image.h"
#include "fits/fits_units.h"
#include "fuzz/input.h"
#include "solver/exposure_facts.h"
#include "support/temp_folder.h"

namespace vantrel::fuzz {

/// Gives the target the file with the input in it, once it is known what kind of image that holds.
template <typename Use>
void withImage(std::string_view bytes, Use&& use) {
    static const test::TempFolder folder(test::TempFolder::quickPlace());
    try {
        const auto path = folder.write("image.fit", bytes);
        fits::FitsFile file(path);
        const fits::FitsImageUnit image = fits::findImage(file);
        use(path, image);
    } catch (const fits::FitsError&) {  // what a file that is none gets
    }
}

inline bool isSmall(std::size_t width, std::size_t height) { return width * height <= 250'000; }

/// Opens the file, reads all its rows and asks everything that the solver asks of a header.
inline void readFits(const std::filesystem::path& path) {
    const auto image = fits::FitsImage::open(path);
    if (const auto wcs = image.wcs()) wcs->toPixel(wcs->toSky({1, 2}));
    solver::exposureStart(image.header());
    solver::headerScales(image.header());
    solver::headerTarget(image.header());
    if (!isSmall(image.width(), image.height())) return;
    std::vector<float> pixels(image.width() * image.height());
    image.readRows(0, pixels);
    std::vector<float> lastRow(image.width());
    image.readRows(image.height() - 1, lastRow);
}

}  // namespace vantrel::fuzz
