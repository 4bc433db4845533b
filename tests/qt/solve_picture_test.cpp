// The windows of a first start and of pictures from anywhere.
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QLabel>
#include <QMimeData>
#include <QTest>
#include <QUrl>
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/message_log.h"
#include "fits/fits_writing.h"
#include "qt/image_colors.h"
#include "qt/image_view.h"
#include "qt/image_window.h"
#include "qt/night.h"
#include "qt/plate_view.h"
#include "sky/compact_catalog.h"
#include "support/star_field.h"

namespace vantrel::qt {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// A picture with two stars that are told as matched.
platform::Drawing markedField() {
    test::FrameRecipe recipe;
    recipe.width = 600;
    recipe.height = 400;
    recipe.stars = {{150.3, 100.8, 3, 20'000}, {401, 222, 4, 5'000}};
    platform::Drawing drawing;
    drawing.scale = {-0.5, -0.5, 599.5, 399.5};
    drawing.photograph = std::make_shared<const platform::ImageArray>(test::FramePainter(1).paint(recipe));
    drawing.shapes = {platform::Circle{150.3, 100.8, 12}, platform::Circle{401, 222, 12}};
    return drawing;
}

/// Of the pixels on the circle's line, the share that is in the colour of marks.
double shareOfLine(const QImage& picture, QPointF centre, double radius, const QColor& line) {
    int hits = 0;
    constexpr int kSteps = 72;
    for (int i = 0; i < kSteps; ++i) {
        const double angle = i * 2 * std::numbers::pi / kSteps;
        const QPointF at = centre + radius * QPointF(std::cos(angle), std::sin(angle));
        const QColor pixel = picture.pixelColor(at.toPoint());
        hits += std::abs(pixel.hue() - line.hue()) < 12 && pixel.saturation() > 90 ? 1 : 0;
    }
    return static_cast<double>(hits) / kSteps;
}

TEST(SolvePictureWindow, CirclesTheMatchedStarsWhereTheyAre) {
    Forms forms;
    SolvePictureWindow window(forms.solvePicture, forms.front);
    window.resize(1100, 700);
    forms.solvePicture.show();
    forms.solvePicture.picPlate.setDrawing(markedField());
    forms.rest();
    auto& plate = widgetOf<PlateView>(window, "picPlate");
    const QImage picture = plate.grab().toImage();
    const QColor line = imageColors(forms.theme.colors(), false, false).line;
    const auto& viewport = plate.view().viewport();
    for (const auto& [x, y] : {std::pair{150.3, 100.8}, {401.0, 222.0}}) {
        const auto at = viewport.toWindow({x, y});
        const QPointF centre = QPointF(at.x, at.y);
        const double radius = 12 * viewport.scale();
        EXPECT_GT(shareOfLine(picture, centre, radius, line), 0.9) << x;
        EXPECT_LT(shareOfLine(picture, centre, radius / 2, line), 0.1) << "the star itself is free";
    }
    // More marks leave the view of their picture as it is, another picture is shown as a whole.
    QTest::mouseDClick(plate.findChild<ImageView*>(), Qt::LeftButton);
    const double scale = viewport.scale();
    EXPECT_FALSE(viewport.fitted());
    forms.solvePicture.picPlate.setDrawing(forms.solvePicture.picPlate.drawing());
    platform::Drawing more = forms.solvePicture.picPlate.drawing();
    more.shapes.emplace_back(platform::Circle{300, 200, 12});
    forms.solvePicture.picPlate.setDrawing(more);
    EXPECT_EQ(viewport.scale(), scale);
    forms.solvePicture.picPlate.setDrawing(markedField());
    EXPECT_TRUE(viewport.fitted());
    forms.solvePicture.picPlate.clear();
    EXPECT_FALSE(plate.view().pixelUnderCursor());

    forms.solvePicture.picPlate.setDrawing(markedField());
    forms.theme.setNight(true);
    forms.settle();
    EXPECT_LE(foreignLight(window.grab().toImage()), 0);
    EXPECT_EQ(forms.failures, "");
}

void drop(QWidget& window, const QString& file) {
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(file)});
    const QPoint middle = window.rect().center();
    QDragEnterEvent enter(middle, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&window, &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent event(middle, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&window, &event);
}

TEST(FirstStart, ShowsTheThreeWaysOnceAndSolvesWhatIsDroppedOnThem) {
    Night night;
    const auto file = night.home.path() / "field.fits";
    test::StarField field;
    field.width = 640;
    field.height = 480;
    field.wcs = test::wcsFor(640, 480, {75, 33}, 6, 20, true);
    fits::writeFits(file, 640, 480, test::drawField(sky::CompactCatalog::openBuiltIn().get(), field),
                    {{"OBJCTRA", std::string("05 01 00")},
                     {"OBJCTDEC", std::string("+33 10 00")},
                     {"FOCALLEN", 206.264806},
                     {"XPIXSZ", 6.0}});
    FormWindow& welcome = night.program.window("frmWelcome");
    const auto& outcome =
        dynamic_cast<platform::Label&>(*night.program.screen().findControl("frmSolvePicture.lblOutcome"));
    night.firstStart = true;
    night.pass({
        {[&] { return welcome.isVisible() && night.started(); },
         [&] { drop(welcome, QString::fromStdString(file.string())); }},
        {[&] { return outcome.caption().starts_with("Solved in "); },
         [&] {
             EXPECT_FALSE(welcome.isVisible());
             EXPECT_TRUE(night.program.window("frmSolvePicture").isVisible());
         }},
    });
    EXPECT_EQ(night.failures, "");
}

TEST(FirstStart, IsOverOnceSettingsExist) {
    Night night;
    night.user.settings.write("Main", "MyTelescopeID", "ScopeSim.Telescope");
    Program again({night.loop, night.theme, night.barrier}, night.user, night.dialogs, 1);
    night.loop.post([&] { again.start(); });
    night.loop.runUntil(
        [&] { return again.screen().find("frmMain")->shown() && !again.application().busy(); });
    EXPECT_FALSE(again.screen().find("frmWelcome")->shown());
    again.application().close();
    night.loop.runUntil([&] { return again.application().ended(); });
}

// ---- the main window drives a measurement

TEST(Measurement, OfAFreshStartFindsTheSimulatorsAxis) {
    Night night;
    night.turnAxis(20, -12);
    const auto figure = [&](const char* name) {
        return widgetOf<QLabel>(night.program.window("frmPolarPlot"), name).text().toDouble();
    };
    const auto expectStart = [&] {
        EXPECT_THAT(night.instructions(), StartsWith("Polar Align Measurement Start"));
    };
    night.pass({
        {[&] { return night.started(); },
         [&] {
             expectStart();
             night.typeInto("txtDeltaRA", "15");
             night.click("cmdRun");
         }},
        {[&] { return night.enabled("cmdNext"); },
         [&] {
             EXPECT_THAT(night.instructions(), HasSubstr("Completed Successfully !!"))
                 << testing::PrintToString(night.program.application().log().lines());
             EXPECT_TRUE(night.program.imageWindow().isVisible()) << "with the pictures";
             night.click("cmdPolarPlot");
         }},
        {[&] { return night.program.window("frmPolarPlot").isVisible(); },
         [&] {
             // What the simulator was set to, within what one measurement of this slew can tell.
             EXPECT_NEAR(figure("txtAltitudeError"), -12, 0.5);
             EXPECT_NEAR(std::abs(figure("txtAzimuthError")), 20, 0.7);
             night.click(night.enabled("cmdSkip") ? "cmdSkip" : "cmdNext");
         }},
        {[&] { return night.enabled("cmdRun"); }, expectStart},
    });
    EXPECT_EQ(night.boxes.str(), "") << "no questions on a fresh machine";
    EXPECT_FALSE(night.main().isVisible());
    EXPECT_EQ(night.failures, "");
}

TEST(Measurement, NeedsNoOperator) {
    for (const char* slew : {"15", "0"}) {  // degrees; none is refused by a question
        Night night;
        night.user.settings.write("PolarAlign", "DeltaRA", slew);
        std::ostringstream out;
        UnattendedRun run(night.program, night.loop, out);
        night.loop.post([&] { run.begin(); });
        night.loop.runUntil([&] { return run.over(); });
        EXPECT_EQ(run.measured(), slew == std::string("15")) << out.str();
        EXPECT_THAT(out.str(), HasSubstr(run.measured() ? "Alignment Run Complete" : "Align Aborted"));
        night.program.application().close();
        night.loop.runUntil([&] { return night.program.application().ended(); });
    }
}

}  // namespace
}  // namespace vantrel::qt
