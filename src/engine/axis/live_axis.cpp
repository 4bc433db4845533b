#include "engine/axis/live_axis.h"

#include <cmath>

#include <Eigen/Cholesky>
#include <Eigen/Geometry>

#include "engine/angles.h"
#include "engine/axis/adjusters.h"

namespace vantrel::engine {
namespace {

using Eigen::Matrix3d;
using Eigen::Vector2d;
using Eigen::Vector3d;

/// Less than this the two adjusters can't be told apart: within about ten degrees of due east, due west and
/// the zenith.
constexpr double kLeastSeparability = 0.18;

/// Of a move along an adjuster's direction: what it may stray to the side, by bolts that aren't square.
constexpr double kStray = 0.1;

/// Nobody turns an adjuster so far between two plates.
constexpr double kFarthestTurn = 3 * kPi / 180;

Vector3d visibleEnd(const DirectionCosines& northernEnd, double hemisphere) {
    return hemisphere * Vector3d(northernEnd.l, northernEnd.m, northernEnd.N);
}

/// What a shift leaves beside a direction.
double aside(const Vector2d& shift, const Vector2d& direction) {
    const double length = direction.norm();
    if (length < 1e-9) return shift.norm();
    return std::abs(shift.x() * direction.y() - shift.y() * direction.x()) / length;
}

PlateCovariance sum(const PlateCovariance& a, const PlateCovariance& b) {
    return {a.eastEast + b.eastEast, a.eastNorth + b.eastNorth, a.northNorth + b.northNorth,
            a.rollRoll + b.rollRoll, a.eastRoll + b.eastRoll,   a.northRoll + b.northRoll};
}

}  // namespace

LiveAxis::LiveAxis(const MeasuredAxisPosition& measured, const Site& site, const LiveSettings& settings)
    : site_(site),
      settings_(settings),
      measured_(measured.covariance),
      hemisphere_(site.latitude < 0 ? -1 : 1),
      vertical_(-hemisphere_ * zenith(site.latitude)),
      end_(visibleEnd(measured.northernEnd, hemisphere_)) {}

std::optional<LiveReading> LiveAxis::follow(const Plate& plate, double lst) {
    const auto now = seen(plate, lst);
    if (!now) return std::nullopt;
    if (!reference_) {
        beginAt(*now);
        return readingAt(*now, LiveState::kFollowing);
    }
    const bool still = stayed(*previous_, *now);
    const LiveState state = judge(*now);
    previous_ = now;
    LiveReading reading = readingAt(*now, state);
    reading.still = still;
    return reading;
}

std::optional<LiveAxis::Seen> LiveAxis::seen(const Plate& plate, double lst) const {
    const auto sighting = Sighting::of(plate, site_, settings_.fit);
    if (!sighting || !std::isfinite(lst)) return std::nullopt;
    const double floor = settings_.fit.centreFloor;
    const double variance = (plate.covariance.eastEast + plate.covariance.northNorth) / 2 + floor * floor;
    return Seen{.sighting = *sighting,
                .attitude = sighting->attitude(),
                .lst = hoursToRadians(lst),
                .sigma = std::sqrt(variance) * kArcsecond,
                .plate = plate};
}

/// From here on turns are counted anew; the axis is where they had led.
void LiveAxis::beginAt(const Seen& reference) {
    end_ = axisAt(turns_);
    before_ += turns_.covariance;
    turns_ = {};
    const Vector3d level = end_.cross(zenith(site_.latitude));
    hinge_ = level.norm() > 1e-6 ? Vector3d(level.normalized()) : Vector3d(0, -hemisphere_, 0);
    reference_ = believed_ = previous_ = reference;
    steady_ = true;
    doubted_.reset();
    lost_.reset();
}

/// Also turns what was believed last, where that has changed.
LiveState LiveAxis::judge(const Seen& now) {
    if (lost_) return judgeLost(now);
    if (sentElsewhere(*previous_, now)) return lose(LiveState::kSlewed, now);
    if (!doubted_) return judgeWithoutDoubt(now);
    if (stayed(*believed_, now)) return believe(now, 0);  // the doubtful plate was wrong
    if (stayed(*doubted_, now)) {
        const double moved = move(*believed_, now).shift.norm();
        if (moved > kFarthestTurn) return lose(LiveState::kSlewed, now);
        return believe(now, byOneAdjuster(*believed_, now) ? 0 : moved / kArcsecond);
    }
    if (movedAs(!driven_, *doubted_, now)) {
        // Where in between it stopped, or started, nobody knows, nor what was turned before.
        const bool untouched = steady_ && movedAs(!driven_, *believed_, now);
        if (!driven_ || !known_) return goOnWith(!driven_, untouched, now);
        const LiveState state = lose(LiveState::kTrackingOff, now);
        touched_ = !untouched;
        return state;
    }
    return judgeWithoutDoubt(now);
}

LiveState LiveAxis::judgeWithoutDoubt(const Seen& now) {
    const bool plain =
        stayed(*believed_, now) || (byOneAdjuster(*believed_, now) && !driveMayHaveChanged(*believed_, now));
    if (plain) return believe(now, 0);
    doubted_ = now;
    return LiveState::kDoubtful;
}

LiveState LiveAxis::believe(const Seen& now, double jump) {
    steady_ = stayed(*believed_, now);
    known_ = known_ || tellsApart(move(*previous_, now), now);
    believed_ = now;
    doubted_.reset();
    turns_ = fitted(now);
    if (!locked_ && jump > 0) jump_ = jump;
    return jump_ > 0 ? LiveState::kJumped : LiveState::kFollowing;
}

LiveState LiveAxis::lose(LiveState reason, const Seen& now) {
    lost_ = reason;
    touched_ = false;
    previous_ = now;
    doubted_.reset();
    return reason;
}

/// What was turned until it was clear whether it tracks may be a bump as well.
LiveState LiveAxis::goOnWith(bool driven, bool untouched, const Seen& now) {
    driven_ = driven;
    known_ = true;
    const double jump = move(*believed_, now).shift.norm() / kArcsecond;
    beginAt(now);
    if (!untouched && !locked_) jump_ = jump;
    return jump_ > 0 ? LiveState::kJumped : LiveState::kFollowing;
}

/// Once it tracks again, the axis is taken to be where it was, unless it may have moved unseen.
LiveState LiveAxis::judgeLost(const Seen& now) {
    if (sentElsewhere(*previous_, now)) return lose(LiveState::kSlewed, now);
    if (stayed(*previous_, now)) {
        const double jump = move(*believed_, now).shift.norm() / kArcsecond;
        beginAt(now);
        if (touched_ && !locked_) jump_ = jump;
        return jump_ > 0 ? LiveState::kJumped : LiveState::kFollowing;
    }
    if (movedAs(!driven_, *previous_, now)) {
        if (!driven_ || !known_) return goOnWith(!driven_, !touched_, now);
        lost_ = LiveState::kTrackingOff;
    } else if (*lost_ == LiveState::kTrackingOff && !driveMayHaveChanged(*previous_, now))
        touched_ = true;
    return *lost_;
}

Vector3d LiveAxis::axisNow() const { return axisAt(turns_); }

Vector3d LiveAxis::axisAt(const Turns& turns) const { return turned(turns.values) * end_; }

Matrix3d LiveAxis::turned(const Vector3d& turns) const {
    if (!reference_) return Matrix3d::Identity();
    return rotation(turns(0) * vertical_) * rotation(turns(1) * hinge_);
}

Matrix3d LiveAxis::predicted(const Vector3d& turns, double lst) const {
    return turned(turns) * rotation(turns(2) * end_) *
           carried(*reference_, end_, signedRadians(lst - reference_->lst), driven_);
}

/// Gauss-Newton with the drive's angle held near none. A jump by degrees needs a few steps.
LiveAxis::Turns LiveAxis::fitted(const Seen& now) const {
    constexpr int kSteps = 8;  // twice what the largest jumps took
    Plate both = now.plate;
    both.covariance = sum(now.plate.covariance, reference_->plate.covariance);
    const double carriedOn = driven_ ? std::abs(signedRadians(now.lst - reference_->lst)) : 0;
    const double stated = measured_.sigma() * carriedOn;
    both.covariance = sum(both.covariance, PlateCovariance::ofSigmas(stated, 0));
    FitSettings settings = settings_.fit;
    settings.centreFloor *= std::sqrt(2.0);
    const Sighting sighting = Sighting::of(both, site_, settings).value_or(now.sighting);
    const Matrix3d frame = sighting.frame(0);
    const double driveSigma = settings_.driveSigma * kArcsecond;

    Turns result;
    result.values = turns_.values;
    for (int step = 0; step < kSteps; ++step) {
        const Matrix3d attitude = predicted(result.values, now.lst);
        const Vector3d line = frame.transpose() * attitude.col(0);
        const Vector3d outwards = frame.transpose() * attitude.col(2);
        const double roll =
            signedRadians(sighting.positionAngle().value_or(0) - std::atan2(line.x(), line.y()));
        const Eigen::VectorXd residuals = sighting.weighted({-outwards.x(), -outwards.y(), roll});
        const Matrix3d byAzimuth = rotation(result.values(0) * vertical_);
        Eigen::MatrixXd jacobian(sighting.size(), 3);
        jacobian.col(0) = sighting.weighted(seenOf(vertical_, frame));
        jacobian.col(1) = sighting.weighted(seenOf(byAzimuth * hinge_, frame));
        jacobian.col(2) = sighting.weighted(seenOf(axisAt(result), frame));
        Matrix3d normal = jacobian.transpose() * jacobian;
        Vector3d right = jacobian.transpose() * residuals;
        normal(2, 2) += 1 / (driveSigma * driveSigma);
        right(2) -= result.values(2) / (driveSigma * driveSigma);
        // Where both look alike, an angle of a radian is all that is known.
        normal.diagonal().head<2>().array() += 1;
        const Eigen::LDLT<Matrix3d> solver(normal);
        result.values += solver.solve(right);
        result.covariance = solver.solve(Matrix3d::Identity()).topLeftCorner<2, 2>();
    }
    return result;
}

LiveAxis::Directions LiveAxis::directionsAt(const Seen& now) const {
    const Matrix3d frame = now.sighting.frame(0);
    const auto direction = [&](const Vector3d& axis) -> Vector2d { return seenOf(axis, frame).head<2>(); };
    return {direction(vertical_), direction(hinge_), direction(hemisphere_ * axisNow())};
}

LiveAxis::Move LiveAxis::move(const Seen& from, const Seen& to) const {
    constexpr double kSigmas = 4.5;       // by chance once in some 25,000 exposures
    constexpr double kDriveAdrift = 0.3;  // arc-seconds a second: worms, gusts
    const double tracked = signedRadians(to.lst - from.lst);
    const Matrix3d expected = carried(from, axisNow(), tracked, driven_);
    const Vector3d outwards = to.sighting.frame(0).transpose() * expected.col(2);
    const double seconds = std::abs(radiansToHours(tracked)) * 3600;
    return {.shift = -outwards.head<2>(),
            .limit = kSigmas * std::hypot(from.sigma, to.sigma) + kDriveAdrift * seconds * kArcsecond,
            .tracked = tracked};
}

bool LiveAxis::stayed(const Seen& from, const Seen& to) const {
    const Move m = move(from, to);
    const bool sameSide = to.attitude.col(2).dot(from.attitude.col(2)) > 0;
    return sameSide && m.shift.norm() < m.limit;
}

/// By its drive, about the axis as it stood then; or not at all.
Matrix3d LiveAxis::carried(const Seen& from, const Vector3d& axis, double tracked, bool driven) const {
    if (!driven) return from.attitude;
    return rotation(-hemisphere_ * tracked * axis) * from.attitude;
}

/// Whether a camera that tracks would by now be seen to be elsewhere than one that doesn't.
bool LiveAxis::tellsApart(const Move& move, const Seen& to) const {
    return std::abs(move.tracked) * directionsAt(to).hourAngle.norm() > 2 * move.limit;
}

bool LiveAxis::movedAs(bool driven, const Seen& from, const Seen& to) const {
    const Move m = move(from, to);
    const Vector3d expected = carried(from, axisNow(), m.tracked, driven).col(2);
    return (to.attitude.col(2) - expected).norm() < m.limit && tellsApart(m, to);
}

/// A drive that stops leaves the camera behind by no more than the sky has turned; one that starts carries it
/// ahead by as much.
bool LiveAxis::driveMayHaveChanged(const Seen& from, const Seen& to) const {
    const Move m = move(from, to);
    const Vector2d behind = (driven_ ? 1 : -1) * directionsAt(to).hourAngle;
    const double back = m.shift.dot(behind.normalized());
    return back > 0 && back < m.tracked * behind.norm() + m.limit &&
           aside(m.shift, behind) < m.limit + kStray * back;
}

bool LiveAxis::byOneAdjuster(const Seen& from, const Seen& to) const {
    const Move m = move(from, to);
    const Directions directions = directionsAt(to);
    const double allowed = m.limit + kStray * m.shift.norm();
    return m.shift.norm() < kFarthestTurn &&
           (aside(m.shift, directions.azimuth) < allowed || aside(m.shift, directions.elevation) < allowed);
}

/// By the mount's own word, which knows nothing of the adjusters.
bool LiveAxis::sentElsewhere(const Seen& from, const Seen& to) const {
    constexpr double kSent = 0.25;  // degrees
    if (!from.plate.reading || !to.plate.reading) return false;
    const double tracked = radiansToHours(signedRadians(to.lst - from.lst));
    const MountReading& before = *from.plate.reading;
    const MountReading& after = *to.plate.reading;
    const auto away = [&](double hourAngle) {
        return separation({after.hourAngle, after.declination}, {hourAngle, before.declination});
    };
    return away(before.hourAngle + tracked) > kSent && away(before.hourAngle) > kSent;
}

LiveReading LiveAxis::readingAt(const Seen& now, LiveState state) const {
    const bool current = state == LiveState::kDoubtful;
    const Turns turns = current ? fitted(now) : turns_;
    const Vector3d end = axisAt(turns);
    const Vector3d north = hemisphere_ * end;
    LiveReading reading{.state = state, .driven = driven_};
    const DirectionCosines northern{north.x(), north.y(), north.z()};
    reading.remaining = offsetFromPole(northern, site_.latitude, truePoleAltitude(site_));
    reading.written = writtenError(northern);
    reading.distance = 60 * reading.written.ErrorAmplitude;

    const double toSky = std::max(1e-6, std::cos(degreesToRadians(site_.latitude)));
    const Eigen::Matrix2d byTurns = (turns.covariance + before_) / (kArcsecond * kArcsecond);
    const AxisCovariance all =
        measured_ + AxisCovariance{byTurns(0, 0) * toSky * toSky, byTurns(0, 1) * toSky, byTurns(1, 1)};
    reading.azimuthSigma = std::sqrt(all.eastEast) / toSky;
    reading.elevationSigma = std::sqrt(all.upUp);
    reading.sigma = all.sigma();

    const HorizonPosition place =
        EquatorialToAltAz(now.plate.hourAngle, now.plate.declination, site_.latitude);
    reading.separability = adjustersAt(place, 1).separability;
    reading.jump = jump_;
    if (state == LiveState::kFollowing && reading.separability < kLeastSeparability)
        reading.state = LiveState::kIndistinct;
    return reading;
}

}  // namespace vantrel::engine
