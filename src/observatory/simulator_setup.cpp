#include "observatory/simulator_setup.h"

#include <numbers>

#include "observatory/telescopes/camera.h"
#include "platform/text.h"

namespace vantrel::observatory {
namespace {

/// Arc-seconds of sky per pixel.
double imageScale(const CameraSettings& camera) {
    constexpr double kArcsecPerRadian = 180 * 3600 / std::numbers::pi;
    constexpr double kMicrometresPerMillimetre = 1000;
    return camera.pixelSize / (camera.focalLength * kMicrometresPerMillimetre) * kArcsecPerRadian;
}

}  // namespace

void storeSimulatorSetup(platform::SettingsRoot& settings) {
    const std::string scale = platform::formatNumber(imageScale({}), "0.000");
    settings.write("Main", "MyTelescopeID", "AxisSimulator.Telescope");
    settings.write("PolarAlign", "PlateSolveMethod", "0");
    settings.write("Solve", "ScaleH", scale);
    settings.write("Solve", "ScaleV", scale);
}

}  // namespace vantrel::observatory
