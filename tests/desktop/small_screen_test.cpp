// Windows on a screen that is too small for some of them: 1024 x 600, or 1920 x 1080 with everything twice as
// large.
#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTabWidget>
#include <QTimer>
#include <QWindow>
#include <functional>
#include <utility>

#include <gtest/gtest.h>

#include "desktop/desk.h"
#include "qt/image_window.h"
#include "qt/layouts.h"
#include "qt/picture_widget.h"
#include "qt/qt_dialogs.h"
#include "support/temp_folder.h"

namespace vantrel::desktop {
namespace {

bool isControl(const QWidget& widget) {
    return qobject_cast<const QAbstractButton*>(&widget) || qobject_cast<const QComboBox*>(&widget) ||
           qobject_cast<const QLabel*>(&widget) || qobject_cast<const QLineEdit*>(&widget) ||
           qobject_cast<const QPlainTextEdit*>(&widget) || dynamic_cast<const qt::PictureWidget*>(&widget);
}

/// Whether nothing of the widget lies outside of what holds it.
bool isInView(const QWidget& widget) {
    for (const QWidget* holder = &widget; !holder->isWindow();) {
        holder = holder->parentWidget();
        if (!holder->rect().contains(QRect(widget.mapTo(holder, QPoint()), widget.size()))) return false;
    }
    return true;
}

/// With its frame.
bool isOnScreen(const XOperator& eyes, const QWidget& window) {
    const QScreen& screen = *QGuiApplication::primaryScreen();
    const QRect frame = eyes.frameOf(window);
    return !frame.isEmpty() && QRect(QPoint(), screen.size() * screen.devicePixelRatio()).contains(frame);
}

/// Turns the wheel, so to say.
void scrollTo(QWidget& widget) {
    for (QWidget* holder = widget.parentWidget(); holder != nullptr; holder = holder->parentWidget())
        if (auto* const area = qobject_cast<QScrollArea*>(holder)) area->ensureWidgetVisible(&widget);
}

class SmallScreenTest : public testing::TestWithParam<qt::Layout> {};

TEST_P(SmallScreenTest, HasRoomForEveryWindowAndReachesEveryControl) {
    const qt::WithLayout layout(GetParam());
    qt::Forms forms(qt::workArea());
    const XOperator eyes;
    const auto windows = qt::windowsFor(forms.screen, forms.front);
    qt::fill(forms);
    for (const auto& window : windows) {
        SCOPED_TRACE(window->form().name());
        ASSERT_TRUE(comesTrue([&] {
            forms.settle();
            return window->isVisible() && window->windowHandle()->isExposed();
        }));
        forms.rest();
        EXPECT_TRUE(comesTrue([&] { return isOnScreen(eyes, *window); }));
        int controls = 0;
        qt::onEveryPage(*window, [&] {
            forms.settle();
            for (QWidget* widget : window->findChildren<QWidget*>()) {
                if (!widget->isVisible() || widget->window() != window.get() || !isControl(*widget)) continue;
                ++controls;
                scrollTo(*widget);
                EXPECT_TRUE(isInView(*widget)) << widget->objectName().toStdString();
            }
        });
        EXPECT_GT(controls, 0);
    }
}

// The tabulator goes from one to the next, a label's key to any of them.
TEST_P(SmallScreenTest, KeepsWhatHasTheKeysInView) {
    const qt::WithLayout layout(GetParam());
    qt::Forms forms(qt::workArea());
    const auto windows = qt::windowsFor(forms.screen, forms.front);
    for (const auto& window : windows) {
        if (window->windowFlags() & Qt::WindowDoesNotAcceptFocus) continue;
        SCOPED_TRACE(window->form().name());
        window->form().show();
        ASSERT_TRUE(comesTrue([&] {
            forms.settle();
            return window->isActiveWindow();
        }));
        qt::onEveryPage(*window, [&] {
            QSet<QWidget*> seen;
            while (QWidget* const widget = window->focusWidget()) {
                if (seen.contains(widget)) break;
                seen.insert(widget);
                EXPECT_TRUE(isInView(*widget)) << widget->objectName().toStdString();
                QTest::keyClick(widget, Qt::Key_Tab);
            }
            for (QWidget* widget : seen) {
                widget->setFocus(Qt::ShortcutFocusReason);
                EXPECT_TRUE(isInView(*widget)) << widget->objectName().toStdString();
            }
        });
        window->form().unload();
    }
}

TEST_P(SmallScreenTest, HasRoomForDialogs) {
    const qt::WithLayout layout(GetParam());
    const test::TempFolder home;
    const platform::UserMachine user(platform::pathsBelow(home.path()));
    const qt::Theme theme;
    qt::QtDialogs dialogs(user.folders, "C:\\");
    const XOperator eyes;
    const std::string longest =
        "The settings in " + std::string(90, 'x') + "/settings can't be read:\r\n" + std::string(300, 'm');
    const std::pair<const char*, std::function<void()>> openings[] = {
        {"folder", [&] { dialogs.chooseFolder("Set Image Path"); }},
        {"chooser",
         [&] {
             dialogs.choose("Telescope Chooser", {{"A", std::string(120, 'm')}, {"B", "B"}}, "B");
         }},
        {"message", [&] {
             dialogs.messageBox("Vantrel", longest, platform::Dialogs::Icon::kCritical,
                                platform::Dialogs::Buttons::kOkCancel);
         }}};
    for (const auto& [name, open] : openings) {
        QTimer::singleShot(0, [&, name = name] {
            QWidget& dialog = *QApplication::activeModalWidget();
            EXPECT_TRUE(comesTrue([&] { return isOnScreen(eyes, dialog); })) << name;
            for (QWidget* button : dialog.findChildren<QPushButton*>())
                EXPECT_TRUE(comesTrue([&] { return !button->isVisible() || isInView(*button); })) << name;
            dialog.close();
        });
        open();
    }
}

TEST(SmallScreen, ScrollsALongMessageByKeys) {
    const platform::FolderMap noFolders("/nowhere");
    const qt::Theme theme;
    std::string lines;
    for (int line = 0; line < 100; ++line) lines += "The settings can't be read\r\n";
    QTimer::singleShot(0, [] {
        QWidget& dialog = *QApplication::activeModalWidget();
        EXPECT_TRUE(comesTrue([&] { return dialog.isActiveWindow(); }));
        const auto& words = *dialog.findChild<QScrollArea*>();
        const QScrollBar& bar = *words.verticalScrollBar();
        EXPECT_GT(bar.maximum(), 0);
        EXPECT_EQ(words.horizontalScrollBar()->maximum(), 0);
        for (int page = 0; page < 100; ++page) QTest::keyClick(dialog.focusWidget(), Qt::Key_PageDown);
        EXPECT_EQ(bar.value(), bar.maximum());
        dialog.close();
    });
    qt::QtDialogs(noFolders, "C:\\")
        .messageBox("Vantrel", lines, platform::Dialogs::Icon::kCritical, platform::Dialogs::Buttons::kOk);
}

/// On screens of 600 lines and more; on lower ones, and with larger letters, it takes scrolling.
class SmallScreenResultTest : public SmallScreenTest {};

// What is watched while the adjusters are turned.
TEST_P(SmallScreenResultTest, IsInViewWithoutScrolling) {
    const qt::WithLayout layout(GetParam());
    qt::Forms forms(qt::workArea());
    const auto windows = qt::windowsFor(forms.screen, forms.front);
    qt::FormWindow& window = *windows.front();
    window.form().show();
    ASSERT_TRUE(comesTrue([&] {
        forms.settle();
        return window.isActiveWindow();
    }));
    forms.rest();
    for (const char* name :
         {"txtInstructions", "lblProgress", "lblStarToTarget", "cmdRun", "cmdAdjust", "picDial",
          "lblAzimuthAdvice", "lblElevationAdvice", "lblVerdict", "txtTolerance"})
        EXPECT_TRUE(isInView(qt::widgetOf<QWidget>(window, name))) << name;
}

// A click gives the keys to a control of which only a part is in view.
TEST(SmallScreen, LeavesWhatIsClickedUnderTheMouse) {
    qt::Forms forms(qt::workArea());
    XOperator hands;
    const auto windows = qt::windowsFor(forms.screen, forms.front);
    qt::FormWindow& window = *windows.front();
    constexpr int kLow = 300;
    window.form().setPlace({0, 0, window.width(), kLow});
    window.form().show();
    ASSERT_TRUE(comesTrue([&] {
        forms.rest();
        return window.isActiveWindow() && window.height() == kLow;
    }));
    window.findChild<QTabWidget*>()->setCurrentIndex(1);
    forms.settle();
    auto& box = qt::widgetOf<QCheckBox>(window, "chkUseTelescopeLocation");
    QWidget* holder = &box;
    while (qobject_cast<QScrollArea*>(holder) == nullptr) holder = holder->parentWidget();
    auto& page = static_cast<QScrollArea&>(*holder);
    const int below = box.mapTo(page.widget(), QPoint()).y() + box.height() / 2;
    page.verticalScrollBar()->setValue(below - page.viewport()->height());
    const bool before = box.isChecked();
    ASSERT_LT(page.viewport()->height(), below);
    hands.click(onScreen(box).topLeft() + QPoint(6, 6));
    EXPECT_TRUE(comesTrue([&] {
        forms.settle();
        return box.isChecked() != before;
    }));
}

TEST(SmallScreen, HasRoomForThePicture) {
    qt::Forms forms(qt::workArea());
    const XOperator eyes;
    imaging::OpenDocuments documents;
    for (const char* size : {"300", "5000"}) {
        forms.stored.write("ImageWindow", "Width", size);
        forms.stored.write("ImageWindow", "Height", size);
        qt::ImageWindow window(documents, forms.stored, forms.front);
        window.showByOperator();
        EXPECT_TRUE(comesTrue([&] {
            forms.rest();
            return isOnScreen(eyes, window);
        })) << size;
    }
}

INSTANTIATE_TEST_SUITE_P(FontSizes, SmallScreenTest, testing::ValuesIn(qt::kLayouts));
INSTANTIATE_TEST_SUITE_P(SmallLetters, SmallScreenResultTest,
                         testing::Values(qt::Layout{9}, qt::Layout{9, true}));

}  // namespace
}  // namespace vantrel::desktop
