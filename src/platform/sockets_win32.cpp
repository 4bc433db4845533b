#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <mutex>

#include "platform/sockets.h"
#include "platform/win32_calls.h"

namespace vantrel::platform {
namespace {

/// Sockets are there from the first use to the program's end.
void beginSockets() {
    static std::once_flag once;
    std::call_once(once, [] {
        WSADATA ignored{};
        ::WSAStartup(MAKEWORD(2, 2), &ignored);
    });
}

SOCKET socketOf(int number) { return number < 0 ? INVALID_SOCKET : static_cast<SOCKET>(number); }

/// Handles have 32 significant bits.
int numberOf(SOCKET socket) { return socket == INVALID_SOCKET ? -1 : static_cast<int>(socket); }

int errnoOf(int failure) {
    switch (failure) {
        case WSAECONNREFUSED:
            return ECONNREFUSED;
        case WSAECONNRESET:
        case WSAENETRESET:
            return ECONNRESET;
        case WSAECONNABORTED:
        case WSAESHUTDOWN:
        case WSAENOTCONN:
            return EPIPE;
        case WSAETIMEDOUT:
            return ETIMEDOUT;
        case WSAEHOSTUNREACH:
        case WSAEHOSTDOWN:
            return EHOSTUNREACH;
        case WSAENETUNREACH:
        case WSAENETDOWN:
            return ENETUNREACH;
        case WSAEACCES:
            return EACCES;
        case WSAEADDRNOTAVAIL:
            return EADDRNOTAVAIL;
        case WSAEAFNOSUPPORT:
            return EAFNOSUPPORT;
        case WSAEMFILE:
            return EMFILE;
        case WSAENOBUFS:
            return ENOBUFS;
        default:
            return EIO;
    }
}

const sockaddr* generic(const SocketAddress& address) {
    return reinterpret_cast<const sockaddr*>(address.bytes.data());
}

void setOption(SOCKET socket, int level, int option, int value) {
    ::setsockopt(socket, level, option, reinterpret_cast<const char*>(&value), sizeof value);
}

void dontBlock(SOCKET socket) {
    u_long yes = 1;
    ::ioctlsocket(socket, FIONBIO, &yes);
    ::SetHandleInformation(reinterpret_cast<HANDLE>(socket), HANDLE_FLAG_INHERIT, 0);
}

void tune(SOCKET socket) {
    setOption(socket, IPPROTO_TCP, TCP_NODELAY, 1);
    tcp_keepalive probes{1, 10'000, 5'000};
    DWORD ignored = 0;
    ::WSAIoctl(socket, SIO_KEEPALIVE_VALS, &probes, sizeof probes, nullptr, 0, &ignored, nullptr, nullptr);
}

Transfer transferred(int bytes) {
    if (bytes >= 0) return {static_cast<std::size_t>(bytes)};
    const int failure = ::WSAGetLastError();
    const bool notYet = failure == WSAEWOULDBLOCK || failure == WSAEINTR;
    return {0, notYet ? 0 : errnoOf(failure), notYet};
}

int atMost(std::size_t bytes) { return static_cast<int>(std::min<std::size_t>(bytes, 1U << 30U)); }

std::string resolverProblem(int failure) {
    switch (failure) {
        case WSAHOST_NOT_FOUND:
        case WSANO_DATA:
            return "Name or service not known";
        case WSATRY_AGAIN:
            return "Temporary failure in name resolution";
        default:
            return "the name can't be looked up (" + std::to_string(failure) + ")";
    }
}

}  // namespace

FoundAddresses addressesOf(const std::string& host, int port, AddressKind kind) {
    beginSockets();
    ADDRINFOW wanted{};
    wanted.ai_socktype = SOCK_STREAM;
    wanted.ai_flags = kind == AddressKind::kNumeric ? AI_NUMERICHOST : AI_ADDRCONFIG;
    PADDRINFOW list = nullptr;
    const int failure =
        ::GetAddrInfoW(wide(host).c_str(), wide(std::to_string(port)).c_str(), &wanted, &list);
    if (failure != 0) return {{}, resolverProblem(failure)};
    FoundAddresses found;
    for (const ADDRINFOW* one = list; one != nullptr; one = one->ai_next) {
        SocketAddress address;
        address.length = static_cast<unsigned>(std::min<std::size_t>(one->ai_addrlen, sizeof address.bytes));
        std::memcpy(address.bytes.data(), one->ai_addr, address.length);
        found.addresses.push_back(address);
    }
    ::FreeAddrInfoW(list);
    return found;
}

OpenedSocket openStreamSocket(const SocketAddress& address) {
    beginSockets();
    const SOCKET socket = ::socket(generic(address)->sa_family, SOCK_STREAM, 0);
    if (socket == INVALID_SOCKET) return {-1, errnoOf(::WSAGetLastError())};
    dontBlock(socket);
    tune(socket);
    return {numberOf(socket)};
}

void closeSocket(int number) { ::closesocket(socketOf(number)); }

int connectSocket(int number, const SocketAddress& address) {
    if (::connect(socketOf(number), generic(address), static_cast<int>(address.length)) == 0) return 0;
    const int failure = ::WSAGetLastError();
    return failure == WSAEWOULDBLOCK || failure == WSAEINPROGRESS ? 0 : errnoOf(failure);
}

int connectFailure(int number) {
    int failure = 0;
    int size = sizeof failure;
    ::getsockopt(socketOf(number), SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&failure), &size);
    return failure == 0 ? 0 : errnoOf(failure);
}

/// By select: of connections that fail, older systems tell nothing else.
bool waitForSocket(int number, SocketWait what, Milliseconds longest) {
    fd_set reading{1, {socketOf(number)}};
    fd_set writing = reading;
    fd_set failing = reading;
    timeval wait{static_cast<long>(longest.count() / 1000), static_cast<long>(longest.count() % 1000 * 1000)};
    return ::select(0, what != SocketWait::kWriting ? &reading : nullptr,
                    what != SocketWait::kReading ? &writing : nullptr, &failing, &wait) > 0;
}

Transfer sendTo(int number, std::string_view bytes) {
    return transferred(::send(socketOf(number), bytes.data(), atMost(bytes.size()), 0));
}

Transfer receiveFrom(int number, std::span<char> out) {
    return transferred(::recv(socketOf(number), out.data(), atMost(out.size()), 0));
}

DatagramSocket::DatagramSocket(Family family) {
    beginSockets();
    const SOCKET socket = ::socket(family == Family::kFour ? AF_INET : AF_INET6, SOCK_DGRAM, 0);
    number_ = numberOf(socket);
    dontBlock(socket);
    if (family == Family::kFour) setOption(socket, SOL_SOCKET, SO_BROADCAST, 1);
}

DatagramSocket::~DatagramSocket() {
    if (number_ >= 0) closeSocket(number_);
}

void DatagramSocket::send(std::string_view words, std::uint32_t address, int port) const {
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(static_cast<std::uint16_t>(port));
    to.sin_addr.s_addr = address;
    ::sendto(socketOf(number_), words.data(), atMost(words.size()), 0, reinterpret_cast<const sockaddr*>(&to),
             sizeof to);
}

void DatagramSocket::sendToGroup(std::string_view words, const std::string& group, int port,
                                 unsigned interfaceNumber) const {
    sockaddr_in6 to{};
    to.sin6_family = AF_INET6;
    to.sin6_port = htons(static_cast<std::uint16_t>(port));
    to.sin6_scope_id = interfaceNumber;
    if (::InetPtonW(AF_INET6, wide(group).c_str(), &to.sin6_addr) != 1) return;
    setOption(socketOf(number_), IPPROTO_IPV6, IPV6_MULTICAST_IF, static_cast<int>(interfaceNumber));
    ::sendto(socketOf(number_), words.data(), atMost(words.size()), 0, reinterpret_cast<const sockaddr*>(&to),
             sizeof to);
}

std::optional<DatagramSocket::Datagram> DatagramSocket::receive(std::size_t longest) const {
    sockaddr_storage from{};
    int size = sizeof from;
    std::string words(longest, '\0');
    int got = ::recvfrom(socketOf(number_), words.data(), atMost(words.size()), 0,
                         reinterpret_cast<sockaddr*>(&from), &size);
    if (got < 0 && ::WSAGetLastError() == WSAEMSGSIZE) got = atMost(words.size());  // it was longer
    if (got < 0) return std::nullopt;
    words.resize(static_cast<std::size_t>(got));
    wchar_t host[NI_MAXHOST] = L"";
    ::GetNameInfoW(reinterpret_cast<sockaddr*>(&from), size, host, NI_MAXHOST, nullptr, 0, NI_NUMERICHOST);
    return Datagram{narrow(host), std::move(words)};
}

std::uint32_t loopbackAddress() { return htonl(INADDR_LOOPBACK); }

std::vector<NetworkInterface> networkInterfaces() {
    beginSockets();
    ULONG size = 64 * 1024;
    std::vector<std::byte> memory;
    ULONG failed = ERROR_BUFFER_OVERFLOW;
    for (int tries = 0; failed == ERROR_BUFFER_OVERFLOW && tries < 3; ++tries) {
        memory.resize(size);
        failed = ::GetAdaptersAddresses(AF_UNSPEC, GAA_FLAG_SKIP_ANYCAST | GAA_FLAG_SKIP_DNS_SERVER, nullptr,
                                        reinterpret_cast<IP_ADAPTER_ADDRESSES*>(memory.data()), &size);
    }
    std::vector<NetworkInterface> found;
    if (failed != NO_ERROR) return found;
    for (auto* at = reinterpret_cast<const IP_ADAPTER_ADDRESSES*>(memory.data()); at != nullptr;
         at = at->Next) {
        if (at->OperStatus != IfOperStatusUp) continue;
        for (auto* own = at->FirstUnicastAddress; own != nullptr; own = own->Next) {
            if (own->Address.lpSockaddr->sa_family == AF_INET && at->IfType != IF_TYPE_SOFTWARE_LOOPBACK) {
                sockaddr_in address{};
                std::memcpy(&address, own->Address.lpSockaddr, sizeof address);
                const unsigned bits = own->OnLinkPrefixLength;
                const std::uint32_t hosts = bits >= 32 ? 0 : 0xFFFFFFFFU >> bits;
                found.push_back({address.sin_addr.s_addr | htonl(hosts), std::nullopt});
            }
            if (own->Address.lpSockaddr->sa_family == AF_INET6)
                found.push_back({std::nullopt, static_cast<unsigned>(at->Ipv6IfIndex)});
        }
    }
    return found;
}

}  // namespace vantrel::platform
