// What the operator is told while he brings a star onto its mark.
#include "correction/star_guide.h"

#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "correction/image_overlays.h"
#include "correction/open_picture.h"
#include "correction/open_star_finder.h"
#include "support/memory_settings_port.h"
#include "support/recording_log.h"
#include "support/recording_messages.h"
#include "support/star_frames.h"

namespace vantrel::correction {
namespace {

using engine::PixelPosition;
using testing::ElementsAre;
using testing::IsEmpty;

struct Guided : vantrel::test::OpenPicture {
    explicit Guided(const std::string& program = "MaxIm") : OpenPicture(program) {
        marks.TargetX = 300;
        marks.TargetY = 200;
        marks.arcMinutesPerPixel = 0.05;
    }

    void expose(std::optional<PixelPosition> star) {
        test::FrameRecipe recipe;
        recipe.width = 500;
        recipe.height = 400;
        if (star) recipe.stars = {{star->x, star->y, 4, 9000}};
        show(painter.paint(recipe));
    }
    /// The pointing's image, with the marks in it.
    void begin(PixelPosition star) {
        marks.StarX = static_cast<float>(star.x);
        marks.StarY = static_cast<float>(star.y);
        expose(star);
        overlays.CrossHair(PixelPosition{marks.TargetX, marks.TargetY});
        guide.begin(marks);
    }
    void centre(std::optional<PixelPosition> star) {
        expose(star);
        overlays.DrawLineOnImage(static_cast<int>(marks.StarX), static_cast<int>(marks.StarY), 300, 200);
        overlays.CrossHair(PixelPosition{marks.TargetX, marks.TargetY});
        guide.look();
    }
    std::string text() const { return panel.lblStarToTarget.caption(); }

    test::FramePainter painter{5};
    test::MemorySettingsPort settings;
    test::RecordingLog log;
    ImageOverlays overlays{image, settings, log};
    platform::Screen screen{{0, 0, 1920, 1040}};
    platform::Form form{screen, "frmMain", "", {}};
    GuidancePanel panel{form};
    int sounds = 0;
    StarGuide guide{panel, image, [this] { ++sounds; }};
    CorrectionMarks marks;
};

TEST(StarGuide, TellsHowFarTheStarIsFromItsMark) {
    for (const char* program : {"MaxIm", "CCDSoft", "BuiltIn"}) {
        SCOPED_TRACE(program);
        Guided guided(program);
        guided.install<vantrel::test::FakeApplication>("Vantrel.Application");
        guided.begin({200, 200});
        EXPECT_EQ(guided.text(), "star to target 5.0' (100 px)");
        EXPECT_EQ(guided.panel.gaugeStarToTarget.fraction(), 1);
        EXPECT_TRUE(guided.panel.lblStarToTarget.visible());
        guided.centre(PixelPosition{240, 200});
        EXPECT_EQ(guided.text(), "star to target 3.0' (60 px)");
        EXPECT_NEAR(guided.panel.gaugeStarToTarget.fraction(), 0.6, 0.005);
        guided.centre(PixelPosition{300, 200});
        EXPECT_EQ(guided.text(), "star to target 0.0' (0 px)") << "right under the marks";
        guided.centre(std::nullopt);
        EXPECT_EQ(guided.text(), "star not found");
        EXPECT_EQ(guided.panel.gaugeStarToTarget.fraction(), 0);
        EXPECT_FALSE(guided.guide.guidance()->star);
        guided.centre(PixelPosition{260, 200});
        EXPECT_EQ(guided.text(), "star to target 2.0' (40 px)");
        guided.guide.end();
        EXPECT_EQ(guided.text(), "");
        EXPECT_FALSE(guided.panel.lblStarToTarget.visible());
        EXPECT_FALSE(guided.guide.guidance());
        EXPECT_TRUE(guided.log.lines.empty());
    }
}

TEST(StarGuide, TellsPixelsAloneWhereTheScaleIsUnknown) {
    Guided guided;
    guided.marks.arcMinutesPerPixel = 0;
    guided.panel.chkCloseSound.setValue(1);
    guided.begin({200, 200});
    EXPECT_EQ(guided.text(), "star to target 100 px");
    guided.centre(PixelPosition{300, 200});
    EXPECT_EQ(guided.sounds, 0) << "nobody knows how close that is";
}

TEST(StarGuide, FollowsTheMountsSlewAndBeginsWithTheStarsNewPlace) {
    Guided guided;
    guided.marks.mountSlewed = true;
    guided.begin({300, 200});
    EXPECT_EQ(guided.text(), "star not found");
    guided.centre(PixelPosition{100, 200});
    EXPECT_EQ(guided.text(), "star to target 10.0' (200 px)");
    EXPECT_EQ(guided.panel.gaugeStarToTarget.fraction(), 1);
}

TEST(StarGuide, SoundsOnceForEachApproachIfWanted) {
    for (const bool wanted : {false, true}) {
        Guided guided;
        guided.panel.chkCloseSound.setValue(wanted ? 1 : 0);
        guided.begin({200, 200});
        const auto at = [&](double pixels) { guided.centre(PixelPosition{300 - pixels, 200}); };
        for (const double pixels : {70.0, 30.0, 12.0}) at(pixels);
        EXPECT_EQ(guided.sounds, 0);
        for (const double pixels : {9.0, 5.0, 12.0, 8.0}) at(pixels);
        EXPECT_EQ(guided.sounds, wanted ? 1 : 0) << "trembling around the limit";
        for (const double pixels : {30.0, 9.0}) at(pixels);
        EXPECT_EQ(guided.sounds, wanted ? 2 : 0) << "the next approach";
    }
}

TEST(StarGuide, UsesTheImagingProgramNoMoreThanTheMarksDoAndSurvivesTheirFailure) {
    Guided guided;
    guided.begin({200, 200});
    guided.uses();
    guided.overlays.CrossHair(PixelPosition{300, 200});
    const auto uses = guided.uses();
    guided.overlays.CrossHair(PixelPosition{300, 200});
    guided.guide.look();
    EXPECT_EQ(guided.uses(), uses);

    guided.fail("MaxIm.Document", "ImageArray");
    guided.centre(PixelPosition{240, 200});
    EXPECT_EQ(guided.text(), "star not found") << "the image that was written before is an old one";
    EXPECT_FALSE(guided.log.lines.empty()) << "of the marks";

    Guided none("TheSky");
    none.guide.begin(none.marks);
    none.guide.look();
    EXPECT_FALSE(none.guide.guidance()) << "without an image there is nothing to tell";
}

// ---- the finder

platform::ImageArray starAt(double x, double y) {
    test::FrameRecipe recipe;
    recipe.width = 160;
    recipe.height = 120;
    recipe.stars = {{x, y, 3, 9000}};
    return test::FramePainter(3).paint(recipe);
}

struct Finder : test::OpenPicture {
    using OpenPicture::OpenPicture;
    test::RecordingLog log;
    test::RecordingMessages messages;
    OpenStarFinder finder{image, log, messages};
};

TEST(OpenStarFinder, looksAtTheImageThatEitherProgramShows) {
    const struct {
        const char* program;
        std::vector<std::string> uses;
    } rows[] = {
        {"MaxIm", {"create MaxIm.Application", "get CurrentDocument", "get ImageArray"}},
        {"CCDSoft", {"create CCDSoft.Image", "call AttachToActive", "call SetActive", "get DataArray"}},
    };
    for (const auto& row : rows) {
        Finder world(row.program);
        world.show(starAt(70.3, 50.6));
        const auto [x, y] = world.finder.FindBrightestStarOnImage();
        EXPECT_NEAR(x, 70.3, 0.1);
        EXPECT_NEAR(y, 50.6, 0.1);
        EXPECT_EQ(world.uses(), row.uses);
        EXPECT_THAT(world.log.lines, IsEmpty());
        EXPECT_THAT(world.messages.shown, IsEmpty());
    }
}

TEST(OpenStarFinder, logsFailuresAndShowsThatAStarCanNotBeMeasured) {
    const struct {
        platform::ImageArray image;
        const char* text;
        bool shown;
    } rows[] = {
        {{120, 90, std::vector<float>(120 * 90, 0)}, "No star found", false},
        {starAt(3, 50), "Star is too close to frame edge or is too weak", false},
        {{120, 90, std::vector<float>(120 * 90, NAN)}, "Can not measure HFD for this image.", true},
    };
    for (const auto& row : rows) {
        Finder world;
        world.show(row.image);
        const auto [x, y] = world.finder.FindBrightestStarOnImage();
        EXPECT_EQ(x, 0);
        EXPECT_EQ(y, 0);
        EXPECT_THAT(world.log.lines, ElementsAre(row.text));
        EXPECT_EQ(world.messages.shown.size(), row.shown ? 1U : 0U);
        for (const auto& shown : world.messages.shown) EXPECT_EQ(shown.text, "Can not measure HFD");
    }
    Finder lost("CCDSoft");
    lost.show({120, 90, std::vector<float>(120 * 90, 0)});
    lost.fail("CCDSoft.Image", "DataArray");
    EXPECT_THROW(lost.finder.FindBrightestStarOnImage(), platform::OperationError);
}

}  // namespace
}  // namespace vantrel::correction
