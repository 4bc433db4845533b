#include "sky/cone.h"

#include <algorithm>
#include <cmath>

#include "sky/vector3.h"

namespace vantrel::sky {

namespace {

constexpr std::size_t kSmallestSurplus = 4096;  // stars kept beyond the number asked for

bool isBrighter(const CatalogStar& a, const CatalogStar& b) { return a.magnitude < b.magnitude; }

}  // namespace

double wrappedDeg(double deg) {
    const double turned = std::fmod(deg, 360.0);
    const double positive = turned < 0 ? turned + 360.0 : turned;
    return positive < 360.0 ? positive : 0.0;  // tiny negative angles round up to a full turn
}

double raReachDeg(double decDeg, double radiusDeg) {
    if (std::abs(decDeg) + radiusDeg >= 90) return 180;
    return std::asin(std::min(1.0, std::sin(radiusDeg * kDegree) / std::cos(decDeg * kDegree))) / kDegree;
}

bool isSearchable(const ConeQuery& query) {
    return query.radiusDeg >= 0 && std::isfinite(query.raDeg) && std::abs(query.decDeg) <= 90;
}

SkyCircle::SkyCircle(const ConeQuery& query)
    : raDeg_(query.raDeg),
      decDeg_(query.decDeg),
      decReachDeg_(query.radiusDeg * (1 + 1e-9)),
      cosDec_(std::cos(query.decDeg * kDegree)) {
    const double half = std::sin(std::min(query.radiusDeg, 180.0) * kDegree / 2);
    quarterChordSquared_ = half * half * (1 + 1e-12);
}

/// The haversine formula.
bool SkyCircle::holds(double raDeg, double decDeg) const {
    if (std::abs(decDeg - decDeg_) > decReachDeg_) return false;
    const double sinDec = std::sin((decDeg - decDeg_) * kDegree / 2);
    if (sinDec * sinDec > quarterChordSquared_) return false;
    const double sinRa = std::sin((raDeg - raDeg_) * kDegree / 2);
    return sinDec * sinDec + std::cos(decDeg * kDegree) * cosDec_ * sinRa * sinRa <= quarterChordSquared_;
}

ConeCollector::ConeCollector(const ConeQuery& query)
    : query_(query), circle_(query), faintest_(query.faintestMagnitude) {}

bool ConeCollector::wants(double magnitude) const {
    return magnitude >= query_.brightestMagnitude && magnitude <= faintest_;
}

void ConeCollector::offer(const MovingStar& star, double epochYear) {
    if (!wants(star.magnitude)) return;
    const bool moves = star.motionRaMas != 0 || star.motionDecMas != 0;
    const MovingStar now = moves ? carried(star, query_.epochYear - epochYear) : star;
    if (!circle_.holds(now.raDeg, now.decDeg)) return;
    stars_.push_back({now.raDeg, now.decDeg, now.magnitude, static_cast<float>(now.motionRaMas),
                      static_cast<float>(now.motionDecMas)});
    if (query_.maxStars > 0 && stars_.size() >= query_.maxStars + std::max(query_.maxStars, kSmallestSurplus))
        keepBrightest();
}

void ConeCollector::keepBrightest() {
    const auto last = stars_.begin() + static_cast<std::ptrdiff_t>(query_.maxStars);
    std::nth_element(stars_.begin(), last, stars_.end(), isBrighter);
    faintest_ = std::min(faintest_, last->magnitude);
    stars_.erase(last, stars_.end());
}

std::vector<CatalogStar> ConeCollector::take() {
    arrange(stars_, query_);
    return std::move(stars_);
}

void arrange(std::vector<CatalogStar>& stars, const ConeQuery& query) {
    if (query.brightestFirst || query.maxStars > 0) std::stable_sort(stars.begin(), stars.end(), isBrighter);
    if (query.maxStars > 0 && stars.size() > query.maxStars) stars.resize(query.maxStars);
}

}  // namespace vantrel::sky
