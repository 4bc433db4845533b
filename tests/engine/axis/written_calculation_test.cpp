#include "engine/axis/written_calculation.h"

#include <array>
#include <cmath>
#include <random>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "simulated_mount.h"

namespace vantrel::engine {
namespace {

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
