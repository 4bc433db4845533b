// What one pointing does to mount, camera, solver, image and log.

#include "correction/star_pointing.h"

#include <cmath>
#include <numbers>
#include <random>

#include <gmock/gmock.h>

#include "correction/correction_target.h"
#include "correction/exact_mark.h"
#include "correction_world.h"
#include "engine/angles.h"
#include "engine/axis/simulated_mount.h"

namespace vantrel::correction {
namespace {

using namespace platform;
using engine::PixelPosition;
using test::cross;
using test::dot;
using test::kDegree;
using test::turned;
using test::unitVector;
using test::Vector;
using testing::ElementsAre;
using testing::IsEmpty;

struct Pointing : testing::Test, CorrectionWorld {
    PointingSituation situation(double amplitude, double angle) {
        return {.ErrorAmplitude = amplitude,
                .ErrorAngle = angle,
                .telescopeRA = mount.ra,
                .telescopeDec = mount.dec,
                .latitude = mount.SiteLatitude(),
                .lst = mount.SiderealTime(),
                .plateRA = mount.ra + solver.raError,
                .plateDec = mount.dec + solver.decError};
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
        bool lit = false;
        const auto looking =
            panel.lblSlew.changed.subscribe([&] { lit = lit || panel.lblSlew.backColor() == color::kRed; });
        (pointing.*adjuster.point)(0, 0);
        EXPECT_TRUE(lit);
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

// ---- exact marks, against a mount of vectors in the open air: somebody turns one adjuster until the star is
// as near to its mark as it comes, and what is left of the axis's error is looked at.

constexpr double kLst = 7;
constexpr double kPixel = 3.6 / 3600;  // degrees
constexpr int kWidth = 1400, kHeight = 1000;
constexpr PixelPosition kCentre{kWidth / 2., kHeight / 2.};

/// The mount with its camera at an hour angle.
struct Camera {
    const test::SimulatedMount& mount;
    double hourAngle;

    /// The true direction that a pixel shows.
    Vector shown(const PixelPosition& pixel) const {
        const Vector outwards = unitVector(hourAngle, mount.declination);
        const Vector rows =
            turned(cross(outwards, unitVector(hourAngle - 6, 0)), outwards, -mount.cameraAngle * kDegree);
        const double x = (pixel.x - kCentre.x) * kPixel * kDegree;
        const double y = (pixel.y - kCentre.y) * kPixel * kDegree;
        const Vector seen = mount.carried(test::unit(outwards + x * rows + y * cross(rows, outwards)));
        return test::SimulatedAir(mount.site.air).lowered(seen, mount.zenith());
    }
    /// As a solver fits it to the whole picture, which the air presses together.
    engine::PlateSolution plate() const {
        const Vector centre = shown(kCentre);
        const double seenAt = std::atan2(-centre.y, centre.x) / kDegree / 15;
        const Vector east = unitVector(seenAt - 6, 0);
        const Vector north = cross(centre, east);
        constexpr double kFar = 300;
        const auto slope = [&](const PixelPosition& step, const Vector& along) {
            const auto at = [&](double sign) {
                const Vector v = shown({kCentre.x + sign * step.x, kCentre.y + sign * step.y});
                return dot(v, along) / dot(v, centre);
            };
            return (at(1) - at(-1)) / (2 * kFar) / kDegree;
        };
        return {kLst - seenAt,          std::asin(centre.z) / kDegree, slope({kFar, 0}, east),
                slope({0, kFar}, east), slope({kFar, 0}, north),       slope({0, kFar}, north)};
    }
};

engine::PolarError errorOf(const test::SimulatedMount& mount) {
    const Vector axis = mount.carried({0, 0, 1});
    return engine::writtenError({axis.x, axis.y, axis.z});
}

/// Turns the adjuster until the mark shows what is nearest to the star, within a thousandth of an arc-minute.
void bringTogether(double& adjuster, const Camera& camera, const PixelPosition& mark, const Vector& star) {
    const auto offAt = [&](double position) {
        adjuster = position;
        const Vector off = camera.shown(mark) + -1 * star;
        return dot(off, off);
    };
    double at = adjuster;
    for (double step = 100; step > 1e-3; step /= 2)
        for (const double way : {step, -step})
            while (offAt(at + way) < offAt(at)) at += way;
    adjuster = at;
}

PixelPosition markFor(const Camera& camera, const Vector& star, const AdjusterTurn& turn,
                      const engine::Site& site) {
    const auto picture = PicturedSky::of(camera.plate(), kCentre, kLst);
    return exactMark(*picture, {star.x, star.y, star.z}, turn, site).value();
}

TEST(ExactMark, OnePassLeavesNothingWhereverTheStarStands) {
    for (const double hemisphere : {1., -1.})
        for (const double declination : {-20., 0., 30., 50., 75.})
            for (const double offset : {5., 40., 120.})
                for (const PixelPosition& corner :
                     {PixelPosition{100, 100}, PixelPosition{kWidth - 100, 100},
                      PixelPosition{100, kHeight - 100}, PixelPosition{kWidth - 100, kHeight - 100}}) {
                    test::SimulatedMount mount;
                    mount.site = {hemisphere * 48, engine::standardAir(300)};
                    mount.azimuth = offset * 0.8 / std::cos(48 * kDegree);
                    mount.elevation = -offset * 0.6;
                    const engine::PolarError measured = errorOf(mount);
                    mount.declination = hemisphere * declination;
                    const Camera camera{mount, 1.5};
                    // Two stars, each in the same corner of the picture.
                    const Vector first = camera.shown(corner);
                    bringTogether(
                        mount.azimuth, camera,
                        markFor(camera, first, azimuthTurn(measured, mount.site.latitude), mount.site),
                        first);
                    const Vector second = camera.shown(corner);
                    bringTogether(mount.elevation, camera,
                                  markFor(camera, second, elevationTurn(measured, mount.site.latitude, true),
                                          mount.site),
                                  second);
                    EXPECT_LT(60 * errorOf(mount).ErrorAmplitude, 0.1)
                        << "declination " << hemisphere * declination << ", " << offset << "' off, corner "
                        << corner.x << ", " << corner.y;
                }
}

TEST(ExactMark, TheElevationAloneTurnsAboutTheHingeAsItStands) {
    for (const double latitude : {35., -60.}) {
        test::SimulatedMount mount;
        mount.site = {latitude, engine::kNoAir};
        mount.azimuth = 150;
        mount.elevation = 70;
        mount.declination = latitude / 3;
        const Camera camera{mount, -2};
        const Vector star = camera.shown({1200, 200});
        bringTogether(mount.elevation, camera,
                      markFor(camera, star, elevationTurn(errorOf(mount), latitude, false), mount.site),
                      star);
        EXPECT_NEAR(mount.elevation, 0, 0.05) << latitude;
    }
}

struct ExactPointing : testing::Test, CorrectionWorld {
    ExactPointing() {
        settings.SaveSetting("PolarAlign", "ExactMark", "1");
        star.place = {620, 300};
    }
};

TEST_F(ExactPointing, StaysTrueToTheSkyFarFromTheEquator) {
    mount.dec = 60;
    pointing.PointAzCorrectionAllignmentStar(0.2, 90);
    ASSERT_TRUE(marks.CorrectionPointed);
    // The axis lies 12' beside the pole: on the meridian the vertical turns a star by that over the cosine of
    // the latitude, times the cosine of its altitude.
    const double altitude = engine::EquatorialToAltAz(mount.lst - mount.ra, mount.dec, 45).Alt;
    const double expected = 12 / std::cos(45 * kDegree) * std::cos(altitude * kDegree);
    const double moved = std::hypot(marks.TargetX - marks.StarX, marks.TargetY - marks.StarY);
    EXPECT_NEAR(moved * marks.arcMinutesPerPixel, expected, 0.02 * expected);
}

TEST_F(ExactPointing, MarksAnewAfterASlewAndKeepsTheMarkWithoutAPlate) {
    for (const bool clouded : {false, true}) {
        mount.slews.clear();
        solver.solved.clear();
        solver.clouds.clear();
        if (clouded) solver.clouds.insert(2);
        star.place = {30, 300};
        pointing.PointAzCorrectionAllignmentStar(0, 0);
        EXPECT_EQ(mount.slews.size(), 1u);
        EXPECT_EQ(solver.solved.size(), 2u);
        EXPECT_TRUE(marks.CorrectionPointed);
        EXPECT_NEAR(marks.TargetX, 30, 1e-3);
        EXPECT_EQ(log.lines.back() == "No plate after the slew: the mark stays where the star was", clouded);
    }
}

// ---- where a correction star must go, against a mount of vectors

constexpr double kArcsec = kDegree / 3600;

double angleBetween(const Vector& a, const Vector& b) {
    const Vector c = cross(a, b);
    return std::atan2(std::sqrt(dot(c, c)), dot(a, b));
}
/// The turn about the line that brings the plane of `from` onto that of `to`, radians in (-π, π].
double turnAbout(const Vector& line, const Vector& from, const Vector& to) {
    return std::atan2(dot(line, cross(from, to)), dot(from, to) - dot(line, from) * dot(line, to));
}

// The local equatorial frame: x to the meridian on the equator, y to the east point, z to the north pole.
constexpr Vector kPole = {0, 0, 1};
constexpr Vector kEast = {0, 1, 0};

/// A mount and where its camera looks.
struct MountAtStar {
    double latitude, amplitude, angle, lst;
    double plateHA, plateDec;

    Vector zenith() const { return {std::cos(latitude * kDegree), 0, std::sin(latitude * kDegree)}; }
    /// Counter-clockwise from "up" as seen from within looking at the north pole: up is towards the meridian
    /// on the equator, a quarter on is east.
    Vector axis() const {
        const double a = amplitude * kDegree;
        const double b = angle * kDegree;
        return {std::sin(a) * std::cos(b), std::sin(a) * std::sin(b), std::cos(a)};
    }
    Vector plate() const { return unitVector(plateHA, plateDec); }
    /// What the azimuth adjuster has to take back, as a turn about the vertical.
    double azimuthError() const { return turnAbout(zenith(), kPole, axis()); }
    /// The axis once the azimuth is right: in the meridian, as high as before.
    Vector axisInMeridian() const { return turned(axis(), zenith(), -azimuthError()); }

    PointingSituation situation(double telescopeRA, double telescopeDec) const {
        return {.ErrorAmplitude = amplitude,
                .ErrorAngle = angle,
                .telescopeRA = telescopeRA,
                .telescopeDec = telescopeDec,
                .latitude = latitude,
                .lst = lst,
                .plateRA = engine::NormalizeRAHours(lst - plateHA),
                .plateDec = plateDec};
    }
    friend std::ostream& operator<<(std::ostream& out, const MountAtStar& s) {
        return out << "latitude " << s.latitude << ", axis off by " << s.amplitude << " at " << s.angle
                   << ", hour angle " << s.plateHA << ", declination " << s.plateDec;
    }
};

class RandomMounts {
  public:
    MountAtStar next() {
        const double latitude = (random_() % 2 != 0u ? 1 : -1) * between(2, 80);
        return {latitude,         std::exp(between(std::log(1.0 / 60), std::log(3))),
                between(0, 360),  between(0, 24),
                between(-12, 12), between(-85, 85)};
    }
    double between(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random_);
    }

  private:
    std::mt19937_64 random_{20261124};
};

/// How far the target's sky position is from the direction, radians.
double missedBy(const Vector& wanted, const CorrectionTarget& target, const MountAtStar& setup) {
    return angleBetween(wanted, unitVector(setup.lst - target.moveTo.RA, target.moveTo.Dec));
}

/// Where a slew to the target's readings, made from the readings at the plate, takes a rigid mount on the
/// axis: both of its shafts turn by the differences of the readings.
Vector slewedTo(const CorrectionTarget& target, const MountAtStar& setup, const Vector& axis,
                const PointingSituation& s) {
    const double hourAngleTurn = (s.telescopeRA - (target.scope.RA - target.raOffset)) * 15 * kDegree;
    const double declinationTurn = (target.decOffset + target.scope.Dec - s.telescopeDec) * kDegree;
    Vector shaft = cross(setup.plate(), axis);
    shaft = 1 / std::sqrt(dot(shaft, shaft)) * shaft;
    return turned(turned(setup.plate(), shaft, declinationTurn), axis, -hourAngleTurn);
}

constexpr int kSetups = 4000;

TEST(CorrectionTarget, AzimuthIsATurnAboutTheVertical) {
    RandomMounts setups;
    for (int i = 0; i < kSetups; ++i) {
        const MountAtStar setup = setups.next();
        const PointingSituation s = setup.situation(setups.between(0, 24), setup.plateDec + 0.4);
        const CorrectionTarget target = azimuthTarget(s);
        const Vector wanted = turned(setup.plate(), setup.zenith(), setup.azimuthError());
        ASSERT_LT(missedBy(wanted, target, setup), kArcsec) << setup;
        ASSERT_LT(angleBetween(wanted, slewedTo(target, setup, setup.axis(), s)), kArcsec) << setup;
    }
}

TEST(CorrectionTarget, ElevationIsATurnAboutTheEastWestLine) {
    RandomMounts setups;
    int above = 0;
    for (int i = 0; i < kSetups; ++i) {
        const MountAtStar setup = setups.next();
        const PointingSituation s = setup.situation(setups.between(0, 24), setup.plateDec - 0.3);
        const CorrectionTarget target = elevationTarget(s);
        const Vector axis = setup.axisInMeridian();
        ASSERT_LT(std::abs(axis.y), 1e-12) << setup;
        const Vector wanted = turned(setup.plate(), kEast, turnAbout(kEast, kPole, axis));
        ASSERT_LT(missedBy(wanted, target, setup), kArcsec) << setup;
        ASSERT_LT(angleBetween(wanted, slewedTo(target, setup, axis, s)), kArcsec) << setup;
        above += target.log[6] == "Axis points above Pole";
        ASSERT_EQ(target.log[6], axis.x > 0 ? "Axis points above Pole" : "Axis points below Pole") << setup;
    }
    EXPECT_GT(above, kSetups / 4);
    EXPECT_LT(above, kSetups * 3 / 4);
}

TEST(CorrectionTarget, TellsEveryStepInTheLog) {
    // The axis stands a degree above the pole, the star due west on the equator: on the line about which the
    // axis is turned, so that nothing moves it.
    const MountAtStar setup{45, 1, 0, 10, 6, 0};
    const PointingSituation s = setup.situation(4.25, 0.4);
    EXPECT_THAT(
        azimuthTarget(s).log,
        testing::ElementsAre(
            "Az Plate RA = 4.000000, Az Plate Dec = 0.000000", "RA Offset = -0.250000, Dec Offset = 0.400000",
            "Axis Alt = 46.000000, Axis Az = 180.000000", "Plate Alt = 0.000000, Plate Az = 90.000000",
            "Move To Alt = 0.000000, Move To Az = 90.000000", "Move To RA = 4.000000, Move To Dec = 0.000000",
            "TrueScope Move To RA = 4.000000, Dec = 0.000000"));
    EXPECT_THAT(
        elevationTarget(s).log,
        testing::ElementsAre(
            "Elevation Plate RA = 4.000000, Dec = 0.000000", "RA Offset = -0.250000, Dec Offset = 0.400000",
            "Axis Alt = 46.000000, Axis Az = 180.000000", "Merridian HA = 0.000000, Dec = 89.000000",
            "Merridian Error Amplitude = 1.000000", "Plate Alt = 0.000000, Plate Az = 90.000000",
            "Axis points above Pole", "Move To RA = 4.000000, Move To Dec = 0.000000",
            "TrueScope Move To RA = 4.000000, Dec = 0.000000"));
}

TEST(SkyOffsetToPixel, IsTheWrittenFormulaToTheLastBit) {
    // Every number is a sum of few powers of two, so that the right result has no rounding in it.
    const double scale = 1.0 / 1024;  // degrees a pixel
    const struct {
        const char* why;
        double ra, dec;               // hours, degrees
        engine::PlateSolution plate;  // RA, Dec, CD1_1, CD1_2, CD2_1, CD2_2
        double x, y;
    } cases[] = {
        {"upright", 6 + 1.0 / 64, 10.25, {6, 10, -scale, 0, 0, scale}, 500.5 - 240, 400.25 + 256},
        {"mirrored", 6 + 1.0 / 64, 10.25, {6, 10, scale, 0, 0, scale}, 500.5 + 240, 400.25 + 256},
        {"a quarter turned", 6 + 1.0 / 64, 10.25, {6, 10, 0, scale, scale, 0}, 500.5 + 256, 400.25 + 240},
        {"skew", 6, 10.25, {6, 10, scale, scale, 0, scale}, 500.5 - 256, 400.25 + 256},
        {"no cosine of the declination", 6 + 1.0 / 64, 80, {6, 80, -scale, 0, 0, scale}, 500.5 - 240, 400.25},
        {"across 0 h", 1.0 / 128, 10, {23 + 127.0 / 128, 10, -scale, 0, 0, scale}, 500.5 - 240, 400.25},
        {"back across 0 h", 23 + 127.0 / 128, 10, {1.0 / 128, 10, -scale, 0, 0, scale}, 500.5 + 240, 400.25},
    };
    for (const auto& c : cases) {
        const auto pixel = SkyOffsetToPixel(c.ra, c.dec, c.plate, {500.5, 400.25});
        ASSERT_TRUE(pixel) << c.why;
        EXPECT_EQ(pixel->x, c.x) << c.why;
        EXPECT_EQ(pixel->y, c.y) << c.why;
    }
    EXPECT_FALSE(SkyOffsetToPixel(6, 10, {6, 10, scale, scale, scale, scale}, {500, 400}))
        << "a singular matrix has no pixel";
}

}  // namespace
}  // namespace vantrel::correction
