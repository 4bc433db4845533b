#include "qt/status_lamp.h"

#include <QApplication>
#include <QPainter>

#include "qt/mnemonics.h"

namespace vantrel::qt {
namespace {

constexpr int kMargin = 6;

int lampSize(const QWidget& widget) { return widget.fontMetrics().height() * 3 / 5; }

}  // namespace

StatusLamp::StatusLamp() {
    setProperty(kWantsNoLetter, true);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setCursor(Qt::PointingHandCursor);
}

int StatusLamp::widthFor(const QString& word) const {
    return fontMetrics().horizontalAdvance(word) + lampSize(*this) + 3 * kMargin + 1;
}

QSize StatusLamp::sizeHint() const { return {widthFor(text()), fontMetrics().height() + kMargin}; }

QSize StatusLamp::minimumSizeHint() const { return {lampSize(*this) + 2 * kMargin, sizeHint().height()}; }

void StatusLamp::paintEvent(QPaintEvent* /*event*/) {
    const QPalette look = QApplication::palette();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double size = lampSize(*this);
    const QRectF lamp(kMargin, (height() - size) / 2.0, size, size);
    const QColor light = palette().color(QPalette::Button);
    const bool lit = light != look.color(QPalette::Button);
    painter.setPen(lit ? QPen(Qt::NoPen) : QPen(look.color(QPalette::Dark), 1.5));
    painter.setBrush(lit ? QBrush(light) : QBrush(Qt::NoBrush));
    painter.drawEllipse(lamp);
    const QRect room = rect().adjusted(2 * kMargin + static_cast<int>(size), 0, -kMargin, 0);
    painter.setPen(look.color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::ButtonText));
    painter.drawText(room, Qt::AlignLeft | Qt::AlignVCenter,
                     fontMetrics().elidedText(text(), Qt::ElideRight, room.width()));
    if (!hasFocus()) return;
    painter.setPen(QPen(look.color(QPalette::Highlight), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
}

}  // namespace vantrel::qt
