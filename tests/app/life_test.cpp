// The program's life from its first step to its last: in which order things happen, and what is left when one
// of them fails.

#include <filesystem>
#include <fstream>
#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/version.h"
#include "devices/imaging_world.h"
#include "program_world.h"
#include "support/journal.h"

namespace vantrel::app {
namespace {

using platform::Button;
using platform::CheckBox;
using platform::TextBox;
using testing::Contains;
using testing::ElementsAreArray;
using testing::HasSubstr;

constexpr const char* kLogs = "C:\\Users\\me\\My Documents\\Vantrel\\Message Logs";
constexpr const char* kSiteAlarm = "Error in observer site!\r\nPlease check Setup Tab";

/// Writes down in one list what the program does to the world: uses of outside programs, log lines, settings,
/// windows and pop-ups.
struct LifeWorld : test::ProgramWorld {
    std::vector<std::string> journal;
    std::vector<platform::Subscription> subscriptions;
    test::Camera camera;

    void begin() {
        build();
        subscriptions = {
            program->log().lineAdded.subscribe(
                [this](const std::string& line) { note("log " + line.substr(11)); }),
            settings.written.subscribe([this](const std::string& key, const std::string& value) {
                note("setting " + key + " = " + value);
            }),
            screen.shownChanged.subscribe([this](platform::Form& changed) {
                if (changed.name() != "frmPopupMsg")
                    note((changed.shown() ? "show " : "hide ") + changed.name());
                else if (changed.shown())
                    note("pop-up " + text("frmPopupMsg.txtMsg"));
            }),
        };
        program->start();
        noteUses();
    }
    void note(const std::string& text) {
        noteUses();
        journal.push_back(text);
    }
    void noteUses() {
        for (const auto& entry : host.takeJournal("*"))
            if (entry.kind != "get") journal.push_back(entry.object + " " + test::asText(entry));
    }
    void close() {
        form("frmMain").closeByOperator();
        pass(1);
        noteUses();
    }

    /// An imaging program whose window is open.
    void installMaxIm() {
        const std::string path = "C:\\Imaging\\program.exe";
        classes.install(
            "MaxIm.CCDCamera",
            {[&] { return std::make_shared<test::FakeMaxImCamera>(loop, camera); }, path, "", ""});
        classes.install(
            "MaxIm.Application",
            {[&] { return std::make_shared<test::FakeMaxImApplication>(loop, camera, 4.56); }, path, "", ""});
        windows.installProgram(path, {[] {}, "4.56"});
        windows.open({"MaxIm DL Version 4", "Frame"});
        settings.write("PolarAlign", "ImagingSoftware", "MaxIm");
    }
    /// From now on the member fails.
    void fail(const std::string& progId, const std::string& member, int number = 429) {
        host.inject({progId, member, {number, "Some.Source", "it broke"}, std::nullopt, 0, -1});
    }
    void answer(const std::string& progId, const std::string& member, const platform::Value& value) {
        host.inject({progId, member, {0, "", ""}, value, 0, -1});
    }
};

using Life = LifeWorld;

/// Leaves out the entries that only say where windows are and how long notices stay.
std::vector<std::string> withoutPlaces(const std::vector<std::string>& journal) {
    std::vector<std::string> rest;
    for (const std::string& entry : journal) {
        bool place = false;
        for (const char* key : {"Main.Popup", "Main.Log", "Main.Telescope"})
            place = place || entry.find(key) != std::string::npos;
        if (!place) rest.push_back(entry);
    }
    return rest;
}

/// Settings that are stored one after the other count as one entry.
std::vector<std::string> withSettingsAsOne(const std::vector<std::string>& journal) {
    std::vector<std::string> rest;
    for (const std::string& entry : journal) {
        const bool fields = entry.starts_with("setting ") && !entry.starts_with("setting Main.");
        const std::string shortened = fields ? "settings of the fields" : entry;
        if (!fields || rest.empty() || rest.back() != shortened) rest.push_back(shortened);
    }
    return rest;
}

TEST(LifeOfTheProgram, StartsInOrder) {
    Life life;
    life.installMaxIm();
    life.begin();
    const std::string loading = "pop-up Loading ASCOM Telescope\r\nPlease Wait";
    const std::vector<std::string> expected{
        // the platform
        "ScopeSim.Telescope create",
        // folders and log
        std::string("setting PolarAlign.LogPath = ") + kLogs,
        "setting PolarAlign.ImagePath = C:\\Users\\me\\My Documents\\Vantrel",
        "log OS: ",
        std::string("log Log folder: ") + kLogs,
        "show frmLog",
        "log Vantrel Version " + versionText(),
        // settings into the fields; options store themselves when they are selected
        "setting Main.SlewEast = True",
        "setting Main.SlewEast = True",
        "setting PolarAlign.PlateSolveThroughCCDSoft = True",
        // the main window's place
        "setting Main.MainTop = 60",
        "setting Main.MainLeft = 60",
        "setting Main.MainHeight = 560",
        "setting Main.MainScaleHeight = 560",
        "DriverHelper.Util create",
        // the imaging program, which chooses the plate-solve method that goes with it
        "setting PolarAlign.ImagingSoftware = MaxIm",
        "setting PolarAlign.ImagingSoftware = MaxIm",
        "MaxIm.Application create",
        "log MaxIm DL/CCD V 4.56 is the Imaging Software",
        "pop-up  Conecting to Camera \r\n Please wait ",
        "MaxIm.CCDCamera create",
        "MaxIm.CCDCamera put DisableAutoShutdown True",
        "MaxIm.CCDCamera create",
        "MaxIm.CCDCamera put LinkEnabled True",
        "PinPoint.Plate create",
        "PinPoint.plate create",
        "log PinPoint is connected",
        "setting PolarAlign.PlateSolveMethod = 0",
        // the telescope
        "setting Main.MyTelescopeID = ScopeSim.Telescope",
        loading,
        "ScopeSim.Telescope create",
        "pop-up  Connecting \r\n\r\nSimulated equatorial mount\r\n\r\n Please Wait ",
        "ScopeSim.Telescope put Connected True",
        "log Telescope Telescope Simulator is connected",
        "pop-up Telescope Simulator\r\n is connected",
        "show frmTelescope",
        loading,  // the window links the telescope as well, which is done already
        "DriverHelper.Profile create",
        "DriverHelper.Profile put DeviceType Utility",
        // the site, from the mount
        "setting Main.UseTelescopeSiteLocation = 1",
        "setting Main.UseTelescopeSiteLocation = True",
        "DriverHelper.Util call DegreesToDMS 50",
        "DriverHelper.Util call DegreesToDMS 10",
        "DriverHelper.Util call DMSToDegrees 10° 00' 00\"",
        "setting Main.SiteLongitude = 10",
        "DriverHelper.Util call DMSToDegrees 50° 00' 00\"",
        "setting Main.SiteLatitude = 50",
        // the check
        "DriverHelper.Util call DegreesToDMS 50",
        "DriverHelper.Util call DegreesToDMS 10",
        "log Telescope Site: Latitude = 50.0000, Longitude = 10.0000",
        "show frmMain",
    };
    EXPECT_THAT(withoutPlaces(life.journal), ElementsAreArray(expected));
}

TEST(LifeOfTheProgram, EndsInOrder) {
    Life life;
    life.installMaxIm();
    life.begin();
    life.journal.clear();
    life.close();
    const std::vector<std::string> expected{
        "setting Main.MainTop = 60",
        "setting Main.MainLeft = 60",
        "settings of the fields",
        "MaxIm.CCDCamera put DisableAutoShutdown True",
        "ScopeSim.Telescope put Connected False",
        "log Simulated equatorial mount is disconnected",
        "hide frmLog",
        "hide frmTelescope",
        "hide frmMain",
    };
    EXPECT_THAT(withSettingsAsOne(withoutPlaces(life.journal)), ElementsAreArray(expected));
}

/// What is left after a step failed.
struct Outcome {
    const char* what;
    std::function<void(LifeWorld&)> prepare;
    bool ends = false;                // at once, and as a failure
    std::vector<std::string> logged;  // parts of lines
    std::string instructions = "Polar Align Measurement Start";
    std::string box = {};  // the message box, its beginning
};

TEST(LifeOfTheProgram, EveryStepOfTheStartMayFail) {
    const Outcome rows[] = {
        {"no platform",
         [](LifeWorld& life) { life.classes.uninstall("ScopeSim.Telescope"); },
         true,
         {},
         "The ASCOM Platform is not",
         "The ASCOM Platform is not\r\ninstalled on this computer!!"},
        {"settings that can't be opened",
         [](LifeWorld& life) { life.settings.missing = true; },
         true,
         {},
         "Click Run",
         "Failed to open/create root registry key (5)"},
        {"a section that can't be created",
         [](LifeWorld& life) { life.settings.unwritable = "PolarAlign"; },
         true,
         {},
         "Click Run",
         "Failed to open/create section key PolarAlign."},
        {"the other section",
         [](LifeWorld& life) { life.settings.unwritable = "Main"; },
         true,
         {},
         "Click Run",
         "Failed to open/create section key Main."},
        {"no version record",
         [](LifeWorld& life) { life.desktop.version = std::nullopt; },
         false,
         {"OS: Error", "Vantrel Version", "Telescope Site: "}},
        {"a log folder that can't be made",
         [](LifeWorld& life) {
             const auto folder = life.folders.real("C:\\Users\\me");
             std::filesystem::create_directories(folder);
             std::ofstream(folder / "My Documents") << "in the way";
         },
         false,
         {"Log folder: C:\\Users\\me\\My Documents\\Vantrel\\Message Logs", "Vantrel Version",
          "Telescope Site: "}},
        {"no utility object",
         [](LifeWorld& life) { life.fail("DriverHelper.Util", "create"); },
         false,
         {"Error 429: it broke\r\nfrmMain Sub Form_Load", "is connected", kSiteAlarm},
         kSiteAlarm},
        {"an imaging program that can't be started",
         [](LifeWorld& life) {
             life.installMaxIm();
             life.fail("MaxIm.CCDCamera", "create");
         },
         false,
         {"MaxIm DL Camera could not be Connected", "is connected", "Telescope Site: "}},
        {"a driver that can't be created",
         [](LifeWorld& life) {
             life.settings.write("Main", "MyTelescopeID", "ScopeSim.Telescope");
             life.fail("ScopeSim.Telescope", "create");
         },
         false,
         {"Error 429: it broke\r\nmodComponents Sub ConnectTelescope", kSiteAlarm},
         kSiteAlarm},
        {"a driver that refuses the connection",
         [](LifeWorld& life) { life.fail("ScopeSim.Telescope", "Connected", -2147352567); },
         false,
         {"ASCOM Telescope: it broke"}},
        {"a mount that stays disconnected",
         [](LifeWorld& life) { life.answer("ScopeSim.Telescope", "Connected", false); },
         false,
         {"Simulated equatorial mount is not connected"},
         kSiteAlarm},
        {"no profile object",
         [](LifeWorld& life) { life.fail("DriverHelper.Profile", "create"); },
         false,
         {"Error 429: it broke\r\nfrmMain Sub Form_Load", "Telescope Site: "}},
        {"a profile object that refuses the device type",
         [](LifeWorld& life) { life.fail("DriverHelper.Profile", "DeviceType", 438); },
         false,
         {"Error 438: it broke\r\nfrmMain Sub Form_Load", "Telescope Site: "}},
        {"a mount that doesn't know its site",
         [](LifeWorld& life) { life.fail("ScopeSim.Telescope", "SiteLatitude", 438); },
         false,
         {"Error setting site position, check observer site entry for errors!", kSiteAlarm},
         kSiteAlarm},
        {"a latitude without a longitude",
         [](LifeWorld& life) {
             life.settings.write("Main", "UseTelescopeSiteLocation", "False");
             life.settings.write("Main", "SiteLatitude", "48.5");
         },
         false,
         {" error:  (0)", kSiteAlarm},
         kSiteAlarm},
        {"a latitude that is no number",
         [](LifeWorld& life) {
             life.settings.write("Main", "UseTelescopeSiteLocation", "False");
             life.settings.write("Main", "SiteLatitude", "north");
             life.settings.write("Main", "SiteLongitude", "11.5");
         },
         false,
         {"(13)", kSiteAlarm},
         kSiteAlarm},
    };
    for (const Outcome& row : rows) {
        SCOPED_TRACE(row.what);
        Life life;
        row.prepare(life);
        life.begin();
        life.pass(1);
        EXPECT_EQ(life.program->ended(), row.ends);
        EXPECT_EQ(life.program->failed(), row.ends);
        EXPECT_EQ(life.form("frmMain").shown(), !row.ends);
        EXPECT_EQ(life.control<Button>("frmMain.cmdRun").enabled(), true);
        EXPECT_FALSE(life.program->busy());
        EXPECT_THAT(life.text("frmMain.txtInstructions"), HasSubstr(row.instructions));
        for (const std::string& part : row.logged) EXPECT_THAT(life.logged(), Contains(HasSubstr(part)));
        EXPECT_EQ(life.dialogs.boxes.size(), row.box.empty() ? 0U : 1U);
        for (const auto& box : life.dialogs.boxes) EXPECT_TRUE(box.text.starts_with(row.box)) << box.text;
        if (!row.ends) life.close();
        EXPECT_TRUE(life.program->ended());
        EXPECT_TRUE(life.screen.shownForms().empty());
        for (const std::string& progId : life.classes.installed())
            EXPECT_EQ(life.host.newest(progId), nullptr) << progId << " is still held";
    }
}

TEST(LifeOfTheProgram, EveryStepOfTheEndMayFail) {
    const struct {
        const char* what;
        std::function<void(LifeWorld&)> prepare;  // when the program runs
        bool fails;                               // the program's exit tells of it
        const char* logged;
    } rows[] = {
        {"settings that can't be stored", [](LifeWorld& life) { life.settings.full = true; }, true,
         "is disconnected"},
        {"an imaging program that doesn't answer",
         [](LifeWorld& life) { life.fail("MaxIm.CCDCamera", "DisableAutoShutdown", 438); }, false,
         "is disconnected"},
        {"a driver that doesn't let go",
         [](LifeWorld& life) { life.fail("ScopeSim.Telescope", "Connected", -2147352567); }, false,
         "ASCOM Telescope: it broke"},
        {"a telescope that was disconnected before",
         [](LifeWorld& life) { life.control<Button>("frmTelescope.cmdDisconnectTelescope").press(); }, false,
         "Telescope link failed: Sub DisconnectTelescope"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Life life;
        life.installMaxIm();
        life.begin();
        life.pass(2);
        row.prepare(life);
        life.close();
        EXPECT_TRUE(life.program->ended());
        EXPECT_EQ(life.program->failed(), row.fails);
        EXPECT_THAT(life.logged(), Contains(HasSubstr(row.logged)));
        for (const platform::Form* window : life.screen.forms())
            EXPECT_FALSE(window->loaded()) << window->name();
        for (const std::string& progId : life.classes.installed())
            EXPECT_EQ(life.host.newest(progId), nullptr) << progId << " is still held";
    }
}

TEST(LifeOfTheProgram, EndsSoonWheneverItIsClosed) {
    constexpr int kSoon = 1200;  // milliseconds; a simulated exposure of one second ends first
    const struct {
        const char* what;
        std::function<void(LifeWorld&)> prepare;
        std::function<void(LifeWorld&)> operate;
        int longest;  // milliseconds until the last moment
    } rows[] = {
        {"while a telescope can't be connected",
         [](LifeWorld& life) { life.settings.write("Main", "MyTelescopeID", "TheSky.Telescope"); },
         {},
         14'000},
        {"in a series of exposures that waits for ever",
         [](LifeWorld& life) { life.settings.write("Main", "MyTelescopeID", "AxisSimulator.Telescope"); },
         [](LifeWorld& life) {
             life.control<TextBox>("frmMain.txtContinuousExposeDelay").type("1e308");
             life.control<CheckBox>("frmMain.chkExposeContinuousEnable").check(1);
             life.loop.post([&life] { life.control<Button>("frmMain.cmdExpose").click(); });
         },
         8'000},
    };
    for (const auto& row : rows)
        for (int moment = 10; moment < row.longest; moment += 330) {
            Life life;
            row.prepare(life);
            life.build();
            std::optional<platform::Milliseconds> ended;
            const auto ending = life.program->endedChanged.subscribe([&] { ended = life.time.sinceStart(); });
            const auto close =
                life.loop.after(platform::Milliseconds{moment}, [&] { life.program->close(); });
            life.program->start();
            if (row.operate && !life.program->ended()) row.operate(life);
            life.pass(30);
            ASSERT_TRUE(ended) << row.what << ", closed after " << moment << " ms";
            EXPECT_LE((*ended).count() - moment, kSoon) << row.what << ", closed after " << moment << " ms";
        }
}

}  // namespace
}  // namespace vantrel::app
