#include "hosts/adjusted_camera.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/plain_camera.h"

namespace vantrel::hosts {
namespace {

using platform::CameraFacts;
using platform::CameraHardware;
using platform::CameraLevel;
using platform::CameraRange;
using testing::ElementsAre;
using Lines = std::vector<std::string>;

struct AdjustedCameraTest : testing::Test {
    AdjustedCameraTest() {
        plain->camera.gain = CameraLevel{100, CameraRange{0, 480}};
        plain->camera.offset = CameraLevel{.value = 0, .names = {"ISO 100", "ISO 200"}};
        plain->camera.canCool = true;
        plain->camera.coolingRange = CameraRange{-40, 30};
        plain->camera.cooling = false;
    }
    Lines done() { return std::exchange(plain->done, {}); }
    Lines told() { return std::exchange(lines, {}); }

    std::shared_ptr<test::PlainCamera> plain = std::make_shared<test::PlainCamera>();
    CameraWishes wishes;
    Lines lines;
    AdjustedCamera camera{plain, [this] { return wishes; },
                          [this](const std::string& line) { lines.push_back(line); }};
};

TEST_F(AdjustedCameraTest, FollowsWishesThatCanBeFulfilledAndTellsOfOthers) {
    const struct {
        CameraWishes wishes;
        Lines done;
        std::string told;
        std::function<void(CameraFacts&)> is = {};
    } cases[] = {
        {CameraWishes{}, Lines{}, ""},
        {CameraWishes{.gain = " 250 "}, Lines{"gain 250"}, ""},
        {CameraWishes{.gain = "100"}, Lines{}, ""},
        {CameraWishes{.gain = "500"}, Lines{}, "gain of Cam is left as it is: it takes 0 to 480, not 500"},
        {CameraWishes{.gain = "much"}, Lines{}, "gain of Cam is left as it is: \"much\" is no number"},
        {CameraWishes{.gain = "1"}, Lines{}, "gain of Cam is left as it is: it has none that can be set",
         [](CameraFacts& facts) { facts.gain->canSet = false; }},
        {CameraWishes{.offset = "iso 200"}, Lines{"offset 1"}, ""},
        {CameraWishes{.offset = "1"}, Lines{"offset 1"}, ""},
        {CameraWishes{.offset = "800"}, Lines{},
         "offset of Cam is left as it is: it takes ISO 100, ISO 200, not \"800\""},
        {CameraWishes{.cool = true, .celsius = "-10"}, Lines{"cool -10"}, ""},
        {CameraWishes{.cool = true, .celsius = "-60"}, Lines{},
         "cooling of Cam is left as it is: it takes -40 to 30, not -60"},
        {CameraWishes{.cool = true, .celsius = ""}, Lines{"cool 0"}, "",
         [](CameraFacts& facts) { facts.canCool = false; }},
        {CameraWishes{.cool = true, .celsius = "-10"}, Lines{},
         "cooling of Cam is left as it is: it has no cooler that can be set",
         [](CameraFacts& facts) {
             facts.canCool = false;
             facts.cooling.reset();
         }},
        {CameraWishes{.celsius = "-10"}, Lines{}, "", [](CameraFacts& facts) { facts.cooling = true; }},
    };
    const CameraFacts usual = plain->camera;
    for (const auto& c : cases) {
        plain->camera = usual;
        if (c.is) c.is(plain->camera);
        wishes = c.wishes;
        camera.connect();
        EXPECT_EQ(done(), c.done) << c.told;
        EXPECT_EQ(told(), c.told.empty() ? Lines{} : Lines{"The " + c.told});
        EXPECT_TRUE(camera.connected());
    }
}

TEST_F(AdjustedCameraTest, ARefusalCostsNoExposureAndIsToldOnce) {
    camera.connect();
    plain->refusal = "The gears are stuck";
    wishes = {.gain = "250"};
    camera.adjust();
    EXPECT_THAT(told(), ElementsAre("The gain of Cam is left as it is: The gears are stuck"));
    done();
    camera.start({});
    EXPECT_THAT(done(), ElementsAre("gain 250", "start")) << "tried again";
    EXPECT_THAT(told(), ElementsAre());
    plain->refusal.clear();
    camera.start({});
    camera.start({});
    EXPECT_THAT(done(), ElementsAre("gain 250", "start", "start"));
}

TEST_F(AdjustedCameraTest, ADriverThatHasForgottenIsToldAgainBeforeTheExposure) {
    wishes = {.gain = "250", .cool = true, .celsius = "-10"};
    int progress = 0;
    camera.onProgress = [&] { ++progress; };
    camera.connect();
    done();
    plain->camera.gain->value = 100;
    plain->camera.cooling = false;
    camera.start({});
    EXPECT_THAT(done(), ElementsAre("gain 250", "cool -10", "start"));
    plain->onProgress();
    EXPECT_EQ(progress, 1) << "what the hardware tells goes through";
}

TEST_F(AdjustedCameraTest, WhatIsExposedKeepsItsGain) {
    camera.connect();
    plain->state = CameraHardware::Progress::kExposing;
    wishes = {.gain = "250", .cool = true, .celsius = "-10"};
    camera.adjust();
    EXPECT_THAT(done(), ElementsAre("cool -10"));
    wishes.cool = false;
    camera.adjust();
    camera.adjust();
    EXPECT_THAT(done(), ElementsAre("warm up"));
    plain->state = CameraHardware::Progress::kIdle;
    camera.start({});
    EXPECT_THAT(done(), ElementsAre("gain 250", "start"));
}

}  // namespace
}  // namespace vantrel::hosts
