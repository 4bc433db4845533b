// The two looks of the windows: a quiet one by day, and deep red on black for eyes adapted to the dark.
#pragma once

#include <QColor>
#include <QPalette>

#include "platform/color.h"
#include "platform/signal.h"

class QPixmap;

namespace vantrel::qt {

/// Colours of one look. By night every one of them is a red whose green and blue stay below a third of it.
struct Colors {
    QColor window, base, button, border, text, dim;
    QColor accent, onAccent;     // focus, ticks, selection
    QColor lit;                  // an indicator or a button that is on
    QColor unlit, onUnlit;       // an indicator that is off
    QColor chart, ring, marker;  // the plots' ground, lines and points
    QColor mark;                 // what is drawn into a camera's image
};

const Colors& colorsOf(bool night);
QPalette paletteOf(const Colors& colors);

/// The look in use. Changing it repaints every window at once.
class Theme {
  public:
    /// Puts the program's style on the application, which must exist, and begins by day.
    Theme();

    bool night() const { return night_; }
    void setNight(bool night);
    const Colors& colors() const { return colorsOf(night_); }

    /// How a control's back colour and its text colour look. By night all hues become reds of like
    /// brightness; what is lit stays the brightest.
    QColor surface(platform::Color color) const;
    QColor ink(platform::Color color) const;
    /// How a line or point of a plot looks: black is the plot's own ink.
    QColor plotted(platform::Color color) const;

    platform::Signal<> changed;

  private:
    void apply();

    bool night_ = false;
};

/// The picture in shades of the night's red, for icons.
QPixmap reddened(const QPixmap& picture);

}  // namespace vantrel::qt
