#include <cerrno>
#include <cstdint>
#include <cstring>
#include <stdexcept>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "page/listening_socket.h"

namespace vantrel::page {

namespace {

constexpr int kBacklog = 16;

sockaddr_in placeOf(const std::string& host, int port) {
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_port = htons(static_cast<std::uint16_t>(port));
    if (::inet_pton(AF_INET, host.c_str(), &place.sin_addr) != 1)
        throw std::runtime_error(host + " is no numeric address");
    if (place.sin_addr.s_addr == htonl(INADDR_ANY))
        throw std::runtime_error(host + " stands for every address: one has to be named");
    return place;
}

}  // namespace

ListeningSocket::ListeningSocket(const std::string& host, int port) {
    const sockaddr_in place = placeOf(host, port);
    number_ = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const int on = 1;
    ::setsockopt(number_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (number_ >= 0 && ::bind(number_, reinterpret_cast<const sockaddr*>(&place), sizeof place) == 0 &&
        ::listen(number_, kBacklog) == 0)
        return;
    const std::string why = std::strerror(errno);
    if (number_ >= 0) ::close(number_);
    throw std::runtime_error("Can't listen at " + host + ":" + std::to_string(port) + ": " + why);
}

ListeningSocket::~ListeningSocket() {
    if (number_ >= 0) ::close(number_);
}

int ListeningSocket::port() const {
    sockaddr_in place{};
    socklen_t size = sizeof place;
    ::getsockname(number_, reinterpret_cast<sockaddr*>(&place), &size);
    return ntohs(place.sin_port);
}

void limitSendBuffer(int socket, int bytes) {
    ::setsockopt(socket, SOL_SOCKET, SO_SNDBUF, &bytes, sizeof bytes);
}

}  // namespace vantrel::page
