// The camera as the imaging programs share it: one piece of hardware, which one program at a time holds.
//
// A program connects, starts an exposure and is handed the picture when it has been downloaded; all in the
// loop's time.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "imaging/picture.h"
#include "platform/background.h"
#include "platform/camera_hardware.h"
#include "platform/errors.h"
#include "platform/event_loop.h"

namespace vantrel::imaging {

/// A part of the sensor in binned pixels.
using SubFrame = platform::CameraOrder::Part;

/// What a program asks for.
using ExposureOrder = platform::CameraOrder;

class ImagingCamera {
  public:
    using Delivery = std::function<void(Picture)>;

    static constexpr int kAborted = 65535;  // failure number of an exposure that was aborted

    /// Cards that the camera can't know, asked for when an exposure begins.
    using Beside = std::function<std::vector<fits::FitsCard>()>;

    /// The only one of that hardware, which must outlive it.
    ImagingCamera(platform::EventLoop& loop, platform::Background& background,
                  platform::CameraHardware& hardware, Beside beside = {});
    ~ImagingCamera();
    ImagingCamera(const ImagingCamera&) = delete;
    ImagingCamera& operator=(const ImagingCamera&) = delete;

    /// Links the camera to the program. Throws std::runtime_error when another one holds it, or what the
    /// hardware says when it can't be connected.
    void connect(const std::string& program);
    /// Ends the link and the exposure, if the program holds the camera.
    void disconnect(const std::string& program);
    bool isConnectedTo(const std::string& program) const {
        return holder_ == program && hardware_.connected();
    }

    /// Starts an exposure; one that is under way is given up. Throws std::runtime_error when the order can't
    /// be carried out or the sky can't be drawn.
    void start(const ExposureOrder& order, Delivery delivery);
    /// Gives the exposure up. Nothing when there is none.
    void abort();

    bool busy() const { return watch_ != nullptr || reading_ != nullptr; }
    /// Throws the OperationError that the last exposure ended with, if it was aborted or failed.
    void requireSuccess() const;

    const platform::CameraFacts& facts() const { return hardware_.facts(); }

  private:
    void look();
    void read();
    void deliver(Picture picture);
    /// What goes wrong from here on is the exposure's failure.
    template <typename Step>
    void attempt(Step&& step);

    platform::EventLoop& loop_;
    platform::Background& background_;
    platform::CameraHardware& hardware_;
    Beside beside_;
    std::vector<fits::FitsCard> cards_;  // of the exposure under way, beside the camera's own
    std::string holder_;                 // empty: nobody
    Delivery delivery_;
    platform::TimerHandle watch_;       // while an exposure is under way
    platform::BackgroundWork reading_;  // while its picture is
    std::optional<platform::OperationError> failure_;
};

}  // namespace vantrel::imaging
