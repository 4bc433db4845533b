// An operator in front of an X server, with eyes and hands that the program knows nothing of: what is seen
// comes from the screen, and what is done comes to the program as from a real mouse.
#pragma once

#include <QImage>
#include <QPoint>
#include <QRect>
#include <initializer_list>

class QWidget;
struct xcb_connection_t;

namespace vantrel::desktop {

/// All places are pixels of the screen.
class XOperator {
  public:
    /// Sits down at the display that the environment names; throws std::runtime_error when there is none.
    XOperator();
    XOperator(const XOperator&) = delete;
    XOperator& operator=(const XOperator&) = delete;
    ~XOperator();

    QImage look(const QRect& part) const;
    /// Where the window stands with all that the window manager has put around it; empty while it isn't
    /// shown.
    QRect frameOf(const QWidget& window) const;
    /// Whether `one` would hide `other` where both are; both are shown.
    bool isAbove(const QWidget& one, const QWidget& other) const;

    void moveTo(QPoint place);
    void press();
    void release();
    void click(QPoint place);
    /// Turns the wheel by a notch, away from the operator or towards him.
    void turnWheel(bool away);
    /// Strikes the key that has this symbol (keysymdef.h), with these held down meanwhile; throws
    /// std::runtime_error when the keyboard has no such key.
    void strike(unsigned symbol, std::initializer_list<unsigned> held = {});

  private:
    unsigned outermost(const QWidget& window) const;
    void button(std::uint8_t number, bool down);
    void key(unsigned symbol, bool down);

    xcb_connection_t* connection_;
    unsigned root_ = 0;
};

}  // namespace vantrel::desktop
