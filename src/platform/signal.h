// A list of listeners that are told when something happened.
#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

namespace vantrel::platform {

/// Keeps a listener subscribed for as long as it lives.
using Subscription = std::shared_ptr<void>;

template <typename... Args>
class Signal {
  public:
    using Listener = std::function<void(Args...)>;

    [[nodiscard]] Subscription subscribe(Listener listener) {
        auto held = std::make_shared<Listener>(std::move(listener));
        listeners_.push_back(held);
        return held;
    }

    /// Tells every listener. Listeners may subscribe or leave meanwhile.
    void emit(Args... args) {
        const auto listeners = listeners_;
        for (const auto& weak : listeners)
            if (const auto listener = weak.lock()) (*listener)(args...);
        std::erase_if(listeners_, [](const auto& weak) { return weak.expired(); });
    }

  private:
    std::vector<std::weak_ptr<Listener>> listeners_;
};

}  // namespace vantrel::platform
