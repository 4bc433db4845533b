// The program's life from its first step to its last: in which order things happen, and what is left when one
// of them fails.

#include <filesystem>
#include <fstream>
#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/version.h"
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
constexpr const char* kSimulator = "AxisSimulator.Telescope";
constexpr const char* kSiteAlarm = "Error in observer site!\r\nPlease check Setup Tab";

/// Writes down in one list what the program does to the world: uses of outside programs, log lines, settings,
/// windows and pop-ups.
struct Life : test::ProgramWorld {
    std::vector<std::string> journal;
    std::vector<platform::Subscription> subscriptions;

    void begin() {
        build();
        subscriptions = {
            program->log().lineAdded.subscribe(
                [this](const std::string& line) { note("log " + line.substr(11)); }),
            settings.written.subscribe([this](const std::string& key, const std::string& value) {
                if (!isPlace(key)) note("setting " + key + " = " + value);
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
    /// Where windows are and how long notices stay.
    static bool isPlace(const std::string& key) {
        return key.starts_with("Main.Popup") || key.starts_with("Main.Log") ||
               key.starts_with("Main.Telescope");
    }
    void note(const std::string& text) {
        noteUses();
        journal.push_back(text);
    }
    void noteUses() {
        for (const auto& entry : host.takeJournal("*"))
            if (entry.kind != "get") journal.push_back(entry.object + " " + test::asText(entry));
    }
    void expectNothingLeft() {
        EXPECT_TRUE(program->ended());
        for (const platform::Form* window : screen.forms()) EXPECT_FALSE(window->loaded()) << window->name();
        for (const std::string& progId : classes.installed())
            EXPECT_EQ(host.newest(progId), nullptr) << progId << " is still held";
    }
};

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
    life.useImagingProgram("MaxIm");
    life.begin();
    const std::string loading = "pop-up Loading ASCOM Telescope\r\nPlease Wait";
    const std::vector<std::string> expected{
        // the platform
        "ScopeSim.Telescope create",
        // folders and log
        std::string("setting PolarAlign.LogPath = ") + kLogs,
        "setting PolarAlign.ImagePath = C:\\Users\\me\\My Documents\\Vantrel",
        "log OS: Starry Linux 3",
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
    EXPECT_THAT(life.journal, ElementsAreArray(expected));
}

TEST(LifeOfTheProgram, EndsInOrder) {
    Life life;
    life.useImagingProgram("MaxIm");
    life.begin();
    life.journal.clear();
    int endings = 0;
    const auto ending = life.program->endedChanged.subscribe([&] { ++endings; });
    life.form("frmMain").closeByOperator();
    EXPECT_FALSE(life.program->ended()) << "the rest comes from a handler of its own";
    life.close();
    life.noteUses();
    EXPECT_EQ(endings, 1);
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
    EXPECT_THAT(withSettingsAsOne(life.journal), ElementsAreArray(expected));
}

using Prepare = std::function<void(Life&)>;

/// The member fails from now on.
Prepare failing(const char* progId, const char* member, int number = 429) {
    return [=](Life& life) {
        life.host.inject({progId, member, {number, "Some.Source", "it broke"}, std::nullopt, 0, -1});
    };
}
Prepare stored(const char* key, const char* value) {
    return [=](Life& life) { life.settings.write("Main", key, value); };
}
Prepare both(const Prepare& first, const Prepare& second) {
    return [=](Life& life) {
        first(life);
        second(life);
    };
}
Prepare withMaxIm(const Prepare& more) {
    return both([](Life& life) { life.useImagingProgram("MaxIm"); }, more);
}
void uninstallPlatform(Life& life) { life.classes.uninstall("ScopeSim.Telescope"); }

TEST(LifeOfTheProgram, EndsAtOnceWhenItCanNotStart) {
    const struct {
        const char* what;
        Prepare prepare;
        const char* box;  // its beginning
    } rows[] = {
        {"no platform", uninstallPlatform, "The ASCOM Platform is not\r\ninstalled on this computer!!\r\n"},
        {"settings that can't be opened", [](Life& life) { life.settings.missing = true; },
         "Failed to open/create root registry key (5)"},
        {"a section that can't be created", [](Life& life) { life.settings.unwritable = "PolarAlign"; },
         "Failed to open/create section key PolarAlign."},
        {"the other section", [](Life& life) { life.settings.unwritable = "Main"; },
         "Failed to open/create section key Main."},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Life life;
        row.prepare(life);
        life.begin();
        EXPECT_TRUE(life.program->failed());
        ASSERT_EQ(life.dialogs.boxes.size(), 1U);
        EXPECT_TRUE(life.dialogs.boxes[0].text.starts_with(row.box)) << life.dialogs.boxes[0].text;
        const bool told = life.text("frmMain.txtInstructions") == life.dialogs.boxes[0].text;
        EXPECT_EQ(told, row.what == std::string("no platform"));
        EXPECT_FALSE(life.settings.hasSection("Solve")) << "what was never read must not be stored";
        life.expectNothingLeft();
    }
}

/// Parts of log lines, in any order.
template <typename... Parts>
std::vector<std::string> logs(const Parts&... parts) {
    return {parts...};
}

TEST(LifeOfTheProgram, EveryStepOfTheStartMayFail) {
    const char* const ready = "Polar Align Measurement Start";
    const char* const site = "Telescope Site: ";
    const char* const linked = "is connected";
    const Prepare ownSite = stored("UseTelescopeSiteLocation", "False");
    const struct {
        const char* what;
        Prepare prepare;
        const char* instructions;
        std::vector<std::string> logged;
    } rows[] = {
        {"no platform, but a telescope", both(uninstallPlatform, stored("MyTelescopeID", kSimulator)), ready,
         logs("Telescope Polar Axis Simulator is connected")},
        {"no version record", [](Life& life) { life.desktop.version = std::nullopt; }, ready,
         logs("OS: Error", "Vantrel Version", site)},
        {"a log folder that can't be made",
         [](Life& life) {
             const auto folder = life.folders.real("C:\\Users\\me");
             std::filesystem::create_directories(folder);
             std::ofstream(folder / "My Documents") << "in the way";
         },
         ready, logs(std::string("Log folder: ") + kLogs, "Vantrel Version", site)},
        {"no utility object", failing("DriverHelper.Util", "create"), kSiteAlarm,
         logs("Error 429: it broke\r\nfrmMain Sub Form_Load", linked, kSiteAlarm)},
        {"an imaging program that can't be started", withMaxIm(failing("MaxIm.CCDCamera", "create")), ready,
         logs("MaxIm DL Camera could not be Connected", linked, site)},
        {"a driver that refuses the connection", failing("ScopeSim.Telescope", "Connected", -2147352567),
         ready, logs("ASCOM Telescope: it broke")},
        {"no profile object", failing("DriverHelper.Profile", "create"), ready,
         logs("Error 429: it broke\r\nfrmMain Sub Form_Load", site)},
        {"a mount that doesn't know its site", failing("ScopeSim.Telescope", "SiteLatitude", 438), kSiteAlarm,
         logs("Error setting site position, check observer site entry for errors!", kSiteAlarm)},
        {"a latitude without a longitude", both(ownSite, stored("SiteLatitude", "48.5")), kSiteAlarm,
         logs(" error:  (0)", kSiteAlarm)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Life life;
        row.prepare(life);
        life.begin();
        life.pass(1);
        EXPECT_FALSE(life.program->ended());
        EXPECT_FALSE(life.program->failed());
        EXPECT_FALSE(life.program->busy());
        EXPECT_TRUE(life.control<Button>("frmMain.cmdRun").reachable());
        EXPECT_THAT(life.text("frmMain.txtInstructions"), HasSubstr(row.instructions));
        for (const std::string& part : row.logged) EXPECT_THAT(life.logged(), Contains(HasSubstr(part)));
        EXPECT_TRUE(life.dialogs.boxes.empty());
        life.close();
        life.expectNothingLeft();
    }
}

TEST(LifeOfTheProgram, EveryStepOfTheEndMayFail) {
    const struct {
        const char* what;
        Prepare prepare;  // when the program runs
        bool fails;       // the program's exit tells of it
        const char* logged;
    } rows[] = {
        {"settings that can't be stored", [](Life& life) { life.settings.full = true; }, true,
         "is disconnected"},
        {"an imaging program that doesn't answer", failing("MaxIm.CCDCamera", "DisableAutoShutdown", 438),
         false, "is disconnected"},
        {"a driver that doesn't let go", failing("ScopeSim.Telescope", "Connected", -2147352567), false,
         "ASCOM Telescope: it broke"},
        {"a telescope that was disconnected before",
         [](Life& life) { life.control<Button>("frmTelescope.cmdDisconnectTelescope").press(); }, false,
         "Telescope link failed: Sub DisconnectTelescope"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Life life;
        life.useImagingProgram("MaxIm");
        life.begin();
        life.pass(2);
        row.prepare(life);
        life.close();
        EXPECT_EQ(life.program->failed(), row.fails);
        EXPECT_THAT(life.logged(), Contains(HasSubstr(row.logged)));
        life.expectNothingLeft();
    }
}

TEST(LifeOfTheProgram, EndsSoonWheneverItIsClosed) {
    constexpr int kSoon = 1200;  // milliseconds; a simulated exposure of one second ends first
    const struct {
        const char* what;
        const char* telescope;
        Prepare operate;
        int longest;  // milliseconds until the last moment
    } rows[] = {
        {"while a telescope can't be connected", "TheSky.Telescope", {}, 14'000},
        {"in a series of exposures that waits for ever", kSimulator,
         [](Life& life) {
             life.control<TextBox>("frmMain.txtContinuousExposeDelay").type("1e308");
             life.control<CheckBox>("frmMain.chkExposeContinuousEnable").check(1);
             life.loop.post([&life] { life.control<Button>("frmMain.cmdExpose").click(); });
         },
         8'000},
    };
    for (const auto& row : rows)
        for (int moment = 10; moment < row.longest; moment += 330) {
            Life life;
            life.settings.write("Main", "MyTelescopeID", row.telescope);
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
