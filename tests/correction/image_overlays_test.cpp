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
    for (const auto& program : kPrograms)
        for (const int width : {1, 2, 3, 6}) {
            World world(program.name);
            world.setWidth(std::to_string(width));
            for (const auto& [x1, y1, x2, y2] : lines) {
                SCOPED_TRACE(testing::Message() << program.name << ", " << width << " pixels wide, from "
                                                << x1 << ", " << y1 << " to " << x2 << ", " << y2);
                world.show(darkImage(45, 36));
                world.overlays.DrawLineOnImage(x1, y1, x2, y2);
                expectMarked(*world.picture.pixels, program.mark, lineReference(x1, y1, x2, y2, width));
                EXPECT_THAT(world.log.lines, IsEmpty());
            }
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
    for (const auto& program : kPrograms)
        for (const auto& row : rows) {
            SCOPED_TRACE(testing::Message() << program.name << ", " << row.cx << ", " << row.cy);
            World world(program.name);
            world.setWidth(std::to_string(row.width));
            world.show(darkImage(row.columns, row.rows));
            world.overlays.CrossHair(row.centre);
            expectMarked(*world.picture.pixels, program.mark, [&](long x, long y) {
                return within(x, row.cx, row.cx + row.width - 1) || within(y, row.cy, row.cy + row.width - 1);
            });
            EXPECT_THAT(world.log.lines, IsEmpty());
        }
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
    for (const auto& program : kPrograms)
        for (const auto& row : rows) {
            SCOPED_TRACE(testing::Message() << program.name << ", " << row.fraction << " of " << row.columns);
            World world(program.name);
            world.setWidth(std::to_string(row.width));
            world.show(darkImage(row.columns, row.rows));
            EXPECT_EQ(world.overlays.DrawCenteredRectangles(row.fraction), std::max(0.0, row.fraction));
            const long thick = row.width - 1;
            expectMarked(*world.picture.pixels, program.mark, [&](long x, long y) {
                if (!within(x, row.x1, row.x2 + thick) || !within(y, row.y1, row.y2 + thick)) return false;
                return x <= row.x1 + thick || x >= row.x2 || y <= row.y1 + thick || y >= row.y2;
            });
            EXPECT_THAT(world.log.lines, IsEmpty());
        }
}

TEST(ImageOverlays, drawNothingOfAMarkThatLeavesTheImage) {
    const std::vector<std::string> kSilent;
    const std::vector<std::string> crossHair = {kSubscript + "CrossHair"};
    const std::vector<std::string> line = {kSubscript + "DrawLineOnImage"};
    const struct {
        const char* what;
        std::function<void(ImageOverlays&)> mark;
        std::vector<std::string> maxIm, ccdSoft;  // their reports
    } rows[] = {
        {"cross hair over the last row",
         [](auto& o) {
             o.CrossHair({{20, 38}});
         },
         crossHair, crossHair},
        {"cross hair over the last column",
         [](auto& o) {
             o.CrossHair({{48, 20}});
         },
         crossHair, crossHair},
        {"cross hair above the first row",
         [](auto& o) {
             o.CrossHair({{20, -1}});
         },
         crossHair, crossHair},
        {"cross hair left of the first column",
         [](auto& o) {
             o.CrossHair({{-1, 20}});
         },
         crossHair, crossHair},
        {"negative x1", [](auto& o) { o.DrawLineOnImage(-1, 3, 20, 9); }, kSilent, kSilent},
        {"negative y1", [](auto& o) { o.DrawLineOnImage(3, -1, 20, 9); }, kSilent, kSilent},
        {"negative x2", [](auto& o) { o.DrawLineOnImage(3, 9, -1, 12); }, kSilent, kSilent},
        {"negative y2", [](auto& o) { o.DrawLineOnImage(3, 9, 5, -1); }, kSilent, kSilent},
        {"shallow over the right edge", [](auto& o) { o.DrawLineOnImage(3, 9, 50, 20); }, kSilent, line},
        {"steep over the lower edge", [](auto& o) { o.DrawLineOnImage(9, 40, 12, 3); }, kSilent, line},
        {"shallow, the width over the lower edge", [](auto& o) { o.DrawLineOnImage(3, 38, 20, 38); }, line,
         line},
        {"steep, the width over the right edge", [](auto& o) { o.DrawLineOnImage(48, 3, 48, 20); }, line,
         line},
        {"the whole image's rectangle",
         [](auto& o) { EXPECT_EQ(o.DrawCenteredRectangles(1.5), 1); },
         kSilent,
         {line[0], line[0], line[0], line[0]}},
    };
    for (const auto& row : rows)
        for (const auto& program : kPrograms) {
            SCOPED_TRACE(testing::Message() << row.what << ", " << program.name);
            World world(program.name);
            world.setWidth("3");
            world.show(darkImage(50, 40));
            row.mark(world.overlays);
            expectMarked(*world.picture.pixels, program.mark, [](long, long) { return false; });
            EXPECT_EQ(world.log.lines, program.name == std::string("MaxIm") ? row.maxIm : row.ccdSoft);
            EXPECT_FALSE(world.picture.modified);
        }
}

TEST(ImageOverlays, drawTheEdgesOfARectangleOneByOne) {
    // Its lower right corner is thicker than the image: the lengthened edge towards it is passed over without
    // a word, the one along the image's end reported.
    const struct {
        int columns, rows;
        long x1, y1, x2, y2;
    } rows[] = {{200, 20, 6, 1, 194, 19}, {20, 200, 1, 6, 19, 194}};
    for (const auto& row : rows) {
        World world;
        world.setWidth("3");
        world.show(darkImage(row.columns, row.rows));
        world.overlays.DrawCenteredRectangles(0.94);
        EXPECT_THAT(world.log.lines, ElementsAre(kSubscript + "DrawLineOnImage"));
        expectMarked(*world.picture.pixels, 50'000, [&](long x, long y) {
            const bool left = within(x, row.x1, row.x1 + 2) && within(y, row.y1, row.y2);
            const bool top = within(y, row.y1, row.y1 + 2) && within(x, row.x1, row.x2);
            return left || top;
        });
    }
}

TEST(ImageOverlays, reportFailuresOfTheProgramAndOfTheWidth) {
    using Mark = void (*)(ImageOverlays&);
    const struct {
        const char* label;
        Mark mark;
        bool needsPixels;
    } marks[] = {
        {"CrossHair", [](auto& o) { o.CrossHair(std::nullopt); }, true},
        {"DrawLineOnImage", [](auto& o) { o.DrawLineOnImage(1, 2, 30, 20); }, true},
        {"DrawCenteredRectangles", [](auto& o) { o.DrawCenteredRectangles(0.5); }, false},
    };
    const struct {
        const char *program, *object, *member;
        long after;  // uses that go well
        bool ofPixels;
    } faults[] = {
        {"MaxIm", "MaxIm.Application", "create", 0, false},
        {"MaxIm", "MaxIm.Application", "CurrentDocument", 0, false},
        {"MaxIm", "MaxIm.Document", "XSize", 0, false},
        {"MaxIm", "MaxIm.Document", "YSize", 0, false},
        {"MaxIm", "MaxIm.Document", "StretchMax", 0, true},
        {"MaxIm", "MaxIm.Document", "ImageArray", 0, true},
        {"MaxIm", "MaxIm.Document", "ImageArray", 1, true},  // when it is put
        {"CCDSoft", "CCDSoft.Image", "create", 0, false},
        {"CCDSoft", "CCDSoft.Image", "AttachToActive", 0, false},
        {"CCDSoft", "CCDSoft.Image", "SetActive", 0, true},
        {"CCDSoft", "CCDSoft.Image", "Width", 0, false},
        {"CCDSoft", "CCDSoft.Image", "Height", 0, false},
        {"CCDSoft", "CCDSoft.Image", "DataArray", 0, true},
        {"CCDSoft", "CCDSoft.Image", "DataArray", 1, true},
    };
    for (const auto& mark : marks) {
        for (const auto& fault : faults) {
            if (fault.ofPixels && !mark.needsPixels) continue;
            SCOPED_TRACE(testing::Message() << mark.label << ", " << fault.object << " " << fault.member);
            World world(fault.program);
            world.show(darkImage(50, 40));
            world.fail(fault.object, fault.member, fault.after);
            mark.mark(world.overlays);
            EXPECT_THAT(
                world.log.lines,
                ElementsAre(std::string("Error 7: out of order\r\nModule modComponents Sub ") + mark.label));
            expectMarked(*world.picture.pixels, 0, [](long, long) { return false; });
            EXPECT_FALSE(world.picture.modified);
        }
        World world;
        world.show(darkImage(50, 40));
        world.setWidth("broad");
        mark.mark(world.overlays);
        EXPECT_THAT(
            world.log.lines,
            ElementsAre(std::string("Error 13: Type mismatch\r\nModule modComponents Sub ") + mark.label));
        world.log.lines.clear();
        world.setWidth("1");  // read anew for every mark
        mark.mark(world.overlays);
        EXPECT_THAT(world.log.lines, IsEmpty());
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

TEST(ImageOverlays, fetchAnewWhatNoLongerAnswers) {
    const struct {
        const char *object, *member;
        std::vector<std::string> anew;
    } rows[] = {
        {"MaxIm.Application",
         "AutofocusStatus",
         {"get AutofocusStatus", "create MaxIm.Application", "get XSize"}},
        {"MaxIm.Document", "XSize", {"get AutofocusStatus", "get XSize", "get CurrentDocument"}},
    };
    for (const auto& row : rows) {
        World world;
        world.show(darkImage(50, 40));
        world.overlays.CrossHair(std::nullopt);
        world.uses();
        platform::Fault fault;
        fault.object = row.object;
        fault.member = row.member;
        fault.error = {462, row.object, "gone"};
        fault.times = 1;
        world.host.inject(fault);
        world.overlays.DrawLineOnImage(1, 2, 30, 20);
        const auto uses = world.uses();
        EXPECT_EQ(std::vector<std::string>(uses.begin(), uses.begin() + 3), row.anew);
        EXPECT_EQ(world.picture.pixels->at(30, 20), 50'000);
        EXPECT_THAT(world.log.lines, IsEmpty());
    }
}

TEST(ImageOverlays, doNothingWithoutAnImagingProgram) {
    World world("NeedToSelect");
    world.setWidth("broad");
    world.overlays.CrossHair(std::nullopt);
    world.overlays.DrawLineOnImage(1, 2, 30, 20);
    EXPECT_EQ(world.overlays.DrawCenteredRectangles(2), 1);
    EXPECT_THAT(world.uses(), IsEmpty());
    EXPECT_THAT(world.log.lines, IsEmpty());
}

}  // namespace
}  // namespace vantrel::correction
