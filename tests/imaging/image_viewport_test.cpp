#include "imaging/image_viewport.h"

#include <array>

#include <gtest/gtest.h>

#include "imaging/shown_image.h"

namespace vantrel::imaging {
namespace {

ImageViewport viewOf(int imageWidth, int imageHeight, int width, int height) {
    ImageViewport view;
    view.setWindowSize(width, height);
    view.setImageSize(imageWidth, imageHeight);
    return view;
}

TEST(ImageViewport, FitsImagesOfAllSizes) {
    const struct {
        const char* what;
        int imageWidth, imageHeight, width, height;
        double scale;
        int x, y, shownWidth, shownHeight;
    } rows[] = {
        {"wide image", 2000, 1000, 1000, 1000, 0.5, 0, 250, 1000, 500},
        {"tall image", 1000, 4000, 1000, 1000, 0.25, 375, 0, 250, 1000},
        {"small image, as large as the window", 300, 200, 1000, 1000, 10.0 / 3, 0, 166, 1000, 667},
        {"a little smaller than the window", 765, 510, 900, 640, 900.0 / 765, 0, 20, 900, 600},
        {"one pixel", 1, 1, 1000, 500, 500, 250, 0, 500, 500},
        {"exactly", 640, 480, 640, 480, 1, 0, 0, 640, 480},
        {"in a window of one pixel", 9576, 6388, 1, 1, 1.0 / 9576, 0, 0, 1, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const ImageViewport view = viewOf(row.imageWidth, row.imageHeight, row.width, row.height);
        const ViewWindow window = view.window();
        EXPECT_DOUBLE_EQ(view.scale(), row.scale);
        EXPECT_EQ((std::array{window.x, window.y, window.width, window.height}),
                  (std::array{row.x, row.y, row.shownWidth, row.shownHeight}));
    }
    EXPECT_EQ(viewOf(0, 0, 100, 100).window().width, 0) << "nothing to show";
    EXPECT_EQ(viewOf(100, 100, 0, 0).window().width, 0) << "nowhere to show it";
}

TEST(ImageViewport, ZoomingKeepsWhatIsUnderTheCursor) {
    for (const ViewPoint cursor : {ViewPoint{400, 300}, ViewPoint{731, 122}, ViewPoint{50, 590}}) {
        ImageViewport view = viewOf(6000, 4000, 800, 600);
        view.zoomTo(1, {400, 300});
        for (int step = 0; step < 4; ++step) {
            const ViewPoint under = view.toImage(cursor);
            view.zoomIn(cursor);
            const ViewPoint after = view.toWindow(under);
            EXPECT_NEAR(after.x, cursor.x, 1);
            EXPECT_NEAR(after.y, cursor.y, 1);
        }
    }
}

TEST(ImageViewport, StepsThroughWholeFactorsFromWhereverItIs) {
    ImageViewport view = viewOf(1000, 1000, 370, 370);
    for (const double scale : {1.0 / 2, 1.0, 2.0, 3.0, 4.0}) {
        view.zoomIn(view.middle());
        EXPECT_DOUBLE_EQ(view.scale(), scale);
    }
    for (const double scale : {3.0, 2.0, 1.0, 1.0 / 2, 0.37, 0.37}) {
        view.zoomOut(view.middle());
        EXPECT_DOUBLE_EQ(view.scale(), scale);
    }
    EXPECT_TRUE(view.fitted()) << "as small as the whole image follows the window";
    for (int step = 0; step < 50; ++step) view.zoomIn(view.middle());
    EXPECT_DOUBLE_EQ(view.scale(), 32);
}

TEST(ImageViewport, TheNextExposureKeepsTheViewAnotherFormatDoesNot) {
    ImageViewport view = viewOf(3000, 2000, 800, 600);
    view.zoomTo(2, {100, 100});
    view.pan(-300, -200);
    const ViewWindow before = view.window();
    view.setImageSize(3000, 2000);
    EXPECT_EQ(view.window(), before);
    view.setImageSize(1500, 1000);
    EXPECT_TRUE(view.fitted());
}

TEST(ImageViewport, CantBeDrawnOffTheImage) {
    ImageViewport view = viewOf(3000, 2000, 800, 600);
    view.zoomTo(1, view.middle());
    view.pan(1e6, 1e6);
    EXPECT_EQ(view.window().left, 0);
    EXPECT_EQ(view.window().top, 0);
    view.pan(-1e6, -1e6);
    EXPECT_EQ(view.window().left, 3000 - 800);
    EXPECT_EQ(view.window().top, 2000 - 600);
    EXPECT_EQ(view.window().width, 800);
}

TEST(ImageViewport, AResizedWindowKeepsItsMiddleOrTheWholeImage) {
    ImageViewport view = viewOf(3000, 2000, 800, 600);
    view.setWindowSize(1500, 1000);
    EXPECT_DOUBLE_EQ(view.scale(), 0.5);
    view.zoomTo(1, view.middle());
    const ViewPoint middle = view.toImage(view.middle());
    view.setWindowSize(900, 700);
    EXPECT_NEAR(view.toImage(view.middle()).x, middle.x, 0.5);
    EXPECT_NEAR(view.toImage(view.middle()).y, middle.y, 0.5);
    view.pan(-1e6, -1e6);
    view.setWindowSize(1000, 800);
    EXPECT_EQ(view.window().left, 3000 - 1000) << "and shows nothing beside the image";
}

TEST(ImageViewport, PixelCentresStandAtWholeNumbers) {
    ImageViewport view = viewOf(10, 10, 80, 80);  // eightfold
    EXPECT_DOUBLE_EQ(view.toImage({4, 4}).x, 0);
    EXPECT_DOUBLE_EQ(view.toWindow({9, 9}).y, 76);
}

// ---- shown image

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
