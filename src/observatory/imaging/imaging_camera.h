// The camera that the imaging programs drive: one sensor with a shutter and a filter wheel.
//
// A program connects, starts an exposure and is handed the picture when it has been downloaded; all in the
// loop's time. Only one program can be connected.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "observatory/telescopes/camera.h"
#include "platform/errors.h"
#include "platform/event_loop.h"

namespace vantrel::observatory {

/// Where pictures come from.
struct PictureSource {
    struct Size {
        std::size_t width = 0;  // pixels
        std::size_t height = 0;
    };
    std::function<Size()> sensor;
    /// What an exposure that begins now records.
    std::function<Picture(const Shot&)> expose;
};

struct Filter {
    const char* name;
    double transmission;  // 0 to 1
};

/// A part of the sensor in binned pixels.
struct SubFrame {
    int left = 0, top = 0, width = 0, height = 0;
};

/// What a program asks for.
struct ExposureOrder {
    double seconds = 1;  // 0: a bias frame, if the shutter stays closed
    bool light = true;   // false: the shutter stays closed
    int filter = 0;
    int binX = 1, binY = 1;
    std::optional<SubFrame> subFrame = {};  // nothing: the whole sensor
    bool subtractDark = false;
};

class ImagingCamera {
  public:
    using Delivery = std::function<void(Picture)>;

    static constexpr int kMaxBin = 4;
    static constexpr int kAborted = 65535;  // failure number of an exposure that was aborted
    static const std::vector<Filter>& filters();

    ImagingCamera(platform::EventLoop& loop, PictureSource source);

    /// Links the camera to the program. Throws std::runtime_error when another one holds it.
    void connect(const std::string& program);
    /// Ends the link and the exposure, if the program holds the camera.
    void disconnect(const std::string& program);
    bool isConnectedTo(const std::string& program) const { return holder_ == program; }

    /// Starts an exposure; one that is under way is given up. Throws std::runtime_error when the order can't
    /// be carried out or the sky can't be drawn.
    void start(const ExposureOrder& order, Delivery delivery);
    /// Gives the exposure up. Nothing when there is none.
    void abort();

    bool busy() const { return timer_ != nullptr; }
    /// Throws the OperationError that the last exposure ended with, if it was aborted or failed.
    void requireSuccess() const;

    int filter() const { return filter_; }
    PictureSource::Size sensor() const { return source_.sensor(); }

  private:
    Shot shot() const;
    void after(double seconds, void (ImagingCamera::*next)());
    void beginExposure();
    void beginDownload();
    void deliver();

    platform::EventLoop& loop_;
    PictureSource source_;
    std::string holder_;  // empty: nobody
    int filter_ = 0;

    ExposureOrder order_;
    Delivery delivery_;
    Picture picture_;
    platform::TimerHandle timer_;  // of the step under way
    std::optional<platform::OperationError> failure_;
};

}  // namespace vantrel::observatory
