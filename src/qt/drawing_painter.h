// Paints what a picture shows, crisply, in the look in use.
#pragma once

#include <QRectF>
#include <cstdint>

#include "platform/drawing.h"

class QPainter;

namespace vantrel::qt {

class Look;

enum class DrawingKind : std::int8_t {
    kChart,  // fills its place; the two axes have scales of their own
    kDial,   // a square around the centre, with the ground and the ticks of an instrument's dial
};

/// Paints the drawing and its ground into the rectangle.
void paintDrawing(QPainter& painter, const QRectF& place, const platform::Drawing& drawing, DrawingKind kind,
                  const Look& look);

}  // namespace vantrel::qt
