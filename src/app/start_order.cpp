#include "app/start_order.h"

#include <utility>

namespace vantrel::app {

void StartOrder::leavesButtonsEnabled(platform::Button& button, const std::string& name) {
    button.onClick = [this, &button, name, work = std::move(button.onClick)] {
        if (atWork_ == &button) return;
        if (atWork_ != nullptr)
            putOff(button, name);
        else
            workOn(button, name, work);
    };
}

void StartOrder::waits(platform::Button& button, const std::string& name) {
    button.onClick = [this, &button, name, procedure = std::move(button.onClick)] {
        if (atWork_ != nullptr)
            putOff(button, name);
        else
            procedure();
    };
}

void StartOrder::putOff(platform::Button& button, const std::string& name) {
    if (std::exchange(next_, &button) != &button)
        log_.AddToLog(name + " waits until " + nameOfWork_ + " has ended");
}

void StartOrder::workOn(platform::Button& button, const std::string& name,
                        const std::function<void()>& work) {
    struct AtWork {
        StartOrder& order;
        ~AtWork() {
            order.atWork_ = nullptr;
            if (platform::Button* next = std::exchange(order.next_, nullptr))
                order.loop_.post([next] { next->click(); });
        }
    } const end{*this};
    atWork_ = &button;
    nameOfWork_ = name;
    work();
}

}  // namespace vantrel::app
