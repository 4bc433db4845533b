#include <cstdint>
#include <stdexcept>

#include "page/listening_socket.h"
#include "platform/win32_calls.h"

namespace vantrel::page {

namespace {

constexpr int kBacklog = 16;

/// Until the object goes, as often as it is said.
class Sockets {
  public:
    Sockets() {
        WSADATA ignored{};
        ::WSAStartup(MAKEWORD(2, 2), &ignored);
    }
    ~Sockets() { ::WSACleanup(); }
    Sockets(const Sockets&) = delete;
    Sockets& operator=(const Sockets&) = delete;
};

sockaddr_in placeOf(const std::string& host, int port) {
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_port = ::htons(static_cast<std::uint16_t>(port));
    if (::InetPtonW(AF_INET, platform::wide(host).c_str(), &place.sin_addr) != 1)
        throw std::runtime_error(host + " is no numeric address");
    if (place.sin_addr.s_addr == INADDR_ANY)
        throw std::runtime_error(host + " stands for every address: one has to be named");
    return place;
}

/// In the words that other systems have for the usual ones.
std::string whyNot(int failure) {
    switch (failure) {
        case WSAEADDRINUSE:
        case WSAEACCES:
            return "Address already in use";
        case WSAEADDRNOTAVAIL:
            return "Cannot assign requested address";
        default:
            return "the system refuses it (" + std::to_string(failure) + ")";
    }
}

SOCKET socketOf(int number) { return number < 0 ? INVALID_SOCKET : static_cast<SOCKET>(number); }

}  // namespace

ListeningSocket::ListeningSocket(const std::string& host, int port) {
    static const Sockets sockets;
    const sockaddr_in place = placeOf(host, port);
    const SOCKET socket = ::socket(AF_INET, SOCK_STREAM, 0);
    u_long yes = 1;
    // Another's address is never taken over here, unless that is asked for.
    if (socket != INVALID_SOCKET && ::ioctlsocket(socket, FIONBIO, &yes) == 0 &&
        ::bind(socket, reinterpret_cast<const sockaddr*>(&place), sizeof place) == 0 &&
        ::listen(socket, kBacklog) == 0) {
        ::SetHandleInformation(reinterpret_cast<HANDLE>(socket), HANDLE_FLAG_INHERIT, 0);
        number_ = static_cast<int>(socket);  // handles have 32 significant bits
        return;
    }
    const std::string why = whyNot(::WSAGetLastError());
    if (socket != INVALID_SOCKET) ::closesocket(socket);
    throw std::runtime_error("Can't listen at " + host + ":" + std::to_string(port) + ": " + why);
}

ListeningSocket::~ListeningSocket() {
    if (number_ >= 0) ::closesocket(socketOf(number_));
}

int ListeningSocket::port() const {
    sockaddr_in place{};
    int size = sizeof place;
    ::getsockname(socketOf(number_), reinterpret_cast<sockaddr*>(&place), &size);
    return ::ntohs(place.sin_port);
}

void limitSendBuffer(int socket, int bytes) {
    ::setsockopt(socketOf(socket), SOL_SOCKET, SO_SNDBUF, reinterpret_cast<const char*>(&bytes),
                 sizeof bytes);
}

}  // namespace vantrel::page
