// Tells, while the operator turns an adjuster, how far the star still is from its mark.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "correction/correction_marks.h"
#include "correction/guidance_panel.h"
#include "correction/open_image.h"
#include "correction/stars/star_follower.h"
#include "engine/ports.h"
#include "platform/signal.h"

namespace vantrel::correction {

/// As the last exposure shows it. Places in pixels of the image.
struct Guidance {
    engine::PixelPosition target;
    std::optional<engine::PixelPosition> star = {};  // nothing when it wasn't found
    double pixels = 0;                               // from the star to the target; 0 without a star
    std::optional<double> arcMinutes = {};           // the same on the sky, where the scale is known
    double left = 0;                                 // share of the way at the beginning, 0 to 1

    /// "star to target 4.2' (70 px)".
    std::string text() const;
};

/// Looks at the images that have been marked, and asks no program for them. Whatever goes wrong in that: the
/// star isn't found.
class StarGuide {
  public:
    /// `sound` tells that the star has come close; may be left out.
    StarGuide(GuidancePanel& panel, OpenImage& image, std::function<void()> sound = {});

    /// Begins with the image in which a pointing has marked star and target.
    void begin(const CorrectionMarks& marks);
    /// An exposure has been taken and marked.
    void look();
    void end();

    /// Nothing while no star is guided.
    const std::optional<Guidance>& guidance() const { return guidance_; }
    platform::Signal<> changed;

  private:
    std::optional<engine::PixelPosition> starInWrittenImage();
    void measure(const engine::PixelPosition& star);
    void tellWhenClose();
    void show();

    GuidancePanel& panel_;
    OpenImage& image_;
    std::function<void()> sound_;
    std::optional<StarFollower> follower_;
    std::optional<Guidance> guidance_;
    double arcMinutesPerPixel_ = 0;
    double firstDistance_ = 0;  // pixels; 0 until the star was found
    bool toldClose_ = false;
};

}  // namespace vantrel::correction
