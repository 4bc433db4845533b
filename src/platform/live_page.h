// A page that browsers of the local network can read: what it shows, and who opens it.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace vantrel::platform {

/// What the page shows.
struct LiveView {
    struct Adjuster {
        std::string name = {}, arrow = {}, move = {}, sigma = {}, bolt = {};
        bool operator==(const Adjuster&) const = default;
    };
    Adjuster azimuth = {}, elevation = {};
    std::string verdict = {}, total = {};
    std::optional<double> age = {};  // seconds; nothing while there are no numbers
    bool live = false;               // the age grows by itself
    bool stale = false;              // the numbers are too old to turn by
    bool stoppable = false;
    bool night = false;
    std::string dial = {};  // an SVG element, or nothing
    bool operator==(const LiveView&) const = default;
};

/// Whom the page tells what its readers do.
struct LivePageListener {
    std::function<void()> onStop;  // from the event loop
};

/// Can be read while it lives.
class LivePage {
  public:
    virtual ~LivePage() = default;

    /// Where browsers find it. Whoever knows it may read, and stop.
    virtual std::string address() const = 0;

    virtual void show(const LiveView& view) = 0;
};

class LivePages {
  public:
    virtual ~LivePages() = default;

    /// At one address of this machine in a local network: the one given, or the likeliest when it is empty.
    /// The port as given; 0: any that is free. Throws std::runtime_error, in words, when that can't be.
    virtual std::unique_ptr<LivePage> open(const std::string& host, int port, LivePageListener listener) = 0;
};

}  // namespace vantrel::platform
