#include <QAbstractButton>
#include <QAccessible>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <fstream>
#include <map>
#include <sstream>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "qt/forms.h"
#include "qt/image_window.h"
#include "qt/qt_dialogs.h"
#include "qt/status_lamp.h"

namespace vantrel::qt {
namespace {

bool canHaveKeyboard(const QWidget& widget) {
    return (widget.focusPolicy() & Qt::TabFocus) != 0 && widget.isEnabled() && widget.isVisible();
}

std::string nameOf(const QWidget& widget) {
    return widget.objectName().isEmpty() ? widget.metaObject()->className()
                                         : widget.objectName().toStdString();
}

QChar letterOf(const QString& caption) {
    for (qsizetype i = 0; i + 1 < caption.size(); ++i) {
        if (caption.at(i) != '&') continue;
        if (caption.at(i + 1) != '&') return caption.at(i + 1).toLower();
        ++i;
    }
    return {};
}

/// Does something with the dialog in which the operator chooses.
template <typename Look>
void withTheChooser(const Forms& forms, Look&& look) {
    QTimer::singleShot(0, [&look] {
        auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        look(*dialog);
        dialog->reject();
    });
    const platform::FolderMap noFolders("/nowhere");
    QtDialogs(noFolders, "C:\\").choose("Telescope Chooser", {{"A.Telescope", "A mount"}}, "A.Telescope");
    EXPECT_EQ(forms.failures, "");
}

/// Does something with every window of the program, and with every tab of one that has tabs.
template <typename Look>
void withEveryPage(Forms& forms, Look&& look) {
    for (const auto& window : windowsFor(forms.screen, forms.front)) {
        for (platform::Control* control : window->form().controls()) {
            control->setEnabled(true);
            if (control->name() != "txtDummy") control->setVisible(true);
        }
        window->form().show();
        forms.settle();
        onEveryPage(*window, [&] {
            forms.settle();
            look(*window);
        });
    }
    imaging::OpenDocuments documents;
    ImageWindow image(documents, forms.stored, forms.front);
    image.show();
    forms.settle();
    look(image);
    withTheChooser(forms, look);
}

/// Down a column, and along a row.
TEST(Keyboard, TabFollowsTheEye) {
    Forms forms;
    withEveryPage(forms, [](const QWidget& window) {
        const QWidget* before = nullptr;
        const QWidget* widget = window.nextInFocusChain();
        for (; widget != &window; widget = widget->nextInFocusChain()) {
            if (!canHaveKeyboard(*widget) || widget->objectName().startsWith("qt_")) continue;
            if (before != nullptr && before->parentWidget() == widget->parentWidget()) {
                const QPoint from = before->mapTo(&window, QPoint(0, before->height()));
                const QPoint to = widget->mapTo(&window, QPoint(0, widget->height() / 2));
                const bool sameRow = to.y() <= from.y() && to.x() > from.x();
                const bool nextColumn = to.x() > from.x() + before->width();
                EXPECT_TRUE(to.y() > from.y() || sameRow || nextColumn)
                    << nameOf(*before) << " comes before " << nameOf(*widget);
            }
            before = widget;
        }
    });
}

TEST(Keyboard, EveryButtonHasALetterOfItsOwnAndEveryFieldHasOne) {
    Forms forms;
    withEveryPage(forms, [](const QWidget& window) {
        std::map<QChar, std::string> buttons;
        for (const auto* button : window.findChildren<QAbstractButton*>()) {
            const bool hasLetters = button->text().contains(QRegularExpression("[A-Za-z]"));
            const bool lamp =
                dynamic_cast<const StatusLamp*>(button) != nullptr;  // no command: Tab reaches it
            if (!button->isVisible() || button->objectName().isEmpty() || !hasLetters || lamp) continue;
            const QChar letter = letterOf(button->text());
            EXPECT_FALSE(letter.isNull()) << nameOf(*button);
            const auto [owner, isNew] = buttons.emplace(letter, nameOf(*button));
            EXPECT_TRUE(isNew) << nameOf(*button) << " has the letter of " << owner->second;
        }
        for (const auto* label : window.findChildren<QLabel*>()) {
            const bool leads = label->buddy() != nullptr && label->isVisible() && !label->text().isEmpty();
            if (!leads) continue;
            const QChar letter = letterOf(label->text());
            EXPECT_FALSE(letter.isNull()) << label->text().toStdString();
            EXPECT_FALSE(buttons.contains(letter))
                << label->text().toStdString() << " has the letter of " << buttons[letter];
        }
    });
}

TEST(Keyboard, ButtonsPressedInTheDarkHaveTheirFirstLetter) {
    Forms forms;
    const MainWindow window(forms.main, forms.front);
    EXPECT_EQ(widgetOf<QPushButton>(window, "cmdRun").text(), "&Run");
    EXPECT_EQ(widgetOf<QPushButton>(window, "cmdNext").text(), "&Next");
    EXPECT_EQ(widgetOf<QPushButton>(window, "cmdSkip").text(), "S&kip") << "Alt+S opens a menu";
}

/// The widgets of a window that may have the keyboard when a key comes.
std::vector<QWidget*> receiversIn(QWidget& window) {
    std::vector<QWidget*> receivers{&window};
    for (QWidget* child : window.findChildren<QWidget*>())
        if (canHaveKeyboard(*child)) receivers.push_back(child);
    return receivers;
}

TEST(Keyboard, EscAndControlWCloseEveryWindowButTheMainOne) {
    Forms forms;
    for (const auto& window : windowsFor(forms.screen, forms.front)) {
        platform::Form& form = window->form();
        if (form.name() == "frmPopupMsg") continue;  // never has the keyboard
        form.show();
        forms.settle();
        for (QWidget* receiver : receiversIn(*window))
            for (const auto& [key, modifier] :
                 {std::pair(Qt::Key_Escape, Qt::NoModifier), std::pair(Qt::Key_W, Qt::ControlModifier)}) {
                form.show();
                forms.settle();
                QTest::keyClick(receiver, key, modifier);
                forms.settle();
                EXPECT_EQ(form.shown(), form.name() == "frmMain")
                    << form.name() << ", " << nameOf(*receiver) << ", key " << key;
            }
    }
}

TEST(Keyboard, EnterAnswersAWindowThatHasAnOK) {
    Forms forms;
    for (const auto& window : windowsFor(forms.screen, forms.front)) {
        platform::Form& form = window->form();
        if (form.name() != "frmAbout" && form.name() != "frmOptions") continue;
        form.show();
        forms.settle();
        for (QWidget* receiver : receiversIn(*window)) {
            form.show();
            forms.settle();
            receiver->setFocus();
            QTest::keyClick(receiver, Qt::Key_Return);
            forms.settle();
            EXPECT_EQ(form.shown(), receiver->objectName() == "cmdSysInfo")
                << form.name() << ", " << nameOf(*receiver);
        }
    }
}

TEST(Keyboard, EnterPressesTheButtonThatHasTheKeyboardAndNoOther) {
    Forms forms;
    const auto windows = windowsFor(forms.screen, forms.front);
    forms.main.show();
    forms.settle();
    const auto main = std::ranges::find_if(windows, [&](const auto& w) { return &w->form() == &forms.main; });
    int runs = 0;
    forms.main.run.cmdRun.onClick = [&] { ++runs; };
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) {
        auto& run = widgetOf<QPushButton>(**main, "cmdRun");
        run.setFocus();
        QTest::keyClick(&run, key);
        forms.settle();
    }
    EXPECT_EQ(runs, 3);
    auto& slew = widgetOf<QLineEdit>(**main, "txtDeltaRA");
    slew.setFocus();
    QTest::keyClick(&slew, Qt::Key_Return);
    forms.settle();
    EXPECT_EQ(runs, 3);
}

TEST(Keyboard, TurnsAndSlewsTheSimulatedMount) {
    Forms forms;
    const auto windows = windowsFor(forms.screen, forms.front);
    const auto simulator =
        std::ranges::find_if(windows, [](const auto& w) { return w->form().name() == "frmSimulator"; });
    ASSERT_NE(simulator, windows.end());
    (*simulator)->form().show();
    forms.settle();
    std::vector<std::string> pressed;
    for (QPushButton* button : (*simulator)->findChildren<QPushButton*>())
        QObject::connect(button, &QPushButton::clicked,
                         [&pressed, button] { pressed.push_back(button->objectName().toStdString()); });
    const struct {
        Qt::Key key;
        Qt::KeyboardModifier modifier;
        const char* button;
    } keys[] = {
        {Qt::Key_N, Qt::NoModifier, "cmdNorth"},
        {Qt::Key_S, Qt::NoModifier, "cmdSouth"},
        {Qt::Key_E, Qt::NoModifier, "cmdEast"},
        {Qt::Key_W, Qt::NoModifier, "cmdWest"},
        {Qt::Key_Left, Qt::ShiftModifier, "cmdAzimuth(0)"},
        {Qt::Key_Left, Qt::NoModifier, "cmdAzimuth(1)"},
        {Qt::Key_Left, Qt::ControlModifier, "cmdAzimuth(2)"},
        {Qt::Key_Right, Qt::ControlModifier, "cmdAzimuth(3)"},
        {Qt::Key_Up, Qt::NoModifier, "cmdElevation(4)"},
        {Qt::Key_Up, Qt::ShiftModifier, "cmdElevation(5)"},
        {Qt::Key_Down, Qt::ControlModifier, "cmdElevation(2)"},
    };
    const auto pressedBy = [&](QWidget& receiver, const auto& one) {
        pressed.clear();
        QTest::keyClick(&receiver, one.key, one.modifier);
        forms.settle();
        return pressed;
    };
    for (const auto& one : keys) EXPECT_EQ(pressedBy(**simulator, one), std::vector<std::string>{one.button});
    auto& field = widgetOf<QLineEdit>(**simulator, "txtAzimuthError");
    field.setFocus();
    for (const auto& one : {keys[4], keys[5], keys[7]})
        EXPECT_TRUE(pressedBy(field, one).empty()) << "they move the caret";
}

TEST(Keyboard, ReadersHearANameForEveryControl) {
    Forms forms;
    withEveryPage(forms, [](const QWidget& window) {
        for (QWidget* child : window.findChildren<QWidget*>()) {
            if (!canHaveKeyboard(*child) || child->objectName().startsWith("qt_")) continue;
            QAccessibleInterface* const heard = QAccessible::queryAccessibleInterface(child);
            ASSERT_NE(heard, nullptr) << nameOf(*child);
            EXPECT_NE(heard->text(QAccessible::Name).trimmed().toStdString(), "") << nameOf(*child);
        }
    });
}

TEST(Reference, TellsOfEveryControl) {
    Forms forms;
    std::ostringstream text;
    text << std::ifstream(VANTREL_REFERENCE).rdbuf();
    const auto told = [reference = text.str()](const std::string& name) {
        return reference.find("`" + name + "`") != std::string::npos;
    };
    // Of an array that begins with 1 the first member stands for all.
    const auto first = [](const std::string& name) { return name.substr(0, name.find('(')) + "(1)"; };
    for (const platform::Form* form : forms.screen.forms())
        for (const platform::Control* control : form->controls())
            EXPECT_TRUE(told(control->name()) || told(first(control->name())))
                << form->name() << "." << control->name();
}

}  // namespace
}  // namespace vantrel::qt
