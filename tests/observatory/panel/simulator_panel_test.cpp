// The operator's hands on the simulated mount: every button and box against the simulator behind it.

#include "observatory/panel/simulator_panel.h"

#include <algorithm>
#include <cmath>

#include <gmock/gmock.h>

#include "observatory/observatory.h"
#include "platform/queued_event_loop.h"
#include "sky/epoch.h"

namespace vantrel::observatory {
namespace {

using namespace platform;

struct Panel : testing::Test {
    VirtualTime time{*parseInstant("2026-11-24T20:00:00Z"), std::chrono::hours{3}};
    QueuedEventLoop loop{time};
    FolderMap folders{"/nowhere"};
    ClassRegistry classes;
    Observatory observatory{loop, folders, 1};
    Screen screen{{0, 0, 1920, 1080}};
    frmSimulator window{screen};
    NoiseSource chance{1};
    SimulatorPanel panel{loop, classes, chance, window};
    ObjectRef simulator;

    Panel() {
        observatory.install(classes);
        simulator = classes.create("AxisSimulator.Telescope");
        simulator->put("Connected", true);
        window.show();
    }
    double get(const char* member) { return simulator->get(member).toDouble(); }
    void pass(double seconds) { loop.sleep(Milliseconds(std::lround(seconds * 1000))); }
    void enter(TextBox& box, const std::string& text) {
        box.type(text);
        box.leave();
    }
    std::string status() { return window.lblStatus.caption(); }
    /// How far the camera looks from the star, arc-seconds.
    double missedBy(const std::string& name) {
        for (const StarNow& star : starsUp(time.utc(), get("SiteLatitude"), get("SiteLongitude")))
            if (brightStars()[star.index].name == name)
                return sky::separation(
                           sky::directionOf({get("CameraAxisHourAngle") * 15, get("CameraAxisDeclination")}),
                           sky::directionOf({star.hourAngle * 15, star.place.declination})) *
                       3600;
        throw std::logic_error(name + " isn't up");
    }
    void chooseStar(const std::string& name) {
        for (const auto& item : window.cmbStar.items())
            if (item.text.english().starts_with(name)) {
                window.cmbStar.choose(item.text.english());
                return;
            }
        throw std::logic_error(name + " isn't in the list");
    }
};

TEST_F(Panel, TheButtonsTurnTheAdjusters) {
    double sum = 0;
    for (std::size_t i = 0; i < frmSimulator::kTurns.size(); ++i) {
        sum += frmSimulator::kTurns[i];
        window.azimuth.turns[i].click();
        EXPECT_NEAR(get("PolarAzimuthError"), sum, 1e-9);
        window.elevation.turns[i].click();
        EXPECT_NEAR(get("PolarElevationError"), sum, 1e-9);
    }
    window.elevation.turns[5].click();
    EXPECT_EQ(window.txtElevationError.text(), "10.00");
}

TEST_F(Panel, SettingItAskewTellsNobodyWhere) {
    window.cmdAskew.click();
    EXPECT_FALSE(window.txtAzimuthError.visible() || window.txtElevationError.visible());
    for (const char* member : {"PolarAzimuthError", "PolarElevationError"}) {
        EXPECT_GE(std::abs(get(member)), 10);
        EXPECT_LE(std::abs(get(member)), 120);
    }
    window.chkShowError.click();
    EXPECT_TRUE(window.txtAzimuthError.visible());
}

TEST_F(Panel, BoxesShowAndChangeTheSimulator) {
    enter(window.txtAzimuthError, "42.5");
    EXPECT_EQ(get("PolarAzimuthError"), 42.5);
    enter(window.txtWidth, "800");
    EXPECT_EQ(get("CameraWidth"), 800);
    enter(window.txtFocalLength, "740");
    EXPECT_EQ(window.lblField.caption(), "1.80\" a pixel, 0.40° by 0.52°");
    simulator->put("Seeing", 4.5);
    pass(1);
    EXPECT_EQ(window.txtSeeing.text(), "4.5") << "somebody else changed it";
    window.txtRotation.type("17");
    pass(1);
    EXPECT_EQ(window.txtRotation.text(), "17") << "typing isn't disturbed";
    enter(window.txtAirPressure, "800");
    EXPECT_EQ(get("AirPressure"), 800);
    enter(window.txtDeclinationJump, "5");
    enter(window.txtDeclinationJumpSlew, "2");
    EXPECT_EQ(get("DeclinationJump"), 5);
    EXPECT_EQ(get("DeclinationJumpSlew"), 2);
    window.chkMirrored.click();
    EXPECT_TRUE(simulator->get("CameraMirrored").toBool());
}

TEST_F(Panel, WhatIsNoValueIsSaidAndTakenBack) {
    const struct {
        TextBox& box;
        const char* text;
        const char* before;
        const char* status;
    } cases[] = {{window.txtWormPeriod, "0", "480", "WormPeriod must be between 1 and 86400 seconds"},
                 {window.txtSeeing, "bad", "3", "bad is no number"},
                 {window.txtSeeing, "-1", "3", "Seeing must be between 0.1 and 120 arcsec"},
                 {window.txtLatitude, "50 E", "50",
                  "\"50 E\" is no latitude. Write it like 48d 30m 15.0s, south with S or a minus sign"},
                 {window.txtLongitude, "181", "10", "SiteLongitude must be between -180 and 180 degrees"}};
    for (const auto& c : cases) {
        enter(c.box, c.text);
        EXPECT_EQ(c.box.text(), c.before);
        EXPECT_EQ(status(), c.status);
    }
    enter(window.txtSeeing, "2.5");
    EXPECT_EQ(status(), "");
}

TEST_F(Panel, TheSiteMayBeWrittenWithItsHemispheres) {
    enter(window.txtLatitude, "33 45 S");
    EXPECT_EQ(window.txtLatitude.text(), "-33.75");
    enter(window.txtLongitude, "W 70d 30m");
    EXPECT_EQ(window.txtLongitude.text(), "-70.5");
    EXPECT_EQ(get("SiteLatitude"), -33.75);
    EXPECT_EQ(get("SiteLongitude"), -70.5);
    EXPECT_EQ(status(), "");
}

TEST_F(Panel, ShowsWhereTheMountPoints) {
    EXPECT_EQ(window.txtHourAngle.text(), "1h 00m E");
    EXPECT_EQ(window.lblState.caption(), "Tracking");
    simulator->put("SlewRate", 3600);
    simulator->call("SlewToCoordinates", {23.0, -10.0});
    pass(1);
    EXPECT_EQ(window.txtRA.text(), "23h 00m");
    EXPECT_EQ(window.txtDec.text(), "-10.00°");
    EXPECT_EQ(window.txtHourAngle.text(), "1h 55m W");  // at 0h 55m of sidereal time
    EXPECT_EQ(window.txtAltitude.text(), "+24.9°");
}

TEST_F(Panel, TheHandControllerMovesTheMountByItsRate) {
    window.cmbRate.choose("15' a press");
    simulator->put("SlewRate", 0.1);
    const double ra = get("RightAscension");
    const double dec = get("Declination");
    for (int press = 0; press < 4; ++press) {  // faster than the mount moves
        window.cmdNorth.click();
        window.cmdEast.click();
        pass(0.5);
    }
    pass(60);
    EXPECT_NEAR(get("Declination") - dec, 1, 1e-6);
    EXPECT_NEAR((get("RightAscension") - ra) * 15 * std::cos(dec * sky::kDegree), 1, 0.02);
    window.cmdSouth.click();
    window.cmdWest.click();
    pass(20);
    EXPECT_NEAR(get("Declination") - dec, 0.75, 1e-6);
}

TEST_F(Panel, CentersAStarWhateverTheMountBelieves) {
    for (const double error : {0.0, 90.0, -120.0}) {
        simulator->put("PolarAzimuthError", error);
        simulator->put("PolarElevationError", -error);
        simulator->put("HourAngleOffset", 0.3);
        simulator->put("DeclinationOffset", -2);
        simulator->put("ClockError", error);
        chooseStar("Enif");
        window.cmdCenterStar.click();
        EXPECT_EQ(status(), "Centering Enif");
        for (int second = 0; second < 120 && status() == "Centering Enif"; ++second) pass(1);
        EXPECT_EQ(status(), "Enif is in the middle of the picture.") << error;
        EXPECT_LT(missedBy("Enif"), 5) << error;
        window.cmdSync.click();
        EXPECT_EQ(status(), "Synced on Enif");
        EXPECT_NEAR(get("Declination"), 9.994, 0.02) << "of date, from 9.875 at J2000";
        window.cmdGoToStar.click();
        pass(2);
        EXPECT_LT(missedBy("Enif"), 7) << "synced, the mount knows the way: " << error;
    }
}

TEST_F(Panel, WhatTheMountRefusesIsSaid) {
    window.chkTracking.click();
    window.cmdCenterStar.click();
    pass(1);
    EXPECT_EQ(status(), "The mount can't slew to coordinates while it isn't tracking");
    simulator->put("Connected", false);
    pass(1);
    EXPECT_EQ(window.lblState.caption(), "Not connected");
    EXPECT_EQ(window.txtRA.text(), "");
    window.cmdNorth.click();
    EXPECT_NE(status(), "");
    window.azimuth.turns[0].click();
    EXPECT_EQ(status(), "") << "hands don't need a connection";
}

TEST(BrightStars, TheListBeginsWithTheStarsThatServeBest) {
    const auto now = *parseInstant("2026-11-24T20:00:00Z");
    for (const double latitude : {50.0, -35.0}) {
        const auto stars = starsUp(now, latitude, 10);
        ASSERT_GT(stars.size(), 10u);
        EXPECT_TRUE(std::is_sorted(stars.begin(), stars.end(), [](const StarNow& a, const StarNow& b) {
            return a.suitability < b.suitability;
        }));
        for (const StarNow& star : stars) {
            EXPECT_GE(star.altitude, 20);
            if (star.suitability == Suitability::kBest) {
                EXPECT_LE(std::abs(star.hourAngle), 1) << brightStars()[star.index].name;
                EXPECT_LE(std::abs(star.place.declination), 10) << brightStars()[star.index].name;
            }
        }
    }
}

TEST(BrightStars, MoveSince2000) {
    const auto arcturus = std::find_if(brightStars().begin(), brightStars().end(),
                                       [](const BrightStar& star) { return star.name == "Arcturus"; });
    for (const auto& [utc, years] : {std::pair{"2000-01-01T12:00:00Z", 0}, {"2026-01-01T00:00:00Z", 26}}) {
        const sky::SkyPosition still =
            sky::SkyOfDate(*parseInstant(utc)).apparent(sky::SkyPosition{arcturus->ra, arcturus->dec});
        const PlaceOfDate place = placeOfDate(*arcturus, *parseInstant(utc));
        EXPECT_NEAR((place.rightAscension * 15 - still.ra) * 3600 * std::cos(still.dec * sky::kDegree),
                    -1.09 * years, 0.3);
        EXPECT_NEAR((place.declination - still.dec) * 3600, -2.00 * years, 0.3);
    }
}

}  // namespace
}  // namespace vantrel::observatory
