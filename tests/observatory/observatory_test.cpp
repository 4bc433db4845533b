// The observatory as the program sees it: through its automation classes.

#include "observatory/observatory.h"

#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/queued_event_loop.h"

namespace vantrel::observatory {
namespace {

using platform::Arguments;
using platform::AutomationError;
using platform::ObjectRef;
using platform::Value;
using testing::Contains;
using testing::ElementsAre;

class ObservatoryTest : public testing::Test {
  protected:
    ObservatoryTest() { observatory_.install(classes_); }

    ObjectRef connected(const std::string& progId) {
        ObjectRef driver = classes_.create(progId);
        driver->put("Connected", true);
        return driver;
    }

    platform::VirtualTime time_{platform::parseInstant("2026-11-24T20:00:00Z").value()};
    platform::QueuedEventLoop loop_{time_};
    platform::FolderMap folders_{"/nowhere"};
    std::vector<std::string> setups_;
    Observatory observatory_{
        loop_,
        folders_,
        1,
        {[](const auto&, const auto& drivers, const auto&) { return drivers.back().progId; },
         [this](const std::string& progId) { setups_.push_back(progId); }, nullptr}};
    platform::ClassRegistry classes_;
};

TEST_F(ObservatoryTest, DriversAreOfferedAndDescribed) {
    EXPECT_THAT(classes_.installed("Telescope"), Contains("ScopeSim.Telescope"));
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

}  // namespace
}  // namespace vantrel::observatory
