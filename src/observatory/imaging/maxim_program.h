// The first imaging program, "MaxIm DL": its windows and the settings of its camera dialog.
#pragma once

#include <optional>

#include "observatory/imaging/imaging_program.h"

namespace vantrel::observatory {

class MaxImProgram : public ImagingProgram {
  public:
    static constexpr double kVersion = 4.56;

    explicit MaxImProgram(const ImagingBench& bench) : ImagingProgram("MaxIm DL", bench) {}

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
    platform::WindowId openWindows() override;
    void showConnection() override;
    void reset() override;

  private:
    platform::WindowId connectButton_ = 0;
    bool imageReady_ = false;
    int clients_ = 0;
};

}  // namespace vantrel::observatory
