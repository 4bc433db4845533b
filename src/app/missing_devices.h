// What stands in for an imaging program while none is linked.
#pragma once

#include "correction/star_finder.h"
#include "engine/ports.h"
#include "engine/run_state.h"
#include "platform/errors.h"
#include "platform/text.h"

namespace vantrel::app {

/// Says what every exposure without a camera says.
class NoCamera : public engine::CameraPort {
  public:
    NoCamera(engine::LogPort& log, engine::MessagePort& messages, engine::RunState& state)
        : log_(log), messages_(messages), state_(state) {}

    void AcquireImage(double /*seconds*/) override {
        state_.StopRequested = false;
        const std::string text =
            platform::joinLines({"Failed to start camera!", "Verify camera model in Imaging Software"});
        messages_.ShowPopupMessage(text, messages_.displaySeconds());
        log_.AddToLog(text);
    }
    void SaveImageToFile(const std::string& /*fileName*/) override {}

  private:
    engine::LogPort& log_;
    engine::MessagePort& messages_;
    engine::RunState& state_;
};

class NoStarFinder : public correction::StarFinder {
  public:
    engine::PixelPosition FindBrightestStarOnImage() override {
        throw platform::runTimeError(platform::error_number::kNoObject);
    }
};

}  // namespace vantrel::app
