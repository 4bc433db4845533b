// The axis while its adjusters are turned, on a mount that shares nothing with the model.
#include "engine/axis/live_axis.h"

#include <cmath>
#include <numbers>
#include <optional>

#include <gtest/gtest.h>

#include "engine/axis/live_finish.h"
#include "engine/axis/simulated_mount.h"

namespace vantrel::engine {
namespace {

constexpr double kSeconds = 1.00273791 / 3600;  // in hours of sidereal time

/// A mount under the sky, and a plate every four seconds.
struct Night {
    explicit Night(double latitude, double declination, double hourAngle, const Air& air = standardAir(300))
        : ha(hourAngle) {
        mount.site = {latitude, air};
        mount.declination = declination;
        mount.azimuth = 40;
        mount.elevation = -25;
    }

    void measure(double sigma = 1) {
        const double hemisphere = mount.site.latitude < 0 ? -1 : 1;
        const auto end = mount.carried({0, 0, hemisphere});
        live.emplace(MeasuredAxisPosition{{hemisphere * end.x, hemisphere * end.y, hemisphere * end.z},
                                          {sigma * sigma, 0, sigma * sigma}},
                     mount.site);
    }
    void pass(double seconds) {
        lst += seconds * kSeconds;
        if (tracking) ha += seconds * kSeconds;
    }
    LiveReading look() {
        pass(4);
        Plate plate = mount.plate(ha, test::SimulatedAir(mount.site.air));
        plate.covariance = PlateCovariance::ofSigmas(0.3, 12);
        if (!tellsReading) plate.reading.reset();
        return live->follow(plate, lst).value();
    }
    void bump(double hourAngleArcsec, double declinationArcsec) {
        mount.offsetHA += hourAngleArcsec / 3600 / 15 / std::cos(mount.declination * test::kDegree);
        mount.offsetDec += declinationArcsec / 3600;
    }

    test::SimulatedMount mount;
    std::optional<LiveAxis> live;
    double ha, lst = 3;
    bool tracking = true, tellsReading = true;
};

struct SkyPlace {
    const char* name;
    double latitude, declination, hourAngle;
    Air air;
};

const SkyPlace kSkyPlaces[] = {
    {"equator, meridian", 50, 0, 0, standardAir(300)}, {"low in the south-west", 50, -10, 3, kNoAir},
    {"near the pole", 40, 80, 4, standardAir(300)},    {"below the pole", 55, 60, 11.5, standardAir(0)},
    {"southern hemisphere", -35, 5, -1.5, kNoAir},     {"southern, in the north", -35, 10, 1, standardAir(0)},
    {"southern pole", -40, -75, -3, standardAir(300)}};

TEST(LiveAxis, TellsWhatRemainsOfBothAtOnceWithADriveAndWithout) {
    for (const SkyPlace& place : kSkyPlaces)
        for (const bool driven : {true, false}) {
            SCOPED_TRACE(testing::Message() << place.name << (driven ? "" : ", without a drive"));
            Night night(place.latitude, place.declination, place.hourAngle, place.air);
            night.tracking = driven;
            night.measure();
            if (!driven) night.look(), night.look();
            const LiveReading first = night.look();
            EXPECT_EQ(first.state, LiveState::kFollowing);
            EXPECT_NEAR(first.remaining.azimuth, 40, driven ? 1e-3 : 0.05);
            night.mount.azimuth = 12;
            night.look();
            night.mount.elevation = 6;
            for (int plate = 0; plate < 30; ++plate) night.look();
            const LiveReading reading = night.look();
            EXPECT_EQ(reading.driven, driven);
            EXPECT_EQ(reading.state, LiveState::kFollowing);
            EXPECT_TRUE(reading.still);
            // Tracking about an axis that was corrected meanwhile, through air.
            EXPECT_NEAR(reading.remaining.azimuth, 12, 0.05);
            EXPECT_NEAR(reading.remaining.elevation, 6, 0.05);
            EXPECT_NEAR(reading.distance, std::hypot(12 * std::cos(place.latitude * test::kDegree), 6), 0.1);
            EXPECT_GT(reading.azimuthSigma, 1);
            EXPECT_LT(reading.sigma, 15);
            if (driven) continue;
            night.tracking = true;  // somebody switches the drive on
            night.look(), night.look();
            night.mount.elevation = 1;
            night.look();
            const LiveReading tracking = night.look();
            EXPECT_TRUE(tracking.driven);
            EXPECT_EQ(tracking.state, LiveState::kFollowing);
            EXPECT_NEAR(tracking.remaining.azimuth, 12, 0.1);
            EXPECT_NEAR(tracking.remaining.elevation, 1, 0.1);
        }
}

TEST(LiveAxis, SaysWhereTheAdjustersLookAlike) {
    const SkyPlace places[] = {{"due east", 45, 20, -4.6, kNoAir}, {"zenith", 45, 44, 0, kNoAir}};
    for (const SkyPlace& place : places) {
        SCOPED_TRACE(place.name);
        Night night(place.latitude, place.declination, place.hourAngle, place.air);
        night.measure();
        night.look();
        EXPECT_EQ(night.look().state, LiveState::kIndistinct);
    }
    for (const double latitude : {-60., -20., 5., 45., 60.})
        for (const double declination : {-70., -20., 40., 75.}) {
            const double there = distinctPlace(declination, latitude);
            EXPECT_GE(std::abs(there - latitude), 30 - 1e-9) << latitude << ' ' << declination;
            EXPECT_LE(std::abs(there), 90);
        }
}

TEST(LiveAxis, WaitsForTheNextPlateBeforeItBelievesWhatNoAdjusterDoes) {
    Night night(50, 20, 1.5);
    night.measure();
    night.look();
    night.bump(-15, 15);
    EXPECT_EQ(night.look().state, LiveState::kDoubtful);
    const LiveReading jumped = night.look();
    EXPECT_EQ(jumped.state, LiveState::kJumped);
    EXPECT_NEAR(jumped.jump, 15 * std::numbers::sqrt2, 2);
    EXPECT_EQ(night.look().state, LiveState::kJumped);
    night.live->acceptJump();
    EXPECT_EQ(night.look().state, LiveState::kFollowing);
}

TEST(LiveAxis, AWrongPlateCostsItselfOnly) {
    Night night(50, 20, 1.5);
    night.measure();
    night.look();
    night.bump(-7000, 7000);
    EXPECT_EQ(night.look().state, LiveState::kDoubtful);
    night.bump(7000, -7000);
    const LiveReading back = night.look();
    EXPECT_EQ(back.state, LiveState::kFollowing);
    EXPECT_NEAR(back.remaining.azimuth, 40, 0.02);
}

TEST(LiveAxis, NoticesThatTrackingStopped) {
    for (const double turnedMeanwhile : {0., 3.}) {
        Night night(-30, 10, -1);
        night.measure();
        night.look();
        night.look();
        night.tracking = false;
        EXPECT_EQ(night.look().state, LiveState::kDoubtful);
        EXPECT_EQ(night.look().state, LiveState::kTrackingOff);
        night.mount.elevation += turnedMeanwhile;
        EXPECT_EQ(night.look().state, LiveState::kTrackingOff);
        night.tracking = true;
        night.look();
        const LiveReading again = night.look();
        EXPECT_EQ(again.state, turnedMeanwhile > 0 ? LiveState::kJumped : LiveState::kFollowing);
        if (turnedMeanwhile == 0) {
            EXPECT_NEAR(again.remaining.elevation, -25, 0.02);
        }
    }
}

TEST(LiveAxis, AsksWhetherItWasTurnedBeforeItIsClearThatNothingTracks) {
    Night night(50, 20, 1.5);
    night.tracking = false;
    night.measure();
    night.look();
    night.mount.elevation += 4;
    night.look();
    const LiveReading reading = night.look();
    EXPECT_EQ(reading.state, LiveState::kJumped);
    EXPECT_FALSE(reading.driven);
}

TEST(LiveAxis, FollowsToAnotherPlace) {
    for (const bool reading : {true, false}) {
        Night night(50, 20, 1.5);
        night.tellsReading = reading;
        night.measure();
        night.look();
        night.mount.azimuth = 15;
        night.look();
        night.look();
        night.ha -= 3;
        night.mount.declination -= 10;
        EXPECT_FALSE(night.look().trustworthy());
        night.look();
        night.look();
        night.mount.elevation = 2;
        night.look();
        const LiveReading there = night.look();
        EXPECT_EQ(there.state, LiveState::kFollowing);
        EXPECT_NEAR(there.remaining.azimuth, 15, 0.1);
        EXPECT_NEAR(there.remaining.elevation, 2, 0.1);
    }
}

TEST(LiveFinish, IsDoneAfterTwoGoodReadingsWithoutDoubt) {
    struct Row {
        const char* why;
        LiveReading first, second;
        bool done;
    };
    const LiveReading good{.distance = 1.2, .sigma = 12};
    const LiveReading far{.distance = 1.9, .sigma = 12};
    const LiveReading vague{.distance = 0.2, .sigma = 60};
    const LiveReading doubtful{.state = LiveState::kDoubtful, .distance = 0.1, .sigma = 5};
    const Row rows[] = {{"twice", good, good, true},
                        {"one lucky reading", far, good, false},
                        {"too uncertain", vague, vague, false},
                        {"not trustworthy", good, doubtful, false}};
    for (const Row& row : rows) {
        LiveFinish finish;
        finish.add(row.first, 2);
        finish.add(row.second, 2);
        EXPECT_EQ(finish.done(), row.done) << row.why;
    }
}

TEST(LiveFinish, TellsTheShiftSinceTheLock) {
    Night night(60, 20, 1.5);
    night.measure();
    LiveFinish finish;
    finish.add(night.look(), 2);
    EXPECT_FALSE(finish.shift(60));
    finish.lock();
    night.live->setLocked(true);
    // Both move while the bolts are tightened.
    night.mount.azimuth += 3;
    night.mount.elevation += 2;
    for (int plate = 0; plate < 3; ++plate) finish.add(night.look(), 2);
    EXPECT_NEAR(finish.shift(60).value(), std::hypot(1.5, 2), 0.03);
}

}  // namespace
}  // namespace vantrel::engine
