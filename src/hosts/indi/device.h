// One device of an INDI server as the operator's: connected when he said so, and again whenever it returns.
//
// Connecting has stages: the server answers, it has the device, the device's driver reaches the hardware
// (CONNECTION), the properties that the device is of no use without are there. After that whatever belongs to
// the connecting is set. A driver that died comes back disconnected: all of it is done again then, without
// anybody waiting. Another client that disconnects the device is respected.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "hosts/indi/dialogue.h"

namespace vantrel::hosts::indi {

/// What connecting means for a kind of device.
struct ConnectionPlan {
    /// Whether the driver has defined by now what prepare() sets; it isn't waited for for long.
    std::function<bool()> preparable = [] { return true; };
    /// Sends what has to stand before the driver looks for the hardware.
    std::function<void()> prepare = [] {};
    /// Whether everything is there that the device is of no use without.
    std::function<bool()> complete = [] { return true; };
    /// What is missing when it stays incomplete: "tells no position".
    std::string incomplete = {};
    /// Sends what is to be set each time that it was connected.
    std::function<void()> setUp = [] {};
    /// It isn't connected any more.
    std::function<void()> onLost = [] {};
};

class Device : public Dialogue {
  public:
    Device(std::shared_ptr<Client> client, std::string name, const PumpedWait& wait, Tell tell,
           ConnectionPlan plan);
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    /// Waits; throws std::runtime_error with what the operator should know when it doesn't come to be.
    void connect();
    /// Waits for a moment, and never throws.
    void disconnect();
    bool ready() const { return stage_ == Stage::kReady; }
    /// Throws unless it is connected and answers.
    void requireReady() const;

  private:
    enum class Stage { kOff, kServer, kDevice, kHardware, kProperties, kReady };

    void enter(Stage stage, platform::Milliseconds timeOut);
    void hear(const Event& event);
    void advance();
    void advanceConnection();
    void becomeReady();
    void watchSilence();
    void lose(const Event& event);
    void leaveToOthers();
    void giveUp(const std::string& why);
    void giveUpOrRetry(const std::string& why);
    void pause();
    void letGo();
    std::string absence() const;

    Tell tell_;
    ConnectionPlan plan_;

    std::shared_ptr<void> kept_;  // the connection, while it is wanted
    Stage stage_ = Stage::kOff;
    bool waitedFor_ = false;  // the operator waits for it to be connected
    bool wasReady_ = false;   // since he asked for it
    std::string failure_;     // of what he waits for
    long failuresBefore_ = 0;
    Request connecting_;
    platform::Milliseconds deadline_{0};  // of the stage
    platform::Milliseconds nextTry_{0};
    platform::Milliseconds pause_{0};
    platform::Milliseconds asked_{0};
    platform::Subscription listening_;
};

}  // namespace vantrel::hosts::indi
