#include "qt/drawing_painter.h"

#include <QCoreApplication>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <numbers>

#include "qt/theme.h"

namespace vantrel::qt {
namespace {

using platform::Circle;
using platform::Cross;
using platform::Drawing;
using platform::DrawnText;
using platform::Ellipse;
using platform::Line;

QRectF centredSquare(const QRectF& place) {
    const qreal side = std::floor(std::min(place.width(), place.height()));
    return {std::floor(place.center().x() - side / 2), std::floor(place.center().y() - side / 2), side, side};
}

class DrawingPainter {
  public:
    DrawingPainter(QPainter& painter, const QRectF& area, const Drawing& drawing, DrawingKind kind,
                   const Look& look)
        : painter_(painter), area_(area), drawing_(drawing), kind_(kind), look_(look) {}

    void paint() {
        if (kind_ == DrawingKind::kDial) paintDial();
        for (const auto& shape : drawing_.shapes) std::visit([this](const auto& s) { paint(s); }, shape);
    }

  private:
    qreal x(double value) const {
        const auto& scale = drawing_.scale;
        return area_.left() + (value - scale.left) / (scale.right - scale.left) * area_.width();
    }
    qreal y(double value) const {
        const auto& scale = drawing_.scale;
        return area_.top() + (value - scale.top) / (scale.bottom - scale.top) * area_.height();
    }
    QPointF at(double px, double py) const { return {x(px), y(py)}; }
    /// Radii are in units of the horizontal scale.
    qreal length(double units) const {
        return std::abs(units / (drawing_.scale.right - drawing_.scale.left)) * area_.width();
    }

    /// The outermost ring gets a ground and a tick every ten degrees.
    void paintDial() {
        const Circle* rim = nullptr;
        for (const auto& shape : drawing_.shapes)
            if (const auto* circle = std::get_if<Circle>(&shape); circle != nullptr && !circle->filled)
                if (rim == nullptr || circle->radius > rim->radius) rim = circle;
        if (rim == nullptr) return;
        const Colors& colors = look_.colors();
        const QPointF centre = at(rim->x, rim->y);
        const qreal radius = length(rim->radius);
        painter_.setPen(QPen(colors.ring, 1.5));
        painter_.setBrush(colors.base);
        painter_.drawEllipse(centre, radius, radius);
        for (int degrees = 0; degrees < 360; degrees += 10) {
            if (degrees % 90 == 0) continue;
            const qreal reach = length(rim->radius) * (degrees % 30 == 0 ? 1.035 : 1.02);
            const double angle = degrees * std::numbers::pi / 180;
            const QPointF direction(std::cos(angle), std::sin(angle));
            painter_.setPen(QPen(colors.ring, degrees % 30 == 0 ? 1.5 : 1));
            painter_.drawLine(centre + direction * radius, centre + direction * reach);
        }
    }

    void paint(const Circle& circle) {
        const QPointF centre = at(circle.x, circle.y);
        const qreal radius = length(circle.radius);
        if (!circle.filled) {
            painter_.setPen(QPen(look_.colors().ring, 1));
            painter_.setBrush(Qt::NoBrush);
            painter_.drawEllipse(centre, radius, radius);
            return;
        }
        QColor color = look_.plotted(circle.color);
        color.setAlphaF(static_cast<float>(circle.strength));
        // A chart that is much wider than high still shows points, not discs.
        const qreal widest = kind_ == DrawingKind::kDial ? radius : area_.height() / 24;
        const qreal shown = std::max(std::min(radius, widest), 3.0);
        painter_.setPen(Qt::NoPen);
        if (kind_ == DrawingKind::kDial && circle.strength == 1) {
            QColor halo = color;
            halo.setAlphaF(0.22F);
            painter_.setBrush(halo);
            painter_.drawEllipse(centre, shown * 1.7, shown * 1.7);
        }
        painter_.setBrush(color);
        painter_.drawEllipse(centre, shown, shown);
    }

    void paint(const Line& line) {
        const bool ruling = line.color == platform::color::kBlack;
        painter_.setPen(QPen(ruling ? look_.colors().ring : look_.plotted(line.color), 1));
        // Level and upright lines sit on pixel centres, so that they stay thin.
        const auto onPixel = [](QPointF p) {
            return QPointF(std::floor(p.x()) + 0.5, std::floor(p.y()) + 0.5);
        };
        painter_.drawLine(onPixel(at(line.x1, line.y1)), onPixel(at(line.x2, line.y2)));
    }

    void paint(const Ellipse& ellipse) {
        painter_.setPen(QPen(look_.plotted(ellipse.color), 1.5));
        painter_.setBrush(Qt::NoBrush);
        painter_.save();
        painter_.translate(at(ellipse.x, ellipse.y));
        painter_.rotate(ellipse.direction);  // the screen's y points down: clockwise, as from up to the right
        painter_.drawEllipse(QPointF(), length(ellipse.minor), length(ellipse.major));
        painter_.restore();
    }

    void paint(const Cross& cross) {
        constexpr qreal kSmallest = 5;
        const QPointF centre = at(cross.x, cross.y);
        const qreal reach = std::max(length(cross.reach), kSmallest);
        painter_.setPen(QPen(look_.plotted(cross.color), 1.5));
        painter_.drawLine(centre - QPointF(reach, 0), centre + QPointF(reach, 0));
        painter_.drawLine(centre - QPointF(0, reach), centre + QPointF(0, reach));
    }

    void paint(const DrawnText& text) {
        QFont font = QGuiApplication::font();
        font.setPixelSize(std::clamp(static_cast<int>(area_.height() / 25), 11, 20));
        painter_.setFont(font);
        painter_.setPen(look_.plotted(text.color));
        const QString words = QString::fromStdString(text.text);
        QRectF box = QFontMetricsF(font).boundingRect(QRectF(at(text.x, text.y), QSizeF(1, 1)),
                                                      Qt::AlignLeft | Qt::AlignTop | Qt::TextDontClip, words);
        // A long text stays inside the picture.
        box.moveLeft(std::max(area_.left(), std::min(box.left(), area_.right() - box.width() - 1)));
        box.moveTop(std::max(area_.top(), std::min(box.top(), area_.bottom() - box.height())));
        painter_.drawText(box, Qt::AlignLeft | Qt::AlignTop | Qt::TextDontClip, words);
    }

    QPainter& painter_;
    QRectF area_;
    const Drawing& drawing_;
    DrawingKind kind_;
    const Look& look_;
};

}  // namespace

void paintDrawing(QPainter& painter, const QRectF& place, const Drawing& drawing, DrawingKind kind,
                  const Look& look) {
    const Colors& colors = look.colors();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(colors.border);
    painter.setBrush(colors.chart);
    painter.drawRoundedRect(place.adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
    const auto& scale = drawing.scale;
    if (drawing.shapes.empty() || scale.left == scale.right || scale.top == scale.bottom) {
        painter.setPen(colors.dim);
        painter.drawText(place, Qt::AlignCenter, QCoreApplication::translate("Text", "No measurement yet"));
    } else {
        constexpr qreal kMargin = 4;
        const QRectF inner = place.adjusted(kMargin, kMargin, -kMargin, -kMargin);
        painter.setClipRect(inner);
        DrawingPainter(painter, kind == DrawingKind::kDial ? centredSquare(inner) : inner, drawing, kind,
                       look)
            .paint();
    }
    painter.restore();
}

}  // namespace vantrel::qt
