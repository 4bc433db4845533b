// A widget that shows a picture's drawing.
#pragma once

#include <QWidget>

#include "platform/drawing.h"
#include "qt/drawing_painter.h"

namespace vantrel::qt {

class Theme;

class PictureWidget : public QWidget {
  public:
    PictureWidget(const Theme& theme, DrawingKind kind);

    QSize sizeHint() const override;
    void setDrawing(const platform::Drawing& drawing);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    const Theme& theme_;
    DrawingKind kind_;
    platform::Drawing drawing_;
};

}  // namespace vantrel::qt
