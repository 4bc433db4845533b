#include "engine/axis/least_squares.h"

#include <array>
#include <cmath>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "engine/axis/written_calculation.h"
#include "simulated_mount.h"

namespace vantrel::engine {
namespace {

using test::arc;
using test::SimulatedMount;

constexpr double kArcsecondsPerDegree = 3600;

/// On the sky, in arc-seconds.
double distanceBetween(const AxisEstimate& estimate, const SimulatedMount& mount) {
    const double pole = std::cos(mount.site.latitude * test::kDegree);
    return std::hypot((estimate.fromTruePole.azimuth - mount.azimuth) * pole,
                      estimate.fromTruePole.elevation - mount.elevation) *
           60;
}

TEST(LeastSquares, AgreesWithTheWrittenCalculationWhereThatIsRight) {
    for (const double latitude : {50.0, -35.0})
        for (const double middle : {0.0, 3.0, -2.5})
            for (const double declination : {40.0, 5.0, -30.0})
                for (const double slew : {5.0, 20.0, 30.0}) {
                    SimulatedMount mount{.site = {latitude, kNoAir}, .azimuth = 37, .elevation = -21};
                    mount.offsetHA = 0.08;
                    mount.offsetDec = -0.3;
                    mount.declination = declination;
                    const auto plates = mount.plates(arc(middle, slew, 3));
                    const AxisEstimate written = WrittenCalculation().estimate(plates, mount.site);
                    const AxisEstimate fitted = LeastSquares().estimate(plates, mount.site);
                    ASSERT_TRUE(written.valid() && fitted.valid());
                    const std::string where = std::to_string(latitude) + " " + std::to_string(middle) + " " +
                                              std::to_string(declination) + " " + std::to_string(slew);
                    EXPECT_NEAR(fitted.written.ErrorAmplitude * kArcsecondsPerDegree,
                                written.written.ErrorAmplitude * kArcsecondsPerDegree, 0.01)
                        << where;
                    EXPECT_NEAR(std::remainder(fitted.written.ErrorAngle - written.written.ErrorAngle, 360) *
                                    kArcsecondsPerDegree * std::sin(0.7 * test::kDegree),
                                0, 0.01)
                        << where;
                    EXPECT_NEAR(fitted.written.OffsetRA, written.written.OffsetRA, 1e-6) << where;
                    EXPECT_NEAR(fitted.written.OffsetDec, written.written.OffsetDec, 1e-5) << where;
                    EXPECT_NEAR(distanceBetween(fitted, mount), 0, 0.01) << where;
                }
}

struct Place {
    double latitude, middle, declination, slew;
    int plates;
    const char* why;
};

TEST(LeastSquares, FindsTheAxisEverywhereThroughTheAir) {
    const Place places[] = {
        {50, 0, 30, 20, 3, "around the meridian"}, {50, 6, 40, 20, 3, "astride six hours"},
        {50, -6, 40, 20, 3, "in the east"},        {50, 12, 70, 20, 3, "below the pole"},
        {50, 0, 0, 20, 3, "on the equator"},       {50, 0, 49.9, 20, 3, "through the zenith"},
        {50, 2, 88.5, 40, 3, "near the pole"},     {50, 2, 89.9, 60, 4, "almost on the axis"},
        {-33, 0, -40, 15, 3, "in the south"},      {-33, 5.5, -60, 15, 5, "in the south, astride six hours"},
        {0, 1, 20, 20, 3, "at the equator"},       {65, 3, 10, 5, 7, "in the far north, short steps"},
        {50, 1, 30, 60, 2, "two plates"}};
    for (const Place& place : places) {
        SimulatedMount mount{.site = {place.latitude, standardAir(300)}, .azimuth = 83, .elevation = -41};
        mount.declination = place.declination;
        mount.offsetHA = -0.2;
        const auto plates = mount.plates(arc(place.middle, place.slew, place.plates));
        const AxisEstimate estimate = LeastSquares().estimate(plates, mount.site);
        ASSERT_TRUE(estimate.valid()) << place.why << " " << static_cast<int>(estimate.validity);
        // The two models of the air differ by a thousandth, and by more low down.
        EXPECT_NEAR(distanceBetween(estimate, mount), 0, 0.5) << place.why;
        EXPECT_NEAR(estimate.chiSquare, 0, 0.01) << place.why;
        for (const PlateResidual& residual : estimate.residuals) {
            EXPECT_NEAR(residual.across, 0, 0.1) << place.why;
            EXPECT_NEAR(residual.roll.value_or(0), 0, 0.5) << place.why;
        }
    }
}

/// Share of Monte-Carlo estimates within one and two sigmas of the truth, their mean, and chi-square.
struct Coverage {
    double one = 0, two = 0;
    double meanEast = 0, meanUp = 0;  // in units of its own uncertainty
    double chiSquare = 0;             // mean, over degrees of freedom
    int degreesOfFreedom = 0;
};

Coverage coverageAt(const Place& place, bool roll, bool readings, double airScatter, int trials) {
    std::mt19937 random(20261125);
    std::normal_distribution<double> normal;
    SimulatedMount mount{.site = {place.latitude, standardAir(300)}, .azimuth = 24, .elevation = 17};
    mount.site.air.uncertainty = airScatter;
    mount.declination = place.declination;
    const FitSettings settings{.centreFloor = 0, .rollFloor = 0, .sagSigma = 0};
    const double toSky = 60 * std::cos(place.latitude * test::kDegree);
    auto exact = mount.plates(arc(place.middle, place.slew, place.plates));
    Coverage coverage;
    double sigmaEast = 0;
    double sigmaUp = 0;
    for (int trial = 0; trial < trials; ++trial) {
        if (airScatter > 0) {
            test::SimulatedAir air(mount.site.air);
            air.thicken(1 + airScatter * normal(random));
            exact = mount.plates(arc(place.middle, place.slew, place.plates), air);
        }
        for (Plate& plate : exact) {
            if (!roll) plate.positionAngle.reset();
            if (!readings) plate.reading.reset();
        }
        const auto plates = test::blurred(exact, {}, random);
        const AxisEstimate estimate = LeastSquares(settings).estimate(plates, mount.site);
        if (!estimate.valid()) continue;
        const double east = (estimate.fromTruePole.azimuth - mount.azimuth) * toSky;
        const double up = (estimate.fromTruePole.elevation - mount.elevation) * 60;
        const double distance = estimate.covariance->chiSquareOf(east, up);
        coverage.one += (distance < 1) / static_cast<double>(trials);
        coverage.two += (distance < 4) / static_cast<double>(trials);
        coverage.meanEast += east / trials;
        coverage.meanUp += up / trials;
        sigmaEast = std::sqrt(estimate.covariance->eastEast / trials);
        sigmaUp = std::sqrt(estimate.covariance->upUp / trials);
        coverage.degreesOfFreedom = estimate.degreesOfFreedom;
        if (estimate.degreesOfFreedom > 0)
            coverage.chiSquare += estimate.chiSquare / estimate.degreesOfFreedom / trials;
    }
    coverage.meanEast /= sigmaEast;
    coverage.meanUp /= sigmaUp;
    return coverage;
}

/// A tube that droops by F cos a passes for an axis that is off in altitude by F sin(declination)
/// cos(latitude), and the uncertainty allows for so much.
TEST(LeastSquares, AllowsForATubeThatSags) {
    constexpr double kSag = 20;  // arc-seconds
    for (const auto& [latitude, declination] :
         {std::pair{50.0, 30.0}, {50.0, 70.0}, {20.0, -10.0}, {-35.0, 25.0}}) {
        SCOPED_TRACE(testing::Message() << latitude << ", " << declination);
        SimulatedMount mount{.site = {latitude, kNoAir}, .azimuth = 2, .elevation = 1};
        mount.declination = declination;
        auto plates = mount.plates(arc(0, 30, 5));
        for (Plate& plate : plates) plate.positionAngle.reset();
        const auto estimateOf = [&](double sagSigma) {
            return LeastSquares({.sagSigma = sagSigma}).estimate(plates, mount.site);
        };
        const double expected =
            kSag * std::sin(declination * test::kDegree) * std::cos(latitude * test::kDegree);
        const double without = estimateOf(0).covariance->upUp;
        EXPECT_NEAR(std::sqrt(estimateOf(kSag).covariance->upUp - without), std::abs(expected), 0.05 * kSag);

        const double before = estimateOf(0).fromTruePole.elevation;
        for (Plate& plate : plates) {  // by spherical trigonometry
            const double h = plate.hourAngle * 15 * test::kDegree;
            const double d = plate.declination * test::kDegree;
            const double phi = latitude * test::kDegree;
            const double north = std::cos(d) * std::sin(phi) - std::sin(d) * std::cos(phi) * std::cos(h);
            plate.declination -= kSag * north / 3600;
            plate.hourAngle += kSag * std::cos(phi) * std::sin(h) / std::cos(d) / 3600 / 15;
        }
        EXPECT_NEAR(std::abs(estimateOf(0).fromTruePole.elevation - before) * 60, std::abs(expected),
                    0.05 * kSag);
    }
}

TEST(LeastSquares, IsAsGoodAsItSaysEverywhere) {
    const struct {
        Place place;
        bool roll, readings;
        double air;
    } rows[] = {{{50, 0, 30, 20, 3, "plain"}, true, true, 0},
                {{50, 0, 30, 20, 3, "without roll and readings"}, false, false, 0},
                {{50, 0, 30, 20, 3, "air uncertain"}, true, true, 0.05},
                {{50, 6, 40, 15, 3, "astride six hours"}, true, true, 0},
                {{50, -6, 40, 10, 5, "rising"}, false, true, 0.03},
                {{65, 2, 75, 5, 7, "seven plates"}, true, true, 0},
                {{40, 0, 60, 40, 2, "two plates"}, true, true, 0},
                {{40, 0, 60, 40, 2, "two plates without readings"}, true, false, 0}};
    constexpr int kTrials = 400;
    for (const auto& row : rows) {
        const Coverage coverage = coverageAt(row.place, row.roll, row.readings, row.air, kTrials);
        EXPECT_NEAR(coverage.one, 0.3935, 0.06) << row.place.why;
        EXPECT_NEAR(coverage.two, 0.8647, 0.05) << row.place.why;
        EXPECT_NEAR(coverage.meanEast, 0, 3.3) << row.place.why;
        EXPECT_NEAR(coverage.meanUp, 0, 3.3) << row.place.why;
        if (coverage.degreesOfFreedom > 0) {
            EXPECT_NEAR(coverage.chiSquare, 1, 0.2) << row.place.why;
        }
    }
}

TEST(LeastSquares, SaysWhatItCannotTell) {
    const SimulatedMount mount;
    const auto three = mount.plates({1, 0, -1});
    const auto bare = [](std::vector<Plate> plates) {
        for (Plate& plate : plates) {
            plate.positionAngle.reset();
            plate.reading.reset();
        }
        return plates;
    };
    auto broken = three;
    broken[1].declination = std::nan("");
    auto impossible = three;
    impossible[2].covariance = {1, 2, 1};
    const struct {
        std::vector<Plate> plates;
        Validity validity;
        const char* why;
    } rows[] = {{{}, Validity::kWrongNumber, "none"},
                {{three[0]}, Validity::kWrongNumber, "one"},
                {bare({three[0], three[1]}), Validity::kWrongNumber, "two centres alone"},
                {{three[0], three[0], three[0]}, Validity::kUndetermined, "thrice the same"},
                {bare({three[0], three[1], three[1]}), Validity::kUndetermined, "twice the same"},
                {mount.plates({0, 0.0002, 0.0004}), Validity::kUndetermined, "close together"},
                {broken, Validity::kUnusableInput, "not a number"},
                {impossible, Validity::kUnusableInput, "a correlation of 2"},
                {bare(three), Validity::kValid, "three centres"}};
    for (const auto& row : rows)
        EXPECT_EQ(LeastSquares().estimate(row.plates, mount.site).validity, row.validity) << row.why;
    EXPECT_EQ(LeastSquares({.readingSigma = 0}).estimate(three, mount.site).validity,
              Validity::kUnusableInput);
}

TEST(LeastSquares, ResidualsSayWhereAndHowMuch) {
    const SimulatedMount mount{.declination = 20};
    auto plates = mount.plates(arc(0, 5, 7));
    plates[3].declination += 9.0 / kArcsecondsPerDegree;
    const auto estimate = LeastSquares().estimate(plates, mount.site);
    ASSERT_TRUE(estimate.valid());
    for (std::size_t i = 0; i < plates.size(); ++i)
        EXPECT_LT(std::abs(estimate.residuals[i].across), i == 3 ? 9.0 : 4.0) << i;
    EXPECT_GT(estimate.residuals[3].across, 5);

    auto slipped = mount.plates(arc(0, 5, 7));
    slipped[2].reading->hourAngle += 0.01;  // hours: 9'
    const auto other = LeastSquares().estimate(slipped, mount.site);
    EXPECT_NEAR(*other.residuals[2].reading, 540 * 6 / 7.0, 5);
    EXPECT_NEAR(*other.residuals[5].reading, -540 / 7.0, 5);
}

// ---- the written calculation

Plate plateAt(double hourAngle, double declination, double read) {
    return {.hourAngle = hourAngle, .declination = declination, .reading = MountReading{read, 40}};
}

TEST(WrittenCalculation, IsTheOldOneToTheLastBit) {
    const std::array<PlatePosition, 3> positions{
        {{0.987, 40.113, 1.01}, {23.962, 40.147, 0.01}, {22.951, 40.185, 23.01}}};
    const auto plateOf = [](const PlatePosition& p) { return plateAt(p.HA, p.Dec, p.ScopeHA); };
    const std::vector<Plate> plates{plateOf(positions[0]), plateOf(positions[1]), plateOf(positions[2])};
    const PolarError expected = CalcPolarError(positions, 40).error;
    const AxisEstimate estimate = WrittenCalculation().estimate(plates, {.latitude = 50});
    ASSERT_TRUE(estimate.valid());
    EXPECT_EQ(estimate.written.ErrorAmplitude, expected.ErrorAmplitude);
    EXPECT_EQ(estimate.written.ErrorAngle, expected.ErrorAngle);
    EXPECT_EQ(estimate.written.OffsetRA, expected.OffsetRA);
    EXPECT_EQ(estimate.written.OffsetDec, expected.OffsetDec);
    // Above the refracted pole by less than above the true one.
    EXPECT_NEAR((estimate.fromTruePole.elevation - estimate.fromRefractedPole.elevation) * 60, 48, 1);
    EXPECT_EQ(estimate.fromTruePole.azimuth, estimate.fromRefractedPole.azimuth);
}

TEST(WrittenCalculation, SaysWhenItCannotBeRight) {
    const std::vector<Plate> good{plateAt(1, 40, 1), plateAt(0, 40, 0), plateAt(23, 40, 23)};
    std::vector<Plate> two{good[0], good[1]};
    std::vector<Plate> silent = good;
    silent[1].reading.reset();
    const std::vector<Plate> astride{plateAt(7, 40, 7), plateAt(6, 40, 6), plateAt(5, 40, 5)};
    const std::vector<Plate> impossible{plateAt(1, 40, 0.9), plateAt(0.99, 55, 0.89),
                                        plateAt(0.98, 30, 0.88)};
    const std::vector<Plate> broken{plateAt(std::nan(""), 40, 1), good[1], good[2]};
    const struct {
        const std::vector<Plate>& plates;
        Validity validity;
        const char* why;
    } rows[] = {{two, Validity::kWrongNumber, "two plates"},
                {silent, Validity::kNoReadings, "no reading"},
                {astride, Validity::kAstrideSixHours, "astride six hours"},
                {impossible, Validity::kNoSolution, "no fit"},
                {broken, Validity::kUnusableInput, "not a number"}};
    for (const auto& row : rows)
        EXPECT_EQ(WrittenCalculation().estimate(row.plates, {}).validity, row.validity) << row.why;
}

TEST(WrittenCalculation, IsAsGoodAsItSays) {
    std::mt19937 random(4);
    for (const auto& [amplitude, declination] : {std::pair{2.0, 40.0}, {60.0, 40.0}, {20.0, 0.0}}) {
        test::SimulatedMount mount{.elevation = amplitude, .declination = declination};
        const auto exact = mount.plates(test::arc(2, 20, 3));
        constexpr int kTrials = 400;
        int one = 0;
        int two = 0;
        for (int trial = 0; trial < kTrials; ++trial) {
            const auto plates = test::blurred(exact, {.centre = 0.5}, random);
            const auto estimate = WrittenCalculation({.centreFloor = 0}).estimate(plates, mount.site);
            ASSERT_TRUE(estimate.covariance);
            const double distance = estimate.covariance->chiSquareOf(
                estimate.fromTruePole.azimuth * 60 * std::cos(50 * test::kDegree),
                (estimate.fromTruePole.elevation - amplitude) * 60);
            one += distance < 1;
            two += distance < 4;
        }
        EXPECT_NEAR(one / 400.0, 0.39, 0.06) << amplitude << "' at " << declination;
        EXPECT_NEAR(two / 400.0, 0.86, 0.05) << amplitude << "' at " << declination;
    }
}

TEST(AstrideSixHours, LooksAtBothSides) {
    const struct {
        std::array<double, 3> hours;
        bool astride;
    } rows[] = {{{1, 0, 23}, false},   {{5, 5.5, 5.9}, false},     {{5.5, 6.5, 7.5}, true},
                {{7, 8, 9}, false},    {{-5.5, -6.5, 17}, true},   {{19, 18.5, 17.5}, true},
                {{13, 12, 11}, false}, {{18.5, 19.5, 20.5}, false}};
    for (const auto& row : rows) EXPECT_EQ(astrideSixHours(row.hours), row.astride) << row.hours[0];
}

}  // namespace
}  // namespace vantrel::engine
