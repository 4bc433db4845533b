#include "platesolve/pinpoint_solver.h"

#include <array>
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platesolve/image_link_solver.h"
#include "platesolve/method_selection.h"
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

TEST_F(PinPointSolving, SendsEverythingInOrder) {
    panel.txtSolveMaxRes.setText("1.5");
    panel.txtSolveFilter.setText("2");
    panel.txtCatExp.setText("30");
    const auto solution = solve(0.25, -1);
    ASSERT_TRUE(solution && state.PlateSolved);
    EXPECT_EQ(solution->ra, 5.51);
    EXPECT_EQ(solution->dec, 20.25);
    EXPECT_TRUE(log.has("Plate Solve Attempt at RA = hms 5.75  Dec = dms 19"));
    EXPECT_THAT(test::actionsOn(host, kPlate),
                ElementsAre("put Catalog 3", "put CatalogExpansion 0.3", "put CatalogMaximumMagnitude 20",
                            "put CatalogPath C:\\Stars", "put MinimumBrightness 200", "put MinimumStarSize 2",
                            "put SigmaAboveMean 4", "put ExclusionBorder 2", "put MaxSolveStars 0",
                            "call AttachFITS C:\\SavedImage.fit", "put RightAscension 5.75",
                            "put Declination 19", "put ArcsecPerPixelHoriz 3", "put ArcsecPerPixelVert 3",
                            "put MinMatchStars 0", "put MaxMatchResidual 1.5", "call ConvolveGaussian 2",
                            "call FindImageStars", "put RightAscension 5.75", "put Declination 19",
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

// ---- image link

class ImageLink : public testing::Test, protected test::SolvingWorld {
  protected:
    ImageLink() {
        panel.optAutoAstrometry.select();
        state.ExposureRA = 23.75;
        state.ExposureDec = 10;
        openImage(0.1, 10.5);
        forget();
    }

    /// The open image, and what the link will find on it (hours, degrees).
    void openImage(double ra, double dec) {
        image = std::make_shared<test::WillingObject>("CCDsoft.Image",
                                                      test::WillingObject::Values{{"CRVAL1", ra * 15},
                                                                                  {"CRVAL2", dec},
                                                                                  {"CD1_1", "0.001"},
                                                                                  {"CD1_2", -0.002},
                                                                                  {"CD2_1", 0.003},
                                                                                  {"CD2_2", "4E-3"}});
    }

    std::optional<engine::PlateSolution> solve() { return solver.SolvePlate("ignored", 0.5, 0.25); }
};

TEST_F(ImageLink, SolvesTheOpenImage) {
    panel.txtTheSkyImageScale.setText("1.75");
    const auto solution = solve();

    ASSERT_TRUE(solution);
    EXPECT_THAT(test::actionsOn(host, "CCDsoft.Image"),
                ElementsAre("create", "put FITSKeyword OBJCTRA 0.25[ ][ ]",
                            "put FITSKeyword OBJCTDEC +10.25[ ][ ][ ]", "put ScaleInArcsecondsPerPixel 1.75",
                            "call InsertWCS"));
    EXPECT_EQ(log.lines.front(), "Plate Solve Attempt at RA = deg-hms 3.75  Dec = dms 10.25");
    EXPECT_NEAR(solution->ra, 0.1, 1e-12);
    EXPECT_EQ(solution->dec, 10.5);
    EXPECT_EQ((std::array{solution->CD1_1, solution->CD1_2, solution->CD2_1, solution->CD2_2}),
              (std::array{0.001, -0.002, 0.003, 0.004}));
    EXPECT_TRUE(state.PlateSolved);
    EXPECT_EQ(state.PlateDecError, 0.5);
}

TEST_F(ImageLink, ShowsTheErrorInRightAscensionWithItsSign) {
    struct Case {
        double exposure, solved;
        double error;  // in [0, 24)
        const char* logged;
    };
    const Case cases[] = {{23.9, 0.1, 0.2, " RA Error = 0.200000"},
                          {0.1, 23.9, 23.8, " RA Error = -0.200000"},
                          {3, 15, 12, " RA Error = 12.000000"},
                          {15, 3, 12, " RA Error = 12.000000"}};
    for (const Case& c : cases) {
        state.ExposureRA = c.exposure;
        openImage(c.solved, 10.5);
        solve();
        EXPECT_NEAR(state.PlateRAError, c.error, 1e-12);
        EXPECT_TRUE(log.has(c.logged)) << c.logged;
    }
}

TEST_F(ImageLink, FailsSilentlyWhileTheProgramCloses) {
    state.AppUnloading = true;
    fail("CCDsoft.Image", "InsertWCS");
    EXPECT_FALSE(solve());
    EXPECT_EQ(log.lines.size(), 1U);
}

// ---- method selection

TEST(SelectedSolver, SolvesNothingWithoutAMethod) {
    test::SolvingWorld world;
    world.state.PlateSolved = true;
    EXPECT_FALSE(world.solver.SolvePlate("SavedImage.fit", 0, 0));
    EXPECT_FALSE(world.state.PlateSolved);
}

TEST(ImageLinkThroughCCDSoft, IsTheOperatorsChoice) {
    test::SolvingWorld world;
    world.selection.restoreImageLink();
    EXPECT_TRUE(world.panel.optImageLinkCCDSoft.selected());
    world.panel.optImageLinkTheSky.select();
    EXPECT_FALSE(world.selection.ImageLinkThroughCCDSoft());
    world.panel.optImageLinkCCDSoft.select();
    EXPECT_TRUE(world.selection.ImageLinkThroughCCDSoft());
    EXPECT_EQ(world.settings.root.read("PolarAlign", "PlateSolveThroughCCDSoft"), "True");
}

TEST(MethodSelection, ShowsItsFrameAndIsStored) {
    test::SolvingWorld world;
    world.selection.save();
    EXPECT_FALSE(world.settings.root.read("PolarAlign", "PlateSolveMethod")) << "none is chosen yet";
    for (const bool pinPoint : {true, false, true}) {
        (pinPoint ? world.panel.optPinPoint : world.panel.optAutoAstrometry).select();
        EXPECT_EQ(world.panel.framePP.visible(), pinPoint);
        EXPECT_EQ(world.panel.frameTheSky.visible(), !pinPoint);
        world.settings.root.remove("PolarAlign", "PlateSolveMethod");
        world.selection.save();
        EXPECT_EQ(world.settings.root.read("PolarAlign", "PlateSolveMethod"), pinPoint ? "0" : "1");
    }
}

}  // namespace
}  // namespace vantrel::platesolve
