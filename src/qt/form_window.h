// The window of a form: follows the form's state, and tells the form what the operator does with it.
#pragma once

#include <QWidget>
#include <memory>

#include "qt/binding.h"
#include "qt/window_place.h"

namespace vantrel::qt {

class FormWindow : public QWidget {
  public:
    FormWindow(platform::Form& form, const Front& front, Qt::WindowFlags flags = Qt::Window);
    ~FormWindow() override;

    platform::Form& form() const { return form_; }

    /// Puts the window in front of all others, if it is shown at all.
    void bringToFront();

    /// What the window would like and what it can't do without, its frame included.
    QSize wantedSize() const;
    QSize leastSize() const;
    /// Puts the window, shown or not, where it fills this place with its frame.
    void standIn(const QRect& place);

  protected:
    /// The widget to lay out on; all of it scrolls where the screen is too small.
    QWidget& scrolledPage();

    /// To be called once, when every widget is in place. Makes the form at least as large as its
    /// widgets would like.
    void bind();

    const Front& front() const { return front_; }
    WindowPlace& windowPlace() { return windowPlace_; }

    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

    /// Puts the window where the form is, and the form's title, state and visibility on it.
    virtual void followForm();

  private:
    void followPlace();
    void followOnTop();
    void open();
    void comeForward();
    void rememberSize(const platform::Rectangle& place);
    std::optional<QSize> rememberedSize() const;

    platform::Form& form_;
    Front front_;
    bool alwaysOnTop_;
    std::unique_ptr<Binding> binding_;
    platform::Subscription formChanged_, formRaised_;
    WindowPlace windowPlace_;
    platform::Rectangle followed_;  // the place last taken over in either direction
    bool opening_ = false;
    bool activating_ = false;
};

}  // namespace vantrel::qt
