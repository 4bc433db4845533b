// The other end of a TCP connection, on this machine and in this thread.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "support/loopback_socket.h"

namespace vantrel::test {

/// Listens at a port that was free.
class LoopbackServer {
  public:
    LoopbackServer() { ::listen(listener_, 8); }
    ~LoopbackServer() {
        hangUp();
        stopListening();
    }
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    int port() const { return bound_.port; }

    /// Takes the connection that somebody asks for. What comes over it is read by receive().
    void accept() {
        hangUp();
        connection_ = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection_ < 0) throw std::runtime_error("nobody connects");
    }
    /// As much as fits, without waiting.
    std::size_t send(std::string_view bytes) const {
        const ssize_t sent = ::send(connection_, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        return sent > 0 ? static_cast<std::size_t>(sent) : 0;
    }
    /// What is there by now.
    std::string receive() const {
        std::string all(1U << 16U, '\0');
        const ssize_t got = ::recv(connection_, all.data(), all.size(), MSG_DONTWAIT);
        all.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
        return all;
    }
    void hangUp() {
        if (connection_ >= 0) ::close(std::exchange(connection_, -1));
    }
    /// Ends the connection in the middle of everything.
    void reset() {
        const linger atOnce{1, 0};
        ::setsockopt(connection_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
        hangUp();
    }
    void stopListening() {
        if (listener_ >= 0) ::close(std::exchange(listener_, -1));
    }

  private:
    LoopbackSocket bound_{SOCK_STREAM};
    int listener_ = bound_.number;
    int connection_ = -1;
};

}  // namespace vantrel::test
