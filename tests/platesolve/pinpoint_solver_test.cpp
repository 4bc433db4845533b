#include "platesolve/pinpoint_solver.h"

#include <cmath>

#include <gmock/gmock.h>

#include "platesolve/solving_world.h"

namespace vantrel::platesolve {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;
using Lines = std::vector<std::string>;

constexpr const char* kPlate = "PinPoint.Plate";
constexpr const char* kFailed = "Failed to Solve Plate!!";

class PinPointSolving : public testing::Test, protected test::SolvingWorld {
  protected:
    PinPointSolving() { preparePinPoint(); }

    std::optional<engine::PlateSolution> solve(double raOffset = 0, double decOffset = 0) {
        return solver.SolvePlate("SavedImage.fit", raOffset, decOffset);
    }
};

Lines attemptLines(const std::string& ra, const std::string& dec) {
    return {"Plate Solve Attempt at RA = hms " + ra + "  Dec = dms " + dec,
            "Step 2: Look up catalog stars for area...", "Step 2: Found 57 catalog stars in area.",
            "Step 3: Solve the plate..."};
}

Lines joined(std::initializer_list<Lines> parts) {
    Lines all;
    for (const Lines& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

const Lines kFoundInImage = {"Step 1: Found 41 objects in image."};
const Lines kSolution = {
    " Solved using 33 stars, average residual is 0.40 arcsec, order =4",
    " Solution took 0.0 seconds",
    " RA = 05h 30m 36.000s  5.51000000",
    " Dec = 20° 15' 00.00\"  20.250000",
    " Roll = 30.000 HScale = 2.500 VScale = 2.400 Binning = 3",
    " RA Error = 0.010000",
    " Dec Error = 0.250000",
};

TEST_F(PinPointSolving, SolvesAtTheFirstAttempt) {
    const auto solution = solve(0.25, -1);

    ASSERT_TRUE(solution);
    EXPECT_THAT(log.lines, ElementsAreArray(joined({kFoundInImage, attemptLines("5.75", "19"), kSolution})));
    EXPECT_TRUE(state.PlateSolved);
    EXPECT_NEAR(state.PlateRAError, 0.01, 1e-12);
    EXPECT_NEAR(state.PlateDecError, 0.25, 1e-12);
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

TEST_F(PinPointSolving, SearchesNorthAndSouthInFieldHeights) {
    engine.failingSolves = 1000;
    panel.txtSolveScaleH.setText("3.6");
    panel.txtSolveScaleV.setText("3.6");  // 1000 rows: a degree
    EXPECT_FALSE(solve());

    EXPECT_THAT(engine.triedDecs, ElementsAre(20, 21, 19, 22, 18, 23, 17, 24, 16, 25, 15));
    EXPECT_THAT(engine.triedRAs, testing::Each(5.5));
    Lines expected = joined({kFoundInImage, attemptLines("5.5", "20"), {" Initiating spiral search "}});
    for (int i = 1; i <= 10; ++i)
        expected =
            joined({expected,
                    attemptLines("5.5", platform::toText(engine.triedDecs[static_cast<std::size_t>(i)])),
                    {"  Plate solve attempt " + std::to_string(i) + " of 10 failed"}});
    EXPECT_THAT(log.lines, ElementsAreArray(expected));
    EXPECT_FALSE(state.PlateSolved);
    const auto actions = test::actionsOn(host, kPlate);
    EXPECT_EQ(std::count(actions.begin(), actions.end(), "call FindImageStars"), 1);
    EXPECT_THAT(actions, Not(testing::Contains("call UpdateFITS")));
    EXPECT_EQ(actions.back(), "call DetachFITS");
}

TEST_F(PinPointSolving, EndsTheSearchAtASuccess) {
    engine.failingSolves = 3;
    ASSERT_TRUE(solve());
    EXPECT_EQ(engine.triedDecs.size(), 4U);
    EXPECT_EQ(test::usesOf(host, kPlate, "call UpdateFITS"), 1);
    EXPECT_TRUE(log.has("  Plate solve attempt 2 of 10 failed"));
    EXPECT_FALSE(log.has("  Plate solve attempt 3 of 10 failed"));
}

TEST_F(PinPointSolving, TriesOnceWhereNoSearchIsAllowed) {
    struct Case {
        int boxTicked;
        bool allowedByCaller;
    };
    for (const Case& c : {Case{0, true}, Case{1, false}, Case{0, false}}) {
        engine.failingSolves = 1000;
        engine.triedDecs.clear();
        log.lines.clear();
        panel.chkSpiralSearch.setValue(c.boxTicked);
        state.SpiralSearchAllowed = c.allowedByCaller;
        EXPECT_FALSE(solve());
        EXPECT_EQ(engine.triedDecs.size(), 1U);
        EXPECT_EQ(log.lines.back(), "Step 3: Solve the plate...");
    }
}

TEST_F(PinPointSolving, ShowsSmallNegativeErrorsInRightAscensionWithTheirSign) {
    state.ExposureRA = 0.1;
    engine.ra = 23.9;
    solve();
    EXPECT_NEAR(state.PlateRAError, 23.8, 1e-12);
    EXPECT_TRUE(log.has(" RA Error = -0.200000"));
}

TEST_F(PinPointSolving, LeavesSilentlyWithoutStars) {
    struct Case {
        const char* member;
        Lines expected;
    };
    const Case cases[] = {
        {"FindImageStars", {}},
        {"FindCatalogStars",
         {"Step 1: Found 41 objects in image.", "Plate Solve Attempt at RA = hms 5.5  Dec = dms 20",
          "Step 2: Look up catalog stars for area..."}},
    };
    for (const Case& c : cases)
        for (const bool raises : {false, true}) {
            forget();
            engine.findsImageStars = engine.findsCatalogStars = true;
            if (raises)
                fail(kPlate, c.member, 0, 1);
            else
                (c.member == std::string("FindImageStars") ? engine.findsImageStars
                                                           : engine.findsCatalogStars) = false;
            EXPECT_FALSE(solve());
            EXPECT_THAT(log.lines, ElementsAreArray(c.expected)) << c.member << raises;
            EXPECT_EQ(test::actionsOn(host, kPlate).back(), "call DetachFITS");
            EXPECT_FALSE(state.PlateSolved);
        }
}

TEST_F(PinPointSolving, ReportsAMissingFile) {
    settings.SaveSetting("PolarAlign", "ImagePath", "D:\\Images");
    EXPECT_FALSE(solver.SolvePlate("Other.fit", 0, 0));
    EXPECT_THAT(log.lines, ElementsAre("Could not attach to D:\\Images\\Other.fit", kFailed));
}

TEST_F(PinPointSolving, AttachesTwiceAtMost) {
    engine.refusedAttaches = 1;
    EXPECT_TRUE(solve());
    EXPECT_THAT(test::actionsOn(host, kPlate), testing::Contains("call DetachFITS").Times(2));

    log.lines.clear();
    engine.refusedAttaches = 2;
    EXPECT_FALSE(solve());
    EXPECT_THAT(log.lines, ElementsAre("AttachFITS Failed", kFailed));
}

TEST_F(PinPointSolving, EndsAtTheNextCheckAfterAStop) {
    struct Case {
        const char* during;
        const char* lastLine;
    };
    const Case cases[] = {{"FindImageStars", "Step 2: Look up catalog stars for area..."},
                          {"FindCatalogStars", "Step 2: Found 57 catalog stars in area."}};
    for (const Case& c : cases) {
        forget();
        state.StopRequested = false;
        engine.whileIn = [&](const std::string& member) {
            if (member == c.during) loop.post([this] { state.StopRequested = true; });
        };
        EXPECT_FALSE(solve());
        ASSERT_GE(log.lines.size(), 2U);
        EXPECT_EQ(log.lines[log.lines.size() - 2], c.lastLine);
        EXPECT_EQ(log.lines.back(), kFailed);
        EXPECT_EQ(test::actionsOn(host, kPlate).back(), "call DetachFITS");
        EXPECT_FALSE(state.PlateSolved);
    }

    forget();
    EXPECT_FALSE(solve());
    EXPECT_THAT(log.lines, ElementsAre(kFailed)) << "stopped before it began";
    EXPECT_EQ(test::usesOf(host, kPlate, "call AttachFITS C:\\SavedImage.fit"), 0);
}

TEST_F(PinPointSolving, EndsSilentlyWhileTheProgramCloses) {
    engine.whileIn = [&](const std::string& member) {
        if (member == "FindCatalogStars") state.AppUnloading = state.StopRequested = true;
    };
    EXPECT_FALSE(solve());
    EXPECT_EQ(log.lines.back(), "Step 2: Found 57 catalog stars in area.");
    EXPECT_EQ(test::actionsOn(host, kPlate).back(), "call FindCatalogStars");
}

TEST_F(PinPointSolving, ListsAllParametersWhenOneIsRefused) {
    panel.txtCatExp.setText("45");
    panel.txtSolveMinBrt.setText("many");
    panel.txtSolveScaleV.setText("2.75 arcsec");
    panel.txtMaxSolveStars.setText("120");
    panel.txtSolveMinStars.setText("7");
    settings.SaveSetting("Solve", "CamBin", "2");
    fail(kPlate, "MinimumBrightness", 0, 1);
    EXPECT_FALSE(solve());
    EXPECT_THAT(log.lines,
                ElementsAre("** PinPoint Error - Please Verify Settngs **", "Catalog = 3  pp = 3",
                            "CatalogExpansion = 0.45  pp = 0.45", "CatalogMaximumMagnitude = 20  pp = 20",
                            "CatalogPath = C:\\Stars  pp = C:\\Stars", "MinimumBrightness = 0  pp = ",
                            "MinimumStarSize = 2  pp = ", "SigmaAboveMean = 4 pp = ",
                            "SetMaxSolveStars =120  pp = ", "ArcsecPerPixelHoriz = 3  pp = 1",
                            "ArcsecPerPixelVert = 2.75 pp = 1", "MinMatchStars = 7  pp = ", "camBin = 2"));
    EXPECT_EQ(test::usesOf(host, kPlate, "call AttachFITS C:\\SavedImage.fit"), 0);
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
