#include "correction/stars/coarse_image.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace vantrel::correction {
namespace {

/// 10 x 9: two columns and a row are left over.
template <typename Pixel>
std::vector<Pixel> slope() {
    std::vector<Pixel> pixels;
    for (int y = 0; y < 9; ++y)
        for (int x = 0; x < 10; ++x) pixels.push_back(static_cast<Pixel>(100 + 16 * x + 160 * y));
    return pixels;
}

TEST(CoarseImage, HasTheMeansOfSquaresInEveryTypeOfPixels) {
    for (const platform::ImageArray& fine :
         {platform::ImageArray(10, 9, slope<std::uint16_t>()), platform::ImageArray(10, 9, slope<float>())}) {
        const platform::ImageArray coarse = coarseImage(fine);
        ASSERT_EQ(coarse.width(), 2U);
        ASSERT_EQ(coarse.height(), 2U);
        EXPECT_EQ(coarse.at(0, 0), 100 + 24 + 240);
        EXPECT_EQ(coarse.at(1, 0), 100 + 88 + 240);
        EXPECT_EQ(coarse.at(0, 1), 100 + 24 + 880);
    }
}

TEST(CoarseImage, PassesOverPixelsWithoutAValue) {
    std::vector<float> pixels = slope<float>();
    for (std::size_t row = 0; row < 40; row += 10) {
        std::fill_n(pixels.begin() + static_cast<std::ptrdiff_t>(row), 2, std::nanf(""));
        std::fill_n(pixels.begin() + static_cast<std::ptrdiff_t>(row) + 4, 3,
                    std::numeric_limits<float>::infinity());
    }
    const platform::ImageArray coarse = coarseImage(platform::ImageArray(10, 9, pixels));
    EXPECT_EQ(coarse.at(0, 0), 100 + 40 + 240) << "the right half";
    EXPECT_TRUE(std::isnan(coarse.at(1, 0))) << "a quarter is left";
    EXPECT_EQ(coarse.at(1, 1), 100 + 88 + 880);
}

}  // namespace
}  // namespace vantrel::correction
