// How the windows look: nothing clipped, and nothing but red by night.
#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <optional>
#include <ostream>

#include <gtest/gtest.h>

#include "qt/forms.h"
#include "qt/in_german.h"
#include "qt/light.h"
#include "qt/watched_settings.h"

namespace vantrel::qt {
namespace {

/// Runs with another font for as long as it lives.
class WithFont {
  public:
    explicit WithFont(int points) : before_(QApplication::font()) {
        QApplication::setFont(QFont("DejaVu Sans", points));
    }
    ~WithFont() { QApplication::setFont(before_); }

  private:
    QFont before_;
};

/// Everything shown and filled with the longest texts that occur.
void fill(Forms& forms) {
    for (platform::Form* form : forms.screen.forms()) form->show();
    forms.main.run.optSlewEast.select();
    forms.main.plateSolve.framePP.setVisible(true);
    forms.main.plateSolve.frameTheSky.setVisible(true);
    forms.main.plateSolve.cmbppCat.addItem("USNO-B-Net", 8);
    forms.main.plateSolve.cmbppCat.setText("USNO-B-Net");
    forms.main.plateSolve.lblCatTest.setCaption("Test passed\r\n(see log)");
    forms.main.errorPlot.txtRARange.setText("90.0000");
    forms.main.errorPlot.txtDecError.setText("-10.1243");
    forms.main.run.cmdExpose.setCaption("Stoping Exp.");
    forms.main.run.lblMeasure.setCaption("Correct");
    auto& plot = forms.polarPlot;
    for (platform::TextBox* box : {&plot.txtMagnitude, &plot.txtAngle, &plot.txtAltitudeError,
                                   &plot.txtAzimuthError, &plot.txtOffsetRA, &plot.txtOffsetDec})
        box->setText("-1234.56");
    for (platform::Label* unit : {&plot.lblRA_Unit, &plot.lblElevation_Unit, &plot.lblAzimuth_Unit})
        unit->setCaption("arc-min");
    auto& mount = forms.simulator;
    for (platform::TextBox* box : {&mount.txtAzimuthError, &mount.txtElevationError}) box->setText("-120.00");
    for (platform::TextBox* box : {&mount.txtRA, &mount.txtHourAngle, &mount.txtAltitude})
        box->setText("23h 59m E");
    mount.lblState.setCaption("Standing still");
    mount.cmbStar.setText("Kaus Australis, -34°, 5h 50m east - to sync on");
    mount.lblField.setCaption("10.00\" a pixel, 10.39° by 10.04°");
    mount.lblStatus.setCaption("The mount can't slew to coordinates while it isn't tracking");
    plot.lblRightOfPole.setCaption(" Right of pole");
    forms.popup.txtMsg.setText("\r\n Connecting to Camera \r\n\r\n Please wait \r\n");
    platform::Drawing dial;
    dial.scale = {-1, 1, 1, -1};
    dial.shapes = {platform::Circle{0, 0, 0.8}, platform::Line{-0.8, 0, 0.8, 0},
                   platform::Text{-0.05, 0.98, "Up"},
                   platform::Circle{0.2, 0.3, 0.05, true, platform::color::kDarkGreen}};
    plot.picPolarPlot.setDrawing(dial);
}

/// Why the widget doesn't show all it has to show; empty when it does.
std::string clippedPart(const QWidget& widget) {
    const QString name = widget.objectName();
    const QSize needed = widget.minimumSizeHint();
    if (const auto* label = qobject_cast<const QLabel*>(&widget)) {
        if (!label->wordWrap() && (label->width() < needed.width() || label->height() < needed.height()))
            return "label " + label->text().toStdString();
    } else if (const auto* line = qobject_cast<const QLineEdit*>(&widget)) {
        const int margins = 14;
        if (line->height() < needed.height()) return "height of " + name.toStdString();
        if (line->fontMetrics().horizontalAdvance(line->text()) + margins > line->width())
            return "text of " + name.toStdString();
    } else if (qobject_cast<const QAbstractButton*>(&widget) || qobject_cast<const QComboBox*>(&widget)) {
        if (widget.width() < needed.width() || widget.height() < needed.height()) return name.toStdString();
    }
    const QWidget* parent = widget.parentWidget();
    if (!widget.isWindow() && parent != nullptr && !name.isEmpty() && !name.startsWith("qt_") &&
        !parent->rect().contains(widget.geometry()))
        return name.toStdString() + " reaches out of its parent";
    return {};
}

/// The widgets that a window shows side by side.
std::vector<const QWidget*> shownIn(const FormWindow& window) {
    std::vector<const QWidget*> shown;
    for (const QWidget* widget : window.findChildren<QWidget*>())
        if (widget->isVisible() && widget->window() == &window) shown.push_back(widget);
    return shown;
}

bool isPart(const QWidget* widget) {
    return qobject_cast<const QLabel*>(widget) || qobject_cast<const QLineEdit*>(widget) ||
           qobject_cast<const QAbstractButton*>(widget) || qobject_cast<const QComboBox*>(widget);
}

struct Layout {
    int points;
    bool german = false;
    friend void PrintTo(const Layout& layout, std::ostream* out) {
        *out << layout.points << (layout.german ? " points, German" : " points, English");
    }
};

class LayoutTest : public testing::TestWithParam<Layout> {};

TEST_P(LayoutTest, ClipsAndCoversNothing) {
    const WithFont font(GetParam().points);
    std::optional<InGerman> german;
    if (GetParam().german) german.emplace();
    Forms forms;
    const auto windows = windowsFor(forms.screen, forms.front);
    fill(forms);
    for (const auto& window : windows) {
        onEveryPage(*window, [&] {
            forms.settle();
            const auto shown = shownIn(*window);
            for (const QWidget* widget : shown) {
                EXPECT_EQ(clippedPart(*widget), "") << window->form().name();
                for (const QWidget* other : shown)
                    EXPECT_FALSE(other != widget && isPart(widget) && isPart(other) &&
                                 other->parentWidget() == widget->parentWidget() &&
                                 other->geometry().intersects(widget->geometry()))
                        << widget->objectName().toStdString() << " " << other->objectName().toStdString();
            }
        });
    }
}

INSTANTIATE_TEST_SUITE_P(FontSizes, LayoutTest,
                         testing::Values(Layout{9}, Layout{11}, Layout{13}, Layout{9, true},
                                         Layout{13, true}));

int brightest(const QImage& image) {
    int most = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) most = std::max(most, qGray(image.pixel(x, y)));
    return most;
}

TEST(NightLook, HoldsNothingButRed) {
    Forms forms;
    forms.theme.setNight(true);
    const auto windows = windowsFor(forms.screen, forms.front);
    fill(forms);
    forms.main.run.lblExpose.setBackColor(platform::color::kDarkGreen);
    forms.main.run.lblExpose.setForeColor(platform::color::kIndicatorOffBack);
    forms.main.run.cmdRun.setBackColor(platform::color::kDarkGreen);
    forms.log.txtLog.setText(std::string(20'000, 'x'));  // with a scroll bar
    for (const auto& window : windows)                   // with a caret
        if (auto* const line = window->findChild<QLineEdit*>()) line->setFocus();
    forms.settle();
    for (const auto& window : windows) {
        onEveryPage(*window, [&] {
            const QImage picture = window->grab().toImage();
            EXPECT_LE(foreignLight(picture), 0) << window->form().name();
            EXPECT_LT(brightest(picture), 130) << window->form().name();
            EXPECT_GT(brightest(picture), 60) << window->form().name() << ": text can be read";
        });
        for (QMenu* menu : window->findChildren<QMenu*>())
            EXPECT_LE(foreignLight(menu->grab().toImage()), 0) << menu->title().toStdString();
    }
}

TEST(NightLook, ComesAndGoesWhileTheWindowsAreOpen) {
    Forms forms;
    const auto windows = windowsFor(forms.screen, forms.front);
    fill(forms);
    forms.settle();
    QWidget& window = *windows.front();
    const QImage day = window.grab().toImage();
    forms.theme.setNight(true);
    forms.settle();
    EXPECT_LE(foreignLight(window.grab().toImage()), 0);
    forms.theme.setNight(false);
    forms.settle();
    EXPECT_EQ(window.grab().toImage(), day);
}

TEST(NightLook, FollowsItsSetting) {
    Forms forms;
    platform::MemorySettings stored;
    stored.write("PolarAlign", "GreenColors", "1");
    WatchedSettings settings(stored);
    const auto following = followNightVision(settings, forms.theme);
    EXPECT_TRUE(forms.theme.night());
    settings.write("polaralign", "greencolors", "0");
    EXPECT_FALSE(forms.theme.night());
    settings.write("PolarAlign", "GreenColors", "1");
    EXPECT_TRUE(forms.theme.night());
    settings.remove("PolarAlign", "GreenColors");
    EXPECT_FALSE(forms.theme.night());
}

}  // namespace
}  // namespace vantrel::qt
