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
};

/// The look by day, or by night at full brightness.
const Colors& colorsOf(bool night);
/// The same with every colour at this share of its brightness.
Colors dimmed(const Colors& colors, double share);
QPalette paletteOf(const Colors& colors);

/// The look in use. Changing it repaints every window at once.
class Theme {
  public:
    /// Puts the program's style on the application, which must exist, and begins by day.
    Theme();

    bool night() const { return night_; }
    void setNight(bool night);
    /// Of the night's colours, from 0 to 1. By day it changes nothing.
    void setNightBrightness(double share);
    const Colors& colors() const { return colors_; }

    /// How a control's back colour and its text colour look. By night all hues become reds of like
    /// brightness; what is lit stays the brightest.
    QColor surface(platform::Color color) const;
    QColor ink(platform::Color color) const;
    /// How a line or point of a plot looks: black is the plot's own ink.
    QColor plotted(platform::Color color) const;

    platform::Signal<> changed;

  private:
    void change(bool night, double brightness);
    void apply();
    QColor red(double strength) const;

    bool night_ = false;
    double brightness_ = 1;
    Colors colors_;
};

/// The picture in shades of this red, for icons by night.
QPixmap reddened(const QPixmap& picture, const QColor& brightest);

}  // namespace vantrel::qt
