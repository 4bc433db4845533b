// A lamp with a word beside it; a press leads to what it stands for.
#pragma once

#include <QPushButton>

namespace vantrel::qt {

/// The lamp has the button's own colour, the word that of the window's texts. A word that is too long is cut;
/// a lamp that isn't lit is a ring.
class StatusLamp : public QPushButton {
  public:
    StatusLamp();

    int widthFor(const QString& word) const;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace vantrel::qt
