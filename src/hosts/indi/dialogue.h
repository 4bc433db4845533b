// Says something to a device and waits for its answer.
//
// INDI acknowledges by the state of the property that was set: Busy while it is at it, Ok or Idle when it is
// done, Alert when it refuses. Many drivers refuse without a word, or with a message only. So silence is a
// refusal as well, and the message that came is the reason.
#pragma once

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "hosts/indi/client.h"
#include "hosts/pumped_wait.h"

namespace vantrel::hosts::indi {

/// Something that was sent, whose answer is awaited.
struct Request {
    std::string property;
    std::string what;  // for the operator: "binning 2 x 2"
    long serial = 0;   // of the server's words before it
};

/// The device says no; not only by its silence.
class Refusal : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

class Dialogue {
  public:
    Dialogue(std::shared_ptr<Client> client, std::string name, const PumpedWait& wait)
        : client_(std::move(client)), name_(std::move(name)), wait_(wait) {}

    const std::string& name() const { return name_; }
    Client& client() const { return *client_; }
    const std::shared_ptr<Client>& sharedClient() const { return client_; }

    const Property* find(std::string_view property) const { return client_->find(name_, property); }
    bool has(std::string_view property) const { return find(property) != nullptr; }

    Request setNumbers(const std::string& property, const NumberValues& values, std::string what);
    Request setTexts(const std::string& property, const TextValues& values, std::string what);
    Request setSwitch(const std::string& property, const std::string& element, std::string what);

    /// Waits for the answer: any update that isn't Busy any more or, where it is given, what `done` wants.
    /// Throws std::runtime_error when it is a refusal, or doesn't come, which is how drivers refuse, too.
    void await(const Request& request, platform::Milliseconds timeOut,
               const std::function<bool(const Property&)>& done = {});
    /// What the device said since the request, complaints first; empty when nothing.
    std::string reason(const Request& request) const { return client_->messageSince(name_, request.serial); }
    /// The text, and the reason.
    std::string withReason(const Request& request, const std::string& text) const;

    PumpedWait::Outcome waitUntil(const std::function<bool()>& done, platform::Milliseconds timeOut);

  protected:
    platform::Milliseconds now() const { return wait_.clock().sinceStart(); }

  private:
    std::shared_ptr<Client> client_;
    std::string name_;
    const PumpedWait& wait_;
};

}  // namespace vantrel::hosts::indi
