#include "app/settings_store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/frm_main.h"
#include "app/observing_site.h"
#include "app/settings_fields.h"
#include "devices/utility_link.h"
#include "observatory/observatory.h"
#include "platform/recording_host.h"
#include "support/app_world.h"
#include "support/full_disk.h"
#include "support/recording_dialogs.h"

namespace vantrel::app {
namespace {

using platform::Dialogs;
using platform::MemorySettings;
using test::RecordingDialogs;
using testing::ElementsAre;
using testing::StartsWith;

struct SettingsStoreTest : testing::Test {
    MemorySettings memory;
    RecordingDialogs dialogs;
    SettingsStore store{memory, dialogs};
};

TEST_F(SettingsStoreTest, ReadingAMissingValueGivesTheDefaultAndStoresNothing) {
    EXPECT_EQ(store.GetSetting("Nowhere", "Key", "default"), "default");
    EXPECT_TRUE(memory.isEmpty());
}

TEST_F(SettingsStoreTest, ReadingAMissingOrEmptyMainValueStoresTheDefault) {
    store.SaveMainSetting("Empty", "");
    EXPECT_EQ(store.GetMainSetting("Missing", "1"), "1");
    EXPECT_EQ(store.GetMainSetting("Empty", "2"), "2");
    EXPECT_EQ(memory.read("Main", "Missing"), "1");
    EXPECT_EQ(memory.read("Main", "Empty"), "2");
    EXPECT_EQ(store.GetMainSetting("missing", "other"), "1");
}

TEST_F(SettingsStoreTest, ReadsWhatTheBufferHolds) {
    const std::string degree = "\xC2\xB0";
    std::string degrees;
    for (int i = 0; i < 1024; ++i) degrees += degree;
    const struct {
        const char* why;
        std::string stored, read;
    } rows[] = {
        {"an empty value exists", "", ""},
        {"as long as the buffer", std::string(1023, 'x'), std::string(1023, 'x')},
        {"longer than the buffer", std::string(1024, 'x'), std::string(1023, 'x')},
        {"characters count, not bytes", degrees, degrees.substr(0, 2 * 1023)},
        {"a NUL at the end", std::string("text\0", 5), "text"},
        {"only one NUL is dropped", std::string("text\0\0", 6), std::string("text\0", 5)},
    };
    for (const auto& row : rows) {
        store.SaveSetting("Solve", "Key", row.stored);
        EXPECT_EQ(store.GetSetting("Solve", "Key", "default"), row.read) << row.why;
    }
}

TEST(SettingsStoreFailures, ShowTheirBoxAndEndTheProgram) {
    const struct {
        const char* why;
        bool failsToOpen;
        const char* section;
        const char* text;
        Dialogs::Icon icon;
    } rows[] = {
        {"no root", true, "Main", "Failed to open/create root registry key (5)", Dialogs::Icon::kCritical},
        {"no section", false, "Solve", "Failed to open/create section key Solve.",
         Dialogs::Icon::kExclamation},
        {"no value", false, "Main", "Failed to write config value Key to registry section Main.",
         Dialogs::Icon::kCritical},
    };
    for (const auto& row : rows) {
        test::FullDisk root;
        root.write("Main", "Other", "there");
        root.full = true;
        root.missing = row.failsToOpen;
        RecordingDialogs dialogs;
        SettingsStore store(root, dialogs);
        int ends = 0;
        store.onFailure = [&] { ++ends; };

        EXPECT_THROW(store.SaveSetting(row.section, "Key", "1"), SettingsFailure) << row.why;
        EXPECT_THROW(store.SaveSetting(row.section, "Key", "1"), SettingsFailure) << row.why;

        ASSERT_EQ(dialogs.boxes.size(), 1u) << row.why;
        EXPECT_EQ(dialogs.boxes[0].title, "");
        EXPECT_EQ(dialogs.boxes[0].text, row.text);
        EXPECT_EQ(dialogs.boxes[0].icon, row.icon) << row.why;
        EXPECT_EQ(ends, 1) << row.why;
    }
}

// ---- settings fields

struct SettingsFieldsTest : testing::Test, test::AppWorld {
    frmMain form{screen};
    test::RecordingLog log;
    SettingsFields fields{form, settings, log, state};

    void SetUp() override { form.show(); }
};

TEST_F(SettingsFieldsTest, TheImagingProgramIsStoredOnlyWhenOneIsChosen) {
    memory.write("PolarAlign", "ImagingSoftware", "as it was");
    fields.store();
    EXPECT_EQ(memory.read("PolarAlign", "ImagingSoftware"), "as it was");
    form.imaging.optMaxIm.select();
    fields.store();
    EXPECT_EQ(memory.read("PolarAlign", "ImagingSoftware"), "MaxIm");
    form.imaging.optCCDSoft.select();
    fields.store();
    EXPECT_EQ(memory.read("PolarAlign", "ImagingSoftware"), "CCDSoft");
}

TEST_F(SettingsFieldsTest, APostExposureDelayThatIsNoNumberBecomesZero) {
    form.run.txtPostExpDelay.type("1.5");
    form.run.txtPostExpDelay.leave();
    EXPECT_EQ(form.run.txtPostExpDelay.text(), "1.5");
    EXPECT_TRUE(log.lines.empty());
    form.run.txtPostExpDelay.type("soon");
    form.run.txtPostExpDelay.leave();
    EXPECT_EQ(form.run.txtPostExpDelay.text(), "0");
    EXPECT_EQ(log.lines, std::vector<std::string>{"Post exposure delay is not numeric, setting to 0"});
}

TEST_F(SettingsFieldsTest, EmptyFieldsGetSomethingToWorkWith) {
    form.setup.txtImagePath.setText("");
    fields.store();
    EXPECT_EQ(memory.read("PolarAlign", "ImagePath"), "C:");
    form.run.txtDeltaRA.type("");
    EXPECT_EQ(form.run.txtDeltaRA.text(), "0");
    EXPECT_EQ(memory.read("PolarAlign", "DeltaRA"), "0");
    const std::pair<platform::TextBox&, const char*> rows[] = {
        {form.run.txtDelayAfterSlew, "0"},
        {form.exposures.txtContinuousExposeDelay, "0"},
        {form.exposures.txtContinuousExposeInterval, "1"}};
    for (const auto& [box, text] : rows) box.setText("");
    fields.fillEmptyFields();
    for (const auto& [box, text] : rows) EXPECT_EQ(box.text(), text) << box.name();
}

TEST_F(SettingsFieldsTest, OptionsTakeEffectAtOnce) {
    for (const bool east : {true, false}) {
        (east ? form.run.optSlewEast : form.run.optSlewWest).click();
        EXPECT_EQ(state.SlewEast, east);
        form.exposures.cmbCrossHairWidth.setEnabled(false);
        form.exposures.chkCrossHairEnable.check(east ? 1 : 0);
        EXPECT_TRUE(form.exposures.cmbCrossHairWidth.enabled()) << "however the cross hair is set";
    }
}

// ---- the observing site

struct ObservingSiteTest : testing::Test, test::AppWorld {
    platform::ClassRegistry classes;
    observatory::Observatory observatory{loop, folders, 1};
    platform::RecordingHost host{classes};
    devices::UtilityLink utility{host};
    frmMain form{screen};
    SetupPanel& panel = form.setup;
    test::RecordingLog log;
    std::optional<double> latitude, longitude;  // what the mount says
    test::RecordingMessages messages;
    ObservingSite site{panel,
                       settings,
                       log,
                       messages,
                       utility,
                       state,
                       {[this] { return latitude; }, [this] { return longitude; }}};

    void SetUp() override {
        observatory.install(classes);
        utility.create();
        form.show();
    }
};

TEST_F(ObservingSiteTest, CheckSiteShowsTheStoredSiteOrSaysWhatIsWrong) {
    const std::string alarm = "Error setting site position, check observer site entry for errors!";
    const struct {
        const char* why;
        const char* latitude;
        const char* longitude;
        bool found;
        std::string logged;
    } rows[] = {
        {"both stored", "48.5", "-11.25", true, ""},
        {"blanks behind", "48.5  ", "-11.25 ", true, ""},
        {"no latitude", "", "11", false, " error:  (0)"},
        {"no longitude", "48.5", "", false, " error:  (0)"},
        {"only blanks", "  ", "11", false, " error:  (0)"},
        {"no number", "north", "11", false, "Vantrel error: Type mismatch (13)"},
    };
    for (const auto& row : rows) {
        memory.write("Main", "SiteLatitude", row.latitude);
        memory.write("Main", "SiteLongitude", row.longitude);
        log.lines.clear();
        EXPECT_EQ(site.CheckSite(), row.found) << row.why;
        if (row.found) {
            EXPECT_TRUE(log.lines.empty()) << row.why;
            EXPECT_EQ(panel.txtSiteLat.text(), utility.DegreesToDMS(48.5)) << row.why;
            EXPECT_EQ(panel.txtSiteLong.text(), utility.DegreesToDMS(-11.25)) << row.why;
        } else {
            EXPECT_THAT(log.lines, ElementsAre(row.logged, alarm)) << row.why;
        }
    }
}

TEST_F(ObservingSiteTest, AUtilityThatFailsIsNamed) {
    memory.write("Main", "SiteLatitude", "48.5");
    host.inject({"DriverHelper.Util", "DegreesToDMS", {7, "Helper", "broken"}, std::nullopt, 0, -1});
    EXPECT_FALSE(site.CheckSite());
    EXPECT_EQ(log.lines.front(), "Helper error: broken (7)");
}

TEST_F(ObservingSiteTest, StoresWhatTheOperatorWritesOnBothHemispheres) {
    for (const platform::TextBox* box : {&panel.txtSiteLat, &panel.txtSiteLong})
        EXPECT_NE(box->toolTip(), "") << "tells how it is written";
    const struct {
        const char *latitude, *longitude;
        std::optional<std::string> storedLatitude, storedLongitude;
    } rows[] = {
        {"48d 30m 00.0s", "-11d 15m 00.0s", "48.5", "-11.25"},
        {"48.5 S", "W 11 15", "-48.5", "-11.25"},
        {"48:30 N", "11.25", "48.5", "11.25"},
        {"48.5", "", "48.5", std::nullopt},
    };
    for (const auto& row : rows) {
        for (const char* key : {"SiteLatitude", "SiteLongitude"}) memory.remove("Main", key);
        panel.txtSiteLong.setText(row.longitude);
        panel.txtSiteLat.type(row.latitude);
        panel.txtSiteLat.leave();
        EXPECT_EQ(memory.read("Main", "SiteLatitude"), row.storedLatitude) << row.latitude;
        EXPECT_EQ(memory.read("Main", "SiteLongitude").value_or(""), row.storedLongitude.value_or(""))
            << row.longitude;
        EXPECT_EQ(panel.txtSiteLat.text(), row.latitude);
    }
    EXPECT_TRUE(log.lines.empty());
}

TEST_F(ObservingSiteTest, RefusesNonsenseAndKeepsTheFormerSite) {
    memory.write("Main", "SiteLatitude", "48.5");
    memory.write("Main", "SiteLongitude", "-11.25");
    ASSERT_TRUE(site.CheckSite());
    for (const char* nonsense : {"north", "48.5 E", "91", ""}) {
        panel.txtSiteLat.type(nonsense);
        panel.txtSiteLat.leave();
        EXPECT_EQ(panel.txtSiteLat.text(), utility.DegreesToDMS(48.5)) << nonsense;
        EXPECT_EQ(memory.read("Main", "SiteLatitude"), "48.5") << nonsense;
        EXPECT_THAT(
            messages.shown.back().text,
            StartsWith(platform::noSiteAngle(nonsense, platform::SiteAxis::kLatitude).english() + "\r\n"));
        EXPECT_EQ(log.lines.back(), messages.shown.back().text);
    }
    EXPECT_EQ(memory.read("Main", "SiteLongitude"), "-11.25");
    EXPECT_EQ(messages.shown.size(), 4u);
}

TEST_F(ObservingSiteTest, UsesTheTelescopesSiteWhenTheMountKnowsIt) {
    latitude = -33.75, longitude = 151.5;
    panel.chkUseTelescopeLocation.check(1);
    EXPECT_EQ(memory.read("Main", "UseTelescopeSiteLocation"), "True");
    EXPECT_EQ(memory.read("Main", "SiteLatitude"), "-33.75");
    EXPECT_EQ(memory.read("Main", "SiteLongitude"), "151.5");
    EXPECT_EQ(panel.txtSiteLat.text(), utility.DegreesToDMS(-33.75));

    panel.chkUseTelescopeLocation.check(0);
    EXPECT_EQ(memory.read("Main", "UseTelescopeSiteLocation"), "False");
    EXPECT_EQ(memory.read("Main", "SiteLatitude"), "-33.75");
    EXPECT_TRUE(panel.chkUseTelescopeLocation.enabled());
}

TEST_F(ObservingSiteTest, AMountThatDoesNotKnowItsSiteCannotBeUsed) {
    latitude = 48.5;  // but no longitude
    panel.chkUseTelescopeLocation.check(1);
    EXPECT_FALSE(panel.chkUseTelescopeLocation.ticked());
    EXPECT_FALSE(panel.chkUseTelescopeLocation.enabled());
    EXPECT_EQ(memory.read("Main", "UseTelescopeSiteLocation"), "False");
    EXPECT_FALSE(memory.read("Main", "SiteLatitude"));
}

TEST_F(ObservingSiteTest, TheBoxIsTickedAtTheStartAsStored) {
    latitude = 1, longitude = 2;
    const struct {
        const char* stored;
        bool ticked;
    } rows[] = {{"", true}, {"1", true}, {"True", true}, {"False", false}, {"0", false}};
    for (const auto& row : rows) {
        panel.chkUseTelescopeLocation.setValue(0);
        memory.write("Main", "UseTelescopeSiteLocation", row.stored);
        site.restoreUseTelescope();
        EXPECT_EQ(panel.chkUseTelescopeLocation.ticked(), row.ticked) << row.stored;
    }
}

}  // namespace
}  // namespace vantrel::app
