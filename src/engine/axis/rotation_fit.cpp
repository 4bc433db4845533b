#include "engine/axis/rotation_fit.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <Eigen/Eigenvalues>
#include <Eigen/Geometry>
#include <Eigen/QR>

#include "engine/angles.h"
#include "engine/axis/chi_square.h"

namespace vantrel::engine {
namespace {

using Eigen::Index;
using Eigen::Matrix3d;
using Eigen::MatrixXd;
using Eigen::Vector3d;
using Eigen::VectorXd;

/// The angle about the axis from one sighting to another: by the whole attitude where both tell it, which
/// holds on the axis too.
double turnBetween(const Sighting& from, const Sighting& to, const Vector3d& axis) {
    if (from.positionAngle() && to.positionAngle()) {
        const Eigen::Quaterniond turn(Matrix3d(to.attitude() * from.attitude().transpose()));
        return signedRadians(2 * std::atan2(turn.vec().dot(axis), turn.w()));
    }
    const Vector3d u = from.frame(0).col(2);
    const Vector3d v = to.frame(0).col(2);
    return std::atan2(axis.dot(u.cross(v)), u.dot(v) - axis.dot(u) * axis.dot(v));
}

Vector3d northern(const Vector3d& axis) { return axis.z() < 0 ? Vector3d(-axis) : axis; }

/// Normal of the plane that runs closest to the plates.
Vector3d normalOfPlane(const std::vector<Sighting>& sightings) {
    Vector3d mean = Vector3d::Zero();
    for (const Sighting& s : sightings) mean += s.frame(0).col(2) / static_cast<double>(sightings.size());
    Matrix3d scatter = Matrix3d::Zero();
    for (const Sighting& s : sightings) {
        const Vector3d offset = s.frame(0).col(2) - mean;
        scatter += offset * offset.transpose();
    }
    return Eigen::SelfAdjointEigenSolver<Matrix3d>(scatter).eigenvectors().col(0);
}

std::vector<Vector3d> firstIdeas(const std::vector<Sighting>& sightings) {
    std::vector<Vector3d> axes;
    if (sightings.size() >= 3) axes.push_back(northern(normalOfPlane(sightings)));
    const Sighting& first = sightings.front();
    const Sighting& last = sightings.back();
    if (first.positionAngle() && last.positionAngle()) {
        const Eigen::AngleAxisd turn(Matrix3d(last.attitude() * first.attitude().transpose()));
        axes.push_back(northern(turn.axis()));
    }
    axes.emplace_back(0, 0, 1);
    return axes;
}

}  // namespace

Layout::Layout(const std::vector<Sighting>& sightings, double airUncertainty) {
    bool hasReadings = false;
    bool hasAir = false;
    Index row = 0;
    for (const Sighting& s : sightings) {
        rows_.push_back(row);
        row += s.size();
        hasRoll_ = hasRoll_ || s.positionAngle();
        hasReadings = hasReadings || s.reading();
        hasAir = hasAir || s.lift().norm() > 0;
    }
    for (const Sighting& s : sightings)
        readingRows_.push_back(s.reading() ? std::optional(row++) : std::nullopt);
    unknowns_ = turn(sightings.size());
    if (hasReadings) zero_ = unknowns_++;
    if (hasAir && airUncertainty > 0) {
        air_ = unknowns_++;
        ++row;
    }
    observations_ = row;
}

Matrix3d Carriage::attitude(std::size_t plate) const { return rotation(turns[plate] * axis) * first; }

Eigen::Matrix<double, 3, 2> Carriage::tangents() const {
    Eigen::Matrix<double, 3, 2> tangents;
    tangents.col(0) = axis.unitOrthogonal();
    tangents.col(1) = axis.cross(tangents.col(0));
    return tangents;
}

Carriage carriageAbout(const Vector3d& axis, const std::vector<Sighting>& sightings) {
    Carriage carriage{.axis = axis, .first = sightings.front().attitude(), .turns = {}};
    std::optional<double> zero;
    double sum = 0;
    int readings = 0;
    for (const Sighting& s : sightings) {
        carriage.turns.push_back(turnBetween(sightings.front(), s, axis));
        if (!s.reading()) continue;
        const double here = *s.reading() + carriage.turns.back();
        if (!zero) zero = here;
        sum += signedRadians(here - *zero);
        ++readings;
    }
    if (zero) carriage.zero = *zero + sum / readings;
    return carriage;
}

RotationFit::RotationFit(const std::vector<Sighting>& sightings, const Site& site)
    : sightings_(sightings), airUncertainty_(site.air.uncertainty), layout_(sightings, airUncertainty_) {}

RotationFit RotationFit::of(const std::vector<Sighting>& sightings, const Site& site) {
    constexpr double kImprobable =
        1e-6;  // a fit so bad may stand in the wrong minimum: the next idea is tried
    std::optional<RotationFit> best;
    for (const Vector3d& axis : firstIdeas(sightings)) {
        RotationFit fit(sightings, site);
        fit.improve(carriageAbout(axis, sightings));
        const bool better = !best || (fit.converged() && !best->converged()) ||
                            (fit.converged() == best->converged() &&
                             fit.linearised().chiSquare() < best->linearised().chiSquare());
        if (better) best = std::move(fit);
        if (best->converged() &&
            chiSquareTail(best->linearised().chiSquare(), best->degreesOfFreedom()) > kImprobable)
            break;
    }
    return *std::move(best);
}

RotationFit RotationFit::at(const Carriage& carriage, const std::vector<Sighting>& sightings,
                            const Site& site) {
    RotationFit fit(sightings, site);
    fit.converged_ = true;
    fit.finish(carriage);
    return fit;
}

Linearised RotationFit::linearise(const Carriage& carriage) const {
    Linearised result{VectorXd::Zero(layout_.observations()),
                      MatrixXd::Zero(layout_.observations(), layout_.unknowns())};
    const auto tangents = carriage.tangents();
    const Matrix3d firstFrame = sightings_.front().frame(carriage.airExcess);
    for (std::size_t i = 0; i < sightings_.size(); ++i) {
        const Sighting& sighting = sightings_[i];
        const Matrix3d frame = sighting.frame(carriage.airExcess);
        const Matrix3d turn = rotation(carriage.turns[i] * carriage.axis);
        const Matrix3d attitude = turn * carriage.first;

        const Vector3d line = frame.transpose() * attitude.col(0);
        const Vector3d outwards = frame.transpose() * attitude.col(2);
        const double roll =
            signedRadians(sighting.positionAngle().value_or(0) - std::atan2(line.x(), line.y()));
        const Index row = layout_.row(i);
        result.residuals.segment(row, sighting.size()) =
            sighting.weighted({-outwards.x(), -outwards.y(), roll});

        const auto put = [&](Index column, const Vector3d& rotationVector) {
            result.jacobian.block(row, column, sighting.size(), 1) =
                sighting.weighted(seenOf(rotationVector, frame));
        };
        // A small turn k of the axis carries the camera along, but for what the turn about it undoes:
        // R(axis + k × axis) = K R K⁻¹.
        for (Index k = 0; k < 2; ++k) put(layout_.axis() + k, tangents.col(k) - turn * tangents.col(k));
        for (Index k = 0; k < layout_.pointingSize(); ++k)
            put(layout_.pointing() + k, turn * firstFrame.col(k));
        if (i > 0) put(layout_.turn(i), carriage.axis);
        if (layout_.air()) put(*layout_.air(), -sighting.lift());

        if (const auto readingRow = layout_.readingRow(i)) {
            result.residuals(*readingRow) = sighting.weightedReading(
                signedRadians(*sighting.reading() - carriage.zero + carriage.turns[i]));
            result.jacobian(*readingRow, *layout_.zero()) = sighting.weightedReading(1);
            if (i > 0) result.jacobian(*readingRow, layout_.turn(i)) = sighting.weightedReading(-1);
        }
    }
    if (layout_.air()) {
        result.residuals(layout_.airRow()) = -carriage.airExcess / airUncertainty_;
        result.jacobian(layout_.airRow(), *layout_.air()) = 1 / airUncertainty_;
    }
    return result;
}

Carriage RotationFit::moved(const Carriage& carriage, const VectorXd& step) const {
    Carriage result = carriage;
    result.axis = rotation(carriage.tangents() * step.segment<2>(layout_.axis())) * carriage.axis;
    result.axis.normalize();
    const Matrix3d frame = sightings_.front().frame(carriage.airExcess);
    const Vector3d pointing =
        frame.leftCols(layout_.pointingSize()) * step.segment(layout_.pointing(), layout_.pointingSize());
    result.first = rotation(pointing) * carriage.first;
    for (std::size_t i = 1; i < sightings_.size(); ++i) result.turns[i] += step(layout_.turn(i));
    if (layout_.zero()) result.zero += step(*layout_.zero());
    if (layout_.air()) result.airExcess += step(*layout_.air());
    return result;
}

/// Gauss-Newton; where a step makes matters worse, Levenberg's damping shortens the next. Columns are
/// scaled to length 1, so that damping and rank mean the same for all unknowns.
void RotationFit::improve(const Carriage& start) {
    constexpr int kSteps = 60;               // an end for what doesn't converge
    constexpr double kSettled = 1e-8;        // sigmas, of all observations together
    constexpr double kLeastDamping = 1e-10;  // less is none, in double precision
    constexpr double kMostDamping = 1e6;     // steps so short lead nowhere
    Carriage carriage = start;
    Linearised here = linearise(carriage);
    double damping = 0;
    for (int step = 0; step < kSteps && damping < kMostDamping && !converged_; ++step) {
        const VectorXd scales =
            here.jacobian.colwise().norm().cwiseMax(std::numeric_limits<double>::min()).transpose();
        const Index n = layout_.unknowns();
        MatrixXd damped = MatrixXd::Zero(layout_.observations() + n, n);
        damped.topRows(layout_.observations()) = here.jacobian * scales.cwiseInverse().asDiagonal();
        damped.bottomRows(n).diagonal().setConstant(std::sqrt(damping));
        VectorXd wanted = VectorXd::Zero(layout_.observations() + n);
        wanted.head(layout_.observations()) = here.residuals;
        const VectorXd change = damped.colPivHouseholderQr().solve(wanted).cwiseQuotient(scales);

        const bool settled = (here.jacobian * change).norm() < kSettled;
        const Carriage next = moved(carriage, change);
        Linearised there = linearise(next);
        if (settled || there.chiSquare() <= here.chiSquare()) {
            converged_ = settled && damping < kLeastDamping;
            carriage = next;
            here = std::move(there);
            damping = damping < 100 * kLeastDamping ? 0 : damping / 100;
        } else {
            damping = std::max(kLeastDamping, 10 * damping);
        }
    }
    finish(carriage);
}

void RotationFit::finish(const Carriage& carriage) {
    constexpr double kLeastPivot = 1e-11;  // of columns of length 1; rounding leaves some 1e-15
    carriage_ = carriage;
    linearised_ = linearise(carriage);
    const VectorXd scales =
        linearised_.jacobian.colwise().norm().cwiseMax(std::numeric_limits<double>::min()).transpose();
    Eigen::ColPivHouseholderQR<MatrixXd> solver;
    solver.setThreshold(kLeastPivot);
    solver.compute(linearised_.jacobian * scales.cwiseInverse().asDiagonal());
    determined_ = layout_.observations() >= layout_.unknowns() && solver.rank() == layout_.unknowns();
    inverse_ = scales.cwiseInverse().asDiagonal() *
               solver.solve(MatrixXd::Identity(layout_.observations(), layout_.observations()));
}

Eigen::Matrix3Xd RotationFit::axisMoves(const MatrixXd& change) const {
    // A rotation along a tangent moves the axis along the other one.
    const auto tangents = carriage_.tangents();
    Eigen::Matrix<double, 3, 2> moves;
    moves.col(0) = tangents.col(0).cross(carriage_.axis);
    moves.col(1) = tangents.col(1).cross(carriage_.axis);
    return moves * (inverse_.topRows(2) * change);
}

Matrix3d RotationFit::axisCovariance() const {
    const auto effect = axisMoves(MatrixXd::Identity(layout_.observations(), layout_.observations()));
    VectorXd sag = VectorXd::Zero(layout_.observations());
    for (std::size_t i = 0; i < sightings_.size(); ++i) {
        const Sighting& sighting = sightings_[i];
        sag.segment(layout_.row(i), sighting.size()) =
            sighting.weighted(seenOf(sighting.sag(), sighting.frame(carriage_.airExcess)));
    }
    const Vector3d bySag = axisMoves(sag);
    return effect * effect.transpose() + bySag * bySag.transpose();
}

MatrixXd RotationFit::unexplained(const MatrixXd& change) const {
    return change - linearised_.jacobian * (inverse_ * change);
}

}  // namespace vantrel::engine
