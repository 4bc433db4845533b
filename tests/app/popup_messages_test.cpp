#include "app/popup_messages.h"

#include <gtest/gtest.h>

#include "app/frm_main.h"
#include "app/status_strip.h"
#include "platform/color.h"
#include "support/app_world.h"

namespace vantrel::app {
namespace {

struct PopupMessagesTest : testing::Test, test::AppWorld {
    frmMain main{screen};
    frmPopupMsg window{screen};
    test::RecordingLog log;
    PopupMessages popups{loop, settings, log, state, window, main.setup.txtMsgDisplayTime};

    void SetUp() override { main.show(); }
};

TEST_F(PopupMessagesTest, ClosesAfterFiveSecondsWhateverWasAskedFor) {
    for (const double seconds : {1000.0, 1.0}) {
        popups.ShowPopupMessage("text", seconds);
        pass(4.9);
        EXPECT_TRUE(window.shown());
        EXPECT_EQ(window.txtMsg.text(), "text");
        pass(0.3);
        EXPECT_FALSE(window.loaded());
        EXPECT_EQ(window.txtMsg.text(), "");
    }
    EXPECT_EQ(memory.read("Main", "PopupTimer"), "1");
    ASSERT_EQ(popups.history().size(), 2u);
    EXPECT_EQ(popups.history()[0].seconds, 1000);
}

TEST_F(PopupMessagesTest, ANewMessageTakesTheOldOnesPlaceAndHasItsOwnTime) {
    popups.ShowPopupMessage("first", 5);
    pass(3);
    popups.ShowPopupMessage("second", 5);
    pass(4);
    EXPECT_TRUE(window.shown());
    EXPECT_EQ(window.txtMsg.text(), "second");
}

TEST_F(PopupMessagesTest, AStopTakesItAwayAndKeepsNewOnesFromStaying) {
    popups.ShowPopupMessage("text", 5);
    state.StopRequested = true;
    pass(0.3);
    EXPECT_FALSE(window.shown());
    popups.ShowPopupMessage("another", 5);
    EXPECT_FALSE(window.shown());
    EXPECT_EQ(window.txtMsg.text(), "");
}

TEST_F(PopupMessagesTest, ClosesOnDemandOnlyWhatItShows) {
    popups.ShowPopupMessage("loading", 5);
    popups.ClosePopupMessage("something else");
    EXPECT_TRUE(window.shown());
    popups.ClosePopupMessage("loading");
    EXPECT_FALSE(window.shown());
    popups.ShowPopupMessage("loading", 5);
    popups.ClosePopupMessage(std::nullopt);
    EXPECT_FALSE(window.shown());
}

TEST_F(PopupMessagesTest, TheOperatorMovesItWithTwoClicks) {
    popups.ShowPopupMessage("text", 5);
    window.clickByOperator();
    EXPECT_EQ(window.title(), "Move popup (click again)");
    pass(20);
    ASSERT_TRUE(window.shown()) << "it waits for the second click";

    platform::Rectangle place = window.place();
    place.left = 33, place.top = 44;
    window.placeByOperator(place);
    window.clickByOperator();
    EXPECT_FALSE(window.shown());
    EXPECT_EQ(memory.read("Main", "PopupMsgTop"), "44");
    EXPECT_EQ(memory.read("Main", "PopupMsgLeft"), "33");

    popups.ShowPopupMessage("text", 5);
    EXPECT_EQ(window.title(), "");
    EXPECT_EQ(window.place().left, 33);
    pass(6);
    EXPECT_FALSE(window.shown()) << "the next one closes by itself again";
}

TEST_F(PopupMessagesTest, APlaceThatCanNotBeStoredIsToldAndTheWindowCloses) {
    popups.ShowPopupMessage("text", 5);
    window.clickByOperator();
    memory.full = true;
    window.clickByOperator();
    EXPECT_FALSE(window.shown());
    ASSERT_EQ(log.lines.size(), 1u);
    EXPECT_TRUE(log.lines[0].ends_with("\r\n frmPopupMsg sub SaveFormPosition")) << log.lines[0];
}

TEST_F(PopupMessagesTest, FitsItsTextAndStandsInTheMiddleTheFirstTime) {
    popups.ShowPopupMessage("a longer line of text\r\nx", 5);
    const platform::Rectangle place = window.place();
    EXPECT_NEAR(place.left + place.width / 2.0, 960, 1);
    EXPECT_NEAR(place.top + place.height / 2.0, 540, 1);
    popups.ShowPopupMessage("x\r\na longer line of text", 5);
    EXPECT_NEAR(window.place().width, place.width, 8) << "whichever line is the longest";
    popups.ShowPopupMessage("x\r\nx\r\nx", 5);
    EXPECT_LT(window.place().width, place.width);
    EXPECT_GT(window.place().height, place.height);
}

// ---- status strip

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
