// A connection to an INDI server that is made again whenever it is lost.
//
// A server that is gone is tried again after 1, 2, 4 ... 15 s. One that has fallen silent is asked for a sign
// of life; a server that answered such questions before and doesn't any more is gone, and so is one that
// never ends what he began to send.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "hosts/byte_stream.h"
#include "hosts/indi/xml_stream.h"
#include "platform/event_loop.h"

namespace vantrel::hosts::indi {

struct LinkListener {
    std::function<void()> onOpen;
    std::function<void(XmlElement)> onElement;
    /// The connection was lost; not told of attempts that fail.
    std::function<void(const std::string& why)> onLost;
    /// Several times a second.
    std::function<void()> onTick;
    /// Asks a server that hasn't answered a ping for another sign of life; false when none can be expected.
    std::function<bool()> askOtherwise = {};
};

class ServerLink {
  public:
    /// `longestElement`: how long a single element may take to come.
    ServerLink(platform::EventLoop& loop, ByteStreams& streams, ServerAddress server,
               platform::Milliseconds longestElement, LinkListener listener, BlobText* blobs = nullptr);

    /// Tries at once, also when the next attempt isn't due yet. Not to be called by its listener.
    void start();
    void stop();

    bool open() const { return state_ == State::kOpen; }
    /// Attempts that failed since the start of the program, and why the last one did.
    long failures() const { return failures_; }
    const std::string& problem() const { return problem_; }
    const ServerAddress& server() const { return server_; }

    /// Nothing when it isn't open.
    void send(std::string_view xml);
    bool serve(platform::Milliseconds atMost) { return stream_ && stream_->serve(atMost); }

  private:
    enum class State { kStopped, kPausing, kOpening, kOpen };

    platform::Milliseconds now() const { return loop_.clock().sinceStart(); }
    void connect();
    void opened();
    void received(std::string_view bytes);
    void ended(const std::string& why);
    void handle(XmlElement element);
    void tick();
    void watchSilence();

    platform::EventLoop& loop_;
    ByteStreams& streams_;
    ServerAddress server_;
    platform::Milliseconds longestElement_;
    LinkListener listener_;
    BlobText* blobs_;

    platform::TimerHandle ticker_;
    std::unique_ptr<ByteStream> stream_;
    std::optional<XmlStream> xml_;
    State state_ = State::kStopped;
    long failures_ = 0;
    std::string problem_;
    platform::Milliseconds nextAttempt_{0};
    platform::Milliseconds pause_{0};
    platform::Milliseconds lastHeard_{0};
    platform::Milliseconds lastWhole_{0};  // when no element was open
    platform::Milliseconds lastAsked_{0};
    bool answersPings_ = false;
    bool awaitsAnswer_ = false;  // to what was asked in its silence
};

}  // namespace vantrel::hosts::indi
