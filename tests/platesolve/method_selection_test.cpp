#include "platesolve/method_selection.h"

#include <gtest/gtest.h>

#include "platesolve/solving_world.h"

namespace vantrel::platesolve {
namespace {

TEST(PlateSolver, SolvesNothingWithoutAMethod) {
    test::SolvingWorld world;
    world.state.PlateSolved = true;
    EXPECT_FALSE(world.solver.SolvePlate("SavedImage.fit", 0, 0));
    EXPECT_FALSE(world.state.PlateSolved);
}

TEST(ImageLinkThroughCCDSoft, IsTheOperatorsChoice) {
    test::SolvingWorld world;
    world.selection.restoreImageLink();
    EXPECT_TRUE(world.panel.optImageLinkCCDSoft.selected());
    world.panel.optImageLinkTheSky.select();
    EXPECT_FALSE(world.selection.ImageLinkThroughCCDSoft());
    world.panel.optImageLinkCCDSoft.select();
    EXPECT_TRUE(world.selection.ImageLinkThroughCCDSoft());
    EXPECT_EQ(world.settings.root.read("PolarAlign", "PlateSolveThroughCCDSoft"), "True");
}

}  // namespace
}  // namespace vantrel::platesolve
