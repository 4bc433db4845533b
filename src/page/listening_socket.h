// What of sockets the web server's library leaves to its user.
#pragma once

#include <string>

namespace vantrel::page {

/// A socket that listens and never blocks, until somebody takes it over.
class ListeningSocket {
  public:
    /// `host` is a numeric address of this machine (IPv4); port 0 is any that is free. Throws
    /// std::runtime_error when nobody can listen there.
    ListeningSocket(const std::string& host, int port);
    ~ListeningSocket();
    ListeningSocket(const ListeningSocket&) = delete;
    ListeningSocket& operator=(const ListeningSocket&) = delete;

    int number() const { return number_; }
    int port() const;
    /// From now on whoever called closes it.
    void handOver() { number_ = -1; }

  private:
    int number_ = -1;
};

/// How many bytes a reader may leave lying.
void limitSendBuffer(int socket, int bytes);

}  // namespace vantrel::page
