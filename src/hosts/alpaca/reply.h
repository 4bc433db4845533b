// What a server's answer means.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "hosts/alpaca/json.h"
#include "platform/http/http_message.h"

namespace vantrel::hosts::alpaca {

/// There is no server that answers, or what answers is none: as opposed to a device that refuses. A sentence
/// for the operator that names the server.
class ServerError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The server doesn't know what was asked for.
class UnknownMember : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// A command may come without a value.
enum class Expects { kValue, kNothing };

/// The answer's value. Looks at the status first, then at the kind of content, at the error number, and last
/// at the value. `server` names the server in the errors: DeviceError, UnknownMember, ServerError, and
/// std::runtime_error when the server itself failed at it.
///
/// `transaction` is the number of the request: an answer to an earlier one of ours is a ServerError.
Json valueOf(const platform::HttpAnswer& answer, Expects expects, std::uint32_t transaction,
             const std::string& server);

/// The sentence for a request that got no answer.
ServerError serverError(const platform::HttpError& error, const std::string& server);

/// Throws what a refusal by its status or its kind of content means; also for answers that aren't JSON.
void requireGood(const platform::HttpAnswer& answer, const std::string& server);

}  // namespace vantrel::hosts::alpaca
