// Questions and commands to Alpaca servers.
//
// Everything begins with ask(): the answer comes to a function, and nobody waits. get() and put() wait for
// it, as the members of automation objects have to.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "hosts/alpaca/json.h"
#include "hosts/alpaca/reply.h"
#include "hosts/byte_stream.h"
#include "hosts/http_client.h"
#include "hosts/pumped_wait.h"

namespace vantrel::hosts::alpaca {

/// A value as the protocol writes it: numbers with a point, "True" and "False".
std::string formText(double value);
std::string formText(int value);
std::string formText(bool value);

/// Names of parameters, spelt as the protocol spells them, and values.
using Parameters = std::vector<std::pair<std::string, std::string>>;

/// "http://host:port", with brackets around an IPv6 address.
std::string baseUrl(const ServerAddress& server);

struct Question {
    enum class Kind { kGet, kPut };

    ServerAddress server;
    std::string path;  // "/api/v1/telescope/0/rightascension"
    Kind kind = Kind::kGet;
    Parameters parameters = {};
    platform::Milliseconds patience{3000};
};

/// A value, or why there is none.
template <typename Value>
using Result = std::variant<Value, std::exception_ptr>;

/// What the result holds; throws what went wrong.
template <typename Value>
Value valueOf(Result<Value> result) {
    if (const auto* failure = std::get_if<std::exception_ptr>(&result)) std::rethrow_exception(*failure);
    return std::get<Value>(std::move(result));
}

class Client {
  public:
    /// `clientId` tells this program from others at the same server: 1 to 65535.
    Client(HttpClient& http, PumpedWait wait, std::uint32_t clientId)
        : http_(http), wait_(std::move(wait)), clientId_(clientId) {}

    /// Throws nothing; `done` mustn't either. A question that got no whole answer is asked once more.
    [[nodiscard]] HttpExchange ask(const Question& question, std::function<void(Result<Json>)> done);

    /// The answer as it comes, for those that aren't JSON. `accept` and the limits are the request's.
    [[nodiscard]] HttpExchange fetch(const Question& question, const std::string& accept,
                                     const platform::HttpLimits& limits,
                                     std::function<void(Result<platform::HttpAnswer>)> done);

    /// Asks and waits. Throws DeviceError, UnknownMember, ServerError, or GivenUp when the operator doesn't
    /// want to wait.
    Json get(const Question& question);

    /// Waits for something that ends within `patience` by itself; throws ServerError(`late`) when it
    /// doesn't, GivenUp when nobody wants to wait.
    void wait(const std::function<bool()>& done, platform::Milliseconds patience,
              const std::string& late) const;

    /// Lets time pass; throws GivenUp as well.
    void pause(platform::Milliseconds duration) const;

  private:
    struct Asking;

    platform::HttpRequest requestOf(const Question& question, std::uint32_t transaction) const;
    void send(const std::shared_ptr<Asking>& asking);

    HttpClient& http_;
    PumpedWait wait_;
    std::uint32_t clientId_;
    std::uint32_t transaction_ = 0;  // of the last request
};

/// The operator pressed Stop, or the program ends.
class GivenUp : public std::runtime_error {
  public:
    GivenUp() : std::runtime_error("The wait for the device was given up.") {}
};

}  // namespace vantrel::hosts::alpaca
