// The sky of one instant: where catalogue positions stand as an observer on Earth sees them.
//
// Build a SkyOfDate once for the instant (some tens of microseconds), then turn as many directions as needed.
// Two frames occur: ICRS, the catalogue's ("J2000"), and the true equator and equinox of date, in which
// mounts and sidereal time count. Apparent places are geocentric: proper motion belongs to the catalogue,
// parallax, light deflection (below 0.01" farther than 30 degrees from the Sun) and diurnal aberration (0.3")
// are left out.
#pragma once

#include "platform/clock.h"
#include "sky/sky_position.h"
#include "sky/vector3.h"

namespace vantrel::sky {

Vector3 directionOf(const SkyPosition& position);
SkyPosition positionOf(const Vector3& direction);

class SkyOfDate {
  public:
    /// UT1 is taken to be UTC, which shifts sidereal time by less than 0.9 s.
    explicit SkyOfDate(platform::Instant utc);

    /// Apparent place of a catalogue direction: annual aberration, then precession and nutation (IAU
    /// 2006/2000A).
    Vector3 apparent(const Vector3& icrs) const;
    SkyPosition apparent(const SkyPosition& icrs) const;

    /// The catalogue direction whose apparent place this is: the inverse of apparent() within 1e-11 radians.
    Vector3 catalogue(const Vector3& apparent) const;
    SkyPosition catalogue(const SkyPosition& apparent) const;

    /// Local apparent sidereal time in hours, [0, 24); longitude in degrees, east positive.
    double siderealTime(double longitude) const;

    /// The instant as a Julian epoch in terrestrial time: 2026.9.
    double julianEpoch() const { return julianEpoch_; }

  private:
    Vector3 proper(const Vector3& icrs) const;

    Matrix3 toDate_;         // ICRS to true equator and equinox of date
    Vector3 velocity_;       // of the Earth, barycentric, in units of the speed of light
    double inverseLorentz_;  // sqrt(1 - v^2)
    Vector3 fromSun_;        // direction from the Sun to the Earth
    double sunDistance_;     // astronomical units
    double greenwichTime_;   // apparent sidereal time, radians
    double julianEpoch_;
};

/// Turns ICRS directions into the mean equator and equinox of a Julian epoch (precession IAU 2006).
Matrix3 precessionTo(double julianEpoch);

}  // namespace vantrel::sky
