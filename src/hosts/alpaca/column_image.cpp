#include "hosts/alpaca/column_image.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <vector>

namespace vantrel::hosts::alpaca {

namespace {

template <typename Number>
Number load(const char* place) {
    std::array<char, sizeof(Number)> bytes;
    std::memcpy(bytes.data(), place, sizeof(Number));
    if constexpr (std::endian::native == std::endian::big) std::reverse(bytes.begin(), bytes.end());
    return std::bit_cast<Number>(bytes);
}

/// A pixel of several planes.
template <typename Source, typename Target>
Target meanOf(const char* place, std::size_t planes) {
    double sum = 0;
    for (std::size_t plane = 0; plane < planes; ++plane)
        sum += static_cast<double>(load<Source>(place + plane * sizeof(Source)));
    const double mean = sum / static_cast<double>(planes);
    return static_cast<Target>(std::is_integral_v<Target> ? std::round(mean) : mean);
}

/// Turns columns into rows in squares that fit the processor's first cache: each line of memory is read and
/// written once, also where the rows' length is a power of two.
template <typename Source, typename Target, typename Pixel>
std::vector<Target> turned(const ColumnImage& image, const Pixel& pixel) {
    constexpr std::size_t kSide = 64;
    std::array<Target, kSide * kSide> square;
    std::vector<Target> rows(image.width * image.height);
    const std::size_t step = sizeof(Source) * image.planes;
    for (std::size_t left = 0; left < image.width; left += kSide) {
        const std::size_t columns = std::min(kSide, image.width - left);
        for (std::size_t top = 0; top < image.height; top += kSide) {
            const std::size_t lines = std::min(kSide, image.height - top);
            for (std::size_t x = 0; x < columns; ++x) {
                const char* place = image.data.data() + ((left + x) * image.height + top) * step;
                for (std::size_t y = 0; y < lines; ++y, place += step) square[y * kSide + x] = pixel(place);
            }
            for (std::size_t y = 0; y < lines; ++y)
                std::copy_n(&square[y * kSide], columns, &rows[(top + y) * image.width + left]);
        }
    }
    return rows;
}

template <typename Source, typename Target>
platform::ImageArray rowsAs(const ColumnImage& image) {
    auto rows = image.planes == 1
                    ? turned<Source, Target>(
                          image, [](const char* place) { return static_cast<Target>(load<Source>(place)); })
                    : turned<Source, Target>(image, [&](const char* place) {
                          return meanOf<Source, Target>(place, image.planes);
                      });
    return {image.width, image.height, std::move(rows)};
}

template <typename Source>
struct Range {
    Source least = std::numeric_limits<Source>::max();
    Source greatest = std::numeric_limits<Source>::lowest();

    template <typename Target>
    bool isWithin() const {
        return std::in_range<Target>(least) && std::in_range<Target>(greatest);
    }
};

template <typename Source>
Range<Source> rangeOf(const ColumnImage& image) {
    Range<Source> range;
    const char* const end = image.data.data() + image.data.size();
    for (const char* place = image.data.data(); place != end; place += sizeof(Source)) {
        const auto value = load<Source>(place);
        range.least = std::min(range.least, value);
        range.greatest = std::max(range.greatest, value);
    }
    return range;
}

template <typename Source>
platform::ImageArray narrowestRows(const ColumnImage& image) {
    const Range<Source> range = rangeOf<Source>(image);
    if (range.template isWithin<std::uint16_t>()) return rowsAs<Source, std::uint16_t>(image);
    if (range.template isWithin<std::int32_t>()) return rowsAs<Source, std::int32_t>(image);
    return rowsAs<Source, float>(image);
}

}  // namespace

void refusePicture(const std::string& why) {
    throw std::runtime_error("The camera's picture can't be read: " + why + ".");
}

std::size_t sizeOf(Element element) {
    switch (element) {
        case Element::kByte:
            return 1;
        case Element::kInt16:
        case Element::kUInt16:
            return 2;
        case Element::kInt32:
        case Element::kUInt32:
        case Element::kSingle:
            return 4;
        case Element::kDouble:
        case Element::kInt64:
        case Element::kUInt64:
            return 8;
    }
    return 0;
}

platform::ImageArray inRows(const ColumnImage& image) {
    switch (image.element) {
        case Element::kByte:
            return rowsAs<std::uint8_t, std::uint16_t>(image);
        case Element::kUInt16:
            return rowsAs<std::uint16_t, std::uint16_t>(image);
        case Element::kSingle:
            return rowsAs<float, float>(image);
        case Element::kDouble:
            return rowsAs<double, float>(image);
        case Element::kInt16:
            return narrowestRows<std::int16_t>(image);
        case Element::kUInt32:
            return narrowestRows<std::uint32_t>(image);
        case Element::kInt32:
            return narrowestRows<std::int32_t>(image);
        case Element::kInt64:
            return narrowestRows<std::int64_t>(image);
        case Element::kUInt64:
            return narrowestRows<std::uint64_t>(image);
    }
    return {0, 0, std::vector<std::uint16_t>{}};
}

}  // namespace vantrel::hosts::alpaca
