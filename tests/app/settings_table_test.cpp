// Every setting of the program in one table: what stands for it when nothing is stored, what stores it at
// once, what is stored at the end, and that the next start shows it.

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "program_world.h"
#include "support/plain_camera.h"

namespace vantrel::app {
namespace {

using platform::CameraFacts;
using platform::CameraLevel;
using platform::CameraRange;
using platform::CheckBox;
using platform::ComboBox;
using platform::Control;
using platform::Label;
using platform::MenuItem;
using platform::OptionButton;
using platform::TextBox;

using World = test::ProgramWorld;

std::string shown(World& world, const std::string& path) {
    Control* const found = world.screen.findControl(path);
    if (const auto* box = dynamic_cast<TextBox*>(found)) return box->text();
    if (const auto* list = dynamic_cast<ComboBox*>(found)) return list->text();
    if (const auto* box = dynamic_cast<CheckBox*>(found)) return std::to_string(box->value());
    if (const auto* option = dynamic_cast<OptionButton*>(found)) return option->selected() ? "on" : "off";
    if (const auto* item = dynamic_cast<MenuItem*>(found)) return item->checked() ? "on" : "off";
    throw std::logic_error("nothing to see: " + path);
}

void operate(World& world, const std::string& path, const std::string& text) {
    Control* const found = world.screen.findControl(path);
    if (auto* box = dynamic_cast<TextBox*>(found)) box->type(text);
    if (auto* list = dynamic_cast<ComboBox*>(found)) list->choose(text);
    if (auto* box = dynamic_cast<CheckBox*>(found)) box->check(text == "1" ? 1 : 0);
    if (auto* option = dynamic_cast<OptionButton*>(found)) option->click();
    if (auto* item = dynamic_cast<MenuItem*>(found)) item->click();
}

/// The dialogs that hold settings of their own.
void openEverything(World& world) {
    for (const char* window : {"frmOptions", "frmDevices", "frmPixelScale", "frmPolarPlot", "frmAdjust"})
        world.form(window).show();
    world.form("frmMain").find("framePP")->setVisible(true);
    world.form("frmMain").find("frameTheSky")->setVisible(true);
}

enum Stored {
    kNever = 0,
    kOnChange = 1,
    kOnLeave = 2,
    kAtEnd = 4,
    kAlways = kOnChange | kAtEnd,
};

struct Row {
    const char* section;
    const char* key;
    const char* control;
    const char* usual;  // what the control shows when nothing is stored
    const char* other;  // another value, as the operator enters it
    int when;
    const char* stored = other;  // what is stored for it
    const char* seen = stored;   // what the control shows for it at the next start
};

constexpr const char* kRun = "PolarAlign";
constexpr const char* kSolve = "Solve";
constexpr const char* kMain = "Main";
constexpr const char* kHosts = "Hosts";

const Row kRows[] = {
    {kRun, "PlateSolveMethod", "frmMain.optPlateSolveMethod(1)", "off", "", kAlways, "1", "on"},
    {kRun, "DeltaRA", "frmMain.txtDeltaRA", "5", "15", kOnChange},
    {kRun, "DelayAfterSlew", "frmMain.txtDelayAfterSlew", "5", "7", kOnLeave | kAtEnd},
    {kRun, "ExposeContinuousEnable", "frmMain.chkExposeContinuousEnable", "0", "1", kAlways},
    {kRun, "ContinuousExposeDelay", "frmMain.txtContinuousExposeDelay", "0", "2", kAlways | kOnLeave},
    {kRun, "ContinuousExposeInterval", "frmMain.txtContinuousExposeInterval", "1", "3", kAlways},
    {kRun, "PostExpDelay", "frmMain.txtPostExpDelay", "0", "4", kAtEnd},
    {kRun, "Plates", "frmMain.txtPlates", "3", "5", kAlways},
    {kRun, "SiteHeight", "frmMain.txtSiteHeight", "", "850", kAlways},
    {kRun, "AirPressure", "frmMain.txtAirPressure", "", "912", kAlways},
    {kRun, "AirTemperature", "frmMain.txtAirTemperature", "", "-10", kAlways},
    {kRun, "TurnByHand", "frmMain.chkTurnByHand", "0", "1", kAlways},
    {kRun, "PlateExposures", "frmMain.txtPlateExposures", "1", "2", kAlways},
    {kRun, "CrossHairEnable", "frmMain.chkCrossHairEnable", "0", "1", kAtEnd},
    {kRun, "CloseSound", "frmMain.chkCloseSound", "0", "1", kAlways},
    {kRun, "CrossHairWidth", "frmMain.cmbCrossHairWidth", "1", "3", kAlways},
    {kRun, "UseCCDSoftSubFrame", "frmMain.chkUseCCDSoftSubFrame", "0", "1", kAtEnd},
    {kRun, "ImagePath", "frmMain.txtImagePath", "C:\\Users\\me\\My Documents\\Vantrel", "D:\\Images", kAtEnd},
    {kRun, "SaveImages", "frmMain.chkSaveImages", "0", "1", kAtEnd},
    {kRun, "PlateSolveThroughCCDSoft", "frmMain.optImageLinkTheSky", "off", "", kOnChange, "False", "on"},
    {kRun, "frmMainOnTop", "frmMain.mnuSetOnTop", "off", "", kOnChange, "True", "on"},
    {kRun, "frmLogOnTop", "frmLog.mnuOnTop", "off", "", kOnChange, "True", "on"},
    {kRun, "EnableRestoreImagingSW", "frmOptions.chkEnableRestoreImagingSW", "0", "1", kAtEnd},
    {kRun, "ImagingSWVersionCheck", "frmOptions.chkImagingSWVersionCheck", "1", "0", kAtEnd},
    {kRun, "LeastSquares", "frmOptions.chkLeastSquares", "0", "1", kAtEnd},
    {kRun, "ClosingPlate", "frmOptions.chkClosingPlate", "0", "1", kAtEnd},
    {kRun, "ExactMark", "frmOptions.chkExactMark", "0", "1", kAtEnd},
    {kRun, "Tones", "frmAdjust.chkTones", "0", "1", kAtEnd},
    {kRun, "Spoken", "frmAdjust.chkSpoken", "0", "1", kAtEnd},
    {kRun, "OnThePhone", "frmAdjust.chkPhone", "0", "1", kOnChange},
    {kRun, "PictureExposure", "frmOptions.txtPictureExposure", "", "120", kOnChange},
    {kRun, "PictureGuided", "frmOptions.chkPictureGuided", "0", "1", kOnChange},
    {kRun, "PictureDeclination", "frmOptions.txtPictureDeclination", "", "-20", kOnChange},
    {kRun, "FromGuideStar", "frmOptions.txtFromGuideStar", "", "1.5", kOnChange},
    {kRun, "ShowHistory", "frmPolarPlot.chkHistory", "0", "1", kOnChange},
    {kRun, "GreenColors", "frmOptions.chkGreenColors", "0", "1", kAtEnd},
    {kSolve, "MinSize", "frmMain.txtSolveMinSiz", "2", "4", kAlways},
    {kSolve, "MinBrt", "frmMain.txtSolveMinBrt", "200", "300", kAlways},
    {kSolve, "MinSig", "frmMain.txtSolveMinSig", "4.0", "5.5", kAlways},
    {kSolve, "Filter", "frmMain.txtSolveFilter", "0.0", "1.2", kAlways},
    {kSolve, "MaxSolveStars", "frmMain.txtMaxSolveStars", "0", "80", kAtEnd},
    {kSolve, "ScaleH", "frmMain.txtSolveScaleH", "3.0", "1.8", kAlways},
    {kSolve, "ScaleV", "frmMain.txtSolveScaleV", "3.0", "1.9", kAlways},
    {kSolve, "MaxRes", "frmMain.txtSolveMaxRes", "0.0", "2.5", kAlways},
    {kSolve, "MinStars", "frmMain.txtSolveMinStars", "0", "6", kAlways},
    {kSolve, "CatExp", "frmMain.txtCatExp", "30", "40", kAlways | kOnLeave},
    {kSolve, "MaxMag", "frmMain.txtCatMaxMag", "20.0", "11", kAlways},
    {kSolve, "CatPath", "frmMain.txtCatPath", "C:\\", "D:\\Stars", kAtEnd, "D:\\Stars", "C:\\"},
    {kSolve, "ppCatPath3", "frmMain.txtCatPath", "C:\\", "D:\\Stars", kOnLeave | kAtEnd},
    {kSolve, "ppCatalog", "frmMain.cmbppCat", "GSC-ACT", "Tycho-2", kAtEnd, "4", "Tycho-2"},
    {kSolve, "ExposeInterval", "frmMain.txtExposeInterval", "10", "2.5", kAlways},
    {kSolve, "TheSkyScreenFOV", "frmMain.txtTheSkyScreenFOV", "", "1.5", kAlways},
    {kSolve, "TheSkyImageScale", "frmMain.txtTheSkyImageScale", "3.0", "2.1", kAlways},
    {kSolve, "SpiralSearch", "frmMain.chkSpiralSearch", "1", "0", kAtEnd, "False", "0"},
    {kSolve, "CamBin", "frmPixelScale.cmbCamBin", "3", "2", kOnChange},
    {kSolve, "FocalLengthUnits", "frmPixelScale.cmbUnits", "mm", "in", kOnChange},
    {kSolve, "TelescopeFL", "frmPixelScale.txtFL", "", "900", kOnChange},
    {kSolve, "CameraPixelXSize", "frmPixelScale.txtPixelSizeX", "", "5.4", kOnChange},
    {kSolve, "CameraPixelYSize", "frmPixelScale.txtPixelSizeY", "", "5.5", kOnChange},
    {kSolve, "UnbinnedCCDScaleH", "frmPixelScale.txtUnbinnedCCDScaleHoriz", "1.0", "1.2", kOnChange},
    {kSolve, "UnbinnedCCDScaleV", "frmPixelScale.txtUnbinnedCCDScaleVert", "1.0", "1.3", kOnChange},
    {kHosts, "IndiServers", "frmDevices.txtIndiServers", "localhost:7624", "pi:7624 pi:7625", kAtEnd},
    {kHosts, "AlpacaServers", "frmDevices.txtAlpacaServers", "", "192.168.4.1:11111", kAtEnd},
    {kHosts, "AlpacaPort", "frmDevices.txtAlpacaPort", "32227", "32228", kAtEnd},
    {kHosts, "MountPort", "frmDevices.txtMountPort", "", "/dev/ttyUSB0", kAtEnd},
    {kHosts, "MountBaudRate", "frmDevices.txtMountBaudRate", "", "9600", kAtEnd},
    {kHosts, "CameraGain", "frmDevices.txtCameraGain", "", "120", kOnLeave | kAtEnd},
    {kHosts, "CameraOffset", "frmDevices.txtCameraOffset", "", "30", kOnLeave | kAtEnd},
    {kHosts, "CameraCooling", "frmDevices.chkCameraCooling", "0", "1", kAlways},
    {kHosts, "CameraTemperature", "frmDevices.txtCameraTemperature", "-10", "-15", kOnLeave | kAtEnd},
    {kHosts, "TellMount", "frmDevices.chkTellMount", "0", "1", kAtEnd},
    {kMain, "AbortSlewOnStop", "frmDevices.chkAbortSlewOnStop", "1", "0", kAtEnd},
    {kMain, "SlewEast", "frmMain.optSlewWest", "off", "", kOnChange, "False", "on"},
    {kMain, "SiteLatitude", "frmMain.txtSiteLat", "", "48 30 00", kOnLeave, "48.5", ""},
    {kMain, "SiteLongitude", "frmMain.txtSiteLong", "", "-11 30 00", kOnLeave, "-11.5", ""},
};

TEST(Settings, EveryFieldShowsItsUsualValueOnAFreshMachine) {
    World world;
    world.start();
    openEverything(world);
    for (const Row& row : kRows) {
        if (std::string(row.key).starts_with("Site")) continue;  // the mount tells it
        EXPECT_EQ(shown(world, row.control), row.usual) << row.key;
    }
}

TEST(Settings, EveryFieldIsStoredWhenTheTableSays) {
    for (const Row& row : kRows) {
        World world;
        world.start();
        openEverything(world);
        const auto stored = [&] { return world.settings.read(row.section, row.key) == row.stored; };
        const auto forget = [&] { world.settings.remove(row.section, row.key); };
        forget();
        operate(world, row.control, row.other);
        EXPECT_EQ(stored(), (row.when & kOnChange) != 0) << row.key << " on a change";
        forget();
        world.screen.findControl(row.control)->leave();
        EXPECT_EQ(stored(), (row.when & kOnLeave) != 0) << row.key << " on leaving";
        forget();
        world.close();
        ASSERT_TRUE(world.program->ended());
        EXPECT_EQ(stored(), (row.when & kAtEnd) != 0) << row.key << " at the end";
    }
}

TEST(Settings, EveryFieldShowsAtTheNextStartWhatWasStored) {
    World world;
    for (const Row& row : kRows) world.settings.write(row.section, row.key, row.stored);
    world.settings.write(kSolve, "ppCatPath4", "D:\\Stars");
    world.settings.write(kMain, "UseTelescopeSiteLocation", "False");
    std::filesystem::create_directories(world.folders.real("D:\\Images"));
    std::filesystem::create_directories(world.folders.real("D:\\Logs"));
    world.settings.write(kRun, "LogPath", "D:\\Logs");
    world.start();
    openEverything(world);
    for (const Row& row : kRows) {
        // The site shows in another form, see below; the folder is the one of the catalogue that is chosen.
        if (row.seen[0] == '\0' || row.control == std::string("frmMain.txtCatPath")) continue;
        EXPECT_EQ(shown(world, row.control), row.seen) << row.key;
    }
    EXPECT_EQ(shown(world, "frmMain.txtCatPath"), "D:\\Stars");
    EXPECT_EQ(shown(world, "frmMain.txtLogPath"), "D:\\Logs");
    EXPECT_EQ(shown(world, "frmMain.txtSiteLat").substr(0, 2), "48");
    EXPECT_EQ(shown(world, "frmMain.txtSiteLong").substr(0, 3), "-11");
}

TEST(Settings, EveryWindowStandsWhereItWasLeft) {
    const struct {
        const char* window;
        const char* section;
        std::string keys;
    } places[] = {{"frmMain", kMain, "Main"},
                  {"frmLog", kMain, "Log"},
                  {"frmTelescope", kMain, "Telescope"},
                  {"frmPolarPlot", kRun, "PolarPlot"}};
    for (const auto& place : places) {
        World world;
        world.start();
        world.form(place.window).show();
        platform::Rectangle elsewhere = world.form(place.window).place();
        elsewhere.left = 321;
        elsewhere.top = 123;
        world.form(place.window).placeByOperator(elsewhere);
        world.close();
        EXPECT_EQ(world.settings.read(place.section, place.keys + "Left"), "321") << place.window;
        EXPECT_EQ(world.settings.read(place.section, place.keys + "Top"), "123") << place.window;

        world.settings.write(place.section, place.keys + "Left", "111");
        world.start();
        world.form(place.window).show();
        EXPECT_EQ(world.form(place.window).place().left, 111) << place.window;
        EXPECT_EQ(world.form(place.window).place().top, 123) << place.window;
    }
}

TEST(Settings, TheRestHasItsKeysToo) {
    World world;
    world.start();
    const auto stored = [&](const char* section, const char* key) {
        return world.settings.read(section, key).value_or("(nothing)");
    };
    EXPECT_EQ(stored(kMain, "MyTelescopeID"), "ScopeSim.Telescope");
    EXPECT_EQ(stored(kMain, "UseTelescopeSiteLocation"), "True") << "the mount tells its site";
    EXPECT_EQ(stored(kMain, "PopupTimer"), "1000") << "as long as the last notice asked for";
    EXPECT_EQ(stored(kMain, "MainHeight"), std::to_string(world.form("frmMain").place().height));
    EXPECT_EQ(stored(kRun, "LogPath"), "C:\\Users\\me\\My Documents\\Vantrel\\Message Logs");
    EXPECT_EQ(stored(kRun, "ImagingSoftware"), "(nothing)") << "none is installed";
    for (const char* key : {"PopupMsgTop", "PopupMsgLeft", "LogHeight", "LogWidth", "MainScaleHeight"})
        EXPECT_NE(stored(kMain, key), "(nothing)") << key;
    world.close();
    EXPECT_EQ(stored(kSolve, "SolveMode"), "0");
    EXPECT_EQ(stored("Find", "BlinkMode"), "0");
}

TEST(Settings, NumericBoxesTakeOnlyTheKeysOfNumbers) {
    World world;
    world.start();
    openEverything(world);
    const auto expectKeys = [&](const char* control, const std::string& typed, const char* text) {
        auto& box = world.control<TextBox>(control);
        box.setText("1");
        for (const char key : typed) box.key(key);
        EXPECT_EQ(box.text(), text) << control;
    };
    expectKeys("frmMain.txtDeltaRA", "2a.3,#-4", "123#4");
    expectKeys("frmMain.txtExposeInterval", "0,5\r", "10.5");
    expectKeys("frmMain.txtDelayAfterSlew", "x7\b8", "18");
    expectKeys("frmMain.txtPostExpDelay", "a-1,5", "1a-1,5");
    for (const char* control :
         {"frmMain.txtContinuousExposeDelay", "frmMain.txtContinuousExposeInterval",
          "frmMain.txtMaxSolveStars", "frmMain.txtSolveMinSiz", "frmMain.txtSolveMinBrt",
          "frmMain.txtSolveMinSig", "frmMain.txtSolveFilter", "frmMain.txtSolveScaleH",
          "frmMain.txtSolveScaleV", "frmMain.txtSolveMinStars", "frmMain.txtSolveMaxRes", "frmMain.txtCatExp",
          "frmMain.txtCatMaxMag", "frmMain.txtTheSkyImageScale", "frmMain.txtTheSkyScreenFOV",
          "frmPixelScale.txtFL", "frmPixelScale.txtPixelSizeX", "frmPixelScale.txtPlateScaleVert"})
        expectKeys(control, "x2,5-e", "12.5");
}

// ---- the camera in the window of the devices, and the binnings that are offered

struct CameraInWindows : testing::Test, test::ProgramWorld {
    void startWithCamera() {
        program.emplace(platform::Machine{loop,
                                          host,
                                          settings,
                                          folders,
                                          screen,
                                          dialogs,
                                          desktop,
                                          windows,
                                          {},
                                          nullptr,
                                          {},
                                          {},
                                          [this]() -> const platform::CameraHardware& { return camera; },
                                          [this] { ++adjusted; }});
        program->start();
    }
    std::string reading(const char* label) {
        return control<Label>(std::string("frmDevices.lblCamera") + label).caption();
    }
    std::string reachable() {
        std::string names;
        for (const char* name :
             {"txtCameraGain", "txtCameraOffset", "chkCameraCooling", "txtCameraTemperature"})
            if (screen.findControl(std::string("frmDevices.") + name)->reachable()) names += name + 9;
        return names;
    }
    std::vector<std::string> binnings() {
        std::vector<std::string> texts;
        for (const auto& item : control<ComboBox>("frmPixelScale.cmbCamBin").items())
            texts.push_back(item.text.english());
        return texts;
    }

    test::PlainCamera camera;
    int adjusted = 0;
};

TEST_F(CameraInWindows, SaysWhatItHasAndTakesNoMore) {
    const std::pair<CameraFacts, const char*> cases[] = {
        {{}, "This camera has none; This camera has none; This camera has no cooler; "},
        {{.temperature = 12.34, .canCool = false, .gain = CameraLevel{120}},
         "120; This camera has none; 12.3 °C, no cooler; Gain"},
        {{.temperature = -9.96,
          .canCool = true,
          .gain = CameraLevel{.value = 7, .canSet = false},
          .offset = CameraLevel{10, CameraRange{0, 100}}},
         "7, can't be set; 10, takes 0 to 100; -10.0 °C; OffsetCoolingTemperature"},
        {{.temperature = -10,
          .canCool = true,
          .cooling = true,
          .coolerPower = 39.6,
          .gain = CameraLevel{.value = 1, .names = {"ISO 100", "ISO 200"}}},
         "ISO 200; This camera has none; -10.0 °C, cooler at 40 %; GainCoolingTemperature"},
        {{.temperature = 20, .canCool = true, .cooling = false, .coolerPower = 0},
         "This camera has none; This camera has none; 20.0 °C, cooler off; CoolingTemperature"},
        {{.cooling = true}, "This camera has none; This camera has none; cooler on; Cooling"},
    };
    startWithCamera();
    form("frmDevices").show();
    EXPECT_EQ(reading("Cooling"), "The camera is not connected");
    EXPECT_EQ(reachable(), "GainOffsetCoolingTemperature");
    camera.on = true;
    for (const auto& [facts, told] : cases) {
        camera.camera = facts;
        pass(1.1);
        EXPECT_EQ(reading("Gain") + "; " + reading("Offset") + "; " + reading("Cooling") + "; " + reachable(),
                  told);
    }
}

TEST_F(CameraInWindows, IsAdjustedWhenTheOperatorHasChangedSomething) {
    startWithCamera();
    form("frmDevices").show();
    auto& gain = control<TextBox>("frmDevices.txtCameraGain");
    gain.type("120");
    EXPECT_EQ(adjusted, 0) << "he is typing";
    gain.leave();
    EXPECT_EQ(adjusted, 1);
    gain.leave();
    EXPECT_EQ(adjusted, 1);
    control<CheckBox>("frmDevices.chkCameraCooling").check(1);
    EXPECT_EQ(adjusted, 2);
    control<TextBox>("frmDevices.txtCameraTemperature").type("-15");
    form("frmDevices").closeByOperator();
    EXPECT_EQ(adjusted, 3);
    form("frmDevices").show();
    form("frmDevices").closeByOperator();
    EXPECT_EQ(adjusted, 3);
    EXPECT_EQ(settings.read("Hosts", "CameraGain"), "120");
    EXPECT_EQ(settings.read("Hosts", "CameraCooling"), "1");
    EXPECT_EQ(settings.read("Hosts", "CameraTemperature"), "-15");
}

TEST_F(CameraInWindows, BinningsAreThoseThatItTakes) {
    useImagingProgram("BuiltIn");
    startWithCamera();
    camera.camera.maxBinX = camera.camera.maxBinY = 2;
    form("frmPixelScale").show();
    EXPECT_THAT(binnings(), testing::ElementsAre("1", "2", "3", "4")) << "until it is known";
    EXPECT_EQ(control<ComboBox>("frmPixelScale.cmbCamBin").text(), "3");
    camera.on = true;
    pass(1.1);
    EXPECT_THAT(binnings(), testing::ElementsAre("1", "2"));
    EXPECT_EQ(control<ComboBox>("frmPixelScale.cmbCamBin").text(), "2");
    EXPECT_EQ(settings.read("Solve", "CamBin"), "2");
    EXPECT_TRUE(
        hasLogged("Camera binning 3 is more than the camera takes: it is 2 from now on, and the image scale "
                  "has to be that "
                  "of it"));
    camera.camera.maxBinX = 8;
    camera.camera.maxBinY = 6;
    pass(1.1);
    EXPECT_EQ(binnings().size(), 6U);
    EXPECT_EQ(control<ComboBox>("frmPixelScale.cmbCamBin").text(), "2");
}

}  // namespace
}  // namespace vantrel::app
