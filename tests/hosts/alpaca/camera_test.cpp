#include "hosts/alpaca/camera.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hosts/alpaca/alpaca_world.h"
#include "support/refusal.h"

namespace vantrel::hosts::alpaca {
namespace {

using namespace std::chrono_literals;
using Level = platform::CameraHardware::Level;
using platform::CameraLevel;
using platform::CameraOrder;
using platform::HttpAnswer;
using platform::PlainPixels;
using Progress = platform::CameraHardware::Progress;
using test::Fault;
using enum test::Fault;
using testing::ElementsAre;
using testing::HasSubstr;

const DeviceRecord kCamera{"camera", "C1", "The camera", {"10.0.0.7", 11111}, 0};

/// A camera of 4 x 6 pixels, which is ready half a second after an exposure's end.
struct CameraTest : testing::Test, test::AlpacaWorld {
    CameraTest() { restart(); }

    void restart() {
        server.list({{"The camera", "Camera", 0, "C1"}});
        instruments.addCamera(server);
        server.values["camera/0/connected"] = true;
        server.take("camera/0/", {"connected"});
    }

    /// Lets time pass until the exposure has come to an end.
    Progress expose(const CameraOrder& order = {.seconds = 2}) {
        camera->start(order);
        return finish();
    }
    Progress finish() {
        for (const auto start = now(); now() - start < 1h; loop.sleep(100ms))
            if (camera->progress() == Progress::kReady || camera->progress() == Progress::kFailed) break;
        return camera->progress();
    }
    PlainPixels picture() { return std::get<PlainPixels>(camera->take()); }
    /// What stands in the picture's header.
    std::string words(const std::string& wanted) {
        for (const auto& [keyword, value, comment] : picture().cards)
            if (keyword == wanted) return std::get<std::string>(value);
        return {};
    }

    template <typename Use>
    std::string refusal(const Use& use) {
        return test::refusalOf<std::runtime_error>(use);
    }
    std::string failure() {
        return refusal([this] { camera->take(); });
    }

    test::FakeServer& server = servers["10.0.0.7:11111"];
    test::Instruments instruments{loop};
    platform::TimerHandle& ready = instruments.exposing;
    std::unique_ptr<Camera> camera = std::make_unique<Camera>(surroundings, kCamera, [](const auto&) {});
};

// ---- what it is

TEST_F(CameraTest, SaysWhatItIs) {
    EXPECT_FALSE(camera->connected());
    camera->connect();
    EXPECT_TRUE(camera->connected());
    EXPECT_EQ(camera->name(), "The camera");
    const platform::CameraFacts& facts = camera->facts();
    EXPECT_EQ(facts.width, 4U);
    EXPECT_EQ(facts.height, 6U);
    EXPECT_EQ(facts.pixelSizeX, 3.8);
    EXPECT_EQ(facts.maxBinY, 2);
    EXPECT_TRUE(facts.binsAlike);
    EXPECT_EQ(facts.shortest, 0.001);
    EXPECT_EQ(facts.longest, 3600);
    EXPECT_EQ(facts.temperature, -9.5);
    EXPECT_EQ(facts.gain, CameraLevel{100});
    EXPECT_EQ(facts.offset, CameraLevel{10});
    EXPECT_TRUE(facts.canCool);
    EXPECT_TRUE(facts.filters.empty());
}

TEST_F(CameraTest, DoesWithoutWhatACameraNeedntHave) {
    std::erase_if(server.values, [](const auto& entry) {
        return entry.first.starts_with("camera/") && !entry.first.ends_with("size") &&
               !entry.first.ends_with("connected") && !entry.first.ends_with("imageready");
    });
    for (const Fault fault : {kNotFound, kDeviceError, kWrongType}) {
        for (const char* member : {"gain", "ccdtemperature", "maxbinx", "exposuremin", "sensortype"})
            server.faults[std::string("camera/0/") + member] = fault;
        camera->disconnect();
        camera->connect();
        EXPECT_EQ(expose(), Progress::kReady);
        EXPECT_EQ(picture().image.width(), 2U);
    }
    EXPECT_EQ(camera->facts().maxBinX, 1);
    EXPECT_EQ(camera->facts().gain, std::nullopt);
    EXPECT_FALSE(camera->facts().canCool);
}

TEST_F(CameraTest, NeedsASensorOfAPossibleSize) {
    for (const Json& size : {Json(0), Json(-5), Json(1e9), Json("4"), Json::array()}) {
        server.values["camera/0/cameraxsize"] = size;
        EXPECT_EQ(refusal([&] { camera->connect(); }), "The camera doesn't say how large its sensor is.")
            << size;
        EXPECT_FALSE(camera->connected());
    }
}

TEST_F(CameraTest, TellsOfItsCoolerAndItsGainAsTheyChange) {
    server.values["camera/0/cooleron"] = true;
    server.values["camera/0/setccdtemperature"] = -10;
    server.values["camera/0/cangetcoolerpower"] = true;
    server.values["camera/0/coolerpower"] = 40;
    camera->connect();
    const platform::CameraFacts& facts = camera->facts();
    EXPECT_EQ(facts.cooling, true);
    EXPECT_EQ(facts.coolsTo, -10);
    EXPECT_EQ(facts.coolerPower, 40);
    server.values["camera/0/ccdtemperature"] = -15;
    loop.sleep(20s);
    EXPECT_EQ(facts.temperature, -15);
    server.values["camera/0/coolerpower"] = 55;
    server.values["camera/0/gain"] = 90;
    server.faults["camera/0/ccdtemperature"] = kWrongType;
    loop.sleep(20s);
    EXPECT_EQ(facts.coolerPower, 55) << "a reading that makes no sense leaves the others";
    EXPECT_EQ(facts.gain, CameraLevel{90});
    EXPECT_EQ(facts.temperature, -15);
    camera->cool(-20.5);
    EXPECT_EQ(facts.coolsTo, -20.5);
    camera->cool(std::nullopt);
    EXPECT_EQ(facts.cooling, false);
    EXPECT_EQ(facts.coolsTo, std::nullopt);
    server.values["camera/0/cansetccdtemperature"] = false;
    camera->disconnect();
    camera->connect();
    camera->cool(-20);
    EXPECT_EQ(facts.coolsTo, std::nullopt) << "a cooler that can only be switched";
    EXPECT_THAT(server.commandLines(),
                ElementsAre("PUT camera/0/setccdtemperature?SetCCDTemperature=-20.5",
                            "PUT camera/0/cooleron?CoolerOn=True", "PUT camera/0/cooleron?CoolerOn=False",
                            "PUT camera/0/connected?Connected=False", "PUT camera/0/cooleron?CoolerOn=True"));
    server.values.erase("camera/0/cooleron");
    camera->disconnect();
    camera->connect();
    EXPECT_EQ(refusal([&] { camera->cool(0); }), "The camera can't be cooled.");
}

TEST_F(CameraTest, GainAndOffsetAreNumbersOrPlacesInLists) {
    server.values["camera/0/gainmin"] = 0;
    server.values["camera/0/gainmax"] = 480;
    server.values["camera/0/offset"] = 1;
    server.values["camera/0/offsets"] = Json::array({"low", "high"});
    camera->connect();
    EXPECT_EQ(camera->facts().gain, (CameraLevel{100, platform::CameraRange{0, 480}}));
    EXPECT_EQ(camera->facts().offset, (CameraLevel{.value = 1, .names = {"low", "high"}}));
    camera->set(Level::kGain, 250);
    camera->set(Level::kOffset, 0);
    EXPECT_THAT(server.commandLines(),
                ElementsAre("PUT camera/0/gain?Gain=250", "PUT camera/0/offset?Offset=0"));
    EXPECT_EQ(camera->facts().gain->value, 250);
    server.faults["PUT camera/0/gain"] = kDeviceError;
    EXPECT_EQ(refusal([&] { camera->set(Level::kGain, 300); }), "The gears are stuck");
    EXPECT_EQ(camera->facts().gain->value, 250);
    server.values.erase("camera/0/gain");
    camera->disconnect();
    camera->connect();
    EXPECT_EQ(refusal([&] { camera->set(Level::kGain, 1); }), "The camera has no gain that can be set");
}

// ---- exposures

TEST_F(CameraTest, TakesAPicture) {
    camera->connect();
    EXPECT_EQ(camera->progress(), Progress::kIdle);
    camera->start({.seconds = 2});
    EXPECT_EQ(camera->progress(), Progress::kExposing);
    EXPECT_EQ(failure(), "The camera isn't ready with its picture.") << "and goes on";
    const auto start = now();
    EXPECT_EQ(finish(), Progress::kReady);
    EXPECT_LE(now() - start, 3200ms);
    EXPECT_THAT(
        server.commandLines(),
        ElementsAre("PUT camera/0/binx?BinX=1", "PUT camera/0/biny?BinY=1", "PUT camera/0/startx?StartX=0",
                    "PUT camera/0/starty?StartY=0", "PUT camera/0/numx?NumX=4", "PUT camera/0/numy?NumY=6",
                    "PUT camera/0/startexposure?Duration=2&Light=True"));
    const PlainPixels taken = picture();
    EXPECT_EQ(taken.image.pixels(), platform::ImageArray::Pixels(std::vector<std::uint16_t>{1, 3, 2, 4}));
    EXPECT_EQ(camera->progress(), Progress::kIdle);
    EXPECT_EQ(failure(), "The camera has no picture.");
    std::vector<std::string> cards;
    for (const auto& [keyword, value, comment] : taken.cards)
        cards.push_back(keyword + "=" +
                        (std::holds_alternative<double>(value) ? Json(std::get<double>(value)).dump()
                                                               : std::get<std::string>(value)));
    EXPECT_THAT(cards,
                ElementsAre("DATE-OBS=2026-11-24T20:00:01.250", "EXPTIME=2.001", "IMAGETYP=Light Frame",
                            "XPIXSZ=3.8", "YPIXSZ=3.8", "XBINNING=1.0", "YBINNING=1.0", "XORGSUBF=0.0",
                            "YORGSUBF=0.0", "INSTRUME=The camera", "ROWORDER=TOP-DOWN"));
}

TEST_F(CameraTest, SaysWhereTheColoursAreUnlessTheyAreBinned) {
    const struct {
        int kind, right, down, binX, binY;
        const char* pattern;
    } cases[] = {{2, 0, 0, 1, 1, "RGGB"}, {2, 1, 0, 1, 1, "GRBG"}, {2, 2, 3, 1, 1, "GBRG"},
                 {2, 1, 1, 1, 1, "BGGR"}, {2, 0, 0, 2, 1, ""},     {2, 0, 0, 1, 2, ""},
                 {3, 0, 0, 1, 1, ""}};
    server.values["camera/0/canasymmetricbin"] = true;
    for (const auto& c : cases) {
        server.values["camera/0/sensortype"] = c.kind;
        server.values["camera/0/bayeroffsetx"] = c.right;
        server.values["camera/0/bayeroffsety"] = c.down;
        camera->disconnect();
        camera->connect();
        ASSERT_EQ(expose({.seconds = 1, .binX = c.binX, .binY = c.binY}), Progress::kReady);
        EXPECT_EQ(words("BAYERPAT"), c.pattern) << c.right << c.down << c.binX << c.binY;
    }
}

TEST_F(CameraTest, CarriesOutEveryKindOfOrder) {
    camera->connect();
    using Frame = CameraOrder::Frame;
    const struct {
        CameraOrder order;
        std::vector<std::string> commands;  // that have to be among those sent
    } cases[] = {
        {{.seconds = 1, .binX = 2, .binY = 2}, {"binx?BinX=2", "biny?BinY=2", "numx?NumX=2", "numy?NumY=3"}},
        {{.seconds = 1, .part = CameraOrder::Part{1, 2, 3, 4}},
         {"startx?StartX=1", "starty?StartY=2", "numx?NumX=3", "numy?NumY=4"}},
        {{.seconds = 0.5, .frame = Frame::kDark}, {"startexposure?Duration=0.5&Light=False"}},
        {{.seconds = 0, .frame = Frame::kBias}, {"startexposure?Duration=0.001&Light=False"}},
        {{.seconds = 0.25, .frame = Frame::kFlat}, {"startexposure?Duration=0.25&Light=True"}},
    };
    server.refuses = "PUT camera/0/binx?BinX=2";
    EXPECT_EQ(expose({.seconds = 1, .binX = 2, .binY = 2}), Progress::kReady);
    EXPECT_NE(told("doesn't take binning 2, but 1"), "");
    server.refuses = "";
    camera->disconnect();
    camera->connect();
    for (const auto& c : cases) {
        server.requests.clear();
        EXPECT_EQ(expose(c.order), Progress::kReady);
        for (const std::string& command : c.commands)
            EXPECT_THAT(server.commandLines(), testing::Contains("PUT camera/0/" + command));
        camera->take();
    }
}

TEST_F(CameraTest, RefusesWhatItCantDo) {
    EXPECT_EQ(refusal([&] { camera->start({}); }), "The camera is not connected.");
    camera->connect();
    const std::pair<CameraOrder, const char*> cases[] = {
        {{.binX = 3, .binY = 3}, "bin by 3x3; 2x2 is the most."},
        {{.binX = 0, .binY = 1}, "bin by 0x1; 2x2 is the most."},
        {{.binX = 1, .binY = 2}, "bin columns and rows differently."},
        {{.seconds = 5000}, "expose for 5000 s, only for 0.001 to 3600 s."},
        {{.seconds = 0}, "expose for 0 s, only for 0.001 to 3600 s."},
        {{.part = CameraOrder::Part{0, 0, 5, 1}}, "read a part that isn't on its sensor."},
        {{.part = CameraOrder::Part{-1, 0, 2, 1}}, "read a part that isn't on its sensor."},
        {{.part = CameraOrder::Part{1, 1, 1, 0}}, "read a part that isn't on its sensor."},
        {{.part = CameraOrder::Part{2147483647, 1, 1, 1}}, "read a part that isn't on its sensor."},
        {{.filter = 0}, "change filters."},
    };
    for (const auto& [order, says] : cases)
        EXPECT_EQ(refusal([&, order = order] { camera->start(order); }),
                  "The camera can't " + std::string(says));
    EXPECT_THAT(server.commandLines(), ElementsAre());
}

TEST_F(CameraTest, PrefersBytesButReadsWhatComes) {
    camera->connect();
    std::string accepted;
    const auto answer = http.answer;
    http.answer = [&](const platform::HttpRequest& request) {
        if (request.url.find("/imagearray") != std::string::npos) accepted = request.accept;
        return answer(request);
    };
    const std::string json = R"({"Type":2,"Rank":2,"Value":[[1,2],[3,4]],"ErrorNumber":0})";
    const auto bytes = server.raw["camera/0/imagearray"]().body;
    for (const auto& [type, body] :
         {std::pair{"application/json; charset=utf-8", json}, {"text/plain", json}, {"", bytes}}) {
        server.raw["camera/0/imagearray"] = [type = type, body = body] {
            return HttpAnswer{200, type, body};
        };
        EXPECT_EQ(expose(), Progress::kReady) << type;
        EXPECT_EQ(picture().image.pixels(),
                  platform::ImageArray::Pixels(std::vector<std::uint16_t>{1, 3, 2, 4}))
            << type;
    }
    EXPECT_EQ(accepted, "application/imagebytes, application/json");
}

TEST_F(CameraTest, AsksForItsStateAtOnceWhereItCan) {
    server.values["camera/0/interfaceversion"] = 4;
    server.values.erase("camera/0/imageready");
    server.values.erase("camera/0/camerastate");
    server.values["camera/0/devicestate"] =
        Json::array({{{"Name", "ImageReady"}, {"Value", false}}, {{"Name", "CameraState"}, {"Value", 2}}});
    camera->connect();
    camera->start({.seconds = 2});
    loop.sleep(3s);
    EXPECT_EQ(camera->progress(), Progress::kExposing);
    server.values["camera/0/devicestate"] = Json::array({{{"Name", "ImageReady"}, {"Value", true}}});
    EXPECT_EQ(finish(), Progress::kReady);
    restart();  // and the single members again, where the state says nothing
    for (const Json& state :
         {Json::array(), Json("none"), Json::array({{{"Name", "ImageReady"}, {"Value", "yes"}}})}) {
        server.values["camera/0/devicestate"] = state;
        EXPECT_EQ(expose(), Progress::kReady);
    }
}

TEST_F(CameraTest, DoesntTakeThePictureBefore) {
    camera->connect();
    server.commands["camera/0/startexposure"] = [this](const auto&) {
        server.values["camera/0/imageready"] = true;  // still, of the last exposure
        ready = loop.after(1s, [this] { server.values["camera/0/imageready"] = false; });
    };
    camera->start({.seconds = 5});
    loop.sleep(4s);
    EXPECT_EQ(camera->progress(), Progress::kExposing);
}

// ---- ends of exposures

TEST_F(CameraTest, IsAskedTwiceASecondAndAborted) {
    camera->connect();
    camera->start({.seconds = 60});
    server.requests.clear();
    loop.sleep(50s);
    const auto looks = std::count_if(server.requests.begin(), server.requests.end(), [](const auto& request) {
        return request.path == "camera/0/imageready";
    });
    EXPECT_GE(looks, 80);
    EXPECT_LE(looks, 101);
    camera->abort();
    EXPECT_EQ(camera->progress(), Progress::kIdle);
    camera->abort();
    loop.sleep(2min);
    EXPECT_EQ(camera->progress(), Progress::kIdle);
    EXPECT_THAT(server.commandLines(), ElementsAre("PUT camera/0/abortexposure"));
    camera->start({.seconds = 60});
    server.requests.clear();
    EXPECT_EQ(expose(), Progress::kReady) << "a second exposure gives the first up";
    EXPECT_EQ(server.commandLines().front(), "PUT camera/0/abortexposure");
    camera->start({.seconds = 60});
    server.faults["PUT camera/0/abortexposure"] = kSilence;
    EXPECT_THAT(refusal([&] { camera->abort(); }), HasSubstr("doesn't answer"));
    EXPECT_EQ(camera->progress(), Progress::kIdle);
}

TEST_F(CameraTest, IsStoppedWhereItCantBeAborted) {
    for (const bool canStop : {true, false}) {
        server.values["camera/0/canabortexposure"] = false;
        server.values["camera/0/canstopexposure"] = canStop;
        camera->connect();
        camera->start({.seconds = 60});
        camera->abort();
        EXPECT_EQ(server.commandLines().back() == "PUT camera/0/stopexposure", canStop);
        EXPECT_EQ(camera->progress(), Progress::kIdle);
        camera->disconnect();
    }
}

TEST_F(CameraTest, AnExposureOfSomebodyElseIsAbortedFirst) {
    camera->connect();
    int trials = 0;
    const auto start = server.commands["camera/0/startexposure"];
    const auto answer = http.answer;
    http.answer = [&](const platform::HttpRequest& request) {
        if (request.url.ends_with("/startexposure") && ++trials == 1)
            return test::FakeReply{
                HttpAnswer{200, "application/json", R"({"ErrorNumber":1035,"ErrorMessage":"Exposing"})"}};
        return answer(request);
    };
    EXPECT_EQ(expose(), Progress::kReady);
    EXPECT_THAT(server.commandLines(), testing::Contains("PUT camera/0/abortexposure"));
    EXPECT_EQ(trials, 2);
    server.faults["PUT camera/0/startexposure"] = kDeviceError;
    EXPECT_EQ(refusal([&] { camera->start({}); }), "The gears are stuck");
    EXPECT_EQ(trials, 3) << "any other refusal counts";
    EXPECT_EQ(camera->progress(), Progress::kIdle);
}

const std::string kIsReady = "camera/0/imageready";
const std::string kState = "camera/0/camerastate";
const std::string kImage = "camera/0/imagearray";

/// Something goes wrong while the exposure is under way, and stays so.
TEST_F(CameraTest, WhatGoesWrongEndsTheExposureInTimeWithASentence) {
    const struct {
        const char* why;
        std::map<std::string, Fault> faults;
        std::map<std::string, Json> values;
        const char* says;  // empty: the picture comes nevertheless
        platform::Milliseconds within;
    } cases[] = {
        {"the server is gone", {{"", kRefused}}, {}, "can't be reached", 90s},
        {"the server forgot its devices", {{"", kNotFound}}, {}, "isn't known to its server any more", 90s},
        {"the driver fails at being ready", {{kIsReady, kDeviceError}}, {}, "The gears are stuck", 2s},
        {"the camera isn't connected any more", {{kIsReady, kNotConnected}}, {}, "Not connected", 90s},
        {"ready is nonsense", {{kIsReady, kWrongType}}, {}, "has stopped without a picture", 30s},
        {"the state isn't known", {{kState, kNotFound}}, {}, "", 12s},
        {"the state is an error", {{kState, kDeviceError}}, {}, "The gears are stuck", 2s},
        {"the camera reports an error", {}, {{kState, 5}}, "reports that the exposure failed", 2s},
        {"the camera goes idle", {}, {{kState, 0}}, "has stopped without a picture", 30s},
        {"the camera reads for ever", {}, {{kState, 3}}, "didn't deliver its picture in time", 140s},
        {"a start time that is none",
         {},
         {{"camera/0/lastexposurestarttime", "yesterday"}, {kIsReady, true}},
         "",
         12s},
        {"no duration", {{"camera/0/lastexposureduration", kNotImplemented}}, {}, "", 12s},
        {"the picture is cut", {{kImage, kCut}}, {}, "broke off", 30s},
        {"the picture doesn't come", {{kImage, kSilence}}, {}, "doesn't answer", 3100s},
        {"the picture is a web page", {{kImage, kWebPage}}, {}, "it sends a web page", 30s},
        {"the picture is a text", {{kImage, kNoJson}}, {}, "can't be read", 30s},
    };

    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        if (!camera->connected()) camera->connect();
        camera->start({.seconds = 10});
        loop.sleep(3s);
        server.faults = c.faults;
        for (const auto& [path, value] : c.values) {
            server.values[path] = value;
            ready.reset();
        }
        const auto start = now();
        finish();
        EXPECT_LE(now() - start, c.within);
        if (*c.says == '\0')
            EXPECT_EQ(camera->progress(), Progress::kReady) << failure();
        else
            EXPECT_THAT(failure(), HasSubstr(c.says));
        // The next one is as good as ever.
        server.faults.clear();
        restart();
        loop.sleep(30s);
        if (!camera->connected()) camera->connect();
        EXPECT_EQ(expose(), Progress::kReady);
    }
}

TEST_F(CameraTest, APictureWaitsUntilItsServerIsBack) {
    camera->connect();
    camera->start({.seconds = 5});
    loop.sleep(2s);
    server.faults[""] = kRefused;
    loop.sleep(40s);
    EXPECT_EQ(camera->progress(), Progress::kExposing);
    server.faults.clear();
    EXPECT_EQ(finish(), Progress::kReady);
    EXPECT_EQ(picture().image.width(), 2U);
}

TEST_F(CameraTest, APictureThatWasCutIsFetchedAgain) {
    camera->connect();
    int trials = 0;
    server.raw[kImage] = [&] {
        ++trials;
        server.faults.erase(kImage);
        return HttpAnswer{200, "application/imagebytes",
                          test::imageBytes(Element::kByte, 1, 1, std::vector<std::uint8_t>{9})};
    };
    server.faults[kImage] = kCut;
    const auto mend = loop.after(4s, [&] { server.faults.clear(); });
    EXPECT_EQ(expose(), Progress::kReady);
    EXPECT_EQ(trials, 1);
}

TEST_F(CameraTest, APictureLargerThanTheSensorIsRefused) {
    camera->connect();
    server.raw[kImage] = [] {
        return HttpAnswer{200, "application/imagebytes",
                          test::imageBytes(Element::kByte, 5, 1, std::vector<std::uint8_t>(5))};
    };
    EXPECT_EQ(expose(), Progress::kFailed);
    EXPECT_EQ(failure(), "The camera's picture can't be read: it is larger than the sensor.");
}

TEST_F(CameraTest, MayGoAtAnyMoment) {
    for (const auto moment : {0ms, 100ms, 700ms, 2400ms, 2500ms, 2600ms, 3000ms}) {
        camera = std::make_unique<Camera>(surroundings, kCamera, [](const auto&) {});
        camera->connect();
        camera->start({.seconds = 2});
        loop.sleep(moment);
        camera.reset();
        loop.sleep(10s);
        EXPECT_EQ(http.underWay(), 0U) << moment.count();
    }
}

// ---- with a filter wheel

struct FilterWheelTest : CameraTest {
    FilterWheelTest() {
        server.fill("filterwheel/0/", R"({"interfaceversion": 2, "connected": false,
                                          "names": ["Red", "", "H\u03b1"], "position": 0})");
        server.commands["filterwheel/0/position"] = [this](const test::Request& put) {
            server.values["filterwheel/0/position"] = -1;
            arrives = loop.after(3s, [this, to = std::stoi(put.parameters.at("Position"))] {
                server.values["filterwheel/0/position"] = to;
            });
        };
        camera = std::make_unique<Camera>(
            surroundings, kCamera, [](const auto&) {},
            [](const ServerAddress& server) {
                return DeviceRecord{"filterwheel", "", "The wheel", server, 0};
            });
    }

    platform::TimerHandle arrives;
};

TEST_F(FilterWheelTest, TurnsBeforeTheExposure) {
    camera->connect();
    EXPECT_THAT(camera->facts().filters, ElementsAre("Red", "Filter 2", "H\xce\xb1"));
    EXPECT_EQ(expose({.seconds = 1, .filter = 2}), Progress::kReady);
    const auto commands = server.commandLines();
    EXPECT_EQ(commands[commands.size() - 2], "PUT filterwheel/0/position?Position=2");
    EXPECT_GE(now(), 4s);
    EXPECT_EQ(words("FILTER"), "H\xce\xb1");
    expose({.seconds = 1, .filter = 2});
    EXPECT_EQ(std::count(commands.begin(), commands.end(), "PUT filterwheel/0/position?Position=2"), 1);
    EXPECT_EQ(refusal([&] { camera->start({.filter = 3}); }), "The wheel has no filter number 3.");
}

TEST_F(FilterWheelTest, TellsWhenItSticks) {
    camera->connect();
    server.commands["filterwheel/0/position"] = [this](const auto&) {
        server.values["filterwheel/0/position"] = -1;
    };
    EXPECT_EQ(refusal([&] { camera->start({.filter = 1}); }),
              "The wheel didn't turn to the filter Filter 2.");
    EXPECT_LE(now(), 62s);
    const auto stop = loop.after(5s, [this] { stopped = true; });
    EXPECT_THROW(camera->start({.filter = 1}), GivenUp);
}

TEST_F(FilterWheelTest, ACameraWithoutItsWheelIsStillACamera) {
    for (const Fault fault : {kRefused, kNotFound, kDeviceError}) {
        lines.clear();
        server.faults["filterwheel/0/names"] = fault;
        camera->connect();
        EXPECT_TRUE(camera->connected());
        EXPECT_THAT(told("The filter wheel can't be used: "), HasSubstr("used: "));
        EXPECT_EQ(expose(), Progress::kReady);
        camera->disconnect();
    }
}

}  // namespace
}  // namespace vantrel::hosts::alpaca
