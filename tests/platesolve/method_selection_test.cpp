#include "platesolve/method_selection.h"

#include <gmock/gmock.h>

#include "platesolve/solving_world.h"

namespace vantrel::platesolve {
namespace {

using testing::IsEmpty;

class Selecting : public testing::Test, protected test::SolvingWorld {
  protected:
    std::optional<std::string> stored(const std::string& key) {
        return settings.root.read("PolarAlign", key);
    }
};

TEST_F(Selecting, MethodAtStart) {
    struct Case {
        const char* stored;
        const char* method;
    };
    for (const Case& c : {Case{"", ""}, Case{"0", "PP"}, Case{"1", "TheSky"}, Case{"x", ""}}) {
        SolvingWorld world;
        world.settings.SaveSetting("PolarAlign", "PlateSolveMethod", c.stored);
        world.selection.restore();
        EXPECT_EQ(world.state.PlateSolveMethod, c.method) << c.stored;
        EXPECT_EQ(world.panel.framePP.visible(), std::string(c.method) == "PP");
        EXPECT_EQ(world.panel.frameTheSky.visible(), std::string(c.method) == "TheSky");
        EXPECT_EQ(test::usesOf(world.host, "PinPoint.Plate", "create") > 0, std::string(c.method) == "PP");
    }
}

TEST_F(Selecting, NothingIsSolvedWithoutAMethod) {
    state.PlateSolved = true;
    EXPECT_FALSE(solver.SolvePlate("SavedImage.fit", 0, 0));
    EXPECT_FALSE(state.PlateSolved);
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(Selecting, TheWayToTheSky) {
    selection.restoreImageLink();
    EXPECT_TRUE(panel.optImageLinkCCDSoft.selected());
    panel.optAutoAstrometry.click();
    panel.optImageLinkTheSky.click();
    EXPECT_FALSE(selection.ImageLinkThroughCCDSoft());
    EXPECT_EQ(stored("PlateSolveThroughCCDSoft"), "False");
    panel.optImageLinkCCDSoft.click();
    EXPECT_TRUE(selection.ImageLinkThroughCCDSoft());
    EXPECT_EQ(stored("PlateSolveThroughCCDSoft"), "True");

    SolvingWorld other;
    other.settings.SaveSetting("PolarAlign", "PlateSolveThroughCCDSoft", "False");
    other.selection.restoreImageLink();
    EXPECT_TRUE(other.panel.optImageLinkTheSky.selected());
}

}  // namespace
}  // namespace vantrel::platesolve
