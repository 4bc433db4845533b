#include "observatory/telescopes/mount.h"

#include <algorithm>
#include <stdexcept>

#include "sky/epoch.h"

namespace vantrel::observatory {
namespace {

using sky::operator*;

constexpr double kSiderealRate = 360.98564736629 / 86400;  // degrees of sidereal time a second

/// Degrees in (-180, 180].
double signedAngle(double degrees) {
    const double angle = std::remainder(degrees, 360);
    return angle == -180 ? 180 : angle;
}

double hoursOfDay(double hours) {
    const double reduced = std::fmod(hours, 24);
    const double positive = reduced < 0 ? reduced + 24 : reduced;
    return positive < 24 ? positive : 0;
}

double shortened(double toGo, double by) { return std::copysign(std::max(0.0, std::abs(toGo) - by), toGo); }

void requirePosition(const MountCounts& position) {
    if (!(position.rightAscension >= 0 && position.rightAscension <= 24))
        throw std::runtime_error("The right ascension must be between 0 and 24 hours");
    if (!(std::abs(position.declination) <= 90))
        throw std::runtime_error("The declination must be between -90 and 90 degrees");
}

}  // namespace

Mount::Mount(const platform::Clock& clock, NoiseSource& noise) : clock_(clock), noise_(noise) {
    motion_ = {clock_.sinceStart(), {-15, 40}, {}, settings_.slewRate};
}

double Mount::siderealTime() const {
    return hoursOfDay(sky::SkyOfDate(clock_.utc()).siderealTime(settings_.longitude) +
                      settings_.faults.clockError * kSiderealRate / 15);
}

double Mount::secondsInMotion() const {
    return std::chrono::duration<double>(clock_.sinceStart() - motion_.start).count();
}

Mount::Axes Mount::toGo() const {
    const double travelled = motion_.rate * secondsInMotion();
    return {shortened(motion_.toGo.hourAngle, travelled), shortened(motion_.toGo.declination, travelled)};
}

Mount::Axes Mount::axes() const {
    const Axes left = toGo();
    const double tracked = tracking_ ? kSiderealRate * secondsInMotion() : 0;
    return {motion_.target.hourAngle + tracked - left.hourAngle,
            motion_.target.declination - left.declination};
}

MountCounts Mount::reading() const {
    const Axes now = axes();
    double hourAngle = now.hourAngle / 15 + settings_.hourAngleOffset;
    double declination = now.declination + settings_.declinationOffset;
    if (std::abs(declination) > 90) {  // over the pole
        declination = std::copysign(180, declination) - declination;
        hourAngle += 12;
    }
    return {hoursOfDay(siderealTime() - hourAngle), declination};
}

TubeAttitude Mount::pointing() const {
    const Axes now = axes();
    const MountFaults& faults = settings_.faults;
    const bool jumped = slewsSinceJumpWasSet_ >= jump_.slew;
    const double hourAngle =
        now.hourAngle + pointingError_.hourAngle + periodicError(faults, now.hourAngle) / 3600;
    const double declination =
        now.declination + pointingError_.declination + (jumped ? jump_.amount / 3600 : 0);
    const sky::Matrix3 turn = mountToSky(settings_.axisError, settings_.latitude);
    const TubeAttitude rigid{turn * hourAngleDirection(hourAngle, declination),
                             turn * hourAngleDirection(hourAngle, declination + 90),
                             turn * hourAngleDirection(hourAngle - 90, 0)};
    return sagging(rolled(rigid, roll_), faults.flexure, settings_.latitude);
}

void Mount::setDeclinationJump(const DeclinationJump& jump) {
    jump_ = jump;
    slewsSinceJumpWasSet_ = 0;
}

void Mount::requireUnparked() const {
    if (parked_) throw std::runtime_error("The mount is parked");
}

void Mount::startSlew(const MountCounts& target) {
    requirePosition(target);
    requireUnparked();
    if (!tracking_) throw std::runtime_error("The mount can't slew to coordinates while it isn't tracking");
    const Axes from = axes();
    const Axes to{15 * (siderealTime() - target.rightAscension - settings_.hourAngleOffset),
                  target.declination - settings_.declinationOffset};
    const double turn = signedAngle(to.hourAngle - from.hourAngle);
    motion_ = {clock_.sinceStart(),
               {from.hourAngle + turn, to.declination},
               {turn, to.declination - from.declination},
               settings_.slewRate};
    const double sigma = settings_.pointingNoise / 3600 / std::sqrt(2.0);
    const double narrow = std::max(std::cos(to.declination * sky::kDegree), 0.01);
    pointingError_ = {sigma * noise_.gaussian() / narrow, sigma * noise_.gaussian()};
    const double rollNoise = settings_.faults.rollNoise;
    roll_ = rollNoise > 0 ? rollNoise * noise_.gaussian() : 0;
    ++slewsSinceJumpWasSet_;
}

bool Mount::isSlewing() const {
    const Axes left = toGo();
    return left.hourAngle != 0 || left.declination != 0;
}

void Mount::abortSlew() { motion_ = {clock_.sinceStart(), axes(), {}, settings_.slewRate}; }

void Mount::sync(const MountCounts& there) {
    requirePosition(there);
    requireUnparked();
    if (isSlewing()) throw std::runtime_error("The mount can't be synced while it slews");
    const Axes now = axes();
    settings_.hourAngleOffset =
        signedAngle(15 * (siderealTime() - there.rightAscension) - now.hourAngle) / 15;
    settings_.declinationOffset = there.declination - now.declination;
}

void Mount::setTracking(bool tracking) {
    if (tracking) requireUnparked();
    const Axes left = toGo();
    const Axes now = axes();
    motion_ = {clock_.sinceStart(),
               {now.hourAngle + left.hourAngle, now.declination + left.declination},
               left,
               motion_.rate};
    tracking_ = tracking;
}

void Mount::park() {
    abortSlew();
    setTracking(false);
    parked_ = true;
}

void Mount::unpark() { parked_ = false; }

}  // namespace vantrel::observatory
