// Answers as the program of this name does that INDI's camera simulators ask for stars:
//
//   gsc -c RA DEC -r ARCMIN -m BRIGHTEST FAINTEST -n COUNT     (degrees of J2000, arc-minutes, magnitudes)
//
// prints a line of twelve fields a star: id, right ascension, declination, error, magnitude, error, band,
// class, plate, multiple, distance, direction. Position and magnitude are read by the simulators; the stars
// are the built-in catalogue's.
//
// INDI's simulated mount knows its axis error and takes it out of every slew, so that none is seen. With
// MISALIGNED_SKY="AZIMUTH ELEVATION LATITUDE LONGITUDE" (arc-minutes, degrees) the stars are those that are
// seen where a mount truly points whose axis is off by so much, put where the simulated camera looks.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "observatory/telescopes/mount_axis.h"
#include "sky/compact_catalog.h"
#include "sky/epoch.h"

namespace {

using namespace vantrel::sky;
using namespace vantrel::observatory;

/// The numbers that follow each option; a negative one is a number, too.
std::map<std::string, std::vector<double>> readArguments(int argc, char** argv) {
    std::map<std::string, std::vector<double>> given;
    std::string option;
    for (int i = 1; i < argc; ++i) {
        char* end = nullptr;
        const double value = std::strtod(argv[i], &end);
        if (end != argv[i] && *end == '\0')
            given[option].push_back(value);
        else
            option = argv[i];
    }
    return given;
}

vantrel::platform::Instant now() {
    return std::chrono::time_point_cast<vantrel::platform::Instant::duration>(
        std::chrono::system_clock::now());
}

/// Between where a mount means to point and where it does; all places are J2000's.
class MisalignedSky {
  public:
    explicit MisalignedSky(const std::string& description) {
        AxisError error;
        double latitude = 0;
        std::istringstream text(description);
        if (!(text >> error.azimuth >> error.elevation >> latitude >> longitude_))
            throw std::runtime_error("MISALIGNED_SKY needs four numbers");
        turn_ = mountToSky(error, latitude);
    }

    SkyPosition truePlace(const SkyPosition& meant) const { return turned(meant, turn_); }
    SkyPosition meantPlace(const SkyPosition& true_) const { return turned(true_, transposed(turn_)); }

  private:
    SkyPosition turned(const SkyPosition& from, const Matrix3& turn) const {
        const double meridian = 15 * sky_.siderealTime(longitude_);
        const SkyPosition ofDate = sky_.apparent(from);
        const HaDec to = haDecOf(turn * hourAngleDirection(meridian - ofDate.ra, ofDate.dec));
        return sky_.catalogue(SkyPosition{meridian - to.hourAngle, to.declination});
    }

    SkyOfDate sky_{now()};
    Matrix3 turn_{};
    double longitude_ = 0;
};

void printStars(const SkyPosition& centre, double radius, const std::vector<double>& magnitudes,
                std::size_t most, const MisalignedSky* misaligned) {
    const SkyPosition looksAt = misaligned == nullptr ? centre : misaligned->truePlace(centre);
    const auto stars = CompactCatalog::openBuiltIn()->cone({.raDeg = looksAt.ra,
                                                            .decDeg = looksAt.dec,
                                                            .radiusDeg = radius,
                                                            .epochYear = 2026.9,
                                                            .brightestMagnitude = magnitudes[0],
                                                            .faintestMagnitude = magnitudes[1],
                                                            .maxStars = most,
                                                            .brightestFirst = true});
    for (std::size_t i = 0; i < stars.size(); ++i) {
        SkyPosition place{stars[i].raDeg, stars[i].decDeg};
        if (misaligned != nullptr) place = misaligned->meantPlace(place);
        std::printf("%05zu %10.6f %+10.6f 0.2 %5.2f 0.20 0 0 +001 F 0.0 0\n", i % 100000, place.ra, place.dec,
                    stars[i].magnitude);
    }
}

}  // namespace

int main(int argc, char** argv) {
    auto given = readArguments(argc, argv);
    if (given["-c"].size() != 2 || given["-r"].size() != 1 || given["-m"].size() != 2) {
        std::fputs("usage: gsc -c RA DEC -r ARCMIN -m BRIGHTEST FAINTEST -n COUNT\n", stderr);
        return 2;
    }
    try {
        std::optional<MisalignedSky> misaligned;
        if (const char* description = std::getenv("MISALIGNED_SKY")) misaligned.emplace(description);
        printStars({given["-c"][0], given["-c"][1]}, given["-r"][0] / 60, given["-m"],
                   given["-n"].empty() ? 0 : static_cast<std::size_t>(given["-n"][0]),
                   misaligned ? &*misaligned : nullptr);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "gsc: %s\n", error.what());
        return 1;
    }
    return 0;
}
