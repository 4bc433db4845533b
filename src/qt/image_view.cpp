#include "qt/image_view.h"

#include <QKeyEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "qt/parts.h"

namespace vantrel::qt {

using imaging::ViewPoint;

namespace {

// Pixels at the desktop's usual size.
constexpr double kGap = 12;  // what lies where lines cross stays in sight this far around
constexpr double kRing = 20, kRingWidth = 2;

}  // namespace

ImageView::ImageView(imaging::ShownImage& image, const Front& front)
    : image_(image),
      front_(front),
      colors_(imageColors(colorsOf(false), false, false)),
      emptyText_(Text::tr("No image yet.\n\nThe pictures that the imaging program takes\nappear here.")) {
    setObjectName("imageView");
    setAccessibleName(Text::tr("Camera image"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    constexpr int kSmallest = 160;
    setMinimumSize(kSmallest, kSmallest);
    following_ = image_.changed.subscribe([this] { follow(); });
    follow();
}

QSize ImageView::sizeHint() const {
    constexpr int kUsual = 720;
    return {kUsual, kUsual * 3 / 4};
}

/// Looks at no pixel: the program that changes them may still be at it.
void ImageView::follow() {
    if (const auto pixels = image_.pixels())
        viewport_.setImageSize(static_cast<int>(pixels->width()), static_cast<int>(pixels->height()));
    else
        viewport_.setImageSize(0, 0);
    update();
}

void ImageView::setColors(const ImageColors& colors) {
    colors_ = colors;
    painted_.reset();
    update();
}

void ImageView::setCrossHair(bool shown) {
    crossHair_ = shown;
    update();
}

void ImageView::setMarks(std::vector<platform::Shape> marks) {
    marks_ = std::move(marks);
    update();
}

void ImageView::setEmptyText(const QString& text) {
    emptyText_ = text;
    update();
}

void ImageView::setGuidance(const std::optional<correction::Guidance>& guidance) {
    guidance_ = guidance;
    update();
}

void ImageView::changeView(const std::function<void()>& change) {
    change();
    update();
    moved.emit();
}

void ImageView::fit() {
    changeView([this] { viewport_.fit(); });
}

void ImageView::showPixels() {
    changeView([this] { viewport_.zoomTo(1, anchor()); });
}

void ImageView::zoomIn() { zoomAround(anchor(), true); }
void ImageView::zoomOut() { zoomAround(anchor(), false); }

void ImageView::zoomAround(ViewPoint anchor, bool closer) {
    changeView([&] { closer ? viewport_.zoomIn(anchor) : viewport_.zoomOut(anchor); });
}

/// What keys zoom around: what the operator looks at.
ViewPoint ImageView::anchor() const { return cursor_ ? onScreen(*cursor_) : viewport_.middle(); }

ViewPoint ImageView::onScreen(QPointF position) const {
    return {position.x() * devicePixelRatioF(), position.y() * devicePixelRatioF()};
}

std::optional<QPoint> ImageView::pixelUnderCursor() const {
    const auto pixels = image_.pixels();
    if (!cursor_ || !pixels) return std::nullopt;
    const ViewPoint point = viewport_.toImage(onScreen(*cursor_));
    const QPoint pixel(static_cast<int>(std::lround(point.x)), static_cast<int>(std::lround(point.y)));
    const QRect all(0, 0, static_cast<int>(pixels->width()), static_cast<int>(pixels->height()));
    if (!all.contains(pixel)) return std::nullopt;
    return pixel;
}

void ImageView::refreshPicture() {
    const auto pixels = image_.pixels();
    const imaging::ViewWindow window = viewport_.window();
    const auto circles = uncovered();
    if (rastered_.lock() != pixels || window != rasterWindow_ || circles != rasterUncovered_) {
        raster_ = rasterOf(*pixels, window, image_.statistics());
        for (const auto& circle : circles) uncover(raster_, *pixels, window, image_.statistics(), circle);
        rastered_ = pixels;
        rasterWindow_ = window;
        rasterUncovered_ = circles;
        painted_.reset();
    }
    const imaging::ShownStretch stretch = image_.stretch();
    if (painted_ == stretch) return;
    painted_ = stretch;
    if (picture_.size() != QSize(raster_.width, raster_.height))
        picture_ = QImage(raster_.width, raster_.height, QImage::Format_RGB32);
    const imaging::ToneCurve curve = stretch.curve();
    for (int row = 0; row < raster_.height; ++row)
        paintRow(raster_, row, curve, colors_.tones,
                 reinterpret_cast<std::uint32_t*>(picture_.scanLine(row)));
    picture_.setDevicePixelRatio(devicePixelRatioF());
}

void ImageView::paintEvent(QPaintEvent* /*event*/) {
    front_.barrier.run([this] {
        QPainter painter(this);
        painter.fillRect(rect(), colors_.ground);
        if (!image_.pixels()) {
            painter.setPen(colors_.text);
            painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap, emptyText_);
            return;
        }
        refreshPicture();
        const double ratio = devicePixelRatioF();
        painter.drawImage(QPointF(rasterWindow_.x / ratio, rasterWindow_.y / ratio), picture_);
        if (crossHair_) paintCrossHair(painter);
        if (!marks_.empty()) paintMarks(painter);
        if (guidance_ && guidance_->star) paintRing(painter);
    });
}

void ImageView::paintCrossHair(QPainter& painter) const {
    const auto pixels = image_.pixels();
    const QPointF centre = inWindow((static_cast<double>(pixels->width()) - 1) / 2,
                                    (static_cast<double>(pixels->height()) - 1) / 2);
    QPen pen(colors_.line, 1);
    pen.setCosmetic(true);
    painter.setPen(pen);
    const QRectF room = rect();
    painter.drawLine(QLineF(room.left(), centre.y(), centre.x() - kGap, centre.y()));
    painter.drawLine(QLineF(centre.x() + kGap, centre.y(), room.right(), centre.y()));
    painter.drawLine(QLineF(centre.x(), room.top(), centre.x(), centre.y() - kGap));
    painter.drawLine(QLineF(centre.x(), centre.y() + kGap, centre.x(), room.bottom()));
}

void ImageView::paintMarks(QPainter& painter) const {
    constexpr double kSmallest = 6;
    constexpr double kBeside = 4;
    const double scale = viewport_.scale() / devicePixelRatioF();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colors_.line, 1.5));
    for (const platform::Shape& mark : marks_) {
        if (const auto* circle = std::get_if<platform::Circle>(&mark)) {
            const double radius = std::max(circle->radius * scale, kSmallest);
            painter.drawEllipse(inWindow(circle->x, circle->y), radius, radius);
        } else if (const auto* text = std::get_if<platform::DrawnText>(&mark)) {
            painter.drawText(
                inWindow(text->x, text->y) + QPointF(kBeside, painter.fontMetrics().ascent() / 2.0),
                QString::fromStdString(text->text));
        }
    }
}

QPointF ImageView::inWindow(double x, double y) const {
    const ViewPoint point = viewport_.toWindow({x, y});
    return QPointF(point.x, point.y) / devicePixelRatioF();
}

/// Where lines cross, and inside the ring: what the operator looks at must not lie under a mark.
std::vector<imaging::ViewCircle> ImageView::uncovered() const {
    if (!guidance_) return {};
    const auto circle = [this](const engine::PixelPosition& place, double radius) {
        return imaging::ViewCircle{viewport_.toWindow({place.x, place.y}), radius * devicePixelRatioF()};
    };
    std::vector<imaging::ViewCircle> circles = {circle(guidance_->target, kGap)};
    if (guidance_->star) circles.push_back(circle(*guidance_->star, kRing));
    return circles;
}

/// As large on the screen at every scale.
void ImageView::paintRing(QPainter& painter) const {
    const ViewPoint star = viewport_.toWindow({guidance_->star->x, guidance_->star->y});
    const double ratio = devicePixelRatioF();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(colors_.tones[imaging::ToneCurve::kMark]), kRingWidth));
    painter.drawEllipse(QPointF(star.x / ratio, star.y / ratio), kRing, kRing);
}

void ImageView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    changeView([this] {
        viewport_.setWindowSize(qRound(width() * devicePixelRatioF()),
                                qRound(height() * devicePixelRatioF()));
    });
}

void ImageView::wheelEvent(QWheelEvent* event) {
    constexpr int kStep = 120;  // eighths of a degree: a notch of the wheel
    wheel_ += event->angleDelta().y();
    cursor_ = event->position();
    for (; wheel_ >= kStep; wheel_ -= kStep) zoomAround(onScreen(*cursor_), true);
    for (; wheel_ <= -kStep; wheel_ += kStep) zoomAround(onScreen(*cursor_), false);
    event->accept();
}

void ImageView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton && event->button() != Qt::MiddleButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    grip_ = event->position();
    setCursor(Qt::ClosedHandCursor);
}

void ImageView::mouseMoveEvent(QMouseEvent* event) {
    cursor_ = event->position();
    if (grip_) {
        const QPointF way = (event->position() - *grip_) * devicePixelRatioF();
        grip_ = event->position();
        viewport_.pan(way.x(), way.y());
        update();
    }
    moved.emit();
}

void ImageView::mouseReleaseEvent(QMouseEvent* event) {
    QWidget::mouseReleaseEvent(event);
    grip_.reset();
    unsetCursor();
}

void ImageView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    cursor_ = event->position();
    viewport_.fitted() ? showPixels() : fit();
}

void ImageView::leaveEvent(QEvent* event) {
    QWidget::leaveEvent(event);
    cursor_.reset();
    moved.emit();
}

void ImageView::keyPressEvent(QKeyEvent* event) {
    constexpr double kShare = 0.1;  // of the view
    const double across = viewport_.middle().x * 2 * kShare;
    const double down = viewport_.middle().y * 2 * kShare;
    const auto pan = [this](double dx, double dy) { changeView([&] { viewport_.pan(dx, dy); }); };
    switch (event->key()) {
        case Qt::Key_Left:
            return pan(across, 0);
        case Qt::Key_Right:
            return pan(-across, 0);
        case Qt::Key_Up:
            return pan(0, down);
        case Qt::Key_Down:
            return pan(0, -down);
        default:
            QWidget::keyPressEvent(event);
    }
}

}  // namespace vantrel::qt
