// "MaxIm DL": its windows and the settings of its camera dialog. And a program
// that is driven in the same way, but makes no secret of being built in.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "imaging/imaging_program.h"

namespace vantrel::imaging {

class MaxImProgram : public ImagingProgram {
  public:
    static constexpr double kVersion = 4.56;

    explicit MaxImProgram(const ImagingBench& bench) : MaxImProgram("MaxIm DL", "MaxIm", bench) {}

    /// What its classes' names begin with: "MaxIm".
    const std::string& classPrefix() const { return classPrefix_; }

    struct Settings {
        int binX = 1, binY = 1;
        int filter = 0;
        std::optional<SubFrame> subFrame;
        bool disableAutoShutdown = false;
    };
    Settings settings;

    /// The sub-frame, or the whole frame in the present binning.
    SubFrame frame() const;

    /// Starts an exposure with these settings. Throws std::runtime_error when that is impossible.
    void expose(double seconds, bool light);
    /// The exposure that was started last is over and its image open. Throws the failure it ended with.
    bool imageReady() const;

    /// Camera objects come and go; without the last one the link ends, unless auto shutdown is disabled.
    void clientCame() { ++clients_; }
    void clientLeft(int run);

  protected:
    MaxImProgram(std::string name, std::string classPrefix, const ImagingBench& bench)
        : ImagingProgram(std::move(name), bench), classPrefix_(std::move(classPrefix)) {}

    platform::WindowId openWindows() override;
    void showConnection() override;
    void reset() override;

  private:
    std::string classPrefix_;
    platform::WindowId connectButton_ = 0;
    bool imageReady_ = false;
    int clients_ = 0;
};

/// The built-in camera program, on whichever camera it is given.
class BuiltInCameraProgram : public MaxImProgram {
  public:
    static constexpr const char* kName = "Built-in camera program";

    explicit BuiltInCameraProgram(const ImagingBench& bench) : MaxImProgram(kName, "Vantrel", bench) {}

  protected:
    platform::WindowId openWindows() override;
};

}  // namespace vantrel::imaging
