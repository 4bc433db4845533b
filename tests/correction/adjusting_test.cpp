// Live adjusting in virtual time: what the operator sees at the mount, whatever happens to the pictures.
#include "correction/adjusting.h"

#include <cmath>
#include <functional>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "correction/phone_page.h"
#include "correction/result_readout.h"
#include "engine/axis/simulated_mount.h"
#include "support/engine_world.h"

namespace vantrel::correction {
namespace {

using engine::EquatorialPosition;
using testing::Contains;
using testing::HasSubstr;
using testing::StartsWith;

/// A mount that is off, under a sky that stands still, and an operator who does things at certain pictures.
struct Workshop : test::EngineWorld {
    Workshop() {
        sky.site = {mount.SiteLatitude(), engine::standardAir(0)};
        sky.azimuth = 12;
        sky.elevation = -8;
        sky.declination = mount.dec;
        panel.txtExposeInterval.setText("2");
        panel.txtDeltaRA.setText("20");
        panel.txtDelayAfterSlew.setText("0");
        solver.sky = [this](const EquatorialPosition&) { return picture(); };
        run.adjustLive = [this](const engine::AxisEstimate& measured) { return adjusting.adjust(measured); };
        loop.setAttendant([this] { attend(); });
        panel.cmdAdjust.setEnabled(false);
    }

    /// What a camera on this mount sees; the plates of the measurement are at the places of the slews.
    engine::PlateSolution picture() {
        const double turned = mount.slews.empty() ? mount.ra : mount.slews.back().RA;
        return test::solutionOf(sky.plate(mount.lst - turned, test::SimulatedAir(engine::standardAir(0))),
                                mount.lst);
    }

    /// After so many solved pictures of the adjusting.
    void at(int picture, std::function<void()> doing) { plan[picture] = std::move(doing); }

    void adjust() { panel.cmdRun.click(); }

    frmAdjust window{screen};
    double tolerance = 2;
    int sounds = 0;
    std::vector<std::string> said;
    Adjusting adjusting{window,
                        panel,
                        state,
                        services,
                        [this] { return tolerance; },
                        [this] { ++sounds; },
                        [this](const std::string& words) { said.push_back(words); }};
    test::SimulatedMount sky;
    std::map<int, std::function<void()>> plan;
    int measurements = 0;

  private:
    void attend() {
        if (panel.cmdAdjust.enabled() && time.sinceStart() > thinksUntil_) {
            thinksUntil_ = time.sinceStart() + std::chrono::seconds{1};
            ++measurements;
            if (measurements > 1) {
                panel.cmdSkip.click();
                return;
            }
            first_ = static_cast<int>(solver.solved.size());
            panel.cmdAdjust.click();
        }
        if (first_ < 0) return;
        const auto due = plan.begin();
        if (due == plan.end() || static_cast<int>(solver.solved.size()) - first_ < due->first) return;
        if (window.lblAge.caption().empty() && due->first > 0) return;
        const auto doing = due->second;
        plan.erase(due);
        doing();
    }
    int first_ = -1;
    platform::Milliseconds thinksUntil_{0};
};

TEST(Adjusting, TellsBothAdjustersUntilDoneAndWatchesTheLock) {
    Workshop shop;
    std::vector<std::string> seen;
    const auto note = [&] {
        seen.push_back(shop.window.azimuth.lblMove.caption() + ", " +
                       shop.window.elevation.lblMove.caption());
    };
    shop.window.azimuth.txtPerTurn.setText("12");
    std::string bolt, arrow, done, shifted;
    shop.at(2, [&] {
        note();
        bolt = shop.window.azimuth.lblBolt.caption();
        arrow = shop.window.azimuth.lblArrow.caption() + shop.window.elevation.lblArrow.caption();
        shop.sky.azimuth = 1;
    });
    shop.at(5, [&] { shop.sky.elevation = 0.5; });
    shop.at(9, [&] {
        note();
        done = shop.window.lblLiveState.caption();
        shop.window.cmdLock.click();
        shop.sky.azimuth = 4.9;
        shop.sky.elevation = -1;
    });
    shop.at(13, [&] {
        shifted = shop.window.lblLiveState.caption();
        shop.window.cmdEndAdjust.click();
    });
    shop.adjust();
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_THAT(seen[0], HasSubstr("turn west 1"));
    EXPECT_THAT(seen[0], HasSubstr("raise "));
    EXPECT_EQ(arrow, "←↑");
    EXPECT_THAT(done, StartsWith("Done: within 2.0'"));
    EXPECT_THAT(shifted, StartsWith("Locked: moved by 3."));
    EXPECT_THAT(shifted, HasSubstr("more than the tolerance"));
    EXPECT_THAT(shop.log.lines, Contains("Adjusting ended"));
    EXPECT_EQ(shop.measurements, 1);
    EXPECT_TRUE(shop.panel.cmdRun.enabled());
    EXPECT_FALSE(shop.panel.cmdAdjust.enabled());
}

TEST(Adjusting, APictureWithoutASolutionCostsItselfAndOldNumbersAreDimmed) {
    Workshop shop;
    bool fresh = false;
    std::string clouded;
    shop.at(2, [&] {
        fresh = shop.window.azimuth.lblMove.enabled();
        shop.solver.fails = true;
    });
    shop.at(12, [&] {
        clouded = shop.window.lblLiveState.caption();
        EXPECT_FALSE(shop.window.azimuth.lblMove.enabled());
        shop.solver.fails = false;
    });
    shop.at(15, [&] {
        EXPECT_TRUE(shop.window.azimuth.lblMove.enabled());
        EXPECT_THAT(shop.window.azimuth.lblMove.caption(), HasSubstr("turn west"));
        shop.panel.cmdSkip.click();
    });
    shop.adjust();
    EXPECT_TRUE(fresh);
    EXPECT_EQ(clouded, "No solution: clouds?");
    EXPECT_TRUE(shop.plan.empty());
}

TEST(Adjusting, AsksAboutABumpAndHidesDirectionsMeanwhile) {
    Workshop shop;
    shop.at(2, [&] {
        shop.sky.offsetDec += 40. / 3600;
        shop.sky.offsetHA -= 40. / 3600 / 15;
    });
    shop.at(6, [&] {
        EXPECT_THAT(shop.window.lblLiveState.caption(), StartsWith("The mount was bumped by 5"));
        EXPECT_EQ(shop.window.azimuth.lblMove.caption(), "–");
        shop.window.cmdBothTurned.click();
    });
    shop.at(8, [&] {
        EXPECT_THAT(shop.window.azimuth.lblMove.caption(), HasSubstr("turn "));
        shop.window.cmdEndAdjust.click();
    });
    shop.adjust();
    EXPECT_TRUE(shop.plan.empty());
}

TEST(Adjusting, MeasuresAgainAndSaysHowFarTheLiveNumbersWereOff) {
    Workshop shop;
    shop.at(2, [&] { shop.sky.azimuth = 3; });
    shop.at(5, [&] { shop.window.cmdMeasureAgain.click(); });
    shop.adjust();
    EXPECT_EQ(shop.measurements, 2);
    EXPECT_THAT(shop.log.lines,
                Contains(StartsWith("The fresh measurement differs from the live numbers by ")));
    EXPECT_TRUE(shop.panel.cmdRun.enabled());
}

TEST(Tones, ComeFasterTheNearerAndNotAtAllWhereNothingIsToBeHeard) {
    platform::VirtualTime time{*platform::parseInstant("2026-11-24T20:00:00Z"), std::chrono::hours{1}};
    platform::QueuedEventLoop loop{time};
    int heard = 0;
    Tones tones(loop, [&] { ++heard; });
    const struct {
        std::optional<double> tolerances;
        int inTenSeconds;
    } rows[] = {{1.5, 40}, {4, 25}, {25, 10}, {400, 5}, {1, 0}, {std::nullopt, 0}};
    for (const auto& row : rows) {
        heard = 0;
        tones.tell(row.tolerances);
        loop.sleep(std::chrono::seconds{10});
        EXPECT_NEAR(heard, row.inTenSeconds, 1) << row.tolerances.value_or(0);
    }
}

TEST(Adjusting, IsHeardOnlyIfWantedAndWhileTheNumbersHold) {
    for (const char* wanted : {"0", "1"}) {
        Workshop shop;
        shop.settings.SaveSetting("PolarAlign", "Tones", wanted);
        shop.settings.SaveSetting("PolarAlign", "Spoken", wanted);
        int before = 0, clouded = 0;
        shop.at(6, [&] {
            before = shop.sounds;
            shop.solver.fails = true;
        });
        shop.at(12, [&] { clouded = shop.sounds; });
        shop.at(16, [&] {
            EXPECT_EQ(shop.sounds, clouded) << "old numbers";
            shop.window.cmdEndAdjust.click();
        });
        shop.adjust();
        const int after = shop.sounds;
        shop.pass(10);
        EXPECT_EQ(shop.sounds, after);
        EXPECT_EQ(before > 5, wanted[0] == '1');
        EXPECT_EQ(after > 0, wanted[0] == '1');
        EXPECT_EQ(shop.said.empty(), wanted[0] == '0');
        if (!shop.said.empty()) {
            EXPECT_THAT(shop.said[0], testing::MatchesRegex("turn west 12.0 minutes, raise 8.0 minutes"));
            EXPECT_LT(shop.said.size(), 4u) << "what doesn't change isn't said again";
        }
    }
}

/// Somebody turns the azimuth's bolt by the words, each turn ends `toEast` arc-minutes from the
/// last.
std::string wayOfTheBolt(const std::vector<double>& toEast, const char* perTurn, bool& swapped) {
    Workshop shop;
    shop.settings.SaveSetting("PolarAlign", "AzimuthPerTurn", perTurn);
    int picture = 2;
    for (const double step : toEast) {
        shop.at(picture, [&shop, step] { shop.sky.azimuth += step; });
        picture += 3;
    }
    std::string words;
    shop.at(picture, [&] {
        words = shop.window.azimuth.lblBolt.caption();
        swapped = shop.window.azimuth.chkOtherWay.ticked();
        shop.window.cmdEndAdjust.click();
    });
    shop.adjust();
    EXPECT_EQ(swapped,
              std::ranges::count(shop.log.lines,
                                 "The azimuth bolt goes the other way: clockwise and counter-clockwise are "
                                 "swapped") == 1);
    return words;
}

TEST(Adjusting, LearnsWhichWayABoltGoesFromTwoWrongTurns) {
    const struct {
        std::vector<double> toEast;
        const char* perTurn;
        bool swapped;
    } rows[] = {
        {{4, 4}, "24", true},               // told to go west, and went east, twice
        {{4}, "24", false},                 // once may be a slip
        {{4, -3, 4}, "24", false},          // not in a row
        {{-4, -4}, "24", false},            // as told
        {{-14, -4, -4}, "24", true},        // beyond the pole, and on
        {{0.05, 0.05, 0.05}, "24", false},  // less than anybody can tell
        {{4, 4}, "", false},                // nobody was told which way
    };
    for (const auto& row : rows) {
        bool swapped = false;
        const std::string words = wayOfTheBolt(row.toEast, row.perTurn, swapped);
        EXPECT_EQ(swapped, row.swapped) << row.toEast.size() << " turns, the first by " << row.toEast[0];
        EXPECT_EQ(words.empty(), row.perTurn[0] == '\0');
    }
}

TEST(Adjusting, StopsAtOnceAndClosesQuietly) {
    for (const bool closing : {false, true}) {
        Workshop shop;
        shop.at(2, [&] {
            if (closing)
                shop.state.AppUnloading = shop.state.StopRequested = true;
            else
                shop.panel.cmdStop.click();
        });
        shop.adjust();
        EXPECT_TRUE(shop.plan.empty());
        EXPECT_EQ(shop.panel.cmdRun.enabled(), !closing);
        EXPECT_FALSE(shop.window.cmdEndAdjust.enabled());
    }
}

TEST(BoltTurns, AreToldInEighths) {
    const struct {
        double arcMinutes, perTurn;
        const char* text;
    } rows[] = {{3, 12, "a quarter turn"},
                {-6, 12, "half a turn"},
                {0.1, 12, "less than an eighth of a turn"},
                {12, 12, "1.0 turn"},
                {30, 12, "2.5 turns"},
                {13.5, 12, "1.13 turns"},
                {3, 0, ""},
                {0, 12, ""}};
    for (const auto& row : rows)
        EXPECT_EQ(boltTurns(row.arcMinutes, row.perTurn), row.text) << row.arcMinutes;
}

TEST(Adjusting, BelievesTheSimulatorsPicturesWhateverACameraDidBefore) {
    Workshop shop;
    shop.state.UsingAxisSimulator = true;
    shop.state.CameraFailed = true;
    std::string move;
    shop.at(2, [&] {
        move = shop.window.azimuth.lblMove.caption();
        shop.window.cmdEndAdjust.click();
    });
    shop.adjust();
    EXPECT_THAT(move, HasSubstr("turn west 12.0'"));
}

// ---- the page for the phone, as the window switches it

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

struct PhonePageTest : testing::Test, test::EngineWorld {
    PhonePageTest() { form.cmdEndAdjust.setEnabled(false); }

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
    pass(1);
    pages.views.clear();
    form.azimuth.lblArrow.setCaption("←");
    form.azimuth.lblMove.setCaption("turn west 3.2'");
    form.lblLiveState.setCaption("Moving");
    form.lblAge.setCaption("4 s old");
    form.cmdEndAdjust.setEnabled(true);
    pass(1);
    ASSERT_EQ(pages.views.size(), 1U);
    platform::LiveView view = pages.views.back();
    EXPECT_EQ(view.azimuth.arrow + view.azimuth.move, "←turn west 3.2'");
    EXPECT_EQ(view.verdict, "Moving");
    EXPECT_EQ(view.age, 4);
    EXPECT_TRUE(view.live && !view.stale && !view.stoppable && !view.night);
    form.azimuth.lblMove.setEnabled(false);
    services.settings.SaveSetting("PolarAlign", "GreenColors", "1");
    pass(1);
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
    pass(1);
    EXPECT_EQ(pages.views.back().stoppable, panel.cmdStop.reachable());
    pages.listener.onStop();
    EXPECT_EQ(stops, 1);
    EXPECT_EQ(log.lines.back(), "Stop was pressed on the phone");
}

}  // namespace
}  // namespace vantrel::correction
