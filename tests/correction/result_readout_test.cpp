#include "correction/result_readout.h"

#include <cmath>

#include <gtest/gtest.h>

#include "correction/needed_tolerance.h"
#include "engine/angles.h"
#include "platform/color.h"
#include "platform/queued_event_loop.h"
#include "support/memory_settings_port.h"

namespace vantrel::correction {
namespace {

namespace color = platform::color;

TEST(ShortAngle, IsAsFineAsItMatters) {
    const struct {
        double arcMinutes;
        const char* text;
    } cases[] = {{0, "0″"},         {0.4, "24″"},      {-0.99, "59″"}, {1, "1.0'"},
                 {-18.14, "18.1'"}, {119.9, "119.9'"}, {120, "2.0°"},  {-2700, "45.0°"}};
    for (const auto& c : cases) EXPECT_EQ(engine::shortAngle(c.arcMinutes), c.text) << c.arcMinutes;
}

/// The mount stands by so much east of the pole and above it: what has to be done, in both hemispheres.
TEST(Advice, SendsTheUpperEndOfTheAxisBackToThePole) {
    const struct {
        double latitude, azimuth, elevation;  // degrees, arc-minutes
        const char* turn;
        const char* move;
    } cases[] = {
        {50, 18, -11, "Azimuth 18.0' too far east: turn west", "Elevation 11.0' too low: raise"},
        {50, -18, 11, "Azimuth 18.0' too far west: turn east", "Elevation 11.0' too high: lower"},
        {-35, 18, -11, "Azimuth 18.0' too far east: turn west", "Elevation 11.0' too low: raise"},
        {-35, -0.3, 0, "Azimuth 18″ too far west: turn east", "Elevation is right"},
    };
    for (const auto& c : cases) {
        // The axis's upper end in the horizon's frame, as the northern end that the written angle speaks of.
        const double hemisphere = c.latitude < 0 ? -1 : 1;
        const double altitude = engine::degreesToRadians(std::abs(c.latitude) + c.elevation / 60);
        const double azimuth = engine::degreesToRadians(c.azimuth / 60);
        const double phi = engine::degreesToRadians(c.latitude);
        const double east = std::cos(altitude) * std::sin(azimuth) * hemisphere;
        const double north = std::cos(altitude) * std::cos(azimuth);  // the southern end's, turned round
        const double up = std::sin(altitude) * hemisphere;
        const engine::DirectionCosines axis{std::cos(phi) * up - std::sin(phi) * north, east,
                                            std::sin(phi) * up + std::cos(phi) * north};
        const engine::AxisOffset offset = engine::offsetFromPole(
            engine::northernEnd(engine::writtenError(axis)), c.latitude, std::abs(c.latitude));
        EXPECT_EQ(azimuthAdvice(offset).english(), c.turn) << c.latitude;
        EXPECT_EQ(elevationAdvice(offset).english(), c.move) << c.latitude;
    }
}

struct Readout : testing::Test {
    platform::VirtualTime time{platform::Instant{}};
    platform::Screen screen{{0, 0, 800, 600}};
    platform::Form form{screen, "frmMain", "", {}};
    ResultPanel panel{form};
    std::optional<double> needed;  // by the operator's pictures
    ResultReadout readout{panel, time, [this] { return needed; }};
};

TEST_F(Readout, CallsGoodOnlyWhatIsBeyondDoubt) {
    const struct {
        const char* tolerance;
        double distance;  // arc-minutes
        std::optional<double> sigma;
        const char* verdict;
        bool lit;
    } cases[] = {
        {"2", 1.5, 10, "Good: within 2.0'", true},
        {"2", 1.9, 10, "Uncertain: about 2.0'", false},
        {"2", 2.2, 10, "Uncertain: about 2.0'", false},
        {"2", 2.5, 10, "Not yet within 2.0'", false},
        {"2", 1.9, std::nullopt, "Good: within 2.0'", true},
        {"0.5", 1.5, 10, "Not yet within 30″", false},
        {"", 1.5, 10, "Good: within 2.0'", true},
        {"0", 1.5, 10, "Good: within 2.0'", true},
        {"nonsense", 2.5, 10, "Not yet within 2.0'", false},
    };
    for (const auto& c : cases) {
        readout.show({.azimuth = 1, .elevation = 1}, c.distance, c.sigma);
        panel.txtTolerance.setText(c.tolerance);  // the verdict follows the box
        EXPECT_EQ(panel.lblVerdict.caption(), c.verdict) << c.tolerance << " " << c.distance;
        EXPECT_EQ(panel.lblVerdict.backColor() == color::kDarkGreen, c.lit)
            << c.tolerance << " " << c.distance;
    }
}

TEST_F(Readout, GoesByThePicturesWhereNoToleranceIsTyped) {
    needed = 3.4;
    readout.show({}, 3, std::nullopt);
    EXPECT_EQ(panel.lblVerdict.caption(), "Not yet within 2.0'");
    panel.txtTolerance.setText("");
    EXPECT_EQ(panel.lblVerdict.caption(), "Good: within 3.4'");
    needed = 1;
    readout.judge();
    EXPECT_EQ(panel.lblVerdict.caption(), "Not yet within 1.0'");
}

TEST(NeededTolerance, FollowsFromOpticsAndExposures) {
    constexpr double kUnknown = 0;
    const struct {
        double exposure;
        bool guided;
        double declination, fromGuideStar;
        double focalLength, pixel;
        const char* words;
    } rows[] = {
        {30, false, 0, 0, kUnknown, kUnknown, "7.6': 30 s unguided, 1.0″ of drift"},
        {120, false, 0, 0, kUnknown, kUnknown, "1.9': 120 s unguided, 1.0″ of drift"},
        {300, false, 0, 0, kUnknown, kUnknown, "46″: 300 s unguided, 1.0″ of drift"},
        {120, false, 0, 0, 500, 3.76, "3.0': 120 s unguided, a pixel (1.6″) of drift"},
        {600, true, 0, 1, 1000, 5, "22.5': 600 s guided, a pixel of trail 1° from the guide star"},
        {600, true, -60, 1, 1000, 5, "11.3': 600 s guided, a pixel of trail 1° from the guide star"},
        {600, true, 90, 1, 1000, 5, "24″: 600 s guided, a pixel of trail 1° from the guide star"},
        {600, true, 0, 1, kUnknown, kUnknown,
         "Guided: the pixel scale calculator wants focal length and pixel size"},
        {600, true, 0, 0, 1000, 5, "Guided: how far is the guide star from the farthest corner?"},
        {0, false, 0, 0, kUnknown, kUnknown, "2.0' as long as no exposure is given"},
    };
    for (const auto& row : rows) {
        PlannedPictures pictures{row.exposure, row.guided, row.declination, row.fromGuideStar};
        if (row.focalLength != kUnknown) pictures.focalLength = row.focalLength, pictures.pixel = row.pixel;
        const NeededTolerance needed = neededTolerance(pictures);
        EXPECT_EQ(needed.words.english(), row.words);
        EXPECT_EQ(needed.arcMinutes.has_value(), std::isdigit(row.words[0]) && row.exposure > 0);
    }
}

TEST(NeededTolerance, KnowsWhatTheCalculatorHolds) {
    test::MemorySettingsPort settings;
    settings.SaveSetting("Solve", "TelescopeFL", "20");
    settings.SaveSetting("Solve", "FocalLengthUnits", "in");
    settings.SaveSetting("Solve", "CameraPixelXSize", "3.76");
    settings.SaveSetting("PolarAlign", "PictureExposure", "120");
    EXPECT_NEAR(*plannedPictures(settings).focalLength, 508, 1e-9);
    EXPECT_NEAR(*neededTolerance(plannedPictures(settings)).arcMinutes, 2.91, 0.01);
}

}  // namespace
}  // namespace vantrel::correction
