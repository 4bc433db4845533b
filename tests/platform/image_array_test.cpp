#include "platform/image_array.h"

#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/grid_gaps.h"

namespace vantrel::platform {
namespace {

using Counts = std::vector<std::uint16_t>;

const Counts& counts(const ImageArray& image) { return std::get<Counts>(image.pixels()); }

ImageArray fourPixels() { return {2, 2, Counts{1, 2, 3, 4}}; }

TEST(ImageArray, CountsColumnsFirstAndRowsSecond) {
    const ImageArray image(3, 2, Counts{0, 1, 2, 10, 11, 12});
    EXPECT_EQ(image.at(2, 0), 2);
    EXPECT_EQ(image.at(1, 1), 11);
}

TEST(ImageArray, SetsPixelsWhereTheyAreWhenNobodyElseHoldsThem) {
    auto first = std::make_shared<const ImageArray>(fourPixels());
    const std::uint16_t* where = counts(*first).data();
    const ImageArray marked = first->withPixels({2}, 7);
    first.reset();
    EXPECT_EQ(counts(marked).data(), where);
    EXPECT_EQ(counts(marked), (Counts{1, 2, 7, 4}));
}

TEST(ImageArray, RemembersWhatStoodWherePixelsWereSet) {
    const ImageArray bare(3, 2, Counts{1, 2, 3, 4, 5, 6});
    const ImageArray first = bare.withPixels({4, 1}, 9);
    const ImageArray marked = first.withPixels({5, 4}, 8);
    std::vector<std::pair<std::size_t, double>> set;
    for (const auto& pixel : marked.setPixels()) set.emplace_back(pixel.place, pixel.before);
    EXPECT_EQ(set, (std::vector<std::pair<std::size_t, double>>{{1, 2}, {4, 5}, {5, 6}}));
    EXPECT_EQ(counts(marked.untouched(0, 0, 3, 2)), counts(bare));
    EXPECT_EQ(counts(marked.untouched(1, 1, 2, 1)), (Counts{5, 6}));
    EXPECT_EQ(counts(marked.untouched(2, 0, 1, 2)), (Counts{3, 6}));

    ImageArray rewritten = marked;
    std::get<Counts>(rewritten.pixels())[4] = 7;
    EXPECT_TRUE(rewritten.setPixels().empty());
    EXPECT_EQ(marked.setPixels().size(), 3U);
    EXPECT_EQ(counts(marked), (Counts{1, 9, 3, 4, 8, 8})) << "changes reach nobody else";
    EXPECT_EQ(counts(first), (Counts{1, 9, 3, 4, 9, 6}));
    EXPECT_TRUE(bare.setPixels().empty());
}

TEST(ImageArray, SetsTheNearestValueThatAPixelCanHold) {
    const struct {
        ImageArray::Pixels pixel;
        double value;
        double expected;
    } rows[] = {
        {Counts{0}, 2147483000.0, 65535},    {Counts{5}, -3, 0},
        {Counts{0}, 1234.6, 1235},           {std::vector<std::int32_t>{0}, 1e12, 2147483647.0},
        {std::vector<float>{0}, 0.25, 0.25},
    };
    for (const auto& row : rows)
        EXPECT_EQ(ImageArray(1, 1, row.pixel).withPixels({0}, row.value).at(0, 0), row.expected);
}

// ---- grid gaps

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
