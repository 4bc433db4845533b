#include "platesolve/catalog_setup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platesolve/pinpoint_probe.h"
#include "platesolve/scale_calculator.h"
#include "platesolve/solver_fields.h"
#include "platesolve/solver_tests.h"
#include "platesolve/solving_world.h"
#include "platform/image_array.h"

namespace vantrel::platesolve {
namespace {

using Item = platform::ComboBox::Item;
using test::answeringNo;
using test::failing;
using test::Prepare;
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
    panel.cmbppCat.choose("USNO-B");
    panel.txtCatPath.type("D:\\B");
    for (const auto& [catalog, key] : {std::pair{"USNO-B-Net", "ppCatPath8"}, {"NOMAD-Net", "ppCatPath9"}}) {
        panel.lblCatTest.setCaption("Test passed");
        panel.cmbppCat.choose(catalog);
        EXPECT_EQ(panel.txtCatPath.text(), "Internet");
        EXPECT_EQ(settings.root.read("Solve", key), "Internet");
        EXPECT_EQ(panel.lblCatTest.caption(), "");
    }
    panel.cmbppCat.choose("USNO-B");
    EXPECT_EQ(panel.txtCatPath.text(), "D:\\B") << "typed, and stored by the other choice";
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

TEST(PathTests, SayWhatTheyFindAndEveryFailure) {
    using World = test::SolvingWorld;
    const auto onImage = [](const Prepare& more) -> Prepare {
        return [=](World& world) {
            world.engine.acceptsArrays = false;
            world.writeImage("VTL_Test_Image.fit");
            more(world);
        };
    };
    const std::string full =
        "\n** PinPoint test **\nCatalog: GSC-ACT\nPath: C:\\Stars\n"
        "Position:  RA hms 0 to 1 Dec dms 0 to 1\nField search = 1.0 x 1.0 (degrees)\n";
    const std::string image = "\n** PinPoint LE test **\n", catalog = "Catalog: GSC-ACT\nPath: C:\\Stars\n";
    const std::string fullFailed = full + "PinPoint test failed\n";
    const std::string imageFailed = catalog + "PinPoint LE test failed\n  \n";
    const std::string error = "Fake.Source error: it broke (-7)\n";
    const struct {
        const char* why;
        Prepare prepare;
        std::string logged;
        bool passed = false;
    } cases[] = {
        {"full edition", [](World&) {}, full + "PinPoint test passed with 57 stars found\n", true},
        {"a failing step doesn't keep the others from running", failing(kPlateProgram, "Equinox"),
         error + fullFailed},
        {"a failing look-up", failing(kPlateProgram, "FindCatalogStars"), error + fullFailed},
        {"a magnitude that is no number", [](World& world) { world.panel.txtCatMaxMag.setText("faint"); },
         "Vantrel error: Type mismatch (13)\n" + fullFailed},
        {"stars that can't be counted", failing(kPlateProgram, "CatalogStars"), full + error},
        {"a folder that is refused", failing(kPlateProgram, "CatalogPath"), error},
        {"no PinPoint", failing(kPlateProgram, "create"), "\nPinPoint is not installed\n"},
        {"a stop", [](World& world) { world.state.StopRequested = true; }, ""},
        {"test image solved", onImage([](World&) {}),
         "\n" + image + catalog +
             "Test image solved using 33 stars, average residual is 0.40 arcsec, order =4\n"
             " RA = 05h 30m 36.000s\n Dec = 20° 15' 00.00\"\n"
             " Roll = 30.000 HScale = 2.500 VScale = 2.400\n  \n",
         true},
        {"no test image",
         onImage([](World& world) { world.settings.SaveSetting("PolarAlign", "ImagePath", "E:"); }),
         "\nCould not open E:\\VTL_Test_Image.fit\n(mod TestCatPathPPLE)\n"},
        {"attached at the second try, without stars", onImage([&](World& world) {
             answeringNo("AttachFITS", 1)(world);
             answeringNo("FindImageStars")(world);
         }),
         "\n" + image + " \n" + imageFailed},
        {"never attached", onImage(answeringNo("AttachFITS")), "\nAttachFITS Failed\n"},
        {"no solution", onImage(answeringNo("Solve")), "\n" + image + " \n" + imageFailed},
        {"an error during the test", onImage(failing(kPlateProgram, "FindCatalogStars")),
         "\n" + error + image + " it broke\n" + imageFailed},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        World world;
        world.catalogs.restore();
        world.panel.framePP.setVisible(true);
        world.panel.txtCatPath.setText("C:\\Stars");
        c.prepare(world);
        world.panel.cmdTestCatPath.click();
        EXPECT_EQ(test::logOf(world), c.logged);
        EXPECT_EQ(world.panel.lblCatTest.caption(),
                  c.passed ? "Test passed\r\n(see log)" : "Test failed\r\n(see log)");
        EXPECT_TRUE(world.panel.cmdTestCatPath.enabled());
    }
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

// ---- the image-scale calculator

struct Calculator : testing::Test, test::SolvingWorld {
    Calculator() {
        for (const char* key : {"ScaleH", "ScaleV"}) settings.SaveSetting("Solve", key, "3.6");
        panel.framePP.setVisible(true);
        panel.cmdGetImageScalePP.click();
    }
    void type(const char* focalLength, const char* unit, const char* pixelX, const char* pixelY,
              const char* binning) {
        window.txtFL.type(focalLength);
        window.cmbUnits.choose(unit);
        window.txtPixelSizeX.type(pixelX);
        window.txtPixelSizeY.type(pixelY);
        window.cmbCamBin.setText(binning);
    }
    std::string shown() {
        std::string texts;
        for (const std::string& text :
             {window.txtPlateScaleHoriz.text(), window.txtPlateScaleVert.text(), window.txtFL.text()})
            texts += text + " ";
        return texts + window.cmbUnits.text();
    }
    std::string stored(const char* key) { return settings.root.read("Solve", key).value_or("(nothing)"); }

    frmPixelScale window{screen};
    ScaleCalculator calculator{window, panel, settings, log, [] { return std::nullopt; }};
};

TEST_F(Calculator, CalculatesFromWhatIsTyped) {
    EXPECT_TRUE(window.shown() && window.onTop());
    EXPECT_EQ(stored("FocalLengthUnits") + stored("UnbinnedCCDScaleH"), "(nothing)(nothing)")
        << "opening the window stores nothing";
    const struct {
        const char* why;
        const char *focalLength, *unit, *pixelX, *pixelY, *binning;
        const char *recomputed, *calculated;
    } cases[] = {
        {"millimetres", "2000", "mm", "9", "6", "2", "1.854 1.236 2000 mm", "1.854 1.236 2000 mm"},
        {"inches become millimetres", "80", "in", "9", "18", "2", "1.825 3.65 80 in", "1.825 3.65 2032 mm"},
        {"rounded to micrometres", "10.0001", "in", "5", "5", "1", "4.055 4.055 10.0001 in",
         "4.055 4.055 254.003 mm"},
        {"a comma", "530", "mm", "3,8", "3.76", "1", "1.477 1.461 530 mm", "1.477 1.461 530 mm"},
        {"half typed", "2000", "mm", "9.", "9", "2", "1.854 1.854 2000 mm", "1.854 1.854 2000 mm"},
        {"no pixel size", "2000", "in", "", "9", "2", "3.6 3.6 2000 in", "3.6 3.6 2000 in"},
        {"no height of a pixel", "2000", "mm", "9", "", "2", "3.6 3.6 2000 mm", "3.6 3.6 2000 mm"},
        {"no focal length", "0", "in", "9", "9", "2", "3.6 3.6 0 in", "3.6 3.6 0 in"},
        {"negative", "-5", "mm", "9", "9", "2", "3.6 3.6 -5 mm", "3.6 3.6 -5 mm"},
        {"not a number", "2000", "in", "9 um", "9", "2", "3.6 3.6 2000 in", "3.6 3.6 2000 in"},
        {"not a binning", "2000", "mm", "9", "9", "two", "3.6 3.6 2000 mm", "3.6 3.6 2000 mm"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        window.unload();
        window.show();
        type(c.focalLength, c.unit, c.pixelX, c.pixelY, c.binning);
        calculator.recompute();
        EXPECT_EQ(shown(), c.recomputed);
        window.cmdCalculate.click();
        EXPECT_EQ(shown(), c.calculated);
        EXPECT_EQ(stored("TelescopeFL") + " " + stored("FocalLengthUnits"),
                  window.txtFL.text() + " " + window.cmbUnits.text());
        EXPECT_EQ(stored("CameraPixelYSize") + " " + stored("CamBin"),
                  std::string(c.pixelY) + " " + c.binning);
        EXPECT_EQ(stored("ScaleH"), "3.6") << "the solver's scale is the operator's to change";
    }
    EXPECT_TRUE(log.lines.empty());
}

TEST_F(Calculator, LeavesAScaleThatIsTypedUntilSomethingElseChanges) {
    type("2000", "mm", "9", "6", "2");
    calculator.recompute();
    window.txtPlateScaleVert.type("7.");
    calculator.recompute();
    EXPECT_EQ(window.txtPlateScaleVert.text(), "7.");
    window.txtFL.type("1000");
    calculator.recompute();
    EXPECT_EQ(window.txtPlateScaleVert.text(), "2.472");
    window.mnuExit.click();
    EXPECT_FALSE(window.shown());
    window.txtFL.setText("500");
    calculator.recompute();
    EXPECT_EQ(window.txtPlateScaleVert.text(), "2.472") << "the window is closed";
    panel.frameTheSky.setVisible(true);
    panel.cmdGetImageScaleTheSky.click();
    EXPECT_EQ(window.txtPlateScaleVert.text() + " " + window.txtFL.text(), "3.6 500");
}

}  // namespace
}  // namespace vantrel::platesolve
