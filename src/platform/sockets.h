// Sockets that never block, and what the system knows of addresses. Failures are error numbers as errno has
// them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/clock.h"

namespace vantrel::platform {

/// As the system's calls take it.
struct SocketAddress {
    alignas(16) std::array<std::byte, 128> bytes{};
    unsigned length = 0;
};

struct FoundAddresses {
    std::vector<SocketAddress> addresses;
    std::string problem;  // when there are none
};

enum class AddressKind { kAnyName, kNumeric };
/// Asking for a name takes as long as it takes.
FoundAddresses addressesOf(const std::string& host, int port, AddressKind kind);

/// A socket for connections of the address's family, told to notice soon when its peer is gone; -1 and a
/// failure when there is none to be had.
struct OpenedSocket {
    int number = -1;
    int failure = 0;
};
OpenedSocket openStreamSocket(const SocketAddress& address);
void closeSocket(int number);

/// Begins to connect: 0 unless that failed at once.
int connectSocket(int number, const SocketAddress& address);
/// What became of it, once it can be written to: 0 when it is connected.
int connectFailure(int number);

enum class SocketWait { kReading, kWriting, kBoth };
/// Waits at most so long until it can be read or written, or has failed; whether it can.
bool waitForSocket(int number, SocketWait what, Milliseconds longest);

struct Transfer {
    std::size_t bytes = 0;
    int failure = 0;
    bool notYet = false;  // nothing moved, later it may
};
Transfer sendTo(int number, std::string_view bytes);
/// No bytes and no failure: the other end has closed.
Transfer receiveFrom(int number, std::span<char> out);

/// A datagram socket of one family; nothing happens on one that can't be had.
class DatagramSocket {
  public:
    enum class Family { kFour, kSix };
    explicit DatagramSocket(Family family);
    ~DatagramSocket();
    DatagramSocket(const DatagramSocket&) = delete;
    DatagramSocket& operator=(const DatagramSocket&) = delete;

    /// To an address of four bytes, as it stands in packets; broadcast addresses are allowed.
    void send(std::string_view words, std::uint32_t address, int port) const;
    /// To everybody in a numeric IPv6 group, on that interface.
    void sendToGroup(std::string_view words, const std::string& group, int port,
                     unsigned interfaceNumber) const;

    struct Datagram {
        std::string from;  // numeric address
        std::string words;
    };
    /// One that has come, cut to so many bytes.
    std::optional<Datagram> receive(std::size_t longest) const;

  private:
    int number_;
};

/// This machine itself, as it stands in packets.
std::uint32_t loopbackAddress();

/// A way into the network that is up.
struct NetworkInterface {
    std::optional<std::uint32_t> broadcast;  // as it stands in packets
    std::optional<unsigned> group;           // the number under which IPv6 groups are reached
};
std::vector<NetworkInterface> networkInterfaces();

}  // namespace vantrel::platform
