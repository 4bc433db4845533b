#include "platform/grid_gaps.h"

#include <limits>

#include <gmock/gmock.h>

namespace vantrel::platform {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
using testing::ElementsAre;

TEST(GridGaps, TakeTheMeanOfTheirSurroundingsFromTheBordersInwards) {
    std::vector<double> hole = {1, 2,     3,  //
                                4, kNone, 6,  //
                                7, 8,     9};
    EXPECT_TRUE(fillGaps(hole, 3));
    EXPECT_THAT(hole, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9));
    std::vector<double> row = {kNone, kNone, 4, kNone, kNone, 8, kNone};
    EXPECT_TRUE(fillGaps(row, 7));
    EXPECT_THAT(row, ElementsAre(4, 4, 4, 4, 8, 8, 8));
    std::vector<double> column = {kNone, 2, kNone, 6};
    EXPECT_TRUE(fillGaps(column, 1));
    EXPECT_THAT(column, ElementsAre(2, 2, 4, 6));
    std::vector<double> empty(6, kNone);
    EXPECT_FALSE(fillGaps(empty, 3));
}

}  // namespace
}  // namespace vantrel::platform
