// The simulator's camera as a piece of hardware: one sensor with a shutter and a filter wheel, whose steps
// take the loop's time.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "observatory/telescopes/camera.h"
#include "platform/background.h"
#include "platform/camera_hardware.h"
#include "platform/event_loop.h"

namespace vantrel::observatory {

/// Where pictures come from.
struct PictureSource {
    struct Size {
        std::size_t width = 0;  // pixels
        std::size_t height = 0;
    };
    std::function<Size()> sensor;
    /// What an exposure that begins now records. Throws std::runtime_error when there is nothing to see.
    std::function<LatentPicture(const Shot&)> expose;
};

class SimulatedCamera : public platform::CameraHardware {
  public:
    /// Pictures are drawn in the background while they are exposed.
    SimulatedCamera(platform::EventLoop& loop, platform::Background& background, PictureSource source);

    std::string name() const override { return "Simulated camera"; }
    void connect() override { connected_ = true; }
    void disconnect() override;
    bool connected() const override { return connected_; }
    const platform::CameraFacts& facts() const override;
    void start(const platform::CameraOrder& order) override;
    void abort() override;
    Progress progress() const override { return progress_; }
    platform::TakenPicture take() override;

  private:
    Shot shot() const;
    LatentPicture latent() const;
    void after(double seconds, void (SimulatedCamera::*next)());
    void beginExposure();
    void draw(LatentPicture latent);
    void beginDownload();
    void finish();
    void fail(const std::string& failure);
    void become(Progress progress);

    platform::EventLoop& loop_;
    platform::Background& background_;
    PictureSource source_;
    mutable platform::CameraFacts facts_;  // the sensor is set up elsewhere
    bool connected_ = false;
    int filter_ = 0;

    platform::CameraOrder order_;
    imaging::Picture picture_;          // without pixels until it is drawn
    platform::BackgroundWork drawing_;  // while it is drawn
    platform::TimerHandle timer_;       // of the step under way
    Progress progress_ = Progress::kIdle;
    std::string failure_;
};

}  // namespace vantrel::observatory
