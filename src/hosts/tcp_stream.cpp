#include "hosts/tcp_stream.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace vantrel::hosts {

using platform::EventLoop;
using platform::Milliseconds;
using platform::SocketAddress;
using platform::SocketWait;
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
        platform::waitForSocket(socket_, writing ? SocketWait::kBoth : SocketWait::kReading, atMost);
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
            auto [number, failure] = platform::openStreamSocket(address);
            socket_ = number;
            if (socket_ >= 0) failure = platform::connectSocket(socket_, address);
            if (failure == 0) return setDeadline(kAddressTimeOut);
            lastFailure_ = errorText(failure);
        }
        fail(lastFailure_);
    }

    void takeConnection() {
        if (platform::waitForSocket(socket_, SocketWait::kWriting, Milliseconds{0})) {
            const int failure = platform::connectFailure(socket_);
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
            const platform::Transfer sent = platform::sendTo(socket_, outgoing_);
            if (sent.notYet) return;
            if (sent.failure != 0) return fail(errorText(sent.failure));
            outgoing_.erase(0, sent.bytes);
        }
    }

    void receive() {
        for (int chunk = 0; chunk < kChunksPerTurn && phase_ == Phase::kOpen && problem_.empty(); ++chunk) {
            const platform::Transfer got = platform::receiveFrom(socket_, buffer_);
            if (got.notYet) break;
            if (got.failure != 0)
                fail(errorText(got.failure));
            else if (got.bytes == 0)
                fail("the server closed the connection");
            else
                listener_.onBytes({buffer_.data(), got.bytes});
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
        if (socket_ >= 0) platform::closeSocket(std::exchange(socket_, -1));
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
