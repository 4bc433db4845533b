// Pictures as cameras send them.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "hosts/alpaca/column_image.h"

namespace vantrel::test {

template <typename Number>
std::string littleEndian(const std::vector<Number>& numbers) {
    std::string bytes(numbers.size() * sizeof(Number), '\0');
    std::memcpy(bytes.data(), numbers.data(), bytes.size());
    return bytes;
}

/// The 32-bit numbers at the beginning of ImageBytes.
struct ImageBytesHead {
    std::int32_t version = 1;
    std::int32_t error = 0;
    std::int32_t client = 7;
    std::int32_t server = 9;
    std::int32_t start = 44;
    std::int32_t element = 2;
    std::int32_t transmission = 8;
    std::int32_t rank = 2;
    std::int32_t width = 2;
    std::int32_t height = 2;
    std::int32_t planes = 0;

    std::string bytes() const {
        return littleEndian(std::vector<std::int32_t>{version, error, client, server, start, element,
                                                      transmission, rank, width, height, planes});
    }
};

/// `pixels` column after column.
template <typename Number>
std::string imageBytes(hosts::alpaca::Element element, int width, int height,
                       const std::vector<Number>& pixels) {
    const ImageBytesHead head{.transmission = static_cast<int>(element), .width = width, .height = height};
    return head.bytes() + littleEndian(pixels);
}

}  // namespace vantrel::test
