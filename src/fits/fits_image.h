// A FITS image, read: 8, 16, 32, 64-bit integers and floats with any BZERO and BSCALE, tile-compressed
// images, images in extensions, .gz; a third axis is colour, and its planes are averaged. Plain files are
// read straight from the disk, row by row, and never held whole in memory; of packed ones no more is unpacked
// than their headers promise. Tile-compressed images go through CFITSIO, which works in a process of its own
// because damaged files can crash it. Row 0 is the top row: the first in the file, or the last when ROWORDER
// says BOTTOM-UP.
//
// A pixel without a value (BLANK, not a number, infinite) is read as "not a number", in each of its planes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "fits/fits_error.h"
#include "fits/fits_header.h"
#include "platform/image_array.h"
#include "sky/tangent_wcs.h"

namespace vantrel::fits {

struct OpenedFits;
class FitsFile;
class FitsPixels;

class FitsImage {
  public:
    /// Opens the first image of the file. Throws FitsError for anything that isn't a sound image.
    static FitsImage open(const std::filesystem::path& path);
    /// The same of a file that came as bytes; the name is for messages.
    static FitsImage read(const std::string& name, std::span<const std::byte> bytes);

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

    /// False when every pixel has a value.
    bool mayHoldBlanks() const { return mayHoldBlanks_; }

    /// The rows from `first` on as floats, width() values each, "not a number" where a pixel has none; as
    /// many as fit into `out`, which must be a whole number of rows inside the image. Throws FitsError when
    /// the file can't be read any more.
    void readRows(std::size_t first, std::span<float> out) const;

    /// A part of a row, from the column on, likewise.
    void readInRow(std::size_t row, std::size_t column, std::span<float> out) const;

    /// The world coordinates in the header, if there are usable ones.
    std::optional<sky::TangentWcs> wcs() const;

  private:
    static FitsImage in(std::unique_ptr<FitsFile> file);
    explicit FitsImage(OpenedFits opened);

    std::size_t width_ = 0;
    std::size_t height_ = 0;
    bool bottomUp_ = false;
    bool mayHoldBlanks_ = true;
    FitsHeader header_;
    std::unique_ptr<const FitsPixels> pixels_;
};

}  // namespace vantrel::fits
