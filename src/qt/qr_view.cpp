#include "qt/qr_view.h"

#include <QPainter>

#include "qt/theme.h"

namespace vantrel::qt {

QrView::QrView(platform::Label& address, const Theme& theme) : address_(address), theme_(theme) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    change_ = address_.changed.subscribe([this] { follow(); });
    follow();
}

void QrView::follow() {
    const std::string& address = address_.caption();
    code_ = address.starts_with("http://") ? page::qrCodeOf(address) : page::QrCode{};
    setVisible(code_.side > 0);
    updateGeometry();
    update();
}

/// Each field has as many whole pixels as a telephone needs at an arm's length.
QSize QrView::sizeHint() const {
    constexpr int kLeast = 3;
    const int fields = code_.side + 2 * page::kQrMargin;
    const int field = std::max(kLeast, fontMetrics().height() / 6);
    return QSize(fields, fields) * field;
}

/// Dark on light by night, too, as some telephones read nothing else.
void QrView::paintEvent(QPaintEvent* /*event*/) {
    if (code_.side == 0) return;
    QPainter painter(this);
    painter.fillRect(rect(), theme_.night() ? theme_.colors().text : QColor(Qt::white));
    const int fields = code_.side + 2 * page::kQrMargin;
    const int field = std::max(1, std::min(width(), height()) / fields);
    const int left = (width() - field * code_.side) / 2, top = (height() - field * code_.side) / 2;
    for (int y = 0; y < code_.side; ++y)
        for (int x = 0; x < code_.side; ++x)
            if (code_.isDark(x, y))
                painter.fillRect(left + x * field, top + y * field, field, field, Qt::black);
}

}  // namespace vantrel::qt
