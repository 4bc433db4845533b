#include "qt/gauge_bar.h"

#include <QPainter>
#include <algorithm>

namespace vantrel::qt {

GaugeBar::GaugeBar() {
    constexpr int kHeight = 6;
    setFixedHeight(kHeight);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void GaugeBar::setFraction(double fraction) {
    fraction_ = fraction;
    update();
}

void GaugeBar::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const double round = height() / 2.0;
    painter.setBrush(palette().color(QPalette::Midlight));
    painter.drawRoundedRect(rect(), round, round);
    if (fraction_ <= 0) return;
    painter.setBrush(palette().color(QPalette::Highlight));
    painter.drawRoundedRect(QRectF(0, 0, std::max(width() * fraction_, 2 * round), height()), round, round);
}

}  // namespace vantrel::qt
