// Where windows stand beside a window manager, and what the program takes for the operator's doing.
#include <QPlainTextEdit>
#include <QPushButton>
#include <QWindow>
#include <cstdlib>
#include <ostream>
#include <sstream>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/frm_main.h"
#include "app/popup_messages.h"
#include "desktop/desk.h"
#include "observatory/simulator_setup.h"
#include "qt/forms.h"
#include "qt/program.h"
#include "qt/unattended_run.h"
#include "qt/windows.h"
#include "support/memory_settings_port.h"
#include "support/recording_log.h"
#include "support/temp_folder.h"

// For the messages of failures.
static void PrintTo(const QPoint& point, std::ostream* out) { *out << point.x() << ", " << point.y(); }

namespace vantrel::desktop {
namespace {

using platform::Rectangle;

/// The corner of the window with its frame, in the program's units.
QPoint cornerOf(const XOperator& eyes, const QWidget& window) {
    return eyes.frameOf(window).topLeft() / window.devicePixelRatio();
}

bool isShown(const XOperator& eyes, const QWidget& window) {
    return window.isVisible() && !eyes.frameOf(window).isEmpty();
}

/// The whole program on the desk, from one start to its end.
struct Session {
    Desk desk;
    platform::UserMachine user;
    std::ostringstream boxes;
    qt::UnattendedDialogs dialogs{boxes};
    qt::Program program;

    explicit Session(const test::TempFolder& home)
        : user(platform::pathsBelow(home.path())), program(desk.front, user, dialogs, 1) {
        program.openWindows();
        desk.loop.post([this] { program.application().start(); });
    }

    qt::FormWindow& window(const char* form) const { return program.window(form); }

    bool isStarted() {
        return comesTrue([&] { return window("frmMain").isVisible() && !program.application().busy(); });
    }
    bool ends() {
        program.application().close();
        return comesTrue([&] { return program.application().ended(); });
    }
};

// The telescope's window is placed while it opens, the pop-up before each message.
TEST(WindowPlaces, StayOverManyStarts) {
    const struct {
        const char *form, *left, *top;
        QPoint corner;
    } windows[] = {{"frmMain", "MainLeft", "MainTop", {20, 0}},
                   {"frmLog", "LogLeft", "LogTop", {230, 90}},
                   {"frmTelescope", "TelescopeLeft", "TelescopeTop", {410, 140}}};
    const QPoint popup(120, 210), image(64, 76);
    const test::TempFolder home;
    {
        platform::UserMachine user(platform::pathsBelow(home.path()));
        observatory::storeSimulatorSetup(user.settings);
        const auto store = [&](const char* section, const char* key, int value) {
            user.settings.write(section, key, std::to_string(value));
        };
        for (const auto& window : windows) {
            store("Main", window.left, window.corner.x());
            store("Main", window.top, window.corner.y());
        }
        store("Main", "PopupMsgLeft", popup.x());
        store("Main", "PopupMsgTop", popup.y());
        store("ImageWindow", "Left", image.x());
        store("ImageWindow", "Top", image.y());
    }
    for (int start = 1; start <= 5; ++start) {
        SCOPED_TRACE("start " + std::to_string(start));
        Session session(home);
        ASSERT_TRUE(session.isStarted());
        session.program.imageWindow().showByOperator();
        session.program.application().popups().ShowPopupMessage("Please wait", 5);
        const QWidget& message = session.window("frmPopupMsg");
        EXPECT_TRUE(comesTrue([&] { return isShown(session.desk.hands, message); }));
        EXPECT_EQ(cornerOf(session.desk.hands, message), popup);
        EXPECT_TRUE(comesTrue([&] { return isShown(session.desk.hands, session.program.imageWindow()); }));
        EXPECT_EQ(cornerOf(session.desk.hands, session.program.imageWindow()), image);
        for (const auto& window : windows)
            EXPECT_EQ(cornerOf(session.desk.hands, session.window(window.form)), window.corner)
                << window.form;
        ASSERT_TRUE(session.ends());
        const auto stored = [&](const char* section, const char* left, const char* top) {
            return QPoint(std::stoi(session.user.settings.read(section, left).value_or("-1")),
                          std::stoi(session.user.settings.read(section, top).value_or("-1")));
        };
        for (const auto& window : windows)
            EXPECT_EQ(stored("Main", window.left, window.top), window.corner) << window.form;
        EXPECT_EQ(stored("Main", "PopupMsgLeft", "PopupMsgTop"), popup);
        EXPECT_EQ(stored("ImageWindow", "Left", "Top"), image);
    }
}

/// In virtual time: a moving has ended when the test says so.
class WindowOnDesktop : public testing::Test, protected qt::Forms {
  protected:
    WindowOnDesktop() { log.setPlace({60, 50, 400, 300}); }
    ~WindowOnDesktop() override { EXPECT_EQ(failures, ""); }

    void open() {
        log.show();
        settle();
        ASSERT_TRUE(comesTrue([&] { return isShown(hands, window) && window.windowHandle()->isExposed(); }));
        rest();
    }

    /// Drags with the mouse until the window's frame is there.
    void drag(QPoint from, QPoint way, const QRect& frame) {
        hands.moveTo(from);
        hands.press();
        EXPECT_TRUE(comesTrue([&] {
            for (const int beside : {4, 3, 2, 1, 0}) hands.moveTo(from + way - QPoint(beside, beside));
            return hands.frameOf(window) == frame;
        })) << "follows the mouse";
        hands.release();
        EXPECT_TRUE(comesTrue([&] { return knows(frame); })) << "and knows it";
        settle();
    }

    /// Whether the program knows the frame to be there; its units may be larger than the screen's pixels.
    bool knows(const QRect& frame) const {
        const int unit = static_cast<int>(window.devicePixelRatio());
        const QPoint corner = window.frameGeometry().topLeft() * unit - frame.topLeft();
        const QSize size = window.frameGeometry().size() * unit - frame.size();
        const auto isNear = [unit](int difference) { return std::abs(difference) <= 2 * (unit - 1); };
        return isNear(corner.x()) && isNear(corner.y()) && isNear(size.width()) && isNear(size.height());
    }

    XOperator hands;
    qt::LogWindow window{log, front};
};

TEST_F(WindowOnDesktop, StaysWhenItIsClosedAndOpenedAgain) {
    const Rectangle place = log.place();
    for (int opening = 1; opening <= 8; ++opening) {
        open();
        EXPECT_EQ(cornerOf(hands, window), QPoint(60, 50)) << opening;
        EXPECT_EQ(log.place(), place) << opening;
        log.unload();
        EXPECT_TRUE(comesTrue([&] { return !isShown(hands, window); }));
        rest();
        EXPECT_EQ(log.place(), place) << opening;
    }
}

// Another window that comes forward lets the message store where it stands.
TEST_F(WindowOnDesktop, OfMessagesStaysHoweverFastTheyCome) {
    test::MemorySettingsPort settings;
    settings.SaveMainSetting("PopupMsgLeft", "140");
    settings.SaveMainSetting("PopupMsgTop", "220");
    test::RecordingLog lines;
    engine::RunState state;
    for (int times = 1; times <= 40; ++times) {
        app::frmPopupMsg form(screen);
        qt::PopupWindow message(form, front);
        app::PopupMessages popups(loop, settings, lines, state, form, main.setup.txtMsgDisplayTime);
        for (int i = 1; i <= 2; ++i) {
            popups.ShowPopupMessage("Message", 5);
            if (i % 2 == 0) QApplication::processEvents();
            popups.ShowPopupMessage("Message\r\n" + std::string(static_cast<std::size_t>(i), 'm'), 5);
            EXPECT_TRUE(comesTrue([&] { return isShown(hands, message); }));
            EXPECT_EQ(cornerOf(hands, message), QPoint(140, 220));
            QApplication::processEvents();
            log.show();
            settle();
            EXPECT_EQ(settings.GetMainSetting("PopupMsgLeft", "") + ", " +
                          settings.GetMainSetting("PopupMsgTop", ""),
                      "140, 220");
            log.unload();
        }
        form.unload();
    }
}

TEST_F(WindowOnDesktop, TellsADragOnceWhenItEnds) {
    open();
    Rectangle place = log.place();
    int changes = 0, resized = 0;
    log.onResize = [&] { ++resized; };
    const auto watching =
        log.changed.subscribe([&] { changes += std::exchange(place, log.place()) != place; });

    QRect frame = hands.frameOf(window);
    const QPoint title(frame.center().x(), frame.top() + 8);
    frame.translate(120, 70);
    drag(title, {120, 70}, frame);
    EXPECT_EQ(changes, 0);
    rest();
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(resized, 0);
    EXPECT_EQ(QPoint(place.left, place.top), cornerOf(hands, window));

    const QPoint corner = frame.bottomRight() - QPoint(1, 1);
    frame.adjust(0, 0, 90, 60);
    drag(corner, {90, 60}, frame);
    EXPECT_EQ(changes, 1);
    rest();
    EXPECT_EQ(changes, 2);
    EXPECT_EQ(resized, 1);
    EXPECT_EQ(QSize(place.width, place.height), window.size());

    const Rectangle dragged = place;
    log.unload();
    settle();
    open();
    EXPECT_EQ(log.place(), dragged);
    EXPECT_EQ(QPoint(dragged.left, dragged.top), cornerOf(hands, window));
}

// ---- repainting

// Nothing but the procedure itself is there to wake the toolkit: no timer, no hand on the mouse.
TEST(Repaint, ComesWhileAProcedureWaits) {
    Desk desk;
    platform::Screen screen({0, 0, 1000, 800});
    app::frmMain main(screen);
    qt::MainWindow window(main, desk.front);
    main.show();
    auto& instructions = *window.findChild<QPlainTextEdit*>("txtInstructions");
    ASSERT_TRUE(comesTrue([&] { return isPainted(desk.hands, instructions); }));

    bool over = false, seen = false;
    main.run.cmdRun.onClick = [&] {
        main.run.cmdRun.setEnabled(false);
        main.run.txtInstructions.setText(main.run.txtInstructions.text() + "Please Wait ");
        const auto limit = desk.loop.clock().sinceStart() + std::chrono::seconds{10};
        while (!seen && desk.loop.clock().sinceStart() < limit) {
            desk.loop.yield();
            desk.loop.sleep(std::chrono::milliseconds{10});
            seen = isPainted(desk.hands, instructions);
        }
        main.run.cmdRun.setEnabled(true);
        over = true;
    };
    // What lies behind a click in the toolkit's queue differs from one to the next.
    for (int click = 1; click <= 10; ++click) {
        over = seen = false;
        desk.hands.click(onScreen(*window.findChild<QPushButton*>("cmdRun")).center());
        desk.loop.runUntil([&] { return over; });
        ASSERT_TRUE(seen) << "after click " << click;
    }
}

}  // namespace
}  // namespace vantrel::desktop
