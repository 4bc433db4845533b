// The controls of a window as observable state, without any toolkit.
//
// A control belongs to a form and has a name that is unique in it (members of a control array are called
// "name(index)"). Properties tell `changed` when they really change. Setting a property from code and the
// operator's doing are different calls: code sets, the operator clicks, types, chooses, checks or leaves,
// which has an effect only while the control can be reached (enabled and shown). Both reach the same event
// handler. Captions, tool tips and entries of lists are words: what reads them here reads English, windows
// say them in the operator's language.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "platform/color.h"
#include "platform/drawing.h"
#include "platform/signal.h"
#include "platform/words.h"

namespace vantrel::platform {

class Form;
class Frame;

class Control {
  public:
    Control(Form& form, std::string name);
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;
    virtual ~Control();

    const std::string& name() const { return name_; }
    Form& form() const { return form_; }

    bool enabled() const { return enabled_ && !held_; }
    void setEnabled(bool enabled) { assign(enabled_, enabled); }
    /// Out of the operator's reach as if it were disabled, whatever setEnabled says meanwhile.
    void setHeld(bool held) { assign(held_, held); }
    bool visible() const { return visible_; }
    void setVisible(bool visible) { assign(visible_, visible); }
    Color backColor() const { return backColor_; }
    void setBackColor(Color color) { assign(backColor_, color); }
    Color foreColor() const { return foreColor_; }
    void setForeColor(Color color) { assign(foreColor_, color); }
    const std::string& toolTip() const { return toolTip_.english(); }
    const Words& toolTipWords() const { return toolTip_; }
    void setToolTip(Words words) { assign(toolTip_, std::move(words)); }

    /// Hides the control together with the frame.
    void placeIn(const Frame& frame) { frame_ = &frame; }
    const Frame* frame() const { return frame_; }

    /// Enabled, shown, and on a window that is open.
    bool reachable() const;

    /// The operator moves on to another control.
    bool leave();

    using PropertyValue = std::variant<std::string, std::int64_t, bool, std::vector<std::string>>;
    using Properties = std::vector<std::pair<std::string, PropertyValue>>;
    /// Every property by name ("text", "caption", "value", "enabled", …), for scripts.
    virtual Properties properties() const;

    Signal<> changed;
    std::function<void()> onLeave;

  protected:
    void setInitialColors(Color back, Color fore) { backColor_ = back, foreColor_ = fore; }

    /// Stores the value; true, and everybody is told, when it differs from the old one.
    template <typename T>
    bool assign(T& member, T value) {
        if (member == value) return false;
        member = std::move(value);
        changed.emit();
        return true;
    }

    static void fire(const std::function<void()>& handler) {
        if (handler) handler();
    }

  private:
    Form& form_;
    std::string name_;
    const Frame* frame_ = nullptr;
    bool enabled_ = true;
    bool held_ = false;
    bool visible_ = true;
    Color backColor_ = color::kButtonFace;
    Color foreColor_ = color::kButtonText;
    Words toolTip_;
};

/// A control with a caption.
class Captioned : public Control {
  public:
    Captioned(Form& form, std::string name, Words caption)
        : Control(form, std::move(name)), caption_(std::move(caption)) {}

    const std::string& caption() const { return caption_.english(); }
    const Words& captionWords() const { return caption_; }
    void setCaption(Words caption) { assign(caption_, std::move(caption)); }
    Properties properties() const override;

  private:
    Words caption_;
};

class Label : public Captioned {
  public:
    using Captioned::Captioned;
};

/// A box around other controls; hiding it hides them.
class Frame : public Captioned {
  public:
    using Captioned::Captioned;
    bool shown() const { return visible() && (frame() == nullptr || frame()->shown()); }
};

class Button : public Captioned {
  public:
    using Captioned::Captioned;

    /// The operator presses the button; false when it can't be reached.
    bool click();
    /// Code presses the button.
    void press() { fire(onClick); }

    std::function<void()> onClick;
};

class MenuItem : public Captioned {
  public:
    using Captioned::Captioned;

    bool checked() const { return checked_; }
    void setChecked(bool checked) { assign(checked_, checked); }
    bool click();
    Properties properties() const override;

    std::function<void()> onClick;

  private:
    bool checked_ = false;
};

class CheckBox : public Captioned {
  public:
    using Captioned::Captioned;

    /// 1 ticked, 0 not.
    int value() const { return value_; }
    bool ticked() const { return value_ == 1; }
    /// A change of the value runs the click handler, whether the operator or the program makes it.
    void setValue(int value);
    /// The operator ticks or clears the box; false when it can't be reached.
    bool check(int value);
    bool click() { return check(1 - value_); }
    Properties properties() const override;

    std::function<void()> onClick;

  private:
    int value_ = 0;
};

class OptionButton;

/// Options of which at most one is selected.
class OptionGroup {
  public:
    void add(OptionButton& option) { options_.push_back(&option); }
    const std::vector<OptionButton*>& options() const { return options_; }

  private:
    std::vector<OptionButton*> options_;
};

class OptionButton : public Captioned {
  public:
    OptionButton(Form& form, OptionGroup& group, std::string name, Words caption);

    bool selected() const { return selected_; }
    /// Selects this one and clears its neighbours. Becoming selected runs the click handler, by the operator
    /// as by the program.
    void select();
    void clear() { assign(selected_, false); }
    bool click();
    Properties properties() const override;

    std::function<void()> onClick;

  private:
    OptionGroup& group_;
    bool selected_ = false;
};

enum class Alignment : std::int8_t { kLeft = 0, kRight = 1, kCentre = 2 };

class TextBox : public Control {
  public:
    TextBox(Form& form, std::string name, std::string text = {});

    const std::string& text() const { return text_; }
    /// A change of the text runs the change handler, whether the operator or the program makes it.
    void setText(std::string text);
    Alignment alignment() const { return alignment_; }
    void setAlignment(Alignment alignment) { assign(alignment_, alignment); }
    bool readOnly() const { return readOnly_; }
    void setReadOnly(bool readOnly) { assign(readOnly_, readOnly); }

    /// The operator replaces the text.
    bool type(std::string text);
    /// The operator presses one key at the end of the text. The key filter may change the character code or
    /// discard it (0). Backspace is 8; Enter (13) changes nothing.
    bool key(int code);
    /// The code that the key filter lets through; 0 for none.
    int filtered(int code) const { return keyFilter ? keyFilter(code) : code; }
    Properties properties() const override;

    std::function<void()> onChange;
    std::function<int(int code)> keyFilter;

  private:
    std::string text_;
    Alignment alignment_ = Alignment::kLeft;
    bool readOnly_ = false;
};

/// Adds one character to the end of a text as UTF-8.
std::string withCharacter(std::string text, int code);

/// A text with a list to choose from; every entry carries a number of the program's own.
class ComboBox : public Control {
  public:
    struct Item {
        Words text;
        int data = 0;
        bool operator==(const Item&) const = default;
    };

    ComboBox(Form& form, std::string name);

    const std::vector<Item>& items() const { return items_; }
    void setItems(std::vector<Item> items) { assign(items_, std::move(items)); }
    void addItem(Words text, int data = 0);

    const std::string& text() const { return text_.english(); }
    const Words& textWords() const { return text_; }
    /// Shows the text; runs the change handler, not the click handler.
    void setText(Words text);
    /// The entry last chosen; nullptr when none was.
    const Item* chosen() const;

    /// The operator picks an entry; false when there is no such entry or the list can't be reached.
    bool choose(const std::string& text);
    Properties properties() const override;

    std::function<void()> onClick;
    std::function<void()> onChange;

  private:
    std::vector<Item> items_;
    Words text_;
    std::size_t chosen_ = static_cast<std::size_t>(-1);
};

/// How much of something is done or left: a bar.
class Gauge : public Control {
  public:
    using Control::Control;

    /// From 0 to 1.
    double fraction() const { return thousandths_ / 1000.0; }
    /// In steps of a thousandth, held in [0, 1]; what isn't a number is 0.
    void setFraction(double fraction);
    Properties properties() const override;

  private:
    int thousandths_ = 0;
};

class PictureBox : public Control {
  public:
    PictureBox(Form& form, std::string name);

    const Drawing& drawing() const { return drawing_; }
    void setDrawing(Drawing drawing);
    void clear() { setDrawing({}); }

  private:
    Drawing drawing_;
};

}  // namespace vantrel::platform
