#include "hosts/indi/dialogue.h"

#include <utility>

namespace vantrel::hosts::indi {

using platform::Milliseconds;

Request Dialogue::setNumbers(const std::string& property, const NumberValues& values, std::string what) {
    Request request{property, std::move(what), client_->serial()};
    client_->setNumbers(name_, property, values);
    return request;
}

Request Dialogue::setTexts(const std::string& property, const TextValues& values, std::string what) {
    Request request{property, std::move(what), client_->serial()};
    client_->setTexts(name_, property, values);
    return request;
}

Request Dialogue::setSwitch(const std::string& property, const std::string& element, std::string what) {
    Request request{property, std::move(what), client_->serial()};
    client_->setSwitch(name_, property, element);
    return request;
}

void Dialogue::await(const Request& request, Milliseconds timeOut,
                     const std::function<bool(const Property&)>& done) {
    const auto answered = [&] {
        const Property* property = find(request.property);
        if (property == nullptr) throw std::runtime_error(name_ + " isn't connected any more");
        if (done && done(*property)) return true;
        if (property->wasRefused > request.serial)
            throw Refusal(withReason(request, name_ + " refuses " + request.what));
        return !done && property->updated > request.serial && property->state != PropertyState::kBusy;
    };
    switch (waitUntil(answered, timeOut)) {
        case PumpedWait::Outcome::kDone:
            return;
        case PumpedWait::Outcome::kGivenUp:
            throw std::runtime_error("Waiting for " + name_ + " was given up: " + request.what);
        case PumpedWait::Outcome::kTimedOut:
            throw std::runtime_error(withReason(request, name_ + " takes no notice of " + request.what));
    }
}

std::string Dialogue::withReason(const Request& request, const std::string& text) const {
    const std::string why = reason(request);
    return why.empty() ? text : text + ": " + why;
}

PumpedWait::Outcome Dialogue::waitUntil(const std::function<bool()>& done, Milliseconds timeOut) {
    const auto client = client_;
    return wait_.until(done, timeOut, [client](Milliseconds atMost) { return client->serve(atMost); });
}

}  // namespace vantrel::hosts::indi
