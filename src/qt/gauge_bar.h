// A thin bar that shows a gauge's fraction.
#pragma once

#include <QWidget>

namespace vantrel::qt {

class GaugeBar : public QWidget {
  public:
    GaugeBar();

    /// From 0 to 1.
    void setFraction(double fraction);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    double fraction_ = 0;
};

}  // namespace vantrel::qt
