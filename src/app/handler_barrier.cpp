#include "app/handler_barrier.h"

namespace vantrel::app {

using namespace platform;

void HandlerBarrier::guard(Form& form) {
    guard(form.onLoad, form.name() + " Sub Form_Load");
    guard(form.onActivate, form.name() + " Sub Form_Activate");
    guard(form.onDeactivate, form.name() + " Sub Form_Deactivate");
    guard(form.onResize, form.name() + " Sub Form_Resize");
    guard(form.onUnload, form.name() + " Sub Form_Unload");
    guard(form.onClose, form.name() + " Sub Form_QueryUnload");
    guard(form.onClick, form.name() + " Sub Form_Click");
    for (Control* control : form.controls()) guardControl(*control);
}

void HandlerBarrier::guardControl(Control& control) {
    const std::string name = control.form().name() + " Sub " + control.name();
    guard(control.onLeave, name + "_LostFocus");
    const auto guardAs = [&]<typename Kind>(Kind* kind) {
        if constexpr (requires { kind->onClick; })
            if (kind != nullptr) guard(kind->onClick, name + "_Click");
        if constexpr (requires { kind->onChange; })
            if (kind != nullptr) guard(kind->onChange, name + "_Change");
    };
    guardAs(dynamic_cast<Button*>(&control));
    guardAs(dynamic_cast<MenuItem*>(&control));
    guardAs(dynamic_cast<CheckBox*>(&control));
    guardAs(dynamic_cast<OptionButton*>(&control));
    guardAs(dynamic_cast<TextBox*>(&control));
    guardAs(dynamic_cast<ComboBox*>(&control));
}

void HandlerBarrier::guard(std::function<void()>& handler, const std::string& name) {
    if (!handler) return;
    handler = [this, name, inner = std::move(handler)] {
        const BusyGuard busy(busy_);
        try {
            inner();
        } catch (...) {
            report_(name);
        }
    };
}

}  // namespace vantrel::app
