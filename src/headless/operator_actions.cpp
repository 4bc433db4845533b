#include "headless/operator_actions.h"

#include <algorithm>
#include <utility>

#include "headless/json_values.h"

namespace vantrel::headless {

using namespace platform;

namespace {

/// The action on the control, behind bringing its window to the front.
OperatorAction on(Control& control, std::function<void()> act) {
    return {control.reachable(), [&control, act = std::move(act)] {
                if (control.form().shown()) control.form().activate();
                act();
            }};
}

template <typename... Kinds>
bool clickAsOneOf(Control& control, OperatorAction& action) {
    const auto tryKind = [&]<typename Kind>(Kind* kind) {
        if (kind != nullptr) action = on(control, [kind] { kind->click(); });
        return kind != nullptr;
    };
    return (tryKind(dynamic_cast<Kinds*>(&control)) || ...);
}

[[noreturn]] void refuse(const Control& control, const std::string& deed) {
    throw CommandError(control.name() + " can't be " + deed);
}

}  // namespace

OperatorAction click(Control& control) {
    OperatorAction action;
    if (!clickAsOneOf<Button, MenuItem, CheckBox, OptionButton>(control, action)) refuse(control, "clicked");
    return action;
}

OperatorAction click(Form& form) {
    return {form.shown(), [&form] {
                if (form.shown()) form.activate();
                form.clickByOperator();
            }};
}

OperatorAction type(Control& control, const std::string& text) {
    if (auto* box = dynamic_cast<TextBox*>(&control)) {
        OperatorAction action = on(control, [box, text] { box->type(text); });
        action.delivered = action.delivered && !box->readOnly();
        return action;
    }
    auto* list = dynamic_cast<ComboBox*>(&control);
    if (list == nullptr) refuse(control, "typed into");
    return on(control, [list, text] {
        if (list->reachable()) list->setText(text);
    });
}

OperatorAction key(TextBox& box, int code) {
    OperatorAction action = on(box, [&box, code] { box.key(code); });
    action.delivered = action.delivered && !box.readOnly();
    return action;
}

OperatorAction leave(Control& control) {
    return {control.reachable(), [&control] { control.leave(); }};
}

OperatorAction choose(ComboBox& list, const std::string& item) {
    const auto& items = list.items();
    if (std::none_of(items.begin(), items.end(),
                     [&](const auto& entry) { return entry.text.english() == item; }))
        throw CommandError(list.name() + " has no entry \"" + item + "\"");
    return on(list, [&list, item] { list.choose(item); });
}

OperatorAction check(Control& control, int value) {
    if (auto* box = dynamic_cast<CheckBox*>(&control))
        return on(control, [box, value] { box->check(value); });
    if (auto* item = dynamic_cast<MenuItem*>(&control))
        return on(control, [item, value] {
            if (item->checked() != (value == 1)) item->click();
        });
    auto* option = dynamic_cast<OptionButton*>(&control);
    if (option == nullptr || value == 0) refuse(control, value == 1 ? "ticked" : "cleared");
    return on(control, [option] { option->click(); });
}

OperatorAction close(Form& form) {
    return {form.shown(), [&form] { form.closeByOperator(); }};
}

}  // namespace vantrel::headless
