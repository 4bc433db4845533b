#include "platform/form.h"

#include "platform/text.h"

namespace vantrel::platform {
namespace {

void fire(const std::function<void()>& handler) {
    if (handler) handler();
}

}  // namespace

Form::Form(Screen& screen, std::string name, Words title, Rectangle initialPlace)
    : screen_(screen), name_(std::move(name)), title_(std::move(title)), place_(initialPlace) {
    screen_.forms_.push_back(this);
}

Form::~Form() {
    std::erase(screen_.shown_, this);
    std::erase(screen_.forms_, this);
}

void Form::setTitle(Words title) {
    if (title_ == title) return;
    title_ = std::move(title);
    changed.emit();
}

void Form::load() {
    if (loaded_) return;
    loaded_ = true;
    fire(onLoad);
}

void Form::show() {
    load();
    if (!loaded_) return;  // loading may have decided against it
    activate();
}

void Form::activate() { screen_.bringToFront(*this); }

void Form::raise() {
    if (shown_) raised.emit();
}

void Form::unload() {
    if (!loaded_) return;
    fire(onUnload);
    loaded_ = false;
    screen_.takeAway(*this);
}

void Form::closeByOperator() {
    if (!shown_) return;
    if (onClose)
        onClose();
    else
        unload();
}

void Form::clickByOperator() {
    if (shown_) fire(onClick);
}

void Form::setPlace(const Rectangle& place) {
    if (place_ == place) return;
    place_ = place;
    changed.emit();
}

void Form::placeByOperator(const Rectangle& place) {
    const bool resized = place.width != place_.width || place.height != place_.height;
    setPlace(place);
    if (resized) fire(onResize);
}

void Form::setOnTop(bool onTop) {
    if (onTop_ == onTop) return;
    onTop_ = onTop;
    changed.emit();
}

Control* Form::find(const std::string& controlName) const {
    for (Control* control : controls_)
        if (equalIgnoringCase(control->name(), controlName)) return control;
    return nullptr;
}

Form* Screen::find(const std::string& formName) const {
    for (Form* form : forms_)
        if (equalIgnoringCase(form->name(), formName)) return form;
    return nullptr;
}

Control* Screen::findControl(const std::string& path) const {
    const auto dot = path.find('.');
    if (dot == std::string::npos) return nullptr;
    const Form* form = find(path.substr(0, dot));
    return form == nullptr ? nullptr : form->find(path.substr(dot + 1));
}

void Screen::bringToFront(Form& form) {
    Form* const active = shown_.empty() ? nullptr : shown_.back();
    if (active == &form) return;
    const bool wasShown = form.shown_;
    std::erase(shown_, &form);
    shown_.push_back(&form);
    form.shown_ = true;
    if (!wasShown) shownChanged.emit(form);
    form.changed.emit();
    if (active != nullptr) fire(active->onDeactivate);
    fire(form.onActivate);
}

void Screen::takeAway(Form& form) {
    if (!form.shown_) return;
    std::erase(shown_, &form);
    form.shown_ = false;
    shownChanged.emit(form);
    form.changed.emit();
}

}  // namespace vantrel::platform
