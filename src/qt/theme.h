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

/// The look by day, or by night at full brightness.
const Colors& colorsOf(bool night);
/// The same with every colour at this share of its brightness.
Colors dimmed(const Colors& colors, double share);
QPalette paletteOf(const Colors& colors);

/// One look: its colours, and how the program's own colours appear in it.
class Look {
  public:
    /// By day, or by night at this brightness from 0 to 1.
    explicit Look(bool night = false, double brightness = 1);

    bool night() const { return night_; }
    const Colors& colors() const { return colors_; }

    /// How a control's back colour and its text colour look. By night all hues become reds of like
    /// brightness; what is lit stays the brightest.
    QColor surface(platform::Color color) const;
    QColor ink(platform::Color color) const;
    /// How a line or point of a plot looks: black is the plot's own ink.
    QColor plotted(platform::Color color) const;

  private:
    QColor red(double strength) const;

    bool night_;
    Colors colors_;
};

/// The look in use. Changing it repaints every window at once.
class Theme : public Look {
  public:
    /// Puts the program's style on the application, which must exist, and begins by day.
    Theme();

    void setNight(bool night);
    /// Of the night's colours, from 0 to 1. By day it changes nothing.
    void setNightBrightness(double share);

    platform::Signal<> changed;

  private:
    void change(bool night, double brightness);
    void apply();

    double brightness_ = 1;
};

/// The picture in shades of this red, for icons by night.
QPixmap reddened(const QPixmap& picture, const QColor& brightest);

}  // namespace vantrel::qt
