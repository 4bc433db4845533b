// CCDSoft's way of exposing: a camera object, and an image object for what it took.
#pragma once

#include <optional>

#include "devices/camera_program.h"

namespace vantrel::devices {

class CCDSoftCamera : public CameraProgram {
  public:
    explicit CCDSoftCamera(const CameraTools& tools) : tools_(tools) {}

    bool isLinked() override;
    void link(bool value) override;
    void renew() override;
    bool wantsCameraFreed(bool linking) const override { return linking; }
    bool mayHoldCamera() const override { return tools_.windows.searchCCDSoftWindow() != 0; }
    void letGo() override;
    void expose(double seconds) override;
    void save(const std::string& path) override;
    void abortSilently() override;

    /// Whether an exposure is waited for here or by the program; a failure is kept as the last message only.
    bool CCDSoftIsAsynchronous();
    void setCCDSoftIsAsynchronous(bool value);

    /// Takes hold of the image just exposed.
    void AttachCCDSoftImageToActiveImager();

  private:
    void setUp();
    void TakeCCDSoftImage(double delay, double seconds, bool light);
    bool imageIsTaken(double delay, double seconds, bool light);
    std::optional<double> awaitExposure(double seconds);
    void reportTakeCCDSoftImage(const platform::OperationError& error);
    platform::ObjectRef camera() { return held(tools_.programs.ccdSoftCamera); }

    CameraTools tools_;
};

}  // namespace vantrel::devices
