// The imaging program's window: what it shows of which image, and what the observer does with it.
#include "qt/image_window.h"

#include <QAction>
#include <QLabel>
#include <QTest>
#include <QToolButton>
#include <QWheelEvent>
#include <limits>

#include <gtest/gtest.h>

#include "platform/queued_event_loop.h"
#include "qt/forms.h"
#include "qt/histogram_bar.h"
#include "qt/image_view.h"
#include "support/star_frames.h"

namespace vantrel::qt {
namespace {

using imaging::ToneCurve;
using platform::ImageArray;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

platform::ImageRef share(ImageArray image) { return std::make_shared<const ImageArray>(std::move(image)); }

template <typename Pixel>
platform::ImageRef filled(std::size_t width, std::size_t height, Pixel value) {
    return share(ImageArray(width, height, std::vector<Pixel>(width * height, value)));
}

platform::ImageRef starField(int width = 600, int height = 400) {
    test::FrameRecipe recipe;
    recipe.width = width;
    recipe.height = height;
    recipe.stars = {{150.3, 100.8, 3, 20'000}, {401, 222, 4, 5'000}};
    return share(test::FramePainter(1).paint(recipe));
}

class ImageWindowTest : public testing::Test, protected Forms {
  protected:
    ~ImageWindowTest() override { EXPECT_EQ(failures, ""); }

    void show(platform::ImageRef pixels) {
        imaging::ImageDocument document;
        document.title = "Image";
        document.pixels = std::move(pixels);
        documents.replaceCurrent(std::move(document));
        settle();
    }
    std::string text(const char* label) { return widgetOf<QLabel>(window, label).text().toStdString(); }
    QAction& action(const char* name) {
        auto* const found = window.findChild<QAction*>(name);
        if (found == nullptr) throw std::logic_error(name);
        return *found;
    }
    void pointAt(double x, double y) {
        const auto place = view().viewport().toWindow({x, y});
        moveMouse(view(), QPointF(place.x, place.y) / view().devicePixelRatioF());
    }
    void wheel(QPointF place, int notches) {
        QWheelEvent event(place, view().mapToGlobal(place), {}, {0, 120 * notches}, Qt::NoButton, {},
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(&view(), &event);
    }
    ImageView& view() { return widgetOf<ImageView>(window, "imageView"); }
    HistogramBar& histogram() { return widgetOf<HistogramBar>(window, "histogram"); }
    bool isBlank() {
        const QImage picture = view().grab().toImage();
        QImage blank(picture.size(), picture.format());
        blank.fill(picture.pixel(0, 0));
        return picture == blank;
    }
    /// What the screen shows at the image's pixel.
    QRgb shownAt(double x, double y) {
        const QImage picture = view().grab().toImage();
        const auto place = view().viewport().toWindow({x, y});
        return picture.pixel(static_cast<int>(place.x), static_cast<int>(place.y));
    }

    platform::MemorySettings stored;
    imaging::OpenDocuments documents;
    ImageWindow window{documents, stored, front};
};

TEST_F(ImageWindowTest, OpensWithTheFirstImageAndStaysClosedWhenTheOperatorClosesIt) {
    EXPECT_FALSE(window.isVisible());
    window.show();
    settle();
    EXPECT_EQ(text("size"), "–");
    EXPECT_FALSE(isBlank()) << "says what will appear here";
    window.hide();

    main.show();
    show(starField());
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(text("size"), "600 × 400");
    window.close();
    show(starField());
    EXPECT_FALSE(window.isVisible());
    window.showByOperator();
    EXPECT_TRUE(window.isVisible());
}

TEST_F(ImageWindowTest, ShowsEveryKindOfImage) {
    std::vector<float> holes(300 * 200, 5.0F);
    for (std::size_t i = 0; i < holes.size(); i += 3) holes[i] = kNaN;
    holes[7] = kInfinity;
    holes[8] = -kInfinity;
    const std::pair<const char*, platform::ImageRef> rows[] = {
        {"one pixel", filled<std::uint16_t>(1, 1, 7)},
        {"one row", filled<std::uint16_t>(5000, 1, 7)},
        {"one column", filled<std::int32_t>(1, 5000, -7)},
        {"all the same", filled<std::uint16_t>(300, 200, 1000)},
        {"all saturated", filled<std::uint16_t>(300, 200, 65535)},
        {"marks alone", filled<std::int32_t>(300, 200, 2147483000)},
        {"no number at all", filled<float>(300, 200, kNaN)},
        {"endless", filled<float>(300, 200, kInfinity)},
        {"with holes", share(ImageArray(300, 200, holes))},
        {"a relative scale", filled<float>(300, 200, 0.25F)},
    };
    for (const auto& [what, pixels] : rows) {
        SCOPED_TRACE(what);
        show(pixels);
        for (const char* command : {"fit", "pixels", "zoomIn", "zoomOut", "zoomOut", "fit"}) {
            action(command).trigger();
            pointAt(0, 0);
            EXPECT_FALSE(window.grab().isNull());
            EXPECT_EQ(text("pixel"), "x 0  y 0");
        }
        for (const int key : {Qt::Key_Left, Qt::Key_Up, Qt::Key_Right, Qt::Key_Down})
            QTest::keyClick(&histogram(), static_cast<Qt::Key>(key));
        window.grab();
        action("automatic").trigger();
    }
    documents.close(documents.current());
    settle();
    EXPECT_EQ(text("size"), "–") << "the last image was closed";
    EXPECT_EQ(text("pixel"), "–");
    window.grab();
}

TEST_F(ImageWindowTest, MarksAreTheBrightestThingAtEveryZoomByDayAndByNight) {
    const auto field = starField();
    std::vector<std::int32_t> pixels;
    for (std::size_t i = 0; i < 600 * 400; ++i)
        pixels.push_back(static_cast<std::int32_t>(field->at(i % 600, i / 600)));
    std::vector<std::size_t> line;
    for (std::size_t x = 0; x < 600; ++x) line.push_back(200 * 600 + x);
    window.resize(500, 500);
    for (const bool night : {false, true}) {
        theme.setNight(night);
        show(share(ImageArray(600, 400, pixels).withPixels(line, 2147483000.0)));
        action("fit").trigger();
        for (int step = 0; step < 6; ++step) {
            pointAt(300, 200);
            const QRgb mark = shownAt(300, 200);
            EXPECT_GE(qRed(mark), 250);
            EXPECT_LT(qGray(shownAt(300, 210)), 0.6 * qGray(mark)) << "the sky beside it";
            EXPECT_EQ(text("value"), "mark");
            if (!night) {
                EXPECT_GT(qRed(mark) - qBlue(mark), 100) << "no grey";
            }
            action("zoomIn").trigger();
        }
    }
}

TEST_F(ImageWindowTest, TheNextExposureKeepsTheViewAnotherFormatDoesNot) {
    show(starField());
    wheel(QPointF(view().width() / 3.0, view().height() / 3.0), 3);
    QTest::keyClick(&view(), Qt::Key_Right);
    const auto before = view().viewport().window();
    EXPECT_FALSE(view().viewport().fitted());
    show(starField());
    EXPECT_EQ(view().viewport().window(), before);
    documents.setPixels(documents.current(), filled<std::uint16_t>(600, 400, 9));
    settle();
    EXPECT_EQ(view().viewport().window(), before);
    show(starField(300, 200));
    EXPECT_TRUE(view().viewport().fitted());
}

TEST_F(ImageWindowTest, TellsThePixelAndTheStarUnderTheCursor) {
    const auto field = starField();
    show(field);
    pointAt(151, 100);
    EXPECT_EQ(text("pixel"), "x 151  y 100");
    EXPECT_EQ(text("value"), std::to_string(static_cast<int>(field->at(151, 100))));
    const std::string star = text("star");
    EXPECT_NEAR(std::stod(star.substr(4)), 3, 0.15) << star;
    const int width = widgetOf<QLabel>(window, "star").width();
    pointAt(300, 40);
    EXPECT_EQ(text("star"), "–");
    EXPECT_EQ(widgetOf<QLabel>(window, "star").width(), width);
    pointAt(-40, 40);
    EXPECT_EQ(text("pixel"), "–") << "beside the image";

    std::vector<std::size_t> line;
    for (std::size_t x = 0; x < 600; ++x) line.push_back(300 * 600 + x);
    documents.setPixels(documents.current(), share(field->withPixels(line, 9000)));
    settle();
    pointAt(300, 300);
    EXPECT_EQ(text("value"), "9000");
    EXPECT_EQ(text("star"), "–") << "a line is no star";

    pointAt(401, 222);
    show(filled<std::uint16_t>(600, 400, 77));
    EXPECT_EQ(text("value"), "77") << "another exposure under a resting cursor";
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(&view(), &leave);
    EXPECT_EQ(text("value"), "–");
}

TEST_F(ImageWindowTest, AChosenStretchStaysUntilItIsAutomaticAgain) {
    show(starField());
    const auto automatic = documents.current()->shownStretch();
    EXPECT_TRUE(action("automatic").isChecked());

    const int y = histogram().height() / 2;
    const int white = histogram().handleAt(HistogramBar::kWhite);
    QTest::mousePress(&histogram(), Qt::LeftButton, {}, {white, y});
    moveMouse(histogram(), QPointF(white + 30, y), Qt::LeftButton);
    QTest::mouseRelease(&histogram(), Qt::LeftButton, {}, {white + 30, y});
    const auto chosen = documents.current()->shownStretch();
    EXPECT_GT(chosen.max, automatic.max) << "the automation's StretchMax follows the handle";
    EXPECT_EQ(chosen.min, automatic.min);
    EXPECT_FALSE(action("automatic").isChecked());
    EXPECT_NEAR(histogram().handleAt(HistogramBar::kWhite), white + 30, 1);

    show(starField());
    EXPECT_EQ(documents.current()->shownStretch().max, chosen.max);
    QTest::mouseDClick(&histogram(), Qt::LeftButton);
    EXPECT_TRUE(action("automatic").isChecked());
    EXPECT_EQ(documents.current()->shownStretch().max, automatic.max);
}

TEST_F(ImageWindowTest, HandlesMoveByKeysAndNeverPassEachOther) {
    show(starField());
    const auto at = [&](HistogramBar::Handle handle) { return histogram().handleAt(handle); };
    for (const Qt::Key key : {Qt::Key_Right, Qt::Key_Left})
        for (int handle = 0; handle < HistogramBar::kHandles; ++handle) {
            QTest::keyClick(&histogram(), Qt::Key_Up);
            for (int press = 0; press < 150; ++press) QTest::keyClick(&histogram(), key);
            EXPECT_LE(at(HistogramBar::kBlack), at(HistogramBar::kMidtone));
            EXPECT_LE(at(HistogramBar::kMidtone), at(HistogramBar::kWhite));
            EXPECT_LT(documents.current()->shownStretch().min, documents.current()->shownStretch().max);
            window.grab();
        }
}

TEST_F(ImageWindowTest, ByNightHoldsNothingButItsColour) {
    theme.setNight(true);
    window.show();
    settle();
    EXPECT_LE(foreignLight(window.grab().toImage()), 0) << "without an image";
    EXPECT_FALSE(isBlank());
    show(starField());
    action("crossHair").setChecked(true);
    for (const bool inverted : {false, true}) {
        action("inverted").setChecked(inverted);
        settle();
        EXPECT_LE(foreignLight(window.grab().toImage()), 0);
    }
    action("inverted").setChecked(false);
    action("green").setChecked(true);
    settle();
    EXPECT_LE(foreignLight(window.grab().toImage(), true), 0);
    theme.setNight(false);
    settle();
    EXPECT_GT(qBlue(shownAt(150, 101)), 250) << "by day a star is white";
}

TEST_F(ImageWindowTest, EveryCommandHasAKeyOfItsOwnThatItsTooltipNames) {
    QSet<QKeySequence> keys;
    for (const QAction* command : window.actions()) {
        SCOPED_TRACE(command->objectName().toStdString());
        EXPECT_FALSE(command->shortcut().isEmpty());
        EXPECT_TRUE(command->toolTip().contains(command->shortcut().toString(QKeySequence::NativeText)));
        for (const QKeySequence& key : command->shortcuts()) {
            EXPECT_FALSE(keys.contains(key));
            keys.insert(key);
        }
    }
    for (const QToolButton* button : window.findChildren<QToolButton*>())
        EXPECT_TRUE(button->defaultAction() == nullptr || !button->accessibleName().isEmpty());
}

/// A star that is guided to where a cross of saturated pixels was drawn, no brighter than the star.
TEST_F(ImageWindowTest, ShowsTheGuidedStarItsWayAndThePictureUnderTheCrossing) {
    const auto bare = starField();
    std::vector<std::size_t> cross;
    for (std::size_t x = 0; x < 600; ++x) cross.push_back(101 * 600 + x);
    for (std::size_t y = 0; y < 400; ++y) cross.push_back(y * 600 + 150);
    show(share(bare->withPixels(cross, 65535)));
    correction::Guidance guidance;
    guidance.target = {150, 101};
    guidance.star = engine::PixelPosition{401, 222};
    guidance.pixels = 279;
    guidance.arcMinutes = 16.74;
    guidance.left = 0.5;
    for (const bool night : {false, true}) {
        theme.setNight(night);
        for (const char* zoom : {"fit", "pixels"}) {
            SCOPED_TRACE(std::string(zoom) + (night ? " by night" : ""));
            action(zoom).trigger();
            const QRgb mark = imageColors(theme.colors(), night, false).tones[ToneCurve::kMark];
            window.tellGuidance(std::nullopt);
            EXPECT_EQ(shownAt(150, 101), mark);
            EXPECT_EQ(shownAt(400, 101), mark);
            const double scale = view().viewport().scale();
            const auto ring = [&] { return shownAt(401 + 20 / scale, 222) == mark; };
            EXPECT_FALSE(ring());

            window.tellGuidance(guidance);
            settle();
            EXPECT_NE(shownAt(150, 101), mark) << "the star beneath";
            EXPECT_NE(shownAt(150 + 10 / scale, 101), mark);
            EXPECT_EQ(shownAt(150 + 15 / scale, 101), mark);
            EXPECT_TRUE(ring());
            EXPECT_NE(shownAt(401, 222), mark) << "the ring leaves its star alone";
            EXPECT_LE(night ? foreignLight(window.grab().toImage()) : 0, 0);
        }
    }
    EXPECT_EQ(text("starToTarget"), "star to target 16.7' (279 px)");
    EXPECT_TRUE(widgetOf<QWidget>(window, "wayLeft").isVisible());
    guidance.star.reset();
    window.tellGuidance(guidance);
    EXPECT_EQ(text("starToTarget"), "star not found");
    window.tellGuidance(std::nullopt);
    EXPECT_FALSE(widgetOf<QWidget>(window, "starToTarget").isVisible());
}

TEST(ImageColors, MarksStandOutOfWhiteAndWhiteOfTheStars) {
    for (const bool inverted : {false, true}) {
        const auto night = imageColors(colorsOf(true), true, inverted).tones;
        const std::uint8_t white = inverted ? 0 : ToneCurve::kWhite;
        const std::uint8_t next = inverted ? 1 : ToneCurve::kWhite - 1;
        EXPECT_GT(qRed(night[white]), 1.1 * qRed(night[next]));
        EXPECT_GT(qRed(night[ToneCurve::kMark]), 1.2 * qRed(night[white]));
        EXPECT_GT(qBlue(night[ToneCurve::kMark]), 2 * qBlue(night[white]));
        const auto day = imageColors(colorsOf(false), false, inverted).tones;
        EXPECT_GT(qRed(day[ToneCurve::kMark]), 2 * qBlue(day[ToneCurve::kMark])) << "no grey";
    }
}

TEST_F(ImageWindowTest, FullScreenComesAndGoesByKeys) {
    show(starField());
    action("fullScreen").trigger();
    settle();
    EXPECT_TRUE(window.isFullScreen());
    QTest::keyClick(&view(), Qt::Key_Escape);
    settle();
    EXPECT_FALSE(window.isFullScreen());
    QTest::keyClick(&view(), Qt::Key_Escape);
    EXPECT_TRUE(window.isVisible()) << "one Esc too many closes nothing";
    QTest::keyClick(&view(), Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(window.isVisible());
}

TEST_F(ImageWindowTest, RemembersWhereItStoodAndComesBackOntoTheScreen) {
    show(starField());
    rest();
    window.move(40, 30);
    window.resize(640, 480);
    settle();
    window.close();
    {
        ImageWindow again(documents, stored, front);
        again.show();
        EXPECT_EQ(again.pos(), QPoint(40, 30));
        EXPECT_EQ(again.size(), QSize(640, 480));
    }
    stored.write("ImageWindow", "Left", "900000");
    stored.write("ImageWindow", "Top", "-5000");
    stored.write("ImageWindow", "Height", "5000");
    stored.write("ImageWindow", "Width", "nonsense");
    ImageWindow lost(documents, stored, front);
    const QRect room = QGuiApplication::primaryScreen()->availableGeometry();
    EXPECT_TRUE(room.contains(QRect(lost.pos(), lost.size())));
}

}  // namespace
}  // namespace vantrel::qt
