// An image in a FITS file, opened: what FitsImage is made of.
#pragma once

#include <cstddef>
#include <memory>
#include <span>

#include "fits/fits_file.h"
#include "fits/fits_header.h"
#include "fits/fits_units.h"

namespace vantrel::fits {

/// Where the rows come from.
class FitsPixels {
  public:
    virtual ~FitsPixels() = default;
    /// Whole rows from `first` on, in file order. Throws FitsError.
    virtual void read(std::size_t first, std::span<float> out) const = 0;
    /// A part of the row, from the column on. Throws FitsError.
    virtual void readInRow(std::size_t row, std::size_t column, std::span<float> out) const = 0;
};

struct OpenedFits {
    std::size_t width = 0;
    std::size_t height = 0;
    bool mayHoldBlanks = true;  ///< pixels without a value, which are read as "not a number"
    FitsHeader header;
    std::unique_ptr<const FitsPixels> pixels;
};

/// Opens an image whose pixels stand in the file one after the other. Throws FitsError.
OpenedFits openPlainImage(std::unique_ptr<FitsFile> bytes, FitsImageUnit image);

/// Opens an image compressed tile by tile. Throws FitsError.
OpenedFits openTiledImage(std::unique_ptr<FitsFile> bytes, FitsImageUnit image);

}  // namespace vantrel::fits
