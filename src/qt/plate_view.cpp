#include "qt/plate_view.h"

#include <QVBoxLayout>

#include "qt/image_view.h"

namespace vantrel::qt {

PlateView::PlateView(const Front& front, const QString& name, const QString& empty)
    : front_(front), image_(documents_), view_(new ImageView(image_, front)) {
    setAccessibleName(name);
    view_->setAccessibleName(name);
    view_->setEmptyText(empty);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(view_);
    setSizePolicy(view_->sizePolicy());
    look_ = front_.theme.changed.subscribe([this] { applyLook(); });
    applyLook();
}

void PlateView::setDrawing(const platform::Drawing& drawing) {
    const auto shown = documents_.current();
    if (shown && shown->pixels != drawing.photograph) documents_.close(shown);
    if (drawing.photograph && !documents_.current()) {
        documents_.open({.title = {}, .pixels = drawing.photograph, .header = {}});
        view_->fit();
    }
    view_->setMarks(drawing.shapes);
}

void PlateView::applyLook() {
    view_->setColors(imageColors(front_.theme.colors(), front_.theme.night(), false));
}

}  // namespace vantrel::qt
