#include "correction/stars/track.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "correction/stars/statistics.h"

namespace vantrel::correction {
namespace {

constexpr int kAcross = 24;  // pixels to either side of the middle line

/// The light across a track.
using Profile = std::array<double, 2 * kAcross + 1>;

std::size_t indexOf(int across) {
    const int index = across + kAcross;
    return static_cast<std::size_t>(index);
}
double at(const Profile& profile, int across) { return profile[indexOf(across)]; }
double middleOf(const Profile& profile) { return (at(profile, -1) + at(profile, 0) + at(profile, 1)) / 3; }

/// A step along a track.
struct Step {
    double along = 0;  // pixels from the seed
    Profile profile{};
};

class Tracing {
  public:
    Tracing(const platform::ImageArray& image, const SkyLevel& sky, const StarSeed& seed, int longestTrail)
        : image_(image),
          sky_(sky),
          track_{seed.x, seed.y, seed.angle, 0},
          noise_(sky.at(seed.x, seed.y).noise),
          longestTrail_(longestTrail),
          step_(std::max(2, longestTrail / 8)) {}

    /// Fits the line to the light around the seed, then further and further away, as it knows it better.
    std::optional<Track> run() {
        const double diagonal = std::hypot(image_.width(), image_.height());
        const Profile here = profileAt(0);
        for (double reach = 4.0 * step_; reach < 2 * diagonal; reach *= 2) {
            steps_ = litSteps(reach, middleOf(here));
            straighten();
        }
        if (steps_.size() < 2) return std::nullopt;
        const Profile typical = typicalProfile();
        const int halfHigh = reachOf(typical, middleOf(typical) / 2);
        const double width = 2 * halfHigh - 1;
        if (halfHigh > step_ || !isLong(width)) return std::nullopt;
        // A profile is a mean of many pixels, so it shows what is fainter than one pixel's noise.
        constexpr double kFaintestOverNoise = 0.5, kFaintestOverMiddle = 0.005;
        track_.halfWidth = 1 + reachOf(typical, std::max(kFaintestOverNoise * noise_,
                                                         kFaintestOverMiddle * middleOf(typical)));
        return track_;
    }

  private:
    bool isInside(double x, double y) const {
        return x > -0.5 && y > -0.5 && x < static_cast<double>(image_.width()) - 0.5 &&
               y < static_cast<double>(image_.height()) - 0.5;
    }

    bool isInside(double along) const {
        return isInside(track_.x + along * std::cos(track_.angle), track_.y + along * std::sin(track_.angle));
    }

    /// The mean light of a step, that far along the track and to its side.
    double lightAt(double along, double across) const {
        const double dx = std::cos(track_.angle), dy = std::sin(track_.angle);
        double sum = 0;
        int count = 0;
        for (int i = 0; i < step_; ++i) {
            const double s = along + i - (step_ - 1) / 2.0;
            const double x = track_.x + s * dx - across * dy, y = track_.y + s * dy + across * dx;
            if (!isInside(x, y)) continue;
            const auto column = std::lround(x), row = std::lround(y);
            const double value = image_.at(static_cast<std::size_t>(column), static_cast<std::size_t>(row)) -
                                 sky_.at(static_cast<double>(column), static_cast<double>(row)).level;
            if (!std::isfinite(value)) continue;
            sum += value;
            ++count;
        }
        return count > 0 ? sum / count : 0;
    }

    Profile profileAt(double along) const {
        Profile profile;
        for (int across = -kAcross; across <= kAcross; ++across)
            profile[indexOf(across)] = lightAt(along, across);
        return profile;
    }

    /// The steps within this reach in which the line is lit, from one end to the other.
    std::vector<Step> litSteps(double reach, double middle) const {
        constexpr double kFaintestOverMiddle = 0.2;  // of the light in the middle: a track twinkles
        const double faintestOverNoise = 4 / std::sqrt(3.0 * step_);  // four deviations of a mean
        const double faintest = std::max(faintestOverNoise * noise_, kFaintestOverMiddle * middle);
        std::vector<Step> steps;
        for (int i = -static_cast<int>(reach / step_); i * step_ <= reach; ++i) {
            const double along = i * step_;
            if (!isInside(along)) continue;
            const double light = (lightAt(along, -1) + lightAt(along, 0) + lightAt(along, 1)) / 3;
            if (light > faintest) steps.push_back({along, profileAt(along)});
        }
        return steps;
    }

    /// Puts the line through the middle of the light.
    void straighten() {
        double count = 0, s1 = 0, s2 = 0, o1 = 0, so = 0;
        for (const Step& step : steps_) {
            const double offset = offsetOf(step.profile);
            ++count;
            s1 += step.along;
            s2 += step.along * step.along;
            o1 += offset;
            so += step.along * offset;
        }
        const double spread = count * s2 - s1 * s1;
        if (!(spread > 0)) return;
        const double slope = (count * so - s1 * o1) / spread;
        const double offset = (o1 - slope * s1) / count;
        track_.x -= offset * std::sin(track_.angle);
        track_.y += offset * std::cos(track_.angle);
        track_.angle += std::atan(slope);
    }

    /// How far beside the line the light's middle lies.
    static double offsetOf(const Profile& profile) {
        constexpr int kReach = 4;  // pixels
        double sum = 0, moment = 0;
        for (int across = -kReach; across <= kReach; ++across) {
            const double light = std::max(0.0, at(profile, across));
            sum += light;
            moment += light * across;
        }
        return sum > 0 ? moment / sum : 0;
    }

    /// What is typical of the lit steps, at each distance from the middle line: stars beside it aren't.
    Profile typicalProfile() const {
        Profile typical;
        for (std::size_t i = 0; i < typical.size(); ++i) {
            std::vector<double> values;
            for (const Step& step : steps_) values.push_back(step.profile[i]);
            typical[i] = medianOf(std::move(values));
        }
        return typical;
    }

    /// How far from the middle line its light falls below this, on the further side.
    static int reachOf(const Profile& profile, double light) {
        int reach = 1;
        while (reach < kAcross && (at(profile, -reach) > light || at(profile, reach) > light)) ++reach;
        return reach;
    }

    /// Longer than a trail, or at least half as long and out of the frame without a break; and much longer
    /// than wide. Further away from the seed, other stars that happen to lie on the line would count.
    bool isLong(double width) const {
        constexpr double kFewestLit = 0.3;  // of what may be: a flashing track's
        const double near = 4.0 * longestTrail_;
        const auto isNear = [&](const Step& step) { return std::abs(step.along) <= near; };
        const double lit = step_ * static_cast<double>(std::count_if(steps_.begin(), steps_.end(), isNear));
        if (lit > std::max(longestTrail_ + 3 * width, kFewestLit * lengthWithin(near))) return true;
        const bool leaves = !isInside(steps_.back().along + step_) || !isInside(steps_.front().along - step_);
        const double length = steps_.back().along - steps_.front().along + step_;
        return leaves && lit >= std::max(longestTrail_ / 2.0, 4 * width) && lit > 0.8 * length;
    }

    /// How much of the line lies in the frame, so far from the seed on either side.
    double lengthWithin(double reach) const {
        double length = 0;
        for (double along = -reach; along <= reach; along += step_) length += isInside(along) ? step_ : 0;
        return length;
    }

    const platform::ImageArray& image_;
    const SkyLevel& sky_;
    Track track_;
    double noise_;
    int longestTrail_;
    int step_;                 // pixels along the track that are looked at together
    std::vector<Step> steps_;  // the lit ones
};

}  // namespace

std::optional<Track> trackThrough(const platform::ImageArray& image, const SkyLevel& sky,
                                  const StarSeed& seed, int longestTrail) {
    constexpr double kStretched = 2;  // length over breadth
    if (seed.length < kStretched * seed.breadth) return std::nullopt;
    return Tracing(image, sky, seed, longestTrail).run();
}

void erase(platform::ImageArray& image, const SkyLevel& sky, const Track& track) {
    const double dx = std::cos(track.angle), dy = std::sin(track.angle);
    const auto width = static_cast<int>(image.width()), height = static_cast<int>(image.height());
    // Along rows or along columns, whichever the line crosses more steeply.
    const bool flat = std::abs(dx) > std::abs(dy);
    const double slope = flat ? dy / dx : dx / dy;
    const double half = track.halfWidth / std::abs(flat ? dx : dy);
    std::visit(
        [&](auto& pixels) {
            for (int along = 0; along < (flat ? width : height); ++along) {
                const double middle =
                    flat ? track.y + slope * (along - track.x) : track.x + slope * (along - track.y);
                const double last = std::min(middle + half, (flat ? height : width) - 1.0);
                for (int across = std::max(0, static_cast<int>(std::ceil(middle - half))); across <= last;
                     ++across) {
                    const int x = flat ? along : across, y = flat ? across : along;
                    using Pixel = typename std::decay_t<decltype(pixels)>::value_type;
                    pixels[static_cast<std::size_t>(y) * image.width() + static_cast<std::size_t>(x)] =
                        static_cast<Pixel>(sky.at(x, y).level);
                }
            }
        },
        image.pixels());
}

}  // namespace vantrel::correction
