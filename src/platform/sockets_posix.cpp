#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "platform/sockets.h"

namespace vantrel::platform {
namespace {

static_assert(sizeof(sockaddr_storage) <= sizeof SocketAddress{}.bytes);

const sockaddr* generic(const SocketAddress& address) {
    return reinterpret_cast<const sockaddr*>(address.bytes.data());
}

void setOption(int number, int level, int option, int value) {
    ::setsockopt(number, level, option, &value, sizeof value);  // all of them are improvements only
}

void tune(int number) {
    setOption(number, IPPROTO_TCP, TCP_NODELAY, 1);
    setOption(number, SOL_SOCKET, SO_KEEPALIVE, 1);
#ifdef TCP_KEEPIDLE
    setOption(number, IPPROTO_TCP, TCP_KEEPIDLE, 10);
    setOption(number, IPPROTO_TCP, TCP_KEEPINTVL, 5);
    setOption(number, IPPROTO_TCP, TCP_KEEPCNT, 3);
#endif
#ifdef TCP_USER_TIMEOUT
    setOption(number, IPPROTO_TCP, TCP_USER_TIMEOUT, 20'000);
#endif
}

Transfer transferred(ssize_t bytes) {
    if (bytes >= 0) return {static_cast<std::size_t>(bytes)};
    const bool notYet = errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
    return {0, notYet ? 0 : errno, notYet};
}

}  // namespace

FoundAddresses addressesOf(const std::string& host, int port, AddressKind kind) {
    addrinfo wanted{};
    wanted.ai_socktype = SOCK_STREAM;
    wanted.ai_flags = (kind == AddressKind::kNumeric ? AI_NUMERICHOST : AI_ADDRCONFIG) | AI_NUMERICSERV;
    addrinfo* list = nullptr;
    const int failure = ::getaddrinfo(host.c_str(), std::to_string(port).c_str(), &wanted, &list);
    if (failure != 0) return {{}, ::gai_strerror(failure)};
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(list, &::freeaddrinfo);
    FoundAddresses found;
    for (const addrinfo* one = list; one != nullptr; one = one->ai_next) {
        SocketAddress address;
        address.length = std::min<unsigned>(one->ai_addrlen, sizeof address.bytes);
        std::memcpy(address.bytes.data(), one->ai_addr, address.length);
        found.addresses.push_back(address);
    }
    return found;
}

OpenedSocket openStreamSocket(const SocketAddress& address) {
    const int number = ::socket(generic(address)->sa_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (number < 0) return {-1, errno};
    tune(number);
    return {number};
}

void closeSocket(int number) { ::close(number); }

int connectSocket(int number, const SocketAddress& address) {
    return ::connect(number, generic(address), address.length) == 0 || errno == EINPROGRESS ? 0 : errno;
}

int connectFailure(int number) {
    int failure = 0;
    socklen_t size = sizeof failure;
    ::getsockopt(number, SOL_SOCKET, SO_ERROR, &failure, &size);
    return failure;
}

bool waitForSocket(int number, SocketWait what, Milliseconds longest) {
    const int events =
        (what != SocketWait::kWriting ? POLLIN : 0) | (what != SocketWait::kReading ? POLLOUT : 0);
    pollfd watched{number, static_cast<short>(events), 0};
    return ::poll(&watched, 1, static_cast<int>(longest.count())) > 0;
}

Transfer sendTo(int number, std::string_view bytes) {
    return transferred(::send(number, bytes.data(), bytes.size(), MSG_NOSIGNAL));
}

Transfer receiveFrom(int number, std::span<char> out) {
    return transferred(::recv(number, out.data(), out.size(), 0));
}

DatagramSocket::DatagramSocket(Family family)
    : number_(::socket(family == Family::kFour ? AF_INET : AF_INET6,
                       SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
    if (family == Family::kFour) setOption(number_, SOL_SOCKET, SO_BROADCAST, 1);
}

DatagramSocket::~DatagramSocket() {
    if (number_ >= 0) ::close(number_);
}

void DatagramSocket::send(std::string_view words, std::uint32_t address, int port) const {
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(static_cast<std::uint16_t>(port));
    to.sin_addr.s_addr = address;
    ::sendto(number_, words.data(), words.size(), MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&to),
             sizeof to);
}

void DatagramSocket::sendToGroup(std::string_view words, const std::string& group, int port,
                                 unsigned interfaceNumber) const {
    sockaddr_in6 to{};
    to.sin6_family = AF_INET6;
    to.sin6_port = htons(static_cast<std::uint16_t>(port));
    to.sin6_scope_id = interfaceNumber;
    if (::inet_pton(AF_INET6, group.c_str(), &to.sin6_addr) != 1) return;
    setOption(number_, IPPROTO_IPV6, IPV6_MULTICAST_IF, static_cast<int>(interfaceNumber));
    ::sendto(number_, words.data(), words.size(), MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&to),
             sizeof to);
}

std::optional<DatagramSocket::Datagram> DatagramSocket::receive(std::size_t longest) const {
    sockaddr_storage from{};
    socklen_t size = sizeof from;
    std::string words(longest, '\0');
    const ssize_t got =
        ::recvfrom(number_, words.data(), words.size(), 0, reinterpret_cast<sockaddr*>(&from), &size);
    if (got < 0) return std::nullopt;
    words.resize(static_cast<std::size_t>(got));
    char host[NI_MAXHOST] = "";
    ::getnameinfo(reinterpret_cast<sockaddr*>(&from), size, host, sizeof host, nullptr, 0, NI_NUMERICHOST);
    return Datagram{host, std::move(words)};
}

std::uint32_t loopbackAddress() { return htonl(INADDR_LOOPBACK); }

std::vector<NetworkInterface> networkInterfaces() {
    ifaddrs* first = nullptr;
    if (::getifaddrs(&first) != 0) return {};
    const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> owner(first, &::freeifaddrs);
    std::vector<NetworkInterface> found;
    for (const ifaddrs* at = first; at != nullptr; at = at->ifa_next) {
        if (at->ifa_addr == nullptr || (at->ifa_flags & IFF_UP) == 0) continue;
        if (at->ifa_addr->sa_family == AF_INET && (at->ifa_flags & IFF_BROADCAST) != 0 &&
            at->ifa_broadaddr != nullptr) {
            sockaddr_in broadcast{};
            std::memcpy(&broadcast, at->ifa_broadaddr, sizeof broadcast);
            found.push_back({broadcast.sin_addr.s_addr, std::nullopt});
        }
        if (at->ifa_addr->sa_family == AF_INET6 && (at->ifa_flags & IFF_MULTICAST) != 0)
            found.push_back({std::nullopt, ::if_nametoindex(at->ifa_name)});
    }
    return found;
}

}  // namespace vantrel::platform
