// What the tests on a real screen stand on: the program's own loop in real time, and an operator.
#pragma once

#include <QTest>
#include <QWidget>
#include <string>

#include "desktop/x_operator.h"
#include "qt/front.h"
#include "qt/qt_event_loop.h"

namespace vantrel::desktop {

struct Desk {
    std::string failures;
    qt::Barrier barrier{[this](const std::string& text) { failures += text + "\n"; }};
    qt::QtEventLoop loop{barrier};
    qt::Theme theme;
    qt::Front front{loop, theme, barrier};
    XOperator hands;
};

/// Lets the program run until it holds. False when it doesn't within a time that any machine has.
template <typename Condition>
bool comesTrue(Condition&& condition) {
    constexpr int kPatience = 30'000;  // milliseconds; a good run never waits for it
    return QTest::qWaitFor(condition, kPatience);
}

/// The widget's place among the pixels of the screen.
inline QRect onScreen(const QWidget& widget) {
    const double ratio = widget.devicePixelRatio();
    return {widget.mapToGlobal(QPoint()) * ratio, widget.size() * ratio};
}

/// Whether the screen shows what the widget holds.
inline bool isPainted(const XOperator& eyes, QWidget& widget) {
    return eyes.look(onScreen(widget)) == widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

}  // namespace vantrel::desktop
