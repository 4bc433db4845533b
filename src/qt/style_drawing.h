// The shapes that the widgets are drawn with; every colour is from the option's palette.
#pragma once

#include <QColor>
#include <QPixmap>
#include <QStyle>
#include <QStyleOption>

class QPainter;

namespace vantrel::qt {

/// The first colour with a share of the second, from 0 to 1.
QColor mixed(const QColor& a, const QColor& b, float share);

/// What outlines the widget: brighter when it has the focus, paler when it is disabled.
QColor lineColor(const QStyleOption& option);

/// A rounded box whose one-pixel outline lies inside the rectangle. An invalid colour fills nothing.
void drawBox(QPainter& painter, const QRect& rect, const QColor& fill, const QColor& line);

void drawButtonFace(const QStyleOption& option, QPainter& painter);
void drawLineEdit(const QStyleOption& option, QPainter& painter);
void drawCheckIndicator(const QStyleOption& option, QPainter& painter);
void drawRadioIndicator(const QStyleOption& option, QPainter& painter);
/// An arrow head in the middle of the rectangle.
void drawChevron(QPainter& painter, const QRect& rect, const QColor& color, Qt::ArrowType direction);
void drawTab(const QStyleOptionTab& option, QPainter& painter);

// These ask the style where the widget's parts are.
void drawComboBox(const QStyle& style, const QStyleOptionComboBox& option, QPainter& painter,
                  const QWidget* widget);
/// The title stands above the frame.
void drawGroupBox(const QStyle& style, const QStyleOptionGroupBox& option, QPainter& painter,
                  const QWidget* widget);
void drawScrollBar(const QStyle& style, const QStyleOptionSlider& option, QPainter& painter,
                   const QWidget* widget);
/// The letter shows while Alt is held.
void drawMenuBarItem(const QStyle& style, const QStyleOptionMenuItem& option, QPainter& painter);

/// Whether the picture is one of those that stand beside a message.
bool isMessageSign(QStyle::StandardPixmap picture);
QPixmap messageSign(QStyle::StandardPixmap picture);

}  // namespace vantrel::qt
