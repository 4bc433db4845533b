#include "correction/stars/stripe_search.h"

#include <gmock/gmock.h>

#include "correction/stars/stripe_peak.h"
#include "platform/errors.h"

namespace vantrel::correction {
namespace {

std::vector<double> spikes(std::size_t elements, const std::map<std::size_t, double>& heights,
                           double perElement = 0) {
    std::vector<double> profile(elements);
    for (std::size_t i = 0; i < elements; ++i) profile[i] = 7 + perElement * static_cast<double>(i);
    for (const auto& [place, height] : heights) profile[place] += height;
    return profile;
}

TEST(StripePeak, isTheHeightAboveTheLineThroughTheEndsOfTheSmoothedProfile) {
    const struct {
        const char* what;
        std::vector<double> profile;
        double peak;
    } rows[] = {
        {"five elements aren't smoothed", spikes(5, {{2, 12}}), 12},
        {"1.5 elements are two", spikes(7, {{3, 12}}), 6},
        {"2.5 elements are two as well", spikes(11, {{5, 12}}), 6},
        {"3.5 elements are four", spikes(15, {{7, 12}}), 3},
        {"a range of 19: 4.75 are five", spikes(20, {{9, 10}}), 2},
        {"never more than five", spikes(100, {{50, 10}}), 2},
        {"a slope is no peak", spikes(60, {}, 3), 0},
        {"nor lowers or raises one", spikes(60, {{30, 10}}, -3), 2},
        {"a dip counts like a peak", spikes(60, {{30, -10}}), 2},
        {"from the deepest to the highest", spikes(60, {{15, 10}, {40, -5}}), 3},
        {"an end that stands high tilts the line", spikes(60, {{0, 55}}), 10.8},
    };
    for (const auto& row : rows) {
        const auto peak = Peak(row.profile);
        ASSERT_TRUE(peak) << row.what;
        EXPECT_NEAR(*peak, row.peak, 1e-9) << row.what;
    }
    EXPECT_FALSE(Peak({}));
    EXPECT_FALSE(Peak({5}));
    for (const auto& profile : {spikes(2, {}), spikes(3, {})}) {
        try {
            Peak(profile);
            ADD_FAILURE() << "two or three elements can't be smoothed";
        } catch (const platform::OperationError& error) {
            EXPECT_EQ(error.number(), platform::error_number::kDivisionByZero);
        }
    }
}

TEST(StripeGrid, isSquareAndCentred) {
    const struct {
        int width, height, size;
    } sizes[] = {{19, 19, 1}, {39, 20, 1}, {40, 19, 2}, {100, 200, 10}, {3, 2, 1}};
    for (const auto& row : sizes) EXPECT_EQ(stripeSize(row.width, row.height), row.size) << row.width;
    const StripeGrid grid = centredGrid(104, 5);
    EXPECT_EQ(grid.count, 20);
    EXPECT_EQ(grid.offset, 2);
    EXPECT_EQ(grid.stripeOf(1), 0);
    EXPECT_EQ(grid.stripeOf(6), 0);
    EXPECT_EQ(grid.stripeOf(7), 1);
    EXPECT_EQ(grid.stripeOf(103), 19);
}

TEST(StripeGrid, windowsRoundHalvesToEven) {
    const struct {
        StripeGrid grid;
        int first, last;
        double margin;
        int from, to;
    } rows[] = {
        {{2, 20, 0}, 2, 2, 2, 0, 8},    // 0.5 and 8.5
        {{2, 20, 1}, 2, 3, 2, 2, 12},   // 1.5 and 11.5
        {{5, 20, 3}, 4, 6, 1, 20, 40},  // 20 and 40
        {{4, 20, 0}, 0, 0, 2, -6, 10},  // -6.5 and 9.5
    };
    for (const auto& row : rows) {
        const auto window = row.grid.window(row.first, row.last, row.margin);
        EXPECT_EQ(window.from, row.from) << row.grid.size << ", " << row.first;
        EXPECT_EQ(window.to, row.to) << row.grid.size << ", " << row.last;
    }
}

TEST(StripeSearch, findsTheStripesOfTheStarAndSaysHowMuchTheyStandOut) {
    PixelGrid image(30, 40);
    image.at(11, 20) = 50;  // stripe 5 of two columns each, a peak of 50 / 5
    image.at(12, 20) = 30;  // stripe 6, more than half as high
    image.at(14, 20) = 20;  // stripe 7 isn't
    const StripeGrid columns = centredGrid(30, 2);
    const auto across = searchStripes(image, StripeDirection::kColumns, columns, {0, 39}, 3, 2);
    EXPECT_EQ(across.first, 5);
    EXPECT_EQ(across.last, 6);
    EXPECT_NEAR(across.significance, 5, 1e-9);
    EXPECT_EQ(across.withoutPeak, 0);

    const StripeGrid rows = centredGrid(40, 2);
    const auto down = searchStripes(image, StripeDirection::kRows, rows, {5, 29}, 3, 2);
    EXPECT_EQ(down.first, 10);
    EXPECT_EQ(down.last, 10);
    EXPECT_NEAR(down.significance, 10, 1e-9);

    EXPECT_EQ(searchStripes(image, StripeDirection::kColumns, columns, {0, 39}, 3, 0).significance, 1000);
    EXPECT_EQ(
        searchStripes(PixelGrid(30, 40), StripeDirection::kColumns, columns, {0, 39}, 3, 2).significance, 0);
}

TEST(StripeSearch, isCertainWithFewStripesAndFailsWithNone) {
    const PixelGrid blank(12, 40);
    const auto significance = [&](int size) {
        return searchStripes(blank, StripeDirection::kColumns, centredGrid(12, size), {0, 39}, 3, 2)
            .significance;
    };
    EXPECT_EQ(significance(3), 0);     // four stripes: three below the highest
    EXPECT_EQ(significance(4), 1000);  // three
    EXPECT_THROW(significance(13), platform::OperationError);
    EXPECT_EQ(searchStripes(blank, StripeDirection::kRows, centredGrid(40, 2), {5, 5}, 3, 2).withoutPeak, 20);
}

}  // namespace
}  // namespace vantrel::correction
