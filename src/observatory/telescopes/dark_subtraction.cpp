#include "observatory/telescopes/dark_subtraction.h"

#include <algorithm>

#include "platform/image_array.h"

namespace vantrel::observatory {

platform::ImageRef withoutDark(const platform::ImageArray& light, const platform::ImageArray& dark) {
    constexpr int kLevel = 100;
    constexpr int kMost = 65535;
    using Counts = std::vector<std::uint16_t>;
    Counts counts = std::get<Counts>(light.pixels());
    const Counts& darks = std::get<Counts>(dark.pixels());
    std::transform(counts.begin(), counts.end(), darks.begin(), counts.begin(),
                   [=](std::uint16_t bright, std::uint16_t base) {
                       return static_cast<std::uint16_t>(std::clamp(bright - base + kLevel, 0, kMost));
                   });
    return std::make_shared<platform::ImageArray>(light.width(), light.height(), std::move(counts));
}

}  // namespace vantrel::observatory
