// The whole program with its windows in virtual time, operated through its widgets.
#pragma once

#include <QApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "platform/queued_event_loop.h"
#include "qt/forms.h"
#include "qt/program.h"
#include "qt/unattended_run.h"
#include "support/temp_folder.h"

namespace vantrel::qt {

/// What happens when; a condition is looked at between the program's handlers, however deep they are nested.
struct Step {
    std::function<bool()> when;
    std::function<void()> then;
};

struct Night {
    test::TempFolder home;
    platform::UserMachine user{platform::pathsBelow(home.path())};
    // An endless wait fails the test instead of hanging it.
    platform::VirtualTime time{*platform::parseInstant("2026-11-24T20:00:00Z"), std::chrono::hours{1},
                               1'000'000};
    platform::QueuedEventLoop loop{time};
    Theme theme;
    std::string failures;
    Barrier barrier{[this](const std::string& text) { failures += text + "\n"; }};
    std::ostringstream boxes;
    UnattendedDialogs dialogs{boxes};
    Program program{{loop, theme, barrier}, user, dialogs, 1};

    bool firstStart = false;  // with the window that such a start opens with

    Night() { program.openWindows(); }

    FormWindow& main() const { return program.window("frmMain"); }
    bool enabled(const char* widget) const { return widgetOf<QWidget>(main(), widget).isEnabled(); }
    bool isLit(const char* indicator) {
        return widgetOf<QWidget>(main(), indicator).palette().color(QPalette::Window) == theme.colors().lit;
    }
    bool started() { return main().isVisible() && !program.application().busy(); }
    std::string instructions() const {
        return widgetOf<QPlainTextEdit>(main(), "txtInstructions").toPlainText().toStdString();
    }

    void click(const char* button) const {
        QTest::mouseClick(&widgetOf<QPushButton>(main(), button), Qt::LeftButton);
    }
    void typeInto(const char* field, const char* text) const {
        auto& line = widgetOf<QLineEdit>(main(), field);
        line.selectAll();
        QTest::keyClicks(&line, text);
    }

    /// Lets the mount stand askew by so many arc-minutes.
    void turnAxis(double azimuth, double elevation) {
        const auto simulator = program.automation().create("AxisSimulator.Telescope");
        simulator->put("PolarAzimuthError", azimuth);
        simulator->put("PolarElevationError", elevation);
    }

    /// From the start to the end of the program, with the operator's steps one after the other; closes the
    /// window after the last. Throws when a step's time doesn't come.
    void pass(std::vector<Step> steps) {
        steps.push_back({[] { return true; }, [this] { main().close(); }});
        std::size_t next = 0;
        bool acting = false;  // a step may let the program go on before it ends
        loop.setAttendant([&] {
            QApplication::processEvents();
            if (acting || next == steps.size() || !steps[next].when()) return;
            acting = true;
            steps[next++].then();
            acting = false;
        });
        loop.post([this] { firstStart ? program.start() : program.application().start(); });
        loop.runUntil([&] { return program.application().ended(); });
        loop.setAttendant(nullptr);
    }
};

}  // namespace vantrel::qt
