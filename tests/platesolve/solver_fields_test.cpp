#include "platesolve/solver_fields.h"

#include <gtest/gtest.h>

#include "platesolve/solving_world.h"

namespace vantrel::platesolve {
namespace {

class Fields : public testing::Test, protected test::SolvingWorld {
  protected:
    struct Case {
        platform::TextBox& box;
        const char* key;
        const char* initial;
        bool storedOnChange = true;
    };
    std::vector<Case> all() {
        return {{panel.txtSolveMinSiz, "MinSize", "2"},
                {panel.txtSolveMinBrt, "MinBrt", "200"},
                {panel.txtSolveMinSig, "MinSig", "4.0"},
                {panel.txtSolveFilter, "Filter", "0.0"},
                {panel.txtSolveScaleH, "ScaleH", "3.0"},
                {panel.txtSolveScaleV, "ScaleV", "3.0"},
                {panel.txtSolveMinStars, "MinStars", "0"},
                {panel.txtSolveMaxRes, "MaxRes", "0.0"},
                {panel.txtMaxSolveStars, "MaxSolveStars", "0", false},
                {panel.txtCatExp, "CatExp", "30"},
                {panel.txtCatMaxMag, "MaxMag", "20.0"},
                {panel.txtTheSkyImageScale, "TheSkyImageScale", "3.0"},
                {panel.txtTheSkyScreenFOV, "TheSkyScreenFOV", ""}};
    }
    std::optional<std::string> stored(const std::string& key) { return settings.root.read("Solve", key); }
};

TEST_F(Fields, KeepTheirTextsUnderTheirKeys) {
    fields.restore();
    for (const Case& c : all()) {
        EXPECT_EQ(c.box.text(), c.initial) << c.key;
        c.box.setText("7.5");
        EXPECT_EQ(stored(c.key).has_value(), c.storedOnChange) << c.key;
    }
    fields.save();
    for (const Case& c : all()) {
        EXPECT_EQ(stored(c.key), "7.5") << c.key;
        settings.SaveSetting("Solve", c.key, std::string("of ") + c.key);
    }
    fields.restore();
    for (const Case& c : all()) EXPECT_EQ(c.box.text(), std::string("of ") + c.key);
}

TEST_F(Fields, SpiralSearchIsATruthValue) {
    fields.restore();
    EXPECT_TRUE(panel.chkSpiralSearch.ticked());
    panel.chkSpiralSearch.setValue(0);
    fields.save();
    EXPECT_EQ(stored("SpiralSearch"), "False");
    fields.restore();
    EXPECT_FALSE(panel.chkSpiralSearch.ticked());
    panel.chkSpiralSearch.setValue(1);
    fields.save();
    EXPECT_EQ(stored("SpiralSearch"), "True");
}

TEST_F(Fields, ExpansionIsHeldBetween0And80WhenTheBoxIsLeft) {
    struct Text {
        const char* typed;
        const char* left;
    };
    panel.framePP.setVisible(true);
    for (const Text& t : {Text{"95", "80"}, Text{"-3", "0"}, Text{"80", "80"}, Text{"30.5", "30.5"},
                          Text{"0", "0"}, Text{"", ""}}) {
        panel.txtCatExp.type(t.typed);
        panel.txtCatExp.leave();
        EXPECT_EQ(panel.txtCatExp.text(), t.left);
        EXPECT_EQ(stored("CatExp"), t.left);
    }
}

TEST_F(Fields, TakeOnlyTheKeysOfNumbers) {
    panel.framePP.setVisible(true);
    panel.frameTheSky.setVisible(true);
    for (const Case& c : all()) {
        c.box.setText("1");
        for (const char key : std::string("x2,5-")) c.box.key(key);
        EXPECT_EQ(c.box.text(), "12.5") << c.key;
    }
}

}  // namespace
}  // namespace vantrel::platesolve
