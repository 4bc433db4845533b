#include "solver/isophotes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

#include <gtest/gtest.h>

namespace vantrel::solver {
namespace {

struct Field {
    std::size_t width = 640, height = 480;
    std::vector<float> pixels = std::vector<float>(width * height);

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

    /// Stars of all kinds, some of them in pairs and over the border, in noise of 1.
    static Field drawn(unsigned seed) {
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> unit(0, 1);
        std::normal_distribution<double> noise;
        Field field;
        for (int i = 0; i < 120; ++i) {
            const double x = 660 * unit(random) - 10;
            const double y = 500 * unit(random) - 10;
            const double light = 30 * std::pow(3000, unit(random));
            const double sigma = 0.8 + 1.5 * unit(random);
            field.addStar(x, y, light, sigma);
            if (i % 5 == 0) field.addStar(x + 5 * sigma, y + sigma, light / 2, sigma);
        }
        for (float& pixel : field.pixels) pixel += static_cast<float>(noise(random));
        return field;
    }
};

const std::array<float, 9> kKernel{1.F / 16, 2.F / 16, 1.F / 16, 2.F / 16, 4.F / 16,
                                   2.F / 16, 1.F / 16, 2.F / 16, 1.F / 16};

TEST(Isophotes, AreThoseOfTheLibrary) {
    int same = 0, all = 0;
    for (const unsigned seed : {1U, 2U, 3U}) {
        const Field field = Field::drawn(seed);
        const DetectionTask task{field.pixels, field.width, field.height, kKernel, 3, 1.5, 3};
        const auto theirs = *detectSources(task);
        const auto ours = *isophoteSources(task);
        for (const Source& source : theirs) {
            ++all;
            const auto near = [&](double a, double b, double by) { return std::abs(a - b) < by; };
            same += std::any_of(ours.begin(), ours.end(), [&](const Source& own) {
                return near(own.x, source.x, 1e-11) && near(own.y, source.y, 1e-11) &&
                       near(own.flux, source.flux, 1e-6 * std::abs(source.flux)) &&
                       near(own.sigma, source.sigma, 1e-6) && near(own.longSigma, source.longSigma, 1e-6) &&
                       near(own.angleDeg, source.angleDeg, 1e-3) && own.pixels == source.pixels &&
                       own.cut == source.cut;
            });
        }
        EXPECT_NEAR(static_cast<double>(ours.size()), static_cast<double>(theirs.size()), 2);
    }
    EXPECT_GT(all, 200);
    EXPECT_GT(same, 0.67 * all) << "of " << all;  // where stars overlap, the library throws dice
}

}  // namespace
}  // namespace vantrel::solver
