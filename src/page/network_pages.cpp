#include "page/network_pages.h"

#include <stdexcept>

#include "page/page_text.h"

namespace vantrel::page {

namespace {

constexpr platform::Milliseconds kBeat{2000};

std::string hex(const Secret& secret) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t byte : secret) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0xF];
    }
    return text;
}

/// "token" and "events" of "/token/events".
std::pair<std::string, std::string> partsOf(const std::string& path) {
    const auto slash = path.find('/', 1);
    if (!path.starts_with('/')) return {};
    if (slash == std::string::npos) return {path.substr(1), ""};
    return {path.substr(1, slash - 1), path.substr(slash + 1)};
}

class NetworkPage : public platform::LivePage {
  public:
    NetworkPage(platform::EventLoop& loop, const NetworkSeams& seams, const std::string& host, int port,
                std::string token, platform::LivePageListener listener)
        : loop_(loop),
          seams_(seams),
          token_(std::move(token)),
          listener_(std::move(listener)),
          server_(
              loop, host, port, [this](const PageRequest& request) { return answerTo(request); },
              seams.limits),
          beat_(loop.every(kBeat, [this] { tell(); })) {
        tell();
    }

    int port() const { return server_.port(); }
    std::string address() const override { return "http://" + server_.place() + "/" + token_ + "/"; }

    void show(const platform::LiveView& view) override {
        view_ = view;
        tell();
    }

  private:
    /// Again and again, so that a reader notices when nothing comes any more.
    void tell() {
        std::uint64_t picture = 0;
        if (seams_.picture.number) picture = seams_.picture.number();
        server_.publish(eventText(view_, picture));
    }

    PageAnswer answerTo(const PageRequest& request) {
        const auto [token, what] = partsOf(request.path);
        if (!sameSecret(token, token_)) return {};
        if (request.post) return what == "stop" ? stop() : PageAnswer{};
        if (what.empty()) return wholePage();
        if (what == "events") return {.status = 200, .type = "text/event-stream", .stream = true};
        if (what.starts_with("picture/") && seams_.picture.png) return picture();
        return {};
    }

    PageAnswer stop() {
        loop_.post([onStop = listener_.onStop] {
            if (onStop) onStop();
        });
        return {.status = 204};
    }

    PageAnswer wholePage() const {
        const std::string nonce = hex(seams_.secret());
        return {.status = 200,
                .type = "text/html; charset=utf-8",
                .body = pageText("/" + token_, nonce),
                .headers = {{"Content-Security-Policy", policyOf(nonce)}}};
    }

    PageAnswer picture() const {
        std::string png = seams_.picture.png();
        if (png.empty()) return {};
        return {.status = 200, .type = "image/png", .body = std::move(png)};
    }

    platform::EventLoop& loop_;
    const NetworkSeams& seams_;
    std::string token_;
    platform::LivePageListener listener_;
    platform::LiveView view_;
    HttpServer server_;
    platform::TimerHandle beat_;
};

}  // namespace

bool sameSecret(const std::string& one, const std::string& other) {
    unsigned differences = one.size() == other.size() ? 0 : 1;
    for (std::size_t i = 0; i < other.size(); ++i) {
        const char c = i < one.size() ? one[i] : '\0';
        differences |=
            static_cast<unsigned>(static_cast<unsigned char>(c) ^ static_cast<unsigned char>(other[i]));
    }
    return differences == 0;
}

NetworkPages::NetworkPages(platform::EventLoop& loop, NetworkSeams seams)
    : loop_(loop), seams_(std::move(seams)) {}

std::unique_ptr<platform::LivePage> NetworkPages::open(const std::string& host, int port,
                                                       platform::LivePageListener listener) {
    const auto likeliest = host.empty() ? localAddress(seams_.addresses()) : std::optional(host);
    if (!likeliest) throw std::runtime_error("This computer is in no local network");
    if (token_.empty()) token_ = hex(seams_.secret());
    if (port == 0 && lastPort_ != 0) {
        try {
            return openAt(*likeliest, lastPort_, listener);
        } catch (const std::runtime_error&) {
            lastPort_ = 0;  // somebody else has it
        }
    }
    return openAt(*likeliest, port, listener);
}

std::unique_ptr<platform::LivePage> NetworkPages::openAt(const std::string& host, int port,
                                                         const platform::LivePageListener& listener) {
    auto page = std::make_unique<NetworkPage>(loop_, seams_, host, port, token_, listener);
    lastPort_ = page->port();
    return page;
}

}  // namespace vantrel::page
