#include "correction/stars/star_follower.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "correction/stars/brightest_star.h"
#include "correction/stars/defective_lines.h"
#include "correction/stars/image_piece.h"
#include "correction/stars/star_light.h"
#include "correction/stars/star_measurement.h"
#include "correction/stars/star_under_point.h"

namespace vantrel::correction {
namespace {

PixelBox frameOf(const platform::ImageArray& image) {
    return {0, 0, static_cast<int>(image.width()), static_cast<int>(image.height())};
}

PixelBox inFrame(const PixelBox& box, const platform::ImageArray& image) {
    const PixelBox frame = frameOf(image);
    return box.clipped(frame.right, frame.bottom);
}

/// The smallest box that holds both places, grown.
PixelBox boxOf(double x1, double y1, double x2, double y2, double margin) {
    const auto down = [](double value) { return static_cast<int>(std::floor(value)); };
    return {down(std::min(x1, x2) - margin), down(std::min(y1, y2) - margin),
            down(std::max(x1, x2) + margin) + 1, down(std::max(y1, y2) + margin) + 1};
}

PixelBox around(double x, double y, double margin) { return boxOf(x, y, x, y, margin); }

/// How far a star goes from one exposure to the next.
double reachIn(const platform::ImageArray& image) {
    constexpr double kShareOfFrame = 0.05, kLeast = 40, kMost = 150;  // the bounds in pixels
    const auto longer = static_cast<double>(std::max(image.width(), image.height()));
    return std::clamp(kShareOfFrame * longer, kLeast, kMost);
}

bool isCutByFrame(const FollowedStar& star, const platform::ImageArray& image) {
    constexpr double kLeast = 3;  // pixels
    const double margin = std::max(kLeast, star.halfFluxDiameter);
    return star.x < margin || star.y < margin || star.x + margin > static_cast<double>(image.width()) - 1 ||
           star.y + margin > static_cast<double>(image.height()) - 1;
}

/// A satellite, or a star that was moved while the shutter was open.
bool isTrail(const StarSeed& seed) {
    constexpr double kLongest = 64, kSlender = 3;  // pixels; length over breadth
    return seed.length > kLongest && seed.length > kSlender * seed.breadth;
}

void darken(PixelGrid& light, const PixelBox& spot) {
    const PixelBox box = spot.clipped(light.width, light.height);
    for (int y = box.top; y < box.bottom; ++y)
        for (int x = box.left; x < box.right; ++x) light.at(x, y) = 0;
}

std::vector<FollowedStar> starsIn(const platform::ImageArray& image, const PixelBox& box) {
    constexpr int kMost = 12, kCell = 64;  // stars; pixels a side
    platform::ImageArray piece = pieceOf(image, box);
    const SkyLevel sky(piece, kCell);
    piece = withoutDefectiveLines(piece, sky);
    PixelGrid light = starLight(piece, sky, frameOf(piece));
    std::vector<FollowedStar> stars;
    for (int i = 0; i < kMost; ++i) {
        const auto seed = brightestSeed(light);
        if (!seed) break;
        darken(light, around(seed->x, seed->y, seed->length + 1));
        if (isTrail(*seed)) continue;
        const auto star = measureStar(piece, *seed);
        if (!star) continue;
        const int reach = std::max({star->left, star->right, star->up, star->down});
        darken(light, around(star->x, star->y, reach));
        stars.push_back({star->x + box.left, star->y + box.top, star->halfFluxDiameter, star->flux});
    }
    return stars;
}

}  // namespace

StarFollower::StarFollower(double x, double y, double targetX, double targetY)
    : startX_(x), startY_(y), targetX_(targetX), targetY_(targetY), x_(x), y_(y) {}

std::optional<FollowedStar> StarFollower::find(const platform::ImageArray& image) {
    std::optional<FollowedStar> star;
    if (!(flux_ > 0)) {
        if (placeKnown_) star = firstSight(image);
    } else {
        if (placeKnown_) star = nearby(image);
        if (!star && placeKnown_) star = brightestIn(image, inFrame(wayBox(reachIn(image)), image));
        if (!star) star = brightestIn(image, frameOf(image));
    }
    if (!star) return star;
    placeKnown_ = true;
    x_ = star->x;
    y_ = star->y;
    // Follows clouds, but no single measurement.
    flux_ = flux_ > 0 ? std::sqrt(flux_ * star->flux) : star->flux;
    return star;
}

double StarFollower::contrast(const FollowedStar& star) const {
    if (!(star.flux > 0)) return std::numeric_limits<double>::infinity();
    return std::max(star.flux / flux_, flux_ / star.flux);
}

std::optional<FollowedStar> StarFollower::firstSight(const platform::ImageArray& image) const {
    const auto star = measureStarAt(image, x_, y_);
    if (!star) return std::nullopt;
    const FollowedStar found{star->x, star->y, star->halfFluxDiameter, star->flux};
    if (isCutByFrame(found, image)) return std::nullopt;
    return found;
}

std::optional<FollowedStar> StarFollower::nearby(const platform::ImageArray& image) const {
    constexpr double kAlike = 6;      // a cloud, or another exposure time
    constexpr double kOfItself = 24;  // what a star covers: the outermost ones aren't cut
    const double reach = reachIn(image);
    const PixelBox box = inFrame(around(x_, y_, reach + kOfItself), image);
    if (box.width() <= 0 || box.height() <= 0) return std::nullopt;
    std::optional<FollowedStar> best;
    double leastStrange = std::numeric_limits<double>::infinity();
    for (const FollowedStar& star : starsIn(image, box)) {
        const double way = std::hypot(star.x - x_, star.y - y_) / reach;
        if (way > 1 || contrast(star) > kAlike || isCutByFrame(star, image)) continue;
        const double strange = way + std::log(contrast(star));
        if (strange >= leastStrange) continue;
        leastStrange = strange;
        best = star;
    }
    return best;
}

std::optional<FollowedStar> StarFollower::brightestIn(const platform::ImageArray& image,
                                                      const PixelBox& box) const {
    constexpr double kAlike = 3;  // times the light, either way: clouds and focus change it
    if (box.width() <= 0 || box.height() <= 0) return std::nullopt;
    const BrightestStar star = BrightestStar3(pieceOf(image, box));
    if (star.noStar) return std::nullopt;
    const FollowedStar found{star.x + box.left, star.y + box.top, star.hfd, static_cast<double>(star.flux)};
    if (contrast(found) > kAlike || isCutByFrame(found, image)) return std::nullopt;
    return found;
}

/// Holds where it stood, where it is to go, and where it was last.
PixelBox StarFollower::wayBox(double margin) const {
    const PixelBox planned = boxOf(startX_, startY_, targetX_, targetY_, margin);
    const PixelBox last = around(x_, y_, margin);
    return {std::min(planned.left, last.left), std::min(planned.top, last.top),
            std::max(planned.right, last.right), std::max(planned.bottom, last.bottom)};
}

}  // namespace vantrel::correction
