#include "platesolve/solver_fields.h"

#include <gtest/gtest.h>

#include "platesolve/solving_world.h"

namespace vantrel::platesolve {
namespace {

class Fields : public testing::Test, protected test::SolvingWorld {};

TEST_F(Fields, ExpansionIsHeldBetween0And80WhenTheBoxIsLeft) {
    panel.framePP.setVisible(true);
    const std::pair<const char*, const char*> texts[] = {{"95", "80"},     {"-3", "0"}, {"80", "80"},
                                                         {"30.5", "30.5"}, {"0", "0"},  {"", ""}};
    for (const auto& [typed, left] : texts) {
        panel.txtCatExp.type(typed);
        panel.txtCatExp.leave();
        EXPECT_EQ(panel.txtCatExp.text(), left);
        EXPECT_EQ(settings.root.read("Solve", "CatExp"), left);
    }
}

}  // namespace
}  // namespace vantrel::platesolve
