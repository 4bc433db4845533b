#include "hosts/alpaca/client.h"

#include <charconv>

namespace vantrel::hosts::alpaca {

namespace {

using platform::HttpAnswer;
using platform::HttpError;
using platform::HttpLimits;
using platform::HttpRequest;
using platform::Milliseconds;

constexpr const char* kJson = "application/json";
constexpr Milliseconds kOverdue{500};  // beyond which a request that should have ended isn't waited for

/// %-escapes everything but letters, digits and "-._~" (RFC 3986).
std::string escaped(const std::string& text) {
    constexpr const char* kHex = "0123456789ABCDEF";
    std::string out;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const bool isPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                             c == '-' || c == '.' || c == '_' || c == '~';
        if (isPlain)
            out += c;
        else
            (out += '%') += {kHex[byte >> 4U], kHex[byte & 15U]};
    }
    return out;
}

std::string written(const Parameters& parameters) {
    std::string text;
    for (const auto& [name, value] : parameters) {
        if (!text.empty()) text += '&';
        text += escaped(name);
        text += '=';
        text += escaped(value);
    }
    return text;
}

HttpLimits within(Milliseconds patience) {
    constexpr std::size_t kMostOfJson = std::size_t{1} << 20U;
    return {.body = kMostOfJson,
            .connecting = std::min(patience, Milliseconds{3000}),
            .whole = patience,
            .drip = {}};
}

}  // namespace

std::string formText(double value) {
    char text[400];  // the longest of all numbers has 1 + 309 digits, the smallest 1 + 1 + 342
    return {text, std::to_chars(text, text + sizeof text, value, std::chars_format::fixed).ptr};
}

std::string formText(int value) { return std::to_string(value); }

std::string formText(bool value) { return value ? "True" : "False"; }

std::string baseUrl(const ServerAddress& server) {
    const bool isSix = server.host.find(':') != std::string::npos;
    std::string url = isSix ? "http://[" : "http://";
    for (const char c : server.host)
        if (c == '%')
            url += "%25";  // before a zone (RFC 6874)
        else
            url += c;
    url += isSix ? "]:" : ":";
    return url += std::to_string(server.port);
}

/// A question that may be asked twice.
struct Client::Asking {
    Question question;
    std::function<void(Result<Json>)> done;
    std::uint32_t transaction = 0;
    int trials = 0;
    HttpExchange exchange = {};
};

HttpRequest Client::requestOf(const Question& question, std::uint32_t transaction) const {
    Parameters parameters = question.parameters;
    parameters.emplace_back("ClientID", std::to_string(clientId_));
    parameters.emplace_back("ClientTransactionID", std::to_string(transaction));
    HttpRequest request;
    request.url = baseUrl(question.server) + question.path;
    request.accept = kJson;
    request.limits = within(question.patience);
    if (question.kind == Question::Kind::kPut) {
        request.method = HttpRequest::Method::kPut;
        request.form = written(parameters);
    } else {
        request.url += "?" + written(parameters);
    }
    return request;
}

HttpExchange Client::ask(const Question& question, std::function<void(Result<Json>)> done) {
    const auto asking = std::make_shared<Asking>(Asking{question, std::move(done)});
    send(asking);
    return asking;
}

void Client::send(const std::shared_ptr<Asking>& asking) {
    asking->transaction = ++transaction_;
    ++asking->trials;
    const std::weak_ptr<Asking> weak = asking;  // who lets go of it doesn't hear any more
    asking->exchange =
        http_.send(requestOf(asking->question, asking->transaction), [this, weak](HttpOutcome outcome) {
            const auto held = weak.lock();
            if (held == nullptr) return;
            const std::string server = held->question.server.text();
            const bool isCommand = held->question.kind == Question::Kind::kPut;
            if (const auto* error = std::get_if<HttpError>(&outcome)) {
                if (error->kind() == HttpError::Kind::kBroken && !isCommand && held->trials == 1)
                    return send(held);
                return held->done(std::make_exception_ptr(serverError(*error, server)));
            }
            Result<Json> result;
            try {
                result = valueOf(std::get<HttpAnswer>(outcome),
                                 isCommand ? Expects::kNothing : Expects::kValue, held->transaction, server);
            } catch (...) {
                result = std::current_exception();
            }
            held->done(std::move(result));
        });
}

HttpExchange Client::fetch(const Question& question, const std::string& accept, const HttpLimits& limits,
                           std::function<void(Result<HttpAnswer>)> done) {
    HttpRequest request = requestOf(question, ++transaction_);
    request.accept = accept;
    request.limits = limits;
    return http_.send(request,
                      [server = question.server.text(), done = std::move(done)](HttpOutcome outcome) {
                          if (const auto* error = std::get_if<HttpError>(&outcome))
                              return done(std::make_exception_ptr(serverError(*error, server)));
                          done(std::get<HttpAnswer>(std::move(outcome)));
                      });
}

Json Client::get(const Question& question) {
    std::optional<Result<Json>> result;
    const HttpExchange exchange =
        ask(question, [&result](Result<Json> answer) { result = std::move(answer); });
    wait([&result] { return result.has_value(); }, 2 * question.patience + kOverdue,
         serverError({HttpError::Kind::kTimedOut, ""}, question.server.text()).what());
    return valueOf(std::move(*result));
}

void Client::wait(const std::function<bool()>& done, Milliseconds patience, const std::string& late) const {
    const auto transport = [this](Milliseconds atMost) { return http_.serve(atMost); };
    switch (wait_.until(done, patience, transport)) {
        case PumpedWait::Outcome::kDone:
            return;
        case PumpedWait::Outcome::kGivenUp:
            throw GivenUp();
        case PumpedWait::Outcome::kTimedOut:
            throw ServerError(late);
    }
}

void Client::pause(Milliseconds duration) const {
    if (wait_.until([] { return false; }, duration) == PumpedWait::Outcome::kGivenUp) throw GivenUp();
}

}  // namespace vantrel::hosts::alpaca
