#include "solver/wide_search.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "solver/attitude.h"
#include "solver/plate_refinement.h"

namespace vantrel::solver {

namespace {

using sky::kArcsecond;
using sky::kDegree;
using sky::PixelPosition;
using sky::StarCatalog;
using sky::Vector3;
using sky::operator*;

/// One look at the image: the stars of these ranks, brightest 0, each with so many neighbours that reach this
/// share of its flux. The catalogue's magnitudes aren't those of the camera, so some neighbours may be
/// fainter.
struct PatternRound {
    std::size_t first, last;
    std::size_t neighbours;
    double fluxShare;
};
constexpr PatternRound kPatternRounds[] = {{2, 10, 5, 0.8}, {10, 30, 5, 0.8}, {2, 70, 8, 0.45}};
constexpr std::size_t kMostStars = 70;  // the last round's

// What a search spends is counted, not timed, so that it comes to the same on any machine. The unit is the
// look at one pattern, half a microsecond or so.
constexpr double kHearing = 12;     // what else a proposal costs that is held against the stars around it
constexpr double kSolving = 900;    // one that is solved as a plate
constexpr double kSolvingStar = 1;  // for each catalogue star of that plate
constexpr double kSpentAtOneScale = 2e6;  // at one scale; images with a place in the sky need a twentieth
constexpr double kSpentAtAnyScale = 5e6;
constexpr double kSpentInTheEnd = 0.1;  // share of it kept for the likeliest of what was put off

constexpr std::size_t kFewestCandidates = 4;    // for neighbours, and two for each star that is brighter
constexpr double kBluntest = 0.02;              // error of a shape that tells too little
constexpr double kMelting = 6;                  // distance of separate stars in units of the position error
constexpr std::size_t kWitnesses = 18;          // stars around a pattern that speak for it or against it
constexpr std::size_t kHopelessWitnesses = 10;  // a proposal without a hit among so many is dropped
constexpr int kFainterTenths = 12;              // tested stars may be so much fainter than the pattern's
constexpr double kFainterDensity = 8;           // by which factor such stars are at most more numerous
constexpr double kUnluckyProposal = 1e-5;       // proposals that chance alone would let pass to the verdict
constexpr double kPromising = 0.02;             // proposals so rare among those considered are solved at once
constexpr double kHeardOut = 4000;          // so many proposals are worth the time that a full hearing takes
constexpr std::size_t kSolvedAtMost = 300;  // a few hundredths of a second for each hundred
constexpr double kFoundTolerance = 0.03;    // by which a proposal's scale may be off (natural logarithm)

/// Probability of so many hits or more when chance makes `expected` on average.
double poissonTail(std::size_t hits, double expected) {
    double term = std::exp(-expected);
    for (std::size_t k = 1; k <= hits; ++k) term *= expected / static_cast<double>(k);
    double tail = 0;
    for (std::size_t k = hits; k < hits + 60; ++k) {
        tail += term;
        term *= expected / static_cast<double>(k + 1);
    }
    return tail;
}

/// Of the angle in degrees, for comparisons: beyond 180 every direction is in reach.
double cosineOf(double angle) { return angle >= 180 ? -2 : std::cos(angle * kDegree); }

/// How far the search for an image has gone.
struct Effort {
    double considered = 0;  ///< proposals so far: the verdict pays for them
    double spent = 0;
};

class WideSearch {
  public:
    WideSearch(const PlateGeometry& geometry, std::span<const ImageStar> stars, const StarPatterns& patterns,
               const StarCatalog& catalog, const WideSettings& settings, Effort& effort)
        : geometry_(geometry),
          stars_(stars),
          patterns_(patterns),
          catalog_(catalog),
          settings_(settings),
          effort_(effort),
          pixel_(std::sqrt(geometry.scaleX * geometry.scaleY) * kArcsecond),
          error_(1.5 * geometry.positionError()),
          distortion_(geometry.lensError()),
          start_(sky::direction(settings.start.ra * kDegree, settings.start.dec * kDegree)),
          leastCosine_(cosineOf(settings.radiusDeg + geometry.diagonalDeg())),
          image_(pointsOf(stars.first(std::min(stars.size(), 2 * kMostStars)))) {
        for (std::size_t i = 0; i < image_.points().size(); ++i) camera_.push_back(inCamera(i, 1));
    }

    /// Until so much is spent.
    std::optional<WideSolution> run(const PatternRound& round, double spentAtMost) {
        spentAtMost_ = effort_.spent + (1 - kSpentInTheEnd) * (spentAtMost - effort_.spent);
        for (std::size_t star = round.first; star < std::min(round.last, camera_.size()); ++star) {
            if (givenUp()) return std::nullopt;
            if (auto solution = tryStar(star, round)) return solution;
        }
        spentAtMost_ = spentAtMost;
        return solveLikeliest();
    }

  private:
    struct Proposal {
        Attitude attitude;  ///< against the ICRS
        PixelPosition anchor;
        double size = 0;  ///< of the triangle, pixels
        double chance = 1;
    };

    bool givenUp() const { return settings_.givenUp && settings_.givenUp(); }
    bool exhausted() const { return solved_ > kSolvedAtMost || effort_.spent >= spentAtMost_; }

    Vector3 inCamera(std::size_t star, double stretch) const {
        const PixelPosition c = geometry_.centre();
        return sky::normalized({(stars_[star].x - c.x) * geometry_.scaleX * kArcsecond * stretch,
                                (stars_[star].y - c.y) * geometry_.scaleY * kArcsecond * stretch, 1});
    }

    double pixelsBetween(std::size_t a, std::size_t b) const {
        return std::hypot(stars_[a].x - stars_[b].x, stars_[a].y - stars_[b].y);
    }

    /// The nearest of the image stars up to `last` that reach the flux, not closer than stars melt together.
    std::vector<std::size_t> starsNear(std::size_t star, std::size_t last, double flux,
                                       std::size_t most) const {
        std::vector<std::pair<double, std::size_t>> near;
        for (std::size_t i = 0; i < std::min(camera_.size(), last); ++i) {
            if (i == star || stars_[i].flux < flux) continue;
            const double distance = pixelsBetween(star, i);
            if (distance > kMelting * error_) near.emplace_back(distance, i);
        }
        most = std::min(near.size(), most);
        std::partial_sort(near.begin(), near.begin() + static_cast<std::ptrdiff_t>(most), near.end());
        std::vector<std::size_t> result;
        for (std::size_t i = 0; i < most; ++i) result.push_back(near[i].second);
        return result;
    }

    std::optional<WideSolution> tryStar(std::size_t star, const PatternRound& round) {
        if (exhausted()) return std::nullopt;
        const auto near = starsNear(star, kFewestCandidates + 2 * star, round.fluxShare * stars_[star].flux,
                                    round.neighbours);
        witnesses_ = starsNear(star, std::max(kWitnesses, kFewestCandidates + 2 * star), 0, kWitnesses);
        std::sort(witnesses_.begin(), witnesses_.end());  // brightest first
        for (std::size_t j = 1; j < near.size(); ++j) {
            for (std::size_t i = 0; i < j; ++i) {
                if (auto solution = tryTriangle({star, near[i], near[j]})) return solution;
                if (exhausted()) return std::nullopt;
            }
        }
        return std::nullopt;
    }

    using Corners = std::array<std::size_t, 3>;  // the star, its near and its far neighbour

    std::optional<WideSolution> tryTriangle(const Corners& image) {
        const auto chord = [&](std::size_t a, std::size_t b) {
            const Vector3& p = camera_[image[a]];
            const Vector3& q = camera_[image[b]];
            return static_cast<float>(std::hypot(p[0] - q[0], p[1] - q[1], p[2] - q[2]));
        };
        const float toNear = chord(0, 1);
        const float toFar = chord(0, 2);
        Corners corners = image;
        if (toFar < toNear) std::swap(corners[1], corners[2]);
        const auto shape = PatternShape::of(std::min(toNear, toFar), std::max(toNear, toFar), chord(1, 2));
        const auto reach =
            static_cast<float>(error_ * pixel_ / static_cast<double>(shape.size) + 0.4 * distortion_);
        if (static_cast<double>(reach) > kBluntest) return std::nullopt;
        const auto tolerance = static_cast<float>(settings_.scaleTolerance);
        std::optional<WideSolution> solution;
        patterns_.visitAlike(shape, reach, shape.size * (1 - tolerance), shape.size / (1 - tolerance),
                             [&](const StarPatterns::Match& sky, const PatternShape& there) {
                                 solution =
                                     consider(corners, sky, static_cast<double>(there.size / shape.size));
                                 return !solution && !exhausted();
                             });
        return solution;
    }

    std::optional<WideSolution> consider(const Corners& image, const StarPatterns::Match& sky,
                                         double stretch) {
        const Vector3 star = patterns_.directionOf(sky.star);
        ++effort_.spent;
        if (sky::dot(star, start_) < leastCosine_) return std::nullopt;
        ++effort_.considered;
        Proposal proposal = proposalOf(image, sky, stretch);
        if (effort_.considered > kHeardOut && isContradicted(proposal, sky)) return std::nullopt;
        effort_.spent += kHearing;
        proposal.chance = chanceOf(proposal, image, sky);
        if (proposal.chance > kUnluckyProposal) return std::nullopt;
        if (proposal.chance * effort_.considered < kPromising) return solved(proposal);
        likely_.push_back(proposal);
        return std::nullopt;
    }

    Proposal proposalOf(const Corners& image, const StarPatterns::Match& sky, double stretch) const {
        // The star and its far neighbour come first: the longer side tells the attitude better.
        const Attitude attitude = Attitude::of(
            {inCamera(image[0], stretch), inCamera(image[2], stretch), inCamera(image[1], stretch)},
            {patterns_.directionOf(sky.star), patterns_.directionOf(sky.far),
             patterns_.directionOf(sky.near)},
            stretch);
        const ImageStar& a = stars_[image[0]];
        const ImageStar& b = stars_[image[2]];
        return {attitude, {(a.x + b.x) / 2, (a.y + b.y) / 2}, pixelsBetween(image[0], image[2])};
    }

    /// Pixels by which a star may miss its predicted place: errors of the triangle grow with the distance
    /// from it.
    double toleranceAt(const Proposal& proposal, double x, double y) const {
        const double away = std::hypot(x - proposal.anchor.x, y - proposal.anchor.y);
        return error_ * (1 + away / proposal.size) + distortion_ * away;
    }

    /// Whether those of the star's brighter neighbours that made no part of the pattern should show in the
    /// image and none does. Rules out nearly all false proposals at little cost.
    bool isContradicted(const Proposal& proposal, const StarPatterns::Match& sky) const {
        const sky::Matrix3 toCamera = sky::transposed(proposal.attitude.toSky);
        const double pixel = pixel_ * proposal.attitude.stretch;
        const PixelPosition centre = geometry_.centre();
        bool expected = false;
        for (const std::uint32_t other : patterns_.stars()[sky.star].brighter) {
            if (other == PatternStar::kNone || other == sky.near || other == sky.far) continue;
            const Vector3 seen = toCamera * patterns_.directionOf(other);
            if (seen[2] < 0.1) continue;
            const double x = centre.x + seen[0] / seen[2] / pixel;
            const double y = centre.y + seen[1] / seen[2] / pixel * proposal.attitude.hand;
            if (x < 0 || y < 0 || x > geometry_.width - 1 || y > geometry_.height - 1) continue;
            if (image_.nearest({x, y}, toleranceAt(proposal, x, y)) >= 0) return false;
            expected = true;
        }
        return expected;
    }

    /// How likely chance puts as many of the image stars around the pattern onto stars of the sky.
    double chanceOf(const Proposal& proposal, const Corners& image, const StarPatterns::Match& sky) const {
        const PatternStar& faintest = patterns_.stars()[sky.star];
        const int limit = faintest.tenths + kFainterTenths;
        // The farthest of the star's brighter neighbours tells how densely such stars stand.
        const std::uint32_t farthest = faintest.brighter.back();
        const double spacing =
            chordLength(patterns_.directionOf(sky.star),
                        patterns_.directionOf(farthest == PatternStar::kNone ? sky.far : farthest));
        const double density =
            std::min(kFainterDensity * PatternStar::kNeighbours / (std::numbers::pi * spacing * spacing),
                     patterns_.highestDensity());
        const double pixel = pixel_ * proposal.attitude.stretch;
        std::vector<std::uint32_t> hits;
        std::size_t missed = 0;
        double expected = 0;
        for (const std::size_t i : witnesses_) {
            if (i == image[1] || i == image[2]) continue;
            const double radius = toleranceAt(proposal, stars_[i].x, stars_[i].y) * pixel;
            expected += density * std::numbers::pi * radius * radius;
            const auto hit = patterns_.starAt(proposal.attitude.skyOf(inCamera(i, proposal.attitude.stretch)),
                                              radius, limit);
            if (hit == PatternStar::kNone) {
                if (++missed >= kHopelessWitnesses && hits.empty()) return 1;
            } else if (hit != sky.star && hit != sky.near && hit != sky.far &&
                       std::find(hits.begin(), hits.end(), hit) == hits.end()) {
                hits.push_back(hit);
            }
        }
        return hits.size() < 2 ? 1 : poissonTail(hits.size(), expected);
    }

    static double chordLength(const Vector3& a, const Vector3& b) {
        return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
    }

    std::optional<WideSolution> solveLikeliest() {
        std::sort(likely_.begin(), likely_.end(),
                  [](const Proposal& a, const Proposal& b) { return a.chance < b.chance; });
        for (std::size_t i = 0; i < likely_.size() && !exhausted() && !givenUp(); ++i) {
            if (auto solution = solved(likely_[i])) return solution;
        }
        likely_.clear();
        return std::nullopt;
    }

    std::optional<WideSolution> solved(const Proposal& proposal) {
        ++solved_;
        PlateGeometry geometry = geometry_;
        geometry.scaleX *= proposal.attitude.stretch;
        geometry.scaleY *= proposal.attitude.stretch;
        const SearchArea area = searchArea(geometry, proposal.attitude.centre(), 0, stars_.size());
        const auto around = catalog_.cone(area.query(settings_.epochYear, 99));
        effort_.spent += kSolving + kSolvingStar * static_cast<double>(around.size());
        const PlateField field(geometry, stars_, around);
        Attitude attitude = proposal.attitude;
        attitude.stretch = 1;
        RefinementSettings refinement;
        refinement.anchor = proposal.anchor;
        refinement.anchorRadius = 2 * proposal.size;
        refinement.firstTolerance = std::max(
            2 * error_, 1.2 * toleranceAt(proposal, proposal.anchor.x + proposal.size, proposal.anchor.y));
        const auto plate = refinePlate(field, attitude.model(geometry), refinement);
        if (!plate || !isPlausible(plate->model, geometry, kFoundTolerance) ||
            plate->chanceLog10 + std::log10(std::max(1.0, effort_.considered)) > settings_.chanceLimitLog10)
            return std::nullopt;
        const SolvedPlate solution = finishedPlate(field, *plate, 0);
        if (sky::separationDeg(solution.centre, settings_.start) > settings_.radiusDeg) return std::nullopt;
        return WideSolution{solution, geometry};
    }

    PlateGeometry geometry_;
    std::span<const ImageStar> stars_;
    const StarPatterns& patterns_;
    const StarCatalog& catalog_;
    const WideSettings& settings_;
    Effort& effort_;
    double spentAtMost_ = 0;  ///< at this stage of the search
    double pixel_;            ///< radians
    double error_;            ///< of a star's place in the image, pixels, generously
    double distortion_;       ///< relative error of lengths
    Vector3 start_;
    double leastCosine_;                  ///< of what is in reach from the start
    StarGrid image_;                      ///< the brightest of the stars
    std::vector<Vector3> camera_;         ///< the same as directions
    std::vector<std::size_t> witnesses_;  ///< around the star at hand
    std::vector<Proposal> likely_;
    std::size_t solved_ = 0;
};

}  // namespace

std::optional<WideSolution> searchWide(const PlateGeometry& geometry, std::span<const ImageStar> imageStars,
                                       const StarPatterns& patterns, const StarCatalog& catalog,
                                       const WideSettings& settings) {
    Effort effort;
    WideSearch search(geometry, imageStars, patterns, catalog, settings, effort);
    for (const PatternRound& round : kPatternRounds) {
        if (auto found = search.run(round, kSpentAtOneScale)) return found;
    }
    return std::nullopt;
}

std::optional<WideSolution> searchWideAnyScale(const PlateGeometry& geometry,
                                               std::span<const ImageStar> imageStars,
                                               const StarPatterns& patterns, const StarCatalog& catalog,
                                               const WideSettings& settings) {
    constexpr double kNarrowestDeg = 0.3;  // fields of view
    constexpr double kWidestDeg = 30;
    constexpr double kStep = 1.3;  // within the tolerance of 0.15 on either side
    WideSettings within = settings;
    within.scaleTolerance = 0.15;
    std::vector<PlateGeometry> guesses;
    for (double width = kNarrowestDeg; width < kWidestDeg; width *= kStep) {
        PlateGeometry guess = geometry;
        guess.scaleX = 2 * std::tan(width * std::sqrt(kStep) / 2 * kDegree) / geometry.width / kArcsecond;
        guess.scaleY = guess.scaleX;
        guesses.push_back(guess);
    }
    Effort effort;
    for (const PatternRound& round : kPatternRounds) {
        // Every width gets its share; what narrow fields leave of theirs goes to the wider ones.
        auto left = static_cast<double>(guesses.size());
        for (const PlateGeometry& guess : guesses) {
            const double share = (kSpentAtAnyScale - effort.spent) / left--;
            WideSearch search(guess, imageStars, patterns, catalog, within, effort);
            if (auto found = search.run(round, effort.spent + share)) return found;
        }
    }
    return std::nullopt;
}

}  // namespace vantrel::solver
