// A label's address as the code that telephones read; hidden while the label holds none.
#pragma once

#include <QWidget>

#include "page/qr_code.h"
#include "platform/controls.h"

namespace vantrel::qt {

class Theme;

class QrView : public QWidget {
  public:
    QrView(platform::Label& address, const Theme& theme);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void follow();

    platform::Label& address_;
    const Theme& theme_;
    page::QrCode code_;
    platform::Subscription change_;
};

}  // namespace vantrel::qt
