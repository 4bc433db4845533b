#include "platesolve/catalog_setup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platesolve/pinpoint_probe.h"
#include "platesolve/solver_fields.h"
#include "platesolve/solver_tests.h"
#include "platesolve/solving_world.h"
#include "platform/image_array.h"

namespace vantrel::platesolve {
namespace {

using Item = platform::ComboBox::Item;
using testing::ElementsAre;
using testing::HasSubstr;

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

TEST_F(Catalogs, KeepTheFolderThatIsChosen) {
    catalogs.restore();
    panel.framePP.setVisible(true);
    dialogs.answers = {"F:\\GSC", ""};
    for (const char* folder : {"F:\\GSC", "c:\\"}) {
        panel.cmdSetDir.click();
        EXPECT_EQ(settings.root.read("Solve", "ppCatPath3"), folder);
    }
}

// ---- solver fields

class Fields : public testing::Test, protected test::SolvingWorld {};

TEST_F(Fields, ExpansionIsHeldBetween0And80WhenTheBoxIsLeft) {
    panel.framePP.setVisible(true);
    const std::pair<const char*, const char*> texts[] = {{"80.5", "80"},   {"-3", "0"}, {"80", "80"},
                                                         {"30.5", "30.5"}, {"0", "0"},  {"", ""}};
    for (const auto& [typed, left] : texts) {
        panel.txtCatExp.type(typed);
        panel.txtCatExp.leave();
        EXPECT_EQ(panel.txtCatExp.text(), left);
        EXPECT_EQ(settings.root.read("Solve", "CatExp"), left);
    }
}

TEST_F(Fields, TheSpiralSearchIsOnUnlessItWasSwitchedOff) {
    for (const auto& [stored, value] : {std::pair{"True", 1}, {"False", 0}}) {
        settings.SaveSetting("Solve", "SpiralSearch", stored);
        fields.restore();
        EXPECT_EQ(panel.chkSpiralSearch.value(), value);
    }
}

// ---- tests of the catalogue's folder

constexpr const char* kPlateProgram = "PinPoint.Plate";

class PathTest : public testing::Test, protected test::SolvingWorld {
  protected:
    PathTest() {
        catalogs.restore();
        panel.framePP.setVisible(true);
        panel.txtCatPath.setText("C:\\Stars");
    }

    /// What the button's test sends to its solver.
    std::vector<std::string> putsAndCalls() {
        forget();
        EXPECT_TRUE(panel.cmdTestCatPath.click());
        EXPECT_EQ(engine.objects, 0) << "the test keeps no object";
        EXPECT_EQ(panel.lblCatTest.caption(), "Test passed\r\n(see log)");
        std::vector<std::string> texts;
        for (const auto& entry : host.takeJournal(kPlateProgram)) {
            if (entry.kind != "put" && entry.kind != "call") continue;
            const bool image = entry.kind == "put" && entry.member == "ImageArray";
            texts.push_back(image ? "put ImageArray" : test::asText(entry));
        }
        return texts;
    }
};

TEST_F(PathTest, Probes) {
    EXPECT_TRUE(PinPointIsInstalled(host));
    EXPECT_TRUE(PinPointFullIsInstalled(host));
    engine.acceptsArrays = false;
    EXPECT_TRUE(PinPointIsInstalled(host));
    EXPECT_FALSE(PinPointFullIsInstalled(host));
    registry.uninstall(kPlateProgram);
    EXPECT_FALSE(PinPointIsInstalled(host));
    EXPECT_FALSE(PinPointFullIsInstalled(host));
    EXPECT_EQ(engine.objects, 0);

    const auto image = ppVirtualCamera(2);
    EXPECT_EQ(image->width(), 2U);
    EXPECT_EQ(image->height(), 2U);
    EXPECT_EQ(image->at(1, 1), 0);
}

TEST_F(PathTest, FullEditionLooksUpStarsAroundAFixedPosition) {
    panel.txtCatMaxMag.setText("14.5");
    auto actions = putsAndCalls();
    ASSERT_GT(actions.size(), 14U);
    EXPECT_THAT(actions[actions.size() - 2], HasSubstr("put ExposureStartTime"));
    actions.erase(actions.end() - 2);
    EXPECT_THAT(actions,
                ElementsAre("put ImageArray",  // of the probe
                            "put Catalog 3", "put CatalogPath C:\\Stars", "put CatalogMaximumMagnitude 20",
                            "put CatalogMinimumMagnitude -2", "put ImageArray", "put CatalogExpansion 0",
                            "put ArcsecPerPixelHoriz 600", "put ArcsecPerPixelVert 600", "put RollAngle 0",
                            "put Equinox 2000", "put ProjectionType 1", "put CatalogMinimumMagnitude -2",
                            "put CatalogMaximumMagnitude 14.5", "put RightAscension 0", "put Declination 0",
                            "call FindCatalogStars"));
}

TEST_F(PathTest, OtherEditionsSolveTheTestImage) {
    engine.acceptsArrays = false;
    state.StopRequested = state.PlateSolved = true;
    writeImage("VTL_Test_Image.fit");
    auto actions = putsAndCalls();
    EXPECT_FALSE(state.StopRequested);
    EXPECT_FALSE(state.PlateSolved);
    actions.erase(actions.begin());  // the probe
    EXPECT_THAT(
        actions,
        ElementsAre("call AttachFITS C:\\VTL_Test_Image.fit", "put Catalog 3", "put CatalogPath C:\\Stars",
                    "put CatalogMinimumMagnitude -2", "put CatalogMaximumMagnitude 20",
                    "put CatalogExpansion 0", "put ArcsecPerPixelHoriz 1.7", "put ArcsecPerPixelVert 1.7",
                    "put RollAngle 0", "put Equinox 2000", "put ProjectionType 1", "put RightAscension 6.5",
                    "put Declination -12.25", "call FindImageStars", "call FindCatalogStars", "call Solve"));
}

TEST_F(PathTest, MagnitudesOfTheTestImageByCatalog) {
    writeImage("VTL_Test_Image.fit");
    const std::map<std::string, std::string> faintest = {
        {"GSC-1.1", "20"}, {"USNO-SA2.0", "15"}, {"GSC-ACT", "20"}, {"Tycho-2", "20"}, {"USNO-A2.0", "15"},
        {"UCAC2", "20"},   {"USNO-B-Net", ""},   {"NOMAD-Net", ""}, {"USNO-B", ""}};
    for (const auto& [name, magnitude] : faintest) {
        panel.cmbppCat.choose(name);
        host.takeJournal("*");
        EXPECT_TRUE(tests.TestCatPath_PPLE());
        std::string sent;
        for (const auto& entry : host.takeJournal(kPlateProgram))
            if (entry.member == "CatalogMaximumMagnitude") sent = entry.arguments.back().toText();
        EXPECT_EQ(sent, magnitude) << name;
    }
}

}  // namespace
}  // namespace vantrel::platesolve
