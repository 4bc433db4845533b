// One look for the brightest star of an image.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "correction/stars/pixel_grid.h"
#include "correction/stars/sky_level.h"
#include "correction/stars/star_measurement.h"
#include "correction/stars/star_seed.h"
#include "correction/stars/stripe_search.h"
#include "correction/stars/track.h"
#include "platform/image_array.h"

namespace vantrel::correction {

/// What to look for. Lengths in pixels.
struct StarKind {
    int longestTrail = 0;   // what is longer and as narrow is no star that trails
    double narrowest = 0;   // half-flux diameter
    double widest = 0;      // of a star of any shape; a nebula's glow may be as wide
    double widestDisc = 0;  // of one that ends as sharply as a nebula doesn't
    double faintest = 0;    // height over the noise of a pixel
};

/// What a look has found.
struct StarSighting {
    std::optional<StarMeasurement> star;
    bool atEdge = false;   // in an outermost stripe, or seen as far as the frame goes
    bool tooWeak = false;  // there is no star, but something that can't be measured
};

class StarSearch {
  public:
    /// Fills in the image's defective columns and rows. The sky has no less noise than `leastNoise`. Throws
    /// what SkyLevel does.
    StarSearch(const platform::ImageArray& image, const StarKind& kind, double leastNoise = 0);

    /// False when the image can't be searched.
    bool hasStripes() const { return columns_.size > 0; }

    /// Passes over tracks and what isn't of this kind. Looks at a decimated copy of the image stripe by
    /// stripe, and measures in full resolution. `log` gets a line for each stripe that has no peak.
    StarSighting run(std::vector<std::string>& log);

    /// Without defective lines, and the tracks that the search has come upon.
    const platform::ImageArray& image() const { return image_; }
    double typicalNoise() const { return sky_.typicalNoise(); }

  private:
    bool isAtEdge(const StarMeasurement& star) const;
    std::optional<PixelBox> brightestSpotStandingOut(std::vector<std::string>& log) const;
    std::optional<StarSeed> seedIn(const PixelBox& spot) const;
    bool isOfKind(const StarMeasurement& star) const;
    void erase(const Track& track);
    void darken(const PixelBox& spot);
    void darken(const StarMeasurement& glow);

    StarKind kind_;
    int width_, height_;
    int k_;  // pixels that a pixel of the working image is wide
    SkyLevel sky_;
    platform::ImageArray image_;
    PixelGrid working_;          // the image's star light
    StripeGrid columns_, rows_;  // of the working image
};

}  // namespace vantrel::correction
