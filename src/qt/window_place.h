// Where a window stands: puts it where the program wants it, and tells where the operator has moved it.
#pragma once

#include <QMargins>
#include <QObject>
#include <QRect>
#include <functional>

#include "platform/form.h"
#include "platform/timer.h"

class QWidget;

namespace vantrel::qt {

/// The desktop without its panels and without what a frame adds to a window: a form's size is that of what is
/// inside.
platform::Rectangle workArea();

/// While a window opens it reports moves that nobody made: it gets its frame, and stands aside by it until
/// the program is told of it; and a move that is asked for meanwhile ends beside its target. So the window is
/// placed before it opens or once it stands, and what it reports counts when it has settled.
///
/// Places are the frame's corner and the size of what is inside.
class WindowPlace : public QObject {
  public:
    /// The window must outlive it. `moved` is called with the new place when the operator's moving has ended.
    WindowPlace(QWidget& window, platform::EventLoop& loop, std::function<void(const QRect& place)> moved);

    /// Puts the window there, moved and made smaller as far as it has to be to stand on the screen as a
    /// whole.
    void put(const QRect& place);

    /// What stands around the window's inside; usual widths until it is shown.
    QMargins frame() const;

    /// A moving that has just ended is told now, and not in a moment.
    void tellNow();
    /// The same for a moving that went through the window's own hands.
    void tellOwnMoving();

  protected:
    bool eventFilter(QObject* object, QEvent* event) override;

  private:
    void apply();
    void settle();
    void restart();
    bool stands() const;
    QRect current() const;
    QRect onScreen(const QRect& place) const;

    QWidget& window_;
    std::function<void(const QRect&)> moved_;
    platform::Timer settling_;
    QRect wanted_;         // by the program or the operator, the later of both
    QRect applied_;        // what the window was asked for last; empty when that has to wait
    QRect settled_;        // where it stood then
    bool steady_ = false;  // since it was asked; later moves are the operator's
};

}  // namespace vantrel::qt
