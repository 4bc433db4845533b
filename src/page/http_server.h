// A small web server in the program's one thread, for a few readers of the local network.
//
// It answers GET, and POST without a body, to whoever names it rightly as the host; and it keeps streams of
// server-sent events, which get the newest event when they have room for it and miss those between. Whoever
// takes or sends nothing for a while is dropped. Nothing here waits.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/event_loop.h"

namespace vantrel::page {

struct PageRequest {
    bool post = false;
    std::string path;
};

struct PageAnswer {
    int status = 404;
    std::string type = {};
    std::string body = {};
    bool stream = false;  // of events, instead of the body
    std::vector<std::pair<std::string, std::string>> headers = {};
};

struct PageLimits {
    unsigned connections = 24;
    unsigned connectionsOfOne = 8;  // from one address
    std::size_t streams = 8;
    unsigned idleSeconds = 10;
    std::size_t requestBytes = 16'384;  // with everything that is remembered of a connection
};

class HttpServer {
  public:
    using Handler = std::function<PageAnswer(const PageRequest&)>;

    /// `host` is a numeric address of this machine (IPv4); port 0 is any that is free. Throws
    /// std::runtime_error when there can be no server.
    HttpServer(platform::EventLoop& loop, const std::string& host, int port, Handler handler,
               const PageLimits& limits = {});
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    /// "192.168.1.7:41233"; what requests have to name as their host.
    std::string place() const;
    int port() const;

    /// Tells all streams, in the words of the protocol. Streams that begin later begin with it.
    void publish(const std::string& event);
    std::size_t streams() const;

  private:
    class Daemon;
    std::unique_ptr<Daemon> daemon_;
};

}  // namespace vantrel::page
