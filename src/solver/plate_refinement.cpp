#include "solver/plate_refinement.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "solver/match_verdict.h"
#include "solver/star_weights.h"

namespace vantrel::solver {

namespace {

constexpr std::size_t kFewestPairs = 4;  // one more than makes a model
constexpr int kRefinements = 7;          // the tolerance shrinks to 0.6 of itself a round at most
constexpr double kLeastTolerance = 0.8;  // pixels
constexpr double kWidening = 1.4;        // how much wider than told an image may prove to be

struct Match {
    StarPair pair;
    std::size_t imageIndex = 0;
    std::size_t catalogueIndex = 0;
    double distance = 0;  ///< pixels between prediction and image star
};

struct Matching {
    std::vector<Match> matches;
    std::vector<PredictedStar> predicted;  ///< all catalogue stars inside of the image
};

class Refiner {
  public:
    Refiner(const PlateField& field, const RefinementSettings& settings)
        : field_(field),
          settings_(settings),
          geometry_(field.geometry()),
          used_(std::min(settings.imageStars, field.imageCount())),
          image_(firstPoints(field, used_)),
          leastCosine_(std::cos(std::min(kWidening * geometry_.diagonalDeg() / 2, 90.0) * sky::kDegree)) {}

    std::optional<RefinedPlate> run(PlateModel model) const {
        double tolerance = settings_.firstTolerance;
        double used = tolerance;
        double reach = settings_.anchorRadius;
        double excess = geometry_.catalogueError();
        Matching found;
        for (int round = 0; round < kRefinements; ++round) {
            found = match(model, tolerance, reach);
            used = tolerance;
            weigh(found.matches, excess);
            const auto better = fitted(model, found.matches);
            if (!better) return std::nullopt;
            model = better->model;
            if (settings_.weighted) excess = excessOf(model, found.matches);
            const double rms = better->rms;
            const double floor = std::max(kLeastTolerance, 1.5 * geometry_.positionError());
            tolerance = std::clamp(std::max(2.5 * rms, 0.6 * tolerance),
                                   std::min(floor, settings_.firstTolerance), settings_.firstTolerance);
            if (settings_.maximumResidualArcsec > 0) {
                tolerance = std::min(tolerance, settings_.maximumResidualArcsec / geometry_.scaleX);
            }
            reach *= 1.8;
        }
        return judged(model, found, used);
    }

  private:
    struct Fit {
        PlateModel model;
        double rms = 0;     ///< pixels, per star
        double misfit = 0;  ///< mean square by weight, per degree of freedom
    };

    static StarGrid firstPoints(const PlateField& field, std::size_t count) {
        const auto& all = field.image().points();
        return StarGrid({all.begin(), all.begin() + static_cast<std::ptrdiff_t>(count)});
    }

    Matching match(const PlateModel& model, double tolerance, double reach) const {
        Matching result;
        std::vector<int> taken(used_, -1);
        const bool everywhere = reach > geometry_.width + geometry_.height;
        const sky::SkyPosition middle = model.toSky(geometry_.centre());
        const sky::Vector3 ahead = sky::direction(middle.ra * sky::kDegree, middle.dec * sky::kDegree);
        for (std::size_t i = 0; i < field_.catalogue().size(); ++i) {
            const sky::Vector3& star = field_.catalogue()[i];
            if (sky::dot(star, ahead) < leastCosine_) continue;
            const auto at = model.toPixel(star);
            if (!at || at->x < 0 || at->y < 0 || at->x > geometry_.width - 1 || at->y > geometry_.height - 1)
                continue;
            result.predicted.emplace_back();
            if (!everywhere && std::hypot(at->x - settings_.anchor.x, at->y - settings_.anchor.y) > reach)
                continue;
            const int nearest = image_.nearest({at->x, at->y}, tolerance);
            if (nearest < 0) continue;
            const auto index = static_cast<std::size_t>(nearest);
            const Match candidate{{field_.pixel(index), star},
                                  index,
                                  i,
                                  std::hypot(at->x - field_.pixel(index).x, at->y - field_.pixel(index).y)};
            if (taken[index] >= 0) {
                Match& former = result.matches[static_cast<std::size_t>(taken[index])];
                if (candidate.distance < former.distance) former = candidate;
                continue;
            }
            taken[index] = static_cast<int>(result.matches.size());
            result.matches.push_back(candidate);
            result.predicted.back().imageRank = nearest;
        }
        return result;
    }

    /// Errors that the stars' places don't account for are all stars' alike.
    void weigh(std::vector<Match>& matches, double excess) const {
        if (!settings_.weighted) return;
        for (Match& m : matches) {
            const double error = field_.placeError(m.imageIndex);
            m.pair.weight = 1 / (error * error + excess * excess);
        }
    }

    double excessOf(const PlateModel& model, const std::vector<Match>& matches) const {
        std::vector<WeighedResidual> residuals;
        residuals.reserve(matches.size());
        for (const Match& m : matches)
            if (const auto at = model.toPixel(m.pair.sky))
                residuals.push_back({std::hypot(at->x - m.pair.pixel.x, at->y - m.pair.pixel.y),
                                     field_.placeError(m.imageIndex)});
        return excessError(residuals, PlateModel::coefficientCount(model.order()),
                           geometry_.catalogueError());
    }

    std::optional<Fit> fitted(const PlateModel& model, const std::vector<Match>& matches) const {
        std::vector<StarPair> pairs;
        pairs.reserve(matches.size());
        for (const Match& m : matches) pairs.push_back(m.pair);
        if (pairs.size() < kFewestPairs) return std::nullopt;
        auto best = fitOrder(model, pairs, 1);
        // The fewer the stars, the more must a higher order improve on the variance to be believed.
        const double worthwhile = 1 - std::min(0.5, 8.0 / static_cast<double>(pairs.size()));
        for (int order = 2; best && order <= settings_.highestOrder; ++order) {
            if (pairs.size() < 2 * PlateModel::coefficientCount(order)) break;
            const auto higher = fitOrder(model, pairs, order);
            if (higher && higher->misfit < worthwhile * best->misfit) best = higher;
        }
        return best;
    }

    /// Fits about the tangent point and once more about where the image's centre then proves to be.
    std::optional<Fit> fitOrder(const PlateModel& model, const std::vector<StarPair>& pairs,
                                int order) const {
        const double unit = (geometry_.width + geometry_.height) / 4;
        sky::SkyPosition tangent = model.toSky(geometry_.centre());
        auto better = PlateModel::fit(pairs, geometry_.centre(), tangent, unit, order);
        if (!better) return std::nullopt;
        tangent = better->toSky(geometry_.centre());
        better = PlateModel::fit(pairs, geometry_.centre(), tangent, unit, order);
        if (!better) return std::nullopt;
        double squares = 0;
        double weighted = 0;
        for (const StarPair& pair : pairs) {
            const auto at = better->toPixel(pair.sky);
            if (!at) return std::nullopt;
            const double square = (at->x - pair.pixel.x) * (at->x - pair.pixel.x) +
                                  (at->y - pair.pixel.y) * (at->y - pair.pixel.y);
            squares += square;
            weighted += pair.weight * square;
        }
        const double freedom =
            static_cast<double>(pairs.size()) - static_cast<double>(PlateModel::coefficientCount(order));
        return Fit{*better, std::sqrt(squares / std::max(freedom, 0.5)), weighted / std::max(freedom, 0.5)};
    }

    PlateErrors errorsOf(const PlateModel& model, const std::vector<Match>& matches) const {
        std::vector<StarPair> pairs;
        pairs.reserve(matches.size());
        for (const Match& m : matches) pairs.push_back(m.pair);
        return model.errors(pairs);
    }

    RefinedPlate judged(const PlateModel& model, const Matching& found, double tolerance) const {
        RefinedPlate plate{model};
        plate.matched = found.matches.size();
        plate.pairs.reserve(found.matches.size());
        double squares = 0;
        double arcsec = 0;
        for (const Match& m : found.matches) {
            plate.pairs.push_back({m.imageIndex, m.catalogueIndex, m.pair.weight});
            const sky::SkyPosition shown = model.toSky(m.pair.pixel);
            const double distance =
                sky::separation(sky::direction(shown.ra * sky::kDegree, shown.dec * sky::kDegree),
                                m.pair.sky) *
                3600;
            arcsec += distance;
            squares += m.distance * m.distance;
        }
        const auto n = static_cast<double>(std::max<std::size_t>(1, found.matches.size()));
        plate.rmsPixels = std::sqrt(squares / n);
        if (settings_.weighted) plate.errors = errorsOf(model, found.matches);
        plate.meanResidualArcsec = arcsec / n;
        plate.explained =
            static_cast<double>(plate.matched) /
            static_cast<double>(std::max<std::size_t>(1, std::min(used_, found.predicted.size())));
        plate.chanceLog10 =
            chanceLog10(found.predicted, used_, tolerance, geometry_.width * geometry_.height);
        return plate;
    }

    const PlateField& field_;
    const RefinementSettings& settings_;
    const PlateGeometry& geometry_;
    std::size_t used_;
    StarGrid image_;
    double leastCosine_ = 0;  ///< of what can lie inside of the image, seen from its centre
};

}  // namespace

std::optional<RefinedPlate> refinePlate(const PlateField& field, const PlateModel& first,
                                        const RefinementSettings& settings) {
    return Refiner(field, settings).run(first);
}

}  // namespace vantrel::solver
