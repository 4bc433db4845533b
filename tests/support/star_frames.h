// Camera frames with known stars: sky, gradient, nebula, gaussian stars integrated over the pixels, stars out
// of focus, trails, photon and read noise, a sensor's defects, 16 bits.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "platform/image_array.h"

namespace vantrel::test {

/// A gaussian on the sensor; full width at half maximum in pixels, height of its middle in counts.
struct FrameStar {
    double x = 0, y = 0;
    double width = 3;
    double peak = 1000;

    double flux() const { return peak * 2 * 3.14159265358979 * sigma() * sigma(); }
    double sigma() const { return width / 2.354820045; }
};

/// A star far out of focus: an evenly lit disc around a dark one, both in pixels of radius, with edges
/// blurred by a gaussian of one standard deviation.
struct FrameDisc {
    double x = 0, y = 0;
    double outer = 30, inner = 10;
    double height = 500;
    double blur = 1.5;
};

/// A point of light that moved in a straight line while the shutter was open, evenly or flashing: a gaussian
/// across. Lengths in pixels.
struct FrameTrail {
    double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    double width = 3;
    double peak = 1000;
    double dash = 0, gap = 0;
};

/// A rectangle of pixels that show so much more or less than they ought to, or that value and nothing else.
struct FrameDefect {
    int left = 0, top = 0, right = 0, bottom = 0;  // the last two not included
    double offset = 0;
    bool stuck = false;
};

struct FrameRecipe {
    int width = 100, height = 100;
    double sky = 1000;
    double readNoise = 8;
    double gradientX = 0, gradientY = 0;  // counts across the whole frame
    FrameStar nebula{0, 0, 100, 0};
    std::vector<FrameStar> stars;
    double wrongPixels = 0;  // share of all
    bool mosaic = false;     // a colour sensor: levels of red, green and blue differ
    double vignetting = 0;   // share of the light that the corners lose
    std::vector<FrameDisc> discs = {};
    std::vector<FrameTrail> trails = {};
    std::vector<FrameDefect> defects = {};
    bool noiseFree = false;

    /// Of a sky pixel, one electron a count.
    double noise() const { return std::sqrt(sky + readNoise * readNoise); }
};

class FramePainter {
  public:
    explicit FramePainter(std::uint64_t seed) : random_(seed), deviates_(1 << 20) {
        std::normal_distribution<float> normal;
        for (float& deviate : deviates_) deviate = normal(random_);
    }

    /// What comes next depends on this number alone.
    void startAt(std::uint64_t seed) { random_.seed(seed); }

    platform::ImageArray paint(const FrameRecipe& recipe) {
        std::vector<float> light = skyOf(recipe);
        for (const FrameStar& star : recipe.stars) addStar(light, recipe, star);
        for (const FrameDisc& disc : recipe.discs) addDisc(light, recipe, disc);
        for (const FrameTrail& trail : recipe.trails) addTrail(light, recipe, trail);
        if (recipe.vignetting > 0) darkenCorners(light, recipe);
        if (recipe.mosaic) dyePixels(light, static_cast<std::size_t>(recipe.width));
        std::vector<std::uint16_t> counts(light.size());
        const auto readVariance = static_cast<float>(recipe.readNoise * recipe.readNoise);
        const auto columns = static_cast<std::size_t>(recipe.width);
        for (std::size_t row = 0; row < counts.size(); row += columns) {
            const float* noise = deviates_.data() + random_() % (deviates_.size() - columns);
            for (std::size_t i = 0; i < columns; ++i)
                counts[row + i] =
                    asCount(light[row + i] +
                            (recipe.noiseFree ? 0 : std::sqrt(light[row + i] + readVariance)) * noise[i]);
        }
        for (const FrameDefect& defect : recipe.defects) spoil(counts, recipe, defect);
        const auto wrong = static_cast<long>(recipe.wrongPixels * static_cast<double>(counts.size()));
        for (long i = 0; i < wrong; ++i)
            counts[random_() % counts.size()] = static_cast<std::uint16_t>(3000 + random_() % 62'000);
        return {static_cast<std::size_t>(recipe.width), static_cast<std::size_t>(recipe.height),
                std::move(counts)};
    }

    std::mt19937_64& random() { return random_; }

  private:
    static std::uint16_t asCount(float value) {
        return static_cast<std::uint16_t>(std::clamp(value + 0.5F, 0.0F, 65535.0F));
    }

    static void spoil(std::vector<std::uint16_t>& counts, const FrameRecipe& recipe, const FrameDefect& d) {
        for (int y = std::max(0, d.top); y < std::min(d.bottom, recipe.height); ++y)
            for (int x = std::max(0, d.left); x < std::min(d.right, recipe.width); ++x) {
                std::uint16_t& count = counts[placeOf(x, y, recipe)];
                count = asCount(static_cast<float>(d.stuck ? d.offset : count + d.offset));
            }
    }

    static std::size_t placeOf(int x, int y, const FrameRecipe& recipe) {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(recipe.width) +
               static_cast<std::size_t>(x);
    }

    static void darkenCorners(std::vector<float>& light, const FrameRecipe& recipe) {
        const double corner = std::hypot(recipe.width / 2.0, recipe.height / 2.0);
        for (int y = 0; y < recipe.height; ++y)
            for (int x = 0; x < recipe.width; ++x) {
                const double r = std::hypot(x - recipe.width / 2.0, y - recipe.height / 2.0) / corner;
                light[placeOf(x, y, recipe)] *= static_cast<float>(1 - recipe.vignetting * r * r);
            }
    }

    static void addDisc(std::vector<float>& light, const FrameRecipe& recipe, const FrameDisc& disc) {
        const int reach = static_cast<int>(disc.outer + 5 * disc.blur) + 2;
        const auto within = [&](double distance, double radius) {
            return radius > 0 ? std::erfc((distance - radius) / (disc.blur * std::sqrt(2.0))) / 2 : 0.0;
        };
        for (int y = std::max(0, static_cast<int>(disc.y) - reach);
             y < std::min(recipe.height, static_cast<int>(disc.y) + reach); ++y)
            for (int x = std::max(0, static_cast<int>(disc.x) - reach);
                 x < std::min(recipe.width, static_cast<int>(disc.x) + reach); ++x) {
                const double distance = std::hypot(x - disc.x, y - disc.y);
                light[placeOf(x, y, recipe)] += static_cast<float>(
                    disc.height * (within(distance, disc.outer) - within(distance, disc.inner)));
            }
    }

    static void addTrail(std::vector<float>& light, const FrameRecipe& recipe, const FrameTrail& trail) {
        const double length = std::hypot(trail.x2 - trail.x1, trail.y2 - trail.y1);
        const double alongX = (trail.x2 - trail.x1) / length, alongY = (trail.y2 - trail.y1) / length;
        const double sigma = trail.width / 2.354820045;
        const double reach = 6 * sigma + 2;
        const auto within = [&](double s, double from, double to) {
            const double unit = 1 / (sigma * std::sqrt(2.0));
            return (std::erf((s - from) * unit) - std::erf((s - to) * unit)) / 2;
        };
        const int top = std::max(0, static_cast<int>(std::min(trail.y1, trail.y2) - reach));
        const int bottom =
            std::min(recipe.height, static_cast<int>(std::max(trail.y1, trail.y2) + reach) + 1);
        for (int y = top; y < bottom; ++y)
            for (int x = 0; x < recipe.width; ++x) {
                const double across = (y - trail.y1) * alongX - (x - trail.x1) * alongY;
                const double s = (x - trail.x1) * alongX + (y - trail.y1) * alongY;
                if (std::abs(across) > reach || s < -reach || s > length + reach) continue;
                double share = 0;
                if (trail.dash > 0)
                    for (double from = 0; from < length; from += trail.dash + trail.gap)
                        share += within(s, from, std::min(length, from + trail.dash));
                else
                    share = within(s, 0, length);
                light[placeOf(x, y, recipe)] +=
                    static_cast<float>(trail.peak * share * std::exp(-across * across / (2 * sigma * sigma)));
            }
    }

    static void dyePixels(std::vector<float>& light, std::size_t width) {
        constexpr float kShares[4] = {0.7F, 1.0F, 1.0F, 0.5F};
        for (std::size_t i = 0; i < light.size(); ++i)
            light[i] *= kShares[i % width % 2 + 2 * (i / width % 2)];
    }

    static std::vector<float> skyOf(const FrameRecipe& recipe) {
        std::vector<float> light;
        light.reserve(static_cast<std::size_t>(recipe.width) * static_cast<std::size_t>(recipe.height));
        const auto columns = shares(recipe.nebula.x, recipe.nebula.sigma(), 0, recipe.width, true);
        const auto rows = shares(recipe.nebula.y, recipe.nebula.sigma(), 0, recipe.height, true);
        for (int y = 0; y < recipe.height; ++y) {
            const double row = recipe.sky + recipe.gradientY * (static_cast<double>(y) / recipe.height - 0.5);
            const double nebula = recipe.nebula.peak * rows[static_cast<std::size_t>(y)];
            for (int x = 0; x < recipe.width; ++x)
                light.push_back(static_cast<float>(
                    row + recipe.gradientX * (static_cast<double>(x) / recipe.width - 0.5) +
                    nebula * columns[static_cast<std::size_t>(x)]));
        }
        return light;
    }

    /// Of a gaussian of height 1, along one axis, what falls on each pixel (or, for wide ones, its height).
    static std::vector<double> shares(double centre, double sigma, int first, int last, bool heights) {
        std::vector<double> values;
        const double unit = 1 / (sigma * std::sqrt(2.0));
        for (int i = first; i < last; ++i) {
            const double d = i - centre;
            values.push_back(heights ? std::exp(-d * d * unit * unit)
                                     : sigma * std::sqrt(3.14159265358979 / 2) *
                                           (std::erf((d + 0.5) * unit) - std::erf((d - 0.5) * unit)));
        }
        return values;
    }

    static void addStar(std::vector<float>& light, const FrameRecipe& recipe, const FrameStar& star) {
        const int reach = static_cast<int>(6 * star.sigma()) + 3;
        const int left = std::max(0, static_cast<int>(star.x) - reach);
        const int right = std::min(recipe.width, static_cast<int>(star.x) + reach + 1);
        const int top = std::max(0, static_cast<int>(star.y) - reach);
        const int bottom = std::min(recipe.height, static_cast<int>(star.y) + reach + 1);
        const auto columns = shares(star.x, star.sigma(), left, right, false);
        const auto rows = shares(star.y, star.sigma(), top, bottom, false);
        for (int y = top; y < bottom; ++y)
            for (int x = left; x < right; ++x)
                light[static_cast<std::size_t>(y) * static_cast<std::size_t>(recipe.width) +
                      static_cast<std::size_t>(x)] +=
                    static_cast<float>(star.peak * columns[static_cast<std::size_t>(x - left)] *
                                       rows[static_cast<std::size_t>(y - top)]);
    }

    std::mt19937_64 random_;
    std::vector<float>
        deviates_;  // of gaussian noise; each row of a frame takes a run of them from a random place
};

/// The half-flux diameter of the star's light as far as the frame can hold it: the star's width, unless it is
/// cut off at 65,535.
inline double trueHalfFluxDiameter(const FrameStar& star, double sky) {
    const double highest = 65535 - sky;
    const double step = star.sigma() / 500;
    const auto rings = static_cast<int>(7 * star.sigma() / step);
    const auto lightOf = [&](int ring) {
        const double r = (ring + 0.5) * step / star.sigma();
        return std::min(highest, star.peak * std::exp(-r * r / 2)) * (ring + 0.5);
    };
    double total = 0;
    for (int ring = 0; ring < rings; ++ring) total += lightOf(ring);
    double sum = 0;
    int ring = 0;
    while (sum < total / 2) sum += lightOf(ring++);
    return 2 * ring * step;
}

}  // namespace vantrel::test
