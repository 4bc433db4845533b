#include "app/status_strip.h"

#include <gtest/gtest.h>

#include "platform/color.h"

namespace vantrel::app {
namespace {

TEST(PlainSentence, LeavesOutNumbersAndProcedures) {
    const struct {
        const char* message;
        const char* sentence;
    } cases[] = {
        {"Error 13: Type mismatch\r\nmod cmdRun", "Type mismatch"},
        {"Sim.Camera Error -2147220991: Shutter stuck\r\nModule modComponents sub TakePicture",
         "Sim.Camera: Shutter stuck"},
        {"Telescope link failed\r\nCheck connection", "Telescope link failed Check connection"},
        {" Error 91: No object\r\nmodUtility\r\nTry again", "No object Try again"},
        {"Error in observer site!\r\nPlease check Setup Tab",
         "Error in observer site! Please check Setup Tab"},
        {"Error 13", "Error 13"},
        {"\r\n \r\n", ""},
    };
    for (const auto& c : cases) EXPECT_EQ(plainSentence(c.message), c.sentence) << c.message;
}

struct Strip : testing::Test {
    platform::Screen screen{{0, 0, 800, 600}};
    platform::Form form{screen, "frmMain", "", {}};
    StatusPanel panel{form};
    StatusStrip strip{panel};
};

TEST_F(Strip, LampsSayWhatIsMissing) {
    namespace color = platform::color;
    strip.show({});
    EXPECT_EQ(panel.cmdMountStatus.caption(), "No mount");
    EXPECT_EQ(panel.cmdSiteStatus.caption(), "No site");
    strip.show({.mount = Readiness::kMissing,
                .mountChosen = true,
                .camera = Readiness::kTrouble,
                .cameraChosen = true,
                .solver = true,
                .site = true});
    EXPECT_EQ(panel.cmdMountStatus.caption(), "Mount off");
    EXPECT_EQ(panel.cmdMountStatus.backColor(), color::kButtonFace);
    EXPECT_EQ(panel.cmdCameraStatus.caption(), "Camera failed");
    EXPECT_EQ(panel.cmdCameraStatus.backColor(), color::kRed);
    EXPECT_EQ(panel.cmdSolverStatus.caption(), "Solver ready");
    EXPECT_EQ(panel.cmdSolverStatus.backColor(), color::kDarkGreen);
    EXPECT_EQ(panel.cmdSiteStatus.caption(), "Site set");
}

TEST_F(Strip, AMessageStaysUntilItIsTakenBackAndNamesWhatIsMissing) {
    strip.keep("Telescope link failed\r\nCheck connection");
    EXPECT_TRUE(panel.cmdLastMessage.visible());
    EXPECT_EQ(panel.cmdLastMessage.caption(), "No telescope is chosen. Choose one in the telescope window.");
    strip.takeBack();
    EXPECT_FALSE(panel.cmdLastMessage.visible());
    strip.show({.mount = Readiness::kReady, .mountChosen = true});
    strip.keep("Telescope link failed\r\nCheck connection");
    EXPECT_EQ(panel.cmdLastMessage.caption(), "Telescope link failed Check connection");
}

}  // namespace
}  // namespace vantrel::app
