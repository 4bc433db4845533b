#include "platesolve/catalog_setup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platesolve/solver_fields.h"
#include "platesolve/solving_world.h"

namespace vantrel::platesolve {
namespace {

using Item = platform::ComboBox::Item;
using testing::ElementsAre;

class Catalogs : public testing::Test, protected test::SolvingWorld {};

TEST_F(Catalogs, AreListedByNumber) {
    catalogs.restore();
    EXPECT_THAT(panel.cmbppCat.items(),
                ElementsAre(Item{"GSC-1.1", 0}, Item{"USNO-SA2.0", 1}, Item{"GSC-ACT", 3}, Item{"Tycho-2", 4},
                            Item{"USNO-A2.0", 5}, Item{"UCAC2", 6}, Item{"USNO-B", 7}, Item{"USNO-B-Net", 8},
                            Item{"NOMAD-Net", 9}));
    EXPECT_EQ(ppCatName(2), "");
    EXPECT_EQ(ppCatName(10), "");
}

TEST_F(Catalogs, AtStart) {
    struct Case {
        const char* stored;
        int number;
        const char* name;
        const char* folder;
    };
    const Case cases[] = {{nullptr, 3, "GSC-ACT", "C:\\"},
                          {"4", 4, "Tycho-2", "D:\\Tycho"},
                          {"2", 2, "", "C:\\"},
                          {"1e9", 3, "GSC-ACT", "C:\\"}};
    for (const Case& c : cases) {
        SolvingWorld world;
        if (c.stored != nullptr) world.settings.SaveSetting("Solve", "ppCatalog", c.stored);
        world.settings.SaveSetting("Solve", "ppCatPath4", "D:\\Tycho");
        world.catalogs.restore();
        EXPECT_EQ(world.catalogs.PinPointCatalog(), c.number);
        EXPECT_EQ(world.panel.cmbppCat.text(), c.name);
        EXPECT_EQ(world.solver.selectedCatalog(), c.name);
        EXPECT_EQ(world.panel.txtCatPath.text(), c.folder);
    }
}

// ---- solver fields

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
