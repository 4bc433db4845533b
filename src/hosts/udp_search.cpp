#include "hosts/udp_search.h"

#include <cstring>
#include <optional>

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace vantrel::hosts {

namespace {

constexpr std::size_t kLongestAnswer = 1024;  // bytes; nobody who means it needs more
constexpr int kMostAnswersAtOnce = 100;

/// A datagram socket that never blocks; nothing happens on one that can't be had.
class Socket {
  public:
    explicit Socket(int family)
        : descriptor_(::socket(family, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {}
    ~Socket() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    void set(int level, int option, int value) const {
        ::setsockopt(descriptor_, level, option, &value, sizeof value);
    }

    template <typename Address>
    void send(const std::string& words, const Address& to) const {
        ::sendto(descriptor_, words.data(), words.size(), MSG_NOSIGNAL,
                 reinterpret_cast<const sockaddr*>(&to), sizeof to);
    }

    std::optional<UdpAnswer> receive() const {
        sockaddr_storage from{};
        socklen_t size = sizeof from;
        char words[kLongestAnswer];
        const ssize_t got =
            ::recvfrom(descriptor_, words, sizeof words, 0, reinterpret_cast<sockaddr*>(&from), &size);
        if (got < 0) return std::nullopt;
        char host[NI_MAXHOST] = "";
        ::getnameinfo(reinterpret_cast<sockaddr*>(&from), size, host, sizeof host, nullptr, 0,
                      NI_NUMERICHOST);
        return UdpAnswer{host, std::string(words, static_cast<std::size_t>(got))};
    }

  private:
    int descriptor_;
};

/// The machine's interfaces that are up.
class Interfaces {
  public:
    Interfaces() {
        if (::getifaddrs(&first_) != 0) first_ = nullptr;
    }
    ~Interfaces() { ::freeifaddrs(first_); }
    Interfaces(const Interfaces&) = delete;
    Interfaces& operator=(const Interfaces&) = delete;

    template <typename Visit>
    void each(const Visit& visit) const {
        for (const ifaddrs* at = first_; at != nullptr; at = at->ifa_next)
            if (at->ifa_addr != nullptr && (at->ifa_flags & IFF_UP) != 0) visit(*at);
    }

  private:
    ifaddrs* first_ = nullptr;
};

class NetworkSearch : public UdpSearch {
  public:
    explicit NetworkSearch(const UdpQuestion& question) {
        four_.set(SOL_SOCKET, SO_BROADCAST, 1);
        ask(question, htonl(INADDR_LOOPBACK));
        Interfaces().each([&](const ifaddrs& interface) {
            if (interface.ifa_addr->sa_family == AF_INET && (interface.ifa_flags & IFF_BROADCAST) != 0 &&
                interface.ifa_broadaddr != nullptr) {
                sockaddr_in broadcast{};
                std::memcpy(&broadcast, interface.ifa_broadaddr, sizeof broadcast);
                ask(question, broadcast.sin_addr.s_addr);
            }
            if (interface.ifa_addr->sa_family == AF_INET6 && (interface.ifa_flags & IFF_MULTICAST) != 0)
                askGroup(question, ::if_nametoindex(interface.ifa_name));
        });
    }

    std::vector<UdpAnswer> answers() override {
        std::vector<UdpAnswer> all;
        for (const Socket* socket : {&four_, &six_})
            for (int i = 0; i < kMostAnswersAtOnce; ++i) {
                auto answer = socket->receive();
                if (!answer) break;
                all.push_back(std::move(*answer));
            }
        return all;
    }

  private:
    void ask(const UdpQuestion& question, in_addr_t address) const {
        sockaddr_in to{};
        to.sin_family = AF_INET;
        to.sin_port = htons(static_cast<std::uint16_t>(question.port));
        to.sin_addr.s_addr = address;
        four_.send(question.words, to);
    }

    void askGroup(const UdpQuestion& question, unsigned interface) const {
        sockaddr_in6 to{};
        to.sin6_family = AF_INET6;
        to.sin6_port = htons(static_cast<std::uint16_t>(question.port));
        to.sin6_scope_id = interface;
        if (::inet_pton(AF_INET6, question.group.c_str(), &to.sin6_addr) != 1) return;
        six_.set(IPPROTO_IPV6, IPV6_MULTICAST_IF, static_cast<int>(interface));
        six_.send(question.words, to);
    }

    Socket four_{AF_INET};
    Socket six_{AF_INET6};
};

}  // namespace

std::unique_ptr<UdpSearch> searchNetwork(const UdpQuestion& question) {
    return std::make_unique<NetworkSearch>(question);
}

}  // namespace vantrel::hosts
