#include "sky/epoch.h"

#include <erfa.h>
#include <erfam.h>

namespace vantrel::sky {
namespace {

constexpr double kUnixEpoch = 2440587.5;  // Julian date of 1970-01-01
constexpr double kMillisecondsPerDay = 86'400'000;

/// A Julian date in two parts, as ERFA takes it.
struct JulianDate {
    double day = 0;
    double fraction = 0;
};

JulianDate julianDate(platform::Instant instant) {
    const auto day = std::chrono::floor<std::chrono::days>(instant);
    return {kUnixEpoch + static_cast<double>(day.time_since_epoch().count()),
            static_cast<double>((instant - day).count()) / kMillisecondsPerDay};
}

/// Dates before 1960 or far ahead are outside the table of leap seconds; ERFA then uses the nearest entry.
JulianDate terrestrialTime(const JulianDate& utc) {
    JulianDate tai;
    JulianDate tt;
    eraUtctai(utc.day, utc.fraction, &tai.day, &tai.fraction);
    eraTaitt(tai.day, tai.fraction, &tt.day, &tt.fraction);
    return tt;
}

Matrix3 fromErfa(const double m[3][3]) {
    return {{{m[0][0], m[0][1], m[0][2]}, {m[1][0], m[1][1], m[1][2]}, {m[2][0], m[2][1], m[2][2]}}};
}

}  // namespace

Vector3 directionOf(const SkyPosition& position) {
    return direction(position.ra * kDegree, position.dec * kDegree);
}

SkyPosition positionOf(const Vector3& direction) {
    const double ra = std::atan2(direction[1], direction[0]) / kDegree;
    return {ra < 0 ? ra + 360 : ra,
            std::atan2(direction[2], std::hypot(direction[0], direction[1])) / kDegree};
}

SkyOfDate::SkyOfDate(platform::Instant utc) {
    const JulianDate ut = julianDate(utc);
    const JulianDate tt = terrestrialTime(ut);

    double toDate[3][3];
    eraPnm06a(tt.day, tt.fraction, toDate);
    toDate_ = fromErfa(toDate);
    greenwichTime_ = eraGst06(ut.day, ut.fraction, tt.day, tt.fraction, toDate);
    julianEpoch_ = eraEpj(tt.day, tt.fraction);

    double heliocentric[2][3];
    double barycentric[2][3];
    eraEpv00(tt.day, tt.fraction, heliocentric, barycentric);
    constexpr double kLightDay = ERFA_DAYSEC * ERFA_CMPS / ERFA_DAU;  // astronomical units
    for (std::size_t axis = 0; axis < 3; ++axis) velocity_[axis] = barycentric[1][axis] / kLightDay;
    inverseLorentz_ = std::sqrt(1 - dot(velocity_, velocity_));
    eraPn(heliocentric[0], &sunDistance_, fromSun_.data());
}

/// Where the moving Earth sees a catalogue direction, on ICRS axes.
Vector3 SkyOfDate::proper(const Vector3& icrs) const {
    // ERFA's arguments are not const, but only read.
    auto read = [](const Vector3& v) { return const_cast<double*>(v.data()); };
    Vector3 deflected;
    eraLdsun(read(icrs), read(fromSun_), sunDistance_, deflected.data());
    Vector3 seen;
    eraAb(deflected.data(), read(velocity_), sunDistance_, inverseLorentz_, seen.data());
    return seen;
}

Vector3 SkyOfDate::apparent(const Vector3& icrs) const { return toDate_ * proper(icrs); }

SkyPosition SkyOfDate::apparent(const SkyPosition& icrs) const {
    return positionOf(apparent(directionOf(icrs)));
}

Vector3 SkyOfDate::catalogue(const Vector3& apparent) const {
    const Vector3 seen = transposed(toDate_) * apparent;
    Vector3 natural = seen;
    // Aberration moves a direction by 1e-4 and varies as slowly: each round gains four digits.
    for (int round = 0; round < 4; ++round) {
        const Vector3 back = proper(natural);
        for (std::size_t axis = 0; axis < 3; ++axis) natural[axis] += seen[axis] - back[axis];
        natural = normalized(natural);
    }
    return natural;
}

SkyPosition SkyOfDate::catalogue(const SkyPosition& apparent) const {
    return positionOf(catalogue(directionOf(apparent)));
}

double SkyOfDate::siderealTime(double longitude) const {
    const double hours = eraAnp(greenwichTime_ + longitude * kDegree) / kHour;
    return hours < 24 ? hours : 0;
}

Matrix3 precessionTo(double julianEpoch) {
    double day = 0;
    double fraction = 0;
    eraEpj2jd(julianEpoch, &day, &fraction);
    double matrix[3][3];
    eraPmat06(day, fraction, matrix);
    return fromErfa(matrix);
}

}  // namespace vantrel::sky
