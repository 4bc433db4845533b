#include "qt/histogram_bar.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "qt/parts.h"

namespace vantrel::qt {
namespace {

constexpr int kHandleHeight = 9;
constexpr int kHandleRoom = 7;  // for half a handle
constexpr std::array kMoves = {QT_TRANSLATE_NOOP("Text", "Moves the black point"),
                               QT_TRANSLATE_NOOP("Text", "Moves the midtone"),
                               QT_TRANSLATE_NOOP("Text", "Moves the white point")};

}  // namespace

HistogramBar::HistogramBar(imaging::ShownImage& image, const Barrier& barrier)
    : image_(image), barrier_(barrier) {
    setObjectName("histogram");
    setAccessibleName(Text::tr("Histogram and stretch"));
    setToolTip(Text::tr(
        "Drag the black point, the midtone or the white point. By keyboard: up and down choose one, left and "
        "right move it. A double click makes the stretch automatic."));
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    choose(kMidtone);
    following_ = image_.changed.subscribe([this] { update(); });
}

QSize HistogramBar::sizeHint() const { return {240, fontMetrics().height() * 4 + kHandleHeight}; }

QRect HistogramBar::chart() const {
    return rect().adjusted(kHandleRoom, 2, -kHandleRoom, -kHandleHeight - 2);
}

/// Once for every exposure, when the window is looked at.
void HistogramBar::measure() {
    const auto pixels = image_.pixels();
    const int bins = std::max(1, chart().width() / 2);
    if (pixels && measured_.lock() == pixels && bins_.size() == static_cast<std::size_t>(bins)) return;
    measured_ = pixels;
    axis_ = imaging::HistogramAxis(image_.statistics());
    bins_ = imaging::histogramOf(image_.statistics(), axis_, bins);
}

double HistogramBar::placeOf(Handle handle) {
    measure();
    const imaging::ShownStretch stretch = image_.stretch();
    switch (handle) {
        case kBlack:
            return axis_.place(stretch.black);
        case kWhite:
            return axis_.place(stretch.white);
        default:
            return axis_.place(stretch.black + stretch.midtone * (stretch.white - stretch.black));
    }
}

int HistogramBar::handleAt(Handle handle) {
    return chart().left() + static_cast<int>(std::lround(placeOf(handle) * chart().width()));
}

double HistogramBar::placeUnder(const QMouseEvent& event) const {
    return (event.position().x() - chart().left()) / std::max(1, chart().width());
}

/// Black and white stay on their sides; the midtone goes along with them.
void HistogramBar::moveTo(Handle handle, double place) {
    constexpr double kApart = 0.004;
    if (!image_.pixels()) return;
    measure();
    imaging::ShownStretch stretch = image_.stretch();
    const double black = axis_.place(stretch.black);
    const double white = axis_.place(stretch.white);
    if (handle == kBlack) {
        stretch.black = axis_.value(std::min(place, white - kApart));
    } else if (handle == kWhite) {
        stretch.white = axis_.value(std::max(place, black + kApart));
    } else {
        const double value = axis_.value(std::clamp(place, black, white));
        stretch.midtone = (value - stretch.black) / (stretch.white - stretch.black);
    }
    barrier_.run([&] { image_.choose(stretch); });
}

void HistogramBar::choose(Handle handle) {
    chosen_ = handle;
    setAccessibleDescription(Text::tr(kMoves[static_cast<std::size_t>(handle)]));
    update();
}

void HistogramBar::paintEvent(QPaintEvent* /*event*/) {
    barrier_.run([this] {
        const QPalette& colors = palette();
        QPainter painter(this);
        const QRect area = chart();
        painter.setPen(colors.color(hasFocus() ? QPalette::Highlight : QPalette::Mid));
        painter.setBrush(colors.color(QPalette::Base));
        painter.drawRect(area.adjusted(-1, -1, 0, 0));
        if (!image_.pixels()) return;
        measure();
        const double step = static_cast<double>(area.width()) / static_cast<double>(bins_.size());
        for (std::size_t bin = 0; bin < bins_.size(); ++bin) {
            const double height = bins_[bin] * (area.height() - 2);
            painter.fillRect(
                QRectF(area.left() + static_cast<double>(bin) * step, area.bottom() - height, step, height),
                colors.color(QPalette::Dark));
        }
        painter.setRenderHint(QPainter::Antialiasing);
        for (const Handle handle : {kBlack, kWhite, kMidtone}) {
            const double x = handleAt(handle) + 0.5;
            const QColor line = colors.color(handle == chosen_ ? QPalette::Highlight : QPalette::Text);
            painter.setPen(line);
            painter.drawLine(QLineF(x, area.top(), x, area.bottom()));
            const QColor inside[] = {colors.color(QPalette::Text), colors.color(QPalette::Mid),
                                     colors.color(QPalette::Base)};
            painter.setBrush(inside[handle]);
            const double top = area.bottom() + 1.5;
            constexpr double kHalf = 5;
            painter.drawPolygon(QPolygonF({QPointF(x, top), QPointF(x + kHalf, top + kHandleHeight - 1),
                                           QPointF(x - kHalf, top + kHandleHeight - 1)}));
        }
    });
}

void HistogramBar::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !image_.pixels()) return;
    const double place = placeUnder(*event);
    Handle nearest = kMidtone;
    for (const Handle handle : {kBlack, kWhite})
        if (std::abs(placeOf(handle) - place) < std::abs(placeOf(nearest) - place)) nearest = handle;
    choose(nearest);
}

void HistogramBar::mouseMoveEvent(QMouseEvent* event) {
    if (event->buttons() & Qt::LeftButton) moveTo(chosen_, placeUnder(*event));
}

void HistogramBar::mouseDoubleClickEvent(QMouseEvent* /*event*/) {
    barrier_.run([this] { image_.beAutomatic(); });
}

void HistogramBar::keyPressEvent(QKeyEvent* event) {
    constexpr double kStep = 0.01;
    const auto turned = [this](int by) { return static_cast<Handle>((chosen_ + kHandles + by) % kHandles); };
    switch (event->key()) {
        case Qt::Key_Left:
            return moveTo(chosen_, placeOf(chosen_) - kStep);
        case Qt::Key_Right:
            return moveTo(chosen_, placeOf(chosen_) + kStep);
        case Qt::Key_Up:
            return choose(turned(1));
        case Qt::Key_Down:
            return choose(turned(-1));
        default:
            QWidget::keyPressEvent(event);
    }
}

}  // namespace vantrel::qt
