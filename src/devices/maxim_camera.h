// MaxIm DL's way of exposing: one camera object does it all.
#pragma once

#include "devices/camera_program.h"

namespace vantrel::devices {

/// What the program is called, and its object in use. All but the objects is the same for MaxIm DL
/// and for the built-in one.
struct MaxImLike {
    const char* cameraClass;  // "MaxIm.CCDCamera"
    const char* name;         // as the texts of failures call it
    platform::ObjectRef ImagingObjects::*camera;
    bool hasWindows;  // on the desktop, where they are looked for
};
extern const MaxImLike kMaxImProgram, kBuiltInProgram;

class MaxImCamera : public CameraProgram {
  public:
    MaxImCamera(const CameraTools& tools, const MaxImLike& program) : tools_(tools), program_(program) {}

    bool isLinked() override;
    void link(bool value) override;
    void renew() override;
    bool wantsCameraFreed(bool /*linking*/) const override { return true; }
    bool mayHoldCamera() const override;
    void letGo() override;
    void expose(double seconds) override;
    void save(const std::string& path) override;
    void setDisableAutoShutdown(bool value) override;

  private:
    void TakePicture(double seconds, int filter);
    void startExposure(double seconds, bool light, int filter);
    void awaitImage(double seconds);
    void reportTakePicture(const platform::OperationError& error);
    bool holdsCamera();
    int filter();
    platform::ObjectRef camera() { return held(tools_.programs.*program_.camera); }

    CameraTools tools_;
    const MaxImLike& program_;
};

}  // namespace vantrel::devices
