#include "imaging/drawn_line.h"

#include <cmath>

#include <gtest/gtest.h>

#include "support/star_frames.h"

namespace vantrel::imaging {
namespace {

struct Line {
    double fromX, fromY, toX, toY;
    int width = 1;
};

struct Row {
    const char* what;
    std::vector<Line> lines;
    std::vector<test::FrameStar> stars;
    double x, y, size;
    bool line;
};

const Row kRows[] = {
    {"along a row", {{0, 60, 119, 60}}, {}, 40, 60, 28, true},
    {"along a column, three pixels wide", {{70, 0, 70, 119, 3}}, {}, 71, 50, 20, true},
    {"steep and slanting", {{40, 5, 70, 115}}, {}, 55, 60, 15, true},
    {"where two cross", {{0, 60, 119, 60}, {50, 0, 50, 119}}, {}, 50, 60, 10, true},
    {"near its end", {{20, 60, 119, 60}}, {}, 32, 60, 28, true},
    {"a star", {}, {{60, 60, 3, 20'000}}, 60, 60, 3, false},
    {"a saturated star", {}, {{60, 60, 8, 900'000}}, 60, 60, 14, false},
    {"a wide star", {}, {{60, 60, 24, 20'000}}, 60, 60, 24, false},
    {"a star with a neighbour", {}, {{60, 60, 3, 20'000}, {68, 60, 3, 20'000}}, 60, 60, 3, false},
    {"a star at the corner", {}, {{2, 2, 3, 20'000}}, 2, 2, 3, false},
    {"a star that a line runs through", {{0, 60, 119, 60}}, {{60, 60, 3, 20'000}}, 60, 60, 3, true},
    {"a star beside a line", {{0, 75, 119, 75}}, {{60, 60, 3, 20'000}}, 60, 60, 3, false},
};

TEST(DrawnLine, IsToldFromStars) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.what);
        test::FrameRecipe recipe;
        recipe.width = recipe.height = 120;
        recipe.stars = row.stars;
        std::vector<std::size_t> places;
        for (const Line& line : row.lines)
            for (double step = 0; step <= 1; step += 1.0 / 500)
                for (int side = 0; side < line.width; ++side) {
                    const double x = std::round(line.fromX + step * (line.toX - line.fromX)) + side;
                    const double y = std::round(line.fromY + step * (line.toY - line.fromY));
                    places.push_back(static_cast<std::size_t>(y * 120 + std::min(x, 119.0)));
                }
        const auto image = test::FramePainter(2).paint(recipe).withPixels(places, 30'000);
        const double peak = image.at(static_cast<std::size_t>(row.x), static_cast<std::size_t>(row.y));
        EXPECT_EQ(isDrawnLine(image, row.x, row.y, row.size, (1000 + peak) / 2), row.line);
    }
}

}  // namespace
}  // namespace vantrel::imaging
