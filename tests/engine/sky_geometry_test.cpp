#include "engine/sky_geometry.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "axis/simulated_mount.h"
#include "engine/angles.h"
#include "engine/polar_error.h"
#include "engine/progress.h"
#include "engine/site_air.h"
#include "engine/waiting.h"
#include "platform/errors.h"
#include "platform/queued_event_loop.h"
#include "support/engine_world.h"

namespace vantrel::engine {
namespace {

using platform::Milliseconds;

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

// ---- polar error

TEST(PolarError, FindsAxisAndOffsetsOfTheMountInEveryDirection) {
    for (const auto& [azimuth, elevation] :
         {std::pair{0., 0.}, {0., 1.2}, {40., -3.}, {-150., 20.}, {-1., -100.}, {0.001, 180.}})
        for (const auto& [latitude, declination] : {std::pair{50., 40.}, {50., 5.}, {-35., -40.}}) {
            SCOPED_TRACE(testing::Message() << azimuth << ", " << elevation << " at " << latitude);
            const test::SimulatedMount mount{.site = {latitude, kNoAir},
                                             .azimuth = azimuth,
                                             .elevation = elevation,
                                             .offsetHA = -0.3,
                                             .offsetDec = 0.4,
                                             .declination = declination};
            std::array<PlatePosition, 3> plates;
            std::ranges::transform(mount.plates({1, 0, -1}), plates.begin(), [](const Plate& plate) {
                return PlatePosition{plate.hourAngle, plate.declination, plate.reading->hourAngle};
            });
            const auto [found, bad, A, C, Theta, Gamma] = CalcPolarError(plates, declination);
            const test::Vector axis = mount.carried({0, 0, 1});
            const PolarError truth = writtenError({axis.x, axis.y, axis.z});
            EXPECT_FALSE(bad);
            EXPECT_NEAR(found.ErrorAmplitude, truth.ErrorAmplitude, 1e-6);
            const double off = truth.ErrorAmplitude > 0 ? found.ErrorAngle - truth.ErrorAngle : 0;
            EXPECT_NEAR(std::remainder(off, 360), 0, 1e-3);
            // A turn about the vertical is in part one about the pole.
            const double turn = azimuth / 60 / 15 * std::sin(std::abs(latitude) * test::kDegree);
            EXPECT_NEAR(found.OffsetRA, -0.3 - turn, 5e-3);
            EXPECT_NEAR(found.OffsetDec, 0.4, 5e-3);
        }
}

TEST(PolarError, AnImpossibleFitIsABadSolutionThatKeepsTheHourAngleOffset) {
    const auto result = CalcPolarError({{{1.0, 40, 0.9}, {0.99, 55, 0.89}, {0.98, 30, 0.88}}}, 40);
    EXPECT_TRUE(result.BadSolution);
    EXPECT_EQ(result.error.ErrorAmplitude + result.error.ErrorAngle + result.error.OffsetDec, 0);
    EXPECT_NE(result.error.OffsetRA, 0);
}

TEST(PolarError, ThreeIdenticalPlatesLookLikeAnAlignedMount) {
    const auto result = CalcPolarError({{{0, 40, 0}, {0, 40, 0}, {0, 40, 0}}}, 41);
    EXPECT_FALSE(result.BadSolution);
    EXPECT_EQ(result.error.OffsetDec, 41);
    EXPECT_EQ(result.error.ErrorAmplitude + result.error.ErrorAngle + result.error.OffsetRA, 0);
}

// ---- progress

struct ProgressTest : testing::Test {
    platform::VirtualTime time{platform::Instant{}};
    platform::QueuedEventLoop loop{time};
    platform::Screen screen{{0, 0, 800, 600}};
    platform::Form form{screen, "frmMain", "", {}};
    RunPanel panel{form};
    RunState state;
    Progress progress{panel, state, loop};

    void pass(double seconds) { loop.sleep(platform::Milliseconds(static_cast<long>(seconds * 1000))); }
    std::string line() const { return panel.lblProgress.caption(); }
    /// A whole stage of so many seconds.
    void live(const PlannedStage& stage, double seconds) {
        const Progress::UnderWay underWay(progress, stage);
        pass(seconds);
    }
};

TEST_F(ProgressTest, TellsTheStageAndWhatIsLeftOfAllOfThem) {
    const PlannedStage exposing{Stage::kExpose, 10}, solving{Stage::kSolve}, slewing{Stage::kSlew};
    progress.begin({exposing, solving, slewing, exposing, solving});
    progress.setSubject("Plate 1 of 2");
    {
        const Progress::UnderWay underWay(progress, exposing);
        EXPECT_EQ(line(), "Plate 1 of 2: exposing, 0 of 10 s; about 31 s left") << "by what is usual";
        pass(6.5);
        EXPECT_EQ(line(), "Plate 1 of 2: exposing, 6 of 10 s; about 25 s left");
        pass(7);
        EXPECT_EQ(line(), "Plate 1 of 2: exposing, 10 of 10 s; about 20 s left") << "late, but never below";
    }
    live(solving, 4);
    progress.setSubject("Plate 2 of 2");
    {
        const Progress::UnderWay underWay(progress, slewing);
        EXPECT_EQ(line(), "Plate 2 of 2: slewing; about 23 s left")
            << "the second exposure and solution as long as the first";
    }
    const double before = panel.gaugeProgress.fraction();
    EXPECT_NEAR(before, 17.5 / (17.5 + 23), 0.05);
    live(exposing, 13);
    EXPECT_GT(panel.gaugeProgress.fraction(), before);
    progress.rest("Measured");
    pass(60);
    EXPECT_EQ(line(), "Measured");
    EXPECT_EQ(panel.gaugeProgress.fraction(), 1);
    const Progress::UnderWay correcting(progress, slewing);
    progress.end("Done");
    pass(60);
    EXPECT_EQ(line(), "Done");
    EXPECT_EQ(panel.gaugeProgress.fraction(), 0);
}

TEST_F(ProgressTest, AStageThatWasNotLaidOutLeavesTheOthers) {
    pass(60);  // before it begins
    progress.begin({{Stage::kExpose, 10}, {Stage::kSolve}});
    live({Stage::kSlew}, 1);
    const Progress::UnderWay underWay(progress, {Stage::kExpose, 10});
    EXPECT_EQ(line(), "Exposing, 0 of 10 s; about 13 s left");
    EXPECT_NEAR(panel.gaugeProgress.fraction(), 1.0 / 14, 0.01);
}

TEST_F(ProgressTest, WithoutAPlanTheBarIsTheStagesOwn) {
    progress.begin({});
    const Progress::UnderWay underWay(progress, {Stage::kExpose, 9});
    pass(5);
    EXPECT_EQ(line(), "Exposing, 5 of 9 s");
    EXPECT_NEAR(panel.gaugeProgress.fraction(), 0.5, 0.01);
}

TEST_F(ProgressTest, AStopIsAnsweredAtOnceAndTeachesNothing) {
    const struct {
        Stage stage;
        const char* words;
    } cases[] = {{Stage::kSlew, "Stopping after the slew"},
                 {Stage::kSettle, "Stopping"},
                 {Stage::kExpose, "Stopping after the exposure"},
                 {Stage::kSolve, "Stopping after the solution"}};
    for (const auto& c : cases) {
        state.StopRequested = false;
        progress.begin({{c.stage, 100}});
        const Progress::UnderWay underWay(progress, {c.stage, 100});
        pass(1);
        state.StopRequested = true;
        pass(0.3);
        EXPECT_EQ(line(), c.words);
    }
    state.StopRequested = false;
    progress.begin({{Stage::kSlew}});
    const Progress::UnderWay underWay(progress, {Stage::kSlew});
    EXPECT_EQ(line(), "Slewing; about 5 s left") << "not the second that the stopped one took";
}

// ---- waiting

constexpr double kForEver = std::numeric_limits<double>::infinity();

TEST(WaitSeconds, WaitsInStepsAndEndsWithTheProgram) {
    const struct {
        double seconds;
        int endsAfter;  // ms; when the program begins to end, 0: never
        int waited;     // ms
    } rows[] = {
        {0, 0, 100},      {0.05, 0, 100},   {0.25, 0, 250},
        {-3, 0, 100},     {65, 0, 65'000},  {kForEver, 1050, 1100},
        {1e308, 10, 100}, {0.25, 150, 200}, {std::nan(""), 0, 100},
    };
    for (const auto& row : rows) {
        platform::VirtualTime time(platform::Instant{});
        platform::QueuedEventLoop loop(time);
        platform::TimerHandle end;
        if (row.endsAfter > 0)
            end = loop.after(Milliseconds{row.endsAfter}, [&loop] { loop.setEnding(true); });
        WaitSeconds(loop, row.seconds);
        EXPECT_EQ(time.sinceStart(), Milliseconds{row.waited}) << row.seconds << " s";
    }
}

}  // namespace
}  // namespace vantrel::engine
