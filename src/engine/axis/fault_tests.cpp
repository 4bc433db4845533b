#include "engine/axis/fault_tests.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include <Eigen/Cholesky>
#include <Eigen/Eigenvalues>
#include <Eigen/Geometry>

#include "engine/axis/chi_square.h"

namespace vantrel::engine {
namespace {

using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::Vector3d;
using Eigen::VectorXd;

constexpr double kFalseAlarm = 0.01;   // for all tests together
constexpr double kNineOfTen = 1.2816;  // sigmas, one-sided

/// Which plates a fault touches.
struct Reach {
    std::size_t first;  // index
    bool lasting;

    bool includes(std::size_t plate) const { return lasting ? plate >= first : plate == first; }
};

/// What a fault of one radian does to the observations, divided by their sigmas; several columns for a fault
/// with several directions.
class Patterns {
  public:
    Patterns(const std::vector<Sighting>& sightings, const RotationFit& fit)
        : sightings_(sightings), fit_(fit) {}

    MatrixXd of(Fault fault, const Reach& reach) const {
        const auto tangents = fit_.carriage().tangents();
        MatrixXd pattern = MatrixXd::Zero(fit_.layout().observations(), fault == Fault::kAxisMoved ? 2 : 1);
        for (std::size_t i = 0; i < sightings_.size(); ++i) {
            if (!reach.includes(i)) continue;
            const auto rows = fit_.layout().row(i);
            const auto put = [&](Index column, const Vector3d& values) {
                pattern.block(rows, column, sightings_[i].size(), 1) = sightings_[i].weighted(values);
            };
            const Eigen::Matrix3d frame = sightings_[i].frame(fit_.carriage().airExcess);
            if (fault == Fault::kDeclinationMoved) put(0, seenOf(declinationAxis(frame.col(2)), frame));
            if (fault == Fault::kCameraTurned) put(0, {0, 0, 1});
            if (fault == Fault::kAxisMoved) {
                put(0, seenOf(tangents.col(0), frame));
                put(1, seenOf(tangents.col(1), frame));
            }
            if (fault == Fault::kReadingDisagrees && sightings_[i].reading())
                pattern(*fit_.layout().readingRow(i), 0) = sightings_[i].weightedReading(1);
        }
        return pattern;
    }

  private:
    /// Turning about it leads towards the axis.
    Vector3d declinationAxis(const Vector3d& outwards) const {
        return outwards.cross(fit_.carriage().axis).normalized();
    }

    const std::vector<Sighting>& sightings_;
    const RotationFit& fit_;
};

/// All that can be told apart: what lasts from the second plate on is the first one's own fault, and what
/// lasts from the last is that one's own.
std::vector<Reach> reachesAmong(std::size_t plates) {
    std::vector<Reach> reaches;
    for (std::size_t i = 0; i < plates; ++i) reaches.push_back({i, false});
    for (std::size_t i = 2; i + 2 <= plates; ++i) reaches.push_back({i, true});
    return reaches;
}

/// Tests one pattern; empty where the fit explains it all by an axis.
std::optional<Suspicion> tested(const RotationFit& fit, const MatrixXd& pattern) {
    constexpr double kInvisible = 1e-8;  // share of the pattern that remains
    const MatrixXd remains = fit.unexplained(pattern);
    const MatrixXd information = pattern.transpose() * remains;
    const double weakest = Eigen::SelfAdjointEigenSolver<MatrixXd>(information).eigenvalues()(0);
    if (!(weakest > kInvisible * pattern.squaredNorm())) return std::nullopt;
    const VectorXd seen = remains.transpose() * fit.linearised().residuals;
    const VectorXd size = information.ldlt().solve(seen);
    Suspicion suspicion;
    suspicion.size = (size.size() == 1 ? size(0) : size.norm()) / kArcsecond;
    suspicion.statistic = size.dot(seen);
    suspicion.axisMove = (fit.axisMoves(pattern) * size).norm() / kArcsecond;
    suspicion.degreesOfFreedom = static_cast<int>(size.size());
    suspicion.smallestVisible =
        1 / std::sqrt(weakest) / kArcsecond;  // one sigma; setLimits makes it nine of ten
    return suspicion;
}

/// Each gets its part of the chance of a false alarm.
void setLimits(std::vector<Suspicion>& suspicions) {
    const double share = kFalseAlarm / static_cast<double>(std::max<std::size_t>(1, suspicions.size()));
    const std::array limits{chiSquareLimit(share, 1), chiSquareLimit(share, 2)};
    for (Suspicion& s : suspicions) {
        s.limit = limits[static_cast<std::size_t>(s.degreesOfFreedom - 1)];
        s.smallestVisible *= std::sqrt(s.limit) + kNineOfTen;
    }
}

}  // namespace

std::vector<Suspicion> testedFaults(const std::vector<Sighting>& sightings, const RotationFit& fit) {
    std::vector<Suspicion> suspicions;
    const Patterns patterns(sightings, fit);
    const auto add = [&](Fault fault, const Reach& reach) {
        auto suspicion = tested(fit, patterns.of(fault, reach));
        if (!suspicion) return;
        suspicion->fault = fault;
        suspicion->plate = static_cast<int>(reach.first) + 1;
        suspicion->lasting = reach.lasting;
        suspicions.push_back(*suspicion);
    };
    for (const Fault fault : {Fault::kDeclinationMoved, Fault::kReadingDisagrees, Fault::kCameraTurned}) {
        for (const Reach& reach : reachesAmong(sightings.size())) add(fault, reach);
    }
    for (std::size_t i = 1; i < sightings.size(); ++i) add(Fault::kAxisMoved, {i, true});
    setLimits(suspicions);
    return suspicions;
}

double hiddenMove(const std::vector<Sighting>& sightings, const RotationFit& fit,
                  const std::vector<Suspicion>& tested) {
    const Patterns patterns(sightings, fit);
    double farthest = 0;
    for (const Reach& reach : reachesAmong(sightings.size())) {
        const bool noticed = std::any_of(tested.begin(), tested.end(), [&](const Suspicion& s) {
            return s.fault == Fault::kDeclinationMoved && s.plate == static_cast<int>(reach.first) + 1 &&
                   s.lasting == reach.lasting && s.smallestVisible <= kTypicalJump;
        });
        if (noticed) continue;
        const MatrixXd pattern = patterns.of(Fault::kDeclinationMoved, reach);
        farthest = std::max(farthest, kTypicalJump * fit.axisMoves(pattern).norm());
    }
    return farthest;
}

}  // namespace vantrel::engine
