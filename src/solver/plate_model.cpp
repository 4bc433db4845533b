#include "solver/plate_model.h"

#include <cmath>

#include <Eigen/Dense>

namespace vantrel::solver {

namespace {

using sky::dot;
using sky::kDegree;
using sky::PixelPosition;
using sky::PlanePosition;
using sky::SkyPosition;

using Square = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, 0, 10, 10>;
using Column = Eigen::Matrix<double, Eigen::Dynamic, 1, 0, 10, 1>;

constexpr int kNewtonSteps = 8;  // each doubles the digits that are right

std::array<double, 10> terms(double u, double v) {
    return {1, u, v, u * u, u * v, v * v, u * u * u, u * u * v, u * v * v, v * v * v};
}

double product(const std::array<double, 10>& a, const std::array<double, 10>& b) {
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i) sum += a[i] * b[i];
    return sum;
}

/// Derivatives of a polynomial by u and by v.
std::array<double, 2> slope(const std::array<double, 10>& c, double u, double v) {
    return {c[1] + 2 * c[3] * u + c[4] * v + 3 * c[6] * u * u + 2 * c[7] * u * v + c[8] * v * v,
            c[2] + c[4] * u + 2 * c[5] * v + c[7] * u * u + 2 * c[8] * u * v + 3 * c[9] * v * v};
}

}  // namespace

TangentFrame::TangentFrame(SkyPosition centre)
    : centre_(centre), outwards_(sky::direction(centre.ra * kDegree, centre.dec * kDegree)) {
    east_ = {-std::sin(centre.ra * kDegree), std::cos(centre.ra * kDegree), 0};
    north_ = sky::cross(outwards_, east_);
}

std::optional<PlanePosition> TangentFrame::project(const sky::Vector3& direction) const {
    const double depth = dot(direction, outwards_);
    if (!(depth > 1e-9)) return std::nullopt;
    return PlanePosition{dot(direction, east_) / depth / kDegree, dot(direction, north_) / depth / kDegree};
}

std::optional<PlateModel> PlateModel::fit(std::span<const StarPair> pairs, PixelPosition imageCentre,
                                          SkyPosition tangentPoint, double unitPixels, int order) {
    const std::size_t count = coefficientCount(order);
    if (pairs.size() < count) return std::nullopt;
    using Columns = Eigen::Matrix<double, Eigen::Dynamic, 2, 0, 10, 2>;
    const auto n = static_cast<Eigen::Index>(count);
    Square normal = Square::Zero(n, n);
    Columns right = Columns::Zero(n, 2);
    PlateModel model(imageCentre, tangentPoint, unitPixels, order);
    for (const StarPair& pair : pairs) {
        const auto plane = model.frame_.project(pair.sky);
        if (!plane) return std::nullopt;
        const auto t =
            terms((pair.pixel.x - imageCentre.x) / unitPixels, (pair.pixel.y - imageCentre.y) / unitPixels);
        const Eigen::Map<const Eigen::VectorXd> row(t.data(), n);
        const Column weighted = pair.weight * row;
        normal.noalias() += weighted * row.transpose();
        right.col(0) += weighted * plane->xi;
        right.col(1) += weighted * plane->eta;
    }
    const Eigen::LDLT<Square> solver(normal);
    const auto diagonal = solver.vectorD();
    if (solver.info() != Eigen::Success || !(diagonal.minCoeff() > 1e-9 * diagonal.maxCoeff()))
        return std::nullopt;
    const Columns solution = solver.solve(right);

    for (std::size_t i = 0; i < count; ++i) {
        model.xi_[i] = solution(static_cast<Eigen::Index>(i), 0);
        model.eta_[i] = solution(static_cast<Eigen::Index>(i), 1);
    }
    return model;
}

PlateErrors PlateModel::errors(std::span<const StarPair> pairs) const {
    const auto n = static_cast<Eigen::Index>(coefficientCount(order_));
    Square normal = Square::Zero(n, n);
    for (const StarPair& pair : pairs) {
        const auto t = terms((pair.pixel.x - imageCentre_.x) / unitPixels_,
                             (pair.pixel.y - imageCentre_.y) / unitPixels_);
        const Eigen::Map<const Eigen::VectorXd> row(t.data(), n);
        const Column weighted = pair.weight * row;
        normal.noalias() += weighted * row.transpose();
    }
    const Square covariance = normal.inverse();  // of either coordinate, where a pixel is the unit
    const auto cd = matrix();
    const double pixelDeg = std::sqrt(std::abs(cd[0] * cd[3] - cd[1] * cd[2]));
    // The roll is that of the rotation nearest to the matrix: half of what its four elements turn by.
    const double turn = std::sqrt(covariance(1, 1) + covariance(2, 2)) / (2 * unitPixels_);
    return {std::sqrt(covariance(0, 0)) * pixelDeg * 3600, turn / kDegree};
}

PlateModel PlateModel::linear(PixelPosition imageCentre, SkyPosition tangentPoint, double unitPixels,
                              const std::array<double, 4>& cd) {
    PlateModel model(imageCentre, tangentPoint, unitPixels, 1);
    model.xi_[1] = cd[0] * unitPixels;
    model.xi_[2] = cd[1] * unitPixels;
    model.eta_[1] = cd[2] * unitPixels;
    model.eta_[2] = cd[3] * unitPixels;
    return model;
}

PlanePosition PlateModel::plane(double u, double v) const {
    const auto t = terms(u, v);
    return {product(xi_, t), product(eta_, t)};
}

SkyPosition PlateModel::toSky(PixelPosition pixel) const {
    return sky::fromTangentPlane(
        plane((pixel.x - imageCentre_.x) / unitPixels_, (pixel.y - imageCentre_.y) / unitPixels_),
        frame_.centre());
}

std::optional<PixelPosition> PlateModel::toPixel(const sky::Vector3& direction) const {
    const auto wanted = frame_.project(direction);
    if (!wanted) return std::nullopt;
    double u = 0;
    double v = 0;
    for (int step = 0; step < kNewtonSteps; ++step) {
        const PlanePosition here = plane(u, v);
        const auto a = slope(xi_, u, v);
        const auto b = slope(eta_, u, v);
        const double det = a[0] * b[1] - a[1] * b[0];
        if (det == 0) return std::nullopt;
        const double dXi = wanted->xi - here.xi;
        const double dEta = wanted->eta - here.eta;
        const double du = (b[1] * dXi - a[1] * dEta) / det;
        const double dv = (a[0] * dEta - b[0] * dXi) / det;
        u += du;
        v += dv;
        if (!(std::abs(u) < 10 && std::abs(v) < 10)) return std::nullopt;
        if (order_ == 1 || std::abs(du) + std::abs(dv) < 1e-9) break;
    }
    return PixelPosition{imageCentre_.x + u * unitPixels_, imageCentre_.y + v * unitPixels_};
}

std::array<double, 4> PlateModel::matrix() const {
    return {xi_[1] / unitPixels_, xi_[2] / unitPixels_, eta_[1] / unitPixels_, eta_[2] / unitPixels_};
}

std::pair<sky::SipPolynomial, sky::SipPolynomial> PlateModel::distortion() const {
    const auto cd = matrix();
    const double det = cd[0] * cd[3] - cd[1] * cd[2];
    std::pair<sky::SipPolynomial, sky::SipPolynomial> added{sky::SipPolynomial(order_),
                                                            sky::SipPolynomial(order_)};
    std::size_t i = coefficientCount(1);
    for (int degree = 2; degree <= order_; ++degree)
        for (int q = 0; q <= degree; ++q, ++i) {
            const double perPixels = 1 / (det * std::pow(unitPixels_, degree));
            added.first.at(degree - q, q) = (cd[3] * xi_[i] - cd[1] * eta_[i]) * perPixels;
            added.second.at(degree - q, q) = (cd[0] * eta_[i] - cd[2] * xi_[i]) * perPixels;
        }
    return added;
}

}  // namespace vantrel::solver
