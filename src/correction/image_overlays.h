// Marks burnt into the image that the imaging program shows: cross hair, centred rectangle, line.
#pragma once

#include <functional>

#include "correction/open_image.h"
#include "engine/ports.h"

namespace vantrel::correction {

class ImageOverlays : public engine::OverlayPort {
  public:
    ImageOverlays(OpenImage& image, engine::SettingsPort& settings, engine::LogPort& log);

    void CrossHair(const std::optional<engine::PixelPosition>& centre) override;
    double DrawCenteredRectangles(double fraction) override;
    void DrawLineOnImage(int x1, int y1, int x2, int y2) override;

  private:
    int lineWidth() const;
    void guarded(const char* label, const std::function<void()>& body);

    OpenImage& image_;
    engine::SettingsPort& settings_;
    engine::LogPort& log_;
};

}  // namespace vantrel::correction
