#include "engine/axis/preflight.h"

#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/axis/least_squares.h"
#include "engine/axis/prospect.h"
#include "simulated_mount.h"

namespace vantrel::engine {
namespace {

using test::arc;
using test::SimulatedMount;
using testing::ElementsAre;
using testing::HasSubstr;

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
        const Site& site;
        bool meridian;
        std::optional<double> hoursToSix;
        const char* warning = "";
    } cases[] = {
        {"east of the meridian", -1, 30, -20, north, false, 7},
        {"over it, westward", -1, 30, 20, north, true, 13 / 3.},
        {"low", 1, 0, 20, north, false, 7 / 3., "Plate 3 will stand 22 degrees high, below the horizon"},
        {"late", 3.2, 60, 20, north, false, 2 / 15., "The last plate reaches hour angle six in 8 minutes"},
        {"astride", 4, 60, 20, north, false, {}, "The plates will lie on both sides of hour angle six"},
        {"in the south", 1, -50, -15, south, true, 5},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const Plan plan{
            .hourAngle = c.hourAngle, .declination = c.declination, .slew = c.slew, .rollSigma = 20};
        const Preflight ahead = lookAhead(plan, c.site, Horizon(25));
        EXPECT_EQ(ahead.warnings(), std::vector<std::string>(*c.warning == '\0' ? 0 : 1, c.warning));
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

// ---- prospect

const Site kAirless{50, kNoAir};
const FitSettings kNoFloors{.centreFloor = 0, .rollFloor = 0, .sagSigma = 0};

/// Around the meridian, where up is along the radius of the arc and east across.
Plan planned(double slew, int plates, double declination) {
    return {.hourAngle = -slew * (plates - 1) / 2 / 15,
            .declination = declination,
            .slew = slew,
            .exposures = std::vector<int>(static_cast<std::size_t>(plates), 1),
            .centreSigma = 1,
            .rollSigma = std::nullopt,
            .readings = false};
}

double up(const Prospect& prospect) { return std::sqrt(prospect.covariance.upUp); }

TEST(Prospect, CountsExposuresWhereTheyAre) {
    Plan plan = planned(20, 3, 30);
    const double single = up(foresee(plan, kAirless, kNoFloors));
    plan.exposures = {4, 4, 4};
    EXPECT_NEAR(up(foresee(plan, kAirless, kNoFloors)), single / 2, 1e-3);
    plan.exposures = {3, 6, 3};
    EXPECT_NEAR(up(foresee(plan, kAirless, kNoFloors)), single / std::sqrt(4.5), 1e-3);
}

TEST(Prospect, IsWhatTheEstimateSaysAfterwards) {
    const struct {
        double latitude, hourAngle, declination, slew;
    } rows[] = {{50, -2, 30, 15}, {-40, 4, -20, 12}, {60, 5, 60, 10}};
    for (const auto& row : rows) {
        SimulatedMount mount{.site = {row.latitude, standardAir(0)}, .azimuth = 5, .elevation = 5};
        mount.declination = row.declination;
        auto plates =
            mount.plates({row.hourAngle, row.hourAngle + row.slew / 15, row.hourAngle + 2 * row.slew / 15});
        for (Plate& plate : plates) plate.covariance = PlateCovariance::ofSigmas(0.5, 12);
        const AxisEstimate estimate = LeastSquares().estimate(plates, mount.site);
        const Prospect prospect = foresee({.hourAngle = row.hourAngle,
                                           .declination = row.declination,
                                           .slew = row.slew,
                                           .centreSigma = 0.5,
                                           .rollSigma = 12},
                                          mount.site);
        EXPECT_EQ(prospect.degreesOfFreedom, estimate.degreesOfFreedom);
        EXPECT_TRUE(prospect.visibleJump);
        const ErrorEllipse before = prospect.covariance.ellipse();
        const ErrorEllipse after = estimate.covariance->ellipse();
        EXPECT_NEAR(before.major / after.major, 1, 0.02) << row.latitude;
        EXPECT_NEAR(before.minor / after.minor, 1, 0.02) << row.latitude;
        EXPECT_NEAR(std::remainder(before.direction - after.direction, 180), 0, 2) << row.latitude;
    }
}

TEST(Prospect, TellsBadPlaces) {
    Plan plan = planned(20, 3, 40);
    EXPECT_NEAR(foresee(plan, kAirless).lowestAltitude, 72.77, 0.01);
    EXPECT_FALSE(foresee(plan, kAirless).astrideSixHours);
    EXPECT_FALSE(foresee(plan, kAirless).visibleJump) << "three centres have none to spare";
    plan.hourAngle = 4;
    EXPECT_TRUE(foresee(plan, kAirless).astrideSixHours);
    plan.slew = 0;
    EXPECT_EQ(foresee(plan, kAirless).validity, Validity::kUndetermined);
    plan.exposures = {1, 0, 1};
    EXPECT_EQ(foresee(plan, kAirless).validity, Validity::kUnusableInput);
    plan.exposures = {1};
    EXPECT_EQ(foresee(plan, kAirless).validity, Validity::kWrongNumber);
}

}  // namespace
}  // namespace vantrel::engine
