// What one pointing does to mount, camera, solver, image and log.

#include "correction/star_pointing.h"

#include <gmock/gmock.h>

#include "correction_world.h"

namespace vantrel::correction {
namespace {

using namespace platform;
using testing::ElementsAre;
using testing::IsEmpty;

struct Pointing : testing::Test, CorrectionWorld {
    PointingSituation situation(double amplitude, double angle) {
        PointingSituation s;
        s.ErrorAmplitude = amplitude;
        s.ErrorAngle = angle;
        s.telescopeRA = mount.ra;
        s.telescopeDec = mount.dec;
        s.latitude = mount.SiteLatitude();
        s.lst = mount.SiderealTime();
        s.plateRA = mount.ra + solver.raError;
        s.plateDec = mount.dec + solver.decError;
        return s;
    }
};

TEST_F(Pointing, WithACameraTakesTheRunsExposureAndWaitsForItsDownload) {
    panel.txtExposeInterval.setText("7.5");
    exposurePanel.txtContinuousExposeInterval.setText("0.5");
    state.SpiralSearchAllowed = true;
    pointing.PointAzCorrectionAllignmentStar(0.01, 60);
    EXPECT_THAT(camera.exposures, ElementsAre(7.5, 0.5)) << "to solve, and to find the star on";
    EXPECT_EQ(camera.saved, "SavedImage");
    EXPECT_THAT(solver.solved, ElementsAre("SavedImage"));
    EXPECT_FALSE(solver.searched) << "no spiral search for a correction";
    EXPECT_EQ(time.sinceStart(), std::chrono::seconds{1 + 3 + 1 + 1});
    EXPECT_EQ(state.ExposureRA, mount.ra);
    EXPECT_EQ(state.ExposureDec, mount.dec);
    EXPECT_TRUE(marks.CorrectionPointed);
    EXPECT_THAT(mount.slews, IsEmpty());
}

TEST_F(Pointing, WithTheSimulatorItsImageGoesToTheImageFolder) {
    state.UsingAxisSimulator = true;
    for (const char* folder : {"", "D:\\Sky"}) {
        if (*folder != '\0') settings.SaveSetting("PolarAlign", "ImagePath", folder);
        pointing.PointAltCorrectionAllignmentStar(0.01, 60);
        EXPECT_EQ(mount.saved, std::string(*folder != '\0' ? folder : "C:") + "\\SavedImage.fit");
    }
    EXPECT_THAT(camera.exposures, IsEmpty());
}

const struct {
    void (StarPointing::*point)(double, double);
    CorrectionTarget (*target)(const PointingSituation&);
    std::vector<std::string> begins;  // its log
} kPointings[] = {{&StarPointing::PointAzCorrectionAllignmentStar,
                   azimuthTarget,
                   {"*** Az Correction ***", "Azimuth Correction Plate Solved"}},
                  {&StarPointing::PointAltCorrectionAllignmentStar,
                   elevationTarget,
                   {"*** Elevation Correction ***", "Elevation Correction Plate Solved"}}};

TEST_F(Pointing, LogsEveryValueAndMarksThePath) {
    solver.raError = 0.01;
    solver.decError = -0.2;
    for (const auto& adjuster : kPointings) {
        log.lines.clear();
        overlays.drawn.clear();
        (pointing.*adjuster.point)(0.05, 60);
        const std::string x = formatNumber(marks.TargetX, "0");
        const std::string y = formatNumber(marks.TargetY, "0");
        std::vector<std::string> lines = adjuster.begins;
        for (const std::string& line : adjuster.target(situation(0.05, 60)).log) lines.push_back(line);
        lines.insert(lines.end(), {"Brightest Star X = 500, Brightest Star Y = 400", "Star is on Plate",
                                   "Target X = " + x + ", Target Y = " + y});
        EXPECT_EQ(log.lines, lines);
        EXPECT_THAT(overlays.drawn,
                    ElementsAre("cross " + toText(marks.TargetX) + " " + toText(marks.TargetY),
                                "line 500 400 " + x + " " + y));
        EXPECT_EQ(panel.lblSolve.backColor(), color::kIndicatorOffBack);
    }
}

TEST_F(Pointing, SlewsInsteadWhenTheTargetIsOffTheImage) {
    solver.raError = 0.01;
    solver.decError = -0.2;
    star.place = {30.5, 400};
    // Without an axis error the star stays where it is, so that the mount's readings are the aim's.
    for (const auto& adjuster : kPointings) {
        log.lines.clear();
        mount.slews.clear();
        overlays.drawn.clear();
        (pointing.*adjuster.point)(0, 0);
        EXPECT_THAT(overlays.drawn, ElementsAre("cross 30.5 400"));
        EXPECT_EQ(marks.TargetX, 30.5);
        EXPECT_EQ(marks.TargetY, 400);
        ASSERT_EQ(mount.slews.size(), 1u);
        EXPECT_NEAR(mount.slews[0].RA, mount.ra, 1e-9);
        EXPECT_NEAR(mount.slews[0].Dec, mount.dec, 1e-9);
        ASSERT_GE(log.lines.size(), 3u);
        EXPECT_EQ(std::vector(log.lines.end() - 3, log.lines.end()),
                  (std::vector<std::string>{"Star is not on Plate",
                                            "Slewing Telescope to: RA = 2.500000, Dec = 20.000000",
                                            "                      RA = 2.500h, Dec = 20.000d"}));
        EXPECT_TRUE(marks.CorrectionPointed);
    }
}

TEST_F(Pointing, TheImageEndsATenthFromItsEdge) {
    constexpr double kLittle = 0.001;  // pixels
    const struct {
        double x, y;
        bool on;
    } cases[] = {
        {100 + kLittle, 400, true},  {100 - kLittle, 400, false}, {900 - kLittle, 400, true},
        {900 + kLittle, 400, false}, {500, 80 + kLittle, true},   {500, 80 - kLittle, false},
        {500, 720 - kLittle, true},  {500, 720 + kLittle, false},
    };
    for (const auto& c : cases) {
        star.place = {c.x, c.y};
        mount.slews.clear();
        pointing.PointAzCorrectionAllignmentStar(0, 0);
        EXPECT_EQ(mount.slews.empty(), c.on) << c.x << ", " << c.y;
    }
}

TEST_F(Pointing, AFailedSolveEndsIt) {
    solver.fails = true;
    pointing.PointAzCorrectionAllignmentStar(0.1, 60);
    EXPECT_FALSE(marks.CorrectionPointed);
    pointing.PointAltCorrectionAllignmentStar(0.1, 60);
    EXPECT_THAT(log.lines, ElementsAre("*** Az Correction ***", "Azimuth Correction Aborted !!",
                                       "*** Elevation Correction ***", "Polar Align Aborted !!"));
    EXPECT_THAT(overlays.drawn, IsEmpty());
    EXPECT_THAT(mount.slews, IsEmpty());
}

}  // namespace
}  // namespace vantrel::correction
