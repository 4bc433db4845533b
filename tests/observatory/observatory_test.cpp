// The observatory as the program sees it: through its automation classes.

#include "observatory/observatory.h"

#include <filesystem>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "observatory/sky/fits_image.h"
#include "platform/image_array.h"
#include "platform/queued_event_loop.h"
#include "support/temp_folder.h"

namespace vantrel::observatory {
namespace {

using platform::Arguments;
using platform::AutomationError;
using platform::ObjectRef;
using platform::Value;
using testing::ElementsAre;

class ObservatoryTest : public testing::Test {
  protected:
    ObservatoryTest() {
        observatory_.install(classes_);
        std::filesystem::create_directories(drives_ / "c" / "images");
    }

    ObjectRef connected(const std::string& progId) {
        ObjectRef driver = classes_.create(progId);
        driver->put("Connected", true);
        return driver;
    }

    static ObservatorySeams seams(std::vector<std::string>& setups) {
        ObservatorySeams seams;
        seams.chooser = [](const auto&, const auto& drivers, const auto&) { return drivers.back().progId; };
        seams.setup = [&setups](const std::string& progId) { setups.push_back(progId); };
        return seams;
    }

    platform::VirtualTime time_{platform::parseInstant("2026-11-24T20:00:00Z").value()};
    platform::QueuedEventLoop loop_{time_};
    test::TempFolder temporary_;
    std::filesystem::path drives_ = temporary_.path();
    platform::FolderMap folders_{drives_};
    std::vector<std::string> setups_;
    Observatory observatory_{loop_, folders_, 1, seams(setups_)};
    platform::ClassRegistry classes_;
};

TEST_F(ObservatoryTest, DriversAreOfferedAndDescribed) {
    EXPECT_THAT(classes_.installed("Telescope"),
                ElementsAre("AxisSimulator.Telescope", "ScopeSim.Telescope"));
    EXPECT_EQ(classes_.create("DriverHelper.Chooser")->call("Choose", {""}).toText(), "ScopeSim.Telescope");
    const ObjectRef profile = classes_.create("DriverHelper.Profile");
    EXPECT_EQ(profile->call("GetValue", {"ScopeSim.Telescope", ""}).toText(), "Simulated equatorial mount");
}

TEST_F(ObservatoryTest, UtilityIsThere) {
    EXPECT_EQ(classes_.create("driverhelper.util")->call("HoursToHMS", {1.5}).toText(), "01:30:00");
}

TEST_F(ObservatoryTest, TheMountOutlivesItsObjects) {
    ObjectRef driver = connected("ScopeSim.Telescope");
    driver->put("SiteLatitude", 51.5);
    driver->put("SlewRate", 10);
    driver->call("SlewToCoordinates", {5.5, 20.0});
    driver.reset();

    driver = classes_.create("ScopeSim.Telescope");
    EXPECT_TRUE(driver->get("Connected").toBool());
    EXPECT_NEAR(driver->get("RightAscension").toDouble(), 5.5, 1e-6);
    EXPECT_NEAR(driver->get("Declination").toDouble(), 20, 1e-9);
    EXPECT_EQ(driver->get("SiteLatitude").toDouble(), 51.5);
}

TEST_F(ObservatoryTest, SlewsGoOnWhileTheProgramDoes) {
    const ObjectRef driver = connected("ScopeSim.Telescope");
    driver->call("SlewToCoordinatesAsync", {driver->get("RightAscension"), 0.0});  // 40 degrees at 4 a second
    EXPECT_TRUE(driver->get("Slewing").toBool());
    loop_.sleep(platform::Milliseconds{5000});
    EXPECT_NEAR(driver->get("Declination").toDouble(), 20, 1e-9);
    loop_.sleep(platform::Milliseconds{5001});
    EXPECT_FALSE(driver->get("Slewing").toBool());
}

TEST_F(ObservatoryTest, HorizonOfTheReading) {
    const ObjectRef driver = connected("ScopeSim.Telescope");
    driver->put("SiteLatitude", 45);
    driver->put("SlewRate", 3600);
    driver->call("SlewToCoordinates", {driver->get("SiderealTime"), 0.0});
    EXPECT_NEAR(driver->get("Altitude").toDouble(), 45, 0.01);
    EXPECT_NEAR(driver->get("Azimuth").toDouble(), 180, 0.01);
}

TEST_F(ObservatoryTest, DisconnectedMountsGiveNoReadings) {
    const ObjectRef driver = classes_.create("ScopeSim.Telescope");
    EXPECT_FALSE(driver->get("Connected").toBool());
    for (const char* member : {"RightAscension", "Declination", "SiderealTime", "Slewing", "Altitude"}) {
        try {
            driver->get(member);
            ADD_FAILURE() << member;
        } catch (const AutomationError& error) {
            EXPECT_EQ(error.number(), platform::error_number::kDriverException);
            EXPECT_EQ(error.source(), "ScopeSim.Telescope");
            EXPECT_EQ(error.description(), "Telescope Simulator is not connected");
        }
    }
    EXPECT_THROW(driver->call("SlewToCoordinatesAsync", {1.0, 2.0}), AutomationError);
    driver->put("SiteLongitude", -110.5);  // the scene can be set before
    EXPECT_EQ(driver->get("SiteLongitude").toDouble(), -110.5);
}

TEST_F(ObservatoryTest, ImpossibleSettingsAreRefusedWithAText) {
    const ObjectRef driver = connected("ScopeSim.Telescope");
    const double nan = std::numeric_limits<double>::quiet_NaN();
    struct Case {
        const char* member;
        Value value;
    };
    for (const Case& c : {Case{"SiteLatitude", 90.5},
                          {"SiteLatitude", nan},
                          {"SiteLongitude", -181},
                          {"SlewRate", 0},
                          {"SlewRate", -4},
                          {"HourAngleOffset", 25},
                          {"DeclinationOffset", nan},
                          {"SiteLatitude", "here"},
                          {"RightAscension", 1}}) {
        const Value before = driver->get(c.member);
        EXPECT_THROW(driver->put(c.member, c.value), AutomationError) << c.member;
        EXPECT_EQ(driver->get(c.member), before) << c.member;
    }
    try {
        driver->put("SiteLatitude", 91);
        FAIL();
    } catch (const AutomationError& error) {
        EXPECT_EQ(error.description(), "SiteLatitude must be between -90 and 90 degrees");
    }
}

TEST_F(ObservatoryTest, SetupDialogsAreShownByTheFront) {
    classes_.create("ScopeSim.Telescope")->call("SetupDialog");
    EXPECT_THAT(setups_, ElementsAre("ScopeSim.Telescope"));
}

TEST_F(ObservatoryTest, PicturesOfTheBuiltInStars) {
    const ObjectRef driver = connected("AxisSimulator.Telescope");
    driver->put("ExposureTime", 2.5);
    driver->call("Expose");
    EXPECT_EQ(time_.sinceStart(), platform::Milliseconds{2500});
    const auto image = driver->get("ImageArray").toImage();
    EXPECT_EQ(image->width(), 1392U);
    EXPECT_EQ(image->height(), 1040U);

    driver->call("SaveImageToFile", {R"(C:\images\SavedImage.fit)"});
    const FitsImage saved = FitsImage::open(drives_ / "c" / "images" / "SavedImage.fit");
    ASSERT_EQ(saved.width(), 1392U);
    ASSERT_EQ(saved.height(), 1040U);
    EXPECT_FALSE(saved.bottomUp());
    std::vector<float> rows(1392 * 2);
    saved.readRows(700, rows);
    for (std::size_t x = 0; x < 1392; ++x) ASSERT_EQ(rows[1392 + x], image->at(x, 701)) << x;

    const FitsHeader& header = saved.header();
    EXPECT_EQ(header.text("DATE-OBS"), "2026-11-24T20:00:00.000");
    EXPECT_EQ(header.number("EXPTIME"), 2.5);
    EXPECT_EQ(header.number("XPIXSZ"), 6.45);
    EXPECT_EQ(header.number("FOCALLEN"), 370);
    EXPECT_EQ(header.text("OBJCTDEC"), "+40 00 00");
    EXPECT_EQ(header.text("TELESCOP"), "Polar Axis Simulator");
    EXPECT_EQ(header.text("SITELONG"), "+10 00 00");

    // A second of starlight on a moonless night: a flat sky with some hundred stars on it.
    const auto& counts = std::get<std::vector<std::uint16_t>>(image->pixels());
    EXPECT_GT(std::count_if(counts.begin(), counts.end(), [](std::uint16_t c) { return c > 1000; }), 50);
    EXPECT_LT(std::count_if(counts.begin(), counts.end(), [](std::uint16_t c) { return c > 300; }), 14'000);
}

TEST_F(ObservatoryTest, PicturesThatCannotBe) {
    const ObjectRef driver = classes_.create("AxisSimulator.Telescope");
    EXPECT_THROW(driver->call("Expose"), AutomationError) << "not connected";
    driver->put("Connected", true);
    EXPECT_THROW(driver->get("ImageArray"), AutomationError);
    EXPECT_THROW(driver->call("SaveImageToFile", {"C:\\a.fit"}), AutomationError);
    driver->put("CameraWidth", 64);
    driver->put("CameraHeight", 48);
    driver->call("Expose");
    try {
        driver->call("SaveImageToFile", {"C:\\no such folder\\a.fit"});
        ADD_FAILURE() << "saved";
    } catch (const AutomationError& error) {
        EXPECT_EQ(error.source(), "AxisSimulator.Telescope");
        EXPECT_THAT(error.description(),
                    testing::StartsWith("The image could not be saved as C:\\no such folder"));
    }
    EXPECT_FALSE(std::filesystem::exists(drives_ / "c" / "no such folder"));
}

TEST_F(ObservatoryTest, OneExposureAtATime) {
    const ObjectRef driver = connected("AxisSimulator.Telescope");
    driver->put("CameraWidth", 64);
    bool refused = false;
    loop_.post([&] {
        EXPECT_THROW(driver->call("Expose"), AutomationError);
        refused = true;
    });
    driver->call("Expose");
    EXPECT_TRUE(refused);
    driver->call("Expose");
}

TEST_F(ObservatoryTest, AdjustersTurnTheAxis) {
    const ObjectRef driver = connected("AxisSimulator.Telescope");
    driver->put("PolarAzimuthError", 30);
    driver->put("PolarElevationError", -12.5);
    driver->call("TurnAzimuthAdjuster", {-10.0});
    const double before = driver->get("CameraAxisDeclination").toDouble();
    driver->call("TurnElevationAdjuster", {12.5});
    EXPECT_EQ(driver->get("PolarAzimuthError").toDouble(), 20);
    EXPECT_EQ(driver->get("PolarElevationError").toDouble(), 0);
    // An hour before the meridian raising the pole lowers what is south of the zenith: by 12.5' cos 15.
    EXPECT_NEAR((before - driver->get("CameraAxisDeclination").toDouble()) * 60, 12.5 * 0.966, 0.2);
    EXPECT_THROW(driver->call("TurnElevationAdjuster", {5000}), AutomationError);
    EXPECT_EQ(driver->get("PolarElevationError").toDouble(), 0);
}

TEST_F(ObservatoryTest, SettingsOfTheSimulatedCameraHaveLimits) {
    const ObjectRef driver = connected("AxisSimulator.Telescope");
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const char* member : {"PolarAzimuthError", "PolarElevationError", "FocalLength", "PixelSize",
                               "CameraWidth", "CameraHeight", "CameraRotation", "Seeing", "SkyLevel",
                               "LimitingMagnitude", "HotPixels", "PointingNoise", "ExposureTime"})
        for (const double value : {nan, 1e12, -1e12}) {
            const Value before = driver->get(member);
            EXPECT_THROW(driver->put(member, value), AutomationError) << member << " " << value;
            EXPECT_EQ(driver->get(member), before) << member;
        }
    EXPECT_THROW(driver->put("CameraAxisDeclination", 1), AutomationError) << "read only";
}

/// Waits for an answer that never comes.
class SilentNetwork : public Downloads {
  public:
    std::string fetch(const std::string&, const KeepGoing& keepGoing) override {
        while (keepGoing()) {
            if (++turns == 3) onThirdTurn();
        }
        throw DownloadGivenUp("the download was given up");
    }
    int turns = 0;
    std::function<void()> onThirdTurn;
};

TEST_F(ObservatoryTest, StaysResponsiveAndStopsWhileItWaitsForTheNetwork) {
    bool stopping = false;
    const auto network = std::make_shared<SilentNetwork>();
    ObservatorySeams withNetwork;
    withNetwork.downloads = network;
    withNetwork.stopping = [&] { return stopping; };
    Observatory observatory(loop_, folders_, 1, withNetwork);
    platform::ClassRegistry classes;
    observatory.install(classes);
    const ObjectRef plate = classes.create("PinPoint.Plate");
    plate->put("Catalog", 8);
    plate->put("CatalogPath", "Internet");
    plate->put("ArcsecPerPixelHoriz", 1.0);
    plate->put("ArcsecPerPixelVert", 1.0);
    // The operator clicks meanwhile: the handler runs within the look-up, which then ends.
    network->onThirdTurn = [&] { loop_.post([&] { stopping = true; }); };
    try {
        plate->call("FindCatalogStars");
        ADD_FAILURE();
    } catch (const AutomationError& error) {
        EXPECT_THAT(error.description(), testing::HasSubstr("USNO-B-Net was not waited for"));
    }
    EXPECT_EQ(network->turns, 3);
}

}  // namespace
}  // namespace vantrel::observatory
