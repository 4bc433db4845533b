// A server on the loopback address that answers as its script says, however wrong. It has no thread: it
// serves whenever the test calls serve(), from inside the wait that it tests.
#pragma once

#include <string>
#include <vector>

#include <fcntl.h>

#include "support/loopback_socket.h"

namespace vantrel::test {

/// What a connection gets once its request is there.
struct Script {
    std::vector<std::string> pieces;  // one at a time
    std::string forEver = {};         // then this, again and again
    bool closes = true;               // at the end; else it stays silent
    int rests = 0;                    // calls of serve() that send nothing, before each forEver
};

class ScriptedServer {
  public:
    ScriptedServer() { ::listen(listener_, 16); }
    ~ScriptedServer() {
        stopListening();
        for (Connection& connection : connections_) connection.close();
    }
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    std::string url(const std::string& path = "/") const {
        return "http://127.0.0.1:" + std::to_string(bound_.port) + path;
    }
    /// From now on nobody listens.
    void stopListening() {
        if (listener_ >= 0) ::close(listener_);
        listener_ = -1;
    }

    /// Takes what arrived and sends each connection its next piece.
    void serve() {
        for (int socket; listener_ >= 0 && (socket = ::accept(listener_, nullptr, nullptr)) >= 0;) {
            ::fcntl(socket, F_SETFL, O_NONBLOCK);
            connections_.push_back({socket});
            ++accepted;
        }
        for (Connection& connection : connections_) serve(connection);
    }

    /// The last one is used again and again.
    std::vector<Script> scripts;
    /// The requests' heads and bodies as they came.
    std::vector<std::string> requests;
    int accepted = 0;

  private:
    struct Connection {
        int socket = -1;
        std::string received = {};
        const Script* script = nullptr;
        std::size_t piece = 0;
        std::string unsent = {};
        int rested = 0;

        void close() {
            if (socket >= 0) ::close(socket);
            socket = -1;
        }
    };

    void serve(Connection& connection) {
        if (connection.socket < 0) return;
        char buffer[4096];
        for (ssize_t got; (got = ::recv(connection.socket, buffer, sizeof buffer, 0)) > 0;)
            connection.received.append(buffer, static_cast<std::size_t>(got));
        if (isWhole(connection.received)) {
            connection.script = &scripts[std::min(requests.size(), scripts.size() - 1)];
            connection.piece = 0;
            requests.push_back(std::move(connection.received));
            connection.received.clear();
        }
        if (connection.script != nullptr) answer(connection);
    }

    static bool isWhole(const std::string& request) {
        const auto head = request.find("\r\n\r\n");
        if (head == std::string::npos) return false;
        const auto length = request.find("Content-Length: ");
        return length > head || request.size() >= head + 4 + std::stoul(request.substr(length + 16));
    }

    static void answer(Connection& connection) {
        const Script& script = *connection.script;
        if (connection.unsent.empty()) {
            if (connection.piece < script.pieces.size())
                connection.unsent = script.pieces[connection.piece++];
            else if (!script.forEver.empty()) {
                if (++connection.rested <= script.rests) return;
                connection.rested = 0;
                connection.unsent = script.forEver;
            } else if (script.closes)
                connection.close();
            else
                connection.script = nullptr;
        }
        const ssize_t sent = ::send(connection.socket, connection.unsent.data(), connection.unsent.size(),
                                    MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent > 0) connection.unsent.erase(0, static_cast<std::size_t>(sent));
    }

    LoopbackSocket bound_{SOCK_STREAM | SOCK_NONBLOCK};
    int listener_ = bound_.number;
    std::vector<Connection> connections_;
};

/// A whole answer.
inline std::string httpAnswer(const std::string& body, const std::string& status = "200 OK",
                              const std::string& moreHeaders = "") {
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" +
           moreHeaders + "\r\n" + body;
}

}  // namespace vantrel::test
