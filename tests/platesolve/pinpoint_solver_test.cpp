#include "platesolve/pinpoint_solver.h"

#include <cmath>

#include <gmock/gmock.h>

#include "platesolve/solving_world.h"

namespace vantrel::platesolve {
namespace {

using testing::ElementsAre;
using testing::Not;

constexpr const char* kPlate = "PinPoint.Plate";

class PinPointSolving : public testing::Test, protected test::SolvingWorld {
  protected:
    PinPointSolving() { preparePinPoint(); }

    std::optional<engine::PlateSolution> solve(double raOffset = 0, double decOffset = 0) {
        return solver.SolvePlate("SavedImage.fit", raOffset, decOffset);
    }
};

TEST_F(PinPointSolving, SolvesAtTheFirstAttempt) {
    const auto solution = solve(0.25, -1);

    ASSERT_TRUE(solution);
    EXPECT_TRUE(log.has("Plate Solve Attempt at RA = hms 5.75  Dec = dms 19"));
    EXPECT_TRUE(state.PlateSolved);
    EXPECT_EQ(solution->ra, 5.51);
    EXPECT_EQ(solution->dec, 20.25);
}

TEST_F(PinPointSolving, SendsEverythingInOrder) {
    panel.txtSolveMaxRes.setText("1.5");
    panel.txtSolveFilter.setText("2");
    panel.txtCatExp.setText("30");
    solve();
    EXPECT_THAT(test::actionsOn(host, kPlate),
                ElementsAre("put Catalog 3", "put CatalogExpansion 0.3", "put CatalogMaximumMagnitude 20",
                            "put CatalogPath C:\\Stars", "put MinimumBrightness 200", "put MinimumStarSize 2",
                            "put SigmaAboveMean 4", "put ExclusionBorder 2", "put MaxSolveStars 0",
                            "call AttachFITS C:\\SavedImage.fit", "put RightAscension 5.5",
                            "put Declination 20", "put ArcsecPerPixelHoriz 3", "put ArcsecPerPixelVert 3",
                            "put MinMatchStars 0", "put MaxMatchResidual 1.5", "call ConvolveGaussian 2",
                            "call FindImageStars", "put RightAscension 5.5", "put Declination 20",
                            "call FindCatalogStars", "call Solve", "call UpdateFITS", "call DetachFITS"));
}

TEST_F(PinPointSolving, SendsOptionalParametersOnlyWhenTheyMeanSomething) {
    struct Case {
        const char* residual;
        const char* filter;
        long residualsSent, filtersRun;
    };
    const Case cases[] = {{"0.0", "0.0", 0, 0}, {"-1.5", "-2", 1, 0}, {"0.5", "1.5", 1, 1}, {"", "", 0, 0}};
    for (const Case& c : cases) {
        panel.txtSolveMaxRes.setText(c.residual);
        panel.txtSolveFilter.setText(c.filter);
        host.takeJournal("*");
        solve();
        long residuals = 0, filters = 0;
        for (const auto& entry : host.takeJournal(kPlate)) {
            residuals += entry.member == "MaxMatchResidual";
            filters += entry.member == "ConvolveGaussian";
        }
        EXPECT_EQ(residuals, c.residualsSent) << c.residual;
        EXPECT_EQ(filters, c.filtersRun) << c.filter;
    }
}

TEST_F(PinPointSolving, LeavesTheScaleToAnImageThatIsSolvedAlready) {
    engine.wcsValid = true;
    panel.optAutoAstrometry.select();
    panel.optPinPoint.select();
    host.takeJournal("*");
    solve();
    const auto actions = test::actionsOn(host, kPlate);
    EXPECT_THAT(actions, Not(testing::Contains("put ArcsecPerPixelHoriz 3")));
    EXPECT_THAT(actions, Not(testing::Contains("put MinMatchStars 0")));
    EXPECT_EQ(std::count(actions.begin(), actions.end(), "put RightAscension 5.5"), 1);
    EXPECT_THAT(engine.triedRAs, ElementsAre(5.5));
}

// A pixel along the columns moves by (CD1_1, CD2_1), one along the rows by (CD1_2, CD2_2).
TEST_F(PinPointSolving, TurnsScalesAndRollIntoTheCdMatrix) {
    struct Case {
        double roll, CD1_1, CD1_2, CD2_1, CD2_2;  // in units of the scales 3.6 and 7.2 arcsec: 1 and 2 mdeg
    };
    const double half = std::sqrt(0.5);
    const Case cases[] = {{0, 1, 0, 0, 2},
                          {90, 0, -2, 1, 0},
                          {180, -1, 0, 0, -2},
                          {-90, 0, 2, -1, 0},
                          {45, half, -2 * half, half, 2 * half}};
    engine.scaleH = 3.6;
    engine.scaleV = 7.2;
    for (const Case& c : cases) {
        engine.roll = c.roll;
        const auto solution = solve();
        ASSERT_TRUE(solution);
        EXPECT_NEAR(solution->CD1_1 * 1000, c.CD1_1, 1e-9) << c.roll;
        EXPECT_NEAR(solution->CD1_2 * 1000, c.CD1_2, 1e-9) << c.roll;
        EXPECT_NEAR(solution->CD2_1 * 1000, c.CD2_1, 1e-9) << c.roll;
        EXPECT_NEAR(solution->CD2_2 * 1000, c.CD2_2, 1e-9) << c.roll;
    }
}

TEST_F(PinPointSolving, TakesTheErrorsThatTheSolverTells) {
    EXPECT_FALSE(solve()->errors) << "a solver that tells none";
    SolvingWorld::engine.errors = engine::SolutionErrors{.centre = 0.05, .roll = 6};
    const auto errors = solve()->errors;
    ASSERT_TRUE(errors);
    EXPECT_EQ(errors->centre, 0.05);
    EXPECT_EQ(errors->roll, 6);
    SolvingWorld::engine.errors = engine::SolutionErrors{.centre = 0.05, .roll = 0};
    EXPECT_FALSE(solve()->errors) << "one that doesn't know";
}

TEST_F(PinPointSolving, SearchesNorthAndSouthInFieldHeights) {
    engine.failingSolves = 1000;
    panel.txtSolveScaleH.setText("3.6");
    panel.txtSolveScaleV.setText("3.6");  // 1000 rows: a degree
    EXPECT_FALSE(solve());

    EXPECT_THAT(engine.triedDecs, ElementsAre(20, 21, 19, 22, 18, 23, 17, 24, 16, 25, 15));
    EXPECT_THAT(engine.triedRAs, testing::Each(5.5));
    EXPECT_FALSE(state.PlateSolved);
    const auto actions = test::actionsOn(host, kPlate);
    EXPECT_EQ(std::count(actions.begin(), actions.end(), "call FindImageStars"), 1);
    EXPECT_THAT(actions, Not(testing::Contains("call UpdateFITS")));
    EXPECT_EQ(actions.back(), "call DetachFITS");
}

TEST_F(PinPointSolving, TriesOnceWhereTheCallerAllowsNoSearch) {
    engine.failingSolves = 1000;
    state.SpiralSearchAllowed = false;
    EXPECT_FALSE(solve());
    EXPECT_EQ(engine.triedDecs.size(), 1U);
    EXPECT_EQ(log.lines.back(), "Step 3: Solve the plate...");
}

TEST_F(PinPointSolving, EndsSilentlyWhileTheProgramCloses) {
    engine.whileIn = [&](const std::string& member) {
        if (member == "FindCatalogStars") state.AppUnloading = state.StopRequested = true;
    };
    EXPECT_FALSE(solve());
    EXPECT_EQ(log.lines.back(), "Step 2: Found 57 catalog stars in area.");
    EXPECT_EQ(test::actionsOn(host, kPlate).back(), "call FindCatalogStars");
}

TEST_F(PinPointSolving, ReportsUnusableNumbersAndAMissingObjectToo) {
    panel.txtMaxSolveStars.setText("1e12");
    EXPECT_FALSE(solve());
    EXPECT_TRUE(log.has("SetMaxSolveStars =1e12  pp = "));

    log.lines.clear();
    pinPoint.releasePinPointPlate();
    EXPECT_FALSE(solve());
    EXPECT_EQ(log.lines.front(), "** PinPoint Error - Please Verify Settngs **");
    EXPECT_EQ(log.lines.back(), "camBin = 3");
}

TEST_F(PinPointSolving, PassesOverErrorsWhileAFileIsAttached) {
    for (const char* member : {"WCSValid", "MinMatchStars", "ArcsecPerPixelHoriz", "ImageStars", "Columns",
                               "UpdateFITS", "DetachFITS", "MatchFitOrder"}) {
        fail(kPlate, member, 0, 1);
        EXPECT_TRUE(solve()) << member;
        EXPECT_TRUE(state.PlateSolved) << member;
    }
}

// One that was ended, or hung, answers again, but not the object that was held of it.
TEST_F(PinPointSolving, AsksASolverThatIsBackByANewObject) {
    host.inject({kPlate, "Catalog", {462, kPlate, "gone"}, std::nullopt, 0, 1});
    EXPECT_TRUE(solve());
    EXPECT_EQ(test::usesOf(host, kPlate, "create"), 1);
    EXPECT_TRUE(solve());
    EXPECT_EQ(test::usesOf(host, kPlate, "create"), 0) << "the new one stays";
}

TEST_F(PinPointSolving, TakesNoZerosForAPlaceWhenTheSolverGoesWhileItTells) {
    state.SpiralSearchAllowed = false;
    host.inject({kPlate, "RollAngle", {462, kPlate, "gone"}, std::nullopt, 0, 1});
    EXPECT_FALSE(solve());
    EXPECT_FALSE(state.PlateSolved);
}

TEST_F(PinPointSolving, ShowsTheSolutionForASecondWithTheButtonsAlive) {
    int ticks = 0;
    const auto timer = loop.every(platform::Milliseconds{250}, [&] { ++ticks; });
    solve();
    EXPECT_EQ(time.sinceStart(), platform::Milliseconds{1000});
    EXPECT_GE(ticks, 3);
}

TEST_F(PinPointSolving, KeepsItsObjectWhenTheOperatorChoosesAnewMeanwhile) {
    engine.whileIn = [&](const std::string& member) {
        if (member == "FindCatalogStars") {
            panel.optAutoAstrometry.select();
            panel.optPinPoint.select();
        }
    };
    EXPECT_TRUE(solve());
    EXPECT_EQ(engine.objects, 1);
}

}  // namespace
}  // namespace vantrel::platesolve
