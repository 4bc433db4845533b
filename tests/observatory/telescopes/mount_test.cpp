#include "observatory/telescopes/mount.h"

#include <functional>
#include <limits>
#include <numbers>
#include <stdexcept>
#include <utility>

#include <gtest/gtest.h>

#include "observatory/telescopes/mount_faults.h"
#include "platform/queued_event_loop.h"
#include "sky/epoch.h"

namespace vantrel::observatory {
namespace {

using sky::Vector3;
using sky::operator*;

class MountTest : public testing::Test {
  protected:
    void pass(double seconds) { loop_.sleep(platform::Milliseconds{static_cast<long>(seconds * 1000)}); }
    /// In no time worth mentioning; arrives at this hour angle (hours).
    void slew(double hourAngle, double declination) {
        const double rate = std::exchange(mount_.settings().slewRate, 3600);
        const double arrival = mount_.siderealTime() + 0.1 * 1.0027379 / 3600;
        mount_.startSlew({std::fmod(arrival - hourAngle + 48, 24), declination});
        pass(0.1);
        mount_.settings().slewRate = rate;
    }
    double readHourAngle() const {
        return std::remainder(mount_.siderealTime() - mount_.reading().rightAscension, 24);
    }

    platform::VirtualTime time_{platform::parseInstant("2026-11-24T20:00:00Z").value()};
    platform::QueuedEventLoop loop_{time_};
    NoiseSource noise_{1};
    Mount mount_{time_, noise_};
};

// As an operator sees them: altitude and compass direction of the axis' end above the horizon.
TEST_F(MountTest, AxisStandsWhereTheAdjustersPutIt) {
    for (const double latitude : {45.0, -45.0, 70.0, -10.0, 0.0})
        for (const double azimuth : {-90.0, 0.0, 200.0})
            for (const double elevation : {-60.0, 0.0, 180.0}) {
                const double end = latitude < 0 ? -1 : 1;
                const Vector3 axis = mountToSky({azimuth, elevation}, latitude) * Vector3{0, 0, end};
                const AltAz got = altAzOf(axis, latitude);
                EXPECT_NEAR(got.altitude, std::abs(latitude) + elevation / 60, 1e-9);
                // East is azimuth 90: a positive error turns the north end from 0 up, the south end from 180
                // down.
                const double expected = latitude < 0 ? 180 - azimuth / 60 : azimuth / 60;
                EXPECT_NEAR(std::remainder(got.azimuth - expected, 360), 0, 1e-9);
            }
}

TEST_F(MountTest, ReadingsExceedTheAxesByTheOffsets) {
    for (const double latitude : {60.0, -30.0})
        for (const double offset : {0.0, 0.2}) {
            mount_.settings().latitude = latitude;
            mount_.settings().hourAngleOffset = offset / 2;
            mount_.settings().declinationOffset = offset;
            slew(-2, 25);
            EXPECT_NEAR(readHourAngle(), -2, 1e-6);
            EXPECT_NEAR(mount_.reading().declination, 25, 1e-9);
            const HaDec truth = haDecOf(mount_.pointing().ahead);
            EXPECT_NEAR(truth.hourAngle / 15, -2 - offset / 2, 1e-6);
            EXPECT_NEAR(truth.declination, 25 - offset, 1e-9);
        }
}

TEST_F(MountTest, SyncMovesTheOffsetsAndNotTheMount) {
    slew(1, 40);
    const Vector3 before = mount_.pointing().ahead;
    const MountCounts told{std::fmod(mount_.siderealTime() - 1.2 + 24, 24), 39.5};
    mount_.sync(told);
    EXPECT_NEAR(mount_.reading().rightAscension, told.rightAscension, 1e-9);
    EXPECT_NEAR(mount_.reading().declination, told.declination, 1e-9);
    EXPECT_NEAR(mount_.settings().hourAngleOffset, 0.2, 1e-6);
    EXPECT_NEAR(mount_.settings().declinationOffset, -0.5, 1e-9);
    EXPECT_LT(sky::separation(mount_.pointing().ahead, before), 1e-9);
}

TEST_F(MountTest, TracksItsStarAndStandsStillOtherwise) {
    slew(0, 10);
    const MountCounts star = mount_.reading();
    pass(7200);
    EXPECT_NEAR(mount_.reading().rightAscension, star.rightAscension, 1e-6);
    EXPECT_NEAR(readHourAngle(), 2 * 1.0027379, 1e-5);

    mount_.setTracking(false);
    pass(3600);
    EXPECT_NEAR(readHourAngle(), 2 * 1.0027379, 1e-5);
    EXPECT_NEAR(mount_.reading().rightAscension, std::fmod(star.rightAscension + 1.0027379, 24), 1e-5);
}

TEST_F(MountTest, SlewsTakeTheirTimeOnBothAxes) {
    slew(0, 10);
    const double ra = mount_.reading().rightAscension;
    mount_.settings().slewRate = 2;
    mount_.startSlew({std::fmod(ra + 1, 24), 40});  // 15 degrees and 30 degrees
    pass(5);
    EXPECT_TRUE(mount_.isSlewing());
    EXPECT_NEAR(std::remainder(mount_.reading().rightAscension - ra, 24) * 15, 10, 1e-4);
    EXPECT_NEAR(mount_.reading().declination, 20, 1e-9);
    pass(4.9);
    EXPECT_NEAR(std::remainder(mount_.reading().rightAscension - ra, 24) * 15, 15, 1e-4);  // there first
    EXPECT_TRUE(mount_.isSlewing());
    pass(5.2);
    EXPECT_FALSE(mount_.isSlewing());
    EXPECT_NEAR(std::remainder(mount_.reading().rightAscension - ra, 24), 1, 1e-6);
    EXPECT_NEAR(mount_.reading().declination, 40, 1e-9);
}

TEST_F(MountTest, SlewsTheShorterWayAndStopsOnCommand) {
    slew(11, 0);
    mount_.startSlew({std::fmod(mount_.siderealTime() + 11 + 24, 24), 0});  // to hour angle -11: 30 degrees
    pass(2);                                                                // 4 degrees a second
    EXPECT_NEAR(readHourAngle() * 15, 173 + 2 * 15.04 / 3600, 1e-3);
    mount_.abortSlew();
    EXPECT_FALSE(mount_.isSlewing());
    const double stopped = mount_.reading().rightAscension;
    pass(60);
    EXPECT_NEAR(mount_.reading().rightAscension, stopped, 1e-6);
}

TEST_F(MountTest, PointingNoiseIsTheDistanceThatSlewsEndOff) {
    mount_.settings().pointingNoise = 30;
    double squares = 0;
    constexpr int kSlews = 400;
    for (int i = 0; i < kSlews; ++i) {
        slew(i % 2 == 0 ? 1 : 1.1, 60);
        const Vector3 said = hourAngleDirection(15 * readHourAngle(), mount_.reading().declination);
        squares += std::pow(sky::separation(said, mount_.pointing().ahead) * 3600, 2);
    }
    EXPECT_NEAR(std::sqrt(squares / kSlews), 30, 3);  // 400 pairs: 2.5% standard error, seed fixed
}

TEST_F(MountTest, ReadingsStayOnTheSphereBeyondThePole) {
    slew(1, 89.9);
    mount_.settings().declinationOffset = 0.2;
    EXPECT_NEAR(mount_.reading().declination, 89.9, 1e-9);  // 90.1 is 89.9 on the other side
    EXPECT_NEAR(std::abs(readHourAngle()), 11, 1e-3);
}

TEST_F(MountTest, ImpossibleWishesChangeNothing) {
    slew(0, 10);
    const MountCounts before = mount_.reading();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const MountCounts wish :
         {MountCounts{nan, 0}, {0, nan}, {-0.1, 0}, {24.1, 0}, {1, 90.1}, {1, -90.1}}) {
        EXPECT_THROW(mount_.startSlew(wish), std::runtime_error);
        EXPECT_THROW(mount_.sync(wish), std::runtime_error);
    }
    mount_.startSlew({before.rightAscension, 50});
    EXPECT_THROW(mount_.sync(before), std::runtime_error) << "slewing";
    mount_.abortSlew();
    mount_.setTracking(false);
    EXPECT_THROW(mount_.startSlew(before), std::runtime_error) << "not tracking";
    mount_.park();
    EXPECT_THROW(mount_.setTracking(true), std::runtime_error) << "parked";
    mount_.unpark();
    mount_.setTracking(true);
    EXPECT_NO_THROW(mount_.startSlew(before));
}

// ---- what each mechanical fault does to where the camera truly points, by formulas of its own

using sky::kArcsecond;
using sky::kDegree;

constexpr double kLatitude = 50;

/// Arcsec on the sky, of a mount that is aligned; roll from north through east.
struct Shift {
    double east = 0, north = 0, roll = 0;
};

class MountFaultsTest : public MountTest {
  protected:
    /// Arrives near this hour angle (degrees).
    void slew(double hourAngle, double declination) { MountTest::slew(hourAngle / 15, declination); }
    /// From the pointing without faults to the one with them, seen by an observer who knows only the pole.
    static Shift shift(const TubeAttitude& sound, const TubeAttitude& faulty) {
        const auto rollOf = [](const TubeAttitude& p) {
            const sky::Vector3 east = sky::normalized(sky::cross({0, 0, 1}, p.ahead));
            return std::atan2(sky::dot(p.up, east), sky::dot(p.up, sky::cross(p.ahead, east)));
        };
        const HaDec from = haDecOf(sound.ahead);
        const HaDec to = haDecOf(faulty.ahead);
        return {-(to.hourAngle - from.hourAngle) * 3600 * std::cos(from.declination * kDegree),
                (to.declination - from.declination) * 3600, (rollOf(faulty) - rollOf(sound)) / kArcsecond};
    }
    TubeAttitude sound() {
        const MountFaults faults = std::exchange(mount_.settings().faults, {});
        const DeclinationJump jump = mount_.declinationJump();
        mount_.setDeclinationJump({});
        const TubeAttitude pointing = mount_.pointing();
        mount_.settings().faults = faults;
        mount_.setDeclinationJump(jump);
        return pointing;
    }
};

TEST_F(MountFaultsTest, MoveThePointingByTheirFormulas) {
    mount_.settings().latitude = kLatitude;
    const double sinPhi = std::sin(kLatitude * kDegree);
    const double cosPhi = std::cos(kLatitude * kDegree);
    const struct {
        const char* fault;
        std::function<void(Mount&)> set;
        std::function<Shift(double h, double d)> expected;  // radians
    } cases[] = {
        {"flexure 30\"", [](Mount& m) { m.settings().faults.flexure = 30; },
         [&](double h, double d) {
             // The zenith's direction by spherical trigonometry, the tube falls away from it; 7 times its
             // eastern part twists the camera.
             const double north = sinPhi * std::cos(d) - cosPhi * std::sin(d) * std::cos(h);
             const double east = cosPhi * std::sin(h);
             // As the place moves east its meridian turns.
             const double meridian = -30 * east * std::tan(d);  // turns as the place moves
             return Shift{-30 * east, -30 * north, -7 * 30 * east + meridian};
         }},
        {"periodic error 20\" in 480 s", [](Mount& m) { m.settings().faults.periodicError = 20; },
         [](double h, double d) {
             return Shift{-20 * std::sin(2 * std::numbers::pi * (h / kDegree * 240) / 480) * std::cos(d), 0,
                          0};
         }},
        {"declination jump 45\"",
         [](Mount& m) {
             m.setDeclinationJump({45, 1});
         },
         [](double, double) {
             return Shift{0, 45, 0};
         }},
        {"clock 10 s ahead", [](Mount& m) { m.settings().faults.clockError = 10; },
         [](double, double) { return Shift{}; }},
    };
    for (const auto& c : cases)
        for (const double hourAngle : {-40.0, 0.3, 25.0})
            for (const double declination : {-10.0, 35.0, 70.0}) {
                SCOPED_TRACE(testing::Message() << c.fault << " at " << hourAngle << ", " << declination);
                mount_.settings().faults = {};
                mount_.setDeclinationJump({});
                c.set(mount_);
                slew(hourAngle, declination);
                const TubeAttitude faulty = mount_.pointing();
                const TubeAttitude before = sound();
                const HaDec there = haDecOf(before.ahead);
                const Shift expected = c.expected(there.hourAngle * kDegree, there.declination * kDegree);
                const Shift got = shift(before, faulty);
                EXPECT_NEAR(got.east, expected.east, 0.02);
                EXPECT_NEAR(got.north, expected.north, 0.02);
                EXPECT_NEAR(got.roll, expected.roll, 0.02);
            }
}

TEST_F(MountFaultsTest, TheJumpComesAtItsSlewAndStaysUntilItIsSetAgain) {
    mount_.setDeclinationJump({-5, 2});
    const auto after = [this](double hourAngle) {
        slew(hourAngle, 30);
        return haDecOf(mount_.pointing().ahead).declination;
    };
    EXPECT_NEAR(after(10), 30, 1e-9);
    EXPECT_NEAR((after(20) - 30) * 3600, -5, 1e-6);
    EXPECT_NEAR((after(30) - 30) * 3600, -5, 1e-6);
    EXPECT_NEAR(mount_.reading().declination, 30, 1e-9) << "the mount doesn't know";
    mount_.setDeclinationJump({-5, 2});
    EXPECT_NEAR(haDecOf(mount_.pointing().ahead).declination, 30, 1e-9);
    EXPECT_NEAR(after(10), 30, 1e-9) << "counted anew";
}

/// A slew to the same reading ends at the same hour angle of the mount's own, which is the sky's less the
/// error.
TEST_F(MountFaultsTest, AWrongClockTurnsReadingsAboutThePole) {
    slew(20, 30);
    const double from = haDecOf(mount_.pointing().ahead).hourAngle;
    const double trueTime = mount_.siderealTime();
    const double trueReading = mount_.reading().rightAscension;
    mount_.settings().faults.clockError = 10;
    EXPECT_NEAR((mount_.siderealTime() - trueTime) * 15 * 3600, 150.4, 0.1);
    EXPECT_NEAR((mount_.reading().rightAscension - trueReading) * 15 * 3600, 150.4, 0.1);
    mount_.settings().slewRate = 3600;
    mount_.startSlew({trueReading, 30});
    pass(0.2);
    const double to = haDecOf(mount_.pointing().ahead).hourAngle;
    EXPECT_NEAR((to - from) * 3600, 150.4 + 0.2 * 15.04, 0.1) << "an early clock sends it too far west";
}

}  // namespace
}  // namespace vantrel::observatory
