#include "devices/telescope_link.h"

#include <functional>

#include <gmock/gmock.h>

#include "devices/device_world.h"
#include "support/refusal.h"

namespace vantrel::devices {
namespace {

using test::actionsOn;
using test::TelescopeWorld;
using test::usesOf;
using testing::ElementsAre;
using testing::IsEmpty;

using Strings = std::vector<std::string>;
using Messages = std::vector<test::RecordingMessages::Shown>;

constexpr const char* kScope = "ScopeSim.Telescope";

// ---- what failures look like

struct FailureCase {
    const char* operation;
    const char* progId;
    const char* member;  // that fails
    std::function<void(TelescopeLink&)> act;
    const char* hint;
    double seconds;  // of the message; 0: there is none
    bool connected;  // before
    bool namesSource;
};

TEST(TelescopeLinkFailures, AreReportedByTheirNumber) {
    using L = TelescopeLink;
    constexpr double kDisplay = 7;  // what the operator set
    const char* tab = "Telescope Setup tab";
    const char* check = "Check Telescope Setup Tab";
    const auto slew = [](L& link) { link.SlewToCoordinates(3, 45); };
    const FailureCase cases[] = {
        {"Sub ChooseTelescope", "DriverHelper.Chooser", "Choose", &L::ChooseTelescope, tab, 5, false, false},
        {"Sub LoadTelescope", kScope, "create", &L::LoadTelescope, tab, 5, false, false},
        {"Sub ConnectTelescope", kScope, "create", &L::ConnectTelescope, tab, 5, false, false},
        {"Sub DisconnectTelescope", kScope, "Connected", &L::DisconnectTelescope, tab, 5, true, true},
        {"Sub SetupTelescope", kScope, "SetupDialog", &L::SetupTelescope, tab, kDisplay, true, true},
        {"Sub SlewToCoordinates", kScope, "Slewing", slew, check, kDisplay, true, true},
        {"Function GetTelescopeDec", kScope, "Declination", &L::GetTelescopeDec, check, kDisplay, true, true},
        {"Function GetTelescopeRA", kScope, "RightAscension", &L::GetTelescopeRA, "", 0, true, false},
    };
    for (const FailureCase& c : cases) {
        const std::string generic = std::string(c.namesSource ? "Fake.Source " : "") +
                                    "Error 438: it broke\r\nmodComponents " + c.operation;
        const std::string noLink = std::string("Telescope link failed: ") + c.operation;
        const struct {
            int number;
            std::string message, logged, shown;
        } kinds[] = {{91, noLink, noLink, std::string("Telescope link failed\r\n") + c.hint},
                     {-2147352567, "it broke", "ASCOM Telescope: it broke", "ASCOM Telescope\r\nit broke"},
                     {438, generic, generic, generic}};
        for (const auto& kind : kinds) {
            SCOPED_TRACE(testing::Message() << c.operation << ", failure " << kind.number);
            TelescopeWorld world;
            world.messages.secondsToShow = kDisplay;
            world.link.setTelescopeProgID(kScope);
            if (c.connected) world.connect();
            world.fail(c.progId, c.member, kind.number);
            c.act(world.link);
            EXPECT_TRUE(world.log.has(kind.logged)) << testing::PrintToString(world.log.lines);
            EXPECT_EQ(world.state.LastMessage, kind.message);
            EXPECT_EQ(world.messages.shown.empty(), c.seconds == 0);
            if (c.seconds != 0) {
                EXPECT_EQ(world.messages.shown.back(),
                          (test::RecordingMessages::Shown{kind.shown, c.seconds}));
            }
        }
    }
}

TEST(TelescopeLinkFailures, WithoutADriverAreFailure91) {
    TelescopeWorld world;
    EXPECT_EQ(world.link.GetTelescopeRA(), 0);
    EXPECT_EQ(world.link.GetTelescopeDec(), -1000);
    EXPECT_THAT(world.log.lines, ElementsAre("Telescope link failed: Function GetTelescopeRA",
                                             "Telescope link failed: Function GetTelescopeDec"));
}

TEST(TelescopeLinkFailures, OfTheSimulatorsCameraLeave) {
    TelescopeWorld world;
    EXPECT_THROW(world.link.simulatorExpose(), platform::OperationError);
    world.connect("AxisSimulator.Telescope");
    world.link.simulatorExpose();
    world.link.simulatorSaveImage("C:\\Images\\SavedImage.fit");
    EXPECT_THAT(actionsOn(world.host, "AxisSimulator.Telescope"),
                ElementsAre("call Expose", "call SaveImageToFile C:\\Images\\SavedImage.fit"));
}

// ---- connecting

TEST(TelescopeLink, ConnectsAndSaysSo) {
    TelescopeWorld world;
    world.link.setTelescopeProgID(kScope);

    world.link.LoadTelescope();
    world.link.LoadTelescope();  // connected already: does nothing

    EXPECT_TRUE(world.link.TelescopeIsConnected());
    EXPECT_THAT(actionsOn(world.host, kScope), ElementsAre("create", "put Connected True"));
    EXPECT_THAT(world.log.lines, ElementsAre("Telescope Fake Mount is connected"));
    EXPECT_EQ(world.messages.shown,
              (Messages{{" Connecting \r\n\r\nFriendly ScopeSim.Telescope\r\n\r\n Please Wait ", 1000},
                        {"Fake Mount\r\n is connected", 5}}));
    EXPECT_FALSE(world.state.UsingAxisSimulator);
}

TEST(TelescopeLink, SaysWhenTheDriverStaysDisconnected) {
    TelescopeWorld world;
    world.mount.connects = false;
    world.link.setTelescopeProgID("AxisSimulator.Telescope");
    world.link.LoadTelescope();
    EXPECT_THAT(world.log.lines, ElementsAre("Friendly AxisSimulator.Telescope is not connected"));
    EXPECT_EQ(world.messages.shown.back(),
              (test::RecordingMessages::Shown{"Friendly AxisSimulator.Telescope\r\n is not connected", 5}));
    EXPECT_TRUE(world.state.UsingAxisSimulator);
}

TEST(TelescopeLink, GivesTheSkyTimeAndProbesItsPosition) {
    TelescopeWorld world;
    world.connect("TheSky.Telescope");
    EXPECT_NEAR(world.elapsed(), 3, 0.01);
    EXPECT_TRUE(world.link.TelescopeIsConnected());

    world.fail("TheSky.Telescope", "RightAscension", 438);
    EXPECT_FALSE(world.link.TelescopeIsConnected());
}

TEST(TelescopeLink, ChoosingRemembersAndLoads) {
    TelescopeWorld world;
    world.link.setTelescopeProgID(kScope);
    world.link.ChooseTelescope();
    EXPECT_THAT(actionsOn(world.host, "DriverHelper.Chooser"),
                ElementsAre("create", "put DeviceType Telescope", "call Choose ScopeSim.Telescope"));
    EXPECT_EQ(world.settings.GetSetting("Main", "MyTelescopeID", ""), "AxisSimulator.Telescope");
    EXPECT_EQ(world.window.txtTelescopeName.text(), "Friendly AxisSimulator.Telescope");
    EXPECT_EQ(world.messages.shown.front(),
              (test::RecordingMessages::Shown{"Loading ASCOM Telescope\r\nPlease Wait", 1000}));
    // The loading notice has given way to that of the connection, which stays.
    EXPECT_EQ(world.messages.open, "Fake Mount\r\n is connected");
    EXPECT_TRUE(world.link.TelescopeIsConnected());
}

TEST(TelescopeLink, ChoosingNothingKeepsTheDriver) {
    TelescopeWorld world;
    world.choice = "";
    world.link.setTelescopeProgID(kScope);
    world.link.ChooseTelescope();
    EXPECT_EQ(world.settings.GetSetting("Main", "MyTelescopeID", "none"), kScope);
    EXPECT_EQ(world.window.txtTelescopeName.text(), "Friendly ScopeSim.Telescope");
    EXPECT_TRUE(world.link.TelescopeIsConnected());
    EXPECT_THAT(world.log.lines, ElementsAre("Telescope Fake Mount is connected"));
}

TEST(TelescopeLink, ClosesTheLoadingNoticeThatStillStands) {
    TelescopeWorld world;
    world.connect();
    world.link.ChooseTelescope();  // still connected, so nothing is loaded
    EXPECT_EQ(world.messages.open, std::nullopt);
}

TEST(TelescopeLink, DisconnectsAndLetsGo) {
    TelescopeWorld world;
    world.connect();
    world.link.DisconnectTelescope();
    EXPECT_THAT(actionsOn(world.host, kScope), ElementsAre("put Connected False"));
    EXPECT_THAT(world.log.lines, ElementsAre("Friendly ScopeSim.Telescope is disconnected"));
    EXPECT_EQ(world.window.txtTelescopeSelectionStatus.text(), " Not Connected");
    EXPECT_TRUE(world.link.DisconnectRequested());
    EXPECT_EQ(world.host.newest(kScope), nullptr);
}

TEST(TelescopeLink, SetsUpAFreshDriver) {
    TelescopeWorld world;
    world.connect();
    world.link.SetupTelescope();
    EXPECT_THAT(
        actionsOn(world.host, kScope),
        ElementsAre("put Connected False", "create", "call SetupDialog", "create", "put Connected True"));
    EXPECT_TRUE(world.link.TelescopeIsConnected());
    EXPECT_FALSE(world.link.DisconnectRequested());

    TelescopeWorld apart;
    apart.link.setTelescopeProgID(kScope);
    apart.link.SetupTelescope();
    EXPECT_THAT(actionsOn(apart.host, kScope),
                ElementsAre("create", "call SetupDialog", "put Connected False"));
    EXPECT_EQ(apart.host.newest(kScope), nullptr);
}

TEST(TelescopeLink, TriesFourTimesToConnect) {
    struct Case {
        const char* why;
        long failures;     // creations that fail
        double stopAfter;  // seconds; 0: never
        long creations;
        double seconds;
    };
    for (const Case& c : {
             Case{"never comes up", -1, 0, 4, 12},
             Case{"comes up at once", 0, 0, 1, 3},
             Case{"comes up the third time", 2, 0, 3, 9},
             Case{"stopped during the second wait", -1, 4, 2, 6},
         }) {
        SCOPED_TRACE(c.why);
        TelescopeWorld world;
        world.link.setTelescopeProgID(kScope);
        if (c.failures != 0) world.fail(kScope, "create", 429, c.failures);
        const auto stop = c.stopAfter > 0 ? world.stopAfter(c.stopAfter) : nullptr;
        world.link.EnsureTelescopeConnected();
        EXPECT_EQ(usesOf(world.host, kScope, "create"), c.creations);
        EXPECT_NEAR(world.elapsed(), c.seconds, 0.05);
    }
    TelescopeWorld world;
    world.connect();
    world.link.EnsureTelescopeConnected();
    EXPECT_EQ(world.elapsed(), 0) << "connected already";
}

// ---- positions

TEST(TelescopeLink, BringsRightAscensionIntoTheDay) {
    TelescopeWorld world;
    world.connect();
    world.mount.ra = -1.5;
    EXPECT_EQ(world.link.GetTelescopeRA(), 22.5);
}

TEST(TelescopeLink, RereadsAnImpossibleDeclination) {
    struct Case {
        double declination;
        long badReads;  // before the true value of 45; -1: always
        double result;
        long reads;
        Strings log;
    };
    for (const Case& c : {
             Case{90, 0, 45, 1, {}},
             Case{-90, -1, -90, 1, {}},
             Case{95, 3, 45, 4, {}},
             Case{95, 11, 45, 12, {}},
             Case{95, -1, 95, 12, {"Telescope Fake Mount returned illegal Dec value of: 95"}},
             Case{-95.5, -1, -95.5, 12, {"Telescope Fake Mount returned illegal Dec value of: -95.5"}},
         }) {
        TelescopeWorld world;
        world.connect();
        if (c.badReads != 0)
            world.host.inject({kScope, "Declination", {0, "", ""}, c.declination, 0, c.badReads});
        EXPECT_EQ(world.link.GetTelescopeDec(), c.result) << c.declination;
        EXPECT_EQ(usesOf(world.host, kScope, "get Declination"), c.reads) << c.declination;
        EXPECT_EQ(world.log.lines, c.log) << c.declination;
        EXPECT_NEAR(world.elapsed(), 0.1 * static_cast<double>(c.reads - 1), 1e-9);
    }
}

// ---- slews

TEST(TelescopeLink, RepeatsASlewThatTheMountRefuses) {
    constexpr double kNever = 1000;
    const struct {
        long failures;     // -1: always
        double stopAfter;  // seconds
        long commands;
        double seconds;
        std::size_t trialsLogged;
        bool reported;
    } rows[] = {
        {0, kNever, 1, 0, 0, false},   // accepted at once: one command
        {1, kNever, 3, 3, 1, false},   // accepted on trial 2, and once more
        {4, kNever, 6, 12, 4, false},  //
        {5, kNever, 6, 15, 5, false},  // all trials failed, the last command is taken
        {-1, kNever, 6, 15, 5, true},  //
        {-1, 0, 1, 0, 1, false},       // stopped before
        {-1, 2, 1, 3, 1, false},       // in the first wait
        {-1, 4, 2, 6, 2, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.failures << " failures, stop after " << row.stopAfter << " s");
        TelescopeWorld world;
        world.connect();
        if (row.failures != 0) world.fail(kScope, "SlewToCoordinatesAsync", 438, row.failures);
        world.state.StopRequested = row.stopAfter == 0;
        const auto stop = world.stopAfter(row.stopAfter);
        world.link.SlewToCoordinates(-1.5, 30);
        EXPECT_EQ(usesOf(world.host, kScope, "call SlewToCoordinatesAsync 22.5 30"), row.commands);
        EXPECT_NEAR(world.elapsed(), row.seconds, 1e-9);
        for (std::size_t trial = 1; trial <= row.trialsLogged; ++trial)
            EXPECT_EQ(world.log.lines.at(trial - 1),
                      "Telescope Slew failed on Trial " + std::to_string(trial));
        EXPECT_EQ(world.log.lines.size(), row.trialsLogged + (row.reported ? 1 : 0));
    }
}

TEST(TelescopeLink, WaitsUntilTheMountStandsEvenWhenStopped) {
    TelescopeWorld world;
    world.connect();
    world.mount.slewingReads = 7;
    world.state.StopRequested = true;
    world.link.SlewToCoordinates(25, 30);
    EXPECT_NEAR(world.elapsed(), 7, 1e-9);
    EXPECT_THAT(actionsOn(world.host, kScope), ElementsAre("call SlewToCoordinatesAsync 1 30"));
}

TEST(TelescopeLink, ASlewDoesntKeepTheProgramFromEnding) {
    TelescopeWorld world;
    world.connect();
    world.mount.slewingReads = 1000;
    const auto end = world.loop.after(platform::Milliseconds{2500}, [&world] {
        world.state.AppUnloading = true;
        world.loop.setEnding(true);
    });
    world.link.SlewToCoordinates(3, 45);
    EXPECT_LT(world.elapsed(), 3) << "seconds";
}

/// Mounts stall, lose their way and say that all is well. The simulators don't.
TEST(TelescopeLink, WatchesTheSlewsOfRealMounts) {
    constexpr const char* kReal = "Indi:localhost:7624/Mount";
    const std::string friendly = std::string("Friendly ") + kReal;
    const struct {
        const char* why;
        const char* progId;
        int slewingReads;
        double raStep;  // hours a second
        double endsAt;  // hours
        Strings lines;
        int aborts;
        double mostSeconds;
    } cases[] = {
        {"arrives", kReal, 20, 0.1, 5, Strings{}, 0, 25},
        {"arrives a little beside", kReal, 20, 0.1, 5.01, Strings{}, 0, 25},
        {"ends elsewhere", kReal, 20, 0.1, 5.1,
         Strings{friendly + " stopped 1.06 degrees from where it was sent"}, 0, 25},
        {"stalls", kReal, 10'000, 0, 3,
         Strings{"ASCOM Telescope: " + friendly + " says that it is slewing, but hasn't moved for a minute"},
         1, 65},
        {"goes on for ever", kReal, 10'000, 0.001, 3,
         Strings{"ASCOM Telescope: " + friendly + " has been slewing for a quarter of an hour"}, 1, 905},
        {"isn't one", "ScopeSim.Telescope", 2000, 0, 3, Strings{}, 0, 2005},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        TelescopeWorld world;
        world.connect(c.progId);
        world.mount.slewingReads = c.slewingReads;
        const auto moving = world.loop.every(platform::Milliseconds{1000}, [&] {
            world.mount.ra = world.mount.slewingReads > 0 ? world.mount.ra + c.raStep : c.endsAt;
        });
        world.link.SlewToCoordinates(5, 45);
        EXPECT_EQ(world.log.lines, c.lines);
        EXPECT_EQ(world.mount.aborts, c.aborts);
        EXPECT_LT(world.elapsed(), c.mostSeconds);
    }
}

// ---- time and site

TEST(TelescopeLink, TakesTheSiteFromTheMountElseAsStored) {
    struct Case {
        const char* why;
        bool fromMount;
        const char* stored;
        double latitude;
        Strings log;
    };
    for (const Case& c : {
             Case{"mount", true, "10", 48.25, {}},
             Case{"stored", false, "-33.5", -33.5, {}},
             Case{
                 "neither", false, "", 0, {"Error 13: Type mismatch\r\nmodComponents Function SiteLatitude"}},
         }) {
        SCOPED_TRACE(c.why);
        TelescopeWorld world;
        world.connect();
        world.settings.SaveMainSetting("SiteLatitude", c.stored);
        if (!c.fromMount) world.fail(kScope, "SiteLatitude", 438);
        EXPECT_EQ(world.link.SiteLatitude(), c.latitude);
        EXPECT_EQ(world.log.lines, c.log);
        EXPECT_THAT(world.messages.shown, IsEmpty());
        EXPECT_EQ(world.link.mountLatitude().has_value(), c.fromMount);
    }
}

TEST(TelescopeLink, TellsSiderealTimeFromTheClockWhenTheMountCannot) {
    TelescopeWorld world;
    world.connect();
    EXPECT_EQ(world.link.SiderealTime(), 6);

    // Greenwich mean sidereal time of 2026-11-24 20:00 UT1, JD 2461369.33333, is 3.7889 degrees (Meeus,
    // equation 12.4); 11.5 degrees further east it is 15.2889 degrees, 1.0193 h.
    world.fail(kScope, "SiderealTime", 438);
    EXPECT_NEAR(world.link.SiderealTime(), 1.0193, 0.0001);
    EXPECT_THAT(world.log.lines, IsEmpty());
}

/// A real mount is told to stop; the built-in ones aren't, unless the operator wants it.
TEST(TelescopeLink, AStopIsSentToTheMountsThatAreKnownToTakeIt) {
    constexpr const char* kReal = "Indi:localhost:7624/Mount";
    constexpr const char* kBuiltIn = "ScopeSim.Telescope";
    const struct {
        const char* progId;
        std::optional<std::string> setting;
        int aborts;
    } cases[] = {{kReal, {}, 1}, {kReal, "1", 1}, {kReal, "0", 0}, {kBuiltIn, {}, 0}, {kBuiltIn, "1", 1}};
    for (const auto& c : cases) {
        test::TelescopeWorld world;
        if (c.setting) world.settings.SaveSetting("Main", "AbortSlewOnStop", *c.setting);
        world.link.AbortTelescopeSlew();
        EXPECT_TRUE(world.log.lines.empty()) << "nothing to stop without a driver";
        world.connect(c.progId);
        world.link.AbortTelescopeSlew();
        EXPECT_EQ(world.mount.aborts, c.aborts) << c.progId << " " << c.setting.value_or("unset");
    }
}

// ---- the utility object

TEST(UtilityLink, PassesMarksAndDecimalsByPosition) {
    TelescopeWorld world;
    UtilityLink& utility = world.utility;

    EXPECT_EQ(utility.HoursToHMS(1.5), "HoursToHMS");
    EXPECT_EQ(utility.DegreesToDMS(-2.5), "DegreesToDMS");
    EXPECT_EQ(utility.DegreesToHMS(15), "DegreesToHMS");
    utility.HoursToHMS(1.5, " ", " ");
    utility.DegreesToDMS(2.5, " ", ",", "");
    utility.HoursToHMS(0, 1);
    utility.DegreesToDMS(0, 1);
    EXPECT_EQ(utility.DMSToDegrees("12d30m"), 12.5);
    utility.WaitForMilliseconds(3000);

    EXPECT_THAT(
        actionsOn(world.host, "DriverHelper.Util"),
        ElementsAre("create", "call HoursToHMS 1.5", "call DegreesToDMS -2.5", "call DegreesToHMS 15",
                    "call HoursToHMS 1.5    ", "call DegreesToDMS 2.5   , ", "call HoursToHMS 0    1",
                    "call DegreesToDMS 0    1", "call DMSToDegrees 12d30m", "call WaitForMilliseconds 3000"));
}

TEST(UtilityLink, FailsWithoutItsObject) {
    platform::ClassRegistry registry;
    UtilityLink utility(registry);
    EXPECT_EQ(test::failureOf([&] { utility.HoursToHMS(1); }), 91);
    EXPECT_EQ(test::failureOf([&] { utility.create(); }), 429);
}

}  // namespace
}  // namespace vantrel::devices
