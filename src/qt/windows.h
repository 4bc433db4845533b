// The windows of all forms.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "qt/form_window.h"

class QGroupBox;
class QLabel;

namespace vantrel::app {
class frmMain;
}

namespace vantrel::qt {

class MainWindow : public FormWindow {
  public:
    MainWindow(app::frmMain& form, const Front& front);

  private:
    void addKeys();
    void offerAnswer();

    platform::Subscription nextChanged_, pageWanted_;
    bool nextWasEnabled_ = false;
};

class LogWindow : public FormWindow {
  public:
    LogWindow(platform::Form& form, const Front& front);
};

class TelescopeWindow : public FormWindow {
  public:
    TelescopeWindow(platform::Form& form, const Front& front);
};

class PolarPlotWindow : public FormWindow {
  public:
    PolarPlotWindow(platform::Form& form, const Front& front);

  private:
    void hideWhileEmpty(QGroupBox& group, const std::vector<std::string>& boxes);

    std::vector<platform::Subscription> filled_;
};

class AdjustWindow : public FormWindow {
  public:
    AdjustWindow(platform::Form& form, const Front& front);
};

class HistoryWindow : public FormWindow {
  public:
    HistoryWindow(platform::Form& form, const Front& front);
};

class PlatesWindow : public FormWindow {
  public:
    PlatesWindow(platform::Form& form, const Front& front);
};

class PreflightWindow : public FormWindow {
  public:
    PreflightWindow(platform::Form& form, const Front& front);
};

class PixelScaleWindow : public FormWindow {
  public:
    PixelScaleWindow(platform::Form& form, const Front& front);
};

/// A file that is dropped on it is solved.
class SolvePictureWindow : public FormWindow {
  public:
    SolvePictureWindow(platform::Form& form, const Front& front);
};

class WelcomeWindow : public FormWindow {
  public:
    WelcomeWindow(platform::Form& form, const Front& front);
};

class DevicesWindow : public FormWindow {
  public:
    DevicesWindow(platform::Form& form, const Front& front);
};

class OptionsWindow : public FormWindow {
  public:
    OptionsWindow(platform::Form& form, const Front& front);
};

class AboutWindow : public FormWindow {
  public:
    AboutWindow(platform::Form& form, const Front& front);
};

/// Borderless, never takes the keyboard; a click tells the form, dragging moves the window.
class PopupWindow : public FormWindow {
  public:
    PopupWindow(platform::Form& form, const Front& front);

  protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void followForm() override;

  private:
    QLabel* heading_;
    QPoint grip_;  // where the window is held
    bool dragged_ = false;
};

/// Any other form: its controls one below the other, buttons in a row at the bottom.
class PlainWindow : public FormWindow {
  public:
    PlainWindow(platform::Form& form, const Front& front);
};

/// A window for each form of the screen.
std::vector<std::unique_ptr<FormWindow>> windowsFor(platform::Screen& screen, const Front& front);

}  // namespace vantrel::qt
