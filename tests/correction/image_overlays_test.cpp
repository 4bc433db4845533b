#include "correction/image_overlays.h"

#include <gmock/gmock.h>

#include "correction/open_picture.h"
#include "support/memory_settings_port.h"
#include "support/recording_log.h"

namespace vantrel::correction {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kSubscript = "Error 9: Subscript out of range\r\nModule modComponents Sub ";

struct World : test::OpenPicture {
    using OpenPicture::OpenPicture;

    void setWidth(const std::string& text) { settings.SaveSetting("PolarAlign", "CrossHairWidth", text); }

    test::MemorySettingsPort settings;
    test::RecordingLog log;
    ImageOverlays overlays{image, settings, log};
};

platform::ImageArray darkImage(int columns, int rows) {
    std::vector<std::int32_t> pixels(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows));
    for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<std::int32_t>(100 + i % 7);
    return {static_cast<std::size_t>(columns), static_cast<std::size_t>(rows), std::move(pixels)};
}

using IsMarked = std::function<bool(long x, long y)>;

/// Every pixel has the mark's value or the one that it had, as the reference says. Shows the first pixel that
/// differs.
void expectMarked(const platform::ImageArray& image, double mark, const IsMarked& reference) {
    const auto columns = static_cast<int>(image.width());
    const auto before = darkImage(columns, static_cast<int>(image.height()));
    for (std::size_t y = 0; y < image.height(); ++y)
        for (std::size_t x = 0; x < image.width(); ++x) {
            const bool marked = reference(static_cast<long>(x), static_cast<long>(y));
            ASSERT_EQ(image.at(x, y), marked ? mark : before.at(x, y)) << "column " << x << ", row " << y;
        }
}

struct Program {
    const char* name;
    double mark;
};
const Program kPrograms[] = {{"MaxIm", 50'000}, {"CCDSoft", 2'147'483'000}};

using MakesMark = std::function<void(ImageOverlays&)>;

/// In either program, without a word.
void expectDrawn(int columns, int rows, int width, const MakesMark& mark, const IsMarked& reference) {
    for (const auto& program : kPrograms) {
        SCOPED_TRACE(testing::Message() << program.name << ", " << width << " wide, " << columns);
        World world(program.name);
        world.setWidth(std::to_string(width));
        world.show(darkImage(columns, rows));
        mark(world.overlays);
        expectMarked(*world.picture.pixels, program.mark, reference);
        EXPECT_THAT(world.log.lines, IsEmpty());
    }
}

// The reference asks of each pixel whether it is marked, in whole numbers; the overlays walk along the mark.

bool within(long value, long first, long last) { return value >= first && value <= last; }

/// Is `number` the whole number that is nearest to p / q (q > 0), the even one of two?
bool isNearest(long number, long p, long q) {
    const long twice = 2 * std::abs(p - number * q);
    return twice < q || (twice == q && number % 2 == 0);
}

IsMarked lineReference(long x1, long y1, long x2, long y2, long width) {
    return [=](long x, long y) {
        const bool shallow = std::abs(y2 - y1) <= std::abs(x2 - x1);
        const long run = shallow ? x2 - x1 : y2 - y1, rise = shallow ? y2 - y1 : x2 - x1;
        const long from = shallow ? x1 : y1, offset = shallow ? y1 : x1;
        const long along = shallow ? x : y, across = shallow ? y : x;
        if (!within(along, std::min(from, from + run), std::max(from, from + run))) return false;
        for (long k = 0; k < width; ++k) {
            const long p = run == 0 ? offset + k : (offset + k) * run + (along - from) * rise;
            const long q = run == 0 ? 1 : run;
            if (isNearest(across, q > 0 ? p : -p, std::abs(q))) return true;
        }
        return false;
    };
}

TEST(ImageOverlays, drawsLinesOfAllSlopesAndWidths) {
    const int lines[][4] = {
        {5, 9, 34, 9},    // level
        {34, 9, 5, 9},    // and backwards
        {12, 3, 12, 27},  // upright
        {12, 27, 12, 3},  //
        {7, 7, 7, 7},     // one point
        {2, 3, 20, 21},   // both diagonals: the last shallow slope
        {25, 2, 4, 23},   //
        {4, 6, 36, 22},   // 1/2: every other pixel lies between two rows
        {36, 6, 4, 14},   // -1/4, leftwards
        {5, 4, 26, 13},   // 3/7
        {6, 25, 35, 3},   // upwards
        {8, 2, 17, 23},   // steep: 7/3
        {30, 28, 10, 4},  // 6/5, leftwards and upwards
        {20, 4, 12, 20},  // -2: every other pixel lies between two columns
        {11, 2, 12, 29},  // nearly upright
        {3, 20, 38, 21},  // nearly level
    };
    for (const int width : {1, 2, 3, 6})
        for (const auto& line : lines) {
            const int x1 = line[0], y1 = line[1], x2 = line[2], y2 = line[3];
            SCOPED_TRACE(testing::Message() << x1 << ", " << y1 << " to " << x2 << ", " << y2);
            expectDrawn(
                45, 36, width, [&](ImageOverlays& overlays) { overlays.DrawLineOnImage(x1, y1, x2, y2); },
                lineReference(x1, y1, x2, y2, width));
        }
}

TEST(ImageOverlays, drawsCrossHairsFromTheirCentreToTheRightAndDown) {
    const struct {
        int columns, rows;
        std::optional<engine::PixelPosition> centre;
        int width;
        long cx, cy;
    } rows[] = {
        {765, 510, {}, 1, 382, 255},  // halves go to the even number
        {763, 511, {}, 1, 382, 256},  // 381.5, 255.5
        {60, 40, {}, 3, 30, 20},           {60, 40, {{10.5, 11.5}}, 2, 10, 12},
        {60, 40, {{58.6, 0.4}}, 1, 59, 0}, {60, 40, {{55, 35}}, 5, 55, 35},  // up to the last column and row
        {60, 40, {{10, 10}}, 0, 0, 0},                                       // no width, no mark
    };
    for (const auto& row : rows)
        expectDrawn(
            row.columns, row.rows, row.width,
            [&](ImageOverlays& overlays) { overlays.CrossHair(row.centre); },
            [&](long x, long y) {
                return within(x, row.cx, row.cx + row.width - 1) || within(y, row.cy, row.cy + row.width - 1);
            });
}

TEST(ImageOverlays, drawsRectanglesWithAClosedCorner) {
    const struct {
        int columns, rows;
        double fraction;
        int width;
        long x1, y1, x2, y2;
    } rows[] = {
        {1000, 800, 0.2, 1, 400, 320, 600, 480}, {1000, 800, 0.2, 4, 400, 320, 600, 480},
        {101, 51, 0.5, 2, 25, 13, 76, 38},  // 25.25, 12.75, 75.75, 38.25
        {101, 63, 0, 3, 50, 32, 50, 32},    // 50.5 and 31.5: a point
        {80, 60, -0.3, 1, 40, 30, 40, 30},  // as little as 0
    };
    for (const auto& row : rows)
        expectDrawn(
            row.columns, row.rows, row.width,
            [&](ImageOverlays& overlays) {
                EXPECT_EQ(overlays.DrawCenteredRectangles(row.fraction), std::max(0.0, row.fraction));
            },
            [&](long x, long y) {
                const long thick = row.width - 1;
                if (!within(x, row.x1, row.x2 + thick) || !within(y, row.y1, row.y2 + thick)) return false;
                return x <= row.x1 + thick || x >= row.x2 || y <= row.y1 + thick || y >= row.y2;
            });
}

TEST(ImageOverlays, drawNothingOfAMarkThatLeavesTheImage) {
    const auto crossHairAt = [](double x, double y) -> MakesMark {
        return [=](ImageOverlays& overlays) { overlays.CrossHair(engine::PixelPosition{x, y}); };
    };
    const auto line = [](int x1, int y1, int x2, int y2) -> MakesMark {
        return [=](ImageOverlays& overlays) { overlays.DrawLineOnImage(x1, y1, x2, y2); };
    };
    const MakesMark wholeImage = [](ImageOverlays& overlays) {
        EXPECT_EQ(overlays.DrawCenteredRectangles(1.5), 1);
    };
    const struct {
        const char* what;
        MakesMark mark;
        const char* label;
        std::size_t ofMaxIm, ofCCDSoft;  // their reports
    } rows[] = {
        {"cross hair over the last row", crossHairAt(20, 38), "CrossHair", 1, 1},
        {"cross hair over the last column", crossHairAt(48, 20), "CrossHair", 1, 1},
        {"cross hair above the first row", crossHairAt(20, -1), "CrossHair", 1, 1},
        {"cross hair left of the first column", crossHairAt(-1, 20), "CrossHair", 1, 1},
        {"negative x1", line(-1, 3, 20, 9), "", 0, 0},
        {"negative y1", line(3, -1, 20, 9), "", 0, 0},
        {"negative x2", line(3, 9, -1, 12), "", 0, 0},
        {"negative y2", line(3, 9, 5, -1), "", 0, 0},
        {"shallow over the right edge", line(3, 9, 50, 20), "DrawLineOnImage", 0, 1},
        {"steep over the lower edge", line(9, 40, 12, 3), "DrawLineOnImage", 0, 1},
        {"shallow, the width over the lower edge", line(3, 38, 20, 38), "DrawLineOnImage", 1, 1},
        {"steep, the width over the right edge", line(48, 3, 48, 20), "DrawLineOnImage", 1, 1},
        {"the whole image's rectangle", wholeImage, "DrawLineOnImage", 0, 4},
    };
    for (const auto& row : rows)
        for (const auto& program : kPrograms) {
            SCOPED_TRACE(testing::Message() << row.what << ", " << program.name);
            World world(program.name);
            world.setWidth("3");
            world.show(darkImage(50, 40));
            row.mark(world.overlays);
            expectMarked(*world.picture.pixels, program.mark, [](long, long) { return false; });
            const std::size_t reports = program.name == std::string("MaxIm") ? row.ofMaxIm : row.ofCCDSoft;
            EXPECT_EQ(world.log.lines, std::vector(reports, kSubscript + row.label));
            EXPECT_FALSE(world.picture.modified);
        }
}

TEST(ImageOverlays, reportFailuresOfTheProgramAndOfTheWidth) {
    const struct {
        const char* label;
        void (*mark)(ImageOverlays&);
    } rows[] = {
        {"CrossHair", [](auto& o) { o.CrossHair(std::nullopt); }},
        {"DrawLineOnImage", [](auto& o) { o.DrawLineOnImage(1, 2, 30, 20); }},
        {"DrawCenteredRectangles", [](auto& o) { o.DrawCenteredRectangles(0.5); }},
    };
    for (const auto& row : rows) {
        const std::string module = std::string("\r\nModule modComponents Sub ") + row.label;
        for (const auto& [program, object, member] :
             {std::tuple{"MaxIm", "MaxIm.Document", "YSize"}, {"CCDSoft", "CCDSoft.Image", "Height"}}) {
            World world(program);
            world.show(darkImage(50, 40));
            world.fail(object, member);
            row.mark(world.overlays);
            EXPECT_THAT(world.log.lines, ElementsAre("Error 7: out of order" + module));
            EXPECT_FALSE(world.picture.modified);
        }
        World world;
        world.show(darkImage(50, 40));
        world.setWidth("broad");
        row.mark(world.overlays);
        EXPECT_THAT(world.log.lines, ElementsAre("Error 13: Type mismatch" + module));
        world.log.lines.clear();
        world.setWidth("1");  // read anew for every mark
        row.mark(world.overlays);
        EXPECT_THAT(world.log.lines, IsEmpty());
        World none("NeedToSelect");
        none.setWidth("broad");
        row.mark(none.overlays);
        EXPECT_TRUE(none.uses().empty() && none.log.lines.empty());
    }
}

TEST(ImageOverlays, handTheImageOverOnceEachWay) {
    World ccdSoft("CCDSoft");
    ccdSoft.show(darkImage(50, 40));
    ccdSoft.overlays.CrossHair(std::nullopt);
    EXPECT_THAT(ccdSoft.uses(),
                ElementsAre("create CCDSoft.Image", "call AttachToActive", "call SetActive", "get Width",
                            "get Height", "get DataArray", "put DataArray", "put ModifiedFlag"));
    EXPECT_TRUE(ccdSoft.picture.modified);
    ccdSoft.overlays.DrawCenteredRectangles(0.5);
    const auto uses = ccdSoft.uses();
    EXPECT_THAT(std::vector<std::string>(uses.begin(), uses.begin() + 5),
                ElementsAre("create CCDSoft.Image", "call AttachToActive", "get Width", "get Height",
                            "create CCDSoft.Image"));
    EXPECT_EQ(std::count(uses.begin(), uses.end(), "put DataArray"), 4);

    World maxIm;
    maxIm.show(darkImage(50, 40));
    maxIm.overlays.CrossHair(std::nullopt);
    EXPECT_THAT(maxIm.uses(), testing::Contains("create MaxIm.Application"));
    maxIm.picture.stretchMax = 1234.4;  // read anew for every mark
    maxIm.overlays.DrawLineOnImage(1, 2, 1, 2);
    EXPECT_EQ(maxIm.picture.pixels->at(1, 2), 1234);
    auto again = maxIm.uses();
    EXPECT_EQ(std::count(again.begin(), again.end(), "get ImageArray"), 1);
    EXPECT_EQ(std::count(again.begin(), again.end(), "put ImageArray"), 1);
    EXPECT_THAT(again, testing::Not(testing::Contains("create MaxIm.Application")));
}

}  // namespace
}  // namespace vantrel::correction
