#include "platesolve/image_link_solver.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platesolve/method_selection.h"
#include "platesolve/solving_world.h"

namespace vantrel::platesolve {
namespace {

using testing::ElementsAre;

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
    EXPECT_EQ(solution->CD1_1, 0.001);
    EXPECT_EQ(solution->CD1_2, -0.002);
    EXPECT_EQ(solution->CD2_1, 0.003);
    EXPECT_EQ(solution->CD2_2, 0.004);
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

}  // namespace
}  // namespace vantrel::platesolve
