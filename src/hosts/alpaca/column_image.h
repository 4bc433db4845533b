// Pictures as Alpaca servers lay them out: column after column, each from top to bottom.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/image_array.h"

namespace vantrel::hosts::alpaca {

/// Numbers of the protocol.
enum class Element {
    kInt16 = 1,
    kInt32 = 2,
    kDouble = 3,
    kSingle = 4,
    kUInt64 = 5,
    kByte = 6,
    kInt64 = 7,
    kUInt16 = 8,
    kUInt32 = 9
};

/// Bytes; 0 when there is no such type.
std::size_t sizeOf(Element element);

struct ColumnImage {
    Element element = Element::kInt32;
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t planes = 1;      // numbers a pixel; a colour camera has three
    std::string_view data = {};  // width · height · planes elements, little endian, at any address
};

/// Throws std::runtime_error: the camera's picture can't be read, and why.
[[noreturn]] void refusePicture(const std::string& why);

/// The largest picture that a camera can have sent.
struct ImageLimits {
    std::size_t width = 0;
    std::size_t height = 0;

    static constexpr std::size_t kPlanes = 4;
};

/// Row after row. Whole numbers get the narrowest of the pixel types that holds them all; a pixel of several
/// planes becomes their mean.
platform::ImageArray inRows(const ColumnImage& image);

}  // namespace vantrel::hosts::alpaca
