#include "engine/axis/prospect.h"

#include <cmath>

#include <gtest/gtest.h>

#include "engine/axis/least_squares.h"
#include "simulated_mount.h"

namespace vantrel::engine {
namespace {

using test::arc;
using test::kDegree;
using test::SimulatedMount;

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

double east(const Prospect& prospect) { return std::sqrt(prospect.covariance.eastEast); }
double up(const Prospect& prospect) { return std::sqrt(prospect.covariance.upUp); }

TEST(Prospect, OfThreePointsIsThatOfTheTextbook) {
    for (const double declination : {0.0, 30.0, 75.0})
        for (const double arcLength : {10.0, 20.0, 40.0, 60.0, 90.0}) {
            const Prospect prospect = foresee(planned(arcLength / 2, 3, declination), kAirless, kNoFloors);
            ASSERT_EQ(prospect.validity, Validity::kValid);
            const double half = arcLength / 2 * kDegree;
            EXPECT_NEAR(east(prospect) * std::sqrt(2) * std::sin(half), 1, 1e-3) << arcLength;
            EXPECT_NEAR(up(prospect) * (1 - std::cos(half)) / std::sqrt(1.5), 1, 1e-3) << arcLength;
        }
}

TEST(Prospect, OfManyPointsTakesAllOfThem) {
    for (const int plates : {4, 7, 12}) {
        const Prospect prospect = foresee(planned(6, plates, 20), kAirless, kNoFloors);
        double sines = 0;
        double cosines = 0;
        double squares = 0;
        for (const double hours : arc(0, 6, plates)) {
            const double angle = hours * 15 * kDegree;
            sines += std::sin(angle) * std::sin(angle);
            cosines += std::cos(angle) / plates;
            squares += std::cos(angle) * std::cos(angle);
        }
        EXPECT_NEAR(east(prospect) * std::sqrt(sines), 1, 1e-3) << plates;
        EXPECT_NEAR(up(prospect) * std::sqrt(squares - plates * cosines * cosines), 1, 1e-3) << plates;
        EXPECT_EQ(prospect.degreesOfFreedom, plates - 3);
    }
}

TEST(Prospect, CountsExposuresWhereTheyAre) {
    Plan plan = planned(20, 3, 30);
    const double single = up(foresee(plan, kAirless, kNoFloors));
    plan.exposures = {4, 4, 4};
    EXPECT_NEAR(up(foresee(plan, kAirless, kNoFloors)), single / 2, 1e-3);
    // Half of all exposures in the middle are the best that twelve can do along the radius.
    const double evenly = up(foresee(plan, kAirless, kNoFloors));
    plan.exposures = {3, 6, 3};
    const double middle = up(foresee(plan, kAirless, kNoFloors));
    EXPECT_NEAR(middle / evenly, std::sqrt(2 / 2.25), 1e-3);
    plan.exposures = {2, 8, 2};
    EXPECT_GT(up(foresee(plan, kAirless, kNoFloors)), middle);
}

TEST(Prospect, AddsWhatTheRollTells) {
    for (const double declination : {0.0, 30.0, 60.0}) {
        Plan plan = planned(10, 3, declination);
        const double centresOnly = up(foresee(plan, kAirless, kNoFloors));
        plan.rollSigma = 15;
        const Prospect prospect = foresee(plan, kAirless, kNoFloors);
        const double byRoll = 15 * std::cos(declination * kDegree) / (std::sqrt(2) * std::sin(10 * kDegree));
        EXPECT_NEAR(std::pow(up(prospect), -2) / (std::pow(centresOnly, -2) + std::pow(byRoll, -2)), 1, 0.02)
            << declination;
        EXPECT_EQ(prospect.degreesOfFreedom, 2);
        EXPECT_TRUE(prospect.visibleJump);
    }
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

// What errors that nobody allows for do to an axis through three points.

TEST(ThreePoints, MagnifyAJumpInDeclination) {
    const struct {
        double arcLength, middle, end;  // degrees, arc-seconds for a jump of 5"
    } rows[] = {{40, 83, 42}, {60, 37, 19}, {90, 17, 9}};
    for (const auto& row : rows)
        for (const std::size_t jumping : {1, 2}) {
            SimulatedMount mount{.site = kAirless, .azimuth = 10, .elevation = -5};
            auto plates = mount.plates(arc(0, row.arcLength / 2, 3));
            for (Plate& plate : plates) plate = {plate.hourAngle, plate.declination};
            plates[jumping].declination += 5 / 3600.0;
            const auto offset = LeastSquares().estimate(plates, mount.site).fromTruePole;
            EXPECT_NEAR(std::abs(offset.elevation - mount.elevation) * 60,
                        jumping == 1 ? row.middle : row.end, 1)
                << row.arcLength;
        }
}

TEST(ThreePoints, AreTurnedByRefractionThatIsIgnored) {
    const Air air{1013.25, 10};
    for (const double middle : {0.0, -1.5})
        for (const double declination : {20.0, 45.0}) {
            SimulatedMount mount{.site = {45, air}};
            mount.declination = declination;
            const double slew = 20;
            auto plates = mount.plates(arc(middle, slew, 3));
            for (Plate& plate : plates) plate = {plate.hourAngle, plate.declination};
            const auto offset = LeastSquares().estimate(plates, {45, kNoAir}).fromTruePole;
            // Each plate's error towards the axis, by r = 58.3" (sin φ / sin a - sin δ) / cos δ.
            double r[3];
            for (int i = 0; i < 3; ++i) {
                const double h = arc(middle, slew, 3)[static_cast<std::size_t>(i)] * 15 * kDegree;
                const double d = declination * kDegree;
                const double sine =
                    std::sin(45 * kDegree) * std::sin(d) + std::cos(45 * kDegree) * std::cos(d) * std::cos(h);
                r[i] = 58.3 * (std::sin(45 * kDegree) / sine - std::sin(d)) / std::cos(d);
            }
            const double half = slew * kDegree;
            const double across = (r[2] - r[0]) / (2 * std::sin(half));
            const double along = ((r[0] + r[2]) / 2 - r[1]) / (1 - std::cos(half));
            EXPECT_NEAR(std::hypot(offset.azimuth * 60 * std::cos(45 * kDegree), offset.elevation * 60),
                        std::hypot(across, along), 2)
                << middle << " " << declination;
        }
}

}  // namespace
}  // namespace vantrel::engine
