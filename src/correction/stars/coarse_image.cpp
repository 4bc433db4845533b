#include "correction/stars/coarse_image.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <vector>

namespace vantrel::correction {
namespace {

constexpr std::size_t kSide = kCoarse;

/// "Not a number" where fewer than half of the pixels have a value.
float meanOfFinite(const float* corner, std::size_t stride) {
    float sum = 0, count = 0;
    for (std::size_t row = 0; row < kSide; ++row)
        for (std::size_t column = 0; column < kSide; ++column) {
            const float pixel = corner[row * stride + column];
            if (!std::isfinite(pixel)) continue;
            sum += pixel;
            ++count;
        }
    return 2 * count < kCoarse * kCoarse ? std::numeric_limits<float>::quiet_NaN() : sum / count;
}

template <typename Pixel>
std::vector<float> meansOf(const Pixel* pixels, std::size_t stride, std::size_t width, std::size_t height) {
    // Whole numbers of 16 bits are added fastest as such.
    using Sum = std::conditional_t<std::is_same_v<Pixel, std::uint16_t>, std::uint32_t, float>;
    std::vector<float> means(width * height);
    std::vector<Sum> sums(width * kSide);  // of pixels above one another
    for (std::size_t y = 0; y < height; ++y) {
        const Pixel* first = pixels + y * kSide * stride;
        for (std::size_t x = 0; x < sums.size(); ++x) {
            Sum sum = 0;
            for (std::size_t row = 0; row < kSide; ++row) sum += static_cast<Sum>(first[row * stride + x]);
            sums[x] = sum;
        }
        for (std::size_t x = 0; x < width; ++x) {
            Sum sum = 0;
            for (std::size_t column = 0; column < kSide; ++column) sum += sums[x * kSide + column];
            means[y * width + x] = static_cast<float>(sum) / (kCoarse * kCoarse);
        }
    }
    if constexpr (std::is_floating_point_v<Pixel>)
        for (std::size_t y = 0; y < height; ++y)
            for (std::size_t x = 0; x < width; ++x)
                if (!std::isfinite(means[y * width + x]))
                    means[y * width + x] = meanOfFinite(pixels + y * kSide * stride + x * kSide, stride);
    return means;
}

}  // namespace

platform::ImageArray coarseImage(const platform::ImageArray& image) {
    const std::size_t width = image.width() / kSide, height = image.height() / kSide;
    return {width, height,
            std::visit([&](const auto& p) { return meansOf(p.data(), image.width(), width, height); },
                       image.pixels())};
}

}  // namespace vantrel::correction
