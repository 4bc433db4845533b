#include "devices/telescope_desk.h"

#include <functional>

#include <gmock/gmock.h>

#include "devices/device_world.h"

namespace vantrel::devices {
namespace {

using test::actionsOn;
using testing::ElementsAre;

constexpr const char* kScopeSim = "ScopeSim.Telescope";
constexpr const char* kAxis = "AxisSimulator.Telescope";

struct WindowWorld : test::TelescopeWorld {
    /// The state of the window in one line: its status, and which of Connect, Setup, Disconnect can be used.
    std::string look() const {
        return window.txtTelescopeSelectionStatus.text() +
               (window.cmdConnectTelescope.enabled() ? " C" : " -") +
               (window.cmdTelescopeSetup.enabled() ? "S" : "-") +
               (window.cmdDisconnectTelescope.enabled() ? "D" : "-");
    }
    void open() {
        window.show();
        pass(1);
    }

    TelescopeDesk behaviour{services, link, window};
};

TEST(TelescopeDesk, LoadsTheStoredTelescope) {
    struct Case {
        const char* why;
        std::optional<std::string> stored;
        std::string loaded;
        long choosers;
    };
    for (const Case& c : {
             Case{"nothing stored yet", std::nullopt, kScopeSim, 0},
             Case{"stored", kAxis, kAxis, 0},
             Case{"stored as none: the operator has to choose", "", kAxis, 1},
         }) {
        SCOPED_TRACE(c.why);
        WindowWorld world;
        world.state.StopRequested = true;
        if (c.stored) world.settings.SaveMainSetting("MyTelescopeID", *c.stored);
        world.open();
        EXPECT_FALSE(world.state.StopRequested);
        EXPECT_TRUE(world.window.shown());
        EXPECT_EQ(world.window.txtTelescopeName.text(), "Friendly " + c.loaded);
        EXPECT_EQ(world.settings.GetSetting("Main", "MyTelescopeID", ""), c.loaded);
        EXPECT_EQ(world.state.UsingAxisSimulator, c.loaded == kAxis);
        EXPECT_EQ(test::usesOf(world.host, "DriverHelper.Chooser", "create"), c.choosers);
        EXPECT_EQ(world.look(), " Connected -SD");
    }
}

TEST(TelescopeDesk, TheEndOfTheProgramCutsTheAttemptsToConnectShort) {
    WindowWorld world;
    world.mount.connects = false;
    const auto end = world.loop.after(platform::Milliseconds{1000}, [&world] {
        world.state.AppUnloading = world.state.StopRequested = true;
        world.loop.setEnding(true);
    });
    const double before = world.elapsed();
    world.behaviour.linkAtStartUp();
    EXPECT_LT(world.elapsed() - before, 1.5) << "seconds; four attempts would take twelve";
    world.window.cmdConnectTelescope.onClick();
    EXPECT_TRUE(world.state.StopRequested) << "the end stays requested";
}

TEST(TelescopeDesk, RemembersItsPlace) {
    WindowWorld world;
    world.open();
    const auto size = world.window.place();
    EXPECT_EQ(world.window.place().top, 1040 - size.height);
    EXPECT_EQ(world.window.place().left, 1920 - size.width);

    world.window.placeByOperator({123, 45, size.width, size.height});
    world.window.closeByOperator();
    world.window.placeByOperator({0, 0, size.width, size.height});
    world.open();
    EXPECT_EQ(world.window.place(), (platform::Rectangle{123, 45, size.width, size.height}));

    world.window.placeByOperator({7, 7, size.width, size.height});
    world.window.setMinimised(true);
    world.window.unload();
    EXPECT_EQ(world.settings.GetSetting("Main", "TelescopeTop", ""), "45") << "minimised: not stored";
}

TEST(TelescopeDesk, WatchesTheConnection) {
    struct Case {
        const char* why;
        std::function<void(WindowWorld&)> happens;
        const char* look;
        bool driverHeld;
    };
    const auto drop = [](WindowWorld& world) { world.host.newest(kScopeSim)->put("Connected", false); };
    for (const Case& c : {
             Case{"all is well", [](auto&) {}, " Connected -SD", true},
             Case{"the link goes down", drop, " Not Connected CS-", false},
             Case{"the link goes down and no telescope is named",
                  [&](WindowWorld& world) {
                      drop(world);
                      world.window.txtTelescopeName.setText("");
                  },
                  " Not Connected ---", false},
             Case{"stopped: nobody looks",
                  [&](WindowWorld& world) {
                      drop(world);
                      world.state.StopRequested = true;
                  },
                  " Connected -SD", true},
             Case{"the driver doesn't answer",
                  [](WindowWorld& world) { world.fail(kScopeSim, "Connected", 438); }, " Connected -SD",
                  true},
             Case{"the driver's program is gone",
                  [](WindowWorld& world) { world.fail(kScopeSim, "Connected", 462); }, " Not Connected CS-",
                  false},
             Case{"closed: nobody looks",
                  [&](WindowWorld& world) {
                      world.window.closeByOperator();
                      drop(world);
                  },
                  " Connected -SD", true},
         }) {
        WindowWorld world;
        world.open();
        c.happens(world);
        world.pass(1);
        EXPECT_EQ(world.look(), c.look) << c.why;
        EXPECT_EQ(world.host.newest(kScopeSim) != nullptr, c.driverHeld) << c.why;
    }
}

TEST(TelescopeDesk, AMountOverTheNetworkIsConnectedAgainByItself) {
    constexpr const char* kMount = "Indi:localhost:7624/Mount";
    WindowWorld world;
    world.settings.SaveMainSetting("MyTelescopeID", kMount);
    world.open();
    ASSERT_EQ(world.look(), " Connected -SD");
    const auto driver = world.host.newest(kMount);
    driver->put("Connected", false);
    world.pass(1);
    EXPECT_EQ(world.look(), " Not Connected CS-");
    driver->put("Connected", true);
    world.pass(1);
    EXPECT_EQ(world.look(), " Connected -SD");
    EXPECT_EQ(world.link.GetTelescopeDec(), world.mount.dec);
}

TEST(TelescopeDesk, ButtonsConnectAndDisconnect) {
    WindowWorld world;
    world.open();
    world.state.StopRequested = true;
    EXPECT_FALSE(world.window.cmdConnectTelescope.click()) << "disabled while connected";

    EXPECT_TRUE(world.window.cmdDisconnectTelescope.click());
    EXPECT_FALSE(world.state.StopRequested);
    EXPECT_EQ(world.look(), " Not Connected CS-");

    world.fail(kScopeSim, "create", 429, 1);
    world.window.cmdConnectTelescope.click();
    EXPECT_TRUE(world.log.has("Error 429: it broke\r\nmodComponents Sub ConnectTelescope"));
    EXPECT_EQ(world.look(), " Not Connected CS-");

    std::string meanwhile;
    world.messages.whileShowing = [&] { meanwhile = world.look(); };
    world.window.cmdConnectTelescope.click();
    EXPECT_EQ(meanwhile, " Connecting -SD");
    world.pass(3);
    EXPECT_EQ(world.look(), " Connected -SD") << "a Disconnect before doesn't undo it";
}

TEST(TelescopeDesk, MainButtonShowsItOnTopAndConnectsOnce) {
    for (const bool closed : {false, true}) {
        WindowWorld world;
        world.open();
        world.window.cmdDisconnectTelescope.click();
        if (closed) world.window.closeByOperator();
        world.forget();
        world.behaviour.cmdTelescope_Click();
        EXPECT_TRUE(world.window.shown());
        EXPECT_TRUE(world.window.onTop());
        world.pass(3);
        EXPECT_THAT(actionsOn(world.host, kScopeSim), ElementsAre("create", "put Connected True"));
        EXPECT_EQ(world.look(), " Connected -SD");
    }
}

TEST(TelescopeDesk, SelectingNeverHoldsTwoConnections) {
    for (const bool connectedBefore : {true, false}) {
        WindowWorld world;
        world.open();
        if (!connectedBefore) world.window.cmdDisconnectTelescope.click();
        world.window.cmdPickTelescope.click();
        world.pass(3);
        EXPECT_EQ(world.mount.mostConnections, 1);
        EXPECT_EQ(world.link.TelescopeProgID(), kAxis);
        EXPECT_EQ(world.look(), " Connected -SD");
        EXPECT_TRUE(world.state.UsingAxisSimulator);
    }
}

TEST(TelescopeDesk, TheWatchLeavesADriverAloneThatIsBeingLinked) {
    // A tick that falls into the messages of linking sees a driver that is not connected yet.
    WindowWorld world;
    world.messages.whileShowing = [&] { world.pass(1.5); };
    world.open();
    EXPECT_EQ(world.look(), " Connected -SD");
    EXPECT_TRUE(world.log.has("Telescope Fake Mount is connected"));
    EXPECT_EQ(world.log.lines.size(), 1U);
}

TEST(TelescopeDesk, LinksAtStartUp) {
    for (const char* stored : {kScopeSim, ""}) {
        WindowWorld world;
        world.settings.SaveMainSetting("MyTelescopeID", stored);
        world.behaviour.linkAtStartUp();
        EXPECT_THAT(actionsOn(world.host, *stored == 0 ? kAxis : kScopeSim),
                    ElementsAre("create", "put Connected True"));
        EXPECT_EQ(world.window.shown(), *stored != 0);
        EXPECT_EQ(world.messages.open, std::nullopt);
    }
}

/// A look that outlasts the watch's interval, and a disconnecting that does, are each there once.
TEST(TelescopeDesk, ADriverThatTakesItsTimeIsNotAskedAgainMeanwhile) {
    WindowWorld world;
    world.open();
    const auto takes = [&](double seconds) { return [&world, seconds] { world.pass(seconds); }; };
    for (const double seconds : {0.9, 1.5, 10.0}) {
        world.mount.waitToRead = takes(seconds);
        world.pass(60);
        EXPECT_EQ(world.mount.deepest, 1) << seconds;
        EXPECT_EQ(world.look(), " Connected -SD") << seconds;
    }
    world.mount.waitToRead = nullptr;
    world.forget();
    world.mount.waitToPut = takes(2.5);
    world.window.cmdDisconnectTelescope.click();
    world.pass(10);
    EXPECT_EQ(world.mount.deepest, 1);
    EXPECT_EQ(world.mount.connections, 0);
    EXPECT_EQ(world.log.lines, std::vector<std::string>{"Friendly ScopeSim.Telescope is disconnected"});
}

}  // namespace
}  // namespace vantrel::devices
