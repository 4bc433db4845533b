// The image in front, to be zoomed, drawn about and looked at pixel by pixel.
#pragma once

#include <QImage>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "correction/star_guide.h"
#include "imaging/image_viewport.h"
#include "imaging/shown_image.h"
#include "imaging/view_raster.h"
#include "platform/drawing.h"
#include "qt/front.h"
#include "qt/image_colors.h"

namespace vantrel::qt {

/// The wheel zooms around the cursor, dragging or the arrow keys move the image, a double click changes
/// between the whole image and its own pixels. A pixel of the image is measured in pixels of the screen, also
/// where the desktop enlarges everything else.
class ImageView : public QWidget {
  public:
    ImageView(imaging::ShownImage& image, const Front& front);

    void setColors(const ImageColors& colors);
    /// Lines through the image's middle, which aren't part of it.
    void setCrossHair(bool shown);
    /// Circles and texts around places of the image, which aren't part of it either.
    void setMarks(std::vector<platform::Shape> marks);
    /// What stands there while there is no image.
    void setEmptyText(const QString& text);
    /// A ring around the star; the picture without its marks in it and where they cross at the target.
    void setGuidance(const std::optional<correction::Guidance>& guidance);

    void fit();
    /// One pixel of the image for one of the screen.
    void showPixels();
    void zoomIn();
    void zoomOut();
    const imaging::ImageViewport& viewport() const { return viewport_; }

    /// The image's column and row under the cursor.
    std::optional<QPoint> pixelUnderCursor() const;

    /// The view or what is under the cursor is another.
    platform::Signal<> moved;

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void follow();
    void changeView(const std::function<void()>& change);
    void zoomAround(imaging::ViewPoint anchor, bool closer);
    imaging::ViewPoint anchor() const;
    imaging::ViewPoint onScreen(QPointF position) const;
    void refreshPicture();
    void paintCrossHair(QPainter& painter) const;
    void paintMarks(QPainter& painter) const;
    QPointF inWindow(double x, double y) const;
    void paintRing(QPainter& painter) const;
    std::vector<imaging::ViewCircle> uncovered() const;

    imaging::ShownImage& image_;
    Front front_;
    platform::Subscription following_;
    imaging::ImageViewport viewport_;
    ImageColors colors_;
    bool crossHair_ = false;
    std::vector<platform::Shape> marks_;
    QString emptyText_;
    std::optional<correction::Guidance> guidance_;

    // What is on the screen now, and what it was made from.
    imaging::ViewRaster raster_;
    std::weak_ptr<const platform::ImageArray> rastered_;
    imaging::ViewWindow rasterWindow_;
    std::vector<imaging::ViewCircle> rasterUncovered_;
    std::optional<imaging::ShownStretch> painted_;
    QImage picture_;

    std::optional<QPointF> cursor_;
    std::optional<QPointF> grip_;  // where the image is held
    int wheel_ = 0;                // turned, but not yet by a whole step
};

}  // namespace vantrel::qt
