#include "engine/axis/written_calculation.h"

#include <array>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

namespace vantrel::engine {
namespace {

Plate plate(double hourAngle, double declination, double read) {
    return {.hourAngle = hourAngle, .declination = declination, .reading = MountReading{read, 40}};
}

TEST(WrittenCalculation, IsTheOldOneToTheLastBit) {
    const std::array<PlatePosition, 3> positions{
        {{0.987, 40.113, 1.01}, {23.962, 40.147, 0.01}, {22.951, 40.185, 23.01}}};
    std::vector<Plate> plates;
    for (const auto& p : positions) plates.push_back(plate(p.HA, p.Dec, p.ScopeHA));
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
    const std::vector<Plate> good{plate(1, 40, 1), plate(0, 40, 0), plate(23, 40, 23)};
    std::vector<Plate> two{good[0], good[1]};
    std::vector<Plate> silent = good;
    silent[1].reading.reset();
    const std::vector<Plate> astride{plate(7, 40, 7), plate(6, 40, 6), plate(5, 40, 5)};
    const std::vector<Plate> impossible{plate(1, 40, 0.9), plate(0.99, 55, 0.89), plate(0.98, 30, 0.88)};
    const std::vector<Plate> broken{plate(std::nan(""), 40, 1), good[1], good[2]};
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
