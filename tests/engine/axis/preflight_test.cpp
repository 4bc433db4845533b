#include "engine/axis/preflight.h"

#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vantrel::engine {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(Horizon, IsStraightBetweenItsPointsAndAroundNorth) {
    const auto horizon = Horizon::parse("# garden\n90 10\n 180,20 # house\r\n\n350\t0\n");
    ASSERT_TRUE(horizon);
    const struct {
        double azimuth, altitude;
    } cases[] = {{90, 10}, {135, 15}, {180, 20}, {-180, 20}, {265, 10}, {350, 0}, {40, 5}, {400, 5}};
    for (const auto& c : cases) EXPECT_NEAR(horizon->altitudeAt(c.azimuth), c.altitude, 1e-9) << c.azimuth;
    EXPECT_EQ(horizon->notBelow(12).altitudeAt(90), 12);
    EXPECT_EQ(Horizon(15).altitudeAt(77), 15);
}

TEST(Horizon, RefusesWhatIsNone) {
    for (const char* text : {"", "# nothing\n", "north 10", "10", "10 95", "10 20 30", "1e9 3", "nan 3"})
        EXPECT_FALSE(Horizon::parse(text)) << text;
}

TEST(Preflight, SeesTheWholeArc) {
    const Site north{.latitude = 50, .air = standardAir(0)};
    const Site south{.latitude = -35, .air = standardAir(0)};
    const struct {
        const char* why;
        double hourAngle, declination, slew;
        Site site;
        std::vector<std::string> warnings;
        bool meridian = false;
        std::optional<double> hoursToSix = {};
    } cases[] = {
        {"east of the meridian", -1, 30, -20, north, {}, false, 7},
        {"over it, westward", -1, 30, 20, north, {}, true, 4 + 1 / 3.},
        {"into the horizon",
         1,
         0,
         20,
         north,
         {"Plate 3 will stand 22 degrees high, below the horizon"},
         false,
         2 + 1 / 3.},
        {"soon at six hours",
         3.2,
         60,
         20,
         north,
         {"The last plate reaches hour angle six in 8 minutes"},
         false,
         2 / 15.},
        {"astride six hours", 4, 60, 20, north, {"The plates will lie on both sides of hour angle six"}},
        {"in the south", 1, -50, -15, south, {}, true, 5},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const Plan plan{
            .hourAngle = c.hourAngle, .declination = c.declination, .slew = c.slew, .rollSigma = 20};
        const Preflight ahead = lookAhead(plan, c.site, Horizon(25));
        EXPECT_EQ(ahead.warnings(), c.warnings);
        EXPECT_EQ(ahead.crossesMeridian, c.meridian);
        ASSERT_EQ(ahead.hoursToSix.has_value(), c.hoursToSix.has_value());
        EXPECT_NEAR(ahead.hoursToSix.value_or(0), c.hoursToSix.value_or(0), 1e-9);
    }
    // The way between two plates that can be seen.
    const auto tree = Horizon::parse("170 0\n180 80\n190 0");
    EXPECT_THAT(
        lookAhead({.hourAngle = -1.2, .declination = 10, .slew = 36, .exposures = {1, 1}, .rollSigma = {}},
                  north, *tree)
            .warnings(),
        ElementsAre("The way between the plates goes below the horizon"));
}

TEST(Preflight, SaysWhatWouldBeBetter) {
    const Site site{.latitude = 50, .air = kNoAir};
    const Plan plan{.hourAngle = 1, .declination = 30, .slew = -5, .rollSigma = 20};
    const Preflight five = lookAhead(plan, site, Horizon(15));
    ASSERT_TRUE(five.better);
    EXPECT_THAT(five.summary(), HasSubstr("\u2033 expected; 30\u00b0: +- "));
    Plan proposed = plan;
    proposed.slew = -five.better->slew;
    const Preflight better = lookAhead(proposed, site, Horizon(15));
    EXPECT_EQ(better.prospect.covariance.sigma(), five.better->sigma);
    EXPECT_FALSE(better.better) << "good enough";
    EXPECT_GT(five.prospect.covariance.sigma(), 10 * five.better->sigma);
}

TEST(Preflight, PlacesOnTheSky) {
    const struct {
        double hourAngle, declination, latitude, altitude, azimuth;
    } cases[] = {
        {0, 20, 50, 60, 180}, {0, 80, 50, 60, 0},     {-6, 0, 50, 0, 90},  {6, 0, 50, 0, 270},
        {12, 70, 50, 30, 0},  {0, -60, -35, 65, 180}, {0, 20, -35, 35, 0},
    };
    for (const auto& c : cases) {
        const PlaceOnSky place = placeOnSky(c.hourAngle, c.declination, c.latitude);
        EXPECT_NEAR(place.altitude, c.altitude, 1e-6);
        EXPECT_NEAR(std::remainder(place.azimuth - c.azimuth, 360), 0, 1e-6);
    }
}

TEST(Preflight, ProposesWhereAllOfTheArcCanBeSeen) {
    const Site site{.latitude = 50, .air = standardAir(0)};
    const Plan plan{.hourAngle = 0, .declination = 0, .slew = 15, .rollSigma = 20};
    const Horizon horizon(20);
    const auto places = startingPlaces(plan, site, horizon);
    ASSERT_GT(places.size(), 50u);
    for (const StartingPlace& place : places) {
        Plan there = plan;
        there.hourAngle = place.hourAngle;
        there.declination = place.declination;
        EXPECT_THAT(lookAhead(there, site, horizon).warnings(),
                    testing::Each(HasSubstr("reaches hour angle six")));
    }
    const auto best = bestOf(places);
    ASSERT_TRUE(best);
    EXPECT_GE(best->separability, 0.5);
    EXPECT_FALSE(bestOf(startingPlaces(plan, site, Horizon(88))));
}

}  // namespace
}  // namespace vantrel::engine
