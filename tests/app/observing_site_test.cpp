#include "app/observing_site.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/frm_main.h"
#include "devices/utility_link.h"
#include "observatory/observatory.h"
#include "platform/recording_host.h"
#include "support/app_world.h"

namespace vantrel::app {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

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
