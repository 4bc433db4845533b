// The header-data units that a FITS file is made of.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>

#include "fits/fits_file.h"
#include "fits/fits_header.h"

namespace vantrel::fits {

struct FitsUnit {
    int number = 1;
    FitsHeader header;
    std::size_t dataStart = 0;  ///< in the file
    std::size_t dataBytes = 0;  ///< that the header promises; the file may hold fewer
};

/// Goes from unit to unit by what their headers promise, and looks at no data.
class FitsUnits {
  public:
    explicit FitsUnits(FitsFile& bytes) : bytes_(bytes) {}

    /// Nothing behind the last one. Throws FitsError when there is none at all, or a header has no end.
    std::optional<FitsUnit> next();

    /// Where the last unit's data end, the filling of their last block included.
    std::size_t end() const { return end_; }

  private:
    bool readHeader(FitsHeader& header);

    FitsFile& bytes_;
    int number_ = 0;
    std::size_t headerBlocks_ = 0;  // of all units
    std::size_t end_ = 0;
};

struct FitsLayout {
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t planes = 1;
};

struct FitsImageUnit {
    FitsUnit unit;
    FitsLayout layout;
    bool tiled = false;  ///< compressed tile by tile, in a table (FITS standard 4.0, section 10.1)
    FitsHeader primary;  ///< the first unit's header, when the image is another one
};

/// The first unit that holds an image of two or three axes. Throws FitsError when there is none, and for
/// sizes that no camera's image has: a hostile header must not claim all memory.
FitsImageUnit findImage(FitsFile& bytes);

}  // namespace vantrel::fits
