// How many pixels have which value, with the handles of the stretch.
#pragma once

#include <QWidget>
#include <array>
#include <memory>
#include <vector>

#include "imaging/histogram.h"
#include "imaging/shown_image.h"
#include "qt/barrier.h"

namespace vantrel::qt {

/// Black, midtone and white are dragged, or moved with the arrow keys: up and down choose one of them, left
/// and right move it. A double click makes the stretch automatic again.
class HistogramBar : public QWidget {
  public:
    HistogramBar(imaging::ShownImage& image, const Barrier& barrier);

    QSize sizeHint() const override;

    enum Handle { kBlack, kMidtone, kWhite, kHandles };
    /// Where the handle stands, from the left edge.
    int handleAt(Handle handle);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    double placeOf(Handle handle);
    void moveTo(Handle handle, double place);
    void choose(Handle handle);
    double placeUnder(const QMouseEvent& event) const;
    QRect chart() const;
    void measure();

    imaging::ShownImage& image_;
    const Barrier& barrier_;
    platform::Subscription following_;
    std::weak_ptr<const platform::ImageArray> measured_;
    imaging::HistogramAxis axis_{{}};
    std::vector<double> bins_;
    Handle chosen_ = kMidtone;
};

}  // namespace vantrel::qt
