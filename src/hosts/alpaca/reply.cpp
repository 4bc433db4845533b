#include "hosts/alpaca/reply.h"

#include <algorithm>
#include <string_view>

#include "hosts/alpaca/device_error.h"
#include "hosts/server_text.h"
#include "platform/text.h"

namespace vantrel::hosts::alpaca {

namespace {

using platform::HttpAnswer;
using platform::HttpError;

constexpr int kGood = 200;
constexpr int kBadRequest = 400;
constexpr int kNotFound = 404;
constexpr int kServerFault = 500;

/// "The Alpaca server at 192.168.1.5:11111"
std::string theServer(const std::string& server) { return "The Alpaca server at " + server; }

ServerError notAlpaca(const std::string& server, const std::string& why) {
    return ServerError("What answers at " + server + " is no Alpaca server (" + why + ").");
}

bool isMarkup(const HttpAnswer& answer) {
    return platform::containsIgnoringCase(answer.contentType, "html") ||
           platform::trimmed(answer.body.substr(0, 100)).starts_with('<');
}

/// The server's own words on a refusal: plain text, or what stands in an object.
std::string wordsOf(const HttpAnswer& answer) {
    if (isMarkup(answer)) return {};
    try {
        const Json object = parseJson(answer.body);
        const std::string words = textMember(object, "ErrorMessage");
        return words.empty() ? textMember(object, "detail") : words;
    } catch (const std::runtime_error&) {
        return oneLine(answer.body);
    }
}

Json objectOf(const HttpAnswer& answer, const std::string& server) {
    Json object;
    try {
        object = parseJson(answer.body);
    } catch (const std::runtime_error& error) {
        throw notAlpaca(server, std::string("its answer can't be read: ") + error.what());
    }
    if (!object.is_object()) throw notAlpaca(server, "its answer is no object");
    return object;
}

/// Whether the answer belongs to a request of ours before this one. Numbers that we never gave, as some
/// servers send, say nothing.
bool isOld(const Json& object, std::uint32_t transaction) {
    const int answered = intMember(object, "ClientTransactionID", 0);
    return answered > 0 && static_cast<std::uint32_t>(answered) < transaction;
}

}  // namespace

void requireGood(const HttpAnswer& answer, const std::string& server) {
    if (answer.status != kGood) {
        const std::string words = wordsOf(answer);
        if (answer.status == kNotFound || answer.status == kBadRequest)
            throw UnknownMember(words.empty() ? theServer(server) + " doesn't know this device or member."
                                              : words);
        if (answer.status == kServerFault)
            throw std::runtime_error(theServer(server) + " failed" + (words.empty() ? "." : ": " + words));
        throw notAlpaca(server, "it answers " + std::to_string(answer.status));
    }
    if (isMarkup(answer)) throw notAlpaca(server, "it sends a web page");
}

Json valueOf(const HttpAnswer& answer, Expects expects, std::uint32_t transaction,
             const std::string& server) {
    requireGood(answer, server);
    Json object = objectOf(answer, server);
    if (isOld(object, transaction)) throw ServerError(theServer(server) + " answers late and out of turn.");
    if (const int number = intMember(object, "ErrorNumber", 0); number != 0)
        throw DeviceError(number, textMember(object, "ErrorMessage"));
    const auto value = object.find("Value");
    if (value != object.end() && !value->is_null()) return std::move(*value);
    if (expects == Expects::kValue) throw ServerError(theServer(server) + " sent an answer without a value.");
    return {};
}

ServerError serverError(const HttpError& error, const std::string& server) {
    switch (error.kind()) {
        case HttpError::Kind::kUnreachable:
            return ServerError(theServer(server) + " can't be reached: is it running, and in this network?");
        case HttpError::Kind::kTimedOut:
            return ServerError(theServer(server) + " doesn't answer.");
        case HttpError::Kind::kTooLarge:
            return ServerError(theServer(server) + " sends more than it should.");
        case HttpError::Kind::kBroken:
            return ServerError(theServer(server) + " broke off in the middle of an answer.");
        case HttpError::Kind::kRefused:
            break;
    }
    return notAlpaca(server, error.what());
}

}  // namespace vantrel::hosts::alpaca
