// A robot adjusts the axis by the live numbers alone: how near the pole it ends, how long it takes, what it
// is told of, and how often it was sent the wrong way. The same set-ups are corrected in the guided way as
// well, once. Prints the tables of docs/estimate.md. The mount, the camera and the air are those of the
// tests, which share nothing with the estimate.
//
//     live-campaign [set-ups]
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <random>
#include <vector>

#include "correction/correction_target.h"
#include "correction/star_pointing.h"
#include "engine/axis/least_squares.h"
#include "engine/axis/live_axis.h"
#include "engine/axis/live_finish.h"
#include "engine/axis/preflight.h"
#include "engine/axis/simulated_mount.h"

namespace {

using namespace vantrel;
using engine::LiveReading;
using engine::LiveState;

// Seconds.
constexpr double kFrame = 4;  // two of exposure, and until the solution is there
constexpr double kTurn = 5;   // at a bolt
constexpr double kSlew = 30;  // with settling
constexpr double kPlate = 12;

enum Doing { kNothing, kTurning, kSlewing };

struct Faults {
    bool trails = false, cloud = false, bump = false, trackingOff = false;
    bool any() const { return trails || cloud || bump || trackingOff; }
};

struct Told {
    int bumps = 0, bumpsTold = 0, bumpsFound = 0;
    int bumpsIn[3] = {}, bumpsToldIn[3] = {};  // of these, by what was done meanwhile
    int stops = 0, stopsTold = 0;
};

double degrees(double arcseconds) { return arcseconds / 3600; }

/// The place near `start` where a function without other hollows is least, within a thousandth of its unit.
template <typename Function>
double leastAt(double start, Function&& function) {
    double at = start;
    for (double step = 100; step > 1e-3; step /= 2)
        while (true) {
            const double here = function(at);
            if (function(at + step) < here)
                at += step;
            else if (function(at - step) < here)
                at -= step;
            else
                break;
        }
    return at;
}

/// Sky, mount and camera, and the clock on the wall.
class Night {
  public:
    Night(std::mt19937& random, double declination, double offset) : random_(random), air_(engine::kNoAir) {
        std::uniform_real_distribution<double> direction(0, 2 * std::numbers::pi);
        std::uniform_real_distribution<double> latitudes(25, 60), hours(-5, 5);
        const int hemisphere = std::bernoulli_distribution(0.5)(random) ? 1 : -1;
        mount.declination = hemisphere * declination;
        do {
            mount.site = {hemisphere * latitudes(random), engine::standardAir(300)};
            hourAngle = hours(random);
        } while (altitude(hourAngle) < 15 || altitude(hourAngle + 40. / 15) < 15);
        const double towards = direction(random);
        mount.elevation = offset * std::sin(towards);
        mount.azimuth = offset * std::cos(towards) / std::cos(mount.site.latitude * test::kDegree);
        air_ = test::SimulatedAir(mount.site.air);
        air_.thicken(1 + mount.site.air.uncertainty * std::normal_distribution<double>()(random));
        wormPhase_ = direction(random);
    }

    double altitude(double ha) const {
        return engine::placeOnSky(ha, mount.declination, mount.site.latitude).altitude;
    }
    void pass(double seconds) {
        elapsed += seconds;
        const double hours = seconds * 1.00273791 / 3600;
        lst += hours;
        if (tracking) hourAngle += hours;
    }
    void slewTo(double ha, double declination) {
        hourAngle = ha;
        mount.declination = declination;
        pass(kSlew);
    }
    engine::Plate plate() {
        constexpr double kWorm = 5, kPeriod = 480;  // arc-seconds and seconds
        const double worm =
            degrees(kWorm) / 15 * std::sin(2 * std::numbers::pi * elapsed / kPeriod + wormPhase_);
        // The centre moves with the air, beside what the solver states.
        test::Errors errors{.centre = 0.3, .roll = 12, .reading = 30};
        std::vector<engine::Plate> one{mount.plate(hourAngle + worm, air_)};
        one = test::blurred(one, errors, random_);
        one.front().covariance = engine::PlateCovariance::ofSigmas(0.2, 12);
        return one.front();
    }
    /// Three plates, and back to where it began. Ends the program if they tell no axis.
    engine::AxisEstimate measure() {
        const double start = hourAngle;
        std::vector<engine::Plate> plates;
        for (int i = 0; i < 3; ++i) {
            slewTo(start + i * 20. / 15, mount.declination);
            pass(kPlate);
            plates.push_back(plate());
        }
        slewTo(start, mount.declination);
        auto estimate = engine::LeastSquares().estimate(plates, mount.site);
        if (!estimate.valid()) std::exit(1);
        return estimate;
    }
    /// On the sky, arc-seconds.
    double distance() const {
        return 60 *
               std::hypot(mount.azimuth * std::cos(mount.site.latitude * test::kDegree), mount.elevation);
    }

    test::SimulatedMount mount;
    double hourAngle = 0;  // where the mount points, by its own circles
    double lst = 5;
    double elapsed = 0;
    bool tracking = true;

  private:
    std::mt19937& random_;
    test::SimulatedAir air_;
    double wormPhase_ = 0;
};

struct Run {
    bool finished = false, honest = false;
    double distance = 0, stated = 0;  // arc-seconds
    double seconds = 0;               // of adjusting, measurements made again included
    int turns = 0, worse = 0, muchWorse = 0, measurements = 1;
    double first = 0;  // arc-minutes from the pole
};

class Robot {
  public:
    Robot(Night& night, const Faults& faults, std::mt19937& random, Told& told)
        : night_(night), faults_(faults), random_(random), told_(told) {}

    Run adjust() {
        run_.first = night_.distance() / 60;
        measure();
        const double began = night_.elapsed;
        std::uniform_int_distribution<int> early(2, 6);
        const int cloudAt = early(random_), bumpAt = early(random_), stopAt = early(random_);
        std::uniform_int_distribution<int> trail(0, 7);
        for (int frame = 1; frame < 300 && !run_.finished; ++frame) {
            if (faults_.bump && frame == bumpAt) bump();
            doing_ = kNothing;
            if (faults_.cloud && frame == cloudAt) night_.pass(60);
            if (faults_.trackingOff && frame == stopAt) stopTracking();
            night_.pass(kFrame / 2);
            engine::Plate plate = night_.plate();
            const double lst = night_.lst;
            night_.pass(kFrame / 2);
            if (faults_.trails && trail(random_) == 0) {
                if (trail(random_) < 4) continue;                // not solved
                std::normal_distribution<double> astray(0, 30);  // wrongly solved
                plate.declination += degrees(astray(random_));
                plate.hourAngle += degrees(astray(random_)) / 15;
            }
            if (const auto reading = live_->follow(plate, lst)) react(*reading);
        }
        run_.seconds = night_.elapsed - began;
        run_.distance = night_.distance();
        run_.honest = run_.finished && run_.distance < 10 + run_.stated;
        return run_;
    }

  private:
    void measure() {
        const auto estimate = night_.measure();
        fresh_ = estimate;
        live_.emplace(
            engine::MeasuredAxisPosition{engine::northernEnd(estimate.written), *estimate.covariance},
            night_.mount.site);
    }

    /// What a bump hid from the live numbers comes out here at the latest.
    bool agreesWithFreshMeasurement(const LiveReading& live) {
        measure();
        ++run_.measurements;
        good_ = 0;
        const double toSky = std::cos(night_.mount.site.latitude * test::kDegree);
        const double east = (fresh_.fromTruePole.azimuth - live.remaining.azimuth) * toSky * 60;
        const double up = (fresh_.fromTruePole.elevation - live.remaining.elevation) * 60;
        const double variance = live.sigma * live.sigma;
        const auto both = *fresh_.covariance + engine::AxisCovariance{variance, 0, variance};
        if (both.chiSquareOf(east, up) < 9) return true;
        if (bumped_) ++told_.bumpsFound;
        bumped_ = false;
        return false;
    }

    void bump() {
        const double way = std::uniform_real_distribution<double>(0, 2 * std::numbers::pi)(random_);
        night_.mount.offsetDec += degrees(20) * std::sin(way);
        night_.mount.offsetHA +=
            degrees(20) * std::cos(way) / 15 / std::cos(night_.mount.declination * test::kDegree);
        ++told_.bumps;
        bumped_ = true;
        bumpedWhile_ = doing_;
        ++told_.bumpsIn[doing_];
    }

    void stopTracking() {
        night_.tracking = false;
        ++told_.stops;
    }

    void react(const LiveReading& reading) {
        switch (reading.state) {
            case LiveState::kDoubtful:
                return;
            case LiveState::kIndistinct:
                doing_ = kSlewing;
                night_.slewTo(0, engine::distinctPlace(night_.mount.declination, night_.mount.site.latitude));
                return;
            case LiveState::kJumped:
                if (bumped_) ++told_.bumpsTold;
                if (bumped_) ++told_.bumpsToldIn[bumpedWhile_];
                bumped_ = false;
                ++run_.measurements;
                measure();
                return;
            case LiveState::kTrackingOff:
                if (!night_.tracking) ++told_.stopsTold;
                night_.pass(8);
                night_.tracking = true;
                return;
            case LiveState::kSlewed:
                return;
            case LiveState::kFollowing:
                break;
        }
        if (!reading.still) return;
        const double toSky = std::cos(night_.mount.site.latitude * test::kDegree);
        const double azimuth = reading.remaining.azimuth * toSky * 60;
        const double elevation = reading.remaining.elevation * 60;
        constexpr double kGoodEnough = 3;  // arc-seconds
        if (std::hypot(azimuth, elevation) < kGoodEnough * std::numbers::sqrt2) {
            run_.stated = reading.sigma;
            if (++good_ >= 2) run_.finished = !faults_.any() || agreesWithFreshMeasurement(reading);
            return;
        }
        good_ = 0;
        turn(std::abs(azimuth) > std::abs(elevation), reading);
    }

    /// One bolt by what is shown, as well as hands can.
    void turn(bool azimuth, const LiveReading& reading) {
        const double before = night_.distance();
        std::uniform_real_distribution<double> share(0.9, 1.05), stray(-0.03, 0.03), slack(-2, 2);
        auto& mine = azimuth ? night_.mount.azimuth : night_.mount.elevation;
        auto& other = azimuth ? night_.mount.elevation : night_.mount.azimuth;
        const double amount =
            -(azimuth ? reading.remaining.azimuth : reading.remaining.elevation) * share(random_);
        mine += amount + slack(random_) / 60;
        other += amount * stray(random_);
        night_.pass(kTurn);
        doing_ = kTurning;
        ++run_.turns;
        run_.worse += night_.distance() > before + 5;
        run_.muchWorse += night_.distance() > before + 20;
    }

    Night& night_;
    Faults faults_;
    std::mt19937& random_;
    Told& told_;
    std::optional<engine::LiveAxis> live_;
    engine::AxisEstimate fresh_;
    Run run_;
    int good_ = 0;
    bool bumped_ = false;
    Doing doing_ = kNothing, bumpedWhile_ = kNothing;  // since the last plate
};

/// The guided correction: a star in the middle of the picture for each adjuster, turned to its mark.
class Guided {
  public:
    Guided(Night& night, bool exactMarks, std::mt19937& random)
        : night_(night), exact_(exactMarks), random_(random) {}

    /// From the end of the measurement on.
    Run correct() {
        const auto estimate = night_.measure();
        const double began = night_.elapsed;
        adjust(night_.mount.azimuth, correction::azimuthTarget, estimate, estimate.fromTruePole.azimuth);
        adjust(night_.mount.elevation, correction::elevationTarget, estimate,
               estimate.fromTruePole.elevation);
        return {.distance = night_.distance(), .seconds = night_.elapsed - began};
    }

  private:
    void adjust(double& adjuster,
                correction::CorrectionTarget (*target)(const correction::PointingSituation&),
                const engine::AxisEstimate& measured, double measuredHere) {
        night_.pass(kSlew + kPlate + kFrame);  // the star is placed, solved, and found
        const engine::Plate plate = night_.plate();
        const double goal = exact_ ? adjuster - measuredHere : goalOf(adjuster, target, measured, plate);
        constexpr double kCentred = 3. / 60;  // arc-minutes
        std::uniform_real_distribution<double> share(0.9, 1.05), slack(-2, 2);
        while (std::abs(goal - adjuster) > kCentred) {
            adjuster += (goal - adjuster) * share(random_) + slack(random_) / 60;
            night_.pass(kTurn + kFrame);
        }
        night_.pass(kFrame);
    }

    /// Where the adjuster stands when the star comes nearest to the written mark.
    double goalOf(double& adjuster,
                  correction::CorrectionTarget (*target)(const correction::PointingSituation&),
                  const engine::AxisEstimate& measured, const engine::Plate& plate) {
        const correction::PointingSituation situation{.ErrorAmplitude = measured.written.ErrorAmplitude,
                                                      .ErrorAngle = measured.written.ErrorAngle,
                                                      .latitude = night_.mount.site.latitude,
                                                      .lst = night_.lst,
                                                      .plateRA = night_.lst - plate.hourAngle,
                                                      .plateDec = plate.declination};
        const double angle = *plate.positionAngle * test::kDegree;
        engine::PlateSolution solution{.ra = situation.plateRA, .dec = plate.declination};
        constexpr double kPixel = 3.6 / 3600;
        solution.CD1_1 = kPixel * std::sin(angle);
        solution.CD1_2 = solution.CD2_1 = kPixel * std::cos(angle);
        solution.CD2_2 = -kPixel * std::sin(angle);
        const engine::EquatorialPosition aim = target(situation).moveTo;
        const auto mark = correction::SkyOffsetToPixel(aim.RA, aim.Dec, solution, {0, 0});
        constexpr double kHalfWidth = 560, kHalfHeight = 400;  // of the picture in which marks are drawn
        const double start = adjuster;
        const double whole = &adjuster == &night_.mount.azimuth ? measured.fromTruePole.azimuth
                                                                : measured.fromTruePole.elevation;
        if (!mark || std::abs(mark->x) > kHalfWidth || std::abs(mark->y) > kHalfHeight) {
            night_.pass(kSlew);  // which is as far as it should be
            return start - whole;
        }
        const test::Vector star = shown({0, 0}, kPixel);
        const double best = leastAt(start, [&](double position) {
            adjuster = position;
            const test::Vector off = shown(*mark, kPixel) + -1 * star;
            return test::dot(off, off);
        });
        adjuster = start;
        return best;
    }

    /// What a pixel, counted from the middle, shows.
    test::Vector shown(const engine::PixelPosition& pixel, double scale) const {
        const test::SimulatedMount& mount = night_.mount;
        const test::Vector outwards = test::unitVector(night_.hourAngle, mount.declination);
        const test::Vector east = test::unitVector(night_.hourAngle - 6, 0);
        const test::Vector rows =
            test::turned(test::cross(outwards, east), outwards, -mount.cameraAngle * test::kDegree);
        const test::Vector columns = test::cross(rows, outwards);
        return mount.carried(test::unit(outwards + pixel.x * scale * test::kDegree * rows +
                                        pixel.y * scale * test::kDegree * columns));
    }

    Night& night_;
    bool exact_;
    std::mt19937& random_;
};

double median(std::vector<double> values) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// The set-ups of a campaign: all declinations, and distances from 5' to 2 degrees.
Night setUp(std::mt19937& random, int number, int setups) {
    const double share = setups > 1 ? number / (setups - 1.0) : 0;
    return {random, -20 + 95 * std::fmod(number * 0.618034, 1), 5 * std::pow(24, share)};
}

void guidedCampaign(const char* name, bool exactMarks, int setups) {
    std::mt19937 random(20261126);
    std::vector<double> times, ends;
    for (int i = 0; i < setups; ++i) {
        Night night = setUp(random, i, setups);
        const Run run = Guided(night, exactMarks, random).correct();
        times.push_back(run.seconds);
        ends.push_back(run.distance);
    }
    std::printf("| %s | %.0f s | %.1f\" | %.1f\" |\n", name, median(times), median(ends),
                *std::max_element(ends.begin(), ends.end()));
}

void campaign(const char* name, const Faults& faults, int setups) {
    std::mt19937 random(20261126);
    Told told;
    std::vector<double> times, ends;
    int honest = 0, turns = 0, worse = 0, muchWorse = 0, again = 0;
    for (int i = 0; i < setups; ++i) {
        Night night = setUp(random, i, setups);
        const Run run = Robot(night, faults, random, told).adjust();
        honest += run.honest;
        turns += run.turns;
        worse += run.worse;
        muchWorse += run.muchWorse;
        again += run.measurements - 1;
        if (run.finished) times.push_back(run.seconds);
        ends.push_back(run.distance);
    }
    std::printf("| %s | %d of %d | %.1f\" | %.0f s | %d | %d | %d | %d | %d + %d of %d | %d of %d |\n", name,
                honest, setups, median(ends), median(times), turns, worse, muchWorse, again, told.bumpsTold,
                told.bumpsFound, told.bumps, told.stopsTold, told.stops);
    if (told.bumps == 0) return;
    std::fprintf(
        stderr,
        "%s: told at once of the bumps while nothing was done %d of %d, while a bolt was turned %d of %d, "
        "in a slew %d of %d\n",
        name, told.bumpsToldIn[kNothing], told.bumpsIn[kNothing], told.bumpsToldIn[kTurning],
        told.bumpsIn[kTurning], told.bumpsToldIn[kSlewing], told.bumpsIn[kSlewing]);
}

}  // namespace

int main(int argc, char** argv) {
    const int setups = argc > 1 ? std::max(2, std::atoi(argv[1])) : 60;
    std::printf(
        "| night | within 10\" + σ | ends at, median | time, median | turns | of these made it worse by 5\" "
        "| "
        "by 20\" | measured again | bumps told, at once + by the fresh measurement | stops told |\n"
        "|---|---|---|---|---|---|---|---|---|---|\n");
    campaign("quiet", {}, setups);
    campaign("satellite trails", {.trails = true}, setups);
    campaign("a cloud for a minute", {.cloud = true}, setups);
    campaign("a bump of 20\"", {.bump = true}, setups);
    campaign("tracking stops", {.trackingOff = true}, setups);
    campaign("all of it", {true, true, true, true}, setups);
    std::printf("\n| the guided way, quiet | time, median | ends at, median | worst |\n|---|---|---|---|\n");
    guidedCampaign("written marks", false, setups);
    guidedCampaign("exact marks", true, setups);
}
