#include "imaging/shown_image.h"

#include <gtest/gtest.h>

namespace vantrel::imaging {
namespace {

/// Even steps of the sky's noise around the level.
platform::ImageRef sky(std::uint16_t level, std::size_t side = 60) {
    std::vector<std::uint16_t> pixels(side * side);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<std::uint16_t>(level + i * 7919 % 101);
    return std::make_shared<const platform::ImageArray>(side, side, std::move(pixels));
}

class ShownImageTest : public testing::Test {
  protected:
    void expose(platform::ImageRef pixels) {
        ImageDocument picture;
        picture.pixels = std::move(pixels);
        documents.replaceCurrent(std::move(picture));
    }
    void draw(double value) {
        const auto& document = documents.current();
        std::vector<std::size_t> places(600);
        for (std::size_t i = 0; i < places.size(); ++i) places[i] = i;
        documents.setPixels(document, std::make_shared<const platform::ImageArray>(
                                          document->pixels->withPixels(places, value)));
    }

    OpenDocuments documents;
    ShownImage image{documents};
};

TEST_F(ShownImageTest, MarksLeaveTheStretchTheNextExposureBringsItsOwn) {
    EXPECT_EQ(image.stretch(), ShownStretch{}) << "without an image";
    expose(sky(1000));
    const ShownStretch before = image.stretch();
    draw(before.white);
    draw(60'000);
    EXPECT_EQ(image.stretch().white, before.white);
    EXPECT_EQ(image.stretch().black, before.black);
    EXPECT_EQ(image.stretch().curve().at(static_cast<float>(before.white)), ToneCurve::kWhite);
    expose(sky(5000));
    EXPECT_NEAR(image.stretch().black, before.black + 4000, 1);
    documents.setPixels(documents.current(), sky(9000, 30));
    EXPECT_NEAR(image.stretch().black, before.black + 8000, 10) << "another format is another image";
}

TEST_F(ShownImageTest, TheStatisticsAreThoseOfThePixelsInFront) {
    EXPECT_EQ(image.statistics().median, 0);
    expose(sky(1000));
    EXPECT_NEAR(image.statistics().median, 1050, 1);
    documents.setPixels(documents.current(), sky(3000));
    EXPECT_NEAR(image.statistics().median, 3050, 1);
    ImageDocument other;
    other.pixels = sky(200);
    const auto second = documents.open(other);
    EXPECT_NEAR(image.statistics().median, 250, 1);
    documents.close(second);
    EXPECT_NEAR(image.statistics().median, 3050, 1);
}

TEST_F(ShownImageTest, AChosenStretchIsTheDocumentsUntilItIsAutomaticAgain) {
    int told = 0;
    const auto telling = image.changed.subscribe([&] { ++told; });
    image.choose({1, 2, 0.3});
    EXPECT_EQ(told, 0) << "there is nothing to show";
    expose(sky(1000));
    const ShownStretch automatic = image.stretch();
    told = 0;
    image.choose({500, 7000, 0.3});
    EXPECT_EQ(told, 1);
    expose(sky(2000));
    EXPECT_EQ(image.stretch(), (ShownStretch{500, 7000, 0.3}));
    EXPECT_EQ(documents.current()->shownStretch().max, 7000);
    image.choose({500, 400, 0});
    EXPECT_GT(image.stretch().white, image.stretch().black);
    EXPECT_GT(image.stretch().midtone, 0);
    image.beAutomatic();
    EXPECT_TRUE(image.automatic());
    EXPECT_NEAR(image.stretch().black, automatic.black + 1000, 1);

    // Whoever chooses black and white from outside gets the midtone that suits.
    documents.setStretch(documents.current(), Stretch{1900, 60'000});
    EXPECT_FALSE(image.automatic());
    EXPECT_LT(image.stretch().midtone, 0.05);
}

}  // namespace
}  // namespace vantrel::imaging
