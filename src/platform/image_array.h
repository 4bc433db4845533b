// The pixels of an image as they travel between the program and an imaging program.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <variant>
#include <vector>

namespace vantrel::platform {

/// A two-dimensional array of pixels: first index the column (x), second the row (y), both from 0. Contiguous
/// in memory, row after row.
///
/// A value: copies share their pixels, and a holder that changes pixels changes them for itself alone.
/// Handing an array over and setting a few of its pixels (a mark in a full frame) cost nothing like a copy of
/// it; see withPixels. Different threads may read the same array.
class ImageArray {
  public:
    using Pixels = std::variant<std::vector<std::uint16_t>, std::vector<std::int32_t>, std::vector<float>>;

    ImageArray(std::size_t width, std::size_t height, Pixels pixels);

    std::size_t width() const { return width_; }
    std::size_t height() const { return height_; }

    const Pixels& pixels() const;
    /// To write to: copies the pixels first when another array shares them.
    Pixels& pixels();

    double at(std::size_t x, std::size_t y) const {
        return std::visit([&](const auto& p) { return static_cast<double>(p[y * width_ + x]); }, pixels());
    }

    /// This image with the pixels at these places (y · width + x, inside the image) set to the value that is
    /// nearest to the given one. Takes time for the places only: the new array shares this one's pixels until
    /// it is read. If no other copy holds them by then they are changed where they are, else in a copy.
    ImageArray withPixels(std::vector<std::size_t> places, double value) const;

    /// A pixel that withPixels has set, and its value before the first time.
    struct SetPixel {
        std::size_t place;
        double before;
    };
    /// In the order of their places, each once. Writing to pixels() makes the array forget them.
    const std::vector<SetPixel>& setPixels() const;
    /// A part of the image, which must lie inside, as it was before withPixels set anything.
    ImageArray untouched(std::size_t left, std::size_t top, std::size_t width, std::size_t height) const;

  private:
    struct Body;

    std::size_t width_;
    std::size_t height_;
    std::shared_ptr<Body> body_;
};

}  // namespace vantrel::platform
