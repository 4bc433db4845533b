#include <algorithm>
#include <array>
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "solver/isophotes.h"

namespace vantrel::solver {
namespace {

struct Star {
    double x = 0, y = 0;
};

struct Field {
    std::size_t width = 640, height = 480;
    std::vector<float> pixels = std::vector<float>(width * height);
    std::vector<Star> stars = {};

    void addStar(double x, double y, double light, double sigma) {
        for (std::size_t row = 0; row < height; ++row)
            for (std::size_t column = 0; column < width; ++column) {
                const double dx = static_cast<double>(column) - x;
                const double dy = static_cast<double>(row) - y;
                if (std::abs(dx) > 9 * sigma || std::abs(dy) > 9 * sigma) continue;
                pixels[row * width + column] +=
                    static_cast<float>(light / (2 * 3.14159 * sigma * sigma) *
                                       std::exp(-(dx * dx + dy * dy) / (2 * sigma * sigma)));
            }
    }

    /// Stars of all kinds, each by itself and whole, in noise of 1.
    static Field drawn(unsigned seed) {
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> unit(0, 1);
        std::normal_distribution<double> noise;
        Field field;
        constexpr double kRoom = 80;  // pixels
        for (double y = kRoom / 2; y < static_cast<double>(field.height); y += kRoom)
            for (double x = kRoom / 2; x < static_cast<double>(field.width); x += kRoom) {
                const Star star{x + 20 * unit(random) - 10, y + 20 * unit(random) - 10};
                field.addStar(star.x, star.y, 300 * std::pow(300, unit(random)), 0.8 + 1.5 * unit(random));
                field.stars.push_back(star);
            }
        for (float& pixel : field.pixels) pixel += static_cast<float>(noise(random));
        return field;
    }
};

const std::array<float, 9> kKernel{1.F / 16, 2.F / 16, 1.F / 16, 2.F / 16, 4.F / 16,
                                   2.F / 16, 1.F / 16, 2.F / 16, 1.F / 16};

const Source* nearest(const std::vector<Source>& sources, const Star& star) {
    const auto found = std::ranges::min_element(
        sources, {}, [&](const Source& source) { return std::hypot(source.x - star.x, source.y - star.y); });
    return found != sources.end() && std::hypot(found->x - star.x, found->y - star.y) < 1 ? &*found : nullptr;
}

// Where stars overlap the library assigns their pixels by chance, so only lone ones can be compared.
TEST(Isophotes, OfLoneStarsAreThoseOfTheLibrary) {
    for (const unsigned seed : {1U, 2U, 3U}) {
        const Field field = Field::drawn(seed);
        const DetectionTask task{field.pixels, field.width, field.height, kKernel, 3, 1.5, 3};
        const auto theirs = *detectSources(task);
        const auto ours = *isophoteSources(task);
        for (const Star& star : field.stars) {
            const Source* const source = nearest(theirs, star);
            const Source* const own = nearest(ours, star);
            ASSERT_TRUE(source && own) << star.x << ' ' << star.y;
            EXPECT_NEAR(own->x, source->x, 1e-6);
            EXPECT_NEAR(own->y, source->y, 1e-6);
            EXPECT_NEAR(own->flux, source->flux, 1e-6 * source->flux);
            EXPECT_NEAR(own->sigma, source->sigma, 1e-6);
            EXPECT_EQ(own->pixels, source->pixels);
            EXPECT_EQ(own->cut, source->cut);
        }
    }
}

}  // namespace
}  // namespace vantrel::solver
