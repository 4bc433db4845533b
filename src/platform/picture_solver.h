// Finds out where a picture points that came from anywhere: a file in, an answer out.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/image_array.h"
#include "platform/words.h"

namespace vantrel::platform {

/// A star of the picture that was found in the catalogue.
struct RecognisedStar {
    double x = 0, y = 0;  // column and row, pixel centres at whole numbers from 0
    double magnitude = 0;
};

struct SolvedPicture {
    double raHours = 0, decDeg = 0;  // of the picture's middle, J2000
    double scaleX = 0, scaleY = 0;   // arc-seconds per pixel
    double rollDeg = 0;              // as the log tells it: 180 with north up and east left
    bool mirrored = false;
    double residualArcsec = 0;          // mean distance of the stars from where the catalogue has them
    std::size_t starsFound = 0;         // in the picture
    bool dated = true;                  // the file tells when it was taken
    std::vector<RecognisedStar> stars;  // brightest first
};

class PictureSolver {
  public:
    virtual ~PictureSolver() = default;

    /// Told from the event loop: the picture as soon as it is read, then one of the others.
    struct Listener {
        std::function<void(std::shared_ptr<const ImageArray> picture)> read;
        std::function<void(const SolvedPicture& solution)> solved;
        /// The remark says what the picture lacks, where that is known.
        std::function<void(const Words& why, const Words& remark)> failed;
    };

    /// Returns at once. The file is a path with drive letter or one of this machine, the scale about that of
    /// the picture in arc-seconds per pixel, if it is known. Whatever was being solved is given up.
    virtual void solve(const std::string& file, std::optional<double> scale, Listener listener) = 0;

    /// Nobody hears of what is being solved any more.
    virtual void giveUp() = 0;
};

}  // namespace vantrel::platform
