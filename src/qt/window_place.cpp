#include "qt/window_place.h"

#include <QApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QStyle>
#include <QWidget>
#include <QWindow>
#include <algorithm>

namespace vantrel::qt {
namespace {

/// Window managers report every pixel of a way.
constexpr platform::Milliseconds kSettling{250};

int kept(int start, int extent, int first, int room) {
    return std::max(first, std::min(start, first + room - extent));
}

/// What a title bar and borders usually add to a window; the true ones are known when it is shown.
QMargins usualFrame() {
    const int border = QApplication::style()->pixelMetric(QStyle::PM_MdiSubWindowFrameWidth);
    const int title = QApplication::style()->pixelMetric(QStyle::PM_TitleBarHeight);
    return {border, title, border, border};
}

}  // namespace

platform::Rectangle workArea() {
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    const QSize inside = area.marginsRemoved(usualFrame()).size();
    return {area.left(), area.top(), inside.width(), inside.height()};
}

WindowPlace::WindowPlace(QWidget& window, platform::EventLoop& loop,
                         std::function<void(const QRect& place)> moved)
    : window_(window), moved_(std::move(moved)), settling_(loop, kSettling) {
    settling_.onTick = [this] { settle(); };
    window_.installEventFilter(this);
}

void WindowPlace::put(const QRect& place) {
    wanted_ = place;
    steady_ = false;
    if (!window_.isVisible()) return apply();
    applied_ = {};
    if (!stands()) return;
    apply();
    restart();
}

void WindowPlace::tellNow() {
    if (settling_.enabled()) settle();
}

void WindowPlace::tellOwnMoving() {
    steady_ = true;
    settle();
}

bool WindowPlace::eventFilter(QObject* object, QEvent* event) {
    const bool ofWindow = object == &window_;
    if (ofWindow && event->type() == QEvent::Show && !event->spontaneous()) {
        window_.windowHandle()->installEventFilter(this);
        steady_ = false;
        apply();
    } else if (ofWindow && (event->type() == QEvent::Move || event->type() == QEvent::Resize)) {
        if (steady_) restart();
    } else if (!ofWindow && event->type() == QEvent::Expose) {
        if (!steady_ && stands()) restart();
    }
    return QObject::eventFilter(object, event);
}

void WindowPlace::apply() {
    applied_ = onScreen(wanted_);
    window_.move(applied_.topLeft());
    window_.resize(applied_.size());
}

void WindowPlace::settle() {
    settling_.setEnabled(false);
    if (!stands()) return;
    if (!steady_ && onScreen(wanted_) != applied_) {
        apply();
        return restart();
    }
    const QRect before = std::exchange(settled_, current());
    if (!std::exchange(steady_, true) || settled_ == before) return;
    wanted_ = settled_;
    moved_(settled_);
}

void WindowPlace::restart() {
    settling_.setEnabled(false);
    settling_.setEnabled(true);
}

/// Whether the window is on the screen, in a place of its own.
bool WindowPlace::stands() const {
    constexpr Qt::WindowStates kElsewhere = Qt::WindowMinimized | Qt::WindowMaximized | Qt::WindowFullScreen;
    return window_.isVisible() && window_.windowHandle()->isExposed() &&
           !(window_.windowState() & kElsewhere);
}

QRect WindowPlace::current() const { return {window_.pos(), window_.size()}; }

QRect WindowPlace::onScreen(const QRect& place) const {
    const QScreen* screen = QGuiApplication::screenAt(place.center());
    if (screen == nullptr) screen = QGuiApplication::primaryScreen();
    const QRect room = screen->availableGeometry();
    const QMargins around = frame();
    const QSize size =
        place.size().expandedTo(window_.minimumSizeHint()).boundedTo(room.marginsRemoved(around).size());
    const QSize outside = size.grownBy(around);
    return {QPoint(kept(place.left(), outside.width(), room.left(), room.width()),
                   kept(place.top(), outside.height(), room.top(), room.height())),
            size};
}

QMargins WindowPlace::frame() const {
    if (window_.windowFlags() & Qt::FramelessWindowHint) return {};
    const QMargins known =
        window_.windowHandle() != nullptr ? window_.windowHandle()->frameMargins() : QMargins();
    return known.isNull() ? usualFrame() : known;
}

}  // namespace vantrel::qt
