#include "engine/axis/chi_square.h"

#include <cmath>

#include <gtest/gtest.h>

namespace vantrel::engine {
namespace {

// Abramowitz and Stegun, table 26.8: values that are exceeded with a probability.
TEST(ChiSquare, AgreesWithTheTable) {
    const struct {
        double value;
        int freedom;
        double probability;
    } rows[] = {{3.84146, 1, 0.05}, {5.99146, 2, 0.05},  {7.81473, 3, 0.05},  {6.63490, 1, 0.01},
                {13.2767, 4, 0.01}, {23.2093, 10, 0.01}, {30.5779, 15, 0.01}, {13.8155, 2, 0.001}};
    for (const auto& row : rows) {
        EXPECT_NEAR(chiSquareTail(row.value, row.freedom) / row.probability, 1, 1e-4) << row.value;
        EXPECT_NEAR(chiSquareLimit(row.probability, row.freedom), row.value, 1e-3) << row.value;
    }
    // Far out: exp(-x/2) with two degrees of freedom, smaller by the root of πx/2 with one.
    EXPECT_NEAR(logChiSquareTail(5000, 2), -2500, 1e-9);
    EXPECT_NEAR(logChiSquareTail(5000, 1), -2500 - 0.5 * std::log(2500 * 3.14159265), 1e-3);
    EXPECT_EQ(chiSquareTail(5, 0), 1);
    EXPECT_EQ(chiSquareTail(0, 3), 1);
}

}  // namespace
}  // namespace vantrel::engine
