// An image in a FITS file, opened: what FitsImage is made of.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>

#include "observatory/sky/fits_header.h"

namespace vantrel::observatory {

inline constexpr std::size_t kFitsBlock = 2880;
inline constexpr std::size_t kFitsCard = 80;

struct FitsLayout {
    std::int64_t bitpix = 0;
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::int64_t planes = 1;
};

/// Throws FitsError for sizes that no camera's image has: a hostile header must not claim all memory.
void checkLayout(const std::filesystem::path& path, const FitsLayout& layout);

/// Where the rows come from.
class FitsPixels {
  public:
    virtual ~FitsPixels() = default;
    /// Whole rows from `first` on, in file order. Throws FitsError.
    virtual void read(std::size_t first, std::span<float> out) const = 0;
};

struct OpenedFits {
    std::size_t width = 0;
    std::size_t height = 0;
    bool floatingPoint = true;  ///< the pixels may hold blanks (not a number)
    FitsHeader header;
    std::unique_ptr<const FitsPixels> pixels;
};

/// Opens a file whose primary unit is a plain image, to be read straight from the disk. Nothing when it isn't
/// that; throws FitsError when it is and is damaged.
std::optional<OpenedFits> openPlainFits(const std::filesystem::path& path);

/// Opens the first image of any other file: tile-compressed, in an extension, packed by gzip. Throws
/// FitsError.
OpenedFits openPackedFits(const std::filesystem::path& path);

}  // namespace vantrel::observatory
