// The members of the drivers as programs use them.

#include <filesystem>
#include <limits>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fits/fits_image.h"
#include "observatory/telescopes/axis_simulator.h"
#include "platform/image_array.h"
#include "platform/queued_event_loop.h"
#include "sky/compact_catalog.h"
#include "support/refusal.h"
#include "support/temp_folder.h"

namespace vantrel::observatory {
namespace {

using platform::AutomationError;
using platform::Value;
using testing::StartsWith;

/// The simulator of the polar axis, which has every member of a mount's driver as well.
class DriverTest : public testing::Test {
  protected:
    DriverTest() {
        std::filesystem::create_directories(drives_ / "c");
        driver_.put("Connected", true);
    }

    double number(const std::string& member) { return driver_.get(member).toDouble(); }
    void pass(double seconds) { loop_.sleep(platform::Milliseconds{std::lround(seconds * 1000)}); }
    template <typename Use>
    static std::string refusal(Use&& use) {
        return test::refusalOf<AutomationError>(use);
    }

    platform::VirtualTime time_{platform::parseInstant("2026-11-24T20:00:00Z").value()};
    platform::QueuedEventLoop loop_{time_};
    platform::BackgroundOfLoop background_{loop_};
    test::TempFolder drives_;
    platform::FolderMap folders_{drives_.path()};
    NoiseSource noise_{1};
    AxisSimulator driver_{{"AxisSimulator.Telescope", "Axis", "A mount with an axis"},
                          std::make_shared<AxisSimulatorDevice>(
                              loop_, background_, noise_, [] { return sky::CompactCatalog::openBuiltIn(); }),
                          [](const std::string&) {},
                          folders_};
};

TEST_F(DriverTest, MovesTheMount) {
    driver_.call("SlewToCoordinatesAsync", {number("RightAscension"), 0.0});  // 40 degrees at 4 a second
    pass(5);
    EXPECT_NEAR(number("Declination"), 20, 1e-9);
    EXPECT_TRUE(driver_.get("Slewing").toBool());
    driver_.call("AbortSlew");
    EXPECT_FALSE(driver_.get("Slewing").toBool());
    EXPECT_NEAR(number("Declination"), 20, 1e-9);

    driver_.put("SiteLatitude", 45);
    driver_.call("SlewToCoordinates", {number("SiderealTime"), 0.0});  // returns when it is there
    EXPECT_FALSE(driver_.get("Slewing").toBool());
    EXPECT_NEAR(number("Altitude"), 45, 0.01);
    EXPECT_NEAR(number("Azimuth"), 180, 0.1);
    driver_.call("SyncToCoordinates", {number("RightAscension"), 1.5});
    EXPECT_NEAR(number("Declination"), 1.5, 1e-9);

    driver_.call("Park");
    EXPECT_TRUE(driver_.get("AtPark").toBool() && !driver_.get("Tracking").toBool());
    EXPECT_NE(refusal([&] { driver_.put("Tracking", true); }), "");
    driver_.call("Unpark");
    driver_.put("Tracking", true);
    EXPECT_TRUE(!driver_.get("AtPark").toBool() && driver_.get("Tracking").toBool());
}

TEST_F(DriverTest, RefusesWhatNeedsAConnection) {
    driver_.put("Connected", false);
    for (const char* member :
         {"RightAscension", "Declination", "SiderealTime", "Altitude", "Azimuth", "Slewing"})
        EXPECT_EQ(refusal([&] { driver_.get(member); }), "Axis is not connected") << member;
    for (const char* member : {"SlewToCoordinates", "SlewToCoordinatesAsync", "SyncToCoordinates",
                               "AbortSlew", "Park", "Unpark", "Expose"})
        EXPECT_EQ(refusal([&] { driver_.call(member, {1.0, 2.0}); }), "Axis is not connected") << member;
    driver_.put("SiteLongitude", -110.5);  // the scene can be set before
    EXPECT_EQ(number("SiteLongitude"), -110.5);
    try {
        driver_.get("Declination");
    } catch (const AutomationError& error) {
        EXPECT_EQ(error.number(), platform::error_number::kDriverException);
        EXPECT_EQ(error.source(), "AxisSimulator.Telescope");
    }
}

TEST_F(DriverTest, RefusesImpossibleSettingsAndKeepsTheFormer) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    std::istringstream members(
        "SiteLatitude SiteLongitude SiteElevation SlewRate HourAngleOffset DeclinationOffset "
        "PolarAzimuthError "
        "PolarElevationError PointingNoise FocalLength PixelSize CameraWidth CameraHeight CameraRotation "
        "Seeing "
        "SkyLevel LimitingMagnitude HotPixels ExposureTime AirPressure AirTemperature RollNoise Flexure "
        "PeriodicError "
        "WormPeriod ClockError DeclinationJump DeclinationJumpSlew CameraAxisDeclination RightAscension");
    for (std::string member; members >> member;)
        for (const Value& wrong : {Value(nan), Value(1e12), Value(-1e12), Value("here")}) {
            const Value before = driver_.get(member);
            EXPECT_THROW(driver_.put(member, wrong), AutomationError) << member << " " << wrong.toText();
            EXPECT_EQ(driver_.get(member), before) << member;
        }
    EXPECT_EQ(refusal([&] { driver_.put("SiteLatitude", 90.5); }),
              "SiteLatitude must be between -90 and 90 degrees");
}

TEST_F(DriverTest, AdjustersTurnTheAxis) {
    driver_.put("PolarAzimuthError", 30);
    driver_.put("PolarElevationError", -12.5);
    driver_.call("TurnAzimuthAdjuster", {-10.0});
    const double before = number("CameraAxisDeclination");
    driver_.call("TurnElevationAdjuster", {12.5});
    EXPECT_EQ(number("PolarAzimuthError"), 20);
    EXPECT_EQ(number("PolarElevationError"), 0);
    // An hour before the meridian raising the pole lowers what is south of the zenith: by 12.5' cos 15.
    EXPECT_NEAR((before - number("CameraAxisDeclination")) * 60, 12.5 * 0.966, 0.2);
    EXPECT_NE(refusal([&] { driver_.call("TurnElevationAdjuster", {5000}); }), "");
    EXPECT_EQ(number("PolarElevationError"), 0);
}

TEST_F(DriverTest, TakesAndSavesPicturesOfTheBuiltInStars) {
    EXPECT_NE(refusal([&] { driver_.get("ImageArray"); }), "");
    EXPECT_NE(refusal([&] { driver_.call("SaveImageToFile", {"C:\\a.fit"}); }), "");
    driver_.put("ExposureTime", 2.5);
    driver_.put("CameraHeight", 1000);
    std::string second;
    loop_.post([&] { second = refusal([&] { driver_.call("Expose"); }); });
    driver_.call("Expose");
    EXPECT_EQ(second, "The camera is exposing already");
    EXPECT_EQ(time_.sinceStart(), platform::Milliseconds{2500});
    const auto image = driver_.get("ImageArray").toImage();
    // A sky of 75 electrons and the bias, with some hundred stars on it.
    const auto& counts = std::get<std::vector<std::uint16_t>>(image->pixels());
    EXPECT_GT(std::count_if(counts.begin(), counts.end(), [](std::uint16_t c) { return c > 1000; }), 50);
    EXPECT_LT(std::count_if(counts.begin(), counts.end(), [](std::uint16_t c) { return c > 300; }), 14'000);

    driver_.call("SaveImageToFile", {R"(C:\SavedImage.fit)"});
    const fits::FitsImage saved = fits::FitsImage::open(drives_ / "c/SavedImage.fit");
    ASSERT_EQ(saved.width(), 1392U);
    ASSERT_EQ(saved.height(), 1000U);
    EXPECT_FALSE(saved.bottomUp());
    std::vector<float> row(1392);
    saved.readRows(701, row);
    for (std::size_t x = 0; x < 1392; ++x) ASSERT_EQ(row[x], image->at(x, 701)) << x;
    const fits::FitsHeader& header = saved.header();
    for (const auto& [name, text] : {std::pair{"DATE-OBS", "2026-11-24T20:00:00.000"},
                                     {"OBJCTDEC", "+40 00 00"},
                                     {"SITELONG", "+10 00 00"},
                                     {"TELESCOP", "Axis"}})
        EXPECT_EQ(header.text(name), text);
    for (const auto& [name, value] : {std::pair{"EXPTIME", 2.5}, {"XPIXSZ", 6.45}, {"FOCALLEN", 370.0}})
        EXPECT_EQ(header.number(name), value) << name;

    EXPECT_THAT(refusal([&] { driver_.call("SaveImageToFile", {"C:\\no such folder\\a.fit"}); }),
                StartsWith("The image could not be saved as C:\\no such folder"));
    EXPECT_FALSE(std::filesystem::exists(drives_ / "c/no such folder"));
}

}  // namespace
}  // namespace vantrel::observatory
