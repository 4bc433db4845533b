// What is drawn into a solved picture, and where.

#include "imaging/annotated_picture.h"

#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "imaging/drawn_line.h"
#include "sky/compact_catalog.h"
#include "sky/named_objects.h"
#include "support/star_field.h"
#include "support/star_frames.h"

namespace vantrel::imaging {
namespace {

using sky::SkyPosition;

bool isColored(const ColorCanvas& canvas, double x, double y) {
    for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx) {
            const auto color =
                canvas.at(std::clamp(static_cast<int>(std::lround(x)) + dx, 0, canvas.width() - 1),
                          std::clamp(static_cast<int>(std::lround(y)) + dy, 0, canvas.height() - 1));
            if ((color & 0xFF) != (color >> 8 & 0xFF)) return true;
        }
    return false;
}

// Mizar and Alcor, once as small as it is, once reduced: names stand right of their stars' circles, circles
// around stars, lines where right ascension and declination are round.
TEST(AnnotatedPicture, DrawsWhereThingsAre) {
    const auto catalog = sky::CompactCatalog::openBuiltIn();
    for (const std::size_t times : {1, 3}) {
        SCOPED_TRACE(times);
        test::StarField field;
        field.width = 900 * times;
        field.height = 680 * times;
        field.fwhm *= static_cast<double>(times);
        field.tenthMagnitude *= static_cast<double>(times * times);
        field.wcs = test::wcsFor(field.width, field.height, {201.1, 54.9}, 6.0 / static_cast<double>(times),
                                 200, false);
        const auto counts = test::drawField(catalog.get(), field);
        const fits::FitsImage image(field.width, field.height,
                                    std::vector<float>(counts.begin(), counts.end()));
        const auto stars = solver::findStars(image, {});
        solver::ImageClues clues;
        clues.start = field.wcs.reference;
        clues.scales = {6.0 / static_cast<double>(times)};
        clues.epochYear = 2000;
        const auto solved = solver::solveImage(image, stars, clues, *catalog, {});
        ASSERT_TRUE(solved.solution);
        const ColorCanvas canvas = annotatedPicture(image, solved);
        EXPECT_EQ(canvas.width(), times == 1 ? 900 : 2000);
        const double scale = canvas.width() / static_cast<double>(field.width);
        const auto place = [&](SkyPosition position) {
            const auto at = *field.wcs.toPixel(position);
            return sky::PixelPosition{(at.x + 0.5) * scale - 0.5, (at.y + 0.5) * scale - 0.5};
        };
        const double unit = std::max(0.7, canvas.height() / 900.0);
        for (const auto& star : solved.solution->stars) {
            const double radius = std::max(7.0, 8 * unit);
            EXPECT_TRUE(
                isColored(canvas, (star.x + 0.5) * scale - 0.5, (star.y + 0.5) * scale - 0.5 + radius));
        }
        int named = 0;
        for (const auto& star : sky::namedStars()) {
            if (std::string(star.name) != "Mizar" && std::string(star.name) != "Alcor") continue;
            const auto at = place(star.place);
            bool colored = false;
            for (double x = 14; x < 50; ++x) colored = colored || isColored(canvas, at.x + x * unit, at.y);
            named += colored;
        }
        EXPECT_EQ(named, 2);
        for (double minutes = 0.5; minutes < 20; ++minutes) {
            const auto onLine = place({201.25 + minutes / 60, 54 + 2 / 3.0});
            EXPECT_TRUE(isColored(canvas, onLine.x, onLine.y)) << minutes;
        }
    }
}

TEST(ColorCanvas, HasALetterForAllThatIsWritten) {
    std::string letters = "0123456789+-.'*hms";
    for (char letter = 'A'; letter <= 'Z'; ++letter) letters += letter;
    std::vector<std::vector<std::uint8_t>> seen;
    for (const char letter : letters) {
        ColorCanvas canvas(20, 20);
        canvas.setPen(0xFFFFFF, 1);
        canvas.text(4, 4, 12, std::string(1, letter));
        EXPECT_EQ(canvas.at(2, 10) + canvas.at(14, 10) + canvas.at(8, 2) + canvas.at(8, 18), 0U) << letter;
        EXPECT_NE(canvas.rgb(), ColorCanvas(20, 20).rgb()) << letter;
        if (letter != '0') {  // as an O
            EXPECT_EQ(std::count(seen.begin(), seen.end(), canvas.rgb()), 0) << letter;
            seen.push_back(canvas.rgb());
        }
    }
}

TEST(ColorCanvas, LeavesOutWhatLiesOutside) {
    ColorCanvas canvas(10, 10);
    canvas.setPen(0x0000FF, 2);
    canvas.line(-50, 5, 60, 5);
    canvas.circle(-100, -100, 20);
    canvas.text(100, 100, 12, "M 31");
    EXPECT_EQ(canvas.at(0, 5), 0x0000FFU);
    EXPECT_EQ(canvas.at(9, 5), 0x0000FFU);
    EXPECT_EQ(canvas.at(5, 0), 0U);
}

// ---- drawn line

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
