// Where the axis stands while its adjusters are turned, plate by plate.
//
// The camera rides on the axis, the axis on the two adjusters. A reference plate says how the camera stood
// when the axis was where it was measured; the mount's tracking carries it from there about the axis. What a
// later plate shows beyond that was done by the adjusters: the azimuth adjuster has turned everything about
// the vertical, the elevation adjuster about the level line square to the axis. Both angles together follow
// from one plate's centre and roll.
//
// Not everything that moves the camera is an adjuster. Each plate is compared with the last one that was
// believed; what no single adjuster does isn't believed until the next plate says what it was.
//
// A camera that stands still on the ground from the first plate on has no drive: then it is the adjusters
// alone that move it over the ground, until it is seen to track.
#pragma once

#include <cstdint>
#include <optional>

#include <Eigen/Core>

#include "engine/axis/axis_covariance.h"
#include "engine/axis/axis_position.h"
#include "engine/axis/fit_settings.h"
#include "engine/axis/plate.h"
#include "engine/axis/sighting.h"

namespace vantrel::engine {

struct LiveSettings {
    FitSettings fit{};
    /// Arc-seconds, one sigma: how far the drive may have carried the camera ahead or behind since the
    /// reference plate. A worm's error passes for an adjuster's turn where that moves the field along the
    /// hour angle.
    double driveSigma = 5;
};

/// The axis as it was measured.
struct MeasuredAxisPosition {
    DirectionCosines northernEnd;
    AxisCovariance covariance;
};

enum class LiveState : std::uint8_t {
    kFollowing,
    kDoubtful,     // the camera moved in a way that the next plate has to explain
    kIndistinct,   // both adjusters look alike here, or one shows nothing
    kJumped,       // it moved as neither adjuster alone moves it: a bump, or both were turned
    kTrackingOff,  // it stands still on the ground
    kSlewed        // it was sent elsewhere
};

struct LiveReading {
    LiveState state = LiveState::kFollowing;
    AxisOffset remaining{};  // from the true pole: what the adjusters still have to undo
    double distance = 0;     // arc-minutes from it
    PolarError written{};    // the same by the written convention
    // Arc-seconds, one sigma: about the vertical, of the altitude, and of the axis on the sky.
    double azimuthSigma = 0, elevationSigma = 0, sigma = 0;
    double separability = 0;  // of the adjusters, at this place
    double jump = 0;          // arc-seconds, where it jumped
    bool still = true;        // nobody turned anything since the plate before
    bool driven = true;       // it tracks, as far as anybody knows

    /// Whether anybody should turn an adjuster by these numbers.
    bool trustworthy() const { return state == LiveState::kFollowing; }
};

class LiveAxis {
  public:
    LiveAxis(const MeasuredAxisPosition& measured, const Site& site, const LiveSettings& settings = {});

    /// `lst` in hours, in the middle of the exposure. The first plate is the reference. Nothing from a plate
    /// whose numbers can't be used.
    std::optional<LiveReading> follow(const Plate& plate, double lst);

    /// What jumped were both adjusters, says the operator.
    void acceptJump() { jump_ = 0; }
    /// While the bolts are tightened, anything may move: whatever moves is the axis.
    void setLocked(bool locked) { locked_ = locked; }

  private:
    /// A plate as it is compared with the next one.
    struct Seen {
        Sighting sighting;
        Eigen::Matrix3d attitude;
        double lst = 0;    // radians
        double sigma = 0;  // radians, of its centre in each direction
        Plate plate;
    };
    /// From the reference on, radians.
    struct Turns {
        Eigen::Vector3d values = Eigen::Vector3d::Zero();  // azimuth, elevation, drive
        Eigen::Matrix2d covariance = Eigen::Matrix2d::Zero();
    };
    /// Which way a small turn moves the field at a plate: east and north.
    struct Directions {
        Eigen::Vector2d azimuth, elevation, hourAngle;
    };
    struct Move {
        Eigen::Vector2d shift;  // beyond what tracking explains; radians
        double limit = 0;       // of what errors explain
        double tracked = 0;     // radians of hour angle meanwhile
    };

    std::optional<Seen> seen(const Plate& plate, double lst) const;
    void beginAt(const Seen& reference);
    LiveState judge(const Seen& now);
    LiveState judgeWithoutDoubt(const Seen& now);
    LiveState believe(const Seen& now, double jump);
    LiveState lose(LiveState reason, const Seen& now);
    LiveState judgeLost(const Seen& now);
    LiveState goOnWith(bool driven, bool untouched, const Seen& now);

    Eigen::Vector3d axisNow() const;
    Eigen::Vector3d axisAt(const Turns& turns) const;
    Eigen::Matrix3d turned(const Eigen::Vector3d& turns) const;
    Eigen::Matrix3d predicted(const Eigen::Vector3d& turns, double lst) const;
    Turns fitted(const Seen& now) const;
    Directions directionsAt(const Seen& now) const;
    Move move(const Seen& from, const Seen& to) const;
    Eigen::Matrix3d carried(const Seen& from, const Eigen::Vector3d& axis, double tracked, bool driven) const;
    bool movedAs(bool driven, const Seen& from, const Seen& to) const;
    bool tellsApart(const Move& move, const Seen& to) const;
    bool stayed(const Seen& from, const Seen& to) const;
    bool driveMayHaveChanged(const Seen& from, const Seen& to) const;
    bool byOneAdjuster(const Seen& from, const Seen& to) const;
    bool sentElsewhere(const Seen& from, const Seen& to) const;
    LiveReading readingAt(const Seen& now, LiveState state) const;

    Site site_;
    LiveSettings settings_;
    AxisCovariance measured_;
    double hemisphere_;
    Eigen::Vector3d vertical_;  // turned about it, the end above the horizon goes east
    Eigen::Vector3d hinge_;     // and up; of the reference

    // The reference: the axis's end above the horizon, and the camera.
    Eigen::Vector3d end_;
    std::optional<Seen> reference_;
    Eigen::Matrix2d before_ = Eigen::Matrix2d::Zero();  // covariance of the turns that led to it

    std::optional<Seen> believed_, doubted_, previous_;
    bool driven_ = true;
    bool known_ = false;  // and that was seen
    bool steady_ = true;  // the believed plate showed no turn
    Turns turns_;         // as the plate says that was believed last
    std::optional<LiveState> lost_;
    bool touched_ = false;  // an adjuster may have been turned while tracking was off
    double jump_ = 0;       // arc-seconds; 0: none
    bool locked_ = false;
};

}  // namespace vantrel::engine
