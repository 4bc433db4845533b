#include "engine/sky_geometry.h"

#include <gtest/gtest.h>

#include "engine/angles.h"
#include "engine/site_air.h"
#include "platform/errors.h"
#include "platform/queued_event_loop.h"
#include "support/engine_world.h"

namespace vantrel::engine {
namespace {

TEST(Angles, HoursComeIntoOneDay) {
    const struct {
        double hours, expected;
        const char* why;
    } cases[] = {
        {-1.5, 22.5, "just below 0"},         {25, 1, "just above a day"}, {24, 0, "a whole day"},
        {-24, 24, "a negative whole day"},    {0, 0, "in range"},          {23.999, 23.999, "in range"},
        {-49, 23, "several days below zero"}, {49.5, 1.5, "several days"}};
    for (const auto& c : cases) EXPECT_DOUBLE_EQ(NormalizeRAHours(c.hours), c.expected) << c.why;
    EXPECT_DOUBLE_EQ(signedHours(12), 12);
    EXPECT_DOUBLE_EQ(signedHours(23.8), 23.8 - 24);
    EXPECT_THROW(NormalizeRAHours(1e9), platform::OperationError);
}

TEST(Angles, ArcTan2KeepsItsAxisRules) {
    const struct {
        double y, x, expected;
    } cases[] = {{0, -1, 0},           {1, 0, kPi / 2},      {-1, 0, 3 * kPi / 2},
                 {-1, 1, 7 * kPi / 4}, {1, -1, 3 * kPi / 4}, {-1, -1, 5 * kPi / 4}};
    for (const auto& c : cases) EXPECT_NEAR(ArcTan2(c.y, c.x), c.expected, 1e-14) << c.y << ", " << c.x;
}

TEST(Angles, RoundingBeyondOneIsOne) {
    EXPECT_EQ(ArcCos(-1.0000001), kPi);
    EXPECT_EQ(ArcCos(1.0000001), 0);
}

TEST(SkyGeometry, ASingularSystemHasZerosForASolution) {
    EXPECT_EQ(Solve3Equations({{{1, 2, 3}, {2, 4, 6}, {0, 0, 1}}}, {1, 2, 3}), (Row{0, 0, 0}));
    const Row solution = Solve3Equations({{{2, 1, -1}, {-3, -1, 2}, {-2, 1, 2}}}, {8, -11, -3});
    EXPECT_NEAR(solution[0], 2, 1e-12);
    EXPECT_NEAR(solution[1], 3, 1e-12);
    EXPECT_NEAR(solution[2], -1, 1e-12);
}

TEST(SkyGeometry, HorizonPositionsCountFromSouthThroughWest) {
    const struct {
        double ha, dec, latitude, alt, az;
        const char* why;
    } cases[] = {{0, 90, 45, 45, 180, "the pole stands in the north"},
                 {6, 0, 45, 0, 90, "setting due west"},
                 {18, 0, 45, 0, 270, "rising due east"},
                 {0, 0, 45, 45, 180, "exactly on the meridian the azimuth is always 180"},
                 {2, 30, 45, 62.11, 67.79, "a star in the south-west"}};
    for (const auto& c : cases) {
        const auto [alt, az] = EquatorialToAltAz(c.ha, c.dec, c.latitude);
        EXPECT_NEAR(alt, c.alt, 0.005) << c.why;
        EXPECT_NEAR(az, c.az, 0.005) << c.why;
    }
}

TEST(SkyGeometry, EquatorialPositionsComeBackFromTheHorizon) {
    for (const double latitude : {-60.0, -20.0, 30.0, 70.0})
        for (const double ha : {-11.0, -2.0, 0.5, 7.0})
            for (const double dec : {-70.0, -5.0, 40.0, 80.0}) {
                const auto [alt, az] = EquatorialToAltAz(ha, dec, latitude);
                const auto back = AltAzToEquatorial(alt, az, latitude);
                EXPECT_NEAR(back.ha, ha, 1e-9) << latitude << " " << dec;
                EXPECT_NEAR(back.Dec, dec, 1e-9) << latitude << " " << ha;
            }
}

TEST(SkyGeometry, AMisalignedMountPointsElsewhereToSeeAStar) {
    const auto scope = TransformCoordinatesFromSkyToScope(8, 60, 10, 0.5, 0);
    EXPECT_NEAR(scope.RA, 7.97, 0.005);
    EXPECT_NEAR(scope.Dec, 60.43, 0.005);
}

// ---- site air

TEST(SiteAir, TakesWhatIsKnownBest) {
    struct HighMount : test::Mount {
        using Mount::Mount;
        std::optional<double> siteHeightIfKnown() override { return height; }
        bool looksThroughAir() override { return outside; }
        std::optional<double> height;
        bool outside = true;
    };
    const struct {
        const char *height, *pressure, *temperature;
        std::optional<double> mountsHeight;
        double expectedPressure, expectedTemperature, uncertainty;
        bool outside = true;
    } cases[] = {
        {"", "", "", {}, 1013.25, 15, 0.05},         {"", "", "", 1000, 898.7, 8.5, 0.05},
        {"2000", "", "", 1000, 795, 2, 0.05},        {"", "990", "", {}, 990, 15, 0.05},
        {"1000", "905", "-12", {}, 905, -12, 0.02},  {"high", "29.9", "500", 9e9, 1013.25, 15, 0.05},
        {"1000", "905", "-12", {}, 0, 15, 0, false},
    };
    for (const auto& c : cases) {
        platform::VirtualTime time{platform::Instant{}};
        platform::QueuedEventLoop loop{time};
        test::MemorySettingsPort settings;
        HighMount mount{loop};
        mount.height = c.mountsHeight;
        mount.outside = c.outside;
        settings.SaveSetting("PolarAlign", "SiteHeight", c.height);
        settings.SaveSetting("PolarAlign", "AirPressure", c.pressure);
        settings.SaveSetting("PolarAlign", "AirTemperature", c.temperature);
        const Air air = siteAir(settings, mount);
        EXPECT_NEAR(air.pressure, c.expectedPressure, 0.5) << c.height << " " << c.pressure;
        EXPECT_NEAR(air.temperature, c.expectedTemperature, 0.1);
        EXPECT_EQ(air.uncertainty, c.uncertainty);
    }
}

}  // namespace
}  // namespace vantrel::engine
