#include "correction/open_star_finder.h"

#include <cmath>

#include <gmock/gmock.h>

#include "correction/open_picture.h"
#include "support/recording_log.h"
#include "support/recording_messages.h"
#include "support/star_frames.h"

namespace vantrel::correction {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

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
