#include "hosts/tcp_stream.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <unistd.h>

namespace vantrel::hosts {

using platform::EventLoop;
using platform::Milliseconds;
using platform::TimerHandle;

namespace {

constexpr Milliseconds kAddressTimeOut{3000};  // for each address of a server
constexpr Milliseconds kLookupTimeOut{5000};
constexpr Milliseconds kTick{10};
constexpr std::size_t kChunk = 256U << 10U;
constexpr int kChunksPerTurn = 4;
constexpr std::size_t kMostUnsent = 1U << 20U;

std::string errorText(int number) {
    switch (number) {
        case ECONNREFUSED:
            return "connection refused";
        case ECONNRESET:
            return "the connection was reset";
        case EPIPE:
            return "the connection was closed";
        case ETIMEDOUT:
            return "no answer";
        case EHOSTUNREACH:
            return "no route to the host";
        case ENETUNREACH:
            return "the network is unreachable";
        default:
            return std::generic_category().message(number);
    }
}

bool wouldBlock(int number) { return number == EAGAIN || number == EWOULDBLOCK || number == EINTR; }

void setOption(int descriptor, int level, int option, int value) {
    ::setsockopt(descriptor, level, option, &value, sizeof value);  // all of them are improvements only
}

void tune(int descriptor) {
    setOption(descriptor, IPPROTO_TCP, TCP_NODELAY, 1);
    setOption(descriptor, SOL_SOCKET, SO_KEEPALIVE, 1);
#ifdef TCP_KEEPIDLE
    setOption(descriptor, IPPROTO_TCP, TCP_KEEPIDLE, 10);
    setOption(descriptor, IPPROTO_TCP, TCP_KEEPINTVL, 5);
    setOption(descriptor, IPPROTO_TCP, TCP_KEEPCNT, 3);
#endif
#ifdef TCP_USER_TIMEOUT
    setOption(descriptor, IPPROTO_TCP, TCP_USER_TIMEOUT, 20'000);
#endif
}

class TcpStream : public ByteStream {
  public:
    TcpStream(EventLoop& loop, StreamListener listener, std::shared_ptr<NameLookup> lookup)
        : loop_(loop), listener_(std::move(listener)), lookup_(std::move(lookup)), buffer_(kChunk) {
        setDeadline(kLookupTimeOut);
        tickUntilSettled();
    }
    TcpStream(EventLoop& loop, StreamListener listener, FoundAddresses found)
        : loop_(loop), listener_(std::move(listener)), buffer_(kChunk) {
        phase_ = Phase::kConnecting;
        addresses_ = std::move(found.addresses);
        connectNext();
        tickUntilSettled();
    }
    ~TcpStream() override { close(); }
    TcpStream(const TcpStream&) = delete;
    TcpStream& operator=(const TcpStream&) = delete;

    void send(std::string_view bytes) override {
        if (phase_ == Phase::kEnded) return;
        outgoing_ += bytes;
        if (phase_ == Phase::kOpen) flush();
        if (outgoing_.size() > kMostUnsent) fail("the server doesn't take what is sent to it");
        if (!outgoing_.empty() || !problem_.empty()) tickUntilSettled();
    }

    void close() override {
        phase_ = Phase::kEnded;
        ticker_.reset();
        closeSocket();
    }

    bool serve(Milliseconds atMost) override {
        if (phase_ == Phase::kEnded) return false;
        if (problem_.empty() && phase_ == Phase::kLookingUp) lookup_->waitFor(atMost);
        if (problem_.empty() && phase_ != Phase::kLookingUp) waitForSocket(atMost);
        tick();
        if (phase_ == Phase::kOpen) guarded([this] { receive(); });
        return true;
    }

  private:
    enum class Phase { kLookingUp, kConnecting, kOpen, kEnded };

    void setDeadline(Milliseconds timeOut) { deadline_ = loop_.clock().sinceStart() + timeOut; }
    bool late() const { return loop_.clock().sinceStart() >= deadline_; }

    void waitForSocket(Milliseconds atMost) const {
        const bool writing = phase_ == Phase::kConnecting || !outgoing_.empty();
        pollfd watched{socket_, static_cast<short>(POLLIN | (writing ? POLLOUT : 0)), 0};
        ::poll(&watched, 1, static_cast<int>(atMost.count()));
    }

    /// Nothing tells when a name is found, a connection made or room to send: they are asked for.
    void tickUntilSettled() {
        if (!ticker_) ticker_ = loop_.every(kTick, [this] { tick(); });
    }

    void tick() {
        guarded([this] {
            if (!problem_.empty()) return end();
            if (phase_ == Phase::kLookingUp) takeAddresses();
            if (phase_ == Phase::kConnecting) takeConnection();
            if (phase_ == Phase::kOpen) flush();
            if (!problem_.empty()) return end();
            if (phase_ == Phase::kOpen && outgoing_.empty()) ticker_.reset();
        });
    }

    void takeAddresses() {
        const auto found = lookup_->result();
        if (!found) {
            if (late()) fail("its name couldn't be looked up in time");
            return;
        }
        if (found->addresses.empty()) return fail(found->problem);
        phase_ = Phase::kConnecting;
        addresses_ = found->addresses;
        connectNext();
    }

    /// The next address that a connection can be begun to; fails with the last problem when none is left.
    void connectNext() {
        closeSocket();
        for (; nextAddress_ < addresses_.size(); closeSocket()) {
            const SocketAddress& address = addresses_[nextAddress_++];
            socket_ = ::socket(address.address.ss_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
            if (socket_ >= 0) tune(socket_);
            const auto* generic = reinterpret_cast<const sockaddr*>(&address.address);
            if (socket_ >= 0 && (::connect(socket_, generic, address.length) == 0 || errno == EINPROGRESS))
                return setDeadline(kAddressTimeOut);
            lastFailure_ = errorText(errno);
        }
        fail(lastFailure_);
    }

    void takeConnection() {
        pollfd watched{socket_, POLLOUT, 0};
        if (::poll(&watched, 1, 0) > 0) {
            int failure = 0;
            socklen_t size = sizeof failure;
            ::getsockopt(socket_, SOL_SOCKET, SO_ERROR, &failure, &size);
            if (failure == 0) return opened();
            lastFailure_ = errorText(failure);
        } else if (late()) {
            lastFailure_ = "no answer";
        } else {
            return;
        }
        connectNext();
    }

    void opened() {
        phase_ = Phase::kOpen;
        readable_ = loop_.whenReadable(socket_, [this] { guarded([this] { receive(); }); });
        if (listener_.onOpen) listener_.onOpen();
    }

    void flush() {
        while (!outgoing_.empty() && problem_.empty()) {
            const ssize_t sent = ::send(socket_, outgoing_.data(), outgoing_.size(), MSG_NOSIGNAL);
            if (sent < 0 && wouldBlock(errno)) return;
            if (sent < 0) return fail(errorText(errno));
            outgoing_.erase(0, static_cast<std::size_t>(sent));
        }
    }

    void receive() {
        for (int chunk = 0; chunk < kChunksPerTurn && phase_ == Phase::kOpen && problem_.empty(); ++chunk) {
            const ssize_t got = ::recv(socket_, buffer_.data(), buffer_.size(), 0);
            if (got < 0 && wouldBlock(errno)) break;
            if (got < 0) fail(errorText(errno));
            if (got == 0) fail("the server closed the connection");
            if (got > 0) listener_.onBytes({buffer_.data(), static_cast<std::size_t>(got)});
        }
        if (!problem_.empty()) end();
    }

    /// Notes that it is over; told from the loop, never out of send().
    void fail(const std::string& problem) {
        if (phase_ != Phase::kEnded && problem_.empty()) problem_ = problem;
    }

    void end() {
        if (phase_ == Phase::kEnded) return;
        const std::string why = problem_;
        close();
        listener_.onEnd(why);
    }

    template <typename Step>
    void guarded(const Step& step) {
        try {
            step();
        } catch (const std::exception& error) {
            fail(error.what());
            tickUntilSettled();
        }
    }

    void closeSocket() {
        readable_.reset();
        if (socket_ >= 0) ::close(std::exchange(socket_, -1));
    }

    EventLoop& loop_;
    StreamListener listener_;
    Phase phase_ = Phase::kLookingUp;
    std::shared_ptr<NameLookup> lookup_;
    std::vector<SocketAddress> addresses_;
    std::size_t nextAddress_ = 0;
    std::string lastFailure_ = "no address";
    Milliseconds deadline_{0};
    int socket_ = -1;
    std::string outgoing_;
    std::vector<char> buffer_;
    std::string problem_;
    TimerHandle readable_, ticker_;
};

}  // namespace

std::unique_ptr<ByteStream> TcpStreams::open(const ServerAddress& server, StreamListener listener) {
    if (auto known = knownAddresses(server))
        return std::make_unique<TcpStream>(loop_, std::move(listener), std::move(*known));
    return std::make_unique<TcpStream>(loop_, std::move(listener), lookUp(server));
}

std::shared_ptr<NameLookup> TcpStreams::lookUp(const ServerAddress& server) {
    std::erase_if(lookups_, [](const auto& entry) {
        const auto lookup = entry.second.lock();
        return !lookup || lookup->result();
    });
    auto& shared = lookups_[server];
    auto lookup = shared.lock();
    if (!lookup) shared = lookup = NameLookup::start(server, resolver_);
    return lookup;
}

}  // namespace vantrel::hosts
