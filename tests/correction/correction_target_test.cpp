// Where a correction star must go, against a mount of vectors: the axis, the hinges of its two adjusters and
// the tube are directions that Rodrigues' formula turns; nothing here knows of azimuths and hour angles but
// the way in and out.

#include "correction/correction_target.h"

#include <cmath>
#include <numbers>
#include <random>

#include <gmock/gmock.h>

#include "correction/star_pointing.h"
#include "engine/angles.h"
#include "support/vectors.h"

namespace vantrel::correction {
namespace {

using test::cross;
using test::dot;
using test::kDegree;
using test::turned;
using test::Vector;

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

/// Hour angle in hours, west positive; declination in degrees.
Vector direction(double hourAngle, double declination) {
    const double h = hourAngle * 15 * kDegree;
    const double d = declination * kDegree;
    return {std::cos(d) * std::cos(h), -std::cos(d) * std::sin(h), std::sin(d)};
}

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
    Vector plate() const { return direction(plateHA, plateDec); }
    /// What the azimuth adjuster has to take back, as a turn about the vertical.
    double azimuthError() const { return turnAbout(zenith(), kPole, axis()); }
    /// The axis once the azimuth is right: in the meridian, as high as before.
    Vector axisInMeridian() const { return turned(axis(), zenith(), -azimuthError()); }

    PointingSituation situation(double telescopeRA, double telescopeDec) const {
        PointingSituation s;
        s.ErrorAmplitude = amplitude;
        s.ErrorAngle = angle;
        s.latitude = latitude;
        s.lst = lst;
        s.plateRA = engine::NormalizeRAHours(lst - plateHA);
        s.plateDec = plateDec;
        s.telescopeRA = telescopeRA;
        s.telescopeDec = telescopeDec;
        return s;
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
    return angleBetween(wanted, direction(setup.lst - target.moveTo.RA, target.moveTo.Dec));
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

TEST(CorrectionTarget, TheStarTakesThePlaceOfTheTargetWhenTheAdjusterIsTurned) {
    RandomMounts setups;
    for (int i = 0; i < kSetups; ++i) {
        const MountAtStar setup = setups.next();
        const CorrectionTarget target = azimuthTarget(setup.situation(1, 2));
        // The pixel that shows the target now looks where the adjuster's turn takes it: at the star.
        const Vector pixel = direction(setup.lst - target.moveTo.RA, target.moveTo.Dec);
        const Vector after = turned(pixel, setup.zenith(), -setup.azimuthError());
        ASSERT_LT(angleBetween(after, setup.plate()), kArcsec) << setup;
    }
}

TEST(CorrectionTarget, AnAlignedMountHasItsStarInPlace) {
    for (const double latitude : {48.0, -33.0}) {
        const MountAtStar setup{latitude, 0, 0, 5, 1.25, 20};
        const PointingSituation s = setup.situation(3.75, 20);
        for (const auto& target : {azimuthTarget(s), elevationTarget(s)})
            EXPECT_LT(missedBy(setup.plate(), target, setup), 1e-6 * kArcsec) << latitude;
    }
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
