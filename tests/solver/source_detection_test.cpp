#include "solver/source_detection.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

namespace vantrel::solver {
namespace {

struct Star {
    double x = 0, y = 0;
    double light = 0;
    double sigma = 1;
};

struct Field {
    std::size_t width = 640, height = 480;
    std::vector<float> pixels = std::vector<float>(width * height);
    std::vector<Star> stars = {};

    void add(const Star& star) {
        stars.push_back(star);
        const double spread = star.sigma * star.sigma;
        for (std::size_t row = 0; row < height; ++row)
            for (std::size_t column = 0; column < width; ++column) {
                const double dx = static_cast<double>(column) - star.x;
                const double dy = static_cast<double>(row) - star.y;
                if (std::abs(dx) > 9 * star.sigma || std::abs(dy) > 9 * star.sigma) continue;
                pixels[row * width + column] +=
                    static_cast<float>(star.light / (2 * std::numbers::pi * spread) *
                                       std::exp(-(dx * dx + dy * dy) / (2 * spread)));
            }
    }

    void fill(std::size_t left, std::size_t top, std::size_t columns, std::size_t rows, float value) {
        for (std::size_t y = top; y < top + rows; ++y)
            for (std::size_t x = left; x < left + columns; ++x) pixels[y * width + x] = value;
    }
};

const std::array<float, 1> kUnsmoothed{1};
const std::array<float, 9> kKernel{1.F / 16, 2.F / 16, 1.F / 16, 2.F / 16, 4.F / 16,
                                   2.F / 16, 1.F / 16, 2.F / 16, 1.F / 16};

std::optional<std::vector<Source>> detected(const Field& field, std::span<const float> kernel = kKernel) {
    const int side = kernel.size() == 1 ? 1 : 3;
    return detectSources({field.pixels, field.width, field.height, kernel, side, 1.5, 3});
}

const Source* nearest(const std::vector<Source>& sources, const Star& star) {
    const auto found = std::ranges::min_element(
        sources, {}, [&](const Source& source) { return std::hypot(source.x - star.x, source.y - star.y); });
    return found != sources.end() && std::hypot(found->x - star.x, found->y - star.y) < 1 ? &*found : nullptr;
}

TEST(SourceDetection, SumsAndMomentsAreThoseOfThePixels) {
    Field field;
    field.fill(100, 200, 4, 2, 10);  // an oblong of even light
    field.fill(0, 300, 3, 3, 2);     // at the border
    field.fill(300, 300, 2, 1, 50);  // of too few pixels
    field.fill(400, 100, 3, 1, 1);   // below the threshold
    field.fill(500, 100, 3, 1, 9);   // a line, and beside its corner another one: they hang together
    field.fill(503, 101, 3, 1, 9);
    const auto found = *detected(field, kUnsmoothed);
    ASSERT_EQ(found.size(), 3U);
    const Source* const oblong = nearest(found, {101.5, 200.5});
    ASSERT_NE(oblong, nullptr);
    EXPECT_DOUBLE_EQ(oblong->x, 101.5);
    EXPECT_DOUBLE_EQ(oblong->y, 200.5);
    EXPECT_DOUBLE_EQ(oblong->flux, 80);
    EXPECT_DOUBLE_EQ(oblong->peak, 10);
    EXPECT_EQ(oblong->pixels, 8);
    EXPECT_DOUBLE_EQ(oblong->longSigma, std::sqrt(1.25));
    EXPECT_DOUBLE_EQ(oblong->sigma, std::sqrt(std::sqrt(1.25) * 0.5));
    EXPECT_DOUBLE_EQ(oblong->angleDeg, 0);
    EXPECT_FALSE(oblong->cut);
    const Source* const atBorder = nearest(found, {1, 301});
    ASSERT_NE(atBorder, nullptr);
    EXPECT_TRUE(atBorder->cut);
    const Source* const steps = nearest(found, {502.5, 100.5});
    ASSERT_NE(steps, nullptr);
    EXPECT_EQ(steps->pixels, 6);
    EXPECT_GT(steps->angleDeg, 5) << "towards higher rows";
}

TEST(SourceDetection, StarsThatTouchArePartedAsTheirPeaksAre) {
    struct Case {
        double apart;
        double lightOfSecond;
        bool parted;
    };
    for (const auto& [apart, lightOfSecond, parted] :
         {Case{8, 20000, true}, Case{6, 5000, true}, Case{2, 20000, false}, Case{8, 60, false}}) {
        Field field;
        field.add({200, 200, 20000, 1.5});
        field.add({200 + apart, 200, lightOfSecond, 1.5});
        const auto found = *detected(field);
        ASSERT_EQ(found.size(), parted ? 2U : 1U) << apart << ' ' << lightOfSecond;
        double light = 0;
        for (const Source& source : found) light += source.flux;
        EXPECT_NEAR(light, 20000 + lightOfSecond, 0.02 * 20000) << "no pixel is lost";
        if (!parted) continue;
        for (const Star& star : field.stars) {
            const Source* const source = nearest(found, star);
            ASSERT_NE(source, nullptr) << star.x;
            EXPECT_NEAR(source->x, star.x, 0.7) << "the other's skirt draws it";
            EXPECT_NEAR(source->y, 200, 0.05);
        }
    }
}

TEST(SourceDetection, TooMuchAboveTheThresholdIsTold) {
    Field field{.width = 1000, .height = 1000};
    field.fill(0, 0, 1000, 961, 5);
    EXPECT_FALSE(detected(field).has_value());
}

}  // namespace
}  // namespace vantrel::solver
