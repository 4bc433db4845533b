// What is to be turned, all over the screen: to be read from the mount's far side.
#pragma once

#include <QWidget>

#include "correction/frm_adjust.h"

namespace vantrel::qt {

/// Covers its window while it is shown; F11 and Esc take it away.
class BigDigits : public QWidget {
  public:
    BigDigits(correction::frmAdjust& form, QWidget& window);

    /// The window fills the screen, or is as it was.
    void toggle();

  protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void paintLine(QPainter& painter, const QRect& place, const platform::Label& text, bool bold) const;

    correction::frmAdjust& form_;
    std::vector<platform::Subscription> changes_;
};

}  // namespace vantrel::qt
