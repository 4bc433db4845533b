// Exact marks against a mount of vectors in the open air: somebody turns one adjuster until the star is as
// near to its mark as it comes, and what is left of the axis's error is looked at.
#include "correction/exact_mark.h"

#include <cmath>
#include <numbers>

#include <gmock/gmock.h>

#include "correction_world.h"
#include "engine/axis/simulated_mount.h"
#include "support/least_at.h"

namespace vantrel::correction {
namespace {

using engine::PixelPosition;
using test::cross;
using test::dot;
using test::kDegree;
using test::leastAt;
using test::turned;
using test::Vector;

constexpr double kLst = 7;
constexpr double kPixel = 3.6 / 3600;  // degrees
constexpr int kWidth = 1400, kHeight = 1000;
constexpr PixelPosition kCentre{kWidth / 2., kHeight / 2.};

/// The mount with its camera at a place.
class Camera {
  public:
    Camera(const test::SimulatedMount& mount, double hourAngle, double declination)
        : mount_(mount), air_(mount.site.air) {
        outwards_ = test::unitVector(hourAngle, declination);
        const Vector east = test::unitVector(hourAngle - 6, 0);
        rows_ = turned(cross(outwards_, east), outwards_, -30 * kDegree);
        columns_ = cross(rows_, outwards_);
    }

    /// The true direction that a pixel shows.
    Vector shown(const PixelPosition& pixel) const {
        const double x = (pixel.x - kCentre.x) * kPixel * kDegree;
        const double y = (pixel.y - kCentre.y) * kPixel * kDegree;
        const Vector seen = mount_.carried(test::unit(outwards_ + x * rows_ + y * columns_));
        return air_.lowered(seen, mount_.zenith());
    }

    /// As a solver fits it.
    engine::PlateSolution plate() const {
        const Vector centre = shown(kCentre);
        const double hourAngle = std::atan2(-centre.y, centre.x) / kDegree / 15;
        const Vector east = test::unitVector(hourAngle - 6, 0);
        const Vector north = cross(centre, east);
        engine::PlateSolution plate{.ra = kLst - hourAngle, .dec = std::asin(centre.z) / kDegree};
        constexpr double kFar = 300;
        const auto slope = [&](const PixelPosition& step, const Vector& along) {
            const auto at = [&](double sign) {
                const Vector v = shown({kCentre.x + sign * step.x, kCentre.y + sign * step.y});
                return dot(v, along) / dot(v, centre);
            };
            return (at(1) - at(-1)) / (2 * kFar) / kDegree;
        };
        plate.CD1_1 = slope({kFar, 0}, east);
        plate.CD1_2 = slope({0, kFar}, east);
        plate.CD2_1 = slope({kFar, 0}, north);
        plate.CD2_2 = slope({0, kFar}, north);
        return plate;
    }

  private:
    const test::SimulatedMount& mount_;
    test::SimulatedAir air_;
    Vector outwards_{}, rows_{}, columns_{};
};

engine::PolarError errorOf(const test::SimulatedMount& mount) {
    const Vector axis = mount.carried({0, 0, 1});
    return engine::writtenError({axis.x, axis.y, axis.z});
}

/// Turns the adjuster until the mark shows what is nearest to the star.
void bringTogether(double& adjuster, const Camera& camera, const PixelPosition& mark, const Vector& star) {
    adjuster = leastAt(adjuster, [&](double position) {
        adjuster = position;
        const Vector off = camera.shown(mark) + -1 * star;
        return dot(off, off);
    });
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
                    const Camera camera(mount, 1.5, hemisphere * declination);
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
        const Camera camera(mount, -2, latitude / 3);
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

}  // namespace
}  // namespace vantrel::correction
