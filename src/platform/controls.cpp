#include "platform/controls.h"

#include <algorithm>
#include <cmath>

#include "platform/form.h"

namespace vantrel::platform {

Control::Control(Form& form, std::string name) : form_(form), name_(std::move(name)) { form_.add(*this); }

Control::~Control() { form_.remove(*this); }

bool Control::reachable() const {
    return enabled() && visible_ && (frame_ == nullptr || frame_->shown()) && form_.shown();
}

bool Control::leave() {
    if (!reachable()) return false;
    fire(onLeave);
    return true;
}

Control::Properties Control::properties() const {
    return {{"enabled", enabled()},
            {"visible", visible_ && (frame_ == nullptr || frame_->shown())},
            {"backColor", std::int64_t{backColor_}},
            {"foreColor", std::int64_t{foreColor_}}};
}

Control::Properties Captioned::properties() const {
    auto all = Control::properties();
    all.emplace_back("caption", caption());
    return all;
}

bool Button::click() {
    if (!reachable()) return false;
    fire(onClick);
    return true;
}

bool MenuItem::click() {
    if (!reachable()) return false;
    fire(onClick);
    return true;
}

Control::Properties MenuItem::properties() const {
    auto all = Captioned::properties();
    all.emplace_back("value", std::int64_t{checked_ ? 1 : 0});
    return all;
}

void CheckBox::setValue(int value) {
    if (assign(value_, value == 0 ? 0 : 1)) fire(onClick);
}

bool CheckBox::check(int value) {
    if (!reachable()) return false;
    setValue(value);
    return true;
}

Control::Properties CheckBox::properties() const {
    auto all = Captioned::properties();
    all.emplace_back("value", std::int64_t{value_});
    return all;
}

OptionButton::OptionButton(Form& form, OptionGroup& group, std::string name, Words caption)
    : Captioned(form, std::move(name), std::move(caption)), group_(group) {
    group_.add(*this);
}

void OptionButton::select() {
    if (selected_) return;
    for (OptionButton* option : group_.options())
        if (option != this) option->clear();
    assign(selected_, true);
    fire(onClick);
}

bool OptionButton::click() {
    if (!reachable()) return false;
    select();
    return true;
}

Control::Properties OptionButton::properties() const {
    auto all = Captioned::properties();
    all.emplace_back("value", std::int64_t{selected_ ? 1 : 0});
    return all;
}

TextBox::TextBox(Form& form, std::string name, std::string text)
    : Control(form, std::move(name)), text_(std::move(text)) {
    setInitialColors(color::kWindowBackground, color::kWindowText);
}

void TextBox::setText(std::string text) {
    if (assign(text_, std::move(text))) fire(onChange);
}

bool TextBox::type(std::string text) {
    if (!reachable() || readOnly_) return false;
    setText(std::move(text));
    return true;
}

bool TextBox::key(int code) {
    constexpr int kBackspace = 8;
    constexpr int kEnter = 13;
    if (!reachable() || readOnly_) return false;
    const int accepted = filtered(code);
    if (accepted == kBackspace) {
        std::string shorter = text_;
        while (!shorter.empty() && (static_cast<unsigned char>(shorter.back()) & 0xC0) == 0x80)
            shorter.pop_back();
        if (!shorter.empty()) shorter.pop_back();
        setText(shorter);
    } else if (accepted > 0 && accepted != kEnter) {
        setText(withCharacter(text_, accepted));
    }
    return true;
}

Control::Properties TextBox::properties() const {
    auto all = Control::properties();
    all.emplace_back("text", text_);
    all.emplace_back("alignment", static_cast<std::int64_t>(alignment_));
    return all;
}

std::string withCharacter(std::string text, int code) {
    const auto byte = [&](int value) { text += static_cast<char>(value); };
    if (code < 0x80) {
        byte(code);
    } else if (code < 0x800) {
        byte(0xC0 | (code >> 6));
        byte(0x80 | (code & 0x3F));
    } else {
        byte(0xE0 | ((code >> 12) & 0x0F));
        byte(0x80 | ((code >> 6) & 0x3F));
        byte(0x80 | (code & 0x3F));
    }
    return text;
}

ComboBox::ComboBox(Form& form, std::string name) : Control(form, std::move(name)) {
    setInitialColors(color::kWindowBackground, color::kWindowText);
}

void ComboBox::addItem(Words text, int data) {
    items_.push_back({std::move(text), data});
    changed.emit();
}

void ComboBox::setText(Words text) {
    if (assign(text_, std::move(text))) fire(onChange);
}

const ComboBox::Item* ComboBox::chosen() const {
    return chosen_ < items_.size() ? &items_[chosen_] : nullptr;
}

bool ComboBox::choose(const std::string& text) {
    const auto item =
        std::find_if(items_.begin(), items_.end(), [&](const Item& i) { return i.text.english() == text; });
    if (!reachable() || item == items_.end()) return false;
    chosen_ = static_cast<std::size_t>(item - items_.begin());
    assign(text_, item->text);
    fire(onClick);
    return true;
}

Control::Properties ComboBox::properties() const {
    auto all = Control::properties();
    std::vector<std::string> texts;
    for (const Item& item : items_) texts.push_back(item.text.english());
    all.emplace_back("text", text());
    all.emplace_back("items", std::move(texts));
    return all;
}

void Gauge::setFraction(double fraction) {
    assign(thousandths_, fraction > 0 ? static_cast<int>(std::lround(std::min(fraction, 1.0) * 1000)) : 0);
}

Control::Properties Gauge::properties() const {
    auto all = Control::properties();
    all.emplace_back("value", std::int64_t{thousandths_});
    return all;
}

PictureBox::PictureBox(Form& form, std::string name) : Control(form, std::move(name)) {
    setInitialColors(color::kWindowBackground, color::kWindowText);
}

void PictureBox::setDrawing(Drawing drawing) {
    drawing_ = std::move(drawing);
    changed.emit();
}

}  // namespace vantrel::platform
