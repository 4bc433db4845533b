#include "app/handler_barrier.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace vantrel::app {

using namespace platform;

struct HandlerBarrier::PuttingOff {
    OutsideCalls& calls;
    EventLoop& loop;
    std::set<const Control*> never;
    std::function<bool()> ending;
    std::vector<std::pair<const void*, std::function<void()>>>
        waiting;  // by handler, in the order of the clicks
    Subscription over;

    void runWaiting() {
        const auto handlers = std::exchange(waiting, {});
        for (const auto& [key, handler] : handlers)
            if (!ending()) handler();
    }
};

void HandlerBarrier::putOffWhile(OutsideCalls& calls, EventLoop& loop, std::set<const Control*> never,
                                 std::function<bool()> ending) {
    puttingOff_ =
        std::make_shared<PuttingOff>(PuttingOff{calls, loop, std::move(never), std::move(ending), {}, {}});
    puttingOff_->over = calls.over.subscribe([weak = std::weak_ptr(puttingOff_)] {
        if (const auto self = weak.lock(); self && !self->waiting.empty())
            self->loop.post([weak] {
                if (const auto later = weak.lock()) later->runWaiting();
            });
    });
}

/// However often it is clicked meanwhile, the handler runs once.
void HandlerBarrier::puttingOff(std::function<void()>& handler) {
    if (!handler || !puttingOff_) return;
    const auto inner = std::make_shared<std::function<void()>>(std::move(handler));
    handler = [self = puttingOff_, inner] {
        if (!self->calls.underWay()) return (*inner)();
        const bool waits = std::any_of(self->waiting.begin(), self->waiting.end(),
                                       [&](const auto& one) { return one.first == inner.get(); });
        if (!waits) self->waiting.emplace_back(inner.get(), *inner);
    };
}

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
            if (kind != nullptr) {
                guard(kind->onClick, name + "_Click");
                if (puttingOff_ && !puttingOff_->never.contains(&control)) puttingOff(kind->onClick);
            }
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
