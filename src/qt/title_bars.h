// Title bars in the colours of the look, where the system lets a program colour them.
#pragma once

#include <QObject>
#include <functional>

#include "qt/desktop_services.h"
#include "qt/theme.h"

namespace vantrel::qt {

/// While one lives, every window of the program, dialogs included, has its bar coloured before it is seen,
/// and again when the look changes.
class TitleBars : public QObject {
  public:
    using Paint = std::function<void(QWidget& window, const Look& look)>;

    /// The application and the theme must outlive this.
    explicit TitleBars(Theme& theme, Paint paint = colorTitleBar);

  protected:
    bool eventFilter(QObject* object, QEvent* event) override;

  private:
    const Theme& theme_;
    Paint paint_;
    platform::Subscription look_;
};

}  // namespace vantrel::qt
