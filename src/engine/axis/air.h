// How the air lifts the stars, as the axis's estimate allows for it.
#pragma once

namespace vantrel::engine {

struct Air {
    double pressure = 1013.25;  // hPa at the observer; 0: no refraction
    double temperature = 15;    // degrees Celsius
    /// Of the refraction, as a share of it. Temperature and pressure of a night are seldom known better than
    /// this from the height alone.
    double uncertainty = 0.05;
};

inline constexpr Air kNoAir{0, 15, 0};  // pressure 0, so its temperature says nothing

/// The standard atmosphere at a height above the sea (metres; up to 11,000 m).
/// U.S. Standard Atmosphere 1976, lowest layer.
Air standardAir(double height);

/// R = A tan z + B tan³ z of the observed zenith distance z: Green, Spherical Astronomy (1985), section 4.3,
/// with the refractivity of dry air by Edlén (Metrologia 2, 71, 1966) at 0.55 µm. Within 0.3" of ERFA's
/// constants above 15 degrees of altitude. Below 3 degrees the value there is kept: no mount points there.
class AirLift {
  public:
    explicit AirLift(const Air& air);

    /// Degrees by which a star at this true altitude (degrees) is seen higher.
    double atTrueAltitude(double altitude) const;

  private:
    double atObservedAltitude(double altitude) const;

    double a_ = 0;  // degrees
    double b_ = 0;
};

}  // namespace vantrel::engine
