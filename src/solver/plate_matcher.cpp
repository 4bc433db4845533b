#include "solver/plate_matcher.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "solver/attitude.h"
#include "solver/triangle_index.h"

namespace vantrel::solver {

namespace {

using sky::kArcsecond;
using sky::kDegree;
using sky::PixelPosition;
using sky::SkyPosition;
using sky::Vector3;
using sky::operator*;

/// One look at the field: so many of the brightest stars, triangles of so large a share of the diagonal. By
/// its end so much of what a search may spend is spent.
struct TriangleRound {
    std::size_t stars;
    double largestShare;
    double spentShare;
};
constexpr TriangleRound kTriangleRounds[] = {{12, 1.0, 0.4}, {24, 0.5, 0.7}, {45, 0.3, 1.0}};

constexpr double kCatalogueSurplus = 1.5;       // catalogue stars taken per image star and field area
constexpr std::size_t kCatalogueAtMost = 2800;  // the table of their distances has 31 MB then
constexpr std::size_t kTestedStars = 40;
constexpr std::size_t kHopelessStars = 14;  // a hypothesis without a hit among so many stars is dropped
// What a search spends is counted, not timed, so that it comes to the same on any machine. The unit is a
// hypothesis, two microseconds or so.
constexpr double kTriangle = 0.04;           // looked up among the catalogue's, without a hypothesis yet
constexpr double kRefinement = 300;          // of a hypothesis to a plate: fits and matches in turn
constexpr double kTrianglesSpent = 100'000;  // plates that can be solved need a fiftieth
// Of the stars on the side that has fewer, true plates fit nine of ten; some only half, under clouds or among
// hot pixels. A plate that fits fewer may sit beside its place: a corner of the field that a turned and
// stretched model fits.
constexpr double kSurelyExplained = 0.9;
constexpr double kExplained = 0.5;
constexpr double kUnluckyHypothesis = 1e-3;  // hypotheses that chance alone would let pass to refinement

/// Extra hits that chance reaches with a probability below kUnluckyHypothesis when it makes `expected` on
/// average.
std::size_t hitsNeeded(double expected) {
    double term = std::exp(-expected);
    double tail = 1 - term;
    std::size_t hits = 1;
    while (tail > kUnluckyHypothesis && hits < 100) {
        term *= expected / static_cast<double>(hits);
        tail -= term;
        ++hits;
    }
    return std::max<std::size_t>(2, hits);
}

class Matcher {
  public:
    Matcher(const PlateField& field, SkyPosition centre, double radiusDeg, const MatchSettings& settings)
        : field_(field),
          geometry_(field.geometry()),
          settings_(settings),
          centre_(centre),
          radiusDeg_(std::min(radiusDeg, 60.0)),
          pixel_(std::sqrt(geometry_.scaleX * geometry_.scaleY) * kArcsecond),
          error_(1.5 * geometry_.positionError()),
          distortion_(geometry_.lensError()),
          scaleReach_(-std::log(1 - settings.scaleTolerance) + 0.005),
          leastStretch_(std::exp(-scaleReach_)),
          mostStretch_(std::exp(scaleReach_)),
          toCone_(axesAt(centre)),
          sky_(rotated(field.catalogue(), toCone_)),
          skyGrid_(gnomonic(sky_)) {}

    std::optional<RefinedPlate> run() {
        std::size_t former = 0;
        for (const TriangleRound& round : kTriangleRounds) {
            const std::size_t stars = std::min(round.stars, field_.imageCount());
            if (stars < 4 || (stars == former && former < kTriangleRounds[0].stars)) break;
            former = stars;
            spentAtMost_ = round.spentShare * kTrianglesSpent;
            if (auto plate = search(stars, round.largestShare)) return plate;
        }
        return doubtful_;
    }

  private:
    static std::vector<Vector3> rotated(std::span<const Vector3> stars, const sky::Matrix3& rotation) {
        std::vector<Vector3> result;
        result.reserve(stars.size());
        for (const Vector3& star : stars) result.push_back(rotation * star);
        return result;
    }

    static StarGrid gnomonic(const std::vector<Vector3>& stars) {
        std::vector<PlanePoint> points;
        points.reserve(stars.size());
        for (const Vector3& s : stars)
            points.push_back({s[0] / std::max(s[2], 0.1), s[1] / std::max(s[2], 0.1)});
        return StarGrid(std::move(points));
    }

    /// Where the pixel stands in the camera's tangent plane when the scale is `stretch` times the given one.
    PlanePoint inCamera(std::size_t star, double stretch) const {
        const PixelPosition p = field_.pixel(star);
        const PixelPosition c = geometry_.centre();
        return {(p.x - c.x) * geometry_.scaleX * kArcsecond * stretch,
                (p.y - c.y) * geometry_.scaleY * kArcsecond * stretch};
    }

    std::optional<RefinedPlate> search(std::size_t stars, double largestShare) {
        std::vector<Vector3> camera;
        for (std::size_t i = 0; i < stars; ++i) {
            const PlanePoint p = inCamera(i, 1);
            camera.push_back(sky::normalized({p.x, p.y, 1}));
        }
        const double diagonal = geometry_.diagonalDeg() * kDegree;
        const TriangleIndex index(camera, diagonal * largestShare, 8 * error_ * pixel_);
        if (index.empty()) return std::nullopt;

        const double fieldArea = geometry_.width * geometry_.height * pixel_ * pixel_;
        const double coneArea = 2 * std::numbers::pi * (1 - std::cos(radiusDeg_ * kDegree));
        const double wanted =
            static_cast<double>(stars) * kCatalogueSurplus * std::max(1.0, coneArea / fieldArea) + 6;
        const std::size_t count = std::min({static_cast<std::size_t>(wanted), sky_.size(), kCatalogueAtMost});
        return walkCatalogue(index, count);
    }

    /// Goes through the catalogue's triangles, brightest corners first.
    std::optional<RefinedPlate> walkCatalogue(const TriangleIndex& index, std::size_t count) {
        const auto longest = index.longestSide() * static_cast<float>(mostStretch_);
        const auto shortest = index.shortestSide() * static_cast<float>(leastStretch_);
        std::vector<float> sides(count * count);
        std::vector<std::uint16_t> near;
        for (std::uint16_t c = 0; c < static_cast<std::uint16_t>(count); ++c) {
            near.clear();
            for (std::uint16_t other = 0; other < c; ++other) {
                const float side = chord(sky_[c], sky_[other]);
                sides[c * count + other] = side;
                if (side <= longest && side >= shortest) near.push_back(other);
            }
            for (std::size_t j = 1; j < near.size(); ++j) {
                const std::uint16_t b = near[j];
                for (std::size_t i = 0; i < j; ++i) {
                    const std::uint16_t a = near[i];
                    const float ab = sides[b * count + a];
                    if (ab > longest || ab < shortest) continue;
                    auto plate = tryTriangle(
                        index, shapeOf({a, b, c}, {ab, sides[c * count + b], sides[c * count + a]}));
                    if (plate) return plate;
                    if (spent_ > spentAtMost_) return std::nullopt;
                }
            }
        }
        return std::nullopt;
    }

    std::optional<RefinedPlate> tryTriangle(const TriangleIndex& index, const Triangle& sky) {
        const auto reach =
            static_cast<float>(error_ * pixel_ / static_cast<double>(sky.longest) + distortion_);
        spent_ += kTriangle;
        std::optional<RefinedPlate> plate;
        index.visitAlike(sky, reach, [&](const Triangle& image) {
            if (plate) return;
            const double stretch = static_cast<double>(sky.longest / image.longest);
            if (stretch < leastStretch_ || stretch > mostStretch_) return;
            ++hypotheses_;
            ++spent_;
            plate = tryHypothesis(image, sky, stretch);
        });
        return plate;
    }

    /// A hypothesis; the sky's axes are the cone's.
    struct Hypothesis {
        Attitude attitude;
        PixelPosition anchor;
        double size = 0;  ///< of the triangle, pixels
    };

    Hypothesis hypothesisOf(const Triangle& image, const Triangle& sky, double stretch) const {
        std::array<Vector3, 3> camera;
        std::array<Vector3, 3> there;
        for (std::size_t i = 0; i < 3; ++i) {
            const PlanePoint p = inCamera(image.corners[i], stretch);
            camera[i] = sky::normalized({p.x, p.y, 1});
            there[i] = sky_[sky.corners[i]];
        }
        const PixelPosition a = field_.pixel(image.corners[0]);
        const PixelPosition b = field_.pixel(image.corners[1]);
        return {Attitude::of(camera, there, stretch),
                {(a.x + b.x) / 2, (a.y + b.y) / 2},
                std::hypot(a.x - b.x, a.y - b.y)};
    }

    std::optional<RefinedPlate> tryHypothesis(const Triangle& image, const Triangle& sky, double stretch) {
        const Hypothesis hypothesis = hypothesisOf(image, sky, stretch);
        const std::size_t tested = std::min(kTestedStars, field_.imageCount());
        const double pixel = pixel_ * stretch;
        const double density =
            static_cast<double>(sky_.size()) / (4 * std::pow(std::tan(radiusDeg_ * kDegree), 2));
        std::size_t hits = 0;
        double expected = 0;
        for (std::size_t i = 0; i < tested; ++i) {
            if (i == image.corners[0] || i == image.corners[1] || i == image.corners[2]) continue;
            if (i == kHopelessStars && hits == 0) return std::nullopt;
            const PlanePoint p = inCamera(i, stretch);
            const Vector3 there = hypothesis.attitude.skyOf({p.x, p.y, 1});
            if (there[2] <= 0.1) continue;
            const PlanePoint at{there[0] / there[2], there[1] / there[2]};
            const double spread = 1 + at.x * at.x + at.y * at.y;
            const double radius = toleranceAt(hypothesis, field_.pixel(i)) * pixel * spread;
            expected += density * std::numbers::pi * radius * radius;
            if (skyGrid_.nearest(at, radius) >= 0) ++hits;
        }
        if (hits < 2 || hits < hitsNeeded(expected)) return std::nullopt;
        spent_ += kRefinement;
        return refined(hypothesis);
    }

    /// Pixels by which a star may miss its predicted place: errors of the triangle grow with the distance
    /// from it.
    double toleranceAt(const Hypothesis& hypothesis, PixelPosition p) const {
        const double dx = p.x - hypothesis.anchor.x;
        const double dy = p.y - hypothesis.anchor.y;
        const double away = std::sqrt(dx * dx + dy * dy);
        return error_ * (1 + away / hypothesis.size) + distortion_ * away;
    }

    std::optional<RefinedPlate> refined(const Hypothesis& hypothesis) {
        Attitude attitude = hypothesis.attitude;
        attitude.toSky = sky::transposed(toCone_) * attitude.toSky;
        RefinementSettings settings;
        settings.anchor = hypothesis.anchor;
        settings.anchorRadius = 2 * hypothesis.size;
        settings.firstTolerance = std::max(
            2 * error_,
            toleranceAt(hypothesis, {hypothesis.anchor.x + hypothesis.size, hypothesis.anchor.y}) * 1.2);
        settings.maximumResidualArcsec = settings_.maximumResidualArcsec;
        auto plate = refinePlate(field_, attitude.model(geometry_), settings);
        return plate && credible(*plate) ? settled(*plate) : std::nullopt;
    }

    /// The plate, or the one that comes of it when stars are looked for farther from their places, if it
    /// explains what is seen. Both are judged by stars as near to their places: farther off, blends join in.
    /// The best of the others is kept, for when nothing better comes; but not one beside a place whose scale
    /// is out of reach.
    std::optional<RefinedPlate> settled(RefinedPlate plate) {
        RefinementSettings close;
        close.firstTolerance = 2 * error_;
        close.maximumResidualArcsec = settings_.maximumResidualArcsec;
        RefinementSettings settings = close;
        settings.highestOrder = 1;
        constexpr double kFarthest = 40;  // pixels: a degree of turn, or as much of scale, at an image's edge
        for (settings.firstTolerance = 4 * error_;
             plate.explained < kSurelyExplained && settings.firstTolerance < kFarthest;
             settings.firstTolerance *= 2) {
            spent_ += 2 * kRefinement;
            auto wider = refinePlate(field_, plate.model, settings);
            if (wider) wider = refinePlate(field_, wider->model, close);
            if (wider && wider->chanceLog10 < plate.chanceLog10) plate = *wider;
        }
        if (!credible(plate)) return std::nullopt;
        if (plate.explained >= kExplained) return plate;
        if (!doubtful_ || plate.chanceLog10 < doubtful_->chanceLog10) doubtful_ = plate;
        return std::nullopt;
    }

    bool credible(const RefinedPlate& plate) const {
        return plate.matched >= settings_.minimumMatches &&
               isPlausible(plate.model, geometry_, scaleReach_) &&
               plate.chanceLog10 + std::log10(static_cast<double>(hypotheses_)) < settings_.chanceLimitLog10;
    }

    const PlateField& field_;
    const PlateGeometry& geometry_;
    const MatchSettings& settings_;
    SkyPosition centre_;
    double radiusDeg_;
    double pixel_;       ///< radians
    double error_;       ///< of a star's place in the image, pixels, generously
    double distortion_;  ///< relative error of lengths
    double scaleReach_;  ///< largest logarithm of true over given scale: either may be the larger by the
                         ///< tolerance
    double leastStretch_;
    double mostStretch_;
    sky::Matrix3 toCone_;
    std::vector<Vector3> sky_;              ///< catalogue stars in the cone's axes
    StarGrid skyGrid_;                      ///< the same in the plane that touches the cone's centre
    std::optional<RefinedPlate> doubtful_;  ///< the best that explains too little
    std::size_t hypotheses_ = 0;
    double spent_ = 0;
    double spentAtMost_ = 0;  ///< by the end of this round
};

}  // namespace

std::optional<RefinedPlate> matchPlate(const PlateField& field, SkyPosition centre, double radiusDeg,
                                       const MatchSettings& settings) {
    if (field.imageCount() < 4 || field.catalogue().size() < 4) return std::nullopt;
    return Matcher(field, centre, radiusDeg, settings).run();
}

}  // namespace vantrel::solver
