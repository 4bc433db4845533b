#include "qt/picture_widget.h"

#include <QPainter>

#include "qt/theme.h"

namespace vantrel::qt {

PictureWidget::PictureWidget(const Theme& theme, DrawingKind kind) : theme_(theme), kind_(kind) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

QSize PictureWidget::sizeHint() const {
    const int line = fontMetrics().height();
    return kind_ == DrawingKind::kDial ? QSize(line * 29, line * 29) : QSize(line * 16, line * 6);
}

void PictureWidget::setDrawing(const platform::Drawing& drawing) {
    drawing_ = drawing;
    update();
}

void PictureWidget::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    paintDrawing(painter, rect(), drawing_, kind_, theme_);
}

}  // namespace vantrel::qt
