// FITS images in and out.
//
// Reading: 8, 16, 32-bit integers and floats with any BZERO and BSCALE, tile-compressed files, .gz; a third
// axis is colour, and its planes are averaged. Plain files are read straight from the disk, row by row, and
// never held whole in memory; everything else goes through CFITSIO, which works in a process of its own
// because damaged files can crash it. Row 0 is the top row: the first in the
// file, or the last when ROWORDER says BOTTOM-UP.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "observatory/sky/fits_header.h"
#include "observatory/sky/tangent_wcs.h"
#include "platform/image_array.h"

namespace vantrel::observatory {

/// A file that can't be read or written as FITS; what() is one line that names the file.
class FitsError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

class FitsImage {
  public:
    /// Opens the first image of the file. Throws FitsError for anything that isn't a sound image.
    static FitsImage open(const std::filesystem::path& path);

    /// An image of the caller's pixels, row after row from the top. There must be width * height of them.
    FitsImage(std::size_t width, std::size_t height, std::vector<float> pixels, FitsHeader header = {});

    /// An image in memory, in floats.
    static FitsImage of(const platform::ImageArray& array);

    ~FitsImage();
    FitsImage(FitsImage&&) noexcept;
    FitsImage& operator=(FitsImage&&) noexcept;

    std::size_t width() const { return width_; }
    std::size_t height() const { return height_; }
    const FitsHeader& header() const { return header_; }
    bool bottomUp() const { return bottomUp_; }

    /// True when pixels are floats, which may hold blanks (not a number).
    bool isFloatingPoint() const { return floating_; }

    /// The rows from `first` on as floats, width() values each; as many as fit into `out`, which must be a
    /// whole number of rows inside the image. Throws FitsError when the file can't be read any more.
    void readRows(std::size_t first, std::span<float> out) const;

    /// The world coordinates in the header, if there are usable ones.
    std::optional<TangentWcs> wcs() const;

  private:
    class Source;
    class MemorySource;
    class UnpackedSource;
    class PlainFileSource;

    FitsImage() = default;
    static std::unique_ptr<PlainFileSource> openPlain(const std::filesystem::path& path, FitsImage& image);
    void openByLibrary(const std::filesystem::path& path);

    std::size_t width_ = 0;
    std::size_t height_ = 0;
    bool bottomUp_ = false;
    bool floating_ = true;
    FitsHeader header_;
    std::unique_ptr<const Source> source_;
};

/// Writes a 16-bit image (row 0 first in the file) with these cards after the mandatory ones; an existing
/// file is replaced at once, when the new one is complete. Throws FitsError.
void writeFits(const std::filesystem::path& path, std::size_t width, std::size_t height,
               std::span<const std::uint16_t> pixels, const std::vector<FitsCard>& cards);

/// The same for an image in memory, in its own type of pixels.
void writeFits(const std::filesystem::path& path, const platform::ImageArray& image,
               const std::vector<FitsCard>& cards);

/// The cards of world coordinates (ICRS, EQUINOX 2000) for an image of this height, whose file runs from the
/// top or from the bottom.
std::vector<FitsCard> wcsCards(const TangentWcs& wcs, double height, bool bottomUp);

/// Writes a copy of the file with these world coordinates (ICRS, EQUINOX 2000) in the header of its first
/// image, in place of what stood there. The target may be the file itself: readers see the old or the new
/// file. Throws FitsError; a file compressed by gzip can't be its own target.
void writeWcs(const std::filesystem::path& source, const std::filesystem::path& target,
              const TangentWcs& wcs);

}  // namespace vantrel::observatory
