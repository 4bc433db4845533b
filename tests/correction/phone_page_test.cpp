// The page for the phone as the window Adjust switches it, and what it is given to show.
#include "correction/phone_page.h"

#include <optional>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/engine_world.h"

namespace vantrel::correction {
namespace {

struct NoCorrection : engine::CorrectionPort {
    void CorrectMisAlignment(double, double) override {}
};

/// Pages that nobody serves.
struct Pages : platform::LivePages {
    struct Page : platform::LivePage {
        explicit Page(Pages& owner) : pages(owner) {}
        ~Page() override { pages.isOpen = false; }
        std::string address() const override { return "http://192.168.1.7:4000/secret/"; }
        void show(const platform::LiveView& view) override { pages.views.push_back(view); }
        Pages& pages;
    };
    std::unique_ptr<platform::LivePage> open(const std::string& host, int port,
                                             platform::LivePageListener heard) override {
        if (!failure.empty()) throw std::runtime_error(failure);
        asked = host + ":" + std::to_string(port);
        listener = std::move(heard);
        isOpen = true;
        return std::make_unique<Page>(*this);
    }
    std::string failure, asked;
    platform::LivePageListener listener;
    std::vector<platform::LiveView> views;
    bool isOpen = false;
};

struct PhonePageTest : testing::Test, NoCorrection, test::EngineWorld {
    PhonePageTest() : EngineWorld(static_cast<engine::CorrectionPort&>(*this)) {
        form.cmdEndAdjust.setEnabled(false);
    }
    void pass() { loop.sleep(std::chrono::seconds{1}); }

    frmAdjust form{screen};
    Pages pages;
    PhonePage page{form, panel.cmdStop, loop, services.settings, services.log, &pages};
};

TEST_F(PhonePageTest, IsOpenWhileTheWindowIsAndItsBoxIsTicked) {
    form.show();
    EXPECT_FALSE(pages.isOpen);
    form.chkPhone.click();
    EXPECT_TRUE(pages.isOpen);
    EXPECT_EQ(pages.asked, ":0");
    EXPECT_EQ(form.lblPhone.caption(), "http://192.168.1.7:4000/secret/");
    EXPECT_THAT(log.lines, testing::ElementsAre("A page for the phone is open at 192.168.1.7:4000"));
    form.unload();
    EXPECT_FALSE(pages.isOpen);
    EXPECT_EQ(form.lblPhone.caption(), "");
    services.settings.SaveSetting("PolarAlign", "PhoneAddress", "10.0.0.2");
    services.settings.SaveSetting("PolarAlign", "PhonePort", "8080");
    form.show();
    EXPECT_TRUE(pages.isOpen) << "remembered";
    EXPECT_EQ(pages.asked, "10.0.0.2:8080");
    form.chkPhone.click();
    EXPECT_FALSE(pages.isOpen);
    form.unload();
    form.show();
    EXPECT_FALSE(pages.isOpen);
}

TEST_F(PhonePageTest, SaysWhyThereIsNone) {
    form.show();
    pages.failure = "This computer is in no local network";
    form.chkPhone.click();
    EXPECT_EQ(form.lblPhone.caption(), "No page: This computer is in no local network");
    EXPECT_THAT(log.lines, testing::Contains(form.lblPhone.caption()));
    pages.failure.clear();
    form.chkPhone.click();
    EXPECT_EQ(form.lblPhone.caption(), "");
    services.settings.SaveSetting("PolarAlign", "PhonePort", "70000");
    form.chkPhone.click();
    EXPECT_EQ(form.lblPhone.caption(), "No page: PhonePort is no port");
}

TEST_F(PhonePageTest, ShowsWhatTheWindowShowsOncePerChange) {
    form.show();
    form.chkPhone.click();
    pass();
    pages.views.clear();
    form.azimuth.lblArrow.setCaption("←");
    form.azimuth.lblMove.setCaption("turn west 3.2'");
    form.lblLiveState.setCaption("Moving");
    form.lblAge.setCaption("4 s old");
    form.cmdEndAdjust.setEnabled(true);
    pass();
    ASSERT_EQ(pages.views.size(), 1U);
    platform::LiveView view = pages.views.back();
    EXPECT_EQ(view.azimuth.arrow + view.azimuth.move, "←turn west 3.2'");
    EXPECT_EQ(view.verdict, "Moving");
    EXPECT_EQ(view.age, 4);
    EXPECT_TRUE(view.live && !view.stale && !view.stoppable && !view.night);
    form.azimuth.lblMove.setEnabled(false);
    services.settings.SaveSetting("PolarAlign", "GreenColors", "1");
    pass();
    EXPECT_TRUE(pages.views.back().stale && pages.views.back().night);
}

TEST_F(PhonePageTest, StopIsTheMainWindowsStop) {
    int stops = 0;
    panel.cmdStop.onClick = [&] { ++stops; };
    form.show();
    form.chkPhone.click();
    panel.cmdStop.setEnabled(false);
    pages.listener.onStop();
    EXPECT_EQ(stops, 0) << "nothing to stop";
    panel.cmdStop.setEnabled(true);
    pass();
    EXPECT_EQ(pages.views.back().stoppable, panel.cmdStop.reachable());
    pages.listener.onStop();
    EXPECT_EQ(stops, 1);
    EXPECT_EQ(log.lines.back(), "Stop was pressed on the phone");
}

}  // namespace
}  // namespace vantrel::correction
