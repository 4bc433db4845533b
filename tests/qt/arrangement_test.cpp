#include "qt/arrangement.h"

#include <array>

#include <gtest/gtest.h>

namespace vantrel::qt {
namespace {

constexpr WindowSizes kSizes{.main = {782, 690},
                             .mainLeast = {700, 320},
                             .imageLeast = {310, 280},
                             .log = {640, 420},
                             .logLeast = {220, 140},
                             .simulator = {830, 700},
                             .simulatorLeast = {240, 160}};

struct Desk {
    const char* name;
    QVector<QRect> screens;
    bool logApart;  // not below the simulator
};

TEST(Arrangement, CoversNothingThatHasToBeWatched) {
    const Desk desks[] = {{"netbook", {{0, 0, 1024, 600}}, false},
                          {"netbook with a panel", {{0, 28, 1024, 572}}, false},
                          {"small laptop", {{0, 0, 1366, 768}}, false},
                          {"old monitor", {{0, 0, 1280, 1024}}, true},
                          {"monitor", {{0, 0, 1920, 1080}}, true},
                          {"large monitor", {{0, 0, 2560, 1440}}, true},
                          {"two screens", {{0, 0, 1920, 1080}, {1920, 0, 1920, 1080}}, true},
                          {"laptop and monitor", {{0, 0, 1366, 768}, {-1920, 0, 1920, 1080}}, true}};
    for (const Desk& desk : desks) {
        SCOPED_TRACE(desk.name);
        const Arrangement places = arranged(desk.screens, kSizes);
        for (const QRect& place : {places.main, places.image, places.log, places.simulator}) {
            bool onOneScreen = false;
            for (const QRect& screen : desk.screens) onOneScreen = onOneScreen || screen.contains(place);
            EXPECT_TRUE(onOneScreen);
        }
        EXPECT_FALSE(places.main.intersects(places.image));
        for (const QRect& other : {places.log, places.simulator}) {
            EXPECT_FALSE(other.intersects(places.main));
            EXPECT_FALSE(other.intersects(places.image));
        }
        EXPECT_EQ(places.log.intersects(places.simulator), !desk.logApart);
        const auto holds = [](const QRect& place, const QSize& least) {
            return place.width() >= least.width() && place.height() >= least.height();
        };
        EXPECT_TRUE(holds(places.main, kSizes.mainLeast));
        EXPECT_TRUE(holds(places.image, kSizes.imageLeast));
        EXPECT_TRUE(holds(places.log, kSizes.logLeast));
        EXPECT_TRUE(holds(places.simulator, kSizes.simulatorLeast));
    }
}

TEST(Arrangement, GivesTheImageTheSecondScreen) {
    const QRect second(1920, 0, 2560, 1440);
    EXPECT_EQ(arranged({{0, 0, 1920, 1080}, second}, kSizes).image, second);
}

}  // namespace
}  // namespace vantrel::qt
