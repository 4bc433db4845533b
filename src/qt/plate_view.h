// A picture control's photograph with its marks: zoomed and moved as the camera's image is.
#pragma once

#include <QWidget>

#include "imaging/open_documents.h"
#include "imaging/shown_image.h"
#include "platform/drawing.h"
#include "qt/front.h"

namespace vantrel::qt {

class ImageView;

class PlateView : public QWidget {
  public:
    /// `name` is what it is called where it can't be seen; `empty` stands there without a photograph.
    PlateView(const Front& front, const QString& name, const QString& empty);

    void setDrawing(const platform::Drawing& drawing);
    const ImageView& view() const { return *view_; }

  private:
    void applyLook();

    Front front_;
    imaging::OpenDocuments documents_;
    imaging::ShownImage image_;
    ImageView* view_;
    platform::Subscription look_;
};

}  // namespace vantrel::qt
