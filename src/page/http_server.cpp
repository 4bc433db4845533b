#include "page/http_server.h"

#include <algorithm>
#include <cstdint>
#include <list>
#include <stdexcept>

#include <microhttpd.h>

#include "page/listening_socket.h"

namespace vantrel::page {

namespace {

constexpr platform::Milliseconds kLookAround{1000};
constexpr platform::Milliseconds kLookOften{50};  // where nothing tells of news
constexpr int kTurnsAtOnce = 20;
constexpr int kSendBuffer = 65'536;  // bytes that a reader may leave lying
constexpr std::size_t kStreamBlock = 16'384;

std::string headerOf(MHD_Connection* connection, const char* name) {
    const char* value = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, name);
    return value == nullptr ? "" : value;
}

bool bringsBody(MHD_Connection* connection) {
    const std::string length = headerOf(connection, MHD_HTTP_HEADER_CONTENT_LENGTH);
    return !(length.empty() || length == "0") ||
           !headerOf(connection, MHD_HTTP_HEADER_TRANSFER_ENCODING).empty();
}

}  // namespace

class HttpServer::Daemon {
  public:
    Daemon(platform::EventLoop& loop, const std::string& host, int port, Handler handler,
           const PageLimits& limits)
        : loop_(loop), handler_(std::move(handler)), limits_(limits) {
        ListeningSocket listener(host, port);
        port_ = listener.port();
        host_ = host;
        const bool tellsOfNews = MHD_is_feature_supported(MHD_FEATURE_EPOLL) == MHD_YES;
        daemon_ = MHD_start_daemon(
            (tellsOfNews ? MHD_USE_EPOLL : MHD_NO_FLAG) | MHD_ALLOW_SUSPEND_RESUME, 0, nullptr, nullptr,
            &Daemon::onRequest, this, MHD_OPTION_LISTEN_SOCKET, static_cast<MHD_socket>(listener.number()),
            MHD_OPTION_CONNECTION_LIMIT, limits.connections, MHD_OPTION_PER_IP_CONNECTION_LIMIT,
            limits.connectionsOfOne, MHD_OPTION_CONNECTION_TIMEOUT, limits.idleSeconds,
            MHD_OPTION_CONNECTION_MEMORY_LIMIT, limits.requestBytes, MHD_OPTION_NOTIFY_CONNECTION,
            &Daemon::onConnection, nullptr, MHD_OPTION_END);
        if (daemon_ == nullptr) throw std::runtime_error("The web server doesn't start");
        listener.handOver();
        if (tellsOfNews) {
            const auto* const info = MHD_get_daemon_info(daemon_, MHD_DAEMON_INFO_EPOLL_FD);
            readable_ = loop_.whenReadable(info->epoll_fd, [this] { run(); });
        }
        lookAround_ = loop_.every(tellsOfNews ? kLookAround : kLookOften, [this] { run(); });
    }

    /// A connection that rests has to be woken to be closed.
    ~Daemon() {
        readable_.reset();
        lookAround_.reset();
        wakeStreams();
        MHD_stop_daemon(daemon_);
    }
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;

    int port() const { return port_; }
    std::string place() const { return host_ + ":" + std::to_string(port_); }
    std::size_t streams() const { return streams_.size(); }

    void publish(const std::string& event) {
        event_ = event;
        ++number_;
        wakeStreams();
        run();
    }

  private:
    struct Stream {
        Daemon* daemon = nullptr;
        MHD_Connection* connection = nullptr;
        std::uint64_t seen = 0;  // the number of the event in hand
        std::string event = {};
        std::size_t sent = 0;
        bool rests = false;
    };

    static void onConnection(void* /*closure*/, MHD_Connection* connection, void** /*context*/,
                             MHD_ConnectionNotificationCode what) {
        if (what != MHD_CONNECTION_NOTIFY_STARTED) return;
        const auto* const info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
        if (info != nullptr) limitSendBuffer(static_cast<int>(info->connect_fd), kSendBuffer);
    }

    /// Called once with the headers, when only a refusal may be said, and again when the request is whole.
    static MHD_Result onRequest(
        void* closure, MHD_Connection* connection, const char* path, const char* method,
        const char* /*version*/, const char* /*upload*/,
        std::size_t* uploaded,  // NOLINT(readability-non-const-parameter): as C calls it
        void** context) {
        static char headersSeen;
        auto& self = *static_cast<Daemon*>(closure);
        try {
            if (*context == nullptr) {
                *context = &headersSeen;
                return bringsBody(connection) ? self.answer(connection, {.status = MHD_HTTP_NOT_FOUND})
                                              : MHD_YES;
            }
            if (*uploaded != 0) return MHD_NO;
            return self.answer(connection, self.answerTo(connection, method, path));
        } catch (...) {
            return MHD_NO;  // ends the connection: nothing may leave a function that C calls
        }
    }

    PageAnswer answerTo(MHD_Connection* connection, const std::string& method, const std::string& path) {
        const std::string host = headerOf(connection, MHD_HTTP_HEADER_HOST);
        constexpr int kUsualPort = 80;
        const bool mine = host == place() || (port_ == kUsualPort && host == host_);
        const bool post = method == MHD_HTTP_METHOD_POST;
        if (!mine || (!post && method != MHD_HTTP_METHOD_GET)) return {};
        return handler_({.post = post, .path = path});
    }

    MHD_Result answer(MHD_Connection* connection, const PageAnswer& answer) {
        MHD_Response* response = nullptr;
        int status = answer.status;
        if (answer.stream && streams_.size() >= limits_.streams) {
            status = MHD_HTTP_SERVICE_UNAVAILABLE;
            response = MHD_create_response_from_buffer(0, nullptr, MHD_RESPMEM_PERSISTENT);
        } else if (answer.stream) {
            streams_.push_back({.daemon = this, .connection = connection});
            response = MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, kStreamBlock, &Daemon::onRoom,
                                                         &streams_.back(), &Daemon::onStreamEnd);
            if (response == nullptr) streams_.pop_back();
        } else {
            response = MHD_create_response_from_buffer(
                answer.body.size(), const_cast<char*>(answer.body.data()), MHD_RESPMEM_MUST_COPY);
        }
        if (response == nullptr) return MHD_NO;
        const auto say = [&](const char* name, const std::string& value) {
            MHD_add_response_header(response, name, value.c_str());
        };
        if (!answer.type.empty()) say(MHD_HTTP_HEADER_CONTENT_TYPE, answer.type);
        say(MHD_HTTP_HEADER_CACHE_CONTROL, "no-store");
        say("Referrer-Policy", "no-referrer");
        say("X-Content-Type-Options", "nosniff");
        for (const auto& [name, value] : answer.headers) say(name.c_str(), value);
        const MHD_Result queued = MHD_queue_response(connection, static_cast<unsigned>(status), response);
        MHD_destroy_response(response);
        return queued;
    }

    static ssize_t onRoom(void* closure, std::uint64_t /*position*/, char* room, std::size_t size) {
        auto& stream = *static_cast<Stream*>(closure);
        const Daemon& daemon = *stream.daemon;
        if (stream.sent == stream.event.size() && stream.seen != daemon.number_) {
            stream.seen = daemon.number_;
            stream.event = daemon.event_;
            stream.sent = 0;
        }
        const std::size_t part = std::min(size, stream.event.size() - stream.sent);
        if (part == 0) {
            stream.rests = true;
            MHD_suspend_connection(stream.connection);
            return 0;
        }
        std::copy_n(stream.event.data() + stream.sent, part, room);
        stream.sent += part;
        return static_cast<ssize_t>(part);
    }

    static void onStreamEnd(void* closure) {
        auto* const stream = static_cast<Stream*>(closure);
        stream->daemon->streams_.remove_if([&](const Stream& one) { return &one == stream; });
    }

    void wakeStreams() {
        for (Stream& stream : streams_)
            if (std::exchange(stream.rests, false)) MHD_resume_connection(stream.connection);
    }

    /// The library tells by its time-out when it has more to do at once.
    void run() {
        for (int turn = 0; turn < kTurnsAtOnce; ++turn) {
            MHD_run(daemon_);
            MHD_UNSIGNED_LONG_LONG rest = 1;
            if (MHD_get_timeout(daemon_, &rest) != MHD_YES || rest > 0) return;
        }
        loop_.post([this, alive = std::weak_ptr<int>(life_)] {
            if (!alive.expired()) run();
        });
    }

    platform::EventLoop& loop_;
    Handler handler_;
    PageLimits limits_;
    std::string host_;
    int port_ = 0;
    MHD_Daemon* daemon_ = nullptr;
    std::list<Stream> streams_;
    std::string event_;
    std::uint64_t number_ = 0;
    platform::TimerHandle readable_, lookAround_;
    std::shared_ptr<int> life_ = std::make_shared<int>(0);
};

HttpServer::HttpServer(platform::EventLoop& loop, const std::string& host, int port, Handler handler,
                       const PageLimits& limits)
    : daemon_(std::make_unique<Daemon>(loop, host, port, std::move(handler), limits)) {}
HttpServer::~HttpServer() = default;

std::string HttpServer::place() const { return daemon_->place(); }
int HttpServer::port() const { return daemon_->port(); }
void HttpServer::publish(const std::string& event) { daemon_->publish(event); }
std::size_t HttpServer::streams() const { return daemon_->streams(); }

}  // namespace vantrel::page
