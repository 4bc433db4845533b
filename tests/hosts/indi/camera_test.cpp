#include "hosts/indi/camera.h"

#include <gmock/gmock.h>

#include "hosts/indi/indi_world.h"

namespace vantrel::hosts::indi {
namespace {

using namespace std::chrono_literals;
using Level = platform::CameraHardware::Level;
using platform::CameraLevel;
using platform::CameraOrder;
using platform::FitsBytes;
using platform::Milliseconds;
using test::FakeConnection;
using test::FakeNetwork;
using test::Treatment;
using enum Treatment::Kind;
using Progress = platform::CameraHardware::Progress;

constexpr const char* kHalfAPicture =
    "<setBLOBVector device=\"Camera\" name=\"CCD1\"><oneBLOB name=\"CCD1\" format=\".fits\">QUJD";

class CameraTest : public test::IndiWorld {
  protected:
    void connect() {
        camera.connect();
        loop.sleep(1s);
        server.commands.clear();
        told.clear();
    }
    std::string start(const CameraOrder& order) {
        return problemOf([&] { camera.start(order); });
    }
    /// Lets time pass until the exposure is over, one way or the other.
    Progress finish() {
        while (camera.progress() == Progress::kExposing || camera.progress() == Progress::kDownloading)
            loop.sleep(50ms);
        return camera.progress();
    }
    /// The picture's bytes, or what went wrong.
    std::string take() {
        try {
            const auto picture = std::get<FitsBytes>(camera.take());
            return (picture.tileCompressed ? "packed " : "") +
                   std::string(reinterpret_cast<const char*>(picture.bytes.data()), picture.bytes.size());
        } catch (const std::exception& error) {
            return error.what();
        }
    }

    platform::TimerHandle later, halted;
    Camera camera{surroundings, servers.client(address), test::FakeIndi::kCamera};
};

TEST_F(CameraTest, TellsWhatItIsOnceItIsConnected) {
    EXPECT_FALSE(camera.connected());
    EXPECT_EQ(server.network.attempts, 0);
    camera.connect();
    ASSERT_TRUE(camera.connected());
    const platform::CameraFacts& facts = camera.facts();
    EXPECT_EQ(facts.width, 1280U);
    EXPECT_EQ(facts.height, 1024U);
    EXPECT_EQ(facts.pixelSizeX, 5.2);
    EXPECT_EQ(facts.maxBinX, 4);
    EXPECT_THAT(facts.filters, testing::ElementsAre("Red", "Green", "Filter 3"));
    EXPECT_EQ(facts.shortest, 0.01);
    EXPECT_EQ(facts.longest, 3600);
    EXPECT_EQ(facts.temperature, -10.5);
    EXPECT_EQ(facts.gain, CameraLevel{90});
    EXPECT_EQ(facts.offset, CameraLevel{0});
    EXPECT_EQ(facts.cooling, false);
    EXPECT_THAT(server.commands,
                testing::ElementsAre("CONNECTION CONNECT=On", "UPLOAD_MODE UPLOAD_CLIENT=On"));
    loop.sleep(10ms);
    EXPECT_EQ(server.pictureConnections().size(), 1U);
}

TEST_F(CameraTest, ExposesAsOrdered) {
    connect();
    EXPECT_EQ(camera.progress(), Progress::kIdle);
    EXPECT_EQ(start({.seconds = 2}), "");
    EXPECT_EQ(camera.progress(), Progress::kExposing);
    EXPECT_EQ(finish(), Progress::kReady);
    EXPECT_GE(now(), 2200ms);
    EXPECT_EQ(take(), server.picture);
    EXPECT_EQ(camera.progress(), Progress::kIdle);
    EXPECT_THAT(server.commands, testing::ElementsAre("CCD_EXPOSURE CCD_EXPOSURE_VALUE=2"))
        << "nothing is set that is so already";
    server.commands.clear();
    EXPECT_EQ(start({.seconds = 0.1,
                     .frame = CameraOrder::Frame::kDark,
                     .binX = 2,
                     .binY = 2,
                     .part = CameraOrder::Part{.left = 10, .top = 20, .width = 300, .height = 200},
                     .filter = 2}),
              "");
    EXPECT_THAT(server.commands,
                testing::ElementsAre("FILTER_SLOT FILTER_SLOT_VALUE=3", "CCD_BINNING HOR_BIN=2 VER_BIN=2",
                                     "CCD_FRAME X=20 Y=40 WIDTH=600 HEIGHT=400",
                                     "CCD_FRAME_TYPE FRAME_DARK=On", "CCD_EXPOSURE CCD_EXPOSURE_VALUE=0.1"));
    server.commands.clear();
    EXPECT_EQ(start({.seconds = 1}), "");
    EXPECT_THAT(server.commands, testing::IsSupersetOf({"CCD_BINNING HOR_BIN=1 VER_BIN=1",
                                                        "CCD_FRAME X=0 Y=0 WIDTH=1280 HEIGHT=1024",
                                                        "CCD_FRAME_TYPE FRAME_LIGHT=On"}));
}

// As the simulator of INDI 1.9 does.
TEST_F(CameraTest, ARefusalThatADriverForgetsToTakeBackIsNone) {
    connect();
    server.treatment["CCD_BINNING"] = {kRefuse};
    EXPECT_NE(start({.binX = 3, .binY = 3, .part = CameraOrder::Part{0, 0, 10, 10}}), "");
    server.treatment["CCD_BINNING"] = {kIgnore};
    server.sayAll(
        "<setNumberVector device=\"Camera\" name=\"CCD_BINNING\" state=\"Alert\"><oneNumber "
        "name=\"HOR_BIN\">2</oneNumber><oneNumber name=\"VER_BIN\">2</oneNumber></setNumberVector>",
        20ms);
    EXPECT_EQ(start({.binX = 2, .binY = 2}), "");
}

TEST_F(CameraTest, PackedPicturesSaySo) {
    connect();
    server.format = ".fits.fz";
    start({});
    finish();
    EXPECT_EQ(take(), "packed " + server.picture);
    server.format = ".cr2";
    start({});
    EXPECT_EQ(finish(), Progress::kFailed);
    EXPECT_EQ(take(), "Camera sends its pictures as \".cr2\": its driver has to be set to send FITS");
    EXPECT_EQ(take(), "Camera has no picture");
}

TEST_F(CameraTest, SaysWhyAnExposureDoesNotBegin) {
    const struct {
        const char* why;
        std::function<void()> spoil;
        CameraOrder order;
        std::string problem;
        Milliseconds latest;
    } cases[] = {
        {"refused", treated("CCD_EXPOSURE", {kRefuse}), CameraOrder{.seconds = -1},
         "Camera refuses an exposure of -1 s: No CCD_EXPOSURE today.", 100ms},
        {"ignored", treated("CCD_EXPOSURE", {kIgnore}), CameraOrder{.seconds = 5},
         "Camera takes no notice of an exposure of 5 s", 10010ms},
        {"binning refused", treated("CCD_BINNING", {kRefuse}),
         CameraOrder{.binX = 3, .binY = 3, .part = CameraOrder::Part{0, 0, 10, 10}},
         "Camera refuses binning 3 x 3: No CCD_BINNING today.", 100ms},
        {"binning ignored", treated("CCD_BINNING", {kIgnore}), CameraOrder{.binX = 3, .binY = 3},
         "Camera takes no notice of binning 3 x 3", 5s},
        {"filter stuck", treated("FILTER_SLOT", {kIgnore}), CameraOrder{.filter = 1},
         "Camera takes no notice of filter 2", 60s},
        {"frame type refused", treated("CCD_FRAME_TYPE", {kRefuse}),
         CameraOrder{.frame = CameraOrder::Frame::kFlat},
         "Camera refuses the kind of frame: No CCD_FRAME_TYPE today.", 100ms},
        {"the server ends", treated("CCD_EXPOSURE", {kHangUp}), CameraOrder{},
         "Camera isn't connected any more", 100ms},
        {"the operator gives it up meanwhile", meanwhile("CCD_EXPOSURE", [&] { camera.abort(); }),
         CameraOrder{}, "The exposure was given up", 200ms},
    };
    for (const auto& [why, spoil, order, problem, latest] : cases) {
        server.treatment.clear();
        connect();
        spoil();
        const Milliseconds begin = now();
        EXPECT_EQ(start(order), problem) << why;
        EXPECT_LE(now() - begin, latest) << why;
        EXPECT_EQ(camera.progress(), Progress::kIdle) << why;
        camera.disconnect();
        server.stop();
        loop.sleep(20s);
    }
    server.treatment.clear();
    connect();
    EXPECT_EQ(start({}), "") << "after all that";
    EXPECT_EQ(finish(), Progress::kReady);
}

TEST_F(CameraTest, LateAndDoubledAnswersExposeAsWell) {
    connect();
    for (const Treatment how : {Treatment{kObey, 9s}, {kObey, 0ms, true}}) {
        server.treatment["CCD_EXPOSURE"] = how;
        for (int exposure = 0; exposure < 2; ++exposure) {
            EXPECT_EQ(start({.seconds = 1}), "");
            EXPECT_EQ(finish(), Progress::kReady);
            take();
        }
    }
}

TEST_F(CameraTest, SaysWhyAnExposureGivesNoPicture) {
    const std::string exposure = "<setNumberVector device=\"Camera\" name=\"CCD_EXPOSURE\" state=";
    const auto at = [&](Milliseconds instant, const std::function<void()>& what) -> std::function<void()> {
        return [&, instant, what] { later = loop.after(instant, what); };
    };
    /// Half of the picture comes, and then this happens to its connection.
    const auto half = [&](const std::function<void(FakeConnection&)>& then) -> std::function<void()> {
        return [&, then] {
            server.delivers = false;
            later = loop.after(5100ms, [&, then] {
                for (const auto& connection : server.pictureConnections()) {
                    connection->send(kHalfAPicture);
                    then(*connection);
                }
            });
        };
    };
    const Trouble cases[] = {
        {"fails", [&] { server.sayAll(exposure + "\"Alert\" message=\"[ERROR] Readout failed\"/>", 3s); },
         "Camera has failed to expose: Readout failed", 4s},
        {"no picture", [&] { server.delivers = false; }, "No picture has come from Camera", 66s},
        {"somebody else gives it up", at(2s, [&] { server.giveExposureUp(); }),
         "No picture has come from Camera", 8s},
        {"the driver dies", at(2s, [&] { server.restartDriver("Camera"); }),
         "The connection to Camera was lost", 3s},
        {"the server dies", at(2s, [&] { server.stop(); }), "The connection to Camera was lost", 3s},
        {"only half of the picture comes", half([](FakeConnection& one) { one.hangUp(1s); }),
         "The connection to Camera was lost: the server closed the connection", 7s},
        {"half of the picture, and then nothing",
         half([&](FakeConnection& one) { halted = loop.after(10ms, [&one] { one.cutCable(); }); }),
         "The connection to Camera was lost: it has stopped answering", 25s},
        {"a picture beyond the sensor", [&] { server.picture.resize(40'000'000, 'x'); },
         "the picture is larger than the camera's sensor allows", 6s},
    };
    for (const auto& [why, spoil, problem, latest] : cases) {
        server.delivers = true;
        connect();
        spoil();
        EXPECT_EQ(start({.seconds = 5}), "") << why;
        const Milliseconds begin = now();
        EXPECT_EQ(finish(), Progress::kFailed) << why;
        EXPECT_LE(now() - begin, latest) << why;
        EXPECT_EQ(take(), problem) << why;
        EXPECT_EQ(camera.progress(), Progress::kIdle) << why;
        later.reset();
        camera.disconnect();
        server.stop();
        loop.sleep(1min);
    }
}

TEST_F(CameraTest, GivesAnExposureUp) {
    connect();
    start({.seconds = 100});
    loop.sleep(3s);
    EXPECT_EQ(problemOf([&] { camera.abort(); }), "");
    EXPECT_EQ(camera.progress(), Progress::kIdle);
    EXPECT_EQ(server.commands.back(), "CCD_ABORT_EXPOSURE ABORT=On");
    camera.abort();
    EXPECT_EQ(server.count("CCD_ABORT_EXPOSURE"), 1) << "there is none";
    start({.seconds = 100});
    start({.seconds = 2});
    EXPECT_EQ(server.count("CCD_ABORT_EXPOSURE"), 2) << "a new one ends the old one";
    EXPECT_EQ(finish(), Progress::kReady);
}

// Each of these would hand the picture of one exposure out as that of the next.
TEST_F(CameraTest, TakesThePictureOfThisExposureOnly) {
    connect();
    start({.seconds = 10});
    loop.sleep(3s);
    camera.abort();
    start({.seconds = 10});
    server.sendPicture("late", 2s);
    loop.sleep(5s);
    EXPECT_EQ(camera.progress(), Progress::kExposing) << "before the exposure's time is over";
    EXPECT_EQ(finish(), Progress::kReady);
    EXPECT_EQ(take(), server.picture);

    start({.seconds = 0.1});
    camera.abort();
    server.delivers = false;
    start({.seconds = 0.1});
    server.sendPicture("late", 5s, "2026-11-24T20:00:00");
    server.sendPicture("right", 6s);
    EXPECT_EQ(finish(), Progress::kReady) << "from before it began, by the driver's clock";
    EXPECT_EQ(take(), "right");

    server.sendPicture("somebody else's");
    loop.sleep(1s);
    EXPECT_EQ(camera.progress(), Progress::kIdle) << "nobody has asked for one";
}

TEST_F(CameraTest, WhatTheServerHeldBackOfAnExposureThatWasGivenUpGoesWithItsConnection) {
    connect();
    start({.seconds = 0.1});
    const auto before = server.pictureConnections();
    for (const auto& connection : before) connection->send(kHalfAPicture, 50ms);
    loop.sleep(60ms);
    camera.abort();
    for (const auto& connection : before) connection->send("QUJD</oneBLOB></setBLOBVector>", 500ms);
    EXPECT_EQ(start({.seconds = 0.1}), "");
    EXPECT_FALSE(before.front()->open());
    EXPECT_EQ(finish(), Progress::kReady);
    EXPECT_EQ(take(), server.picture);
}

TEST_F(CameraTest, ReturnsByItselfAndExposesAgain) {
    for (const bool driver : {true, false}) {
        connect();
        driver ? server.restartDriver("Camera") : server.stop();
        loop.sleep(5s);
        EXPECT_TRUE(camera.connected());
        EXPECT_EQ(server.count("UPLOAD_MODE UPLOAD_CLIENT"), 1);
        EXPECT_EQ(start({}), "");
        EXPECT_EQ(finish(), Progress::kReady);
        EXPECT_EQ(take(), server.picture);
    }
}

TEST_F(CameraTest, AServerThatKnowsNoPingsCostsOneSecondOnce) {
    server.answersPings = false;
    camera.connect();
    const Milliseconds begin = now();
    start({.seconds = 0.1});
    finish();
    take();
    const Milliseconds second = now();
    EXPECT_LE(second - begin, 2s);
    start({.seconds = 0.1});
    finish();
    EXPECT_LE(now() - second, 500ms);
}

TEST_F(CameraTest, NeedsASecondConnection) {
    connect();
    server.network.answer = FakeNetwork::Answer::kRefuse;
    for (const auto& connection : server.pictureConnections()) connection->hangUp();
    loop.sleep(100ms);
    EXPECT_EQ(start({}), "The INDI server at localhost:7624 has no connection for the pictures of Camera");
    EXPECT_TRUE(camera.connected());
}

// Many take 1, 2 and 4, and say only that 4 is the most.
TEST_F(CameraTest, ABinningThatIsRefusedBecomesTheNextSmallerOne) {
    connect();
    server.refuses = "CCD_BINNING HOR_BIN=3 VER_BIN=3";
    for (int exposure = 0; exposure < 2; ++exposure) {
        EXPECT_EQ(start({.binX = 3, .binY = 3}), "");
        EXPECT_EQ(finish(), Progress::kReady);
        take();
    }
    EXPECT_THAT(
        server.commands,
        testing::ElementsAre("CCD_BINNING HOR_BIN=3 VER_BIN=3", "CCD_BINNING HOR_BIN=2 VER_BIN=2",
                             "CCD_EXPOSURE CCD_EXPOSURE_VALUE=1", "CCD_EXPOSURE CCD_EXPOSURE_VALUE=1"));
    EXPECT_THAT(told,
                testing::Contains("Camera doesn't take binning 3, but 2: the image scale has to be that "
                                  "of it (Camera refuses binning 3 x 3: No CCD_BINNING today.)"));
}

TEST_F(CameraTest, GainAndOffsetAreSetWhereTheDriverHasThem) {
    EXPECT_EQ(problemOf([&] { camera.set(Level::kGain, 1); }), "Camera isn't connected");
    connect();
    camera.set(Level::kGain, 50.5);
    camera.set(Level::kOffset, 10);
    EXPECT_THAT(server.commands, testing::ElementsAre("CCD_GAIN GAIN=50.5", "CCD_OFFSET OFFSET=10"));
    EXPECT_EQ(camera.facts().gain, CameraLevel{50.5});
    server.treatment["CCD_GAIN"] = {kRefuse};
    EXPECT_EQ(problemOf([&] { camera.set(Level::kGain, 1000); }),
              "Camera refuses a gain of 1000: No CCD_GAIN today.");

    server.commands.clear();
    server.sayAll(
        "<delProperty device=\"Camera\" name=\"CCD_GAIN\"/>"
        "<delProperty device=\"Camera\" name=\"CCD_OFFSET\"/>"
        "<defNumberVector device=\"Camera\" name=\"CCD_CONTROLS\">"
        "<defNumber name=\"Gain\" min=\"0\" max=\"480\">120</defNumber>"
        "<defNumber name=\"WB_R\" min=\"1\" max=\"99\">52</defNumber></defNumberVector>");
    loop.sleep(10ms);
    EXPECT_EQ(camera.facts().gain, (CameraLevel{120, platform::CameraRange{0, 480}}));
    EXPECT_EQ(camera.facts().offset, std::nullopt);
    camera.set(Level::kGain, 200);
    EXPECT_THAT(server.commands, testing::ElementsAre("CCD_CONTROLS Gain=200 WB_R=52"));
    EXPECT_EQ(problemOf([&] { camera.set(Level::kOffset, 1); }), "Camera has no offset that can be set");
}

TEST_F(CameraTest, IsCooledAndWarmedUp) {
    connect();
    EXPECT_TRUE(camera.facts().canCool);
    camera.cool(-15);
    camera.cool(-20);
    EXPECT_EQ(camera.facts().temperature, -20);
    EXPECT_EQ(camera.facts().cooling, true);
    EXPECT_EQ(camera.facts().coolsTo, -20);
    server.sayAll(
        "<defNumberVector device=\"Camera\" name=\"CCD_COOLER_POWER\" perm=\"ro\">"
        "<defNumber name=\"CCD_COOLER_VALUE\">35.5</defNumber></defNumberVector>");
    loop.sleep(10ms);
    EXPECT_EQ(camera.facts().coolerPower, 35.5);
    camera.cool(std::nullopt);
    EXPECT_EQ(camera.facts().coolsTo, std::nullopt);
    EXPECT_THAT(
        server.commands,
        testing::ElementsAre("CCD_COOLER COOLER_ON=On", "CCD_TEMPERATURE CCD_TEMPERATURE_VALUE=-15",
                             "CCD_TEMPERATURE CCD_TEMPERATURE_VALUE=-20", "CCD_COOLER COOLER_OFF=On"));
    server.treatment["CCD_TEMPERATURE"] = {kRefuse};
    EXPECT_EQ(problemOf([&] { camera.cool(-99); }),
              "Camera refuses a temperature of -99 C: No CCD_TEMPERATURE today.");
    server.sayAll(
        "<delProperty device=\"Camera\" name=\"CCD_COOLER\"/>"
        "<defNumberVector device=\"Camera\" name=\"CCD_TEMPERATURE\" perm=\"ro\"/>");
    loop.sleep(10ms);
    EXPECT_EQ(problemOf([&] { camera.cool(-15); }), "Camera can't be cooled");
    EXPECT_EQ(problemOf([&] { camera.cool(std::nullopt); }), "Camera can't be warmed up");
}

TEST_F(CameraTest, TellsTheMomentAtWhichAnExposureIsOver) {
    connect();
    std::vector<Milliseconds> moments;
    camera.onProgress = [&] { moments.push_back(now()); };
    const Milliseconds begin = now();
    start({.seconds = 2});
    loop.sleep(5s);
    EXPECT_THAT(moments, testing::ElementsAre(begin + 2200ms));
    start({.seconds = 20});
    server.disconnectByOthers("Camera");
    loop.sleep(1s);
    EXPECT_THAT(moments, testing::SizeIs(2));
    EXPECT_EQ(take(), "The connection to Camera was lost");
}

}  // namespace
}  // namespace vantrel::hosts::indi
