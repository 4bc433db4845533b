// The pixels of an image as they travel between the program and an imaging program.
#pragma once

#include <cstddef>
#include <cstdint>
#include <variant>
#include <vector>

namespace vantrel::platform {

/// A two-dimensional array of pixels: first index the column (x), second the row (y), both from 0. Contiguous
/// in memory, row after row. Shared through ImageRef, so handing one over copies nothing; who wants to change
/// pixels copies the array first.
class ImageArray {
  public:
    using Pixels = std::variant<std::vector<std::uint16_t>, std::vector<std::int32_t>, std::vector<float>>;

    ImageArray(std::size_t width, std::size_t height, Pixels pixels)
        : width_(width), height_(height), pixels_(std::move(pixels)) {}

    std::size_t width() const { return width_; }
    std::size_t height() const { return height_; }
    const Pixels& pixels() const { return pixels_; }
    Pixels& pixels() { return pixels_; }

    double at(std::size_t x, std::size_t y) const {
        return std::visit([&](const auto& p) { return static_cast<double>(p[y * width_ + x]); }, pixels_);
    }

  private:
    std::size_t width_;
    std::size_t height_;
    Pixels pixels_;
};

}  // namespace vantrel::platform
