#include "solver/distortion_fit.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <vector>

#include <Eigen/Dense>

namespace vantrel::solver {

namespace {

using sky::PixelPosition;
using sky::SipPolynomial;

constexpr std::size_t kStarsPerCoefficient = 3;  // so that the fit can't follow single stars
constexpr double kLeastCover = 0.6;              // share of the image inside of the stars' hull
constexpr int kInverseOrdersMore = 2;  // the inverse of a polynomial is none; so much nearer does it come
constexpr std::size_t kParts = 5;      // one is left out of a fit in turn
constexpr double kDeviations = 3.5;    // standard ones, of a sign test
constexpr int kGrid = 24;              // places along each side at which the inverse is fitted

double turnOf(PixelPosition a, PixelPosition b, PixelPosition c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

/// Of the convex hull, by Andrew's monotone chain.
double hullArea(std::vector<PixelPosition> places) {
    std::sort(places.begin(), places.end(), [](const PixelPosition& a, const PixelPosition& b) {
        return a.x < b.x || (a.x == b.x && a.y < b.y);
    });
    double twice = 0;
    for (int side = 0; side < 2; ++side) {
        std::vector<PixelPosition> chain;
        for (const PixelPosition& place : places) {
            while (chain.size() > 1 && turnOf(chain[chain.size() - 2], chain.back(), place) <= 0)
                chain.pop_back();
            chain.push_back(place);
        }
        for (std::size_t i = 1; i < chain.size(); ++i)
            twice += chain[i - 1].x * chain[i].y - chain[i].x * chain[i - 1].y;
        std::reverse(places.begin(), places.end());
    }
    return twice / 2;
}

double coverOf(std::span<const StarPair> pairs, const PlateGeometry& geometry) {
    std::vector<PixelPosition> places;
    places.reserve(pairs.size());
    for (const StarPair& pair : pairs) places.push_back(pair.pixel);
    return hullArea(std::move(places)) / (geometry.width * geometry.height);
}

double distanceOf(const StarPair& pair, const PlateModel& model) {
    const auto at = model.toPixel(pair.sky);
    return at ? std::hypot(at->x - pair.pixel.x, at->y - pair.pixel.y) : INFINITY;
}

/// Whether the order foretells stars better than the linear model does: stars that it wasn't fitted to, by a
/// sign test of which of the two puts each star nearer. Neither a few stars beside their places, which a
/// polynomial gladly bends to, nor stars that are known less well than they claim pass for a distortion.
bool isProven(const PlateModel& model, std::span<const StarPair> pairs, const PlateGeometry& geometry) {
    const double unit = (geometry.width + geometry.height) / 4;
    double nearer = 0;
    for (std::size_t part = 0; part < kParts; ++part) {
        std::vector<StarPair> fitted;
        std::vector<StarPair> leftOut;
        for (std::size_t i = 0; i < pairs.size(); ++i)
            (i % kParts == part ? leftOut : fitted).push_back(pairs[i]);
        const auto modelOf = [&](int order) {
            return PlateModel::fit(fitted, geometry.centre(), model.tangentPoint(), unit, order);
        };
        const auto linear = modelOf(1);
        const auto higher = modelOf(model.order());
        if (!linear || !higher) return false;
        for (const StarPair& pair : leftOut) nearer += distanceOf(pair, *higher) < distanceOf(pair, *linear);
    }
    const auto stars = static_cast<double>(pairs.size());
    return nearer - stars / 2 > kDeviations * std::sqrt(stars) / 2;
}

/// The polynomials that lead back, by least squares over the image.
void addInverse(sky::SipDistortion& distortion, const PlateGeometry& geometry) {
    const int order = distortion.a.order() + kInverseOrdersMore;
    const double unit = (geometry.width + geometry.height) / 4;
    Eigen::MatrixXd terms(kGrid * kGrid, (order + 1) * (order + 2) / 2);
    Eigen::MatrixXd back(kGrid * kGrid, 2);
    for (int i = 0; i < kGrid * kGrid; ++i) {
        const int column = i % kGrid, row = i / kGrid;
        const double u = (column / (kGrid - 1.0) - 0.5) * (geometry.width - 1);
        const double v = (row / (kGrid - 1.0) - 0.5) * (geometry.height - 1);
        back(i, 0) = -distortion.a.value(u, v);
        back(i, 1) = -distortion.b.value(u, v);
        const double linearU = (u - back(i, 0)) / unit;
        const double linearV = (v - back(i, 1)) / unit;
        Eigen::Index term = 0;
        for (int degree = 0; degree <= order; ++degree)
            for (int q = 0; q <= degree; ++q)
                terms(i, term++) = std::pow(linearU, degree - q) * std::pow(linearV, q);
    }
    const Eigen::MatrixXd solution = terms.householderQr().solve(back);
    distortion.ap = distortion.bp = SipPolynomial(order);
    Eigen::Index term = 0;
    for (int degree = 0; degree <= order; ++degree)
        for (int q = 0; q <= degree; ++q, ++term) {
            distortion.ap.at(degree - q, q) = solution(term, 0) / std::pow(unit, degree);
            distortion.bp.at(degree - q, q) = solution(term, 1) / std::pow(unit, degree);
        }
}

}  // namespace

std::optional<sky::SipDistortion> provenDistortion(const PlateModel& model, std::span<const StarPair> pairs,
                                                   const PlateGeometry& geometry) {
    if (model.order() < 2 ||
        pairs.size() < kStarsPerCoefficient * PlateModel::coefficientCount(model.order()) ||
        coverOf(pairs, geometry) < kLeastCover || !isProven(model, pairs, geometry))
        return std::nullopt;
    sky::SipDistortion distortion;
    std::tie(distortion.a, distortion.b) = model.distortion();
    addInverse(distortion, geometry);
    return distortion;
}

}  // namespace vantrel::solver
