#include "platesolve/picture_desk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/queued_event_loop.h"
#include "support/recording_dialogs.h"

namespace vantrel::platesolve {
namespace {

using platform::ImageArray;
using platform::SolvedPicture;

/// Keeps what it was asked; the test says what comes of it.
struct ScriptedSolver : platform::PictureSolver {
    void solve(const std::string& file, std::optional<double> scale, Listener heard) override {
        files.push_back(file);
        lastScale = scale;
        listener = std::move(heard);
    }
    void giveUp() override { listener = {}; }
    bool atWork() const { return listener.solved != nullptr; }

    std::vector<std::string> files;
    std::optional<double> lastScale;
    Listener listener;
};

class PictureDeskTest : public testing::Test {
  protected:
    PictureDeskTest() { window.show(); }

    void begin(const char* file = "C:\\Nights\\M31.fits") {
        window.txtFile.type(file);
        window.cmdSolve.click();
    }
    void solveWith(const SolvedPicture& solution) {
        begin();
        time.passUntil(time.utc() + std::chrono::milliseconds{1200});
        solver.listener.read(std::make_shared<const ImageArray>(400, 300, std::vector<float>(120'000)));
        solver.listener.solved(solution);
    }
    const std::string& outcome() const { return window.lblOutcome.caption(); }

    platform::VirtualTime time{platform::Instant{}};
    platform::Screen screen{{0, 0, 1600, 1000}};
    frmSolvePicture window{screen};
    ScriptedSolver solver;
    test::RecordingDialogs dialogs;
    PictureDesk desk{window, &solver, dialogs, time};
};

SolvedPicture upright() {
    return {.raHours = 5.5,
            .decDeg = -5.25,
            .scaleX = 3.6,
            .scaleY = 3.6,
            .rollDeg = 180,
            .residualArcsec = 0.4,
            .starsFound = 9,
            .stars = {{10, 20, 4.5}, {300.5, 200, 11.26}}};
}

TEST_F(PictureDeskTest, ShowsWhereThePictureIs) {
    solveWith(upright());
    EXPECT_EQ(window.txtCentreRA.text(), "05h 30m 00.000s");
    EXPECT_EQ(window.txtCentreDec.text(), "-05° 15' 00.00\"");
    EXPECT_EQ(window.txtScale.text(), "3.6000 x 3.6000");
    EXPECT_EQ(window.txtField.text(), "0.400 x 0.300");
    EXPECT_EQ(window.txtMatched.text(), "2 / 9");
    EXPECT_EQ(outcome(), "Solved in 1.2 s by 2 stars, off by 0.40\" on average");
    EXPECT_FALSE(window.cmdStop.enabled());
}

TEST_F(PictureDeskTest, SaysWhenTheStarsAreTakenAsOfToday) {
    SolvedPicture undated = upright();
    undated.dated = false;
    solveWith(undated);
    EXPECT_EQ(window.lblRemark.caption(),
              "The file tells no date: the stars are taken where they stand today");
    solveWith(upright());
    EXPECT_EQ(window.lblRemark.caption(), "");
}

TEST_F(PictureDeskTest, TellsWhereTheUpperEdgePoints) {
    const struct {
        const char* why;
        double roll;
        bool mirrored;
        const char* angle;
    } cases[] = {
        {"north up, east left", 180, false, "0.00"},
        {"north up, east right", 0, true, "0.00"},
        {"east up, north right", 90, false, "90.00"},
        {"south up, west left", 0, false, "180.00"},
        {"west up, north right", 90, true, "270.00"},
        {"a shade before the turn", -179.999, false, "0.00"},
        {"a little past the turn", -179.5, false, "359.50"},
    };
    for (const auto& c : cases) {
        SolvedPicture solution = upright();
        solution.rollDeg = c.roll;
        solution.mirrored = c.mirrored;
        solveWith(solution);
        EXPECT_EQ(window.txtPositionAngle.text(), c.angle) << c.why;
        EXPECT_EQ(outcome().ends_with("; the picture is mirrored"), c.mirrored) << c.why;
    }
}

TEST_F(PictureDeskTest, CirclesTheMatchedStarsOnThePicture) {
    solveWith(upright());
    const platform::Drawing& drawing = window.picPlate.drawing();
    ASSERT_TRUE(drawing.photograph);
    EXPECT_EQ(drawing.photograph->width(), 400U);
    std::vector<platform::Circle> circles;
    std::vector<std::string> texts;
    for (const platform::Shape& shape : drawing.shapes) {
        if (const auto* circle = std::get_if<platform::Circle>(&shape)) circles.push_back(*circle);
        if (const auto* text = std::get_if<platform::DrawnText>(&shape)) texts.push_back(text->text);
    }
    ASSERT_EQ(circles.size(), 2U);
    EXPECT_EQ(circles[0].x, 10);
    EXPECT_EQ(circles[0].y, 20);
    EXPECT_GT(circles[0].radius, circles[1].radius) << "the brighter star";
    EXPECT_THAT(texts, testing::ElementsAre("4.5", "11.3"));
}

TEST_F(PictureDeskTest, RefusesWhatCanNotBeSolved) {
    const char* const noScale = "The scale must be a number from 0.01 to 1000, or left empty";
    const struct {
        const char *why, *file, *scale;
        const char* outcome;
    } cases[] = {
        {"no file", "  ", "", "Choose a picture first"},
        {"no number", "a.fits", "wide", noScale},
        {"no scale", "a.fits", "0", noScale},
        {"too coarse", "a.fits", "1001", noScale},
    };
    for (const auto& c : cases) {
        window.txtScaleHint.type(c.scale);
        begin(c.file);
        EXPECT_EQ(outcome(), c.outcome) << c.why;
        EXPECT_TRUE(solver.files.empty()) << c.why;
    }
    window.txtScaleHint.type(" 2.5 ");
    begin(" /pictures/a.fits ");
    EXPECT_EQ(solver.files, std::vector<std::string>{"/pictures/a.fits"});
    EXPECT_EQ(solver.lastScale, 2.5);
}

TEST_F(PictureDeskTest, ChoosingAFileSolvesItAndCancellingChangesNothing) {
    dialogs.answers = {"", "C:\\a.fits"};
    window.cmdChooseFile.click();
    EXPECT_EQ(outcome(), "");
    window.cmdChooseFile.click();
    EXPECT_EQ(window.txtFile.text(), "C:\\a.fits");
    EXPECT_TRUE(solver.atWork());
}

TEST_F(PictureDeskTest, StopAndClosingEndTheSearch) {
    begin();
    EXPECT_TRUE(window.cmdStop.click());
    EXPECT_FALSE(solver.atWork());
    EXPECT_EQ(outcome(), "Search stopped");
    EXPECT_FALSE(window.cmdStop.enabled());

    begin();
    window.cmdOK.click();
    EXPECT_FALSE(solver.atWork());
    window.show();
    EXPECT_EQ(window.txtFile.text(), "C:\\Nights\\M31.fits") << "to be tried again";
    EXPECT_EQ(outcome(), "");
}

TEST_F(PictureDeskTest, AFailureLeavesNothingOfThePictureBefore) {
    solveWith(upright());
    begin("b.fits");
    solver.listener.failed("There is none", "The stars are trailed");
    EXPECT_EQ(outcome(), "There is none");
    EXPECT_EQ(window.lblRemark.caption(), "The stars are trailed");
    EXPECT_EQ(window.txtCentreRA.text(), "");
    EXPECT_FALSE(window.picPlate.drawing().photograph);
    EXPECT_TRUE(window.picPlate.drawing().shapes.empty());
    EXPECT_TRUE(window.cmdSolve.enabled());
}

}  // namespace
}  // namespace vantrel::platesolve
