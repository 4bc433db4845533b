// The watch over one exposure, from its start until its picture is here.
//
// The camera is asked in the background, about twice a second, whether the picture is there; then it is
// fetched and decoded, also in the background. A server that is away for a while costs that while: the camera
// keeps the picture until it is asked for. Whatever goes wrong, the watch ends.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "hosts/alpaca/column_image.h"
#include "hosts/alpaca/device_link.h"
#include "platform/camera_hardware.h"
#include "platform/image_array.h"

namespace vantrel::hosts::alpaca {

class Exposure {
  public:
    using Progress = platform::CameraHardware::Progress;

    /// Of an exposure that the camera was just told to begin. The limits are the sensor's.
    Exposure(const Surroundings& surroundings, DeviceLink& link, double seconds, const ImageLimits& limits);

    Progress progress() const { return progress_; }

    /// Once it is ready.
    const platform::ImageArray& image() const { return *image_; }
    /// The camera's word, or ours where it has none.
    platform::Instant start() const { return start_; }
    double seconds() const { return seconds_; }

    /// Why it failed: a sentence.
    const std::string& failure() const { return failure_; }

  private:
    using Step = void (Exposure::*)();
    using Heard = std::function<void(const Json&)>;

    void tick();

    void look();
    void lookAtMembers();
    void judge(bool ready, int cameraState);
    void readStart();
    void readDuration();
    void download();
    void decode(platform::HttpAnswer answer);

    /// What a refusal by the device means.
    enum class Refusal { kFailsExposure, kDoesntMatter };
    /// Asks for a member. What the camera doesn't know, or refuses where that doesn't matter, counts as null;
    /// where a server doesn't answer the step is taken again.
    void ask(const std::string& member, Refusal refusal, Heard heard);
    void bear(const std::exception_ptr& failure);
    void next(Step step, platform::Milliseconds delay = {});
    void proceed(Step step);
    void fail(const std::string& why);

    platform::Milliseconds now() const { return surroundings_.loop.clock().sinceStart(); }

    const Surroundings& surroundings_;
    DeviceLink& link_;
    ImageLimits limits_;
    double seconds_;
    double ordered_;  // seconds
    platform::Instant start_;
    platform::Milliseconds began_;
    platform::Milliseconds answered_;  // the last time that the camera did

    Progress progress_ = Progress::kExposing;
    std::optional<platform::ImageArray> image_;
    std::string failure_;

    Step step_ = &Exposure::look;
    platform::Milliseconds due_;
    bool hasState_ = true;  // devicestate
    int downloads_ = 0;     // that were begun
    HttpExchange exchange_;
    platform::BackgroundWork decoding_;
    platform::TimerHandle timer_;
};

}  // namespace vantrel::hosts::alpaca
