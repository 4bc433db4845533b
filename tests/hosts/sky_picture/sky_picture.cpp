// sky-picture: what a camera on a mount sees of the real sky, for test servers that play one.
//
//   sky-picture --mount-ra HOURS --mount-dec DEG ...         what the mount says, of date; its axis may be
//   off:
//       --latitude DEG --longitude DEG --azimuth ARCMIN --elevation ARCMIN
//       --utc TIME --width N --height N --pixel UM --focal MM --seconds S --seed N
//
// Writes the rows of 16-bit counts, little endian, to the standard output.

#include <cstdio>
#include <exception>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "observatory/telescopes/camera.h"
#include "platform/image_array.h"
#include "platform/queued_event_loop.h"
#include "platform/text.h"
#include "sky/compact_catalog.h"

namespace {

using namespace vantrel;
using Options = std::map<std::string, std::string>;

std::vector<std::uint16_t> pixels(const Options& options) {
    const auto number = [&](const char* name) { return platform::toNumber(options.at(name)); };
    const auto utc = platform::parseInstant(options.at("--utc"));
    if (!utc) throw std::runtime_error("--utc is no time");
    platform::VirtualTime time{*utc - std::chrono::hours{1}};
    observatory::NoiseSource noise(static_cast<std::uint64_t>(number("--seed")));
    observatory::Mount mount(time, noise);
    mount.settings().latitude = number("--latitude");
    mount.settings().longitude = number("--longitude");
    mount.settings().axisError = {number("--azimuth"), number("--elevation")};
    mount.startSlew({number("--mount-ra"), number("--mount-dec")});
    time.passUntil(*utc);
    observatory::Camera camera(mount, noise, [] { return sky::CompactCatalog::openBuiltIn(); });
    camera.settings().width = number("--width");
    camera.settings().height = number("--height");
    camera.settings().pixelSize = number("--pixel");
    camera.settings().focalLength = number("--focal");
    const auto picture = camera.expose(*utc, "", {.seconds = number("--seconds")})();
    return std::get<std::vector<std::uint16_t>>(picture.pixels->pixels());
}

void write(const std::vector<std::uint16_t>& counts) {
    std::string bytes;
    for (const std::uint16_t count : counts) {
        bytes += static_cast<char>(count & 0xFFU);
        bytes += static_cast<char>(count >> 8U);
    }
    if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size())
        throw std::runtime_error("the picture can't be written");
}

}  // namespace

int main(int argc, char** argv) {
    try {
        Options options;
        for (int i = 1; i + 1 < argc; i += 2) options[argv[i]] = argv[i + 1];
        write(pixels(options));
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "sky-picture: %s\n", error.what());
        return 2;
    }
}
