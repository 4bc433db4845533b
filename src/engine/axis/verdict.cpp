#include "engine/axis/verdict.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include <Eigen/Geometry>

#include "engine/angles.h"
#include "engine/axis/axis_report.h"
#include "engine/axis/chi_square.h"
#include "engine/axis/fault_tests.h"
#include "engine/axis/rotation_fit.h"

namespace vantrel::engine {
namespace {

using Eigen::Vector3d;

constexpr double kFalseScatter = 0.001;  // chance of a false alarm
constexpr double kFar = 0.5;             // degrees

/// Natural logarithm of the chance that it is nothing.
double chanceOf(const Suspicion& s) { return logChiSquareTail(s.statistic, s.degreesOfFreedom); }

/// Most suspicious first. Those that are equally so come in the order of faults, the smaller first. Returns
/// how many are about as likely as the first.
std::size_t order(std::vector<Suspicion>& suspicions) {
    constexpr double kEqual = 1;    // difference of the logarithms
    constexpr double kSimilar = 3;  // 20 times less likely
    if (suspicions.empty()) return 0;
    std::sort(suspicions.begin(), suspicions.end(),
              [](const auto& a, const auto& b) { return chanceOf(a) < chanceOf(b); });
    const double best = chanceOf(suspicions.front());
    const auto within = [&](double difference) {
        return std::find_if(suspicions.begin(), suspicions.end(),
                            [&](const Suspicion& s) { return chanceOf(s) > best + difference; });
    };
    std::stable_sort(suspicions.begin(), within(kEqual), [](const auto& a, const auto& b) {
        return std::pair(a.fault, std::abs(a.size)) < std::pair(b.fault, std::abs(b.size));
    });
    return static_cast<std::size_t>(within(kSimilar) - suspicions.begin());
}

/// Degrees between a plate and where the mount's reading puts it, if the others are right.
double distanceFromMount(const Sighting& sighting, const Carriage& others) {
    const Eigen::AngleAxisd turn(others.zero - *sighting.reading(), others.axis);
    const Vector3d expected = turn * others.first.col(2);
    const Vector3d seen = sighting.frame(others.airExcess).col(2);
    return radiansToDegrees(std::atan2(seen.cross(expected).norm(), seen.dot(expected)));
}

/// The plate without which the others agree, if it is far away: a wrong solution, or a mount that is
/// elsewhere. Where several would do, the one that leaves the axis closest to the pole.
std::optional<Suspicion> farPlate(const std::vector<Sighting>& sightings, const RotationFit& fit,
                                  const Site& site) {
    if (sightings.size() < 3) return std::nullopt;
    std::optional<Suspicion> found;
    double closest = -1;  // cosine of the axis's distance from the pole
    for (std::size_t i = 0; i < sightings.size(); ++i) {
        auto rest = sightings;
        rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(i));
        if (!sightings[i].reading()) continue;
        const RotationFit others = RotationFit::of(rest, site);
        if (validityOf(others) != Validity::kValid || !others.layout().zero()) continue;
        const double chiSquare = others.linearised().chiSquare();
        if (chiSquareTail(chiSquare, others.degreesOfFreedom()) < kFalseScatter) continue;
        const double distance = distanceFromMount(sightings[i], others.carriage());
        const double polewards = others.carriage().axis.z();
        if (distance < kFar || polewards < closest) continue;
        closest = polewards;
        found = Suspicion{.fault = Fault::kFarFromMount,
                          .plate = static_cast<int>(i) + 1,
                          .size = distance * 3600,
                          .statistic = fit.linearised().chiSquare() - chiSquare,
                          .degreesOfFreedom = fit.degreesOfFreedom() - others.degreesOfFreedom(),
                          .smallestVisible = kFar * 3600};
        found->limit = chiSquareLimit(kFalseScatter, found->degreesOfFreedom);
    }
    return found;
}

/// The jump in declination that is about as likely as what the rolls speak for most, if that is more than
/// chance.
std::optional<Suspicion> hintOf(std::span<const Plate> plates, const Site& site, FitSettings settings) {
    if (!(settings.firmRollFloor < settings.rollFloor)) return std::nullopt;
    settings.rollFloor = settings.firmRollFloor;
    const auto sightings = sightingsOf(plates, site, settings);
    if (!sightings) return std::nullopt;
    const RotationFit fit = RotationFit::of(*sightings, site);
    if (validityOf(fit) != Validity::kValid) return std::nullopt;
    std::vector<Suspicion> suspicions = testedFaults(*sightings, fit);
    suspicions.resize(order(suspicions));
    const auto jump = std::ranges::find_if(suspicions, [](const Suspicion& s) {
        return s.fault == Fault::kDeclinationMoved && s.statistic > s.limit;
    });
    return jump == suspicions.end() ? std::nullopt : std::optional(*jump);
}

Suspicion scatterOf(const Verdict& verdict) {
    return {.fault = Fault::kScatter,
            .statistic = verdict.chiSquare,
            .degreesOfFreedom = verdict.degreesOfFreedom,
            .limit = verdict.chiSquareLimit};
}

}  // namespace

Verdict judge(std::span<const Plate> plates, const Site& site, const FitSettings& settings) {
    Verdict verdict;
    const auto sightings = sightingsOf(plates, site, settings);
    if (!sightings || sightings->size() < 2) return verdict;
    const RotationFit fit = RotationFit::of(*sightings, site);
    const bool valid = validityOf(fit) == Validity::kValid;
    verdict.chiSquare = fit.linearised().chiSquare();
    verdict.degreesOfFreedom = fit.degreesOfFreedom();
    if (valid) verdict.hiddenMove = hiddenMove(*sightings, fit, {});
    if (verdict.degreesOfFreedom <= 0) {
        verdict.agreement = valid ? Agreement::kUntestable : Agreement::kNoEstimate;
        return verdict;
    }
    verdict.chiSquareLimit = chiSquareLimit(kFalseScatter, verdict.degreesOfFreedom);
    const bool scattered = !valid || verdict.chiSquare > verdict.chiSquareLimit;

    if (scattered) {
        if (const auto far = farPlate(*sightings, fit, site)) {
            verdict.agreement = Agreement::kSuspicious;
            verdict.suspicions = {*far};
            verdict.likely = 1;
            return verdict;
        }
    }
    if (!valid) return verdict;
    verdict.suspicions = testedFaults(*sightings, fit);
    verdict.hiddenMove = hiddenMove(*sightings, fit, verdict.suspicions);
    verdict.likely = order(verdict.suspicions);
    const bool blamed = !verdict.suspicions.empty() &&
                        verdict.suspicions.front().statistic > verdict.suspicions.front().limit;
    if (scattered && !blamed) {
        verdict.suspicions.insert(verdict.suspicions.begin(), scatterOf(verdict));
        verdict.likely = 1;
    }
    verdict.agreement = blamed || scattered ? Agreement::kSuspicious : Agreement::kConsistent;
    if (verdict.agreement == Agreement::kConsistent) verdict.hint = hintOf(plates, site, settings);
    return verdict;
}

}  // namespace vantrel::engine
