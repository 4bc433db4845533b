// An equatorial mount in motion.
//
// Three descriptions of where it points follow from each other:
//   axes      what its gears stand at: hour angle and declination in its own (misaligned) frame
//   readings  what it reports: axes + index offsets, the hour angle turned into a right ascension by its
//             own clock
//   truth     where it points: axes (+ the last slew's pointing error, + mechanical faults), turned by the
//             axis error
// Nothing ticks: every question is answered for the clock's now.
#pragma once

#include "observatory/telescopes/mount_axis.h"
#include "observatory/telescopes/mount_faults.h"
#include "observatory/telescopes/noise.h"
#include "platform/clock.h"

namespace vantrel::observatory {

struct MountSettings {
    double latitude = 50;          // degrees
    double longitude = 10;         // degrees, east positive
    double elevation = 300;        // metres above the sea; for reports only
    double slewRate = 4;           // degrees per second, each axis
    double hourAngleOffset = 0;    // hours that the readings exceed the axes by
    double declinationOffset = 0;  // degrees
    AxisError axisError;
    double pointingNoise = 0;  // arcsec, root mean square of the distance that a slew ends off its aim
    MountFaults faults;
};

/// What the mount says: equator and equinox of date.
struct MountCounts {
    double rightAscension = 0;  // hours, [0, 24)
    double declination = 0;     // degrees, [-90, 90]
};

/// The mount starts tracking on the meridian's east side, one hour before it, at declination 40. Impossible
/// wishes throw std::runtime_error with a text for the operator and change nothing.
class Mount {
  public:
    Mount(const platform::Clock& clock, NoiseSource& noise);

    MountSettings& settings() { return settings_; }
    const MountSettings& settings() const { return settings_; }

    MountCounts reading() const;
    TubeAttitude pointing() const;
    /// Local apparent sidereal time by the mount's own clock, hours.
    double siderealTime() const;

    /// Replaces the jump; slews are counted from now on, and the telescope is where it was before any jump.
    void setDeclinationJump(const DeclinationJump& jump);
    const DeclinationJump& declinationJump() const { return jump_; }

    /// Starts a slew to a reading; both axes run at the slew rate, the polar axis the shorter way round.
    void startSlew(const MountCounts& target);
    bool isSlewing() const;
    /// Stops where it is.
    void abortSlew();

    /// From now on the present direction reads as this one: moves the index offsets.
    void sync(const MountCounts& there);

    bool isTracking() const { return tracking_; }
    void setTracking(bool tracking);

    /// Parks where it stands: no tracking and no slews until unparked.
    void park();
    void unpark();
    bool isParked() const { return parked_; }

  private:
    /// Degrees, in the mount's frame.
    struct Axes {
        double hourAngle = 0;
        double declination = 0;
    };
    /// A slew under way or, with nothing to go, rest: at `start` the axes stood `toGo` short of `target`.
    struct Motion {
        platform::Milliseconds start{0};
        Axes target;
        Axes toGo;
        double rate = 1;  // degrees per second
    };

    double secondsInMotion() const;
    Axes toGo() const;
    Axes axes() const;
    void requireUnparked() const;

    const platform::Clock& clock_;
    NoiseSource& noise_;
    MountSettings settings_;
    Motion motion_;
    Axes pointingError_;
    double roll_ = 0;  // arcsec, of the last slew
    DeclinationJump jump_;
    int slewsSinceJumpWasSet_ = 0;
    bool tracking_ = true;
    bool parked_ = false;
};

}  // namespace vantrel::observatory
