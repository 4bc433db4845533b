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

using test::answeringNo;
using test::failing;
using test::logOf;
using test::Prepare;
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
    EXPECT_EQ(log.lines.back(), "  Plate solve attempt 10 of 10 failed");
}

/// What else happens while the solver is in the member.
Prepare during(const char* member, const Prepare& happening) {
    return [=](auto& world) {
        world.engine.whileIn = [&world, member, happening](const std::string& called) {
            if (called == member) happening(world);
        };
    };
}
void stop(test::SolvingWorld& world) { world.state.StopRequested = true; }
void close(test::SolvingWorld& world) { world.state.AppUnloading = world.state.StopRequested = true; }

TEST(PinPointSolves, SayEveryStepAndEveryFailure) {
    const std::string found = "Step 1: Found 41 objects in image.\n";
    const auto aimed = [](const char* dec) {
        return std::string("Plate Solve Attempt at RA = hms 5.5  Dec = dms ") + dec +
               "\nStep 2: Look up catalog stars for area...\n";
    };
    const std::string lookedUp = "Step 2: Found 57 catalog stars in area.\n";
    const std::string solving = lookedUp + "Step 3: Solve the plate...\n";
    const auto solved = [](const char* binning) {
        return std::string(
                   " Solved using 33 stars, average residual is 0.40 arcsec, order =4\n"
                   " Solution took 0.0 seconds\n RA = 05h 30m 36.000s  5.51000000\n"
                   " Dec = 20° 15' 00.00\"  20.250000\n"
                   " Roll = 30.000 HScale = 2.500 VScale = 2.400 Binning = ") +
               binning + "\n RA Error = 0.010000\n Dec Error = 0.250000\n";
    };
    const std::string failed = "Failed to Solve Plate!!\n";
    const struct {
        const char* why;
        Prepare prepare;
        std::string logged;
    } cases[] = {
        {"solved with the stored binning, which is only told",
         [](auto& world) { world.settings.SaveSetting("Solve", "CamBin", "2"); },
         found + aimed("20") + solving + solved("2")},
        {"solved at the second attempt", [](auto& world) { world.engine.failingSolves = 1; },
         found + aimed("20") + solving + " Initiating spiral search \n" + aimed("21") + solving +
             solved("3")},
        {"a solve that raises an error is one that failed, and no search is wanted",
         [](auto& world) {
             world.fail(kPlate, "Solve");
             world.panel.chkSpiralSearch.setValue(0);
         },
         found + aimed("20") + solving},
        {"the caller allows no search",
         [](auto& world) {
             world.engine.failingSolves = 1;
             world.state.SpiralSearchAllowed = false;
         },
         found + aimed("20") + solving},
        {"no file", [](auto& world) { std::filesystem::remove(world.folders.real("C:\\SavedImage.fit")); },
         "Could not attach to C:\\SavedImage.fit\n" + failed},
        {"attached at the second try", answeringNo("AttachFITS", 1),
         found + aimed("20") + solving + solved("3")},
        {"never attached", answeringNo("AttachFITS"), "AttachFITS Failed\n" + failed},
        {"no image stars", answeringNo("FindImageStars"), ""},
        {"no catalogue stars", answeringNo("FindCatalogStars"), found + aimed("20")},
        {"stopped before", stop, failed},
        {"stopped at the image's stars", during("FindImageStars", stop), found + aimed("20") + failed},
        {"stopped at the look-up", during("FindCatalogStars", stop), found + aimed("20") + lookedUp + failed},
        {"closed at the look-up", during("FindCatalogStars", close), found + aimed("20") + lookedUp},
        {"a number that is none", [](auto& world) { world.panel.txtMaxSolveStars.setText("1e12"); },
         "** PinPoint Error - Please Verify Settngs **\nCatalog = 3  pp = 3\n"
         "CatalogExpansion = 0.3  pp = 0.3\nCatalogMaximumMagnitude = 20  pp = 20\n"
         "CatalogPath = C:\\Stars  pp = C:\\Stars\nMinimumBrightness = 200  pp = 200\n"
         "MinimumStarSize = 2  pp = 2\nSigmaAboveMean = 4 pp = 4\nSetMaxSolveStars =1e12  pp = \n"
         "ArcsecPerPixelHoriz = 3.6  pp = 1\nArcsecPerPixelVert = 3.6 pp = 1\nMinMatchStars = 0  pp = \n"
         "camBin = 3\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        test::SolvingWorld world;
        world.preparePinPoint();
        world.panel.txtSolveScaleH.setText("3.6");
        world.panel.txtSolveScaleV.setText("3.6");
        c.prepare(world);
        const bool plate = world.solver.SolvePlate("SavedImage.fit", 0, 0).has_value();
        EXPECT_EQ(logOf(world), c.logged);
        EXPECT_EQ(plate, c.logged.find(" Solved using") != std::string::npos);
        EXPECT_EQ(world.state.PlateSolved, plate);
    }
}

TEST_F(PinPointSolving, ReportsAMissingObjectToo) {
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

struct ImageLink : testing::Test, test::SolvingWorld {
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
    void TestBody() override {}
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

TEST(ImageLinks, SayWhatFailsUnlessTheProgramCloses) {
    const char* const kImage = "CCDsoft.Image";
    const std::string noLink = "Error when performing image link\n";
    const std::string noResult = "Error while getting image link results\n";
    const std::string place =
        " RA = 00h 06m 00.000s\n Dec = 10° 30' 00.00\"\n RA Error = 0.350000\n"
        " Dec Error = 0.500000\n";
    constexpr long kStart = 2;  // uses of the header that write the start position
    const struct {
        const char* why;
        Prepare prepare;
        std::string logged;
    } cases[] = {
        {"solved", [](auto&) {}, place},
        {"no link", failing(kImage, "InsertWCS"), noLink},
        {"no link while the program closes",
         [&](auto& world) {
             world.state.AppUnloading = true;
             world.fail(kImage, "InsertWCS");
         },
         ""},
        {"a scale that is no number", [](auto& world) { world.panel.txtTheSkyImageScale.setText("fine"); },
         noLink},
        {"no right ascension", failing(kImage, "FITSKeyword", kStart), noResult},
        {"one that is no number", [](auto& world) { world.image->put("FITSKeyword", "unknown", {"CRVAL1"}); },
         noResult},
        {"an empty declination",
         [](auto& world) { world.image->put("FITSKeyword", platform::Value(), {"CRVAL2"}); }, noResult},
        {"no matrix, after the rest was told", failing(kImage, "FITSKeyword", kStart + 3), place + noResult},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        ImageLink world;
        c.prepare(world);
        EXPECT_EQ(world.solve().has_value(), c.logged == place);
        EXPECT_EQ(world.state.PlateSolved, c.logged == place);
        EXPECT_EQ(logOf(world), "Plate Solve Attempt at RA = deg-hms 3.75  Dec = dms 10.25\n" + c.logged);
    }
}

TEST_F(ImageLink, ErrorsBeforeItAreTheCallersToReport) {
    fail("CCDsoft.Image", "FITSKeyword");
    EXPECT_THROW(solve(), platform::OperationError);
    image.reset();
    EXPECT_THROW(solve(), platform::OperationError);
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
    const auto stored = [&] { return world.settings.root.read("PolarAlign", "PlateSolveMethod"); };
    world.selection.save();
    EXPECT_FALSE(stored()) << "none is chosen yet";
    for (const bool pinPoint : {true, false, true}) {
        (pinPoint ? world.panel.optPinPoint : world.panel.optAutoAstrometry).select();
        EXPECT_EQ(world.panel.framePP.visible(), pinPoint);
        EXPECT_EQ(world.panel.frameTheSky.visible(), !pinPoint);
        EXPECT_EQ(stored(), pinPoint ? "0" : "1");
        EXPECT_EQ(world.log.lines.back(), pinPoint ? "PinPoint is connected" : "Plate solve using TheSky");
        world.settings.root.remove("PolarAlign", "PlateSolveMethod");
        world.selection.save();
        EXPECT_EQ(stored(), pinPoint ? "0" : "1");
    }
    for (const auto& [before, frame] : {std::pair{"x", ""}, {"", ""}, {"0", "PP"}, {"1", "TheSky"}}) {
        test::SolvingWorld again;
        again.settings.SaveSetting("PolarAlign", "PlateSolveMethod", before);
        again.selection.restore();
        EXPECT_EQ(again.state.PlateSolveMethod, frame) << before;
    }
}

TEST(MethodSelection, PinPointThatCantBeHadIsTold) {
    const std::string error = "Error creating PinPoint.Plate";
    test::SolvingWorld world;
    world.panel.optAutoAstrometry.select();
    world.fail(kPlate, "create", 1);
    world.panel.optPinPoint.select();
    EXPECT_THAT(world.messages.shown, ElementsAre(test::RecordingMessages::Shown{error, 3}));
    EXPECT_EQ(world.log.lines.back(), error);
    world.registry.uninstall(kPlate);
    world.panel.optAutoAstrometry.select();
    world.forget();
    world.panel.optPinPoint.select();
    EXPECT_EQ(logOf(world), "PinPoint is not connected\n" + error + "\n");
    EXPECT_TRUE(world.messages.shown.empty());
    EXPECT_EQ(world.settings.root.read("PolarAlign", "PlateSolveMethod"), "1");
    EXPECT_TRUE(world.panel.frameTheSky.visible());
}

}  // namespace
}  // namespace vantrel::platesolve
