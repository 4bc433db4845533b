// Draws what a sensor records: stars through the air, sky glow, hot pixels and noise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "observatory/telescopes/noise.h"

namespace vantrel::observatory {

/// Light of one star on the sensor. Pixel centres stand at whole numbers, from 0.
struct StarSpot {
    double x = 0;
    double y = 0;
    double electrons = 0;
};

/// What of the sensor is read out: places and sizes count binned pixels.
struct ReadWindow {
    std::size_t binX = 1;  // columns whose electrons are read as one
    std::size_t binY = 1;
    std::size_t left = 0;
    std::size_t top = 0;
    std::size_t width = 0;
    std::size_t height = 0;
};

struct SensorExposure {
    std::size_t width = 0;  // of the sensor
    std::size_t height = 0;
    double sigma = 1;      // of the seeing's gaussian, pixels
    double sky = 0;        // electrons per pixel
    double readNoise = 8;  // electrons
    double gain = 1;       // electrons per count
    double bias = 100;     // counts
    std::size_t hotPixels = 0;
    std::optional<ReadWindow> window;  // inside the sensor; nothing: every pixel by itself
};

/// The counts of what is read out, row after row, 0 to 65535. Stars are integrated over each pixel's square;
/// shot noise is the normal distribution with the electrons' variance. Hot pixels hold 2000 to 40000
/// electrons more and stand where the noise's seed puts them: the same ones in every frame.
std::vector<std::uint16_t> drawFrame(const SensorExposure& exposure, const std::vector<StarSpot>& stars,
                                     NoiseSource& noise);
/// How many bits() of the noise that takes.
std::size_t noiseOf(const SensorExposure& exposure);

}  // namespace vantrel::observatory
