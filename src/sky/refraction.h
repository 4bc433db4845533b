// How the air lifts the stars.
#pragma once

namespace vantrel::sky {

struct AirState {
    double pressure = 1010;    // hPa at the observer
    double temperature = 10;   // degrees Celsius
    double humidity = 0.5;     // relative, 0..1
    double wavelength = 0.55;  // micrometres
};

/// Refraction for one state of the air: ERFA's two-constant model A tan z + B tan^3 z, good to 0.1" above 15
/// degrees and to 5" above 7. Below 3 degrees of altitude the value there is kept: no mount points there.
class Refraction {
  public:
    explicit Refraction(const AirState& air = {});

    /// Where the star is seen; altitudes in degrees.
    double observedAltitude(double trueAltitude) const;
    /// Where it is; the exact inverse of the other.
    double trueAltitude(double observedAltitude) const;

  private:
    double lift(double observedAltitude) const;

    double a_ = 0;  // radians
    double b_ = 0;
};

}  // namespace vantrel::sky
