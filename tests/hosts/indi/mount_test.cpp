#include "hosts/indi/mount.h"

#include <gmock/gmock.h>

#include "hosts/indi/indi_world.h"
#include "hosts/indi/telescope.h"

namespace vantrel::hosts::indi {
namespace {

using namespace std::chrono_literals;
using platform::Milliseconds;
using Lines = std::vector<std::string>;
using test::FakeNetwork;
using test::Treatment;
using enum Treatment::Kind;

const std::string kLost = "The connection to the INDI server at localhost:7624 was lost: ";
const std::string kBack = "The INDI server at localhost:7624 is back";

class MountTest : public test::IndiWorld {
  protected:
    void connect() {
        mount.connect();
        server.commands.clear();
        told.clear();
    }
    /// What is wrong with a slew, and how long it took to say so.
    std::string slew(double ra = 6, double dec = 41) {
        return problemOf([&] { mount.slewTo({ra, dec}); });
    }
    void letSlew() {
        while (mount.slewing()) loop.sleep(100ms);
    }

    MountOptions options;
    platform::TimerHandle failing;
    Mount mount{surroundings, servers.client(address), test::FakeIndi::kMount, [this] { return options; }};
};

// ---- connecting

TEST_F(MountTest, ConnectsAndTellsWhereItPoints) {
    EXPECT_FALSE(mount.connected());
    EXPECT_EQ(server.network.attempts, 0) << "before it is wanted, nobody is contacted";
    mount.connect();
    EXPECT_TRUE(mount.connected());
    EXPECT_LT(now(), 50ms);
    EXPECT_EQ(mount.position().rightAscension, 5);
    EXPECT_EQ(mount.position().declination, 40);
    EXPECT_EQ(mount.site().latitude, 50.5);
    EXPECT_EQ(mount.site().longitude, -10);
    EXPECT_EQ(mount.siderealTime(), 6.5);
    mount.disconnect();
    EXPECT_FALSE(mount.connected());
    EXPECT_THAT(server.commands, testing::ElementsAre("CONNECTION CONNECT=On", "CONNECTION DISCONNECT=On"));
    EXPECT_THAT(told, testing::IsEmpty());
}

TEST_F(MountTest, SaysWhyItCantBeConnected) {
    const std::string where = "The INDI server at localhost:7624 ";
    const Trouble cases[] = {
        {"no server", [&] { server.network.answer = FakeNetwork::Answer::kRefuse; },
         where + "doesn't answer (connection refused): is it running?", 300ms},
        {"a machine that is off", [&] { server.network.answer = FakeNetwork::Answer::kNothing; },
         where + "doesn't answer (no answer): is it running?", 5s},
        {"late refusal", treated("CONNECTION", {kRefuse, 10s}),
         "Mount can't be connected: No CONNECTION today.", 11s},
        {"silence", treated("CONNECTION", {kIgnore}), "Mount didn't connect in time", 31s},
        {"the server ends", treated("CONNECTION", {kHangUp}), kLost + "the server closed the connection",
         100ms},
        {"the driver dies", meanwhile("CONNECTION", [&] { server.restartDriver("Mount"); }),
         "The driver of Mount has gone", 100ms},
        {"the cable is cut", treated("CONNECTION", {kSilence}), kLost + "it has stopped answering", 21s},
        {"the operator stops it", meanwhile("CONNECTION", [&] { givenUp = true; }),
         "Connecting Mount was given up", 100ms},
    };
    for (const auto& [why, spoil, problem, latest] : cases) {
        server.treatment.clear();
        server.network.answer = FakeNetwork::Answer::kAccept;
        spoil();
        const Milliseconds begin = now();
        EXPECT_EQ(problemOf([&] { mount.connect(); }), problem) << why;
        EXPECT_LE(now() - begin, latest) << why;
        EXPECT_FALSE(mount.connected()) << why;
        givenUp = false;
        server.stop();
        loop.sleep(1min);  // nothing goes on behind the operator's back
        EXPECT_FALSE(mount.connected()) << why;
    }
    server.treatment.clear();
    EXPECT_EQ(problemOf([&] { mount.connect(); }), "") << "after all that";
}

TEST_F(MountTest, SaysThatTheServerHasNoSuchDevice) {
    Mount other(surroundings, servers.client(address), "LX200", [] { return MountOptions(); });
    EXPECT_EQ(problemOf([&] { other.connect(); }),
              "The INDI server at localhost:7624 has no device \"LX200\": is its driver running? It has: "
              "Camera, Mount");
    EXPECT_LE(now(), 6s);
}

TEST_F(MountTest, AMountThatNeverSaysWhereItIsIsOfNoUse) {
    server.coordinates = "HORIZONTAL_COORD";
    EXPECT_EQ(problemOf([&] { mount.connect(); }), "Mount tells no position");
}

TEST_F(MountTest, TheOptionsAreSetInOrder) {
    options = {
        .port = "/dev/ttyACM0", .baudRate = "115200", .site = DriverSite{48.5, -71.25, 300}, .setTime = true};
    mount.connect();
    EXPECT_THAT(server.commands,
                testing::ElementsAre("DEVICE_PORT PORT=/dev/ttyACM0", "DEVICE_BAUD_RATE 115200=On",
                                     "CONNECTION CONNECT=On", "TIME_UTC UTC=2026-11-24T20:00:00 OFFSET=0",
                                     "GEOGRAPHIC_COORD LAT=48.5 LONG=288.75 ELEV=300"));
    EXPECT_EQ(mount.site().longitude, -71.25) << "the driver's answer is there when connecting is over";
    EXPECT_THAT(told, testing::IsEmpty());
}

TEST_F(MountTest, OptionsThatTheDriverDoesNotTakeAreToldAndItConnectsAllTheSame) {
    options = {.port = {}, .baudRate = "1234567", .site = DriverSite{48.5, -71.25, 300}, .setTime = false};
    server.treatment["GEOGRAPHIC_COORD"] = {kRefuse, 500ms};
    mount.connect();
    EXPECT_THAT(told, testing::ElementsAre("Mount can't be set to 1234567 baud",
                                           "Mount refuses the site: No GEOGRAPHIC_COORD today."));
}

TEST_F(MountTest, ReturnsByItselfWithEverythingThatWasSet) {
    options.site = DriverSite{48.5, -71.25, 300};
    const struct {
        const char* why;
        std::function<void()> spoil;
        Lines told;
        bool restarted = true;  // what was connected
    } cases[] = {
        {"the driver died", [&] { server.restartDriver("Mount"); },
         Lines{"The driver of Mount has gone", "Mount is connected again"}},
        {"the server is away for an hour",
         [&] {
             server.network.answer = FakeNetwork::Answer::kRefuse;
             server.stop();
             loop.sleep(1h);
             server.network.answer = FakeNetwork::Answer::kAccept;
         },
         Lines{kLost + "the server closed the connection", kBack, "Mount is connected again"}},
        {"the cable was cut", [&] { server.cutCables(); },
         Lines{kLost + "it has stopped answering", kBack, "Mount is connected again"}, false},
        {"an element that never ends", [&] { server.sayAll("<setNumberVector device=\"Mou"); },
         Lines{kLost + "it doesn't end what it sends", kBack, "Mount is connected again"}, false},
    };
    for (const auto& [why, spoil, lines, restarted] : cases) {
        server.network.answer = FakeNetwork::Answer::kAccept;
        mount.connect();
        loop.sleep(10s);  // long enough for the server to have answered a ping
        server.commands.clear();
        told.clear();
        const long before = server.network.attempts;
        spoil();
        loop.sleep(50s);
        EXPECT_TRUE(mount.connected()) << why;
        EXPECT_EQ(told, lines) << why;
        EXPECT_EQ(server.count("CONNECTION CONNECT=On"), restarted ? 1 : 0) << why;
        EXPECT_EQ(server.commands.back(), "GEOGRAPHIC_COORD LAT=48.5 LONG=288.75 ELEV=300") << why;
        EXPECT_LT(server.network.attempts - before, 260) << why << ": a pause that grows";
        mount.disconnect();
    }
}

TEST_F(MountTest, ADriverThatComesBackWithoutItsMountIsTriedAgainAndToldOnce) {
    connect();
    server.treatment["CONNECTION"] = {kRefuse};
    server.restartDriver("Mount");
    loop.sleep(5min);
    EXPECT_FALSE(mount.connected());
    EXPECT_THAT(told, testing::ElementsAre("The driver of Mount has gone",
                                           "Mount can't be connected: No CONNECTION today."));
    EXPECT_GT(server.count("CONNECTION CONNECT"), 8);
    EXPECT_LT(server.count("CONNECTION CONNECT"), 20);
    server.treatment.clear();
    loop.sleep(31s);
    EXPECT_TRUE(mount.connected());
}

TEST_F(MountTest, ADriverThatDiesOfBeingConnectedIsNotKilledWithoutEnd) {
    connect();
    server.treatment["CONNECTION"] = {kDie};
    server.restartDriver("Mount");
    loop.sleep(5min);
    EXPECT_GT(server.count("CONNECTION CONNECT"), 8);
    EXPECT_LT(server.count("CONNECTION CONNECT"), 20);
    EXPECT_THAT(told, testing::ElementsAre("The driver of Mount has gone"));
}

TEST_F(MountTest, WhoeverElseDisconnectsItIsRespected) {
    connect();
    server.disconnectByOthers("Mount");
    loop.sleep(1h);
    EXPECT_FALSE(mount.connected());
    EXPECT_THAT(told, testing::ElementsAre("Mount was disconnected by another program"));
    EXPECT_THAT(server.commands, testing::IsEmpty());
    EXPECT_EQ(problemOf([&] { mount.position(); }), "Mount isn't connected");
    mount.connect();
    EXPECT_TRUE(mount.connected());
}

TEST_F(MountTest, ADisconnectedOneStaysSo) {
    connect();
    server.treatment["CONNECTION"] = {kObey, 1s};
    const Milliseconds start = now();
    mount.disconnect();
    EXPECT_GE(now() - start, 1s) << "it is over once the driver has said so";
    EXPECT_EQ(problemOf([&] { mount.abort(); }), "Mount isn't connected");
    server.stop();
    loop.sleep(1h);
    EXPECT_FALSE(mount.connected());
    EXPECT_EQ(server.network.attempts, 1);
}

TEST_F(MountTest, OneThatIsConnectedAlreadyIsTakenOver) {
    connect();
    Mount second(surroundings, servers.client({"otherhost", 7624}), "Mount", [] { return MountOptions(); });
    second.connect();
    EXPECT_TRUE(second.connected());
    EXPECT_EQ(second.position().rightAscension, 5);
    EXPECT_THAT(server.commands, testing::IsEmpty()) << "no second CONNECT";
}

TEST_F(MountTest, ReadsFailWhenTheDriverHangsAndRecoverWithIt) {
    connect();
    loop.sleep(1h);
    EXPECT_EQ(mount.position().rightAscension, 5) << "a mount that tracks may say nothing for hours";
    server.treatment["getProperties"] = {kIgnore};
    loop.sleep(45s);
    EXPECT_EQ(problemOf([&] { mount.position(); }), "The driver of Mount has stopped answering");
    EXPECT_EQ(slew(), "The driver of Mount has stopped answering");
    server.treatment.clear();
    loop.sleep(15s);
    EXPECT_EQ(mount.position().rightAscension, 5);
}

// ---- slews

TEST_F(MountTest, SlewsAndIsSlewingUntilItHasSaidWhereItIs) {
    connect();
    EXPECT_EQ(slew(7, -20), "");
    EXPECT_THAT(server.commands,
                testing::ElementsAre("ON_COORD_SET TRACK=On", "EQUATORIAL_EOD_COORD RA=7 DEC=-20"));
    const Milliseconds begin = now();
    letSlew();
    EXPECT_GE(now() - begin, 5250ms) << "a polling period beyond the end";
    EXPECT_LE(now() - begin, 5500ms);
    EXPECT_NEAR(mount.position().rightAscension, 7, 1e-9);
    EXPECT_NEAR(mount.position().declination, -20, 1e-9);
    EXPECT_EQ(slew(24, 0), "");
    EXPECT_THAT(server.commands.back(), "EQUATORIAL_EOD_COORD RA=0 DEC=0")
        << "the day's end is its beginning";
}

TEST_F(MountTest, SaysWhyItDoesNotSlew) {
    const Trouble cases[] = {
        {"refused late", treated("EQUATORIAL_EOD_COORD", {kRefuse, 1s}),
         "Mount refuses the slew: No EQUATORIAL_EOD_COORD today.", 1100ms},
        {"ignored with a message", treated("EQUATORIAL_EOD_COORD", {kIgnoreWithMessage}),
         "Mount takes no notice of the slew: No EQUATORIAL_EOD_COORD today.", 3s},
        {"parked",
         [&] {
             server.treatment["TELESCOPE_PARK"] = {};
             server.parked = true;
         },
         "Mount is parked: unpark it first", 0s},
        {"a mode that isn't taken", treated("ON_COORD_SET", {kIgnore}),
         "Mount takes no notice of tracking after a slew", 3s},
        {"the server ends", treated("EQUATORIAL_EOD_COORD", {kHangUp}), "Mount isn't connected any more",
         100ms},
        {"the operator stops", meanwhile("EQUATORIAL_EOD_COORD", [&] { givenUp = true; }),
         "Waiting for Mount was given up: the slew", 100ms},
    };
    for (const auto& [why, spoil, problem, latest] : cases) {
        server.treatment.clear();
        spoil();
        connect();
        const Milliseconds begin = now();
        EXPECT_EQ(slew(), problem) << why;
        EXPECT_LE(now() - begin, latest) << why;
        givenUp = false;
        server.parked = false;
        mount.disconnect();
        server.stop();
        loop.sleep(20s);
    }
    server.treatment.clear();
    connect();
    EXPECT_EQ(slew(), "") << "after all that";
}

TEST_F(MountTest, ASlewToWhereItIsMayBeOverBeforeItWasSeen) {
    connect();
    server.treatment["EQUATORIAL_EOD_COORD"] = {kIgnore};
    loop.post([&] {
        server.sayAll("<setNumberVector device=\"Mount\" name=\"EQUATORIAL_EOD_COORD\" state=\"Ok\"/>");
    });
    EXPECT_EQ(slew(5, 40.01), "");
    EXPECT_TRUE(mount.slewing());
    const Milliseconds begin = now();
    letSlew();
    EXPECT_LE(now() - begin, 2100ms) << "the grace";
}

TEST_F(MountTest, PositionsThatAreNoneAreNotSent) {
    connect();
    for (const auto& [ra, dec] :
         {std::pair{25.0, 0.0}, {-1.0, 0.0}, {5.0, 91.0}, {std::nan(""), 0.0}, {5.0, std::nan("")}})
        EXPECT_NE(slew(ra, dec), "") << ra << " " << dec;
    EXPECT_THAT(server.commands, testing::IsEmpty());
}

TEST_F(MountTest, ASlewThatFailsIsToldAsWhatItIs) {
    const Trouble cases[] = {
        {"it fails on the way",
         [&] {
             server.arrives = false;
             failing = loop.after(4500ms, [&] {
                 server.sayAll(
                     "<setNumberVector device=\"Mount\" name=\"EQUATORIAL_EOD_COORD\" state=\"Alert\" "
                     "message=\"[ERROR] Motor stalled\"/>");
             });
         },
         "Mount has failed to slew: Motor stalled", 5s},
        {"the server dies on the way", [&] { failing = loop.after(2s, [&] { server.stop(); }); },
         "Mount isn't connected", 3s},
    };
    for (const auto& [why, spoil, problem, latest] : cases) {
        server.arrives = server.moves = true;
        connect();
        loop.sleep(6s);
        spoil();
        EXPECT_EQ(slew(10, 0), "") << why;
        const Milliseconds begin = now();
        EXPECT_EQ(problemOf([&] { letSlew(); }), problem) << why;
        EXPECT_LE(now() - begin, latest) << why;
        failing.reset();
        mount.disconnect();
        server.stop();
        loop.sleep(1min);
    }
}

TEST_F(MountTest, AServerThatKnowsNoPingsIsMissedAllTheSame) {
    server.answersPings = false;
    connect();
    slew();
    failing = loop.after(2s, [&] { server.cutCables(); });
    EXPECT_EQ(problemOf([&] { letSlew(); }), "Mount isn't connected");
    EXPECT_LE(now(), 25s);
}

TEST_F(MountTest, StopsOnTheWay) {
    connect();
    slew();
    loop.sleep(2s);
    EXPECT_EQ(problemOf([&] { mount.abort(); }), "");
    loop.sleep(300ms);
    EXPECT_FALSE(mount.slewing());
    server.treatment["TELESCOPE_ABORT_MOTION"] = {kIgnore};
    EXPECT_EQ(problemOf([&] { mount.abort(); }), "Mount takes no notice of stopping");
}

TEST_F(MountTest, ADriverThatCountsInJ2000IsConverted) {
    server.coordinates = "EQUATORIAL_COORD";
    connect();
    EXPECT_EQ(mount.position().rightAscension, 6);
    EXPECT_EQ(mount.position().declination, 41);
    EXPECT_EQ(slew(0.5, 10), "");
    EXPECT_EQ(server.commands.back(), "EQUATORIAL_COORD RA=23.5 DEC=9");
}

// ---- as an automation object

TEST_F(MountTest, IsDrivenByTheMembersOfATelescope) {
    server.parked = true;
    platform::ClassRegistry registry;
    IndiHost host(surroundings, {.options = {}, .setupDialog = [&](const DeviceId& id) {
                                     told.push_back("set up " + id.device);
                                 }});
    const std::string progId = "Indi:localhost:7624/Mount";
    ASSERT_TRUE(host.install(registry, progId));
    EXPECT_FALSE(host.install(registry, "ScopeSim.Telescope"));
    EXPECT_EQ(problemOf([&] { host.camera("MaxIm.CCDCamera"); }),
              "\"MaxIm.CCDCamera\" is no camera at an INDI server");
    const auto camera = host.camera("Indi:localhost:7624/Camera");
    EXPECT_NE(camera, nullptr);
    EXPECT_EQ(host.camera("Indi:localhost:7624/Camera"), camera);
    EXPECT_EQ(registry.profileDescription("Telescope", progId), "Mount (INDI, localhost:7624)");
    auto telescope = registry.create(progId);
    EXPECT_FALSE(telescope->get("Connected").toBool());
    EXPECT_EQ(server.network.attempts, 0);
    telescope->put("Connected", true);
    EXPECT_TRUE(registry.create(progId)->get("Connected").toBool()) << "one mount behind all objects";
    const std::pair<const char*, double> numbers[] = {{"RightAscension", 5},   {"Declination", 40},
                                                      {"EquatorialSystem", 1}, {"SiderealTime", 6.5},
                                                      {"SiteLatitude", 50.5},  {"SiteLongitude", -10}};
    for (const auto& [member, number] : numbers)
        EXPECT_EQ(telescope->get(member).toDouble(), number) << member;
    EXPECT_TRUE(telescope->get("CanSlew").toBool());
    EXPECT_TRUE(telescope->get("AtPark").toBool());
    server.commands.clear();
    telescope->call("Unpark");
    telescope->call("SlewToCoordinatesAsync", {6, 41});
    EXPECT_TRUE(telescope->get("Slewing").toBool());
    telescope->call("AbortSlew");
    telescope->put("Tracking", true);
    EXPECT_TRUE(telescope->get("Tracking").toBool());
    EXPECT_THAT(server.commands,
                testing::ElementsAre("TELESCOPE_PARK UNPARK=On", "ON_COORD_SET TRACK=On",
                                     "EQUATORIAL_EOD_COORD RA=6 DEC=41", "TELESCOPE_ABORT_MOTION ABORT=On",
                                     "TELESCOPE_TRACK_STATE TRACK_ON=On"));
    telescope->call("SetupDialog");
    EXPECT_EQ(told.back(), "set up Mount");
    telescope->put("Connected", false);
    try {
        telescope->get("RightAscension");
        FAIL() << "a mount that isn't connected has no position";
    } catch (const platform::AutomationError& error) {
        EXPECT_EQ(error.number(), platform::error_number::kDriverException);
        EXPECT_EQ(error.description(), "Mount isn't connected");
    }
}

TEST_F(MountTest, WhatItDoesNotTellIsAFailure) {
    server.tellsItsPlace = false;
    connect();
    EXPECT_EQ(problemOf([&] { mount.site(); }), "Mount tells no site");
    EXPECT_EQ(problemOf([&] { mount.siderealTime(); }), "Mount tells no sidereal time");
}

TEST_F(MountTest, AnObjectThatIsReleasedInsideItsMemberLivesUntilItReturns) {
    platform::ClassRegistry registry;
    IndiHost host(surroundings, {});
    host.install(registry, "Indi:localhost:7624/Mount");
    server.treatment["CONNECTION"] = {kObey, 2s};
    auto telescope = registry.create("Indi:localhost:7624/Mount");
    auto* const object = telescope.get();
    loop.post([&] { telescope.reset(); });
    object->put("Connected", true);
    EXPECT_EQ(telescope, nullptr);
    EXPECT_TRUE(registry.create("Indi:localhost:7624/Mount")->get("Connected").toBool());
}

}  // namespace
}  // namespace vantrel::hosts::indi
