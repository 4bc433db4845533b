// How the windows look: nothing clipped, and nothing but red by night.
#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <QToolTip>
#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "qt/layouts.h"
#include "qt/title_bars.h"
#include "qt/watched_settings.h"

namespace vantrel::qt {
namespace {

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

class LayoutTest : public testing::TestWithParam<Layout> {};

TEST_P(LayoutTest, ClipsCoversAndScrollsNothing) {
    const WithLayout layout(GetParam());
    Forms forms;
    const auto windows = windowsFor(forms.screen, forms.front);
    fill(forms);
    forms.rest();
    for (const auto& window : windows) {
        SCOPED_TRACE(window->form().name());
        onEveryPage(*window, [&] {
            forms.settle();
            const auto shown = shownIn(*window);
            for (const QWidget* widget : shown) {
                EXPECT_EQ(clippedPart(*widget), "");
                for (const QWidget* other : shown)
                    EXPECT_FALSE(other != widget && isPart(widget) && isPart(other) &&
                                 other->parentWidget() == widget->parentWidget() &&
                                 other->geometry().intersects(widget->geometry()))
                        << widget->objectName().toStdString() << " " << other->objectName().toStdString();
            }
            for (const QScrollArea* area : window->findChildren<QScrollArea*>())
                for (const QScrollBar* bar : {area->horizontalScrollBar(), area->verticalScrollBar()})
                    EXPECT_FALSE(area->isVisible() && bar->isVisible())
                        << bar->maximum() << (bar->orientation() == Qt::Vertical ? " too high" : " too wide");
        });
    }
}

INSTANTIATE_TEST_SUITE_P(FontSizes, LayoutTest, testing::ValuesIn(kLayouts));

int brightest(const QImage& image) {
    int most = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) most = std::max(most, qGray(image.pixel(x, y)));
    return most;
}

/// How much brighter one colour is than the other, as accessibility guidelines reckon it: from 1 to 21.
double contrast(const QColor& one, const QColor& other) {
    const auto luminance = [](const QColor& color) {
        const auto linear = [](double part) {
            return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
               0.0722 * linear(color.blueF());
    };
    const auto [darker, brighter] = std::minmax({luminance(one), luminance(other)});
    return (brighter + 0.05) / (darker + 0.05);
}

TEST(Look, CanBeReadByDayAndByNight) {
    constexpr double kText = 4.5, kUnlit = 3;
    for (const bool night : {false, true}) {
        SCOPED_TRACE(night ? "night" : "day");
        const Look look(night);
        const Colors& c = look.colors();
        for (const QColor& ground : {c.window, c.base, c.button, c.chart}) {
            EXPECT_GE(contrast(c.text, ground), kText) << ground.name().toStdString();
            EXPECT_GE(contrast(c.marker, ground), kUnlit) << ground.name().toStdString();
        }
        EXPECT_GE(contrast(c.onAccent, c.accent), kText);
        EXPECT_GE(contrast(c.onUnlit, c.unlit), kUnlit);
        EXPECT_GE(contrast(c.dim, c.window), kUnlit);
        EXPECT_GE(contrast(c.dim, c.base), kUnlit);
        for (const platform::Color lamp : {platform::color::kRed, platform::color::kDarkGreen})
            EXPECT_GE(contrast(look.ink(platform::color::kBlack), look.surface(lamp)), kText) << lamp;
    }
}

TEST(Look, GivesControlsAndTipsTextThatStandsOutInEveryState) {
    constexpr double kLegible = 2;  // controls that can't be used are dim on purpose
    constexpr std::pair<QPalette::ColorRole, QPalette::ColorRole> kTextOnGround[] = {
        {QPalette::WindowText, QPalette::Window},
        {QPalette::Text, QPalette::Base},
        {QPalette::Text, QPalette::AlternateBase},
        {QPalette::PlaceholderText, QPalette::Base},
        {QPalette::ButtonText, QPalette::Button},
        {QPalette::BrightText, QPalette::Button},
        {QPalette::HighlightedText, QPalette::Highlight},
        {QPalette::ToolTipText, QPalette::ToolTipBase},
        {QPalette::Link, QPalette::Base},
        {QPalette::LinkVisited, QPalette::Base},
    };
    Theme theme;
    for (const bool night : {false, true}) {
        theme.setNight(night);
        for (const QPalette& palette : {QApplication::palette(), QToolTip::palette()})
            for (const auto state : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
                for (const auto& [text, ground] : kTextOnGround) {
                    const QColor ink = palette.color(state, text), paper = palette.color(state, ground);
                    EXPECT_GE(contrast(ink, paper), kLegible) << text << " on " << ground << ", state "
                                                              << state << (night ? " by night" : " by day");
                    EXPECT_TRUE(ground == QPalette::Highlight || night == (paper.lightness() < 40))
                        << ground << " is " << paper.name().toStdString();
                }
    }
}

TEST(NightLook, HoldsNothingButRed) {
    Forms forms;
    const auto windows = windowsFor(forms.screen, forms.front);
    fill(forms);
    forms.settle();
    forms.theme.setNight(true);  // while the windows are open
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

TEST(NightLook, GoesWithoutATrace) {
    Forms forms;
    const auto windows = windowsFor(forms.screen, forms.front);
    fill(forms);
    forms.settle();
    QWidget& window = *windows.front();
    const QImage day = window.grab().toImage();
    for (const bool night : {true, false}) {
        forms.theme.setNight(night);
        forms.settle();
    }
    EXPECT_EQ(window.grab().toImage(), day);
}

TEST(NightLook, TheBigDigitsAreRedFillTheirWindowAndGoByEsc) {
    Forms forms;
    forms.theme.setNight(true);
    const auto windows = windowsFor(forms.screen, forms.front);
    forms.adjust.azimuth.lblArrow.setCaption("←");
    forms.adjust.azimuth.lblMove.setCaption("turn west 118.8'");
    forms.adjust.elevation.lblArrow.setCaption("↓");
    forms.adjust.elevation.lblMove.setCaption("Elevation is right");
    forms.adjust.lblAge.setCaption("2 s old");
    forms.adjust.show();
    forms.settle();
    FormWindow& window =
        **std::ranges::find_if(windows, [](const auto& one) { return one->form().name() == "frmAdjust"; });
    auto& digits = *window.findChild<QWidget*>("bigDigits");
    EXPECT_FALSE(digits.isVisible());
    QTest::keyClick(&window, Qt::Key_F11);
    forms.settle();
    ASSERT_TRUE(digits.isVisible());
    EXPECT_TRUE(window.isFullScreen());
    EXPECT_EQ(digits.geometry(), window.rect());
    const QImage picture = window.grab().toImage();
    EXPECT_LE(foreignLight(picture), 0);
    EXPECT_GT(brightest(picture), 60);
    forms.adjust.cmdLock.setEnabled(true);
    forms.settle();
    EXPECT_EQ(window.childAt(window.rect().center()), &digits) << "nothing comes back in front";
    QTest::keyClick(&digits, Qt::Key_Escape);
    forms.settle();
    EXPECT_FALSE(digits.isVisible());
    EXPECT_FALSE(window.isFullScreen());
    EXPECT_TRUE(forms.adjust.shown()) << "Esc ended no more than that";
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

// Before they are seen, and again when the look changes; what isn't a window has no bar.
TEST(TitleBars, FollowTheLook) {
    Theme theme;
    std::vector<std::pair<const QWidget*, bool>> painted;
    const TitleBars bars(
        theme, [&](QWidget& window, const Look& look) { painted.emplace_back(&window, look.night()); });
    QWidget window, hidden;
    const QLabel label("in it", &window);
    theme.setNight(true);
    EXPECT_TRUE(painted.empty());
    window.show();
    theme.setNight(false);
    EXPECT_EQ(painted, (std::vector<std::pair<const QWidget*, bool>>{{&window, true}, {&window, false}}));
}

}  // namespace
}  // namespace vantrel::qt
