#include "hosts/alpaca/telescope.h"

#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hosts/alpaca/alpaca_world.h"
#include "platform/automation.h"
#include "platform/text.h"
#include "support/refusal.h"

namespace vantrel::hosts::alpaca {
namespace {

using namespace std::chrono_literals;
using platform::AutomationError;
using platform::Value;
using test::Fault;
using enum test::Fault;
using testing::ElementsAre;
using testing::HasSubstr;

/// A mount that slews at the pace that a test wants.
struct TelescopeTest : testing::Test, test::AlpacaWorld {
    TelescopeTest() {
        server.list({{"The mount", "Telescope", 0, "A1"}});
        instruments.addMount(server);
        server.take("telescope/0/", {"connected"});
        server.values["telescope/0/connected"] = true;
        server.values["telescope/0/description"] = "A mount\nof iron";
        server.commands["telescope/0/abortslew"] = [this](const auto&) { standAt(5.25, 40.5); };
        instruments.slewTo = [this](auto&, double ra, double dec) { slewTo(ra, dec); };
    }

    void connect() { mount->put("Connected", true); }
    Value get(const char* member) { return mount->get(member); }
    void slew(double ra, double dec) { mount->call("SlewToCoordinatesAsync", {ra, dec}); }

    /// What a use of the mount is refused with: number and text.
    template <typename Use>
    std::string refusal(const Use& use) {
        try {
            use();
            return "";
        } catch (const AutomationError& error) {
            return std::to_string(error.number()) + " " + error.what();
        }
    }
    std::string failureOf(const char* member) {
        return refusal([&] { get(member); });
    }

    void standAt(double ra, double dec) {
        events.clear();
        server.values["telescope/0/slewing"] = false;
        server.values["telescope/0/rightascension"] = ra;
        server.values["telescope/0/declination"] = dec;
    }
    void at(platform::Milliseconds delay, std::function<void()> event) {
        events.push_back(loop.after(delay, std::move(event)));
    }

    /// How long Slewing was true, as a program that looks every 100 ms sees it.
    double secondsOfSlew() {
        const auto start = now();
        while (get("Slewing").toBool()) loop.sleep(100ms);
        return std::chrono::duration<double>(now() - start).count();
    }

    test::FakeServer& server = servers["10.0.0.7:11111"];
    test::Instruments instruments{loop};
    std::function<void(double, double)> slewTo = [this](double ra, double dec) { standAt(ra, dec); };
    std::vector<platform::TimerHandle> events;
    std::shared_ptr<Telescope> mount = std::make_shared<Telescope>(
        surroundings, DeviceRecord{"telescope", "A1", "The mount", {"10.0.0.7", 11111}, 0},
        [](const auto&) {});
};

constexpr const char* kDriver = "-2147352567 ";

TEST_F(TelescopeTest, HasTheMembersOfAMount) {
    EXPECT_FALSE(get("Connected").toBool());
    EXPECT_EQ(get("Name").toText(), "The mount");
    EXPECT_EQ(failureOf("RightAscension"), std::string(kDriver) + "The mount is not connected.");
    EXPECT_TRUE(server.requests.empty()) << "nobody is asked before it is connected";
    connect();
    EXPECT_TRUE(get("Connected").toBool());
    const std::pair<const char*, double> numbers[] = {
        {"RightAscension", 5.25}, {"Declination", 40.5},   {"SiderealTime", 7.5},  {"SiteLatitude", 50},
        {"SiteLongitude", -10.5}, {"EquatorialSystem", 1}, {"InterfaceVersion", 3}};
    for (const auto& [member, number] : numbers) EXPECT_EQ(get(member).toDouble(), number) << member;
    EXPECT_EQ(get("Description").toText(), "A mount of iron");
    EXPECT_TRUE(get("CanSlew").toBool());
    EXPECT_FALSE(get("CanSetTracking").toBool()) << "a mount that doesn't know the member can't";
    mount->put("Tracking", false);
    EXPECT_FALSE(get("Tracking").toBool());
    EXPECT_EQ(failureOf("Nonsense").substr(0, 4), "438 ");
    mount->put("Connected", false);
    EXPECT_FALSE(get("Connected").toBool());
}

TEST_F(TelescopeTest, ShowsTheSetupPage) {
    connect();
    mount->call("SetupDialog");
    EXPECT_THAT(pages, ElementsAre("http://10.0.0.7:11111/setup/v1/telescope/0/setup"));
    surroundings.openPage = [](const std::string&) { return false; };
    EXPECT_THAT(refusal([&] { mount->call("SetupDialog"); }), HasSubstr("can't be opened"));
}

TEST_F(TelescopeTest, LivesUntilItsMembersHaveReturned) {
    connect();
    server.delays["telescope/0/declination"] = 1s;
    const auto release = loop.after(500ms, [this] { mount.reset(); });
    EXPECT_EQ(get("Declination").toDouble(), 40.5);
    EXPECT_EQ(mount, nullptr);
}

// ---- coordinates

TEST_F(TelescopeTest, CountsInTheEquinoxOfDateWhateverTheMountCountsIn) {
    server.values["telescope/0/equatorialsystem"] = 2;
    connect();
    EXPECT_DOUBLE_EQ(get("RightAscension").toDouble(), 5.35);
    EXPECT_DOUBLE_EQ(get("Declination").toDouble(), 41.5);
    slew(6.1, 31);
    EXPECT_EQ(server.commandLines().back(),
              "PUT telescope/0/slewtocoordinatesasync?Declination=30&RightAscension=6");
}

TEST_F(TelescopeTest, RefusesOtherEquinoxes) {
    for (const int system : {0, 3, 4, 99}) {
        server.values["telescope/0/equatorialsystem"] = system;
        EXPECT_THAT(refusal([&] { connect(); }), HasSubstr("from another equinox than J2000 or the date's"))
            << system;
        EXPECT_FALSE(get("Connected").toBool());
    }
    for (const Fault fault : {kNotFound, kNotImplemented, kWrongType}) {
        server.faults["telescope/0/equatorialsystem"] = fault;
        connect();
        EXPECT_EQ(get("RightAscension").toDouble(), 5.25) << "a mount that doesn't say counts as most do";
        mount->put("Connected", false);
    }
}

TEST_F(TelescopeTest, ReadsBothCoordinatesAtOnceWhereItCan) {
    server.values["telescope/0/interfaceversion"] = 4;
    server.values["telescope/0/devicestate"] = Json::array(
        {{{"Name", "Declination"}, {"Value", 12.5}}, {{"Name", "RightAscension"}, {"Value", 3.5}}, 7});
    connect();
    EXPECT_EQ(get("RightAscension").toDouble(), 3.5);
    EXPECT_EQ(get("Declination").toDouble(), 12.5);
    server.values["telescope/0/devicestate"] = Json::array();
    EXPECT_EQ(get("RightAscension").toDouble(), 5.25);
    mount->put("Connected", false);
    connect();
    server.faults["telescope/0/devicestate"] = kNotImplemented;
    EXPECT_EQ(get("Declination").toDouble(), 40.5);
}

TEST_F(TelescopeTest, RefusesNumbersThatAreNone) {
    connect();
    const struct {
        const char* member;
        Json value;
        const char* says;
    } cases[] = {
        {"RightAscension", 25, "gives no sensible right ascension."},
        {"RightAscension", -0.1, "gives no sensible right ascension."},
        {"Declination", 90.1, "gives no sensible declination."},
        {"Declination", Json::array({1}), "gives no sensible declination."},
        {"SiderealTime", 24.5, "gives no sensible sidereal time."},
        {"SiteLatitude", -91, "gives no sensible latitude."},
        {"SiteLongitude", 360, "gives no sensible longitude."},
        {"Slewing", "no", "answers neither yes nor no to \"slewing\"."},
    };
    for (const auto& c : cases) {
        Json& value = server.values["telescope/0/" + platform::toLower(c.member)];
        const Json good = std::exchange(value, c.value);
        EXPECT_EQ(failureOf(c.member), kDriver + std::string("The mount ") + c.says);
        value = good;
    }
    for (const int zero : {0, 24}) {
        server.values["telescope/0/rightascension"] = zero;
        EXPECT_EQ(get("RightAscension").toDouble(), 0);
    }
}

// ---- what the server does wrong: the sentences are the replies' and the link's

TEST_F(TelescopeTest, FailuresReachTheProgramByTheirNumberAndPass) {
    connect();
    const std::pair<Fault, const char*> faults[] = {
        {kSilence, "-2147352567 The Alpaca server at 10.0.0.7:11111 doesn't answer."},
        {kNotFound, "438 Not Found"},
        {kNotImplemented, "438 The device can't do this."},
        {kDeviceError, "-2147352567 The gears are stuck"}};
    for (const auto& [fault, says] : faults)
        for (const char* member : {"Declination", "SiteLatitude", "Slewing", "Description"}) {
            server.faults["telescope/0/" + platform::toLower(member)] = fault;
            EXPECT_EQ(failureOf(member), says) << member;
            server.faults.clear();
            loop.sleep(20s);
            EXPECT_EQ(failureOf(member), "") << "and it works again";
        }
    server.faults["PUT telescope/0/slewtocoordinatesasync"] = kDeviceError;
    EXPECT_EQ(refusal([&] { slew(6, 30); }), std::string(kDriver) + "The gears are stuck");
    EXPECT_FALSE(get("Slewing").toBool());
}

// ---- slews

TEST_F(TelescopeTest, SlewsUntilItIsThere) {
    const struct {
        const char* why;
        double ra;
        platform::Milliseconds saysSo, stands;
        double seconds;
    } cases[] = {
        {"it says so at once", 6.5, 0ms, 7s, 7},
        {"it says so late", 4, 900ms, 5s, 5},
        {"it is over before any look", 6.5, 0ms, 0ms, 0},
        {"a move of 7.5 arc-seconds, too small to be seen, has two seconds", 6.5 + 0.5 / 3600, 0ms, 0ms, 2},
    };
    connect();
    for (const auto& c : cases) {
        slewTo = [&](double ra, double dec) {
            at(c.saysSo, [this] { server.values["telescope/0/slewing"] = true; });
            if (c.saysSo == 0ms) server.values["telescope/0/slewing"] = true;
            if (c.stands == 0ms) return standAt(ra, dec);
            at(c.stands, [=, this] { standAt(ra, dec); });
        };
        slew(c.ra, -30.25);
        EXPECT_NEAR(secondsOfSlew(), c.seconds, 0.15) << c.why;
        EXPECT_EQ(get("RightAscension").toDouble(), c.ra) << c.why;
    }
    EXPECT_EQ(server.commandLines().front(),
              "PUT telescope/0/slewtocoordinatesasync?Declination=-30.25&RightAscension=6.5");
    server.faults["telescope/0/declination"] = kDeviceError;
    slewTo = [](double, double) {};
    slew(6, 30);
    EXPECT_NEAR(secondsOfSlew(), 2, 0.15) << "it doesn't say where it is";
}

TEST_F(TelescopeTest, SaysWhenTheMountTookNoNotice) {
    connect();
    slewTo = [](double, double) {};
    slew(6, 30);
    loop.sleep(1s);
    EXPECT_TRUE(get("Slewing").toBool());
    loop.sleep(2s);
    EXPECT_EQ(failureOf("Slewing"), std::string(kDriver) + "The mount took no notice of the slew.");
    EXPECT_FALSE(get("Slewing").toBool()) << "said once";
}

TEST_F(TelescopeTest, AnAbortedSlewIsOver) {
    connect();
    slewTo = [this](double, double) {
        server.values["telescope/0/slewing"] = true;
        server.values["telescope/0/rightascension"] = 5.5;
    };
    slew(6, 30);
    EXPECT_TRUE(get("Slewing").toBool());
    mount->call("AbortSlew");
    EXPECT_FALSE(get("Slewing").toBool());
}

TEST_F(TelescopeTest, RefusesImpossibleSlews) {
    connect();
    for (const auto& [ra, dec, says] : {std::tuple{-0.1, 0.0, "between 0 and 24 hours"},
                                        {24.1, 0.0, "between 0 and 24 hours"},
                                        {std::nan(""), 0.0, "between 0 and 24 hours"},
                                        {1.0, 90.5, "between -90 and 90 degrees"},
                                        {1.0, std::nan(""), "between -90 and 90 degrees"}})
        EXPECT_THAT(refusal([&, ra = ra, dec = dec] { slew(ra, dec); }), HasSubstr(says));
    EXPECT_THAT(server.commandLines(), ElementsAre());
    slew(24, 30);
    EXPECT_EQ(server.commandLines().back(),
              "PUT telescope/0/slewtocoordinatesasync?Declination=30&RightAscension=0");
    server.values["telescope/0/canslewasync"] = false;
    EXPECT_THAT(refusal([&] { slew(6, 30); }), HasSubstr("can't slew by itself"));
}

TEST_F(TelescopeTest, StartsTrackingBeforeASlew) {
    connect();
    server.values["telescope/0/tracking"] = false;
    slew(6, 30);
    EXPECT_THAT(server.commandLines(),
                ElementsAre("PUT telescope/0/tracking?Tracking=True",
                            "PUT telescope/0/slewtocoordinatesasync?Declination=30&RightAscension=6"));
}

// ---- servers as they are

TEST_F(TelescopeTest, WorksOnAnInterfaceOfTheFirstVersion) {
    for (const char* member :
         {"siderealtime", "utcdate", "canslewasync", "cansettracking", "tracking", "equatorialsystem"})
        server.faults[std::string("telescope/0/") + member] = kNotFound;
    server.values["telescope/0/interfaceversion"] = 1;
    connect();
    EXPECT_EQ(failureOf("SiderealTime").substr(0, 4), "438 ");
    slew(6, 30);
    EXPECT_FALSE(get("Slewing").toBool());
    EXPECT_EQ(get("Declination").toDouble(), 30);
}

}  // namespace
}  // namespace vantrel::hosts::alpaca
