// What is drawn into a solved picture, and where.
#include "imaging/annotated_picture.h"

#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "sky/named_objects.h"
#include "sky/tycho_catalog.h"
#include "support/star_field.h"

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
    const auto catalog = sky::TychoCatalog::openBuiltIn();
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

}  // namespace
}  // namespace vantrel::imaging
