// What the targets for FITS files do with a file.
#pragma once

#include <vector>

#include "fuzz/input.h"
#include "observatory/sky/fits_image.h"
#include "observatory/solver/exposure_facts.h"
#include "support/temp_folder.h"

namespace vantrel::fuzz {

/// True for the files that are read without the library, and so without the process that guards against it.
inline bool isPlainFits(std::string_view bytes) {
    constexpr std::size_t kCard = 80, kBlock = 2880;
    if (!bytes.starts_with("SIMPLE  =") || bytes.size() < kBlock) return false;
    observatory::FitsHeader header;
    for (std::size_t at = 0; at < kBlock; at += kCard) header.addCardImage(bytes.substr(at, kCard));
    const std::int64_t axes = header.integer("NAXIS").value_or(0);
    return axes == 2 || axes == 3;
}

/// Opens the file, reads all its rows and asks everything that the solver asks of a header.
inline void readFits(std::string_view bytes) {
    constexpr std::size_t kMostPixels = 1'000'000;
    static const test::TempFolder folder(test::TempFolder::quickPlace());
    try {
        const auto image = observatory::FitsImage::open(folder.write("image.fit", bytes));
        if (const auto wcs = image.wcs()) wcs->toPixel(wcs->toSky({1, 2}));
        observatory::exposureStart(image.header());
        observatory::headerScales(image.header());
        observatory::headerTarget(image.header());
        if (image.width() * image.height() > kMostPixels) return;
        std::vector<float> pixels(image.width() * image.height());
        image.readRows(0, pixels);
        std::vector<float> lastRow(image.width());
        image.readRows(image.height() - 1, lastRow);
    } catch (const observatory::FitsError&) {  // what a file that is none gets
    }
}

}  // namespace vantrel::fuzz
