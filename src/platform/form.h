// A window as an object: its controls by name, its place, and what happens to it.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/controls.h"
#include "platform/signal.h"

namespace vantrel::platform {

class Screen;

/// Pixels, from the upper left corner of the screen.
struct Rectangle {
    int left = 0, top = 0, width = 0, height = 0;
    bool operator==(const Rectangle&) const = default;
};

/// Forms exist for the whole run. Showing one the first time, or again after it was unloaded, loads it
/// (onLoad); its controls keep what they hold. Of the shown forms one is active: the one shown or clicked
/// last.
class Form {
  public:
    Form(Screen& screen, std::string name, Words title, Rectangle initialPlace);
    Form(const Form&) = delete;
    Form& operator=(const Form&) = delete;
    virtual ~Form();

    const std::string& name() const { return name_; }
    const std::string& title() const { return title_.english(); }
    const Words& titleWords() const { return title_; }
    void setTitle(Words title);

    /// Runs onLoad unless the form is loaded already.
    void load();
    bool loaded() const { return loaded_; }
    /// Loads and shows the form without blocking, and makes it the active one.
    void show();
    bool shown() const { return shown_; }
    /// Makes a shown form the active one, in front of the others.
    void activate();
    /// Puts a shown form's window over the others. The active form stays the active one.
    void raise();
    /// Runs onUnload and takes the window away. Does nothing when the form isn't loaded.
    void unload();

    /// The operator closes the window. The form decides what that means; by default it is unloaded.
    void closeByOperator();
    /// The operator clicks on the window itself.
    void clickByOperator();

    const Rectangle& place() const { return place_; }
    /// Code moves or resizes the window.
    void setPlace(const Rectangle& place);
    /// The operator moved or resized it; a new size runs onResize.
    void placeByOperator(const Rectangle& place);
    bool minimised() const { return minimised_; }
    void setMinimised(bool minimised) { minimised_ = minimised; }

    bool onTop() const { return onTop_; }
    void setOnTop(bool onTop);

    /// The control of this name, without regard to case; nullptr when there is none.
    Control* find(const std::string& controlName) const;
    const std::vector<Control*>& controls() const { return controls_; }

    Screen& screen() const { return screen_; }

    /// Told when the title, the place, the on-top state, or being shown or active changed.
    Signal<> changed;
    Signal<> raised;

    std::function<void()> onLoad;
    std::function<void()> onActivate;
    std::function<void()> onDeactivate;
    std::function<void()> onResize;
    std::function<void()> onUnload;
    std::function<void()> onClick;
    std::function<void()> onClose;  // instead of unloading

  private:
    friend class Control;
    friend class Screen;
    void add(Control& control) { controls_.push_back(&control); }
    void remove(const Control& control) { std::erase(controls_, &control); }

    Screen& screen_;
    std::string name_;
    Words title_;
    Rectangle place_;
    std::vector<Control*> controls_;
    bool loaded_ = false;
    bool shown_ = false;
    bool minimised_ = false;
    bool onTop_ = false;
};

/// All windows of the program.
class Screen {
  public:
    explicit Screen(Rectangle workArea) : workArea_(workArea) {}

    /// Where windows may be: the desktop without its panels.
    const Rectangle& workArea() const { return workArea_; }
    void setWorkArea(const Rectangle& workArea) { workArea_ = workArea; }

    Form* find(const std::string& formName) const;
    const std::vector<Form*>& forms() const { return forms_; }
    /// The shown windows, the active one last.
    const std::vector<Form*>& shownForms() const { return shown_; }

    /// "frmMain.cmdRun"; nullptr when the form or the control doesn't exist.
    Control* findControl(const std::string& path) const;

    /// Told when a window was shown or taken away.
    Signal<Form&> shownChanged;

  private:
    friend class Form;
    void bringToFront(Form& form);
    void takeAway(Form& form);

    Rectangle workArea_;
    std::vector<Form*> forms_;
    std::vector<Form*> shown_;
};

}  // namespace vantrel::platform
